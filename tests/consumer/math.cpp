// A project of its own that takes the math alone.

#include <libMath/MatrixBuilders.h>

int main()
{
    const libMath::Vector<float, 3> up(0.0f, 1.0f, 0.0f);
    const libMath::Vector<float, 3> origin;
    const libMath::Vector<float, 3> behind(0.0f, 0.0f, 5.0f);
    return libMath::lookAtTransformMatrix(behind, origin, up)[11] == -5.0f ? 0 : 1;
}
