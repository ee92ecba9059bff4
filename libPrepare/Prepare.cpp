#include "Prepare.h"

#include "document/Document.h"
#include "passes/Passes.h"

#include <algorithm>
#include <fstream>
#include <sstream>

namespace libPrepare {

namespace {

// Each pass may rely on what those before it have made.
constexpr void (*passes[])(Document&) = {
    &convertVersions,   &copyExternalReferences, &repairTexts,     &repairIds,
    &chooseVisualScene, &copyInstanceNodes,      &applyAssets,     &flattenAnimations,
    &poseControllers,   &separateGeometries,     &triangulate,     &arrangeInputs,
    &makeNormals,       &bindMaterials,          &completeEffects, &resolveTextures,
    &findImages,        &completeTransforms,     &turnScene,       &completeLights,
    &completeCameras,
};

void run(Document& document)
{
    for (const auto pass : passes) {
        pass(document);
    }
}

} // namespace

const Finding* Report::first(Outcome outcome) const
{
    const auto found = std::find_if(findings.begin(), findings.end(),
                                    [&](const Finding& finding) { return finding.outcome == outcome; });
    return found == findings.end() ? nullptr : &*found;
}

Report prepare(pugi::xml_document& xml, const std::filesystem::path& file, const Options& options)
{
    Report report;
    Document document(xml, file, options, report);
    run(document);
    report.done = true;
    return report;
}

Report prepare(const std::filesystem::path& in, const std::filesystem::path& out, const Options& options)
{
    Report report;
    std::ifstream input(in, std::ios::binary);
    std::stringstream buffer;
    buffer << input.rdbuf();
    const std::string source = buffer.str();
    pugi::xml_document xml;
    const pugi::xml_parse_result parsed =
        xml.load_buffer(source.data(), source.size(), pugi::parse_full | pugi::parse_ws_pcdata, pugi::encoding_utf8);
    if (!input || !parsed || !xml.document_element()) {
        report.findings.push_back({Outcome::refused, "malformed", parsed.description(), {}, {}});
        return report;
    }
    Document document(xml, out, options, report, source);
    run(document);
    std::ofstream output(out, std::ios::binary);
    if (report.changed) {
        xml.save(output, "", pugi::format_raw | pugi::format_no_declaration, pugi::encoding_utf8);
    } else {
        output << source;
    }
    report.done = static_cast<bool>(output.flush());
    return report;
}

Report inspect(const std::filesystem::path&)
{
    return {};
}

} // namespace libPrepare
