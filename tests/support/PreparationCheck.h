#pragma once

#include <string>

namespace testSupport {

/// Prepares a document into files beside it. What comes out has to be read again, be prepared to itself byte for byte, and
/// be loaded and walked by the library; inspecting the document has to agree with preparing it.
/// @return what is wrong; empty if nothing is, as with a document that is refused
std::string faultOfPreparation(const std::string& path);

} // namespace testSupport
