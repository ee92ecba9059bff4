#pragma once

#include "RenderMath.h"
#include "ScenePose.h"

#include <string>
#include <vector>

namespace scenetool {

/// The viewpoint of a picture.
struct Viewpoint {
    /// Transforms to OpenGL's clip space: x to the right, y up, depth from -w to w.
    Matrix4 clipFromWorld;
    Vector3 eye;
    bool isFar = false; ///< orthographic: all lines of sight are parallel
    Vector3 towards;    ///< direction towards the eye if orthographic
};

/// The axis that points up in a view of the whole scene.
enum class UpAxis { x, y, z };

/// A viewpoint that orbits a target.
struct Orbit {
    Vector3 target;
    float distance = 1.0f;
    float yaw = 0.5f;    ///< radians to the right of the front
    float pitch = 0.42f; ///< radians above the ground
    UpAxis up = UpAxis::y;
    Vector3 center; ///< of the sphere around the scene
    float radius = 1.0f;

    /// Height of the visible area at the distance of the target.
    float spanAtTarget() const;

    /// Unit vectors to the right, up, and towards the viewer, in a right-handed world.
    Vector3 right() const;
    Vector3 above() const;
    Vector3 towards() const;
};

/// A view of all points from the front right and slightly above. They fill the picture except for a small margin.
/// @param aspect width of the picture divided by its height
Orbit framed(const std::vector<Vector3>& points, UpAxis up, float aspect);

/// @param aspect width of the picture divided by its height
Viewpoint viewpointOf(const Orbit& orbit, float aspect);

/// The view of a camera of the scene. If the aspect ratios of picture and projection differ, the picture shows more
/// than the camera sees, instead of stretching or cropping it.
///
/// A camera that looks at a node uses the library's view matrix. It is left-handed while documents are right-handed, so
/// the picture is mirrored back. Any other camera looks along -Z of its own node.
/// @param spareProjection used if the evaluation has made the projection unusable
/// @param orthographic the orthographic camera that the camera approximates, or null
/// @return nothing, with `reason` set, if the camera cannot show anything
std::optional<Viewpoint> viewpointOf(const libVideo::CameraInstance& camera, const ScenePose& pose,
                                     const Matrix4& spareProjection, float aspect,
                                     const libPrepare::Approximation* orthographic, std::string& reason);

} // namespace scenetool
