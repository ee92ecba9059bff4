#pragma once

/// @file
/// Reads lists of numbers and of names, faster than the document model does.

#include "ElementTypes.h"

#include <libVideo/ColladaDom.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace libVideo::detail {

/// Reads the list in an element (`<float_array>`, `<p>`, `<matrix>`, `<Name_array>` and similar ones) from text that
/// comes in pieces, into memory of exactly the right size, in any locale. The values are bit for bit those of the
/// document model's own types, which read every token that is not a plain number. A repeated name is stored once.
class ListReader {
public:
    /// Starts a list.
    /// @param stock the document model's type of its entries
    void begin(ElementType::Value kind, daeAtomicType& stock);
    /// Reads the next piece of its text. @throws std::bad_alloc
    void add(const char* text, std::size_t size);
    /// Ends the list. @param list its content is replaced @throws std::bad_alloc
    void finish(daeArray& list);

private:
    // All entries have one size: numbers have 8 bytes, and so have addresses of names.
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
    std::array<Cell, 64> m_first = {};   // entries of a short list, as most are
    std::unique_ptr<Cell, Free> m_block; // entries of a long list
    Cell* m_cells = nullptr;             // the one of both that is used
    std::size_t m_count = 0;
    std::size_t m_capacity = 0;
    std::string m_token;        // incomplete token at the end of the last piece
    std::string m_word;         // the last name
    daeString m_name = nullptr; // the document model's copy of it
};

} // namespace libVideo::detail
