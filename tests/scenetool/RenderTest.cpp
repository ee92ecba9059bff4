#include "Image.h"
#include "RayTracer.h"
#include "Scenetool.h"

#include "support/ColladaBuilder.h"
#include "support/Files.h"
#include "support/Rows.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace testSupport;

ProcessResult run(const Words& arguments, const ProcessOptions& options = ProcessOptions())
{
    return scenetool(arguments, drawing(options));
}

std::size_t entriesOf(const std::filesystem::path& folder)
{
    return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(folder), {}));
}

TEST(RenderTest, SheetOfAFolderWithoutDocumentsIsOneLine)
{
    const TemporaryFile file("text", "notes.txt");
    const std::string sheet = (file.folder() / "sheet.png").string();
    for (const std::string& folder : {file.folder().string(), (file.folder() / "nowhere").string()}) {
        const ProcessResult result = run({"render", "--sheet", folder, "-o", sheet});
        EXPECT_EQ(failed, result.status);
        EXPECT_TRUE(isOneLine(result.errors)) << result.errors;
    }
    EXPECT_EQ(1u, entriesOf(file.folder()));
}

void writeFile(const std::filesystem::path& path, const std::string& bytes)
{
    std::ofstream file(path, std::ios::binary);
    file << bytes;
    ASSERT_TRUE(file.flush());
}

// --- documents

struct Color {
    double red;
    double green;
    double blue;

    std::string text() const
    {
        return std::to_string(red) + " " + std::to_string(green) + " " + std::to_string(blue) + " 1";
    }
};

constexpr Color black{0, 0, 0};
constexpr Color red{1, 0, 0};
constexpr Color green{0, 1, 0};
constexpr Color blue{0, 0, 1};

// A Blinn effect with its material and its binding.
struct Material {
    std::string name;
    Color diffuse = black;
    Color emission = black;
    Color ambient = black;
    Color specular = black;
    double shininess = 0.0;
    std::string texture{}; ///< file of the diffuse channel, in place of the color

    std::string xml() const
    {
        const std::string image = texture.empty() ? ""
                                                  : "<library_images><image id='" + name + "-image'><init_from>" +
                                                        texture + "</init_from></image></library_images>";
        const std::string parameters =
            texture.empty() ? ""
                            : "<newparam sid='surface'><surface type='2D'><init_from>" + name +
                                  "-image</init_from></surface></newparam><newparam sid='sampler'><sampler2D>"
                                  "<source>surface</source></sampler2D></newparam>";
        const std::string diffuseXml = texture.empty() ? channel("diffuse", diffuse)
                                                       : "<diffuse><texture texture='sampler' texcoord='T'/></diffuse>";
        return image + "<library_effects><effect id='" + name + "-effect'><profile_COMMON>" + parameters +
               "<technique sid='t'><blinn>" + channel("emission", emission) + channel("ambient", ambient) + diffuseXml +
               channel("specular", specular) + "<shininess><float>" + std::to_string(shininess) +
               "</float></shininess></blinn></technique></profile_COMMON></effect></library_effects>"
               "<library_materials><material id='" +
               name + "'><instance_effect url='#" + name + "-effect'/></material></library_materials>";
    }

    std::string bound() const { return "<instance_material symbol='" + name + "' target='#" + name + "'/>"; }

private:
    static std::string channel(const char* element, const Color& color)
    {
        return std::string("<") + element + "><color>" + color.text() + "</color></" + element + ">";
    }
};

std::string source(const std::string& id, const std::string& numbers, std::size_t count, std::size_t stride)
{
    std::string params;
    for (std::size_t i = 0; i < stride; ++i) {
        params += "<param name='" + std::string(1, "XYZW"[i]) + "' type='float'/>";
    }
    return "<source id='" + id + "'><float_array id='" + id + "-array' count='" + std::to_string(count * stride) +
           "'>" + numbers + "</float_array><technique_common><accessor source='#" + id + "-array' count='" +
           std::to_string(count) + "' stride='" + std::to_string(stride) + "'>" + params +
           "</accessor></technique_common></source>";
}

// A cube from -1 to 1 without normals, with one material for each side.
struct CubeSide {
    const char* material;
    const char* corners;
};

std::string cube(const std::string& id, const std::vector<CubeSide>& sides)
{
    std::string xml = "<library_geometries><geometry id='" + id + "'><mesh>" +
                      source(id + "-p", "-1 -1 -1  1 -1 -1  -1 1 -1  1 1 -1  -1 -1 1  1 -1 1  -1 1 1  1 1 1", 8, 3) +
                      "<vertices id='" + id + "-v'><input semantic='POSITION' source='#" + id + "-p'/></vertices>";
    for (const CubeSide& side : sides) {
        xml += std::string("<triangles material='") + side.material + "' count='2'><input semantic='VERTEX' source='#" +
               id + "-v' offset='0'/><p>" + side.corners + "</p></triangles>";
    }
    return xml + "</mesh></geometry></library_geometries>";
}

constexpr const char* frontCorners = "4 5 7 4 7 6"; // towards +Z
constexpr const char* rightCorners = "5 1 3 5 3 7"; // towards +X
constexpr const char* backCorners = "1 0 2 1 2 3";
constexpr const char* leftCorners = "0 4 6 0 6 2";
constexpr const char* topCorners = "6 7 3 6 3 2";
constexpr const char* bottomCorners = "0 1 5 0 5 4";

std::string plainCube(const std::string& id, const char* material)
{
    return cube(id, {{material, frontCorners},
                     {material, rightCorners},
                     {material, backCorners},
                     {material, leftCorners},
                     {material, topCorners},
                     {material, bottomCorners}});
}

// A square from -1 to 1 at z = 0 that faces +Z, its texture upright.
std::string square(const std::string& id, const char* material)
{
    return "<library_geometries><geometry id='" + id + "'><mesh>" +
           source(id + "-p", "-1 -1 0  1 -1 0  1 1 0  -1 1 0", 4, 3) + source(id + "-n", "0 0 1", 1, 3) +
           source(id + "-t", "0 0  1 0  1 1  0 1", 4, 2) + "<vertices id='" + id +
           "-v'><input semantic='POSITION' source='#" + id + "-p'/></vertices><triangles material='" + material +
           "' count='2'><input semantic='VERTEX' source='#" + id +
           "-v' offset='0'/><input semantic='NORMAL' source='#" + id +
           "-n' offset='1'/><input semantic='TEXCOORD' source='#" + id +
           "-t' offset='2'/><p>0 0 0 1 0 1 2 0 2 0 0 0 2 0 2 3 0 3</p></triangles></mesh></geometry>"
           "</library_geometries>";
}

std::string shown(const std::string& geometry, const std::vector<Material>& materials)
{
    std::string bound;
    for (const Material& material : materials) {
        bound += material.bound();
    }
    return "<instance_geometry url='#" + geometry + "'><bind_material><technique_common>" + bound +
           "</technique_common></bind_material></instance_geometry>";
}

// Angles of 90 degrees: a square picture shows as far to each side as the distance.
std::string camera(const std::string& id, const std::string& target = "")
{
    const std::string extra =
        target.empty() ? ""
                       : "<extra><technique profile='FCOLLADA'><target>#" + target + "</target></technique></extra>";
    return "<library_cameras><camera id='" + id +
           "'><optics><technique_common><perspective><xfov>90</xfov><yfov>90</yfov><znear>0.1</znear>"
           "<zfar>100</zfar></perspective></technique_common></optics>" +
           extra + "</camera></library_cameras>";
}

std::string cameraNode(const std::string& id, const std::string& place)
{
    return "<node id='" + id + "-node'><translate>" + place + "</translate><instance_camera url='#" + id + "'/></node>";
}

// --- pictures

struct Drawn {
    ProcessResult result;
    bool hasPicture = false;
    Image image;
};

// Draws a document in a folder with its files.
class Studio {
public:
    explicit Studio(const std::string& document) : m_document(document) {}

    std::filesystem::path folder() const { return m_document.folder(); }
    std::string document() const { return m_document.path(); }
    std::string output() const { return (folder() / "picture.png").string(); }

    Drawn draw(const Words& options = {}) const
    {
        Words arguments = {"render", document(), "-o", output()};
        arguments.insert(arguments.end(), options.begin(), options.end());
        const auto isSaid = [&options](const char* option) {
            return std::find(options.begin(), options.end(), option) != options.end();
        };
        if (!isSaid("--size")) {
            arguments.insert(arguments.end(), {"--size", "120x120"});
        }
        if (!isSaid("--background")) {
            arguments.insert(arguments.end(), {"--background", "000000"});
        }
        if (!isSaid("--lights")) { // no message if it is requested
            arguments.insert(arguments.end(), {"--lights", "head"});
        }
        Drawn drawn;
        drawn.result = run(arguments);
        drawn.hasPicture = std::filesystem::exists(output());
        if (drawn.hasPicture) {
            drawn.image = readPng(output());
        }
        return drawn;
    }

