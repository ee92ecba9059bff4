#pragma once

#include <string>

namespace test {

/// A `<source>` of floats; one param for each word of `params`.
std::string source(const std::string& id, const std::string& params, const std::string& numbers);
/// A `<source>` of interpolation words.
std::string kinds(const std::string& id, const std::string& words);
std::string input(const std::string& semantic, const std::string& id);
/// A library with one nested animation, whose sampler reads the sources "t" and "o" and, where they are there, "k", "in"
/// and "out".
std::string animated(const std::string& target, const std::string& sources);
/// A flat `<animation>` that the scene graph reads as it is. The ids of its elements start with its own.
std::string flat(const std::string& id, const std::string& target, const std::string& params, const std::string& times,
                 const std::string& values, const std::string& words);
/// A library with one visual scene "v", which is shown.
std::string shown(const std::string& nodes);

} // namespace test
