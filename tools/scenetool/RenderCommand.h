#pragma once

#include "CommandLine.h"
#include "PictureOptions.h"
#include "SandboxOptions.h"
#include "render/SceneShow.h"
#include "render/Sheet.h"

#include <filesystem>
#include <string>
#include <vector>

namespace scenetool {

/// `scenetool render FILE -o OUT.png`: draws pictures into files.
class RenderCommand {
public:
    /// Adds the command and its options. `line` has to outlive this object.
    /// @param sandbox options shared with other commands
    RenderCommand(CommandLine& line, SandboxOptions& sandbox);
    RenderCommand(const RenderCommand&) = delete;
    RenderCommand& operator=(const RenderCommand&) = delete;

    bool isParsed() const { return m_command.isParsed(); }
    /// @return the exit status: 0, 1 if a document or the drawing fails, 2 if the options are wrong
    int run();

private:
    void checkOptions();
    int render(const std::filesystem::path& folder);
    int sheet();
    SheetCell drawCell(const std::string& file, const std::filesystem::path& folder) const;
    std::vector<SheetCell> drawCells(const std::vector<std::string>& files) const;
    std::vector<SheetCell> drawCellsInSandboxes(const std::vector<std::string>& files) const;
    void showProgress(std::size_t done, std::size_t all) const;
    bool canDrawInSandbox() const;

    const SandboxOptions& m_sandbox;
    Command m_command;
    std::string m_file;
    std::string m_folder; ///< of --sheet
    std::string m_output;
    unsigned m_frames = 0;
    bool m_hasBar = false;
    PictureOptions m_options;
    SequenceOptions m_sequence;
};

} // namespace scenetool
