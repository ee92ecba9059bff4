#include <libVideo/SceneGraph/Light.h>

#include "detail/Dom.h"
#include "detail/Log.h"
#include "detail/VendorData.h"

namespace libVideo {

VIDEO_LOG_CHANNEL("libVideo.light")

namespace {

using PointElement = domLight::domTechnique_common::domPoint;
using SpotElement = domLight::domTechnique_common::domSpot;

float valueOr(const domTargetableFloatRef& element, float absent)
{
    return element != nullptr ? static_cast<float>(element->getValue()) : absent;
}

void readColor(const domTargetableFloat3& element, libMath::Vector<float, 3>& color)
{
    if (element.getValue().getCount() < 3) {
        VIDEO_LOG("Color has fewer than three values");
        return;
    }
    color = detail::vectorOf(element.getValue());
}

// Calls `visit` with each light that has a common technique, and with that technique.
template <class Visit>
void visitLights(const domCOLLADA& collada, const Visit& visit)
{
    const domLibrary_lights_Array& libraries = collada.getLibrary_lights_array();
    for (std::size_t i = 0; i < libraries.getCount(); ++i) {
        const domLight_Array& lights = libraries[i]->getLight_array();
        for (std::size_t j = 0; j < lights.getCount(); ++j) {
            const domLight::domTechnique_commonRef technique = lights[j]->getTechnique_common();
            if (technique != nullptr) {
                visit(*lights[j], *technique);
            }
        }
    }
}

} // namespace

bool PointLight::createFromCollada(const PointElement& point)
{
    if (const domTargetableFloat3Ref color = point.getColor()) {
        readColor(*color, m_color);
    } else {
        VIDEO_LOG("PointLight has no color component");
    }
    m_constantAttenuation = valueOr(point.getConstant_attenuation(), 0.0f);
    m_linearAttenuation = valueOr(point.getLinear_attenuation(), 0.0f);
    m_quadraticAttenuation = valueOr(point.getQuadratic_attenuation(), 0.0f);
    return true;
}

bool SpotLight::createFromCollada(const SpotElement& spot)
{
    const domTargetableFloat3Ref color = spot.getColor();
    if (color == nullptr) {
        VIDEO_LOG("SpotLight has no color component");
        return false;
    }
    readColor(*color, m_color);
    m_constantAttenuation = valueOr(spot.getConstant_attenuation(), 0.0f);
    m_linearAttenuation = valueOr(spot.getLinear_attenuation(), 0.0f);
    m_quadraticAttenuation = valueOr(spot.getQuadratic_attenuation(), 0.0f);
    m_innerConeAngle = valueOr(spot.getFalloff_angle(), 180.0f);
    m_falloffExponent = valueOr(spot.getFalloff_exponent(), 0.0f);
    return true;
}

void SpotLight::readExtraData(const domLight& light, DAE& dae)
{
    detail::findVendorChild(light.getExtra_array(), [&](daeElement& child) {
        const vesk::String name(child.getElementName());
        if (vesk::String::compareNoCase(name, "outer_cone") == 0) {
            vesk::String::strToReal32(child.getCharData().c_str(), m_outerConeAngle);
        } else if (vesk::String::compareNoCase(name, "target") == 0) {
            m_lookAtNodeId = detail::lookAtId(child.getCharData(), dae);
        }
        return false; // goes on, because the last element of each name counts
    });
}

unsigned createPointLightListFromCollada(const domCOLLADA* collada, vesk::Array<PointLightHandle>& list)
{
    if (collada == nullptr) {
        // sic: a camera list; the words are an interface
        VIDEO_LOG("Cannot create a camera list from a NULL domCOLLADA pointer");
        return 0;
    }
    list.clear();
    visitLights(*collada, [&list](const domLight& light, const domLight::domTechnique_common& technique) {
        if (const daeSmartRef<PointElement> point = technique.getPoint()) {
            list.append(PointLightHandle::make(light.getId()));
            list[list.size() - 1]->createFromCollada(*point);
        }
    });
    return list.size();
}

unsigned createSpotLightListFromCollada(const domCOLLADA* collada, DAE& dae, vesk::Array<SpotLightHandle>& list)
{
    if (collada == nullptr) {
        // sic: a camera list; the words are an interface
        VIDEO_LOG("Cannot create a camera list from a NULL domCOLLADA pointer");
        return 0;
    }
    list.clear();
    visitLights(*collada, [&list, &dae](const domLight& light, const domLight::domTechnique_common& technique) {
        if (const daeSmartRef<SpotElement> spot = technique.getSpot()) {
            list.append(SpotLightHandle::make(light.getId()));
            list[list.size() - 1]->createFromCollada(*spot);
            list[list.size() - 1]->readExtraData(light, dae);
        }
    });
    return list.size();
}

} // namespace libVideo
