#pragma once

#include <string>
#include <string_view>

namespace libPrepare {

/// A text with its percent encoding decoded. Anything that is not an encoding stays.
std::string percentDecoded(std::string_view text);
/// A path as the path of a reference: all but letters, digits and `/-._~!$&'()*+,;=:@` is encoded.
std::string percentEncoded(std::string_view path);
/// A path with `/` in the place of `\`.
std::string withSlashes(std::string path);
/// Whether a reference to a file is read as it is: by the rules for references, without a query or a fragment. Blanks
/// within it may stay, since they are encoded when it is read.
bool isReadableReference(std::string_view reference);
/// The reference with `/` in the place of `\` and with all encoded that is not allowed in one.
std::string readableReference(std::string_view reference);

} // namespace libPrepare
