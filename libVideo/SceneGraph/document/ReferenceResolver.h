#pragma once

/// @file
/// What the references of a document may reach.

#include <libVideo/ColladaDom.h>

#include <filesystem>
#include <string>
#include <unordered_map>

namespace libVideo::detail {

class ColladaReader;

/// Finds the elements of open documents by their id. Opens further `.dae` files where a reference asks for one, if they
/// lie in the folder of the first document or below it; never anything else, and never the network.
class ReferenceResolver : public daeURIResolver {
public:
    ReferenceResolver(DAE& owner, ColladaReader& reader) : daeURIResolver(owner), m_reader(reader) {}

    /// Opens the document whose folder is the limit from now on. @return its root, or null
    daeElement* openFirst(const std::filesystem::path& file);

    /// @return null if a reference has no fragment, or leads to nothing or out of the folder
    daeElement* resolveElement(const daeURI& reference) override;
    daeString getName() override { return "libVideo"; }

private:
    daeDocument* openReferenced(const daeURI& reference);

    ColladaReader& m_reader;
    std::filesystem::path m_folder;                            // without links
    std::unordered_map<std::string, daeDocument*> m_documents; // by their path without links; null if refused before
};

} // namespace libVideo::detail
