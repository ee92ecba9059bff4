#include "Benchmarks.h"

#include "DocumentGenerator.h"
#include "Quantile.h"

#include "support/Process.h"

#include <libVideo/SceneGraph.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <exception>
#include <filesystem>
#include <ostream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace benchmarks {

namespace {

// What a loaded scene has to hold. Checked, so that documents that fail to load give no figures.
struct SceneCounts {
    unsigned nodes = 0;
    unsigned animatedNodes = 0;
    double animationLength = 0.0; // of every animated node, in seconds
    unsigned geometries = 0;
    unsigned triangles = 0;
    unsigned cameras = 0;
    unsigned lights = 0;
};

bool operator!=(const SceneCounts& a, const SceneCounts& b)
{
    return a.nodes != b.nodes || a.animatedNodes != b.animatedNodes ||
           std::abs(a.animationLength - b.animationLength) > 1e-5 || a.geometries != b.geometries ||
           a.triangles != b.triangles || a.cameras != b.cameras || a.lights != b.lights;
}

std::ostream& operator<<(std::ostream& out, const SceneCounts& counts)
{
    return out << counts.nodes << " nodes, " << counts.animatedNodes << " of them animated for "
               << counts.animationLength << " s, " << counts.geometries << " geometries of " << counts.triangles
               << " triangles, " << counts.cameras << " cameras, " << counts.lights << " lights";
}

void countNodes(const libVideo::VisualScene& scene, SceneCounts& counts)
{
    vesk::Array<libVideo::NodeLink> nodes = scene.root().children();
    for (unsigned i = 0; i < nodes.size(); ++i) { // the list grows
        const libVideo::Node& node = *nodes[i];
        nodes.appendArray(node.children());
        if (node.hasAnimation()) {
            ++counts.animatedNodes;
            counts.animationLength = node.animationLength();
        }
    }
    counts.nodes = nodes.size();
}

void countGeometries(const libVideo::VisualScene& scene, SceneCounts& counts)
{
    counts.geometries = scene.geometryTable().size();
    for (const auto& bucket : scene.geometryTable()) {
        for (const auto& primitive : bucket.value->mesh().primitives()) {
            if (primitive->type() == libVideo::PRIMITIVE_TRIANGLE_LIST && primitive->hasPosition() &&
                primitive->hasNormal() && primitive->hasTextureCoord()) {
                counts.triangles += primitive->indexBuffer().size() / 3;
            }
        }
    }
}

SceneCounts countsOf(const std::string& path)
{
    libVideo::Scene loaded;
    SceneCounts counts;
    if (loaded.createFromCollada(path.c_str())) {
        const libVideo::VisualScene& scene = loaded.visualScene();
        countNodes(scene, counts);
        countGeometries(scene, counts);
        counts.cameras = scene.cameraList().size();
        counts.lights = scene.pointLightList().size() + scene.spotLightList().size();
    }
    return counts;
}

// A kind of document: generates it in any size, and knows what the scene has to hold.
struct DocumentKind {
    const char* name;
    std::string (*document)(unsigned size);
    SceneCounts (*counts)(unsigned size);
};

constexpr unsigned keysOfCurve = 1000;

const DocumentKind meshKind = {"mesh", smoothMesh, [](unsigned triangles) {
                                   SceneCounts counts;
                                   counts.nodes = 1;
                                   counts.geometries = 1;
                                   counts.triangles = triangles;
                                   return counts;
                               }};
const DocumentKind fanKind = {"fan", fan, meshKind.counts};
const DocumentKind geometriesKind = {"geometries", manyGeometries, [](unsigned geometries) {
                                         SceneCounts counts;
                                         counts.nodes = geometries;
                                         counts.geometries = geometries;
                                         counts.triangles = 100 * geometries;
                                         return counts;
                                     }};
const DocumentKind angleCurvesKind = {"angleCurves", [](unsigned curves) { return angleCurves(curves, keysOfCurve); },
                                      [](unsigned curves) {
                                          SceneCounts counts;
                                          counts.nodes = curves;
                                          counts.animatedNodes = curves;
                                          counts.animationLength = keysOfCurve / keysPerSecond;
                                          return counts;
                                      }};
const DocumentKind matrixCurvesKind = {
    "matrixCurves", [](unsigned curves) { return matrixCurves(curves, keysOfCurve); }, angleCurvesKind.counts};
const DocumentKind treeKind = {"tree", [](unsigned nodes) { return balancedTree(nodes, Ids::Distinct); },
                               [](unsigned nodes) {
                                   SceneCounts counts;
                                   counts.nodes = nodes;
                                   return counts;
                               }};
const DocumentKind treeWithoutIdsKind = {
    "treeWithoutIds", [](unsigned nodes) { return balancedTree(nodes, Ids::None); }, treeKind.counts};
const DocumentKind flatTreeKind = {"flatTree", flatTree, treeKind.counts};
const DocumentKind chainKind = {"chain", chain, treeKind.counts};
const DocumentKind camerasAndLightsKind = {"camerasAndLights", camerasAndLights, [](unsigned nodes) {
                                               SceneCounts counts;
                                               counts.nodes = nodes + (nodes + 99) / 100; // including the groups
                                               counts.cameras = nodes;
                                               counts.lights = nodes;
                                               return counts;
                                           }};

struct LoadCase {
    const DocumentKind& kind;
    unsigned size;
    bool isDrawn; // appears among the ratios in the picture
};

const std::vector<LoadCase>& loadCases()
{
    static const std::vector<LoadCase> cases = {
        {meshKind, 1000, false},
        {meshKind, 10000, true},
        {meshKind, 100000, true},
        {meshKind, 1000000, true},
        {fanKind, 1000, false},
        {fanKind, 10000, false},
        {fanKind, 100000, true},
        {geometriesKind, 100, false},
        {geometriesKind, 2000, true},
        {geometriesKind, 8000, true},
        {angleCurvesKind, 10, false},
        {angleCurvesKind, 100, false},
        {angleCurvesKind, 1000, true},
        {matrixCurvesKind, 10, false},
        {matrixCurvesKind, 50, false},
        {matrixCurvesKind, 200, true},
        {treeKind, 1000, false},
        {treeKind, 10000, false},
        {treeKind, 100000, true},
        {treeWithoutIdsKind, 1000, false},
        {treeWithoutIdsKind, 100000, true},
        {flatTreeKind, 1000, false},
        {flatTreeKind, 20000, true},
        {chainKind, 1000, false},
        {chainKind, 9000, false},
        {camerasAndLightsKind, 1000, false},
        {camerasAndLightsKind, 10000, false},
    };
    return cases;
}

// The value that a share of all values does not exceed.
// Runs a program. @return its output
std::istringstream outputOf(const std::vector<std::string>& command)
{
    const testSupport::ProcessResult result = testSupport::runProcess(command);
    if (result.status != 0 || result.output.empty()) {
        throw std::runtime_error(command[0] + " refuses the document: " + result.errors);
    }
    return std::istringstream(result.output);
}

// Measures a program in several rounds, each in a new process.
class Costs {
public:
    explicit Costs(const char* program) : m_program(program) {}

