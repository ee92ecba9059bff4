#include "ElementBuilder.h"

#include "ModelAccess.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

namespace libVideo::detail {

namespace {

constexpr std::size_t unknownNameLimit = 127; // the document model has room for 127 bytes and a zero

bool isBlank(std::string_view text)
{
    return text.find_first_not_of(" \t\n\r") == std::string_view::npos;
}

// Makes room for exactly `count` children in an empty array, by malloc as the document model does.
void reserveExactly(daeArray& array, std::size_t count)
{
    void* const block = std::malloc(count * sizeof(daeElementRef)); // NOLINT(cppcoreguidelines-no-malloc)
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    ArrayAccess::take(array, block, 0, count);
}

// Adds a child to an array that has room for it.
void append(daeArray& array, daeElement* child)
{
    std::size_t& count = ArrayAccess::count(array);
    new (array.getRaw(count)) daeElementRef(child);
    ++count;
}

// The member of an element at an offset.
template <class Member>
Member& memberAt(daeElement& element, daeInt offset)
{
    return *reinterpret_cast<Member*>(reinterpret_cast<char*>(&element) + offset);
}

daeURI& referenceOf(daeElement& element, daeMetaAttribute& attribute)
{
    return *reinterpret_cast<daeURI*>(attribute.get(&element));
}

// A reference that is absent or malformed refers to the document itself.
void resolveAgain(daeURI& reference)
{
    reference.setContainer(reference.getContainer());
}

} // namespace

ElementBuilder::ElementBuilder(DAE& dae, ElementTypes& types, daeDocument& document, std::function<int()> line)
    : m_dae(dae), m_types(types), m_document(document), m_line(std::move(line))
{}

bool ElementBuilder::start(const QualifiedName& name)
{
    endText();
    m_steps.restart();
    if (m_levels.empty()) {
        daeMetaElement* const meta = m_dae.getMeta(domCOLLADA::ID());
        if (m_root != nullptr || name.prefix != nullptr || std::strcmp(name.local, "COLLADA") != 0) {
            return false;
        }
        m_root = meta->create();
        ElementAccess::setDocument(*m_root, m_document);
        m_levels.push_back({m_root, &m_types.known(*meta), m_children.size(), false, false});
        return true;
    }
    const ElementType& parent = *m_levels.back().type;
    const ChildType& child = childType(parent, name);
    if (child.type == nullptr) {
        return false;
    }
    if (child.type->kind == ElementType::Kind::any && name.whole().size() > unknownNameLimit) {
        return false;
    }
    if (child.type->kind == ElementType::Kind::skipped) {
        if (parent.kind != ElementType::Kind::skipped) {
            warn("The DOM was unable to create an element named " + name.whole(), ". Probably a schema violation.\n");
        }
        m_levels.push_back({nullptr, child.type, m_children.size(), false, false});
        return true;
    }
    m_children.push_back({make(child, name), &child});
    m_levels.push_back({m_children.back().element, child.type, m_children.size(), false, false});
    return true;
}

const ChildType& ElementBuilder::childType(const ElementType& parent, const QualifiedName& name)
{
    if (name.prefix != nullptr) { // rare, so not kept in the map
        m_childTypes.push_back(m_types.child(parent, name.local, true));
        return m_childTypes.back();
    }
    if (const ChildType* const* const found = m_childTypesByName.find(&parent, name.local)) {
        return **found;
    }
    m_childTypes.push_back(m_types.child(parent, name.local, false));
    m_childTypesByName.insert(&parent, name.local, &m_childTypes.back());
    return m_childTypes.back();
}

daeElementRef ElementBuilder::make(const ChildType& child, const QualifiedName& name)
{
    daeElementRef element;
    if (child.type->kind == ElementType::Kind::any) {
        std::unique_ptr<daeMetaElement> meta(domAny::registerElement(m_dae));
        element = meta->create();
        static_cast<void>(meta.release()); // the element owns it
    } else {
        element = child.type->meta->create();
    }
    if (child.isRenamed) {
        element->setElementName(name.whole().c_str());
    }
    ElementAccess::setDocument(*element, m_document);
    return element;
}

bool ElementBuilder::setAttribute(const QualifiedName& name, std::string_view value)
{
    ParentSteps steps;
    steps.add(value);
    if (steps.areTooMany()) {
        return false;
    }
    Level& level = m_levels.back();
    if (level.element == nullptr) {
        return true;
    }
    m_value.assign(value);
    level.hasAttributes = true;
    if (level.type->kind == ElementType::Kind::any) {
        level.element->setAttribute(name.whole().c_str(), m_value.c_str());
        return true;
    }
    const Attribute attribute = this->attribute(*level.type, name);
    if (attribute.meta == nullptr) {
        warn("The DOM was unable to create an attribute " + name.whole() + " = " + m_value,
             ".\nProbably a schema violation.\n");
        return true;
    }
    // Bypasses the element's own setter, which would pass each id to the database at once.
    daeAtomicType& type = *attribute.meta->getType();
    char* const memory = attribute.meta->get(level.element);
    if (attribute.meta->isArrayAttribute()) {
        type.stringToArray(m_value.data(), *reinterpret_cast<daeArray*>(memory));
    } else {
        type.stringToMemory(m_value.data(), memory);
    }
    ElementAccess::setAttributes(*level.element).set(attribute.index, true);
    return true;
}

ElementBuilder::Attribute ElementBuilder::attribute(const ElementType& type, const QualifiedName& name)
{
    const auto search = [&](const char* whole) {
        const daeMetaAttributeRefArray& attributes = type.meta->getMetaAttributes();
        for (std::size_t i = 0; i < attributes.getCount(); ++i) {
            if (std::strcmp(attributes[i]->getName(), whole) == 0) {
                return Attribute{attributes[i], i};
            }
        }
        return Attribute{};
    };
    if (name.prefix != nullptr) {
        return search(name.whole().c_str());
    }
    if (const Attribute* const found = m_attributes.find(&type, name.local)) {
        return *found;
    }
    const Attribute attribute = search(name.local);
    m_attributes.insert(&type, name.local, attribute);
    return attribute;
}

bool ElementBuilder::finishStart()
{
    const Level& level = m_levels.back();
    if (level.element == nullptr || level.type->kind != ElementType::Kind::known) {
        return true;
    }
    daeElement& element = *level.element;
    const daeMetaAttributeRefArray& attributes = level.type->meta->getMetaAttributes();
    for (const std::size_t index : level.type->references) {
        daeURI& reference = referenceOf(element, *attributes[index]);
        if (!ElementAccess::setAttributes(element)[index] || reference.str().empty()) {
            resolveAgain(reference);
        }
    }
    if (m_levels.size() == 1) {
        const daeURI& version = referenceOf(element, *level.type->meta->getMetaAttribute("xmlns"));
        if (version.str() != m_dae.getColladaNamespace()) {
            daeErrorHandler::get()->handleError("Trying to load an invalid COLLADA version for this DOM build!");
            return false;
        }
    }
    return true;
}

bool ElementBuilder::addText(std::string_view text)
{
    if (m_levels.empty()) {
        return true;
    }
    Level& level = m_levels.back();
    if (level.element == nullptr) {
        return true;
    }
    if (level.type->holdsReference) {
        m_steps.add(text);
        if (m_steps.areTooMany()) {
            return false;
        }
    }
    const ElementType::Value kind = level.type->value;
    if (kind == ElementType::Value::text) {
        m_text.append(text);
    }
    if (!m_hasCharacters) {
        if (isBlank(text)) {
            return true;
        }
        m_hasCharacters = true;
        if (kind != ElementType::Value::text && kind != ElementType::Value::none) {
            m_list.begin(kind, *level.type->meta->getValueAttribute()->getType());
        }
    }
    if (kind != ElementType::Value::text && kind != ElementType::Value::none) {
        m_list.add(text.data(), text.size());
    }
    return true;
}

// A run of nothing but blanks has no effect. The last of several runs becomes the value.
void ElementBuilder::endText()
{
    if (m_hasCharacters) {
        m_hasCharacters = false;
        Level& level = m_levels.back();
        daeElement& element = *level.element;
        daeMetaAttribute* const value = element.getMeta()->getValueAttribute();
        switch (level.type->value) {
        case ElementType::Value::none:
            warn(std::string("The DOM was unable to set a value for element of type ") + element.getTypeName(),
                 ".\nProbably a schema violation.\n");
            break;
        case ElementType::Value::text:
            value->stringToMemory(&element, m_text.c_str());
            level.hasReference = true;
            break;
        case ElementType::Value::doubles:
        case ElementType::Value::unsigneds:
        case ElementType::Value::signeds:
        case ElementType::Value::names:
            m_list.finish(*reinterpret_cast<daeArray*>(value->get(&element)));
            break;
        }
    }
    m_text.clear();
}

void ElementBuilder::end()
{
    endText();
    m_steps.restart();
    const Level& level = m_levels.back();
    if (level.element != nullptr) {
        daeElement& element = *level.element;
        if (level.type->holdsReference) {
            daeURI& reference = referenceOf(element, *level.type->meta->getValueAttribute());
            if (!level.hasReference || reference.str().empty()) {
                resolveAgain(reference);
            }
        }
        placeChildren(level);
        if (level.hasAttributes) {
            if (const daeString id = element.getID()) {
                m_ids.add(id, element);
            }
        }
    }
    m_levels.pop_back();
}

void ElementBuilder::warn(const std::string& text, const char* end) const
{
    daeErrorHandler::get()->handleWarning((text + " at line " + std::to_string(m_line()) + end).c_str());
}

void ElementBuilder::placeChildren(const Level& level)
{
    const std::size_t first = level.firstChild;
    if (first == m_children.size()) {
        return;
    }
    daeElement& parent = *level.element;
    switch (level.type->content) {
    case ElementType::Content::places:
        placeAtPlaces(parent, *level.type, first);
        break;
    case ElementType::Content::anything:
        m_contents.clear();
        for (std::size_t i = first; i < m_children.size(); ++i) {
            if (m_children[i].type->isAbstract) {
                m_areIdsKnown = false;
                continue;
            }
            m_children[i].element->setParentElement(&parent);
            m_contents.emplace_back(0, m_children[i].element);
        }
        fillContents(parent);
        break;
    case ElementType::Content::asked:
        for (std::size_t i = first; i < m_children.size(); ++i) {
            if (!parent.placeElement(m_children[i].element)) {
                m_areIdsKnown = false;
            }
        }
        break;
    }
    m_children.resize(first);
}

void ElementBuilder::placeAtPlaces(daeElement& parent, const ElementType& type, std::size_t first)
{
    m_targets.clear();
    m_counts.assign(type.places.size(), 0);
    m_chosen.assign(type.choiceCount, -1);
    for (std::size_t i = first; i < m_children.size(); ++i) {
        int target = -1;
        const ChildType& child = *m_children[i].type;
        for (const unsigned index : child.places) {
            const ChildPlace& place = type.places[index];
            const auto choice = static_cast<std::size_t>(place.choice);
            const bool isOpen = place.choice < 0 || m_chosen[choice] < 0 || m_chosen[choice] == static_cast<int>(index);
            if (isOpen && !child.isAbstract && (place.maximum < 0 || m_counts[place.member] < place.maximum)) {
                target = static_cast<int>(index);
                ++m_counts[place.member];
                if (place.choice >= 0) {
                    m_chosen[choice] = target;
                }
                break;
            }
        }
        m_targets.push_back(target);
    }
    for (std::size_t index = 0; index < type.places.size(); ++index) {
        if (type.places[index].isArray && m_counts[index] > 0) {
            reserveExactly(memberAt<daeArray>(parent, type.places[index].offset),
                           static_cast<std::size_t>(m_counts[index]));
        }
    }
    m_contents.clear();
    for (std::size_t i = first; i < m_children.size(); ++i) {
        const int target = m_targets[i - first];
        if (target < 0) {
            m_areIdsKnown = false;
            continue;
        }
        const ChildPlace& place = type.places[static_cast<std::size_t>(target)];
        daeElement* const child = m_children[i].element;
        child->setParentElement(&parent);
        if (place.isArray) {
            append(memberAt<daeArray>(parent, place.offset), child);
        } else {
            memberAt<daeElementRef>(parent, place.offset) = child;
        }
        m_contents.emplace_back(place.ordinal, child);
    }
    fillContents(parent);
}

// Fills the element's list of all children, ordered by rank, if it has one.
void ElementBuilder::fillContents(daeElement& parent)
{
    daeMetaElementArrayAttribute* const attribute = parent.getMeta()->getContents();
    if (attribute == nullptr || m_contents.empty()) {
        return;
    }
    const auto isBefore = [](const auto& a, const auto& b) { return a.first < b.first; };
    if (!std::is_sorted(m_contents.begin(), m_contents.end(), isBefore)) {
        std::stable_sort(m_contents.begin(), m_contents.end(), isBefore);
    }
    daeArray& contents = memberAt<daeArray>(parent, attribute->getOffset());
    reserveExactly(contents, m_contents.size());
    for (const auto& [rank, child] : m_contents) {
        append(contents, child);
    }
}

IdIndex ElementBuilder::finish()
{
    m_document.setDomRoot(m_root);
    m_areIdsKnown = m_areIdsKnown && m_ids.build();
    return std::move(m_ids);
}

} // namespace libVideo::detail
