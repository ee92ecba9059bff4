#pragma once

#include <libPrepare/document/Document.h>

#include <string>
#include <unordered_map>
#include <vector>

namespace libPrepare {

/// The names that a source's accessor selects, one per record.
std::vector<std::string> wordRecords(Document& document, pugi::xml_node source);

/// Finds the joints of skins.
class Joints {
public:
    /// @param scene the `<visual_scene>` that is shown
    Joints(Document& document, pugi::xml_node scene);

    /// The node of a name: one below the skeletons with this sid, in their order, then one of the scene; then any with
    /// this id, then one of the scene with this name. Null if there is none.
    /// @param isId the name is an id, and nothing else counts
    pugi::xml_node find(const std::string& name, const std::vector<pugi::xml_node>& skeletons, bool isId);
    /// Whether any node has this sid, id or name.
    bool isKnown(const std::string& name);

private:
    struct Range {
        std::size_t first;
        std::size_t end;
    };
    struct Bearer {
        std::size_t place;
        pugi::xml_node node;
    };

    void index(pugi::xml_node root);
    pugi::xml_node findIn(pugi::xml_node root, const std::string& sid);

    Document& m_document;
    pugi::xml_node m_scene;
    std::size_t m_places = 0;
    std::unordered_map<std::size_t, Range> m_ranges; // of nodes and what lies in them
    std::unordered_map<std::string, std::vector<Bearer>> m_sids;
    std::unordered_map<std::string, pugi::xml_node> m_names; // of nodes of the scene
};

/// The names of the joints of a skin. Names with blanks are ambiguous in the list, so words are joined if that gives
/// the name of a node.
std::vector<std::string> jointNames(Document& document, Joints& joints, pugi::xml_node source);

} // namespace libPrepare
