#include <libPrepare/document/Records.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <string>
#include <vector>

namespace {

using namespace libPrepare;
using Row = std::vector<double>;

class Source {
public:
    explicit Source(const std::string& array, const std::string& attributes, const std::string& params = "")
    {
        m_xml.load_string(("<COLLADA><source id='s'>" + array + "<technique_common><accessor source='#a' " +
                           attributes + ">" + params + "</accessor></technique_common></source></COLLADA>")
                              .c_str(),
                          pugi::parse_full | pugi::parse_ws_pcdata);
    }
    Records read(Reading reading) { return Records::read(m_document, m_document.root().child("source"), reading); }

private:
    pugi::xml_document m_xml;
    Options m_options;
    Report m_report;
    Document m_document{m_xml, "memory.dae", m_options, m_report};
};

constexpr char xy[] = "<param name='X' type='float'/><param name='Y' type='float'/>";

std::string array(const std::string& list)
{
    return "<float_array id='a'>" + list + "</float_array>";
}

std::vector<Row> rowsOf(const Records& records)
{
    std::vector<Row> result;
    for (std::size_t i = 0; i < records.count(); ++i) {
        result.emplace_back(records[i], records[i] + records.width());
    }
    return result;
}

TEST(RecordsTest, SourceWithoutNumbersHasNone)
{
    Source words("<Name_array id='a'>1 2</Name_array>", "count='2'");
    Source nothing("", "count='2'");
    for (const Reading reading : {Reading::now, Reading::onDemand}) {
        EXPECT_EQ(0U, words.read(reading).count());
        EXPECT_EQ(0U, nothing.read(reading).count());
    }
}

TEST(RecordsTest, WordThatIsNoFiniteNumberKeepsItsPlace)
{
    for (const Reading reading : {Reading::now, Reading::onDemand}) {
        for (const char* const word : {"x", "NaN", "INF", "1e999"}) {
            Source source(array(std::string("1 ") + word + " 3"), "count='3'");
            const Records records = source.read(reading);
            ASSERT_EQ(3U, records.count());
            EXPECT_FALSE(records.areFinite());
            EXPECT_FALSE(std::isfinite(records[1][0]));
            EXPECT_EQ(3, records[2][0]);
        }
    }
}

TEST(RecordsTest, ListOfSeveralTextsIsOneList)
{
    for (const Reading reading : {Reading::now, Reading::onDemand}) {
        Source source(array("1 2<!-- and -->5<![CDATA[ 3]]>"), "count='3'");
        EXPECT_EQ((std::vector<Row>{{1}, {25}, {3}}), rowsOf(source.read(reading)));
    }
}

TEST(RecordsTest, ShortenedRecordsAreTheFirst)
{
    for (const Reading reading : {Reading::now, Reading::onDemand}) {
        Source source(array("1 2 3 4 5 6"), "count='3' stride='2'", xy);
        Records records = source.read(reading);
        records.shorten(2);
        EXPECT_EQ((std::vector<Row>{{1, 2}, {3, 4}}), rowsOf(records));
        records.shorten(0);
        EXPECT_EQ(0U, records.count());
    }
}

TEST(RecordsTest, ReorderedRecordsAreThoseOfTheIndices)
{
    for (const Reading reading : {Reading::now, Reading::onDemand}) {
        Source source(array("1 2 3 4 5 6"), "count='3' stride='2'", xy);
        EXPECT_EQ((std::vector<Row>{{5, 6}, {1, 2}}), rowsOf(source.read(reading).reordered({2, 0})));
    }
}

TEST(RecordsTest, FirstNumbersAreTakenOut)
{
    for (const Reading reading : {Reading::now, Reading::onDemand}) {
        Source source(array("1 2 3 4 5 6"), "count='3' stride='2'", xy);
        Records records = source.read(reading);
        EXPECT_EQ((Row{1, 3, 5}), records.takeFirstNumbers());
        EXPECT_EQ(0U, records.count());
    }
}

struct Picked {
    const char* name;
    const char* list;
    const char* accessor; // its attributes
    const char* params;
    std::size_t width;
    std::vector<Row> rows;
};

std::string caseName(const testing::TestParamInfo<Picked>& info)
{
    return info.param.name;
}

class PickedTest : public testing::TestWithParam<Picked> {};

TEST_P(PickedTest, RecordsAreThoseOfTheAccessor)
{
    for (const Reading reading : {Reading::now, Reading::onDemand}) {
        Source source(array(GetParam().list), GetParam().accessor, GetParam().params);
        const Records records = source.read(reading);
        EXPECT_EQ(GetParam().width, records.width());
        EXPECT_EQ(GetParam().rows, rowsOf(records));
        EXPECT_TRUE(records.areFinite());
    }
}

constexpr char onlyY[] = "<param type='float'/><param name='Y' type='float'/>";
INSTANTIATE_TEST_SUITE_P(Rules, PickedTest,
                         testing::Values(Picked{"One", "1 2 3", "count='3'", "", 1, {{1}, {2}, {3}}},
                                         Picked{"Pairs", "1 2 3 4", "count='2' stride='2'", xy, 2, {{1, 2}, {3, 4}}},
                                         Picked{"LastPairIsNotWhole", "1 2 3", "count='2' stride='2'", xy, 2, {{1, 2}}},
                                         Picked{"FewerThanTheListHas", "1 2 3 4", "count='2'", "", 1, {{1}, {2}}},
                                         Picked{"NoMoreThanTheListHas", "1 2", "count='9'", "", 1, {{1}, {2}}},
                                         Picked{"Offset", "9 1 2", "count='2' offset='1'", "", 1, {{1}, {2}}},
                                         Picked{"NamedParam", "1 2 3 4", "count='2' stride='2'", onlyY, 1, {{2}, {4}}},
                                         Picked{"Gap", "1 2 3 4 5 6", "count='2' stride='3'", xy, 2, {{1, 2}, {4, 5}}},
                                         Picked{"Matrix",
                                                "1 2 3 4 5 6 7 8",
                                                "count='2' stride='4'",
                                                "<param name='M' type='float2x2'/>",
                                                4,
                                                {{1, 2, 3, 4}, {5, 6, 7, 8}}},
                                         Picked{"WithoutCount", "1 2", "", "", 1, {}},
                                         Picked{"EmptyList", "", "count='2'", "", 0, {}}),
                         caseName);

} // namespace
