#pragma once

#include "CommandLine.h"
#include "sandbox/Sandbox.h"

#include <cstddef>
#include <functional>
#include <string>

namespace scenetool {

/// The command-line options for the sandbox. Each document is loaded in a sandbox if there are several, or if an option
/// requests it.
class SandboxOptions {
public:
    /// Adds the options to a command. Several commands may share them.
    void addTo(Command& command);

    /// Whether each of `documents` documents is loaded in a sandbox.
    bool applyTo(std::size_t documents) const { return !m_isUnwanted && (documents > 1 || m_isWanted); }
    SandboxLimits limits() const;

    /// Runs an action that loads one of `documents` documents, in a sandbox if needed. @return its status, or 1, with a
    /// message on standard error, if it did not finish
    int run(const std::string& file, std::size_t documents, const std::function<int()>& action) const;

private:
    bool m_isWanted = false;
    bool m_isUnwanted = false;
    unsigned m_seconds = 60;
    unsigned m_mebibytes = 4096;
};

} // namespace scenetool
