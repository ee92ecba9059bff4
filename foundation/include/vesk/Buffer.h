#pragma once // SPDX-License-Identifier: MIT

#include <cstdint>
#include <cstring>
#include <type_traits>

namespace vesk {

/// Flat memory of plain elements, owned and copied by value.
///
/// Differs from `std::vector`: there is no capacity and no growth by appending; sizes are 64-bit; elements are copied
/// bytewise; a resize leaves new elements uninitialized by default. Assigning fewer elements reuses the memory if they
/// are more than half of the current size. An assignment or resize that allocates invalidates all pointers. A failed
/// allocation throws `std::bad_alloc` and changes nothing.
template <class T>
class Buffer {
    static_assert(std::is_trivially_copyable<T>::value, "elements are copied bytewise");

public:
    /// Empty, without memory.
    Buffer() = default;

    /// A copy of the elements. @throws std::bad_alloc
    Buffer(const Buffer& other)
    {
        if (other.m_size != 0) {
            replace(copyOf(other.m_data, other.m_size, other.m_size), other.m_size);
        }
    }

    ~Buffer() { delete[] m_storage; }

    /// As `assign`.
    Buffer& operator=(const Buffer& other)
    {
        if (this != &other) {
            assign(other.m_data, other.m_size);
        }
        return *this;
    }

    /// Copies `count` elements, which may be in this buffer.
    void assign(const T* elements, std::uint64_t count)
    {
        if (count == 0) {
            replace(nullptr, 0);
        } else if (count <= m_size && count > (m_size >> 1) && m_storage != nullptr) {
            std::memmove(m_data, elements, byteCount(count));
            m_size = count;
        } else {
            replace(copyOf(elements, count, count), count);
        }
    }

    /// Keeps the first elements that both sizes have. New ones are zero if `zeroFill` is set, else uninitialized.
    void resize(std::uint64_t size, bool zeroFill)
    {
        if (size == 0) {
            replace(nullptr, 0);
        } else if (size != m_size) {
            const std::uint64_t kept = size < m_size ? size : m_size;
            T* const block = copyOf(m_data, kept, size);
            if (zeroFill) {
                std::memset(static_cast<void*>(block + kept), 0, byteCount(size - kept));
            }
            replace(block, size);
        }
    }

    std::uint64_t size() const { return m_size; } ///< Number of elements.
    /// The first element; null when empty.
    T* data() { return m_data; }
    const T* data() const { return m_data; } ///< The first element; null when empty.

    /// Unchecked, like a plain array.
    T& operator[](std::uint64_t index) { return m_data[index]; }
    const T& operator[](std::uint64_t index) const { return m_data[index]; } ///< Unchecked, like a plain array.

    /// Same size and equal elements in the same order.
    bool operator==(const Buffer& other) const
    {
        if (m_size != other.m_size) {
            return false;
        }
        for (std::uint64_t i = 0; i < m_size; ++i) {
            if (!(m_data[i] == other.m_data[i])) {
                return false;
            }
        }
        return true;
    }
    bool operator!=(const Buffer& other) const { return !(*this == other); } ///< Not `==`.

private:
    static std::size_t byteCount(std::uint64_t count) { return static_cast<std::size_t>(count * sizeof(T)); }

    // A new block of `size` elements, of which the first `count` are copies.
    static T* copyOf(const T* elements, std::uint64_t count, std::uint64_t size)
    {
        T* const block = new T[size];
        if (count != 0) {
            std::memcpy(static_cast<void*>(block), elements, byteCount(count));
        }
        return block;
    }

    void replace(T* block, std::uint64_t size)
    {
        delete[] m_storage;
        m_data = block;
        m_storage = block;
        m_size = size;
    }

    T* m_data = nullptr;
    T* m_storage = nullptr; // for delete[]; the elements in use start at its start
    std::uint64_t m_size = 0;
};

} // namespace vesk
