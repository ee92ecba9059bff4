#include "support/FoundationTest.h"

#include <pugixml.hpp>

using namespace testSupport;
using namespace vesk;

namespace {

/// Exposes the protected functions.
struct Slots : Serializable {
    static std::vector<std::uintptr_t> all()
    {
        using Read = bool (Serializable::*)(const String&);
        return {slotOf(&Serializable::doSerialization),
                slotOf(static_cast<Read>(&Slots::deserialize)),
                slotOf(&Serializable::deserializeMembers),
                slotOf(&Serializable::serializeMembers),
                slotOf(&Serializable::getClassName),
                slotOf(&Slots::serializeBegin),
                slotOf(&Slots::serializeEnd),
                slotOf(&Slots::getSerializedXML),
                slotOf(&Slots::deserializeBegin),
                slotOf(&Slots::deserializeEnd),
                slotOf(&Slots::insertValueToContainer)};
    }
};

} // namespace

TEST(SerializableTest, VirtualOperationsStandInTheirOrder)
{
    // The destructor takes two places.
    EXPECT_EQ((std::vector<std::uintptr_t>{2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}), Slots::all());
    EXPECT_TRUE(std::has_virtual_destructor<Serializable>::value);
}

namespace {

/// Whether the bytes are valid UTF-8 with only characters that XML 1.0 allows.
bool isXmlText(const std::string& text)
{
    const std::size_t size = text.size();
    for (std::size_t i = 0; i < size;) {
        const auto first = static_cast<unsigned char>(text[i]);
        std::uint32_t code = first;
        std::size_t length = 1;
        if (first >= 0x80) {
            length = first >= 0xF0 ? 4 : (first >= 0xE0 ? 3 : 2);
            if (first < 0xC2 || first > 0xF4 || i + length > size) {
                return false;
            }
            code = first & (0xFFu >> (length + 1));
            for (std::size_t k = 1; k < length; ++k) {
                const auto next = static_cast<unsigned char>(text[i + k]);
                if ((next & 0xC0u) != 0x80u) {
                    return false;
                }
                code = (code << 6u) | (next & 0x3Fu);
            }
            const std::uint32_t least = length == 4 ? 0x10000u : (length == 3 ? 0x800u : 0x80u);
            if (code < least) {
                return false;
            }
        }
        const bool isAllowed = code == 0x9 || code == 0xA || code == 0xD || (code >= 0x20 && code <= 0xD7FF) ||
                               (code >= 0xE000 && code <= 0xFFFD) || (code >= 0x10000 && code <= 0x10FFFF);
        if (!isAllowed) {
            return false;
        }
        i += length;
    }
    return true;
}

/// Expects one well-formed document with one root element.
void expectWellFormed(const String& xml)
{
    EXPECT_TRUE(isXmlText(xml.data())) << xml;
    pugi::xml_document document;
    const pugi::xml_parse_result result =
        document.load_buffer(xml.data(), xml.size(), pugi::parse_full, pugi::encoding_utf8);
    EXPECT_TRUE(result) << result.description() << " in " << xml;
    int roots = 0;
    for (const pugi::xml_node child : document.children()) {
        roots += child.type() == pugi::node_element ? 1 : 0;
    }
    EXPECT_EQ(1, roots) << xml;
}

/// Writes the array and reads it into one with other content.
template <class T>
std::vector<T> roundTrip(Array<T>& array, const String& name = "list")
{
    String xml;
    array.doSerialization(name, xml);
    expectWellFormed(xml);
    Array<T> read(3);
    EXPECT_TRUE(read.deserialize(xml));
    return elements(read);
}

/// An object with two lists and an optional child.
class Record : public Serializable {
public:
    explicit Record(unsigned depth = 0)
    {
        if (depth > 0) {
            m_child = std::make_unique<Record>(depth - 1);
        }
    }

    const String& getClassName() const override
    {
        static const String name("Record");
        return name;
    }

