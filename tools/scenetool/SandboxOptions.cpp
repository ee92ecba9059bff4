#include "SandboxOptions.h"

#include "common/Printable.h"

#include <chrono>
#include <cstdlib>
#include <iostream>

namespace scenetool {

void SandboxOptions::addTo(Command& command)
{
    const Option wanted = command.addFlag(
        "--sandbox", m_isWanted, "Load the document in a separate process with limits (default for several documents)");
    command.addFlag("--no-sandbox", m_isUnwanted, "Load all documents in this process").exclude(wanted);
    command.add("--time-limit", m_seconds, "Processor seconds per document in the sandbox")
        .checkRange(1, 86'400)
        .showDefault();
    command.add("--memory-limit", m_mebibytes, "Memory in MiB per document in the sandbox; 0 for no limit")
        .showDefault();
}

SandboxLimits SandboxOptions::limits() const
{
    SandboxLimits limits;
    limits.time = std::chrono::seconds(m_seconds);
    limits.memory = std::size_t{m_mebibytes} * 1'048'576;
    return limits;
}

int SandboxOptions::run(const std::string& file, std::size_t documents, const std::function<int()>& action) const
{
    if (!applyTo(documents)) {
        return action();
    }
    const SandboxResult result = runInSandbox(limits(), action);
    if (!result.failure.empty()) {
        std::cerr << "scenetool: " << printable(file) << ": the load " << result.failure << '\n';
        return EXIT_FAILURE;
    }
    return result.status;
}

} // namespace scenetool
