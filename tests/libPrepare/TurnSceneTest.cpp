#include "AnimationWords.h"
#include "Prepared.h"

#include <libPrepare/document/Numbers.h>
#include <libPrepare/document/Transforms.h>

#include <gtest/gtest.h>

namespace {

using namespace libPrepare;
using test::Prepared;
using test::shown;

using Numbers = std::vector<double>;

std::string document(const std::string& asset, const std::string& body)
{
    return "<COLLADA xmlns=\"http://www.collada.org/2005/11/COLLADASchema\" version=\"1.4.1\"><asset>" + asset +
           "</asset>" + body + "</COLLADA>";
}

const std::string node = shown("<node id='a'><translate sid='t'>1 2 3</translate></node>");

struct Turn {
    const char* asset;
    UpAxis up;
    std::optional<double> unit;
    Vector3 place; // of (1 2 3)
};

class TurnTest : public testing::TestWithParam<Turn> {};

TEST_P(TurnTest, PlacesMoveWithTheAxes)
{
    Options options;
    options.upAxis = GetParam().up;
    options.unit = GetParam().unit;
    const Prepared done(document(GetParam().asset, node), options);
    const Vector3 place = transformPoint(localMatrix(done.node("//node[@id='a']")), {0, 0, 0});
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_NEAR(GetParam().place[i], place[i], 1e-12) << i;
    }
    const Prepared second(done.xml(), options);
    EXPECT_EQ(done.xml(), second.xml());
}

INSTANTIATE_TEST_SUITE_P(
    Rules, TurnTest,
    testing::Values(Turn{"<up_axis>Z_UP</up_axis>", UpAxis::y, {}, {1, 3, -2}}, // up goes to Y, away to -Z
                    Turn{"<up_axis>X_UP</up_axis>", UpAxis::y, {}, {-2, 1, 3}}, // right is -Y
                    Turn{"", UpAxis::z, {}, {1, -3, 2}}, Turn{"<up_axis>X_UP</up_axis>", UpAxis::z, {}, {-2, -3, 1}},
                    Turn{"<up_axis>Z_UP</up_axis>", UpAxis::z, {}, {1, 2, 3}},
                    Turn{"<up_axis>X_UP</up_axis>", UpAxis::keep, {}, {1, 2, 3}},
                    Turn{"<unit meter='0.01'/>", UpAxis::keep, 1.0, {0.01, 0.02, 0.03}},
                    Turn{"<unit meter='2'/><up_axis>Z_UP</up_axis>", UpAxis::y, 0.5, {4, 12, -8}}));

TEST(TurnSceneTest, AssetSaysSo)
{
    Options options;
    options.upAxis = UpAxis::y;
    options.unit = 0.01;
    const Prepared done(document("<up_axis>Z_UP</up_axis>", node), options);
    EXPECT_EQ("Y_UP", done.text("//up_axis"));
    EXPECT_STREQ("0.01", done.node("//unit").attribute("meter").value());
    EXPECT_STREQ("centimeter", done.node("//unit").attribute("name").value());
    EXPECT_EQ(1U, done.findings("asset"));
}

TEST(TurnSceneTest, AnimatedRootsAndLookAtCamerasStayRight)
{
    Options options;
    options.upAxis = UpAxis::y;
    options.unit = 0.5;
    const Prepared done(
        document("<up_axis>Z_UP</up_axis>",
                 "<library_animations>" + test::flat("x", "a/t", "X Y Z", "0 1", "1 2 3 1 2 5", "LINEAR LINEAR") +
                     "</library_animations><library_cameras><camera id='c'><optics><technique_common><perspective>"
                     "<xfov>60</xfov><yfov>60</yfov><znear>1</znear><zfar>9</zfar></perspective></technique_common>"
                     "</optics></camera></library_cameras>" +
                     shown("<node id='a'><translate sid='t'>1 2 3</translate></node>"
                           "<node id='b'><translate>0 0 4</translate><instance_camera url='#c'/></node>")),
        options);
    EXPECT_STREQ("a/t", done.node("//channel").attribute("target").value());
    EXPECT_EQ("1 2 3", done.text("//translate[@sid='t']"));
    EXPECT_EQ("2", done.text("//znear"));
    EXPECT_EQ("18", done.text("//zfar"));
    // The camera is 4 up, which is 8 units along Y, and looks down.
    const Numbers eye = numbers(done.text("//node[instance_camera]/matrix"));
    EXPECT_NEAR(8, eye[7], 1e-12);
    const std::string target = done.text("//camera/extra/technique/target").substr(1);
    const Numbers interest = numbers(done.text(("//node[@id='" + target + "']/translate").c_str()));
    EXPECT_NEAR(0, interest[0], 1e-12);
    EXPECT_NEAR(0, interest[1], 1e-12); // as far ahead as the eye is from the origin
    EXPECT_NEAR(0, interest[2], 1e-12);
}

TEST(TurnSceneTest, LightsWeakenAsBefore)
{
    Options options;
    options.unit = 0.5; // all distances double
    const Prepared done(document("", "<library_lights><light id='l'><technique_common><point><color>1 1 1</color>"
                                     "<constant_attenuation>1</constant_attenuation>"
                                     "<linear_attenuation>4</linear_attenuation>"
                                     "<quadratic_attenuation>4</quadratic_attenuation></point></technique_common>"
                                     "</light></library_lights>" +
                                         node),
                        options);
    EXPECT_EQ("1", done.text("//constant_attenuation"));
    EXPECT_EQ("2", done.text("//linear_attenuation"));
    EXPECT_EQ("1", done.text("//quadratic_attenuation"));
}

} // namespace
