#pragma once

#include <benchmark/benchmark.h>

#include <string>

namespace benchmarks {

/// Registers "load/DOCUMENT/SIZE" for documents of all kinds and sizes. Each opens and loads one document in turn that
/// many times, each in a process of its own, and reports the medians of the processor time and of the peak of resident
/// memory of both, their ratios, the ratio of times in a process that goes on, and what these ratios are meant to be.
void registerLoadBenchmarks(int rounds);

/// Registers "prepare/DOCUMENT/SIZE": what it takes to prepare a document, beside a load of what is read and a save of what
/// is written by pugixml alone, each in a process of its own: medians of the processor time, peaks of resident memory.
void registerPreparationBenchmarks(int rounds);

/// Registers "evaluate/WHAT/SIZE": curves by their number of keys, folding by the number of nodes.
void registerEvaluationBenchmarks();

/// Registers "CONTAINER/OPERATION/vesk/SIZE", and the same with the standard library's twin as ".../std/SIZE". All report
/// `seconds_per_item`: an element, a key or a text.
void registerContainerBenchmarks();

/// Ends a benchmark whose figures would mean nothing, and lets the program fail.
void fail(benchmark::State& state, const std::string& reason);
/// Whether any benchmark has ended by `fail`.
bool hasFailed();

} // namespace benchmarks
