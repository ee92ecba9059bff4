#pragma once // SPDX-License-Identifier: MIT

#include <libVideo/Export.h>
#include <libVideo/Handles.h>

#include <libMath/Matrix.h>
#include <libMath/Vector.h>

#include <vesk/CopiedResource.h>
#include <vesk/String.h>

namespace libVideo {

/// Places a camera or a light of the document's libraries on a node. It owns neither: the scene owns both, and once it
/// is destroyed, the links of an instance dangle.
class LIBVIDEO_API Instance {
public:
    Instance() = default;
    /// @param node where it is
    explicit Instance(const NodeLink& node) : m_node(node) {}
    Instance(const Instance&) = default;
    Instance& operator=(const Instance&) = default;
    virtual ~Instance();

    const NodeLink& node() const { return m_node; } ///< Where it is.
    /// Has no effect: an instance stays on its node. @return the node
    const NodeLink& setNode(const NodeLink& node);
    /// The `sid` of the instance element.
    const vesk::String& sid() const { return m_sid; }
    /// The `name` of the instance element, else that of the node.
    const vesk::String& name() const;
    /// The id of the node, empty without one.
    const vesk::String& nodeId() const;

protected:
    NodeLink m_node;     ///< Where it is.
    vesk::String m_sid;  ///< Of the instance element.
    vesk::String m_name; ///< Of the instance element.
};

/// A camera on a node, read from an `<instance_camera>`, with the view from that node to the one it looks at.
///
/// The view matrix is left-handed and, unlike all other matrices, for points as row vectors on its left: with z from the
/// node towards the target, x = up × z, both of length 1, y = z × x, and eye the position of the node,
///
///     x.x          y.x          z.x          0
///     x.y          y.y          z.y          0
///     x.z          y.z          z.z          0
///     −(x · eye)   −(y · eye)   −(z · eye)   1
class LIBVIDEO_API CameraInstance : public Instance {
public:
    CameraInstance() = default;
    /// @param node where the camera is
    explicit CameraInstance(const NodeLink& node) : Instance(node) {}
    CameraInstance(const CameraInstance&) = default;
    CameraInstance& operator=(const CameraInstance&) = default;
    ~CameraInstance() override;

    /// Binds the first of `cameras` whose id is that of the element's target, in any case, and finds the node that the
    /// camera looks at, by its exact id. `sid` and `name` are not read.
    /// @return false, with one message on "libVideo.instance" and nothing changed, without such a camera; true, with a
    ///     message and a zero view, without such a node
    bool createFromCollada(const domInstance_camera& instance, const vesk::Array<CameraHandle>& cameras,
                           const NodeTable& nodes);

    const Link<Camera>& camera() const { return m_camera; } ///< Empty until a load finds one.
    /// The id of the camera, empty without one.
    const vesk::String& cameraId() const;
    const NodeLink& lookAtNode() const { return m_lookAtNode; } ///< Empty without one.
    /// Sets the node to look at. @return the new view; the old one if a node is missing
    const libMath::Matrix<float, 4, 4>& setLookAtNode(const NodeLink& node);

    /// The current view; zero until there is a node to look at.
    const libMath::Matrix<float, 4, 4>& view() const { return m_view; }
    /// Computes the view at a time in seconds and makes it the current one, if one of the two nodes is animated. Both
    /// nodes are evaluated at that time; their parents are not folded in.
    const libMath::Matrix<float, 4, 4>& view(double time);
    /// The current projection of the camera. @throws vesk::NullPointer without a camera
    const libMath::Matrix<float, 4, 4>& projection() const;
    /// The projection of the camera at a time in seconds; the current one without animations.
    const libMath::Matrix<float, 4, 4>& projection(double time);
    /// Changes it for the camera, and so for all its instances. @throws vesk::NullPointer without a camera
    void setAspectRatio(double aspectRatio);

private:
    friend class VisualScene;
    bool bind(daeElement* target, const CameraHandle& camera, const NodeTable& nodes);
    Camera& boundCamera() const;
    void updateView();

    Link<Camera> m_camera;
    NodeLink m_lookAtNode;
    libMath::Matrix<float, 4, 4> m_view;
};

/// A point light on a node, read from an `<instance_light>`. The node says where it is.
class LIBVIDEO_API PointLightInstance : public Instance {
public:
    PointLightInstance() = default;
    /// @param node where the light is @param light owned by the pool
    PointLightInstance(const NodeLink& node, const Link<PointLight>& light) : Instance(node), m_pointLight(light) {}
    PointLightInstance(const PointLightInstance&) = default;
    PointLightInstance& operator=(const PointLightInstance&) = default;
    ~PointLightInstance() override;

    /// Reads `name` and `sid`. @return true
    bool createFromCollada(const domInstance_light& instance);
    const Link<PointLight>& pointLight() const { return m_pointLight; } ///< Owned by the pool.

private:
    Link<PointLight> m_pointLight;
};

/// A spot light on a node, read from an `<instance_light>`. It may look at another node; the rotation of its own node
/// has no effect.
class LIBVIDEO_API SpotLightInstance : public Instance {
public:
    SpotLightInstance() = default;
    /// @param node where the light is @param light owned by the pool
    SpotLightInstance(const NodeLink& node, const Link<SpotLight>& light) : Instance(node), m_spotLight(light) {}
    SpotLightInstance(const SpotLightInstance&) = default;
    SpotLightInstance& operator=(const SpotLightInstance&) = default;
    ~SpotLightInstance() override;

    /// Reads `name` and `sid`, and finds the node that the light looks at, by its exact id.
    /// @return false, with nothing changed, without a light; else true, with a message on "libVideo.instance" if there
    ///     is no such node
    bool createFromCollada(const domInstance_light& instance, const NodeTable& nodes);

    const Link<SpotLight>& spotLight() const { return m_spotLight; } ///< Owned by the pool.
    const NodeLink& lookatNode() const { return m_lookAtNode; }      ///< Empty without one.
    /// Sets the node to look at; nothing is computed.
    void setLookatNode(const NodeLink& node) { m_lookAtNode = node; }
    /// Unit direction from the node to the one that the light looks at, by their current matrices; zero, with a message
    /// on "libVideo.instance", if one of them is missing.
    libMath::Vector<float, 3> lookAtVector() const;

private:
    Link<SpotLight> m_spotLight;
    NodeLink m_lookAtNode;
};

} // namespace libVideo
