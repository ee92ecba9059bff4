#include "DocumentFiles.h"

#include <algorithm>
#include <cctype>
#include <string>
#include <system_error>

namespace scenetool {

bool isDocument(const std::filesystem::directory_entry& entry)
{
    std::string ending = entry.path().extension().string();
    std::transform(ending.begin(), ending.end(), ending.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    std::error_code error;
    return ending == ".dae" && entry.is_regular_file(error);
}

} // namespace scenetool
