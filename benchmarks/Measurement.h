#pragma once

#include <ctime>

namespace benchmarks {

/// Measures the processor time of this process since the construction, and its peak memory.
class Measurement {
public:
    /// Starts the clock.
    Measurement();

    double seconds() const;
    /// Writes the seconds and the peak resident memory in KiB as one line to standard output.
    void print() const;

private:
    std::timespec m_start = {};
};

} // namespace benchmarks
