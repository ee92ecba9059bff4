// documentPrepare IN OUT: measures preparing a document.

#include "Measurement.h"

#include <libPrepare/Prepare.h>

#include <cstdlib>

int main(int argc, char** argv)
{
    const benchmarks::Measurement measurement;
    if (argc != 3 || !libPrepare::prepare(argv[1], argv[2]).done) {
        return EXIT_FAILURE;
    }
    measurement.print();
    return EXIT_SUCCESS;
}
