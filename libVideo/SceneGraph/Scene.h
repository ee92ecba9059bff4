#pragma once // SPDX-License-Identifier: MIT

/// @file
/// The way from a file to a scene. It can fail in these ways:
///
/// | what happens | how a host sees it | what is left |
/// |---|---|---|
/// | the file does not open, or is no document that can be trusted | `createFromCollada` returns false, one message on "libVideo.scene" | an empty scene, which may try again |
/// | no `<scene>`, or one that leads to no `<visual_scene>` | returns false, one message on "libVideo.scene" | the pool is filled; the scene is empty and may try again |
/// | a `<visual_scene>` without a `<node>` | returns false, one message on "libVideo.visualScene" | likewise |
/// | a scene is loaded already | returns false, one message on "libVideo.scene" | the loaded scene, unchanged |
/// | an element below the scene cannot be used | returns true, a message of the module that reads it | everything else |
/// | an element needs more memory than the budget of the load has | returns true, a message of the module that reads it | everything else |
/// | the document breaks a rule that reading depends on | throws `vesk::AssertionFailure` or `vesk::IndexOutOfBounds` | what was read before; safe to query and to destroy |
/// | out of memory | throws `vesk::NullPointer` or `std::bad_alloc` | likewise |
///
/// Messages are listed in the reference, with what causes them. A message has priority 3 (error).

#include <libVideo/ColladaDom.h>
#include <libVideo/Export.h>
#include <libVideo/Handles.h>
#include <libVideo/SceneGraph/SceneResources.h>
#include <libVideo/SceneGraph/VisualScene.h>

#include <libMath/Matrix.h>

#include <vesk/String.h>

#include <cstdint>
#include <memory>

namespace libVideo {

namespace detail {
class ColladaReader;
}

/// The one object that a host makes to load a document. It owns the document, the pool of what its libraries define,
/// and the scene that is built from both. Whatever a host reaches through it is destroyed with it.
///
/// Neither the up axis nor the unit of a document's `<asset>` is applied: coordinates stay as written.
class LIBVIDEO_API Scene {
public:
    Scene();
    ~Scene();
    Scene(const Scene&) = delete;
    Scene& operator=(const Scene&) = delete;

    /// Loads the document at `path`, a file of COLLADA 1.4.1, plain or compressed by gzip. The path may have any
    /// characters; a relative one starts at the working directory. The document stays open until the scene is
    /// destroyed.
    ///
    /// A scene is loaded once. After a failure it may try again; after an exception only if it has no node yet, since it
    /// keeps what was read. It can always be queried and destroyed.
    /// @return false, with one message on "libVideo.scene" or "libVideo.visualScene", if the document does not open, has no
    ///     `<scene>` with an `<instance_visual_scene>` that leads to a `<visual_scene>` with a `<node>`, or if a
    ///     scene is loaded already; smaller faults are logged by the modules that find them, and skipped
    /// @throws vesk::AssertionFailure or vesk::IndexOutOfBounds if the document breaks a rule that reading depends
    ///     on, vesk::NullPointer or std::bad_alloc if out of memory; the scene keeps what was read
    [[nodiscard]] bool createFromCollada(const vesk::String& path);

    VisualScene& visualScene() { return m_visualScene; } ///< The scene; empty before a load.
    /// The scene; empty before a load. Lives as long as this object.
    const VisualScene& visualScene() const { return m_visualScene; }

private:
    // Exported with the class; no load calls it.
    void transformToYUP(domUpAxisType upAxis);

    // Destroyed from below: the document first, then the pool, then the scene that refers to it.
    VisualScene m_visualScene;
    SceneResources m_resources;
    std::unique_ptr<detail::ColladaReader> m_reader; // used by m_dae
    DAE m_dae;
    [[maybe_unused]] std::uint64_t m_reserved = 0;
    libMath::Matrix<float, 4, 4> m_upTransform; // zero; no load uses it
};

} // namespace libVideo
