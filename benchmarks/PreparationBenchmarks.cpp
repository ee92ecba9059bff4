#include "Benchmarks.h"

#include "DocumentGenerator.h"
#include "Quantile.h"

#include "support/Process.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <exception>
#include <filesystem>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace benchmarks {

namespace {

struct PreparationCase {
    const char* name;
    std::string (*document)(unsigned size);
    unsigned size;
};

const std::vector<PreparationCase>& preparationCases()
{
    static const auto tree = [](unsigned nodes) { return balancedTree(nodes, Ids::Distinct); };
    static const auto bareTree = [](unsigned nodes) { return balancedTree(nodes, Ids::None); };
    static const auto keys = [](unsigned count) { return angleCurves(1, count); };
    static const std::vector<PreparationCase> cases = {
        {"mesh", smoothMesh, 1000},
        {"mesh", smoothMesh, 250000},
        {"mesh", smoothMesh, 1000000},
        {"quads", quadMesh, 1000},
        {"quads", quadMesh, 125000},
        {"quads", quadMesh, 500000},
        {"geometries", manyGeometries, 100},
        {"geometries", manyGeometries, 500},
        {"geometries", manyGeometries, 2000},
        {"tree", tree, 1000},
        {"tree", tree, 25000},
        {"tree", tree, 100000},
        {"treeWithoutIds", bareTree, 100000},
        {"keys", keys, 1000},
        {"keys", keys, 250000},
        {"keys", keys, 1000000},
    };
    return cases;
}

struct Cost {
    double seconds = 0;
    double mebibytes = 0; // peak resident memory
};

Cost costOf(const std::vector<std::string>& command)
{
    const testSupport::ProcessResult result = testSupport::runProcess(command);
    std::istringstream figures(result.output);
    Cost cost;
    double kibibytes = 0;
    if (result.status != 0 || !(figures >> cost.seconds >> kibibytes)) {
        throw std::runtime_error(command[0] + " fails: " + result.errors);
    }
    cost.mebibytes = kibibytes / 1024;
    return cost;
}

// Compares preparing a document with loading the original and saving the result by pugixml alone.
void measurePreparation(benchmark::State& state, const PreparationCase& row)
{
    try {
        const DocumentFile in(row.document(row.size));
        const DocumentFile out("");
        const DocumentFile copy("");
        std::vector<double> prepared;
        std::vector<double> rewritten;
        double preparedMemory = 0;
        double rewrittenMemory = 0;
        for ([[maybe_unused]] auto _ : state) {
            const Cost prepare = costOf({DOCUMENT_PREPARE_PROGRAM, in.path(), out.path()});
            const Cost load = costOf({DOCUMENT_REWRITE_PROGRAM, "load", in.path()});
            const Cost save = costOf({DOCUMENT_REWRITE_PROGRAM, "save", out.path(), copy.path()});
            prepared.push_back(prepare.seconds);
            rewritten.push_back(load.seconds + save.seconds);
            preparedMemory = std::max(preparedMemory, prepare.mebibytes);
            rewrittenMemory = std::max({rewrittenMemory, load.mebibytes, save.mebibytes});
            state.SetIterationTime(prepare.seconds);
        }
        state.counters["document_mb"] = 1e-6 * static_cast<double>(std::filesystem::file_size(in.path()));
        state.counters["prepare_ms"] = 1e3 * median(prepared);
        state.counters["rewrite_ms"] = 1e3 * median(rewritten);
        state.counters["time_ratio"] = median(prepared) / median(rewritten);
        state.counters["prepare_mib"] = preparedMemory;
        state.counters["rewrite_mib"] = rewrittenMemory;
        state.counters["memory_ratio"] = preparedMemory / rewrittenMemory;
    } catch (const std::exception& error) {
        fail(state, error.what());
    }
}

} // namespace

void registerPreparationBenchmarks(int rounds)
{
    for (const PreparationCase& row : preparationCases()) {
        const std::string name = std::string("prepare/") + row.name + "/" + std::to_string(row.size);
        benchmark::RegisterBenchmark(name.c_str(), [&row](benchmark::State& state) { measurePreparation(state, row); })
            ->UseManualTime()
            ->Iterations(rounds)
            ->Unit(benchmark::kMillisecond);
    }
}

} // namespace benchmarks
