#include "Preflight.h"

#include "Bytes.h"

#include <libxml/parser.h>
#include <libxml/xmlIO.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <exception>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace libVideo::detail {

namespace {

constexpr std::size_t depthLimit = 10'000;
constexpr std::size_t startTagLimit = 1'048'576;
constexpr std::size_t attributeLimit = 1'024;
constexpr std::size_t namespaceLimit = 1'024;
constexpr std::size_t parentStepLimit = 256;
constexpr std::size_t unknownNameLimit = 127; // the document model has room for that much

/// How the document model types an element.
struct ElementType {
    enum class Kind {
        known,
        any,     ///< taken in although it is not known
        skipped, ///< passed over, with everything below
    };
    Kind kind = Kind::skipped;
    daeMetaElement* meta = nullptr; ///< of a known one
    bool holdsReference = false;    ///< its text is one
};

/// What the document model makes of an element: of its name, and of the type of its parent.
class ElementTypes {
public:
    explicit ElementTypes(DAE& dae) : m_dae(dae) {}

    const ElementType* root() { return known(m_dae.getMeta(domCOLLADA::ID())); }

    /// @param name of the child with its prefix; kept by its address, so it has to come from a pool of names
    /// @return null if the document model would not survive that child
    const ElementType* child(const ElementType* parent, const char* name, bool hasPrefix)
    {
        if (parent->kind == ElementType::Kind::skipped) {
            return parent;
        }
        if (hasPrefix) { // no name of the schema has one
            return takesAny(*parent) ? &m_any : &m_skipped;
        }
        const auto [place, isNew] = m_children.try_emplace({parent, name}, nullptr);
        if (isNew) {
            place->second = makeChild(*parent, name);
        }
        return place->second;
    }

private:
    using Key = std::pair<const ElementType*, const char*>;
    struct KeyHash {
        std::size_t operator()(const Key& key) const
        {
            return std::hash<const void*>()(key.first) * 31 + std::hash<const void*>()(key.second);
        }
    };

    static bool takesAny(const ElementType& type)
    {
        return type.kind == ElementType::Kind::any || (type.meta != nullptr && type.meta->getAllowsAny());
    }

    // The order of the questions is that of the document model: an element named like its parent's type comes first.
    const ElementType* makeChild(const ElementType& parent, const char* name)
    {
        const bool isAny = parent.kind == ElementType::Kind::any;
        if (std::strcmp(name, isAny ? "any" : parent.meta->getName()) == 0) {
            return isAny || parent.meta->getCMRoot() == nullptr ? nullptr : &parent;
        }
        if (takesAny(parent)) {
            daeMetaElement* const meta = topLevel(name);
            return meta != nullptr ? known(meta) : &m_any;
        }
        daeMetaElement* const meta =
            parent.meta->getCMRoot() != nullptr ? parent.meta->getCMRoot()->findChild(name) : nullptr;
        return meta != nullptr ? known(meta) : &m_skipped;
    }

    daeMetaElement* topLevel(const char* name)
    {
        if (m_topLevel.empty()) {
            const daeMetaElementRefArray& metas = m_dae.getAllMetas();
            for (std::size_t i = 0; i < metas.getCount(); ++i) {
                if (metas[i] != nullptr && !metas[i]->getIsInnerClass()) {
                    m_topLevel.emplace(static_cast<const char*>(metas[i]->getName()), metas[i].cast());
                }
            }
        }
        const auto found = m_topLevel.find(name);
        return found == m_topLevel.end() ? nullptr : found->second;
    }

    const ElementType* known(daeMetaElement* meta)
    {
        std::unique_ptr<ElementType>& type = m_known[meta];
        if (type == nullptr) {
            daeMetaAttribute* const value = meta->getValueAttribute();
            const bool holdsReference =
                value != nullptr && value->getType()->getTypeEnum() == daeAtomicType::ResolverType;
            type = std::make_unique<ElementType>(ElementType{ElementType::Kind::known, meta, holdsReference});
        }
        return type.get();
    }

