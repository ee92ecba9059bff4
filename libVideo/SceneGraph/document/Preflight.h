#pragma once

/// @file
/// The look at a file before the document model gets it.

#include <libVideo/ColladaDom.h>

#include <cstdint>
#include <filesystem>
#include <optional>

namespace libVideo::detail {

/// Whether the document model will survive a file. It must be XML, compressed by gzip or not, well-formed to its last
/// byte, with a root `COLLADA` and without a document type (which could declare entities that unfold without end), and
/// - no element named like the type of its parent where that type has no children: the document model would make the
///   child by that name and place it nowhere;
/// - no name of 128 bytes or more where the document model takes in elements that it does not know;
/// - at most 10,000 levels of elements, for each costs stack;
/// - at most 1 MiB in a start tag, 1,024 attributes in one, 1,024 namespaces at one place, and 256 steps to a parent
///   folder in a reference: all of these cost time with their square.
///
/// Reads the file once, in small pieces. What it keeps grows only with the number of different names.
/// @param dae knows the types of elements; nothing is opened in it
/// @return the number of bytes of the document, uncompressed; nothing if it is refused
std::optional<std::uint64_t> passPreflight(DAE& dae, const std::filesystem::path& file);

} // namespace libVideo::detail
