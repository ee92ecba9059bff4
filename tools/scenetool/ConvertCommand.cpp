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

ConvertCommand::ConvertCommand(CLI::App& app, SandboxOptions& sandbox)
    : m_command(app.add_subcommand("convert", "Converts a document, or all documents in a folder, to glTF 2.0.")),
      m_sandbox(&sandbox),
      m_jobs(std::max(1U, std::thread::hardware_concurrency()))
{
    m_settings.prepare = preparationForGltf();
    m_command->add_option("IN", m_in, "The document, or a folder of documents")->required();
    m_command
        ->add_option("-o,--output", m_out,
                     "The result: a .glb file, a .gltf file with its data next to it, or a folder if IN is a folder")
        ->required();
    m_command->add_flag("--as-loaded", m_settings.isAsLoaded,
                        "Convert what the library delivers of the unprepared document");
    m_command->add_flag("--compress", m_settings.isCompressed,
                        "Compress vertices and indices by EXT_meshopt_compression, which readers have to support");
    m_command->add_flag("--report", m_reports, "Print what glTF cannot hold");
    m_command->add_option("--tolerance", m_settings.tolerance, "Largest error of an animation, relative to its size")
        ->check(CLI::PositiveNumber)
        ->capture_default_str();
    m_command->add_option("--max-size", m_mebibytes, "Largest size of a result in MiB")
        ->check(CLI::Range(1U, 65536U))
        ->capture_default_str();
    m_command->add_option("--jobs", m_jobs, "Number of documents of a folder that are converted at a time")
        ->check(CLI::Range(1U, 1024U));
    m_command->add_flag("--again", m_isRepeated, "Also convert documents of a folder whose results are up to date");
    sandbox.addTo(*m_command);
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
