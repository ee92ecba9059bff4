#pragma once // SPDX-License-Identifier: MIT

#include <vesk/Export.h>

#include <iosfwd>
#include <string>

namespace vesk {

class CString;

/// Text as UTF-8 bytes, owned by value.
///
/// Differs from `std::string`: sizes and positions are 32-bit and count bytes, a null `const char*` is empty text,
/// and a position past the end gives an empty result where `std::string` throws.
class VESK_API String {
public:
    /// Result of a search that finds nothing; as a length, all to the end.
    static constexpr unsigned npos = 0xFFFFFFFFu;

    String() = default;
    /// Copies zero-terminated UTF-8 text; null gives empty text.
    String(const char* text);
    String(const String&) = default;
    String(String&&) noexcept = default; ///< Moves the bytes; the other text may be assigned to.
    ~String() = default;

    String& operator=(const String&) = default;
    String& operator=(String&&) noexcept = default; ///< Moves the bytes; the other text may be assigned to.
    /// Replaces the text; null gives empty text. The source may point into this text.
    String& operator=(const char* text);
    String& operator+=(const String& text) { return append(text); } ///< Appends the text.

    /// Appends the text, which may be this one. @return this text
    String& append(const String& text);
    /// Appends zero-terminated text; null appends nothing.
    String& append(const char* text);

    /// Number of bytes.
    unsigned size() const { return static_cast<unsigned>(m_text.size()); }
    bool empty() const { return m_text.empty(); } ///< Whether there is no byte.
    /// The bytes and a terminating zero, valid until the text changes or is destroyed.
    const char* data() const { return m_text.c_str(); }

    /// @return the byte position of the first `c`, or `npos`
    unsigned find(char c) const { return find(0, c); }
    /// @return the byte position of the first `c` at or after `start`, or `npos`
    unsigned find(unsigned start, char c) const;
    /// @return `length` bytes from `start`, fewer if the text is shorter; `npos` takes all to the end
    String subString(unsigned start, unsigned length) const;

    /// Byte for byte.
    bool operator==(const String& other) const { return m_text == other.m_text; }
    bool operator!=(const String& other) const { return m_text != other.m_text; } ///< Not `==`.

    /// Compares without regard to the case of ASCII letters; all other bytes count as they are.
    /// @return 0 when equal, else a negative or positive number
    static int compareNoCase(const String& a, const String& b);

    /// Parses one decimal float, whatever the locale. Blanks around it and a leading `+` are allowed.
    /// @return false, with `value` untouched, unless the whole text is one number within the range of `float`
    static bool strToReal32(const String& text, float& value);

    /// A copy of the text, which owns its `const char*`.
    CString getUTF8String() const;

    /// A shared empty text, for accessors that return a reference but have no text.
    static const String& EMPTY();

private:
    std::string m_text;
};

/// @return `left` followed by `right`
VESK_API String operator+(const char* left, const String& right);

/// Writes the bytes as they are.
VESK_API std::ostream& operator<<(std::ostream& out, const String& text);

/// A copy of a `String` that converts to `const char*`, and owns the bytes.
class VESK_API CString {
public:
    explicit CString(const String& text) : m_bytes(text.data(), text.size()) {} ///< Copies the bytes.

    /// Zero-terminated UTF-8, valid as long as this object.
    operator const char*() const { return m_bytes.c_str(); }

private:
    std::string m_bytes;
};

/// A number that is formatted for a message.
class VESK_API VeskValue {
public:
    /// The argument that every caller passes to `toString`.
    static constexpr unsigned nilValue = 0xFFFFFFFFu;

    /// @param value what `toString` prints
    explicit VeskValue(unsigned value) : m_value(value) {}
    VeskValue(const VeskValue&) = default;
    VeskValue& operator=(const VeskValue&) = default;
    virtual ~VeskValue();

    /// @return the decimal text of the value; `nil` has no effect
    String toString(unsigned nil) const;

private:
    unsigned m_value;
};

} // namespace vesk
