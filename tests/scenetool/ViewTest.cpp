#include "Image.h"
#include "Scenetool.h"

#include "support/ColladaBuilder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace {

using namespace testSupport;

const std::string lighthouse = SOURCE_FOLDER "/data/lighthouse.dae";

ProcessResult run(const Words& arguments, const ProcessOptions& options = ProcessOptions())
{
    return runProcess(arguments, drawing(options));
}

TEST(ViewTest, WithoutADisplayItIsOneLine)
{
    // Wayland would complain if the folder of the login session is missing.
    for (const char* const runtimeFolder : {"XDG_RUNTIME_DIR", "XDG_RUNTIME_DIR=/nowhere"}) {
        ProcessOptions options;
        options.environment = {"DISPLAY", "WAYLAND_DISPLAY", runtimeFolder};
        const ProcessResult result = run({SCENETOOL_PROGRAM, "view", lighthouse}, options);
        EXPECT_EQ(failed, result.status);
        EXPECT_EQ(1, std::count(result.errors.begin(), result.errors.end(), '\n')) << result.errors;
        EXPECT_NE(std::string::npos, result.errors.find("window")) << result.errors;
        EXPECT_EQ("", result.output);
    }
}

// A window with the lighthouse on a separate display, and the pictures saved from it.
class Session {
public:
    // Each "picture" in the actions presses P and waits for the file.
    explicit Session(const Words& actions) : m_place("", "note.txt")
    {
        Words arguments = {"/usr/bin/env",    "-C",      m_place.folder().string(), VIEW_SESSION,
                           SCENETOOL_PROGRAM, lighthouse};
        int pictures = 0;
        for (const std::string& action : actions) {
            if (action == "picture") {
                arguments.emplace_back("key p");
                arguments.push_back("wait " + path(++pictures));
            } else {
                arguments.push_back(action);
            }
        }
        arguments.emplace_back("key q");
        m_result = run(arguments);
    }

    const ProcessResult& result() const { return m_result; }
    Image picture(int number) const { return readPng(path(number)); }

private:
    std::string path(int number) const
    {
        return (m_place.folder() / ("lighthouse-" + std::to_string(number) + ".png")).string();
    }

    TemporaryFile m_place;
    ProcessResult m_result;
};

Image rendered(const Words& options)
{
    const TemporaryFile place("", "note.txt");
    const std::string output = (place.folder() / "picture.png").string();
    Words arguments = {SCENETOOL_PROGRAM, "render",  lighthouse,     "-o",    output,
                       "--size",          "400x300", "--background", "000000"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    EXPECT_EQ(succeeded, run(arguments).status);
    return readPng(output);
}

void expectSame(const Image& a, const Image& b, const std::string& what)
{
    EXPECT_LT(difference(a, b).mean, 0.5) << what;
    EXPECT_LT(difference(a, b).strayPart, 0.005) << what;
}

// A square of one emission color that fills the view.
std::string glowingSquare(const std::string& color)
{
    ColladaBuilder builder(
        "<library_cameras><camera id='eye'><optics><technique_common><perspective><yfov>60</yfov><znear>0.1</znear>"
        "<zfar>10</zfar></perspective></technique_common></optics></camera></library_cameras><library_effects>"
        "<effect id='e'><profile_COMMON><technique sid='t'><constant><emission><color>" +
        color +
        " 1</color></emission></constant></technique></profile_COMMON></effect></library_effects><library_materials>"
        "<material id='m'><instance_effect url='#e'/></material></library_materials><library_geometries>"
        "<geometry id='g'><mesh><source id='p'><float_array id='pa' count='9'>-9 -9 0 9 -9 0 0 9 0</float_array>"
        "<technique_common><accessor source='#pa' count='3' stride='3'><param name='X' type='float'/>"
        "<param name='Y' type='float'/><param name='Z' type='float'/></accessor></technique_common></source>"
        "<vertices id='v'><input semantic='POSITION' source='#p'/></vertices><triangles material='m' count='1'>"
        "<input semantic='VERTEX' source='#v' offset='0'/><p>0 1 2</p></triangles></mesh></geometry>"
        "</library_geometries>");
    builder.addScene("<node id='n'><translate>0 0 -2</translate><instance_geometry url='#g'><bind_material>"
                     "<technique_common><instance_material symbol='m' target='#m'/></technique_common></bind_material>"
                     "</instance_geometry></node><node id='c'><translate>0 0 0</translate>"
                     "<instance_camera url='#eye'/></node>");
    return builder.text();
}

void write(const std::filesystem::path& path, const std::string& text)
{
    std::ofstream file(path, std::ios::binary);
    file << text;
    ASSERT_TRUE(file.flush());
}

// A folder of documents, and a window that begins with one of them.
class FolderSession {
public:
    FolderSession() : m_place("", "note.txt") {}

    std::filesystem::path path(const std::string& name) const { return m_place.folder() / name; }
    void add(const std::string& name, const std::string& color) const { write(path(name), glowingSquare(color)); }
    ProcessResult view(const std::string& document, const Words& actions) const
    {
        Words arguments = {"/usr/bin/env",         "-C", m_place.folder().string(), VIEW_SESSION, SCENETOOL_PROGRAM,
                           path(document).string()};
        arguments.insert(arguments.end(), actions.begin(), actions.end());
        arguments.emplace_back("key q");
        return run(arguments);
    }
    std::string waitFor(const std::string& picture) const { return "wait " + path(picture).string(); }
    Pixel middleOf(const std::string& picture) const { return readPng(path(picture).string()).part(0.5, 0.5); }

private:
    TemporaryFile m_place;
};

int litPixels(const Image& image)
{
    int lit = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            lit += image.at(x, y) == Pixel{0, 0, 0} ? 0 : 1;
        }
    }
    return lit;
}

