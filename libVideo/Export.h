#pragma once // SPDX-License-Identifier: MIT

/// @file
/// Marks what the library Video exports: the classes of `libVideo`, whole, and its free functions.

#define LIBVIDEO_API __attribute__((visibility("default"))) ///< Marks a class or function that the library exports.
