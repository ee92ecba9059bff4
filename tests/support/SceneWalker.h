#pragma once

#include <libVideo/SceneGraph/Scene.h>

#include <string>

namespace testSupport {

/// How the load of some document ended, whatever it holds.
struct LoadOutcome {
    bool isLoaded = false; ///< what `createFromCollada` answered; false if it threw
    bool hasThrown = false;
    unsigned lineCount = 0; ///< of the log, while it loaded
    /// What no document may bring about, in words: an exception of a foreign type, a refusal without a line, a scene
    /// that contradicts itself. Empty if the outcome is one that is allowed.
    std::string fault;
};

/// Loads a document into the scene, then walks what came of it, also behind an exception.
LoadOutcome loadAndWalk(libVideo::Scene& scene, const std::string& path);

/// Reads all that a host can reach, evaluates it at ordinary and at odd times, folds the nodes, and reads it again.
/// Exceptions of `vesk` end the one question that they answer.
/// @return what contradicts itself, such as an index without a vertex; empty if nothing does
std::string walkScene(libVideo::Scene& scene);

} // namespace testSupport
