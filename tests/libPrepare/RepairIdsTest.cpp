#include "OnePass.h"

#include "support/Rows.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using test::OnePass;

TEST(RepairIdsTest, SceneAndNodeOfOneIdAreToldApartByWhatNamesThem)
{
    const OnePass result(&libPrepare::repairIds,
                         "<library_animations><animation><channel source='#s' target='a/matrix'/></animation>"
                         "</library_animations><library_nodes><node><instance_node url='#a'/></node></library_nodes>"
                         "<library_visual_scenes><visual_scene id='a'><node id='a'/></visual_scene>"
                         "</library_visual_scenes><scene><instance_visual_scene url='#a'/></scene>");
    EXPECT_EQ("a", result.value("//visual_scene/@id"));
    EXPECT_EQ("a-2", result.value("//visual_scene/node/@id"));
    EXPECT_EQ("#a", result.value("//instance_visual_scene/@url"));
    EXPECT_EQ("#a-2", result.value("//instance_node/@url"));
    EXPECT_EQ("a-2/matrix", result.value("//channel/@target"));
    EXPECT_EQ("#s", result.value("//channel/@source"));
    EXPECT_EQ(1U, result.report.findings.size());
}

TEST(RepairIdsTest, OfEqualIdsTheFirstOfAFittingKindAnswers)
{
    const OnePass result(&libPrepare::repairIds,
                         "<g><mesh id='x'/><source id='x'/><source id='x'/><vertices id='x'/>"
                         "<input semantic='POSITION' source='#x'/><input semantic='VERTEX' source='#x'/></g>");
    EXPECT_EQ("x-2", result.value("//source[1]/@id"));
    EXPECT_EQ("x-3", result.value("//source[2]/@id"));
    EXPECT_EQ("#x-2", result.value("//input[1]/@source"));
    EXPECT_EQ("#x-4", result.value("//input[2]/@source"));
}

TEST(RepairIdsTest, AFreshIdIsNoneThatIsThere)
{
    const OnePass result(&libPrepare::repairIds, "<a id='x'/><b id='x'/><c id='x-2'/>");
    EXPECT_EQ("x-3", result.value("//b/@id"));
    EXPECT_EQ("x-2", result.value("//c/@id"));
}

struct OddId : testSupport::Row {
    const char* id;
    const char* reference;
    const char* newId;
};

class OddIdTest : public testing::TestWithParam<OddId> {};

TEST_P(OddIdTest, IsMadePlainWithItsReferences)
{
    const OnePass result(&libPrepare::repairIds, std::string("<light id='") + GetParam().id +
                                                     "'/><instance_light url='" + GetParam().reference + "'/>");
    EXPECT_EQ(GetParam().newId, result.value("//light/@id"));
    EXPECT_EQ('#' + std::string(GetParam().newId), result.value("//instance_light/@url"));
    const bool isPlain = std::string(GetParam().id) == GetParam().newId;
    EXPECT_EQ(isPlain ? 0U : 1U, std::size_t(std::count_if(result.report.findings.begin(), result.report.findings.end(),
                                                           [](const auto& each) { return each.kind == "odd-id"; })));
    const OnePass again(&libPrepare::repairIds, result.all());
    EXPECT_TRUE(again.report.findings.empty());
}

INSTANTIATE_ROWS(Rows, OddIdTest, {"Plain", "a.b-c_d~(1):x/y", "#a.b-c_d~(1):x/y", "a.b-c_d~(1):x/y"},
                 {"BeyondAscii", "N\xC5\x93ud", "#N\xC5\x93ud", "N_ud"}, {"Blank", "a b", "#a b", "a_b"},
                 {"EncodedBlank", "a b", "#a%20b", "a_b"}, {"EncodedInTheIdToo", "a%20b", "#a%20b", "a%20b"},
                 {"LonePercent", "100%", "#100%", "100_"}, {"Brackets", "a[1]", "#a[1]", "a_1_"},
                 {"BlanksAround", " a ", " #a ", "a"}, {"EncodedWithoutNeed", "a-b", "#a%2Db", "a-b"},
                 {"OwnFile", "a", "scene.dae#a", "a"}, {"OwnFileInAFolder", "a", "file:///c:/x/scene.dae#a", "a"},
                 {"Empty", "", "#", "light"});

