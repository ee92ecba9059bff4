#include "support/VideoTest.h"

#include <libVideo/SceneGraph/document/ColladaReader.h>
#include <libVideo/SceneGraph/document/ListReader.h>

#include <algorithm>
#include <cctype>
#include <cfloat>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <random>
#include <system_error>

#ifndef LIBVIDEO_CORPUS
#define LIBVIDEO_CORPUS "" // a folder of further documents
#endif

namespace {

using namespace libVideo;
using namespace testSupport;

using libVideo::detail::ColladaReader;
using libVideo::detail::ElementType;
using libVideo::detail::ListReader;

// The names of an array as one or the other reads them.
std::vector<std::string> namesOf(const std::string& text, bool isOwn);

TEST(ListReaderTest, NamesReadAsStock)
{
    const std::string longWord(1'000, 'x');
    for (const std::string& text :
         {std::string(), std::string(" \n"), std::string("A"), std::string("A A A"),
          std::string("LINEAR LINEAR STEP LINEAR"), std::string(" A\tB\nB\rA "), std::string("A AA AAA AA A"),
          std::string("a A a"), std::string("1 2 2"), std::string("caf\xC3\xA9 caf\xC3\xA9 caf"),
          std::string("x\vy x\fy x"), longWord + " " + longWord + " y", "x" + std::string(300, ' ') + "x"}) {
        EXPECT_EQ(namesOf(text, false), namesOf(text, true)) << text;
    }
    EXPECT_EQ((std::vector<std::string>{"LINEAR", "LINEAR", "STEP"}), namesOf("LINEAR LINEAR STEP", true));
}

// Has the elements of schema 1.4.1, and reads by the document model's own means or by those of the library.
class Model {
public:
    explicit Model(bool isOwn)
        : m_reader(isOwn ? std::make_unique<ColladaReader>(m_dae) : nullptr),
          m_dae(isOwn ? &m_reader->database() : nullptr, m_reader.get(), "1.4.1")
    {}
    ~Model() { m_dae.clear(); }
    Model(const Model&) = delete;
    Model& operator=(const Model&) = delete;

    DAE& dae() { return m_dae; }
    bool isOwn() const { return m_reader != nullptr; }

private:
    std::unique_ptr<ColladaReader> m_reader;
    DAE m_dae;
};

enum class Kind { Doubles, Unsigneds, Signeds };

const Kind allKinds[] = {Kind::Doubles, Kind::Unsigneds, Kind::Signeds};

std::string nameOf(Kind kind)
{
    return kind == Kind::Doubles ? "Doubles" : kind == Kind::Unsigneds ? "Unsigneds" : "Signeds";
}

void PrintTo(Kind kind, std::ostream* out)
{
    *out << nameOf(kind);
}

// Which of the three kinds of lists an attribute is, if any.
std::optional<Kind> kindOf(daeMetaAttribute* attribute)
{
    if (attribute == nullptr || !attribute->isArrayAttribute()) {
        return std::nullopt;
    }
    switch (attribute->getType()->getTypeEnum()) {
    case daeAtomicType::DoubleType:
        return Kind::Doubles;
    case daeAtomicType::ULongType:
        return Kind::Unsigneds;
    case daeAtomicType::LongType:
        return Kind::Signeds;
    default:
        return std::nullopt;
    }
}

// An element's list of the kind.
daeMetaAttribute* attributeOf(DAE& dae, Kind kind)
{
    const int element = kind == Kind::Doubles     ? domFloat_array::ID()
                        : kind == Kind::Unsigneds ? domP::ID()
                                                  : domInt_array::ID();
    return dae.getMeta(element)->getValueAttribute();
}

// A list's numbers as they lie in memory.
struct Reading {
    bool isAccepted = false;
    std::size_t elementSize = 0;
    std::size_t count = 0;
    std::vector<std::uint64_t> bits;

    bool operator==(const Reading& other) const
    {
        return isAccepted == other.isAccepted && elementSize == other.elementSize && count == other.count &&
               bits == other.bits;
    }
};

void PrintTo(const Reading& reading, std::ostream* out)
{
    *out << (reading.isAccepted ? "accepted" : "refused") << ", " << reading.count << " numbers of "
         << reading.elementSize << " bytes:";
    for (std::size_t i = 0; i < std::min<std::size_t>(reading.bits.size(), 20); ++i) {
        char word[20];
        std::snprintf(word, sizeof word, " %016llx", static_cast<unsigned long long>(reading.bits[i]));
        *out << word;
    }
}

Reading readingOf(const daeArray& array, bool isAccepted)
{
    Reading reading;
    reading.isAccepted = isAccepted;
    reading.elementSize = array.getElementSize();
    reading.count = array.getCount();
    if (reading.elementSize == sizeof(std::uint64_t)) {
        reading.bits.resize(reading.count);
        if (reading.count != 0) {
            std::memcpy(reading.bits.data(), array.getRaw(0), reading.count * sizeof(std::uint64_t));
        }
    }
    return reading;
}

// Reads a text, in pieces of that size, that lie in blocks of their own, so that the address sanitizer sees each step
// beyond their ends.
Reading readInPieces(daeMetaAttribute* attribute, Kind kind, const std::string& text, std::size_t size)
{
    const std::unique_ptr<daeArray> array(attribute->getType()->createArray());
    ListReader reader;
    reader.begin(kind == Kind::Doubles     ? ElementType::Value::doubles
                 : kind == Kind::Unsigneds ? ElementType::Value::unsigneds
                                           : ElementType::Value::signeds,
                 *attribute->getType());
    for (std::size_t begin = 0; begin < text.size(); begin += size) {
        const std::vector<char> piece(text.begin() + static_cast<std::ptrdiff_t>(begin),
                                      text.begin() + static_cast<std::ptrdiff_t>(std::min(text.size(), begin + size)));
        reader.add(piece.data(), piece.size());
    }
    reader.finish(*array);
    EXPECT_EQ(array->getCount(), array->getCapacity()) << "there is memory that nothing uses";
    return readingOf(*array, true);
}

Reading read(Model& model, Kind kind, const std::string& text)
{
    daeMetaAttribute* const attribute = attributeOf(model.dae(), kind);
    if (model.isOwn()) {
        return readInPieces(attribute, kind, text, std::max<std::size_t>(text.size(), 1));
    }
    const std::unique_ptr<daeArray> array(attribute->getType()->createArray());
    std::string copy = text;
    const bool isAccepted = attribute->getType()->stringToArray(copy.data(), *array) != 0;
    return readingOf(*array, isAccepted);
}

// A text with its blanks and odd bytes made visible.
std::string shown(const std::string& text)
{
    std::string result = "\"";
    for (const char c : text.substr(0, 1200)) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= 0x20 && byte < 0x7f) {
            result += c;
        } else {
            char code[8];
            std::snprintf(code, sizeof code, "\\x%02x", static_cast<unsigned>(byte));
            result += code;
        }
    }
    return result + (text.size() > 1200 ? "\"..." : "\"");
}

