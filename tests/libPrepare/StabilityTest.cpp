#include "AnimationWords.h"
#include "Expectations.h"
#include "LookDocuments.h"
#include "Prepared.h"

#include "support/Rows.h"

#include <gtest/gtest.h>

#include <string>

// Documents that a second run used to change again.

namespace {

using test::Prepared;

struct Bent : testSupport::Row {
    std::string body;
};

class BentDocumentTest : public testing::TestWithParam<Bent> {};

TEST_P(BentDocumentTest, PreparesToItself)
{
    const Prepared prepared(GetParam().body);
    EXPECT_TRUE(prepared.report.done);
    EXPECT_TRUE(prepared.report.changed);
    test::expectStable(prepared);
}

const std::string camera = "<library_cameras><camera id='c'><optics><technique_common><perspective><xfov>40</xfov>"
                           "<aspect_ratio>1</aspect_ratio><znear>1</znear><zfar>9</zfar></perspective>"
                           "</technique_common></optics></camera></library_cameras>";
const std::string spot = "<library_lights><light id='l'><technique_common><spot><color>1 1 1</color></spot>"
                         "</technique_common></light></library_lights>";

std::string animatedTranslate(const std::string& numbers)
{
    return "<library_animations>" + test::flat("x", "n/t.X", "TIME", "0 1", "0 5", "LINEAR LINEAR") +
           "</library_animations>" + test::shown("<node id='n'><translate sid='t'>" + numbers + "</translate></node>");
}

INSTANTIATE_ROWS(
    Rows, BentDocumentTest,
    {"CameraAtNoPlace", camera + test::shown("<node id='n'><translate>NaN 0 0</translate>"
                                             "<instance_camera url='#c'/></node>")},
    {"SpotAtNoPlace", spot + test::shown("<node id='n'><matrix>1 0 0 NaN 0 1 0 0 0 0 1 0 0 0 0 NaN</matrix>"
                                         "<instance_light url='#l'/></node>")},
    {"NumbersBeyondATransform", animatedTranslate("1 2 3 4")},
    {"NumberBeyondAllOthers", animatedTranslate("1 1e400 3")},
    {"GeometryInAChannel", "<library_effects><effect id='f'><profile_COMMON><technique sid='t'><phong><diffuse>" +
                               test::triangleGeometry("g", "s") +
                               "</diffuse></phong></technique></profile_COMMON></effect>"
                               "</library_effects>" +
                               test::shown("<node id='n'><instance_geometry url='#g'/></node>")},
    {"LightInAnInstance", test::shown("<node id='n'><instance_geometry url='#none'><light id='l'>"
                                      "<technique_common><directional/></technique_common></light>"
                                      "</instance_geometry><instance_light url='#l'/></node>")},
    {"LightInATargetThatIsReplaced",
     "<library_lights><light id='l'><technique_common><spot/></technique_common><extra><technique profile='FCOLLADA'>"
     "<target><light id='d'/></target></technique></extra></light></library_lights>" +
         test::shown("<node id='n'><instance_light url='#l'/><instance_light url='#d'/></node>")},
    {"PlaneWithoutEndOfAnAnimatedCamera",
     "<library_cameras><camera id='c'><optics><technique_common><perspective><yfov sid='f'>40</yfov><znear>1</znear>"
     "<zfar>-INF</zfar></perspective></technique_common></optics></camera></library_cameras><library_animations>" +
         test::flat("x", "c/f", "ANGLE", "0 1", "90 60", "LINEAR LINEAR") + "</library_animations>" +
         test::shown("<node id='n'><instance_camera url='#c'/></node>")},
    {"PositionsInATexture",
     "<library_effects><effect id='e'><profile_COMMON><technique sid='t'><phong><diffuse><texture texture='x'>" +
         test::source("p", "X Y Z", "0 0 0") +
         "</texture></diffuse></phong></technique></profile_COMMON></effect></library_effects><library_geometries>"
         "<geometry id='g'><mesh><vertices id='v'><input semantic='POSITION' source='#p'/></vertices></mesh>"
         "</geometry></library_geometries>" +
         test::shown("<node id='n'><instance_geometry url='#g'/></node>")},
    {"SurfaceThatHoldsAnId",
     test::shownEffect("<effect id='fx'><newparam sid='u'><surface type='2D'><init_from>i</init_from>"
                       "<extra id='held'/></surface></newparam><profile_COMMON><technique sid='t'><phong>"
                       "<diffuse><texture texture='u' texcoord='T'/></diffuse></phong></technique>"
                       "</profile_COMMON></effect>",
                       "<library_images><image id='i'><init_from>a.png</init_from></image></library_images>")});

} // namespace
