#pragma once

#include <cstddef>
#include <string>

namespace scenetool {

/// Encodes bytes as Base64 text: four characters for each three bytes, padded with "=".
std::string base64(const unsigned char* bytes, std::size_t size);

} // namespace scenetool
