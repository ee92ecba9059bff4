// Sequences of operations on the containers, compared with those of the standard library.

#include "Check.h"

#include <vesk/Array.h>
#include <vesk/Buffer.h>
#include <vesk/Exception.h>
#include <vesk/HashTable.h>
#include <vesk/String.h>

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <cstdint>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using fuzz::check;
using vesk::Array;
using vesk::Buffer;
using vesk::String;

constexpr unsigned mostElements = 4096;

std::string text(FuzzedDataProvider& input)
{
    return std::string(input.ConsumeRandomLengthString(40).c_str()); // up to the first zero
}

class ArrayTwin {
public:
    void step(FuzzedDataProvider& input)
    {
        const auto number = input.ConsumeIntegral<std::uint16_t>();
        const std::string value = text(input);
        switch (input.ConsumeIntegralInRange(0, 9)) {
        case 0:
            m_array.append(String(value.c_str()));
            m_twin.push_back(value);
            break;
        case 1:
            appendOwn(number);
            break;
        case 2:
            appendItself();
            break;
        case 3:
            grow(number % 300, value);
            break;
        case 4:
            m_array.clear();
            m_twin.clear();
            check(m_array.capacity() == 8, "capacity of a cleared array");
            break;
        case 5:
            readAt(number);
            break;
        case 6:
            check(m_array.contains(String(value.c_str())) ==
                      (std::find(m_twin.begin(), m_twin.end(), value) != m_twin.end()),
                  "contains");
            break;
        case 7: {
            const Array<String> copy(m_array);
            m_array = copy;
            break;
        }
        case 8: {
            Array<String> other(number % 40);
            std::vector<std::string> otherTwin(number % 40);
            m_array.swap(other);
            m_twin.swap(otherTwin);
            break;
        }
        default:
            m_array = *&m_array;
            break;
        }
        compare();
    }

private:
    void appendOwn(unsigned index)
    {
        if (!m_twin.empty()) {
            index %= static_cast<unsigned>(m_twin.size());
            m_array.append(m_array[index]);
            m_twin.push_back(std::string(m_twin[index]));
        }
    }

    void appendItself()
    {
        if (m_twin.size() <= mostElements) {
            m_array.appendArray(m_array);
            const std::vector<std::string> copy = m_twin;
            m_twin.insert(m_twin.end(), copy.begin(), copy.end());
        }
    }

    void grow(unsigned size, const std::string& value)
    {
        m_array.grow(size, String(value.c_str()));
        if (size > m_twin.size()) {
            m_twin.resize(size, value);
        }
    }

    void readAt(unsigned index)
    {
        bool isThrown = false;
        try {
            check(m_twin.at(index) == m_array[index].data(), "element");
        } catch (const vesk::IndexOutOfBounds& error) {
            isThrown = true;
            check(error.high() == static_cast<int>(m_twin.size()) - 1, "bounds of the error");
        } catch (const std::out_of_range&) {
            isThrown = true;
            try {
                static_cast<void>(m_array[index]);
                fuzz::fail("an element behind the end");
            } catch (const vesk::IndexOutOfBounds&) {
                isThrown = true;
            }
        }
        check(isThrown == (index >= m_twin.size()), "an element that is there was refused");
    }

    void compare() const
    {
        check(m_array.size() == m_twin.size(), "size of an array");
        check(m_array.capacity() >= m_array.size() && m_array.capacity() >= 8, "capacity");
        std::size_t i = 0;
        for (const String& element : m_array) {
            check(m_twin[i] == element.data(), "elements of an array");
            ++i;
        }
    }

    Array<String> m_array;
    std::vector<std::string> m_twin;
};

class TableTwin {
public:
    void step(FuzzedDataProvider& input)
    {
        const std::string key = text(input);
        switch (input.ConsumeIntegralInRange(0, 5)) {
        case 0:
        case 1:
        case 2: {
            const unsigned value = input.ConsumeIntegral<unsigned>();
            const bool isNew = m_twin.emplace(key, value).second;
            check(m_table.insert(String(key.c_str()), value) == isNew, "whether a key is new");
            break;
        }
        case 3:
            m_table.reserve(input.ConsumeIntegral<std::uint8_t>());
            break;
        case 4: {
            const Table copy(m_table);
            m_table = copy;
            break;
        }
        default:
            m_table = *&m_table;
            break;
        }
        compare(key);
    }

private:
    using Table = vesk::HashTable<String, unsigned, vesk::EqualFunc<String>, vesk::HashFunc<String>>;

    void compare(const std::string& key) const
    {
        check(m_table.size() == m_twin.size(), "size of a table");
        const auto found = m_twin.find(key);
        const Table::Bucket* const bucket = m_table.lookup(String(key.c_str()));
        check((bucket != nullptr) == (found != m_twin.end()), "whether a key is there");
        check(bucket == nullptr || bucket->value == found->second, "value of a key");
        std::size_t buckets = 0;
        for (const Table::Bucket& each : m_table) {
            const auto twin = m_twin.find(each.key.data());
            check(twin != m_twin.end() && twin->second == each.value, "a bucket of the walk");
            ++buckets;
        }
        check(buckets == m_twin.size(), "buckets of the walk");
    }

