#include "ReferenceResolver.h"

#include "../detail/MemoryBudget.h"
#include "Preflight.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdint>
#include <exception>
#include <optional>
#include <system_error>

namespace libVideo::detail {

namespace {

constexpr char hexDigits[] = "0123456789ABCDEF";

bool isUnreserved(char c)
{
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '/' || c == '-' ||
           c == '.' || c == '_' || c == '~';
}

// The document model takes a path as a reference, in which most characters would mean something or end it.
std::string percentEncoded(const std::string& path)
{
    std::string encoded;
    for (const char c : path) {
        if (isUnreserved(c)) {
            encoded += c;
        } else {
            const auto byte = static_cast<unsigned char>(c);
            encoded += '%';
            encoded += hexDigits[byte >> 4u];
            encoded += hexDigits[byte & 0x0Fu];
        }
    }
    return encoded;
}

int hexValue(char c)
{
    const char* const end = hexDigits + 16;
    const char* const place = std::find(hexDigits, end, std::toupper(static_cast<unsigned char>(c)));
    return place == end ? -1 : static_cast<int>(place - hexDigits);
}

// @return nothing if the text hides the end of a path in it
std::optional<std::string> percentDecoded(const std::string& text)
{
    std::string decoded;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool isEncoded = text[i] == '%' && i + 2 < text.size();
        const int high = isEncoded ? hexValue(text[i + 1]) : -1;
        const int low = isEncoded ? hexValue(text[i + 2]) : -1;
        if (high >= 0 && low >= 0) {
            decoded += static_cast<char>(high * 16 + low);
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

daeElement* openFile(DAE& dae, const std::filesystem::path& file)
{
    std::error_code error;
    if (!std::filesystem::is_regular_file(file, error)) {
        return nullptr;
    }
    const std::optional<std::uint64_t> size = passPreflight(dae, file);
    if (!size) {
        return nullptr;
    }
    MemoryBudget::addDocument(*size);
    return dae.open(percentEncoded(file.string()));
}

daeElement* ReferenceResolver::openFirst(const std::filesystem::path& file)
{
    m_folder = std::filesystem::canonical(file.parent_path());
    daeElement* const root = openFile(*dae, file);
    if (root != nullptr) {
        m_documents[std::filesystem::canonical(file).string()] = root->getDocument();
    }
    return root;
}

daeElement* ReferenceResolver::resolveElement(const daeURI& reference)
{
    if (reference.fragment().empty()) {
        return nullptr; // an element with an empty id is no answer
    }
    daeDocument* document = reference.getReferencedDocument();
    if (document == nullptr) {
        try {
            document = openReferenced(reference);
        } catch (const std::exception&) {
            return nullptr;
        }
    }
    return document != nullptr ? dae->getDatabase()->idLookup(reference.fragment(), document) : nullptr;
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
    // Once for each file, under whatever names it is asked for, and whether it opens or not.
    const auto [entry, isNew] = m_documents.try_emplace(place.string(), nullptr);
    if (isNew) {
        const std::string name = entry->first; // opening may ask for further files
        if (daeElement* const root = openFile(*dae, file)) {
            m_documents[name] = root->getDocument();
        }
        return m_documents[name];
    }
    return entry->second;
}

} // namespace libVideo::detail
