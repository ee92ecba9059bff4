#include "TemporaryFolder.h"

#include "Picture.h"

#include <cerrno>
#include <cstdlib>
#include <string>
#include <system_error>

namespace scenetool {

TemporaryFolder::TemporaryFolder()
{
    std::error_code error;
    std::string name = (std::filesystem::temp_directory_path(error) / "scenetool-XXXXXX").string();
    if (error || mkdtemp(name.data()) == nullptr) {
        throw PictureError("there is no folder for temporary files: " +
                           (error ? error.message() : std::generic_category().message(errno)));
    }
    m_path = name;
}

TemporaryFolder::~TemporaryFolder()
{
    std::error_code error;
    std::filesystem::remove_all(m_path, error);
}

} // namespace scenetool
