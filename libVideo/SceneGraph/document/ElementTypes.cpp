#include "ElementTypes.h"

#include "ModelAccess.h"

#include <algorithm>
#include <cstring>
#include <set>

namespace libVideo::detail {

namespace {

bool takesAny(const ElementType& type)
{
    return type.kind == ElementType::Kind::any || (type.meta != nullptr && type.meta->getAllowsAny());
}

/// Translates a content model into a list of places, if it is a sequence of places and of choices among places. Most
/// types have such a model; children of the others are placed by the document model.
class ModelFollower {
public:
    explicit ModelFollower(ElementType& type) : m_type(type) {}

    void follow(daeMetaCMPolicy* root)
    {
        m_type.content = ElementType::Content::asked;
        auto* const sequence = dynamic_cast<daeMetaSequence*>(root);
        if (sequence == nullptr || ModelPartAccess::maximum(*sequence) != 1) {
            return;
        }
        const daeTArray<daeMetaCMPolicy*>& parts = ModelPartAccess::parts(*sequence);
        if (parts.getCount() == 1 && dynamic_cast<daeMetaAny*>(parts[0]) != nullptr) {
            m_type.content = ElementType::Content::anything;
            return;
        }
        for (std::size_t i = 0; i < parts.getCount(); ++i) {
            if (!addPlace(parts[i], ModelPartAccess::ordinal(*sequence)) &&
                !addChoice(parts[i], ModelPartAccess::ordinal(*sequence))) {
                m_type.places.clear();
                return;
            }
        }
        m_type.content = ElementType::Content::places;
    }

private:
    bool addPlace(daeMetaCMPolicy* part, daeUInt ordinal)
    {
        auto* const attribute = dynamic_cast<daeMetaElementAttribute*>(part);
        if (attribute == nullptr || attribute->getElementType() == nullptr) {
            return false;
        }
        ChildPlace place;
        place.name = static_cast<const char*>(attribute->getName());
        place.meta = attribute->getElementType();
        place.offset = attribute->getOffset();
        place.member = m_type.places.size();
        for (std::size_t i = m_type.places.size(); i-- > 0;) {
            if (m_type.places[i].offset == place.offset) {
                place.member = i;
            }
        }
        place.isArray = attribute->isArrayAttribute();
        place.maximum = place.isArray ? ModelPartAccess::maximum(*attribute) : 1;
        place.ordinal = ModelPartAccess::ordinal(*attribute) + ordinal;
        m_type.places.push_back(place);
        return true;
    }

    // A choice without a limit accepts each of its children any number of times. A choice that is made once is decided
    // by the first child, and then accepts only more children of that name.
    bool addChoice(daeMetaCMPolicy* part, daeUInt ordinal)
    {
        auto* const choice = dynamic_cast<daeMetaChoice*>(part);
        if (choice == nullptr) {
            return false;
        }
        const daeInt maximum = ModelPartAccess::maximum(*choice);
        if (maximum != 1 && maximum != -1) {
            return false;
        }
        std::set<std::string> names;
        const daeTArray<daeMetaCMPolicy*>& parts = ModelPartAccess::parts(*choice);
        for (std::size_t i = 0; i < parts.getCount(); ++i) {
            if (!addPlace(parts[i], ModelPartAccess::ordinal(*choice) + ordinal)) {
                return false;
            }
            ChildPlace& place = m_type.places.back();
            const bool sharesMember = place.member + 1 != m_type.places.size();
            if ((maximum == -1 && !place.isArray) || !names.insert(place.name).second) {
                return false;
            }
            if (maximum == 1 && sharesMember) {
                return false;
            }
            if (maximum == -1) {
                place.maximum = -1;
            } else {
                place.choice = static_cast<int>(m_type.choiceCount);
            }
        }
        m_type.choiceCount += maximum == 1 ? 1 : 0;
        return true;
    }