    Table m_table{1};
    std::map<std::string, unsigned> m_twin;
};

class StringTwin {
public:
    void step(FuzzedDataProvider& input)
    {
        const std::string other = text(input);
        const auto start = input.ConsumeIntegralInRange(0u, 80u);
        const unsigned length = input.ConsumeBool() ? String::npos : input.ConsumeIntegralInRange(0u, 80u);
        switch (input.ConsumeIntegralInRange(0, 5)) {
        case 0:
            if (m_twin.size() < mostElements) {
                m_string.append(other.c_str());
                m_twin += other;
            }
            break;
        case 1:
            if (m_twin.size() < mostElements) {
                m_string.append(m_string);
                m_twin += std::string(m_twin);
            }
            break;
        case 2: {
            const std::string part =
                start < m_twin.size() ? m_twin.substr(start, length == String::npos ? std::string::npos : length) : "";
            check(part == m_string.subString(start, length).data(), "part of a text");
            break;
        }
        case 3: {
            const char c = other.empty() ? 'a' : other[0];
            const std::size_t found = m_twin.find(c, start);
            check(m_string.find(start, c) == (found == std::string::npos ? String::npos : found), "place of a letter");
            break;
        }
        case 4:
            m_string = m_string.data() + std::min<std::size_t>(start, m_twin.size());
            m_twin.erase(0, start);
            break;
        default:
            compareNoCase(other);
            break;
        }
        check(m_twin == m_string.data() && m_twin.size() == m_string.size(), "a text");
    }

private:
    void compareNoCase(const std::string& other) const
    {
        const auto folded = [](std::string letters) {
            std::transform(letters.begin(), letters.end(), letters.begin(),
                           [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
            return letters;
        };
        const int order = folded(m_twin).compare(folded(other));
        const int answer = String::compareNoCase(m_string, String(other.c_str()));
        check((order < 0) == (answer < 0) && (order > 0) == (answer > 0), "order without case");
    }

    String m_string;
    std::string m_twin;
};

class BufferTwin {
public:
    void step(FuzzedDataProvider& input)
    {
        const auto size = input.ConsumeIntegralInRange<std::size_t>(0, 600);
        switch (input.ConsumeIntegralInRange(0, 5)) {
        case 0: {
            const std::vector<std::uint8_t> bytes = input.ConsumeBytes<std::uint8_t>(size);
            m_buffer.assign(bytes.data(), bytes.size());
            m_twin = bytes;
            break;
        }
        case 1:
            m_buffer.resize(size, true);
            m_twin.resize(size, 0);
            break;
        case 2: {
            const std::size_t old = m_twin.size();
            m_buffer.resize(size, false);
            m_twin.resize(size, 0);
            std::fill_n(m_buffer.data() + std::min(old, size), size - std::min(old, size), std::uint8_t(0));
            break;
        }
        case 3:
            assignOwn(size, input.ConsumeIntegralInRange<std::size_t>(0, 600));
            break;
        case 4: {
            Buffer<std::uint8_t> copy(m_buffer);
            check(copy == m_buffer, "a copy of a buffer");
            m_buffer = copy;
            break;
        }
        default:
            if (!m_twin.empty()) {
                m_buffer[size % m_twin.size()] = static_cast<std::uint8_t>(size);
                m_twin[size % m_twin.size()] = static_cast<std::uint8_t>(size);
            }
            break;
        }
        check(m_buffer.size() == m_twin.size() && std::equal(m_twin.begin(), m_twin.end(), m_buffer.data()),
              "a buffer");
    }

private:
    void assignOwn(std::size_t start, std::size_t count)
    {
        if (!m_twin.empty()) {
            start %= m_twin.size();
            count = std::min(count, m_twin.size() - start);
            m_buffer.assign(m_buffer.data() + start, count);
            m_twin = std::vector<std::uint8_t>(m_twin.begin() + static_cast<std::ptrdiff_t>(start),
                                               m_twin.begin() + static_cast<std::ptrdiff_t>(start + count));
        }
    }

    Buffer<std::uint8_t> m_buffer;
    std::vector<std::uint8_t> m_twin;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FuzzedDataProvider input(data, size);
    ArrayTwin array;
    TableTwin table;
    StringTwin string;
    BufferTwin buffer;
    constexpr unsigned mostSteps = 200;
    for (unsigned i = 0; i < mostSteps && input.remaining_bytes() > 0; ++i) {
        switch (input.ConsumeIntegralInRange(0, 3)) {
        case 0:
            array.step(input);
            break;
        case 1:
            table.step(input);
            break;
        case 2:
            string.step(input);
            break;
        default:
            buffer.step(input);
            break;
        }
    }
    return 0;
}
