// Any bytes as a float, against the grammar written out by hand and the C library's conversion.

#include "Check.h"

#include <vesk/String.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>

namespace {

// The text without surrounding blanks and one leading plus sign.
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

std::size_t digitsAt(const std::string& text, std::size_t start)
{
    std::size_t end = start;
    while (end < text.size() && text[end] >= '0' && text[end] <= '9') {
        ++end;
    }
    return end - start;
}

// An optional minus, digits with at most one point, and an optional exponent.
bool isDecimal(const std::string& number)
{
    std::size_t at = number.compare(0, 1, "-") == 0 ? 1 : 0;
    std::size_t digits = digitsAt(number, at);
    at += digits;
    if (number.compare(at, 1, ".") == 0) {
        const std::size_t fraction = digitsAt(number, at + 1);
        digits += fraction;
        at += 1 + fraction;
    }
    if (digits == 0) {
        return false;
    }
    if (at < number.size() && (number[at] == 'e' || number[at] == 'E')) {
        at += 1;
        at += at < number.size() && (number[at] == '-' || number[at] == '+') ? 1 : 0;
        const std::size_t exponent = digitsAt(number, at);
        if (exponent == 0) {
            return false;
        }
        at += exponent;
    }
    return at == number.size();
}

bool hasSameBits(float a, float b)
{
    return std::memcmp(&a, &b, sizeof(a)) == 0;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    const std::string text = bytes.c_str(); // a text ends at its first zero
    const float untouched = -0.123f;
    float value = untouched;
    const bool isRead = vesk::String::strToReal32(vesk::String(text.c_str()), value);
    if (!isRead) {
        fuzz::check(hasSameBits(value, untouched), "a value that changed without being read");
    }

    std::string number;
    const bool isFound = findNumber(text, number);
    if (!isFound || !isDecimal(number)) { // including words such as "inf" and "nan"
        fuzz::check(!isRead, "a text that is no decimal number was read");
        return 0;
    }
    const float expected = std::strtof(number.c_str(), nullptr); // in the locale "C"
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
