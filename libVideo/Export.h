#pragma once // SPDX-License-Identifier: MIT

/// @file
/// Marks what the library Video exports: the classes of `libVideo`, whole, and its free functions.

#define LIBVIDEO_API __attribute__((visibility("default"))) ///< Stands in front of what the library Video exports.
