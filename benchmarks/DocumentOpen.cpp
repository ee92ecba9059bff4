// documentOpen FILE: measures how the document model opens a document by itself, without this library.

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
    measurement.print(); // does not include freeing the document
    return EXIT_SUCCESS;
}
