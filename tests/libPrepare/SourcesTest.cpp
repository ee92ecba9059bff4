#include <libPrepare/geometry/Sources.h>

#include <gtest/gtest.h>

#include <pugixml.hpp>

#include <string>
#include <vector>

namespace {

using libPrepare::ColumnCensus;

// The layout of a source with this list, whose accessor claims far more than it has.
libPrepare::SourceLayout layoutOf(const std::string& list)
{
    pugi::xml_document xml;
    xml.load_string(("<COLLADA><source id='s'><float_array id='a'>" + list +
                     "</float_array><technique_common><accessor source='#a' count='100000'/></technique_common>"
                     "</source></COLLADA>")
                        .c_str(),
                    pugi::parse_full | pugi::parse_ws_pcdata);
    const libPrepare::Options options;
    libPrepare::Report report;
    libPrepare::Document document(xml, "a.dae", options, report);
    const libPrepare::SourceLayout* const layout = document.sources().find(document.root().child("source"));
    return layout == nullptr ? libPrepare::SourceLayout() : *layout;
}

TEST(SourceLayoutTest, NumbersOfAnyFormAreCountedAtAnyPlace)
{
    for (std::size_t before = 0; before < 140; ++before) {
        for (const char* const word :
             {"7", "-1.25", ".5", "-.5", "5.", "-5.", "1e-5", "+1", "0000000.0000000", "1e-999"}) {
            const std::string list = std::string(before, ' ') + word + "\n-2.5 " + std::string(100, '3') + " 4";
            const libPrepare::SourceLayout layout = layoutOf(list);
            EXPECT_EQ(4U, layout.count) << list;
            EXPECT_TRUE(layout.isFinite) << list;
        }
    }
}

TEST(SourceLayoutTest, WhatIsNoFiniteNumberIsSeenAtAnyPlace)
{
    for (std::size_t before = 0; before < 140; ++before) {
        for (const std::string& word :
             {std::string("-"), std::string("."), std::string("-."), std::string("1.2.3"), std::string("1..2"),
              std::string("1-2"), std::string("--1"), std::string("1-"), std::string("1.-"), std::string("x"),
              std::string("1x"), std::string("1,5"), std::string("NaN"), std::string("-INF"), std::string("1e999"),
              std::string(400, '9')}) {
            const std::string list = std::string(before, ' ') + word + " -2.5 " + std::string(100, '3') + " 4";
            const libPrepare::SourceLayout layout = layoutOf(list);
            EXPECT_EQ(4U, layout.count) << list;
            EXPECT_FALSE(layout.isFinite) << list;
        }
    }
}

TEST(IndexListTest, NumbersOfAnyLengthAreRead)
{
    EXPECT_EQ((std::vector<std::int32_t>{0, 7, 12, 345, 6789, 12345, 678901, 2345678, 90123456, 2147483647, 0, 12}),
              libPrepare::indices(" 0 7\t12\n345 6789\r12345 678901 2345678 90123456 2147483647 00000000000000000000 "
                                  "0000000000000000000000012"));
}

TEST(IndexListTest, NumbersAtTheEndAreReadWhole)
{
    std::string digits;
    std::int32_t value = 0;
    for (int digit = 1; digit < 10; ++digit) {
        digits += static_cast<char>('0' + digit);
        value = 10 * value + digit;
        EXPECT_EQ(std::vector<std::int32_t>{value}, libPrepare::indices(digits));
        EXPECT_EQ((std::vector<std::int32_t>{value, 1}), libPrepare::indices(digits + " 1"));
        EXPECT_EQ((std::vector<std::int32_t>{-1, 1}), libPrepare::indices(digits + "x 1      "));
    }
}

TEST(IndexListTest, WhatIsNoIndexKeepsItsPlace)
{
    EXPECT_EQ((std::vector<std::int32_t>{-1, -1, -1, -1, -1, 3}),
              libPrepare::indices("-1 1.5 x 2147483648 99999999999999999999 3"));
}

TEST(IndexListTest, CensusCountsWholeTuples)
{
    const ColumnCensus census = libPrepare::censusOf("1 20 3 -1 5 6", 2, 10);
    EXPECT_EQ(3U, census.tuples);
    EXPECT_EQ((std::vector<std::int32_t>{5, 20}), census.greatest);
    EXPECT_EQ((std::vector<bool>{false, true}), census.hasInvalid);
    EXPECT_EQ(1U, libPrepare::censusOf("1 20 3 -1 5 6", 2, 1).tuples);
}

} // namespace
