#pragma once

#include <libPrepare/Prepare.h>

#include <nlohmann/json.hpp>

#include <ostream>
#include <string>

namespace scenetool {

/// One line that says why a document is refused: "X is a directory", "X:152:7: not well-formed: ...".
std::string refusalText(const std::string& file, const libPrepare::Finding& refusal);

/// What a report says, for people: findings of one kind are one entry with their number, the first sentence and remedy,
/// and their lines.
void writeReport(const libPrepare::Report& report, std::ostream& out);

/// The same whole, as docs/report.schema.json describes it.
nlohmann::ordered_json reportJson(const std::string& file, const libPrepare::Report& report);

} // namespace scenetool
