#pragma once

#include "render/SceneShow.h"

#include <functional>
#include <memory>
#include <string>

namespace scenetool {

/// Help text for the keys and the mouse.
extern const char* const viewerHelp;

/// Opens a document. The result may be a document that failed to load.
using DocumentOpener = std::function<std::unique_ptr<PictureDocument>(const std::string& file)>;
/// Receives a message about a document.
using ViewerSink = std::function<void(const std::string& file, const std::string& line)>;

/// Shows a document in a window until the window is closed. Saved pictures go to the current folder.
/// @throws PictureError if no window can be opened, or the document cannot be shown
void viewScene(const std::string& file, const DocumentOpener& open, const RenderOptions& options,
               const ViewerSink& sink);

} // namespace scenetool
