#pragma once

/// @file
/// Reads the XML of a document, on guard.

#include "ElementBuilder.h"

#include <libxml/parser.h>

#include <cstddef>
#include <exception>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace libVideo::detail {

/// Parses a document that comes in pieces and has its elements made, or refuses it. To pass, a document has to be XML,
/// well-formed to its last byte, with a root `COLLADA` of the right version and without a document type (which could
/// declare entities that unfold without end), and have
/// - no element named like the type of its parent where that type has no children: the document model would make the
///   child by that name and place it nowhere;
/// - no name of 128 bytes or more where the document model takes in elements that it does not know;
/// - at most 10,000 levels of elements, for each costs stack;
/// - at most 1 MiB in a start tag, 1,024 attributes in one, 1,024 namespaces at one place, and 256 steps to a parent
///   folder in a reference: all of these cost time with their square.
class DocumentParser {
public:
    DocumentParser(DAE& dae, ElementTypes& types, daeDocument& document);

    /// The next bytes of the file. @return false once the document is refused
    /// @throws what a host's handler of warnings throws, or std::bad_alloc; the document is refused then, too
    bool add(const char* bytes, std::size_t size);
    /// The file is at its end. @return whether the document passes; throws as `add()`
    bool finish();

    /// After a document has passed.
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
    std::vector<std::size_t> m_namespaces; // in scope, at each level
    std::string m_waiting;                 // of the last piece
    bool m_isRefused = false;
    std::exception_ptr m_thrown;
    std::unique_ptr<xmlParserCtxt, ParserDeleter> m_parser;
};

} // namespace libVideo::detail
