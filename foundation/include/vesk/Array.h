#pragma once // SPDX-License-Identifier: MIT

#include <vesk/Exception.h>
#include <vesk/Export.h>
#include <vesk/Serializable.h>
#include <vesk/String.h>

#include <cstddef>
#include <memory>
#include <new>

namespace vesk {

namespace detail {

/// Header of the block that an array owns; the elements follow it directly.
struct ArrayHeader {
    unsigned count;
    unsigned capacity;
};

constexpr unsigned smallestArrayCapacity = 8;

/// Shared by all arrays that have had no element yet. It has no slots, although those arrays report the smallest
/// capacity; nothing writes to it.
VESK_API extern ArrayHeader* const noElements;

/// Capacity for `size` elements: 8, doubled until they fit. The size of the block has to fit 32 bits, header included.
/// @throws NullPointer that names `size` if it does not
VESK_API unsigned arrayCapacity(unsigned size, std::size_t elementSize);
/// An empty block of `capacity` slots.
/// @throws NullPointer that names `size`, the requested number, if out of memory
VESK_API ArrayHeader* allocateArray(unsigned size, unsigned capacity, std::size_t elementSize);
VESK_API void freeArray(ArrayHeader* block) noexcept;
[[noreturn]] VESK_API void throwArraySize(unsigned size);
[[noreturn]] VESK_API void throwArrayIndex(unsigned count, unsigned index);

} // namespace detail

/// Growable array on one heap block of count, capacity and elements. Copies are deep.
///
/// Differs from `std::vector`: sizes are 32-bit; the block is allocated with the first element, has at least 8 slots and
/// doubles when full; `[]` is checked and throws; `clear` frees the memory; elements are always copied, never moved;
/// running out of memory throws `NullPointer`. An exception leaves the array unchanged.
///
/// Growth, assignment and `clear` invalidate references and iterators. A value to append may be in the array itself.
/// `T` needs a copy constructor and a destructor, for the sized constructor a default constructor, for `contains` `==`;
/// where an array is declared, `T` may be incomplete.
template <class T>
class VESK_API Array : public Serializable {
public:
    /// No elements, capacity 8.
    Array() noexcept : m_block(detail::noElements) {}

    /// `size` default-constructed elements; numbers are zero.
    explicit Array(unsigned size) : Array()
    {
        if (size == 0) {
            return;
        }
        Block block(allocate(size));
        std::uninitialized_value_construct_n(block.elements(), size);
        block.header()->count = size;
        m_block = block.release();
    }

    /// The same capacity and copies of the elements. @throws NullPointer if out of memory
    Array(const Array& other) : Serializable(), m_block(clone(other)) {}

    ~Array() override
    {
        if (m_block != nullptr) {
            destroy(m_block);
        }
        m_block = nullptr;
    }

    /// Copies the elements and the capacity of `other`. @throws NullPointer if out of memory
    Array& operator=(const Array& other) // NOLINT(bugprone-unhandled-self-assignment): compares the blocks
    {
        if (m_block != other.m_block) {
            replace(clone(other));
        }
        return *this;
    }

    /// Exchanges the elements of two arrays without copying any.
    void swap(Array& other) noexcept
    {
        detail::ArrayHeader* const block = m_block;
        m_block = other.m_block;
        other.m_block = block;
    }

    unsigned size() const { return m_block->count; } ///< Number of elements.
    /// Number of elements that fit before the block has to grow.
    unsigned capacity() const
    {
        return m_block == detail::noElements ? detail::smallestArrayCapacity : m_block->capacity;
    }

    /// @throws IndexOutOfBounds
    T& operator[](unsigned index) { return elements(m_block)[checked(index)]; }
    /// @throws IndexOutOfBounds
    const T& operator[](unsigned index) const { return elements(m_block)[checked(index)]; }

    /// Address of the first element. There is no slot to write to before the first element is added.
    T* getData() { return elements(m_block); }
    const T* getData() const { return elements(m_block); } ///< Address of the first slot, even for an empty array.

    T* begin() { return getData(); }                    ///< For range-for; the first element.
    T* end() { return getData() + size(); }             ///< Past the last element.
    const T* begin() const { return getData(); }        ///< For range-for; the first element.
    const T* end() const { return getData() + size(); } ///< Past the last element.

    /// Amortized constant time.
    void append(const T& value)
    {
        if (m_block->count < m_block->capacity) {
            new (elements(m_block) + m_block->count) T(value);
            ++m_block->count;
        } else {
            append(&value, 1);
        }
    }

    /// Appends copies of `n` elements, which may be in the array itself.
    void append(const T* values, unsigned n)
    {
        extend(n, [values, n](T* slots) { std::uninitialized_copy_n(values, n, slots); });
    }

    /// Appends copies of all elements; `other` may be this array.
    void appendArray(const Array& other) { append(other.getData(), other.size()); }

    /// Extends to `size` elements; new ones are copies of `value`. Never shrinks.
    void grow(unsigned size, const T& value)
    {
        if (size > m_block->count) {
            const unsigned n = size - m_block->count;
            extend(n, [&value, n](T* slots) { std::uninitialized_fill_n(slots, n, value); });
        }
    }

    /// Destroys the elements from `size` on, and keeps the capacity. More than there are changes nothing.
    void truncate(unsigned size)
    {
        while (m_block->count > size) {
            --m_block->count;
            std::destroy_at(elements(m_block) + m_block->count);
        }
    }

