#include "GltfDocument.h"

#include <meshoptimizer.h>

#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <limits>
#include <system_error>

namespace scenetool {

namespace {

constexpr std::size_t alignment = 4;
constexpr const char* compressionExtension = "EXT_meshopt_compression";

std::size_t padding(std::size_t size)
{
    return (alignment - size % alignment) % alignment;
}

void appendWord(std::string& target, std::uint32_t word)
{
    for (unsigned shift = 0; shift < 32; shift += 8) {
        target += static_cast<char>((word >> shift) & 0xFFU);
    }
}

} // namespace

GltfDocument::GltfDocument(std::uint64_t maxBytes) : m_maxBytes(maxBytes)
{
    m_json["asset"] = {{"version", "2.0"}, {"generator", "scenetool " SCENETOOL_VERSION}};
}

std::size_t GltfDocument::add(const char* list, Json object)
{
    Json& target = m_json[list];
    target.push_back(std::move(object));
    return target.size() - 1;
}

void GltfDocument::useExtension(const char* name, bool isRequired)
{
    const auto put = [&](const char* list) {
        Json& names = m_json[list];
        if (std::find(names.begin(), names.end(), name) == names.end()) {
            names.push_back(name);
        }
    };
    put("extensionsUsed");
    if (isRequired) {
        put("extensionsRequired");
    }
}

std::size_t GltfDocument::addView(const void* data, std::size_t size, Target target, std::size_t stride)
{
    m_binary.append(padding(m_binary.size()), '\0');
    if (size > m_maxBytes || m_binary.size() > m_maxBytes - size) {
        throw GltfError("the result would have more than " + std::to_string(m_maxBytes) + " bytes of data");
    }
    Json view = {{"buffer", 0}, {"byteOffset", m_binary.size()}, {"byteLength", size}};
    if (stride != 0) {
        view["byteStride"] = stride;
    }
    if (target != none) {
        view["target"] = static_cast<unsigned>(target);
    }
    m_binary.append(static_cast<const char*>(data), size);
    return add("bufferViews", std::move(view));
}

std::size_t GltfDocument::addNumbers(const std::vector<float>& values, const char* type, std::size_t components,
                                     bool hasBounds)
{
    const std::size_t view = addView(values.data(), values.size() * sizeof(float), none);
    Json accessor = {{"bufferView", view},
                     {"componentType", static_cast<unsigned>(real)},
                     {"count", values.size() / components},
                     {"type", type}};
    if (hasBounds) {
        Json low = Json::array();
        Json high = Json::array();
        for (std::size_t component = 0; component < components; ++component) {
            float smallest = values[component];
            float largest = values[component];
            for (std::size_t i = component; i < values.size(); i += components) {
                smallest = std::min(smallest, values[i]);
                largest = std::max(largest, values[i]);
            }
            low.push_back(smallest);
            high.push_back(largest);
        }
        accessor["min"] = std::move(low);
        accessor["max"] = std::move(high);
    }
    return add("accessors", std::move(accessor));
}

const unsigned char* GltfDocument::viewData(std::size_t view) const
{
    const std::size_t offset = m_json.at("bufferViews").at(view).at("byteOffset").get<std::size_t>();
    return reinterpret_cast<const unsigned char*>(m_binary.data()) + offset;
}

unsigned GltfDocument::componentOf(std::size_t view) const
{
    for (const Json& accessor : m_json.at("accessors")) {
        if (accessor.at("bufferView").get<std::size_t>() == view) {
            return accessor.at("componentType").get<unsigned>();
        }
    }
    return unsignedInt;
}

void GltfDocument::compress()
{
    if (!m_json.contains("bufferViews")) {
        return;
    }
    constexpr std::size_t cornersOfTriangle = 3;
    std::string binary;
    Json& views = m_json["bufferViews"];
    for (std::size_t i = 0; i < views.size(); ++i) {
        Json& view = views[i];
        const unsigned char* const data = viewData(i);
        const std::size_t size = view.at("byteLength").get<std::size_t>();
        const unsigned target = view.value("target", 0U);
        std::size_t stride = view.value("byteStride", std::size_t(0));
        std::vector<unsigned char> packed;
        if (target == vertices && stride != 0 && stride % alignment == 0) {
            packed.resize(meshopt_encodeVertexBufferBound(size / stride, stride));
            packed.resize(meshopt_encodeVertexBuffer(packed.data(), packed.size(), data, size / stride, stride));
        } else if (target == indices) {
            stride = componentOf(i) == unsignedShort ? sizeof(std::uint16_t) : sizeof(std::uint32_t);
            std::vector<unsigned> corners(size / stride);
            for (std::size_t corner = 0; corner < corners.size(); ++corner) {
                std::memcpy(&corners[corner], data + corner * stride, stride); // little-endian, like the format
            }
            if (!corners.empty() && corners.size() % cornersOfTriangle == 0) {
                const std::size_t count = std::size_t(*std::max_element(corners.begin(), corners.end())) + 1;
                packed.resize(meshopt_encodeIndexBufferBound(corners.size(), count));
                packed.resize(meshopt_encodeIndexBuffer(packed.data(), packed.size(), corners.data(), corners.size()));
            }
        }
        binary.append(padding(binary.size()), '\0');
        const std::size_t offset = binary.size();
        if (packed.empty()) {
            binary.append(reinterpret_cast<const char*>(data), size);
            view["byteOffset"] = offset;
            continue;
        }
        binary.append(reinterpret_cast<const char*>(packed.data()), packed.size());
        m_uncompressedBytes += padding(m_uncompressedBytes);
        view["extensions"][compressionExtension] = {{"buffer", 0},
                                                    {"byteOffset", offset},
                                                    {"byteLength", packed.size()},
                                                    {"byteStride", stride},
                                                    {"mode", target == vertices ? "ATTRIBUTES" : "TRIANGLES"},
                                                    {"count", size / stride}};
        view["buffer"] = 1;
        view["byteOffset"] = m_uncompressedBytes;
        m_uncompressedBytes += size;
    }
    m_binary = std::move(binary);
    if (m_uncompressedBytes != 0) {
        useExtension(compressionExtension, true);
    }
}

GltfDocument::Json GltfDocument::finished(const std::string& binaryName) const
{
    Json result = m_json;
    if (!m_binary.empty()) {
        Json buffer = {{"byteLength", m_binary.size()}};
        if (!binaryName.empty()) {
            buffer["uri"] = binaryName;
        }
        result["buffers"] = Json::array({buffer});
        if (m_uncompressedBytes != 0) { // a buffer without data, to which the uncompressed views refer
            result["buffers"].push_back(
                {{"byteLength", m_uncompressedBytes}, {"extensions", {{compressionExtension, {{"fallback", true}}}}}});
        }
    }
    return result;
}

void GltfDocument::writeBinary(const std::string& path) const
{
    constexpr std::uint32_t magic = 0x46546C67;
    constexpr std::uint32_t version = 2;
    constexpr std::uint32_t jsonChunk = 0x4E4F534A;
    constexpr std::uint32_t binaryChunk = 0x004E4942;
    constexpr std::size_t headerSize = 12;
    constexpr std::size_t chunkHeaderSize = 8;

    std::string json = finished({}).dump(-1, ' ', false, Json::error_handler_t::replace);
    json.append(padding(json.size()), ' ');
    const std::size_t tail = padding(m_binary.size());
    const std::size_t binarySize = m_binary.size() + tail;
    const std::size_t whole =
        headerSize + chunkHeaderSize + json.size() + (m_binary.empty() ? 0 : chunkHeaderSize + binarySize);
    if (whole > std::numeric_limits<std::uint32_t>::max()) {
        throw GltfError("the result is too large for one binary file; choose a name that ends in .gltf");
    }
    std::string start;
    appendWord(start, magic);
    appendWord(start, version);
    appendWord(start, static_cast<std::uint32_t>(whole));
    appendWord(start, static_cast<std::uint32_t>(json.size()));
    appendWord(start, jsonChunk);
    start += json;
    if (!m_binary.empty()) {
        appendWord(start, static_cast<std::uint32_t>(binarySize));
        appendWord(start, binaryChunk);
    }
    static constexpr char zeros[alignment] = {};
    writeWholeFile(path, {{start.data(), start.size()}, {m_binary.data(), m_binary.size()}, {zeros, tail}});
}

void GltfDocument::writeText(const std::string& path) const
{
    std::filesystem::path binary(path);
    binary.replace_extension(".bin");
    if (!m_binary.empty()) {
        writeWholeFile(binary.string(), {{m_binary.data(), m_binary.size()}});
    }
    // The name is written as a URI reference, so most characters have to be escaped.
    std::string name;
    for (const char character : binary.filename().string()) {
        const bool isPlain =
            std::isalnum(static_cast<unsigned char>(character)) != 0 || std::strchr("-._~", character) != nullptr;
        if (isPlain) {
            name += character;
        } else {
            static constexpr char digits[] = "0123456789ABCDEF";
            const auto byte = static_cast<unsigned char>(character);
            name += {'%', digits[byte >> 4U], digits[byte & 0xFU]};
        }
    }
    const std::string json = finished(name).dump(1, ' ', false, Json::error_handler_t::replace) + '\n';
    writeWholeFile(path, {{json.data(), json.size()}});
}

void writeWholeFile(const std::string& path, const std::vector<std::pair<const char*, std::size_t>>& pieces)
{
    std::error_code error;
    const std::filesystem::file_status before = std::filesystem::status(path, error);
    if (std::filesystem::exists(before) && !std::filesystem::is_regular_file(before)) {
        throw GltfError(path + " is not a file that can be replaced");
    }
    const std::string temporary = path + ".part" + std::to_string(getpid());
    {
        std::ofstream out(temporary, std::ios::binary);
        for (const auto& [data, size] : pieces) {
            out.write(data, static_cast<std::streamsize>(size));
        }
        if (!out.flush()) {
            std::filesystem::remove(temporary, error);
            throw GltfError(path + " cannot be written");
        }
    }
    std::filesystem::rename(temporary, path, error);
    if (error) {
        std::error_code ignored;
        std::filesystem::remove(temporary, ignored);
        throw GltfError(path + " cannot be written: " + error.message());
    }
}

} // namespace scenetool