    // Expects a picture and no message. Losses of the library alone are reported by separate messages.
    Image picture(const Words& options = {}) const
    {
        const Drawn drawn = draw(options);
        EXPECT_EQ(succeeded, drawn.result.status);
        if (std::find(options.begin(), options.end(), "--as-loaded") == options.end()) {
            EXPECT_EQ("", drawn.result.errors);
        }
        EXPECT_EQ("", drawn.result.output);
        EXPECT_TRUE(drawn.hasPicture);
        return drawn.hasPicture ? drawn.image : Image(120, 120);
    }

private:
    TemporaryFile m_document;
};

bool isMostly(const Pixel& pixel, std::size_t channel)
{
    for (std::size_t i = 0; i < 3; ++i) {
        if (i != channel && pixel[i] * 3 > pixel[channel]) {
            return false;
        }
    }
    return pixel[channel] > 60;
}

void expectMostly(const Image& image, double x, double y, std::size_t channel, const std::string& what)
{
    const Pixel& pixel = image.part(x, y);
    EXPECT_TRUE(isMostly(pixel, channel)) << what << ": " << pixel[0] << " " << pixel[1] << " " << pixel[2];
}

void expectPixel(const Image& image, double x, double y, const Pixel& expected, int tolerance, const std::string& what)
{
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_NEAR(image.part(x, y)[i], expected[i], tolerance) << what << ", channel " << i;
    }
}

constexpr std::size_t redChannel = 0;
constexpr std::size_t greenChannel = 1;
constexpr std::size_t blueChannel = 2;

void expectLikeReference(const Image& image, const Image& reference, const std::string& what)
{
    const ImageDifference found = difference(image, reference);
    // Drivers may smooth edges differently, which affects few pixels.
    EXPECT_LT(found.mean, 0.6) << what;
    EXPECT_LT(found.strayPart, 0.01) << what;
}

// Red in front, green on the right, blue elsewhere.
std::string coloredCube()
{
    return cube("cube", {{"red", frontCorners},
                         {"green", rightCorners},
                         {"blue", backCorners},
                         {"blue", leftCorners},
                         {"blue", topCorners},
                         {"blue", bottomCorners}});
}

std::vector<Material> colors()
{
    return {{"red", red}, {"green", green}, {"blue", blue}};
}

// --- what a picture shows

TEST(RenderTest, CubeIsInTheMiddle)
{
    ColladaBuilder builder(colors()[0].xml() + plainCube("cube", "red") + camera("eye"));
    builder.addScene("<node id='a'><translate>0 0 0</translate>" + shown("cube", {colors()[0]}) + "</node>" +
                     cameraNode("eye", "0 0 4"));
    const Image image = Studio(builder.text()).picture();
    ASSERT_EQ(120, image.width());
    ASSERT_EQ(120, image.height());
    // The front is 3 away and reaches a third of the way from the middle to each side.
    expectPixel(image, 0.5, 0.5, {255, 0, 0}, 3, "middle, lit from the eye");
    for (const double low : {0.36, 0.64}) {
        expectMostly(image, low, 0.5, redChannel, "inside");
        expectMostly(image, 0.5, low, redChannel, "inside");
    }
    for (const double out : {0.31, 0.69}) {
        EXPECT_EQ((Pixel{0, 0, 0}), image.part(out, 0.5));
        EXPECT_EQ((Pixel{0, 0, 0}), image.part(0.5, out));
    }
}

// A rotation by 90 degrees about Y brings the +X side to the front.
TEST(RenderTest, QuarterTurnLaterTheOtherSideShows)
{
    const std::string animation =
        "<library_animations><animation id='turning'>" + source("times", "0 2", 2, 1) +
        source("angles", "0 -180", 2, 1) +
        "<sampler id='s'><input semantic='INPUT' source='#times'/><input semantic='OUTPUT' source='#angles'/></sampler>"
        "<channel source='#s' target='a/turn.ANGLE'/></animation></library_animations>";
    ColladaBuilder builder(colors()[0].xml() + colors()[1].xml() + colors()[2].xml() + coloredCube() + camera("eye") +
                           animation);
    builder.addScene("<node id='a'><rotate sid='turn'>0 1 0 0</rotate>" + shown("cube", colors()) + "</node>" +
                     cameraNode("eye", "0 0 4"));
    const Studio studio(builder.text());
    expectMostly(studio.picture(), 0.5, 0.5, redChannel, "as the document has it");
    expectMostly(studio.picture({"--time", "0"}), 0.5, 0.5, redChannel, "at the start");
    expectMostly(studio.picture({"--time", "1"}), 0.5, 0.5, greenChannel, "by a quarter turn");
}

// A curve with one value per key cannot move a node in three dimensions: its evaluation throws.
TEST(RenderTest, EvaluationThatThrowsIsOneLineAndTheRestIsDrawn)
{
    const std::string animation =
        "<library_animations><animation id='narrow'>" + source("times", "0 2", 2, 1) + source("places", "0 4", 2, 1) +
        "<sampler id='s'><input semantic='INPUT' source='#times'/><input semantic='OUTPUT' source='#places'/></sampler>"
        "<channel source='#s' target='a/place'/></animation></library_animations>";
    ColladaBuilder builder(colors()[0].xml() + plainCube("one", "red") + plainCube("two", "red") + camera("eye") +
                           animation);
    builder.addScene("<node id='b'><translate>2 0 0</translate>" + shown("two", {colors()[0]}) +
                     "</node><node id='a'><translate sid='place'>-2 0 0</translate>" + shown("one", {colors()[0]}) +
                     "</node>" + cameraNode("eye", "0 0 5"));
    const Drawn drawn = Studio(builder.text()).draw({"--as-loaded", "--time", "1"});
    EXPECT_EQ(succeeded, drawn.result.status);
    EXPECT_TRUE(contains(drawn.result.errors, "IndexOutOfBounds")) << drawn.result.errors;
    ASSERT_TRUE(drawn.hasPicture);
    expectMostly(drawn.image, 0.75, 0.5, redChannel, "the other node");
}

// A node turns with its parent, which the library leaves to the host.
TEST(RenderTest, ChildrenMoveWithTheirAnimatedParent)
{
    const std::string animation =
        "<library_animations><animation id='moving'>" + source("times", "0 2", 2, 1) +
        source("places", "0 0 0 4 0 0", 2, 3) +
        "<sampler id='s'><input semantic='INPUT' source='#times'/><input semantic='OUTPUT' source='#places'/></sampler>"
        "<channel source='#s' target='a/place'/></animation></library_animations>";
    ColladaBuilder builder(colors()[0].xml() + plainCube("cube", "red") + camera("eye") + animation);
    builder.addScene("<node id='a'><translate sid='place'>0 0 0</translate><node id='b'><scale>0.5 0.5 0.5</scale>" +
                     shown("cube", {colors()[0]}) + "</node></node>" + cameraNode("eye", "0 0 4"));
    const Image image = Studio(builder.text()).picture({"--time", "1"});
    EXPECT_EQ((Pixel{0, 0, 0}), image.part(0.5, 0.5));
    // Its front is 3.5 away, and 2 to the right: 2 / 3.5 of the way to the side.
    expectMostly(image, 0.5 + 0.5 * 2.0 / 3.5, 0.5, redChannel, "moved by 2");
}

// Red on the right, green on the left, blue above: each kind of camera has to show this.
std::string threeCubes(const std::string& cameras)
{
    ColladaBuilder builder(colors()[0].xml() + colors()[1].xml() + colors()[2].xml() + plainCube("one", "red") +
                           plainCube("two", "green") + plainCube("three", "blue") + camera("plain") +
                           camera("aimed", "middle") + camera("side", "middle"));
    builder.addScene("<node id='middle'><translate>0 0 0</translate></node><node id='a'><translate>3 0 0</translate>" +
                     shown("one", {colors()[0]}) + "</node><node id='b'><translate>-3 0 0</translate>" +
                     shown("two", {colors()[1]}) + "</node><node id='c'><translate>0 3 0</translate>" +
                     shown("three", {colors()[2]}) + "</node>" + cameras);
    return builder.text();
}

TEST(RenderTest, PictureIsNoMirrorImage)
{
    const Studio plain(threeCubes(cameraNode("plain", "0 0 7")));
    const Studio aimed(threeCubes(cameraNode("aimed", "0 0 7")));
    const Image images[] = {plain.picture(), aimed.picture()};
    for (const Image& image : images) {
        // The fronts are 6 away.
        expectMostly(image, 0.75, 0.5, redChannel, "to the right");
        expectMostly(image, 0.25, 0.5, greenChannel, "to the left");
        expectMostly(image, 0.5, 0.25, blueChannel, "above");
    }
    const ImageDifference apart = difference(images[0], images[1]);
    EXPECT_LT(apart.mean, 0.5);
    EXPECT_LT(apart.strayPart, 0.005);
}

