#include "support/ColladaBuilder.h"
#include "support/Process.h"
#include "support/Words.h"

#include <array>
#include <cstddef>
#include <fstream>
#include <ostream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

using testSupport::ColladaBuilder;
using testSupport::ProcessResult;
using testSupport::runProcess;
using testSupport::TemporaryFile;

#ifdef DRAW_PROGRAM

constexpr int cannotDraw = 77;

struct Color {
    int red;
    int green;
    int blue;
};

/// A picture as the example writes it.
class Picture {
public:
    explicit Picture(const std::string& path)
    {
        std::ifstream file(path, std::ios::binary);
        std::string magic;
        int most = 0;
        file >> magic >> m_width >> m_height >> most;
        file.get();
        if (magic != "P6" || most != 255 || m_width <= 0 || m_height <= 0) {
            throw std::runtime_error("no picture in " + path);
        }
        m_bytes.resize(std::size_t(m_width) * std::size_t(m_height) * 3);
        file.read(m_bytes.data(), static_cast<std::streamsize>(m_bytes.size()));
        if (!file) {
            throw std::runtime_error("the picture is cut: " + path);
        }
    }

    int width() const { return m_width; }
    int height() const { return m_height; }
    /// Of a column from the left and a row from the top.
    Color at(int column, int row) const
    {
        const std::size_t start = (std::size_t(row) * std::size_t(m_width) + std::size_t(column)) * 3;
        const auto byte = [this, start](std::size_t i) {
            return int(static_cast<unsigned char>(m_bytes.at(start + i)));
        };
        return {byte(0), byte(1), byte(2)};
    }

private:
    int m_width = 0;
    int m_height = 0;
    std::vector<char> m_bytes;
};

std::string glow(const std::string& name, const std::string& color)
{
    return "<effect id='" + name + "-effect'><profile_COMMON><technique sid='t'><phong><emission><color>" + color +
           "</color></emission><diffuse><color>0 0 0 1</color></diffuse></phong></technique></profile_COMMON></effect>";
}

// A triangle that faces +z, of the size 1, its lower left corner at its origin.
std::string corner(const std::string& name)
{
    return "<geometry id='" + name + "'><mesh><source id='" + name + "-s'><float_array id='" + name +
           "-a' count='9'>0 0 0 1 0 0 0 1 0</float_array><technique_common><accessor source='#" + name +
           "-a' count='3' stride='3'><param name='X' type='float'/><param name='Y' type='float'/>"
           "<param name='Z' type='float'/></accessor></technique_common></source><vertices id='" +
           name + "-v'><input semantic='POSITION' source='#" + name + "-s'/></vertices><triangles material='" + name +
           "' count='1'><input semantic='VERTEX' source='#" + name +
           "-v' offset='0'/><p>0 1 2</p></triangles></mesh></geometry>";
}

std::string shown(const std::string& name, const std::string& place)
{
    return "<node id='" + name + "-node'><translate sid='place'>" + place + "</translate><instance_geometry url='#" +
           name + "'><bind_material><technique_common><instance_material symbol='" + name + "' target='#" + name +
           "-material'/></technique_common></bind_material></instance_geometry></node>";
}

std::string material(const std::string& name)
{
    return "<material id='" + name + "-material'><instance_effect url='#" + name + "-effect'/></material>";
}

const char* const target = "<extra><technique profile='FCOLLADA'><target>#middle</target></technique></extra>";

// Seen by a camera on a node of that transform, at a right angle, so that at a distance of 5 the picture is 10 wide and
// 10 high. From the front there is a red triangle to the right and above, a green one to the left and below, and a blue
// one behind the red one.
std::string threeTriangles(const std::string& viewer, const std::string& extra)
{
    return ColladaBuilder(
               "<library_cameras><camera id='eye'><optics><technique_common><perspective><xfov>90</xfov><yfov>90</yfov>"
               "<znear>1</znear><zfar>20</zfar></perspective></technique_common></optics>" +
               extra + "</camera></library_cameras><library_effects>" + glow("red", "1 0 0 1") +
               glow("green", "0 1 0 1") + glow("blue", "0 0 1 1") + "</library_effects><library_materials>" +
               material("red") + material("green") + material("blue") + "</library_materials><library_geometries>" +
               corner("red") + corner("green") + corner("blue") + "</library_geometries>")
        .addScene("<node id='middle'><translate>0 0 0</translate></node><node id='viewer'>" + viewer +
                  "<instance_camera url='#eye'/></node>" + shown("red", "2 2 0") + shown("green", "-2 -2 0") +
                  shown("blue", "2 2 -0.1"))
        .text();
}

