// documentTurns load|build FILE ROUNDS: repeats two measurements in one process, and prints their seconds, one line per
// round: opening a document by the document model alone, and then either loading it, or building a scene from the
// opened document.

#include "Measurement.h"

#include <libVideo/SceneGraph.h>

#include <cstdlib>
#include <exception>
#include <iostream>
#include <stdexcept>
#include <string>

namespace {

// All functions stop the clock before they free the result.

void expect(bool holds)
{
    if (!holds) {
        throw std::runtime_error("the document does not load");
    }
}

// Does the same as a load after the document is open.
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

struct Round {
    double open = 0.0;
    double other = 0.0;
};

double secondsOfLoad(const std::string& path)
{
    const benchmarks::Measurement measurement;
    libVideo::Scene scene;
    expect(scene.createFromCollada(path.c_str()));
    return measurement.seconds();
}

Round openAndBuild(const std::string& path)
{
    Round round;
    const benchmarks::Measurement measurement;
    DAE dae(nullptr, nullptr, "1.4.1");
    daeElement* const root = dae.open(path);
    round.open = measurement.seconds();
    expect(root != nullptr);
    round.other = secondsOfBuild(dae, root);
    return round;
}

Round openThenLoad(const std::string& path)
{
    Round round;
    {
        const benchmarks::Measurement measurement;
        DAE dae(nullptr, nullptr, "1.4.1");
        expect(dae.open(path) != nullptr);
        round.open = measurement.seconds();
    }
    round.other = secondsOfLoad(path);
    return round;
}

void work(const std::string& kind, const std::string& path, long rounds)
{
    for (long i = 0; i < rounds; ++i) {
        const Round round = kind == "build" ? openAndBuild(path) : openThenLoad(path);
        std::cout << round.open << ' ' << round.other << '\n';
    }
}

} // namespace

int main(int argc, char** argv)
{
    try {
        expect(argc == 4);
        work(argv[1], argv[2], std::strtol(argv[3], nullptr, 10));
        return EXIT_SUCCESS;
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
        return EXIT_FAILURE;
    }
}
