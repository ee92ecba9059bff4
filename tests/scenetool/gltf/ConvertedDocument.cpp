#include "ConvertedDocument.h"

#include "support/ColladaBuilder.h"
#include "support/Files.h"
#include "support/Process.h"

#include <png.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <numeric>

namespace testSupport {

namespace {

std::uint32_t wordAt(const std::string& bytes, std::size_t at)
{
    std::uint32_t word = 0;
    std::memcpy(&word, bytes.data() + at, sizeof word); // little-endian, like the processors that this runs on
    return word;
}

template <class Number>
double numberAt(const std::string& bytes, std::size_t at)
{
    Number value{};
    std::memcpy(&value, bytes.data() + at, sizeof value);
    return static_cast<double>(value);
}

using Matrix = std::array<double, 16>;

Matrix product(const Matrix& a, const Matrix& b)
{
    Matrix result{};
    for (std::size_t i = 0; i < 4; ++i) {
        for (std::size_t j = 0; j < 4; ++j) {
            for (std::size_t k = 0; k < 4; ++k) {
                result[4 * i + j] += a[4 * i + k] * b[4 * k + j];
            }
        }
    }
    return result;
}

Matrix localOf(const nlohmann::json& node)
{
    const std::vector<double> t = node.value("translation", std::vector<double>{0, 0, 0});
    const std::vector<double> q = node.value("rotation", std::vector<double>{0, 0, 0, 1});
    const std::vector<double> s = node.value("scale", std::vector<double>{1, 1, 1});
    // q · v · q* for each axis.
    const auto turned = [&](double x, double y, double z) {
        const double cx = q[1] * z - q[2] * y + q[3] * x;
        const double cy = q[2] * x - q[0] * z + q[3] * y;
        const double cz = q[0] * y - q[1] * x + q[3] * z;
        return std::array<double, 3>{x + 2 * (q[1] * cz - q[2] * cy), y + 2 * (q[2] * cx - q[0] * cz),
                                     z + 2 * (q[0] * cy - q[1] * cx)};
    };
    const std::array<std::array<double, 3>, 3> axes{turned(1, 0, 0), turned(0, 1, 0), turned(0, 0, 1)};
    Matrix result{};
    for (std::size_t row = 0; row < 3; ++row) {
        for (std::size_t column = 0; column < 3; ++column) {
            result[4 * row + column] = axes[column][row] * s[column];
        }
        result[4 * row + 3] = t[row];
    }
    result[15] = 1;
    return result;
}

} // namespace

ConvertedDocument::ConvertedDocument(const std::string& body, const std::map<std::string, std::string>& files,
                                     const std::string& ending, const std::vector<std::string>& options)
{
    const TemporaryFile document(ColladaBuilder(body).text());
    for (const auto& [name, content] : files) {
        std::ofstream(document.folder() / name, std::ios::binary) << content;
    }
    const std::filesystem::path out = document.folder() / ("result" + ending);
    std::vector<std::string> words{SCENETOOL_PROGRAM, "convert", document.path(), "-o", out.string()};
    words.insert(words.end(), options.begin(), options.end());
    const ProcessResult result = runProcess(words);
    status = result.status;
    errors = result.errors;
    isWritten = std::filesystem::exists(out);
    if (!isWritten) {
        return;
    }
    const std::string content = contentOf(out);
    if (ending == ".glb") {
        const std::size_t jsonSize = wordAt(content, 12);
        json = nlohmann::json::parse(content.substr(20, jsonSize));
        if (content.size() > 20 + jsonSize) {
            binary = content.substr(28 + jsonSize, wordAt(content, 20 + jsonSize));
        }
    } else {
        json = nlohmann::json::parse(content);
        binary = contentOf(document.folder() / json["buffers"][0]["uri"].get<std::string>());
    }
    if (json.contains("buffers")) {
        binary.resize(json["buffers"][0]["byteLength"].get<std::size_t>());
    }
}

std::vector<double> ConvertedDocument::numbers(const nlohmann::json& accessor) const
{
    const nlohmann::json& entry = json["accessors"][accessor.get<std::size_t>()];
    const nlohmann::json& viewed = json["bufferViews"][entry["bufferView"].get<std::size_t>()];
    const std::map<std::string, std::size_t> sizes{{"SCALAR", 1}, {"VEC2", 2}, {"VEC3", 3}, {"VEC4", 4}};
    const std::size_t components = sizes.at(entry["type"].get<std::string>());
    const unsigned type = entry["componentType"].get<unsigned>();
    const std::size_t bytes = type == 5123 ? 2 : 4;
    const std::size_t stride = viewed.value("byteStride", components * bytes);
    const std::size_t start = viewed["byteOffset"].get<std::size_t>() + entry.value("byteOffset", std::size_t(0));
    std::vector<double> result;
    for (std::size_t i = 0; i < entry["count"].get<std::size_t>(); ++i) {
        for (std::size_t c = 0; c < components; ++c) {
            const std::size_t at = start + i * stride + c * bytes;
            result.push_back(type == 5126 ? numberAt<float>(binary, at)
                                          : (type == 5125 ? numberAt<std::uint32_t>(binary, at)
                                                          : numberAt<std::uint16_t>(binary, at)));
        }
    }
    return result;
}

std::string ConvertedDocument::view(std::size_t index) const
{
    const nlohmann::json& viewed = json["bufferViews"][index];
    return binary.substr(viewed["byteOffset"].get<std::size_t>(), viewed["byteLength"].get<std::size_t>());
}

std::vector<double> ConvertedDocument::world(std::size_t node) const
{
    Matrix result = localOf(json["nodes"][node]);
    for (bool hasParent = true; hasParent;) {
        hasParent = false;
        for (std::size_t i = 0; i < json["nodes"].size() && !hasParent; ++i) {
            const std::vector<std::size_t> children = json["nodes"][i].value("children", std::vector<std::size_t>());
            if (std::find(children.begin(), children.end(), node) != children.end()) {
                result = product(localOf(json["nodes"][i]), result);
                node = i;
                hasParent = true;
            }
        }
    }
    return {result.begin(), result.end()};
}

void ConvertedDocument::moveTo(double time)
{
    const nlohmann::json& animation = json["animations"][0];
    for (const nlohmann::json& channel : animation["channels"]) {
        const nlohmann::json& sampler = animation["samplers"][channel["sampler"].get<std::size_t>()];
        const std::vector<double> times = numbers(sampler["input"]);
        const std::vector<double> values = numbers(sampler["output"]);
        const std::string path = channel["target"]["path"].get<std::string>();
        const bool isCubic = sampler["interpolation"] == "CUBICSPLINE";
        const std::size_t size = path == "rotation" ? 4 : 3;
        const std::size_t after = std::size_t(std::upper_bound(times.begin(), times.end(), time) - times.begin());
        const std::size_t second = std::clamp<std::size_t>(after, 1, times.size() - 1);
        const double length = times[second] - times[second - 1];
        const double share = std::clamp((time - times[second - 1]) / length, 0.0, 1.0);
        // Offset of a part of a key. A key of a cubic spline has the in-tangent, the value and the out-tangent.
        const auto part = [&](std::size_t key, std::size_t which) {
            return values.data() + (isCubic ? 3 * key + which : key) * size;
        };
        const double* const a = part(second - 1, 1);
        const double* const b = part(second, 1);
        std::vector<double> result(size);
        for (std::size_t i = 0; i < size; ++i) {
            const double s = share;
            result[i] = isCubic ? (2 * s * s * s - 3 * s * s + 1) * a[i] + (3 * s * s - 2 * s * s * s) * b[i] +
                                      length * (s * s * s - 2 * s * s + s) * part(second - 1, 2)[i] +
                                      length * (s * s * s - s * s) * part(second, 0)[i]
                                : (1 - s) * a[i] + s * b[i];
        }
        if (path == "rotation") { // along the shorter arc of the great circle
            const double cosine = std::inner_product(a, a + 4, b, 0.0);
            const double angle = std::acos(std::min(1.0, std::fabs(cosine)));
            if (angle > 1e-9) {
                for (std::size_t i = 0; i < 4; ++i) {
                    result[i] = (std::sin((1 - share) * angle) * a[i] +
                                 std::copysign(1.0, cosine) * std::sin(share * angle) * b[i]) /
                                std::sin(angle);
                }
            }
        }
        json["nodes"][channel["target"]["node"].get<std::size_t>()][path] = result;
    }
}

std::string onePixelPng()
{
    const unsigned char texel[4] = {10, 20, 30, 255};
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = 1;
    image.height = 1;
    image.format = PNG_FORMAT_RGBA;
    std::string bytes(1000, '\0');
    png_alloc_size_t size = bytes.size();
    png_image_write_to_memory(&image, bytes.data(), &size, 0, texel, 0, nullptr);
    bytes.resize(size);
    return bytes;
}

} // namespace testSupport
