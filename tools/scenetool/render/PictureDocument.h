#pragma once

#include "../common/LoadedScene.h"

#include <libPrepare/Prepare.h>

#include <array>
#include <filesystem>
#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

namespace scenetool {

/// How a document is loaded for pictures.
struct DocumentOptions {
    bool isAsLoaded = false;    ///< does not prepare the document first
    std::optional<double> time; ///< time in seconds for the pose of skins and morphs
    double aspect = 1.5;        ///< width of the picture divided by its height
};

/// A document for pictures: prepared, so that the library delivers all of it, and loaded.
class PictureDocument {
public:
    /// @param folder for the prepared document during the load; the caller removes the folder
    PictureDocument(std::string file, const std::filesystem::path& folder, const DocumentOptions& options);

    /// The path as given, not that of the prepared document.
    const std::string& file() const { return m_file; }
    bool isLoaded() const { return m_loaded && m_loaded->isLoaded(); }
    /// Why the document is not loaded, in one line.
    std::string fault() const;
    /// Only for a loaded document.
    LoadedScene& scene() { return *m_loaded; }
    const LoadedScene& scene() const { return *m_loaded; }
    /// Whether the document was prepared. If not, default values of materials and lights cannot be distinguished from
    /// values in the document.
    bool isPrepared() const { return m_isPrepared; }
    const libPrepare::Report& report() const { return m_report; }
    /// The approximation that replaces a light or a camera of this kind, or null.
    const libPrepare::Approximation* approximation(libPrepare::Approximation::Kind kind, const std::string& id,
                                                   const std::string& node) const;
    /// The opacity texture for a material symbol, for which the library's material has no member; null without one.
    const libPrepare::OpacityTexture* opacityTexture(const std::string& symbol) const;
    /// Whether a geometry has computed normals, so that both sides of its triangles are lit alike.
    bool hasMadeNormals(const std::string& geometry) const;
    /// Sum of the ambient lights. Preparing adds it to emissions that are colors, but not to emission textures.
    std::array<float, 3> ambientLight() const;
    /// The file of a texture. References are relative to the document, or to the prepared document.
    std::string textureFile(const std::string& reference) const;
    /// Notes for the person who looks at the picture: one line for each message of the library, and one for what the
    /// picture leaves out.
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
