#pragma once

#include <libVideo/Handles.h>

#include <string>

namespace testSupport {

/// The animation of a document with one curve, which loads without a message; see `curve` in Words.h.
libVideo::AnimationHandle loadedCurve(const std::string& target, const std::string& seconds, const std::string& values,
                                      const std::string& interpolation = std::string());

} // namespace testSupport
