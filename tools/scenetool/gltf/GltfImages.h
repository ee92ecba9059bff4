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

/// Embeds images in a glTF document, in buffer views: PNG and JPEG files unchanged, other formats converted to PNG.
class GltfImages {
public:
    /// An embedded image.
    struct Entry {
        std::size_t image = 0; ///< Index in "images".
        bool hasAlpha = false; ///< Whether any pixel is not opaque.
    };

    /// @param documentFiles references are relative to the first of these for which the image exists
    GltfImages(GltfDocument& document, ConversionNotes& notes, std::vector<std::string> documentFiles)
        : m_document(&document), m_notes(&notes), m_documentFiles(std::move(documentFiles))
    {}

    /// Embeds an image on first use. @param reference as written in the document @return nothing if it cannot be read
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
