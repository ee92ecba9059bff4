// documentOpen FILE: what the document model's own open takes, with nothing of this library.

#include "Measurement.h"

#include <libVideo/ColladaDom.h>

#include <cstdlib>

int main(int argc, char** argv)
{
    const benchmarks::Measurement measurement;
    DAE dae(nullptr, nullptr, "1.4.1");
    if (argc != 2 || dae.open(argv[1]) == nullptr) {
        return EXIT_FAILURE;
    }
    measurement.print(); // without freeing what was read
    return EXIT_SUCCESS;
}
