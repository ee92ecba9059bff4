#include "support/FoundationTest.h"

#include <clocale>
#include <locale>

using namespace testSupport;
using namespace vesk;

namespace {

constexpr unsigned notFound = 0xFFFFFFFFu;

std::string bytes(const String& text)
{
    return std::string(text.data(), text.size());
}

} // namespace

TEST(StringTest, IsPlainValueWithoutVirtualOperations)
{
    EXPECT_FALSE(std::is_polymorphic<String>::value);
    EXPECT_FALSE(std::is_polymorphic<CString>::value);
}

TEST(StringTest, DefaultConstructedIsEmpty)
{
    const String text;
    EXPECT_EQ(0u, text.size());
    EXPECT_TRUE(text.empty());
    EXPECT_STREQ("", text.data());
}

TEST(StringTest, ConstructionCopiesNarrowText)
{
    char source[] = "lamp";
    const String text(source);
    source[0] = 'X';
    EXPECT_EQ("lamp", bytes(text));
    EXPECT_FALSE(text.empty());
}

TEST(StringTest, NullNarrowTextIsEmptyText)
{
    const char* const none = nullptr;
    EXPECT_EQ(String(none), String());
    String text("before");
    text = none;
    EXPECT_TRUE(text.empty());
    String appended("a");
    appended.append(none);
    EXPECT_EQ("a", bytes(appended));
    EXPECT_EQ("right", bytes(none + String("right")));
}

TEST(StringTest, CopyIsIndependentOfItsSource)
{
    String source("one");
    const String copy(source);
    String assigned;
    assigned = source;
    source.append("two");
    EXPECT_EQ("one", bytes(copy));
    EXPECT_EQ("one", bytes(assigned));
    EXPECT_EQ("onetwo", bytes(source));
}

TEST(StringTest, MoveTakesTheBytesWithoutACopy)
{
    String source("a text that is too long to stand in the object itself");
    const char* const start = source.data();
    String moved(std::move(source));
    EXPECT_EQ(moved.data(), start);
    String assigned("before");
    assigned = std::move(moved);
    EXPECT_EQ(assigned.data(), start);
    EXPECT_EQ("a text that is too long to stand in the object itself", bytes(assigned));
    EXPECT_TRUE(std::is_nothrow_move_constructible<String>::value);
    EXPECT_TRUE(std::is_nothrow_move_assignable<String>::value);
}

TEST(StringTest, TextThatWasMovedFromIsOfUse)
{
    String source("a text that is too long to stand in the object itself");
    const String moved(std::move(source));
    source = "new"; // NOLINT(bugprone-use-after-move): this is what it is for
    EXPECT_EQ("new", bytes(source));
}

TEST(StringTest, BuiltTextTakesOneBlock)
{
    const String text("a text that is too long to stand in the object itself");
    String target;
    FailingAllocator allocator(-1);
    target = "what is assigned is too long to stand in the object";
    const long assigned = allocator.requests();
    target = text.subString(2, String::npos);
    const long cut = allocator.requests() - assigned;
    EXPECT_EQ(1, assigned);
    EXPECT_EQ(1, cut);
}

TEST(StringTest, AssignmentReturnsTheObjectItself)
{
    String text;
    const String other("x");
    EXPECT_EQ(&(text = other), &text);
    EXPECT_EQ(&(text = "y"), &text);
    EXPECT_EQ("y", bytes(text));
}

TEST(StringTest, SelfAssignmentKeepsTheText)
{
    String text("a text that is too long for any storage within the object itself");
    const String& self = text;
    text = self;
    EXPECT_EQ("a text that is too long for any storage within the object itself", bytes(text));
}

TEST(StringTest, AssignmentFromPartOfOwnTextTakesThatPart)
{
    String text("0123456789012345678901234567890123456789tail");
    text = text.data() + 40;
    EXPECT_EQ("tail", bytes(text));
}

TEST(StringTest, AppendsTextsAndReturnsTheObjectItself)
{
    String text("a");
    EXPECT_EQ(&text.append(String("b")), &text);
    EXPECT_EQ(&text.append("c"), &text);
    EXPECT_EQ(&(text += String("d")), &text);
    EXPECT_EQ("abcd", bytes(text));
    EXPECT_EQ(4u, text.size());
}

