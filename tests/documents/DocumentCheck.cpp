#include "DocumentCheck.h"

#include "support/LogCapture.h"

#include <libVideo/SceneGraph.h>

#include <vesk/Exception.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <map>
#include <set>
#include <utility>
#include <vector>

namespace documents {

namespace {

using Json = nlohmann::json;
using Outcome = PlainDocument::Outcome;

// Infinite if the nearest float is.
double asFloatRange(double number)
{
    constexpr double largest = std::numeric_limits<float>::max();
    return std::fabs(number) > largest * (1.0 + tolerance)
               ? std::copysign(std::numeric_limits<double>::infinity(), number)
               : number;
}

bool isNear(double actual, double expected, double magnitude)
{
    if (std::isnan(expected)) {
        return std::isnan(actual);
    }
    const double inRange = asFloatRange(expected);
    if (std::isinf(inRange) || std::isinf(actual)) {
        return actual == inRange;
    }
    // Floats below the smallest normal one lose digits.
    return std::fabs(actual - expected) <= tolerance * magnitude + std::numeric_limits<float>::min();
}

double numberOf(const Json& value)
{
    static const std::map<std::string, double> words = {{"NaN", std::numeric_limits<double>::quiet_NaN()},
                                                        {"Infinity", std::numeric_limits<double>::infinity()},
                                                        {"-Infinity", -std::numeric_limits<double>::infinity()}};
    return value.is_string() ? words.at(value.get<std::string>()) : value.get<double>();
}

void expectMatrix(const Json& actual, const PlainMatrix& expected, const std::string& what)
{
    ASSERT_EQ(16u, actual.size()) << what;
    for (std::size_t i = 0; i < 16; ++i) {
        EXPECT_TRUE(isNear(numberOf(actual[i]), expected.value[i], expected.magnitude[i]))
            << what << ", row " << i / 4 << ", column " << i % 4 << ": " << actual[i] << " instead of "
            << expected.value[i];
    }
}

std::string nameOf(const PlainNode& node, std::size_t place)
{
    return "node " + std::to_string(place) + " \"" + node.id + "\"";
}

std::string textOf(const vesk::String& text)
{
    return std::string(text.data(), text.size());
}

// The nodes, breadth first, each with the index of its parent. The root has no index.
struct Walk {
    std::vector<const libVideo::Node*> nodes;
    std::map<const libVideo::Node*, std::size_t> places;

