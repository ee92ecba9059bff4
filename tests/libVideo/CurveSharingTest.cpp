#include "support/VideoTest.h"

#include <libVideo/SceneGraph/Animation.h>
#include <libVideo/SceneGraph/Scene.h>

namespace {

using namespace libVideo;
using namespace testSupport;

PRIVATE_MEMBER(sharingPool, SceneResources Scene::*, &Scene::m_resources)

std::string source(const std::string& id, unsigned keys, unsigned step)
{
    std::string numbers;
    for (unsigned i = 0; i < keys; ++i) {
        numbers += std::to_string(i * step) + ' ';
    }
    const std::string count = std::to_string(keys);
    return "<source id='" + id + "'><float_array id='" + id + "-array' count='" + count + "'>" + numbers +
           "</float_array><technique_common><accessor source='#" + id + "-array' count='" + count +
           "'/></technique_common></source>";
}

// 6,000 curves of 1,000 keys in a document of less than 2 MB would take 100 MB if each had its own.
TEST(CurveSharingTest, AnyNumberOfCurvesMayUseOneArray)
{
    constexpr unsigned curves = 6'000;
    constexpr unsigned keys = 1'000;
    std::string text = "<COLLADA xmlns='http://www.collada.org/2005/11/COLLADASchema' version='1.4.1'>"
                       "<library_animations><animation>" +
                       source("time", keys, 1) + source("value", keys, 3) +
                       "<sampler id='s'><input semantic='INPUT' source='#time'/><input semantic='OUTPUT' "
                       "source='#value'/><input semantic='IN_TANGENT' source='#value'/><input semantic='OUT_TANGENT' "
                       "source='#value'/></sampler><channel source='#s' target='n/a'/></animation>";
    for (unsigned i = 1; i < curves; ++i) {
        text += "<animation><channel source='#s' target='n/a'/></animation>";
    }
    text += "</library_animations><library_visual_scenes><visual_scene id='v'><node id='n'/></visual_scene>"
            "</library_visual_scenes><scene><instance_visual_scene url='#v'/></scene></COLLADA>";
    const TemporaryFile file(text);
    const LogCapture log("libVideo.animation");
    Scene scene;
    EXPECT_TRUE(scene.createFromCollada(file.path().c_str()));
    EXPECT_EQ("", log.text());
    auto& animations = sharingPool(scene).animationList;
    ASSERT_EQ(curves, animations.size());
    for (unsigned i = 0; i < curves; ++i) {
        ASSERT_EQ(keys, animations[i]->getCount());
        ASSERT_EQ(3.0 * (keys - 1), animations[i]->evolution(keys - 1).values[0]);
    }
}

} // namespace
