#pragma once

#include <libPrepare/document/References.h>

#include <vector>

namespace libPrepare {

/// What one walk over a document finds, so that no pass has to walk over it in search of what it does not hold.
struct Census {
    /// An element with an id.
    struct Bearer {
        pugi::xml_node element;
        pugi::xml_attribute id;
    };

    static Census of(pugi::xml_node root);

    std::vector<Reference> references; ///< As `forEachReference` gives them.
    std::vector<Bearer> bearers;       ///< In document order.
    bool isOpen = true;                ///< Whether the lists are there.

    bool hasCameraInstances = false;
    bool hasControllerInstances = false;
    bool hasGeometryInstances = false; ///< Or controllers, which passes make geometries.
    bool hasLightInstances = false;
    bool hasNodeInstances = false;
    bool hasInnerAssets = false; ///< An `<asset>` besides that of the document.
    /// A text in several runs, a comma in a number, an element where there can be none, or something that may be one of
    /// these.
    bool hasOddTexts = false;
};

} // namespace libPrepare