    explicit Walk(const libVideo::Node& root)
    {
        append(root);
        for (std::size_t i = 0; i < nodes.size(); ++i) {
            append(*nodes[i]);
        }
    }

private:
    void append(const libVideo::Node& parent)
    {
        for (const libVideo::NodeLink& child : parent.children()) {
            places.emplace(child.get(), nodes.size());
            nodes.push_back(child.get());
        }
    }
};

void expectTree(libVideo::VisualScene& scene, const PlainDocument& expected)
{
    const Walk walk(scene.root());
    ASSERT_EQ(walk.nodes.size(), expected.nodes.size());
    for (std::size_t i = 0; i < expected.nodes.size(); ++i) {
        const libVideo::Node& node = *walk.nodes[i];
        const PlainNode& plain = expected.nodes[i];
        const std::string what = nameOf(plain, i);
        EXPECT_EQ(textOf(node.id()), plain.id) << what;
        EXPECT_EQ(textOf(node.sid()), plain.sid) << what;
        EXPECT_EQ(textOf(node.name()), plain.name) << what;
        EXPECT_EQ(node.hasAnimation(), plain.isAnimated) << what;
        if (plain.parent) {
            EXPECT_EQ(node.parent().get(), walk.nodes[*plain.parent]) << what;
        } else {
            EXPECT_EQ(node.parent().get(), &scene.root()) << what;
        }
        std::vector<std::size_t> children;
        for (const libVideo::NodeLink& child : node.children()) {
            children.push_back(walk.places.at(child.get()));
        }
        EXPECT_EQ(children, plain.children) << what;
        expectMatrix(node.transform(), plain.local, what);
    }
    scene.transform();
    const std::vector<PlainMatrix> world = expected.worldMatrices();
    for (std::size_t i = 0; i < world.size(); ++i) {
        expectMatrix(walk.nodes[i]->transform(), world[i], nameOf(expected.nodes[i], i) + " in the world");
    }
}

// --- geometries

// A primitive as the library or a dump shows it.
struct ShownPrimitive {
    std::uint32_t type = 0;
    std::string id;
    std::string material;
    std::uint32_t count = 0;
    std::uint32_t vertexPerPrimitive = 0;
    std::uint32_t bytesPerVertex = 0;
    std::uint32_t totalByteSize = 0;
    std::vector<PlainAttribute> layout;
    std::vector<std::uint32_t> indices;
    std::string bytes;
};

struct ShownGeometry {
    std::string name;
    std::vector<std::size_t> nodes;
    std::vector<ShownPrimitive> primitives;
};

ShownPrimitive shown(libVideo::Primitive& primitive)
{
    ShownPrimitive result;
    result.type = primitive.type();
    result.id = textOf(primitive.id());
    result.material = textOf(primitive.material());
    result.count = primitive.count();
    result.vertexPerPrimitive = primitive.vertexPerPrimitive();
    result.bytesPerVertex = primitive.bytesPerVertex();
    result.totalByteSize = primitive.totalByteSize();
    for (const libVideo::VertexLayout& attribute : primitive.vertexLayout()) {
        result.layout.push_back({attribute.semantic, attribute.byteSize, attribute.byteOffset, attribute.dataType});
        EXPECT_EQ(0u, attribute.reserved);
    }
    for (const unsigned index : primitive.indexBuffer()) {
        result.indices.push_back(index);
    }
    if (primitive.totalByteSize() > 0) {
        result.bytes.assign(reinterpret_cast<const char*>(primitive.vertexBuffer().get()), primitive.totalByteSize());
    }
    return result;
}

std::map<std::string, ShownGeometry> shown(const libVideo::GeometryTable& table, const Walk& walk)
{
    std::map<std::string, ShownGeometry> all;
    for (const auto& bucket : table) {
        const libVideo::Geometry& geometry = *bucket.value;
        EXPECT_EQ(textOf(geometry.id()), textOf(bucket.key));
        ShownGeometry& result = all[textOf(bucket.key)];
        result.name = textOf(geometry.name());
        for (const libVideo::NodeHandle& node : geometry.nodes()) {
            result.nodes.push_back(walk.places.at(node.get()));
        }
        for (const auto& primitive : geometry.mesh().primitives()) {
            result.primitives.push_back(shown(*primitive));
        }
    }
    EXPECT_EQ(all.size(), table.size());
    return all;
}

// Empty, and a test failure, if the text is not of that kind.
std::string bytesOfBase64(const std::string& text)
{
    static const std::string digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string bytes;
    std::uint32_t bits = 0;
    std::size_t place = 0;
    for (; place < text.size() && text[place] != '='; ++place) {
        const std::size_t digit = digits.find(text[place]);
        if (digit == std::string::npos) {
            ADD_FAILURE() << "no digit: " << text[place];
            return std::string();
        }
        bits = (bits << 6u) | static_cast<std::uint32_t>(digit);
        if (place % 4 != 0) {
            bytes += static_cast<char>(static_cast<unsigned char>((bits >> (6u - 2u * (place % 4))) & 0xFFu));
        }
    }
    EXPECT_EQ(0u, text.size() % 4);
    EXPECT_LE(text.size() - place, 2u);
    EXPECT_EQ(text.substr(place), std::string(text.size() - place, '='));
    return bytes;
}

ShownPrimitive shownPrimitive(const Json& primitive)
{
    ShownPrimitive result;
    result.type = primitive.at("type");
    result.id = primitive.at("id");
    result.material = primitive.at("material");
    result.count = primitive.at("count");
    result.vertexPerPrimitive = primitive.at("vertexPerPrimitive");
    result.bytesPerVertex = primitive.at("bytesPerVertex");
    result.totalByteSize = primitive.at("totalByteSize");
    for (const Json& attribute : primitive.at("layout")) {
        result.layout.push_back(
            {attribute.at("semantic"), attribute.at("byteSize"), attribute.at("byteOffset"), attribute.at("dataType")});
    }
    result.indices = primitive.at("indices").get<std::vector<std::uint32_t>>();
    result.bytes = bytesOfBase64(primitive.at("vertices"));
    return result;
}

std::map<std::string, ShownGeometry> shownGeometries(const Json& geometries)
{
    std::map<std::string, ShownGeometry> all;
    for (const auto& item : geometries.items()) {
        ShownGeometry& result = all[item.key()];
        result.name = item.value().at("name");
        result.nodes = item.value().at("nodes").get<std::vector<std::size_t>>();
        for (const Json& primitive : item.value().at("primitives")) {
            result.primitives.push_back(shownPrimitive(primitive));
        }
    }
    return all;
}

bool isSame(float actual, float expected)
{
    return actual == expected || (std::isnan(actual) && std::isnan(expected));
}

void expectPrimitive(const ShownPrimitive& actual, const PlainPrimitive& expected, const std::string& what)
{
    EXPECT_EQ(actual.type, expected.type) << what;
    EXPECT_EQ(actual.id, expected.id) << what;
    EXPECT_EQ(actual.material, expected.material) << what;
    EXPECT_EQ(actual.count, expected.count) << what;
    EXPECT_EQ(actual.vertexPerPrimitive, expected.vertexPerPrimitive) << what;
    EXPECT_EQ(actual.bytesPerVertex, expected.bytesPerVertex) << what;
    EXPECT_EQ(actual.totalByteSize, actual.bytes.size()) << what;
    EXPECT_EQ(actual.indices, expected.indices) << what;

    ASSERT_EQ(actual.layout.size(), expected.layout.size()) << what;
    for (std::size_t i = 0; i < expected.layout.size(); ++i) {
        EXPECT_EQ(actual.layout[i].semantic, expected.layout[i].semantic) << what << ", attribute " << i;
        EXPECT_EQ(actual.layout[i].byteSize, expected.layout[i].byteSize) << what << ", attribute " << i;
        EXPECT_EQ(actual.layout[i].byteOffset, expected.layout[i].byteOffset) << what << ", attribute " << i;
        EXPECT_EQ(actual.layout[i].dataType, expected.layout[i].dataType) << what << ", attribute " << i;
    }

    ASSERT_EQ(actual.bytes.size(), 4 * expected.vertices.size()) << what;
    for (std::size_t i = 0; i < expected.vertices.size(); ++i) {
        float number = 0.0f;
        std::memcpy(&number, actual.bytes.data() + 4 * i, sizeof(number));
        if (expected.vertices[i] && !isSame(number, *expected.vertices[i])) {
            ADD_FAILURE() << what << ", float " << i << ": " << number << " instead of " << *expected.vertices[i];
            return;
        }
    }
}

void expectGeometries(const std::map<std::string, ShownGeometry>& actual, const PlainDocument& expected)
{
    EXPECT_EQ(actual.size(), expected.geometries.size());
    for (const auto& [id, plain] : expected.geometries) {
        const std::string what = "geometry \"" + id + "\"";
        const auto found = actual.find(id);
        if (found == actual.end()) {
            ADD_FAILURE() << "no " << what;
            continue;
        }
        EXPECT_EQ(found->second.name, plain.name) << what;
        EXPECT_EQ(std::vector<std::size_t>{plain.node}, found->second.nodes) << what;
        EXPECT_EQ(found->second.primitives.size(), plain.primitives.size()) << what;
        for (std::size_t i = 0; i < std::min(found->second.primitives.size(), plain.primitives.size()); ++i) {
            expectPrimitive(found->second.primitives[i], plain.primitives[i],
                            what + ", primitive " + std::to_string(i));
        }
    }
}

// --- materials

PlainColor shown(const float* color, const libVideo::SharedHandle<libVideo::Texture>& texture)
{
    PlainColor result;
    std::copy(color, color + 3, result.value.begin());
    if (texture) {
        result.texture = textOf(texture->textureFile());
    }
    return result;
}

std::map<std::string, PlainMaterial> shown(const libVideo::BlinnMaterialTable& table)
{
    std::map<std::string, PlainMaterial> all;
    for (const auto& bucket : table) {
        const libVideo::BlinnMaterial::Component& values = bucket.value->component();
        PlainMaterial& result = all[textOf(bucket.key)];
        result.shininess = values.shininess;
        result.transparency = values.transparency;
        result.emission = shown(values.emission, values.emissionTexture);
        result.ambient = shown(values.ambient, values.ambientTexture);
        result.diffuse = shown(values.diffuse, values.diffuseTexture);
        result.specular = shown(values.specular, values.specularTexture);
        result.reflective = shown(values.reflective, values.reflectiveTexture);
    }
    EXPECT_EQ(all.size(), table.size());
    return all;
}

// Printed so that a reader gets exactly this float, which passes through `double` here.
float floatOf(const Json& value)
{
    return static_cast<float>(numberOf(value));
}

PlainColor shownColor(const Json& material, const std::string& channel)
{
    PlainColor result;
    const Json& color = material.at(channel);
    EXPECT_EQ(3u, color.size()) << channel;
    for (std::size_t i = 0; i < 3; ++i) {
        result.value[i] = floatOf(color.at(i));
    }
    const Json& texture = material.at(channel + "Texture");
    if (!texture.is_null()) {
        result.texture = texture.get<std::string>();
    }
    return result;
}

std::map<std::string, PlainMaterial> shownMaterials(const Json& materials)
{
    std::map<std::string, PlainMaterial> all;
    for (const auto& item : materials.items()) {
        PlainMaterial& result = all[item.key()];
        result.shininess = floatOf(item.value().at("shininess"));
        result.transparency = floatOf(item.value().at("transparency"));
        result.emission = shownColor(item.value(), "emission");
        result.ambient = shownColor(item.value(), "ambient");
        result.diffuse = shownColor(item.value(), "diffuse");
        result.specular = shownColor(item.value(), "specular");
        result.reflective = shownColor(item.value(), "reflective");
    }
    return all;
}

void expectColor(const PlainColor& actual, const PlainColor& expected, const std::string& what)
{
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_TRUE(isSame(actual.value[i], expected.value[i]))
            << what << ", component " << i << ": " << actual.value[i] << " instead of " << expected.value[i];
    }
    EXPECT_EQ(actual.texture, expected.texture) << what;
}

void expectMaterials(const std::map<std::string, PlainMaterial>& actual, const PlainDocument& expected)
{
    EXPECT_EQ(actual.size(), expected.materials.size());
    for (const auto& [symbol, plain] : expected.materials) {
        const std::string what = "material \"" + symbol + "\"";
        const auto found = actual.find(symbol);
        if (found == actual.end()) {
            ADD_FAILURE() << "no " << what;
            continue;
        }
        const PlainMaterial& values = found->second;
        EXPECT_TRUE(isSame(values.shininess, plain.shininess)) << what << ": " << values.shininess;
        EXPECT_TRUE(isSame(values.transparency, plain.transparency)) << what << ": " << values.transparency;
        expectColor(values.emission, plain.emission, what + ", emission");
        expectColor(values.ambient, plain.ambient, what + ", ambient");
        expectColor(values.diffuse, plain.diffuse, what + ", diffuse");
        expectColor(values.specular, plain.specular, what + ", specular");
        expectColor(values.reflective, plain.reflective, what + ", reflective");
    }
}

// --- lines

using Line = std::pair<std::string, std::string>;

// Whether the message is about geometries or materials.
bool isOfTheirs(const std::string& channel, const std::string& words)
{
    static const std::set<std::string> channels = {"libVideo.geometry", "libVideo.primitive", "libVideo.input",
                                                   "libVideo.source",   "libVideo.accessor",  "libVideo.material",
                                                   "libVideo.texture"};
    return channels.count(channel) > 0 ||
           (channel == "libVideo.visualScene" &&
            (words == "Not a geometry element" || words == "Unable to initialize geometry instance"));
}

// Expects the same messages, each the same number of times.
void expectTheirLines(const std::vector<Line>& actual, const PlainDocument& expected)
{
    std::multiset<Line> astray;
    for (const Line& line : actual) {
        if (isOfTheirs(line.first, line.second)) {
            astray.insert(line);
        }
    }
    for (const Line& line : expected.lines) {
        const auto found = astray.find(line);
        if (found == astray.end()) {
            ADD_FAILURE() << "no line \"" << line.second << "\" on " << line.first;
        } else {
            astray.erase(found);
        }
    }
    for (const Line& line : astray) {
        ADD_FAILURE() << "a line \"" << line.second << "\" on " << line.first;
    }
}

// One message for each animation that finds neither a node nor a camera.
void expectLines(const testSupport::LogCapture& log, const PlainDocument& expected)
{
    const std::string missed = "Unable to find the animation's target node with id: ";
    std::multiset<std::string> lines;
    for (const testSupport::LogLine& line : log.lines()) {
        const std::string words = line.words();
        if (words.compare(0, missed.size(), missed) == 0) {
            EXPECT_EQ("libVideo.visualScene", line.channel);
            EXPECT_EQ(3, line.priority);
            lines.insert(words.substr(missed.size()));
        }
    }
    std::multiset<std::string> astray;
    std::multiset<std::string> ofCameras;
    for (const PlainAnimation& animation : expected.animations) {
        const bool isFound =
            std::any_of(expected.nodes.begin(), expected.nodes.end(),
                        [&animation](const PlainNode& node) { return node.id == animation.targetNode; });
        if (!isFound) {
            (animation.mayMeetCamera ? ofCameras : astray).insert(animation.targetNode);
        }
    }
    for (const std::string& target : astray) {
        EXPECT_EQ(lines.count(target), astray.count(target)) << target;
    }
    for (const std::string& target : lines) {
        EXPECT_LE(lines.count(target), astray.count(target) + ofCameras.count(target)) << target;
    }
}

} // namespace

