#pragma once

#include <string>

namespace testSupport {

/// Prepares a document into files beside it. The result has to be readable, must not change when it is prepared again,
/// and has to survive loading and walking by the library. Inspecting the document has to agree with preparing it.
/// @return what is wrong; empty if nothing is wrong, or if the document is refused
std::string faultOfPreparation(const std::string& path);

} // namespace testSupport
