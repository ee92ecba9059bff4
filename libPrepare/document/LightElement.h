#pragma once

#include <pugixml.hpp>

#include <string>
#include <vector>

/// @file
/// Reading and completing a `<light>`.
namespace libPrepare {

/// The `<point>`, `<spot>`, `<directional>` or `<ambient>` of a `<light>`; null if it has none.
pugi::xml_node shapeOf(pugi::xml_node light);
/// The color of a `<light>`, three numbers; white by default.
std::vector<double> colorOf(pugi::xml_node light);
/// Adds the standard's default values to a `<point>` or `<spot>`. @return names of the added elements
std::string completeShape(pugi::xml_node shape);
/// Writes the cone of a spot `<light>` into its vendor data, which is where the outer cone is read from.
/// @return false if there is one
bool completeOuterCone(pugi::xml_node light);
/// The id of the node that the vendor data of a spot `<light>` names as its target; empty if there is none.
std::string targetOf(pugi::xml_node light);
/// Makes a node the only target of a spot `<light>`.
void setTarget(pugi::xml_node light, const std::string& nodeId);

} // namespace libPrepare
