#include "PlainIds.h"

#include <algorithm>
#include <array>

namespace libPrepare {

namespace {

constexpr std::array<bool, 256> plainCharacters()
{
    std::array<bool, 256> result{};
    for (std::size_t c = 0; c < result.size(); ++c) {
        result[c] = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
    }
    for (const char c : std::string_view("-_.~!$&'()*+,;=:@/?")) {
        result[static_cast<unsigned char>(c)] = true;
    }
    return result;
}

bool isPlain(char c)
{
    static constexpr std::array<bool, 256> isPlainCharacter = plainCharacters();
    return isPlainCharacter[static_cast<unsigned char>(c)];
}

bool isEndOfName(char c)
{
    return c == '/' || c == '(' || c == ')';
}

bool isHexDigit(char c)
{
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

} // namespace

bool isPlainId(std::string_view id)
{
    return !id.empty() && std::all_of(id.begin(), id.end(), isPlain);
}

bool isPlainImageId(std::string_view id)
{
    return isPlainId(id) && std::none_of(id.begin(), id.end(), isEndOfName);
}

std::string plainId(std::string_view id)
{
    std::string result;
    bool isRun = false;
    for (std::size_t i = 0; i < id.size(); ++i) {
        const bool isEscape = id[i] == '%' && i + 2 < id.size() && isHexDigit(id[i + 1]) && isHexDigit(id[i + 2]);
        if (isPlain(id[i]) || isEscape) {
            result += id[i];
        } else if (!isRun) {
            result += '_';
        }
        isRun = !isPlain(id[i]) && !isEscape;
    }
    return result;
}

std::string plainImageId(std::string_view id)
{
    std::string result = plainId(id);
    std::replace_if(result.begin(), result.end(), isEndOfName, '_');
    return result;
}

} // namespace libPrepare
