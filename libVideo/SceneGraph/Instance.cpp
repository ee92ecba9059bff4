#include <libVideo/SceneGraph/Instance.h>

#include "detail/Dom.h"
#include "detail/Log.h"

#include <libVideo/SceneGraph/Camera.h>
#include <libVideo/SceneGraph/Light.h>
#include <libVideo/SceneGraph/Node.h>

#include <vesk/Array.h>
#include <vesk/HashTable.h>

namespace libVideo {

VIDEO_LOG_CHANNEL("libVideo.instance")

namespace {

using Matrix = libMath::Matrix<float, 4, 4>;
using Vector3 = libMath::Vector<float, 3>;

// For row vectors, with Z towards the target, unlike the look-at matrix of nodes.
Matrix viewMatrix(const Vector3& eye, const Vector3& target, const Vector3& up)
{
    const Vector3 z = (target - eye).normalized();
    const Vector3 x = up.cross(z).normalized();
    const Vector3 y = z.cross(x);
    Matrix view;
    for (unsigned i = 0; i < 3; ++i) {
        view(i, 0) = x[i];
        view(i, 1) = y[i];
        view(i, 2) = z[i];
    }
    view(3, 0) = -x.dot(eye);
    view(3, 1) = -y.dot(eye);
    view(3, 2) = -z.dot(eye);
    view(3, 3) = 1.0f;
    return view;
}

} // namespace

Instance::~Instance() = default;

const NodeLink& Instance::setNode(const NodeLink& /*node*/)
{
    return m_node;
}

const vesk::String& Instance::name() const
{
    return m_name.empty() && m_node ? m_node->name() : m_name;
}

const vesk::String& Instance::nodeId() const
{
    return m_node ? m_node->id() : vesk::String::EMPTY();
}

CameraInstance::~CameraInstance() = default;

bool CameraInstance::createFromCollada(const domInstance_camera& instance, const vesk::Array<CameraHandle>& cameras,
                                       const NodeTable& nodes)
{
    const daeElementRef target = instance.getUrl().getElement();
    const CameraHandle* found = nullptr;
    if (target != nullptr) {
        const vesk::String id(target->getID());
        for (unsigned i = 0; i < cameras.size() && found == nullptr; ++i) {
            found = vesk::String::compareNoCase(cameras[i]->id(), id) == 0 ? &cameras[i] : nullptr;
        }
    }
    return bind(target, found == nullptr ? CameraHandle() : *found, nodes);
}

// @param target element that the instance refers to, or null
// @param camera camera with the id of the target, or empty
bool CameraInstance::bind(daeElement* target, const CameraHandle& camera, const NodeTable& nodes)
{
    if (target == nullptr) {
        VIDEO_LOG("domInstance_camera does not point to a camera element");
        return false;
    }
    if (!camera) {
        VIDEO_LOG("Cannot find camera source ", vesk::String(target->getID()), " for this instance");
        return false;
    }
    m_camera = camera;
    const NodeTable::Bucket* const lookAtNode = nodes.lookup(m_camera->lookAtNode());
    if (lookAtNode == nullptr) {
        VIDEO_LOG("Cannot find lookat node ", m_camera->lookAtNode(), " from camera list");
        return true;
    }
    m_lookAtNode = lookAtNode->value;
    updateView();
    return true;
}

const vesk::String& CameraInstance::cameraId() const
{
    return m_camera ? m_camera->id() : vesk::String::EMPTY();
}

const Matrix& CameraInstance::setLookAtNode(const NodeLink& node)
{
    m_lookAtNode = node;
    updateView();
    return m_view;
}

void CameraInstance::updateView()
{
    if (m_node && m_lookAtNode) {
        const Node& node = *m_node;
        const Node& target = *m_lookAtNode;
        m_view = viewMatrix(node.position(), target.position(), node.up());
    }
}

const Matrix& CameraInstance::view(double time)
{
    if (m_node && m_lookAtNode && (m_node->hasAnimation() || m_lookAtNode->hasAnimation())) {
        const Vector3 up = m_node->up(time);
        const Vector3 target = m_lookAtNode->position(time);
        const Vector3 eye = m_node->position(time);
        m_view = viewMatrix(eye, target, up);
    }
    return m_view;
}

Camera& CameraInstance::boundCamera() const
{
    if (!m_camera) {
        throw vesk::NullPointer("Camera instance has no camera");
    }
    return *m_camera;
}

const Matrix& CameraInstance::projection() const
{
    const Camera& camera = boundCamera();
    return camera.projectionMatrix();
}

const Matrix& CameraInstance::projection(double time)
{
    return boundCamera().projectionMatrix(time);
}

void CameraInstance::setAspectRatio(double aspectRatio)
{
    boundCamera().setAspectRatio(aspectRatio);
}

PointLightInstance::~PointLightInstance() = default;

bool PointLightInstance::createFromCollada(const domInstance_light& instance)
{
    m_name = instance.getName();
    m_sid = instance.getSid();
    return true;
}

SpotLightInstance::~SpotLightInstance() = default;

bool SpotLightInstance::createFromCollada(const domInstance_light& instance, const NodeTable& nodes)
{
    if (!m_spotLight) {
        return false;
    }
    m_name = instance.getName();
    m_sid = instance.getSid();
    const NodeTable::Bucket* const target = nodes.lookup(m_spotLight->lookAtNodeId());
    if (target == nullptr) {
        VIDEO_LOG("Cannot resolve lookAtNode with id ", m_spotLight->lookAtNodeId());
        return true;
    }
    m_lookAtNode = target->value;
    return true;
}

Vector3 SpotLightInstance::lookAtVector() const
{
    if (!m_lookAtNode || !m_node) {
        VIDEO_LOG("SpotLightInstace does not have valid internal nodes");
        return Vector3();
    }
    const Node& node = *m_node;
    const Node& target = *m_lookAtNode;
    return (target.position() - node.position()).normalized();
}

} // namespace libVideo