std::uint64_t bitsOf(double number)
{
    std::uint64_t bits = 0;
    std::memcpy(&bits, &number, sizeof bits);
    return bits;
}

// ---------------------------------------------------------------------------------------------------------------------
// What is installed where

std::vector<std::string> namesOf(const std::string& text, bool isOwn)
{
    Model model(isOwn);
    const domName_arrayRef element =
        daeSafeCast<domName_array>(model.dae().getMeta(domName_array::ID())->create().cast());
    daeAtomicType& type = *model.dae().getMeta(domName_array::ID())->getValueAttribute()->getType();
    if (isOwn) {
        ListReader reader;
        reader.begin(ElementType::Value::names, type);
        for (const char c : text) {
            reader.add(&c, 1);
        }
        reader.finish(element->getValue());
    } else {
        std::string copy = text;
        type.stringToArray(copy.data(), element->getValue());
    }
    std::vector<std::string> names;
    for (std::size_t i = 0; i < element->getValue().getCount(); ++i) {
        names.emplace_back(element->getValue()[i]);
    }
    return names;
}

TEST(ListReaderTest, PiecesOfAnySizeReadAsTheWhole)
{
    const SilentDocumentModel handler;
    Model model(true);
    std::string text = " 1 -2.5 3e2\t.5 +7\n-.25 x 1,5 18446744073709551615 0x1F 017 --1 1e400 \r\n";
    text += text + text + text + text + text; // more than the reader holds without a block
    for (const Kind kind : allKinds) {
        const Reading whole = read(model, kind, text);
        EXPECT_EQ(6u * 13u, whole.count);
        for (std::size_t size = 1; size < 80; ++size) {
            EXPECT_EQ(whole, readInPieces(attributeOf(model.dae(), kind), kind, text, size)) << size;
        }
    }
}

TEST(ListReaderTest, NumbersReadAsWritten)
{
    Model model(true);
    const double infinity = std::numeric_limits<double>::infinity();
    // 2^53 + 1 lies halfway between its neighbours, of which 2^53 is the even one.
    const std::vector<std::pair<std::string, std::vector<double>>> doubles{
        {"0 -0 1 -1.5", {0.0, -0.0, 1.0, -1.5}},
        {".5 -.5 1. +2", {0.5, -0.5, 1.0, 2.0}},
        {"1e3 1E-2 25e-1", {1000.0, 0.01, 2.5}},
        {"9007199254740993 9007199254740993.0000000001", {9007199254740992.0, 9007199254740994.0}},
        {"4.9406564584124654e-324 2e-324", {std::ldexp(1.0, -1074), 0.0}},
        {"1e400 -1e400 -1e-400", {infinity, -infinity, -0.0}},
        {"x 1,5 0x10 007", {0.0, 1.0, 16.0, 7.0}},
    };
    for (const auto& [text, numbers] : doubles) {
        std::vector<std::uint64_t> bits;
        for (const double number : numbers) {
            bits.push_back(bitsOf(number));
        }
        EXPECT_EQ(bits, read(model, Kind::Doubles, text).bits) << text;
    }
    const std::vector<std::uint64_t> unsigneds{0, 7,  18446744073709551615u, 18446744073709551615u, 3,
                                               0, 10, 18446744073709551615u};
    EXPECT_EQ(unsigneds,
              read(model, Kind::Unsigneds, "0 007 18446744073709551615 18446744073709551616 3.7 x +10 -1").bits);
    const std::vector<std::uint64_t> signeds{0, static_cast<std::uint64_t>(-7), 9223372036854775807u,
                                             9223372036854775808u, static_cast<std::uint64_t>(-3)};
    EXPECT_EQ(signeds, read(model, Kind::Signeds, "-0 -7 9223372036854775807 -9223372036854775808 -3.7").bits);
}

// ---------------------------------------------------------------------------------------------------------------------
// One text given to both

class ListReaderTextTest : public ::testing::TestWithParam<Case<std::string>> {
protected:
    void expectSame(const std::string& text)
    {
        for (const Kind kind : allKinds) {
            const unsigned before = m_handler.warningCount();
            const Reading expected = read(m_stock, kind, text);
            const unsigned between = m_handler.warningCount();
            EXPECT_EQ(expected, read(m_installed, kind, text)) << nameOf(kind) << " of " << shown(text);
            // What the document model warns of, it warns of as often.
            EXPECT_EQ(between - before, m_handler.warningCount() - between) << nameOf(kind) << " of " << shown(text);
        }
    }

    const SilentDocumentModel m_handler;
    Model m_stock{false};
    Model m_installed{true};
};

TEST_P(ListReaderTextTest, ReadsAsStock)
{
    const std::string& text = GetParam().given;
    expectSame(text);
    expectSame("1 " + text + " 2");
    expectSame("7 " + text);
    expectSame(text + "\t-8");
    expectSame(text + "\n" + text);
    expectSame(" " + text);
    expectSame(text + " ");
    expectSame("\r\n\t " + text + " \t\r\n");
}

INSTANTIATE_ROWS(Signs, ListReaderTextTest, {"Plus", "+"}, {"Minus", "-"}, {"PlusMinus", "+-"}, {"MinusMinus", "--"},
                 {"MinusPlusOne", "-+1"}, {"MinusMinusOne", "--1"}, {"PlusPlusOne", "++1"}, {"PlusOne", "+1"},
                 {"PlusOneAndAHalf", "+1.5"}, {"PlusPointFive", "+.5"}, {"MinusOne", "-1"}, {"Zero", "0"},
                 {"MinusZero", "-0"}, {"PlusZero", "+0"}, {"MinusZeroPointZero", "-0.0"},
                 {"MinusZeroWithExponent", "-0e5"}, {"OneMinus", "1-"}, {"OneMinusTwo", "1-2"}, {"OnePlusTwo", "1+2"},
                 {"SignApart", "- 1"},
                 {"UnicodeMinus", "\xe2\x88\x92"
                                  "1"});

