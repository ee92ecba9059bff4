#pragma once

#include <string>

namespace docsTests {

/// An effect with this name that emits a color and reflects none.
std::string glow(const std::string& name, const std::string& color);
/// A node at this position with the geometry and the material of this name.
std::string shown(const std::string& name, const std::string& place);
/// A scene with a camera on a node with this transform. Its angle is 90 degrees, so at a distance of 5 the picture is
/// 10 wide and 10 high. From the front there is a red triangle at the upper right, a green one at the lower left, and a
/// blue one behind the red one.
std::string threeTriangles(const std::string& viewer, const std::string& extra);
/// The same with a camera at (0, 0, 5) that looks along -z; the picture is 10 wide and 10 high at z = 0.
std::string seenFromTheFront(const std::string& libraries, const std::string& nodes);
/// Libraries with a material of this name and a triangle that faces +z, with legs of length 1.
std::string materialAndMesh(const std::string& name, const std::string& effectLibrary);

} // namespace docsTests
