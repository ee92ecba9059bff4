#include <vesk/Exception.h>

#include <cstdio>
#include <cstring>
#include <new>
#include <string>

namespace vesk {

namespace {

// A copy of the text. If out of memory, only the start of the text, or nothing at all.
String keptText(const char* text) noexcept
{
    try {
        return String(text);
    } catch (const std::bad_alloc&) {
        static_cast<void>(0); // tried again below with less
    }
    try {
        constexpr std::size_t maxBytes = 15; // standard libraries store that many without an allocation
        char start[maxBytes + 1] = {};
        std::strncpy(start, text, maxBytes);
        return String(start);
    } catch (const std::bad_alloc&) {
        return String();
    }
}

// Formats the message, so that it can be passed to the constructor of the base.
struct OutOfBoundsText {
    OutOfBoundsText(int low, int high, int index)
    {
        static_cast<void>(std::snprintf(text, sizeof(text), "Index %d is out of bounds %d to %d", index, low, high));
    }
    char text[80] = {}; // 28 characters and three numbers of at most eleven
};

String assertionMessage(const char* file, unsigned long long line, const char* expression) noexcept
{
    try {
        String text("Assertion failed: ");
        text.append(expression).append(" (").append(file).append(":").append(std::to_string(line).c_str()).append(")");
        return text;
    } catch (const std::bad_alloc&) {
        return keptText(expression);
    }
}

} // namespace

Exception::Exception(const char* message) noexcept : m_message(keptText(message)) {}

Exception::Exception(const Exception& other) noexcept
    : std::exception(other), m_message(keptText(other.m_message.data()))
{}

Exception& Exception::operator=(const Exception& other) noexcept
{
    if (this != &other) {
        m_message = keptText(other.m_message.data());
    }
    return *this;
}

Exception::~Exception() = default;

NullPointer::~NullPointer() = default;

IndexOutOfBounds::IndexOutOfBounds(int low, int high, int index) noexcept
    : Exception(OutOfBoundsText(low, high, index).text), m_low(low), m_high(high), m_index(index)
{}

IndexOutOfBounds::~IndexOutOfBounds() = default;

SerializationFailed::~SerializationFailed() = default;

AssertionFailure::AssertionFailure(const char* file, unsigned long long line, const char* expression) noexcept
    : Exception(assertionMessage(file, line, expression)), m_file(file), m_line(line), m_expression(expression)
{}

AssertionFailure::~AssertionFailure() = default;

} // namespace vesk
