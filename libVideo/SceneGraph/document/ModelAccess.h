#pragma once

/// @file
/// Access to protected members of the document model that a reader has to set while it makes elements.

#pragma GCC system_header

#include <libVideo/ColladaDom.h>

#include <dae/daeMetaAny.h>
#include <dae/daeMetaChoice.h>
#include <dae/daeMetaElementAttribute.h>
#include <dae/daeMetaGroup.h>
#include <dae/daeMetaSequence.h>

#include <cstddef>

namespace libVideo::detail {

/// A derived class may form a pointer to a protected member, and the pointer then works with every object of the base.
struct ElementAccess : daeElement {
    static void setDocument(daeElement& element, daeDocument& document)
    {
        element.*(&ElementAccess::_document) = &document;
    }
    static daeBoolArray& setAttributes(daeElement& element) { return element.*(&ElementAccess::_validAttributeArray); }
};

struct ArrayAccess : daeArray {
    /// Replaces the elements of an array by a block allocated by malloc.
    static void take(daeArray& array, void* block, std::size_t count, std::size_t capacity)
    {
        array.clear();
        array.*(&ArrayAccess::_data) = static_cast<daeMemoryRef>(block);
        array.*(&ArrayAccess::_count) = count;
        array.*(&ArrayAccess::_capacity) = capacity;
    }
    static std::size_t& count(daeArray& array) { return array.*(&ArrayAccess::_count); }
};

struct ModelPartAccess : daeMetaCMPolicy {
    static const daeTArray<daeMetaCMPolicy*>& parts(const daeMetaCMPolicy& model)
    {
        return model.*(&ModelPartAccess::_children);
    }
    static daeInt maximum(const daeMetaCMPolicy& model) { return model.*(&ModelPartAccess::_maxOccurs); }
    static daeUInt ordinal(const daeMetaCMPolicy& model) { return model.*(&ModelPartAccess::_ordinalOffset); }
};

struct GroupAccess : daeMetaGroup {
    static daeMetaElement* elementType(const daeMetaGroup& group)
    {
        return (group.*(&GroupAccess::_elementContainer))->getElementType();
    }
};

} // namespace libVideo::detail
