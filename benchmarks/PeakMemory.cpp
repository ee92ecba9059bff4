// peakMemory WORK FILE: does one work on a document, and prints the most memory in KiB that the process has had resident.

#include "DocumentWork.h"

#include <exception>
#include <fstream>
#include <iostream>
#include <limits>
#include <stdexcept>
#include <string>

namespace {

// Of this program alone: `ru_maxrss` begins with the peak of the process that started it.
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
    throw std::runtime_error("/proc/self/status tells no peak");
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 3) {
        std::cerr << "usage: peakMemory open|load|import FILE\n";
        return 2;
    }
    try {
        benchmarks::secondsOf(benchmarks::workOf(argv[1]), argv[2]);
        std::cout << peakKibibytes() << '\n';
    } catch (const std::exception& error) {
        std::cerr << "peakMemory: " << error.what() << '\n';
        return 1;
    }
    return 0;
}
