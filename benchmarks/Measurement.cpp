#include "Measurement.h"

#include <fstream>
#include <iostream>
#include <limits>
#include <string>

namespace benchmarks {

namespace {

std::timespec processorTime()
{
    std::timespec now = {};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return now;
}

// Peak resident memory of this program alone, unlike `ru_maxrss`, which starts with the peak of the parent process.
unsigned long peakKibibytes()
{
    std::ifstream status("/proc/self/status");
    std::string field;
    while (status >> field) {
        unsigned long peak = 0;
        if (field == "VmHWM:" && status >> peak) {
            return peak;
        }
        status.ignore(std::numeric_limits<std::streamsize>::max(), '\n');
    }
    return 0;
}

} // namespace

Measurement::Measurement() : m_start(processorTime()) {}

double Measurement::seconds() const
{
    const std::timespec end = processorTime();
    return static_cast<double>(end.tv_sec - m_start.tv_sec) + 1e-9 * static_cast<double>(end.tv_nsec - m_start.tv_nsec);
}

void Measurement::print() const
{
    const double taken = seconds();
    std::cout << taken << ' ' << peakKibibytes() << '\n';
}

} // namespace benchmarks
