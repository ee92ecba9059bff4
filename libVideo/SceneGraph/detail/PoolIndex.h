#pragma once

/// @file
/// The pool by id, for as long as a load places instances.

#include "FirstById.h"

#include <libVideo/SceneGraph/Camera.h>
#include <libVideo/SceneGraph/Light.h>
#include <libVideo/SceneGraph/SceneResources.h>

#include <optional>

namespace libVideo::detail {

/// Finds the objects of a pool by id. The index of a kind is made when the first instance asks for it.
class PoolIndex {
public:
    /// @param pool must not change, and has to live as long as the index
    explicit PoolIndex(const SceneResources& pool) : m_pool(pool) {}

    /// @return empty if there is none
    CameraHandle camera(const vesk::String& id) { return indexed(m_cameras, m_pool.cameraList).find(id); }
    /// @return empty if there is none
    PointLightHandle pointLight(const vesk::String& id)
    {
        return indexed(m_pointLights, m_pool.pointLightList).find(id);
    }
    /// @return empty if there is none
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