TEST(RenderTest, SecondCameraShowsItsOwnView)
{
    const Studio studio(threeCubes(cameraNode("aimed", "0 0 7") + cameraNode("side", "0 0 -7")));
    // After preparation, a camera looks where its node does, whatever its target.
    expectMostly(studio.picture({"--as-loaded", "--camera", "0"}), 0.75, 0.5, redChannel, "from the front");
    const Image image = studio.picture({"--as-loaded", "--camera", "1"});
    expectMostly(image, 0.25, 0.5, redChannel, "from behind");
    expectMostly(image, 0.75, 0.5, greenChannel, "from behind");
    expectMostly(image, 0.5, 0.25, blueChannel, "from behind");
}

// If a camera or its target is below a moved node, world positions count.
TEST(RenderTest, CameraBelowAMovedNodeStandsInTheWorld)
{
    const Image expected = Studio(threeCubes(cameraNode("aimed", "0 0 7"))).picture();
    const Image below =
        Studio(threeCubes("<node id='car'><translate>0 0 5</translate>" + cameraNode("aimed", "0 0 2") + "</node>"))
            .picture();
    EXPECT_LT(difference(expected, below).mean, 0.5);
    const Image plain =
        Studio(threeCubes("<node id='car'><translate>0 0 5</translate>" + cameraNode("plain", "0 0 2") + "</node>"))
            .picture();
    EXPECT_LT(difference(expected, plain).mean, 0.5);
}

// A wider picture shows more on the sides and does not stretch anything.
TEST(RenderTest, PictureOfAnotherRatioIsNotStretched)
{
    const Studio studio(threeCubes(cameraNode("plain", "0 0 7")));
    const Image image = studio.picture({"--size", "240x120"});
    ASSERT_EQ(240, image.width());
    expectMostly(image, 0.5 + 0.125, 0.5, redChannel, "half as far in parts of the width");
    expectMostly(image, 0.5, 0.25, blueChannel, "above");
}

TEST(RenderTest, AllOfTheSceneIsShownWithoutACamera)
{
    const Studio studio(threeCubes(""));
    for (const char* const size : {"120x120", "200x80", "60x180"}) {
        const Image image = studio.picture({"--size", size});
        bool isFound[3] = {};
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                const bool isAtEdge = x == 0 || y == 0 || x == image.width() - 1 || y == image.height() - 1;
                for (std::size_t channel = 0; channel < 3; ++channel) {
                    isFound[channel] = isFound[channel] || isMostly(image.at(x, y), channel);
                }
                if (isAtEdge) {
                    EXPECT_EQ((Pixel{0, 0, 0}), image.at(x, y)) << size << ": cut off at " << x << ", " << y;
                }
            }
        }
        EXPECT_TRUE(isFound[0] && isFound[1] && isFound[2]) << size;
    }
}

// The topmost row with a color.
int highest(const Image& image, std::size_t channel)
{
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (isMostly(image.at(x, y), channel)) {
                return y;
            }
        }
    }
    return image.height();
}

// The scene is behind the camera.
TEST(RenderTest, CameraThatSeesNothingCostsALineAndAllIsShown)
{
    const Studio studio(threeCubes(cameraNode("plain", "0 0 -70")));
    const Drawn drawn = studio.draw();
    EXPECT_EQ(succeeded, drawn.result.status);
    EXPECT_TRUE(isOneLine(drawn.result.errors)) << drawn.result.errors;
    EXPECT_TRUE(contains(drawn.result.errors, "camera 0 sees nothing")) << drawn.result.errors;
    ASSERT_TRUE(drawn.hasPicture);
    EXPECT_LT(difference(drawn.image, studio.picture({"--framed"})).mean, 0.01);
}

// The scene fills the picture in one direction, except for a margin.
TEST(RenderTest, FramedSceneFillsThePicture)
{
    ColladaBuilder builder(colors()[0].xml() + plainCube("cube", "red"));
    builder.addScene("<node id='a'><scale>9 0.5 1</scale>" + shown("cube", {colors()[0]}) + "</node>");
    const Image image = Studio(builder.text()).picture();
    int left = image.width();
    int right = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (image.at(x, y)[0] > 20) {
                left = std::min(left, x);
                right = std::max(right, x);
            }
        }
    }
    EXPECT_GE(left, 1);
    EXPECT_LE(left, 6);
    EXPECT_GE(right, 113);
    EXPECT_LE(right, 118);
}

TEST(RenderTest, UpAxisIsTheOneThatIsAsked)
{
    ColladaBuilder builder(colors()[0].xml() + colors()[1].xml() + colors()[2].xml() + plainCube("one", "red") +
                           plainCube("two", "green") + plainCube("three", "blue"));
    builder.addScene("<node id='a'><translate>4 0 0</translate>" + shown("one", {colors()[0]}) +
                     "</node><node id='b'><translate>0 4 0</translate>" + shown("two", {colors()[1]}) +
                     "</node><node id='c'><translate>0 0 4</translate>" + shown("three", {colors()[2]}) + "</node>");
    const Studio studio(builder.text());
    const std::pair<const char*, std::size_t> axes[] = {{"x", 0}, {"y", 1}, {"z", 2}};
    for (const auto& [axis, channel] : axes) {
        const Image image = studio.picture({"--up", axis});
        for (std::size_t other = 0; other < 3; ++other) {
            if (other != channel) {
                EXPECT_LT(highest(image, channel), highest(image, other)) << axis;
            }
        }
    }
    EXPECT_EQ(0.0, difference(studio.picture(), studio.picture({"--up", "y"})).mean);
}

// --- shading, against what the formulas say

struct Quad {
    RayTracer::Vector a, b, c, d;
};

const Quad cubeQuads[] = {
    {{-1, -1, 1}, {1, -1, 1}, {1, 1, 1}, {-1, 1, 1}},     {{1, -1, 1}, {1, -1, -1}, {1, 1, -1}, {1, 1, 1}},
    {{1, -1, -1}, {-1, -1, -1}, {-1, 1, -1}, {1, 1, -1}}, {{-1, -1, -1}, {-1, -1, 1}, {-1, 1, 1}, {-1, 1, -1}},
    {{-1, 1, 1}, {1, 1, 1}, {1, 1, -1}, {-1, 1, -1}},     {{-1, -1, -1}, {1, -1, -1}, {1, -1, 1}, {-1, -1, 1}}};

void addQuad(RayTracer& tracer, const Quad& quad, const RayTracer::Triangle& shading)
{
    for (const auto& [b, c] : {std::make_pair(quad.b, quad.c), std::make_pair(quad.c, quad.d)}) {
        RayTracer::Triangle triangle = shading;
        triangle.a = quad.a;
        triangle.b = b;
        triangle.c = c;
        tracer.triangles.push_back(triangle);
    }
}

RayTracer::Vector vectorOf(const Color& color)
{
    return {color.red, color.green, color.blue};
}

RayTracer::Triangle shadingOf(const Material& material)
{
    return {{},
            {},
            {},
            vectorOf(material.emission),
            vectorOf(material.ambient),
            vectorOf(material.diffuse),
            vectorOf(material.specular),
            material.shininess};
}

TEST(RenderTest, ShadingIsThatOfTheFormulas)
{
    const Material gloss = {"gloss", {0.7, 0.2, 0.1}, {0, 0.05, 0.1}, black, {0.7, 0.8, 0.9}, 8.0, ""};
    ColladaBuilder builder(gloss.xml() + plainCube("cube", "gloss") + camera("eye", "a") +
                           "<library_lights><light id='near'><technique_common><point><color>1 0.9 0.8</color>"
                           "<constant_attenuation>0.5</constant_attenuation><linear_attenuation>0.125"
                           "</linear_attenuation><quadratic_attenuation>0.25</quadratic_attenuation></point>"
                           "</technique_common></light></library_lights>");
    builder.addScene("<node id='a'><translate>0 0 0</translate>" + shown("cube", {gloss}) + "</node>" +
                     cameraNode("eye", "1.2 1.1 1.9") +
                     "<node id='lit'><translate>0.5 1.5 2.5</translate><instance_light url='#near'/></node>");
    RayTracer tracer;
    for (const Quad& quad : cubeQuads) {
        addQuad(tracer, quad, shadingOf(gloss));
    }
    RayTracer::Light light;
    light.position = {0.5, 1.5, 2.5};
    light.color = {1, 0.9, 0.8};
    light.attenuation = {0.5, 0.125, 0.25};
    tracer.lights = {light};
    tracer.camera.eye = {1.2, 1.1, 1.9};
    const Image reference = tracer.picture(120, 120);
    const Image image = Studio(builder.text()).picture({"--as-loaded", "--lights", "document"});
    expectLikeReference(image, reference, "cube");
    EXPECT_GT(difference(image, Image(120, 120)).mean, 3.0) << "the picture is not empty";
}

