#pragma once // SPDX-License-Identifier: MIT

#include <libVideo/Export.h>
#include <libVideo/Handles.h>

#include <libMath/Matrix.h>

#include <vesk/Array.h>
#include <vesk/SharedResource.h>
#include <vesk/String.h>

namespace libVideo {

/// One value of a camera's optics.
struct LIBVIDEO_API PerspectiveParameter {
    /// @param parameterValue in the unit of the element @param parameterSid empty without one
    PerspectiveParameter(double parameterValue, const vesk::String& parameterSid)
        : value(parameterValue), sid(parameterSid)
    {}

    double value;     ///< In degrees for an angle; otherwise a distance or a ratio.
    vesk::String sid; ///< by which an animation targets the value
};

/// A camera as the document's libraries define it; `CameraInstance` places it on a node.
class LIBVIDEO_API Camera {
public:
    Camera() = default;
    Camera(const Camera&) = default;
    Camera& operator=(const Camera&) = default;

    /// A copy that shares parameters and animations.
    virtual CameraHandle clone() const = 0;
    /// Computes the projection at a time in seconds and makes it the current one; without animations, returns that.
    virtual const libMath::Matrix<float, 4, 4>& projectionMatrix(double time) = 0;
    /// The current projection.
    virtual const libMath::Matrix<float, 4, 4>& projectionMatrix() const = 0;
    /// Multiplies the current projection by `matrix` from the right.
    virtual const libMath::Matrix<float, 4, 4>& transform(const libMath::Matrix<float, 4, 4>& matrix) = 0;
    virtual const vesk::String& name() const = 0; ///< The `name` of the element.
    /// The `id` of the element, by which instances and animations find the camera.
    virtual const vesk::String& id() const = 0;
    /// Id of the node to look at, empty without one.
    virtual const vesk::String& lookAtNode() const = 0;
    virtual ~Camera();
    /// Changes the aspect ratio of the camera and all its copies, if it has one.
    virtual void setAspectRatio(double aspectRatio) = 0;

    /// Adds an animation; a camera may have several. @throws vesk::NullPointer if the handle is empty
    void addAnimation(AnimationHandle animation);
    /// Length in seconds of the longest animation, after which it repeats; 0 without any.
    double animationLength() const;

protected:
    /// In the order in which they were added.
    const vesk::Array<AnimationHandle>& animations() const { return m_animations; }

private:
    vesk::Array<AnimationHandle> m_animations;
};

/// A `<camera>` with `<perspective>` optics. `<orthographic>` and `<imager>` are not read.
///
/// The projection is left-handed and row-major: with A = far / (far − near), x and y the cotangents of half the
/// horizontal and the vertical angle of view,
///
///     x    0    0           0
///     0    y    0           0
///     0    0    A           1
///     0    0    −A · near   0
///
/// for points as row vectors on its left; depth runs from 0 at the near plane to 1 at the far one. With one
/// angle only, the other scale follows from the aspect ratio: x = y · aspect ratio.
class LIBVIDEO_API PerspectiveCamera : public Camera {
public:
    /// Loads as `createFromCollada` does, and drops its result.
    PerspectiveCamera(const daeSmartRef<domCamera>& camera, DAE& dae);
    PerspectiveCamera(const PerspectiveCamera&) = default;
    PerspectiveCamera& operator=(const PerspectiveCamera&) = default;
    ~PerspectiveCamera() override;

    /// Reads id, name, the look-at reference (first text in a `<technique profile="FCOLLADA">` of an `<extra>`) and the
    /// optics, angles in degrees. `dae` parses the reference, and its base URI is changed to it.
    /// @return false, with one message on "libVideo.camera", if common technique, perspective, near or far plane are
    ///     missing, or if the angles do not determine the projection without an aspect ratio
    bool createFromCollada(const daeSmartRef<domCamera>& camera, DAE& dae);

    CameraHandle clone() const override;
    /// @copydoc Camera::projectionMatrix(double)
    /// Uses the animated angles and planes only; every other one counts as 0. A camera without aspect ratio uses 1, and
    /// logs that it has none.
    const libMath::Matrix<float, 4, 4>& projectionMatrix(double time) override;
    const libMath::Matrix<float, 4, 4>& projectionMatrix() const override { return m_projection; }
    const libMath::Matrix<float, 4, 4>& transform(const libMath::Matrix<float, 4, 4>& matrix) override;
    /// The attributes of the element, empty without one.
    const vesk::String& name() const override { return m_name; }
    const vesk::String& id() const override { return m_id; } ///< The `id` of the element, empty without one.
    const vesk::String& lookAtNode() const override { return m_lookAtNode; }
    /// The whole look-at reference, empty without one.
    const vesk::String& lookAtNodeURI() const { return m_lookAtNodeURI; }
    /// Takes effect at the next `projectionMatrix(double)` of a camera with animations.
    void setAspectRatio(double aspectRatio) override;

private:
    using Parameter = SharedHandle<PerspectiveParameter>;

    void readExtraCameraData(const daeSmartRef<domCamera>& camera, DAE& dae);
    bool updateProjectionMatrix(double znear, double zfar, double xfov, double yfov, double aspectRatio);

    libMath::Matrix<float, 4, 4> m_projection;
    vesk::String m_name;
    vesk::String m_id;
    vesk::String m_lookAtNodeURI;
    vesk::String m_lookAtNode;
    Parameter m_xfov; // degrees
    Parameter m_yfov; // degrees
    Parameter m_znear;
    Parameter m_zfar;
    Parameter m_aspectRatio;
};

/// Fills the list with the perspective cameras of the document's `<library_cameras>`, in document order, also with those
/// that fail to load.
/// @return the size of the list; 0, with a message on "libVideo.camera" and an unchanged list, without a document
LIBVIDEO_API unsigned createCameraListFromCollada(const domCOLLADA* collada, DAE& dae, vesk::Array<CameraHandle>& list);

} // namespace libVideo
