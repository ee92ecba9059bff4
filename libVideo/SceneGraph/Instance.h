#pragma once // SPDX-License-Identifier: MIT

#include <libVideo/Export.h>
#include <libVideo/Handles.h>

#include <libMath/Matrix.h>
#include <libMath/Vector.h>

#include <vesk/CopiedResource.h>
#include <vesk/String.h>

namespace libVideo {

/// Something of the document's libraries on a node of the tree. It owns neither: the scene keeps both, and when that
/// ends, the links of an instance that is still held lead nowhere.
class LIBVIDEO_API Instance {
public:
    Instance() = default;
    /// @param node where it stands
    explicit Instance(const NodeLink& node) : m_node(node) {}
    Instance(const Instance&) = default;
    Instance& operator=(const Instance&) = default;
    virtual ~Instance();

    const NodeLink& node() const { return m_node; } ///< Where it stands.
    /// Stores nothing: an instance stays on its node. @return the node
    const NodeLink& setNode(const NodeLink& node);
    /// The `sid` of the instance element.
    const vesk::String& sid() const { return m_sid; }
    /// The `name` of the instance element; without one that of the node.
    const vesk::String& name() const;
    /// The id of the node, empty without one.
    const vesk::String& nodeId() const;

protected:
    NodeLink m_node;     ///< Where it stands.
    vesk::String m_sid;  ///< Of the instance element.
    vesk::String m_name; ///< Of the instance element.
};

/// A camera on a node, read from an `<instance_camera>`, with the view of one that looks from there at another node.
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
    /// @param node where the camera stands
    explicit CameraInstance(const NodeLink& node) : Instance(node) {}
    CameraInstance(const CameraInstance&) = default;
    CameraInstance& operator=(const CameraInstance&) = default;
    ~CameraInstance() override;

    /// Binds the first of `cameras` whose id is that of the element's target, whatever its case, and finds the node that
    /// the camera looks at, exactly. `sid` and `name` are not read.
    /// @return false, with one line on "libVideo.instance" and nothing changed, without such a camera; true, with a line
    ///     and the view all zero, without such a node
    bool createFromCollada(const domInstance_camera& instance, const vesk::Array<CameraHandle>& cameras,
                           const NodeTable& nodes);

    const Link<Camera>& camera() const { return m_camera; } ///< Empty until a load found one.
    /// The id of the camera, empty without one.
    const vesk::String& cameraId() const;
    const NodeLink& lookAtNode() const { return m_lookAtNode; } ///< Empty without one.
    /// Looks at another node from now on. @return the view; as it was if a node is missing
    const libMath::Matrix<float, 4, 4>& setLookAtNode(const NodeLink& node);

    /// The current view, zero until there was a node to look at.
    const libMath::Matrix<float, 4, 4>& view() const { return m_view; }
    /// The view at a time in seconds, which is the current one from then on, if one of the nodes is animated; else the
    /// current one. Both nodes are asked for that time, as they stand: parents are not folded in.
    const libMath::Matrix<float, 4, 4>& view(double time);
    /// What the camera answers. @throws vesk::NullPointer without a camera
    const libMath::Matrix<float, 4, 4>& projection() const;
    /// Of the camera at a time in seconds; the current one without animations.
    const libMath::Matrix<float, 4, 4>& projection(double time);
    /// Of the camera, and so of all its instances. @throws vesk::NullPointer without a camera
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

/// A point light on a node, read from an `<instance_light>`. The node tells where it is.
class LIBVIDEO_API PointLightInstance : public Instance {
public:
    PointLightInstance() = default;
    /// @param node where the light stands @param light owned by the pool
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
/// plays no part.
class LIBVIDEO_API SpotLightInstance : public Instance {
public:
    SpotLightInstance() = default;
    /// @param node where the light stands @param light owned by the pool
    SpotLightInstance(const NodeLink& node, const Link<SpotLight>& light) : Instance(node), m_spotLight(light) {}
    SpotLightInstance(const SpotLightInstance&) = default;
    SpotLightInstance& operator=(const SpotLightInstance&) = default;
    ~SpotLightInstance() override;

    /// Reads `name` and `sid`, and finds the node that the light looks at, exactly.
    /// @return false, with nothing changed, without a light; else true, with a line on "libVideo.instance" without such
    ///     a node
    bool createFromCollada(const domInstance_light& instance, const NodeTable& nodes);

    const Link<SpotLight>& spotLight() const { return m_spotLight; } ///< Owned by the pool.
    const NodeLink& lookatNode() const { return m_lookAtNode; }      ///< Empty without one.
    /// The light looks at another node from now on; nothing is computed.
    void setLookatNode(const NodeLink& node) { m_lookAtNode = node; }
    /// Direction of length 1 from the node to the one that the light looks at, as both stand; zero, with a line on
    /// "libVideo.instance", if one of them is missing.
    libMath::Vector<float, 3> lookAtVector() const;

private:
    Link<SpotLight> m_spotLight;
    NodeLink m_lookAtNode;
};

} // namespace libVideo
