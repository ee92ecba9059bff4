#include "PreparedFile.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace scenetool {

PreparedFile::PreparedFile(const std::string& file, const libPrepare::Options& options) : m_original(file)
{
    std::error_code error;
    std::filesystem::path folder = std::filesystem::temp_directory_path(error);
    m_folder = (error ? std::filesystem::path("/tmp") : folder) / "scenetool-XXXXXX";
    if (mkdtemp(m_folder.data()) == nullptr) {
        throw std::system_error(errno, std::generic_category(), "no temporary folder");
    }
    m_path = std::filesystem::path(m_folder) / std::filesystem::path(file).filename();
    m_report = libPrepare::prepare(file, m_path, options);
}

PreparedFile::~PreparedFile()
{
    std::error_code ignored;
    std::filesystem::remove_all(m_folder, ignored);
}

} // namespace scenetool
