#pragma once

#include <nlohmann/json.hpp>

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace scenetool {

/// Thrown if a glTF document cannot be made or written. The message is one line.
class GltfError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// A glTF 2.0 document under construction: its JSON, and the binary data of its buffer views.
class GltfDocument {
public:
    /// Members keep the order in which they are added. Numbers are floats, so that their shortest text is written.
    using Json =
        nlohmann::basic_json<nlohmann::ordered_map, std::vector, std::string, bool, std::int64_t, std::uint64_t, float>;

    /// Purpose of a buffer view, with the numbers of the format.
    enum Target : unsigned { none = 0, vertices = 34962, indices = 34963 };
    /// Types of components, with the numbers of the format.
    enum Component : unsigned { unsignedShort = 5123, unsignedInt = 5125, real = 5126 };

    /// @param maxBytes maximum size of the binary data
    explicit GltfDocument(std::uint64_t maxBytes);

    /// Appends an object to one of the lists of the document, such as "nodes". @return its index
    std::size_t add(const char* list, Json object);
    /// A list of the document, created if missing. The reference is valid until a member with a new name is added.
    Json& list(const char* name) { return m_json[name]; }
    Json& json() { return m_json; }

    /// Adds an extension to `extensionsUsed`, unless it is listed, and to `extensionsRequired` if readers need it.
    void useExtension(const char* name, bool isRequired = false);

    /// Appends data, aligned to four bytes, with a view. @param stride in bytes; 0 for data without gaps
    /// @return the index of the view @throws GltfError if the data gets too large
    std::size_t addView(const void* data, std::size_t size, Target target, std::size_t stride = 0);
    /// Appends numbers with an accessor, such as the times of a sampler. @param type such as "VEC3"
    /// @param components number per element @param hasBounds adds minimum and maximum of each component
    /// @return the index of the accessor
    std::size_t addNumbers(const std::vector<float>& values, const char* type, std::size_t components, bool hasBounds);

    /// The bytes of a view.
    const unsigned char* viewData(std::size_t view) const;

    /// Compresses vertices and indices by EXT_meshopt_compression, which readers need to support then. To be called
    /// last.
    void compress();

    /// Writes one binary file. @throws GltfError
    void writeBinary(const std::string& path) const;
    /// Writes the JSON to `path`, and the data to a file next to it with the extension `.bin`. @throws GltfError
    void writeText(const std::string& path) const;

private:
    Json finished(const std::string& binaryName) const;
    unsigned componentOf(std::size_t view) const;

    Json m_json;
    std::string m_binary;
    std::uint64_t m_maxBytes;
    std::size_t m_uncompressedBytes = 0; // size of the compressed views before compression; 0 without any
};

/// Writes a file completely or not at all: it appears under its name only when it is complete. @throws GltfError
void writeWholeFile(const std::string& path, const std::vector<std::pair<const char*, std::size_t>>& pieces);

} // namespace scenetool