    DAE& m_dae;
    ElementType m_skipped;
    ElementType m_any{ElementType::Kind::any, nullptr, false};
    std::unordered_map<daeMetaElement*, std::unique_ptr<ElementType>> m_known;
    std::unordered_map<std::string_view, daeMetaElement*> m_topLevel;
    std::unordered_map<Key, const ElementType*, KeyHash> m_children;
};

/// Counts steps to a parent folder, in text that comes in pieces.
class ParentSteps {
public:
    void restart() { *this = ParentSteps(); }
    std::size_t count() const { return m_count; }

    void add(std::string_view piece)
    {
        for (const char c : piece) {
            if (c == '/') {
                m_count += m_isOfDots && m_length == 2 ? 1 : 0;
                m_isOfDots = true;
                m_length = 0;
            } else {
                m_isOfDots = m_isOfDots && c == '.';
                ++m_length;
            }
        }
    }

private:
    std::size_t m_count = 0;
    bool m_isOfDots = true; // the current name of the path
    std::size_t m_length = 0;
};

std::string_view between(const xmlChar* begin, const xmlChar* end)
{
    return {reinterpret_cast<const char*>(begin), static_cast<std::size_t>(end - begin)};
}

constexpr std::size_t blockSize = 4'096;

// Whether a text holds nothing but the bytes that lists of numbers and names are made of, and most of what people write.
// @param size a multiple of 256
bool isPlain(const char* text, std::size_t size)
{
    for (std::size_t begin = 0; begin < size; begin += 256) {
        ByteMask isOdd = {};
        for (std::size_t i = begin; i < begin + 256; i += sizeof(Bytes)) {
            const Bytes bytes = bytesAt(text + i);
            isOdd |= ((bytes - ' ') >= 0x7F - ' ') & ~areBlank(bytes);
            isOdd |= (bytes == '<') | (bytes == '>') | (bytes == '&') | (bytes == ']');
        }
        if (isAnySet(isOdd)) {
            return false;
        }
    }
    return true;
}

/// Listens to the parser, and stops it at the first thing that the document model would not survive.
class Checker {
public:
    explicit Checker(DAE& dae);

    /// The next bytes of the file. @return false once the file is refused
    bool add(const char* bytes, std::size_t size);
    /// The file is at its end. @return whether it passes
    bool finish();

private:
    struct Level {
        const ElementType* type;
        std::size_t namespaces; // declared here and above
    };

    static void startElement(void* self, const xmlChar* localName, const xmlChar* prefix, const xmlChar* uri,
                             int namespaceCount, const xmlChar** namespaces, int attributeCount, int defaultedCount,
                             const xmlChar** attributes);
    static void endElement(void* self, const xmlChar* localName, const xmlChar* prefix, const xmlChar* uri);
    static void text(void* self, const xmlChar* characters, int length);
    static void documentType(void* self, const xmlChar* name, const xmlChar* publicId, const xmlChar* systemId);

    template <class Action>
    void orRefuse(const Action& action);
    void refuse();
    bool isRefused() const;

    bool feed(const char* bytes, std::size_t size);
    bool isInsideText() const;
    bool isDecoded() const;
    bool opens(const char* localName, const char* prefix, std::size_t namespaceCount);
    bool pendingTagPasses() const;
    std::size_t startTagSize() const;

    struct ParserDeleter {
        void operator()(xmlParserCtxt* parser) const { xmlFreeParserCtxt(parser); }
    };

