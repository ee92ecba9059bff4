#include "DocumentCheck.h"

#include "support/LogCapture.h"

#include <libVideo/SceneGraph.h>

#include <vesk/Exception.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <map>
#include <set>
#include <vector>

namespace documents {

namespace {

using Json = nlohmann::json;
using Outcome = PlainDocument::Outcome;

// Infinite where the float nearest to it is.
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
    // Below the smallest normal float digits get lost.
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
    ASSERT_EQ(actual.size(), 16u) << what;
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

// The nodes, breadth first, each with the place of its parent; the root is at no place.
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

// One line for each animation that finds neither a node nor a camera.
void expectLines(const testSupport::LogCapture& log, const PlainDocument& expected)
{
    const std::string missed = "Unable to find the animation's target node with id: ";
    std::multiset<std::string> lines;
    for (const testSupport::LogLine& line : log.lines()) {
        const std::string words = line.words();
        if (words.compare(0, missed.size(), missed) == 0) {
            EXPECT_EQ(line.channel, "libVideo.visualScene");
            EXPECT_EQ(line.priority, 3);
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
    if (expected.outcome == Outcome::throwsIndex) {
        EXPECT_THROW(scene.createFromCollada(path.c_str()), vesk::IndexOutOfBounds);
        return;
    }
    const bool isLoaded = scene.createFromCollada(path.c_str());
    EXPECT_EQ(isLoaded, expected.outcome == Outcome::loads) << log.text();
    if (isLoaded) {
        expectTree(scene.visualScene(), expected);
        expectLines(log, expected);
        return;
    }
    EXPECT_EQ(scene.visualScene().root().children().size(), 0u);
    const std::vector<testSupport::LogLine> lines = log.lines();
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(lines.back().words().substr(0, expected.reason.size()), expected.reason);
}

void expectDumpAsRead(const Json& dump, const PlainDocument& expected)
{
    EXPECT_EQ(dump.at("loaded"), expected.outcome == Outcome::loads);
    EXPECT_EQ(dump.at("error").is_null(), expected.outcome != Outcome::throwsIndex);
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
    const Json& nodes = dump.at("nodes");
    ASSERT_EQ(nodes.size(), expected.nodes.size());
    const bool isFolded = dump.at("error").is_null(); // an evaluation that throws ends before the folding
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
