#pragma once

#include "Encoding.h"
#include "InputFile.h"
#include "Lines.h"
#include "Refusal.h"

#include <pugixml.hpp>

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace libPrepare {

/// A document in a file: decoded, checked for well-formedness, and parsed into a tree.
class DocumentFile {
public:
    DocumentFile() = default;
    DocumentFile(const DocumentFile&) = delete;
    DocumentFile& operator=(const DocumentFile&) = delete;

    /// @param most bytes of the text
    std::optional<Refusal> read(const std::filesystem::path& file, std::uint64_t most);
    /// Writes the tree, or the bytes that were read if the tree has not changed.
    std::optional<Refusal> write(const std::filesystem::path& file, bool isChanged);

    pugi::xml_document& xml() { return m_xml; }
    const Lines& lines() const { return m_lines; }
    /// Whether no name has a prefix for certain.
    bool isPlain() const { return m_isPlain; }
    const Encoding& encoding() const { return m_encoding; }
    /// Whether it had a document type, which is not in the tree.
    bool hadDocumentType() const { return m_hadDocumentType; }

private:
    InputFile m_input;
    std::string m_text; // the tree points into it
    pugi::xml_document m_xml;
    Lines m_lines;
    Encoding m_encoding;
    bool m_isPlain = false;
    bool m_hadDocumentType = false;
};

} // namespace libPrepare
