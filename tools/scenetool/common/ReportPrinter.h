#pragma once

#include <libPrepare/Prepare.h>

#include <ostream>
#include <string>

namespace scenetool {

/// One line with the reason why a document is refused: "X is a directory", "X:152:7: not well-formed: ...".
std::string refusalText(const std::string& file, const libPrepare::Finding& refusal);

/// Writes a readable summary of a report. Findings of one kind are one entry: their number, the text and remedy of the
/// first, and the lines of all.
void writeReport(const libPrepare::Report& report, std::ostream& out);

/// The whole report in JSON, as docs/report.schema.json describes it. @param indent -1 for a single line
std::string reportJson(const std::string& file, const libPrepare::Report& report, int indent = -1);

} // namespace scenetool
