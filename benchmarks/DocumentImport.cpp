// documentImport FILE: what it takes Assimp to import a document.

#include "Measurement.h"

#include <assimp/Importer.hpp>
#include <assimp/config.h>
#include <assimp/postprocess.h>

#include <cstdlib>

namespace {

// They bring what a load brings: one index list of shared vertices, and triangles apart from points and lines.
constexpr unsigned flags = aiProcess_JoinIdenticalVertices | aiProcess_SortByPType | aiProcess_Triangulate;

} // namespace

int main(int argc, char** argv)
{
    const benchmarks::Measurement measurement;
    Assimp::Importer importer;
    importer.SetPropertyBool(AI_CONFIG_IMPORT_NO_SKELETON_MESHES, true); // else it makes a mesh for each node of a tree
    if (argc != 2 || importer.ReadFile(argv[1], flags) == nullptr) {
        return EXIT_FAILURE;
    }
    measurement.print(); // without freeing what was read
    return EXIT_SUCCESS;
}
