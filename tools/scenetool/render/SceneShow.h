#pragma once

#include "Picture.h"
#include "PictureDocument.h"
#include "SceneRenderer.h"
#include "Viewpoint.h"

#include <optional>
#include <string>
#include <vector>

namespace scenetool {

/// What is asked of a picture that cannot be, by the options alone or by them and the document.
class PictureUsageError : public PictureError {
public:
    using PictureError::PictureError;
};

/// What a picture of a document shows, and how large it is.
struct RenderOptions {
    unsigned width = 960;
    unsigned height = 640;
    std::optional<double> time;      ///< seconds; without it the scene stands as the document has it
    std::optional<unsigned> camera;  ///< of the scene's list; without it the first, or a view of all
    bool isFramed = false;           ///< a view of all, whatever cameras there are
    bool isIdentityForEmpty = false; ///< nodes without transforms stand as with the identity
    UpAxis up = UpAxis::y;           ///< in a view of all
    DrawOptions drawing;
};

/// The pictures of one document. Needs a current context of OpenGL 3.3 for as long as it lives.
class SceneShow {
public:
    /// @throws PictureUsageError for a camera that the scene does not have, PictureError without anything to show
    SceneShow(PictureDocument& document, const RenderOptions& options, Shortfalls::Sink sink);
    SceneShow(const SceneShow&) = delete;
    SceneShow& operator=(const SceneShow&) = delete;

    /// Puts the scene to a time in seconds.
    void setTime(double time);
    /// Draws into the bound framebuffer. @return whether anything of the scene is in the picture
    bool draw(const Viewpoint& viewpoint, const DrawOptions& options);
    /// Draws what the options ask for, or all of the scene where their camera sees nothing, which stays so then.
    void drawAsAsked(float aspect);
    /// What a camera of the scene sees now; a view of all if it can show nothing.
    Viewpoint cameraView(unsigned camera, float aspect);
    /// The camera that the options ask for, else the first; nothing in a scene without any, or for a view of all.
    std::optional<unsigned> camera() const { return m_camera; }
    unsigned cameraCount() const;
    /// All of the scene, as it was at first.
    Orbit framedOrbit(float aspect) const;
    /// Seconds after which the longest animation repeats; 0 without any.
    double length() const;

private:
    const libPrepare::Approximation* orthographic(const libVideo::CameraInstance& camera) const;

    PictureDocument* m_document;
    LoadedScene* m_loaded;
    RenderOptions m_options;
    Shortfalls m_shortfalls;
    SceneRenderer m_renderer;
    ScenePose m_pose;
    std::vector<Vector3> m_points; ///< as the scene was at first
    std::vector<Matrix4> m_restProjections;
    std::optional<unsigned> m_camera;
};

/// One picture of a document. Needs a current context of OpenGL 3.3.
/// @throws PictureError if there is nothing to show, or the drawing fails
Picture renderPicture(PictureDocument& document, const RenderOptions& options, Shortfalls::Sink sink);

/// A row of pictures in time.
struct SequenceOptions {
    unsigned frames = 1;
    double framesPerSecond = 25.0;
    bool hasBar = false; ///< on standard output
};

/// Redraws a line on standard output, which is a terminal, that says how much of something is done.
void showBar(unsigned done, unsigned all);

/// Writes "name-0000.png", "name-0001.png" and so on for an output of "name.png". Needs a current context.
/// @throws PictureError; the pictures before stay
void renderSequence(PictureDocument& document, const RenderOptions& options, const SequenceOptions& sequence,
                    const std::string& output, Shortfalls::Sink sink);

} // namespace scenetool
