#pragma once

#include <nlohmann/json.hpp>

#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace testSupport {

/// A document that `scenetool convert --as-loaded` wrote as glTF, read back.
struct ConvertedDocument {
    /// @param body of `<COLLADA>` @param files that lie beside the document, by name @param ending of the result
    explicit ConvertedDocument(const std::string& body, const std::map<std::string, std::string>& files = {},
                               const std::string& ending = ".glb",
                               const std::vector<std::string>& options = {"--as-loaded"});

    /// All numbers of an accessor, element by element.
    std::vector<double> numbers(const nlohmann::json& accessor) const;
    /// The bytes of a buffer view.
    std::string view(std::size_t index) const;
    /// The product of the transforms of a node and its ancestors, row by row.
    std::vector<double> world(std::size_t node) const;
    /// Sets all nodes to the transforms of the first animation at a time in seconds.
    void moveTo(double time);

    int status = 0;
    bool isWritten = false;
    std::string errors;
    nlohmann::json json;
    std::string binary;
};

/// A PNG file of one texel.
std::string onePixelPng();

} // namespace testSupport
