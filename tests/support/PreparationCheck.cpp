#include "PreparationCheck.h"

#include "support/Files.h"
#include "support/SceneWalker.h"

#include <libPrepare/Prepare.h>
#include <libVideo/SceneGraph/Scene.h>

#include <algorithm>
#include <filesystem>

namespace testSupport {

namespace {

std::string textOf(const libPrepare::Finding* finding)
{
    return finding == nullptr ? "nothing" : finding->kind + ": " + finding->text;
}

} // namespace

std::string faultOfPreparation(const std::string& path)
{
    libPrepare::Options options;
    options.normals = 60.0;
    options.maxSize = 16'777'216;
    const std::filesystem::path once = path + ".once.dae";
    const std::filesystem::path twice = path + ".twice.dae";
    libPrepare::inspect(path);
    const libPrepare::Report first = libPrepare::prepare(path, once, options);
    if (!first.done) {
        const bool saysWhy = first.first(libPrepare::Outcome::refused) != nullptr;
        return saysWhy ? "" : "it is refused without a reason";
    }
    if (!first.changed && contentOf(path) != contentOf(once)) {
        return "what needs no change is changed";
    }
    const bool isLeftOut = std::any_of(first.findings.begin(), first.findings.end(),
                                       [](const libPrepare::Finding& finding) { return finding.kind == "size"; });
    if (isLeftOut) {
        return ""; // a second run has its full budget again, or finds the document too large
    }
    const libPrepare::Report second = libPrepare::prepare(once, twice, options);
    if (!second.done) {
        return "what was prepared is refused: " + textOf(second.first(libPrepare::Outcome::refused));
    }
    if (contentOf(once) != contentOf(twice)) {
        const libPrepare::Finding* const rewritten = second.first(libPrepare::Outcome::rewritten);
        return "a second run changes something: " +
               textOf(rewritten != nullptr ? rewritten : second.first(libPrepare::Outcome::approximated));
    }
    libVideo::Scene scene;
    return loadAndWalk(scene, once.string()).fault;
}

} // namespace testSupport
