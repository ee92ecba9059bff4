#include <libVideo/SceneGraph/Camera.h>

#include "detail/Dom.h"
#include "detail/Log.h"
#include "detail/Transforms.h"
#include "detail/VendorData.h"

#include <libVideo/SceneGraph/Animation.h>

#include <cmath>

namespace libVideo {

VIDEO_LOG_CHANNEL("libVideo.camera")
VIDEO_SOURCE_PATH("libVideo/SceneGraph/Camera")

namespace {

using Matrix = libMath::Matrix<float, 4, 4>;
using Perspective = domCamera::domOptics::domTechnique_common::domPerspective;

double cotangentOfHalf(double degrees)
{
    return 1 / std::tan(detail::radians(degrees) * 0.5);
}

domCamera::domOptics::domTechnique_commonRef commonTechnique(const domCamera& camera)
{
    const domCamera::domOpticsRef optics = camera.getOptics();
    return optics != nullptr ? optics->getTechnique_common() : domCamera::domOptics::domTechnique_commonRef();
}

} // namespace

Camera::~Camera() = default;

void Camera::addAnimation(AnimationHandle animation)
{
    if (!animation) {
        throw vesk::NullPointer("Cannot add an empty animation handle to camera " + id());
    }
    m_animations.append(animation);
}

double Camera::animationLength() const
{
    double longest = 0.0;
    for (const AnimationHandle& animation : m_animations) {
        longest = animation->animationLength() > longest ? animation->animationLength() : longest;
    }
    return longest;
}

PerspectiveCamera::PerspectiveCamera(const daeSmartRef<domCamera>& camera, DAE& dae)
{
    createFromCollada(camera, dae);
}

PerspectiveCamera::~PerspectiveCamera() = default;

bool PerspectiveCamera::createFromCollada(const daeSmartRef<domCamera>& camera, DAE& dae)
{
    detail::expectElement(camera, "PerspectiveCamera");
    m_name = camera->getName();
    m_id = camera->getId();
    readExtraCameraData(camera, dae);
    const domCamera::domOptics::domTechnique_commonRef technique = commonTechnique(*camera);
    if (technique == nullptr) {
        VIDEO_LOG("Camera ", m_name, " does not have a common technique");
        return false;
    }
    const daeSmartRef<Perspective> perspective = technique->getPerspective();
    if (perspective == nullptr) {
        VIDEO_LOG("Camera ", m_name, " does not have perspective optics");
        return false;
    }
    const domTargetableFloatRef znear = perspective->getZnear();
    if (znear == nullptr) {
        VIDEO_LOG("Camera ", m_name, " does not have near plane data");
        return false;
    }
    m_znear = SharedHandle<PerspectiveParameter>::make(znear->getValue(), znear->getSid());
    const domTargetableFloatRef zfar = perspective->getZfar();
    if (zfar == nullptr) {
        VIDEO_LOG("Camera ", m_name, " does not have far plane data");
        return false;
    }
    m_zfar = SharedHandle<PerspectiveParameter>::make(zfar->getValue(), zfar->getSid());

    double xfov = 0.0;
    double yfov = 0.0;
    double aspectRatio = 1.0;
    if (const domTargetableFloatRef element = perspective->getXfov()) {
        xfov = element->getValue();
        m_xfov = SharedHandle<PerspectiveParameter>::make(xfov, element->getSid());
    }
    if (const domTargetableFloatRef element = perspective->getYfov()) {
        yfov = element->getValue();
        m_yfov = SharedHandle<PerspectiveParameter>::make(yfov, element->getSid());
    }
    if (const domTargetableFloatRef element = perspective->getAspect_ratio()) {
        aspectRatio = element->getValue();
        m_aspectRatio = SharedHandle<PerspectiveParameter>::make(aspectRatio, element->getSid());
    }
    return updateProjectionMatrix(m_znear->value, m_zfar->value, xfov, yfov, aspectRatio);
}

// Reads the first element of the technique that has text, whatever its name.
void PerspectiveCamera::readExtraCameraData(const daeSmartRef<domCamera>& camera, DAE& dae)
{
    const auto hasText = [](daeElement& child) { return child.hasCharData(); };
    if (daeElement* const reference = detail::findVendorChild(camera->getExtra_array(), hasText)) {
        const std::string text = reference->getCharData();
        m_lookAtNodeURI = text.c_str();
        m_lookAtNode = detail::lookAtId(text, dae);
    }
}

bool PerspectiveCamera::updateProjectionMatrix(double znear, double zfar, double xfov, double yfov, double aspectRatio)
{
    const double depthScale = zfar / (zfar - znear);
    m_projection = Matrix();
    m_projection(2, 2) = static_cast<float>(depthScale);
    m_projection(2, 3) = 1.0f;
    m_projection(3, 2) = static_cast<float>(-(depthScale * znear));
    if (m_xfov) {
        m_projection(0, 0) = static_cast<float>(cotangentOfHalf(xfov));
    }
    if (m_yfov) {
        m_projection(1, 1) = static_cast<float>(cotangentOfHalf(yfov));
    }
    if (m_xfov && m_yfov) {
        return true;
    }
    if (!m_aspectRatio) {
        // sic: the colon; the words are an interface
        VIDEO_LOG("Camera :", m_name, " does not have required aspect ratio data");
        return false;
    }
    if (m_yfov) {
        m_projection(0, 0) = static_cast<float>(double(m_projection(1, 1)) * aspectRatio);
    } else if (m_xfov) {
        m_projection(1, 1) = static_cast<float>(double(m_projection(0, 0)) / aspectRatio);
    }
    return true;
}

CameraHandle PerspectiveCamera::clone() const
{
    return CameraHandle::make<PerspectiveCamera>(*this);
}

const Matrix& PerspectiveCamera::projectionMatrix(double time)
{
    if (animations().size() == 0) {
        return m_projection;
    }
    // sic: a parameter without an animation is 0 here, not the value in the document.
    struct {
        double xfov = 0.0;
        double yfov = 0.0;
        double znear = 0.0;
        double zfar = 0.0;
    } animated;
    const struct {
        const Parameter& parameter;
        double& value;
    } targets[] = {
        {m_xfov, animated.xfov}, {m_yfov, animated.yfov}, {m_znear, animated.znear}, {m_zfar, animated.zfar}};
    for (const AnimationHandle& animation : animations()) {
        const vesk::String sid = animation->getTargetTransform();
        for (const auto& target : targets) {
            if (target.parameter && target.parameter->sid == sid) {
                target.value = animation->applyAnimation(target.parameter->value, time);
                break;
            }
        }
    }
    updateProjectionMatrix(animated.znear, animated.zfar, animated.xfov, animated.yfov,
                           m_aspectRatio ? m_aspectRatio->value : 1.0);
    return m_projection;
}

const Matrix& PerspectiveCamera::transform(const Matrix& matrix)
{
    m_projection = m_projection * matrix;
    return m_projection;
}

void PerspectiveCamera::setAspectRatio(double aspectRatio)
{
    if (m_aspectRatio && m_aspectRatio->value != aspectRatio) { // 0 and -0 are equal
        m_aspectRatio->value = aspectRatio;
    }
}

unsigned createCameraListFromCollada(const domCOLLADA* collada, DAE& dae, vesk::Array<CameraHandle>& list)
{
    VIDEO_TRACE("Camera::createCameraListFromCollada");
    if (collada == nullptr) {
        VIDEO_LOG("Cannot create a camera list from a NULL domCOLLADA pointer");
        return 0;
    }
    list.clear();
    const domLibrary_cameras_Array& libraries = collada->getLibrary_cameras_array();
    for (std::size_t i = 0; i < libraries.getCount(); ++i) {
        const domCamera_Array& cameras = libraries[i]->getCamera_array();
        for (std::size_t j = 0; j < cameras.getCount(); ++j) {
            const domCamera::domOptics::domTechnique_commonRef technique = commonTechnique(*cameras[j]);
            if (technique != nullptr && technique->getPerspective() != nullptr) {
                list.append(CameraHandle::make<PerspectiveCamera>(cameras[j], dae));
            }
        }
    }
    return list.size();
}

} // namespace libVideo
