#pragma once

#include "Image.h"

#include <array>
#include <vector>

namespace testSupport {

/// The expected picture by the formulas alone: a small ray tracer on numbers that a test gives directly. It shares no
/// code with the renderer and has no documents, matrices or clip space.
struct RayTracer {
    using Vector = std::array<double, 3>;

    /// A flat triangle, lit on the side from which it is seen, with the specular term of Phong.
    struct Triangle {
        Vector a, b, c;
        Vector emission, ambient, diffuse, specular; ///< there is no ambient light
        double shininess;
    };
    struct Light {
        Vector position;
        Vector color{1, 1, 1};
        Vector attenuation{1, 0, 0};
        Vector direction{0, 0, 0}; ///< for a spot light; zero for a point light
        double innerAngle = 0.0;   ///< degrees across the cone
        double outerAngle = 0.0;
        double exponent = 0.0;
    };
    /// Looks from the eye to the target; the tangents are those of half the angles of view.
    struct Camera {
        Vector eye;
        Vector target{0, 0, 0};
        Vector up{0, 1, 0};
        double horizontalTangent = 1.0;
        double verticalTangent = 1.0;
    };

    std::vector<Triangle> triangles;
    std::vector<Light> lights;
    Camera camera;
    Vector background{0, 0, 0};

    /// Averages 16 rays per pixel.
    Image picture(int width, int height) const;

private:
    Vector trace(const Vector& direction) const;
    Vector shade(const Triangle& triangle, const Vector& point, const Vector& towardsEye) const;
};

} // namespace testSupport
