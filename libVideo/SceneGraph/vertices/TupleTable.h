#pragma once

/// @file
/// Numbers index tuples in the order of their first use.

#include "../detail/HashMix.h"

#include <vesk/Array.h>

#include <cstdint>

namespace libVideo::detail {

/// Distinct tuples of one length, in the order of insertion. Finding a tuple takes constant time on average, and no
/// tuple has an allocation of its own.
///
/// Open addressing with linear probing; the slots double when half of them are taken. Their first number suits a smooth
/// mesh, in which several corners share a vertex.
class TupleTable {
public:
    struct Place {
        unsigned index; ///< number of distinct tuples inserted before this one
        bool isNew;
    };

    /// @param length of each tuple
    /// @param corners how many tuples will be inserted at most, including repeated ones
    TupleTable(unsigned length, unsigned corners) : m_length(length)
    {
        std::uint32_t size = 16;
        while (size < corners / 2) {
            size *= 2;
        }
        m_slots.grow(size, noTuple);
        m_mask = size - 1;
    }

    /// Finds a tuple, or inserts it.
    Place insert(const unsigned* tuple)
    {
        std::uint32_t slot = hash(tuple) & m_mask;
        for (; m_slots.getData()[slot] != noTuple; slot = (slot + 1) & m_mask) {
            const unsigned index = m_slots.getData()[slot];
            if (equals(index, tuple)) {
                return {index, false};
            }
        }
        const unsigned index = m_count;
        m_entries.append(tuple, m_length);
        m_slots.getData()[slot] = index;
        ++m_count;
        if (m_count > m_mask / 2) {
            doubleSlots();
        }
        return {index, true};
    }

private:
    static constexpr unsigned noTuple = 0xFFFFFFFFu;

    const unsigned* tupleAt(unsigned index) const { return m_entries.getData() + std::size_t(index) * m_length; }

    bool equals(unsigned index, const unsigned* tuple) const
    {
        const unsigned* const known = tupleAt(index);
        for (unsigned i = 0; i < m_length; ++i) {
            if (known[i] != tuple[i]) {
                return false;
            }
        }
        return true;
    }

    std::uint32_t hash(const unsigned* tuple) const
    {
        std::uint64_t state = m_seed;
        for (unsigned i = 0; i < m_length; ++i) {
            state = hashMix(state, tuple[i]);
        }
        return static_cast<std::uint32_t>(state);
    }

    void doubleSlots()
    {
        const std::uint32_t size = (m_mask + 1) * 2;
        vesk::Array<unsigned> slots;
        slots.grow(size, noTuple);
        m_mask = size - 1;
        for (unsigned index = 0; index < m_count; ++index) {
            std::uint32_t slot = hash(tupleAt(index)) & m_mask;
            while (slots.getData()[slot] != noTuple) {
                slot = (slot + 1) & m_mask;
            }
            slots.getData()[slot] = index;
        }
        m_slots.swap(slots);
    }

    std::uint64_t m_seed = hashSeed();
    unsigned m_length;
    unsigned m_count = 0;
    std::uint32_t m_mask = 0;
    vesk::Array<unsigned> m_slots;   // indices of tuples
    vesk::Array<unsigned> m_entries; // the tuples, one after the other
};

} // namespace libVideo::detail
