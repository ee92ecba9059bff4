// documentImport FILE: measures how Assimp imports a document.

#include "Measurement.h"

#include <assimp/Importer.hpp>
#include <assimp/config.h>
#include <assimp/postprocess.h>

#include <cstdlib>

namespace {

// These give the same result as a load: one index list of shared vertices, and triangles separate from points and
// lines.
constexpr unsigned flags = aiProcess_JoinIdenticalVertices | aiProcess_SortByPType | aiProcess_Triangulate;

} // namespace

int main(int argc, char** argv)
{
    const benchmarks::Measurement measurement;
    Assimp::Importer importer;
    importer.SetPropertyBool(AI_CONFIG_IMPORT_NO_SKELETON_MESHES, true); // otherwise it makes a mesh for each node
    if (argc != 2 || importer.ReadFile(argv[1], flags) == nullptr) {
        return EXIT_FAILURE;
    }
    measurement.print(); // does not include freeing the result
    return EXIT_SUCCESS;
}
