#include "FormCheck.h"

#include "ElementRules.h"
#include "Lines.h"

#include <libxml/parser.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <exception>
#include <memory>
#include <new>
#include <string>
#include <vector>

namespace libPrepare {

namespace {

constexpr std::size_t depthLimit = 10'000;
constexpr std::size_t startTagLimit = 1'048'576;
constexpr std::size_t attributeLimit = 1'024;
constexpr std::size_t namespaceLimit = 1'024;
constexpr std::size_t parentStepLimit = 256;
constexpr std::size_t unknownNameLimit = 127;

constexpr std::size_t blockSize = 4'096;

std::string_view view(const xmlChar* text)
{
    return text == nullptr ? std::string_view() : std::string_view(reinterpret_cast<const char*>(text));
}

std::string_view between(const xmlChar* begin, const xmlChar* end)
{
    return {reinterpret_cast<const char*>(begin), static_cast<std::size_t>(end - begin)};
}

// Whether a block has only bytes that are common in lists of numbers, names and plain text.
bool isPlain(const char* block)
{
    unsigned char isOdd = 0;
    for (std::size_t i = 0; i < blockSize; ++i) {
        const auto c = static_cast<unsigned char>(block[i]);
        const bool isBlank = (c == '\n') | (c == '\t') | (c == '\r');
        const bool isMarkup = (c == '<') | (c == '>') | (c == '&') | (c == ']') | (c == '/');
        isOdd |= static_cast<unsigned char>((static_cast<unsigned char>(c - ' ') >= 0x7F - ' ') & !isBlank) |
                 static_cast<unsigned char>(isMarkup);
    }
    return isOdd == 0;
}

std::size_t parentSteps(std::string_view text)
{
    std::size_t count = 0;
    for (std::size_t at = text.find("../"); at != std::string_view::npos; at = text.find("../", at + 3)) {
        count += at == 0 || text[at - 1] == '/' ? 1 : 0;
    }
    return count;
}

class Checker {
public:
    explicit Checker(std::string_view text);
    std::optional<Refusal> run();

private:
    static void startElement(void* self, const xmlChar* localName, const xmlChar* prefix, const xmlChar* uri,
                             int namespaceCount, const xmlChar** namespaces, int attributeCount, int defaultedCount,
                             const xmlChar** attributes);
    static void endElement(void* self, const xmlChar* localName, const xmlChar* prefix, const xmlChar* uri);
    static void characters(void* self, const xmlChar* text, int length);
    static void documentType(void* self, const xmlChar* name, const xmlChar* publicId, const xmlChar* systemId);
    static void fault(void* self, xmlErrorPtr error);

    struct Level {
        std::size_t begin;      // of its start tag
        std::size_t namespaces; // declared here and above
        std::string_view name;
        bool isInTechnique;
        bool holdsReference;
    };

    void feed(std::size_t end);
    void mendMessage(std::string& message) const;
    bool isInsideText() const;
    bool isOver() const { return m_refusal || m_parser->wellFormed == 0 || m_parser->disableSAX != 0; }
    void checkPendingTag();
    std::size_t position() const;
    std::size_t tagBegin() const;
    void refuse(std::size_t offset, const char* kind, std::string reason, std::string remedy);
    void open(std::string_view name, bool hasPrefix, std::size_t namespaces, std::size_t attributeCount,
              const xmlChar** attributes);

    struct ParserDeleter {
        void operator()(xmlParserCtxt* parser) const { xmlFreeParserCtxt(parser); }
    };

