#pragma once // SPDX-License-Identifier: MIT

#include <libVideo/ColladaDom.h>
#include <libVideo/Export.h>
#include <libVideo/Handles.h>

#include <libMath/Vector.h>

#include <vesk/Array.h>
#include <vesk/SharedResource.h>
#include <vesk/String.h>

namespace libVideo {

/// A `<point>` light: a plain value that keeps no link to the document; `PointLightInstance` places it on a node. Its
/// strength at the distance d is meant to be color / (constant + linear · d + quadratic · d²).
class LIBVIDEO_API PointLight {
public:
    /// @param id of the `<light>`
    explicit PointLight(const vesk::String& id) : m_id(id) {}
    PointLight(const PointLight&) = default;
    PointLight& operator=(const PointLight&) = default;

    /// Reads color and attenuations. A color that is missing or too short stays white, with a message on "libVideo.light".
    /// @return true
    bool createFromCollada(const domLight::domTechnique_common::domPoint& point);

    /// Red, green, blue as written: unclamped, no color space applied; 1, 1, 1 until read.
    const libMath::Vector<float, 3>& color() const { return m_color; }
    /// Factors of 1, of the distance and of its square; 0 where the element is absent.
    float constantAttenuation() const { return m_constantAttenuation; }
    float linearAttenuation() const { return m_linearAttenuation; }       ///< Factor of the distance.
    float quadraticAttenuation() const { return m_quadraticAttenuation; } ///< Factor of the square of the distance.
    /// The `id` of the `<light>`.
    const vesk::String& id() const { return m_id; }

private:
    libMath::Vector<float, 3> m_color{1.0f, 1.0f, 1.0f};
    float m_constantAttenuation = 0.0f;
    float m_linearAttenuation = 0.0f;
    float m_quadraticAttenuation = 0.0f;
    vesk::String m_id;
};

/// A `<spot>` light: a plain value that keeps no link to the document; `SpotLightInstance` places it on a node. It fades
/// with the distance as a `PointLight` does.
class LIBVIDEO_API SpotLight {
public:
    /// @param id of the `<light>`
    explicit SpotLight(const vesk::String& id) : m_id(id) {}
    SpotLight(const SpotLight&) = default;
    SpotLight& operator=(const SpotLight&) = default;

    /// Reads color, attenuations and cone. A color that is too short stays white, with a message.
    /// @return false, with one message on "libVideo.light" and nothing changed, if `<color>` is absent
    bool createFromCollada(const domLight::domTechnique_common::domSpot& spot);
    /// Reads "outer_cone" and "target" from the `<technique profile="FCOLLADA">`s of the light, the last one of each.
    /// `dae` parses the target, and its base URI is changed to it.
    void readExtraData(const domLight& light, DAE& dae);

    /// Red, green, blue as written: unclamped, no color space applied; 1, 1, 1 until read.
    const libMath::Vector<float, 3>& color() const { return m_color; }
    /// Factors of 1, of the distance and of its square; 0 where the element is absent.
    float constantAttenuation() const { return m_constantAttenuation; }
    float linearAttenuation() const { return m_linearAttenuation; }       ///< Factor of the distance.
    float quadraticAttenuation() const { return m_quadraticAttenuation; } ///< Factor of the square of the distance.
    /// `<falloff_angle>` in degrees, 180 if absent.
    float innerConeAngle() const { return m_innerConeAngle; }
    /// "outer_cone" in degrees, 0 without it.
    float outerConeAngle() const { return m_outerConeAngle; }
    /// `<falloff_exponent>`, 0 if absent.
    float falloffExponent() const { return m_falloffExponent; }
    /// Id of the node to look at, empty without a "target".
    const vesk::String& lookAtNodeId() const { return m_lookAtNodeId; }
    /// The `id` of the `<light>`.
    const vesk::String& id() const { return m_id; }

private:
    libMath::Vector<float, 3> m_color{1.0f, 1.0f, 1.0f};
    float m_constantAttenuation = 0.0f;
    float m_linearAttenuation = 0.0f;
    float m_quadraticAttenuation = 0.0f;
    float m_outerConeAngle = 0.0f;
    float m_innerConeAngle = 0.0f;
    float m_falloffExponent = 0.0f;
    vesk::String m_lookAtNodeId;
    vesk::String m_id;
};

/// Fills the list with the point lights of the document's `<library_lights>`, in document order.
/// @return the size of the list; 0, with a message on "libVideo.light" and an unchanged list, without a document
LIBVIDEO_API unsigned createPointLightListFromCollada(const domCOLLADA* collada, vesk::Array<PointLightHandle>& list);

/// Fills the list with the spot lights of the document's `<library_lights>`, in document order, also with those that fail
/// to load.
/// @return the size of the list; 0, with a message on "libVideo.light" and an unchanged list, without a document
LIBVIDEO_API unsigned createSpotLightListFromCollada(const domCOLLADA* collada, DAE& dae,
                                                     vesk::Array<SpotLightHandle>& list);

} // namespace libVideo
