#pragma once

/// @file
/// The documents of a `DAE`, and their elements by id.

#include "ElementTypes.h"
#include "IdIndex.h"

#include <libVideo/ColladaDom.h>

#include <functional>
#include <list>
#include <memory>
#include <string>
#include <vector>

namespace libVideo::detail {

/// A database that indexes elements by their id only. All other queries, such as one for the elements of a type, visit
/// every element. If several elements of a document have the same id, it finds only the first of them, in the order of
/// the document model's own database: children before their parent.
class DocumentDatabase : public daeDatabase {
public:
    DocumentDatabase(DAE& owner, ElementTypes& types) : daeDatabase(owner), m_types(types) {}
    ~DocumentDatabase() override { clear(); }
    DocumentDatabase(const DocumentDatabase&) = delete;
    DocumentDatabase& operator=(const DocumentDatabase&) = delete;

    /// Adds a document that has been read.
    /// @param ids of its elements, used only if `areIdsKnown`; otherwise the first search for an id collects them
    void add(std::unique_ptr<daeDocument> document, IdIndex ids, bool areIdsKnown);
    /// @return the first element with that id in a document, or null
    daeElement* find(const std::string& id, const daeDocument& document);

    daeInt setMeta(daeMetaElement* meta) override;
    daeInt insertDocument(daeString name, daeElement* dom, daeDocument** document, bool isArchive,
                          const std::string& extracted) override;
    daeInt insertDocument(daeString name, daeDocument** document) override;
    daeInt createDocument(daeString name, daeElement* dom, daeDocument** document, bool isArchive,
                          const std::string& extracted) override;
    daeInt createDocument(daeString name, daeDocument** document) override;
    daeInt insertDocument(daeDocument* document) override;
    daeInt removeDocument(daeDocument* document) override;
    daeUInt getDocumentCount() override;
    daeDocument* getDocument(daeUInt index) override;
    daeDocument* getDocument(daeString name, bool isNormalized) override;
    daeString getDocumentName(daeUInt index) override;
    daeBool isDocumentLoaded(daeString name) override;

    daeInt insertElement(daeDocument* document, daeElement* element) override;
    daeInt removeElement(daeDocument* document, daeElement* element) override;
    daeInt changeElementID(daeElement* element, daeString id) override;
    daeInt changeElementSID(daeElement* element, daeString sid) override;
    daeInt clear() override;

    std::vector<daeElement*> idLookup(const std::string& id) override;
    void typeLookup(daeInt type, std::vector<daeElement*>& elements, daeDocument* document) override;
    void sidLookup(const std::string& sid, std::vector<daeElement*>& elements, daeDocument* document) override;
    daeUInt getTypeCount() override;
    daeString getTypeName(daeUInt index) override;
    daeUInt getElementCount(daeString name, daeString type, daeString file) override;
    daeInt getElement(daeElement** element, daeInt index, daeString name, daeString type, daeString file) override;

private:
    struct Entry {
        std::unique_ptr<daeDocument> document;
        IdIndex ids;
        bool areIdsKnown = false;
    };

    void dropIds(const daeDocument* document);
    const IdIndex& idsOf(Entry& entry);
    void walk(const daeDocument* document, const std::function<void(daeElement&)>& visit);
    std::vector<daeElement*> matches(daeString name, daeString type, daeString file);

    ElementTypes& m_types;
    daeMetaElement* m_rootMeta = nullptr;
    std::list<Entry> m_entries;
};

} // namespace libVideo::detail
