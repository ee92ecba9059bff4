#include "Passes.h"

#include <libPrepare/document/Tree.h>

namespace libPrepare {

void chooseVisualScene(Document& document)
{
    const pugi::xml_node shown = shownScene(document);
    if (!shown) {
        document.lost(document.root(), "scene", "The document names no visual scene to show, so that nothing is.",
                      "Add a <scene> with an <instance_visual_scene> that names one.");
        return;
    }
    if (!shown.child("node")) {
        document.lost(shown, "scene", "The visual scene has no nodes, so that nothing is shown.",
                      "Show a visual scene that has a <node>.");
    }
    for (const pugi::xml_node library : document.root().children("library_visual_scenes")) {
        for (const pugi::xml_node scene : library.children("visual_scene")) {
            if (scene != shown) {
                document.lost(scene, "visual scene",
                              "The visual scene \"" + std::string(scene.attribute("id").value()) +
                                  "\" is not the one that is shown.",
                              "Name it in the <instance_visual_scene> of <scene> to show it.");
            }
        }
    }
}

} // namespace libPrepare
