#pragma once

/// @file
/// Finds the cameras and lights of a pool by id in constant time.

#include <libVideo/Handles.h>

#include <vesk/Array.h>
#include <vesk/HashTable.h>
#include <vesk/String.h>

namespace libVideo::detail {

/// Equality and hash of texts that ignore the case of ASCII letters.
struct NoCase {
    static bool equal(const vesk::String& a, const vesk::String& b) { return vesk::String::compareNoCase(a, b) == 0; }
    static unsigned hash(const vesk::String& text);
};

/// The first object with each id in a list. Ids that differ only in case are equal.
template <class Object>
class FirstById {
public:
    explicit FirstById(const vesk::Array<SharedHandle<Object>>& list)
    {
        m_objects.reserve(list.size());
        for (const SharedHandle<Object>& object : list) {
            m_objects.insert(object->id(), object); // keeps the first of equal ids
        }
    }

    /// @return the object, or an empty handle
    SharedHandle<Object> find(const vesk::String& id) const
    {
        const auto* const bucket = m_objects.lookup(id);
        return bucket == nullptr ? SharedHandle<Object>() : bucket->value;
    }

private:
    vesk::HashTable<vesk::String, SharedHandle<Object>, NoCase, NoCase> m_objects{32};
};

} // namespace libVideo::detail
