#pragma once

/// @file
/// Different texts with the same hash, as a hostile document could use for ids.

#include <string>
#include <vector>

namespace testSupport {

/// Texts of 16 letters, digits, `-`, `_` and `.`, which begin with a letter. All differ and have the same
/// `vesk::HashFunc<vesk::String>::hash`, so they collide in a table of any size.
std::vector<std::string> collidingTexts(unsigned count);

} // namespace testSupport
