#pragma once

/// @file
/// Finds the elements of one document by id.

#include <libVideo/ColladaDom.h>

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace libVideo::detail {

/// Maps each id of a document to the first element that has it. Ids are kept by address, because the document model
/// does not free them as long as there is a `DAE`.
class IdIndex {
public:
    /// Adds an element, which is found only after the next `build()`.
    void add(daeString id, daeElement& element);
    /// Makes all added elements available to `find()`. @return false if an id repeats; its first element is found
    bool build();
    /// @return the element, or null
    daeElement* find(std::string_view id) const;
    void clear();

private:
    struct Entry {
        daeString id;
        daeElement* element;
        std::uint32_t hash;
    };
    struct Slot {
        std::uint32_t number = 0; // index of the entry plus 1; 0 if empty
        std::uint32_t hash = 0;
    };

    static std::uint32_t hashOf(std::string_view id);
    std::size_t place(std::string_view id, std::uint32_t hash) const;

    std::vector<Entry> m_entries;
    std::vector<Slot> m_slots; // open addressing; empty, or a power of two
};

} // namespace libVideo::detail