TEST(StringTest, AppendOfOwnTextDoublesIt)
{
    String text("0123456789abcdef");
    text.append(text);
    EXPECT_EQ("0123456789abcdef0123456789abcdef", bytes(text));
    text = "0123456789abcdef";
    text += text;
    EXPECT_EQ("0123456789abcdef0123456789abcdef", bytes(text));
    text = "0123456789abcdef";
    text.append(text.data() + 10);
    EXPECT_EQ("0123456789abcdefabcdef", bytes(text));
}

TEST(StringTest, SizeCountsBytes)
{
    EXPECT_EQ(2u, String("\xC3\xA4").size());
    EXPECT_EQ(4u, String("\xF0\x9F\x98\x80").size());
}

TEST(StringTest, FindGivesFirstPosition)
{
    const String text("a#b#c");
    EXPECT_EQ(0u, text.find('a'));
    EXPECT_EQ(1u, text.find('#'));
    EXPECT_EQ(4u, text.find('c'));
}

TEST(StringTest, FindOfAbsentCharacterGivesAllOnes)
{
    EXPECT_EQ(notFound, String("abc").find('x'));
    EXPECT_EQ(notFound, String().find('x'));
    EXPECT_EQ(notFound, String("abc").find(1, 'a'));
    EXPECT_EQ(notFound, String::npos);
}

TEST(StringTest, FindFromStartLooksAtAndBehindIt)
{
    const String text("a#b#c");
    EXPECT_EQ(1u, text.find(0, '#'));
    EXPECT_EQ(1u, text.find(1, '#'));
    EXPECT_EQ(3u, text.find(2, '#'));
    EXPECT_EQ(notFound, text.find(4, '#'));
}

TEST(StringTest, FindFromBehindTheEndFindsNothing)
{
    const String text("abc");
    EXPECT_EQ(notFound, text.find(3, 'c'));
    EXPECT_EQ(notFound, text.find(4, 'c'));
    EXPECT_EQ(notFound, text.find(notFound, 'c'));
}

TEST(StringTest, SubStringTakesLengthFromStart)
{
    const String text("ArrayOfOthers");
    EXPECT_EQ("rayOfOther", bytes(text.subString(2, 10)));
    EXPECT_EQ("Array", bytes(text.subString(0, 5)));
    EXPECT_EQ("", bytes(text.subString(3, 0)));
}

TEST(StringTest, SubStringWithAllOnesTakesAllToTheEnd)
{
    const String text("#lamp");
    EXPECT_EQ("lamp", bytes(text.subString(1, notFound)));
    EXPECT_EQ("#lamp", bytes(text.subString(0, notFound)));
    EXPECT_EQ("", bytes(text.subString(5, notFound)));
}

TEST(StringTest, SubStringStopsAtTheEndOfTheText)
{
    const String text("abc");
    EXPECT_EQ("bc", bytes(text.subString(1, 100)));
    EXPECT_EQ("", bytes(text.subString(3, 1)));
    EXPECT_EQ("", bytes(text.subString(100, 1)));
    EXPECT_EQ("", bytes(text.subString(notFound, notFound)));
}

TEST(StringTest, EqualityIsExact)
{
    EXPECT_TRUE(String("abc") == String("abc"));
    EXPECT_FALSE(String("abc") == String("abC"));
    EXPECT_FALSE(String("abc") == String("abc "));
    EXPECT_FALSE(String("abc") == String("ab"));
    EXPECT_TRUE(String() == String(""));
    EXPECT_TRUE(String("a") != String("b"));
    EXPECT_FALSE(String("a") != String("a"));
}

namespace {

struct NoCaseRow : Row {
    const char* a;
    const char* b;
    int sign; // of the result
};

class StringNoCaseTest : public testing::TestWithParam<NoCaseRow> {};

int sign(int number)
{
    return number == 0 ? 0 : (number < 0 ? -1 : 1);
}

} // namespace

