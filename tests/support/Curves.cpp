#include "Curves.h"

#include "ColladaBuilder.h"
#include "LogCapture.h"
#include "Words.h"

#include <libVideo/SceneGraph/Animation.h>

#include <gtest/gtest.h>

namespace testSupport {

libVideo::AnimationHandle loadedCurve(const std::string& target, const std::string& seconds, const std::string& values,
                                      const std::string& interpolation)
{
    ColladaBuilder builder(library("library_animations", curve("curve", target, seconds, values, interpolation)));
    const domAnimationRef element = builder.open()->getLibrary_animations_array()[0]->getAnimation_array()[0];
    const LogCapture log;
    libVideo::AnimationHandle animation(new libVideo::Animation(element, builder.dae()));
    EXPECT_EQ(Texts(), log.messages());
    EXPECT_EQ(wordCount(seconds), animation->getCount());
    return animation;
}

} // namespace testSupport
