#pragma once

#include <cstddef>
#include <limits>
#include <string>

namespace test {

/// The triangles of a document as another reader, Assimp, finds them in the world.
struct Shape {
    std::size_t triangles = 0;
    double area = 0;
    double low[3] = {infinity, infinity, infinity};
    double high[3] = {-infinity, -infinity, -infinity};

    static constexpr double infinity = std::numeric_limits<double>::infinity();
};

/// Expects that the reader takes the file.
Shape shapeOf(const std::string& file);

} // namespace test
