#pragma once

#include <string_view>

namespace libPrepare {

/// Whether a document is certainly well-formed and within all limits of `checkForm`, because it only has ASCII,
/// elements and attributes without prefixes, text, comments and the predefined entities. False means that a real parser
/// has to decide. Much faster than a parser.
bool isPlainlyFormed(std::string_view text);

} // namespace libPrepare