// A spot light from the upper right shines on a wall. The inner 40 degrees are bright; outside 60 degrees it is dark.
TEST(RenderTest, SpotShowsItsCone)
{
    const Material wall = {"wall", {0.9, 0.8, 0.7}, black, black, black, 0.0, ""};
    const std::string light = "<library_lights><light id='beam'><technique_common><spot><color>1 1 1</color>"
                              "<falloff_angle>40</falloff_angle><falloff_exponent>2</falloff_exponent></spot>"
                              "</technique_common><extra><technique profile='FCOLLADA'><outer_cone>60</outer_cone>"
                              "<target>#aim</target></technique></extra></light></library_lights>";
    ColladaBuilder builder(wall.xml() + square("square", "wall") + camera("eye") + light);
    builder.addScene("<node id='a'><scale>4 4 4</scale>" + shown("square", {wall}) + "</node>" +
                     cameraNode("eye", "0 0 4") +
                     "<node id='aim'><translate>-1 0 0</translate></node><node id='lamp'><translate>1 1 3</translate>"
                     "<instance_light url='#beam'/></node>");
    RayTracer tracer;
    addQuad(tracer, {{-4, -4, 0}, {4, -4, 0}, {4, 4, 0}, {-4, 4, 0}}, shadingOf(wall));
    RayTracer::Light spot;
    spot.position = {1, 1, 3};
    spot.direction = {-2, -1, -3};
    spot.innerAngle = 40;
    spot.outerAngle = 60;
    spot.exponent = 2;
    tracer.lights = {spot};
    tracer.camera.eye = {0, 0, 4};
    const Image image = Studio(builder.text()).picture({"--as-loaded", "--lights", "document"});
    expectLikeReference(image, tracer.picture(120, 120), "wall");
    // -1, 0 is an eighth of the picture left of the middle.
    EXPECT_GT(image.part(0.375, 0.5)[0], 130) << "where the spot aims";
    EXPECT_EQ(0, image.part(0.95, 0.1)[0]) << "outside there is no light, not even a little";
}

// A spot light without a target shines along -Z of its node. Without an outer cone it has a sharp edge.
TEST(RenderTest, SpotWithoutTargetShinesAlongItsNode)
{
    const Material wall = {"wall", {1, 1, 1}, black, black, black, 0.0, ""};
    ColladaBuilder builder(wall.xml() + square("square", "wall") + camera("eye") +
                           "<library_lights><light id='beam'><technique_common><spot><color>1 1 1</color>"
                           "<falloff_angle>45</falloff_angle><falloff_exponent>0</falloff_exponent></spot>"
                           "</technique_common></light></library_lights>");
    builder.addScene("<node id='a'><scale>4 4 4</scale>" + shown("square", {wall}) + "</node>" +
                     cameraNode("eye", "0 0 4") +
                     "<node id='lamp'><translate>1 0 4</translate><instance_light url='#beam'/></node>");
    const Image image = Studio(builder.text()).picture({"--lights", "document"});
    // The circle around 1, 0 has a radius of 4 tan 22.5 = 1.657, and half of the picture is 4 wide.
    expectPixel(image, 0.5 + 1.0 / 8, 0.5, {255, 255, 255}, 3, "straight ahead");
    EXPECT_GT(image.part(0.5 + 2.5 / 8, 0.5)[0], 200) << "inside";
    EXPECT_EQ((Pixel{0, 0, 0}), image.part(0.5 + 2.8 / 8, 0.5)) << "outside";
    EXPECT_GT(image.part(0.5 - 0.5 / 8, 0.5)[0], 200) << "inside";
    EXPECT_EQ((Pixel{0, 0, 0}), image.part(0.5 - 0.8 / 8, 0.5)) << "outside";
}

TEST(RenderTest, FortyLightsAllShine)
{
    ColladaBuilder builder(colors()[0].xml() + plainCube("cube", "red") + camera("eye") +
                           "<library_lights><light id='dim'><technique_common><point><color>0.01 0.01 0.01</color>"
                           "</point></technique_common></light></library_lights>");
    std::string lights;
    for (int i = 0; i < 40; ++i) {
        lights += "<instance_light url='#dim'/>";
    }
    builder.addScene("<node id='a'><translate>0 0 0</translate>" + shown("cube", {colors()[0]}) + "</node>" +
                     cameraNode("eye", "0 0 4") + "<node id='lit'><translate>0 0 4</translate>" + lights + "</node>");
    // A point light without attenuation does not fade: 40 lights of 0.01 on a red of 1.
    expectPixel(Studio(builder.text()).picture({"--lights", "document"}), 0.5, 0.5, {102, 0, 0}, 2, "middle");
}

// A primitive without material shows the colors of its vertices, red on the left and green on the right.
TEST(RenderTest, ColorsOfVerticesStandInForAMaterial)
{
    ColladaBuilder builder(camera("eye") + "<library_geometries><geometry id='square'><mesh>" +
                           source("p", "-1 -1 0  1 -1 0  1 1 0  -1 1 0", 4, 3) + source("c", "1 0 0  0 1 0", 2, 3) +
                           "<vertices id='v'><input semantic='POSITION' source='#p'/></vertices><triangles count='2'>"
                           "<input semantic='VERTEX' source='#v' offset='0'/><input semantic='COLOR' source='#c' "
                           "offset='1'/><p>0 0 1 1 2 1 0 0 2 1 3 0</p></triangles></mesh></geometry>"
                           "</library_geometries>");
    builder.addScene("<node id='a'><translate>0 0 0</translate>" + shown("square", {}) + "</node>" +
                     cameraNode("eye", "0 0 1.25"));
    const Image image = Studio(builder.text()).picture();
    expectMostly(image, 0.15, 0.5, redChannel, "left");
    expectMostly(image, 0.85, 0.5, greenChannel, "right");
}

std::string greenPhongCube()
{
    ColladaBuilder builder(
        "<library_effects><effect id='e'><profile_COMMON><technique sid='t'><phong><diffuse><color>0 0.5 0 1</color>"
        "</diffuse></phong></technique></profile_COMMON></effect>"
        "</library_effects><library_materials><material id='m'><instance_effect url='#e'/></material>"
        "</library_materials>" +
        plainCube("cube", "m") + camera("eye"));
    builder.addScene("<node id='a'><translate>0 0 0</translate>" + shown("cube", {{"m"}}) + "</node>" +
                     cameraNode("eye", "0 0 4"));
    return builder.text();
}

// Channels that a document does not give are white in the library, but must not glow. As loaded there is also an
// ambient light of 0.2, because those of the document are not read.
TEST(RenderTest, EmissionThatTheDocumentLeavesOutDoesNotGlow)
{
    const Studio studio(greenPhongCube());
    expectPixel(studio.picture(), 0.5, 0.5, {0, 128, 0}, 2, "all of the head light on 0.5");
    expectPixel(studio.picture({"--as-loaded"}), 0.5, 0.5, {0, 153, 0}, 2, "and 0.2 of ambient light");
}

// --- which lights

TEST(RenderTest, DocumentThatLightsNothingGetsALightAndALine)
{
    const Studio studio(greenPhongCube());
    const ProcessResult result = run({"render", studio.document(), "-o", studio.output(), "--size", "120x120"});
    EXPECT_EQ(succeeded, result.status);
    EXPECT_TRUE(isOneLine(result.errors)) << result.errors;
    EXPECT_TRUE(contains(result.errors, "lights nothing")) << result.errors;
    expectPixel(readPng(studio.output()), 0.5, 0.5, {0, 128, 0}, 2, "lit from the eye");
    expectPixel(studio.picture({"--lights", "document"}), 0.5, 0.5, {0, 0, 0}, 0, "dark if the document alone counts");
}

// An ambient light that no material reflects has no effect.
TEST(RenderTest, AmbientLightThatShowsNowhereLeavesAllToTheEye)
{
    const Material wall = {"wall", {0, 0.5, 0}};
    ColladaBuilder builder(wall.xml() + square("square", "wall") + camera("eye") +
                           "<library_lights><light id='all'><technique_common><ambient><color>1 1 1</color></ambient>"
                           "</technique_common></light></library_lights>");
    builder.addScene("<node id='a'><translate>0 0 0</translate>" + shown("square", {wall}) + "</node>" +
                     cameraNode("eye", "0 0 2") +
                     "<node id='l'><translate>0 0 0</translate><instance_light url='#all'/></node>");
    const Studio studio(builder.text());
    const ProcessResult result = run({"render", studio.document(), "-o", studio.output(), "--size", "120x120"});
    EXPECT_TRUE(contains(result.errors, "lights nothing")) << result.errors;
    expectPixel(readPng(studio.output()), 0.5, 0.5, {0, 128, 0}, 2, "lit from the eye");
}

