#pragma once

#include "PictureOptions.h"
#include "SandboxOptions.h"
#include "render/SceneShow.h"
#include "render/Sheet.h"

#include <CLI/CLI.hpp>

#include <filesystem>
#include <string>

namespace scenetool {

/// The command that draws pictures into files.
class RenderCommand {
public:
    /// Adds it to a command line, which has to live as long.
    /// @param sandbox the options that it shares with other commands
    RenderCommand(CLI::App& app, SandboxOptions& sandbox);
    RenderCommand(const RenderCommand&) = delete;
    RenderCommand& operator=(const RenderCommand&) = delete;

    /// Whether the command line that was read asks for it.
    bool isParsed() const { return m_command->parsed(); }
    /// @return the status for the shell: 0, 1 if a document or the drawing fails, 2 for options that do not fit
    int run();

private:
    void checkOptions();
    int render(const std::filesystem::path& folder);
    int sheet();
    SheetCell drawCell(const std::string& file, const std::filesystem::path& folder) const;
    SheetCell drawCellInSandbox(const std::string& file) const;
    bool canDrawInSandbox() const;

    const SandboxOptions& m_sandbox;
    CLI::App* m_command;
    std::string m_file;
    std::string m_folder; ///< of a sheet
    std::string m_output;
    unsigned m_frames = 0;
    bool m_hasBar = false;
    PictureOptions m_options;
    SequenceOptions m_sequence;
};

} // namespace scenetool
