#include "IdIndex.h"

#include "../detail/HashMix.h"

#include <algorithm>
#include <cstring>

namespace libVideo::detail {

bool IdIndex::add(daeString id, daeElement& element)
{
    if ((m_count + 1) * 3 > m_entries.size() * 2) {
        grow();
    }
    Entry& entry = m_entries[place(id)];
    if (entry.id != nullptr) {
        return false;
    }
    entry = {id, &element};
    ++m_count;
    return true;
}

daeElement* IdIndex::find(std::string_view id) const
{
    return m_entries.empty() ? nullptr : m_entries[place(id)].element;
}

void IdIndex::clear()
{
    m_entries.clear();
    m_count = 0;
}

// Where an id is, or where it would go.
std::size_t IdIndex::place(std::string_view id) const
{
    std::uint64_t hash = hashSeed();
    std::size_t i = 0;
    for (; i < id.size(); i += sizeof(std::uint64_t)) {
        std::uint64_t word = 0;
        std::memcpy(&word, id.data() + i, std::min(sizeof(word), id.size() - i));
        hash = hashMix(hash, word);
    }
    hash = hashMix(hash, id.size());
    i = static_cast<std::size_t>(hash) & (m_entries.size() - 1);
    while (m_entries[i].id != nullptr && m_entries[i].id != id) {
        i = (i + 1) & (m_entries.size() - 1);
    }
    return i;
}

void IdIndex::grow()
{
    std::vector<Entry> before(m_entries.empty() ? 16 : m_entries.size() * 2);
    before.swap(m_entries);
    for (const Entry& entry : before) {
        if (entry.id != nullptr) {
            m_entries[place(entry.id)] = entry;
        }
    }
}

} // namespace libVideo::detail
