// What a load costs beside the document model's own open, what preparing a document costs beside reading and writing it,
// what evaluating a scene costs, and the containers beside those of the standard library.

#include "Benchmarks.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <cstring>
#include <iostream>

namespace {

constexpr int usualRounds = 7;

// Takes "--rounds=N" from the arguments: how often a document is opened and loaded. 0 if N is no such number.
int takeRounds(int& argc, char** argv)
{
    constexpr char option[] = "--rounds=";
    int rounds = usualRounds;
    int kept = 1;
    for (int i = 1; i < argc; ++i) {
        if (std::strncmp(argv[i], option, sizeof(option) - 1) == 0) {
            const long number = std::strtol(argv[i] + sizeof(option) - 1, nullptr, 10);
            rounds = number > 0 && number <= 1000 ? static_cast<int>(number) : 0;
        } else {
            argv[kept++] = argv[i];
        }
    }
    argc = kept;
    argv[argc] = nullptr;
    return rounds;
}

} // namespace

int main(int argc, char** argv)
{
    const int rounds = takeRounds(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (rounds == 0 || benchmark::ReportUnrecognizedArguments(argc, argv)) {
        std::cerr << "usage: sceneBenchmarks [--rounds=1...1000] [options of Google Benchmark]\n";
        return 2;
    }
    benchmarks::registerLoadBenchmarks(rounds);
    benchmarks::registerPreparationBenchmarks(rounds);
    benchmarks::registerEvaluationBenchmarks();
    benchmarks::registerContainerBenchmarks();
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return benchmarks::hasFailed() ? 1 : 0;
}
