#include "support/VideoTest.h"

#include <libVideo/SceneGraph/Animation.h>
#include <libVideo/SceneGraph/Scene.h>
#include <libVideo/SceneGraph/VisualScene.h>
#include <libVideo/SceneGraph/detail/Log.h>

#include <cctype>
#include <cstdlib>

namespace {

using namespace libVideo;
using namespace testSupport;

using Priority = vesk::LoggerPriority::LOGGER_PRIORITY;

TEST(LogStatementTest, LineIsTheSourceLineABlankAndTheWords)
{
    vesk::Logger* moduleLogger = nullptr;
    const char* const moduleChannel = "test.line";
    const LogCapture log;
    const int line = __LINE__ + 1;
    VIDEO_LOG("Texture has no surface initiailzer");
    ASSERT_EQ(1u, log.lines().size());
    EXPECT_EQ("test.line", log.lines()[0].channel);
    EXPECT_EQ(3, log.lines()[0].priority);
    EXPECT_EQ(std::to_string(line) + " Texture has no surface initiailzer", log.lines()[0].text);
}

} // namespace

// Modules for the tests. Each represents one source file of the library, and no other test uses its channel.

namespace plainModule {

VIDEO_LOG_CHANNEL("test.plain")
VIDEO_SOURCE_PATH("tests/libVideo/PlainModule")

vesk::Logger* logger()
{
    return moduleLogger;
}

void log()
{
    VIDEO_LOG("plain words");
}

void trace()
{
    VIDEO_TRACE("PlainModule::trace");
    VIDEO_LOG("in the scope");
}

void check(bool isSound)
{
    VIDEO_ASSERT(isSound);
}

} // namespace plainModule

namespace secondModule {

VIDEO_LOG_CHANNEL("test.second")
VIDEO_SOURCE_PATH("tests/libVideo/SecondModule")

void trace()
{
    VIDEO_TRACE("SecondModule::trace");
    plainModule::trace();
}

void check(unsigned index, unsigned m_count)
{
    VIDEO_ASSERT(index < m_count);
}

} // namespace secondModule

namespace {

Priority priorityOf(int number)
{
    return static_cast<Priority>(number);
}

void setFactoryPriority(int number)
{
    vesk::LogFactory::setPriority(priorityOf(number));
}

/// The channel with a name, created if needed.
vesk::Logger& channel(const std::string& name)
{
    vesk::Logger* logger = nullptr;
    vesk::LogFactory::createLogger(name.c_str(), logger);
    return *logger;
}

/// Sets the priority of a channel while it exists.
class ChannelPriority {
public:
    ChannelPriority(const std::string& name, int priority) : m_logger(channel(name)), m_before(m_logger.priority)
    {
        m_logger.priority = priorityOf(priority);
    }
    ~ChannelPriority() { m_logger.priority = m_before; }
    ChannelPriority(const ChannelPriority&) = delete;
    ChannelPriority& operator=(const ChannelPriority&) = delete;

private:
    vesk::Logger& m_logger;
    Priority m_before;
};

/// The declarations of the two macros at the head of a source file as an object, so that each case has a module without
/// a logger and its own channel.
class Module {
public:
    explicit Module(const std::string& name) : m_channel("test.module." + name), moduleChannel(m_channel.c_str()) {}
    Module(const Module&) = delete;
    Module& operator=(const Module&) = delete;

    const std::string& channelName() const { return m_channel; }
    vesk::Logger* logger() const { return moduleLogger; }
    bool hasChannel() const { return vesk::LogFactory::findLogger(moduleChannel) != nullptr; }
    /// How often a statement evaluated its argument.
    int evaluations() const { return m_evaluations; }

    void log() { VIDEO_LOG("value ", argument(), " end"); }
    /// @param inside runs within the traced scope
    void trace(const std::function<void()>& inside = [] {})
    {
        VIDEO_TRACE("Module::trace");
        inside();
    }
    void traceAndReturn(bool isEarly)
    {
        VIDEO_TRACE("Module::traceAndReturn");
        if (isEarly) {
            VIDEO_LOG("early");
            return;
        }
        VIDEO_LOG("late");
    }
    void logOneOfTwo(bool isFirst)
    {
        // The macro is one statement, also without braces.
        // clang-format off
        if (isFirst)
            VIDEO_LOG("first");
        else
            VIDEO_LOG("second");
        // clang-format on
    }

private:
    vesk::String argument()
    {
        ++m_evaluations;
        return "of an argument that is too long to fit into a text without memory of its own";
    }

