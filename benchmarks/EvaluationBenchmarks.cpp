#include "DocumentGenerator.h"

#include <libVideo/SceneGraph.h>

#include <benchmark/benchmark.h>

namespace {

using benchmarks::DocumentFile;

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
        const double time =
            (1.0 + static_cast<double>(step >> 8u) / 16777216.0 * (keys - 1)) / benchmarks::keysPerSecond;
        benchmark::DoNotOptimize(node.transform(time));
    }
}
BENCHMARK(evaluateNode)->Arg(10)->Arg(1000)->Arg(100000);

} // namespace
