#include "RayTracer.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

namespace testSupport {

namespace {

using Vector = RayTracer::Vector;

Vector operator+(const Vector& a, const Vector& b)
{
    return {a[0] + b[0], a[1] + b[1], a[2] + b[2]};
}

Vector operator-(const Vector& a, const Vector& b)
{
    return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}

Vector operator*(const Vector& a, double factor)
{
    return {a[0] * factor, a[1] * factor, a[2] * factor};
}

Vector operator*(const Vector& a, const Vector& b)
{
    return {a[0] * b[0], a[1] * b[1], a[2] * b[2]};
}

double dot(const Vector& a, const Vector& b)
{
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

Vector cross(const Vector& a, const Vector& b)
{
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

Vector unit(const Vector& a)
{
    return a * (1.0 / std::sqrt(dot(a, a)));
}

// The distance along a ray to a triangle.
std::optional<double> meet(const Vector& eye, const Vector& direction, const RayTracer::Triangle& triangle)
{
    const Vector ab = triangle.b - triangle.a;
    const Vector ac = triangle.c - triangle.a;
    const Vector across = cross(direction, ac);
    const double determinant = dot(ab, across);
    if (std::fabs(determinant) < 1e-12) {
        return std::nullopt;
    }
    const Vector offset = eye - triangle.a;
    const double u = dot(offset, across) / determinant;
    const Vector turned = cross(offset, ab);
    const double v = dot(direction, turned) / determinant;
    const double distance = dot(ac, turned) / determinant;
    return u >= 0.0 && v >= 0.0 && u + v <= 1.0 && distance > 0.0 ? std::optional<double>(distance) : std::nullopt;
}

// The intensity of a light in a direction.
double inCone(const RayTracer::Light& light, const Vector& towardsLight)
{
    if (dot(light.direction, light.direction) == 0.0) {
        return 1.0;
    }
    constexpr double halfDegrees = 3.141592653589793 / 360.0;
    const double cosine = dot(towardsLight * -1.0, unit(light.direction));
    const double inner = std::cos(light.innerAngle * halfDegrees);
    const double outer = std::cos(light.outerAngle * halfDegrees);
    const double edge = std::clamp((cosine - outer) / (inner - outer), 0.0, 1.0);
    return edge * std::pow(std::max(cosine, 0.0), light.exponent);
}

} // namespace

Vector RayTracer::shade(const Triangle& triangle, const Vector& point, const Vector& towardsEye) const
{
    Vector normal = unit(cross(triangle.b - triangle.a, triangle.c - triangle.a));
    normal = dot(normal, towardsEye) < 0.0 ? normal * -1.0 : normal;
    Vector sum = triangle.emission;
    for (const Light& light : lights) {
        const Vector way = light.position - point;
        const double distance = std::sqrt(dot(way, way));
        const Vector towardsLight = unit(way);
        const double facing = dot(normal, towardsLight);
        if (facing <= 0.0) {
            continue;
        }
        const double fading = dot(light.attenuation, {1.0, distance, distance * distance});
        const Vector arriving = light.color * (inCone(light, towardsLight) / fading);
        const Vector mirrored = normal * (2.0 * facing) - towardsLight;
        const double gloss =
            triangle.shininess > 0.0 ? std::pow(std::max(dot(mirrored, towardsEye), 0.0), triangle.shininess) : 0.0;
        sum = sum + arriving * (triangle.diffuse * facing + triangle.specular * gloss);
    }
    return {std::clamp(sum[0], 0.0, 1.0), std::clamp(sum[1], 0.0, 1.0), std::clamp(sum[2], 0.0, 1.0)};
}

Vector RayTracer::trace(const Vector& direction) const
{
    const Triangle* nearest = nullptr;
    double distance = std::numeric_limits<double>::infinity();
    for (const Triangle& triangle : triangles) {
        const std::optional<double> met = meet(camera.eye, direction, triangle);
        if (met && *met < distance) {
            distance = *met;
            nearest = &triangle;
        }
    }
    return nearest == nullptr ? background : shade(*nearest, camera.eye + direction * distance, unit(direction * -1.0));
}

Image RayTracer::picture(int width, int height) const
{
    constexpr int steps = 4;
    const Vector forward = unit(camera.target - camera.eye);
    const Vector right = unit(cross(forward, camera.up));
    const Vector above = cross(right, forward);
    Image image(width, height);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            Vector sum{0, 0, 0};
            for (int i = 0; i < steps * steps; ++i) {
                const double column = x + (i % steps + 0.5) / steps;
                const double row = y + (i / steps + 0.5) / steps; // NOLINT(bugprone-integer-division): a whole row
                const double across = (2.0 * column / width - 1.0) * camera.horizontalTangent;
                const double up = (1.0 - 2.0 * row / height) * camera.verticalTangent;
                sum = sum + trace(forward + right * across + above * up);
            }
            for (std::size_t i = 0; i < 3; ++i) {
                image.at(x, y)[i] = static_cast<int>(std::lround(255.0 * sum[i] / (steps * steps)));
            }
        }
    }
    return image;
}

} // namespace testSupport
