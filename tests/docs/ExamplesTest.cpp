#include "DrawnDocuments.h"
#include "Pixmap.h"

#include "support/ColladaBuilder.h"
#include "support/Process.h"
#include "support/Rows.h"
#include "support/Words.h"

#include <array>
#include <fstream>
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

using namespace docsTests;
using testSupport::ColladaBuilder;
using testSupport::ProcessResult;
using testSupport::runProcess;
using testSupport::TemporaryFile;

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
    // Without source line numbers; the message about the light without a color is removed.
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

#ifdef DRAW_PROGRAM

constexpr int cannotDraw = 77;

const char* const target = "<extra><technique profile='FCOLLADA'><target>#middle</target></technique></extra>";

// Without the leak checker, because drivers keep memory until the process exits.
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

// The colors at four places of the picture.
struct Sight : testSupport::Row {
    const char* viewer;
    const char* extra;
    std::array<std::array<int, 3>, 4> colors; ///< upper right, upper left, lower right, lower left
};

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
    const Pixmap picture(file);
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

INSTANTIATE_ROWS(
    Cameras, DrawExampleTest, {"WithATarget", "<translate>0 0 5</translate>", target, {red, nothing, nothing, green}},
    {"AlongItsNode", "<translate>0 0 5</translate>", "", {red, nothing, nothing, green}},
    {"FromBehind", "<translate>0 0 -5</translate><rotate>0 1 0 180</rotate>", "", {nothing, blue, green, nothing}});

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

// Two units right and up in the first two pictures, two units left in the third.
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
        const Pixmap picture((document.folder() / ("picture-000" + std::to_string(frame) + ".ppm")).string());
        expectColor(frame < 2 ? red : nothing, picture.at(240 + 110, 240 - 110), "right");
        expectColor(frame < 2 ? nothing : red, picture.at(240 - 84, 240 - 110), "left");
    }
}

// The light at the eye shines directly on the middle of the picture.
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
    expectColor({0x40, 0x80, 0xC0}, Pixmap(file).at(240, 240), "in the middle");
}

#endif

} // namespace
