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
    /// @return false if the id is there already; it keeps its element then
    bool add(daeString id, daeElement& element);
    /// @return null if there is none
    daeElement* find(std::string_view id) const;
    void clear();

private:
    struct Entry {
        daeString id = nullptr;
        daeElement* element = nullptr;
    };

    std::size_t place(std::string_view id) const;
    void grow();

    std::vector<Entry> m_entries; // open addressing; of a power of two, or none
    std::size_t m_count = 0;
};

} // namespace libVideo::detail
