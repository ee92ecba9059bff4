#include "Prepare.h"

#include "document/Document.h"
#include "document/DocumentFile.h"
#include "passes/Passes.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <set>
#include <string>
#include <utility>

namespace libPrepare {

namespace {

// Each pass may rely on the results of the passes before it.
constexpr void (*passes[])(Document&) = {
    &convertVersions,     &copyExternalReferences,
    &repairTexts,         &repairIds,
    &chooseVisualScene,   &copyInstanceNodes,
    &applyAssets,         &flattenAnimations,
    &openConvexMeshes,    &poseControllers,
    &triangulate,         &dropAnimations,
    &separateGeometries,  &arrangeInputs,
    &dropUnreadInstances, &makeNormals,
    &bindMaterials,       &completeEffects,
    &resolveTextures,     &findImages,
    &completeTransforms,  &turnScene,
    &completeLights,      &completeCameras,
};

void runPasses(Document& document)
{
    for (const auto pass : passes) {
        pass(document);
    }
}

bool hasLost(const Report& report)
{
    return report.first(Outcome::lost) != nullptr;
}

bool isTooLarge(const Report& report)
{
    return std::any_of(report.findings.begin(), report.findings.end(),
                       [](const Finding& finding) { return finding.kind == "size"; });
}

// Adds what a later run reports, except for what it reports again.
void add(Report& report, Report& later)
{
    std::set<std::pair<std::string, std::string>> known;
    for (const Finding& finding : report.findings) {
        known.emplace(finding.kind, finding.text);
    }
    for (Finding& finding : later.findings) {
        if (known.count({finding.kind, finding.text}) == 0) {
            report.findings.push_back(std::move(finding));
        }
    }
    const auto append = [](auto& all, auto& more) {
        all.insert(all.end(), std::make_move_iterator(more.begin()), std::make_move_iterator(more.end()));
    };
    append(report.approximations, later.approximations);
    append(report.madeNormals, later.madeNormals);
    append(report.opacityTextures, later.opacityTextures);
}

// A pass may take out something of a broken document that an earlier pass relied on, so the passes run until they
// change nothing more. Documents that lose nothing need one run.
void run(Document& document, const Lines& lines = {})
{
    constexpr unsigned mostRuns = 4;
    runPasses(document);
    bool isOpen = document.report().changed && hasLost(document.report());
    for (unsigned i = 1; isOpen && i < mostRuns && !isTooLarge(document.report()); ++i) {
        Report report;
        Document result(document.xml(), document.file(), document.options(), report, lines,
                        !document.canHavePrefixes());
        result.setTarget(document.target());
        result.takeBytes(document.takenBytes());
        runPasses(result);
        isOpen = report.changed;
        if (isOpen) {
            add(document.report(), report);
        }
    }
    freeDiscarded(document.xml());
}

void refuse(Report& report, const Refusal& refusal)
{
    report.findings.push_back(
        {Outcome::refused, refusal.kind, refusal.reason, refusal.remedy, {refusal.line, refusal.column, {}}});
}

// Why the library refuses something that prepare repairs; null for anything else.
const char* refusalReason(const std::string& kind)
{
    if (kind == "version-1.5") {
        return "is COLLADA 1.5; only 1.4 is read";
    }
    if (kind == "namespace") {
        return "is not in the namespace of COLLADA 1.4";
    }
    if (kind == "encoding") {
        return "is not in the encoding that it names";
    }
    if (kind == "document-type") {
        return "has a document type (<!DOCTYPE>)";
    }
    return kind == "zeros-at-end" ? "has zero characters after its end" : nullptr;
}

void reportRepairs(const DocumentFile& file, Document& document)
{
    const Encoding& encoding = file.encoding();
    if (file.hadDocumentType()) {
        document.rewritten(document.root(), "document-type", "The document has a document type, which is refused.",
                           "taken out");
    }
    if (encoding.isMistaken) {
        document.rewritten(document.root(), "encoding",
                           "The document says that its encoding is " + encoding.name + ", but it is UTF-8.",
                           "read as UTF-8");
    }
    if (encoding.zerosAtEnd > 0) {
        document.rewritten(document.root(), "zeros-at-end",
                           "Zero characters stand after the end: " + std::to_string(encoding.zerosAtEnd) + ".",
                           "taken off");
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
    DocumentFile source;
    if (const std::optional<Refusal> refusal = source.read(in, options.maxSize)) {
        refuse(report, *refusal);
        return report;
    }
    Document document(source.xml(), in, options, report, source.lines(), source.isPlain());
    document.setTarget(out);
    reportRepairs(source, document);
    run(document, source.lines());
    if (const std::optional<Refusal> refusal = source.write(out, report.changed)) {
        refuse(report, *refusal);
        return report;
    }
    report.done = true;
    return report;
}

// Whatever the passes would change is what a host misses without them.
Report inspect(const std::filesystem::path& file)
{
    const Options options;
    Report report;
    DocumentFile source;
    if (const std::optional<Refusal> refusal = source.read(file, options.maxSize)) {
        refuse(report, *refusal);
        return report;
    }
    Report repairs;
    {
        Document document(source.xml(), file, options, repairs, source.lines(), source.isPlain());
        reportRepairs(source, document);
        run(document, source.lines());
    }
    report.done = true;
    for (Finding& finding : repairs.findings) {
        if (finding.kind == "version" || finding.kind == "no-namespace") {
            continue; // the library does not mind
        }
        const char* const reason = refusalReason(finding.kind);
        if (reason != nullptr) {
            finding.text = reason;
            finding.place = {};
            report.done = false;
        }
        if (finding.outcome != Outcome::lost) {
            finding.remedy =
                finding.remedy.empty() ? "prepare the document" : "prepare the document: " + finding.remedy;
        }
        finding.outcome = reason != nullptr ? Outcome::refused : Outcome::lost;
        report.findings.push_back(std::move(finding));
    }
    return report;
}

} // namespace libPrepare
