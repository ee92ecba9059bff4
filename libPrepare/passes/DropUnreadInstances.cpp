#include "Passes.h"

#include <libPrepare/document/Tree.h>
#include <libPrepare/geometry/Sources.h>

namespace libPrepare {

namespace {

// Why a geometry shows nothing; null if it shows something.
const char* reasonAgainst(pugi::xml_node geometry)
{
    const pugi::xml_node mesh = geometry.child("mesh");
    if (!geometry) {
        return "An instance leads to no geometry.";
    }
    if (!mesh) {
        return geometry.child("spline")        ? "A spline has no expression in the result."
               : geometry.child("convex_mesh") ? "The hull of a mesh has no expression in the result."
                                               : "A geometry has no mesh.";
    }
    if (mesh.child("triangles") || mesh.child("lines")) {
        return nullptr;
    }
    if (mesh.child("linestrips")) {
        return "A mesh of line strips alone has no expression in the result."; // they would be read as points
    }
    return mesh.child("vertices").child("input") ? nullptr : "A mesh has no positions that can be read.";
}

} // namespace

void dropUnreadInstances(Document& document)
{
    if (!document.census().hasGeometryInstances) {
        return;
    }
    for (const pugi::xml_node node : nodesIn(shownScene(document))) {
        for (pugi::xml_node instance = node.child("instance_geometry"); instance;) {
            const pugi::xml_node following = instance.next_sibling("instance_geometry");
            const pugi::xml_node geometry = document.resolve(instance.attribute("url").value(), {"geometry"});
            for (const char* const name : {"lines", "linestrips"}) {
                if (const pugi::xml_node lines = geometry.child("mesh").child(name)) {
                    document.lost(lines, "lines", std::string("The <") + name + "> of a mesh are not read.",
                                  "Draw them as thin faces in the program that they come from.");
                }
            }
            if (const char* const reason = reasonAgainst(geometry)) {
                document.lost(instance, "instance_geometry", reason, "The instance was taken out.");
                document.report().changed = true;
                removeElement(instance);
            }
            instance = following;
        }
    }
}

} // namespace libPrepare
