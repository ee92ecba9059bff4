#pragma once

/// @file
/// Lists of numbers and of names, read faster than the document model does it.

#include <libVideo/ColladaDom.h>

namespace libVideo::detail {

/// Lets a `DAE` read the lists of numbers in elements (`<float_array>`, `<p>`, `<matrix>` and their kin) without one call
/// of the C library's scanner for each of them, and independently of the locale. The values are those of the document
/// model's own types, bit for bit: whatever is not plainly a number goes to these. The names of a `<Name_array>` are
/// kept once for each run of the same word. The `DAE` owns what is installed.
void installListTypes(DAE& dae);

} // namespace libVideo::detail
