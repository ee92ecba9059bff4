#pragma once // SPDX-License-Identifier: MIT

#include <vesk/Export.h>
#include <vesk/String.h>

#include <exception>

namespace vesk {

/// Base of what the library throws: for misuse, exhausted memory and broken invariants. A fault in a document alone
/// does not throw.
///
/// Making and copying one never fails: if out of memory, the message is cut to what fits without an allocation.
class VESK_API Exception : public std::exception {
public:
    Exception(const Exception& other) noexcept;            ///< The same message, as far as memory allows.
    Exception& operator=(const Exception& other) noexcept; ///< The same message, as far as memory allows.
    ~Exception() override;

    /// The message as zero-terminated UTF-8, valid as long as this object.
    const char* what() const noexcept override { return m_message.data(); }
    /// The message as text.
    const String& message() const { return m_message; }

protected:
    /// @param message what `what()` shows
    explicit Exception(const String& message) noexcept : Exception(message.data()) {}
    /// @param message what `what()` shows
    explicit Exception(const char* message) noexcept;

private:
    String m_message;
};

/// A container ran out of memory, or an object does not have what was requested.
class VESK_API NullPointer : public Exception {
public:
    /// @param message what `what()` shows
    explicit NullPointer(const String& message) noexcept : Exception(message) {}
    /// @param message what `what()` shows
    explicit NullPointer(const char* message) noexcept : Exception(message) {}
    NullPointer(const NullPointer&) = default;
    NullPointer& operator=(const NullPointer&) = default;
    ~NullPointer() override;
};

/// An index outside of a container.
class VESK_API IndexOutOfBounds : public Exception {
public:
    /// @param low,high the valid indices @param index the requested one
    IndexOutOfBounds(int low, int high, int index) noexcept;
    IndexOutOfBounds(const IndexOutOfBounds&) = default;
    IndexOutOfBounds& operator=(const IndexOutOfBounds&) = default;
    ~IndexOutOfBounds() override;

    /// The lowest valid index, always 0.
    int low() const { return m_low; }
    /// The highest valid index: the number of elements less one, so -1 for an empty container.
    int high() const { return m_high; }
    /// The requested index.
    int index() const { return m_index; }

private:
    int m_low;
    int m_high;
    int m_index;
};

/// A type without serialization was serialized.
class VESK_API SerializationFailed : public Exception {
public:
    /// @param message what `what()` shows
    explicit SerializationFailed(const String& message) noexcept : Exception(message) {}
    /// @param message what `what()` shows
    explicit SerializationFailed(const char* message) noexcept : Exception(message) {}
    SerializationFailed(const SerializationFailed&) = default;
    SerializationFailed& operator=(const SerializationFailed&) = default;
    ~SerializationFailed() override;
};

/// A broken invariant. Assertions are tested in every build.
class VESK_API AssertionFailure : public Exception {
public:
    /// @param file the module's source path, a literal
    /// @param line the source line of the assertion
    /// @param expression the text of the test, a literal
    AssertionFailure(const char* file, unsigned long long line, const char* expression) noexcept;
    AssertionFailure(const AssertionFailure&) = default;
    AssertionFailure& operator=(const AssertionFailure&) = default;
    ~AssertionFailure() override;

    const char* file() const { return m_file; }             ///< The module's source path, without an ending.
    unsigned long long line() const { return m_line; }      ///< The source line of the assertion.
    const char* expression() const { return m_expression; } ///< The text of the test that failed.

private:
    const char* m_file;
    unsigned long long m_line;
    const char* m_expression;
};

} // namespace vesk
