#pragma once

#include "CommandLine.h"
#include "SandboxOptions.h"

#include <string>
#include <vector>

namespace scenetool {

/// `scenetool check FILE...`: lists what a host will not get from a document.
class CheckCommand {
public:
    static constexpr int somethingLost = 1;
    static constexpr int notReadable = 2;
    static constexpr int usageError = 3;

    /// Adds the command and its options.
    CheckCommand(CommandLine& line, SandboxOptions& sandbox);

    bool isParsed() const { return m_command.isParsed(); }
    /// @return 0 if nothing is lost, 1 if something is lost, 2 if a document cannot be read; of several documents the
    ///     largest
    int run() const;

private:
    Command m_command;
    SandboxOptions& m_sandbox;
    std::vector<std::string> m_files;
    bool m_showsGltf = false;
    bool m_showsJson = false;
};

} // namespace scenetool
