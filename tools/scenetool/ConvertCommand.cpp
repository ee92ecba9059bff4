#include "ConvertCommand.h"

#include "Info.h"
#include "LoadedScene.h"
#include "PreparedFile.h"
#include "gltf/GltfExport.h"

#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <memory>

namespace scenetool {

namespace {

constexpr double creaseAngle = 60.0;

bool hasEnding(const std::string& path, const char* ending)
{
    return std::filesystem::path(path).extension() == ending;
}

int fail(const std::string& file, const std::string& why)
{
    std::cerr << "scenetool: " << printable(file) << ": " << printable(why) << '\n';
    return EXIT_FAILURE;
}

void writeNotes(const ConversionNotes& notes, const libPrepare::Report& report, std::ostream& out)
{
    for (const libPrepare::Finding& finding : report.findings) {
        if (finding.outcome == libPrepare::Outcome::lost || finding.outcome == libPrepare::Outcome::approximated) {
            out << "line " << finding.place.line << ": " << finding.text << '\n';
        }
    }
    for (const auto& [kind, note] : notes.all()) {
        out << kind << " (" << note.count << "): " << printable(note.text) << '\n';
    }
}

} // namespace

ConvertCommand::ConvertCommand(CLI::App& app)
    : m_command(app.add_subcommand("convert", "Writes glTF 2.0 from what the library delivers."))
{
    m_prepare.upAxis = libPrepare::UpAxis::y; // as glTF has it, and meters
    m_prepare.unit = 1.0;
    m_prepare.normals = creaseAngle;
    m_command->add_option("IN", m_in, "The document")->required();
    m_command
        ->add_option("-o,--output", m_out, "The result: a file that ends in .glb, or in .gltf with its data beside it")
        ->required();
    m_command->add_flag("--as-loaded", m_isAsLoaded, "Convert what the library delivers of the document as it is");
    m_command->add_flag("--report", m_reports, "Print what glTF cannot hold");
    m_command->add_option("--tolerance", m_tolerance, "Largest error of an animation, relative to its size")
        ->check(CLI::PositiveNumber)
        ->capture_default_str();
    m_command->add_option("--max-size", m_mebibytes, "Largest size of the result in MiB")
        ->check(CLI::Range(1U, 65536U))
        ->capture_default_str();
}

int ConvertCommand::run() const
{
    if (!hasEnding(m_out, ".glb") && !hasEnding(m_out, ".gltf")) {
        return fail(m_out, "the name of the result has to end in .glb or .gltf");
    }
    return convert(m_in, m_out);
}

int ConvertCommand::convert(const std::string& in, const std::string& out) const
{
    std::unique_ptr<PreparedFile> prepared;
    if (!m_isAsLoaded) {
        prepared = std::make_unique<PreparedFile>(in, m_prepare);
        if (!prepared->isPrepared()) {
            const libPrepare::Finding* const why = prepared->report().first(libPrepare::Outcome::refused);
            return fail(in, why != nullptr ? why->text : "cannot be prepared");
        }
    }
    LoadedScene loaded(prepared ? prepared->path() : in);
    if (!loaded.isLoaded()) {
        return fail(in, loaded.log().empty() ? "does not load" : loaded.log().back().text);
    }
    GltfOptions options;
    options.documentFile = in;
    options.tolerance = m_tolerance;
    options.mostBytes = m_mebibytes << 20U;
    if (prepared) {
        options.approximations = prepared->report().approximations;
    }
    ConversionNotes notes;
    try {
        const GltfDocument document = gltfOf(loaded, options, notes);
        if (hasEnding(out, ".glb")) {
            document.writeBinary(out);
        } else {
            document.writeText(out);
        }
    } catch (const GltfError& error) {
        return fail(in, error.what());
    }
    if (m_reports) {
        writeNotes(notes, prepared ? prepared->report() : libPrepare::Report(), std::cout);
    }
    return EXIT_SUCCESS;
}

} // namespace scenetool