// What a camera sees from (0, 0, 5) along -z, with a picture 10 wide and 10 high at z = 0.
std::string seenFromTheFront(const std::string& libraries, const std::string& nodes)
{
    return ColladaBuilder("<library_cameras><camera id='eye'>" +
                          testSupport::optics("<xfov>90</xfov><yfov>90</yfov><znear>1</znear><zfar>20</zfar>") +
                          "</camera></library_cameras>" + libraries)
        .addScene("<node id='viewer'><translate>0 0 5</translate><instance_camera url='#eye'/></node>" + nodes)
        .text();
}

std::string materialAndMesh(const std::string& name, const std::string& effectLibrary)
{
    return effectLibrary + "<library_materials>" + material(name) + "</library_materials><library_geometries>" +
           corner(name) + "</library_geometries>";
}

// Without the leak checker, since drivers keep what they have until the process ends.
ProcessResult draw(const std::string& document, const std::string& picture, const std::vector<std::string>& times = {})
{
    std::vector<std::string> arguments = {DRAW_PROGRAM, document, picture};
    arguments.insert(arguments.end(), times.begin(), times.end());
    return runProcess(arguments, {false, {"EGL_LOG_LEVEL=fatal", "ASAN_OPTIONS=detect_leaks=0"}});
}

void expectColor(const std::array<int, 3>& expected, const Color& color, const char* what)
{
    EXPECT_NEAR(expected[0], color.red, 1) << what;
    EXPECT_NEAR(expected[1], color.green, 1) << what;
    EXPECT_NEAR(expected[2], color.blue, 1) << what;
}

// What a camera sees at four places of the picture.
struct Sight {
    const char* name;
    const char* viewer;
    const char* extra;
    std::array<std::array<int, 3>, 4>
        colors; ///< above to the right and to the left, below to the right and to the left
};

void PrintTo(const Sight& sight, std::ostream* out)
{
    *out << sight.name;
}

constexpr std::array<int, 3> nothing = {153, 191, 230};
constexpr std::array<int, 3> red = {255, 0, 0};
constexpr std::array<int, 3> green = {0, 255, 0};
constexpr std::array<int, 3> blue = {0, 0, 255};

class DrawExampleTest : public testing::TestWithParam<Sight> {};

TEST_P(DrawExampleTest, ShowsThingsWhereTheyAre)
{
    const TemporaryFile document(threeTriangles(GetParam().viewer, GetParam().extra));
    const std::string file = (document.folder() / "picture.ppm").string();
    const ProcessResult result = draw(document.path(), file);
    if (result.status == cannotDraw) {
        GTEST_SKIP() << result.errors;
    }
    ASSERT_EQ(0, result.status) << result.errors;
    const Picture picture(file);
    ASSERT_EQ(480, picture.width());
    ASSERT_EQ(480, picture.height());
    // 48 pixels a unit, from the middle: a quarter of a unit into a triangle on the right or above it, three quarters
    // into one on the left or below.
    const auto& colors = GetParam().colors;
    expectColor(colors[0], picture.at(240 + 110, 240 - 110), "above, right");
    expectColor(colors[1], picture.at(240 - 110, 240 - 110), "above, left");
    expectColor(colors[2], picture.at(240 + 84, 240 + 84), "below, right");
    expectColor(colors[3], picture.at(240 - 84, 240 + 84), "below, left");
    expectColor(nothing, picture.at(240 + 138, 240 - 138), "behind the long side");
}

