#include "ReaderLimits.h"
#include "Shape.h"
#include "TemporaryFolder.h"

#include "documents/DocumentFolder.h"

#include <libPrepare/Prepare.h>

#include <assimp/material.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

// Another reader finds the same in a document and in its prepared version: faces with their look, nodes, motion,
// cameras and lights, all in world space.

namespace {

using documents::StoredDocument;
using test::AssimpScene;
using test::Matrix;
using test::ReaderLimits;
using test::Vector;

void expectSameMaterials(const aiScene& before, const aiScene& after, const ReaderLimits& limits);
void expectSameNodes(const AssimpScene& before, const AssimpScene& after, const ReaderLimits& limits);
void expectSameMotion(const AssimpScene& before, const AssimpScene& after, const ReaderLimits& limits);
void expectSameCameras(const AssimpScene& before, const AssimpScene& after);
// @param more lights that have become others
void expectSameLights(const AssimpScene& before, const AssimpScene& after, std::size_t more);

class StoredDocumentTest : public testing::TestWithParam<StoredDocument> {
protected:
    void SetUp() override;
    void prepare(const libPrepare::Options& options);
    // Directional lights become point lights.
    std::size_t movedLights() const;

    test::TemporaryFolder m_folder;
    libPrepare::Report m_report;
    std::unique_ptr<ReaderLimits> m_limits;
    std::unique_ptr<AssimpScene> m_before;
    std::unique_ptr<AssimpScene> m_after;
};

TEST_P(StoredDocumentTest, SaysTheSameToAnotherReader)
{
    prepare({});
    if (IsSkipped() || HasFatalFailure()) {
        return;
    }
    test::expectSameShape(shapeOf(*m_before, m_limits->looks), shapeOf(*m_after, m_limits->looks));
    expectSameMaterials(*m_before->get(), *m_after->get(), *m_limits);
    expectSameNodes(*m_before, *m_after, *m_limits);
    expectSameMotion(*m_before, *m_after, *m_limits);
    if (m_limits->cameras) {
        expectSameCameras(*m_before, *m_after);
    }
    expectSameLights(*m_before, *m_after, movedLights());
}

// The reader turns every document to Y up and converts it to meters.
TEST_P(StoredDocumentTest, IsWhereItWasAfterATurnToAnotherAxisAndUnit)
{
    libPrepare::Options options;
    options.upAxis = libPrepare::UpAxis::y;
    options.unit = 0.3;
    prepare(options);
    if (IsSkipped() || HasFatalFailure()) {
        return;
    }
    test::expectSameShape(shapeOf(*m_before, m_limits->looks), shapeOf(*m_after, m_limits->looks));
    expectSameNodes(*m_before, *m_after, *m_limits);
}

INSTANTIATE_TEST_SUITE_P(Documents, StoredDocumentTest, testing::ValuesIn(documents::allDocuments()),
                         [](const auto& row) { return row.param.name; });

// Larger documents take too long under a sanitizer.
constexpr std::uintmax_t maxSize = 2'000'000;
// The motion of a node is compared at no more than twice this many times.
constexpr std::size_t maxTimes = 50;
constexpr double tolerance = 1e-4;

// To the library, a curve of a whole <rotate> is one of its angle. The reader expects this to be explicit.
void nameAngles(pugi::xml_document& document)
{
    for (const pugi::xpath_node& found : document.select_nodes("//channel")) {
        pugi::xml_attribute target = found.node().attribute("target");
        const std::string path = target.value();
        const std::size_t slash = path.find('/');
        const pugi::xml_node node = document.find_node([&](const pugi::xml_node& each) {
            return std::string_view(each.name()) == "node" && path.substr(0, slash) == each.attribute("id").value();
        });
        if (slash != std::string::npos &&
            std::string_view(node.find_child_by_attribute("sid", path.c_str() + slash + 1).name()) == "rotate") {
            target.set_value((path + ".ANGLE").c_str());
        }
    }
}

void StoredDocumentTest::SetUp()
{
    if (std::filesystem::file_size(GetParam().path) > maxSize) {
        GTEST_SKIP() << "The document is large.";
    }
    pugi::xml_document document;
    if (!document.load_file(GetParam().path.c_str())) {
        GTEST_SKIP() << "The document is not plain XML.";
    }
    m_limits = std::make_unique<ReaderLimits>(document);
    if (!m_limits->unread.empty()) {
        GTEST_SKIP() << "The other reader is no judge: " << m_limits->unread << '.';
    }
    m_before = std::make_unique<AssimpScene>(GetParam().path);
    if (m_before->get() == nullptr) {
        GTEST_SKIP() << "The other reader refuses the document: " << m_before->error();
    }
    const std::multimap<std::string, const aiNodeAnim*> curves = m_before->curves();
    if (std::any_of(curves.begin(), curves.end(), [&](const auto& each) { return curves.count(each.first) > 1; })) {
        GTEST_SKIP() << "The other reader does not put the animations of a node together.";
    }
}

void StoredDocumentTest::prepare(const libPrepare::Options& options)
{
    const std::string out = (m_folder.path() / "out.dae").string();
    m_report = libPrepare::prepare(GetParam().path, out, options);
    if (!m_report.done) {
        GTEST_SKIP() << m_report.findings.back().text; // other tests cover this
    }
    pugi::xml_document document;
    ASSERT_TRUE(document.load_file(out.c_str(), pugi::parse_full | pugi::parse_ws_pcdata));
    nameAngles(document);
    ASSERT_TRUE(document.save_file(out.c_str(), "", pugi::format_raw));
    m_after = std::make_unique<AssimpScene>(out);
    ASSERT_NE(nullptr, m_after->get()) << m_after->error();
}

std::size_t StoredDocumentTest::movedLights() const
{
    return static_cast<std::size_t>(std::count_if(
        m_report.approximations.begin(), m_report.approximations.end(), [](const libPrepare::Approximation& each) {
            return each.kind == libPrepare::Approximation::Kind::directionalLight && !each.nodeId.empty();
        }));
}

struct MaterialChannel {
    const char* name;
    const char* key;
    aiTextureType texture;
};

void expectSameMaterial(const aiMaterial& before, const aiMaterial& after, const std::set<std::string>& channels,
                        bool hasEmission)
{
    for (const MaterialChannel& channel : {MaterialChannel{"emission", "$clr.emissive", aiTextureType_EMISSIVE},
                                           MaterialChannel{"diffuse", "$clr.diffuse", aiTextureType_DIFFUSE},
                                           MaterialChannel{"specular", "$clr.specular", aiTextureType_SPECULAR}}) {
        const bool isEmission = channel.texture == aiTextureType_EMISSIVE;
        if (channels.count(channel.name) != 0 && (hasEmission || !isEmission)) {
            EXPECT_EQ(test::lookOf(before, channel.key, 0, 0, channel.texture),
                      test::lookOf(after, channel.key, 0, 0, channel.texture))
                << channel.name;
        }
    }
    if (channels.count("shininess") != 0) {
        ai_real expected = -1;
        ai_real found = -1;
        before.Get(AI_MATKEY_SHININESS, expected);
        after.Get(AI_MATKEY_SHININESS, found);
        EXPECT_FLOAT_EQ(expected, found);
    }
}

void expectSameMaterials(const aiScene& before, const aiScene& after, const ReaderLimits& limits)
{
    for (const auto& [name, channels] : limits.channels) {
        SCOPED_TRACE("material " + name);
        const auto find = [named = name](const aiScene& scene) {
            aiMaterial** const end = scene.mMaterials + scene.mNumMaterials;
            aiMaterial** const found = std::find_if(scene.mMaterials, end, [&](const aiMaterial* material) {
                aiString text;
                return material->Get(AI_MATKEY_NAME, text) == AI_SUCCESS && named == text.C_Str();
            });
            return found == end ? nullptr : *found;
        };
        const aiMaterial* const expected = find(before);
        const aiMaterial* const found = find(after);
        if (expected != nullptr && found != nullptr) {
            expectSameMaterial(*expected, *found, channels, limits.emission);
        }
    }
}

// The difference of two matrices, relative to their largest number.
double difference(const Matrix& a, const Matrix& b)
{
    double largest = 0;
    double difference = 0;
    for (unsigned row = 0; row < 4; ++row) {
        for (unsigned column = 0; column < 4; ++column) {
            largest = std::max(largest, std::fabs(a[row][column]));
            difference = std::max(difference, std::fabs(a[row][column] - b[row][column]));
        }
    }
    return difference / largest;
}

void expectSameNodes(const AssimpScene& before, const AssimpScene& after, const ReaderLimits& limits)
{
    const std::map<std::string, Matrix> expected = before.worldsAt(0);
    const std::map<std::string, Matrix> found = after.worldsAt(0);
    for (const std::string& id : limits.nodes) {
        if (expected.count(id) != 0) {
            ASSERT_EQ(1U, found.count(id)) << id;
            EXPECT_LE(difference(expected.at(id), found.at(id)), tolerance) << id;
        }
    }
}

void expectSameMotion(const AssimpScene& before, const AssimpScene& after, const ReaderLimits& limits)
{
    const std::multimap<std::string, const aiNodeAnim*> found = after.curves();
    for (const auto& [id, curves] : before.curves()) {
        if (limits.nodes.count(id) == 0) {
            continue;
        }
        const auto like = found.find(id);
        ASSERT_NE(found.end(), like) << id << " does not move";
        const std::vector<double>& times = limits.times.at(id);
        for (std::size_t i = 0; i < times.size(); i += times.size() / maxTimes + 1) {
            EXPECT_LE(difference(before.localAt(*curves, times[i]), after.localAt(*like->second, times[i])), tolerance)
                << id << " at second " << times[i];
        }
    }
}

// The matrix of the node with a camera or a light, found by its name; nothing if the name is not unique.
std::optional<Matrix> worldOf(const AssimpScene& scene, const aiString& node)
{
    const std::map<std::string, Matrix> worlds = scene.worldsAt(0);
    const auto found = worlds.find(node.C_Str());
    return found == worlds.end() ? std::nullopt : std::optional<Matrix>(found->second);
}

bool areNear(const Vector& a, const Vector& b)
{
    return (a - b).Length() <= tolerance * std::max(1.0, a.Length());
}

bool areNear(double a, double b)
{
    return std::fabs(a - b) <= tolerance * std::max(1.0, std::fabs(a));
}

struct PlacedCamera {
    PlacedCamera(const Matrix& world, const aiCamera& camera)
        : position(world * test::vectorOf(camera.mPosition)),
          direction(test::turned(world, test::vectorOf(camera.mLookAt)).Normalize()),
          up(test::turned(world, test::vectorOf(camera.mUp)).Normalize()),
          angle(double(camera.mHorizontalFOV)),
          nearPlane(double(camera.mClipPlaneNear)),
          farPlane(double(camera.mClipPlaneFar))
    {}

