#pragma once

/// @file
/// The one way from a file to a document of the document model.

#include <libVideo/ColladaDom.h>

#include <filesystem>

namespace libVideo::detail {

/// Opens a file after the preflight has passed it.
/// @return null for whatever is no regular file or does not open
daeElement* openFile(DAE& dae, const std::filesystem::path& file);

} // namespace libVideo::detail
