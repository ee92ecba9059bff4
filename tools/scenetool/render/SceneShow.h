#pragma once

#include "Picture.h"
#include "PictureDocument.h"
#include "SceneRenderer.h"
#include "Viewpoint.h"

#include <optional>
#include <string>
#include <vector>

namespace scenetool {

/// Thrown if options are invalid, or do not fit the document.
class PictureUsageError : public PictureError {
public:
    using PictureError::PictureError;
};

/// What a picture of a document shows, and its size.
struct RenderOptions {
    unsigned width = 960;
    unsigned height = 640;
    std::optional<double> time;      ///< seconds; by default the scene is not evaluated
    std::optional<unsigned> camera;  ///< index in the scene; by default the first camera, or a view of the whole scene
    bool isFramed = false;           ///< always shows the whole scene
    bool isIdentityForEmpty = false; ///< nodes without transforms have the identity
    UpAxis up = UpAxis::y;           ///< for a view of the whole scene
    DrawOptions drawing;
};

/// Draws pictures of one document. Needs a current OpenGL 3.3 context as long as it exists.
class SceneShow {
public:
    /// @throws PictureUsageError if the scene does not have the camera, PictureError if there is nothing to show
    SceneShow(PictureDocument& document, const RenderOptions& options, Shortfalls::Sink sink);
    SceneShow(const SceneShow&) = delete;
    SceneShow& operator=(const SceneShow&) = delete;

    /// Evaluates the scene at a time in seconds.
    void setTime(double time);
    /// Draws into the bound framebuffer. @return whether any part of the scene is visible
    bool draw(const Viewpoint& viewpoint, const DrawOptions& options);
    /// Draws what the options select. If their camera sees nothing, this and all later calls draw the whole scene.
    void drawAsAsked(float aspect);
    /// The current view of a camera; a view of the whole scene if the camera cannot show anything.
    Viewpoint cameraView(unsigned camera, float aspect);
    /// The selected camera, or the first; nothing if the scene has none, or for a view of the whole scene.
    std::optional<unsigned> camera() const { return m_camera; }
    unsigned cameraCount() const;
    /// A view of the whole scene in its first pose.
    Orbit framedOrbit(float aspect) const;
    /// Length of the longest animation in seconds; 0 without any.
    double length() const;

private:
    const libPrepare::Approximation* orthographic(const libVideo::CameraInstance& camera) const;

    PictureDocument* m_document;
    LoadedScene* m_loaded;
    RenderOptions m_options;
    Shortfalls m_shortfalls;
    SceneRenderer m_renderer;
    ScenePose m_pose;
    std::vector<Vector3> m_points; ///< of the first pose
    std::vector<Matrix4> m_restProjections;
    std::optional<unsigned> m_camera;
};

/// Draws one picture of a document. Needs a current OpenGL 3.3 context.
/// @throws PictureError if there is nothing to show, or drawing fails
Picture renderPicture(PictureDocument& document, const RenderOptions& options, Shortfalls::Sink sink);

/// A sequence of pictures over time.
struct SequenceOptions {
    unsigned frames = 1;
    double framesPerSecond = 25.0;
    bool hasBar = false; ///< shows a progress bar on standard output
};

/// Draws a progress bar on standard output, which has to be a terminal.
void showBar(unsigned done, unsigned all);

/// Writes "name-0000.png", "name-0001.png" and so on for the output "name.png". Needs a current OpenGL 3.3 context.
/// @throws PictureError; earlier pictures are kept
void renderSequence(PictureDocument& document, const RenderOptions& options, const SequenceOptions& sequence,
                    const std::string& output, Shortfalls::Sink sink);

} // namespace scenetool
