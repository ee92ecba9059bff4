#pragma once

#include <libVideo/SceneGraph/Scene.h>

#include <string>

namespace testSupport {

/// The outcome of loading any document.
struct LoadOutcome {
    bool isLoaded = false; ///< result of `createFromCollada`; false if it threw
    bool hasThrown = false;
    unsigned lineCount = 0; ///< messages logged by the load
    /// What went wrong: an exception of a foreign type, a refusal without a message, or an inconsistent scene. Empty if
    /// the outcome is allowed.
    std::string fault;
};

/// Loads a document into the scene, then walks the scene, even after an exception.
LoadOutcome loadAndWalk(libVideo::Scene& scene, const std::string& path);

/// Reads all that a host can reach, evaluates the scene at ordinary and odd times, folds the nodes, and reads
/// everything again. Exceptions of `vesk` are caught call by call.
/// @return what is inconsistent, such as an index without a vertex; empty if nothing is
std::string walkScene(libVideo::Scene& scene);

} // namespace testSupport