INSTANTIATE_ROWS(Points, ListReaderTextTest, {"TrailingPoint", "1."}, {"MinusTrailingPoint", "-1."},
                 {"LeadingPoint", ".5"}, {"MinusLeadingPoint", "-.5"}, {"Point", "."}, {"MinusPoint", "-."},
                 {"PlusPoint", "+."}, {"TwoPoints", ".."}, {"PointPointFive", "..5"}, {"TwoPointsInside", "1.2.3"},
                 {"TrailingTwoPoints", "1.."}, {"PointMinusFive", ".-5"}, {"Comma", "1,5"}, {"LeadingComma", ",5"},
                 {"CommaList", "1,2,3"}, {"Thousands", "1,234,567"}, {"Apostrophe", "1'000"}, {"Underscore", "1_000"},
                 {"FractionForIntegers", "3.7"}, {"NegativeFractionForIntegers", "-3.7"},
                 {"PointAndExponentForIntegers", "1.5e3"}, {"TrailingPointForIntegers", "12."});

INSTANTIATE_ROWS(Exponents, ListReaderTextTest, {"Exponent", "1e5"}, {"CapitalExponent", "1E5"},
                 {"NegativeCapitalExponent", "1E-5"}, {"PlusExponent", "1e+5"}, {"ExponentWithZeros", "1e0005"},
                 {"LoneE", "e"}, {"LeadingE", "e5"}, {"PointE", ".e5"}, {"TrailingPointE", "1.e5"},
                 {"LeadingPointE", ".5e5"}, {"OpenExponent", "1e"}, {"OpenPlusExponent", "1e+"},
                 {"OpenMinusExponent", "1e-"}, {"TwoSignsInExponent", "1e--5"}, {"PointInExponent", "1e5.5"},
                 {"TwoExponents", "1e5e5"}, {"ExponentThenLetters", "1e5abc"}, {"FortranExponent", "1d5"},
                 {"LargestDouble", "1.7976931348623157e308"}, {"BelowOverflow", "1.797693134862315807e308"},
                 {"AboveOverflow", "1.797693134862315808e308"}, {"JustOverflow", "1.7976931348623159e308"},
                 {"Overflow", "1e309"}, {"NegativeOverflow", "-1e309"}, {"FarOverflow", "1e99999"},
                 {"ExponentBeyondInt", "1e2147483648"}, {"ExponentBeyondLong", "1e99999999999999999999"},
                 {"ZeroWithExponentBeyondLong", "0e99999999999999999999"},
                 {"NegativeExponentBeyondLong", "1e-99999999999999999999"}, {"Underflow", "1e-400"},
                 {"NegativeUnderflow", "-1e-400"}, {"ExponentBeyondFloat", "1e39"},
                 {"LongOverflow", "1" + repeated("0", 400)}, {"LongButInRange", "1" + repeated("0", 400) + "e-400"},
                 {"LongFractionButInRange", "0." + repeated("0", 400) + "1e401"},
                 {"LongUnderflow", "0." + repeated("0", 400) + "1"});

INSTANTIATE_ROWS(
    Rounding, ListReaderTextTest, {"SmallestSubnormal", "4.9406564584124654e-324"},
    {"SmallestSubnormalShort", "5e-324"}, {"BelowHalfOfTheSmallest", "2.4703282292062327e-324"},
    {"AboveHalfOfTheSmallest", "2.4703282292062328e-324"}, {"LargestSubnormal", "2.2250738585072009e-308"},
    {"SmallestNormal", "2.2250738585072014e-308"}, {"BetweenSubnormalAndNormal", "2.2250738585072011e-308"},
    {"BetweenSubnormalAndNormalUp", "2.2250738585072012e-308"}, {"NegativeSubnormal", "-3e-310"},
    {"HalfwayToEven", "9007199254740993"}, {"HalfwayToEvenUp", "9007199254740995"},
    {"AboveHalfway", "9007199254740993." + repeated("0", 40) + "1"},
    {"BelowHalfway", "9007199254740992." + repeated("9", 40)},
    {"HalfwayAboveOne", "1.00000000000000011102230246251565404236316680908203125"},
    {"JustAboveHalfwayAboveOne", "1.00000000000000011102230246251565404236316680908203126"},
    {"JustBelowHalfwayAboveOne", "1.00000000000000011102230246251565404236316680908203124"},
    {"FarBehindHalfwayAboveOne", "1.00000000000000011102230246251565404236316680908203125" + repeated("0", 800) + "1"},
    {"OneTenth", "0.1"}, {"OneThirdSeventeenDigits", "0.33333333333333331"},
    {"OneThirdTwentyDigits", "0.33333333333333333333"},
    {"PiFiftyDigits", "3.14159265358979323846264338327950288419716939937510"},
    {"NineteenDigits", "1234567890123456789"}, {"TwentyDigits", "12345678901234567890"},
    {"NineteenDigitsAndPoint", "123456789.0123456789"}, {"SevenHundredDigits", repeated("1234567890", 70)},
    {"SevenHundredDigitsBehindPoint", "0." + repeated("1234567890", 70)},
    {"SevenHundredDigitsInRange", repeated("9876543210", 70) + "e-700"},
    {"SevenHundredNinesBehindPoint", "0." + repeated("9", 700)},
    {"SevenHundredZerosBefore", repeated("0", 700) + "1.5"},
    {"NegativeSevenHundredDigits", "-" + repeated("1234567890", 70)},
    {"FiveThousandDigits", "0." + repeated("1234567890", 500)}, {"TenToTwentyTwo", "1e22"},
    {"TenToTwentyThree", "1e23"}, {"FastPathEdge", "9007199254740991e22"}, {"BeyondFastPath", "9007199254740993e22"});

