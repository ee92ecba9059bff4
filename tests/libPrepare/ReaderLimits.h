#pragma once

#include <pugixml.hpp>

#include <map>
#include <set>
#include <string>
#include <vector>

namespace test {

/// What of a document another reader, Assimp, does not read as the standard says. All of it can be seen in the document
/// as it was before it was prepared.
struct ReaderLimits {
    explicit ReaderLimits(const pugi::xml_document& document);

    /// Why the reader's word on the document is worth nothing; empty if it is worth something.
    std::string unread;
    /// Whether it finds the diffuse color or texture of all faces.
    bool looks = true;
    /// Whether all cameras stay what they are: another comes in the place of an orthographic one.
    bool cameras = true;
    /// Whether the lights leave the emission of the materials alone.
    bool emission = true;
    /// The channels of a material that have a color, a texture or a number of their own, by its name.
    std::map<std::string, std::set<std::string>> channels;
    /// The ids of nodes that are kept when a document is prepared.
    std::set<std::string> nodes;
    /// When all curves of a node have a key, by its id. Between its keys a curve may be cut up, or go round a circle in
    /// other ways.
    std::map<std::string, std::vector<double>> times;
};

} // namespace test
