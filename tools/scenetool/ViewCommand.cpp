#include "ViewCommand.h"

#include "PictureMessages.h"
#include "Viewer.h"
#include "common/TemporaryFolder.h"

#include <cstdlib>
#include <memory>

namespace scenetool {

ViewCommand::ViewCommand(CommandLine& line) : m_command(line.addCommand("view", "Shows the scene in a window."))
{
    m_command.add("FILE", m_file, "The document").require();
    m_options.addTo(m_command);
    m_command.addFooter(viewerHelp);
}

int ViewCommand::run()
{
    return statusOf(m_file, [this] {
        m_options.read();
        const TemporaryFolder folder;
        const DocumentOpener open = [this, &folder](const std::string& file) {
            return std::make_unique<PictureDocument>(file, folder.path(), m_options.document());
        };
        viewScene(m_file, open, m_options.picture(),
                  [](const std::string& file, const std::string& line) { complain(file, line); });
        return EXIT_SUCCESS;
    });
}

} // namespace scenetool
