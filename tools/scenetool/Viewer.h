#pragma once

#include "render/SceneShow.h"

namespace scenetool {

/// What the keys and the mouse do, for people.
extern const char* const viewerHelp;

/// Shows a scene in a window until that is closed. Pictures that are asked for go to the present folder.
/// @throws PictureError where there is no window to be had or nothing to show
void viewScene(LoadedScene& loaded, const RenderOptions& options, Shortfalls::Sink sink);

} // namespace scenetool
