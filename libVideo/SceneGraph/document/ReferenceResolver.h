#pragma once

/// @file
/// Resolves the references of a document within its folder.

#include <libVideo/ColladaDom.h>

#include <filesystem>
#include <string>
#include <unordered_map>

namespace libVideo::detail {

class ColladaReader;

/// Finds the elements of open documents by id. Opens further `.dae` files that references name, but only in the folder
/// of the first document or below it. Opens no other files, and never uses the network.
class ReferenceResolver : public daeURIResolver {
public:
    ReferenceResolver(DAE& owner, ColladaReader& reader) : daeURIResolver(owner), m_reader(reader) {}

    /// Opens the first document, whose folder limits all references from now on. @return its root, or null
    daeElement* openFirst(const std::filesystem::path& file);

    /// @return the element; null if the reference has no fragment, or refers to nothing or out of the folder
    daeElement* resolveElement(const daeURI& reference) override;
    daeString getName() override { return "libVideo"; }

private:
    daeDocument* openReferenced(const daeURI& reference);

    ColladaReader& m_reader;
    std::filesystem::path m_folder;                            // canonical
    std::unordered_map<std::string, daeDocument*> m_documents; // by canonical path; null if refused
};

} // namespace libVideo::detail
