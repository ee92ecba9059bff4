#pragma once

#include "ConversionNotes.h"
#include "GltfDocument.h"

#include <cstddef>
#include <map>
#include <optional>
#include <string>

namespace scenetool {

/// The images of a glTF document: PNG and JPEG as they are, other formats turned into PNG, all in buffer views.
class GltfImages {
public:
    /// One image in the document.
    struct Entry {
        std::size_t image = 0;
        bool hasAlpha = false; ///< Whether a texel is not opaque.
    };

    /// @param documentFile that references count from
    GltfImages(GltfDocument& document, ConversionNotes& notes, std::string documentFile)
        : m_document(&document), m_notes(&notes), m_documentFile(std::move(documentFile))
    {}

    /// The image of a file that a material names, as the document writes it. @return nothing if it cannot be read
    std::optional<Entry> image(const std::string& reference);

private:
    std::optional<Entry> read(const std::string& file);

    GltfDocument* m_document;
    ConversionNotes* m_notes;
    std::string m_documentFile;
    std::map<std::string, std::optional<Entry>> m_entries; // by file
};

} // namespace scenetool