    bool isLike(const PlacedCamera& other) const
    {
        return areNear(position, other.position) && areNear(direction, other.direction) && areNear(up, other.up) &&
               areNear(angle, other.angle) && areNear(nearPlane, other.nearPlane) && areNear(farPlane, other.farPlane);
    }

    Vector position;
    Vector direction;
    Vector up;
    double angle;
    double nearPlane;
    double farPlane;
};

struct PlacedLight {
    PlacedLight(const Matrix& world, const aiLight& light)
        : type(light.mType),
          position(world * test::vectorOf(light.mPosition)),
          direction(test::turned(world, test::vectorOf(light.mDirection)).NormalizeSafe()),
          color(double(light.mColorDiffuse.r), double(light.mColorDiffuse.g), double(light.mColorDiffuse.b)),
          attenuation(double(light.mAttenuationConstant), double(light.mAttenuationLinear),
                      double(light.mAttenuationQuadratic)),
          cone(double(light.mAngleInnerCone))
    {}

    bool isLike(const PlacedLight& other) const
    {
        const bool isSpot = type == aiLightSource_SPOT;
        return type == other.type && areNear(position, other.position) && areNear(color, other.color) &&
               areNear(attenuation, other.attenuation) &&
               (!isSpot || (areNear(direction, other.direction) && areNear(cone, other.cone)));
    }

