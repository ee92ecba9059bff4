#pragma once

#include <string>
#include <string_view>

namespace libPrepare {

/// A text with its percent encoding decoded. Anything that is not an encoding stays.
std::string percentDecoded(std::string_view text);
/// A file path as the path of a reference: encodes everything but letters, digits and `/-._~!$&'()*+,;=:@`.
std::string percentEncoded(std::string_view path);
/// A path with `/` instead of `\`.
std::string withSlashes(std::string path);
/// Whether a reference to a file can stay as it is: valid, without a query or a fragment. Blanks within it may stay,
/// because they are encoded when it is read.
bool isReadableReference(std::string_view reference);
/// The reference with `/` instead of `\`, and with everything encoded that is not allowed.
std::string readableReference(std::string_view reference);

} // namespace libPrepare