INSTANTIATE_ROWS(Words, ListReaderTextTest, {"NaN", "NaN"}, {"LowerNan", "nan"}, {"UpperNan", "NAN"},
                 {"MinusNaN", "-NaN"}, {"MinusLowerNan", "-nan"}, {"PlusNaN", "+NaN"}, {"NanWithNumber", "nan(123)"},
                 {"NaNWithNumber", "NaN(123)"}, {"NanOpen", "nan("}, {"NaNAndMore", "NaNx"}, {"NaNTwice", "NaNNaN"},
                 {"OneNaN", "1NaN"}, {"Na", "Na"}, {"Inf", "INF"}, {"MinusInf", "-INF"}, {"PlusInf", "+INF"},
                 {"LowerInf", "inf"}, {"MinusLowerInf", "-inf"}, {"MixedInf", "Inf"}, {"Infinity", "infinity"},
                 {"CapitalInfinity", "Infinity"}, {"UpperInfinity", "INFINITY"}, {"MinusInfinity", "-infinity"},
                 {"MinusUpperInfinity", "-INFINITY"}, {"OpenInfinity", "infinit"}, {"InfAndMore", "INFx"}, {"In", "in"},
                 {"MicrosoftInfinity", "1.#INF"}, {"MicrosoftNan", "-1.#IND"}, {"MicrosoftQuietNan", "1.#QNAN"},
                 {"Letter", "x"}, {"Letters", "abc"}, {"True", "true"}, {"NumberAndLetters", "1.5abc"},
                 {"IntegerAndLetters", "15abc"}, {"LettersAndNumber", "abc1.5"}, {"FloatSuffix", "1.5f"},
                 {"Percent", "50%"}, {"Hash", "#5"}, {"Brackets", "(5)"}, {"Quotes", "\"5\""});

INSTANTIATE_ROWS(Bases, ListReaderTextTest, {"Hexadecimal", "0x10"}, {"CapitalHexadecimal", "0X1F"},
                 {"NegativeHexadecimal", "-0x10"}, {"HexadecimalFloat", "0x1.8p3"},
                 {"HexadecimalFloatNegativePower", "0x1p-1074"}, {"HexadecimalOpen", "0x"},
                 {"HexadecimalWithoutDigits", "0xg"}, {"HexadecimalPoint", "0x."}, {"HexadecimalOpenPower", "0x1p"},
                 {"HexadecimalDigitsAlone", "1F"}, {"Binary", "0b101"}, {"OctalLooking", "010"},
                 {"OctalLookingEight", "08"}, {"NegativeOctalLooking", "-017"}, {"OctalLookingFraction", "010.5"},
                 {"ManyZeros", "0000000000000000000000000000000000000001"}, {"OnlyZeros", "00000000"});

INSTANTIATE_ROWS(Integers, ListReaderTextTest, {"BelowTwoTo31", "2147483647"}, {"TwoTo31", "2147483648"},
                 {"BelowTwoTo32", "4294967295"}, {"TwoTo32", "4294967296"}, {"BelowTwoTo63", "9223372036854775807"},
                 {"TwoTo63", "9223372036854775808"}, {"AboveTwoTo63", "9223372036854775809"},
                 {"MinusTwoTo63", "-9223372036854775808"}, {"BelowMinusTwoTo63", "-9223372036854775809"},
                 {"BelowTwoTo64", "18446744073709551615"}, {"TwoTo64", "18446744073709551616"},
                 {"AboveTwoTo64", "18446744073709551617"}, {"MinusBelowTwoTo64", "-18446744073709551615"},
                 {"MinusTwoTo64", "-18446744073709551616"}, {"TenTimesTwoTo64", "184467440737095516160"},
                 {"HundredDigits", repeated("1234567890", 10)},
                 {"MinusHundredDigits", "-" + repeated("1234567890", 10)},
                 {"BelowTwoTo64WithZeros", "000018446744073709551615"}, {"MinusOneForUnsigned", "-1"},
                 {"MinusTwelveForUnsigned", "-12"}, {"TwoTo64WithLetters", "18446744073709551616x"});

INSTANTIATE_ROWS(Blanks, ListReaderTextTest, {"Empty", ""}, {"Space", " "}, {"OnlyBlanks", " \t\r\n  \n"},
                 {"Spaces", "1 2  3   4"}, {"Tabs", "1\t2\t\t3"}, {"CarriageReturns", "1\r2\r\r3"},
                 {"LineFeeds", "1\n2\n\n3"}, {"LineEnds", "1\r\n2\r\n"}, {"VerticalTabs", "1\v2"},
                 {"VerticalTabBefore", "\v2"}, {"VerticalTabBehind", "2\v"}, {"VerticalTabAlone", "\v"},
                 {"FormFeeds", "1\f2"}, {"FormFeedBefore", "\f2"}, {"FormFeedBehind", "2\f"}, {"FormFeedAlone", "\f"},
                 {"NoBreakSpace", "1\xc2\xa0"
                                  "2"},
                 {"NoBreakSpaceBefore", "\xc2\xa0"
                                        "2"},
                 {"NoBreakSpaceAlone", "\xc2\xa0"},
                 {"LoneByteOfANoBreakSpace", "1\xa0"
                                             "2"},
                 {"NextLine", "1\xc2\x85"
                              "2"},
                 {"ByteOrderMark", "\xef\xbb\xbf"
                                   "2"},
                 {"IdeographicSpace", "1\xe3\x80\x80"
                                      "2"},
                 {"ArabicDigit", "\xd9\xa1"},
                 {"ControlByte", "1\x01"
                                 "2"},
                 {"Escape", "\x1b"
                            "2"},
                 {"UnitSeparator", "1\x1f"
                                   "2"},
                 {"Delete", "1\x7f"
                            "2"},
                 {"HighByte", "\xff"}, {"ManyNumbers", repeated("1.5 ", 1000)});

class ListReaderKindTest : public ::testing::TestWithParam<Kind> {};

std::string kindTestName(const ::testing::TestParamInfo<Kind>& info)
{
    return nameOf(info.param);
}

INSTANTIATE_TEST_SUITE_P(Kinds, ListReaderKindTest, ::testing::ValuesIn(allKinds), kindTestName);

// Each byte but the end, alone and beside digits.
TEST_P(ListReaderKindTest, EveryByteReadsAsStock)
{
    const SilentDocumentModel handler;
    Model stock(false);
    Model installed(true);
    for (int byte = 1; byte < 256; ++byte) {
        const std::string part(1, static_cast<char>(byte));
        for (const std::string& text : {part, part + "2", "1" + part, "1" + part + "2", "-" + part + "2", "." + part,
                                        "1e" + part, "1e" + part + "2", "1." + part + "2", part + part}) {
            EXPECT_EQ(read(stock, GetParam(), text), read(installed, GetParam(), text)) << shown(text);
        }
    }
}

