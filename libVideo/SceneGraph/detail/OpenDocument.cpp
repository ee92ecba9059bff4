#include "OpenDocument.h"

#include <vesk/Exception.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>

namespace libVideo::detail {

namespace {

class SilentErrorHandler : public daeErrorHandler {
public:
    void handleError(daeString /*message*/) override {}
    void handleWarning(daeString /*message*/) override {}
};

daeErrorHandler* silentErrorHandler()
{
    static SilentErrorHandler handler;
    return &handler;
}

bool isUnreserved(char c)
{
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '/' || c == '-' ||
           c == '.' || c == '_' || c == '~';
}

// The document model takes a path as a reference, in which most characters would mean something or end it.
std::string percentEncoded(const std::string& path)
{
    static constexpr char digits[] = "0123456789ABCDEF";
    std::string encoded;
    for (const char c : path) {
        if (isUnreserved(c)) {
            encoded += c;
        } else {
            const auto byte = static_cast<unsigned char>(c);
            encoded += '%';
            encoded += digits[byte >> 4u];
            encoded += digits[byte & 0x0Fu];
        }
    }
    return encoded;
}

// An archive would be unpacked to the disk, and its members name their own places there.
bool isArchive(const std::filesystem::path& path)
{
    char start[4] = {};
    std::ifstream file(path, std::ios::binary);
    file.read(start, sizeof(start));
    return start[0] == 'P' && start[1] == 'K';
}

// Whether a file may be handed to the document model, which does not survive all documents. What has to be found out
// about its content belongs here.
bool passesPreflight(const std::filesystem::path& path)
{
    std::error_code error;
    return std::filesystem::is_regular_file(path, error) && !isArchive(path);
}

} // namespace

LoadScope::LoadScope() : m_numericC(newlocale(LC_NUMERIC_MASK, "C", nullptr))
{
    if (m_numericC != nullptr) {
        m_localeBefore = uselocale(m_numericC);
    }
    // Only the default can be told from a handler of the host's, by asking for it.
    daeErrorHandler* const before = daeErrorHandler::get();
    daeErrorHandler::setErrorHandler(nullptr);
    m_isSilent = daeErrorHandler::get() == before;
    daeErrorHandler::setErrorHandler(m_isSilent ? silentErrorHandler() : before);
}

LoadScope::~LoadScope()
{
    if (m_isSilent) {
        daeErrorHandler::setErrorHandler(nullptr);
    }
    if (m_numericC != nullptr) {
        uselocale(m_localeBefore);
        freelocale(m_numericC);
    }
}

void removeRawResolver(DAE& dae)
{
    daeTArray<daeURIResolver*>& resolvers = dae.getURIResolvers().list(); // owns its entries
    for (std::size_t i = resolvers.getCount(); i-- > 0;) {
        if (dynamic_cast<daeRawResolver*>(resolvers[i]) != nullptr) {
            delete resolvers[i];
            resolvers.removeIndex(i);
        }
    }
}

domCOLLADA* openDocument(DAE& dae, const vesk::String& path)
{
    try {
        // Absolute, since the document model counts relative paths from where it was constructed.
        const std::filesystem::path file = std::filesystem::absolute(path.data());
        if (!passesPreflight(file)) {
            return nullptr;
        }
        return daeSafeCast<domCOLLADA>(dae.open(percentEncoded(file.string())));
    } catch (const vesk::Exception&) {
        throw;
    } catch (const std::exception&) {
        return nullptr;
    }
}

} // namespace libVideo::detail
