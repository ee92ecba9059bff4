#include "ColladaReader.h"

#include "../detail/MemoryBudget.h"
#include "DocumentParser.h"

#include <libxml/parser.h>
#include <libxml/xmlIO.h>

#include <array>
#include <cstring>
#include <memory>
#include <string>
#include <system_error>
#include <utility>

namespace libVideo::detail {

namespace {

constexpr std::size_t blockSize = 65'536;

bool isUnreserved(char c)
{
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '/' || c == '-' ||
           c == '.' || c == '_' || c == '~';
}

// The document model takes a path as a URI reference, in which many characters would have a meaning of their own.
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

struct InputDeleter {
    void operator()(xmlParserInputBuffer* input) const { xmlFreeParserInputBuffer(input); }
};

// Passes a file to a parser. @return its uncompressed size in bytes; 0 if it cannot be read or is refused
std::uint64_t feedFile(const std::filesystem::path& file, DocumentParser& parser)
{
    // Opens the file as the document model would, compressed files included.
    const std::unique_ptr<xmlParserInputBuffer, InputDeleter> input(
        xmlParserInputBufferCreateFilename(file.c_str(), XML_CHAR_ENCODING_NONE));
    if (input == nullptr || input->readcallback == nullptr) {
        return 0;
    }
    const std::unique_ptr<char[]> bytes(new char[blockSize]);
    std::uint64_t size = 0;
    for (;;) {
        const int count = input->readcallback(input->context, bytes.get(), static_cast<int>(blockSize));
        if (count <= 0) {
            return count == 0 ? size : 0;
        }
        if (!parser.add(bytes.get(), static_cast<std::size_t>(count))) {
            return 0;
        }
        size += static_cast<std::uint64_t>(count);
    }
}

std::uint64_t feedText(daeString text, DocumentParser& parser)
{
    const std::size_t size = std::strlen(text);
    for (std::size_t begin = 0; begin < size; begin += blockSize) {
        if (!parser.add(text + begin, std::min(blockSize, size - begin))) {
            return 0;
        }
    }
    return size;
}

// Sets the file that the reader opens; null again at the end of the scope.
class FileScope {
public:
    FileScope(const std::filesystem::path*& place, const std::filesystem::path& file) : m_place(place)
    {
        m_place = &file;
    }
    ~FileScope() { m_place = nullptr; }
    FileScope(const FileScope&) = delete;
    FileScope& operator=(const FileScope&) = delete;

private:
    const std::filesystem::path*& m_place;
};

} // namespace

daeElement* ColladaReader::open(const std::filesystem::path& file)
{
    std::error_code error;
    if (!std::filesystem::is_regular_file(file, error)) {
        return nullptr;
    }
    const FileScope scope(m_file, file);
    return m_dae.open(percentEncoded(file.string()));
}

daeInt ColladaReader::read(const daeURI& uri, daeString text)
{
    const std::string name = daeURI(m_dae, uri.str(), true).str();
    if (m_database.isDocumentLoaded(name.c_str())) {
        return DAE_ERR_COLLECTION_ALREADY_EXISTS;
    }
    if (text == nullptr && m_file == nullptr) {
        return DAE_ERR_BACKEND_IO;
    }
    xmlInitParser();
    auto document = std::make_unique<daeDocument>(m_dae); // has to outlive the elements of a refused document
    document->getDocumentURI()->setURI(name.c_str());
    DocumentParser parser(m_dae, m_types, *document);
    const std::uint64_t size = text != nullptr ? feedText(text, parser) : feedFile(*m_file, parser);
    if (size == 0 || !parser.finish()) {
        return DAE_ERR_BACKEND_IO;
    }
    IdIndex ids = parser.builder().finish();
    m_database.add(std::move(document), std::move(ids), parser.builder().areIdsKnown());
    MemoryBudget::addDocument(size);
    return DAE_OK;
}

} // namespace libVideo::detail
