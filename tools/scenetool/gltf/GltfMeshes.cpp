#include "GltfMeshes.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

namespace scenetool {

namespace {

using Json = GltfDocument::Json;

constexpr std::size_t maxStride = 252; // limit of the format

// An attribute of the written vertex stream.
struct Attribute {
    std::string name;
    libVideo::VertexSemantic semantic;
    std::size_t from;       // bytes from the start of a vertex in the library's stream
    std::size_t to;         // bytes from the start of a written vertex
    std::size_t components; // written ones
};

float read(const unsigned char* bytes)
{
    float value = 0;
    std::memcpy(&value, bytes, sizeof value);
    return value;
}

void write(unsigned char* bytes, float value)
{
    std::memcpy(bytes, &value, sizeof value);
}

// Normalizes a normal, as glTF requires. @return false if it has no direction
bool normalize(unsigned char* bytes)
{
    double values[3];
    double square = 0;
    for (std::size_t i = 0; i < 3; ++i) {
        values[i] = static_cast<double>(read(bytes + 4 * i));
        square += values[i] * values[i];
    }
    const double length = std::sqrt(square);
    const bool hasDirection = std::isfinite(length) && length > 0;
    for (std::size_t i = 0; i < 3; ++i) {
        write(bytes + 4 * i, hasDirection ? static_cast<float>(values[i] / length) : (i == 2 ? 1.0f : 0.0f));
    }
    return hasDirection;
}

// The attributes that glTF supports, in the order of the stream.
std::vector<Attribute> attributesOf(const libVideo::Primitive& shown, ConversionNotes& notes)
{
    std::vector<Attribute> result;
    std::size_t sets = 0;
    std::size_t colors = 0;
    bool hasNormal = false;
    std::size_t to = 0;
    for (const libVideo::VertexLayout& layout : shown.vertexLayout()) {
        const std::size_t components = layout.byteSize / sizeof(float);
        Attribute attribute{{}, layout.semantic, layout.byteOffset, to, std::min<std::size_t>(components, 3)};
        if (layout.semantic == libVideo::SEMANTIC_POSITION && components >= 3 && to == 0 && result.empty()) {
            attribute.name = "POSITION";
        } else if (layout.semantic == libVideo::SEMANTIC_NORMAL && components >= 3 && !hasNormal) {
            attribute.name = "NORMAL";
            hasNormal = true;
        } else if (layout.semantic == libVideo::SEMANTIC_TEXCOORD && components >= 2) {
            attribute.name = "TEXCOORD_" + std::to_string(sets++);
            attribute.components = 2;
        } else if (layout.semantic == libVideo::SEMANTIC_COLOR && components >= 3) {
            attribute.name = "COLOR_" + std::to_string(colors++);
            attribute.components = std::min<std::size_t>(components, 4);
        } else {
            notes.add(
                "attribute",
                "Tangents, binormals, weights and attributes of other sizes cannot be written to glTF as they are.");
            continue;
        }
        to += 4 * attribute.components;
        result.push_back(std::move(attribute));
    }
    return result;
}

// The vertices of a primitive as glTF has them.
struct Vertices {
    std::vector<unsigned char> bytes;
    float low[3] = {infinity, infinity, infinity}; // of the positions
    float high[3] = {-infinity, -infinity, -infinity};
    std::size_t unreal = 0;        // numbers that became 0
    std::size_t directionless = 0; // normals that became Z

