// documentLoad FILE: measures loading a document into a new scene.

#include "Measurement.h"

#include <libVideo/SceneGraph.h>

#include <cstdlib>

int main(int argc, char** argv)
{
    const benchmarks::Measurement measurement;
    libVideo::Scene scene;
    if (argc != 2 || !scene.createFromCollada(argv[1])) {
        return EXIT_FAILURE;
    }
    measurement.print(); // does not include freeing the scene
    return EXIT_SUCCESS;
}
