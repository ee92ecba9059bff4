#include "Census.h"

#include "Names.h"

#include <cstring>

namespace libPrepare {

Census Census::of(pugi::xml_node root)
{
    Census result;
    forEachReference(
        root, [&](const Reference& reference) { result.references.push_back(reference); },
        [&](pugi::xml_node element) { result.add(element); });
    return result;
}

void Census::add(pugi::xml_node element)
{
    if (element.attribute("id")) {
        bearers.push_back(element);
    }
    const char* const name = element.name();
    if (areEqual(name, "asset")) {
        hasInnerAssets = hasInnerAssets || element.parent().parent().type() != pugi::node_document;
        return;
    }
    constexpr std::size_t length = 9;
    if (*name != 'i' || std::strncmp(name, "instance_", length) != 0) {
        return;
    }
    const auto isOf = [&](const char* kind) { return std::strcmp(name + length, kind) == 0; };
    hasCameraInstances = hasCameraInstances || isOf("camera");
    hasControllerInstances = hasControllerInstances || isOf("controller");
    hasGeometryInstances = hasGeometryInstances || isOf("geometry") || isOf("controller");
    hasLightInstances = hasLightInstances || isOf("light");
    hasNodeInstances = hasNodeInstances || isOf("node");
}

} // namespace libPrepare
