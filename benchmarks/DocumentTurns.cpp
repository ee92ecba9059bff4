// documentTurns FILE ROUNDS: opens and loads a document in turn in one process, and prints a line for each round: the
// seconds of the document model's own open, of building a scene from what it opened, and of a load as a whole.

#include "Measurement.h"

#include <libVideo/SceneGraph.h>

#include <cstdlib>
#include <exception>
#include <iostream>
#include <stdexcept>
#include <string>

namespace {

// In all, the clock is read before what was made is freed.

void expect(bool holds)
{
    if (!holds) {
        throw std::runtime_error("the document does not load");
    }
}

// Does what a load does once the document is open.
double secondsOfBuild(DAE& dae, daeElement* opened)
{
    const benchmarks::Measurement measurement;
    const domCOLLADA* const root = daeSafeCast<domCOLLADA>(opened);
    libVideo::SceneResources resources;
    libVideo::createAnimationListFromCollada(root, dae, resources.animationList);
    libVideo::createCameraListFromCollada(root, dae, resources.cameraList);
    libVideo::createPointLightListFromCollada(root, resources.pointLightList);
    libVideo::createSpotLightListFromCollada(root, dae, resources.spotLightList);
    const daeElementRef scene = root->getScene()->getInstance_visual_scene()->getUrl().getElement();
    libVideo::VisualScene built;
    expect(built.createFromCollada(*daeSafeCast<domVisual_scene>(scene), libVideo::SceneResourcesLink(&resources)));
    return measurement.seconds();
}

struct OpenAndBuild {
    double open = 0.0;
    double build = 0.0;
};

OpenAndBuild secondsOfOpenAndBuild(const std::string& path)
{
    OpenAndBuild seconds;
    const benchmarks::Measurement measurement;
    DAE dae(nullptr, nullptr, "1.4.1");
    daeElement* const root = dae.open(path);
    seconds.open = measurement.seconds();
    expect(root != nullptr);
    seconds.build = secondsOfBuild(dae, root);
    return seconds;
}

double secondsOfLoad(const std::string& path)
{
    const benchmarks::Measurement measurement;
    libVideo::Scene scene;
    expect(scene.createFromCollada(path.c_str()));
    return measurement.seconds();
}

} // namespace

int main(int argc, char** argv)
{
    try {
        const long rounds = argc == 3 ? std::strtol(argv[2], nullptr, 10) : 0;
        for (long i = 0; i < rounds; ++i) {
            const OpenAndBuild seconds = secondsOfOpenAndBuild(argv[1]);
            std::cout << seconds.open << ' ' << seconds.build << ' ' << secondsOfLoad(argv[1]) << '\n';
        }
        return rounds > 0 ? EXIT_SUCCESS : EXIT_FAILURE;
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
        return EXIT_FAILURE;
    }
}
