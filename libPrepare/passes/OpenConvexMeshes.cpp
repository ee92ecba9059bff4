#include "Passes.h"

namespace libPrepare {

void openConvexMeshes(Document& document)
{
    for (const pugi::xml_node library : document.root().children("library_geometries")) {
        for (const pugi::xml_node geometry : library.children("geometry")) {
            pugi::xml_node body = geometry.child("convex_mesh");
            if (geometry.child("mesh") || !body.child("vertices")) {
                continue; // only names the mesh whose hull it is, if it is there at all
            }
            document.rewritten(body, "convex_mesh", "A <convex_mesh> is not read.", "It is a <mesh> now.");
            body.set_name("mesh");
            body.remove_attribute("convex_hull_of");
        }
    }
}

} // namespace libPrepare