INSTANTIATE_TEST_SUITE_P(
    Cameras, DrawExampleTest,
    testing::Values(Sight{"WithATarget", "<translate>0 0 5</translate>", target, {red, nothing, nothing, green}},
                    Sight{"AlongItsNode", "<translate>0 0 5</translate>", "", {red, nothing, nothing, green}},
                    Sight{"FromBehind",
                          "<translate>0 0 -5</translate><rotate>0 1 0 180</rotate>",
                          "",
                          {nothing, blue, green, nothing}}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(DrawExampleTest, SaysWhyThereIsNoPicture)
{
    const TemporaryFile document(ColladaBuilder().addScene("<node id='n'/>").text());
    const ProcessResult result = draw(document.path(), (document.folder() / "picture.ppm").string());
    EXPECT_EQ(1, result.status);
    EXPECT_EQ("the document has no camera\n", result.errors);
}

TEST(DrawExampleTest, SaysHowItIsCalled)
{
    const ProcessResult result = runProcess({DRAW_PROGRAM});
    EXPECT_EQ(2, result.status);
    EXPECT_EQ("usage: draw FILE.dae OUT.ppm [SECONDS [FRAMES]]\n", result.errors);
}

// Two units to the right and above in the first two pictures, two units to the left in the third.
TEST(DrawExampleTest, DrawsAPictureForEachTwentyFifthOfASecond)
{
    const TemporaryFile document(seenFromTheFront(
        "<library_animations>" +
            testSupport::curve("move", "red-node/place", "0 0.05 0.07 0.2", "2 2 0 2 2 0 -2 2 0 -2 2 0") +
            "</library_animations>" +
            materialAndMesh("red", "<library_effects>" + glow("red", "1 0 0 1") + "</library_effects>"),
        shown("red", "2 2 0")));
    const ProcessResult result = draw(document.path(), (document.folder() / "picture.ppm").string(), {"0", "3"});
    if (result.status == cannotDraw) {
        GTEST_SKIP() << result.errors;
    }
    ASSERT_EQ(0, result.status) << result.errors;
    for (const int frame : {0, 1, 2}) {
        SCOPED_TRACE(frame);
        const Picture picture((document.folder() / ("picture-000" + std::to_string(frame) + ".ppm")).string());
        expectColor(frame < 2 ? red : nothing, picture.at(240 + 110, 240 - 110), "right");
        expectColor(frame < 2 ? nothing : red, picture.at(240 - 84, 240 - 110), "left");
    }
}

// The light at the eye shines straight on the middle of the picture.
TEST(DrawExampleTest, TakesTheColorOfATexture)
{
    const std::string effect =
        "<library_images><image id='i'><init_from>one.ppm</init_from></image></library_images><library_effects><effect "
        "id='red-effect'><profile_COMMON><newparam sid='f'><surface type='2D'><init_from>i</init_from></surface>"
        "</newparam><newparam sid='s'><sampler2D><source>f</source></sampler2D></newparam><technique sid='t'><phong>"
        "<emission><color>0 0 0 1</color></emission><diffuse><texture texture='s' texcoord='UV'/></diffuse></phong>"
        "</technique></profile_COMMON></effect></library_effects>";
    const TemporaryFile document(seenFromTheFront(materialAndMesh("red", effect), shown("red", "-0.25 -0.25 0")));
    std::ofstream(document.folder() / "one.ppm") << "P6\n1 1\n255\n@\x80\xC0";
    const std::string file = (document.folder() / "picture.ppm").string();
    const ProcessResult result = draw(document.path(), file);
    if (result.status == cannotDraw) {
        GTEST_SKIP() << result.errors;
    }
    ASSERT_EQ(0, result.status) << result.errors;
    expectColor({0x40, 0x80, 0xC0}, Picture(file).at(240, 240), "in the middle");
}

#endif

TEST(LoggingExampleTest, SendsTheLinesToTheHost)
{
    const TemporaryFile document(
        ColladaBuilder("<library_lights><light id='l'><technique_common><point/></technique_common></light>"
                       "</library_lights>")
            .addScene("<node id='n'><instance_light url='#nowhere'/></node>")
            .text());
    const ProcessResult result = runProcess({EXAMPLES_FOLDER "/logging", document.path(), "/no/such.dae"});
    EXPECT_EQ(0, result.status);
    EXPECT_EQ("", result.errors);
    // Without the numbers of the source lines; the light without a color is silenced.
    std::string lines;
    std::istringstream output(result.output);
    for (std::string line; std::getline(output, line);) {
        const std::size_t number = line.find_first_of("0123456789");
        const bool isNumbered = line.rfind("warning", 0) == 0;
        lines += isNumbered ? line.substr(0, number) + line.substr(line.find(' ', number) + 1) : line;
        lines += '\n';
    }
    EXPECT_EQ("warning | libVideo.visualScene | domInstance_light does not point to a light element\n"
              "info | host | loaded " +
                  document.path() +
                  "\n"
                  "warning | libVideo.scene | Collada file does not exist /no/such.dae\n"
                  "info | host | gave up /no/such.dae\n",
              lines);
}

} // namespace
