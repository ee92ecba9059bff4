#include "Image.h"

#include "support/ColladaBuilder.h"
#include "support/Process.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

using testSupport::ColladaBuilder;
using testSupport::difference;
using testSupport::Image;
using testSupport::Pixel;
using testSupport::ProcessOptions;
using testSupport::ProcessResult;
using testSupport::readPng;
using testSupport::TemporaryFile;

namespace {

using Words = std::vector<std::string>;

constexpr int succeeded = 0;
constexpr int failed = 1;
constexpr int usageError = 2;

const std::string lighthouse = SOURCE_FOLDER "/data/lighthouse.dae";

ProcessResult run(const Words& arguments, ProcessOptions options = ProcessOptions())
{
    // Drivers keep memory to the end of the process, which is no leak of the tool's.
    options.environment.emplace_back("ASAN_OPTIONS=detect_leaks=0:strict_string_checks=1:allocator_may_return_null=1");
    return testSupport::runProcess(arguments, options);
}

// A window with the lighthouse on a display of its own, and the pictures that are written from there.
class Session {
public:
    // Each "picture" among the actions presses P and waits for the file.
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
    EXPECT_EQ(run(arguments).status, succeeded);
    return readPng(output);
}

void expectSame(const Image& a, const Image& b, const std::string& what)
{
    EXPECT_LT(difference(a, b).mean, 0.5) << what;
    EXPECT_LT(difference(a, b).strayPart, 0.005) << what;
}

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
    EXPECT_EQ(session.result().status, succeeded) << session.result().errors;
    EXPECT_NE(session.result().output.find("lighthouse-3.png"), std::string::npos) << session.result().output;
    ASSERT_EQ(session.picture(1).width(), 400);
    ASSERT_EQ(session.picture(1).height(), 300);
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
    EXPECT_EQ(session.result().status, succeeded) << session.result().errors;
    expectSame(session.picture(1), rendered({"--time", "1"}), "a second");
    expectSame(session.picture(2), rendered({"--time", "4.25"}), "half of the time");
    EXPECT_GT(difference(session.picture(1), session.picture(2)).mean, 0.1) << "the two are not the same anyway";
}

TEST(ViewTest, SpacePlaysAndHalts)
{
    // The picture after each key tells that the key has arrived, however busy the machine is.
    const Session session(
        {"picture", "key space", "picture", "sleep 1.5", "picture", "key space", "picture", "sleep 0.5", "picture"});
    EXPECT_EQ(session.result().status, succeeded) << session.result().errors;
    EXPECT_GT(difference(session.picture(2), session.picture(3)).mean, 0.02) << "time went on";
    expectSame(session.picture(4), session.picture(5), "halted");
}

TEST(ViewTest, MouseTurnsMovesAndZooms)
{
    const Session session({"key f", "picture", "mousedown 1", "mousemove_relative --sync 50 0", "mouseup 1", "picture",
                           "key f", "mousedown 3", "mousemove_relative --sync -- -50 0", "mouseup 3", "picture",
                           "key f", "click 4", "click 4", "picture", "key f", "picture"});
    EXPECT_EQ(session.result().status, succeeded) << session.result().errors;
    const Image all = session.picture(1);
    expectSame(all, rendered({"--framed"}), "all");
    EXPECT_GT(difference(all, session.picture(2)).mean, 1.0) << "turned"; // much of the sea looks alike
    // What was moved to the left by 50 pixels is about the same as before.
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
    EXPECT_EQ(session.result().status, succeeded) << session.result().errors;
    EXPECT_GT(difference(session.picture(1), session.picture(2)).mean, 0.5) << "edges";
    EXPECT_GT(litPixels(session.picture(2)), litPixels(session.picture(1)) * 9 / 10) << "over faces";
    EXPECT_LT(litPixels(session.picture(3)), litPixels(session.picture(1)) / 2) << "alone";
    EXPECT_GT(litPixels(session.picture(3)), 100);
    expectSame(session.picture(4), session.picture(1), "faces again");
}

TEST(ViewTest, KeysAreShownAndHidden)
{
    const Session session({"picture", "key h", "picture", "key h", "picture"});
    EXPECT_EQ(session.result().status, succeeded) << session.result().errors;
    EXPECT_GT(difference(session.picture(1), session.picture(2)).strayPart, 0.1) << "text on a dark ground";
    expectSame(session.picture(3), session.picture(1), "hidden again");
}

TEST(ViewTest, GridIsShownAndHidden)
{
    const Session session({"key f", "picture", "key g", "picture", "key g", "picture"});
    EXPECT_EQ(session.result().status, succeeded) << session.result().errors;
    EXPECT_GT(difference(session.picture(1), session.picture(2)).mean, 0.02) << "lines";
    expectSame(session.picture(3), session.picture(1), "hidden again");
}

TEST(ViewTest, NumbersLookThroughTheirCameras)
{
    const Session session({"picture", "key f", "picture", "key 1", "picture", "key 2", "picture"});
    EXPECT_EQ(session.result().status, succeeded) << session.result().errors;
    EXPECT_GT(difference(session.picture(1), session.picture(2)).mean, 1.0);
    expectSame(session.picture(3), session.picture(1), "the first camera");
    expectSame(session.picture(4), session.picture(1), "there is no second");
}

TEST(ViewTest, WithoutADisplayItIsOneLine)
{
    // The folder of a login session is there or not, which Wayland would complain of.
    for (const char* const runtimeFolder : {"XDG_RUNTIME_DIR", "XDG_RUNTIME_DIR=/nowhere"}) {
        ProcessOptions options;
        options.environment = {"DISPLAY", "WAYLAND_DISPLAY", runtimeFolder};
        const ProcessResult result = run({SCENETOOL_PROGRAM, "view", lighthouse}, options);
        EXPECT_EQ(result.status, failed);
        EXPECT_EQ(std::count(result.errors.begin(), result.errors.end(), '\n'), 1) << result.errors;
        EXPECT_NE(result.errors.find("window"), std::string::npos) << result.errors;
        EXPECT_EQ(result.output, "");
    }
}

TEST(ViewTest, WithoutADocumentItIsOneLine)
{
    const ProcessResult result = run({SCENETOOL_PROGRAM, "view", "/nowhere/scene.dae"});
    EXPECT_EQ(result.status, failed);
    EXPECT_EQ(std::count(result.errors.begin(), result.errors.end(), '\n'), 1) << result.errors;
    EXPECT_EQ(run({SCENETOOL_PROGRAM, "view"}).status, usageError);
    EXPECT_EQ(run({SCENETOOL_PROGRAM, "view", lighthouse, "--size", "0x0"}).status, usageError);
}

} // namespace
