#include "Passes.h"

#include "../document/DocumentFile.h"
#include "../document/Numbers.h"
#include "../document/Reference.h"
#include "../document/References.h"
#include "../document/Tree.h"

#include <cstring>
#include <deque>
#include <map>
#include <memory>
#include <system_error>
#include <unordered_map>

namespace libPrepare {

namespace {

namespace fs = std::filesystem;

// The library that holds elements of a kind; null if there is none.
const char* libraryOf(const char* kind)
{
    static constexpr struct {
        const char* kind;
        const char* library;
    } libraries[] = {{"animation", "library_animations"},
                     {"camera", "library_cameras"},
                     {"controller", "library_controllers"},
                     {"effect", "library_effects"},
                     {"geometry", "library_geometries"},
                     {"image", "library_images"},
                     {"light", "library_lights"},
                     {"material", "library_materials"},
                     {"node", "library_nodes"},
                     {"visual_scene", "library_visual_scenes"}};
    for (const auto& each : libraries) {
        if (std::strcmp(each.kind, kind) == 0) {
            return each.library;
        }
    }
    return nullptr;
}

// Whether a file lies in a folder or below it. Both are canonical.
bool isBelow(const fs::path& file, const fs::path& folder)
{
    const fs::path relative = file.lexically_relative(folder);
    return !relative.empty() && *relative.begin() != ".." && *relative.begin() != ".";
}

// Another document that this one references.
struct External {
    fs::path path;
    DocumentFile file;
    Options options;
    Report report; // its lines are of another file
    std::unique_ptr<Document> document;
    std::unordered_map<std::size_t, std::string> newIds; // of what was copied, by the element there
};

class ExternalCopy {
public:
    explicit ExternalCopy(Document& document) : m_document(document)
    {
        std::error_code error;
        m_self = fs::weakly_canonical(fs::absolute(document.file(), error), error);
    }

    void run()
    {
        for (const Reference& reference : m_document.census().references) {
            if (reference.form == Reference::Form::uri && !isInside(reference) && !fileOf(reference.text()).empty()) {
                m_open.push_back({reference, nullptr});
            }
        }
        if (!m_open.empty()) {
            m_document.forgetCensus();
        }
        while (!m_open.empty()) {
            const auto [reference, external] = m_open.front();
            m_open.pop_front();
            follow(reference, external);
        }
    }

private:
    struct Item {
        Reference reference; // in this document
        External* external;  // where it comes from; null if it always was here
    };

    // Whether a reference certainly has no document before the id, the usual case.
    static bool isInside(const Reference& reference)
    {
        return reference.attribute && *reference.attribute.value() == '#';
    }

    // The document before the `#`; empty if there is none.
    std::string fileOf(const std::string& text) const
    {
        const std::string_view uri = trimmed(text);
        const std::size_t mark = uri.find('#');
        return mark == std::string_view::npos ? std::string() : percentDecoded(uri.substr(0, mark));
    }

    void follow(const Reference& reference, External* from)
    {
        const std::string before = reference.text();
        switch (reference.form) {
        case Reference::Form::uri: {
            const std::string id = followUri(reference, from);
            if (!id.empty()) {
                reference.setText('#' + id);
            }
            break;
        }
        case Reference::Form::id: {
            const std::string id = copyOf(reference, from, std::string(trimmed(before)));
            if (!id.empty()) {
                reference.setText(id);
            }
            break;
        }
        case Reference::Form::path: {
            const std::size_t slash = std::min(before.find('/'), before.size());
            const std::string id = copyOf(reference, from, std::string(trimmed(before.substr(0, slash))));
            if (!id.empty()) {
                reference.setText(id + before.substr(slash));
            }
            break;
        }
        case Reference::Form::ids: {
            std::string list;
            for (const std::string_view word : words(before)) {
                const std::string id = copyOf(reference, from, std::string(word));
                list += (list.empty() ? "" : " ") + (id.empty() ? std::string(word) : id);
            }
            reference.setText(list);
            break;
        }
        }
    }

    // @return the id of the copy, or of the referenced element of this document; empty if there is none
    std::string followUri(const Reference& reference, External* from)
    {
        const std::string text = reference.text();
        const std::string_view uri = trimmed(text);
        const std::string file = fileOf(text);
        std::string id(uri.substr(std::min(uri.find('#') + 1, uri.size())));
        if (file.empty()) {
            return from != nullptr ? copyOf(reference, from, id) : std::string();
        }
        const std::string name = file.substr(file.find_last_of("/\\") + 1);
        if (from == nullptr && name == m_document.file().filename().string()) {
            return {}; // this one, wherever it was when it was written
        }
        const std::size_t scheme = file.find("://");
        if (scheme != std::string::npos && file.compare(0, scheme, "file") != 0) {
            lose(reference, "The reference " + text + " leads to the network.");
            return {};
        }
        std::error_code error;
        const fs::path folder = from != nullptr ? from->path.parent_path() : m_self.parent_path();
        const fs::path path =
            fs::weakly_canonical(folder / (scheme == std::string::npos ? file : file.substr(scheme + 3)), error);
        if (path == m_self) {
            return id;
        }
        if (error || !isBelow(path, m_self.parent_path())) {
            lose(reference, "The reference " + text + " leads out of the folder of the document.");
            return {};
        }
        External* const external = open(reference, path, text);
        return external != nullptr ? copyOf(reference, external, id) : std::string();
    }

