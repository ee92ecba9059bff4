#pragma once

#include <pugixml.hpp>

namespace libPrepare {

class Document;
class Pose;

/// About how far from the origin the meshes of a scene reach: their positions are not all read. Above 0 and finite.
double sizeOfScene(Document& document, pugi::xml_node scene, Pose& pose);

} // namespace libPrepare
