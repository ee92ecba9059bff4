#pragma once

#include <libPrepare/document/Document.h>

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

namespace libPrepare {

/// Whether an element of a mesh holds faces or lines.
bool isPrimitive(pugi::xml_node element);
/// The elements of a mesh that hold faces or lines.
std::vector<pugi::xml_node> primitivesOf(pugi::xml_node geometry);

/// Copies geometries. A copy shares the sources of the original by reference and owns everything else.
class GeometryCopier {
public:
    explicit GeometryCopier(Document& document) : m_document(document) {}

    /// A copy with new ids, placed after the geometry and its earlier copies. Null if the result would be too big.
    pugi::xml_node copy(pugi::xml_node geometry);

private:
    std::uint64_t sizeOf(pugi::xml_node geometry);
    void copyAttributes(pugi::xml_node from, pugi::xml_node to, std::unordered_map<std::string, std::string>& ids);

    Document& m_document;
    std::size_t m_copies = 0;
    std::unordered_map<std::size_t, std::uint64_t> m_sizes;
    std::unordered_map<std::size_t, pugi::xml_node> m_last; // copy of each geometry
};

} // namespace libPrepare