    std::string m_channel;
    int m_evaluations = 0;
    // The names that the statements use.
    const char* moduleChannel;
    vesk::Logger* moduleLogger = nullptr;
    const char* modulePath = "tests/libVideo/Module";
};

const char* const moduleWords =
    "value of an argument that is too long to fit into a text without memory of its own end";

/// A trace line with its number replaced by "N"; another line as it is. "NO NUMBER" if there is none above 0.
std::string withoutNumber(const std::string& text)
{
    if (text.compare(0, 2, "> ") != 0) {
        return text;
    }
    const std::size_t colon = text.rfind(':');
    if (colon == std::string::npos || text.back() != ')') {
        return "NO NUMBER: " + text;
    }
    const std::string number = text.substr(colon + 1, text.size() - colon - 2);
    for (const char c : number) {
        if (std::isdigit(static_cast<unsigned char>(c)) == 0) {
            return "NO NUMBER: " + text;
        }
    }
    if (number.empty() || number[0] == '0') {
        return "NO NUMBER: " + text;
    }
    return text.substr(0, colon) + ":N)";
}

/// Traces with "N" for their number, other lines by their words.
Texts textsOf(const std::vector<LogLine>& lines)
{
    Texts texts;
    for (const LogLine& line : lines) {
        texts.push_back(line.priority == 1 ? withoutNumber(line.text) : line.words());
    }
    return texts;
}

// --- the log statement ---

TEST(LogStatementTest, PiecesStandInTheirOrder)
{
    vesk::Logger* moduleLogger = nullptr;
    const char* const moduleChannel = "test.pieces";
    const LogCapture log;
    const vesk::String text("second");
    const int negative = -7;
    const unsigned large = 4294967295u;
    VIDEO_LOG("first ", text, " ", negative, " ", large, "", " last");
    EXPECT_EQ("first second -7 4294967295 last", log.text());
}

TEST(LogStatementTest, NumberCanBeTheFirstPiece)
{
    vesk::Logger* moduleLogger = nullptr;
    const char* const moduleChannel = "test.first";
    const LogCapture log;
    const int line = __LINE__ + 1;
    VIDEO_LOG(12u, vesk::String("x"), 0, -2147483647 - 1);
    ASSERT_EQ(1u, log.lines().size());
    EXPECT_EQ(std::to_string(line) + " 12x0-2147483648", log.lines()[0].text);
}

TEST(LogStatementTest, AbsentTextAppendsNothing)
{
    vesk::Logger* moduleLogger = nullptr;
    const char* const moduleChannel = "test.absent";
    const char* const absent = nullptr;
    const LogCapture log;
    VIDEO_LOG("Name: ", absent, ";");
    EXPECT_EQ("Name: ;", log.text());
}

TEST(LogStatementTest, StatementStandsForOneStatement)
{
    Module module("oneStatement");
    const LogCapture log(module.channelName());
    module.logOneOfTwo(true);
    module.logOneOfTwo(false);
    EXPECT_EQ("first\nsecond", log.text());
}

TEST(LogStatementTest, StatementsOfOneModuleShareOneLogger)
{
    Module module("shared");
    const LogCapture log(module.channelName());
    module.log();
    vesk::Logger* const logger = module.logger();
    ASSERT_NE(nullptr, logger);
    EXPECT_EQ(vesk::LogFactory::findLogger(module.channelName().c_str()), logger);
    module.logOneOfTwo(true);
    EXPECT_EQ(logger, module.logger());
    EXPECT_EQ(2u, log.lines().size());
}

TEST(LogStatementTest, ModulesOfOneChannelNameShareItsLogger)
{
    Module module("sameName");
    Module twin("sameName");
    const LogCapture log(module.channelName());
    module.log();
    twin.log();
    EXPECT_EQ(module.logger(), twin.logger());
    EXPECT_EQ(2u, log.lines().size());
}

TEST(LogStatementTest, LoggerThatAModuleHasIsNotLookedUpAgain)
{
    vesk::Logger* moduleLogger = &channel("test.kept");
    const char* const moduleChannel = "test.neverMade";
    const LogCapture log;
    VIDEO_LOG("words");
    ASSERT_EQ(1u, log.lines().size());
    EXPECT_EQ("test.kept", log.lines()[0].channel);
    EXPECT_EQ(nullptr, vesk::LogFactory::findLogger("test.neverMade"));
}

TEST(LogStatementTest, FactoryPriorityIsReadAnewByEveryStatement)
{
    Module module("anew");
    const LogCapture log(module.channelName());
    setFactoryPriority(4);
    module.log();
    EXPECT_EQ(0u, log.lines().size());
    EXPECT_FALSE(module.hasChannel());
    setFactoryPriority(3);
    module.log();
    EXPECT_EQ(1u, log.lines().size());
    setFactoryPriority(4);
    module.log();
    EXPECT_EQ(1u, log.lines().size());
    setFactoryPriority(0);
    module.log();
    EXPECT_EQ(2u, log.lines().size());
}

TEST(LogStatementTest, LoggerPriorityIsReadAnewByEveryStatement)
{
    Module module("loggerAnew");
    const LogCapture log(module.channelName());
    module.log();
    EXPECT_EQ(1u, log.lines().size());
    ASSERT_NE(nullptr, module.logger());
    module.logger()->priority = priorityOf(3);
    module.log();
    EXPECT_EQ(1u, log.lines().size());
    module.logger()->priority = priorityOf(2);
    module.log();
    EXPECT_EQ(2u, log.lines().size());
    EXPECT_EQ(2, module.evaluations());
}

TEST(LogStatementTest, SuppressedStatementBuildsNoText)
{
    Module module("noText");
    Module silent("noTextSilent");
    const ChannelPriority priority(silent.channelName(), 3);
    const LogCapture log;
    setFactoryPriority(3);
    module.log();
    silent.log(); // finds its channel
    long requestsAtTheLogger = -1;
    long requestsAtTheFactory = -1;
    long requestsOfALine = -1;
    {
        const FailingAllocator allocator(-1);
        silent.log();
        requestsAtTheLogger = allocator.requests();
    }
    {
        const FailingAllocator allocator(-1);
        module.log();
        requestsOfALine = allocator.requests();
    }
    setFactoryPriority(4);
    {
        const FailingAllocator allocator(-1);
        module.log();
        requestsAtTheFactory = allocator.requests();
    }
    EXPECT_EQ(0, requestsAtTheLogger);
    EXPECT_EQ(0, requestsAtTheFactory);
    EXPECT_GT(requestsOfALine, 0);
    EXPECT_EQ(0, silent.evaluations());
    EXPECT_EQ(2, module.evaluations());
}

TEST(LogStatementTest, SuppressedTraceBuildsNoText)
{
    const LogCapture log;
    Module module("noTrace");
    const std::function<void()> nothing = [] {};
    const auto requestsOfATrace = [&] {
        const FailingAllocator allocator(-1);
        module.trace(nothing);
        return allocator.requests();
    };
    setFactoryPriority(2);
    EXPECT_EQ(0, requestsOfATrace());
    setFactoryPriority(1);
    channel(module.channelName()).priority = priorityOf(1);
    module.trace(nothing); // finds its channel
    EXPECT_EQ(0, requestsOfATrace());
    ASSERT_NE(nullptr, module.logger());
    module.logger()->priority = priorityOf(0);
    EXPECT_GT(requestsOfATrace(), 0);
}

TEST(LogStatementTest, WhatAHandlerThrowsPassesThroughTheStatement)
{
    Module module("throwing");
    const LogCapture restoring;
    vesk::LogFactory::setHandler([](const vesk::Logger&, Priority, const vesk::String&) { throw 5; });
    EXPECT_THROW(module.log(), int);
}

// --- macros at the head of a source file ---

TEST(LogStatementTest, ModuleOfASourceFileLogsOnItsChannel)
{
    const LogCapture log("test.plain");
    plainModule::log();
    ASSERT_EQ(1u, log.lines().size());
    EXPECT_EQ("plain words", log.lines()[0].words());
    EXPECT_EQ(vesk::LogFactory::findLogger("test.plain"), plainModule::logger());
}

TEST(LogStatementTest, TracesOfTwoModulesNest)
{
    const LogCapture log;
    setFactoryPriority(1);
    secondModule::trace();
    EXPECT_EQ((Texts{"> SecondModule::trace (tests/libVideo/SecondModule:N)",
                     "> PlainModule::trace (tests/libVideo/PlainModule:N)", "in the scope", "< PlainModule::trace",
                     "< SecondModule::trace"}),
              textsOf(log.lines()));
    ASSERT_EQ(5u, log.lines().size());
    EXPECT_EQ("test.second", log.lines()[0].channel);
    EXPECT_EQ("test.plain", log.lines()[1].channel);
    EXPECT_EQ("test.plain", log.lines()[3].channel);
    EXPECT_EQ("test.second", log.lines()[4].channel);
}

// --- both thresholds ---

struct ThresholdCase {
    int factory;
    int logger;
    bool hasLine;   ///< a statement of priority 3 emits
    bool asksLine;  ///< a statement of priority 3 calls for its channel
    bool hasTrace;  ///< a trace emits
    bool asksTrace; ///< a trace calls for its channel
};

std::string nameOf(const ThresholdCase& row)
{
    return "Factory" + std::to_string(row.factory) + "Logger" + std::to_string(row.logger);
}

void PrintTo(const ThresholdCase& row, std::ostream* out)
{
    *out << nameOf(row);
}

class LogThresholdTest : public testing::TestWithParam<ThresholdCase> {};

TEST_P(LogThresholdTest, StatementPassesBothTestsOrComputesNothing)
{
    Module module("statement" + nameOf(GetParam()));
    channel(module.channelName()).priority = priorityOf(GetParam().logger);
    const LogCapture log;
    setFactoryPriority(GetParam().factory);
    module.log();
    EXPECT_EQ(GetParam().asksLine, module.logger() != nullptr);
    EXPECT_EQ(GetParam().hasLine ? 1 : 0, module.evaluations());
    if (!GetParam().hasLine) {
        EXPECT_TRUE(log.lines().empty());
        return;
    }
    ASSERT_EQ(1u, log.lines().size());
    EXPECT_EQ(module.channelName(), log.lines()[0].channel);
    EXPECT_EQ(3, log.lines()[0].priority);
    EXPECT_EQ(moduleWords, log.lines()[0].words());
}

TEST_P(LogThresholdTest, TracePassesBothTestsOrIsSilent)
{
    Module module("trace" + nameOf(GetParam()));
    channel(module.channelName()).priority = priorityOf(GetParam().logger);
    const LogCapture log;
    setFactoryPriority(GetParam().factory);
    module.trace();
    EXPECT_EQ(GetParam().asksTrace, module.logger() != nullptr);
    if (!GetParam().hasTrace) {
        EXPECT_TRUE(log.lines().empty());
        return;
    }
    ASSERT_EQ(2u, log.lines().size());
    EXPECT_EQ(module.channelName(), log.lines()[0].channel);
    EXPECT_EQ(1, log.lines()[0].priority);
    EXPECT_EQ(1, log.lines()[1].priority);
    EXPECT_EQ((Texts{"> Module::trace (tests/libVideo/Module:N)", "< Module::trace"}), textsOf(log.lines()));
}

TEST_P(LogThresholdTest, ChannelOfAStatementComesIntoBeingBehindTheFirstTest)
{
    Module module("fresh" + nameOf(GetParam()));
    const LogCapture log;
    setFactoryPriority(GetParam().factory);
    ASSERT_FALSE(module.hasChannel());
    module.log();
    EXPECT_EQ(GetParam().asksLine, module.hasChannel());
    EXPECT_EQ(GetParam().asksLine, module.logger() != nullptr);
}

TEST_P(LogThresholdTest, ChannelOfATraceComesIntoBeingBehindTheFirstTest)
{
    Module module("freshTrace" + nameOf(GetParam()));
    const LogCapture log;
    setFactoryPriority(GetParam().factory);
    ASSERT_FALSE(module.hasChannel());
    module.trace();
    EXPECT_EQ(GetParam().asksTrace, module.hasChannel());
    EXPECT_EQ(GetParam().asksTrace, module.logger() != nullptr);
}

// The factory's priority may equal that of the message, the logger's has to lie below.
INSTANTIATE_TEST_SUITE_P(
    Priorities, LogThresholdTest,
    testing::Values(ThresholdCase{0, 0, true, true, true, true}, ThresholdCase{0, 1, true, true, false, true},
                    ThresholdCase{0, 2, true, true, false, true}, ThresholdCase{0, 3, false, true, false, true},
                    ThresholdCase{0, 4, false, true, false, true}, ThresholdCase{1, 0, true, true, true, true},
                    ThresholdCase{1, 1, true, true, false, true}, ThresholdCase{1, 2, true, true, false, true},
                    ThresholdCase{1, 3, false, true, false, true}, ThresholdCase{1, 4, false, true, false, true},
                    ThresholdCase{2, 0, true, true, false, false}, ThresholdCase{2, 1, true, true, false, false},
                    ThresholdCase{2, 2, true, true, false, false}, ThresholdCase{2, 3, false, true, false, false},
                    ThresholdCase{2, 4, false, true, false, false}, ThresholdCase{3, 0, true, true, false, false},
                    ThresholdCase{3, 1, true, true, false, false}, ThresholdCase{3, 2, true, true, false, false},
                    ThresholdCase{3, 3, false, true, false, false}, ThresholdCase{3, 4, false, true, false, false},
                    ThresholdCase{4, 0, false, false, false, false}, ThresholdCase{4, 1, false, false, false, false},
                    ThresholdCase{4, 2, false, false, false, false}, ThresholdCase{4, 3, false, false, false, false},
                    ThresholdCase{4, 4, false, false, false, false}),
    [](const auto& row) { return nameOf(row.param); });

// --- the trace scope ---

TEST(TraceScopeTest, EntryShowsFunctionFileAndSourceLine)
{
    vesk::Logger* moduleLogger = nullptr;
    const char* const moduleChannel = "test.trace.entry";
    const char* const modulePath = "tests/libVideo/Entry";
    const LogCapture log;
    setFactoryPriority(1);
    const int line = __LINE__ + 2;
    {
        VIDEO_TRACE("Entry::run");
        ASSERT_EQ(1u, log.lines().size());
    }
    ASSERT_EQ(2u, log.lines().size());
    EXPECT_EQ("> Entry::run (tests/libVideo/Entry:" + std::to_string(line) + ")", log.lines()[0].text);
    EXPECT_EQ("< Entry::run", log.lines()[1].text);
    EXPECT_EQ("test.trace.entry", log.lines()[0].channel);
}

TEST(TraceScopeTest, ScopeEndsBehindWhatItHolds)
{
    Module module("scope");
    const LogCapture log(module.channelName());
    setFactoryPriority(1);
    module.trace([&] { module.logOneOfTwo(true); });
    EXPECT_EQ((Texts{"> Module::trace (tests/libVideo/Module:N)", "first", "< Module::trace"}), textsOf(log.lines()));
}

TEST(TraceScopeTest, EveryReturnClosesTheScope)
{
    Module module("returns");
    const LogCapture log(module.channelName());
    setFactoryPriority(1);
    module.traceAndReturn(true);
    module.traceAndReturn(false);
    const std::string entry = "> Module::traceAndReturn (tests/libVideo/Module:N)";
    const std::string exit = "< Module::traceAndReturn";
    EXPECT_EQ((Texts{entry, "early", exit, entry, "late", exit}), textsOf(log.lines()));
}

TEST(TraceScopeTest, ExceptionClosesTheScopesOnItsWay)
{
    Module outer("exceptionOuter");
    Module inner("exceptionInner");
    const LogCapture log;
    setFactoryPriority(1);
    EXPECT_THROW(outer.trace([&] { inner.trace([] { throw vesk::NullPointer("no memory"); }); }), vesk::NullPointer);
    ASSERT_EQ(4u, log.lines().size());
    EXPECT_EQ(outer.channelName(), log.lines()[0].channel);
    EXPECT_EQ(inner.channelName(), log.lines()[1].channel);
    EXPECT_EQ(inner.channelName(), log.lines()[2].channel);
    EXPECT_EQ("< Module::trace", log.lines()[2].text);
    EXPECT_EQ(outer.channelName(), log.lines()[3].channel);
    EXPECT_EQ("< Module::trace", log.lines()[3].text);
}

TEST(TraceScopeTest, SilentScopeStaysSilentThoughTheThresholdFallsWithinIt)
{
    Module module("falling");
    const LogCapture log(module.channelName());
    setFactoryPriority(2);
    module.trace([] { setFactoryPriority(1); });
    EXPECT_TRUE(log.lines().empty());
    EXPECT_EQ(nullptr, module.logger());
}

TEST(TraceScopeTest, ScopeThatTracedItsEntryTracesItsExit)
{
    Module module("rising");
    const LogCapture log(module.channelName());
    setFactoryPriority(1);
    module.trace([] { setFactoryPriority(4); });
    EXPECT_EQ((Texts{"> Module::trace (tests/libVideo/Module:N)", "< Module::trace"}), textsOf(log.lines()));
}

// --- the assertion ---

TEST(AssertionTest, FalseExpressionThrowsPathLineAndItsOwnText)
{
    const char* const modulePath = "tests/libVideo/Assertion";
    const unsigned low = 3;
    const LogCapture log;
    setFactoryPriority(0);
    unsigned long long line = 0;
    try {
        line = __LINE__ + 1;
        VIDEO_ASSERT(low < 2 && (low != 0));
        FAIL() << "nothing thrown";
    } catch (const vesk::AssertionFailure& failure) {
        EXPECT_STREQ("tests/libVideo/Assertion", failure.file());
        EXPECT_EQ(line, failure.line());
        EXPECT_STREQ("low < 2 && (low != 0)", failure.expression());
    }
    EXPECT_TRUE(log.lines().empty());
}

TEST(AssertionTest, TrueExpressionPassesAndIsEvaluatedOnce)
{
    const char* const modulePath = "tests/libVideo/Assertion";
    int evaluations = 0;
    VIDEO_ASSERT(++evaluations == 1);
    EXPECT_EQ(1, evaluations);
    EXPECT_NO_THROW(plainModule::check(true));
    EXPECT_NE(nullptr, modulePath);
}

TEST(AssertionTest, ModuleShowsItsOwnPath)
{
    try {
        secondModule::check(4, 4);
        FAIL() << "nothing thrown";
    } catch (const vesk::AssertionFailure& failure) {
        EXPECT_STREQ("tests/libVideo/SecondModule", failure.file());
        EXPECT_STREQ("index < m_count", failure.expression());
    }
    EXPECT_NO_THROW(secondModule::check(3, 4));
    try {
        plainModule::check(false);
        FAIL() << "nothing thrown";
    } catch (const vesk::AssertionFailure& failure) {
        EXPECT_STREQ("tests/libVideo/PlainModule", failure.file());
        EXPECT_STREQ("isSound", failure.expression());
    }
}

TEST(AssertionTest, FailureCreatesNoChannel)
{
    vesk::Logger* moduleLogger = nullptr;
    const char* const modulePath = "tests/libVideo/Assertion";
    const LogCapture log;
    setFactoryPriority(0);
    EXPECT_THROW(VIDEO_ASSERT(false), vesk::AssertionFailure);
    EXPECT_EQ(nullptr, moduleLogger);
    EXPECT_NE(nullptr, modulePath);
    EXPECT_TRUE(log.lines().empty());
}

// --- the library's own statements ---

const char* const missingFile = "/nonexistent/libVideoTest/document.dae";

/// One node, and one animation that has no channel, which is worth a line.
std::string wholeDocument()
{
    return ColladaBuilder("<library_animations><animation id='still'/></library_animations>")
        .addScene("<node id='lamp'/>")
        .text();
}

const char* const animationLine = "Cannot create an animation without a channel element.";
const char* const sceneEntry = "> Scene::createFromCollada (libVideo/SceneGraph/Scene:N)";
const char* const sceneExit = "< Scene::createFromCollada";
const char* const animationEntry = "> Camera::createAnimationListFromCollada (libVideo/SceneGraph/Animation:N)";
const char* const animationExit = "< Camera::createAnimationListFromCollada";
const char* const visualSceneEntry = "> VisualScene::createFromCollada (libVideo/SceneGraph/VisualScene:N)";
const char* const visualSceneExit = "< VisualScene::createFromCollada";

/// The lines of the modules that open the document, read its animations and build its scene; lines of the others may
/// are between them.
std::vector<LogLine> linesOfTheLoad(const std::vector<LogLine>& all)
{
    std::vector<LogLine> lines;
    for (const LogLine& line : all) {
        if (line.channel == "libVideo.scene" || line.channel == "libVideo.animation" ||
            line.channel == "libVideo.visualScene") {
            lines.push_back(line);
        }
    }
    return lines;
}

bool hasChannel(const char* name)
{
    return vesk::LogFactory::findLogger(name) != nullptr;
}

const char* const libraryChannels[] = {
    "libVideo.visualScene", "libVideo.texture", "libVideo.primitive", "libVideo.accessor",  "libVideo.material",
    "libVideo.camera",      "libVideo.scene",   "libVideo.geometry",  "libVideo.animation", "libVideo.instance",
    "libVideo.light",       "libVideo.source",  "libVideo.input"};

/// Its tests run in a process of their own, which no other test has left a channel in.
class LibraryLogDeathTest : public testing::Test {
protected:
    // Starts the program anew instead of forking it.
    LibraryLogDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
    ~LibraryLogDeathTest() override { GTEST_FLAG_SET(death_test_style, m_styleBefore); }

private:
    std::string m_styleBefore = GTEST_FLAG_GET(death_test_style);
};

/// Ends the process, with 0 if all that was expected held.
[[noreturn]] void finish()
{
    std::exit(testing::Test::HasFailure() ? 1 : 0);
}

void loadWithFactoryOff()
{
    const LogCapture log;
    setFactoryPriority(4);
    for (const char* const name : libraryChannels) {
        EXPECT_FALSE(hasChannel(name)) << name;
    }
    libVideo::Scene scene;
    EXPECT_FALSE(scene.createFromCollada(missingFile));
    EXPECT_FALSE(hasChannel("libVideo.scene"));
    const TemporaryFile file(wholeDocument());
    EXPECT_TRUE(scene.createFromCollada(file.path().c_str()));
    EXPECT_EQ(1u, scene.visualScene().root().children().size());
    for (const char* const name : libraryChannels) {
        EXPECT_FALSE(hasChannel(name)) << name;
    }
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(LibraryLogDeathTest, FactoryPriorityFourCreatesNoChannel)
{
    EXPECT_EXIT(
        {
            loadWithFactoryOff();
            finish();
        },
        testing::ExitedWithCode(0), "");
}

void loadWithoutTraces(int factoryPriority)
{
    const LogCapture log;
    setFactoryPriority(factoryPriority);
    EXPECT_FALSE(hasChannel("libVideo.scene"));
    const TemporaryFile good(ColladaBuilder().addScene("<node id='lamp'/>").text());
    libVideo::Scene scene;
    EXPECT_TRUE(scene.createFromCollada(good.path().c_str()));
    EXPECT_TRUE(log.lines().empty());
    for (const char* const name : libraryChannels) {
        EXPECT_FALSE(hasChannel(name)) << name;
    }
    libVideo::Scene failed;
    EXPECT_FALSE(failed.createFromCollada(missingFile));
    EXPECT_TRUE(hasChannel("libVideo.scene"));
    EXPECT_FALSE(hasChannel("libVideo.visualScene"));
    EXPECT_FALSE(hasChannel("libVideo.animation"));
    ASSERT_EQ(1u, log.lines().size());
    EXPECT_EQ("libVideo.scene", log.lines()[0].channel);
    EXPECT_EQ(3, log.lines()[0].priority);
    EXPECT_EQ(std::string("Collada file does not exist ") + missingFile, log.lines()[0].words());
}

TEST_F(LibraryLogDeathTest, FactoryPriorityTwoTracesNothingCreatesNoChannelAndStillLogs)
{
    EXPECT_EXIT(
        {
            loadWithoutTraces(2);
            finish();
        },
        testing::ExitedWithCode(0), "");
}

TEST_F(LibraryLogDeathTest, FactoryPriorityThreeTracesNothingCreatesNoChannelAndStillLogs)
{
    EXPECT_EXIT(
        {
            loadWithoutTraces(3);
            finish();
        },
        testing::ExitedWithCode(0), "");
}

void loadWithLoggersAtOne()
{
    const LogCapture log;
    setFactoryPriority(1);
    for (const char* const name : libraryChannels) {
        channel(name).priority = priorityOf(1);
    }
    const TemporaryFile file(wholeDocument());
    libVideo::Scene scene;
    EXPECT_TRUE(scene.createFromCollada(file.path().c_str()));
    EXPECT_EQ((Texts{animationLine, "Unable to find the animation's target node with id: "}), textsOf(log.lines()));
}

TEST_F(LibraryLogDeathTest, LoggersAtOneTraceNothingAndStillLog)
{
    EXPECT_EXIT(
        {
            loadWithLoggersAtOne();
            finish();
        },
        testing::ExitedWithCode(0), "");
}

void loadWithAllTraces()
{
    const LogCapture log;
    setFactoryPriority(0);
    const TemporaryFile file(ColladaBuilder().addScene("<node id='a'><translate>1 2 3</translate></node>").text());
    libVideo::Scene scene;
    EXPECT_TRUE(scene.createFromCollada(file.path().c_str()));
    EXPECT_TRUE(hasChannel("libVideo.scene"));
    EXPECT_TRUE(hasChannel("libVideo.animation"));
    EXPECT_TRUE(hasChannel("libVideo.visualScene"));
    EXPECT_FALSE(hasChannel("libVideo.node"));
    EXPECT_FALSE(hasChannel("libVideo.transformation"));
    for (const LogLine& line : log.lines()) {
        EXPECT_EQ(1, line.priority) << line.text;
    }
}

TEST_F(LibraryLogDeathTest, TracesCreateTheChannelsOfTheirModulesAndNodesHaveNone)
{
    EXPECT_EXIT(
        {
            loadWithAllTraces();
            finish();
        },
        testing::ExitedWithCode(0), "");
}

TEST_F(LibraryLogDeathTest, FailedExpectationFailsTheProcess)
{
    // Else the tests above could not fail.
    EXPECT_EXIT(
        {
            EXPECT_TRUE(hasChannel("test.no such channel"));
            finish();
        },
        testing::ExitedWithCode(1), "");
}

TEST(LibraryLogTest, LoggerAtThreeSilencesTheModule)
{
    const ChannelPriority priority("libVideo.scene", 3);
    const LogCapture log;
    setFactoryPriority(3);
    libVideo::Scene scene;
    EXPECT_FALSE(scene.createFromCollada(missingFile));
    EXPECT_TRUE(log.lines().empty());
}

TEST(LibraryLogTest, LoggerAtTwoLetsTheLineThrough)
{
    const ChannelPriority priority("libVideo.scene", 2);
    const LogCapture log;
    setFactoryPriority(3);
    libVideo::Scene scene;
    EXPECT_FALSE(scene.createFromCollada(missingFile));
    EXPECT_EQ(std::string("Collada file does not exist ") + missingFile, log.text());
}

TEST(LibraryLogTest, TracesOfALoadNest)
{
    const TemporaryFile file(ColladaBuilder().addScene("<node id='lamp'/>").text());
    const LogCapture log;
    setFactoryPriority(1);
    libVideo::Scene scene;
    ASSERT_TRUE(scene.createFromCollada(file.path().c_str()));
    const std::vector<LogLine> lines = linesOfTheLoad(log.lines());
    EXPECT_EQ((Texts{sceneEntry, animationEntry, animationExit, visualSceneEntry, visualSceneExit, sceneExit}),
              textsOf(lines));
    const char* const channels[] = {"libVideo.scene",       "libVideo.animation",   "libVideo.animation",
                                    "libVideo.visualScene", "libVideo.visualScene", "libVideo.scene"};
    ASSERT_EQ(6u, lines.size());
    for (std::size_t i = 0; i < lines.size(); ++i) {
        EXPECT_EQ(channels[i], lines[i].channel) << i;
        EXPECT_EQ(1, lines[i].priority) << i;
    }
}

TEST(LibraryLogTest, LinesOfALoadStandWithinTheTraceOfTheirFunction)
{
    const TemporaryFile file(wholeDocument());
    const LogCapture log;
    setFactoryPriority(1);
    libVideo::Scene scene;
    ASSERT_TRUE(scene.createFromCollada(file.path().c_str()));
    EXPECT_EQ((Texts{sceneEntry, animationEntry, animationLine, animationExit, visualSceneEntry,
                     "Unable to find the animation's target node with id: ", visualSceneExit, sceneExit}),
              textsOf(linesOfTheLoad(log.lines())));
}

TEST(LibraryLogTest, OneModuleTracesWhileTheOthersAreSilent)
{
    const TemporaryFile file(ColladaBuilder().addScene("<node id='lamp'/>").text());
    const ChannelPriority scenePriority("libVideo.scene", 1);
    const ChannelPriority animationPriority("libVideo.animation", 4);
    const LogCapture log;
    setFactoryPriority(1);
    libVideo::Scene scene;
    ASSERT_TRUE(scene.createFromCollada(file.path().c_str()));
    EXPECT_EQ((Texts{visualSceneEntry, visualSceneExit}), textsOf(linesOfTheLoad(log.lines())));
}

// --- every way out of a load closes its trace ---

std::vector<Case<std::string, Texts>> failureCases()
{
    const std::string scenes = "<library_visual_scenes><visual_scene id='scene'/></library_visual_scenes>"
                               "<library_nodes><node id='lamp'/></library_nodes>";
    const auto documentOf = [&](const std::string& scene) { return ColladaBuilder(scenes + scene).text(); };
    const auto showing = [](const std::string& url) {
        return "<scene><instance_visual_scene url='" + url + "'/></scene>";
    };
    return {
        {"MissingFile", "", {"Collada file does not exist"}},
        {"NoDocument", "<COLLADA", {"Collada file does not exist"}},
        {"NoScene", documentOf(""), {"Collada file does not have a scene definition"}},
        {"NoInstance", documentOf("<scene/>"), {animationEntry, animationExit, "Scene does not have a visual scene"}},
        {"NoElement", documentOf(showing("#nowhere")), {animationEntry, animationExit, "Url"}},
        {"NoVisualScene",
         documentOf(showing("#lamp")),
         {animationEntry, animationExit, "daeElement is not a domVisual_scene element"}},
        {"NoNode",
         documentOf(showing("#scene")),
         {animationEntry, animationExit, visualSceneEntry, "Visual scene has no visual nodes", visualSceneExit}},
    };
}

/// Given is a document, or nothing for a missing file; expected is what lies between the entry and the exit of its load.
class LoadFailureTest : public testing::TestWithParam<Case<std::string, Texts>> {
protected:
    /// A path to the document, or to none.
    std::string path() const { return GetParam().given.empty() ? missingFile : m_file.path(); }

    /// `texts` with the lines of words cut to the expected length, since some go on with a path.
    static Texts cutTo(const Texts& expected, Texts texts)
    {
        for (std::size_t i = 0; i < texts.size() && i < expected.size(); ++i) {
            if (texts[i][0] != '>' && texts[i][0] != '<') {
                texts[i] = texts[i].substr(0, expected[i].size());
            }
        }
        return texts;
    }

private:
    TemporaryFile m_file{GetParam().given};
};

TEST_P(LoadFailureTest, FalseResultClosesTheTraces)
{
    const LogCapture log;
    setFactoryPriority(1);
    libVideo::Scene scene;
    EXPECT_FALSE(scene.createFromCollada(path().c_str()));
    Texts expected = GetParam().expected;
    expected.insert(expected.begin(), sceneEntry);
    expected.push_back(sceneExit);
    EXPECT_EQ(expected, cutTo(expected, textsOf(linesOfTheLoad(log.lines()))));
}

TEST_P(LoadFailureTest, ExceptionOutOfItsLineClosesTheTraces)
{
    const LogCapture restoring;
    setFactoryPriority(1);
    std::vector<LogLine> lines;
    vesk::LogFactory::setHandler([&](const vesk::Logger& logger, Priority priority, const vesk::String& text) {
        lines.push_back({logger.channel().data(), priority, text.data()});
        if (priority == 3) {
            throw vesk::NullPointer("refused");
        }
    });
    {
        libVideo::Scene scene;
        EXPECT_THROW(static_cast<void>(scene.createFromCollada(path().c_str())), vesk::NullPointer);
        EXPECT_EQ(0u, scene.visualScene().root().children().size());
    }
    Texts expected = GetParam().expected;
    expected.insert(expected.begin(), sceneEntry);
    expected.push_back(sceneExit);
    EXPECT_EQ(expected, cutTo(expected, textsOf(linesOfTheLoad(lines))));
}

INSTANTIATE_TEST_SUITE_P(Documents, LoadFailureTest, testing::ValuesIn(failureCases()), rowName);

TEST(LibraryLogTest, ExceptionWithinTheAnimationsClosesBothTraces)
{
    const TemporaryFile file(wholeDocument());
    const LogCapture restoring;
    setFactoryPriority(1);
    Texts texts;
    vesk::LogFactory::setHandler([&](const vesk::Logger&, Priority priority, const vesk::String& text) {
        texts.push_back(withoutNumber(text.data()));
        if (priority == 3) {
            texts.back() = "line";
            throw vesk::NullPointer("refused");
        }
    });
    libVideo::Scene scene;
    EXPECT_THROW(static_cast<void>(scene.createFromCollada(file.path().c_str())), vesk::NullPointer);
    EXPECT_EQ((Texts{sceneEntry, animationEntry, "line", animationExit, sceneExit}), texts);
}

TEST(LibraryLogTest, AnimationListWithoutADocumentClosesItsTrace)
{
    DAE dae(nullptr, nullptr, "1.4.1");
    vesk::Array<libVideo::AnimationHandle> animations;
    const LogCapture log;
    setFactoryPriority(1);
    EXPECT_EQ(0u, libVideo::createAnimationListFromCollada(nullptr, dae, animations));
    EXPECT_EQ((Texts{animationEntry, "Cannot create an animation list from a NULL domCOLLADA pointer", animationExit}),
              textsOf(log.lines()));
}

TEST(LibraryLogTest, AnimationListThatCannotGrowClosesItsTrace)
{
    // More animations than a list holds at start.
    ColladaBuilder document("<library_animations>" + repeated("<animation/>", 9) + "</library_animations>");
    const domCOLLADA* const root = document.open();
    ASSERT_NE(nullptr, root);
    // The traces go to a handler that asks for no memory.
    static unsigned entries = 0;
    static unsigned exits = 0;
    const LogCapture restoring;
    setFactoryPriority(1);
    const ChannelPriority priority("libVideo.animation", 0);
    vesk::LogFactory::setHandler([](const vesk::Logger&, Priority messagePriority, const vesk::String& text) {
        if (messagePriority == 1) {
            ++(text.data()[0] == '>' ? entries : exits);
        }
    });
    unsigned listExceptions = 0;
    bool isDone = false;
    for (long successes = 0; !isDone && successes < 10000; ++successes) {
        vesk::Array<libVideo::AnimationHandle> list;
        entries = 0;
        exits = 0;
        bool hasThrown = false;
        std::string message;
        {
            const FailingAllocator allocator(successes);
            try {
                libVideo::createAnimationListFromCollada(root, document.dae(), list);
                isDone = !allocator.hasFailed();
            } catch (const vesk::NullPointer& failure) {
                hasThrown = true;
                message = failure.what();
            } catch (const std::bad_alloc&) {
                hasThrown = true;
            }
        }
        // The request that fails may be one of the entry itself; any later one leaves memory for the exit.
        if (hasThrown || isDone) {
            EXPECT_EQ(entries, exits) << successes;
        }
        if (message == "Asked for array of size: 9") {
            ++listExceptions;
            EXPECT_EQ(1u, entries);
            EXPECT_EQ(1u, exits);
            EXPECT_EQ(8u, list.size());
        }
    }
    EXPECT_TRUE(isDone);
    EXPECT_EQ(1u, entries);
    EXPECT_EQ(1u, listExceptions);
}

TEST(LibraryLogTest, VisualSceneWithoutResourcesClosesItsTrace)
{
    ColladaBuilder document;
    document.addScene("<node id='lamp'/>");
    document.open();
    libVideo::VisualScene scene;
    const LogCapture log;
    setFactoryPriority(1);
    EXPECT_FALSE(scene.createFromCollada(*document.element<domVisual_scene>("scene"), libVideo::SceneResourcesLink()));
    EXPECT_EQ((Texts{visualSceneEntry, "Cannot create using an empty scene resources", visualSceneExit}),
              textsOf(log.lines()));
}

TEST(LibraryLogTest, SecondLoadClosesItsTrace)
{
    const TemporaryFile file(ColladaBuilder().addScene("<node id='lamp'/>").text());
    libVideo::Scene scene;
    ASSERT_TRUE(scene.createFromCollada(file.path().c_str()));
    const LogCapture log;
    setFactoryPriority(1);
    EXPECT_FALSE(scene.createFromCollada(file.path().c_str()));
    EXPECT_EQ((Texts{sceneEntry, "Scene is already loaded", sceneExit}), textsOf(log.lines()));
}

} // namespace
