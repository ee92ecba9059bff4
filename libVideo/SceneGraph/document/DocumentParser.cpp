#include "DocumentParser.h"

#include <libxml/SAX2.h>
#include <libxml/tree.h>

namespace libVideo::detail {

namespace {

constexpr std::size_t depthLimit = 10'000;
constexpr std::size_t startTagLimit = 1'048'576;
constexpr std::size_t attributeLimit = 1'024;
constexpr std::size_t namespaceLimit = 1'024;

std::string_view between(const xmlChar* begin, const xmlChar* end)
{
    return {reinterpret_cast<const char*>(begin), static_cast<std::size_t>(end - begin)};
}

const char* chars(const xmlChar* text)
{
    return reinterpret_cast<const char*>(text);
}

// The address of a namespace as the document model has it: with its ampersands escaped.
std::string addressOf(const xmlChar* text)
{
    std::string address = text == nullptr ? "" : chars(text);
    for (std::size_t at = address.find('&'); at != std::string::npos; at = address.find('&', at + 1)) {
        address.replace(at, 1, "&#38;");
    }
    return address;
}

} // namespace

DocumentParser::DocumentParser(DAE& dae, ElementTypes& types, daeDocument& document)
    : m_builder(dae, types, document, [this] { return xmlSAX2GetLineNumber(m_parser.get()); })
{
    xmlSAXHandler handler = {};
    handler.initialized = XML_SAX2_MAGIC;
    handler.startElementNs = startElement;
    handler.endElementNs = endElement;
    handler.characters = text;
    handler.ignorableWhitespace = text;
    handler.cdataBlock = cdata;
    handler.comment = comment;
    handler.processingInstruction = instruction;
    handler.internalSubset = documentType;
    handler.serror = message;
    m_parser.reset(xmlCreatePushParserCtxt(&handler, this, nullptr, 0, nullptr));
    if (m_parser != nullptr) {
        xmlCtxtUseOptions(m_parser.get(), XML_PARSE_HUGE | XML_PARSE_NONET | XML_PARSE_NOENT);
    }
}

// The parser misses a "]]>" that is split between two pieces, so brackets at the end of a piece wait for the next one.
bool DocumentParser::add(const char* bytes, std::size_t size)
{
    if (size == 0 || isRefused()) {
        return !isRefused();
    }
    std::string joined;
    if (!m_waiting.empty()) {
        joined = m_waiting.append(bytes, size);
        m_waiting.clear();
        bytes = joined.data();
        size = joined.size();
    }
    std::size_t end = size;
    while (end > 0 && size - end < 4 && (bytes[end - 1] == ']' || bytes[end - 1] == '\0')) { // 4: two in UTF-16
        --end;
    }
    m_waiting.assign(bytes + end, size - end);
    feed(bytes, end);
    return !isRefused() && pendingTagPasses();
}

bool DocumentParser::finish()
{
    if (isRefused()) {
        return false;
    }
    xmlParseChunk(m_parser.get(), m_waiting.data(), static_cast<int>(m_waiting.size()), 1);
    if (m_thrown) {
        std::rethrow_exception(m_thrown);
    }
    return !isRefused() && m_builder.isWhole() && isDecoded();
}

void DocumentParser::feed(const char* bytes, std::size_t size)
{
    xmlParseChunk(m_parser.get(), bytes, static_cast<int>(size), 0);
    if (m_thrown) {
        std::rethrow_exception(m_thrown);
    }
}

// The parser also stops if it cannot decode a document, but still calls it well-formed.
bool DocumentParser::isRefused() const
{
    return m_isRefused || m_parser == nullptr || m_parser->wellFormed == 0 || m_parser->disableSAX != 0;
}

// Whether the parser has decoded all bytes. It silently drops an incomplete character at the end of a document.
bool DocumentParser::isDecoded() const
{
    const xmlParserInput* const input = m_parser->input;
    return input == nullptr || input->buf == nullptr || input->buf->encoder == nullptr ||
           xmlBufUse(input->buf->raw) == 0;
}

void DocumentParser::refuse()
{
    m_isRefused = true;
    xmlStopParser(m_parser.get());
}

// No exception may pass through the parser, which is C code. The first one is kept, and rethrown after the parser has
// returned.
template <class Action>
void DocumentParser::orRefuse(const Action& action)
{
    if (m_isRefused) {
        return;
    }
    try {
        if (!action()) {
            refuse();
        }
    } catch (...) {
        m_thrown = std::current_exception();
        refuse();
    }
}

void DocumentParser::startElement(void* self, const xmlChar* localName, const xmlChar* prefix, const xmlChar* /*uri*/,
                                  int namespaceCount, const xmlChar** namespaces, int attributeCount,
                                  int /*defaultedCount*/, const xmlChar** attributes)
{
    auto& parser = *static_cast<DocumentParser*>(self);
    parser.orRefuse([&] {
        const auto count = static_cast<std::size_t>(attributeCount);
        const std::size_t inScope =
            static_cast<std::size_t>(namespaceCount) + (parser.m_namespaces.empty() ? 0 : parser.m_namespaces.back());
        if (count > attributeLimit || inScope > namespaceLimit || parser.m_namespaces.size() == depthLimit ||
            parser.startTagSize() > startTagLimit) {
            return false;
        }
        ElementBuilder& builder = parser.m_builder;
        if (!builder.start({chars(localName), chars(prefix)})) {
            return false;
        }
        parser.m_namespaces.push_back(inScope);
        const auto declarations = static_cast<std::size_t>(namespaceCount);
        for (std::size_t i = 0; i < declarations; ++i) { // pairs of prefix and address
            const xmlChar* const declared = namespaces[2 * i];
            const QualifiedName name =
                declared == nullptr ? QualifiedName{"xmlns", nullptr} : QualifiedName{chars(declared), "xmlns"};
            if (!builder.setAttribute(name, addressOf(namespaces[2 * i + 1]))) {
                return false;
            }
        }
        for (std::size_t i = 0; i < count; ++i) {
            const xmlChar** const attribute = attributes + i * 5; // name, prefix, namespace, begin and end of the value
            if (!builder.setAttribute({chars(attribute[0]), chars(attribute[1])},
                                      between(attribute[3], attribute[4]))) {
                return false;
            }
        }
        return builder.finishStart();
    });
}

void DocumentParser::endElement(void* self, const xmlChar* /*localName*/, const xmlChar* /*prefix*/,
                                const xmlChar* /*uri*/)
{
    auto& parser = *static_cast<DocumentParser*>(self);
    parser.orRefuse([&] {
        parser.m_builder.end();
        parser.m_namespaces.pop_back();
        return true;
    });
}

void DocumentParser::text(void* self, const xmlChar* characters, int length)
{
    auto& parser = *static_cast<DocumentParser*>(self);
    parser.orRefuse([&] { return parser.m_builder.addText(between(characters, characters + length)); });
}

void DocumentParser::cdata(void* self, const xmlChar* /*characters*/, int /*length*/)
{
    auto& parser = *static_cast<DocumentParser*>(self);
    parser.orRefuse([&] {
        parser.m_builder.partText();
        return true;
    });
}

void DocumentParser::comment(void* self, const xmlChar* /*text*/)
{
    cdata(self, nullptr, 0);
}

void DocumentParser::instruction(void* self, const xmlChar* /*target*/, const xmlChar* /*data*/)
{
    cdata(self, nullptr, 0);
}

void DocumentParser::documentType(void* self, const xmlChar* /*name*/, const xmlChar* /*publicId*/,
                                  const xmlChar* /*systemId*/)
{
    static_cast<DocumentParser*>(self)->refuse();
}

// Warnings of the parser, and errors that do not make a document ill-formed, such as those about namespaces.
void DocumentParser::message(void* self, xmlError* error)
{
    auto& parser = *static_cast<DocumentParser*>(self);
    if (error->message == nullptr || error->level == XML_ERR_FATAL) {
        return;
    }
    parser.orRefuse([&] {
        if (error->level == XML_ERR_WARNING) {
            daeErrorHandler::get()->handleWarning(error->message);
        } else {
            daeErrorHandler::get()->handleError(error->message);
        }
        return true;
    });
}

// The parser buffers a start tag until it is complete, and then compares its attributes in pairs. So the limits have to
// be checked while the tag is still incomplete.
bool DocumentParser::pendingTagPasses() const
{
    if (m_parser->input == nullptr) {
        return true;
    }
    const std::string_view tag = between(m_parser->input->cur, m_parser->input->end);
    if (tag.size() < 2 || tag[0] != '<' || tag[1] == '!' || tag[1] == '?' || tag[1] == '/') {
        return true;
    }
    if (tag.size() > startTagLimit) {
        return false;
    }
    constexpr std::size_t limit = attributeLimit + namespaceLimit;
    std::size_t values = 0;
    for (std::size_t begin = tag.find_first_of("\"'"); begin != std::string_view::npos && values <= limit; ++values) {
        const std::size_t end = tag.find(tag[begin], begin + 1);
        begin = end == std::string_view::npos ? end : tag.find_first_of("\"'", end + 1);
    }
    return values <= limit;
}

// In decoded bytes, from one angle bracket to the other. The parser has read up to the last attribute, and its buffer
// has the whole tag.
std::size_t DocumentParser::startTagSize() const
{
    const xmlParserInput& input = *m_parser->input;
    const std::string_view before = between(input.base, input.cur);
    const std::string_view after = between(input.cur, input.end);
    const std::size_t begin = before.rfind('<');
    const std::size_t end = after.find('>');
    return before.size() - (begin == std::string_view::npos ? 0 : begin) +
           (end == std::string_view::npos ? after.size() : end + 1);
}

} // namespace libVideo::detail
