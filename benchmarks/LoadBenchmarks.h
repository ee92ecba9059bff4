#pragma once

namespace benchmarks {

/// Registers "load/DOCUMENT/SIZE" for documents of all kinds and sizes. Each opens and loads one document in turn that
/// many times, and reports the medians of the processor time of both, the peak of resident memory of both, their ratios,
/// and what these ratios are meant to be.
void registerLoadBenchmarks(int rounds);

} // namespace benchmarks
