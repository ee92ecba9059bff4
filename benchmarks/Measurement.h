#pragma once

#include <ctime>

namespace benchmarks {

/// What a process has used since a start.
class Measurement {
public:
    /// Starts the clock: the processor time of the process.
    Measurement();

    double seconds() const;
    /// Writes the seconds, and the most memory in KiB that was ever resident, in one line on standard output.
    void print() const;

private:
    std::timespec m_start = {};
};

} // namespace benchmarks
