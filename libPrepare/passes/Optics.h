#pragma once

#include <libPrepare/document/Motion.h>

namespace libPrepare {

/// The `<perspective>` of a `<camera>`; null if it has other optics or none.
pugi::xml_node perspectiveOf(pugi::xml_node camera);
/// Whether an element is one of the numbers of a `<perspective>`.
bool isOptic(pugi::xml_node element);

/// Gives a `<perspective>` both angles and both planes. Existing elements stay, except for an `<aspect_ratio>` that has
/// been used.
void completePerspective(Document& document, pugi::xml_node perspective);

/// The aspect ratio, width over height, for completing a field of view.
double aspectOf(const Document& document, pugi::xml_node perspective);
/// The other angle of a field of view, in degrees. @param factor tangent of the wanted over that of the given
double otherAngle(double degrees, double factor);

} // namespace libPrepare
