#pragma once

#include <cstddef>
#include <string>

namespace scenetool {

/// Bytes as text: four characters for each three bytes, filled up with "=".
std::string base64(const unsigned char* bytes, std::size_t size);

} // namespace scenetool
