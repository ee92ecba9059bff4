#include "Passes.h"

#include <libPrepare/document/Document.h>
#include <libPrepare/document/Looks.h>
#include <libPrepare/document/Numbers.h>
#include <libPrepare/document/Reference.h>

#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>

namespace libPrepare {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t longestPath = 4096; // no file has a longer one

bool isFile(const fs::path& path)
{
    std::error_code error;
    return fs::is_regular_file(path, error);
}

fs::path wholePath(const fs::path& path)
{
    std::error_code error;
    const fs::path whole = fs::absolute(path, error);
    return (error ? path : whole).lexically_normal();
}

// Finds image files relative to the source document, and makes their references relative to the result.
class ImageFinder {
public:
    explicit ImageFinder(Document& document)
        : m_document(document),
          m_from(wholePath(document.file()).parent_path()),
          m_to(wholePath(document.target()).parent_path())
    {}

    void find(pugi::xml_node element)
    {
        const std::string old = textOf(element);
        const std::string reference(trimmed(old));
        if (reference.empty() || isRemote(reference)) {
            return;
        }
        const fs::path path = fileOf(reference);
        // If no file is found, the reference stays if it is readable.
        const std::string text = path.empty()         ? readableReference(reference)
                                 : leadsTo(old, path) ? old
                                                      : referenceTo(path);
        if (text == old) {
            return;
        }
        m_document.rewritten(element, "image",
                             path.empty() ? "The reference \"" + reference + "\" could not be read."
                                          : "The reference \"" + reference + "\" does not lead to the file from there.",
                             "it is \"" + text + "\" now");
        setText(element, text);
    }

private:
    static bool isRemote(std::string_view reference)
    {
        const std::size_t colon = reference.find(':');
        return colon != std::string_view::npos && colon > 1 && reference.substr(0, colon) != "file" &&
               reference.find_first_not_of("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789+-.") ==
                   colon;
    }

    // The path in a reference, unchanged or with its percent encoding decoded.
    fs::path fileOf(const std::string& reference) const
    {
        if (reference.size() > longestPath) {
            return {};
        }
        std::string path = reference;
        if (path.rfind("file:", 0) == 0) {
            path.erase(0, path.rfind("file://", 0) == 0 ? 7 : 5);
        }
        const std::string slashed = withSlashes(path);
        for (const std::string& each : {path, percentDecoded(path), slashed, percentDecoded(slashed)}) {
            fs::path file = (m_from / each).lexically_normal(); // which is `each` if that is absolute
            if (isFile(file)) {
                return file;
            }
        }
        for (const std::string& each : {slashed, percentDecoded(slashed)}) {
            const fs::path name = fs::path(each).filename();
            if (!name.empty() && isFile(m_from / name)) {
                return m_from / name;
            }
        }
        return {};
    }

    // Whether every reader can find the file of a reference from the folder of the result.
    bool leadsTo(const std::string& reference, const fs::path& file) const
    {
        if (!isReadableReference(reference)) {
            return false;
        }
        std::string path = percentDecoded(reference);
        if (path.rfind("file:///", 0) == 0) {
            path.erase(0, 7);
        }
        return (m_to / path).lexically_normal() == file;
    }

    std::string referenceTo(const fs::path& file) const
    {
        const fs::path relative = file.lexically_relative(m_to);
        const std::string text = percentEncoded((relative.empty() ? file : relative).generic_string());
        // The name of a file may look like a scheme.
        return text.find(':') < text.find('/') ? "./" + text : text;
    }

    Document& m_document;
    fs::path m_from;
    fs::path m_to;
};

} // namespace

void findImages(Document& document)
{
    ImageFinder finder(document);
    for (const pugi::xml_node library : document.root().children()) {
        if (is(library, "library_geometries") || is(library, "library_animations") ||
            is(library, "library_visual_scenes")) {
            continue; // large, and their images are never shown
        }
        for (const pugi::xml_node image : elementsBelow(library, "image")) {
            if (const pugi::xml_node from = image.child("init_from")) {
                finder.find(from);
            }
        }
    }
    for (OpacityTexture& texture : document.report().opacityTextures) {
        texture.file = trimmed(textOf(document.byId(texture.image, {"image"}).child("init_from")));
    }
}

} // namespace libPrepare
