#include "scenetool/Scenetool.h"

#include "support/ColladaBuilder.h"

#include <tools/scenetool/sandbox/Sandbox.h>

#include <gtest/gtest.h>

#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstddef>
#include <iostream>
#include <map>
#include <set>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

namespace {

using scenetool::runInSandbox;
using scenetool::Sandbox;
using scenetool::SandboxLimits;
using scenetool::SandboxResult;
using testSupport::ColladaBuilder;
using testSupport::ProcessResult;
using testSupport::TemporaryFile;

TEST(SandboxTest, GivesTheStatusOfTheAction)
{
    for (const int status : {0, 1, 2, 77}) {
        const SandboxResult result = runInSandbox(SandboxLimits(), [status] { return status; });
        EXPECT_EQ("", result.failure);
        EXPECT_EQ(status, result.status);
    }
}

TEST(SandboxTest, TellsApartWhatRunsAtATime)
{
    Sandbox sandbox{SandboxLimits()};
    std::map<pid_t, int> expected;
    for (const int status : {0, 5, 77}) {
        expected[sandbox.start([status] { return status; })] = status;
    }
    ASSERT_EQ(3u, expected.size());

    std::map<pid_t, int> ended;
    for (std::size_t left = 3; left > 0; --left) {
        EXPECT_EQ(left, sandbox.runningCount());
        const Sandbox::Ended one = sandbox.wait();
        EXPECT_EQ("", one.result.failure);
        ended[one.process] = one.result.status;
    }
    EXPECT_EQ(expected, ended);
    EXPECT_EQ(0u, sandbox.runningCount());
    EXPECT_THROW(sandbox.wait(), std::system_error);
}

TEST(SandboxTest, ChildrenOfOthersDoNotCount)
{
    Sandbox other{SandboxLimits()};
    other.start([] { return 3; });
    Sandbox sandbox{SandboxLimits()};
    std::set<pid_t> started;
    for (int i = 0; i < 2; ++i) {
        started.insert(sandbox.start([] { return static_cast<int>(sleep(1)); }));
    }

    std::set<pid_t> ended;
    for (int i = 0; i < 2; ++i) {
        ended.insert(sandbox.wait().process);
    }
    EXPECT_EQ(started, ended);
}

TEST(SandboxTest, MemoryOfTheCallerIsUntouched)
{
    int number = 1;
    runInSandbox(SandboxLimits(), [&number] { return number = 2; });
    EXPECT_EQ(1, number);
}

TEST(SandboxTest, WhatIsWrittenArrivesOnceAndInOrder)
{
    testing::internal::CaptureStdout();
    std::cout << "before ";
    runInSandbox(SandboxLimits(), [] {
        std::cout << "inside ";
        return 0;
    });
    std::cout << "behind";
    std::cout.flush();
    EXPECT_EQ("before inside behind", testing::internal::GetCapturedStdout());
}

TEST(SandboxTest, FaultsEndThere)
{
    const SandboxResult result = runInSandbox(SandboxLimits(), [] {
        std::signal(SIGABRT, SIG_DFL);
        std::raise(SIGABRT);
        return 0;
    });
    EXPECT_EQ("crashed (Aborted)", result.failure);
}

TEST(SandboxTest, ExceptionsEndThere)
{
    testing::internal::CaptureStderr();
    const SandboxResult result = runInSandbox(SandboxLimits(), []() -> int { throw std::runtime_error("no way"); });
    EXPECT_EQ("failed with an exception", result.failure);
    EXPECT_EQ("scenetool: no way\n", testing::internal::GetCapturedStderr());
}

TEST(SandboxTest, EndlessWorkEnds)
{
    SandboxLimits limits;
    limits.time = std::chrono::seconds(1);
    const SandboxResult result = runInSandbox(limits, [] {
        for (volatile bool goesOn = true; goesOn;) {
        }
        return 0;
    });
    EXPECT_EQ("did not finish within 1 s", result.failure);
}

TEST(SandboxTest, EndlessWaitEnds)
{
    SandboxLimits limits;
    limits.time = std::chrono::seconds(1);
    const SandboxResult result = runInSandbox(limits, [] {
        pause();
        return 0;
    });
    EXPECT_EQ("did not finish within 1 s", result.failure);
}

#if !defined(__SANITIZE_ADDRESS__)
TEST(SandboxTest, MemoryIsLimited)
{
    const auto takes = [](std::size_t bytes) {
        return [bytes] {
            try {
                const std::vector<char> block(bytes, 'x');
                return static_cast<int>(block[bytes / 2]);
            } catch (const std::bad_alloc&) {
                return 1;
            }
        };
    };
    SandboxLimits limits;
    limits.memory = std::size_t{1'000} * 1'048'576;
    EXPECT_EQ('x', runInSandbox(limits, takes(std::size_t{100} * 1'048'576)).status);
    EXPECT_EQ(1, runInSandbox(limits, takes(std::size_t{2'000} * 1'048'576)).status);
    limits.memory = 0;
    EXPECT_EQ('x', runInSandbox(limits, takes(std::size_t{2'000} * 1'048'576)).status);
}
#endif

// --- The commands.

using testSupport::scenetool;

std::string goodDocument()
{
    return ColladaBuilder().addScene("<node id='n'><translate>1 2 3</translate></node>").text();
}

// Too many nodes for any processor to load in a second.
std::string slowDocument()
{
    constexpr std::size_t count = 3'000'000;
    std::string nodes;
    for (std::size_t i = 0; i < count; ++i) {
        nodes += "<node/>";
    }
    return ColladaBuilder().addScene(nodes).text();
}

TEST(SandboxTest, DumpIsTheSameInASandbox)
{
    const TemporaryFile file(goodDocument());
    const ProcessResult plain = scenetool({"dump", file.path()});
    const ProcessResult boxed = scenetool({"dump", "--sandbox", file.path()});
    EXPECT_EQ(0, boxed.status);
    EXPECT_EQ(plain.output, boxed.output);
    EXPECT_EQ("", boxed.errors);
}

TEST(SandboxTest, StatusOfAFailedLoadComesThrough)
{
    const ProcessResult result = scenetool({"dump", "--sandbox", "/missing.dae"});
    EXPECT_EQ(1, result.status);
    EXPECT_EQ(scenetool({"dump", "/missing.dae"}).errors, result.errors);
    EXPECT_EQ(0u, result.errors.find("scenetool: /missing.dae does not exist"));
}

TEST(SandboxTest, SlowDocumentIsGivenUp)
{
    const TemporaryFile file(slowDocument());
    const ProcessResult result = scenetool({"info", "--sandbox", "--time-limit", "1", file.path()});
    EXPECT_EQ(1, result.status);
    EXPECT_EQ("scenetool: " + file.path() + ": the load did not finish within 1 s\n", result.errors);
    EXPECT_EQ("", result.output);
}

TEST(SandboxTest, ManyDocumentsAreInASandboxByThemselves)
{
    const TemporaryFile good(goodDocument());
    const TemporaryFile slow(slowDocument());
    const ProcessResult result = scenetool({"info", "--time-limit", "1", good.path(), slow.path(), good.path()});
    EXPECT_EQ(1, result.status);
    EXPECT_EQ("scenetool: " + slow.path() + ": the load did not finish within 1 s\n", result.errors);
    const std::string one = scenetool({"info", good.path()}).output;
    EXPECT_EQ(one + "\n\n" + one, result.output) << "the rest is shown";
}

TEST(SandboxTest, ManyDocumentsCanDoWithout)
{
    const TemporaryFile good(goodDocument());
    const ProcessResult result = scenetool({"info", "--no-sandbox", good.path(), good.path()});
    EXPECT_EQ(0, result.status);
    EXPECT_EQ(scenetool({"info", good.path(), good.path()}).output, result.output);
}

TEST(SandboxTest, OptionsAreChecked)
{
    for (const std::vector<std::string>& options : std::vector<std::vector<std::string>>{
             {"--sandbox", "--no-sandbox"}, {"--time-limit", "0"}, {"--time-limit", "x"}, {"--memory-limit", "-1"}}) {
        std::vector<std::string> all = {"info", "/missing.dae"};
        all.insert(all.end(), options.begin(), options.end());
        EXPECT_EQ(2, scenetool(all).status) << options[0];
    }
}

} // namespace
