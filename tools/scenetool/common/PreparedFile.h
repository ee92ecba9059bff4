#pragma once

#include "TemporaryFolder.h"

#include <libPrepare/Prepare.h>

#include <memory>
#include <string>

namespace scenetool {

/// Prepares a document into a temporary file, which the destructor removes.
class PreparedFile {
public:
    /// Prepares a document; `report()` has the result.
    /// @throws std::system_error if no temporary folder can be created
    PreparedFile(const std::string& file, const libPrepare::Options& options);

    /// As the constructor, with the default options; null if it is not wanted.
    static std::unique_ptr<PreparedFile> makeIf(bool isWanted, const std::string& file);

    /// Whether there is a prepared document.
    bool isPrepared() const { return m_report.done; }
    /// Path of the prepared document; of the original document if it could not be prepared.
    const std::string& path() const { return m_report.done ? m_path : m_original; }
    /// Path of the original document.
    const std::string& original() const { return m_original; }
    const libPrepare::Report& report() const { return m_report; }

private:
    std::string m_original;
    TemporaryFolder m_folder;
    std::string m_path;
    libPrepare::Report m_report;
};

} // namespace scenetool