    void serializeMembers(const String& name, String& xml) override
    {
        serializeBegin(name);
        serialize("m_names", names);
        serialize("m_numbers", numbers);
        if (m_child) {
            serialize("m_child", *m_child);
        }
        serializeEnd();
        getSerializedXML(xml);
    }

    void deserializeMembers(const XmlElement* element) override
    {
        deserializeBegin(element);
        Serializable::deserialize("m_names", names);
        Serializable::deserialize("m_numbers", numbers);
        if (m_child) {
            Serializable::deserialize("m_child", *m_child);
        }
        deserializeEnd();
    }

    Record& child() { return *m_child; }

    Array<String> names;
    Array<double> numbers;

private:
    std::unique_ptr<Record> m_child;
};

/// Overrides nothing but its name.
class Bare : public Serializable {
public:
    const String& getClassName() const override
    {
        static const String name("Bare");
        return name;
    }
    void insert(String& value) { insertValueToContainer(0, nullptr, value); }
};

/// Has a member that refuses.
class Refusing : public Serializable {
public:
    const String& getClassName() const override
    {
        static const String name("Refusing");
        return name;
    }
    void serializeMembers(const String& name, String& xml) override
    {
        serializeBegin(name);
        serialize("m_good", good);
        serialize("m_bad", bad);
        serializeEnd();
        getSerializedXML(xml);
    }
    void deserializeMembers(const XmlElement* element) override
    {
        deserializeBegin(element);
        Serializable::deserialize("m_good", good);
        Serializable::deserialize("m_bad", bad);
        deserializeEnd();
    }
    Array<String> good;
    Array<float> bad;
};

/// Records what a class reads.
class Reader : public Serializable {
public:
    const String& getClassName() const override
    {
        static const String name("ArrayOfString");
        return name;
    }
    void deserializeMembers(const XmlElement* element) override { look(*element); }
    std::function<void(const XmlElement&)> look;
};

} // namespace

TEST(SerializableTest, IsMadeCopiedAndAssignedOnlyAsABase)
{
    EXPECT_FALSE(std::is_default_constructible<Serializable>::value);
    EXPECT_FALSE(std::is_copy_constructible<Serializable>::value);
    EXPECT_FALSE(std::is_copy_assignable<Serializable>::value);
    EXPECT_TRUE(std::is_copy_constructible<Bare>::value);
    EXPECT_TRUE(std::is_copy_assignable<Bare>::value);
    EXPECT_EQ(sizeof(Serializable), sizeof(void*));
}

namespace {

class SerializableTextTest : public testing::TestWithParam<Case<const char*>> {};

} // namespace

TEST_P(SerializableTextTest, RoundTripsAsElement)
{
    Array<String> array;
    array.append("before");
    array.append(GetParam().given);
    array.append("behind");
    EXPECT_EQ(roundTrip(array), elements(array));
    EXPECT_EQ(array[1], String(GetParam().given));
}

TEST_P(SerializableTextTest, RoundTripsAsOnlyElement)
{
    Array<String> array;
    array.append(GetParam().given);
    EXPECT_EQ(std::vector<String>{GetParam().given}, roundTrip(array));
}

TEST_P(SerializableTextTest, RoundTripsAsName)
{
    Array<String> array;
    array.append("value");
    EXPECT_EQ(std::vector<String>{"value"}, roundTrip(array, GetParam().given));
    String xml;
    array.doSerialization(GetParam().given, xml);
    Reader reader;
    String name("unread");
    reader.look = [&name](const XmlElement& element) { name = element.name(); };
    EXPECT_TRUE(reader.deserialize(xml));
    EXPECT_EQ(name, String(GetParam().given));
}

