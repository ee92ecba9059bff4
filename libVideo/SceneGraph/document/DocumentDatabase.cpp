#include "DocumentDatabase.h"

#include <algorithm>
#include <cstring>
#include <set>
#include <utility>

namespace libVideo::detail {

void DocumentDatabase::add(std::unique_ptr<daeDocument> document, IdIndex ids, bool areIdsKnown)
{
    m_entries.push_back({std::move(document), std::move(ids), areIdsKnown});
    dae.getSidRefCache().clear();
}

daeElement* DocumentDatabase::find(const std::string& id, const daeDocument& document)
{
    for (Entry& entry : m_entries) {
        if (entry.document.get() == &document) {
            return idsOf(entry).find(id);
        }
    }
    return nullptr;
}

daeInt DocumentDatabase::setMeta(daeMetaElement* meta)
{
    m_rootMeta = meta;
    return DAE_OK;
}

daeInt DocumentDatabase::insertDocument(daeString name, daeElement* dom, daeDocument** document, bool isArchive,
                                        const std::string& extracted)
{
    return createDocument(name, dom, document, isArchive, extracted);
}

daeInt DocumentDatabase::insertDocument(daeString name, daeDocument** document)
{
    return createDocument(name, document);
}

daeInt DocumentDatabase::createDocument(daeString name, daeElement* dom, daeDocument** document, bool isArchive,
                                        const std::string& extracted)
{
    if (document != nullptr) {
        *document = nullptr;
    }
    if (isDocumentLoaded(name)) {
        return DAE_ERR_COLLECTION_ALREADY_EXISTS;
    }
    auto made = std::make_unique<daeDocument>(dae, isArchive, extracted);
    made->getDocumentURI()->setURI(name);
    made->setDomRoot(dom);
    if (document != nullptr) {
        *document = made.get();
    }
    add(std::move(made), IdIndex(), false);
    return DAE_OK;
}

daeInt DocumentDatabase::createDocument(daeString name, daeDocument** document)
{
    const daeElementRef root = m_rootMeta->create();
    return createDocument(name, root, document, false, "");
}

daeInt DocumentDatabase::insertDocument(daeDocument* document)
{
    add(std::unique_ptr<daeDocument>(document), IdIndex(), false);
    return DAE_OK;
}

daeInt DocumentDatabase::removeDocument(daeDocument* document)
{
    m_entries.remove_if([&](const Entry& entry) { return entry.document.get() == document; });
    dae.getSidRefCache().clear();
    return DAE_OK;
}

daeUInt DocumentDatabase::getDocumentCount()
{
    return static_cast<daeUInt>(m_entries.size());
}

daeDocument* DocumentDatabase::getDocument(daeUInt index)
{
    return index < m_entries.size() ? std::next(m_entries.begin(), static_cast<std::ptrdiff_t>(index))->document.get()
                                    : nullptr;
}

daeDocument* DocumentDatabase::getDocument(daeString name, bool isNormalized)
{
    const std::string uri = isNormalized ? name : daeURI(dae, name, true).str();
    for (const Entry& entry : m_entries) {
        if (entry.document->getDocumentURI()->str() == uri) {
            return entry.document.get();
        }
    }
    return nullptr;
}

daeString DocumentDatabase::getDocumentName(daeUInt index)
{
    daeDocument* const document = getDocument(index);
    return document != nullptr ? document->getDocumentURI()->getURI() : nullptr;
}

daeBool DocumentDatabase::isDocumentLoaded(daeString name)
{
    return getDocument(name, false) != nullptr;
}

// The next search for an id collects the ids again.
void DocumentDatabase::dropIds(const daeDocument* document)
{
    for (Entry& entry : m_entries) {
        if (entry.document.get() == document) {
            entry.areIdsKnown = false;
        }
    }
    dae.getSidRefCache().clear();
}

daeInt DocumentDatabase::insertElement(daeDocument* document, daeElement* /*element*/)
{
    dropIds(document);
    return DAE_OK;
}

daeInt DocumentDatabase::removeElement(daeDocument* document, daeElement* /*element*/)
{
    dropIds(document);
    return DAE_OK;
}

daeInt DocumentDatabase::changeElementID(daeElement* element, daeString /*id*/)
{
    if (element == nullptr) {
        return DAE_ERR_INVALID_CALL;
    }
    dropIds(element->getDocument());
    return DAE_OK;
}

daeInt DocumentDatabase::changeElementSID(daeElement* element, daeString /*sid*/)
{
    dae.getSidRefCache().clear();
    return element != nullptr ? DAE_OK : DAE_ERR_INVALID_CALL;
}

daeInt DocumentDatabase::clear()
{
    m_entries.clear();
    return DAE_OK;
}

const IdIndex& DocumentDatabase::idsOf(Entry& entry)
{
    if (!entry.areIdsKnown) {
        entry.ids.clear();
        walk(entry.document.get(), [&](daeElement& element) {
            if (const daeString id = element.getID()) {
                entry.ids.add(id, element);
            }
        });
        static_cast<void>(entry.ids.build());
        entry.areIdsKnown = true;
    }
    return entry.ids;
}

// Visits the elements of a document, or of all documents if it is null; each element after its children.
void DocumentDatabase::walk(const daeDocument* document, const std::function<void(daeElement&)>& visit)
{
    for (const Entry& entry : m_entries) {
        if (document != nullptr && entry.document.get() != document) {
            continue;
        }
        // Collects parents before children and the last child first, then visits them in reverse.
        std::vector<daeElement*> waiting;
        std::vector<daeElement*> found;
        if (daeElement* const root = entry.document->getDomRoot()) {
            waiting.push_back(root);
        }
        while (!waiting.empty()) {
            daeElement* const element = waiting.back();
            waiting.pop_back();
            found.push_back(element);
            m_types.appendChildren(*element, waiting);
        }
        std::for_each(found.rbegin(), found.rend(), [&](daeElement* element) { visit(*element); });
    }
}

std::vector<daeElement*> DocumentDatabase::idLookup(const std::string& id)
{
    std::vector<daeElement*> elements;
    for (Entry& entry : m_entries) {
        if (daeElement* const element = idsOf(entry).find(id)) {
            elements.push_back(element);
        }
    }
    return elements;
}

void DocumentDatabase::typeLookup(daeInt type, std::vector<daeElement*>& elements, daeDocument* document)
{
    elements.clear();
    walk(document, [&](daeElement& element) {
        if (element.typeID() == type) {
            elements.push_back(&element);
        }
    });
}

// Finds nothing, as the document model's own database does.
void DocumentDatabase::sidLookup(const std::string& /*sid*/, std::vector<daeElement*>& elements,
                                 daeDocument* /*document*/)
{
    elements.clear();
}

daeUInt DocumentDatabase::getTypeCount()
{
    std::set<std::string> types;
    walk(nullptr, [&](daeElement& element) { types.insert(element.getTypeName()); });
    return static_cast<daeUInt>(types.size());
}

daeString DocumentDatabase::getTypeName(daeUInt index)
{
    const auto less = [](daeString a, daeString b) { return std::strcmp(a, b) < 0; };
    std::set<daeString, decltype(less)> types(less);
    walk(nullptr, [&](daeElement& element) { types.insert(element.getTypeName()); });
    return index < types.size() ? *std::next(types.begin(), static_cast<std::ptrdiff_t>(index)) : nullptr;
}

std::vector<daeElement*> DocumentDatabase::matches(daeString name, daeString type, daeString file)
{
    std::vector<daeElement*> elements;
    const daeDocument* const document = file != nullptr ? getDocument(file, false) : nullptr;
    if (file != nullptr && document == nullptr) {
        return elements;
    }
    walk(document, [&](daeElement& element) {
        const daeString id = element.getID();
        const bool isMatch = name != nullptr ? id != nullptr && std::strcmp(id, name) == 0
                                             : type == nullptr || std::strcmp(element.getTypeName(), type) == 0;
        if (isMatch) {
            elements.push_back(&element);
        }
    });
    return elements;
}

daeUInt DocumentDatabase::getElementCount(daeString name, daeString type, daeString file)
{
    return static_cast<daeUInt>(matches(name, type, file).size());
}

daeInt DocumentDatabase::getElement(daeElement** element, daeInt index, daeString name, daeString type, daeString file)
{
    const std::vector<daeElement*> elements = matches(name, type, file);
    if (index < 0 || static_cast<std::size_t>(index) >= elements.size()) {
        *element = nullptr;
        return DAE_ERR_QUERY_NO_MATCH;
    }
    *element = elements[static_cast<std::size_t>(index)];
    return DAE_OK;
}

} // namespace libVideo::detail