TEST(ViewTest, ShowsTheCamerasThenAllAndStarts)
{
    const Session session({"picture", "key c", "picture", "key c", "picture"});
    EXPECT_EQ(succeeded, session.result().status) << session.result().errors;
    EXPECT_NE(std::string::npos, session.result().output.find("lighthouse-3.png")) << session.result().output;
    ASSERT_EQ(400, session.picture(1).width());
    ASSERT_EQ(300, session.picture(1).height());
    expectSame(session.picture(1), rendered({}), "the camera");
    expectSame(session.picture(2), rendered({"--framed"}), "behind the last camera all is shown");
    expectSame(session.picture(3), session.picture(1), "and then the first again");
}

TEST(ViewTest, KeysAndTheLowerEdgeGoThroughTime)
{
    // Ten steps of 0.1 seconds; then half of the longest animation, which takes 8.5 seconds.
    Words actions(10, "key Right");
    actions.insert(actions.end(), {"picture", "mousemove --sync 200 297", "click 1", "picture"});
    const Session session(actions);
    EXPECT_EQ(succeeded, session.result().status) << session.result().errors;
    expectSame(session.picture(1), rendered({"--time", "1"}), "a second");
    expectSame(session.picture(2), rendered({"--time", "4.25"}), "half of the time");
    EXPECT_GT(difference(session.picture(1), session.picture(2)).mean, 0.1) << "the two are not the same anyway";
}

TEST(ViewTest, SpacePlaysAndHalts)
{
    // The picture after each key shows that the key has arrived, however busy the machine is.
    const Session session(
        {"picture", "key space", "picture", "sleep 1.5", "picture", "key space", "picture", "sleep 0.5", "picture"});
    EXPECT_EQ(succeeded, session.result().status) << session.result().errors;
    EXPECT_GT(difference(session.picture(2), session.picture(3)).mean, 0.02) << "time went on";
    expectSame(session.picture(4), session.picture(5), "halted");
}

TEST(ViewTest, MouseTurnsMovesAndZooms)
{
    const Session session({"key f", "picture", "mousedown 1", "mousemove_relative --sync 50 0", "mouseup 1", "picture",
                           "key f", "mousedown 3", "mousemove_relative --sync -- -50 0", "mouseup 3", "picture",
                           "key f", "click 4", "click 4", "picture", "key f", "picture"});
    EXPECT_EQ(succeeded, session.result().status) << session.result().errors;
    const Image all = session.picture(1);
    expectSame(all, rendered({"--framed"}), "all");
    EXPECT_GT(difference(all, session.picture(2)).mean, 1.0) << "turned"; // much of the sea looks alike
    // The picture shifted left by 50 pixels is about the same as before.
    const Image moved = session.picture(3);
    Image back(400, 300);
    Image before(400, 300);
    for (int y = 0; y < 300; ++y) {
        for (int x = 50; x < 400; ++x) {
            back.at(x, y) = moved.at(x - 50, y);
            before.at(x, y) = all.at(x, y);
        }
    }
    EXPECT_LT(difference(back, before).mean, difference(moved, all).mean / 2.0) << "moved";
    EXPECT_GT(litPixels(session.picture(4)), litPixels(all) * 5 / 4) << "zoomed";
    expectSame(session.picture(5), all, "all again");
}

