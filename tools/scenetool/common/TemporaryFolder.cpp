#include "TemporaryFolder.h"

#include <cerrno>
#include <cstdlib>
#include <string>
#include <system_error>

namespace scenetool {

TemporaryFolder::TemporaryFolder()
{
    std::string name = (std::filesystem::temp_directory_path() / "scenetool-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) {
        throw std::system_error(errno, std::generic_category(), "cannot create a temporary folder");
    }
    m_path = name;
}

TemporaryFolder::~TemporaryFolder()
{
    std::error_code error;
    std::filesystem::remove_all(m_path, error);
}

} // namespace scenetool
