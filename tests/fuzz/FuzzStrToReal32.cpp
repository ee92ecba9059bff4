// Any bytes as a float, against the grammar written out by hand and the C library's conversion.

#include "Check.h"

#include <vesk/String.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <regex>
#include <string>

namespace {

// What is left of the text without the blanks around it and one leading plus sign.
bool findNumber(const std::string& text, std::string& number)
{
    // Blanks are those of the C locale.
    const std::size_t first = text.find_first_not_of(" \t\n\v\f\r");
    if (first == std::string::npos) {
        return false;
    }
    number = text.substr(first, text.find_last_not_of(" \t\n\v\f\r") - first + 1);
    if (number[0] == '+') {
        number.erase(0, 1);
        return number.empty() || number[0] != '-';
    }
    return true;
}

bool isDecimal(const std::string& number)
{
    static const std::regex decimal("-?([0-9]+\\.?[0-9]*|\\.[0-9]+)([eE][-+]?[0-9]+)?");
    return std::regex_match(number, decimal);
}

bool isSpecial(const std::string& number)
{
    static const std::regex special("-?(inf|infinity|nan(\\([A-Za-z0-9_]*\\))?)", std::regex::icase);
    return std::regex_match(number, special);
}

bool hasSameBits(float a, float b)
{
    return std::memcmp(&a, &b, sizeof(a)) == 0;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    constexpr std::size_t longest = 512; // the grammar's matcher recurses over the text
    const std::string bytes(reinterpret_cast<const char*>(data), size < longest ? size : longest);
    const std::string text = bytes.c_str(); // a text ends at its first zero
    const float untouched = -0.123f;
    float value = untouched;
    const bool isRead = vesk::String::strToReal32(vesk::String(text.c_str()), value);
    if (!isRead) {
        fuzz::check(hasSameBits(value, untouched), "a value that changed without being read");
    }

    std::string number;
    const bool isFound = findNumber(text, number);
    if (!isFound || (!isDecimal(number) && !isSpecial(number))) {
        fuzz::check(!isRead, "a text that is no number was read");
        return 0;
    }
    const float expected = std::strtof(number.c_str(), nullptr); // in the locale "C"
    if (isSpecial(number)) {
        fuzz::check(isRead, "a special value was not read");
        fuzz::check(std::isnan(expected) ? std::isnan(value) : hasSameBits(value, expected), "a wrong special value");
        return 0;
    }
    if (std::isinf(expected)) {
        fuzz::check(!isRead, "a number beyond the range of float was read");
        return 0;
    }
    if (std::fabs(expected) < std::numeric_limits<float>::min()) {
        // Near zero a number may count as out of range, but must not be read as another one.
        fuzz::check(!isRead || hasSameBits(value, expected), "a wrong value near zero");
        return 0;
    }
    fuzz::check(isRead, "a number was not read");
    fuzz::check(hasSameBits(value, expected), "a wrong value");
    return 0;
}
