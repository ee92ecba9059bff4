#include <vesk/Exception.h>

#include <string>

namespace vesk {

namespace {

String outOfBoundsMessage(int low, int high, int index)
{
    const std::string text =
        "Index " + std::to_string(index) + " is out of bounds " + std::to_string(low) + " to " + std::to_string(high);
    return String(text.c_str());
}

String assertionMessage(const char* file, unsigned long long line, const char* expression)
{
    String text("Assertion failed: ");
    text.append(expression).append(" (").append(file).append(":").append(std::to_string(line).c_str()).append(")");
    return text;
}

} // namespace

Exception::~Exception() = default;

NullPointer::~NullPointer() = default;

IndexOutOfBounds::IndexOutOfBounds(int low, int high, int index)
    : Exception(outOfBoundsMessage(low, high, index)), m_low(low), m_high(high), m_index(index)
{}

IndexOutOfBounds::~IndexOutOfBounds() = default;

SerializationFailed::~SerializationFailed() = default;

AssertionFailure::AssertionFailure(const char* file, unsigned long long line, const char* expression)
    : Exception(assertionMessage(file, line, expression)), m_file(file), m_line(line), m_expression(expression)
{}

AssertionFailure::~AssertionFailure() = default;

} // namespace vesk
