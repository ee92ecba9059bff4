#pragma once

#include "CommandLine.h"
#include "PictureOptions.h"

#include <string>

namespace scenetool {

/// `scenetool view FILE`: shows a document in a window.
class ViewCommand {
public:
    /// Adds the command and its options. `line` has to outlive this object.
    explicit ViewCommand(CommandLine& line);
    ViewCommand(const ViewCommand&) = delete;
    ViewCommand& operator=(const ViewCommand&) = delete;

    bool isParsed() const { return m_command.isParsed(); }
    /// @return the exit status: 0, 1 if a document or the drawing fails, 2 if the options are wrong
    int run();

private:
    Command m_command;
    std::string m_file;
    PictureOptions m_options;
};

} // namespace scenetool