// A cube lit from above: its front is dark without a light at the viewer.
TEST(RenderTest, LightsAreThoseThatAreChosen)
{
    ColladaBuilder builder(colors()[0].xml() + plainCube("cube", "red") + camera("eye") +
                           "<library_lights><light id='lamp'><technique_common><point><color>1 1 1</color></point>"
                           "</technique_common></light></library_lights>");
    builder.addScene("<node id='a'><translate>0 0 0</translate>" + shown("cube", {colors()[0]}) + "</node>" +
                     cameraNode("eye", "0 0 4") +
                     "<node id='above'><translate>0 9 0</translate><instance_light url='#lamp'/></node>");
    const Studio studio(builder.text());
    const std::pair<const char*, int> choices[] = {{"document", 0}, {"head", 255}, {"both", 102}};
    for (const auto& [choice, expected] : choices) {
        expectPixel(studio.picture({"--lights", choice}), 0.5, 0.5, {expected, 0, 0}, 1, choice);
    }
    const ProcessResult result = run({"render", studio.document(), "-o", studio.output(), "--size", "120x120"});
    EXPECT_EQ("", result.errors);
    expectPixel(readPng(studio.output()), 0.5, 0.5, {0, 0, 0}, 0, "those of the document if nothing is said");
}

// The side away from the light is dark, whichever side the viewer is on.
TEST(RenderTest, BackOfALitFaceIsDark)
{
    const Material wall = {"wall", {1, 1, 1}};
    ColladaBuilder builder(wall.xml() + square("square", "wall") + camera("eye") +
                           "<library_lights><light id='lamp'><technique_common><point><color>1 1 1</color></point>"
                           "</technique_common></light></library_lights>");
    builder.addScene("<node id='a'><translate>0 0 0</translate>" + shown("square", {wall}) + "</node>" +
                     "<node id='eye-node'><rotate>0 1 0 180</rotate><translate>0 0 2</translate>"
                     "<instance_camera url='#eye'/></node><node id='lit'><translate>0 0 -3</translate>"
                     "<instance_light url='#lamp'/></node>");
    const Studio studio(builder.text());
    // Eye and light are at -Z, the normal is +Z.
    expectPixel(studio.picture({"--lights", "document"}), 0.5, 0.5, {0, 0, 0}, 0, "the document's light");
    expectPixel(studio.picture({"--lights", "head"}), 0.5, 0.5, {255, 255, 255}, 2, "the viewer's light");
}

std::string lamp(const std::string& place)
{
    return "<node id='lit'><translate>" + place + "</translate><instance_light url='#lamp'/></node>";
}

constexpr const char* whiteLamp = "<library_lights><light id='lamp'><technique_common><point><color>1 1 1</color>"
                                  "</point></technique_common></light></library_lights>";

// Without normals, a document does not say which side of a face is the outer one.
TEST(RenderTest, FaceWithoutNormalsIsLitOnBothSides)
{
    const Material wall = {"wall", {1, 1, 1}};
    ColladaBuilder builder(wall.xml() + cube("side", {{"wall", frontCorners}}) + camera("eye") + whiteLamp);
    builder.addScene("<node id='a'><translate>0 0 -1</translate>" + shown("side", {wall}) + "</node>" +
                     "<node id='eye-node'><rotate>0 1 0 180</rotate><translate>0 0 2</translate>"
                     "<instance_camera url='#eye'/></node>" +
                     lamp("0 0 -30"));
    expectPixel(Studio(builder.text()).picture({"--lights", "document"}), 0.5, 0.5, {255, 255, 255}, 2, "from behind");
}

TEST(RenderTest, MirroredFaceKeepsItsOuterSide)
{
    const Material wall = {"wall", {1, 1, 1}};
    ColladaBuilder builder(wall.xml() + square("square", "wall") + camera("eye") + whiteLamp);
    builder.addScene("<node id='a'><scale>-1 1 1</scale>" + shown("square", {wall}) + "</node>" +
                     cameraNode("eye", "0 0 2") + lamp("0 0 30"));
    expectPixel(Studio(builder.text()).picture({"--lights", "document"}), 0.5, 0.5, {255, 255, 255}, 2, "its front");
}

// --- opacity

std::string pane(const std::string& name, const std::string& emission, const std::string& opacity, double z)
{
    return "<library_effects><effect id='" + name + "-e'><profile_COMMON><technique sid='t'><phong><emission><color>" +
           emission +
           " 1</color></emission><ambient><color>0 0 0 1</color></ambient><diffuse><color>0 0 0 1</color></diffuse>"
           "<specular><color>0 0 0 1</color></specular><transparent opaque='A_ONE'><color>1 1 1 1</color></transparent>"
           "<transparency><float>" +
           opacity +
           "</float></transparency></phong></technique></profile_COMMON></effect></library_effects><library_materials>"
           "<material id='" +
           name + "'><instance_effect url='#" + name + "-e'/></material></library_materials>" +
           "<library_geometries><geometry id='" + name + "-g'><mesh>" +
           source(name + "-p",
                  "-1 -1 " + std::to_string(z) + "  1 -1 " + std::to_string(z) + "  1 1 " + std::to_string(z) +
                      "  -1 1 " + std::to_string(z),
                  4, 3) +
           "<vertices id='" + name + "-v'><input semantic='POSITION' source='#" + name +
           "-p'/></vertices><triangles material='" + name + "' count='2'><input semantic='VERTEX' source='#" + name +
           "-v' offset='0'/><p>0 1 2 0 2 3</p></triangles></mesh></geometry></library_geometries>";
}

std::string paneNode(const std::string& name)
{
    return "<node id='" + name + "-n'><translate>0 0 0</translate>" + shown(name + "-g", {{name}}) + "</node>";
}

// Squares 1 and 11 units in front of the eye look alike without perspective: half a unit is a quarter of a height of
// two.
TEST(RenderTest, OrthographicCameraHasNoPerspective)
{
    ColladaBuilder builder(pane("back", "1 0 0", "1", -10) + pane("front", "0 0 1", "1", 0) +
                           "<library_cameras><camera id='flat'><optics><technique_common><orthographic><ymag>2</ymag>"
                           "<aspect_ratio>1</aspect_ratio><znear>0.1</znear><zfar>100</zfar></orthographic>"
                           "</technique_common></optics></camera></library_cameras>");
    builder.addScene("<node id='right'><translate>1 0 0</translate>" + shown("back-g", {{"back"}}) +
                     "</node><node id='left'><translate>-1 0 0</translate>" + shown("front-g", {{"front"}}) +
                     "</node>" + "<node id='eye-n'><translate>0 0 1</translate><instance_camera url='#flat'/></node>");
    const Image image = Studio(builder.text()).picture();
    for (const auto& [x, channel] : {std::make_pair(0.02, blueChannel), std::make_pair(0.98, redChannel)}) {
        expectMostly(image, x, 0.27, channel, "a unit above the middle is a quarter of the height");
        expectMostly(image, x, 0.73, channel, "and as much below");
        EXPECT_EQ((Pixel{0, 0, 0}), image.part(x, 0.23)) << x;
        EXPECT_EQ((Pixel{0, 0, 0}), image.part(x, 0.77)) << x;
    }
}

// Ambient light of 0.5 on a picture of green and an emission of 0.25 red: prepare cannot add them, but the renderer
// does.
TEST(RenderTest, AmbientLightShinesOnATexture)
{
    const std::string effect =
        "<library_images><image id='i'><init_from>green.png</init_from></image></library_images><library_effects>"
        "<effect id='e'><profile_COMMON><newparam sid='s'><surface "
        "type='2D'><init_from>i</init_from></surface></newparam>"
        "<newparam sid='t'><sampler2D><source>s</source></sampler2D></newparam><technique sid='c'><phong><emission>"
        "<color>0.25 0 0 1</color></emission><ambient><texture texture='t' texcoord='T'/></ambient></phong></technique>"
        "</profile_COMMON></effect></library_effects><library_materials><material id='m'><instance_effect url='#e'/>"
        "</material></library_materials><library_lights><light id='all'><technique_common><ambient><color>0.5 0.5 0.5"
        "</color></ambient></technique_common></light></library_lights>";
    ColladaBuilder builder(effect + square("square", "m") + camera("eye"));
    builder.addScene("<node id='a'><translate>0 0 0</translate>" + shown("square", {{"m"}}) + "</node>" +
                     cameraNode("eye", "0 0 2") +
                     "<node id='l'><translate>0 0 0</translate><instance_light url='#all'/></node>");
    const Studio studio(builder.text());
    Image picture(4, 4);
    for (int i = 0; i < 16; ++i) {
        picture.at(i % 4, i / 4) = {0, 255, 0};
    }
    writeFile(studio.folder() / "green.png", pngOf(picture));
    expectPixel(studio.picture({"--lights", "document"}), 0.5, 0.5, {64, 128, 0}, 1, "middle");
}

