#pragma once

#include <libVideo/ColladaDom.h>

#include <string>

namespace testSupport {

/// Prints everything that an open document holds, one line per element: type, name, parent, attributes and whether they
/// are set, value, references and their targets, and the elements that its ids name. Numbers are printed as bits.
std::string documentTree(DAE& dae, domCOLLADA& root);

} // namespace testSupport
