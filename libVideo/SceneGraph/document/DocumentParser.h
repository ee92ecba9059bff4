#pragma once

/// @file
/// Parses the XML of a document, and refuses documents that would do harm.

#include "ElementBuilder.h"

#include <libxml/parser.h>

#include <cstddef>
#include <exception>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace libVideo::detail {

/// Parses a document that comes in pieces, and either makes its elements or refuses it. A document passes if it is
/// well-formed XML to its last byte, its root is a `COLLADA` of the right version, and it has
/// - no document type, which could declare entities that expand without limit;
/// - no element with the name of its parent's type if that type has no children: the document model would create the
///   element and then find no place for it;
/// - no name of 128 bytes or more where the document model accepts unknown elements;
/// - at most 10,000 levels of elements, because each level takes stack;
/// - at most 1 MiB and 1,024 attributes in a start tag, 1,024 namespaces in scope, and 256 steps to a parent folder in
///   a reference, because the time for each of these grows with its square.
class DocumentParser {
public:
    DocumentParser(DAE& dae, ElementTypes& types, daeDocument& document);

    /// Parses the next bytes of the file. @return false once the document is refused
    /// @throws what an error handler of the host throws, or std::bad_alloc; the document is refused then, too
    bool add(const char* bytes, std::size_t size);
    /// Ends the file. @return whether the document passes; throws like `add()`
    bool finish();

    /// Only for a document that has passed.
    ElementBuilder& builder() { return m_builder; }

private:
    static void startElement(void* self, const xmlChar* localName, const xmlChar* prefix, const xmlChar* uri,
                             int namespaceCount, const xmlChar** namespaces, int attributeCount, int defaultedCount,
                             const xmlChar** attributes);
    static void endElement(void* self, const xmlChar* localName, const xmlChar* prefix, const xmlChar* uri);
    static void text(void* self, const xmlChar* characters, int length);
    static void cdata(void* self, const xmlChar* characters, int length);
    static void comment(void* self, const xmlChar* text);
    static void instruction(void* self, const xmlChar* target, const xmlChar* data);
    static void documentType(void* self, const xmlChar* name, const xmlChar* publicId, const xmlChar* systemId);

    static void message(void* self, xmlError* error);

    template <class Action>
    void orRefuse(const Action& action);
    void refuse();
    bool isRefused() const;

    void feed(const char* bytes, std::size_t size);
    bool isDecoded() const;
    bool pendingTagPasses() const;
    std::size_t startTagSize() const;

    struct ParserDeleter {
        void operator()(xmlParserCtxt* parser) const { xmlFreeParserCtxt(parser); }
    };

    ElementBuilder m_builder;
    std::vector<std::size_t> m_namespaces; // how many are in scope, by level
    std::string m_waiting;                 // the end of the last piece, not parsed yet
    bool m_isRefused = false;
    std::exception_ptr m_thrown;
    std::unique_ptr<xmlParserCtxt, ParserDeleter> m_parser;
};

} // namespace libVideo::detail
