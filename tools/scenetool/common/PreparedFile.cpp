#include "PreparedFile.h"

#include <filesystem>

namespace scenetool {

PreparedFile::PreparedFile(const std::string& file, const libPrepare::Options& options)
    : m_original(file),
      m_path((m_folder.path() / std::filesystem::path(file).filename()).string()),
      m_report(libPrepare::prepare(file, m_path, options))
{}

std::unique_ptr<PreparedFile> PreparedFile::makeIf(bool isWanted, const std::string& file)
{
    return isWanted ? std::make_unique<PreparedFile>(file, libPrepare::Options()) : nullptr;
}

} // namespace scenetool
