#include "Numbers.h"

#include <charconv>
#include <cmath>
#include <limits>

namespace libPrepare {

namespace {

// Calls `use` with each word of a list.
template <class Use>
void forEachWord(std::string_view list, const Use& use)
{
    const char* at = list.data();
    const char* const end = at + list.size();
    while (true) {
        while (at != end && isBlank(*at)) {
            ++at;
        }
        if (at == end) {
            return;
        }
        const char* const start = at;
        while (at != end && !isBlank(*at)) {
            ++at;
        }
        use(std::string_view(start, static_cast<std::size_t>(at - start)));
    }
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

std::vector<std::string_view> words(std::string_view text)
{
    std::vector<std::string_view> result;
    forEachWord(text, [&](std::string_view word) { result.push_back(word); });
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
    forEachWord(text, [&](std::string_view word) { result.push_back(number(word)); });
    return result;
}

std::vector<long long> integers(std::string_view text)
{
    std::vector<long long> result;
    forEachWord(text, [&](std::string_view word) {
        long long value = -1;
        const char* const end = word.data() + word.size();
        const std::from_chars_result read = std::from_chars(word.data(), end, value);
        result.push_back(read.ptr == end && read.ec == std::errc() ? value : -1);
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
