// Any bytes as serialized text of each class that can be read, and any bytes as the content of an array.

#include "Check.h"

#include <vesk/Array.h>
#include <vesk/Exception.h>
#include <vesk/HashTable.h>
#include <vesk/String.h>

#include <pugixml.hpp>

#include <cstddef>
#include <cstdint>
#include <string>

namespace {

using vesk::Array;
using vesk::String;
using Table = vesk::HashTable<String, String, vesk::EqualFunc<String>, vesk::HashFunc<String>>;

bool isWellFormed(const String& xml)
{
    pugi::xml_document document;
    return static_cast<bool>(document.load_buffer(xml.data(), xml.size()));
}

template <class Object>
String written(Object& object)
{
    String xml;
    object.doSerialization("object", xml);
    fuzz::check(isWellFormed(xml), "written text that is not well-formed");
    return xml;
}

// Writes what was read, reads it again and writes it again: both texts have to be equal.
template <class Object>
void readAndWrite(const String& text, Object object)
{
    try {
        if (!object.deserialize(text)) {
            return;
        }
    } catch (const vesk::IndexOutOfBounds&) {
        return; // more keys than values
    }
    const String first = written(object);
    Object again(object);
    fuzz::check(again.deserialize(first), "written text that is not read");
    fuzz::check(written(again) == first, "another text the second time");
}

// As above for a table, which keeps no order.
void readAndWriteTable(const String& text)
{
    Table table(4);
    try {
        if (!table.deserialize(text)) {
            return;
        }
    } catch (const vesk::IndexOutOfBounds&) {
        return;
    }
    Table again(4);
    fuzz::check(again.deserialize(written(table)), "a written table that is not read");
    fuzz::check(again.size() == table.size(), "a table of another size");
    for (const Table::Bucket& bucket : table) {
        const Table::Bucket* const first = table.lookup(bucket.key);
        const Table::Bucket* const other = again.lookup(bucket.key);
        fuzz::check(first != nullptr && other != nullptr, "a key that got lost");
    }
}

void roundTrip(const std::uint8_t* data, std::size_t size)
{
    Array<String> strings;
    std::string piece;
    for (std::size_t i = 0; i < size; ++i) {
        const char c = static_cast<char>(data[i]);
        if (c == '\0' || c == '\n') {
            strings.append(String(piece.c_str()));
            piece.clear();
        } else {
            piece += c;
        }
    }
    strings.append(String(piece.c_str()));
    Array<String> read;
    read.append(String("to be replaced"));
    fuzz::check(read.deserialize(written(strings)), "an array that is not read back");
    fuzz::check(read.size() == strings.size(), "an array of another size");
    for (unsigned i = 0; i < read.size(); ++i) {
        fuzz::check(read[i] == strings[i], "another text");
    }

    Array<unsigned char> bytes;
    bytes.append(data, static_cast<unsigned>(size));
    Array<unsigned char> readBytes;
    fuzz::check(readBytes.deserialize(written(bytes)), "bytes that are not read back");
    fuzz::check(readBytes.size() == bytes.size(), "another number of bytes");
    for (unsigned i = 0; i < bytes.size(); ++i) {
        fuzz::check(readBytes[i] == bytes[i], "another byte");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const String text(std::string(reinterpret_cast<const char*>(data), size).c_str());
    readAndWrite(text, Array<String>());
    readAndWrite(text, Array<unsigned>());
    readAndWrite(text, Array<double>());
    readAndWrite(text, Array<unsigned char>());
    readAndWriteTable(text);
    roundTrip(data, size);
    return 0;
}
