#include "ConvertCommand.h"

#include "FolderConversion.h"
#include "common/Failure.h"
#include "common/Printable.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <thread>

namespace scenetool {

namespace {

constexpr int usageError = 2;

void writeNotes(const ConversionResult& result, std::ostream& out)
{
    for (const libPrepare::Finding& finding : result.prepared.findings) {
        if (finding.outcome == libPrepare::Outcome::lost || finding.outcome == libPrepare::Outcome::approximated) {
            out << "line " << finding.place.line << ": " << printable(finding.text) << '\n';
        }
    }
    for (const auto& [kind, note] : result.notes.all()) {
        out << kind << " (" << note.count << "): " << printable(note.text) << '\n';
    }
}

} // namespace

ConvertCommand::ConvertCommand(CommandLine& line, SandboxOptions& sandbox)
    : m_command(line.addCommand("convert", "Converts a document, or all documents in a folder, to glTF 2.0.")),
      m_sandbox(&sandbox),
      m_jobs(std::max(1U, std::thread::hardware_concurrency()))
{
    m_settings.prepare = preparationForGltf();
    m_command.add("IN", m_in, "The document, or a folder of documents").require();
    m_command
        .add("-o,--output", m_out,
             "The result: a .glb file, a .gltf file with its data next to it, or a folder if IN is a folder")
        .require();
    m_command.addFlag("--as-loaded", m_settings.isAsLoaded,
                      "Convert what the library delivers of the unprepared document");
    m_command.addFlag("--compress", m_settings.isCompressed,
                      "Compress vertices and indices by EXT_meshopt_compression, which readers have to support");
    m_command.addFlag("--report", m_reports, "Print what glTF cannot hold");
    m_command.add("--tolerance", m_settings.tolerance, "Largest error of an animation, relative to its size")
        .checkPositive()
        .showDefault();
    m_command.add("--max-size", m_mebibytes, "Largest size of a result in MiB").checkRange(1U, 65536U).showDefault();
    m_command.add("--jobs", m_jobs, "Number of documents of a folder that are converted at a time")
        .checkRange(1U, 1024U);
    m_command.addFlag("--again", m_isRepeated, "Also convert documents of a folder whose results are up to date");
    sandbox.addTo(m_command);
}

int ConvertCommand::run() const
{
    ConversionSettings settings = m_settings;
    settings.maxBytes = m_mebibytes << 20U;
    std::error_code ignored;
    return std::filesystem::is_directory(m_in, ignored) ? convertAll(settings) : convertFile(settings);
}

int ConvertCommand::convertFile(const ConversionSettings& settings) const
{
    if (!namesGltf(m_out)) {
        return fail(m_out, "the name of the result has to end in .glb or .gltf", usageError);
    }
    return m_sandbox->run(m_in, 1, [&] {
        const ConversionResult result = convertDocument(m_in, m_out, settings);
        if (!result.failure.empty()) {
            return fail(m_in, result.failure);
        }
        if (m_reports) {
            writeNotes(result, std::cout);
        }
        return EXIT_SUCCESS;
    });
}

int ConvertCommand::convertAll(const ConversionSettings& settings) const
{
    FolderConversionSettings folder;
    folder.conversion = settings;
    folder.limits = m_sandbox->limits();
    folder.jobs = m_jobs;
    folder.isRepeated = m_isRepeated;
    folder.showsProgress = isatty(STDERR_FILENO) == 1;
    return convertFolder(m_in, m_out, folder) ? EXIT_SUCCESS : EXIT_FAILURE;
}

} // namespace scenetool
