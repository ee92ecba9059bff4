#pragma once

#include <pugixml.hpp>

#include <map>
#include <set>
#include <string>
#include <vector>

namespace test {

/// The parts of a document that another reader, Assimp, does not read as the standard says. They are found in the
/// original document.
struct ReaderLimits {
    explicit ReaderLimits(const pugi::xml_document& document);

    /// Why the reader cannot judge the document; empty if it can.
    std::string unread;
    /// Whether it finds the diffuse color or texture of all faces.
    bool looks = true;
    /// Whether all cameras stay the same; an orthographic one is replaced.
    bool cameras = true;
    /// Whether the lights do not change the emission of materials.
    bool emission = true;
    /// The channels of a material that have a color, a texture or a number of their own, by its name.
    std::map<std::string, std::set<std::string>> channels;
    /// The ids of nodes that are kept when a document is prepared.
    std::set<std::string> nodes;
    /// By node id, the times at which all of its curves have a key. Between keys, a curve may be divided, or turn in
    /// another direction.
    std::map<std::string, std::vector<double>> times;
};

} // namespace test
