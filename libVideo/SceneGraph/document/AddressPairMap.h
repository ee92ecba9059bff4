#pragma once

/// @file
/// A table whose keys are pairs of addresses.

#include <cstddef>
#include <cstdint>
#include <vector>

namespace libVideo::detail {

/// Maps pairs of addresses, neither of them null, to values, by open addressing; no entry can be removed. The addresses
/// come from pools, so no document can choose keys that collide.
template <class Value>
class AddressPairMap {
public:
    /// @return the value, or null if there is none
    const Value* find(const void* first, const void* second) const
    {
        if (m_entries.empty()) {
            return nullptr;
        }
        for (std::size_t i = place(first, second);; i = (i + 1) & (m_entries.size() - 1)) {
            const Entry& entry = m_entries[i];
            if (entry.first == first && entry.second == second) {
                return &entry.value;
            }
            if (entry.first == nullptr) {
                return nullptr;
            }
        }
    }

    /// Adds a value for a pair that is not in the table yet.
    void insert(const void* first, const void* second, const Value& value)
    {
        if ((m_count + 1) * 2 > m_entries.size()) {
            std::vector<Entry> before(m_entries.empty() ? 64 : m_entries.size() * 2);
            before.swap(m_entries);
            for (const Entry& entry : before) {
                if (entry.first != nullptr) {
                    store(entry);
                }
            }
        }
        store({first, second, value});
        ++m_count;
    }

private:
    struct Entry {
        const void* first = nullptr;
        const void* second = nullptr;
        Value value = {};
    };

    std::size_t place(const void* first, const void* second) const
    {
        const std::uint64_t mixed = (reinterpret_cast<std::uintptr_t>(first) * 31 + // any odd number
                                     reinterpret_cast<std::uintptr_t>(second)) *
                                    0x9E3779B97F4A7C15u;
        return static_cast<std::size_t>(mixed >> 32u) & (m_entries.size() - 1);
    }

    void store(const Entry& entry)
    {
        std::size_t i = place(entry.first, entry.second);
        while (m_entries[i].first != nullptr) {
            i = (i + 1) & (m_entries.size() - 1);
        }
        m_entries[i] = entry;
    }

    std::vector<Entry> m_entries;
    std::size_t m_count = 0;
};

} // namespace libVideo::detail
