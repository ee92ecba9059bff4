#pragma once

#include <string_view>

namespace libPrepare {

/// Whether the schema has nothing but a value, or nothing at all, in elements of this name. What stands in them all the
/// same is passed over by readers.
bool holdsOnlyValue(std::string_view name);

} // namespace libPrepare
