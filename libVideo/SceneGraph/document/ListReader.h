#pragma once

/// @file
/// Lists of numbers and of names, read faster than the document model does it.

#include "ElementTypes.h"

#include <libVideo/ColladaDom.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace libVideo::detail {

/// Reads the list in an element (`<float_array>`, `<p>`, `<matrix>`, `<Name_array>` and their kin) from text that comes
/// in pieces, into memory of just the right size, and independently of the locale. The values are those of the document
/// model's own types, bit for bit: whatever is not plainly a number goes to these. A repeated name is kept once.
class ListReader {
public:
    /// A list begins.
    /// @param stock the document model's type of its entries
    void begin(ElementType::Value kind, daeAtomicType& stock);
    /// The next piece of its text.
    /// @throws std::bad_alloc if memory runs out, as the next does
    void add(const char* text, std::size_t size);
    /// The list has ended. @param list is given what was read, in place of what it held
    void finish(daeArray& list);

private:
    // All entries take as much: numbers of 8 bytes, and addresses of names.
    using Cell = std::uint64_t;

    struct Free {
        void operator()(Cell* block) const;
    };

    Cell* nextCell();
    void addTokens(const char* text, const char* end);
    template <class Number>
    void addNumbers(const char* text, const char* end);
    template <class Number>
    void readToken(const char* text, const char* end, Number& number);
    void addNames(const char* text, const char* end);

    ElementType::Value m_kind = ElementType::Value::none;
    daeAtomicType* m_stock = nullptr;
    std::array<Cell, 64> m_first = {};   // most lists are short
    std::unique_ptr<Cell, Free> m_block; // of a long one
    Cell* m_cells = nullptr;             // of either
    std::size_t m_count = 0;
    std::size_t m_capacity = 0;
    std::string m_token; // that the last piece ended in
    std::string m_word;  // the last name
    daeString m_name = nullptr;
};

} // namespace libVideo::detail