void expectMatrix(const libMath::Matrix<float, 4, 4>& actual, const PlainMatrix& expected, const std::string& what)
{
    for (unsigned i = 0; i < 16; ++i) {
        EXPECT_TRUE(isNear(static_cast<double>(actual[i]), expected.value[i], expected.magnitude[i]))
            << what << ", row " << i / 4 << ", column " << i % 4 << ": " << actual[i] << " instead of "
            << expected.value[i];
    }
}

void expectLoadAsRead(const std::string& path, const PlainDocument& expected)
{
    const testSupport::LogCapture log;
    libVideo::Scene scene;
    bool isLoaded = false;
    std::string thrown;
    try {
        isLoaded = scene.createFromCollada(path.c_str());
    } catch (const vesk::IndexOutOfBounds&) {
        thrown = "IndexOutOfBounds";
    } catch (const vesk::AssertionFailure& failure) {
        thrown = "AssertionFailure";
        EXPECT_EQ(failure.expression(), expected.expression);
    }
    EXPECT_EQ(isLoaded, expected.outcome == Outcome::loads) << log.text();
    EXPECT_EQ(thrown, expected.outcome == Outcome::throws ? expected.reason : "");

    libVideo::VisualScene& visualScene = scene.visualScene();
    std::vector<Line> lines;
    for (const testSupport::LogLine& line : log.lines()) {
        lines.emplace_back(line.channel, line.words());
        EXPECT_EQ(3, line.priority);
    }
    expectGeometries(shown(visualScene.geometryTable(), Walk(visualScene.root())), expected);
    expectMaterials(shown(visualScene.blinnMaterialTable()), expected);
    expectTheirLines(lines, expected);
    expectTree(visualScene, expected);
    if (isLoaded) {
        expectLines(log, expected);
    } else if (expected.outcome == Outcome::isRefused) {
        ASSERT_FALSE(lines.empty());
        EXPECT_EQ(lines.back().second.substr(0, expected.reason.size()), expected.reason);
    }
}

