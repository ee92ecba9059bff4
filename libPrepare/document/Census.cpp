#include "Census.h"

#include "Document.h"
#include "ElementRules.h"
#include "Names.h"
#include "Numbers.h"
#include "PlainIds.h"
#include "Transforms.h"

#include <cstring>

namespace libPrepare {

namespace {

// The tree is walked with as few calls as there can be, since it may have millions of elements.
class CensusTaker {
public:
    CensusTaker(Census& census, std::pmr::memory_resource& memory) : m_census(census), m_memory(memory) {}

    void take(pugi::xml_node root)
    {
        open(root, root.name(), traitsOf(root.name()));
        pugi::xml_node node = root.first_child();
        while (true) {
            const pugi::xml_node_type type = node.type();
            if (type == pugi::node_null) { // after the last child
                node = m_levels.back().element;
                close();
                if (m_levels.empty()) {
                    return;
                }
            } else if (type == pugi::node_element) {
                const char* const name = node.name();
                const ElementTraits traits = traitsOf(name);
                lookAtPlace(name, traits);
                open(node, name, traits);
                node = node.first_child();
                continue;
            } else {
                lookAtText(node, type);
            }
            node = node.next_sibling();
        }
    }

private:
    struct Level {
        pugi::xml_node element;
        bool isExtra;
        bool isForeign;
        bool isNode;
        bool isRotate;
        bool isComplete; // a node with a transform, or a rotation about a main axis
        ElementTraits traits;
    };

    void open(pugi::xml_node element, const char* name, ElementTraits traits)
    {
        readAttributes(element, name);
        if (const std::optional<Reference> reference = referenceInText(element, name, m_extras > 0)) {
            std::string scratch;
            add(*reference, textOf(element, scratch));
        }
        note(name);
        noteTransform(name);
        const Level level{
            element, areEqual(name, "extra"), isForeign(name), areEqual(name, "node"), areEqual(name, "rotate"), false,
            traits};
        m_extras += level.isExtra ? 1 : 0;
        m_foreigners += level.isForeign ? 1 : 0;
        m_levels.push_back(level);
    }

    void close()
    {
        const Level& level = m_levels.back();
        m_extras -= level.isExtra ? 1 : 0;
        m_foreigners -= level.isForeign ? 1 : 0;
        if ((level.isNode || level.isRotate) && !level.isComplete) {
            m_census.areTransformsComplete = false;
        }
        m_levels.pop_back();
    }

    void readAttributes(pugi::xml_node element, const char* elementName)
    {
        pugi::xml_attribute attribute = element.first_attribute();
        for (const char* name = attribute.name(); *name != '\0'; name = attribute.name()) {
            if (areEqual(name, "id")) {
                addBearer(element, elementName, attribute.value());
            } else if (const std::optional<Reference> reference = referenceIn(element, attribute, name)) {
                add(*reference, attribute.value());
            } else if (areEqual(name, "meter") && areEqual(elementName, "unit")) {
                m_census.hasOddTexts = m_census.hasOddTexts || std::strchr(attribute.value(), ',') != nullptr;
            }
            attribute = attribute.next_attribute();
        }
    }

    void addBearer(pugi::xml_node element, const char* name, std::string_view id)
    {
        const bool isPlain = areEqual(name, "image") ? isPlainImageId(id) : isPlainId(id);
        m_census.areIdsPlain = m_census.areIdsPlain && isPlain;
        m_census.bearers.push_back({element, copyTo(m_memory, trimmed(id))});
    }

    void add(const Reference& reference, std::string_view text)
    {
        const bool isPlain = reference.form != Reference::Form::uri ||
                             (!text.empty() && text.front() == '#' && isPlainId(text.substr(1)));
        m_census.areReferencesPlain = m_census.areReferencesPlain && isPlain;
        m_census.references.push_back(reference);
    }

    void note(const char* name)
    {
        if (areEqual(name, "asset")) {
            m_census.hasInnerAssets = m_census.hasInnerAssets || m_levels.size() > 1;
            return;
        }
        constexpr std::size_t length = 9;
        if (*name != 'i' || std::strncmp(name, "instance_", length) != 0) {
            return;
        }
        const auto isOf = [&](const char* kind) { return std::strcmp(name + length, kind) == 0; };
        m_census.hasCameraInstances = m_census.hasCameraInstances || isOf("camera");
        m_census.hasControllerInstances = m_census.hasControllerInstances || isOf("controller");
        m_census.hasGeometryInstances = m_census.hasGeometryInstances || isOf("geometry") || isOf("controller");
        m_census.hasLightInstances = m_census.hasLightInstances || isOf("light");
        m_census.hasNodeInstances = m_census.hasNodeInstances || isOf("node");
    }

    void noteTransform(const char* name)
    {
        if (m_levels.empty() || !m_levels.back().isNode || !isTransform(name)) {
            return;
        }
        m_levels.back().isComplete = true;
        if (areEqual(name, "lookat") || areEqual(name, "skew")) {
            m_census.areTransformsComplete = false;
        }
    }

    // An element below the last level.
    void lookAtPlace(const char* name, ElementTraits traits)
    {
        const Level& parent = m_levels.back();
        if (m_foreigners == 0 && (parent.traits.holdsOnlyValue || !canHold(parent.element, name, traits))) {
            m_census.hasOddTexts = true;
        }
    }

    void lookAtText(pugi::xml_node node, pugi::xml_node_type type)
    {
        if (m_foreigners > 0) {
            return;
        }
        Level& level = m_levels.back();
        if (type != pugi::node_pcdata) {
            m_census.hasOddTexts = true;
        } else if (level.traits.holdsNumbers) {
            const char* const text = node.value();
            m_census.hasOddTexts = m_census.hasOddTexts || std::strchr(text, ',') != nullptr;
            level.isComplete = level.isComplete || (level.isRotate && isMainAxis(text));
        }
    }

    Census& m_census;
    std::pmr::memory_resource& m_memory;
    std::vector<Level> m_levels;
    unsigned m_extras = 0;     // that are open
    unsigned m_foreigners = 0; // elements of other programs that are open
};

} // namespace

Census Census::of(pugi::xml_node root, std::pmr::memory_resource& memory)
{
    Census result;
    if (root) {
        CensusTaker(result, memory).take(root);
        result.areTransformsComplete = result.areTransformsComplete && !result.hasOddTexts;
    }
    return result;
}

} // namespace libPrepare