// All texts of up to five of these bytes.
TEST_P(ListReaderKindTest, EveryShortTextReadsAsStock)
{
    const SilentDocumentModel handler;
    Model stock(false);
    Model installed(true);
    const std::string bytes = "019+-.eExN ";
    std::size_t count = bytes.size();
    for (std::size_t length = 1; length <= 5; ++length, count *= bytes.size()) {
        std::string all;
        for (std::size_t number = 0; number < count; ++number) {
            std::size_t rest = number;
            for (std::size_t i = 0; i < length; ++i, rest /= bytes.size()) {
                all += bytes[rest % bytes.size()];
            }
            all += '\n';
            if (number % 1000 == 999 || number + 1 == count) {
                ASSERT_EQ(read(stock, GetParam(), all), read(installed, GetParam(), all)) << shown(all);
                all.clear();
            }
        }
    }
}

// ---------------------------------------------------------------------------------------------------------------------
// Made-up tokens

class TokenSource {
public:
    explicit TokenSource(std::uint64_t seed) : m_engine(seed) {}

    // Below a bound. The distributions of the C++ library differ between its makers, this does not.
    std::size_t below(std::size_t bound) { return static_cast<std::size_t>(m_engine() % bound); }

    /// A token of any shape, without blanks.
    std::string token()
    {
        switch (below(32)) {
        case 0:
            return word();
        case 1:
            return based();
        case 2:
            return bytes("0123456789+-.eE", 1 + below(10));
        case 3:
            return bytes("0123456789+-.eExXnNaAiIfFpPdD,()#_", 1 + below(12));
        case 4:
            return highBytes();
        case 5:
            return number() + bytes("abcxyz.-+,eE%", 1 + below(3));
        case 6:
            return halfway();
        case 7:
            return printed("%a", anyDouble());
        default:
            return number();
        }
    }

    /// As above, of what a document can hold.
    std::string documentToken()
    {
        std::string result;
        do {
            result = token();
        } while (std::any_of(result.begin(), result.end(), [](char c) { return static_cast<signed char>(c) < 0; }));
        return result;
    }

    std::string separator()
    {
        static const char* const separators[] = {" ", " ", " ", " ", "\n", "\t", "  ", "\r\n", "\r", " \t\n "};
        return separators[below(std::size(separators))];
    }

private:
    std::string bytes(const char* alphabet, std::size_t count)
    {
        std::string result;
        const std::size_t size = std::strlen(alphabet);
        for (std::size_t i = 0; i < count; ++i) {
            result += alphabet[below(size)];
        }
        return result;
    }

    std::string digits(std::size_t count) { return bytes("0123456789", count); }

    std::string sign()
    {
        static const char* const signs[] = {"", "", "", "", "-", "-", "-", "+", "--"};
        return signs[below(below(8) == 0 ? 9 : 8)];
    }

    // All exponents and with them the infinities and NaNs are as likely.
    double anyDouble()
    {
        const std::uint64_t bits = m_engine();
        double result = 0.0;
        std::memcpy(&result, &bits, sizeof result);
        return result;
    }

    double subnormal()
    {
        const std::uint64_t bits = m_engine() >> (12 + below(52));
        double result = 0.0;
        std::memcpy(&result, &bits, sizeof result);
        return result;
    }

    static std::string printed(const char* format, double number)
    {
        char buffer[400];
        std::snprintf(buffer, sizeof buffer, format, number);
        return buffer;
    }

    std::string number()
    {
        switch (below(14)) {
        case 0:
            return sign() + digits(1 + below(3));
        case 1:
            return sign() + digits(1 + below(20));
        case 2:
            return sign() + digits(1 + below(4)) + "." + digits(below(10));
        case 3:
            return sign() + digits(below(3)) + "." + digits(1 + below(20));
        case 4:
            return sign() + digits(1 + below(18)) + "." + digits(below(18)) + exponent(30);
        case 5:
            return sign() + digits(1 + below(18)) + exponent(350);
        case 6:
            return sign() + digits(1) + "." + digits(below(20)) + exponent(330);
        case 7:
            return printed("%.17g", anyDouble());
        case 8:
            return printed(below(2) == 0 ? "%.17g" : "%.25e", subnormal());
        case 9:
            return printed(below(2) == 0 ? "%.16g" : "%.15e", anyDouble());
        case 10:
            return printed("%g", static_cast<double>(static_cast<std::int64_t>(m_engine())) / 1e16);
        case 11:
            return sign() + std::string(below(30), '0') + digits(1 + below(20));
        case 12:
            return sign() + nearPowerOfTwo();
        default:
            return below(8) == 0 ? sign() + digits(20 + below(300)) + "." + digits(below(300)) + exponent(600)
                                 : sign() + digits(17 + below(10)) + "." + digits(below(20)) + exponent(310);
        }
    }

    std::string exponent(std::size_t bound)
    {
        static const char* const marks[] = {"e", "E", "e-", "E-", "e+", "E+"};
        return marks[below(std::size(marks))] + std::to_string(below(bound));
    }

    std::string nearPowerOfTwo()
    {
        const std::uint64_t power = std::uint64_t(1) << (53 + below(11));
        switch (below(4)) {
        case 0:
            return std::to_string(power + below(9) - 4);
        case 1:
            return std::to_string(std::uint64_t(0) - below(5));
        case 2:
            return "184467440737095516" + digits(2);
        default:
            return "92233720368547758" + digits(2);
        }
    }

    std::string word()
    {
        static const char* const words[] = {"nan",       "inf",   "infinity", "nan(1)", "infin",
                                            "nan(abc)x", "infxy", "na",       "i",      "nan("};
        std::string result = words[below(std::size(words))];
        const std::size_t mode = below(4);
        for (char& c : result) {
            if (mode == 0 || (mode == 1 && below(2) == 0)) {
                c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
            }
        }
        if (mode == 2) {
            result = below(2) == 0 ? "NaN" : "INF";
        }
        return sign() + result + (below(4) == 0 ? digits(1) : "");
    }

