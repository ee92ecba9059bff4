#include "PreparedFile.h"

#include <filesystem>

namespace scenetool {

PreparedFile::PreparedFile(const std::string& file, const libPrepare::Options& options)
    : m_original(file),
      m_path((m_folder.path() / std::filesystem::path(file).filename()).string()),
      m_report(libPrepare::prepare(file, m_path, options))
{}

} // namespace scenetool