TEST(RepairIdsTest, AllFormsOfReferencesFollow)
{
    const OnePass result(
        &libPrepare::repairIds,
        "<library_images><image id='p q'/></library_images><node id='n m'/>"
        "<newparam sid='s'><surface><init_from>p q</init_from></surface></newparam>"
        "<skeleton>#n m</skeleton><extra><technique profile='X'><target> #n m </target></technique></extra>"
        "<channel target='n m/translate.X'/><instance_rigid_body target='#n m'/>"
        "<camera><extra><technique><target>n m</target></technique></extra></camera>");
    EXPECT_EQ("n_m", result.value("//node/@id"));
    EXPECT_EQ("p_q", result.text("//surface/init_from"));
    EXPECT_EQ("#n_m", result.text("//skeleton"));
    EXPECT_EQ("#n_m", result.text("//extra//target"));
    EXPECT_EQ("n_m", result.text("//camera//target"));
    EXPECT_EQ("n_m/translate.X", result.value("//channel/@target"));
    EXPECT_EQ("#n_m", result.value("//instance_rigid_body/@target"));
}

TEST(RepairIdsTest, IdsOfImagesAreNamesThatAreReadWhole)
{
    const OnePass result(&libPrepare::repairIds,
                         "<library_images><image id='a(1)/b'/></library_images><geometry id='c(1)/d'/>"
                         "<newparam sid='s'><surface><init_from>a(1)/b</init_from></surface></newparam>"
                         "<newparam sid='t'><surface><init_from>#a(1)/b</init_from></surface></newparam>"
                         "<newparam sid='u'><sampler2D><source>a(1)/b</source></sampler2D></newparam>"
                         "<texture texture='a(1)/b'/>");
    EXPECT_EQ("a_1__b", result.value("//image/@id"));
    EXPECT_EQ("c(1)/d", result.value("//geometry/@id"));
    EXPECT_EQ("a_1__b", result.text("//newparam[@sid='s']//init_from"));
    EXPECT_EQ("a_1__b", result.text("//newparam[@sid='t']//init_from"));
    EXPECT_EQ("a_1__b", result.text("//newparam[@sid='u']//source"));
    EXPECT_EQ("a_1__b", result.value("//texture/@texture"));
}

TEST(RepairIdsTest, SamplerThatNamesASurfaceDoesNotFollowAnImageOfThatName)
{
    const OnePass result(&libPrepare::repairIds,
                         "<library_images><image id='p q'/></library_images><effect>"
                         "<newparam sid='p q'><surface><init_from>p q</init_from></surface></newparam>"
                         "<newparam sid='s'><sampler2D><source>p q</source></sampler2D></newparam></effect>");
    EXPECT_EQ("p q", result.text("//sampler2D/source"));
    EXPECT_EQ("p_q", result.text("//surface/init_from"));
}

TEST(RepairIdsTest, EncodedBlanksOfTargetsFollow)
{
    const OnePass result(&libPrepare::repairIds, "<node id='n m'/><channel target='n%20m/translate.X'/>"
                                                 "<channel target='no%20ne/translate.X'/>");
    EXPECT_EQ("n_m/translate.X", result.value("//channel[1]/@target"));
    EXPECT_EQ("no%20ne/translate.X", result.value("//channel[2]/@target"));
}

TEST(RepairIdsTest, ListsOfIdsFollow)
{
    const OnePass result(&libPrepare::repairIds,
                         "<node id='\xC3\xA9'/><node id='b'/><skin><source><IDREF_array>b \xC3\xA9 none</IDREF_array>"
                         "</source></skin>");
    EXPECT_EQ("b _ none", result.text("//IDREF_array"));
}

TEST(RepairIdsTest, ReferencesThatLeadNowhereOrElsewhereStay)
{
    const std::string body = "<a id='x'/><instance_light url='#none'/><instance_light url='other.dae#x'/>"
                             "<image><init_from>#x y.png</init_from></image><texture texture='x' texcoord='x'/>";
    const OnePass result(&libPrepare::repairIds, body);
    EXPECT_TRUE(result.report.findings.empty());
    EXPECT_FALSE(result.report.changed);
    EXPECT_EQ("other.dae#x", result.value("//instance_light[2]/@url"));
}

TEST(RepairIdsTest, AHundredThousandEqualIdsTakeNoTimeWithTheirSquare)
{
    std::string body;
    for (unsigned i = 0; i < 100'000; ++i) {
        body += "<a id='x'/><b/>";
    }
    body += "<vertices id='x'/>";
    for (unsigned i = 0; i < 20'000; ++i) {
        body += "<input semantic='VERTEX' source='#x'/>";
    }
    const OnePass result(&libPrepare::repairIds, body);
    EXPECT_EQ(100'000U, result.report.findings.size());
    EXPECT_EQ("x-100001", result.value("//vertices/@id"));
    EXPECT_EQ("#x-100001", result.value("//input[20000]/@source"));
}

} // namespace
