#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace libPrepare {

/// Characters that separate the entries of a list: blank, tab, line feed, carriage return.
inline bool isBlank(char character)
{
    return character == ' ' || character == '\n' || character == '\t' || character == '\r';
}
/// The text without leading and trailing blanks.
std::string_view trimmed(std::string_view text);
/// Takes the first entry off a list. @return nothing once the list is empty
std::string_view takeWord(std::string_view& list);
/// The entries of a list, in order.
std::vector<std::string_view> words(std::string_view text);

/// A number in the notation of the schema, including infinities and NaN. NaN if it is no number.
double number(std::string_view word);
/// The number in an attribute or element; another value if it has none.
double numberOr(std::string_view text, double otherwise);
/// All numbers of a list; NaN for words that are no numbers.
std::vector<double> numbers(std::string_view text);
/// Reads the first numbers of a list. @return how many there are, at most `count`
std::size_t readNumbers(std::string_view text, double* values, std::size_t count);
/// All whole numbers of a list; -1 for other words and for numbers beyond 63 bits.
std::vector<long long> integers(std::string_view text);

/// The shortest text that reads back to the same double.
std::string text(double value);
std::string text(const std::vector<double>& values);
void append(std::string& target, double value);
void append(std::string& target, long long value);

} // namespace libPrepare