TEST_P(StringNoCaseTest, ComparesBothWays)
{
    const NoCaseRow& row = GetParam();
    EXPECT_EQ(sign(String::compareNoCase(row.a, row.b)), row.sign);
    EXPECT_EQ(sign(String::compareNoCase(row.b, row.a)), -row.sign);
}

INSTANTIATE_ROWS(Rows, StringNoCaseTest, {"BothEmpty", "", "", 0}, {"SameText", "POSITION", "POSITION", 0},
                 {"OtherCase", "Position", "pOSITION", 0},
                 {"WholeAlphabet", "abcdefghijklmnopqrstuvwxyz", "ABCDEFGHIJKLMNOPQRSTUVWXYZ", 0},
                 {"OtherLetter", "abc", "abd", -1}, {"PrefixIsLess", "NORMA", "normal", -1},
                 {"EmptyIsLess", "", "a", -1}, {"NeighboursOfTheLettersAreNotFolded", "@[`{", "`{@[", -1},
                 {"ControlBytesAreNotFolded", "\x01", "!", -1}, {"OnlyAsciiIsFolded", "\xC3\x84", "\xC3\xA4", -1},
                 {"HighBytesAreGreaterThanAscii", "z", "\xC3\xA4", -1}, {"SameHighBytes", "\xC3\xA4X", "\xC3\xA4x", 0});

namespace {

class StringRealTest : public testing::TestWithParam<Case<const char*, float>> {};

class StringBadRealTest : public testing::TestWithParam<Case<const char*>> {};

} // namespace

TEST_P(StringRealTest, IsParsed)
{
    float value = 77.0f;
    EXPECT_TRUE(String::strToReal32(GetParam().given, value));
    EXPECT_EQ(value, GetParam().expected);
    EXPECT_EQ(std::signbit(value), std::signbit(GetParam().expected));
}

INSTANTIATE_ROWS(Rows, StringRealTest, {"Zero", "0", 0.0f}, {"NegativeZero", "-0", -0.0f}, {"Integer", "42", 42.0f},
                 {"Negative", "-1.5", -1.5f}, {"LeadingPlus", "+2.25", 2.25f}, {"NoDigitBeforeThePoint", ".5", 0.5f},
                 {"NoDigitBehindThePoint", "3.", 3.0f}, {"Exponent", "1e3", 1000.0f},
                 {"CapitalExponent", "125E-3", 0.125f}, {"PositiveExponent", "1e+2", 100.0f},
                 {"LeadingZeros", "007", 7.0f}, {"BlanksAround", "  8 \t", 8.0f},
                 {"LineFeedsAround", "\r\n-8\n", -8.0f}, {"BlankBeforePlus", " +1", 1.0f},
                 {"LargestFloat", "3.40282347e38", std::numeric_limits<float>::max()},
                 {"SmallestNormal", "1.17549435e-38", std::numeric_limits<float>::min()},
                 {"RoundedToFloat", "0.1", 0.1f}, {"ManyDigits", "0.333333333333333333333333333333333", 1.0f / 3.0f});

TEST_P(StringBadRealTest, IsRefusedAndLeavesTheValueAlone)
{
    float value = 77.0f;
    EXPECT_FALSE(String::strToReal32(GetParam().given, value));
    EXPECT_EQ(77.0f, value);
}

INSTANTIATE_ROWS(Rows, StringBadRealTest, {"Empty", ""}, {"Blanks", "   "}, {"Word", "red"}, {"TextBehind", "1.5m"},
                 {"SecondNumberBehind", "1 2"}, {"DecimalComma", "1,5"}, {"SignAlone", "-"}, {"PlusAlone", "+"},
                 {"PlusMinus", "+-1"}, {"TwoPluses", "++1"}, {"TwoMinuses", "--1"}, {"BlankBehindSign", "- 1"},
                 {"PointAlone", "."}, {"OpenExponent", "1e"}, {"Hexadecimal", "0x10"}, {"TooLarge", "1e39"},
                 {"TooLargeNegative", "-1e39"}, {"Infinity", "inf"}, {"SpeltInfinity", "INFINITY"},
                 {"NegativeInfinity", "-inf"}, {"PlusInfinity", "+inf"}, {"NotANumber", "nan"},
                 {"NegativeNotANumber", " -NaN "}, {"NumberedNotANumber", "nan(12)"});

