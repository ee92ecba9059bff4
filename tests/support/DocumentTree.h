#pragma once

#include <libVideo/ColladaDom.h>

#include <string>

namespace testSupport {

/// Everything that an open document says, one line an element: its type, name, parent, attributes with whether they are
/// set, value, references with what they lead to, and the elements that its ids name. Numbers are printed as their bits.
std::string documentTree(DAE& dae, domCOLLADA& root);

} // namespace testSupport
