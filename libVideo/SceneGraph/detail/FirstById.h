#pragma once

/// @file
/// Finds the cameras and lights of a pool by id, without a walk through the pool for each instance.

#include <libVideo/Handles.h>

#include <vesk/Array.h>
#include <vesk/HashTable.h>
#include <vesk/String.h>

namespace libVideo::detail {

/// Equality and hash of text in which the case of ASCII letters plays no part.
struct NoCase {
    static bool equal(const vesk::String& a, const vesk::String& b) { return vesk::String::compareNoCase(a, b) == 0; }
    static unsigned hash(const vesk::String& text);
};

/// The first object of each id in a list, whatever the case of the id.
template <class Object>
class FirstById {
public:
    explicit FirstById(const vesk::Array<SharedHandle<Object>>& list)
    {
        m_objects.reserve(list.size());
        for (const SharedHandle<Object>& object : list) {
            m_objects.insert(object->id(), object); // keeps the first
        }
    }

    /// @return empty if there is none
    SharedHandle<Object> find(const vesk::String& id) const
    {
        const auto* const bucket = m_objects.lookup(id);
        return bucket == nullptr ? SharedHandle<Object>() : bucket->value;
    }

private:
    vesk::HashTable<vesk::String, SharedHandle<Object>, NoCase, NoCase> m_objects{32};
};

} // namespace libVideo::detail
