#include "IdIndex.h"

#include "../detail/HashMix.h"

#include <algorithm>
#include <cstring>

namespace libVideo::detail {

void IdIndex::add(daeString id, daeElement& element)
{
    m_entries.push_back({id, &element, hashOf(id)});
}

// Fills all slots at once: filling one whenever an element ends would often miss the processor's cache.
bool IdIndex::build()
{
    std::size_t size = 16;
    while (size < m_entries.size() * 2) {
        size *= 2;
    }
    m_slots.assign(m_entries.empty() ? 0 : size, Slot());
    bool areDistinct = true;
    for (std::size_t i = 0; i < m_entries.size(); ++i) {
        Slot& slot = m_slots[place(m_entries[i].id, m_entries[i].hash)];
        if (slot.number != 0) {
            areDistinct = false;
            continue;
        }
        slot = {static_cast<std::uint32_t>(i + 1), m_entries[i].hash};
    }
    return areDistinct;
}

daeElement* IdIndex::find(std::string_view id) const
{
    if (m_slots.empty()) {
        return nullptr;
    }
    const std::uint32_t number = m_slots[place(id, hashOf(id))].number;
    return number != 0 ? m_entries[number - 1].element : nullptr;
}

void IdIndex::clear()
{
    m_entries.clear();
    m_slots.clear();
}

std::uint32_t IdIndex::hashOf(std::string_view id)
{
    std::uint64_t hash = hashSeed();
    for (std::size_t i = 0; i < id.size(); i += sizeof(std::uint64_t)) {
        std::uint64_t word = 0;
        std::memcpy(&word, id.data() + i, std::min(sizeof(word), id.size() - i));
        hash = hashMix(hash, word);
    }
    return static_cast<std::uint32_t>(hashMix(hash, id.size()));
}

// The slot of an id, or the empty slot where it belongs. Texts are compared only if their hashes are equal.
std::size_t IdIndex::place(std::string_view id, std::uint32_t hash) const
{
    const std::size_t mask = m_slots.size() - 1;
    std::size_t i = hash & mask;
    while (m_slots[i].number != 0 && (m_slots[i].hash != hash || m_entries[m_slots[i].number - 1].id != id)) {
        i = (i + 1) & mask;
    }
    return i;
}

} // namespace libVideo::detail