    std::string_view m_text;
    std::size_t m_fed = 0;    // bytes that the parser has seen or skipped
    std::size_t m_spared = 0; // bytes that it skipped
    std::vector<Level> m_levels;
    std::string m_reference; // the text of an element that holds one
    bool m_hasRoot = false;
    bool m_isAtEnd = false;
    std::optional<Refusal> m_refusal;
    std::unique_ptr<xmlParserCtxt, ParserDeleter> m_parser;
};

Checker::Checker(std::string_view text) : m_text(text)
{
    xmlSAXHandler handler = {};
    handler.initialized = XML_SAX2_MAGIC;
    handler.startElementNs = startElement;
    handler.endElementNs = endElement;
    handler.characters = characters;
    handler.internalSubset = documentType;
    handler.serror = fault;
    m_parser.reset(xmlCreatePushParserCtxt(&handler, this, nullptr, 0, nullptr));
    if (m_parser == nullptr) {
        throw std::bad_alloc();
    }
    xmlCtxtUseOptions(m_parser.get(), XML_PARSE_HUGE | XML_PARSE_NONET | XML_PARSE_IGNORE_ENC);
}

// The parser's position in the text.
std::size_t Checker::position() const
{
    const xmlParserInput* const input = m_parser->input;
    if (input == nullptr) {
        return m_fed;
    }
    return std::min(m_fed, input->consumed + static_cast<std::size_t>(input->cur - input->base) + m_spared);
}

// The start of the tag that the parser is in.
std::size_t Checker::tagBegin() const
{
    const std::size_t begin = m_text.substr(0, position()).rfind('<');
    return begin == std::string_view::npos ? 0 : begin;
}

void Checker::refuse(std::size_t offset, const char* kind, std::string reason, std::string remedy)
{
    if (!m_refusal) {
        const auto [line, column] = Lines(m_text.substr(0, offset + 1)).at(offset);
        m_refusal = Refusal{kind, std::move(reason), std::move(remedy), line, column};
    }
    xmlStopParser(m_parser.get());
}

void Checker::fault(void* self, xmlErrorPtr error)
{
    auto& checker = *static_cast<Checker*>(self);
    if (error == nullptr || error->level != XML_ERR_FATAL || checker.m_refusal) {
        return; // faults of namespaces do not make a document malformed
    }
    std::string message = error->message == nullptr ? "unknown fault" : error->message;
    message.erase(message.find_last_not_of(" \n") + 1);
    try {
        checker.mendMessage(message);
        checker.refuse(checker.position(), "malformed", "not well-formed: " + message,
                       "write it again, or mend it by hand");
    } catch (const std::exception&) {
        xmlStopParser(checker.m_parser.get()); // the parser is C code
    }
}

// The parser does not count the lines that it skipped, and does not say what is open at the end.
void Checker::mendMessage(std::string& message) const
{
    if (m_levels.empty()) {
        return;
    }
    const std::size_t begin = m_levels.back().begin;
    const std::string line = std::to_string(Lines(m_text.substr(0, begin + 1)).at(begin).first);
    if (m_isAtEnd) {
        const std::string_view name = m_text.substr(begin + 1, m_text.find_first_of(" \t\r\n/>", begin) - begin - 1);
        message = "The document ends inside <" + std::string(name.substr(0, 60)) + "> of line " + line;
    }
    const std::size_t number = message.find(" line ");
    if (message.rfind("Opening and ending", 0) == 0 && number != std::string::npos) {
        message.replace(number + 6, message.find(' ', number + 6) - number - 6, line);
    }
}

void Checker::documentType(void* self, const xmlChar* /*name*/, const xmlChar* /*publicId*/,
                           const xmlChar* /*systemId*/)
{
    auto& checker = *static_cast<Checker*>(self);
    const std::size_t at = checker.position();
    if (at >= checker.m_text.size() || checker.m_text[at] != '>') { // it could declare entities
        checker.refuse(checker.tagBegin(), "document-type", "has a document type with declarations (<!DOCTYPE [...]>)",
                       "take it out");
    }
}

void Checker::startElement(void* self, const xmlChar* localName, const xmlChar* prefix, const xmlChar* /*uri*/,
                           int namespaceCount, const xmlChar** /*namespaces*/, int attributeCount,
                           int /*defaultedCount*/, const xmlChar** attributes)
{
    auto& checker = *static_cast<Checker*>(self);
    try {
        checker.open(view(localName), prefix != nullptr, static_cast<std::size_t>(namespaceCount),
                     static_cast<std::size_t>(attributeCount), attributes);
    } catch (const std::exception&) {
        checker.m_parser->wellFormed = 0;
        xmlStopParser(checker.m_parser.get());
    }
}

void Checker::open(std::string_view name, bool hasPrefix, std::size_t namespaces, std::size_t attributeCount,
                   const xmlChar** attributes)
{
    const std::size_t begin = tagBegin();
    const std::string tag = "<" + std::string(name.substr(0, 60)) + ">";
    if (m_levels.empty() && name != "COLLADA") {
        refuse(begin, "root", "no COLLADA: The root element is " + tag, "give a COLLADA document");
        return;
    }
    const Level parent = m_levels.empty() ? Level{0, 0, {}, false, false} : m_levels.back();
    namespaces += parent.namespaces;
    if (m_levels.size() == depthLimit) {
        refuse(begin, "too-deep", "more than 10,000 levels of elements", "flatten the tree");
        return;
    }
    if (attributeCount > attributeLimit || namespaces > namespaceLimit || position() - begin > startTagLimit) {
        refuse(begin, "start-tag", tag + " has too many attributes", "take them out");
        return;
    }
    if (parent.isInTechnique && name.size() > unknownNameLimit) {
        refuse(begin, "long-name", "an element with a name of " + std::to_string(name.size()) + " bytes",
               "give it a shorter name");
        return;
    }
    // The document model would make these by the type of the parent, and place them nowhere.
    const bool isOfParentsType =
        name == parent.name || name.rfind("Targetable", 0) == 0 || name.rfind("InputLocal", 0) == 0;
    if ((isOfParentsType && traitsOf(parent.name).holdsOnlyValue) || (parent.isInTechnique && name == "any")) {
        refuse(begin, "stray-element", "an element " + tag + " where there can be none", "take it out");
        return;
    }
    for (std::size_t i = 0; i < attributeCount; ++i) {
        const xmlChar** const attribute = attributes + i * 5; // name, prefix, namespace, begin and end of the value
        if (parentSteps(between(attribute[3], attribute[4])) > parentStepLimit) {
            refuse(begin, "reference", tag + " has a reference with too many steps to a parent folder", "shorten it");
            return;
        }
    }
    m_reference.clear();
    m_hasRoot = true;
    m_levels.push_back({begin, namespaces, hasPrefix ? std::string_view() : m_text.substr(begin + 1, name.size()),
                        parent.isInTechnique || (!hasPrefix && name == "technique"),
                        name == "init_from" || name == "skeleton"});
}

void Checker::endElement(void* self, const xmlChar* /*localName*/, const xmlChar* /*prefix*/, const xmlChar* /*uri*/)
{
    auto& checker = *static_cast<Checker*>(self);
    if (!checker.m_levels.empty()) {
        checker.m_levels.pop_back();
    }
}

void Checker::characters(void* self, const xmlChar* text, int length)
{
    auto& checker = *static_cast<Checker*>(self);
    if (checker.m_levels.empty() || !checker.m_levels.back().holdsReference) {
        return;
    }
    try {
        checker.m_reference.append(reinterpret_cast<const char*>(text), static_cast<std::size_t>(length));
        if (checker.m_reference.size() > startTagLimit || parentSteps(checker.m_reference) > parentStepLimit) {
            checker.refuse(checker.tagBegin(), "reference", "a reference with too many steps to a parent folder",
                           "shorten it");
        }
    } catch (const std::exception&) {
        checker.m_parser->wellFormed = 0;
        xmlStopParser(checker.m_parser.get());
    }
}

// Whether the parser would take plain text as text here, and knows all that came before it. What it keeps back for a
// while is then the end of a text, with no markup begun and no character incomplete.
bool Checker::isInsideText() const
{
    if (m_parser->instate != XML_PARSER_CONTENT || m_levels.empty() || m_levels.back().holdsReference ||
        m_parser->input == nullptr) {
        return false;
    }
    const std::string_view kept = between(m_parser->input->cur, m_parser->input->end);
    return kept.find_first_of("<&]") == std::string_view::npos &&
           std::all_of(kept.begin(), kept.end(), [](char c) { return static_cast<unsigned char>(c) < 0x7FU; });
}

// The parser waits for a complete start tag and then compares its attributes in pairs. So a large tag is checked while
// it grows.
void Checker::checkPendingTag()
{
    if (m_parser->instate != XML_PARSER_START_TAG || m_parser->input == nullptr) {
        return;
    }
    const std::string_view tag = between(m_parser->input->cur, m_parser->input->end);
    constexpr std::size_t limit = attributeLimit + namespaceLimit;
    std::size_t values = 0;
    for (std::size_t begin = tag.find_first_of("\"'"); begin != std::string_view::npos && values <= limit; ++values) {
        const std::size_t end = tag.find(tag[begin], begin + 1);
        begin = end == std::string_view::npos ? end : tag.find_first_of("\"'", end + 1);
    }
    if (tag.size() > startTagLimit || values > limit) {
        refuse(position(), "start-tag", "a start tag that is too long", "shorten it");
    }
}

void Checker::feed(std::size_t end)
{
    // The parser does not see a "]]>" that is divided between two pieces.
    while (end < m_text.size() && end > m_fed && m_text[end - 1] == ']') {
        --end;
    }
    constexpr std::size_t most = std::size_t(1) << 30; // that the parser can count
    while (end > m_fed && !isOver()) {
        const std::size_t begin = m_fed;
        m_fed = std::min(end, begin + most);
        xmlParseChunk(m_parser.get(), m_text.data() + begin, static_cast<int>(m_fed - begin), 0);
        if (!isOver()) {
            checkPendingTag();
        }
    }
}

// Most of a large document is long lists of numbers, which the parser would check byte by byte for nothing. So it does
// not get them.
std::optional<Refusal> Checker::run()
{
    constexpr std::size_t most = 16 * blockSize; // of one piece for the parser
    std::size_t at = 0;
    while (at < m_text.size() && !isOver()) {
        const std::size_t end = std::min(at + blockSize, m_text.size());
        if (end - at == blockSize && isPlain(m_text.data() + at)) {
            feed(at);
            if (!isOver() && m_fed == at && isInsideText()) {
                m_spared += end - at;
                m_fed = end;
            }
        } else if (end - m_fed >= most) {
            feed(end);
        }
        at = end;
    }
    if (!isOver()) {
        feed(m_text.size());
    }
    if (!isOver()) {
        m_isAtEnd = true;
        xmlParseChunk(m_parser.get(), nullptr, 0, 1);
    }
    if (m_refusal) {
        return m_refusal;
    }
    if (isOver()) {
        refuse(position(), "malformed", "not well-formed", "write it again, or mend it by hand");
        return m_refusal;
    }
    if (!m_hasRoot || !m_levels.empty()) {
        refuse(m_text.size(), "malformed", "not well-formed: It ends too early", "write it again");
        return m_refusal;
    }
    return std::nullopt;
}

} // namespace

std::optional<Refusal> checkForm(std::string_view text)
{
    return Checker(text).run();
}

} // namespace libPrepare
