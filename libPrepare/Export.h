#pragma once // SPDX-License-Identifier: MIT

/// @file
/// Marks what the library Prepare exports.

#define LIBPREPARE_API __attribute__((visibility("default"))) ///< Comes before what the library Prepare exports.