    aiLightSourceType type;
    Vector position;
    Vector direction;
    Vector color;
    Vector attenuation;
    double cone;
};

// Expects a one-to-one match between both lists.
template <class Item>
void expectPairs(const std::vector<Item>& expected, std::vector<Item> found, const char* kind)
{
    for (const Item& item : expected) {
        const auto like =
            std::find_if(found.begin(), found.end(), [&](const Item& other) { return item.isLike(other); });
        if (like == found.end()) {
            ADD_FAILURE() << "no " << kind << " like that at " << item.position.x << ' ' << item.position.y << ' '
                          << item.position.z;
            continue;
        }
        found.erase(like);
    }
}

std::vector<PlacedCamera> camerasOf(const AssimpScene& scene)
{
    std::vector<PlacedCamera> cameras;
    for (unsigned i = 0; i < scene.get()->mNumCameras; ++i) {
        const aiCamera& camera = *scene.get()->mCameras[i];
        if (const std::optional<Matrix> world = worldOf(scene, camera.mName)) {
            cameras.emplace_back(*world, camera);
        }
    }
    return cameras;
}

void expectSameCameras(const AssimpScene& before, const AssimpScene& after)
{
    EXPECT_EQ(before.get()->mNumCameras, after.get()->mNumCameras);
    expectPairs(camerasOf(before), camerasOf(after), "camera");
}

// Without directional and ambient lights, which a prepared document does not have.
std::vector<PlacedLight> lightsOf(const AssimpScene& scene)
{
    std::vector<PlacedLight> lights;
    for (unsigned i = 0; i < scene.get()->mNumLights; ++i) {
        const aiLight& light = *scene.get()->mLights[i];
        const std::optional<Matrix> world = worldOf(scene, light.mName);
        if (world && light.mType != aiLightSource_DIRECTIONAL && light.mType != aiLightSource_AMBIENT) {
            lights.emplace_back(*world, light);
        }
    }
    return lights;
}

void expectSameLights(const AssimpScene& before, const AssimpScene& after, std::size_t more)
{
    aiLight** const lights = before.get()->mLights;
    const auto count = std::count_if(lights, lights + before.get()->mNumLights, [](const aiLight* light) {
        return light->mType != aiLightSource_DIRECTIONAL && light->mType != aiLightSource_AMBIENT;
    });
    EXPECT_EQ(static_cast<std::size_t>(count) + more, after.get()->mNumLights);
    expectPairs(lightsOf(before), lightsOf(after), "light");
}

} // namespace
