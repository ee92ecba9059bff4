#include "ListReader.h"

#include "ModelAccess.h"

#include <charconv>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>
#include <string>
#include <system_error>
#include <type_traits>

namespace libVideo::detail {

namespace {

// Whether the document model takes a character as a separator of tokens.
bool isBlank(char c)
{
    return (c == ' ') | (c == '\t') | (c == '\n') | (c == '\r');
}

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

// Fast readers of the common forms of a token, which must be followed by a blank. They return the address of that
// blank, or null for a token of any other form. The values are exact.

// At most 19 digits, which always fit.
const char* readPlain(const char* token, daeULong& number)
{
    const char* at = token;
    daeULong value = 0;
    for (; isDigit(*at); ++at) {
        value = value * 10 + static_cast<daeULong>(*at - '0');
    }
    if (at == token || at - token > 19 || !isBlank(*at)) {
        return nullptr;
    }
    number = value;
    return at;
}

const char* readPlain(const char* token, daeLong& number)
{
    const bool isNegative = *token == '-';
    daeULong value = 0;
    const char* const end = readPlain(token + (isNegative ? 1 : 0), value);
    if (end == nullptr || value > static_cast<daeULong>(std::numeric_limits<daeLong>::max())) {
        return nullptr;
    }
    number = isNegative ? -static_cast<daeLong>(value) : static_cast<daeLong>(value);
    return end;
}

// A decimal of at most 15 digits without an exponent. Its digits as an integer and the power of ten that divides them
// are both exact as doubles, so the quotient is rounded only once, and correctly.
const char* readPlain(const char* token, daeDouble& number)
{
    static constexpr double powersOfTen[] = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                             1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
    const bool isNegative = *token == '-';
    const char* const first = token + (isNegative ? 1 : 0);
    const char* at = first;
    std::uint64_t digits = 0;
    for (; isDigit(*at); ++at) {
        digits = digits * 10 + static_cast<std::uint64_t>(*at - '0');
    }
    std::ptrdiff_t count = at - first;
    std::ptrdiff_t decimals = 0;
    if (*at == '.') {
        const char* const point = at;
        for (++at; isDigit(*at); ++at) {
            digits = digits * 10 + static_cast<std::uint64_t>(*at - '0');
        }
        decimals = at - point - 1;
        count += decimals;
    }
    if (count == 0 || count > 15 || !isBlank(*at)) {
        return nullptr;
    }
    const double magnitude = static_cast<double>(digits) / powersOfTen[decimals];
    number = isNegative ? -magnitude : magnitude;
    return at;
}

// Whether a token starts with a digit, after at most a minus and a point. Only such tokens are passed to
// std::from_chars, which accepts other words and signs than the C library.
template <class Number>
bool startsPlainly(const char* token)
{
    if (std::is_signed<Number>::value && *token == '-') {
        ++token;
    }
    if (std::is_floating_point<Number>::value && *token == '.') {
        ++token;
    }
    return isDigit(*token);
}

} // namespace

void ListReader::Free::operator()(Cell* block) const
{
    std::free(block); // NOLINT(cppcoreguidelines-no-malloc): the document model allocates its arrays by malloc
}

void ListReader::begin(ElementType::Value kind, daeAtomicType& stock)
{
    m_kind = kind;
    m_stock = &stock;
    m_block.reset();
    m_cells = m_first.data();
    m_count = 0;
    m_capacity = m_first.size();
    m_token.clear();
    m_name = nullptr;
}

// The last token of a piece may continue in the next piece.
void ListReader::add(const char* text, std::size_t size)
{
    const char* const end = text + size;
    if (!m_token.empty()) {
        const char* tokenEnd = text;
        while (tokenEnd != end && !isBlank(*tokenEnd)) {
            ++tokenEnd;
        }
        m_token.append(text, tokenEnd);
        if (tokenEnd == end) {
            return;
        }
        m_token += ' ';
        addTokens(m_token.data(), m_token.data() + m_token.size());
        m_token.clear();
        text = tokenEnd;
    }
    const char* lastBlank = end;
    while (lastBlank != text && !isBlank(lastBlank[-1])) {
        --lastBlank;
    }
    m_token.assign(lastBlank, end);
    addTokens(text, lastBlank);
}

void ListReader::finish(daeArray& list)
{
    if (!m_token.empty()) {
        m_token += ' ';
        addTokens(m_token.data(), m_token.data() + m_token.size());
        m_token.clear();
    }
    if (m_count == 0) {
        list.clear();
        return;
    }
    const std::size_t bytes = m_count * sizeof(Cell);
    if (m_block == nullptr) {
        m_block.reset(static_cast<Cell*>(std::malloc(bytes)));
        if (m_block == nullptr) {
            throw std::bad_alloc();
        }
        std::memcpy(m_block.get(), m_cells, bytes);
    } else if (void* const exact = std::realloc(m_block.get(), bytes)) {
        static_cast<void>(m_block.release());
        m_block.reset(static_cast<Cell*>(exact));
    }
    ArrayAccess::take(list, m_block.release(), m_count, m_count);
}

// The cell for the next entry. The caller counts the entry.
ListReader::Cell* ListReader::nextCell()
{
    if (m_count == m_capacity) {
        const std::size_t bytes = m_capacity * 2 * sizeof(Cell);
        void* const block = std::realloc(m_block.get(), bytes);
        if (block == nullptr) {
            throw std::bad_alloc();
        }
        if (m_block == nullptr) {
            std::memcpy(block, m_cells, m_count * sizeof(Cell));
        }
        static_cast<void>(m_block.release());
        m_block.reset(static_cast<Cell*>(block));
        m_cells = m_block.get();
        m_capacity *= 2;
    }
    return m_cells + m_count;
}

// @param end the character before it has to be a blank, unless the text is empty
void ListReader::addTokens(const char* text, const char* end)
{
    switch (m_kind) {
    case ElementType::Value::doubles:
        addNumbers<daeDouble>(text, end);
        break;
    case ElementType::Value::unsigneds:
        addNumbers<daeULong>(text, end);
        break;
    case ElementType::Value::signeds:
        addNumbers<daeLong>(text, end);
        break;
    case ElementType::Value::names:
        addNames(text, end);
        break;
    case ElementType::Value::none:
    case ElementType::Value::text:
        break;
    }
}

template <class Number>
void ListReader::addNumbers(const char* text, const char* end)
{
    static_assert(sizeof(Number) == sizeof(Cell));
    while (true) {
        while (text != end && isBlank(*text)) {
            ++text;
        }
        if (text == end) {
            return;
        }
        Cell* const cell = nextCell();
        Number number = 0;
        const char* tokenEnd = readPlain(text, number);
        if (tokenEnd == nullptr) {
            tokenEnd = text;
            while (!isBlank(*tokenEnd)) {
                ++tokenEnd;
            }
            readToken(text, tokenEnd, number);
        }
        std::memcpy(cell, &number, sizeof(number));
        ++m_count;
        text = tokenEnd;
    }
}

template <class Number>
void ListReader::readToken(const char* text, const char* end, Number& number)
{
    if (startsPlainly<Number>(text)) {
        Number value = 0;
        const std::from_chars_result result = std::from_chars(text, end, value);
        if (result.ec == std::errc() && result.ptr == end) {
            number = value;
            return;
        }
    }
    number = 0;
    std::string copy(text, end);
    m_stock->stringToMemory(copy.data(), reinterpret_cast<daeChar*>(&number));
}

// Lists of names usually repeat one word, such as the interpolation of the keys of a curve. The document model would
// store a copy of each; here a repeated word shares the copy of the previous one.
void ListReader::addNames(const char* text, const char* end)
{
    static_assert(sizeof(daeString) == sizeof(Cell));
    while (true) {
        while (text != end && isBlank(*text)) {
            ++text;
        }
        if (text == end) {
            return;
        }
        const char* tokenEnd = text;
        while (!isBlank(*tokenEnd)) {
            ++tokenEnd;
        }
        Cell* const cell = nextCell();
        const auto length = static_cast<std::size_t>(tokenEnd - text);
        if (m_name == nullptr || m_word.size() != length || std::memcmp(m_word.data(), text, length) != 0) {
            m_word.assign(text, length);
            m_stock->stringToMemory(m_word.data(), reinterpret_cast<daeChar*>(&m_name));
        }
        std::memcpy(cell, &m_name, sizeof(m_name));
        ++m_count;
        text = tokenEnd;
    }
}

} // namespace libVideo::detail
