#pragma once

#include <benchmark/benchmark.h>

#include <string>

namespace benchmarks {

/// Registers "load/DOCUMENT/SIZE" for documents of all kinds and sizes. Each benchmark alternately opens and loads a
/// document `rounds` times, each time in a new process. It reports the medians of processor time and peak resident
/// memory of both, their ratios, and the ratio of the times in a process that keeps running.
void registerLoadBenchmarks(int rounds);

/// Registers "prepare/DOCUMENT/SIZE". Each benchmark compares preparing a document with loading the original and saving
/// the result by pugixml alone, each in a new process. It reports the medians of processor time, and peak resident
/// memory.
void registerPreparationBenchmarks(int rounds);

/// Registers "evaluate/WHAT/SIZE", where the size is the number of keys of a curve, or of nodes to fold.
void registerEvaluationBenchmarks();

/// Registers "CONTAINER/OPERATION/vesk/SIZE", and the same for the standard library as ".../std/SIZE". All report
/// `seconds_per_item`, where an item is an element, a key or a text.
void registerContainerBenchmarks();

/// Ends a benchmark whose figures would be meaningless, and makes the program fail.
void fail(benchmark::State& state, const std::string& reason);
/// Whether `fail` has been called.
bool hasFailed();

} // namespace benchmarks
