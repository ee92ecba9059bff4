// The code in the guide "Time and animation".
#include <libVideo/SceneGraph.h>

#include <iostream>
#include <map>

namespace {

using Matrix = libMath::Matrix<float, 4, 4>;

// [world]
// The world matrices of all nodes at a time: the world matrix of the parent times the node's own matrix.
std::map<const libVideo::Node*, Matrix> worldMatrices(const libVideo::VisualScene& scene, double time)
{
    std::map<const libVideo::Node*, Matrix> world;
    world[&scene.root()] = scene.root().transform(); // the identity
    vesk::Array<libVideo::NodeLink> nodes = scene.root().children();
    for (unsigned i = 0; i < nodes.size(); ++i) { // the list grows: parents come before their children
        libVideo::Node& node = *nodes[i];
        world[&node] = world[node.parent().get()] * node.transform(time);
        nodes.appendArray(node.children());
    }
    return world;
}
// [/world]

libVideo::NodeLink findNode(const libVideo::VisualScene& scene, const vesk::String& id)
{
    vesk::Array<libVideo::NodeLink> nodes = scene.root().children();
    for (unsigned i = 0; i < nodes.size(); ++i) {
        if (nodes[i]->id() == id) {
            return nodes[i];
        }
        nodes.appendArray(nodes[i]->children());
    }
    return libVideo::NodeLink();
}

void print(const char* what, const libMath::Vector<float, 3>& v)
{
    std::cout << what << ": " << v[0] << ' ' << v[1] << ' ' << v[2] << '\n';
}

} // namespace

int main(int argc, char** argv)
{
    libVideo::Scene scene;
    if (argc != 2 || !scene.createFromCollada(argv[1])) {
        return 1;
    }
    libVideo::VisualScene& world = scene.visualScene();
    const libVideo::NodeLink hook = findNode(world, "hook");
    const libVideo::NodeLink mast = findNode(world, "mast");
    const libVideo::NodeLink jib = findNode(world, "jib");
    if (!hook || !mast || !jib) {
        return 1;
    }

    // [ask]
    print("at rest", hook->position());
    print("before the first key", hook->position(0.5));
    print("on a key", hook->position(1.0));
    print("between two keys", hook->position(1.25));
    print("one round later", hook->position(1.25 + hook->animationLength()));
    print("at the end of the round", hook->position(hook->animationLength()));
    // [/ask]

    // [frames]
    for (const double time : {0.0, 1.25}) {
        const std::map<const libVideo::Node*, Matrix> matrices = worldMatrices(world, time);
        const Matrix& matrix = matrices.at(jib.get());
        std::cout << "jib at " << time << " s: x axis " << matrix[0] << ", height " << matrix[7] << '\n';
    }
    // [/frames]

    // [fold]
    print("mast, local", mast->position());
    world.transform();
    print("mast, folded", mast->position());
    world.transform(); // once too often
    print("mast, folded again", mast->position());
    // [/fold]
}
