#pragma once

#include "CommandLine.h"
#include "SandboxOptions.h"

#include <string>
#include <vector>

namespace scenetool {

/// `scenetool info FILE...`: prints a summary of each document.
class InfoCommand {
public:
    /// Adds the command and its options.
    InfoCommand(CommandLine& line, SandboxOptions& sandbox);

    bool isParsed() const { return m_command.isParsed(); }
    /// @return 1 if a document cannot be loaded
    int run() const;

private:
    int print(const std::string& file) const;

    Command m_command;
    SandboxOptions& m_sandbox;
    std::vector<std::string> m_files;
    bool m_showsAllNodes = false;
    bool m_prepares = false;
};

} // namespace scenetool
