#include "OpenFile.h"

#include "../detail/MemoryBudget.h"
#include "Preflight.h"

#include <cstdint>
#include <optional>
#include <string>
#include <system_error>

namespace libVideo::detail {

namespace {

bool isUnreserved(char c)
{
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '/' || c == '-' ||
           c == '.' || c == '_' || c == '~';
}

// The document model takes a path as a reference, in which most characters would mean something or end it.
std::string percentEncoded(const std::string& path)
{
    constexpr char hexDigits[] = "0123456789ABCDEF";
    std::string encoded;
    for (const char c : path) {
        if (isUnreserved(c)) {
            encoded += c;
        } else {
            const auto byte = static_cast<unsigned char>(c);
            encoded += '%';
            encoded += hexDigits[byte >> 4u];
            encoded += hexDigits[byte & 0x0Fu];
        }
    }
    return encoded;
}

} // namespace

daeElement* openFile(DAE& dae, const std::filesystem::path& file)
{
    std::error_code error;
    if (!std::filesystem::is_regular_file(file, error)) {
        return nullptr;
    }
    const std::optional<std::uint64_t> size = passPreflight(dae, file);
    if (!size) {
        return nullptr;
    }
    MemoryBudget::addDocument(*size);
    return dae.open(percentEncoded(file.string()));
}

} // namespace libVideo::detail
