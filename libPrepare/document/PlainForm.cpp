#include "PlainForm.h"

#include "ByteBlock.h"
#include "ElementRules.h"
#include "Numbers.h"

#include <array>
#include <cstdint>
#include <strings.h>
#include <vector>

namespace libPrepare {

namespace {

// All limits are below those of `checkForm`, so they need not be counted as exactly.
constexpr std::size_t maxDepth = 5'000;
constexpr std::size_t maxAttributes = 32;  // of an element
constexpr std::size_t maxNamespaces = 500; // of a document
constexpr std::size_t maxNameLength = 100;
constexpr std::size_t maxTagLength = 65'536;
constexpr std::size_t maxCommentLength = 65'536;
constexpr std::size_t maxReferenceLength = 700; // cannot hold 256 steps to a parent folder

enum CharacterClass : std::uint8_t { nameStart = 1, nameCharacter = 2, textCharacter = 4, valueCharacter = 8 };

constexpr std::array<std::uint8_t, 256> characterClasses()
{
    std::array<std::uint8_t, 256> result{};
    for (std::size_t c = 0; c < result.size(); ++c) {
        const bool isLetter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
        const bool isNameCharacter = isLetter || (c >= '0' && c <= '9') || c == '-' || c == '.';
        const bool isCharacter = (c >= ' ' && c < 0x7F) || c == '\t' || c == '\n' || c == '\r';
        const bool isText = isCharacter && c != '<' && c != '&' && c != ']';
        const bool isValue = isCharacter && c != '<' && c != '&' && c != '"' && c != '\'';
        result[c] = static_cast<std::uint8_t>((isLetter ? nameStart : 0) | (isNameCharacter ? nameCharacter : 0) |
                                              (isText ? textCharacter : 0) | (isValue ? valueCharacter : 0));
    }
    return result;
}

constexpr std::array<std::uint8_t, 256> classes = characterClasses();

bool isIn(char c, CharacterClass which)
{
    return (classes[static_cast<unsigned char>(c)] & which) != 0;
}

// Each function returns false where a parser has to decide.
class PlainReader {
public:
    explicit PlainReader(std::string_view text) : m_at(text.data()), m_end(text.data() + text.size()) {}

    bool read()
    {
        if (peek() != '<' || (startsWith("<?") && !readDeclaration())) {
            return false;
        }
        while (true) {
            if (m_levels.empty()) {
                skipBlanks();
            } else if (!readText()) {
                return false;
            }
            if (m_at == m_end) {
                return m_hasRoot && m_levels.empty();
            }
            if (!readMarkup()) {
                return false;
            }
        }
    }

private:
    char peek() const { return m_at == m_end ? '\0' : *m_at; }
    std::string_view rest() const { return {m_at, static_cast<std::size_t>(m_end - m_at)}; }
    bool startsWith(std::string_view word) const { return rest().substr(0, word.size()) == word; }

    bool skip(std::string_view word)
    {
        const bool isThere = startsWith(word);
        m_at += isThere ? word.size() : 0;
        return isThere;
    }

    // @return whether there were any
    bool skipBlanks()
    {
        const char* const start = m_at;
        while (m_at != m_end && isBlank(*m_at)) {
            ++m_at;
        }
        return m_at != start;
    }

    void skipAll(CharacterClass which)
    {
        while (m_at != m_end && isIn(*m_at, which)) {
            ++m_at;
        }
    }

    std::string_view readName()
    {
        const char* const start = m_at;
        if (m_at != m_end && isIn(*m_at, nameStart)) {
            skipAll(nameCharacter);
        }
        return {start, static_cast<std::size_t>(m_at - start)};
    }

    // <?xml version="1.0" encoding="utf-8"?>
    bool readDeclaration()
    {
        if (!skip("<?xml version=\"1.0\"")) {
            return false;
        }
        if (skip(" encoding=\"")) {
            constexpr std::string_view encoding = "utf-8";
            if (rest().size() < encoding.size() || ::strncasecmp(m_at, encoding.data(), encoding.size()) != 0) {
                return false;
            }
            m_at += encoding.size();
            if (!skip("\"")) {
                return false;
            }
        }
        if (!skip(" standalone=\"yes\"")) {
            skip(" standalone=\"no\"");
        }
        skipBlanks();
        return skip("?>");
    }

