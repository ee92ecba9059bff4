// Compares loading with the document model's own open, preparing with reading and writing, and the containers with
// those of the standard library; measures the evaluation of scenes.

#include "Benchmarks.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <cstring>
#include <iostream>

namespace {

constexpr int usualRounds = 7;

// Removes "--rounds=N" from the arguments. @return N, the number of measurements per document; 0 if it is invalid
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
