// What a load costs beside the document model's own open, what evaluating a scene costs, and the containers beside those
// of the standard library.

#include "LoadBenchmarks.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <cstring>

namespace {

constexpr int usualRounds = 7;

// Takes "--rounds=N" from the arguments: how often a document is opened and loaded.
int takeRounds(int& argc, char** argv)
{
    constexpr char option[] = "--rounds=";
    int rounds = usualRounds;
    int kept = 1;
    for (int i = 1; i < argc; ++i) {
        if (std::strncmp(argv[i], option, sizeof(option) - 1) == 0) {
            rounds = static_cast<int>(std::strtol(argv[i] + sizeof(option) - 1, nullptr, 10));
        } else {
            argv[kept++] = argv[i];
        }
    }
    argc = kept;
    return rounds > 0 ? rounds : usualRounds;
}

} // namespace

int main(int argc, char** argv)
{
    const int rounds = takeRounds(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 2;
    }
    benchmarks::registerLoadBenchmarks(rounds);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
