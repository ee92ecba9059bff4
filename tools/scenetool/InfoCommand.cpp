#include "InfoCommand.h"

#include "Info.h"
#include "common/LoadedScene.h"
#include "common/PreparedFile.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <memory>

namespace scenetool {

InfoCommand::InfoCommand(CommandLine& line, SandboxOptions& sandbox)
    : m_command(line.addCommand(
          "info", "Prints a summary: counts, the node tree with its transforms and animations, and messages.")),
      m_sandbox(sandbox)
{
    m_command.add("FILE", m_files, "The documents").require();
    m_command.addFlag("--all", m_showsAllNodes, "Show all nodes of the tree, not only the first 200");
    m_command.addFlag("--prepare", m_prepares, "Prepare the documents first");
    m_sandbox.addTo(m_command);
}

int InfoCommand::run() const
{
    int status = EXIT_SUCCESS;
    for (const std::string& file : m_files) {
        if (&file != &m_files.front()) {
            std::cout << '\n';
        }
        status = std::max(status, m_sandbox.run(file, m_files.size(), [&] { return print(file); }));
    }
    return status;
}

int InfoCommand::print(const std::string& file) const
{
    const std::unique_ptr<PreparedFile> prepared = PreparedFile::makeIf(m_prepares, file);
    const LoadedScene loaded(file, prepared ? prepared->path() : file);
    if (loaded.isLoaded()) {
        InfoOptions options;
        options.isColored = isatty(STDOUT_FILENO) == 1 && std::getenv("NO_COLOR") == nullptr;
        options.showsAllNodes = m_showsAllNodes;
        writeInfo(loaded, options, std::cout);
    }
    loaded.writeFault(std::cerr);
    return loaded.isLoaded() ? EXIT_SUCCESS : EXIT_FAILURE;
}

} // namespace scenetool
