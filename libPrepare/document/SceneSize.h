#pragma once

#include <pugixml.hpp>

namespace libPrepare {

class Document;
class Pose;

/// Estimate of how far the meshes of a scene reach from the origin, from some of their positions. Above 0 and finite.
double sizeOfScene(Document& document, pugi::xml_node scene, Pose& pose);

} // namespace libPrepare
