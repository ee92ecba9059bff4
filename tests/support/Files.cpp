#include "Files.h"

#include <fstream>
#include <iterator>

namespace testSupport {

std::string contentOf(const std::filesystem::path& file)
{
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

} // namespace testSupport