void expectDumpAsRead(const Json& dump, const PlainDocument& expected)
{
    EXPECT_EQ(dump.at("loaded"), expected.outcome == Outcome::loads);
    if (expected.outcome == Outcome::throws) {
        EXPECT_EQ(dump.at("error").at("type"), expected.reason);
        EXPECT_TRUE(dump["error"].at("message").is_string());
    } else {
        EXPECT_TRUE(dump.at("error").is_null()) << dump["error"];
    }
    expectGeometries(shownGeometries(dump.at("geometries")), expected);
    expectMaterials(shownMaterials(dump.at("materials")), expected);
    std::vector<Line> lines;
    for (const Json& line : dump.at("log")) {
        const std::string text = line.at("text"); // after a number and a blank
        lines.emplace_back(line.at("channel"), text.substr(text.find(' ') + 1));
    }
    expectTheirLines(lines, expected);
    const Json& nodes = dump.at("nodes");
    ASSERT_EQ(nodes.size(), expected.nodes.size());
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        const PlainNode& plain = expected.nodes[i];
        const std::string what = nameOf(plain, i);
        EXPECT_EQ(nodes[i].at("id"), plain.id) << what;
        EXPECT_EQ(nodes[i].at("sid"), plain.sid) << what;
        EXPECT_EQ(nodes[i].at("name"), plain.name) << what;
        EXPECT_EQ(nodes[i].at("hasAnimation"), plain.isAnimated) << what;
        EXPECT_EQ(nodes[i].at("parent"), plain.parent ? Json(*plain.parent) : Json()) << what;
        EXPECT_EQ(nodes[i].at("children"), Json(plain.children)) << what;
        expectMatrix(nodes[i].at("transform"), plain.local, what);
        for (std::size_t row = 0; row < 3; ++row) {
            EXPECT_EQ(nodes[i].at("position").at(row), nodes[i]["transform"].at(4 * row + 3)) << what;
            EXPECT_EQ(nodes[i].at("up").at(row), nodes[i]["transform"].at(4 * row + 1)) << what;
        }
    }
}

void expectFoldedDumpAsRead(const Json& dump, const PlainDocument& expected)
{
    EXPECT_EQ(dump.at("loaded"), expected.outcome == Outcome::loads);
    if (expected.outcome == Outcome::throws) {
        EXPECT_EQ(dump.at("error").at("type"), expected.reason);
    }
    expectGeometries(shownGeometries(dump.at("geometries")), expected);
    expectMaterials(shownMaterials(dump.at("materials")), expected);
    const Json& nodes = dump.at("nodes");
    ASSERT_EQ(nodes.size(), expected.nodes.size());
    const bool isFolded = dump.at("error").is_null(); // nodes are not folded if an evaluation throws
    const std::vector<PlainMatrix> world = expected.worldMatrices();
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        const PlainNode& plain = expected.nodes[i];
        if (isFolded && !expected.moves(i)) {
            expectMatrix(nodes[i].at("transform"), world[i], nameOf(plain, i) + " in the world");
        } else if (!isFolded && !plain.isAnimated) {
            expectMatrix(nodes[i].at("transform"), plain.local, nameOf(plain, i));
        }
    }
}

} // namespace documents
