#pragma once

/// @file
/// Opens the documents of a `DAE`.

#include "DocumentDatabase.h"
#include "ElementTypes.h"

#include <libVideo/ColladaDom.h>

#include <cstdint>
#include <filesystem>

namespace libVideo::detail {

/// Opens documents for a `DAE` in place of the document model's own reader: checks a document and makes its elements in
/// one pass (see `DocumentParser`), and keeps them in a database of its own. Reader and database are passed to the
/// constructor of the `DAE`, which has to be destroyed before them.
class ColladaReader : public daeIOEmpty {
public:
    /// @param dae may be constructed later; it is not used until it opens a document
    explicit ColladaReader(DAE& dae) : m_dae(dae), m_types(dae), m_database(dae, m_types) {}

    DocumentDatabase& database() { return m_database; }

    /// Opens a file, which may be compressed by gzip. Its path may have any characters.
    /// @return its root, or null if it is not a regular file or the document is refused
    daeElement* open(const std::filesystem::path& file);

    daeInt setMeta(daeMetaElement* /*meta*/) override { return DAE_OK; }
    /// Called by the `DAE` to open a document. Without a text, this reads the file that was passed to `open()`, and no
    /// other file.
    daeInt read(const daeURI& uri, daeString text) override;

private:
    DAE& m_dae;
    ElementTypes m_types;
    DocumentDatabase m_database;
    const std::filesystem::path* m_file = nullptr; // the one being opened, or null
};

} // namespace libVideo::detail
