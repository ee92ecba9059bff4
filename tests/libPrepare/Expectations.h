#pragma once

#include "Prepared.h"

#include <string>
#include <vector>

namespace test {

/// Expects that preparing the result again changes nothing.
void expectStable(const Prepared& prepared, const libPrepare::Options& options = {});

/// Expects the same number of values, each within the tolerance.
void expectNear(const std::vector<double>& expected, const std::vector<double>& actual, double error = 1e-9);

/// A document in canonical XML, read by libxml2: "not well-formed" if that refuses it.
std::string canonical(const std::string& document);

} // namespace test