    bool readMarkup()
    {
        if (skip("</")) {
            return readEndTag();
        }
        if (skip("<!--")) {
            return readComment();
        }
        return skip("<") && readStartTag();
    }

    bool readStartTag()
    {
        const char* const start = m_at;
        const std::string_view name = readName();
        if (name.empty() || name.size() > maxNameLength || !canBeHere(name)) {
            return false;
        }
        m_attributeCount = 0;
        while (skipBlanks() && m_at != m_end && isIn(*m_at, nameStart)) {
            if (!readAttribute()) {
                return false;
            }
        }
        if (static_cast<std::size_t>(m_at - start) > maxTagLength) {
            return false;
        }
        m_hasRoot = true;
        if (skip("/>")) {
            return true;
        }
        m_levels.push_back({name, name == "init_from" || name == "skeleton"});
        return m_levels.size() <= maxDepth && skip(">");
    }

    bool canBeHere(std::string_view name) const
    {
        if (m_levels.empty()) {
            return !m_hasRoot && name == "COLLADA";
        }
        const bool isOfParentsType = name == m_levels.back().name && traitsOf(name).holdsOnlyValue;
        const bool isOdd = name == "any" || name.substr(0, 10) == "Targetable" || name.substr(0, 10) == "InputLocal";
        return !isOfParentsType && !isOdd;
    }

    bool readAttribute()
    {
        const std::string_view name = readName();
        if (name.size() > maxNameLength || m_attributeCount == maxAttributes) {
            return false;
        }
        for (std::size_t i = 0; i < m_attributeCount; ++i) {
            if (m_attributes[i] == name) {
                return false;
            }
        }
        m_attributes[m_attributeCount++] = name;
        if (name == "xmlns" && ++m_namespaceCount > maxNamespaces) {
            return false;
        }
        const char quote = skip("=") ? peek() : '\0';
        if (quote != '"' && quote != '\'') {
            return false;
        }
        const char* const start = ++m_at;
        while (true) {
            skipAll(valueCharacter);
            if (peek() == quote) {
                break;
            }
            if (peek() == '"' || peek() == '\'') {
                ++m_at; // the other one
            } else if (!readEntity()) {
                return false;
            }
        }
        const std::string_view value(start, static_cast<std::size_t>(m_at - start));
        ++m_at;
        return value.size() <= maxReferenceLength || value.find("../") == std::string_view::npos;
    }

    bool readEndTag()
    {
        if (m_levels.empty() || !skip(m_levels.back().name)) {
            return false;
        }
        m_levels.pop_back();
        skipBlanks();
        return skip(">");
    }

    bool readComment()
    {
        const std::size_t size = rest().substr(0, maxCommentLength).find("--");
        if (size == std::string_view::npos || (!m_levels.empty() && m_levels.back().holdsReference)) {
            return false;
        }
        for (const char c : rest().substr(0, size)) {
            if (!isIn(c, textCharacter) && c != '<' && c != '&' && c != ']') {
                return false;
            }
        }
        m_at += size;
        return skip("-->");
    }

    bool readEntity() { return skip("&amp;") || skip("&lt;") || skip("&gt;") || skip("&quot;") || skip("&apos;"); }

    // Up to the next tag or comment.
    bool readText()
    {
        const char* const start = m_at;
        while (true) {
            skipPlainBlocks();
            skipAll(textCharacter);
            if (peek() == '<') {
                break;
            }
            if (peek() == ']' && !startsWith("]]>")) {
                ++m_at;
            } else if (!readEntity()) {
                return false;
            }
        }
        return !m_levels.back().holdsReference || static_cast<std::size_t>(m_at - start) <= maxReferenceLength;
    }

    void skipPlainBlocks()
    {
        while (rest().size() >= ByteBlock::size && ByteBlock(m_at).isOfNumbers()) {
            m_at += ByteBlock::size;
        }
    }

    struct Level {
        std::string_view name;
        bool holdsReference;
    };

    const char* m_at;
    const char* m_end;
    std::vector<Level> m_levels;
    std::array<std::string_view, maxAttributes> m_attributes;
    std::size_t m_attributeCount = 0;
    std::size_t m_namespaceCount = 0;
    bool m_hasRoot = false;
};

} // namespace

bool isPlainlyFormed(std::string_view text)
{
    return PlainReader(text).read();
}

} // namespace libPrepare
