#pragma once

#include "PlainReader.h"

#include <libMath/Matrix.h>

#include <nlohmann/json.hpp>

#include <string>

namespace documents {

/// Numbers may differ by this part of the magnitude of the terms that they were added up from: the library computes in
/// `float`, with 24 bits, and a chain of some dozens of products loses a few of them.
constexpr double tolerance = 1e-5;

/// Expects the numbers of `expected`, as floats: NaN where that is NaN, infinite where that is.
void expectMatrix(const libMath::Matrix<float, 4, 4>& actual, const PlainMatrix& expected, const std::string& what);

/// Loads the document with the library and expects what the plain reader made of it: whether it loads, and with which
/// line or exception not; tree, names, local matrices and animated nodes; geometries and materials, whose floats are
/// rounded once and so the same bit for bit, and the lines about them; world matrices behind the folding.
void expectLoadAsRead(const std::string& path, const PlainDocument& expected);

/// Expects of a dump without options, as JSON, what the plain reader made of the document.
void expectDumpAsRead(const nlohmann::json& dump, const PlainDocument& expected);

/// The same of a dump with a time and with folding, where animations do not have a say in the matrices.
void expectFoldedDumpAsRead(const nlohmann::json& dump, const PlainDocument& expected);

} // namespace documents
