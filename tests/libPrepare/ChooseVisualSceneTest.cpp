#include "Prepared.h"

#include <gtest/gtest.h>

namespace {

using libPrepare::Outcome;
using test::Prepared;

const std::string scenes = "<library_visual_scenes><visual_scene id='v'><node id='a'><scale>1 1 1</scale></node>"
                           "</visual_scene><visual_scene id='w'><node id='b'/></visual_scene></library_visual_scenes>";

TEST(ChooseVisualSceneTest, OthersThanTheShownOneAreReportedAndStay)
{
    const Prepared done(scenes + "<scene><instance_visual_scene url='#v'/></scene>");
    ASSERT_EQ(1U, done.findings("visual scene"));
    EXPECT_EQ(Outcome::lost, done.report.findings[0].outcome);
    EXPECT_NE(std::string::npos, done.report.findings[0].text.find("\"w\""));
    EXPECT_FALSE(done.report.changed);
    EXPECT_EQ(0U, done.count("//node[@id='b']/matrix"));
}

TEST(ChooseVisualSceneTest, NoSceneIsReported)
{
    EXPECT_EQ(1U, Prepared(scenes).findings("scene"));
    EXPECT_EQ(1U, Prepared(scenes + "<scene><instance_visual_scene url='#gone'/></scene>").findings("scene"));
}

} // namespace
