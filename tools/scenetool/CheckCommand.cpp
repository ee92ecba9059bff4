#include "CheckCommand.h"

#ifdef SCENETOOL_HAS_PICTURES
#include "DocumentConversion.h"
#endif
#include "common/LoadedScene.h"
#include "common/Printable.h"
#include "common/ReportPrinter.h"

#include <libPrepare/Prepare.h>

#include <algorithm>
#include <cstdlib>
#include <iostream>

namespace scenetool {

namespace {

// Adds the library's own messages about a document to the findings.
void addMessages(const std::string& file, libPrepare::Report& report)
{
    const LoadedScene loaded(file);
    if (loaded.failure()) {
        report.findings.push_back({libPrepare::Outcome::lost,
                                   "exception",
                                   "The load fails with " + loaded.failure()->type + ": " + loaded.failure()->message,
                                   "prepare the document",
                                   {}});
    } else if (loaded.refusal()) {
        report.findings.push_back(*loaded.refusal());
        report.done = false;
        return;
    }
    for (const LogLine& line : loaded.log()) {
        report.findings.push_back(
            {libPrepare::Outcome::lost, "message", "The library reports: " + line.text, "prepare the document", {}});
    }
}

#ifdef SCENETOOL_HAS_PICTURES
void addGltfNotes(const std::string& file, libPrepare::Report& report)
{
    const ConversionResult result = tryConversion(file);
    for (const auto& [kind, note] : result.notes.all()) {
        if (kind == ConversionNotes::imageFormat) {
            continue; // loses nothing
        }
        const std::string count = note.count > 1 ? " (" + std::to_string(note.count) + " times)" : "";
        report.findings.push_back({libPrepare::Outcome::lost,
                                   "gltf",
                                   "In glTF: " + note.text + count,
                                   "none: the format cannot express it",
                                   {}});
    }
    if (!result.failure.empty()) {
        report.findings.push_back(
            {libPrepare::Outcome::lost, "gltf", "In glTF: everything (" + result.failure + ")", "none", {}});
    }
}
#else
void addGltfNotes(const std::string& /*file*/, libPrepare::Report& /*report*/) {}
#endif

int check(const std::string& file, bool showsGltf, bool showsJson)
{
    libPrepare::Report report = libPrepare::inspect(file);
    if (report.done) {
        addMessages(file, report);
    }
    if (report.done && showsGltf) {
        addGltfNotes(file, report);
    }
    const bool isReadable = report.done;
    if (showsJson) {
        std::cout << reportJson(file, report);
    } else if (const libPrepare::Finding* const why = report.first(libPrepare::Outcome::refused)) {
        std::cout << refusalText(file, *why) << '\n' << std::string(14, ' ') << "-> " << printable(why->remedy) << '\n';
    } else if (report.findings.empty()) {
        std::cout << printable(file) << ": nothing is lost\n";
    } else {
        std::cout << printable(file) << ":\n";
        writeReport(report, std::cout);
    }
    return !isReadable               ? CheckCommand::notReadable
           : report.findings.empty() ? EXIT_SUCCESS
                                     : CheckCommand::somethingLost;
}

} // namespace

CheckCommand::CheckCommand(CommandLine& line, SandboxOptions& sandbox)
    : m_command(line.addCommand("check", "Lists what a host will not get from documents, with lines and remedies.")),
      m_sandbox(sandbox)
{
    m_command.add("FILE", m_files, "The documents").require();
    m_command.addFlag("--json", m_showsJson, "Print a JSON array with one report per document");
#ifdef SCENETOOL_HAS_PICTURES
    m_command.addFlag("--gltf", m_showsGltf, "Also list what a glTF file of the document cannot hold");
#endif
    m_sandbox.addTo(m_command);
}

int CheckCommand::run() const
{
    int status = EXIT_SUCCESS;
    for (const std::string& file : m_files) {
        if (m_showsJson) {
            std::cout << (&file == &m_files.front() ? "[\n" : ",\n");
        }
        std::cout.flush();
        int result = notReadable;
        bool hasEnded = false;
        const auto action = [&] {
            hasEnded = true;
            return check(file, m_showsGltf, m_showsJson);
        };
        if (m_sandbox.applyTo(m_files.size())) {
            const SandboxResult ended = runInSandbox(m_sandbox.limits(), action);
            hasEnded = ended.failure.empty();
            result = ended.status;
            if (!hasEnded) {
                std::cerr << "scenetool: " << printable(file) << ": the check " << ended.failure << '\n';
            }
        } else {
            result = action();
        }
        if (!hasEnded) {
            libPrepare::Report report;
            report.findings.push_back(
                {libPrepare::Outcome::refused, "limit", "exceeds the limits", "allow more time or memory", {}});
            result = notReadable;
            if (m_showsJson) {
                std::cout << reportJson(file, report);
            }
        }
        status = std::max(status, result);
    }
    if (m_showsJson) {
        std::cout << "\n]\n";
    }
    return status;
}

} // namespace scenetool
