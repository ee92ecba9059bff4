#include "Optics.h"

#include <libPrepare/document/Numbers.h>

#include <cmath>

namespace libPrepare {

namespace {

constexpr double radiansPerDegree = 3.14159265358979323846 / 180.0;
constexpr double defaultAngle = 45;
constexpr double planeRatio = 10000; // far over near, where only one is known

double valueOf(pugi::xml_node element, double otherwise)
{
    const double value = element ? numberOr(textOf(element), otherwise) : otherwise;
    return std::isfinite(value) ? value : otherwise;
}

// The schema's order is xfov, yfov, aspect_ratio, znear, zfar, and readers may pass over what comes later than it should.
pugi::xml_node placed(pugi::xml_node perspective, const char* name, pugi::xml_node after, double value)
{
    pugi::xml_node made = after ? perspective.insert_child_after(name, after) : perspective.prepend_child(name);
    setText(made, text(value));
    return made;
}

} // namespace

pugi::xml_node perspectiveOf(pugi::xml_node camera)
{
    return descend(camera, "optics/technique_common/perspective");
}

bool isOptic(pugi::xml_node element)
{
    if (!is(element.parent(), "perspective") || !is(element.parent().parent(), "technique_common")) {
        return false;
    }
    for (const char* const name : {"xfov", "yfov", "znear", "zfar", "aspect_ratio"}) {
        if (is(element, name)) {
            return true;
        }
    }
    return false;
}

double aspectOf(const Document& document, pugi::xml_node perspective)
{
    const double own = valueOf(perspective.child("aspect_ratio"), 1);
    const double aspect = document.options().aspect.value_or(own);
    return std::isfinite(aspect) && aspect > 0 ? aspect : 1;
}

double otherAngle(double degrees, double factor)
{
    const double result = 2 * std::atan(std::tan(degrees * radiansPerDegree / 2) * factor) / radiansPerDegree;
    return std::isfinite(result) ? result : degrees; // no angle at all has no other one
}

void completePerspective(Document& document, pugi::xml_node perspective)
{
    pugi::xml_node x = perspective.child("xfov");
    pugi::xml_node y = perspective.child("yfov");
    if (!x || !y) {
        const double aspect = aspectOf(document, perspective);
        if (!x && !y) {
            document.lost(perspective, "field of view",
                          "The camera has no field of view; " + text(defaultAngle) + " degrees of height are taken.",
                          "Give <perspective> an <xfov> or a <yfov>.");
            y = placed(perspective, "yfov", {}, defaultAngle);
        }
        document.rewritten(perspective, "field of view",
                           "The camera has both <xfov> and <yfov> now, for a picture " + text(aspect) +
                               " times as wide as high.");
        if (!x) {
            x = placed(perspective, "xfov", {}, otherAngle(valueOf(y, defaultAngle), aspect));
        } else {
            y = placed(perspective, "yfov", x, otherAngle(valueOf(x, defaultAngle), 1 / aspect));
        }
        if (const pugi::xml_node used = perspective.child("aspect_ratio")) {
            discard(used);
        }
    }
    pugi::xml_node near = perspective.child("znear");
    pugi::xml_node far = perspective.child("zfar");
    if (!near || !far) {
        document.lost(perspective, "camera planes", "The camera lacks <znear> or <zfar>; common ones are taken.",
                      "Give <perspective> a <znear> and a <zfar>.");
        const double known = valueOf(near ? near : far, 0);
        const double nearest = near ? (known > 0 ? known : 0.1) : (known > 0 ? known / planeRatio : 0.1);
        if (!near) {
            near = far ? perspective.insert_child_before("znear", far) : perspective.append_child("znear");
            setText(near, text(nearest));
        }
        if (!far) {
            placed(perspective, "zfar", near, nearest * planeRatio);
        }
    }
}

} // namespace libPrepare
