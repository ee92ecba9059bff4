#pragma once

/// @file
/// The reader through which a `DAE` opens documents.

#include "DocumentDatabase.h"
#include "ElementTypes.h"

#include <libVideo/ColladaDom.h>

#include <cstdint>
#include <filesystem>

namespace libVideo::detail {

/// Opens documents for a `DAE` in place of the document model's own reader: guards and makes the elements in one pass
/// (see `DocumentParser`), and keeps them in a database of its own. Both go to the constructor of the `DAE`, which has to
/// be destroyed first.
class ColladaReader : public daeIOEmpty {
public:
    /// @param dae may be constructed later; it is not used until it opens a document
    explicit ColladaReader(DAE& dae) : m_dae(dae), m_types(dae), m_database(dae, m_types) {}

    DocumentDatabase& database() { return m_database; }

    /// Opens a file, compressed by gzip or not, whatever characters its path holds.
    /// @return its root, or null for whatever is no regular file, or is refused
    daeElement* open(const std::filesystem::path& file);

    daeInt setMeta(daeMetaElement* /*meta*/) override { return DAE_OK; }
    /// Called by the `DAE` to open a document. Without a text that is the file that `open()` was called for, and nothing
    /// else.
    daeInt read(const daeURI& uri, daeString text) override;

private:
    class Source;

    DAE& m_dae;
    ElementTypes m_types;
    DocumentDatabase m_database;
    const std::filesystem::path* m_file = nullptr; // that is being opened
};

} // namespace libVideo::detail
