#include "Benchmarks.h"

#include "DocumentGenerator.h"

#include <libVideo/SceneGraph.h>

#include <benchmark/benchmark.h>

#include <string>

namespace benchmarks {

namespace {

// Times spread over all keys of a curve, in an order that defeats caches.
class ScatteredTimes {
public:
    explicit ScatteredTimes(unsigned keys) : m_span((keys - 1) / keysPerSecond) {}

    double next()
    {
        m_step = m_step * 1664525u + 1013904223u;
        return 1.0 / keysPerSecond + static_cast<double>(m_step >> 8u) / 16777216.0 * m_span;
    }

private:
    double m_span;
    unsigned m_step = 0;
};

// Evaluates the first curve of a document for a rest value.
template <class Value>
void evaluateCurve(benchmark::State& state, const std::string& content, const Value& value)
{
    const auto keys = static_cast<unsigned>(state.range(0));
    const DocumentFile file(content);
    DAE dae(nullptr, nullptr, "1.4.1");
    vesk::Array<libVideo::AnimationHandle> animations;
    if (libVideo::createAnimationListFromCollada(daeSafeCast<domCOLLADA>(dae.open(file.path())), dae, animations) !=
            1 ||
        animations[0]->getCount() != keys) {
        fail(state, "the curve does not load");
        return;
    }
    libVideo::Animation& curve = *animations[0];
    ScatteredTimes times(keys);
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(curve.applyAnimation(value, times.next()));
    }
}

void evaluateAngle(benchmark::State& state)
{
    evaluateCurve(state, angleCurves(1, static_cast<unsigned>(state.range(0))), 30.0);
}

void evaluateMatrix(benchmark::State& state)
{
    evaluateCurve(state, matrixCurves(1, static_cast<unsigned>(state.range(0))), libMath::Matrix<float, 4, 4>());
}

void evaluateNode(benchmark::State& state)
{
    const auto keys = static_cast<unsigned>(state.range(0));
    const DocumentFile file(animatedNode(keys));
    libVideo::Scene scene;
    if (!scene.createFromCollada(file.path().c_str()) || !scene.visualScene().root().children()[0]->hasAnimation()) {
        fail(state, "the animated node does not load");
        return;
    }
    libVideo::Node& node = *scene.visualScene().root().children()[0];
    ScatteredTimes times(keys);
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(node.transform(times.next()));
    }
}

// Folding repeatedly changes the matrices, but costs the same each time.
void foldNodes(benchmark::State& state)
{
    const auto nodes = static_cast<unsigned>(state.range(0));
    const DocumentFile file(balancedTree(nodes, Ids::Distinct));
    libVideo::Scene scene;
    if (!scene.createFromCollada(file.path().c_str())) {
        fail(state, "the tree does not load");
        return;
    }
    for ([[maybe_unused]] auto _ : state) {
        scene.visualScene().transform();
    }
}

} // namespace

void registerEvaluationBenchmarks()
{
    benchmark::RegisterBenchmark("evaluate/angle", evaluateAngle)->Arg(10)->Arg(1000)->Arg(100000);
    benchmark::RegisterBenchmark("evaluate/matrix", evaluateMatrix)->Arg(10)->Arg(1000)->Arg(100000);
    benchmark::RegisterBenchmark("evaluate/node", evaluateNode)->Arg(10)->Arg(1000)->Arg(100000);
    benchmark::RegisterBenchmark("evaluate/fold", foldNodes)->Arg(1000)->Arg(100000)->Unit(benchmark::kMicrosecond);
}

} // namespace benchmarks
