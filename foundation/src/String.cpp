#include <vesk/String.h>

#include <charconv>
#include <ostream>

namespace vesk {

namespace {

unsigned char lowerAscii(char c)
{
    const auto byte = static_cast<unsigned char>(c);
    return byte >= 'A' && byte <= 'Z' ? static_cast<unsigned char>(byte + ('a' - 'A')) : byte;
}

bool isBlank(char c)
{
    return c == ' ' || (c >= '\t' && c <= '\r');
}

} // namespace

String::String(const char* text)
{
    if (text != nullptr) {
        m_text.assign(text);
    }
}

String& String::operator=(const char* text)
{
    if (text == nullptr) {
        m_text.clear();
    } else {
        m_text.assign(text);
    }
    return *this;
}

String& String::append(const String& text)
{
    m_text.append(text.m_text);
    return *this;
}

String& String::append(const char* text)
{
    if (text != nullptr) {
        m_text.append(text);
    }
    return *this;
}

unsigned String::find(unsigned start, char c) const
{
    const std::size_t position = m_text.find(c, start);
    return position == std::string::npos ? npos : static_cast<unsigned>(position);
}

String String::subString(unsigned start, unsigned length) const
{
    String result;
    if (start < m_text.size()) {
        result.m_text.assign(m_text, start, length == npos ? std::string::npos : length);
    }
    return result;
}

int String::compareNoCase(const String& a, const String& b)
{
    const std::size_t shorter = a.m_text.size() < b.m_text.size() ? a.m_text.size() : b.m_text.size();
    for (std::size_t i = 0; i < shorter; ++i) {
        const int difference = lowerAscii(a.m_text[i]) - lowerAscii(b.m_text[i]);
        if (difference != 0) {
            return difference;
        }
    }
    if (a.m_text.size() == b.m_text.size()) {
        return 0;
    }
    return a.m_text.size() < b.m_text.size() ? -1 : 1;
}

bool String::strToReal32(const String& text, float& value)
{
    const char* first = text.m_text.data();
    const char* last = first + text.m_text.size();
    while (first != last && isBlank(*first)) {
        ++first;
    }
    while (first != last && isBlank(last[-1])) {
        --last;
    }
    if (first != last && *first == '+') {
        ++first;
        if (first != last && *first == '-') {
            return false; // from_chars would accept the second sign
        }
    }
    // from_chars would accept words: "inf", "nan".
    const char* const digits = first != last && *first == '-' ? first + 1 : first;
    if (digits == last || (*digits != '.' && (*digits < '0' || *digits > '9'))) {
        return false;
    }
    float number = 0.0f;
    const std::from_chars_result result = std::from_chars(first, last, number);
    if (result.ec != std::errc() || result.ptr != last) {
        return false;
    }
    value = number;
    return true;
}

CString String::getUTF8String() const
{
    return CString(*this);
}

const String& String::EMPTY()
{
    static const String empty;
    return empty;
}

String operator+(const char* left, const String& right)
{
    String result(left);
    result.append(right);
    return result;
}

std::ostream& operator<<(std::ostream& out, const String& text)
{
    return out.write(text.data(), text.size());
}

VeskValue::~VeskValue() = default;

String VeskValue::toString(unsigned /*nil*/) const
{
    char digits[16] = {}; // at most ten digits and the terminating zero
    std::to_chars(digits, digits + sizeof(digits) - 1, m_value);
    return String(digits);
}

} // namespace vesk
