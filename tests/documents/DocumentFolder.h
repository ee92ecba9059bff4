#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace documents {

/// A document on disk, and the name for its tests.
struct StoredDocument {
    std::string name; ///< letters, digits and underscores
    std::string path;

    /// The bytes of the file.
    std::string content() const;
};

void PrintTo(const StoredDocument& document, std::ostream* out);

/// All documents of a folder and of those below it, sorted by path; none if there is no such folder.
/// @param name prefix of their names
std::vector<StoredDocument> documentsBelow(const std::string& name, const std::string& folder);

/// The documents of the repository, and those of the folder that the build is configured with.
std::vector<StoredDocument> ownDocuments();
std::vector<StoredDocument> allDocuments();

} // namespace documents
