// Any bytes as a document, read by the library's reader and by that of the document model, which have to agree on the
// tree. Both readers are reused, so that a document costs little more than its reading.

#include "Check.h"

#include "support/DocumentTree.h"

#include <libVideo/ColladaDom.h>
#include <libVideo/SceneGraph/document/ColladaReader.h>

#include <cstddef>
#include <cstdint>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

// A message handler of a host: counts messages, and throws on request.
class Handler : public daeErrorHandler {
public:
    Handler() { setErrorHandler(this); }
    ~Handler() override { setErrorHandler(nullptr); }
    void handleError(daeString /*message*/) override { take(); }
    void handleWarning(daeString /*message*/) override { take(); }

    unsigned messageCount() const { return m_messageCount; }
    void setThrows(bool throws) { m_throws = throws; }

private:
    void take()
    {
        ++m_messageCount;
        if (m_throws) {
            throw std::runtime_error("a message");
        }
    }

    unsigned m_messageCount = 0;
    bool m_throws = false;
};

// The content of the document model's database for its one document, type by type.
std::string databaseOf(DAE& dae)
{
    daeDatabase& database = *dae.getDatabase();
    const std::string name = database.getDocumentName(0);
    std::string said = std::to_string(database.getDocumentCount()) + ' ' + name + ' ' +
                       std::to_string(database.isDocumentLoaded(name.c_str())) +
                       std::to_string(database.isDocumentLoaded("file:/other.dae")) + '\n';
    std::set<std::string> types;
    for (daeUInt i = 0; i < database.getTypeCount(); ++i) {
        types.insert(database.getTypeName(i));
    }
    for (const std::string& type : types) {
        const daeUInt count = database.getElementCount(nullptr, type.c_str(), name.c_str());
        if (count == 0) {
            continue; // the document model's own database still lists the types of removed elements
        }
        said += type + ' ' + std::to_string(count) + ':';
        for (daeUInt i = 0; i <= count; ++i) {
            daeElement* element = nullptr;
            said += ' ' + std::to_string(database.getElement(&element, static_cast<daeInt>(i), nullptr, type.c_str()));
            const daeString id = element != nullptr ? element->getID() : nullptr;
            said += id != nullptr ? ' ' + std::string(id) + ' ' + std::to_string(database.getElementCount(id)) : "";
        }
        said += '\n';
    }
    return said;
}

// The content of the database after a host changes a document: sets and removes an id, removes an element, adds
// documents and removes one.
std::string editedDatabaseOf(DAE& dae, domCOLLADA& root)
{
    daeDatabase& database = *dae.getDatabase();
    const daeElementRefArray children = root.getChildren();
    std::string said;
    if (children.getCount() > 0) {
        const daeElementRef child = children[children.getCount() - 1];
        said += std::to_string(child->setAttribute("id", "given"));
        said += std::to_string(database.getElementCount("given"));
        said += std::to_string(database.changeElementID(child, nullptr) == DAE_OK);
        said += std::to_string(child->setAttribute("id", "")) + std::to_string(root.removeChildElement(child));
    }
    said += std::to_string(database.getElementCount("given")) + ' ';
    daeDocument* added = nullptr;
    said += std::to_string(database.insertDocument("file:/fuzz/second.dae", &added));
    said += std::to_string(added != nullptr && database.isDocumentLoaded("file:/fuzz/second.dae"));
    daeDocument* again = added;
    said += std::to_string(database.insertDocument("file:/fuzz/second.dae", nullptr, &again));
    said += std::to_string(again == nullptr) + std::to_string(database.getDocumentCount());
    std::vector<daeElement*> found;
    database.sidLookup("s", found, nullptr);
    said += std::to_string(found.size());
    database.typeLookup(domNode::ID(), found);
    said += std::to_string(found.size()) + std::to_string(database.idLookup("a").empty());
    said += std::to_string(database.removeDocument(added)) + std::to_string(database.getDocumentCount());
    return said + '\n' + databaseOf(dae);
}

constexpr std::size_t longText = 2048; // checking a longer one takes too long

domCOLLADA* opened(DAE& dae, const std::string& text)
{
    return daeSafeCast<domCOLLADA>(dae.openFromMemory("file:/fuzz/document.dae", text.c_str()));
}

// The tree of a text and the messages about it; empty if the text is refused.
std::string treeOf(DAE& dae, domCOLLADA* root, const std::string& text)
{
    std::string tree = root != nullptr ? testSupport::documentTree(dae, *root) : "";
    if (root != nullptr && text.size() < longText) {
        tree += databaseOf(dae);
        tree += editedDatabaseOf(dae, *root);
    }
    dae.clear();
    return tree;
}

struct Readers {
    Handler handler;
    libVideo::detail::ColladaReader reader{own};
    DAE own{&reader.database(), &reader, "1.4.1"};
    DAE stock{nullptr, nullptr, "1.4.1"};
};

// An exception that a message handler throws reaches the caller, and the reader can read the next document.
void throwAtMessage(Readers& readers, const std::string& text, const std::string& tree)
{
    readers.handler.setThrows(true);
    bool isThrown = false;
    try {
        opened(readers.own, text);
    } catch (const std::runtime_error&) {
        isThrown = true;
    }
    readers.handler.setThrows(false);
    fuzz::check(isThrown, "an exception that is lost");
    readers.own.clear();
    fuzz::check(treeOf(readers.own, opened(readers.own, text), text) == tree, "a tree that changes after an exception");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static Readers readers;
    const std::string text(reinterpret_cast<const char*>(data), size);
    if (text.find('\0') != std::string::npos) {
        return 0; // both read the text up to there
    }
    const unsigned messageCount = readers.handler.messageCount();
    domCOLLADA* const root = opened(readers.own, text);
    const bool hasMessage = readers.handler.messageCount() > messageCount;
    const std::string tree = treeOf(readers.own, root, text);
    // The document model may not survive a document that is refused.
    if (!tree.empty() && tree != treeOf(readers.stock, opened(readers.stock, text), text)) {
        fuzz::fail("the readers make different trees");
    }
    if (hasMessage && text.size() < longText) {
        throwAtMessage(readers, text, tree);
    }
    return 0;
}
