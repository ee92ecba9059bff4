#include "TextureStore.h"

#include "../common/Printable.h"

#include <algorithm>
#include <utility>

namespace scenetool {

namespace {

bool hasAlpha(const Picture& picture)
{
    for (std::size_t i = 3; i < picture.bytes.size(); i += 4) {
        if (picture.bytes[i] != 255) {
            return true;
        }
    }
    return false;
}

GlObject uploaded(Picture& picture)
{
    // The origin of texture coordinates is the lower left corner.
    for (unsigned y = 0; y < picture.height / 2; ++y) {
        std::swap_ranges(picture.row(y), picture.row(y) + 4 * std::size_t(picture.width),
                         picture.row(picture.height - 1 - y));
    }
    GLint maxSide = 0;
    glGetIntegerv(GL_MAX_TEXTURE_SIZE, &maxSide);
    if (std::max(picture.width, picture.height) > static_cast<unsigned>(maxSide)) {
        throw PictureError("is too large for the driver");
    }
    GlObject texture = newTexture();
    glBindTexture(GL_TEXTURE_2D, texture.name());
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, static_cast<GLsizei>(picture.width), static_cast<GLsizei>(picture.height),
                 0, GL_RGBA, GL_UNSIGNED_BYTE, picture.bytes.data());
    glGenerateMipmap(GL_TEXTURE_2D);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_LINEAR);
    const float border[4] = {0.0f, 0.0f, 0.0f, 1.0f};
    glTexParameterfv(GL_TEXTURE_2D, GL_TEXTURE_BORDER_COLOR, border);
    return texture;
}

template <class Wrap>
GLint wrapping(const Wrap& element)
{
    if (element == nullptr) {
        return GL_REPEAT;
    }
    switch (element->getValue()) {
    case FX_SAMPLER_WRAP_COMMON_MIRROR:
        return GL_MIRRORED_REPEAT;
    case FX_SAMPLER_WRAP_COMMON_CLAMP:
        return GL_CLAMP_TO_EDGE;
    case FX_SAMPLER_WRAP_COMMON_NONE:
    case FX_SAMPLER_WRAP_COMMON_BORDER:
        return GL_CLAMP_TO_BORDER;
    case FX_SAMPLER_WRAP_COMMON_WRAP:
    case FX_SAMPLER_WRAP_COMMON_COUNT:
        break;
    }
    return GL_REPEAT;
}

// The OpenGL constant for a wrapping as written in the document.
GLint wrapping(const std::string& word)
{
    return word == "MIRROR"                     ? GL_MIRRORED_REPEAT
           : word == "CLAMP"                    ? GL_CLAMP_TO_EDGE
           : word == "NONE" || word == "BORDER" ? GL_CLAMP_TO_BORDER
                                                : GL_REPEAT;
}

} // namespace

void UsedTexture::bind(unsigned unit) const
{
    glActiveTexture(GL_TEXTURE0 + unit);
    glBindTexture(GL_TEXTURE_2D, stored == nullptr ? 0 : stored->texture.name());
    if (stored != nullptr) {
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, wrapAcross);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, wrapUp);
    }
}

UsedTexture TextureStore::use(const std::string& reference, const std::string& wrapS, const std::string& wrapT,
                              const std::string& channel)
{
    UsedTexture result = use(reference, channel);
    result.wrapAcross = wrapping(wrapS);
    result.wrapUp = wrapping(wrapT);
    return result;
}

UsedTexture TextureStore::use(const std::string& reference, const std::string& channel)
{
    UsedTexture result;
    if (reference.empty()) {
        m_shortfalls->add("the texture for " + channel + " names no file");
        return result;
    }
    const StoredTexture& texture = stored(reference, channel);
    result.stored = texture.texture.name() == 0 ? nullptr : &texture;
    return result;
}

UsedTexture TextureStore::use(const libVideo::Texture& shown, const std::string& channel)
{
    UsedTexture result = use(std::string(shown.textureFile().data()), channel);
    if (shown.sampler() != nullptr) {
        result.wrapAcross = wrapping(shown.sampler()->getWrap_s());
        result.wrapUp = wrapping(shown.sampler()->getWrap_t());
    }
    return result;
}

const StoredTexture& TextureStore::stored(const std::string& reference, const std::string& channel)
{
    const std::string path = m_document->textureFile(reference);
    const auto found = m_textures.find(path);
    if (found != m_textures.end()) {
        return found->second;
    }
    StoredTexture loaded;
    try {
        Picture picture = readPicture(path);
        loaded.hasAlpha = hasAlpha(picture);
        loaded.texture = uploaded(picture);
    } catch (const PictureError& error) {
        m_shortfalls->add("the texture " + printable(reference) + " for " + channel + " " + printable(error.what()));
    }
    return m_textures.emplace(path, std::move(loaded)).first->second;
}

} // namespace scenetool