    ElementTypes m_types;
    std::vector<Level> m_levels;
    ParentSteps m_textSteps;
    std::string m_waiting; // of the last piece
    bool m_hasRoot = false;
    bool m_isRefused = false;
    std::unique_ptr<xmlParserCtxt, ParserDeleter> m_parser;
};

Checker::Checker(DAE& dae) : m_types(dae)
{
    xmlSAXHandler handler = {}; // messages have no way out either
    handler.initialized = XML_SAX2_MAGIC;
    handler.startElementNs = startElement;
    handler.endElementNs = endElement;
    handler.characters = text;
    handler.internalSubset = documentType;
    m_parser.reset(xmlCreatePushParserCtxt(&handler, this, nullptr, 0, nullptr));
    if (m_parser != nullptr) {
        xmlCtxtUseOptions(m_parser.get(), XML_PARSE_HUGE | XML_PARSE_NONET);
    }
}

// Most of a large document is long lists of numbers. They are text that the parser would look at byte by byte and then
// find nothing to say about, so they are kept from it.
bool Checker::add(const char* bytes, std::size_t size)
{
    std::size_t begin = 0; // of what the parser has yet to see
    for (std::size_t end = blockSize; end <= size; end += blockSize) {
        if (!isPlain(bytes + end - blockSize, blockSize)) {
            continue;
        }
        if (!feed(bytes + begin, end - blockSize - begin)) {
            return false;
        }
        begin = isInsideText() ? end : end - blockSize;
    }
    return feed(bytes + begin, size - begin);
}

// Whether the parser would take plain text as text here, and knows all that came before it. What it keeps back for a
// while is then the end of a text, with no markup begun and no character incomplete.
bool Checker::isInsideText() const
{
    if (!m_waiting.empty() || m_parser->instate != XML_PARSER_CONTENT || m_levels.empty() ||
        m_levels.back().type->holdsReference || m_parser->input == nullptr || m_parser->input->buf == nullptr ||
        m_parser->input->buf->encoder != nullptr) {
        return false;
    }
    const std::string_view kept = between(m_parser->input->cur, m_parser->input->end);
    return kept.find_first_of("<&]") == std::string_view::npos &&
           std::all_of(kept.begin(), kept.end(), [](char c) { return static_cast<unsigned char>(c) < 0x7Fu; });
}

// The parser does not see a "]]>" that comes in two pieces, so the end of a piece that may begin one waits for the next.
bool Checker::feed(const char* bytes, std::size_t size)
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
    while (end > 0 && size - end < 4 && (bytes[end - 1] == ']' || bytes[end - 1] == '\0')) { // two, of two bytes each
        --end;
    }
    m_waiting.assign(bytes + end, size - end);
    xmlParseChunk(m_parser.get(), bytes, static_cast<int>(end), 0);
    return !isRefused() && pendingTagPasses();
}

bool Checker::finish()
{
    if (isRefused()) {
        return false;
    }
    xmlParseChunk(m_parser.get(), m_waiting.data(), static_cast<int>(m_waiting.size()), 1);
    return !isRefused() && m_hasRoot && m_levels.empty() && isDecoded();
}

// The parser also halts where it cannot decode a document, without a word on its form.
bool Checker::isRefused() const
{
    return m_isRefused || m_parser == nullptr || m_parser->wellFormed == 0 || m_parser->disableSAX != 0;
}

// Whether the parser has seen all that it was given. It drops the end of a document in which a character is cut.
bool Checker::isDecoded() const
{
    const xmlParserInput* const input = m_parser->input;
    return input == nullptr || input->buf == nullptr || input->buf->encoder == nullptr ||
           xmlBufUse(input->buf->raw) == 0;
}

void Checker::refuse()
{
    m_isRefused = true;
    xmlStopParser(m_parser.get());
}

// No exception may cross the parser. What cannot be checked for want of memory cannot be opened either.
template <class Action>
void Checker::orRefuse(const Action& action)
{
    bool passes = false;
    try {
        passes = action();
    } catch (const std::exception&) {
        passes = false;
    }
    if (!passes) {
        refuse();
    }
}

bool Checker::opens(const char* localName, const char* prefix, std::size_t namespaceCount)
{
    const ElementType* type = nullptr;
    if (m_levels.empty()) {
        type = prefix == nullptr && std::strcmp(localName, "COLLADA") == 0 ? m_types.root() : nullptr;
    } else {
        namespaceCount += m_levels.back().namespaces;
        type = m_types.child(m_levels.back().type, localName, prefix != nullptr);
    }
    if (type == nullptr || m_levels.size() == depthLimit || namespaceCount > namespaceLimit) {
        return false;
    }
    const std::size_t nameLength = std::strlen(localName) + (prefix != nullptr ? std::strlen(prefix) + 1 : 0);
    if (type->kind == ElementType::Kind::any && nameLength > unknownNameLimit) {
        return false;
    }
    m_levels.push_back({type, namespaceCount});
    m_hasRoot = true;
    m_textSteps.restart();
    return true;
}

