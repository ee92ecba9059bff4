#pragma once

#include <libPrepare/document/References.h>

#include <memory_resource>
#include <string_view>
#include <vector>

namespace libPrepare {

/// The findings of one walk over a document, so that no pass has to search it for things that it does not contain.
struct Census {
    /// An element with an id.
    struct Bearer {
        pugi::xml_node element;
        std::string_view id; ///< A copy, without blanks around it.
    };

    /// @param memory where ids are copied to
    static Census of(pugi::xml_node root, std::pmr::memory_resource& memory);

    std::vector<Reference> references; ///< As `forEachReference` gives them.
    std::vector<Bearer> bearers;       ///< In document order.
    bool isOpen = true;                ///< Whether the lists are filled.

    bool hasCameraInstances = false;
    bool hasControllerInstances = false;
    bool hasGeometryInstances = false; ///< Or controllers, which passes make geometries.
    bool hasLightInstances = false;
    bool hasNodeInstances = false;
    bool hasInnerAssets = false; ///< An `<asset>` besides that of the document.
    /// A text in several runs, a comma in a number, an element where there can be none, or something that may be one of
    /// these.
    bool hasOddTexts = false;
    bool areIdsPlain = true; ///< Whether references can hold all ids as they are.
    /// Each `<node>` has a transform, none of them is a `<lookat>` or a `<skew>`, and all rotations are about a main
    /// axis. May be false even if this is the case.
    bool areTransformsComplete = true;
    bool areReferencesPlain = true; ///< Whether all references that are URIs have the form `#id`, with a plain id.
};

} // namespace libPrepare