    External* open(const Reference& reference, const fs::path& path, const std::string& text)
    {
        const auto [place, isNew] = m_externals.try_emplace(path.string());
        if (!isNew) {
            return place->second.get();
        }
        auto external = std::make_unique<External>();
        external->path = path;
        external->options = m_document.options();
        if (const std::optional<Refusal> refusal = external->file.read(path, m_document.options().maxSize)) {
            lose(reference,
                 "The reference " + text + " leads to a document that cannot be read: it " + refusal->reason + ".");
            return nullptr;
        }
        if (!m_document.takeBytes(external->file.lines().size())) {
            lose(reference, "The document that " + text + " leads to is too large.");
            return nullptr;
        }
        external->document =
            std::make_unique<Document>(external->file.xml(), path, external->options, external->report);
        convertVersions(*external->document);
        repairTexts(*external->document);
        place->second = std::move(external);
        return place->second.get();
    }

    // @return the id that a copy of an element has here; empty if there can be none
    std::string copyOf(const Reference& reference, External* from, const std::string& id)
    {
        if (from == nullptr || id.empty()) {
            return {};
        }
        Document& other = *from->document;
        pugi::xml_node element = other.resolve('#' + id, reference.kinds);
        element = element ? element : other.resolve('#' + id);
        const auto known = from->newIds.find(element.hash_value());
        if (known != from->newIds.end()) {
            return known->second;
        }
        const char* const library = libraryOf(element.name());
        if (library == nullptr) {
            // A texture names parameters as well, and skins their joints, which may be missing.
            if (reference.form == Reference::Form::uri) {
                lose(reference, "The reference " + reference.text() + " leads to nothing that can be copied in.");
            }
            return {};
        }
        copy(reference, *from, element, library);
        return from->newIds[element.hash_value()];
    }

    void copy(const Reference& reference, External& from, pugi::xml_node element, const char* library)
    {
        std::uint64_t bytes = 0;
        for (pugi::xml_node each = element; each; each = next(each, element)) {
            bytes += 2 * std::strlen(each.name()) + std::strlen(each.value()) + 5;
            for (const pugi::xml_attribute attribute : each.attributes()) {
                bytes += std::strlen(attribute.name()) + std::strlen(attribute.value()) + 4;
            }
        }
        from.newIds[element.hash_value()] = {};
        if (!m_document.takeBytes(bytes)) {
            lose(reference, "What " + reference.text() + " leads to would make the document too large.");
            return;
        }
        m_document.byId({}); // all ids are known before the copy adds its own
        const pugi::xml_node made = libraryNamed(library).append_copy(element);
        m_document.setOrigin(made, reference.element);
        pugi::xml_node there = element;
        for (pugi::xml_node here = made; here && there; here = next(here, made), there = next(there, element)) {
            if (const pugi::xml_attribute id = there.attribute("id")) {
                const std::string fresh = m_document.freshId(trimmed(id.value()));
                setAttribute(here, "id", fresh);
                from.newIds[there.hash_value()] = fresh;
            }
            if (is(here, "init_from") && is(here.parent(), "image")) {
                moveImage(here, from);
            }
        }
        m_document.registerIds(made);
        forEachReference(made, [&](const Reference& inner) { m_open.push_back({inner, &from}); });
        m_document.rewritten(reference.element, "external-reference",
                             "The reference " + reference.text() + " leads to another document.",
                             "copied in as " + from.newIds[element.hash_value()]);
    }

    // Image paths are relative to the folder of their document.
    void moveImage(pugi::xml_node initFrom, const External& from)
    {
        const std::string file(trimmed(textOf(initFrom)));
        const fs::path folder = from.path.parent_path().lexically_relative(m_self.parent_path());
        if (!file.empty() && folder != "." && file.find(':') == std::string::npos && file.front() != '/') {
            setText(initFrom, (folder / file).generic_string());
        }
    }

    pugi::xml_node libraryNamed(const char* name)
    {
        pugi::xml_node& library = m_libraries[name];
        if (!library) {
            pugi::xml_node root = m_document.root();
            const pugi::xml_node scene = root.child("scene");
            library = scene ? root.insert_child_before(name, scene) : root.append_child(name);
        }
        return library;
    }

    void lose(const Reference& reference, std::string text)
    {
        m_document.lost(reference.element, "external-reference", std::move(text),
                        "put the document beside this one, or what it holds into it");
    }

    Document& m_document;
    fs::path m_self;
    std::deque<Item> m_open;
    std::map<std::string, std::unique_ptr<External>> m_externals;
    std::map<std::string, pugi::xml_node> m_libraries;
};

} // namespace

void copyExternalReferences(Document& document)
{
    ExternalCopy(document).run();
}

} // namespace libPrepare
