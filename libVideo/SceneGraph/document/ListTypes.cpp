#include "ListTypes.h"

#include "Bytes.h"

#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <string>
#include <system_error>
#include <type_traits>

namespace libVideo::detail {

namespace {

// What separates tokens for the document model.
bool isBlank(char c)
{
    return (c == ' ') | (c == '\t') | (c == '\n') | (c == '\r');
}

bool isEnd(char c)
{
    return isBlank(c) | (c == '\0');
}

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

// A token begins where what is no blank follows a blank.
std::size_t countTokens(const char* text)
{
    const std::size_t length = std::strlen(text);
    std::size_t count = length > 0 && !isBlank(text[0]) ? 1 : 0;
    std::size_t i = 1;
    while (i + sizeof(Bytes) <= length) {
        Bytes starts = {}; // at each place of a step, in a number of steps that its byte can count
        for (unsigned step = 0; step < 255 && i + sizeof(Bytes) <= length; ++step, i += sizeof(Bytes)) {
            starts -= reinterpret_cast<Bytes>(areBlank(bytesAt(text + i - 1)) & ~areBlank(bytesAt(text + i)));
        }
        for (std::size_t place = 0; place < sizeof(Bytes); ++place) {
            count += starts[place];
        }
    }
    for (; i < length; ++i) {
        count += isBlank(text[i - 1]) && !isBlank(text[i]) ? 1 : 0;
    }
    return count;
}

// The common kinds of a token, read without a call; what is read is exact. Each stops at the first blank or at the end of
// the text, or gives null for whatever is not plainly of its kind.

// Up to 19 digits, which always fit.
const char* readPlain(const char* token, daeULong& number)
{
    const char* at = token;
    daeULong value = 0;
    for (; isDigit(*at); ++at) {
        value = value * 10 + static_cast<daeULong>(*at - '0');
    }
    if (at == token || at - token > 19 || !isEnd(*at)) {
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

// A decimal of up to 15 digits and without an exponent. Its digits and the power of ten below them are both exact as a
// double, so that their quotient is rounded once: to what the number is.
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
    if (count == 0 || count > 15 || !isEnd(*at)) {
        return nullptr;
    }
    const double magnitude = static_cast<double>(digits) / powersOfTen[decimals];
    number = isNegative ? -magnitude : magnitude;
    return at;
}

// Whether a token may be left to std::from_chars, which knows other words and other signs than the C library: it starts
// with a digit behind at most a point and a minus.
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

// A number type of the document model with a reading of lists of its own.
template <class Stock, class Number>
class ListType : public Stock {
public:
    using Stock::Stock;

    daeBool stringToArray(daeChar* text, daeArray& array) override
    {
        auto& numbers = static_cast<daeTArray<Number>&>(array);
        numbers.clear();
        if (text == nullptr) {
            return false;
        }
        numbers.setCount(countTokens(text));
        auto* const first = reinterpret_cast<Number*>(numbers.getRawData());
        Number* number = first;
        while (true) {
            while (isBlank(*text)) {
                ++text;
            }
            if (*text == '\0') {
                break;
            }
            if (const char* const plainEnd = readPlain(text, *number)) {
                text += plainEnd - text;
                ++number;
                continue;
            }
            char* end = text;
            while (*end != '\0' && !isBlank(*end)) {
                ++end;
            }
            if (readToken(text, end, *number)) {
                ++number;
            }
            text = end;
        }
        numbers.setCount(static_cast<std::size_t>(number - first));
        return true;
    }

private:
    bool readToken(char* token, char* end, Number& number)
    {
        if (startsPlainly<Number>(token)) {
            Number value = 0;
            const std::from_chars_result result = std::from_chars(token, end, value);
            if (result.ec == std::errc() && result.ptr == end) {
                number = value;
                return true;
            }
        }
        std::string copy(token, end);
        return Stock::stringToMemory(copy.data(), reinterpret_cast<daeChar*>(&number)) != 0;
    }
};

using DoubleListType = ListType<daeDoubleType, daeDouble>;
using UnsignedListType = ListType<daeULongType, daeULong>;
using SignedListType = ListType<daeLongType, daeLong>;

// Lists of names are mostly one word over and over, the interpolation of the keys of a curve for instance. The document
// model makes a copy of each; here a repeated word is the one before.
class NameListType : public daeTokenType {
public:
    using daeTokenType::daeTokenType;

    daeBool stringToArray(daeChar* text, daeArray& array) override
    {
        auto& names = static_cast<daeTArray<daeString>&>(array);
        names.clear();
        if (text == nullptr) {
            return false;
        }
        names.setCount(countTokens(text));
        std::size_t count = 0;
        std::string word;
        daeString name = nullptr;
        while (true) {
            while (isBlank(*text)) {
                ++text;
            }
            if (*text == '\0') {
                break;
            }
            const char* end = text;
            while (!isEnd(*end)) {
                ++end;
            }
            const auto length = static_cast<std::size_t>(end - text);
            if (name == nullptr || word.compare(0, std::string::npos, text, length) != 0) {
                word.assign(text, length);
                stringToMemory(word.data(), reinterpret_cast<daeChar*>(&name));
            }
            names[count++] = name;
            text += length;
        }
        return true;
    }
};

// The list of types takes over what it is given.
template <class Type>
daeAtomicType* install(DAE& dae)
{
    auto type = std::make_unique<Type>(dae);
    dae.getAtomicTypes().append(type.get());
    return type.release();
}

} // namespace

void installListTypes(DAE& dae)
{
    daeAtomicType* const doubles = install<DoubleListType>(dae);
    daeAtomicType* const unsigneds = install<UnsignedListType>(dae);
    daeAtomicType* const signeds = install<SignedListType>(dae);
    daeAtomicType* const names = install<NameListType>(dae);
    const daeMetaElementRefArray& metas = dae.getAllMetas();
    for (std::size_t i = 0; i < metas.getCount(); ++i) {
        daeMetaAttribute* const value = metas[i] != nullptr ? metas[i]->getValueAttribute() : nullptr;
        if (value == nullptr || !value->isArrayAttribute()) {
            continue;
        }
        switch (value->getType()->getTypeEnum()) {
        case daeAtomicType::DoubleType:
            value->setType(doubles);
            break;
        case daeAtomicType::ULongType:
            value->setType(unsigneds);
            break;
        case daeAtomicType::LongType:
            value->setType(signeds);
            break;
        case daeAtomicType::TokenType:
            value->setType(names);
            break;
        default:
            break;
        }
    }
}

} // namespace libVideo::detail
