#include <libVideo/SceneGraph.h>

#include <iostream>

// Prints the world positions of the nodes of a document after 1.5 seconds.
int main(int argc, char** argv)
{
    if (argc != 2) {
        std::cerr << "usage: host FILE.dae\n";
        return 2;
    }
    libVideo::Scene scene;
    if (!scene.createFromCollada(argv[1])) {
        return 1; // the reason went to standard error
    }
    vesk::Array<libVideo::NodeLink> nodes = scene.visualScene().root().children();
    for (unsigned i = 0; i < nodes.size(); ++i) { // the list grows: parents come before their children
        nodes[i]->transform(1.5);
        nodes.appendArray(nodes[i]->children());
    }
    scene.visualScene().transform(); // folds each node's parent into it, once
    for (const libVideo::NodeLink& node : nodes) {
        const libMath::Vector<float, 3> place = node->position();
        std::cout << node->id() << " at " << place[0] << ' ' << place[1] << ' ' << place[2] << '\n';
    }
}
