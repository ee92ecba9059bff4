#include "Passes.h"

#include <libPrepare/document/Document.h>
#include <libPrepare/document/Looks.h>
#include <libPrepare/document/Numbers.h>

#include <cstring>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace libPrepare {

namespace {

// Whether a name is read completely.
bool isName(const std::string& text)
{
    return !text.empty() && text.find_first_of(" \t\r\n/()") == std::string::npos;
}

// The images of a document by their names, for references that mean these.
class ImageNames {
public:
    explicit ImageNames(Document& document) : m_document(document) {}

    pugi::xml_node find(const std::string& name)
    {
        if (!m_isRead) {
            m_isRead = true;
            for (const pugi::xml_node image : elementsBelow(m_document.root(), "image")) {
                m_images.emplace(image.attribute("name").value(), image);
            }
        }
        const auto found = m_images.find(name);
        return name.empty() || found == m_images.end() ? pugi::xml_node() : found->second;
    }

private:
    Document& m_document;
    bool m_isRead = false;
    std::unordered_map<std::string, pugi::xml_node> m_images;
};

// Makes the textures of an effect lead to their images in the only way that is read: through a sampler and a surface
// among the parameters of the profile.
class TextureResolver {
public:
    TextureResolver(Document& document, ImageNames& imageNames, pugi::xml_node effect, const Shading& shading)
        : m_document(document), m_imageNames(imageNames), m_shading(shading), m_parameters(effect, shading)
    {
        for (const pugi::xml_node scope : {effect, shading.profile, shading.technique}) {
            for (const pugi::xml_node parameter : scope.children("newparam")) {
                m_takenNames.insert(std::string(trimmed(parameter.attribute("sid").value())));
            }
        }
        for (const pugi::xml_node parameter : shading.profile.children("newparam")) {
            m_readByName.emplace(trimmed(parameter.attribute("sid").value()), parameter);
        }
    }

    void run()
    {
        for (const char* const name : {"emission", "ambient", "diffuse", "specular", "reflective"}) {
            const pugi::xml_node channel = m_shading.shader.child(name);
            if (const pugi::xml_node texture = channel.child("texture")) {
                resolve(channel, texture);
            }
        }
    }

private:
    void resolve(pugi::xml_node channel, pugi::xml_node texture)
    {
        const std::string name(trimmed(texture.attribute("texture").value()));
        TextureChain chain = followTexture(m_document, m_parameters, name);
        if (!chain.image) {
            chain.image = imageByAnyName(name, chain);
        }
        if (!chain.image || trimmed(textOf(chain.image.child("init_from"))).empty()) {
            drop(channel, name, chain.image);
            return;
        }
        if (imageThatIsRead(name) == chain.image) {
            return;
        }
        const std::string sampler = samplerFor(chain);
        if (sampler.empty()) {
            m_document.lost(texture, "texture",
                            "The result would become too large with a sampler for \"" + name + "\".",
                            "raise the limit for the size of the result");
            return;
        }
        if (sampler != name) {
            setAttribute(texture, "texture", sampler);
        }
        m_document.rewritten(texture, "texture",
                             "The texture \"" + name +
                                 "\" does not lead to its image by a sampler and a surface of the profile.",
                             "\"" + sampler + "\" does");
    }

    // Some surfaces name their image by its name.
    pugi::xml_node imageByAnyName(const std::string& name, const TextureChain& chain)
    {
        for (const pugi::xml_node from : chain.surface.child("surface").children("init_from")) {
            if (const pugi::xml_node image = m_imageNames.find(std::string(trimmed(textOf(from))))) {
                return image;
            }
        }
        return chain.sampler || chain.surface ? pugi::xml_node() : m_imageNames.find(name);
    }

    // The element that the scene graph finds for a name. Null if it finds nothing or logs a message.
    pugi::xml_node imageThatIsRead(const std::string& name)
    {
        const pugi::xml_node sampler = readByName(name).child("sampler2D");
        const pugi::xml_node surface =
            readByName(std::string(trimmed(textOf(sampler.child("source"))))).child("surface");
        const pugi::xml_node from = surface.child("init_from");
        const std::string id = textOf(from);
        const pugi::xml_node image = isName(id) ? m_document.byId(id) : pugi::xml_node();
        return is(image, "image") ? image : pugi::xml_node();
    }

    pugi::xml_node readByName(const std::string& name) const
    {
        const auto found = m_readByName.find(name);
        return !isName(name) || found == m_readByName.end() ? pugi::xml_node() : found->second;
    }

