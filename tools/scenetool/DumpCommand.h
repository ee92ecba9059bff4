#pragma once

#include "CommandLine.h"
#include "SandboxOptions.h"

#include <optional>
#include <string>

namespace scenetool {

/// `scenetool dump FILE`: prints the whole scene as one JSON object.
class DumpCommand {
public:
    /// Adds the command and its options.
    DumpCommand(CommandLine& line, SandboxOptions& sandbox);

    bool isParsed() const { return m_command.isParsed(); }
    /// @return 1 if the document cannot be loaded, or evaluated at the time
    int run() const;

private:
    int print() const;

    Command m_command;
    SandboxOptions& m_sandbox;
    std::string m_file;
    std::optional<double> m_time;
    bool m_folds = false;
    bool m_prepares = false;
};

} // namespace scenetool
