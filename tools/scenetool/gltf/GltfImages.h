#pragma once

#include "ConversionNotes.h"
#include "GltfDocument.h"

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace scenetool {

/// The images of a glTF document: PNG and JPEG as they are, other formats turned into PNG, all in buffer views.
class GltfImages {
public:
    /// One image in the document.
    struct Entry {
        std::size_t image = 0;
        bool hasAlpha = false; ///< Whether a texel is not opaque.
    };

    /// @param documentFiles that references may count from; the first beside which they lead to a file is the one
    GltfImages(GltfDocument& document, ConversionNotes& notes, std::vector<std::string> documentFiles)
        : m_document(&document), m_notes(&notes), m_documentFiles(std::move(documentFiles))
    {}

    /// The image of a file that a material names, as the document writes it. @return nothing if it cannot be read
    std::optional<Entry> image(const std::string& reference);

private:
    std::string fileOf(const std::string& reference) const;
    std::optional<Entry> read(const std::string& file);

    GltfDocument* m_document;
    ConversionNotes* m_notes;
    std::vector<std::string> m_documentFiles;
    std::map<std::string, std::optional<Entry>> m_entries; // by file
};

} // namespace scenetool
