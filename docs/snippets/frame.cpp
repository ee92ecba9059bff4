// Code in the guide "From a file to a drawn frame": a host that lists what there is to draw.
#include <libVideo/SceneGraph.h>

#include <iostream>

namespace {

// [draw-list]
// One line for everything that a renderer has to draw.
void printDrawList(const libVideo::VisualScene& scene)
{
    for (const libVideo::GeometryTable::Bucket& bucket : scene.geometryTable()) {
        const libVideo::Geometry& geometry = *bucket.value;
        for (const libVideo::NodeHandle& node : geometry.nodes()) {
            for (const libVideo::SharedHandle<libVideo::Primitive>& primitive : geometry.mesh().primitives()) {
                std::cout << geometry.id() << " on " << node->id() << " in " << primitive->material() << ": "
                          << primitive->count() << " triangles of " << primitive->indexBuffer().size() << " corners, "
                          << primitive->totalByteSize() / primitive->bytesPerVertex() << " vertices\n";
            }
        }
    }
}
// [/draw-list]

// [layout]
// What lies where in a vertex.
void printLayout(const libVideo::Primitive& primitive)
{
    std::cout << primitive.bytesPerVertex() << " bytes a vertex:";
    for (const libVideo::VertexLayout& attribute : primitive.vertexLayout()) {
        const bool isPosition = attribute.semantic == libVideo::SEMANTIC_POSITION;
        std::cout << ' ' << (isPosition ? "position" : "normal") << " at " << attribute.byteOffset << ", "
                  << attribute.byteSize / sizeof(float) << " floats;";
    }
    std::cout << '\n';
}
// [/layout]

} // namespace

int main(int argc, char** argv)
{
    // [load]
    libVideo::Scene scene;
    if (argc != 2 || !scene.createFromCollada(argv[1])) {
        return 1; // the reason went to standard error
    }
    const libVideo::VisualScene& world = scene.visualScene();
    // [/load]
    printDrawList(world);
    // [lookup]
    const libVideo::GeometryTable::Bucket* const plate = world.geometryTable().lookup("plate");
    if (plate != nullptr) {
        printLayout(*plate->value->mesh().primitives()[0]);
    }
    // [/lookup]
}
