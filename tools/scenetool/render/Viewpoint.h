#pragma once

#include "RenderMath.h"
#include "ScenePose.h"

#include <string>
#include <vector>

namespace scenetool {

/// Where a picture is taken from.
struct Viewpoint {
    /// To OpenGL's clip space: x to the right, y up, depth from -w to w.
    Matrix4 clipFromWorld;
    Vector3 eye;
    bool isFar = false; ///< all lines of sight have one direction
    Vector3 towards;    ///< that direction then, towards the eye
};

/// The axis that points up in a view of the whole scene.
enum class UpAxis { x, y, z };

/// A look at a point from around it, as a hand would turn the thing.
struct Orbit {
    Vector3 target;
    float distance = 1.0f;
    float yaw = 0.5f;    ///< radians to the right of the front
    float pitch = 0.42f; ///< radians above the ground
    UpAxis up = UpAxis::y;
    Vector3 center; ///< of the sphere that holds all that is shown
    float radius = 1.0f;

    /// What the height of the picture spans at the distance of the target.
    float spanAtTarget() const;

    /// Unit vectors to the right of, above and towards the one who looks, in a right-handed world.
    Vector3 right() const;
    Vector3 above() const;
    Vector3 towards() const;
};

/// All points, from the front right, a little from above. They fill the picture but for a little air.
/// @param aspect width of the picture by its height
Orbit framed(const std::vector<Vector3>& points, UpAxis up, float aspect);

/// @param aspect width of the picture by its height
Viewpoint viewpointOf(const Orbit& orbit, float aspect);

/// What a camera of the scene sees. The picture shows all of it and nothing stretched; where the sides of the picture
/// are in another ratio than those of the projection, it shows more.
///
/// A camera that looks at a node uses the library's view. That one is left-handed while documents are right-handed, so
/// the picture is mirrored back. A camera without such a node looks along -Z of its own.
/// @param spareProjection stands in for a projection that the evaluation has left unusable
/// @param orthographic what the camera stands in for, if prepare has put it far away; else null
/// @return nothing if the camera can show nothing, with `reason` set
std::optional<Viewpoint> viewpointOf(const libVideo::CameraInstance& camera, const ScenePose& pose,
                                     const Matrix4& spareProjection, float aspect,
                                     const libPrepare::Approximation* orthographic, std::string& reason);

} // namespace scenetool