    std::string based()
    {
        std::string result = sign() + (below(2) == 0 ? "0x" : "0X") + bytes("0123456789abcdefABCDEF", below(18));
        if (below(2) == 0) {
            result += "." + bytes("0123456789abcdef", below(5));
        }
        if (below(2) == 0) {
            result += bytes("pP", 1) + bytes("+-", below(2)) + digits(below(4));
        }
        return result;
    }

    std::string highBytes()
    {
        std::string result = below(2) == 0 ? number() : "";
        for (std::size_t i = 0; i <= below(3); ++i) {
            result += static_cast<char>(128 + below(128));
        }
        return result + (below(2) == 0 ? number() : "");
    }

    // The number midway between two neighbours with all its digits, or one a little beside it.
    std::string halfway()
    {
        const double low = std::fabs(below(4) == 0 ? subnormal() : anyDouble());
        const double high = std::nextafter(low, std::numeric_limits<double>::infinity());
        if (!std::isfinite(high)) {
            return number();
        }
        char buffer[1200];
        const long double middle = low + (static_cast<long double>(high) - low) / 2;
        std::snprintf(buffer, sizeof buffer, "%.800Le", middle);
        std::string mantissa = buffer;
        const std::size_t mark = mantissa.find('e');
        const std::string power = mantissa.substr(mark);
        mantissa.resize(mark);
        mantissa.resize(mantissa.find_last_not_of("0.") + 1);
        if (mantissa.size() < 3) {
            return number();
        }
        switch (below(4)) {
        case 0:
            return sign() + mantissa + power;
        case 1:
            return sign() + mantissa + std::string(below(30), '0') + "1" + power;
        case 2:
            --mantissa.back();
            return sign() + mantissa + std::string(1 + below(30), '9') + power;
        default:
            return sign() + mantissa.substr(0, 3 + below(mantissa.size() - 2)) + power;
        }
    }

    std::mt19937_64 m_engine;
};

static_assert(LDBL_MANT_DIG > DBL_MANT_DIG);

class ListReaderTokenTest : public ::testing::TestWithParam<std::tuple<Kind, unsigned>> {};

std::string tokenTestName(const ::testing::TestParamInfo<std::tuple<Kind, unsigned>>& info)
{
    return nameOf(std::get<0>(info.param)) + "_Seed" + std::to_string(std::get<1>(info.param));
}

// A quarter of a million for each seed and kind.
INSTANTIATE_TEST_SUITE_P(Seeds, ListReaderTokenTest,
                         ::testing::Combine(::testing::ValuesIn(allKinds), ::testing::Values(1u, 2u, 3u, 4u)),
                         tokenTestName);

TEST_P(ListReaderTokenTest, MadeUpTokensReadAsStock)
{
    const std::size_t chunkCount = 250;
    const std::size_t chunkSize = 1000;
    const SilentDocumentModel handler;
    const auto [kind, seed] = GetParam();
    Model stock(false);
    Model installed(true);
    TokenSource source(seed);
    for (std::size_t chunk = 0; chunk < chunkCount; ++chunk) {
        std::vector<std::string> tokens;
        std::string text;
        for (std::size_t i = 0; i < chunkSize; ++i) {
            tokens.push_back(source.token());
            text += tokens.back() + source.separator();
        }
        const Reading expected = read(stock, kind, text);
        ASSERT_EQ(chunkSize, expected.count); // none was lost on the way to the comparison
        const Reading actual = read(installed, kind, text);
        if (expected == actual) {
            continue;
        }
        for (const std::string& token : tokens) {
            ASSERT_EQ(read(stock, kind, token), read(installed, kind, token)) << shown(token);
        }
        FAIL() << "the tokens agree one by one, but not in " << shown(text);
    }
}

// ---------------------------------------------------------------------------------------------------------------------
// Whole documents

struct Walk {
    std::size_t elements = 0;
    std::size_t lists = 0;
    std::size_t numbers = 0;
};

// Walks two trees side by side.
void compareTrees(daeElement* stockRoot, daeElement* installedRoot, Walk& walk)
{
    std::vector<std::pair<daeElement*, daeElement*>> pending{{stockRoot, installedRoot}};
    while (!pending.empty()) {
        const auto [stock, installed] = pending.back();
        pending.pop_back();
        ++walk.elements;
        ASSERT_STREQ(stock->getElementName(), installed->getElementName());
        ASSERT_STREQ(stock->getTypeName(), installed->getTypeName());
        daeMetaAttribute* const stockValue = stock->getMeta()->getValueAttribute();
        daeMetaAttribute* const installedValue = installed->getMeta()->getValueAttribute();
        ASSERT_EQ(stockValue == nullptr, installedValue == nullptr) << stock->getElementName();
        const std::optional<Kind> kind = kindOf(stockValue);
        ASSERT_EQ(kind, kindOf(installedValue)) << stock->getElementName();
        if (kind) {
            ASSERT_NE(nullptr, installedValue->get(installed));
            const Reading expected = readingOf(*reinterpret_cast<daeArray*>(stockValue->get(stock)), true);
            const Reading actual = readingOf(*reinterpret_cast<daeArray*>(installedValue->get(installed)), true);
            ASSERT_EQ(sizeof(std::uint64_t), expected.elementSize);
            ASSERT_EQ(expected, actual) << "<" << stock->getElementName() << "> with "
                                        << shown(stock->getCharData().substr(0, 400));
            ++walk.lists;
            walk.numbers += expected.count;
        } else if (stockValue != nullptr) {
            ASSERT_EQ(stock->getCharData(), installed->getCharData()) << stock->getElementName();
        }
        const daeElementRefArray stockChildren = stock->getChildren();
        const daeElementRefArray installedChildren = installed->getChildren();
        ASSERT_EQ(stockChildren.getCount(), installedChildren.getCount()) << stock->getElementName();
        for (std::size_t i = 0; i < stockChildren.getCount(); ++i) {
            pending.emplace_back(stockChildren[i].cast(), installedChildren[i].cast());
        }
    }
}

