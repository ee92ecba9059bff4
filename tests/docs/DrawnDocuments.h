#pragma once

#include <string>

namespace docsTests {

/// An effect of that name that emits a color and reflects none.
std::string glow(const std::string& name, const std::string& color);
/// A node at that place with the geometry and the material of that name.
std::string shown(const std::string& name, const std::string& place);
/// Seen by a camera on a node of that transform, at a right angle, so that at a distance of 5 the picture is 10 wide and
/// 10 high. From the front there is a red triangle to the right and above, a green one to the left and below, and a blue
/// one behind the red one.
std::string threeTriangles(const std::string& viewer, const std::string& extra);
/// What a camera sees from (0, 0, 5) along -z, with a picture 10 wide and 10 high at z = 0.
std::string seenFromTheFront(const std::string& libraries, const std::string& nodes);
/// Libraries with a material of that name and a triangle that faces +z, its legs 1 long.
std::string materialAndMesh(const std::string& name, const std::string& effectLibrary);

} // namespace docsTests