// The light shines along -Z of its node, wherever that is: at 45 degrees to the wall.
TEST(RenderTest, DirectionalLightHasADirectionAndNoPlace)
{
    const Material wall = {"wall", {1, 1, 1}};
    ColladaBuilder builder(wall.xml() + square("square", "wall") + camera("eye") +
                           "<library_lights><light id='sun'><technique_common><directional><color>1 0.5 0</color>"
                           "</directional></technique_common></light></library_lights>");
    builder.addScene("<node id='a'><translate>0 0 0</translate>" + shown("square", {wall}) + "</node>" +
                     cameraNode("eye", "0 0 2") +
                     "<node id='l'><translate>0 0 -7</translate><rotate>0 1 0 45</rotate>"
                     "<instance_light url='#sun'/></node>");
    const Image image = Studio(builder.text()).picture({"--lights", "document"});
    for (const double x : {0.3, 0.5, 0.7}) {
        expectPixel(image, x, 0.5, {180, 90, 0}, 1, "255 times the cosine of 45 degrees");
    }
}

// Far faces are drawn first, whatever the order in the document: half of blue over half of green over red.
TEST(RenderTest, TransparentFacesAreBlendedFromFarToNear)
{
    for (const bool isNearFirst : {false, true}) {
        ColladaBuilder builder(pane("back", "1 0 0", "1", -1) + pane("middle", "0 1 0", "0.5", 0) +
                               pane("front", "0 0 1", "0.5", 1) + camera("eye"));
        const std::string between = paneNode("middle");
        builder.addScene((isNearFirst ? paneNode("front") + between : between + paneNode("front")) + paneNode("back") +
                         cameraNode("eye", "0 0 3"));
        // 255 * 0.5 * 0.5 for red and green, 255 * 0.5 for blue.
        expectPixel(Studio(builder.text()).picture(), 0.5, 0.5, {64, 64, 128}, 2,
                    isNearFirst ? "near first" : "far first");
    }
}

TEST(RenderTest, WhatIsWhollyTransparentIsNotDrawn)
{
    ColladaBuilder builder(pane("back", "1 0 0", "1", -1) + pane("front", "0 0 1", "0", 1) + camera("eye"));
    builder.addScene(paneNode("front") + paneNode("back") + cameraNode("eye", "0 0 3"));
    const Drawn drawn = Studio(builder.text()).draw(); // with a message that it is invisible
    ASSERT_TRUE(drawn.hasPicture);
    expectPixel(drawn.image, 0.5, 0.5, {255, 0, 0}, 0, "middle");
}

// --- the background

TEST(RenderTest, BackgroundIsASkyUnlessAColorIsAsked)
{
    const Studio studio(greenPhongCube());
    ASSERT_EQ(succeeded, run({"render", studio.document(), "-o", studio.output(), "--lights", "head"}).status);
    const Image sky = readPng(studio.output());
    const Pixel above = sky.part(0.02, 0.02);
    const Pixel below = sky.part(0.02, 0.98);
    EXPECT_TRUE(above[2] > above[0] + 40 && above[2] > above[1]) << "blue above";
    EXPECT_GT(below[0], above[0] + 40) << "lighter towards the horizon";
    for (const char* const color : {"9fb8cc", "#9fb8cc"}) {
        expectPixel(studio.picture({"--background", color}), 0.02, 0.02, {0x9f, 0xb8, 0xcc}, 0, color);
    }
}

// Half of the blue remains where nothing else is; its color is not multiplied by alpha.
TEST(RenderTest, PictureWithoutBackgroundHasAlpha)
{
    ColladaBuilder builder(pane("front", "0 0 1", "0.5", 0) + camera("eye"));
    builder.addScene(paneNode("front") + cameraNode("eye", "0 0 2"));
    const Studio studio(builder.text());
    studio.picture({"--background", "none"});
    const std::vector<std::array<int, 4>> pixels = testSupport::readPngWithAlpha(studio.output());
    ASSERT_EQ(120u * 120u, pixels.size());
    EXPECT_EQ(pixels[0], (std::array<int, 4>{0, 0, 0, 0})) << "the corner";
    const std::array<int, 4>& middle = pixels[60 * 120 + 60];
    EXPECT_NEAR(middle[3], 128, 1);
    EXPECT_NEAR(middle[2], 255, 2);
    EXPECT_EQ(0, middle[0]);
}

TEST(RenderTest, PictureGoesToStandardOutput)
{
    const Studio studio(greenPhongCube());
    const ProcessResult result =
        run({"render", studio.document(), "-o", "-", "--size", "40x30", "--background", "000000", "--lights", "head"});
    EXPECT_EQ(succeeded, result.status);
    EXPECT_EQ("", result.errors);
    EXPECT_EQ(1u, entriesOf(studio.folder())) << "the document alone";
    writeFile(studio.output(), result.output);
    const Image image = readPng(studio.output());
    EXPECT_EQ(40, image.width());
    expectMostly(image, 0.5, 0.5, greenChannel, "middle");
}

// --- textures

// Red and green above, blue and white below.
Image fourColors()
{
    Image image(64, 64);
    for (int y = 0; y < 64; ++y) {
        for (int x = 0; x < 64; ++x) {
            image.at(x, y) = y < 32 ? (x < 32 ? Pixel{255, 0, 0} : Pixel{0, 255, 0})
                                    : (x < 32 ? Pixel{0, 0, 255} : Pixel{255, 255, 255});
        }
    }
    return image;
}

// A white square whose texture makes it transparent, most where it is white, times a factor.
TEST(RenderTest, TextureOfTheOpacityLetsLightPass)
{
    ColladaBuilder builder(
        "<library_images><image id='i'><init_from>four.png</init_from></image></library_images><library_effects>"
        "<effect id='e'><profile_COMMON><newparam sid='surface'><surface type='2D'><init_from>i</init_from></surface>"
        "</newparam><newparam sid='sampler'><sampler2D><source>surface</source></sampler2D></newparam>"
        "<technique sid='t'><constant><emission><color>1 1 1 1</color></emission><transparent opaque='RGB_ZERO'>"
        "<texture texture='sampler' texcoord='T'/></transparent><transparency><float>0.5</float></transparency>"
        "</constant></technique></profile_COMMON></effect></library_effects><library_materials><material id='m'>"
        "<instance_effect url='#e'/></material></library_materials>" +
        square("square", "m") + camera("eye"));
    builder.addScene("<node id='a'><translate>0 0 0</translate>" + shown("square", {{"m"}}) + "</node>" +
                     cameraNode("eye", "0 0 1.25"));
    const Studio studio(builder.text());
    writeFile(studio.folder() / "four.png", pngOf(fourColors()));
    const Image image = studio.picture();
    // The opacity is 1 - 0.5 * luminance.
    expectPixel(image, 0.75, 0.75, {128, 128, 128}, 2, "white");
    expectPixel(image, 0.25, 0.25, {228, 228, 228}, 2, "red");
    expectPixel(image, 0.75, 0.25, {164, 164, 164}, 2, "green");
    expectPixel(image, 0.25, 0.75, {246, 246, 246}, 2, "blue");
}

std::string texturedSquare(const std::string& texture)
{
    Material material = {"picture"};
    material.texture = texture;
    ColladaBuilder builder(material.xml() + square("square", "picture") + camera("eye"));
    builder.addScene("<node id='a'><translate>0 0 0</translate>" + shown("square", {material}) + "</node>" +
                     cameraNode("eye", "0 0 1.25"));
    return builder.text();
}

void expectUpright(const Image& image, const std::string& what)
{
    expectMostly(image, 0.3, 0.3, redChannel, what + ", upper left");
    expectMostly(image, 0.7, 0.3, greenChannel, what + ", upper right");
    expectMostly(image, 0.3, 0.7, blueChannel, what + ", lower left");
    EXPECT_GT(*std::min_element(image.part(0.7, 0.7).begin(), image.part(0.7, 0.7).end()), 150) << what;
}

TEST(RenderTest, TextureStandsUpright)
{
    const Studio png(texturedSquare("four.png"));
    writeFile(png.folder() / "four.png", pngOf(fourColors()));
    expectUpright(png.picture(), "PNG");
    const Studio jpeg(texturedSquare("./four%20colors.jpg"));
    writeFile(jpeg.folder() / "four colors.jpg", jpegOf(fourColors()));
    expectUpright(jpeg.picture(), "JPEG");
}