INSTANTIATE_ROWS(Rows, SerializableTextTest, {"Empty", ""}, {"Word", "lamp"}, {"Blank", " "},
                 {"BlanksAround", "  a b  "}, {"BlanksWithin", "a   b"}, {"Tabs", "\ta\t"}, {"LineFeeds", "\n\na\n"},
                 {"CarriageReturns", "\r\na\r"}, {"DoubleQuotes", "\"a\""}, {"SingleQuotes", "'a'"},
                 {"Brackets", "<value text=\"x\"/>"}, {"EndTag", "</object>"}, {"Ampersand", "a&b"},
                 {"Entity", "&amp;&lt;&#10;&quot;"}, {"CharacterData", "<![CDATA[ x ]]>"}, {"Comment", "<!-- x -->"},
                 {"Instruction", "<?xml x?>"}, {"Percent", "100%"}, {"PercentAndDigits", "%41%"},
                 {"PercentOfPercent", "%25%2541"}, {"PercentAndLowerDigits", "%0a%ff"}, {"PercentZero", "%00x"},
                 {"ControlBytes", "\x01\x02\x03\x04\x05\x06\x07\x08\x0B\x0C\x0E\x0F\x10\x11\x12\x13\x14\x15\x16\x17\x18"
                                  "\x19\x1A\x1B\x1C\x1D\x1E\x1F"},
                 {"Delete", "\x7F"}, {"ControlsOfTwoBytes", "\xC2\x80\xC2\x85\xC2\x9F"},
                 {"TwoBytes", "m\xC3\xB6"
                              "del"},
                 {"ThreeBytes", "\xE2\x82\xAC"}, {"FourBytes", "\xF0\x9F\x98\x80"},
                 {"EdgesOfUtf8", "\xC2\xA0\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBD"
                                 "\xF0\x90\x80\x80\xF4\x8F\xBF\xBD"},
                 {"ByteOrderMark", "\xEF\xBB\xBF"
                                   "a"},
                 {"LineSeparator", "\xE2\x80\xA8"},
                 {"NonCharacters", "\xEF\xBF\xBE\xEF\xBF\xBF\xF0\x9F\xBF\xBE\xF4\x8F\xBF\xBF\xEF\xB7\x90"},
                 {"LoneContinuation", "a\x80"
                                      "b\xBF"},
                 {"CutTwoBytes", "a\xC3"}, {"CutThreeBytes", "a\xE2\x82"}, {"CutFourBytes", "a\xF0\x9F\x98"},
                 {"BrokenSequence", "\xE2(\x82\xF0\x9F(\xC3("}, {"OverlongTwoBytes", "\xC0\x80\xC1\xBF"},
                 {"OverlongThreeBytes", "\xE0\x80\x80\xE0\x9F\xBF"}, {"OverlongFourBytes", "\xF0\x80\x80\x80"},
                 {"Surrogates", "\xED\xA0\x80\xED\xBF\xBF"}, {"AboveUnicode", "\xF4\x90\x80\x80\xF7\xBF\xBF\xBF"},
                 {"NeverUsedBytes", "\xF5\xF8\xFC\xFE\xFF"}, {"AllOnes", "\xFF\xFF\xFF\xFF"});

TEST(SerializableTest, EverySingleByteRoundTrips)
{
    Array<String> array;
    for (int byte = 1; byte < 256; ++byte) {
        const char text[] = {static_cast<char>(byte), '\0'};
        array.append(text);
    }
    EXPECT_EQ(roundTrip(array), elements(array));
}

TEST(SerializableTest, EveryPairOfSpecialBytesRoundTrips)
{
    Array<String> array;
    const char bytes[] = "%0Aa&;<>\"'\t\n \x7F\x80\xBF\xC2\xC3\xE0\xED\xEF\xF0\xF4\xFF";
    for (const char* first = bytes; *first != '\0'; ++first) {
        for (const char* second = bytes; *second != '\0'; ++second) {
            for (const char* third = bytes; *third != '\0'; ++third) {
                const char text[] = {*first, *second, *third, '\0'};
                array.append(text);
            }
        }
    }
    EXPECT_EQ(roundTrip(array), elements(array));
}

TEST(SerializableTest, LongTextsAndManyTextsRoundTrip)
{
    Array<String> array;
    array.append(std::string(100000, '<').c_str());
    for (int i = 0; i < 5000; ++i) {
        array.append(std::to_string(i).c_str());
    }
    EXPECT_EQ(roundTrip(array), elements(array));
}

