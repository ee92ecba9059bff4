#pragma once

#include <pugixml.hpp>

namespace libPrepare {

class OutputFile;

/// Writes a document as UTF-8, without a blank that the tree does not hold. What pugixml writes itself loses the carriage
/// returns of a text.
void writeTree(const pugi::xml_document& document, OutputFile& output);

} // namespace libPrepare
