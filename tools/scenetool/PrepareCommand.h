#pragma once

#include "CommandLine.h"

#include <libPrepare/Prepare.h>

#include <string>

namespace scenetool {

/// `scenetool prepare IN -o OUT`: rewrites a document so that the library delivers it whole.
class PrepareCommand {
public:
    /// Adds the command and its options.
    explicit PrepareCommand(CommandLine& line);

    bool isParsed() const { return m_command.isParsed(); }
    /// @return the status of the program
    int run() const;

private:
    Command m_command;
    std::string m_in;
    std::string m_out;
    bool m_showsReport = false;
    bool m_showsJson = false;
    bool m_leavesApproximationsOut = false;
    int m_upAxis = static_cast<int>(libPrepare::UpAxis::keep);
    libPrepare::Options m_options;
};

} // namespace scenetool
