#include "OnePass.h"

#include "support/Rows.h"

#include <gtest/gtest.h>

namespace {

using test::OnePass;

struct RootRow : testSupport::Row {
    const char* root;
    std::size_t findings;
};

class RootTest : public testing::TestWithParam<RootRow> {};

TEST_P(RootTest, BecomesThatOf141)
{
    const std::string root = GetParam().root;
    const std::string prefix = root.rfind("c:", 0) == 0 ? "c:" : "";
    const OnePass result(&libPrepare::convertVersions, "<" + root + "><" + prefix +
                                                           "asset/><e:extra xmlns:e='urn:e'><" + prefix +
                                                           "node/></e:extra></" + prefix + "COLLADA>");
    EXPECT_STREQ("http://www.collada.org/2005/11/COLLADASchema",
                 result.xml.document_element().attribute("xmlns").value());
    EXPECT_EQ("1.4.1", result.value("/COLLADA/@version"));
    EXPECT_EQ(1U, result.count("/COLLADA/asset"));
    EXPECT_EQ(1U, result.count("/COLLADA/*[name()='e:extra']/node"));
    EXPECT_EQ(GetParam().findings, result.report.findings.size());
}

INSTANTIATE_ROWS(Rows, RootTest,
                 {"AsItShouldBe", "COLLADA xmlns='http://www.collada.org/2005/11/COLLADASchema' version='1.4.1'", 0},
                 {"Version140", "COLLADA xmlns='http://www.collada.org/2005/11/COLLADASchema' version='1.4.0'", 1},
                 {"NoNamespace", "COLLADA version='1.4.1'", 1}, {"Nothing", "COLLADA", 2},
                 {"Slash", "COLLADA xmlns='http://www.collada.org/2005/11/COLLADASchema/' version='1.4.1'", 1},
                 {"Foreign", "COLLADA xmlns='urn:mine' version='1.4.1'", 1},
                 {"Version15", "COLLADA xmlns='http://www.collada.org/2008/03/COLLADASchema' version='1.5.0'", 2},
                 {"Prefix", "c:COLLADA xmlns:c='http://www.collada.org/2005/11/COLLADASchema' version='1.4.1'", 2});

TEST(ConvertVersionsTest, TexturesOf15GetSurfaces)
{
    const OnePass result(
        &libPrepare::convertVersions,
        "<COLLADA xmlns='http://www.collada.org/2008/03/COLLADASchema' version='1.5.0'><library_images><image id='i'>"
        "<init_from><ref>a.png</ref></init_from></image><image "
        "id='j'><create_2d><init_from><ref>b.png</ref></init_from>"
        "</create_2d></image></library_images><profile_COMMON><newparam sid='s'><sampler2D><instance_image url='#i'/>"
        "<wrap_s>WRAP</wrap_s></sampler2D></newparam></profile_COMMON><library_joints/><scene/></COLLADA>");
    EXPECT_EQ("a.png", result.text("//image[@id='i']/init_from"));
    EXPECT_EQ("b.png", result.text("//image[@id='j']/init_from"));
    EXPECT_EQ(0U, result.count("//create_2d"));
    EXPECT_EQ("i", result.text("//newparam[@sid='s-surface']/surface[@type='2D']/init_from"));
    EXPECT_EQ("s-surface", result.text("//newparam[@sid='s']/sampler2D/source"));
    EXPECT_EQ("WRAP", result.text("//sampler2D/source/following-sibling::wrap_s"));
    EXPECT_EQ(0U, result.count("//library_joints | //instance_image"));
    EXPECT_EQ("library_joints", result.report.first(libPrepare::Outcome::lost)->kind);
}

TEST(ConvertVersionsTest, ASecondRunChangesNothing)
{
    const OnePass first(&libPrepare::convertVersions,
                        "<c:COLLADA xmlns:c='http://www.collada.org/2008/03/COLLADASchema' version='1.5.0'><c:asset/>"
                        "</c:COLLADA>");
    const OnePass second(&libPrepare::convertVersions, first.all());
    EXPECT_FALSE(second.report.changed);
    EXPECT_EQ(first.all(), second.all());
}

} // namespace
