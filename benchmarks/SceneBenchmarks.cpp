// What a load costs beside the document model's own open, and what the evaluation of a node costs.
//
// The benchmarks of whole loads open and load the same document in turn, and report the medians of the processor time
// of both in milliseconds, and their ratio.

#include "DocumentGenerator.h"

#include <libVideo/SceneGraph.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <ctime>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using benchmarks::DocumentFile;
using benchmarks::Ids;

double processorSeconds()
{
    timespec now = {};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

double median(std::vector<double>& values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

double secondsOfOpen(const std::string& path)
{
    const double start = processorSeconds();
    DAE dae(nullptr, nullptr, "1.4.1");
    if (dae.open(path) == nullptr) {
        throw std::runtime_error("the document does not open");
    }
    return processorSeconds() - start; // without the destructor
}

double secondsOfLoad(const std::string& path)
{
    const double start = processorSeconds();
    libVideo::Scene scene;
    if (!scene.createFromCollada(path.c_str())) {
        throw std::runtime_error("the document does not load");
    }
    return processorSeconds() - start;
}

void compareWithOpen(benchmark::State& state, const std::string& content)
{
    const DocumentFile file(content);
    std::vector<double> opens;
    std::vector<double> loads;
    secondsOfOpen(file.path()); // warms the caches
    for ([[maybe_unused]] auto _ : state) {
        opens.push_back(secondsOfOpen(file.path()));
        loads.push_back(secondsOfLoad(file.path()));
        state.SetIterationTime(loads.back());
    }
    const double open = median(opens);
    const double load = median(loads);
    state.counters["open_ms"] = 1e3 * open;
    state.counters["load_ms"] = 1e3 * load;
    state.counters["ratio"] = load / open;
}

void loadTreeWithIds(benchmark::State& state)
{
    compareWithOpen(state, benchmarks::balancedTree(static_cast<unsigned>(state.range(0)), Ids::Distinct));
}
BENCHMARK(loadTreeWithIds)
    ->Arg(1000)
    ->Arg(10000)
    ->Arg(100000)
    ->UseManualTime()
    ->Iterations(9)
    ->Unit(benchmark::kMillisecond);

void loadTreeWithoutIds(benchmark::State& state)
{
    compareWithOpen(state, benchmarks::balancedTree(static_cast<unsigned>(state.range(0)), Ids::None));
}
BENCHMARK(loadTreeWithoutIds)
    ->Arg(1000)
    ->Arg(10000)
    ->Arg(100000)
    ->UseManualTime()
    ->Iterations(9)
    ->Unit(benchmark::kMillisecond);

void loadChain(benchmark::State& state)
{
    compareWithOpen(state, benchmarks::chain(static_cast<unsigned>(state.range(0))));
}
BENCHMARK(loadChain)->Arg(1000)->Arg(10000)->UseManualTime()->Iterations(9)->Unit(benchmark::kMillisecond);

void loadSmoothMesh(benchmark::State& state)
{
    compareWithOpen(state, benchmarks::smoothMesh(static_cast<unsigned>(state.range(0))));
}
BENCHMARK(loadSmoothMesh)
    ->Arg(10000)
    ->Arg(100000)
    ->Arg(1000000)
    ->UseManualTime()
    ->Iterations(5)
    ->Unit(benchmark::kMillisecond);

void loadFan(benchmark::State& state)
{
    compareWithOpen(state, benchmarks::fan(static_cast<unsigned>(state.range(0))));
}
BENCHMARK(loadFan)->Arg(1000)->Arg(100000)->UseManualTime()->Iterations(5)->Unit(benchmark::kMillisecond);

void loadManyGeometries(benchmark::State& state)
{
    compareWithOpen(state, benchmarks::manyGeometries(static_cast<unsigned>(state.range(0))));
}
BENCHMARK(loadManyGeometries)->Arg(1000)->Arg(2000)->UseManualTime()->Iterations(5)->Unit(benchmark::kMillisecond);

void loadCamerasAndLights(benchmark::State& state)
{
    compareWithOpen(state, benchmarks::camerasAndLights(static_cast<unsigned>(state.range(0))));
}
BENCHMARK(loadCamerasAndLights)->Arg(1000)->Arg(10000)->UseManualTime()->Iterations(5)->Unit(benchmark::kMillisecond);

// Times spread over all keys, in an order that no cache foresees.
void evaluateNode(benchmark::State& state)
{
    const auto keys = static_cast<unsigned>(state.range(0));
    const DocumentFile file(benchmarks::animatedNode(keys));
    libVideo::Scene scene;
    if (!scene.createFromCollada(file.path().c_str())) {
        state.SkipWithError("the document does not load");
        return;
    }
    libVideo::Node& node = *scene.visualScene().root().children()[0];
    unsigned step = 0;
    for ([[maybe_unused]] auto _ : state) {
        step = step * 1664525u + 1013904223u;
        const double time = 1.0 + static_cast<double>(step >> 8u) / 16777216.0 * (keys - 1);
        benchmark::DoNotOptimize(node.transform(time));
    }
}
BENCHMARK(evaluateNode)->Arg(10)->Arg(1000)->Arg(100000);

} // namespace
