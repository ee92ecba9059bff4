#include "Viewpoint.h"

namespace scenetool {

namespace {

constexpr float air = 1.06f;                // margin around the scene
constexpr float verticalScale = 2.4142135f; // cotangent of half of 45 degrees

// Converts from the viewer's space, with x to the right, y up, z forward and depth from 0 to w, to that of OpenGL.
Matrix4 glDepth()
{
    Matrix4 result = identity();
    result(2, 2) = 2.0f;
    result(2, 3) = -1.0f;
    return result;
}

Matrix4 projection(float xScale, float yScale, float near, float far)
{
    Matrix4 result;
    result(0, 0) = xScale;
    result(1, 1) = yScale;
    result(2, 2) = far / (far - near);
    result(2, 3) = -near * (far / (far - near));
    result(3, 2) = 1.0f;
    return result;
}

// The view matrix, whose rows are the axes of the viewer.
Matrix4 viewAlong(const Vector3& right, const Vector3& above, const Vector3& forward, const Vector3& eye)
{
    const Vector3* const axes[] = {&right, &above, &forward};
    Matrix4 view = identity();
    for (unsigned row = 0; row < 3; ++row) {
        for (unsigned column = 0; column < 3; ++column) {
            view(row, column) = (*axes[row])[column];
        }
        view(row, 3) = -axes[row]->dot(eye);
    }
    return view;
}

struct UpFrame {
    Vector3 right;
    Vector3 front; ///< towards the viewer
    Vector3 up;
};

// The axes that COLLADA defines for each up axis.
UpFrame frameOf(UpAxis up)
{
    switch (up) {
    case UpAxis::x:
        return {{0, -1, 0}, {0, 0, 1}, {1, 0, 0}};
    case UpAxis::z:
        return {{1, 0, 0}, {0, -1, 0}, {0, 0, 1}};
    case UpAxis::y:
        break;
    }
    return {{1, 0, 0}, {0, 0, 1}, {0, 1, 0}};
}

Vector3 combined(const UpFrame& frame, float right, float front, float up)
{
    return sum(sum(scaled(frame.right, right), scaled(frame.front, front)), scaled(frame.up, up));
}

bool isUsable(const Matrix4& projection)
{
    return isFinite(projection) && (projection[0] != 0.0f || projection[5] != 0.0f) && projection[14] != 0.0f;
}

// Widens the projection to the aspect ratio of the picture. If one scale is unknown, it follows from the other.
void fit(Matrix4& projection, float aspect)
{
    const float xScale = projection[0] != 0.0f ? projection[0] : projection[5] / aspect;
    const float yScale = projection[5] != 0.0f ? projection[5] : projection[0] * aspect;
    const bool isPictureWider = aspect * std::fabs(xScale) >= std::fabs(yScale);
    projection(0, 0) = isPictureWider ? std::copysign(yScale / aspect, xScale) : xScale;
    projection(1, 1) = isPictureWider ? yScale : std::copysign(xScale * aspect, yScale);
}

// The orthographic projection between the same planes. The document gives half of the width or height; the picture
// shows as much more as the widened projection does.
Matrix4 parallel(const Matrix4& fitted, const Matrix4& own, const libPrepare::Approximation& orthographic)
{
    const bool isByHeight = orthographic.ymag > 0.0;
    const double half = isByHeight ? orthographic.ymag : orthographic.xmag;
    const auto factor = static_cast<float>(1.0 / (half * static_cast<double>(isByHeight ? own[5] : own[0])));
    if (!std::isfinite(factor)) {
        return fitted;
    }
    const float near = -fitted[11] / fitted[10];
    const float far = near * fitted[10] / (fitted[10] - 1.0f);
    Matrix4 result = identity();
    result(0, 0) = fitted[0] * factor;
    result(1, 1) = fitted[5] * factor;
    result(2, 2) = 1.0f / (far - near);
    result(2, 3) = -near / (far - near);
    return isFinite(result) ? result : fitted;
}

// Transforms from the world to the viewer's space. Not finite if the nodes have no direction.
Matrix4 viewOf(const libVideo::CameraInstance& camera, const ScenePose& pose)
{
    const libVideo::Node& node = *camera.node();
    const Matrix4& world = pose.world(&node);
    if (!camera.lookAtNode()) {
        Matrix4 forward = identity();
        forward(2, 2) = -1.0f;
        const std::optional<Matrix4> view = inverse(world);
        return view ? forward * *view : Matrix4();
    }
    const libVideo::Node& target = *camera.lookAtNode();
    const bool isInWorld = !node.parent()->parent() && !target.parent()->parent();
    if (isInWorld && !isZero(node.transform())) {
        Matrix4 mirror = identity();
        mirror(0, 0) = -1.0f;
        return mirror * transposed(camera.view());
    }
    // The library's view ignores the parents of both nodes, so it is computed again in world coordinates.
    const Vector3 eye = columnOf(world, 3);
    const Vector3 forward = (columnOf(pose.world(&target), 3) - eye).normalized();
    const Vector3 right = forward.cross(columnOf(world, 1)).normalized();
    return viewAlong(right, right.cross(forward), forward, eye);
}

} // namespace

Vector3 Orbit::right() const
{
    return combined(frameOf(up), std::cos(yaw), -std::sin(yaw), 0.0f);
}

Vector3 Orbit::above() const
{
    return combined(frameOf(up), -std::sin(pitch) * std::sin(yaw), -std::sin(pitch) * std::cos(yaw), std::cos(pitch));
}

Vector3 Orbit::towards() const
{
    return combined(frameOf(up), std::cos(pitch) * std::sin(yaw), std::cos(pitch) * std::cos(yaw), std::sin(pitch));
}

float Orbit::spanAtTarget() const
{
    return 2.0f * distance / verticalScale;
}

Orbit framed(const std::vector<Vector3>& points, UpAxis up, float aspect)
{
    Orbit orbit;
    orbit.up = up;
    Box box;
    for (const Vector3& point : points) {
        box.add(point);
    }
    if (box.isEmpty()) {
        return orbit;
    }
    orbit.center = box.center();
    orbit.radius = box.radius() > 0.0f ? box.radius() : 1.0f;
    // A point is visible if its lateral distance from the line of sight is at most its depth times the tangent of half
    // the angle of view. So each side of the picture is a plane that has to be moved out to the outermost point, and
    // the eye is where the planes meet.
    const double tangents[2] = {aspect / verticalScale / air, 1.0f / verticalScale / air};
    const Vector3 axes[2] = {orbit.right(), orbit.above()};
    constexpr double least = std::numeric_limits<double>::lowest();
    double pushes[2][2] = {{least, least}, {least, least}};
    for (const Vector3& point : points) {
        const Vector3 seen = point - orbit.center;
        const double near = static_cast<double>(seen.dot(orbit.towards()));
        for (unsigned i = 0; i < 2; ++i) {
            const double across = static_cast<double>(seen.dot(axes[i]));
            pushes[i][0] = std::max(pushes[i][0], tangents[i] * near + across);
            pushes[i][1] = std::max(pushes[i][1], tangents[i] * near - across);
        }
    }
    double distance = 0.0;
    orbit.target = orbit.center;
    for (unsigned i = 0; i < 2; ++i) {
        distance = std::max(distance, (pushes[i][0] + pushes[i][1]) / (2.0 * tangents[i]));
        orbit.target = sum(orbit.target, scaled(axes[i], static_cast<float>((pushes[i][0] - pushes[i][1]) / 2.0)));
    }
    orbit.distance = distance > 0.0 ? static_cast<float>(distance) : verticalScale * orbit.radius;
    return orbit;
}

Viewpoint viewpointOf(const Orbit& orbit, float aspect)
{
    Viewpoint result;
    const Vector3 towards = orbit.towards();
    result.eye = sum(orbit.target, scaled(towards, orbit.distance));
    // The planes are in front of and behind the sphere, whatever its distance.
    const float depth = (result.eye - orbit.center).dot(towards);
    const float far = std::max(depth + 2.0f * orbit.radius, 0.1f * orbit.radius);
    const float near = std::max(depth - 2.0f * orbit.radius, 0.001f * far);
    result.clipFromWorld = glDepth() * projection(verticalScale / aspect, verticalScale, near, far) *
                           viewAlong(orbit.right(), orbit.above(), scaled(towards, -1.0f), result.eye);
    return result;
}

std::optional<Viewpoint> viewpointOf(const libVideo::CameraInstance& camera, const ScenePose& pose,
                                     const Matrix4& spareProjection, float aspect,
                                     const libPrepare::Approximation* orthographic, std::string& reason)
{
    if (!camera.node() || !camera.camera()) {
        reason = "it is on no node";
        return std::nullopt;
    }
    // The library's projection is for points as rows.
    Matrix4 projection = transposed(isUsable(camera.projection()) ? camera.projection() : spareProjection);
    if (!isUsable(transposed(projection))) {
        reason = "its projection is not usable";
        return std::nullopt;
    }
    const Matrix4 own = projection;
    fit(projection, aspect);
    if (orthographic != nullptr) {
        projection = parallel(projection, own, *orthographic);
    }
    const Matrix4 view = viewOf(camera, pose);
    const std::optional<Matrix4> back = inverse(view);
    if (!back) {
        reason = "its node has no direction";
        return std::nullopt;
    }
    Viewpoint result;
    result.clipFromWorld = glDepth() * projection * view;
    result.eye = columnOf(*back, 3);
    result.isFar = orthographic != nullptr;
    result.towards = scaled(columnOf(*back, 2).normalized(), -1.0f);
    return result;
}

} // namespace scenetool
