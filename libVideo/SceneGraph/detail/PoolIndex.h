#pragma once

/// @file
/// Finds the objects of the pool by id while a load creates instances.

#include "FirstById.h"

#include <libVideo/SceneGraph/Camera.h>
#include <libVideo/SceneGraph/Light.h>
#include <libVideo/SceneGraph/SceneResources.h>

#include <optional>

namespace libVideo::detail {

/// Finds the objects of a pool by id. Each list is indexed on first use.
class PoolIndex {
public:
    /// @param pool must not change, and has to outlive the index
    explicit PoolIndex(const SceneResources& pool) : m_pool(pool) {}

    /// @return the camera, or an empty handle
    CameraHandle camera(const vesk::String& id) { return indexed(m_cameras, m_pool.cameraList).find(id); }
    /// @return the light, or an empty handle
    PointLightHandle pointLight(const vesk::String& id)
    {
        return indexed(m_pointLights, m_pool.pointLightList).find(id);
    }
    /// @return the light, or an empty handle
    SpotLightHandle spotLight(const vesk::String& id) { return indexed(m_spotLights, m_pool.spotLightList).find(id); }

private:
    template <class Object>
    static const FirstById<Object>& indexed(std::optional<FirstById<Object>>& index,
                                            const vesk::Array<SharedHandle<Object>>& list)
    {
        if (!index) {
            index.emplace(list);
        }
        return *index;
    }

    const SceneResources& m_pool;
    std::optional<FirstById<Camera>> m_cameras;
    std::optional<FirstById<PointLight>> m_pointLights;
    std::optional<FirstById<SpotLight>> m_spotLights;
};

} // namespace libVideo::detail