TEST(SerializableTest, EmptyArraysRoundTrip)
{
    Array<String> texts;
    Array<unsigned> numbers;
    EXPECT_TRUE(roundTrip(texts).empty());
    EXPECT_TRUE(roundTrip(numbers).empty());
}

TEST(SerializableTest, UnsignedNumbersRoundTrip)
{
    Array<unsigned> array;
    for (const unsigned number : {0u, 1u, 9u, 10u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
        array.append(number);
    }
    EXPECT_EQ(roundTrip(array), elements(array));
}

TEST(SerializableTest, EveryByteValueRoundTrips)
{
    Array<unsigned char> array;
    for (unsigned byte = 0; byte < 256; ++byte) {
        array.append(static_cast<unsigned char>(byte));
    }
    EXPECT_EQ(roundTrip(array), elements(array));
}

TEST(SerializableTest, DoublesRoundTripToTheSameBits)
{
    using Limits = std::numeric_limits<double>;
    Array<double> array;
    for (const double number : {0.0, -0.0, 1.0, -1.5, 0.1, 1.0 / 3.0, 1e22, 1e23, 123456789012345678.0, Limits::max(),
                                Limits::lowest(), Limits::min(), Limits::denorm_min(), -Limits::denorm_min(),
                                Limits::epsilon(), Limits::infinity(), -Limits::infinity()}) {
        array.append(number);
    }
    const std::vector<double> read = roundTrip(array);
    ASSERT_EQ(read.size(), array.size());
    for (unsigned i = 0; i < array.size(); ++i) {
        EXPECT_EQ(0, std::memcmp(&read[i], &array[i], sizeof(double))) << array[i] << " became " << read[i];
    }
}

TEST(SerializableTest, NotANumberRoundTrips)
{
    Array<double> array;
    array.append(std::numeric_limits<double>::quiet_NaN());
    array.append(-std::numeric_limits<double>::quiet_NaN());
    array.append(2.0);
    const std::vector<double> read = roundTrip(array);
    ASSERT_EQ(3u, read.size());
    EXPECT_TRUE(std::isnan(read[0]));
    EXPECT_TRUE(std::isnan(read[1]));
    EXPECT_EQ(2.0, read[2]);
}

TEST(SerializableTest, ObjectWithMembersRoundTrips)
{
    Record record(2);
    record.names.append("a");
    record.names.append("<b>");
    record.numbers.append(0.25);
    record.child().names.append("of the child");
    record.child().child().numbers.append(-3.0);
    String xml;
    record.doSerialization("record", xml);
    expectWellFormed(xml);
    Record read(2);
    read.child().numbers.append(8.0);
    EXPECT_TRUE(read.deserialize(xml));
    EXPECT_EQ((std::vector<String>{"a", "<b>"}), elements(read.names));
    EXPECT_EQ(std::vector<double>{0.25}, elements(read.numbers));
    EXPECT_EQ(std::vector<String>{"of the child"}, elements(read.child().names));
    EXPECT_TRUE(elements(read.child().numbers).empty());
    EXPECT_EQ(std::vector<double>{-3.0}, elements(read.child().child().numbers));
}

TEST(SerializableTest, MemberThatIsNotThereStaysAsItIs)
{
    Record without(0);
    without.names.append("new");
    String xml;
    without.doSerialization("record", xml);
    Record with(1);
    with.child().names.append("kept");
    EXPECT_TRUE(with.deserialize(xml));
    EXPECT_EQ(std::vector<String>{"new"}, elements(with.names));
    EXPECT_EQ(std::vector<String>{"kept"}, elements(with.child().names));
}

TEST(SerializableTest, DoSerializationReplacesTheTextAndSerializeMembersAppends)
{
    Array<String> array;
    array.append("x");
    String once;
    array.doSerialization("n", once);
    String again("before");
    array.doSerialization("n", again);
    EXPECT_EQ(again, once);
    String appended("before");
    array.serializeMembers("n", appended);
    EXPECT_EQ(appended.subString(0, 6), String("before"));
    EXPECT_GT(appended.size(), 6u);
    expectWellFormed(appended.subString(6, String::npos));
}

TEST(SerializableTest, ClassWithoutOverridesWritesAndReadsAnEmptyObject)
{
    Bare bare;
    String xml;
    bare.doSerialization("b", xml);
    expectWellFormed(xml);
    EXPECT_TRUE(bare.deserialize(xml));
    String value("v");
    bare.insert(value);
    EXPECT_EQ(value, String("v"));
}

namespace {

class SerializableBadXmlTest : public testing::TestWithParam<Case<const char*>> {};

} // namespace

TEST_P(SerializableBadXmlTest, IsRefusedAndChangesNothing)
{
    Array<String> array;
    array.append("kept");
    EXPECT_FALSE(array.deserialize(GetParam().given));
    EXPECT_EQ(std::vector<String>{"kept"}, elements(array));
}

INSTANTIATE_ROWS(Rows, SerializableBadXmlTest, {"Empty", ""}, {"Blank", "  "}, {"Words", "no markup at all"},
                 {"OpenElement", "<object name=\"n\" class=\"ArrayOfString\">"},
                 {"WrongEndTag", "<object name=\"n\" class=\"ArrayOfString\"></objec>"},
                 {"CutAttribute", "<object name=\"n\" class=\"ArrayOfStr"},
                 {"OtherElement", "<thing name=\"n\" class=\"ArrayOfString\"/>"}, {"NoClass", "<object name=\"n\"/>"},
                 {"OtherClass", "<object name=\"n\" class=\"ArrayOfDouble\"/>"});

TEST(SerializableTest, EachCutOfADocumentIsRefused)
{
    Array<String> array;
    array.append("a & b");
    array.append("%\n");
    String xml;
    array.doSerialization("n", xml);
    Array<String> read;
    read.append("kept");
    for (unsigned length = 0; length < xml.size(); ++length) {
        EXPECT_FALSE(read.deserialize(xml.subString(0, length))) << length;
    }
    EXPECT_EQ(std::vector<String>{"kept"}, elements(read));
    EXPECT_TRUE(read.deserialize(xml));
}

TEST(SerializableTest, ObjectOfAnotherClassIsRefused)
{
    Array<unsigned> numbers;
    numbers.append(5);
    String xml;
    numbers.doSerialization("n", xml);
    Array<double> others;
    others.append(1.0);
    EXPECT_FALSE(others.deserialize(xml));
    EXPECT_EQ(std::vector<double>{1.0}, elements(others));
}

TEST(SerializableTest, ElementTellsNameClassAndValues)
{
    Array<String> array;
    array.append("a<");
    array.append("");
    String xml;
    array.doSerialization("my list", xml);
    Reader reader;
    int calls = 0;
    reader.look = [&calls](const XmlElement& element) {
        ++calls;
        EXPECT_TRUE(element.exists());
        EXPECT_EQ(element.name(), String("my list"));
        EXPECT_EQ(element.className(), String("ArrayOfString"));
        EXPECT_FALSE(element.member("none").exists());
        const XmlElement first = element.firstValue();
        ASSERT_TRUE(first.exists());
        EXPECT_EQ(first.text(), String("a<"));
        const XmlElement second = first.nextValue();
        ASSERT_TRUE(second.exists());
        EXPECT_EQ(second.text(), String());
        const XmlElement end = second.nextValue();
        EXPECT_FALSE(end.exists());
        EXPECT_FALSE(end.nextValue().exists());
        EXPECT_EQ(end.text(), String());
    };
    EXPECT_TRUE(reader.deserialize(xml));
    EXPECT_EQ(1, calls);
}

TEST(SerializableTest, RefusalOfAMemberNamesTheMemberAndLeavesTheText)
{
    Refusing object;
    object.good.append("g");
    String xml("before");
    try {
        object.doSerialization("object", xml);
        ADD_FAILURE() << "nothing thrown";
    } catch (const SerializationFailed& exception) {
        EXPECT_STREQ("Serialization is not supported for: m_bad", exception.what());
    }
    EXPECT_EQ(xml, String("before"));
}

TEST(SerializableTest, RefusalLeavesNothingBehindForTheNextObject)
{
    Record record;
    record.names.append("a");
    String clean;
    record.doSerialization("r", clean);
    Refusing object;
    String xml;
    EXPECT_THROW(object.doSerialization("object", xml), SerializationFailed);
    EXPECT_THROW(object.serializeMembers("object", xml), SerializationFailed);
    EXPECT_EQ(xml, String());
    record.doSerialization("r", xml);
    EXPECT_EQ(xml, clean);
}

namespace {

/// A list of floats as a member that reads like one that was written.
class Pretending : public Refusing {
public:
    void serializeMembers(const String& name, String& xml) override
    {
        serializeBegin(name);
        serialize("m_good", good);
        serialize("m_bad", m_pretended);
        serializeEnd();
        getSerializedXML(xml);
    }

private:
    class Others : public Serializable {
        const String& getClassName() const override { return Array<float>::className(); }
    };
    Others m_pretended;
};

} // namespace

TEST(SerializableTest, ReadingAMemberThatRefusesWritesTheNoticeOnce)
{
    Pretending written;
    written.good.append("g");
    String xml;
    written.doSerialization("object", xml);
    Refusing read;
    read.bad.append(1.0f);
    testing::internal::CaptureStdout();
    EXPECT_TRUE(read.deserialize(xml));
    EXPECT_EQ("Serialization isn't support for this class!!!\n", testing::internal::GetCapturedStdout());
    EXPECT_EQ(std::vector<String>{"g"}, elements(read.good));
    EXPECT_EQ(std::vector<float>{1.0f}, elements(read.bad));
}

TEST(SerializableTest, SupportedArraysWriteNoNotice)
{
    Array<String> texts;
    Array<unsigned> numbers;
    Array<double> reals;
    Array<unsigned char> bytes;
    testing::internal::CaptureStdout();
    roundTrip(texts);
    roundTrip(numbers);
    roundTrip(reals);
    roundTrip(bytes);
    EXPECT_EQ("", testing::internal::GetCapturedStdout());
}

TEST(SerializableTest, MemoryFailingAtEachPointOfWritingLeavesTheText)
{
    Record record(1);
    record.names.append("a name that is too long to stand in the object itself");
    record.child().numbers.append(0.5);
    String clean;
    record.doSerialization("r", clean);
    String xml("before");
    int points = 0;
    for (bool hasFailed = true; hasFailed && points < 1000; ++points) {
        {
            const FailingAllocator allocator(points);
            try {
                record.doSerialization("r", xml);
            } catch (const vesk::NullPointer&) {
            } catch (const std::bad_alloc&) {
            }
            hasFailed = allocator.hasFailed();
        }
        if (hasFailed) {
            EXPECT_EQ(xml, String("before")) << points;
        }
    }
    EXPECT_GT(points, 5);
    EXPECT_EQ(xml, clean);
}

TEST(SerializableTest, MemoryFailingAtEachPointOfReadingLeavesAnArray)
{
    Array<String> written;
    for (int i = 0; i < 10; ++i) {
        written.append("a name that is too long to stand in the object itself");
    }
    String xml;
    written.doSerialization("n", xml);
    Array<String> read;
    read.append("kept");
    int points = 0;
    for (bool hasFailed = true; hasFailed && points < 1000; ++points) {
        {
            const FailingAllocator allocator(points);
            try {
                static_cast<void>(read.deserialize(xml));
            } catch (const vesk::NullPointer&) {
            } catch (const std::bad_alloc&) {
            }
            hasFailed = allocator.hasFailed();
        }
        if (hasFailed) {
            EXPECT_EQ(std::vector<String>{"kept"}, elements(read)) << points;
        }
    }
    EXPECT_GT(points, 5);
    EXPECT_EQ(elements(read), elements(written));
}
