#pragma once

#include "sandbox/Sandbox.h"

#include <CLI/CLI.hpp>

#include <cstddef>
#include <functional>
#include <string>

namespace scenetool {

/// The options of the command line that say where documents are loaded: each in a sandbox, if there are several or if that
/// is asked for.
class SandboxOptions {
public:
    /// Adds them to a command. Several commands may share them.
    void addTo(CLI::App& command);

    /// Whether a document of that many is loaded in a sandbox.
    bool applyTo(std::size_t documents) const { return !m_isUnwanted && (documents > 1 || m_isWanted); }
    SandboxLimits limits() const;

    /// Runs an action that loads one document of that many, in a sandbox or not. @return its status, or 1 with one line
    /// on standard error if it did not come to its end
    int run(const std::string& file, std::size_t documents, const std::function<int()>& action) const;

private:
    bool m_isWanted = false;
    bool m_isUnwanted = false;
    unsigned m_seconds = 60;
    unsigned m_mebibytes = 4096;
};

} // namespace scenetool
