#pragma once

#include "SandboxOptions.h"
#include "render/SceneShow.h"
#include "render/Sheet.h"

#include <CLI/CLI.hpp>

#include <filesystem>
#include <functional>
#include <string>

namespace scenetool {

/// The commands of scenetool that draw.
class PictureCommands {
public:
    /// Adds them to a command line, which has to live as long.
    /// @param sandbox the options that the command of many documents shares with others
    PictureCommands(CLI::App& app, SandboxOptions& sandbox);
    PictureCommands(const PictureCommands&) = delete;
    PictureCommands& operator=(const PictureCommands&) = delete;

    /// Whether the command line that was read asks for one of them.
    bool isParsed() const { return m_render->parsed() || m_view->parsed(); }
    /// @return the status for the shell: 0, 1 if a document or the drawing fails, 2 for options that do not fit
    int run();

private:
    void addViewOptions(CLI::App& command);
    void checkOptions();
    void checkRenderOptions();
    int render(const std::filesystem::path& folder);
    int view();
    int sheet();
    SheetCell drawCell(const std::string& file, const std::filesystem::path& folder) const;
    DocumentOptions documentOptions() const;
    bool hasAlpha() const;
    SheetCell drawCellInSandbox(const std::string& file) const;
    bool canDrawInSandbox() const;
    int reported(const std::function<int()>& action) const;
    void complain(const std::string& file, const std::string& line) const;

    const SandboxOptions& m_sandbox;
    CLI::App* m_render;
    CLI::App* m_view;
    std::string m_file;
    std::string m_folder; ///< of a sheet
    std::string m_output;
    std::string m_size;
    std::string m_up = "y";
    std::string m_background;
    std::string m_lights;
    bool m_isAsLoaded = false;
    unsigned m_frames = 0;
    bool m_hasBar = false;
    RenderOptions m_options;
    SequenceOptions m_sequence;
};

} // namespace scenetool
