#pragma once

#include <libPrepare/Prepare.h>

#include <CLI/CLI.hpp>

#include <string>

namespace scenetool {

/// `scenetool prepare IN -o OUT`: rewrites a document so that the library delivers it whole.
class PrepareCommand {
public:
    /// Adds the command and its options.
    explicit PrepareCommand(CLI::App& app);

    bool isParsed() const { return m_command->parsed(); }
    /// @return the status of the program
    int run() const;

private:
    CLI::App* m_command;
    std::string m_in;
    std::string m_out;
    bool m_showsReport = false;
    bool m_showsJson = false;
    bool m_leavesApproximationsOut = false;
    libPrepare::Options m_options;
};

} // namespace scenetool
