"""gdb pretty-printers for the containers and handles of vesk, and for the matrices and vectors of libMath.

gdb loads them automatically with an installed libCommon.so. Otherwise: (gdb) source vesk_printers.py
"""

import gdb
import gdb.printing


def _items(pointer, count):
    """Elements of a plain array, named by their index."""
    for i in range(count):
        yield str(i), (pointer + i).dereference()


class StringPrinter:
    """vesk::String, vesk::CString and vesk::LoggerStream, as their text."""

    def __init__(self, value, field="m_text"):
        self._text = value[field]

    def _start(self):
        try:
            return self._text["_M_dataplus"]["_M_p"]
        except gdb.error:
            # clang++ omits the debug information of standard library types. The pointer is their first member.
            pointer = gdb.lookup_type("char").pointer()
            return self._text.address.cast(pointer.pointer()).dereference()

    def to_string(self):
        start = self._start()
        return start.lazy_string(length=int(self._text["_M_string_length"]), encoding="UTF-8")

    def display_hint(self):
        return "string"


class ArrayPrinter:
    """vesk::Array: one block with the counts, followed by the elements."""

    def __init__(self, value):
        self._block = value["m_block"]
        self._element = value.type.template_argument(0)

    def to_string(self):
        if not self._block:
            return "vesk::Array without a block"
        header = self._block.dereference()
        capacity = int(header["capacity"]) or 8  # an array that has not held an element yet counts as one of 8
        return "vesk::Array of %d (capacity %d)" % (int(header["count"]), capacity)

    def children(self):
        if not self._block:
            return iter(())
        elements = (self._block + 1).cast(self._element.pointer())
        return _items(elements, int(self._block["count"]))

    def display_hint(self):
        return "array"


class BufferPrinter:
    """vesk::Buffer."""

    def __init__(self, value):
        self._value = value

    def to_string(self):
        return "vesk::Buffer of %d" % int(self._value["m_size"])

    def children(self):
        return _items(self._value["m_data"], int(self._value["m_size"]))

    def display_hint(self):
        return "array"


class HashTablePrinter:
    """vesk::HashTable: keys and their values, chain by chain."""

    def __init__(self, value):
        self._rep = value["m_rep"]
        kinds = [str(value.type.template_argument(i)) for i in range(3)]
        end = " >" if kinds[2].endswith(">") else ">"
        self._bucket = gdb.lookup_type("vesk::_Bucket<%s%s" % (", ".join(kinds), end)).pointer()

    @staticmethod
    def _next(bucket):
        try:
            return bucket["next"]
        except gdb.error:
            # Without debug information of the library only the name of this type is known. The pointer is its second
            # one, after the pointer to the virtual functions.
            return bucket.cast(bucket.type.pointer())[1]

    def to_string(self):
        return "vesk::HashTable of %d" % int(self._rep["m_size"])

    def children(self):
        number = 0
        for head in range(int(self._rep["m_headCount"])):
            bucket = self._rep["m_heads"][head]
            while bucket:
                entry = bucket.cast(self._bucket)
                yield "key %d" % number, entry["key"]
                yield "value %d" % number, entry["value"]
                number += 1
                bucket = self._next(bucket)

    def display_hint(self):
        return "map"


class SharedResourcePrinter:
    """vesk::SharedResource: the number of its handles, and the object that it owns."""

    def __init__(self, value):
        self._value = value

    def to_string(self):
        count = self._value["m_count"]
        if not count:
            return "vesk::SharedResource, empty"
        handles = int(count.dereference())
        return "vesk::SharedResource, %d handle%s" % (handles, "" if handles == 1 else "s")

    def children(self):
        if self._value["m_count"]:
            yield "get()", self._value["m_storage"]["value"]


class CopiedResourcePrinter:
    """vesk::CopiedResource: the object that it refers to."""

    def __init__(self, value):
        self._pointer = value["m_storage"]["value"]

    def to_string(self):
        return "vesk::CopiedResource" + ("" if self._pointer else ", empty")

    def children(self):
        if self._pointer:
            yield "get()", self._pointer


class VectorPrinter:
    """libMath::Vector."""

    def __init__(self, value):
        self._elements = value["m_elements"]
        self._size = int(value.type.template_argument(1))

    def to_string(self):
        return "(%s)" % ", ".join(str(self._elements[i]) for i in range(self._size))


class MatrixPrinter:
    """libMath::Matrix, row by row."""

    def __init__(self, value):
        self._elements = value["m_elements"]
        self._rows = int(value.type.template_argument(1))
        self._columns = int(value.type.template_argument(2))

    def to_string(self):
        def row(r):
            start = r * self._columns
            return ", ".join(str(self._elements[start + c]) for c in range(self._columns))

        return "[%s]" % "; ".join(row(r) for r in range(self._rows))


def printers():
    """All printers, each with the pattern of its type."""
    collection = gdb.printing.RegexpCollectionPrettyPrinter("vesk")
    for name, expression, printer in (
        ("String", "^vesk::(String|LoggerStream)$", StringPrinter),
        ("CString", "^vesk::CString$", lambda value: StringPrinter(value, "m_bytes")),
        ("Array", "^vesk::Array<.*>$", ArrayPrinter),
        ("Buffer", "^vesk::Buffer<.*>$", BufferPrinter),
        ("HashTable", "^vesk::HashTable<.*>$", HashTablePrinter),
        ("SharedResource", "^vesk::SharedResource<.*>$", SharedResourcePrinter),
        ("CopiedResource", "^vesk::CopiedResource<.*>$", CopiedResourcePrinter),
        ("Vector", "^libMath::Vector<.*>$", VectorPrinter),
        ("Matrix", "^libMath::Matrix<.*>$", MatrixPrinter),
    ):
        collection.add_printer(name, expression, printer)
    return collection


gdb.printing.register_pretty_printer(gdb.current_objfile(), printers(), replace=True)
