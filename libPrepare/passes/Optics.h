#pragma once

#include <libPrepare/document/Motion.h>

namespace libPrepare {

/// The `<perspective>` of a `<camera>`; null if it has other optics or none.
pugi::xml_node perspectiveOf(pugi::xml_node camera);
/// Whether an element is one of the numbers of a `<perspective>`.
bool isOptic(pugi::xml_node element);

/// Gives a `<perspective>` both angles and both planes. What is given stays, but for `<aspect_ratio>` where it has been
/// used up.
void completePerspective(Document& document, pugi::xml_node perspective);

/// Width over height that a field of view is completed for.
double aspectOf(const Document& document, pugi::xml_node perspective);
/// The other angle of a field of view, in degrees. @param factor tangent of the wanted over that of the given
double otherAngle(double degrees, double factor);

} // namespace libPrepare
