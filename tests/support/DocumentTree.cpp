#include "DocumentTree.h"

#include <cstddef>
#include <map>
#include <sstream>
#include <string>
#include <unordered_map>
#include <vector>

namespace testSupport {

namespace {

void printBytes(std::string& out, const char* bytes, std::size_t size)
{
    static const char digits[] = "0123456789abcdef";
    for (std::size_t i = 0; i < size; ++i) {
        const auto byte = static_cast<unsigned char>(bytes[i]);
        out += digits[byte / 16];
        out += digits[byte % 16];
    }
}

void printText(std::string& out, const char* text)
{
    out += text == nullptr ? "(null)" : '"' + std::string(text) + '"';
}

class TreePrinter {
public:
    TreePrinter(DAE& dae, daeElement& root) : m_dae(dae)
    {
        m_elements.push_back(&root);
        for (std::size_t i = 0; i < m_elements.size(); ++i) {
            m_indices[m_elements[i]] = i;
            const daeElementRefArray children = m_elements[i]->getChildren();
            for (std::size_t child = 0; child < children.getCount(); ++child) {
                m_elements.push_back(children[child]);
            }
        }
    }

    std::string print()
    {
        std::string out;
        std::map<std::string, std::string> ids;
        for (std::size_t i = 0; i < m_elements.size(); ++i) {
            printElement(out, *m_elements[i]);
            if (const daeString id = m_elements[i]->getID()) {
                ids[id] = found(m_dae.getDatabase()->idLookup(id, m_elements[0]->getDocument()));
            }
        }
        for (const auto& [id, element] : ids) {
            out += "id \"" + id + "\" names " + element + '\n';
        }
        return out;
    }

private:
    std::string found(daeElement* element) const
    {
        const auto place = m_indices.find(element);
        return element == nullptr ? "nothing" : place == m_indices.end() ? "another" : std::to_string(place->second);
    }

    void printElement(std::string& out, daeElement& element)
    {
        out += std::string(element.getElementName()) + ':' + element.getTypeName() + " in " +
               found(element.getParentElement()) +
               (element.getDocument() == m_elements[0]->getDocument() ? "" : " of another document");
        const daeMetaAttributeRefArray& attributes = element.getMeta()->getMetaAttributes();
        for (std::size_t i = 0; i < attributes.getCount(); ++i) {
            const daeString name = attributes[i]->getName();
            out += std::string(element.isAttributeSet(name) ? " !" : " -") + name + '=';
            printValue(out, element, *attributes[i]);
        }
        if (daeMetaAttribute* const value = element.getMeta()->getValueAttribute()) {
            out += " value ";
            printValue(out, element, *value);
        }
        out += '\n';
    }

    void printValue(std::string& out, daeElement& element, daeMetaAttribute& attribute)
    {
        const daeMemoryRef memory = attribute.get(&element);
        daeAtomicType& type = *attribute.getType();
        if (!attribute.isArrayAttribute()) {
            printOne(out, memory, type);
            return;
        }
        const daeArray& array = *reinterpret_cast<daeArray*>(memory);
        out += std::to_string(array.getCount()) + '[';
        if (type.getTypeEnum() == daeAtomicType::IntType) {
            out += "not read]"; // the document model leaves the value uninitialized if the text is no number
            return;
        }
        for (std::size_t i = 0; i < array.getCount(); ++i) {
            out += ' ';
            printOne(out, array.getRaw(i), type);
        }
        out += ']';
    }

    void printOne(std::string& out, daeMemoryRef memory, daeAtomicType& type)
    {
        switch (type.getTypeEnum()) {
        case daeAtomicType::StringRefType:
        case daeAtomicType::TokenType:
            printText(out, *reinterpret_cast<daeString*>(memory));
            break;
        case daeAtomicType::ResolverType:
            printReference(out, *reinterpret_cast<daeURI*>(memory));
            break;
        case daeAtomicType::IDResolverType: {
            const auto& reference = *reinterpret_cast<daeIDRef*>(memory);
            printText(out, reference.getID());
            out += "->" + found(reference.getElement());
            break;
        }
        default:
            printBytes(out, memory, static_cast<std::size_t>(type.getSize()));
            break;
        }
    }

    void printReference(std::string& out, const daeURI& reference)
    {
        for (const std::string& part :
             {reference.str(), reference.originalStr(), reference.scheme(), reference.authority(), reference.path(),
              reference.query(), reference.fragment()}) {
            printText(out, part.c_str());
        }
        const bool isHere = reference.getReferencedDocument() == m_elements[0]->getDocument();
        out += isHere ? "->" + found(m_dae.getDatabase()->idLookup(reference.fragment(), m_elements[0]->getDocument()))
                      : "->elsewhere";
    }

    DAE& m_dae;
    std::vector<daeElement*> m_elements;
    std::unordered_map<const daeElement*, std::size_t> m_indices;
};

} // namespace

std::string documentTree(DAE& dae, domCOLLADA& root)
{
    return TreePrinter(dae, root).print();
}

} // namespace testSupport
