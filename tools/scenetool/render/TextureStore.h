#pragma once

#include "GlObject.h"
#include "Picture.h"
#include "PictureDocument.h"
#include "Shortfalls.h"

#include <map>
#include <string>

namespace scenetool {

/// An uploaded image.
struct StoredTexture {
    GlObject texture; ///< has no name if the image cannot be loaded
    bool hasAlpha = false;
};

/// A use of an image, with its wrapping.
struct UsedTexture {
    const StoredTexture* stored = nullptr; ///< null if there is no image
    GLint wrapAcross = GL_REPEAT;
    GLint wrapUp = GL_REPEAT;

    /// Binds the texture to a texture unit, or nothing if there is no image.
    void bind(unsigned unit) const;
};

/// Loads the images of a document as OpenGL textures, each only once.
class TextureStore {
public:
    TextureStore(const PictureDocument& document, Shortfalls& shortfalls)
        : m_document(&document), m_shortfalls(&shortfalls)
    {}

    /// @param channel what uses the texture, for the message if it cannot be loaded
    UsedTexture use(const libVideo::Texture& shown, const std::string& channel);
    /// @param reference as written in the document
    /// @param wrapS the wrapping as written in the document, such as `MIRROR`; empty for none
    UsedTexture use(const std::string& reference, const std::string& wrapS, const std::string& wrapT,
                    const std::string& channel);

private:
    UsedTexture use(const std::string& reference, const std::string& channel);
    const StoredTexture& stored(const std::string& reference, const std::string& channel);

    const PictureDocument* m_document;
    Shortfalls* m_shortfalls;
    std::map<std::string, StoredTexture> m_textures; ///< by file
};

} // namespace scenetool
