#include <vesk/Serializable.h>

#include <vesk/Exception.h>

#include <pugixml.hpp>

#include <charconv>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

namespace vesk {

namespace {

// An object between serializeBegin and getSerializedXML, and what has been written of its element.
struct Writing {
    const Serializable* object;
    std::string xml;
};

// An object between deserializeBegin and deserializeEnd, and its element.
struct Reading {
    const Serializable* object;
    const XmlElement* element;
};

// Objects nest, so both are stacks, innermost last. They are kept outside the objects, which stay small that way.
thread_local std::vector<Writing> writings;
thread_local std::vector<Reading> readings;

template <class Entry>
Entry* innermost(std::vector<Entry>& entries, const Serializable* object)
{
    for (std::size_t i = entries.size(); i-- > 0;) {
        if (entries[i].object == object) {
            return &entries[i];
        }
    }
    return nullptr;
}

// Restores the size of a stack when a call returns or throws.
template <class Entry>
class StackScope {
public:
    explicit StackScope(std::vector<Entry>& entries) : m_entries(entries), m_size(entries.size()) {}
    ~StackScope()
    {
        while (m_entries.size() > m_size) {
            m_entries.pop_back();
        }
    }
    StackScope(const StackScope&) = delete;
    StackScope& operator=(const StackScope&) = delete;

private:
    std::vector<Entry>& m_entries;
    std::size_t m_size;
};

// Length of the UTF-8 sequence at `text` in bytes; 0 if XML cannot hold it, so that its first byte has to be escaped.
std::size_t plainSequence(const char* text, std::size_t size)
{
    const auto byte = [text, size](std::size_t i) { return i < size ? static_cast<unsigned char>(text[i]) : 0u; };
    const auto follows = [&byte](std::size_t i) { return (byte(i) & 0xC0u) == 0x80u; };
    const unsigned first = byte(0);
    if (first >= 0x20u && first < 0x7Fu) {
        return first == '%' ? 0 : 1;
    }
    if (first >= 0xC2u && first <= 0xDFu && follows(1)) {
        // The control characters U+0080 to U+009F are escaped as well.
        return first == 0xC2u && byte(1) < 0xA0u ? 0 : 2;
    }
    if (first >= 0xE0u && first <= 0xEFu && follows(1) && follows(2)) {
        const unsigned code = ((first & 0x0Fu) << 12u) | ((byte(1) & 0x3Fu) << 6u) | (byte(2) & 0x3Fu);
        const bool isSurrogate = code >= 0xD800u && code <= 0xDFFFu;
        return code < 0x800u || isSurrogate || code >= 0xFFFEu ? 0 : 3;
    }
    if (first >= 0xF0u && first <= 0xF4u && follows(1) && follows(2) && follows(3)) {
        const unsigned code =
            ((first & 0x07u) << 18u) | ((byte(1) & 0x3Fu) << 12u) | ((byte(2) & 0x3Fu) << 6u) | (byte(3) & 0x3Fu);
        const bool isNoCharacter = (code & 0xFFFEu) == 0xFFFEu;
        return code < 0x10000u || code > 0x10FFFFu || isNoCharacter ? 0 : 4;
    }
    return 0;
}

// Turns any bytes into the value of an attribute. Bytes that XML cannot hold, and the percent sign, become %XX.
std::string escaped(const String& text)
{
    static constexpr char digits[] = "0123456789ABCDEF";
    const char* bytes = text.data();
    const std::size_t size = text.size();
    std::string result;
    result.reserve(size);
    for (std::size_t i = 0; i < size;) {
        const std::size_t length = plainSequence(bytes + i, size - i);
        if (length == 0) {
            const auto byte = static_cast<unsigned char>(bytes[i]);
            result += '%';
            result += digits[byte >> 4u];
            result += digits[byte & 0x0Fu];
            i += 1;
            continue;
        }
        switch (bytes[i]) {
        case '&':
            result += "&amp;";
            break;
        case '<':
            result += "&lt;";
            break;
        case '>':
            result += "&gt;";
            break;
        case '"':
            result += "&quot;";
            break;
        default:
            result.append(bytes + i, length);
            break;
        }
        i += length;
    }
    return result;
}

int hexadecimalDigit(char c)
{
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    return c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
}

// The inverse of `escaped`, except for entities, which the parser has resolved.
String unescaped(const char* text)
{
    std::string result;
    for (const char* c = text; *c != '\0'; ++c) {
        const int high = *c == '%' ? hexadecimalDigit(c[1]) : -1;
        const int low = high >= 0 ? hexadecimalDigit(c[2]) : -1;
        if (low >= 0) {
            result += static_cast<char>(high * 16 + low);
            c += 2;
        } else {
            result += *c;
        }
    }
    return String(result.c_str());
}

template <class Number>
String numberText(Number value)
{
    char digits[32] = {}; // the shortest text that reads back, at most 24 characters for a double
    std::to_chars(digits, digits + sizeof(digits) - 1, value);
    return String(digits);
}

template <class Number>
void parseNumber(const String& text, Number& value)
{
    Number number = 0;
    const std::from_chars_result result = std::from_chars(text.data(), text.data() + text.size(), number);
    value = result.ec == std::errc() ? number : Number(0);
}

} // namespace

String XmlElement::name() const
{
    return unescaped(pugi::xml_node(m_node).attribute("name").value());
}

String XmlElement::className() const
{
    return unescaped(pugi::xml_node(m_node).attribute("class").value());
}

XmlElement XmlElement::member(const String& name) const
{
    for (pugi::xml_node child = pugi::xml_node(m_node).child("object"); child; child = child.next_sibling("object")) {
        if (unescaped(child.attribute("name").value()) == name) {
            return XmlElement(child.internal_object());
        }
    }
    return XmlElement(nullptr);
}

XmlElement XmlElement::firstValue() const
{
    return XmlElement(pugi::xml_node(m_node).child("value").internal_object());
}

XmlElement XmlElement::nextValue() const
{
    return XmlElement(pugi::xml_node(m_node).next_sibling("value").internal_object());
}

String XmlElement::text() const
{
    return unescaped(pugi::xml_node(m_node).attribute("text").value());
}

Serializable::~Serializable() = default;

void Serializable::doSerialization(const String& name, String& xml)
{
    const StackScope<Writing> scope(writings);
    String text;
    serializeMembers(name, text);
    xml = std::move(text);
}

bool Serializable::deserialize(const String& xml)
{
    pugi::xml_document document;
    if (!document.load_buffer(xml.data(), xml.size(), pugi::parse_default, pugi::encoding_utf8)) {
        return false;
    }
    const XmlElement root(document.child("object").internal_object());
    if (!root.exists() || root.className() != getClassName()) {
        return false;
    }
    const StackScope<Reading> scope(readings);
    deserializeMembers(&root);
    return true;
}

void Serializable::deserializeMembers(const XmlElement* element)
{
    deserializeBegin(element);
    deserializeEnd();
}

void Serializable::serializeMembers(const String& name, String& xml)
{
    serializeBegin(name);
    serializeEnd();
    getSerializedXML(xml);
}

void Serializable::serializeBegin(const String& name)
{
    writings.push_back({this, "<object name=\"" + escaped(name) + "\" class=\"" + escaped(getClassName()) + "\">"});
}

void Serializable::serializeEnd()
{
    if (Writing* writing = innermost(writings, this)) {
        writing->xml += "</object>";
    }
}

void Serializable::getSerializedXML(String& xml)
{
    const Writing* writing = innermost(writings, this);
    if (writing != nullptr) {
        xml.append(writing->xml.c_str());
        writings.erase(writings.begin() + (writing - writings.data()));
    }
}

void Serializable::deserializeBegin(const XmlElement* element)
{
    readings.push_back({this, element});
}

void Serializable::deserializeEnd()
{
    const Reading* reading = innermost(readings, this);
    if (reading != nullptr) {
        readings.erase(readings.begin() + (reading - readings.data()));
    }
}

void Serializable::insertValueToContainer(int /*index*/, const XmlElement* /*element*/, String& /*value*/) {}

void Serializable::serialize(const String& name, Serializable& member)
{
    String xml;
    try {
        member.serializeMembers(name, xml);
    } catch (...) {
        // Drops the unfinished elements of the member and of this object.
        while (!writings.empty()) {
            const bool isOwn = writings.back().object == this;
            writings.pop_back();
            if (isOwn) {
                break;
            }
        }
        throw;
    }
    if (Writing* writing = innermost(writings, this)) {
        writing->xml.append(xml.data(), xml.size());
    }
}

void Serializable::deserialize(const String& name, Serializable& member)
{
    const Reading* reading = innermost(readings, this);
    if (reading == nullptr || reading->element == nullptr) {
        return;
    }
    const XmlElement element = reading->element->member(name);
    if (element.exists() && element.className() == member.getClassName()) {
        member.deserializeMembers(&element);
    }
}

void Serializable::serializeValue(const String& text)
{
    if (Writing* writing = innermost(writings, this)) {
        writing->xml += "<value text=\"" + escaped(text) + "\"/>";
    }
}

namespace detail {

String toText(unsigned value)
{
    return numberText(value);
}

String toText(double value)
{
    return numberText(value);
}

void fromText(const String& text, unsigned& value)
{
    parseNumber(text, value);
}

void fromText(const String& text, double& value)
{
    parseNumber(text, value);
}

void writeRefusalNotice()
{
    static_cast<void>(std::fputs("Serialization isn't support for this class!!!\n", stdout));
}

void throwSerializationRefused(const String& name)
{
    throw SerializationFailed("Serialization is not supported for: " + name);
}

} // namespace detail

} // namespace vesk
