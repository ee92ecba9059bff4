#pragma once // SPDX-License-Identifier: MIT

#include <vesk/Export.h>
#include <vesk/String.h>

namespace pugi {
struct xml_node_struct;
}

namespace vesk {

/// One element of serialized XML, as a `Serializable` reads it: a light handle, valid while `deserialize` runs.
///
/// An object is `<object name="..." class="...">`; below it are the objects that it has as members, and the plain
/// values that it has as a container, each `<value text="..."/>`.
class VESK_API XmlElement {
public:
    /// The name that the object was written with.
    String name() const;
    /// `getClassName()` of the object that was written.
    String className() const;

    /// True unless a search for this element found nothing.
    bool exists() const { return m_node != nullptr; }
    /// The first member of that name; one that does not exist if there is none.
    XmlElement member(const String& name) const;
    /// The first plain value; one that does not exist if there is none.
    XmlElement firstValue() const;
    XmlElement nextValue() const; ///< The next plain value of the same object; one that does not exist at the end.
    /// The text of a plain value, unescaped.
    String text() const;

private:
    friend class Serializable;
    explicit XmlElement(pugi::xml_node_struct* node) : m_node(node) {}

    pugi::xml_node_struct* m_node;
};

/// Base of what can be written to XML and read back.
///
/// A class overrides `serializeMembers` and `deserializeMembers` as a bracket of calls: `serializeBegin`, one
/// `serialize` for each member or `serializeValue` for each value, `serializeEnd`, `getSerializedXML`; and
/// `deserializeBegin`, one `deserialize` for each member, `deserializeEnd`.
///
/// The object itself stores nothing for this, so a serializable container costs no more than another.
class VESK_API Serializable {
public:
    virtual ~Serializable();

    /// Replaces `xml` by a well-formed document that holds this object under `name`.
    /// @throws SerializationFailed if the object, or one inside it, has no serialized form; `xml` is unchanged then
    virtual void doSerialization(const String& name, String& xml);
    /// Reads the object back from what `doSerialization` wrote.
    /// @return false, with nothing changed, if the text does not parse or has an object of another class; XML around
    ///     the object is ignored
    virtual bool deserialize(const String& xml);

    /// Reads the members from their element.
    virtual void deserializeMembers(const XmlElement* element);
    /// Appends the element of this object, under `name`, to `xml`.
    virtual void serializeMembers(const String& name, String& xml);
    /// The name of this class in XML.
    virtual const String& getClassName() const = 0;

protected:
    Serializable() = default;
    Serializable(const Serializable&) = default;
    Serializable& operator=(const Serializable&) = default;

    /// Starts the element of this object.
    virtual void serializeBegin(const String& name);
    /// Ends the element that `serializeBegin` started.
    virtual void serializeEnd();
    /// Appends the finished element to `xml`, and drops it.
    virtual void getSerializedXML(String& xml);
    /// Starts reading this object from its element; null reads nothing.
    virtual void deserializeBegin(const XmlElement* element);
    /// Ends what `deserializeBegin` started.
    virtual void deserializeEnd();
    /// Receives one plain value of a container's element: its position and its text.
    virtual void insertValueToContainer(int index, const XmlElement* element, String& value);

    /// Writes a member into the element that is being written.
    void serialize(const String& name, Serializable& member);
    /// Reads a member from the element that is being read. A member that is not there is not changed.
    void deserialize(const String& name, Serializable& member);
    /// Writes one plain value into the element that is being written.
    void serializeValue(const String& text);
};

namespace detail {

/// The plain values that a container can hold in XML: their types, and their conversion from and to text.
template <class T>
struct SerializedValue {
    static constexpr bool isSupported = false;
    static const char* arrayName() { return "ArrayOfOthers"; }
};

/// Text of the numbers: `fromText` reads what `toText` writes back to the same value. A text that is no number gives 0.
VESK_API String toText(unsigned value);
VESK_API String toText(double value);
VESK_API void fromText(const String& text, unsigned& value);
VESK_API void fromText(const String& text, double& value);

template <>
struct SerializedValue<String> {
    static constexpr bool isSupported = true;
    static const char* arrayName() { return "ArrayOfString"; }
    static String text(const String& value) { return value; }
    static String value(const String& text) { return text; }
};

template <>
struct SerializedValue<unsigned> {
    static constexpr bool isSupported = true;
    static const char* arrayName() { return "ArrayOfUnsigned"; }
    static String text(unsigned value) { return toText(value); }
    static unsigned value(const String& text)
    {
        unsigned number = 0;
        fromText(text, number);
        return number;
    }
};

template <>
struct SerializedValue<double> {
    static constexpr bool isSupported = true;
    static const char* arrayName() { return "ArrayOfDouble"; }
    static String text(double value) { return toText(value); }
    static double value(const String& text)
    {
        double number = 0.0;
        fromText(text, number);
        return number;
    }
};

template <>
struct SerializedValue<unsigned char> {
    static constexpr bool isSupported = true;
    static const char* arrayName() { return "ArrayOfByte"; }
    static String text(unsigned char value) { return toText(static_cast<unsigned>(value)); }
    static unsigned char value(const String& text)
    {
        unsigned number = 0;
        fromText(text, number);
        return static_cast<unsigned char>(number);
    }
};

/// Says on standard output that a class cannot be read back.
VESK_API void writeRefusalNotice();
/// @throws SerializationFailed that names `name`
[[noreturn]] VESK_API void throwSerializationRefused(const String& name);

} // namespace detail

} // namespace vesk