void Checker::startElement(void* self, const xmlChar* localName, const xmlChar* prefix, const xmlChar* /*uri*/,
                           int namespaceCount, const xmlChar** /*namespaces*/, int attributeCount,
                           int /*defaultedCount*/, const xmlChar** attributes)
{
    auto& checker = *static_cast<Checker*>(self);
    checker.orRefuse([&] {
        const auto count = static_cast<std::size_t>(attributeCount);
        if (count > attributeLimit || checker.startTagSize() > startTagLimit) {
            return false;
        }
        for (std::size_t i = 0; i < count; ++i) {
            const xmlChar** const attribute = attributes + i * 5; // name, prefix, namespace, begin and end of the value
            ParentSteps steps;
            steps.add(between(attribute[3], attribute[4]));
            if (steps.count() > parentStepLimit) {
                return false;
            }
        }
        return checker.opens(reinterpret_cast<const char*>(localName), reinterpret_cast<const char*>(prefix),
                             static_cast<std::size_t>(namespaceCount));
    });
}

void Checker::endElement(void* self, const xmlChar* /*localName*/, const xmlChar* /*prefix*/, const xmlChar* /*uri*/)
{
    auto& checker = *static_cast<Checker*>(self);
    if (!checker.m_levels.empty()) {
        checker.m_levels.pop_back();
    }
    checker.m_textSteps.restart();
}

void Checker::text(void* self, const xmlChar* characters, int length)
{
    auto& checker = *static_cast<Checker*>(self);
    if (checker.m_levels.empty() || !checker.m_levels.back().type->holdsReference) {
        return;
    }
    checker.m_textSteps.add(between(characters, characters + length));
    if (checker.m_textSteps.count() > parentStepLimit) {
        checker.refuse();
    }
}

void Checker::documentType(void* self, const xmlChar* /*name*/, const xmlChar* /*publicId*/,
                           const xmlChar* /*systemId*/)
{
    static_cast<Checker*>(self)->refuse();
}

// The parser waits for the whole of a start tag, and compares its attributes in pairs then. So a large one is looked
// at while it grows.
bool Checker::pendingTagPasses() const
{
    if (m_parser->instate != XML_PARSER_START_TAG || m_parser->input == nullptr) {
        return true;
    }
    const std::string_view tag = between(m_parser->input->cur, m_parser->input->end);
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

// In bytes as the parser sees them, from the angle bracket that begins the tag to the one that ends it. The parser
// stands behind the last attribute, with the whole tag in one piece.
std::size_t Checker::startTagSize() const
{
    const xmlParserInput& input = *m_parser->input;
    const std::string_view before = between(input.base, input.cur);
    const std::string_view behind = between(input.cur, input.end);
    const std::size_t begin = before.rfind('<');
    const std::size_t end = behind.find('>');
    return before.size() - (begin == std::string_view::npos ? 0 : begin) +
           (end == std::string_view::npos ? behind.size() : end + 1);
}

struct InputDeleter {
    void operator()(xmlParserInputBuffer* input) const { xmlFreeParserInputBuffer(input); }
};

} // namespace

std::optional<std::uint64_t> passPreflight(DAE& dae, const std::filesystem::path& file)
{
    // Opened as the document model does it, compression included.
    const std::unique_ptr<xmlParserInputBuffer, InputDeleter> input(
        xmlParserInputBufferCreateFilename(file.c_str(), XML_CHAR_ENCODING_NONE));
    if (input == nullptr || input->readcallback == nullptr) {
        return std::nullopt;
    }
    Checker checker(dae);
    std::uint64_t size = 0;
    std::array<char, 16'384> bytes = {};
    for (;;) {
        const int count = input->readcallback(input->context, bytes.data(), static_cast<int>(bytes.size()));
        if (count <= 0) {
            return count == 0 && checker.finish() ? std::optional(size) : std::nullopt;
        }
        if (!checker.add(bytes.data(), static_cast<std::size_t>(count))) {
            return std::nullopt;
        }
        size += static_cast<std::uint64_t>(count);
    }
}

} // namespace libVideo::detail
