#pragma once

#include <pugixml.hpp>

namespace libPrepare {

class OutputFile;

/// Writes a document as UTF-8, without adding blanks. pugixml's own writer loses the carriage returns of a text.
void writeTree(const pugi::xml_document& document, OutputFile& output);

} // namespace libPrepare
