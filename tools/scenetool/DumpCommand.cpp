#include "DumpCommand.h"

#include "Dump.h"
#include "common/LoadedScene.h"
#include "common/PreparedFile.h"

#include <cstdlib>
#include <iostream>
#include <memory>

namespace scenetool {

DumpCommand::DumpCommand(CommandLine& line, SandboxOptions& sandbox)
    : m_command(line.addCommand("dump", "Prints the whole scene as one JSON object.")), m_sandbox(sandbox)
{
    m_command.add("FILE", m_file, "The document").require();
    m_command.add("--time", m_time, "Evaluate the scene at this time in seconds first");
    m_command.addFlag("--fold", m_folds, "Fold the parents into the nodes, so that matrices are world matrices");
    m_command.addFlag("--prepare", m_prepares, "Prepare the document first");
    m_sandbox.addTo(m_command);
}

int DumpCommand::run() const
{
    return m_sandbox.run(m_file, 1, [this] { return print(); });
}

int DumpCommand::print() const
{
    const std::unique_ptr<PreparedFile> prepared = PreparedFile::makeIf(m_prepares, m_file);
    LoadedScene loaded(m_file, prepared ? prepared->path() : m_file);
    if (loaded.isLoaded()) {
        const bool isEvaluated = !m_time || loaded.evaluate(*m_time);
        if (m_folds && isEvaluated) {
            loaded.fold();
        }
    }
    writeDump(loaded, std::cout);
    loaded.writeFault(std::cerr);
    return loaded.isLoaded() && !loaded.failure() ? EXIT_SUCCESS : EXIT_FAILURE;
}

} // namespace scenetool
