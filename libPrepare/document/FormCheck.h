#pragma once

#include "Refusal.h"

#include <optional>
#include <string_view>

namespace libPrepare {

/// Whether a text is a well-formed document of COLLADA that `libVideo` would look into: no declarations in a document
/// type (which could be of entities that unfold without end), at most 10,000 levels of elements, at most 1 MiB and
/// 1,024 attributes in a start tag, 1,024 namespaces at one place, 256 steps to a parent folder in a reference, and no
/// name of 128 bytes or more in a `<technique>`, no `<p>` in a `<p>` or the like. libxml2 judges the form.
/// @param text UTF-8 without a byte order mark, whatever its XML declaration says
/// @return where and why not
std::optional<Refusal> checkForm(std::string_view text);

} // namespace libPrepare