    double measure(const std::string& path)
    {
        double seconds = 0.0;
        double kibibytes = 0.0;
        if (!(outputOf({m_program, path}) >> seconds >> kibibytes) || seconds <= 0.0 || kibibytes <= 0.0) {
            throw std::runtime_error(std::string(m_program) + " tells no figures");
        }
        m_seconds.push_back(seconds);
        m_mebibytes.push_back(kibibytes / 1024.0);
        return seconds;
    }

    double seconds() const { return median(m_seconds); }
    double mebibytes() const { return median(m_mebibytes); } // peak resident memory
    void report(benchmark::State& state, const std::string& name) const
    {
        state.counters[name + "_ms"] = 1e3 * seconds();
        state.counters[name + "_mib"] = mebibytes();
    }

private:
    const char* m_program;
    std::vector<double> m_seconds;
    std::vector<double> m_mebibytes;
};

// Opens and loads alternately, so that other load on the machine affects both alike. Uses new processes, because time
// and peak memory would depend on what a process did before.
void measureCosts(benchmark::State& state, const std::string& path)
{
    Costs open(DOCUMENT_OPEN_PROGRAM);
    Costs load(DOCUMENT_LOAD_PROGRAM);
    std::vector<double> ratios;
    for ([[maybe_unused]] auto _ : state) {
        const double secondsOfOpen = open.measure(path);
        const double secondsOfLoad = load.measure(path);
        ratios.push_back(secondsOfLoad / secondsOfOpen);
        state.SetIterationTime(secondsOfLoad);
    }
    open.report(state, "open");
    load.report(state, "load");
    state.counters["time_ratio"] = load.seconds() / open.seconds();
    state.counters["time_ratio_low"] = quantile(ratios, 0.25);
    state.counters["time_ratio_high"] = quantile(ratios, 0.75);
    state.counters["memory_ratio"] = load.mebibytes() / open.mebibytes();
}

// Measurements in a process that keeps running, and so can reuse the memory that earlier rounds have freed.
struct Turns {
    std::vector<double> opens;
    std::vector<double> others;
};

Turns turnsOf(const std::string& kind, const std::string& path, benchmark::IterationCount rounds)
{
    std::istringstream lines = outputOf({DOCUMENT_TURNS_PROGRAM, kind, path, std::to_string(rounds + 1)});
    Turns turns;
    double open = 0.0;
    double other = 0.0;
    lines >> open >> other; // skips the first round, which is like one in a new process
    while (lines >> open >> other) {
        turns.opens.push_back(open);
        turns.others.push_back(other);
    }
    return turns;
}

void measureTurns(benchmark::State& state, const std::string& path)
{
    const Turns loads = turnsOf("load", path, state.max_iterations);
    state.counters["warm_time_ratio"] = median(loads.others) / median(loads.opens);
    const Turns builds = turnsOf("build", path, state.max_iterations);
    state.counters["warm_build_ms"] = 1e3 * median(builds.others);
}

#ifdef DOCUMENT_IMPORT_PROGRAM
// Reports nothing for a document that Assimp cannot import.
void measureImports(benchmark::State& state, const std::string& path)
{
    Costs import(DOCUMENT_IMPORT_PROGRAM);
    try {
        for (benchmark::IterationCount i = 0; i < state.max_iterations; ++i) {
            import.measure(path);
        }
    } catch (const std::runtime_error&) {
        return;
    }
    import.report(state, "import");
}
#endif

void measureLoad(benchmark::State& state, const LoadCase& row)
{
    try {
        const DocumentFile file(row.kind.document(row.size));
        const SceneCounts expected = row.kind.counts(row.size);
        const SceneCounts loaded = countsOf(file.path()); // also warms the caches
        if (loaded != expected) {
            std::ostringstream text;
            text << "loaded " << loaded << " instead of " << expected;
            throw std::runtime_error(text.str());
        }
        measureCosts(state, file.path());
        measureTurns(state, file.path());
#ifdef DOCUMENT_IMPORT_PROGRAM
        measureImports(state, file.path());
#endif
        state.counters["document_mb"] = 1e-6 * static_cast<double>(std::filesystem::file_size(file.path()));
        state.counters["is_drawn"] = row.isDrawn ? 1.0 : 0.0;
    } catch (const std::exception& error) {
        fail(state, error.what());
    }
}

} // namespace

void registerLoadBenchmarks(int rounds)
{
    for (const LoadCase& row : loadCases()) {
        const std::string name = std::string("load/") + row.kind.name + "/" + std::to_string(row.size);
        benchmark::RegisterBenchmark(name.c_str(), [&row](benchmark::State& state) { measureLoad(state, row); })
            ->UseManualTime()
            ->Iterations(rounds)
            ->Unit(benchmark::kMillisecond);
    }
}

} // namespace benchmarks