    static constexpr float infinity = std::numeric_limits<float>::infinity();
};

// @param stride of the result
Vertices verticesOf(libVideo::Primitive& shown, const std::vector<Attribute>& attributes, std::size_t count,
                    std::size_t stride)
{
    Vertices result;
    result.bytes.resize(count * stride);
    const std::size_t from = shown.bytesPerVertex();
    const unsigned char* const source = shown.vertexBuffer().get();
    for (std::size_t vertex = 0; vertex < count; ++vertex) {
        for (const Attribute& attribute : attributes) {
            unsigned char* const to = result.bytes.data() + vertex * stride + attribute.to;
            std::memcpy(to, source + vertex * from + attribute.from, 4 * attribute.components);
            for (std::size_t i = 0; i < attribute.components; ++i) {
                float value = read(to + 4 * i);
                if (!std::isfinite(value)) {
                    ++result.unreal;
                    write(to + 4 * i, value = 0.0f);
                }
                if (attribute.semantic == libVideo::SEMANTIC_POSITION) {
                    result.low[i] = std::min(result.low[i], value);
                    result.high[i] = std::max(result.high[i], value);
                } else if (attribute.semantic == libVideo::SEMANTIC_COLOR) {
                    write(to + 4 * i, i < 3 ? linearOf(value) : std::clamp(value, 0.0f, 1.0f));
                } else if (attribute.semantic == libVideo::SEMANTIC_TEXCOORD && i == 1) {
                    write(to + 4 * i, 1.0f - value); // glTF counts from the top of an image
                }
            }
            if (attribute.semantic == libVideo::SEMANTIC_NORMAL && !normalize(to)) {
                ++result.directionless;
            }
        }
    }
    return result;
}

} // namespace

std::optional<std::size_t> GltfMeshes::mesh(const libVideo::Geometry& geometry)
{
    const auto known = m_meshes.find(&geometry);
    if (known != m_meshes.end()) {
        return known->second;
    }
    Json primitives = Json::array();
    for (const libVideo::SharedHandle<libVideo::Primitive>& shown : geometry.mesh().primitives()) {
        if (std::optional<Json> json = primitive(*shown)) {
            primitives.push_back(std::move(*json));
        }
    }
    std::optional<std::size_t> result;
    if (!primitives.empty()) {
        const vesk::String& name = geometry.name().empty() ? geometry.id() : geometry.name();
        result = m_document->add("meshes", {{"name", name.data()}, {"primitives", std::move(primitives)}});
    }
    m_meshes.emplace(&geometry, result);
    return result;
}

std::optional<Json> GltfMeshes::primitive(libVideo::Primitive& shown)
{
    const std::vector<Attribute> attributes = attributesOf(shown, *m_notes);
    const std::size_t from = shown.bytesPerVertex();
    const std::size_t count = from > 0 ? shown.totalByteSize() / from : 0;
    const std::size_t stride = attributes.empty() ? 0 : attributes.back().to + 4 * attributes.back().components;
    if (count == 0 || attributes.empty() || attributes.front().name != "POSITION" || stride > maxStride ||
        count >= std::numeric_limits<unsigned>::max()) {
        m_notes->add("primitive", "Primitives without vertices that have a position are left out.");
        return std::nullopt;
    }
    const Vertices vertices = verticesOf(shown, attributes, count, stride);
    if (vertices.unreal > 0) {
        m_notes->add("number", "Numbers that are infinite or NaN are written as 0.", vertices.unreal);
    }
    if (vertices.directionless > 0) {
        m_notes->add("normal", "Normals without a direction are written as Z.", vertices.directionless);
    }
    const std::size_t view =
        m_document->addView(vertices.bytes.data(), vertices.bytes.size(), GltfDocument::vertices, stride);
    Json result;
    for (const Attribute& attribute : attributes) {
        static constexpr const char* types[] = {"SCALAR", "VEC2", "VEC3", "VEC4"};
        Json accessor = {{"bufferView", view},
                         {"byteOffset", attribute.to},
                         {"componentType", static_cast<unsigned>(GltfDocument::real)},
                         {"count", count},
                         {"type", types[attribute.components - 1]}};
        if (attribute.semantic == libVideo::SEMANTIC_POSITION) {
            accessor["min"] = Json::array({vertices.low[0], vertices.low[1], vertices.low[2]});
            accessor["max"] = Json::array({vertices.high[0], vertices.high[1], vertices.high[2]});
        }
        result["attributes"][attribute.name] = m_document->add("accessors", std::move(accessor));
    }
    if (shown.type() == libVideo::PRIMITIVE_POINT_CLOUD) {
        constexpr unsigned points = 0;
        result["mode"] = points;
        return result;
    }
    const std::optional<std::size_t> indices = addIndices(shown.indexBuffer(), count);
    if (!indices) {
        m_notes->add("primitive", "Primitives without vertices that have a position are left out.");
        return std::nullopt;
    }
    result["indices"] = *indices;
    result["material"] = m_materials->material(shown.material().data());
    return result;
}

std::optional<std::size_t> GltfMeshes::addIndices(const vesk::Array<unsigned>& corners, std::size_t vertexCount)
{
    const std::size_t count = corners.size() - corners.size() % 3;
    if (count == 0 ||
        std::any_of(corners.begin(), corners.end(), [&](unsigned index) { return index >= vertexCount; })) {
        return std::nullopt;
    }
    std::size_t view = 0;
    GltfDocument::Component component = GltfDocument::unsignedInt;
    if (vertexCount <= std::numeric_limits<std::uint16_t>::max()) { // the largest number is reserved for a restart
        component = GltfDocument::unsignedShort;
        const std::vector<std::uint16_t> narrow(corners.begin(), corners.begin() + count);
        view = m_document->addView(narrow.data(), narrow.size() * sizeof narrow[0], GltfDocument::indices);
    } else {
        view = m_document->addView(&*corners.begin(), count * sizeof(unsigned), GltfDocument::indices);
    }
    return m_document->add("accessors", {{"bufferView", view},
                                         {"componentType", static_cast<unsigned>(component)},
                                         {"count", count},
                                         {"type", "SCALAR"}});
}

} // namespace scenetool
