#pragma once

#include "Prepared.h"

#include <cstddef>
#include <string>
#include <vector>

namespace test {

/// The numbers of the source with this semantic.
/// @param animation XPath of a flat `<animation>`, here and below
std::vector<double> sourceOf(const Prepared& done, const std::string& animation, const std::string& semantic);

/// The interpolation words.
std::string wordsOf(const Prepared& done, const std::string& animation);

/// The scene graph's evaluation of a flat curve, implemented independently: one number of the value at a time.
double played(const Prepared& done, const std::string& animation, std::size_t component, double time, double declared);

} // namespace test
