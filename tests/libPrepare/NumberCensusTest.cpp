#include <libPrepare/document/NumberCensus.h>

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(NumberCensusTest, NumbersOfAnyFormAreCountedAtAnyPlace)
{
    for (std::size_t before = 0; before < 140; ++before) {
        for (const char* const word :
             {"7", "-1.25", ".5", "-.5", "5.", "-5.", "1e-5", "+1", "0000000.0000000", "1e-999"}) {
            const std::string list = std::string(before, ' ') + word + "\n-2.5 " + std::string(100, '3') + " 4";
            const libPrepare::NumberCensus census = libPrepare::numberCensusOf(list);
            EXPECT_EQ(4U, census.words) << list;
            EXPECT_TRUE(census.isFinite) << list;
        }
    }
}

TEST(NumberCensusTest, WhatIsNoFiniteNumberIsSeenAtAnyPlace)
{
    for (std::size_t before = 0; before < 140; ++before) {
        for (const std::string& word :
             {std::string("-"), std::string("."), std::string("-."), std::string("1.2.3"), std::string("1..2"),
              std::string("1-2"), std::string("--1"), std::string("1-"), std::string("1.-"), std::string("x"),
              std::string("1x"), std::string("1,5"), std::string("NaN"), std::string("-INF"), std::string("1e999"),
              std::string(400, '9')}) {
            const std::string list = std::string(before, ' ') + word + " -2.5 " + std::string(100, '3') + " 4";
            const libPrepare::NumberCensus census = libPrepare::numberCensusOf(list);
            EXPECT_EQ(4U, census.words) << list;
            EXPECT_FALSE(census.isFinite) << list;
        }
    }
}

} // namespace
