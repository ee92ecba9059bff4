#pragma once

/// @file
/// Finds the elements of one document by id.

#include <libVideo/ColladaDom.h>

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace libVideo::detail {

/// The first element of each id of a document. Ids are kept by their address: the document model never frees one
/// while there is a `DAE`.
class IdIndex {
public:
    /// Lists an element, which is not found before the next `build()`.
    void add(daeString id, daeElement& element);
    /// Lets all that was listed be found. @return false if an id is there several times; the first of its elements counts
    bool build();
    /// @return null if there is none
    daeElement* find(std::string_view id) const;
    void clear();

private:
    struct Entry {
        daeString id;
        daeElement* element;
        std::uint32_t hash;
    };
    struct Slot {
        std::uint32_t number = 0; // of an entry, counted from 1
        std::uint32_t hash = 0;
    };

    static std::uint32_t hashOf(std::string_view id);
    std::size_t place(std::string_view id, std::uint32_t hash) const;

    std::vector<Entry> m_entries;
    std::vector<Slot> m_slots; // open addressing; of a power of two, or none
};

} // namespace libVideo::detail
