#include "Numbers.h"

#include "Words.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>

namespace libPrepare {

namespace {

// Reads a number of few digits without an exponent, as nearly all are: it is the quotient of two numbers that have no
// rounding error, so it is rounded once, as it has to be.
// @return false if the number is not of this form
bool readShortNumber(const char* at, const char* end, double& value)
{
    constexpr std::ptrdiff_t maxDigits = 15;
    static constexpr double powers[maxDigits + 1] = {1,   1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                                     1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
    const bool isNegative = *at == '-';
    at += isNegative ? 1 : 0;
    if (end - at > maxDigits + 1) {
        return false;
    }
    std::uint64_t digits = 0;
    const char* const whole = at;
    for (; at != end && *at >= '0' && *at <= '9'; ++at) {
        digits = 10 * digits + static_cast<std::uint64_t>(*at - '0');
    }
    std::ptrdiff_t count = at - whole;
    std::ptrdiff_t places = 0;
    if (at != end && *at == '.') {
        const char* const fraction = ++at;
        for (; at != end && *at >= '0' && *at <= '9'; ++at) {
            digits = 10 * digits + static_cast<std::uint64_t>(*at - '0');
        }
        places = at - fraction;
        count += places;
    }
    if (count == 0 || count > maxDigits || at != end) {
        return false;
    }
    const double size = static_cast<double>(digits) / powers[places];
    value = isNegative ? -size : size;
    return true;
}

// Calls `use` with each number of a list until it returns false.
template <class Use>
void forEachNumber(std::string_view list, const Use& use)
{
    forEachWord(list, [&](const char* start, const char* end) {
        double value = 0;
        return use(readShortNumber(start, end, value)
                       ? value
                       : number(std::string_view(start, static_cast<std::size_t>(end - start))));
    });
}

} // namespace

std::string_view trimmed(std::string_view text)
{
    while (!text.empty() && isBlank(text.front())) {
        text.remove_prefix(1);
    }
    while (!text.empty() && isBlank(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

std::string_view takeWord(std::string_view& list)
{
    const auto start = std::find_if_not(list.begin(), list.end(), isBlank);
    const auto end = std::find_if(start, list.end(), isBlank);
    const std::string_view word(start, static_cast<std::size_t>(end - start));
    list.remove_prefix(static_cast<std::size_t>(end - list.begin()));
    return word;
}

std::vector<std::string_view> words(std::string_view text)
{
    std::vector<std::string_view> result;
    result.reserve(text.size() / 8);
    forEachWord(text, [&](const char* start, const char* end) {
        result.emplace_back(start, static_cast<std::size_t>(end - start));
        return true;
    });
    return result;
}

double number(std::string_view word)
{
    if (word == "INF") {
        return std::numeric_limits<double>::infinity();
    }
    if (word == "-INF") {
        return -std::numeric_limits<double>::infinity();
    }
    if (!word.empty() && word.front() == '+') {
        word.remove_prefix(1);
    }
    double value = 0;
    const char* const end = word.data() + word.size();
    const std::from_chars_result result = std::from_chars(word.data(), end, value);
    if (result.ptr != end || word.empty()) {
        return std::numeric_limits<double>::quiet_NaN();
    }
    if (result.ec == std::errc::result_out_of_range) { // which leaves the value alone, whether it is huge or tiny
        const std::size_t exponent = word.find_first_of("eE");
        const bool isTiny =
            exponent != std::string_view::npos && word.substr(exponent).find('-') != std::string_view::npos;
        value = isTiny ? 0.0 : std::numeric_limits<double>::infinity();
        return word.front() == '-' ? -value : value;
    }
    return value;
}

double numberOr(std::string_view text, double otherwise)
{
    const double value = number(trimmed(text));
    return std::isnan(value) ? otherwise : value;
}

std::vector<double> numbers(std::string_view text)
{
    std::vector<double> result;
    result.reserve(text.size() / 6);
    forEachNumber(text, [&](double value) {
        result.push_back(value);
        return true;
    });
    return result;
}

std::size_t readNumbers(std::string_view text, double* values, std::size_t count)
{
    std::size_t read = 0;
    if (count > 0) {
        forEachNumber(text, [&](double value) {
            values[read++] = value;
            return read < count;
        });
    }
    return read;
}

std::vector<long long> integers(std::string_view text)
{
    std::vector<long long> result;
    forEachWord(text, [&](const char* start, const char* end) {
        long long value = -1;
        const std::from_chars_result read = std::from_chars(start, end, value);
        result.push_back(read.ptr == end && read.ec == std::errc() ? value : -1);
        return true;
    });
    return result;
}

std::string text(double value)
{
    std::string result;
    append(result, value);
    return result;
}

std::string text(const std::vector<double>& values)
{
    std::string result;
    for (const double value : values) {
        if (!result.empty()) {
            result += ' ';
        }
        append(result, value);
    }
    return result;
}

void append(std::string& target, double value)
{
    if (std::isnan(value)) {
        target += "NaN";
    } else if (std::isinf(value)) {
        target += value < 0 ? "-INF" : "INF";
    } else {
        char buffer[32];
        const std::to_chars_result result = std::to_chars(buffer, buffer + sizeof buffer, value);
        target.append(buffer, result.ptr);
    }
}

void append(std::string& target, long long value)
{
    char buffer[24];
    const std::to_chars_result result = std::to_chars(buffer, buffer + sizeof buffer, value);
    target.append(buffer, result.ptr);
}

} // namespace libPrepare
