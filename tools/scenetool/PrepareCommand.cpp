#include "PrepareCommand.h"

#include "Printable.h"

#include <cstdlib>
#include <iostream>

namespace scenetool {

PrepareCommand::PrepareCommand(CLI::App& app)
    : m_command(app.add_subcommand("prepare", "Rewrites a document so that the library delivers it whole."))
{
    m_command->add_option("IN", m_in, "The document")->required();
    m_command->add_option("-o,--output", m_out, "Where the result goes")->required();
    m_command->add_option("--time", m_options.time, "Time in seconds at which skins and morphs take their pose");
    m_command->add_option("--normals", m_options.normals, "Make missing normals, with this crease angle in degrees");
}

int PrepareCommand::run() const
{
    const libPrepare::Report report = libPrepare::prepare(m_in, m_out, m_options);
    if (report.done) {
        return EXIT_SUCCESS;
    }
    const libPrepare::Finding* const why = report.first(libPrepare::Outcome::refused);
    std::cerr << "scenetool: " << printable(m_in) << ": " << printable(why ? why->text : "cannot be written") << '\n';
    return EXIT_FAILURE;
}

} // namespace scenetool
