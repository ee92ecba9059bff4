#pragma once

/// @file
/// Different texts of one hash, as a hostile document would have them for ids.

#include <string>
#include <vector>

namespace testSupport {

/// Texts of 16 letters, digits, `-`, `_` and `.`, which begin with a letter: all different, and of one
/// `vesk::HashFunc<vesk::String>::hash`, whatever it is reduced to.
std::vector<std::string> collidingTexts(unsigned count);

} // namespace testSupport
