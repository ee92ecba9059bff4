#pragma once

/// @file
/// What the document model lets derived classes alone reach: members that a reader has to set while it makes elements.

#pragma GCC system_header

#include <libVideo/ColladaDom.h>

#include <dae/daeMetaAny.h>
#include <dae/daeMetaChoice.h>
#include <dae/daeMetaElementAttribute.h>
#include <dae/daeMetaGroup.h>
#include <dae/daeMetaSequence.h>

#include <cstddef>

namespace libVideo::detail {

/// A member pointer may be named by a derived class, and then applies to every object of the base.
struct ElementAccess : daeElement {
    static void setDocument(daeElement& element, daeDocument& document)
    {
        element.*(&ElementAccess::_document) = &document;
    }
    static daeBoolArray& setAttributes(daeElement& element) { return element.*(&ElementAccess::_validAttributeArray); }
};

struct ArrayAccess : daeArray {
    /// Gives an array a block that malloc has made.
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
