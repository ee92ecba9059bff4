#pragma once

#include <nlohmann/json.hpp>

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace scenetool {

/// What keeps a glTF document from being made or written, in one line.
class GltfError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// A glTF 2.0 document in the making: its JSON, and the binary data that its buffer views describe.
class GltfDocument {
public:
    /// Members keep the order in which they are added; numbers are floats, so that their shortest text is written.
    using Json =
        nlohmann::basic_json<nlohmann::ordered_map, std::vector, std::string, bool, std::int64_t, std::uint64_t, float>;

    /// What a buffer view serves for; the numbers of the format.
    enum Target : unsigned { none = 0, vertices = 34962, indices = 34963 };
    /// Types of components; the numbers of the format.
    enum Component : unsigned { unsignedShort = 5123, unsignedInt = 5125, real = 5126 };

    /// @param mostBytes that the binary data may have
    explicit GltfDocument(std::uint64_t mostBytes);

    /// Appends an object to one of the lists of the document, such as "nodes". @return its index
    std::size_t add(const char* list, Json object);
    /// One of the lists; made if it is missing. The reference lasts until a member of another name is added.
    Json& list(const char* name) { return m_json[name]; }
    Json& json() { return m_json; }

    /// Names an extension in `extensionsUsed`, once, and in `extensionsRequired` if readers cannot do without it.
    void useExtension(const char* name, bool isRequired = false);

    /// Appends data on a boundary of four bytes. @param stride in bytes; 0 for data without gaps @return the index of the view
    /// @throws GltfError if the data grows too large
    std::size_t addView(const void* data, std::size_t size, Target target, std::size_t stride = 0);
    /// Numbers as an accessor of their own, such as the times of a sampler. @param type such as "VEC3"
    /// @param components of one element @param hasBounds writes the smallest and largest value of each component
    std::size_t addNumbers(const std::vector<float>& values, const char* type, std::size_t components, bool hasBounds);

    /// The bytes of a view.
    const unsigned char* viewData(std::size_t view) const;

    /// Compresses vertices and indices (EXT_meshopt_compression), which readers have to know then. To be called last.
    void compress();

    /// Writes one binary file. @throws GltfError
    void writeBinary(const std::string& path) const;
    /// Writes the JSON to `path` and the data beside it, with the ending `.bin`. @throws GltfError
    void writeText(const std::string& path) const;

private:
    Json finished(const std::string& binaryName) const;
    unsigned componentOf(std::size_t view) const;

    Json m_json;
    std::string m_binary;
    std::uint64_t m_mostBytes;
    std::size_t m_uncompressedBytes = 0; // of what is compressed; 0 if nothing is
};

/// Writes a file whole or not at all: it appears under its name when it is complete. @throws GltfError
void writeWholeFile(const std::string& path, const std::vector<std::pair<const char*, std::size_t>>& pieces);

} // namespace scenetool
