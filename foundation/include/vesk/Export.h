#pragma once // SPDX-License-Identifier: MIT

/// @file
/// Marks what the library Common exports. Everything else stays hidden.

#define VESK_API __attribute__((visibility("default"))) ///< Stands in front of what the library Common exports.
