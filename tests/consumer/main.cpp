// A project of its own that uses every installed library: text, math and a load.

#include <libVideo/SceneGraph.h>

#include <libMath/MatrixBuilders.h>
#include <vesk/vesk.h>

#include <cstdio>

int main(int argc, char** argv)
{
    if (argc != 2) {
        return 2;
    }
    libVideo::Scene scene;
    if (!scene.createFromCollada(argv[1])) {
        return 1;
    }
    scene.visualScene().transform();
    const libMath::Vector<float, 3> up(0.0f, 1.0f, 0.0f);
    const libMath::Vector<float, 3> origin;
    const libMath::Vector<float, 3> behind(0.0f, 0.0f, 5.0f);
    const float depth = libMath::lookAtTransformMatrix(behind, origin, up)[11];
    std::printf("%u nodes below the root, %g\n", scene.visualScene().root().children().size(),
                static_cast<double>(depth));
    return depth == -5.0f ? 0 : 1;
}
