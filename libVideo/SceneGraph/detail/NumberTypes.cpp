#include "NumberTypes.h"

#include <charconv>
#include <cstddef>
#include <memory>
#include <string>
#include <system_error>
#include <type_traits>

namespace libVideo::detail {

namespace {

// What separates tokens for the document model.
bool isBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

std::size_t countTokens(const char* text)
{
    std::size_t count = 0;
    bool isInside = false;
    for (; *text != '\0'; ++text) {
        const bool isStart = !isInside && !isBlank(*text);
        isInside = !isBlank(*text);
        count += isStart ? 1 : 0;
    }
    return count;
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

// The list of types takes over what it is given.
template <class Type>
daeAtomicType* install(DAE& dae)
{
    auto type = std::make_unique<Type>(dae);
    dae.getAtomicTypes().append(type.get());
    return type.release();
}

} // namespace

void installNumberTypes(DAE& dae)
{
    daeAtomicType* const doubles = install<DoubleListType>(dae);
    daeAtomicType* const unsigneds = install<UnsignedListType>(dae);
    daeAtomicType* const signeds = install<SignedListType>(dae);
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
        default:
            break;
        }
    }
}

} // namespace libVideo::detail
