#pragma once

#include <string>

namespace benchmarks {

/// What is done with a document while it is measured.
enum class Work {
    Open,  ///< the document model's own open, with nothing of this library
    Load,  ///< a new `libVideo::Scene` loads it
    Import ///< Assimp imports it, in builds that have it
};

/// "open", "load", "import".
const char* nameOf(Work work);
/// @throws std::runtime_error if no work has that name
Work workOf(const std::string& name);

/// Does the work on the document at `path`.
/// @return the processor time in seconds that it took, without that of freeing what was read
/// @throws std::runtime_error if the document is refused, or the work is not part of this build
double secondsOf(Work work, const std::string& path);

} // namespace benchmarks
