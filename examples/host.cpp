#include <libVideo/SceneGraph.h>

#include <iostream>

// Prints where the nodes of a document stand, each below its parent, after 1.5 seconds.
int main(int argc, char** argv)
{
    libVideo::Scene scene;
    if (argc != 2 || !scene.createFromCollada(argv[1])) {
        return 1; // the reason went to standard error
    }
    vesk::Array<libVideo::NodeLink> nodes = scene.visualScene().root().children();
    for (unsigned i = 0; i < nodes.size(); ++i) { // the list grows: parents come before their children
        libVideo::Node& node = *nodes[i];
        const libMath::Vector<float, 3> place = node.position(1.5);
        std::cout << node.id() << " at " << place[0] << ' ' << place[1] << ' ' << place[2] << '\n';
        nodes.appendArray(node.children());
    }
}
