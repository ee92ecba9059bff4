#pragma once

#include "PlainReader.h"

#include <libMath/Matrix.h>

#include <nlohmann/json.hpp>

#include <string>

namespace documents {

/// Relative tolerance, measured against the terms of a sum: the library computes in `float` with 24 bits, and a chain
/// of dozens of products loses a few of them.
constexpr double tolerance = 1e-5;

/// Expects the numbers of `expected` as floats, including NaN and infinities.
void expectMatrix(const libMath::Matrix<float, 4, 4>& actual, const PlainMatrix& expected, const std::string& what);

/// Loads the document with the library and expects the result of the plain reader: whether it loads, or with which
/// message or exception it fails; tree, names, local matrices and animated nodes; geometries and materials and the
/// messages about them; world matrices after folding. Floats of geometries and materials are rounded once, so they must
/// be equal bit for bit.
void expectLoadAsRead(const std::string& path, const PlainDocument& expected);

/// Compares a dump without options, as JSON, with the result of the plain reader.
void expectDumpAsRead(const nlohmann::json& dump, const PlainDocument& expected);

/// The same for a dump with a time and with folding. Matrices that animations change are left out.
void expectFoldedDumpAsRead(const nlohmann::json& dump, const PlainDocument& expected);

} // namespace documents
