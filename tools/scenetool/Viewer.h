#pragma once

#include "render/SceneShow.h"

#include <functional>
#include <memory>
#include <string>

namespace scenetool {

/// What the keys and the mouse do, for people.
extern const char* const viewerHelp;

/// Opens a document, which may not load.
using DocumentOpener = std::function<std::unique_ptr<PictureDocument>(const std::string& file)>;
/// Takes a line about a document.
using ViewerSink = std::function<void(const std::string& file, const std::string& line)>;

/// Shows a document in a window until that is closed. Pictures that are asked for go to the present folder.
/// @throws PictureError where there is no window to be had, or where the document cannot be shown
void viewScene(const std::string& file, const DocumentOpener& open, const RenderOptions& options,
               const ViewerSink& sink);

} // namespace scenetool