    /// Destroys all elements; the capacity is 8 again.
    void clear()
    {
        if (m_block->capacity > detail::smallestArrayCapacity) {
            replace(detail::noElements);
        } else if (m_block->count > 0) {
            destroyElements(m_block);
            m_block->count = 0;
        }
    }

    /// Linear in the size.
    bool contains(const T& value) const
    {
        for (const T& element : *this) {
            if (element == value) {
                return true;
            }
        }
        return false;
    }

    /// "ArrayOfString", "ArrayOfUnsigned", "ArrayOfDouble", "ArrayOfByte", and "ArrayOfOthers" for all other elements.
    static const String& className()
    {
        static const String name(detail::SerializedValue<T>::arrayName());
        return name;
    }

    const String& getClassName() const override { return className(); }

    /// Replaces the elements by those in the XML. For other elements, writes a notice to standard output instead.
    void deserializeMembers(const XmlElement* element) override
    {
        if constexpr (detail::SerializedValue<T>::isSupported) {
            Array read;
            if (element != nullptr) {
                int index = 0;
                for (XmlElement value = element->firstValue(); value.exists(); value = value.nextValue()) {
                    String text = value.text();
                    read.insertValueToContainer(index, &value, text);
                    ++index;
                }
            }
            swap(read);
        } else {
            static_cast<void>(element);
            detail::writeRefusalNotice();
        }
    }

    /// @throws SerializationFailed that names `name` if it is an array of other elements
    void serializeMembers(const String& name, String& xml) override
    {
        if constexpr (detail::SerializedValue<T>::isSupported) {
            serializeBegin(name);
            for (const T& element : *this) {
                serializeValue(detail::SerializedValue<T>::text(element));
            }
            serializeEnd();
            getSerializedXML(xml);
        } else {
            static_cast<void>(xml);
            detail::throwSerializationRefused(name);
        }
    }

protected:
    void insertValueToContainer(int /*index*/, const XmlElement* /*element*/, String& value) override
    {
        if constexpr (detail::SerializedValue<T>::isSupported) {
            append(detail::SerializedValue<T>::value(value));
        } else {
            static_cast<void>(value);
        }
    }

private:
    // A block on its way into an array: destroyed with its elements unless released.
    class Block {
    public:
        explicit Block(detail::ArrayHeader* header) : m_header(header) {}
        ~Block()
        {
            if (m_header != nullptr) {
                destroy(m_header);
            }
        }
        Block(const Block&) = delete;
        Block& operator=(const Block&) = delete;

        detail::ArrayHeader* header() const { return m_header; }
        T* elements() const { return Array::elements(m_header); }
        detail::ArrayHeader* release()
        {
            detail::ArrayHeader* const header = m_header;
            m_header = nullptr;
            return header;
        }

    private:
        detail::ArrayHeader* m_header;
    };

    // Checked here and not in the class, so that a class may have an array of itself.
    static T* elements(detail::ArrayHeader* block)
    {
        static_assert(alignof(T) <= sizeof(detail::ArrayHeader), "elements follow the header directly");
        return reinterpret_cast<T*>(block + 1);
    }

    static detail::ArrayHeader* allocate(unsigned size)
    {
        return detail::allocateArray(size, detail::arrayCapacity(size, sizeof(T)), sizeof(T));
    }

    static void destroyElements(detail::ArrayHeader* block)
    {
        std::destroy_n(elements(block), block->count); // in ascending order
    }

    static void destroy(detail::ArrayHeader* block)
    {
        if (block != detail::noElements) {
            destroyElements(block);
            detail::freeArray(block);
        }
    }

    // A block of the capacity of `other`, not of its size.
    static detail::ArrayHeader* clone(const Array& other)
    {
        if (other.m_block == nullptr || other.m_block == detail::noElements) {
            return other.m_block;
        }
        Block block(allocate(other.m_block->capacity));
        std::uninitialized_copy_n(other.getData(), other.size(), block.elements());
        block.header()->count = other.size();
        return block.release();
    }

    void replace(detail::ArrayHeader* block)
    {
        detail::ArrayHeader* const old = m_block;
        m_block = block;
        if (old != nullptr) {
            destroy(old);
        }
    }

    unsigned checked(unsigned index) const
    {
        if (index >= m_block->count) {
            detail::throwArrayIndex(m_block->count, index);
        }
        return index;
    }

    // Constructs `n` elements after the last. If the block has to grow, the old elements live until the new ones are
    // made, so that these may be copies of them.
    template <class Construct>
    void extend(unsigned n, const Construct& construct)
    {
        if (n == 0) {
            return;
        }
        const unsigned count = m_block->count;
        if (n <= m_block->capacity - count) {
            construct(elements(m_block) + count);
            m_block->count = count + n;
            return;
        }
        if (n > 0xFFFFFFFFu - count) {
            detail::throwArraySize(0xFFFFFFFFu);
        }
        Block grown(allocate(count + n));
        std::uninitialized_copy_n(getData(), count, grown.elements());
        grown.header()->count = count;
        construct(grown.elements() + count);
        grown.header()->count = count + n;
        replace(grown.release());
    }

    detail::ArrayHeader* m_block = nullptr;
};

} // namespace vesk
