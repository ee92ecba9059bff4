#pragma once

#include "PictureOptions.h"

#include <CLI/CLI.hpp>

#include <string>

namespace scenetool {

/// The command that shows a document in a window.
class ViewCommand {
public:
    /// Adds it to a command line, which has to live as long.
    explicit ViewCommand(CLI::App& app);
    ViewCommand(const ViewCommand&) = delete;
    ViewCommand& operator=(const ViewCommand&) = delete;

    /// Whether the command line that was read asks for it.
    bool isParsed() const { return m_command->parsed(); }
    /// @return the status for the shell: 0, 1 if a document or the drawing fails, 2 for options that do not fit
    int run();

private:
    CLI::App* m_command;
    std::string m_file;
    PictureOptions m_options;
};

} // namespace scenetool