// A document in which every list of numbers is made up.
std::string madeUpDocument(std::uint64_t seed)
{
    TokenSource source(seed);
    // One of the lists is long, most are short, some are empty.
    const auto list = [&source](const std::string& element) {
        std::string result = "<" + element + ">";
        const std::size_t count = source.below(40) == 0 ? 500 : source.below(20);
        for (std::size_t i = 0; i < count; ++i) {
            result += source.documentToken() + source.separator();
        }
        return result + "</" + element.substr(0, element.find(' ')) + ">";
    };
    std::string geometries;
    for (int i = 0; i < 6; ++i) {
        const std::string id = "geometry" + std::to_string(i);
        geometries += "<geometry id='" + id + "'><mesh><source id='" + id + "-floats'>" +
                      list("float_array id='" + id + "-list' count='9'") + "</source><source id='" + id + "-ints'>" +
                      list("int_array id='" + id + "-int-list' count='9'") + "</source><vertices id='" + id +
                      "-vertices'><input semantic='POSITION' source='#" + id + "-floats'/></vertices>";
        const std::string input = "<input semantic='VERTEX' source='#" + id + "-vertices' offset='0'/>";
        geometries += "<lines count='1'>" + input + list("p") + "</lines>";
        geometries += "<polygons count='2'>" + input + list("p") + "<ph>" + list("p") + list("h") + "</ph></polygons>";
        geometries += "<polylist count='1'>" + input + list("vcount") + list("p") + "</polylist>";
        geometries += "<triangles count='1'>" + input + list("p") + "</triangles>";
        geometries += "<tristrips count='2'>" + input + list("p") + list("p") + "</tristrips></mesh></geometry>";
    }
    std::string nodes;
    for (int i = 0; i < 6; ++i) {
        nodes += "<node id='node" + std::to_string(i) + "'>" + list("lookat") + list("matrix") + list("rotate") +
                 list("scale") + list("skew") + list("translate") + "</node>";
    }
    const std::string controller =
        "<library_controllers><controller id='controller'><skin source='#geometry0'>" + list("bind_shape_matrix") +
        "<source id='weights'>" + list("float_array id='weight-list' count='3'") +
        "</source><joints><input semantic='JOINT' source='#weights'/></joints><vertex_weights count='1'>"
        "<input semantic='JOINT' source='#weights' offset='0'/>" +
        list("vcount") + list("v") + "</vertex_weights></skin></controller></library_controllers>";
    const std::string light = "<library_lights><light id='light'><technique_common><ambient>" + list("color") +
                              "</ambient></technique_common></light></library_lights>";
    const std::string effect =
        "<library_effects><effect id='effect'><profile_COMMON><technique sid='common'><phong><emission>" +
        list("color") + "</emission><diffuse>" + list("color") +
        "</diffuse></phong></technique></profile_COMMON></effect></library_effects>";
    const std::string animation = "<library_animations><animation id='animation'><source id='times'>" +
                                  list("float_array id='time-list' count='3'") +
                                  "</source></animation></library_animations>";
    return ColladaBuilder(animation + controller + effect + "<library_geometries>" + geometries +
                          "</library_geometries>" + light)
        .addScene(nodes)
        .text();
}

void compareDocumentTexts(const std::string& text, Walk& walk)
{
    Model stock(false);
    Model installed(true);
    daeElement* const stockRoot = stock.dae().openFromMemory("memory.dae", text.c_str());
    daeElement* const installedRoot = installed.dae().openFromMemory("memory.dae", text.c_str());
    ASSERT_NE(nullptr, stockRoot);
    ASSERT_NE(nullptr, installedRoot);
    compareTrees(stockRoot, installedRoot, walk);
}

TEST(ListReaderDocumentTest, MadeUpDocumentsReadAsStock)
{
    const SilentDocumentModel handler;
    for (std::uint64_t seed = 1; seed <= 20; ++seed) {
        Walk walk;
        compareDocumentTexts(madeUpDocument(seed), walk);
        if (HasFatalFailure()) {
            FAIL() << "seed " << seed;
        }
        // 11 lists in a geometry, 6 in a node, and 8 others; what nothing was compared of proves nothing.
        EXPECT_EQ(11u * 6u + 6u * 6u + 8u, walk.lists) << "seed " << seed;
        EXPECT_GT(walk.numbers, 300u) << "seed " << seed;
    }
}

TEST(ListReaderDocumentTest, OddWaysToWriteAListReadAsStock)
{
    const SilentDocumentModel handler;
    std::string nodes;
    for (const char* const list : {
             "<translate/>",
             "<translate></translate>",
             "<translate>   </translate>",
             "<translate>\n\t1\r\n2\t3\n</translate>",
             "<translate>1 2<!-- a comment --> 3</translate>",
             "<translate>1 2<!-- a comment --></translate>",
             "<translate><!-- a comment -->1 2 3</translate>",
             "<translate>1 <?an instruction?>2 3</translate>",
             "<translate><![CDATA[1 2 3]]></translate>",
             "<translate><![CDATA[1]]> 2 3</translate>",
             "<translate>1&#32;2&#9;3&#10;4&#13;5</translate>",
             "<translate>1&#xA0;2 3&#x2003;4</translate>",
             "<translate>&#49;.5 &lt;2 &amp;3</translate>",
             "<translate sid='a'>1 2 3 4 5 6 7 8 9</translate>",
             "<translate>NaN INF -INF nan 1e400 x</translate>",
         }) {
        nodes += std::string("<node>") + list + "</node>";
    }
    Walk walk;
    compareDocumentTexts(ColladaBuilder().addScene(nodes).text(), walk);
    EXPECT_EQ(15u, walk.lists);
}

// A list that takes more than one of the blocks in which a parser hands text over.
TEST(ListReaderDocumentTest, LongListsReadAsStock)
{
    const SilentDocumentModel handler;
    TokenSource source(7);
    std::string floats;
    std::string indices;
    for (int i = 0; i < 100000; ++i) {
        floats += source.documentToken() + source.separator();
        indices += source.documentToken() + source.separator();
    }
    Walk walk;
    compareDocumentTexts(ColladaBuilder("<library_geometries><geometry><mesh><source id='s'><float_array id='f' "
                                        "count='1'>" +
                                        floats + "</float_array></source><vertices id='v'/><triangles count='1'><p>" +
                                        indices + "</p></triangles></mesh></geometry></library_geometries>")
                             .text(),
                         walk);
    EXPECT_EQ(2u, walk.lists);
    EXPECT_EQ(200000u, walk.numbers);
}

// ---------------------------------------------------------------------------------------------------------------------
// A locale with a comma