// A header of 18 bytes, then blue, green, red, row by row from the bottom.
std::string tgaOf(const Image& image)
{
    std::string bytes(18, '\0');
    bytes[2] = 2;
    bytes[12] = static_cast<char>(image.width());
    bytes[14] = static_cast<char>(image.height());
    bytes[16] = 24;
    for (int y = image.height(); y-- > 0;) {
        for (int x = 0; x < image.width(); ++x) {
            const Pixel& pixel = image.at(x, y);
            bytes += {static_cast<char>(pixel[2]), static_cast<char>(pixel[1]), static_cast<char>(pixel[0])};
        }
    }
    return bytes;
}

TEST(RenderTest, TextureMayBeATga)
{
    const Studio studio(texturedSquare("four.tga"));
    writeFile(studio.folder() / "four.tga", tgaOf(fourColors()));
    expectUpright(studio.picture(), "TGA");
}

TEST(RenderTest, TextureOfAnotherMachineIsFoundBesideTheDocument)
{
    for (const char* const reference :
         {"file:///C:/models/textures/four.png", "/nowhere/four.png", "../textures/four.png"}) {
        const Studio studio(texturedSquare(reference));
        writeFile(studio.folder() / "four.png", pngOf(fourColors()));
        expectUpright(studio.picture(), reference);
    }
}

TEST(RenderTest, MissingTextureIsOneLineAndTheRestIsDrawn)
{
    const Studio studio(texturedSquare("lost.png"));
    const Drawn drawn = studio.draw();
    EXPECT_EQ(succeeded, drawn.result.status);
    EXPECT_TRUE(isOneLine(drawn.result.errors)) << drawn.result.errors;
    EXPECT_TRUE(contains(drawn.result.errors, "lost.png") && contains(drawn.result.errors, "does not exist"));
    ASSERT_TRUE(drawn.hasPicture);
    EXPECT_GT(drawn.image.part(0.5, 0.5)[0], 150) << "white stands in";
}

TEST(RenderTest, TextureThatIsNoImageIsOneLine)
{
    const std::string png = pngOf(fourColors());
    const std::string jpeg = jpegOf(fourColors());
    const std::string broken[] = {"", "hello", png.substr(0, 4), png.substr(0, 40), jpeg.substr(0, 20)};
    for (const std::string& bytes : broken) {
        const Studio studio(texturedSquare("odd.png"));
        writeFile(studio.folder() / "odd.png", bytes);
        const Drawn drawn = studio.draw();
        EXPECT_EQ(succeeded, drawn.result.status);
        EXPECT_TRUE(isOneLine(drawn.result.errors)) << drawn.result.errors;
        EXPECT_TRUE(drawn.hasPicture);
    }
    const Studio studio(texturedSquare("odd.png"));
    std::filesystem::create_directory(studio.folder() / "odd.png");
    EXPECT_TRUE(isOneLine(studio.draw().result.errors));
    const Studio pipe(texturedSquare("odd.png"));
    ASSERT_EQ(0, mkfifo((pipe.folder() / "odd.png").c_str(), 0600));
    EXPECT_TRUE(isOneLine(pipe.draw().result.errors)) << "a pipe that nobody writes to must not be waited for";
}

// --- points

TEST(RenderTest, PointCloudShowsItsPoints)
{
    ColladaBuilder builder(camera("eye") + "<library_geometries><geometry id='cloud'><mesh>" +
                           source("p", "0 0 0  1 0 0  0 1 0", 3, 3) +
                           "<vertices id='v'><input semantic='POSITION' source='#p'/></vertices></mesh></geometry>"
                           "</library_geometries>");
    builder.addScene("<node id='a'><translate>0 0 0</translate>" + shown("cloud", {}) + "</node>" +
                     cameraNode("eye", "0 0 2"));
    const Image image = Studio(builder.text()).picture();
    EXPECT_GT(image.part(0.5, 0.5)[1], 100);
    EXPECT_GT(image.part(0.75, 0.5)[1], 100);
    EXPECT_GT(image.part(0.5, 0.25)[1], 100);
    EXPECT_EQ((Pixel{0, 0, 0}), image.part(0.6, 0.5)) << "between the points";
    EXPECT_EQ((Pixel{0, 0, 0}), image.part(0.25, 0.5)) << "where there is none";
}

// --- nodes without transforms

std::string bareCube()
{
    ColladaBuilder builder(colors()[0].xml() + plainCube("cube", "red") + camera("eye"));
    builder.addScene("<node id='a'>" + shown("cube", {colors()[0]}) + "</node>" + cameraNode("eye", "0 0 4"));
    return builder.text();
}

TEST(RenderTest, NodeWithoutTransformCollapsesUnlessToldOtherwise)
{
    const Studio studio(bareCube());
    const Drawn drawn = studio.draw({"--as-loaded"});
    EXPECT_EQ(failed, drawn.result.status);
    EXPECT_TRUE(contains(drawn.result.errors, "1 node without a transform")) << drawn.result.errors;
    EXPECT_TRUE(contains(drawn.result.errors, "--identity-for-empty"));
    EXPECT_FALSE(drawn.hasPicture);
    expectMostly(studio.picture({"--as-loaded", "--identity-for-empty"}), 0.5, 0.5, redChannel, "with the identity");
    expectMostly(studio.picture(), 0.5, 0.5, redChannel, "prepared, it has a transform");
}

TEST(RenderTest, RestIsDrawnBesideNodesThatCollapse)
{
    ColladaBuilder builder(colors()[0].xml() + colors()[1].xml() + plainCube("one", "red") + plainCube("two", "green") +
                           camera("eye"));
    builder.addScene("<node id='a'><translate>2 0 0</translate>" + shown("one", {colors()[0]}) +
                     "</node><node id='empty'><node id='b'><translate>-2 0 0</translate>" +
                     shown("two", {colors()[1]}) + "</node></node>" + cameraNode("eye", "0 0 5"));
    const Studio studio(builder.text());
    const Drawn drawn = studio.draw({"--as-loaded"});
    EXPECT_EQ(succeeded, drawn.result.status);
    EXPECT_TRUE(contains(drawn.result.errors, "1 node without a transform")) << drawn.result.errors;
    EXPECT_TRUE(contains(drawn.result.errors, "collapses in 1 place")) << drawn.result.errors;
    ASSERT_TRUE(drawn.hasPicture);
    expectMostly(drawn.image, 0.75, 0.5, redChannel, "stands");
    EXPECT_EQ((Pixel{0, 0, 0}), drawn.image.part(0.25, 0.5)) << "collapsed with the node above";
    const Image whole = studio.picture({"--as-loaded", "--identity-for-empty"});
    expectMostly(whole, 0.75, 0.5, redChannel, "stands");
    expectMostly(whole, 0.25, 0.5, greenChannel, "stands as well");
}

// --- what a picture costs, and what is refused

TEST(RenderTest, PictureIsAsLargeAsAsked)
{
    const Studio studio(threeCubes(""));
    const Image small = studio.picture({"--size", "1x1"});
    EXPECT_EQ(1, small.width());
    EXPECT_EQ(1, small.height());
    ASSERT_EQ(succeeded, run({"render", studio.document(), "-o", studio.output()}).status);
    const Image usual = readPng(studio.output());
    EXPECT_EQ(960, usual.width());
    EXPECT_EQ(640, usual.height());
}

class RenderUsageTest : public testing::TestWithParam<Case<Words, const char*>> {};

TEST_P(RenderUsageTest, IsOneLineAndNoPicture)
{
    const Studio studio(threeCubes(cameraNode("plain", "0 0 7")));
    Words arguments = {"render", studio.document()};
    if (GetParam().given[0] != "-o") {
        arguments.insert(arguments.end(), {"-o", studio.output()});
    }
    arguments.insert(arguments.end(), GetParam().given.begin(), GetParam().given.end());
    const ProcessResult result = run(arguments);
    EXPECT_EQ(usageError, result.status);
    EXPECT_TRUE(isOneLine(result.errors)) << result.errors;
    EXPECT_TRUE(contains(result.errors, GetParam().expected)) << result.errors;
    EXPECT_EQ(1u, entriesOf(studio.folder())) << "the document alone";
}

