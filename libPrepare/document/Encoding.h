#pragma once

#include "Refusal.h"

#include <cstdint>
#include <optional>
#include <string>

namespace libPrepare {

/// The findings of the conversion to UTF-8.
struct Encoding {
    std::string name;             ///< As declared, or as its first bytes show; "UTF-8" by default.
    bool isMistaken = false;      ///< The declared one is not known, or is not that of the bytes, which are UTF-8.
    std::uint64_t zerosAtEnd = 0; ///< Zero characters at the end, which are removed.
};

/// Converts a document to UTF-8 without a byte order mark. The XML declaration stays as it is.
/// @param text any bytes on entry. Whether text declared as UTF-8 is UTF-8 is left to the parser.
/// @param most bytes of the result
std::optional<Refusal> decode(std::string& text, std::uint64_t most, Encoding& encoding);

} // namespace libPrepare
