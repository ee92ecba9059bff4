#pragma once

#include <string>
#include <string_view>

namespace libPrepare {

/// Whether a reference can hold an id as it is.
bool isPlainId(std::string_view id);
/// As `isPlainId`, for the id of an `<image>`, which is read up to `/`, `(` or `)` where it is a name.
bool isPlainImageId(std::string_view id);
/// The id with each run of other characters made one `_`.
std::string plainId(std::string_view id);
std::string plainImageId(std::string_view id);

} // namespace libPrepare