INSTANTIATE_ROWS(Options, RenderUsageTest, {"SizeOfZero", {"--size", "0x100"}, "--size"},
                 {"SizeTooLarge", {"--size", "100000x100000"}, "--size"},
                 {"SizeBeyondNumbers", {"--size", "99999999999x5"}, "--size"},
                 {"SizeWithoutHeight", {"--size", "100"}, "--size"}, {"SizeBelowZero", {"--size", "-5x100"}, "--size"},
                 {"SizeWithMore", {"--size", "10x10x10"}, "--size"}, {"NoSuchCamera", {"--camera", "1"}, "camera 1"},
                 {"CameraBelowZero", {"--camera", "-1"}, "camera"}, {"NoAxis", {"--up", "w"}, "--up"},
                 {"NoColor", {"--background", "red"}, "--background"}, {"NoLights", {"--lights", "moon"}, "--lights"},
                 {"NoTime", {"--time", "nan"}, "--time"}, {"NoFrames", {"--frames", "0"}, "--frames"},
                 {"TooManyFrames", {"--frames", "1000000"}, "--frames"},
                 {"NoRate", {"--frames", "2", "--fps", "0"}, "--fps"}, {"RateAlone", {"--fps", "5"}, "--frames"},
                 {"FileAndSheet", {"--sheet", "."}, "--sheet"}, {"NoPngName", {"-o", "picture.jpg"}, ".png"});

TEST(RenderTest, NothingToDrawIsOneLineAndNoPicture)
{
    const std::string documents[] = {ColladaBuilder().addScene("<node id='a'/>").text(),
                                     ColladaBuilder(camera("eye")).addScene(cameraNode("eye", "0 0 4")).text(),
                                     "no document"};
    for (const std::string& document : documents) {
        const Studio studio(document);
        const Drawn drawn = studio.draw();
        EXPECT_EQ(failed, drawn.result.status);
        EXPECT_TRUE(isOneLine(drawn.result.errors)) << drawn.result.errors;
        EXPECT_EQ(1u, entriesOf(studio.folder())) << "the document alone";
    }
}

TEST(RenderTest, MachineWithoutDriverGetsOneLineAndNoPicture)
{
    const Studio studio(threeCubes(""));
    writeFile(studio.output(), "the picture before");
    ProcessOptions options;
    options.environment = {"__EGL_VENDOR_LIBRARY_FILENAMES=/nowhere/driver.json", "DISPLAY", "WAYLAND_DISPLAY"};
    const ProcessResult result = run({"render", studio.document(), "-o", studio.output()}, options);
    EXPECT_EQ(failed, result.status);
    EXPECT_TRUE(isOneLine(result.errors)) << result.errors;
    EXPECT_TRUE(contains(result.errors, "EGL")) << result.errors;
    EXPECT_EQ("the picture before", contentOf(studio.output()));
    EXPECT_EQ(2u, entriesOf(studio.folder())) << "no half a picture";
}

TEST(RenderTest, OutputThatCannotBeWrittenIsOneLine)
{
    const Studio studio(threeCubes(""));
    std::filesystem::create_directory(studio.folder() / "folder.png");
    for (const std::string& output :
         {(studio.folder() / "nowhere" / "picture.png").string(), (studio.folder() / "folder.png").string()}) {
        const ProcessResult result =
            run({"render", studio.document(), "-o", output, "--size", "16x16", "--lights", "head"});
        EXPECT_EQ(failed, result.status);
        EXPECT_TRUE(isOneLine(result.errors)) << result.errors;
    }
    EXPECT_EQ(2u, entriesOf(studio.folder()));
    EXPECT_EQ(0u, entriesOf(studio.folder() / "folder.png"));
}

// --- sequences

std::string movingCube()
{
    const std::string animation =
        "<library_animations><animation id='moving'>" + source("times", "0 4", 2, 1) +
        source("places", "-2 0 0 6 0 0", 2, 3) +
        "<sampler id='s'><input semantic='INPUT' source='#times'/><input semantic='OUTPUT' source='#places'/></sampler>"
        "<channel source='#s' target='a/place'/></animation></library_animations>";
    ColladaBuilder builder(colors()[0].xml() + plainCube("cube", "red") + camera("eye") + animation);
    builder.addScene("<node id='a'><translate sid='place'>-2 0 0</translate>" + shown("cube", {colors()[0]}) +
                     "</node>" + cameraNode("eye", "0 0 5"));
    return builder.text();
}

TEST(RenderTest, SequenceIsOnePictureForEachStepInTime)
{
    const Studio studio(movingCube());
    const Drawn drawn = studio.draw({"--frames", "3", "--fps", "1"});
    EXPECT_EQ(succeeded, drawn.result.status);
    EXPECT_EQ("", drawn.result.errors);
    EXPECT_EQ("", drawn.result.output) << "no bar into a pipe";
    EXPECT_FALSE(drawn.hasPicture) << "the pictures are numbered";
    EXPECT_EQ(4u, entriesOf(studio.folder()));
    // At -2, 0 and 2 with the front at distance 4: a quarter of the width, the middle and three quarters.
    for (int frame = 0; frame < 3; ++frame) {
        const Image image = readPng((studio.folder() / ("picture-000" + std::to_string(frame) + ".png")).string());
        for (int place = 0; place < 3; ++place) {
            EXPECT_EQ(isMostly(image.part(0.25 + 0.25 * place, 0.5), redChannel), place == frame)
                << "frame " << frame << ", place " << place;
        }
    }
}

TEST(RenderTest, SequenceShowsABarOnATerminal)
{
    if (!testSupport::hasTerminals()) {
        GTEST_SKIP() << "no pseudo-terminals here";
    }
    const Studio studio(movingCube());
    ProcessOptions options;
    options.hasTerminal = true;
    const ProcessResult result =
        run({"render", studio.document(), "-o", studio.output(), "--size", "16x16", "--frames", "2"}, options);
    EXPECT_EQ(succeeded, result.status);
    EXPECT_TRUE(contains(result.output, "\r[####################....................] 1 of 2 pictures"))
        << result.output;
    EXPECT_TRUE(contains(result.output, "\r[########################################] 2 of 2 pictures\r\n"))
        << result.output;
}

// --- sheets

TEST(RenderTest, SheetHoldsAllDocumentsBelowAFolder)
{
    const Studio studio(movingCube());
    std::filesystem::create_directory(studio.folder() / "more");
    writeFile(studio.folder() / "more" / "a.DAE", "no document");
    writeFile(studio.folder() / "more" / "b.dae", threeCubes(cameraNode("plain", "0 0 7")));
    writeFile(studio.folder() / "more" / "notes.txt", "no document, and not named like one");
    const std::string sheet = (studio.folder() / "sheet.png").string();
    const ProcessResult result = run({"render", "--sheet", studio.folder().string(), "-o", sheet, "--size", "100x100",
                                      "--background", "000000", "--lights", "head"});
    EXPECT_EQ(failed, result.status) << "one has no picture";
    EXPECT_TRUE(isOneLine(result.errors)) << result.errors;
    EXPECT_TRUE(contains(result.errors, "a.DAE"));
    const Image image = readPng(sheet);
    // Two columns and two rows of 100 by 100, with gaps of 8 and 20 below each for its name.
    ASSERT_EQ(8 + 2 * 108, image.width());
    ASSERT_EQ(8 + 2 * 128, image.height());
    EXPECT_TRUE(isMostly(image.at(8 + 25, 8 + 50), redChannel)) << "document.dae";
    const Pixel fault = image.at(8 + 108 + 50, 8 + 90);
    EXPECT_TRUE(fault[0] > 40 && fault[0] < 120 && fault[1] < fault[0]) << "more/a.DAE";
    EXPECT_TRUE(isMostly(image.at(8 + 75, 8 + 128 + 50), redChannel)) << "more/b.dae";
    EXPECT_TRUE(isMostly(image.at(8 + 25, 8 + 128 + 50), greenChannel)) << "more/b.dae";
    int written = 0;
    for (int x = 8; x < 108; ++x) {
        for (int y = 108; y < 128; ++y) {
            written += image.at(x, y)[0] > 200 ? 1 : 0;
        }
    }
    EXPECT_GT(written, 50) << "the name of the first document";
}

// --- the bundled document

// The picture in the README is what the tool draws.
TEST(RenderTest, LighthouseLooksAsItIsShown)
{
    const TemporaryFile file("", "note.txt");
    const std::string output = (file.folder() / "lighthouse.png").string();
    const ProcessResult result = run({"render", SOURCE_FOLDER "/data/lighthouse.dae", "-o", output, "--time", "1.7"});
    EXPECT_EQ(succeeded, result.status);
    EXPECT_EQ("", result.errors);
    const Image image = readPng(output);
    const ImageDifference found = difference(image, readPng(SOURCE_FOLDER "/docs/lighthouse.png"));
    EXPECT_LT(found.mean, 2.0);
    EXPECT_LT(found.strayPart, 0.01);
    // Yellow is at the upper hoist of the flag and black below it, whatever was drawn before.
    EXPECT_GT(image.at(493, 38)[0], 100);
    EXPECT_LT(image.at(493, 56)[0], 80);
}

} // namespace
