#include "ReferenceResolver.h"

#include "ColladaReader.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <exception>
#include <optional>
#include <system_error>

namespace libVideo::detail {

namespace {

// @return nothing if the result has a zero byte, which would end a path early
std::optional<std::string> percentDecoded(const std::string& text)
{
    std::string decoded;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char* const digits = text.data() + i + 1;
        unsigned char byte = 0;
        if (text[i] == '%' && i + 2 < text.size() && std::from_chars(digits, digits + 2, byte, 16).ptr == digits + 2) {
            decoded += static_cast<char>(byte);
            i += 2;
        } else {
            decoded += text[i];
        }
    }
    return decoded.find('\0') == std::string::npos ? std::optional(decoded) : std::nullopt;
}

bool isBelow(const std::filesystem::path& file, const std::filesystem::path& folder)
{
    return std::mismatch(folder.begin(), folder.end(), file.begin(), file.end()).first == folder.end();
}

bool isColladaFile(const std::filesystem::path& file)
{
    const std::string ending = file.extension().string();
    constexpr std::array<char, 4> expected = {'.', 'd', 'a', 'e'};
    return std::equal(ending.begin(), ending.end(), expected.begin(), expected.end(),
                      [](char c, char lowered) { return std::tolower(static_cast<unsigned char>(c)) == lowered; });
}

} // namespace

daeElement* ReferenceResolver::openFirst(const std::filesystem::path& file)
{
    m_folder = std::filesystem::canonical(file.parent_path());
    daeElement* const root = m_reader.open(file);
    if (root != nullptr) {
        m_documents[std::filesystem::canonical(file).string()] = root->getDocument();
    }
    return root;
}

daeElement* ReferenceResolver::resolveElement(const daeURI& reference)
{
    // "#" refers to an element with an empty id. Any other reference without a fragment refers to nothing.
    if (reference.fragment().empty() && reference.originalStr() != "#") {
        return nullptr;
    }
    // "#id" refers to the document of the element itself, which needs no search by URI.
    daeElement* const container = reference.getContainer();
    const bool isLocal = container != nullptr && reference.originalStr().compare(0, 1, "#") == 0;
    daeDocument* document = isLocal ? container->getDocument() : nullptr;
    if (document == nullptr) {
        document = reference.getReferencedDocument();
    }
    if (document == nullptr) {
        try {
            document = openReferenced(reference);
        } catch (const std::exception&) {
            return nullptr;
        }
    }
    return document != nullptr ? m_reader.database().find(reference.fragment(), *document) : nullptr;
}

daeDocument* ReferenceResolver::openReferenced(const daeURI& reference)
{
    if (reference.scheme() != "file" || !reference.authority().empty() || !reference.query().empty()) {
        return nullptr;
    }
    const std::optional<std::string> decoded = percentDecoded(reference.path());
    if (!decoded) {
        return nullptr;
    }
    const std::filesystem::path file = *decoded;
    std::error_code error;
    const std::filesystem::path place = std::filesystem::canonical(file, error);
    if (error || !isBelow(place, m_folder) || !isColladaFile(file) || !isColladaFile(place)) {
        return nullptr;
    }
    // Tries to open each file only once, whatever names refer to it, and even if that fails.
    const auto [entry, isNew] = m_documents.try_emplace(place.string(), nullptr);
    if (isNew) {
        const std::string name = entry->first; // a copy, because opening may add entries
        if (daeElement* const root = m_reader.open(file)) {
            m_documents[name] = root->getDocument();
        }
        return m_documents[name];
    }
    return entry->second;
}

} // namespace libVideo::detail