TEST(StringTest, NumberIsParsedAlikeInEveryLocale)
{
    struct CommaPoint : std::numpunct<char> {
        char do_decimal_point() const override { return ','; }
        char do_thousands_sep() const override { return '.'; }
    };
    const std::locale before = std::locale::global(std::locale(std::locale::classic(), new CommaPoint));
    const std::string cBefore = std::setlocale(LC_ALL, nullptr);
    for (const char* name : {"de_DE.UTF-8", "de_DE", "fr_FR.UTF-8"}) {
        if (std::setlocale(LC_ALL, name) != nullptr) {
            break;
        }
    }
    float value = 0.0f;
    EXPECT_TRUE(String::strToReal32("1234.5", value));
    EXPECT_EQ(1234.5f, value);
    EXPECT_FALSE(String::strToReal32("1,5", value));
    EXPECT_EQ("1234567", bytes(VeskValue(1234567).toString(VeskValue::nilValue)));
    std::setlocale(LC_ALL, cBefore.c_str());
    std::locale::global(before);
}

TEST(StringTest, Utf8FormHasTheBytesOfTheText)
{
    const String text("m\xC3\xB6"
                      "del \xE2\x82\xAC");
    const CString narrow = text.getUTF8String();
    EXPECT_STREQ("m\xC3\xB6"
                 "del \xE2\x82\xAC",
                 static_cast<const char*>(narrow));
    EXPECT_STREQ("", static_cast<const char*>(String().getUTF8String()));
}

TEST(StringTest, Utf8FormOutlivesTheText)
{
    auto text = std::make_unique<String>("a path that is long enough to stand in memory of its own.dae");
    const CString narrow = text->getUTF8String();
    text.reset();
    EXPECT_STREQ("a path that is long enough to stand in memory of its own.dae", static_cast<const char*>(narrow));
}

TEST(StringTest, Utf8FormDoesNotFollowLaterChangesOfTheText)
{
    String text("before");
    const CString narrow = text.getUTF8String();
    text.append("after");
    EXPECT_STREQ("before", static_cast<const char*>(narrow));
}

TEST(StringTest, EmptyIsOneSharedEmptyText)
{
    EXPECT_TRUE(String::EMPTY().empty());
    EXPECT_EQ(&String::EMPTY(), &String::EMPTY());
}

TEST(StringTest, PlusPutsNarrowTextBeforeText)
{
    const String right("8");
    const String result = "Asked for array of size: " + right;
    EXPECT_EQ("Asked for array of size: 8", bytes(result));
    EXPECT_EQ("8", bytes(right));
    EXPECT_EQ("", bytes("" + String()));
}

TEST(StringTest, IsStreamable)
{
    std::ostringstream out;
    out << String("a b") << String() << String("c");
    EXPECT_EQ("a bc", out.str());
}

TEST(VeskValueTest, HasVirtualDestructor)
{
    EXPECT_TRUE(std::has_virtual_destructor<VeskValue>::value);
}

TEST(VeskValueTest, NilValueIsAnUnsignedConstant)
{
    EXPECT_TRUE((std::is_same<decltype(VeskValue::nilValue), const unsigned>::value));
    EXPECT_EQ(0xFFFFFFFFu, unsigned(VeskValue::nilValue));
}

TEST(VeskValueTest, PrintsPlainDecimalText)
{
    const std::pair<unsigned, const char*> rows[] = {
        {0u, "0"},
        {7u, "7"},
        {10u, "10"},
        {1234567890u, "1234567890"},
        {0x7FFFFFFFu, "2147483647"},
        {0x80000000u, "2147483648"},
        {0xFFFFFFFEu, "4294967294"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(bytes(VeskValue(row.first).toString(VeskValue::nilValue)), row.second);
    }
}

TEST(VeskValueTest, PrintsTheValueAlsoWhenItIsNil)
{
    EXPECT_EQ("4294967295", bytes(VeskValue(VeskValue::nilValue).toString(VeskValue::nilValue)));
    EXPECT_EQ("5", bytes(VeskValue(5).toString(5)));
}
