// The code in the guide "Conventions".
#include <libVideo/SceneGraph.h>

#include <libMath/MatrixBuilders.h>

#include <cstddef>
#include <cstring>
#include <iostream>

namespace {

using Matrix = libMath::Matrix<float, 4, 4>;
using Vector = libMath::Vector<float, 4>;

// [column-vector]
// M · p with the point as a column, for the matrices of nodes and transformations.
Vector transformed(const Matrix& m, const Vector& p)
{
    Vector result;
    for (unsigned r = 0; r < 4; ++r) {
        for (unsigned c = 0; c < 4; ++c) {
            result[r] += m[4 * r + c] * p[c];
        }
    }
    return result;
}
// [/column-vector]

// [row-vector]
// p · M with the point as a row, for the view and the projection of a camera.
Vector projected(const Vector& p, const Matrix& m)
{
    Vector result;
    for (unsigned c = 0; c < 4; ++c) {
        for (unsigned r = 0; r < 4; ++r) {
            result[c] += p[r] * m[4 * r + c];
        }
    }
    return result;
}
// [/row-vector]

Vector point(float x, float y, float z)
{
    Vector result;
    result[0] = x;
    result[1] = y;
    result[2] = z;
    result[3] = 1.0f;
    return result;
}

// [corner]
// Reads the position of a corner of a triangle list from the vertex stream.
libMath::Vector<float, 3> cornerPosition(libVideo::Primitive& primitive, unsigned corner)
{
    libMath::Vector<float, 3> position;
    libVideo::VertexLayout layout;
    if (primitive.positionLayout(layout) && layout.byteSize == 3 * sizeof(float)) {
        const std::size_t vertex = primitive.indexBuffer()[corner];
        const unsigned char* const bytes = primitive.vertexBuffer().get() + vertex * primitive.bytesPerVertex();
        std::memcpy(&position[0], bytes + layout.byteOffset, layout.byteSize);
    }
    return position;
}
// [/corner]

} // namespace

int main(int argc, char** argv) // NOLINT(bugprone-exception-escape): an exception may end the program
{
    // [rotation]
    const libMath::Vector<float, 3> axis(0.0f, 0.0f, 1.0f);
    const Matrix quarter = libMath::axisAngleRotationMatrix(axis, 1.5707963267948966);
    std::cout << "x turns to y: " << quarter[4] << '\n';
    // [/rotation]

    // [order]
    Matrix move;
    move.setIdentity();
    move(0, 3) = 5.0f; // a translation belongs in the fourth column
    const Vector moved = transformed(move * quarter, point(0.0f, -1.0f, 0.0f)); // turned first
    std::cout << "x becomes " << moved[0] << '\n';
    // [/order]

    libVideo::Scene scene;
    if (argc != 2 || !scene.createFromCollada(argv[1])) {
        return 1;
    }
    libVideo::VisualScene& world = scene.visualScene();
    // [camera]
    world.transform(); // now positions are those in the world
    libVideo::CameraInstance& camera = *world.cameraList()[0];
    const Matrix view = camera.setLookAtNode(camera.lookAtNode()); // the same node at its new position
    const Matrix viewProjection = view * camera.projection();
    const libMath::Vector<float, 3> seen = camera.lookAtNode()->position();
    const Vector clip = projected(point(seen[0], seen[1], seen[2]), viewProjection);
    const float column = (1.0f + clip[0] / clip[3]) * 320.0f; // of a picture of 640 by 480
    const float row = (1.0f - clip[1] / clip[3]) * 240.0f;
    std::cout << "what the camera looks at is at " << column << ' ' << row << '\n';
    const Vector beside = projected(point(seen[0] + 1.0f, seen[1], seen[2]), viewProjection);
    std::cout << "what is further along x is on its " << (beside[0] < 0.0f ? "left" : "right") << '\n';
    // [/camera]

    const libVideo::GeometryTable::Bucket* const plate = world.geometryTable().lookup("plate");
    if (plate == nullptr) {
        return 1;
    }
    // [triangle]
    libVideo::Primitive& triangles = *plate->value->mesh().primitives()[0];
    for (unsigned corner = 0; corner < 3; ++corner) {
        const libMath::Vector<float, 3> position = cornerPosition(triangles, corner);
        std::cout << "corner " << corner << ": " << position[0] << ' ' << position[1] << ' ' << position[2] << '\n';
    }
    // [/triangle]
}
