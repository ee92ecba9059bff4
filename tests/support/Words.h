#pragma once

#include <vesk/String.h>

#include <cstddef>
#include <string>
#include <vector>

/// @file
/// Builds small documents.

#define PARAM_X "<param name='X' type='float'/>"
#define PARAMS_ST "<param name='S' type='float'/><param name='T' type='float'/>"
#define PARAMS_XYZ "<param name='X' type='float'/><param name='Y' type='float'/><param name='Z' type='float'/>"
#define PARAM_MATRIX "<param name='M' type='float4x4'/>"
#define PARAM_UNNAMED "<param type='float'/>"

namespace testSupport {

inline std::string textOf(const vesk::String& text)
{
    return text.data();
}

/// A text repeated `count` times.
std::string repeated(const std::string& text, std::size_t count);

/// ASCII in UTF-16, after a byte order mark.
std::string inUtf16(const std::string& text, bool isLittleEndian);

/// The lines of a text, without line ends.
std::vector<std::string> linesOf(const std::string& text);

/// Number of words separated by blanks.
unsigned wordCount(const std::string& text);

/// "<name>content</name>"; empty if the content is.
std::string library(const std::string& name, const std::string& content);

/// A `<float_array>` with its `count`.
std::string floatArray(const std::string& id, const std::string& numbers);
/// A `<Name_array>` with its `count`.
std::string nameArray(const std::string& id, const std::string& names);
/// A `<technique_common>` with an accessor of an array.
std::string accessorTo(const std::string& array, const std::string& attributes,
                       const std::string& params = std::string());
/// A `<source>` with a float array "ID-array" and, if attributes are given, its accessor.
std::string sourceXml(const std::string& id, const std::string& numbers, const std::string& attributes = std::string(),
                      const std::string& params = std::string());
/// A `<source>` with that many records of numbers, whatever its array holds.
std::string floats(const std::string& id, const std::string& numbers, unsigned count, unsigned stride = 1);
/// A `<source>` with that many records of names, whatever its array holds.
std::string names(const std::string& id, const std::string& words, unsigned count, unsigned stride = 1);
std::string inputXml(const std::string& semantic, const std::string& source);
std::string inputXml(const std::string& semantic, const std::string& source, const std::string& offset);
/// An `<animation>` with keys at these times in seconds, and the same number of values for each key. It is linear
/// unless an interpolation is given. Its ids start with its name.
std::string curve(const std::string& name, const std::string& target, const std::string& seconds,
                  const std::string& values, const std::string& interpolation = std::string());

/// A library of one geometry "g" with a mesh.
std::string meshXml(const std::string& content);

std::string node(const std::string& id, const std::string& content);
/// An `<extra>` with the elements of a vendor.
std::string vendorExtra(const std::string& content, const std::string& profile = "FCOLLADA");
/// The `<optics>` of a perspective camera.
std::string optics(const std::string& perspective);

} // namespace testSupport
