#pragma once

namespace scenetool {

/// The crease angle in degrees if none is given: flatter edges of a mesh without normals are smoothed.
constexpr double defaultCreaseAngle = 60.0;

} // namespace scenetool
