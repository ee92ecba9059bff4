#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace documents {

/// A document on the disk, and a name for its tests.
struct StoredDocument {
    std::string name; ///< letters, digits and underscores
    std::string path;

    /// Its bytes.
    std::string content() const;
};

void PrintTo(const StoredDocument& document, std::ostream* out);

/// All documents of a folder and of those below it, sorted by path; none if there is no such folder.
/// @param name stands in front of their names
std::vector<StoredDocument> documentsBelow(const std::string& name, const std::string& folder);

/// Those of the repository, and of the folder that the build was told of.
std::vector<StoredDocument> ownDocuments();
std::vector<StoredDocument> allDocuments();

} // namespace documents
