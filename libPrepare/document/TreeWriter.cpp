#include "TreeWriter.h"

#include "ByteBlock.h"
#include "OutputFile.h"

#include <array>
#include <string_view>
#include <vector>

namespace libPrepare {

namespace {

// The characters that have to be escaped.
class SpecialCharacters {
public:
    explicit SpecialCharacters(std::string_view characters)
    {
        for (const char character : characters) {
            m_isIn[static_cast<unsigned char>(character)] = true;
        }
    }
    // The end of the text if it has none.
    std::size_t findFirst(std::string_view text) const
    {
        std::size_t at = 0;
        const bool isOfText = !m_isIn[static_cast<unsigned char>('\n')]; // attributes are short
        while (isOfText && text.size() - at >= ByteBlock::size && !ByteBlock(text.data() + at).hasMarkup()) {
            at += ByteBlock::size;
        }
        while (at < text.size() && !m_isIn[static_cast<unsigned char>(text[at])]) {
            ++at;
        }
        return at;
    }

private:
    std::array<bool, 256> m_isIn{};
};

// Writes a text with its special characters escaped.
void writeEscaped(std::string_view text, const SpecialCharacters& special, OutputFile& output)
{
    for (std::size_t at = special.findFirst(text); at < text.size(); at = special.findFirst(text)) {
        output.write(text.substr(0, at));
        switch (text[at]) {
        case '&':
            output.write("&amp;");
            break;
        case '<':
            output.write("&lt;");
            break;
        case '>':
            output.write("&gt;");
            break;
        case '"':
            output.write("&quot;");
            break;
        case '\t':
            output.write("&#9;");
            break;
        case '\n':
            output.write("&#10;");
            break;
        default:
            output.write("&#13;");
            break;
        }
        text.remove_prefix(at + 1);
    }
    output.write(text);
}

void writeAttributes(pugi::xml_node node, OutputFile& output)
{
    static const SpecialCharacters special("&<\"\t\n\r");
    pugi::xml_attribute attribute = node.first_attribute();
    for (const char* name = attribute.name(); *name != '\0'; name = attribute.name()) {
        output.write(" ");
        output.write(name);
        output.write("=\"");
        writeEscaped(attribute.value(), special, output);
        output.write("\"");
        attribute = attribute.next_attribute();
    }
}

void writeText(pugi::xml_node text, OutputFile& output)
{
    static const SpecialCharacters special("&<>\r");
    writeEscaped(text.value(), special, output);
}

// Writes a node that is no element.
void writeLeaf(pugi::xml_node node, pugi::xml_node_type type, OutputFile& output)
{
    switch (type) {
    case pugi::node_pcdata:
        writeText(node, output);
        break;
    case pugi::node_cdata:
        output.write("<![CDATA[");
        output.write(node.value());
        output.write("]]>");
        break;
    case pugi::node_comment:
        output.write("<!--");
        output.write(node.value());
        output.write("-->");
        break;
    case pugi::node_pi:
        output.write("<?");
        output.write(node.name());
        output.write(*node.value() == '\0' ? "" : " ");
        output.write(node.value());
        output.write("?>");
        break;
    case pugi::node_declaration:
        output.write("<?");
        output.write(node.name());
        writeAttributes(node, output);
        output.write("?>");
        break;
    case pugi::node_element:
    case pugi::node_null:
    case pugi::node_document:
    case pugi::node_doctype:
        break;
    }
}

// With as few calls as possible, because the tree may have millions of elements.
void writeChildren(pugi::xml_node top, OutputFile& output)
{
    std::vector<pugi::xml_node> open;
    pugi::xml_node node = top.first_child();
    while (true) {
        const pugi::xml_node_type type = node.type();
        if (type == pugi::node_null) { // after the last child
            if (open.empty()) {
                return;
            }
            node = open.back();
            open.pop_back();
            output.write("</");
            output.write(node.name());
            output.write(">");
        } else if (type == pugi::node_element) {
            output.write("<");
            output.write(node.name());
            writeAttributes(node, output);
            const pugi::xml_node child = node.first_child();
            if (child) {
                output.write(">");
                open.push_back(node);
                node = child;
                continue;
            }
            output.write("/>");
        } else {
            writeLeaf(node, type, output);
        }
        if (open.empty()) {
            output.write("\n");
        }
        node = node.next_sibling();
    }
}

} // namespace

void writeTree(const pugi::xml_document& document, OutputFile& output)
{
    writeChildren(document, output);
}

} // namespace libPrepare
