#pragma once // SPDX-License-Identifier: MIT

#include <libVideo/Export.h>
#include <libVideo/Handles.h>

#include <vesk/Array.h>

namespace libVideo {

/// What a document's libraries define, whether or not the scene uses it: the pool that instances refer to.
struct LIBVIDEO_API SceneResources {
    vesk::Array<CameraHandle> cameraList;         ///< Of `<library_cameras>`.
    vesk::Array<PointLightHandle> pointLightList; ///< Of `<library_lights>`.
    vesk::Array<SpotLightHandle> spotLightList;   ///< Of `<library_lights>`.
    vesk::Array<AnimationHandle> animationList;   ///< Of `<library_animations>`.
};

} // namespace libVideo
