#pragma once

#include "TemporaryFolder.h"

#include <libPrepare/Prepare.h>

#include <string>

namespace scenetool {

/// A document that was prepared into a temporary file, which is removed with this object.
class PreparedFile {
public:
    /// Prepares a document; `report()` says how that went.
    /// @throws std::system_error if there can be no temporary file
    PreparedFile(const std::string& file, const libPrepare::Options& options);

    /// Whether there is a prepared document.
    bool isPrepared() const { return m_report.done; }
    /// The temporary file; the document itself if it could not be prepared.
    const std::string& path() const { return m_report.done ? m_path : m_original; }
    /// The document that was prepared.
    const std::string& original() const { return m_original; }
    const libPrepare::Report& report() const { return m_report; }

private:
    std::string m_original;
    TemporaryFolder m_folder;
    std::string m_path;
    libPrepare::Report m_report;
};

} // namespace scenetool
