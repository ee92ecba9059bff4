#pragma once

#include "GlObject.h"
#include "Picture.h"
#include "PictureDocument.h"
#include "Shortfalls.h"

#include <map>
#include <string>

namespace scenetool {

/// An image in the driver.
struct StoredTexture {
    GlObject texture; ///< without a name where the image cannot be had
    bool hasAlpha = false;
};

/// A use of an image, with what happens outside of it.
struct UsedTexture {
    const StoredTexture* stored = nullptr; ///< null where there is none to draw
    GLint wrapAcross = GL_REPEAT;
    GLint wrapUp = GL_REPEAT;

    /// To a unit of the driver. Without an image there is none in the unit.
    void bind(unsigned unit) const;
};

/// The images of a document as textures of OpenGL, each read once.
class TextureStore {
public:
    TextureStore(const PictureDocument& document, Shortfalls& shortfalls)
        : m_document(&document), m_shortfalls(&shortfalls)
    {}

    /// @param channel what shows it, for the line on one that cannot be had
    UsedTexture use(const libVideo::Texture& shown, const std::string& channel);
    /// @param reference as the document writes it
    /// @param wrapS the document's word for what happens outside of the image, such as `MIRROR`; empty for none
    UsedTexture use(const std::string& reference, const std::string& wrapS, const std::string& wrapT,
                    const std::string& channel);

private:
    UsedTexture use(const std::string& reference, const std::string& channel);
    const StoredTexture& stored(const std::string& reference, const std::string& channel);

    const PictureDocument* m_document;
    Shortfalls* m_shortfalls;
    std::map<std::string, StoredTexture> m_textures; ///< by the file
};

} // namespace scenetool
