// documentTurns FILE ROUNDS: opens and loads a document in turn in one process, and prints the seconds of both, a line for
// each round.

#include "Measurement.h"

#include <libVideo/SceneGraph.h>

#include <cstdlib>
#include <iostream>
#include <stdexcept>
#include <string>

namespace {

// In both, the clock is read before what was made is freed.

double secondsOfOpen(const std::string& path)
{
    const benchmarks::Measurement measurement;
    DAE dae(nullptr, nullptr, "1.4.1");
    if (dae.open(path) == nullptr) {
        throw std::runtime_error("the document does not open");
    }
    return measurement.seconds();
}

double secondsOfLoad(const std::string& path)
{
    const benchmarks::Measurement measurement;
    libVideo::Scene scene;
    if (!scene.createFromCollada(path.c_str())) {
        throw std::runtime_error("the document does not load");
    }
    return measurement.seconds();
}

} // namespace

int main(int argc, char** argv)
{
    try {
        const long rounds = argc == 3 ? std::strtol(argv[2], nullptr, 10) : 0;
        for (long i = 0; i < rounds; ++i) {
            const double open = secondsOfOpen(argv[1]);
            std::cout << open << ' ' << secondsOfLoad(argv[1]) << '\n';
        }
        return rounds > 0 ? EXIT_SUCCESS : EXIT_FAILURE;
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
        return EXIT_FAILURE;
    }
}
