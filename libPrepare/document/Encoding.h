#pragma once

#include "Refusal.h"

#include <cstdint>
#include <optional>
#include <string>

namespace libPrepare {

/// What was found out on the way of a document to UTF-8.
struct Encoding {
    std::string name;             ///< As declared, or as its first bytes show; "UTF-8" if nothing says so.
    bool isMistaken = false;      ///< The declared one is not known, or is not that of the bytes, which are UTF-8.
    std::uint64_t zerosAtEnd = 0; ///< Zero characters after the last other one, which are taken off.
};

/// Takes a document to UTF-8 without a byte order mark. Its XML declaration keeps its words.
/// @param text bytes on the way in. Whether text that says to be UTF-8 is that is left to the parser.
/// @param most bytes of the result
std::optional<Refusal> decode(std::string& text, std::uint64_t most, Encoding& encoding);

} // namespace libPrepare