// The numbers of the process are written as in a country with a comma, until the end.
class CommaNumbers {
public:
    CommaNumbers() : m_before(std::setlocale(LC_NUMERIC, nullptr))
    {
        for (const char* const name : {"de_DE.UTF-8", "de_DE.utf8", "de_DE", "fr_FR.UTF-8", "fr_FR.utf8"}) {
            if (take(name)) {
                return;
            }
        }
        // One of its own, where none is installed.
        m_folder = std::make_unique<TemporaryFile>("", "empty");
        const std::string folder = m_folder->folder().string();
        const std::string command = "localedef -i de_DE -f ISO-8859-1 '" + folder + "/comma' >/dev/null 2>&1";
        if (std::system(command.c_str()) != 0) {
            return;
        }
        const char* const path = std::getenv("LOCPATH");
        const std::optional<std::string> before = path != nullptr ? std::optional<std::string>(path) : std::nullopt;
        setenv("LOCPATH", folder.c_str(), 1);
        take("comma");
        if (before) {
            setenv("LOCPATH", before->c_str(), 1);
        } else {
            unsetenv("LOCPATH");
        }
    }
    ~CommaNumbers() { std::setlocale(LC_NUMERIC, m_before.c_str()); }
    CommaNumbers(const CommaNumbers&) = delete;
    CommaNumbers& operator=(const CommaNumbers&) = delete;

    bool isAvailable() const { return m_isAvailable; }

private:
    bool take(const char* name)
    {
        m_isAvailable =
            std::setlocale(LC_NUMERIC, name) != nullptr && std::strcmp(",", std::localeconv()->decimal_point) == 0;
        return m_isAvailable;
    }

    std::string m_before;
    std::unique_ptr<TemporaryFile> m_folder;
    bool m_isAvailable = false;
};

TEST(ListReaderLocaleTest, PlainNumbersDoNotDependOnTheLocale)
{
    Model stock(false);
    Model installed(true);
    const CommaNumbers comma;
    if (!comma.isAvailable()) {
        GTEST_SKIP() << "there is no locale with a comma";
    }
    const std::string text = "1.5 -2.25 .5 -.5 1.5e3 -1.5E-3 0.1 1. 3 -4 9007199254740993.5";
    std::vector<std::uint64_t> expected;
    for (const double number : {1.5, -2.25, 0.5, -0.5, 1500.0, -0.0015, 0.1, 1.0, 3.0, -4.0, 9007199254740994.0}) {
        expected.push_back(bitsOf(number));
    }
    EXPECT_EQ(expected, read(installed, Kind::Doubles, text).bits);
    EXPECT_NE(expected, read(stock, Kind::Doubles, text).bits); // the locale does bite

    const std::vector<std::uint64_t> signeds{1, static_cast<std::uint64_t>(-2), 3000};
    EXPECT_EQ(signeds, read(installed, Kind::Signeds, "1 -2 3000").bits);
    const std::vector<std::uint64_t> unsigneds{1, 2, 3000};
    EXPECT_EQ(unsigneds, read(installed, Kind::Unsigneds, "1 2 3000").bits);
}

TEST(ListReaderLocaleTest, DocumentsWithPlainNumbersDoNotDependOnTheLocale)
{
    const CommaNumbers comma;
    if (!comma.isAvailable()) {
        GTEST_SKIP() << "there is no locale with a comma";
    }
    Model model(true);
    const std::string text = ColladaBuilder().addScene("<node><translate>1.5 -2.5 .25</translate></node>").text();
    daeElement* const root = model.dae().openFromMemory("memory.dae", text.c_str());
    ASSERT_NE(nullptr, root);
    domTranslate* const translate = daeSafeCast<domTranslate>(root->getDescendant("translate"));
    ASSERT_NE(nullptr, translate);
    ASSERT_EQ(3u, translate->getValue().getCount());
    EXPECT_EQ(1.5, translate->getValue()[0]);
    EXPECT_EQ(-2.5, translate->getValue()[1]);
    EXPECT_EQ(0.25, translate->getValue()[2]);
}

// ---------------------------------------------------------------------------------------------------------------------
// Lives of the DAE

const char* const smallGeometry =
    "<library_geometries><geometry id='g'><mesh><source id='s'><float_array id='f' count='4'>1.5 x -0.25 "
    "1e400</float_array></source><source id='t'><int_array id='i' count='2'>-7 8</int_array></source>"
    "<vertices id='v'/><triangles count='1'><p>0 1 18446744073709551616</p></triangles></mesh></geometry>"
    "</library_geometries>";

TEST(ListReaderLifetimeTest, OneDaeReadsManyDocuments)
{
    const SilentDocumentModel handler;
    Model model(true);
    const std::string text = ColladaBuilder(smallGeometry).text();
    for (int i = 0; i < 50; ++i) {
        ASSERT_NE(nullptr, model.dae().openFromMemory("memory.dae", text.c_str())); // closes the one before
        EXPECT_EQ(1, model.dae().getDocCount());
        auto* const integers =
            daeSafeCast<domInt_array>(model.dae().getDatabase()->idLookup("i", model.dae().getDoc(0)));
        ASSERT_NE(nullptr, integers);
        ASSERT_EQ(2u, integers->getValue().getCount());
        EXPECT_EQ(-7, integers->getValue()[0]);
    }
}

TEST(ListReaderLifetimeTest, ElementsOutliveTheDae)
{
    const SilentDocumentModel handler;
    domFloat_arrayRef floats;
    domPRef indices;
    {
        Model model(true);
        const std::string text = ColladaBuilder(smallGeometry).text();
        daeElement* const root = model.dae().openFromMemory("memory.dae", text.c_str());
        ASSERT_NE(nullptr, root);
        floats = daeSafeCast<domFloat_array>(root->getDescendant("float_array"));
        indices = daeSafeCast<domP>(root->getDescendant("p"));
        ASSERT_TRUE(floats && indices);
    }
    ASSERT_EQ(4u, floats->getValue().getCount());
    EXPECT_EQ(1.5, floats->getValue()[0]);
    EXPECT_EQ(0.0, floats->getValue()[1]);
    EXPECT_EQ(-0.25, floats->getValue()[2]);
    EXPECT_EQ(std::numeric_limits<double>::infinity(), floats->getValue()[3]);
    ASSERT_EQ(3u, indices->getValue().getCount());
    EXPECT_EQ(18446744073709551615u, indices->getValue()[2]);
}

} // namespace