    // The sid of a sampler in the profile that leads to the image. Empty if there is no room for it.
    std::string samplerFor(const TextureChain& chain)
    {
        std::string& known =
            m_made[std::to_string(chain.sampler.hash_value()) + '\n' + std::to_string(chain.surface.hash_value()) +
                   '\n' + std::to_string(chain.image.hash_value())];
        if (!known.empty() || !m_document.takeBytes(512)) {
            return known;
        }
        std::string image = chain.image.attribute("id").value();
        if (!isName(image) || m_document.byId(image) != chain.image) {
            image = m_document.freshId(isName(image) ? image : "image");
            m_document.rewritten(chain.image, "image", "The id of an image cannot be read.",
                                 "it is \"" + image + "\" now");
            m_document.setId(chain.image, image);
        }
        const std::string surfaceName = nameFor(chain.surface, image + "-surface");
        pugi::xml_node surface = made(chain.surface, surfaceName, "surface");
        dropInitializers(surface);
        setText(surface.prepend_child("init_from"), image);
        known = nameFor(chain.sampler, image + "-sampler");
        pugi::xml_node sampler = made(chain.sampler, known, "sampler2D");
        while (const pugi::xml_node source = sampler.child("source")) {
            discard(source);
        }
        setText(sampler.prepend_child("source"), surfaceName);
        return known;
    }

    // The old name if no parameter of the profile has it.
    std::string nameFor(pugi::xml_node parameter, const std::string& wish)
    {
        std::string old = parameter.attribute("sid").value();
        if (isName(old) && is(parameter, "newparam") && m_readByName.count(old) == 0) {
            return old;
        }
        std::string name = isName(old) ? old : wish;
        for (unsigned number = 1; m_takenNames.count(name) > 0; ++number) {
            name = (isName(old) ? old : wish) + '-' + std::to_string(number);
        }
        return name;
    }

    // A new parameter of the profile with the content of another one, or empty. @return the sampler or surface in it
    pugi::xml_node made(pugi::xml_node original, const std::string& name, const char* kind)
    {
        pugi::xml_node parameter = m_shading.profile.insert_child_before("newparam", m_shading.technique);
        parameter.append_attribute("sid").set_value(name.c_str());
        m_document.setOrigin(parameter, original ? original : m_shading.shader);
        m_takenNames.insert(name);
        m_readByName.emplace(name, parameter);
        const pugi::xml_node body = original.child(kind);
        if (body) {
            const pugi::xml_node copy = parameter.append_copy(body);
            for (pugi::xml_node element : elementsBelow(copy, nullptr)) {
                element.remove_attribute("id"); // which the original keeps
            }
            return copy;
        }
        pugi::xml_node made = parameter.append_child(kind);
        if (std::strcmp(kind, "surface") == 0) {
            made.append_attribute("type").set_value("2D");
        }
        return made;
    }

    static void dropInitializers(pugi::xml_node surface)
    {
        for (pugi::xml_node child = surface.first_child(); child;) {
            const pugi::xml_node next = child.next_sibling();
            if (std::strncmp(child.name(), "init_", 5) == 0) {
                discard(child);
            }
            child = next;
        }
    }

    void drop(pugi::xml_node channel, const std::string& name, pugi::xml_node image)
    {
        m_document.lost(channel, "texture",
                        image ? "The texture \"" + name + "\" leads to an image without a file."
                              : "The texture \"" + name + "\" leads to no image.",
                        "name an <image> with a file in its <init_from>");
        const bool isDiffuse = is(channel, "diffuse");
        setColor(channel, isDiffuse ? "1 1 1 1" : "0 0 0 1");
        m_document.rewritten(channel, "texture", "A texture that leads nowhere is not read.",
                             isDiffuse ? "the channel is white" : "the channel is black");
    }

    Document& m_document;
    ImageNames& m_imageNames;
    Shading m_shading;
    Parameters m_parameters;
    std::unordered_set<std::string> m_takenNames;
    std::unordered_map<std::string, pugi::xml_node> m_readByName; // what the scene graph finds
    std::unordered_map<std::string, std::string> m_made;
};

} // namespace

void resolveTextures(Document& document)
{
    ImageNames imageNames(document);
    std::unordered_set<std::size_t> known;
    for (const pugi::xml_node material : shownMaterials(document)) {
        const pugi::xml_node effect = effectOf(document, material);
        const Shading shading = shadingOf(effect);
        if (shading && known.insert(effect.hash_value()).second) {
            TextureResolver(document, imageNames, effect, shading).run();
        }
    }
}

} // namespace libPrepare
