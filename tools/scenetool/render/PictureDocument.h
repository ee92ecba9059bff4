#pragma once

#include "../LoadedScene.h"

#include <libPrepare/Prepare.h>

#include <array>
#include <filesystem>
#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

namespace scenetool {

/// How a document is made ready for pictures.
struct DocumentOptions {
    bool isAsLoaded = false;    ///< shows what the library delivers without preparing the document
    std::optional<double> time; ///< seconds, at which skins and morphs take their pose
    double aspect = 1.5;        ///< width over height of the picture
};

/// A document as pictures show it: prepared, so that all of it arrives, and loaded.
class PictureDocument {
public:
    /// @param folder takes the prepared document for as long as the load lasts; the owner removes it
    PictureDocument(std::string file, const std::filesystem::path& folder, const DocumentOptions& options);

    /// The document as it was named, not the prepared one.
    const std::string& file() const { return m_file; }
    bool isLoaded() const { return m_loaded && m_loaded->isLoaded(); }
    /// Why it is not loaded, in one line.
    std::string fault() const;
    /// Only for a document that is loaded.
    LoadedScene& scene() { return *m_loaded; }
    const LoadedScene& scene() const { return *m_loaded; }
    /// Whether materials and lights say all that they mean. What the library stands in for a value that the document
    /// leaves out is not told from one that is written there otherwise.
    bool isPrepared() const { return m_isPrepared; }
    const libPrepare::Report& report() const { return m_report; }
    /// The record of a light or a camera of this kind that was approximated; null if it was not.
    const libPrepare::Approximation* approximation(libPrepare::Approximation::Kind kind, const std::string& id,
                                                   const std::string& node) const;
    /// The texture that makes faces of a material symbol transparent, which the record has no place for; else null.
    const libPrepare::OpacityTexture* opacityTexture(const std::string& symbol) const;
    /// Whether triangles of a geometry have normals that the document does not give, so that both sides are alike.
    bool hasMadeNormals(const std::string& geometry) const;
    /// The sum of the ambient lights. Prepare adds it to the emission of what they light, where that is no texture.
    std::array<float, 3> ambientLight() const;
    /// The file of a texture. References count from the folder of the document, or from that of the prepared one.
    std::string textureFile(const std::string& reference) const;
    /// What somebody who looks at the picture has to know of the document: one line for each message of the library,
    /// and one for each kind of thing that is passed over.
    std::vector<std::string> notes() const;

private:
    std::string m_file;
    std::string m_preparedFile;
    bool m_isPrepared;
    libPrepare::Report m_report;
    std::unordered_set<std::string> m_madeNormals;
    std::optional<LoadedScene> m_loaded;
};

} // namespace scenetool
