#include "Encoding.h"

#include "Lines.h"
#include "Numbers.h"

#include <iconv.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <string_view>

namespace libPrepare {

namespace {

struct Mark {
    std::string_view bytes;
    const char* encoding;
    std::size_t skipped; // bytes that are no part of the document
};

using namespace std::string_view_literals;

// Longer ones come first. A document without a mark starts with an angle bracket.
constexpr std::array marks = {
    Mark{"\x00\x00\xFE\xFF"sv, "UTF-32BE", 4},
    Mark{"\xFF\xFE\x00\x00"sv, "UTF-32LE", 4},
    Mark{"\x00\x00\x00<"sv, "UTF-32BE", 0},
    Mark{"<\x00\x00\x00"sv, "UTF-32LE", 0},
    Mark{"\xEF\xBB\xBF"sv, "UTF-8", 3},
    Mark{"\xFE\xFF"sv, "UTF-16BE", 2},
    Mark{"\xFF\xFE"sv, "UTF-16LE", 2},
    Mark{"\x00<"sv, "UTF-16BE", 0},
    Mark{"<\x00"sv, "UTF-16LE", 0},
};

bool isNameCharacter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '.' || c == '_' ||
           c == '-' || c == ':';
}

std::string upper(std::string_view text)
{
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(),
                   [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; });
    return result;
}

// The encoding that the XML declaration names; empty without one.
std::string_view declaredEncoding(std::string_view text)
{
    if (text.substr(0, 5) != "<?xml" || text.size() < 6 || !isBlank(text[5])) {
        return {};
    }
    text = text.substr(0, std::min(text.find("?>"), std::size_t(1'024)));
    std::size_t at = text.find("encoding");
    if (at == std::string_view::npos) {
        return {};
    }
    at = text.find_first_not_of(" \t\r\n=", at + 8);
    if (at == std::string_view::npos || (text[at] != '"' && text[at] != '\'')) {
        return {};
    }
    const std::string_view name = text.substr(at + 1, text.find(text[at], at + 1) - at - 1);
    return std::all_of(name.begin(), name.end(), isNameCharacter) ? name : std::string_view();
}

class Converter {
public:
    explicit Converter(const std::string& from) : m_converter(iconv_open("UTF-8", from.c_str())) {}
    ~Converter()
    {
        if (isKnown()) {
            iconv_close(m_converter);
        }
    }
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;

    // NOLINTNEXTLINE(performance-no-int-to-ptr): as iconv says it
    bool isKnown() const { return m_converter != reinterpret_cast<iconv_t>(-1); }

    // Converts up to the first byte that cannot be. @return how many bytes were converted
    std::size_t convert(std::string_view bytes, std::uint64_t most, std::string& result) const
    {
        result.resize(bytes.size() + bytes.size() / 2 + 64);
        char* in = const_cast<char*>(bytes.data()); // the interface lacks const, but nothing is written
        std::size_t left = bytes.size();
        std::size_t end = 0;
        bool isFlushed = false; // a character may wait for what combines with it
        while (!isFlushed && result.size() / 2 <= most) {
            char* out = result.data() + end;
            std::size_t room = result.size() - end;
            const bool isLast = left == 0;
            const std::size_t status =
                iconv(m_converter, isLast ? nullptr : &in, isLast ? nullptr : &left, &out, &room);
            const bool isFull = status == static_cast<std::size_t>(-1) && errno == E2BIG;
            end = result.size() - room;
            if (isFull) {
                result.resize(2 * result.size());
            } else if (status == static_cast<std::size_t>(-1)) {
                break;
            }
            isFlushed = isLast && !isFull;
        }
        result.resize(end);
        return bytes.size() - left;
    }

private:
    iconv_t m_converter;
};

bool isUtf8(std::string_view text)
{
    const Converter converter("UTF-8");
    std::string ignored;
    return converter.isKnown() && converter.convert(text, ~std::uint64_t(0), ignored) == text.size();
}

// Where the zero characters at the end start, with the blanks among them; blanks alone stay.
std::size_t endOfText(std::string_view text)
{
    using namespace std::string_view_literals;
    const std::size_t last = text.find_last_not_of(" \t\r\n\0"sv);
    const std::size_t zero = text.find('\0', last == std::string_view::npos ? 0 : last + 1);
    return std::min(zero, text.size());
}

void takeZerosOff(std::string& text, Encoding& encoding)
{
    const std::size_t end = endOfText(text);
    encoding.zerosAtEnd +=
        static_cast<std::size_t>(std::count(text.begin() + static_cast<std::ptrdiff_t>(end), text.end(), '\0'));
    text.resize(end);
}

// A document that is UTF-8 whatever it says.
std::optional<Refusal> takeAsUtf8(std::string& text, Encoding& encoding, Refusal otherwise)
{
    takeZerosOff(text, encoding);
    encoding.isMistaken = isUtf8(text);
    return encoding.isMistaken ? std::nullopt : std::optional(std::move(otherwise));
}

} // namespace

std::optional<Refusal> decode(std::string& text, std::uint64_t most, Encoding& encoding)
{
    encoding = Encoding{"UTF-8"};
    const auto mark = std::find_if(marks.begin(), marks.end(), [&](const Mark& each) {
        return text.compare(0, each.bytes.size(), each.bytes) == 0;
    });
    if (mark != marks.end()) {
        encoding.name = mark->encoding;
        text.erase(0, mark->skipped);
    } else if (const std::string_view declared = declaredEncoding(text); !declared.empty()) {
        encoding.name = declared;
    }
    const std::string name = upper(encoding.name);
    if (name == "UTF-8" || name == "UTF8") {
        takeZerosOff(text, encoding);
        return std::nullopt;
    }
    // A document with one byte per character can declare such an encoding, but cannot have it.
    const bool isWide = name.rfind("UTF-16", 0) == 0 || name.rfind("UTF-32", 0) == 0 || name.rfind("UTF16", 0) == 0 ||
                        name.rfind("UTF32", 0) == 0 || name.rfind("UCS", 0) == 0 || name.rfind("ISO-10646", 0) == 0;
    const Converter converter(encoding.name);
    if ((isWide && mark == marks.end()) || !converter.isKnown()) {
        return takeAsUtf8(
            text, encoding,
            Refusal{"encoding", "its encoding " + encoding.name + " is not known", "save it as UTF-8", 1, 1});
    }
    std::string result;
    const std::size_t converted = converter.convert(text, most, result);
    if (result.size() > most) {
        return Refusal{"too-large", "is larger than " + std::to_string(most) + " bytes", "allow more by --max-size", 0,
                       0};
    }
    const bool isRestZero = text.find_first_not_of('\0', converted) == std::string::npos;
    if (converted < text.size() && !isRestZero) {
        const auto [line, column] = result.empty() ? std::pair(1U, 1U) : Lines(result).at(result.size());
        Refusal refusal{"encoding", "not well-formed: Bytes that are no " + encoding.name, "save it as UTF-8", line,
                        column};
        return mark != marks.end() ? std::optional(std::move(refusal)) : takeAsUtf8(text, encoding, std::move(refusal));
    }
    if (mark == marks.end() && result.compare(0, 5, "<?xml") != 0) { // the declaration was readable before
        return takeAsUtf8(text, encoding,
                          Refusal{"encoding", "its encoding is not " + encoding.name, "save it as UTF-8", 1, 1});
    }
    encoding.zerosAtEnd += text.size() - converted;
    text = std::move(result);
    takeZerosOff(text, encoding);
    return std::nullopt;
}

} // namespace libPrepare