TEST(ViewTest, WiresComeOverFacesAndThenAlone)
{
    const Session session({"picture", "key w", "picture", "key w", "picture", "key w", "picture"});
    EXPECT_EQ(succeeded, session.result().status) << session.result().errors;
    EXPECT_GT(difference(session.picture(1), session.picture(2)).mean, 0.5) << "edges";
    EXPECT_GT(litPixels(session.picture(2)), litPixels(session.picture(1)) * 9 / 10) << "over faces";
    EXPECT_LT(litPixels(session.picture(3)), litPixels(session.picture(1)) / 2) << "alone";
    EXPECT_GT(litPixels(session.picture(3)), 100);
    expectSame(session.picture(4), session.picture(1), "faces again");
}

TEST(ViewTest, KeysAreShownAndHidden)
{
    const Session session({"picture", "key h", "picture", "key h", "picture"});
    EXPECT_EQ(succeeded, session.result().status) << session.result().errors;
    EXPECT_GT(difference(session.picture(1), session.picture(2)).strayPart, 0.1) << "text on a dark ground";
    expectSame(session.picture(3), session.picture(1), "hidden again");
}

TEST(ViewTest, GridIsShownAndHidden)
{
    const Session session({"key f", "picture", "key g", "picture", "key g", "picture"});
    EXPECT_EQ(succeeded, session.result().status) << session.result().errors;
    EXPECT_GT(difference(session.picture(1), session.picture(2)).mean, 0.02) << "lines";
    expectSame(session.picture(3), session.picture(1), "hidden again");
}

TEST(ViewTest, NumbersLookThroughTheirCameras)
{
    const Session session({"picture", "key f", "picture", "key 1", "picture", "key 2", "picture"});
    EXPECT_EQ(succeeded, session.result().status) << session.result().errors;
    EXPECT_GT(difference(session.picture(1), session.picture(2)).mean, 1.0);
    expectSame(session.picture(3), session.picture(1), "the first camera");
    expectSame(session.picture(4), session.picture(1), "there is no second");
}

TEST(ViewTest, NAndBGoThroughTheFolderAndAroundItsEnds)
{
    const FolderSession session;
    session.add("a.dae", "1 0 0");
    session.add("b.dae", "0 1 0");
    session.add("c.dae", "0 0 1");
    const ProcessResult result =
        session.view("a.dae", {"key n", "key p", session.waitFor("b-1.png"), "key b", "key b", "key p",
                               session.waitFor("c-1.png"), "key n", "key p", session.waitFor("a-1.png")});
    EXPECT_EQ(result.status, succeeded) << result.errors;
    EXPECT_EQ(session.middleOf("b-1.png"), (Pixel{0, 255, 0}));
    EXPECT_EQ(session.middleOf("c-1.png"), (Pixel{0, 0, 255}));
    EXPECT_EQ(session.middleOf("a-1.png"), (Pixel{255, 0, 0}));
}

// The viewer checks the file twice a second, before it waits for the next key, so the second picture is taken after a
// check.
TEST(ViewTest, DocumentThatChangesIsShownAnew)
{
    const FolderSession session;
    session.add("a.dae", "1 0 0");
    session.add("new.txt", "0 1 0");
    const ProcessResult result =
        session.view("a.dae", {"key p", session.waitFor("a-1.png"),
                               "copy " + session.path("new.txt").string() + " " + session.path("a.dae").string(),
                               "sleep 1.5", "key p", session.waitFor("a-2.png"), "key p", session.waitFor("a-3.png")});
    EXPECT_EQ(result.status, succeeded) << result.errors;
    EXPECT_EQ(session.middleOf("a-1.png"), (Pixel{255, 0, 0}));
    EXPECT_EQ(session.middleOf("a-3.png"), (Pixel{0, 255, 0}));
}

TEST(ViewTest, WithoutADocumentItIsOneLine)
{
    const ProcessResult result = run({SCENETOOL_PROGRAM, "view", "/nowhere/scene.dae"});
    EXPECT_EQ(failed, result.status);
    EXPECT_EQ(1, std::count(result.errors.begin(), result.errors.end(), '\n')) << result.errors;
    EXPECT_EQ(usageError, run({SCENETOOL_PROGRAM, "view"}).status);
    EXPECT_EQ(usageError, run({SCENETOOL_PROGRAM, "view", lighthouse, "--size", "0x0"}).status);
}

} // namespace