    ElementType& m_type;
};

ElementType::Value valueKind(daeMetaAttribute* value)
{
    if (value == nullptr) {
        return ElementType::Value::none;
    }
    if (value->isArrayAttribute()) {
        switch (value->getType()->getTypeEnum()) {
        case daeAtomicType::DoubleType:
            return ElementType::Value::doubles;
        case daeAtomicType::ULongType:
            return ElementType::Value::unsigneds;
        case daeAtomicType::LongType:
            return ElementType::Value::signeds;
        case daeAtomicType::TokenType:
            return ElementType::Value::names;
        default:
            break;
        }
    }
    return ElementType::Value::text;
}

bool isReference(daeMetaAttribute* attribute)
{
    return attribute != nullptr && attribute->getType()->getTypeEnum() == daeAtomicType::ResolverType;
}

} // namespace

ElementTypes::ElementTypes(DAE& dae) : m_dae(dae)
{
    m_any.kind = ElementType::Kind::any;
    m_any.value = ElementType::Value::text;
}

const ElementType& ElementTypes::known(daeMetaElement& meta)
{
    std::unique_ptr<ElementType>& type = m_known[&meta];
    if (type == nullptr) {
        auto made = std::make_unique<ElementType>();
        made->kind = ElementType::Kind::known;
        made->meta = &meta;
        made->value = valueKind(meta.getValueAttribute());
        made->holdsReference = isReference(meta.getValueAttribute());
        const daeMetaAttributeRefArray& attributes = meta.getMetaAttributes();
        for (std::size_t i = 0; i < attributes.getCount(); ++i) {
            if (isReference(attributes[i])) {
                made->references.push_back(i);
            }
        }
        ModelFollower(*made).follow(meta.getCMRoot());
        type = std::move(made);
    }
    return *type;
}

// Tests in the order of the document model, which first compares the name with that of the parent's type.
ChildType ElementTypes::child(const ElementType& parent, const char* name, bool hasPrefix)
{
    ChildType child;
    child.type = &m_skipped;
    if (parent.kind == ElementType::Kind::skipped) {
        return child;
    }
    const bool isAny = parent.kind == ElementType::Kind::any;
    daeMetaElement* meta = nullptr;
    if (hasPrefix) {
        child.type = takesAny(parent) ? &m_any : &m_skipped;
    } else if (std::strcmp(name, isAny ? "any" : static_cast<const char*>(parent.meta->getName())) == 0) {
        if (isAny || parent.meta->getCMRoot() == nullptr) {
            child.type = nullptr;
            return child;
        }
        meta = parent.meta;
    } else if (takesAny(parent)) {
        meta = topLevel(name);
        child.type = &m_any;
    } else if (parent.meta->getCMRoot() != nullptr) {
        meta = parent.meta->getCMRoot()->findChild(name);
    }
    if (meta != nullptr) {
        child.type = &known(*meta);
        child.isAbstract = meta->getIsAbstract();
        child.isRenamed = std::strcmp(name, meta->getName()) != 0;
    } else if (child.type == &m_any) {
        child.isRenamed = std::strcmp(name, "any") != 0;
    }
    for (std::size_t i = 0; i < parent.places.size(); ++i) {
        if (parent.places[i].meta == meta && parent.places[i].name == name) {
            child.places.push_back(static_cast<unsigned>(i));
        }
    }
    return child;
}

daeMetaElement* ElementTypes::topLevel(const char* name)
{
    if (m_topLevel.empty()) {
        const daeMetaElementRefArray& metas = m_dae.getAllMetas();
        for (std::size_t i = 0; i < metas.getCount(); ++i) {
            if (metas[i] != nullptr && !metas[i]->getIsInnerClass()) {
                m_topLevel.emplace(static_cast<const char*>(metas[i]->getName()), metas[i].cast());
            }
        }
    }
    const auto found = m_topLevel.find(name);
    return found == m_topLevel.end() ? nullptr : found->second;
}

void ElementTypes::appendChildren(daeElement& element, std::vector<daeElement*>& children)
{
    // The array may hold references to elements of any type.
    const auto append = [&](const daeArray& array) {
        for (std::size_t i = 0; i < array.getCount(); ++i) {
            children.push_back(*reinterpret_cast<const daeElementRef*>(array.getRaw(i)));
        }
    };
    daeMetaElement& meta = *element.getMeta();
    if (meta.getContents() != nullptr) {
        append(*reinterpret_cast<daeArray*>(meta.getContents()->getWritableMemory(&element)));
        return;
    }
    const ElementType& type = known(meta);
    if (type.content != ElementType::Content::places) {
        append(element.getChildren());
        return;
    }
    for (std::size_t i = 0; i < type.places.size(); ++i) {
        const ChildPlace& place = type.places[i];
        if (place.member != i) {
            continue;
        }
        char* const member = reinterpret_cast<char*>(&element) + place.offset;
        if (place.isArray) {
            append(*reinterpret_cast<daeArray*>(member));
        } else if (daeElement* const child = *reinterpret_cast<daeElementRef*>(member)) {
            children.push_back(child);
        }
    }
}

} // namespace libVideo::detail
