#pragma once // SPDX-License-Identifier: MIT

/// @file
/// Marks what the library Common exports. Everything else stays hidden.

#define VESK_API __attribute__((visibility("default"))) ///< Marks a class or function that the library exports.
