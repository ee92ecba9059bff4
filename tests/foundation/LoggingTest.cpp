#include "support/FoundationTest.h"

#include <climits>

using namespace testSupport;
using namespace vesk;

namespace {

Logger* channel(const char* name)
{
    Logger* logger = nullptr;
    LogFactory::createLogger(name, logger);
    return logger;
}

LoggerStream line(const char* text)
{
    LoggerStream stream;
    stream.append(text);
    return stream;
}

/// Restores the previous handler and priority.
class LoggingTest : public testing::Test {
public:
    LoggingTest() : m_handler(LogFactory::setHandler(LogHandler())), m_priority(LogFactory::getPriority()) {}
    ~LoggingTest() override
    {
        LogFactory::setHandler(m_handler);
        LogFactory::setPriority(m_priority);
    }

private:
    LogHandler m_handler;
    LoggerPriority::LOGGER_PRIORITY m_priority;
};

} // namespace

TEST_F(LoggingTest, PrioritiesHaveTheirNumbers)
{
    EXPECT_EQ(0, static_cast<int>(LoggerPriority::PRIORITY_ALL));
    EXPECT_EQ(1, static_cast<int>(LoggerPriority::PRIORITY_TRACE));
    EXPECT_EQ(2, static_cast<int>(LoggerPriority::PRIORITY_INFO));
    EXPECT_EQ(3, static_cast<int>(LoggerPriority::PRIORITY_ERROR));
    EXPECT_EQ(4, static_cast<int>(LoggerPriority::PRIORITY_OFF));
    EXPECT_TRUE((std::is_same<std::underlying_type<LoggerPriority::LOGGER_PRIORITY>::type, int>::value));
    EXPECT_EQ(4u, sizeof(Logger::priority));
}

TEST_F(LoggingTest, ProcessStartsWithPriorityOfErrors)
{
    EXPECT_EQ(LogFactory::getPriority(), LoggerPriority::PRIORITY_ERROR);
}

TEST_F(LoggingTest, FactoryPriorityIsReadAnew)
{
    for (const auto priority : {LoggerPriority::PRIORITY_OFF, LoggerPriority::PRIORITY_ALL,
                                LoggerPriority::PRIORITY_TRACE, LoggerPriority::PRIORITY_INFO}) {
        LogFactory::setPriority(priority);
        EXPECT_EQ(LogFactory::getPriority(), priority);
    }
}

TEST_F(LoggingTest, CreateLoggerMakesChannelOfThatName)
{
    EXPECT_EQ(nullptr, LogFactory::findLogger("test.made"));
    Logger* logger = nullptr;
    LogFactory::createLogger("test.made", logger);
    ASSERT_NE(nullptr, logger);
    EXPECT_EQ(logger->channel(), String("test.made"));
    EXPECT_EQ(LogFactory::findLogger("test.made"), logger);
}

TEST_F(LoggingTest, CreateLoggerFindsChannelThatIsThere)
{
    Logger* const first = channel("test.found");
    first->priority = LoggerPriority::PRIORITY_INFO;
    Logger* second = nullptr;
    LogFactory::createLogger("test.found", second);
    EXPECT_EQ(second, first);
    EXPECT_EQ(second->priority, LoggerPriority::PRIORITY_INFO);
}

TEST_F(LoggingTest, CreateLoggerOverwritesTheOldAddress)
{
    Logger* const other = channel("test.other");
    Logger* logger = other;
    LogFactory::createLogger("test.overwrites", logger);
    EXPECT_NE(logger, other);
    EXPECT_EQ(logger->channel(), String("test.overwrites"));
}

TEST_F(LoggingTest, ChannelNamesAreExact)
{
    EXPECT_NE(channel("test.exact"), channel("test.Exact"));
    EXPECT_NE(channel("test.exact"), channel("test.exac"));
    EXPECT_EQ(nullptr, LogFactory::findLogger("TEST.EXACT"));
}

TEST_F(LoggingTest, ChannelKeepsItsAddressWhenOthersAreMade)
{
    Logger* const first = channel("test.stable");
    for (int i = 0; i < 100; ++i) {
        channel(("test.stable" + std::to_string(i)).c_str());
    }
    EXPECT_EQ(LogFactory::findLogger("test.stable"), first);
    EXPECT_EQ(first->channel(), String("test.stable"));
}

TEST_F(LoggingTest, ChannelKeepsACopyOfItsName)
{
    std::string name = "test.copyOfName.and.long.enough.to.have.memory.of.its.own";
    Logger* const logger = channel(name.c_str());
    name[0] = 'X';
    EXPECT_EQ(logger->channel(), String("test.copyOfName.and.long.enough.to.have.memory.of.its.own"));
}

TEST_F(LoggingTest, NewChannelHasPriorityOfAll)
{
    EXPECT_EQ(channel("test.newPriority")->priority, LoggerPriority::PRIORITY_ALL);
}

TEST_F(LoggingTest, LoggerHasNoVirtualOperations)
{
    EXPECT_FALSE(std::is_polymorphic<Logger>::value);
    EXPECT_FALSE(std::is_copy_constructible<Logger>::value);
}

TEST_F(LoggingTest, LogHandsChannelPriorityAndTextToTheHandler)
{
    struct Seen {
        const Logger* logger;
        int priority;
        std::string text;
    };
    std::vector<Seen> seen;
    LogFactory::setHandler([&seen](const Logger& logger, LoggerPriority::LOGGER_PRIORITY priority, const String& text) {
        seen.push_back({&logger, priority, text.data()});
    });
    Logger* const first = channel("test.handler.first");
    Logger* const second = channel("test.handler.second");
    first->log(LoggerPriority::PRIORITY_ERROR, line("68 words"));
    second->log(LoggerPriority::PRIORITY_TRACE, line(""));
    ASSERT_EQ(2u, seen.size());
    EXPECT_EQ(seen[0].logger, first);
    EXPECT_EQ(3, seen[0].priority);
    EXPECT_EQ("68 words", seen[0].text);
    EXPECT_EQ(seen[1].logger, second);
    EXPECT_EQ(1, seen[1].priority);
    EXPECT_EQ("", seen[1].text);
}

TEST_F(LoggingTest, LogItselfTestsNoThreshold)
{
    const LogCapture capture("test.noThreshold");
    LogFactory::setPriority(LoggerPriority::PRIORITY_OFF);
    Logger* const logger = channel("test.noThreshold");
    logger->priority = LoggerPriority::PRIORITY_OFF;
    logger->log(LoggerPriority::PRIORITY_TRACE, line("1 shown"));
    EXPECT_EQ("shown", capture.text());
}

TEST_F(LoggingTest, DefaultHandlerWritesChannelAndTextToStandardError)
{
    Logger* const logger = channel("test.standardError");
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    logger->log(LoggerPriority::PRIORITY_ERROR, line("68 100% sure %s"));
    logger->log(LoggerPriority::PRIORITY_TRACE, line("second"));
    EXPECT_EQ("[test.standardError] 68 100% sure %s\n[test.standardError] second\n",
              testing::internal::GetCapturedStderr());
    EXPECT_EQ("", testing::internal::GetCapturedStdout());
}

TEST_F(LoggingTest, SetHandlerGivesTheHandlerOfBefore)
{
    int first = 0;
    int second = 0;
    const LogHandler none =
        LogFactory::setHandler([&first](const Logger&, LoggerPriority::LOGGER_PRIORITY, const String&) { ++first; });
    EXPECT_FALSE(none);
    const LogHandler before =
        LogFactory::setHandler([&second](const Logger&, LoggerPriority::LOGGER_PRIORITY, const String&) { ++second; });
    ASSERT_TRUE(before);
    Logger* const logger = channel("test.setHandler");
    logger->log(LoggerPriority::PRIORITY_ERROR, line("x"));
    EXPECT_EQ(0, first);
    EXPECT_EQ(1, second);
    LogFactory::setHandler(before);
    logger->log(LoggerPriority::PRIORITY_ERROR, line("x"));
    EXPECT_EQ(1, first);
    EXPECT_EQ(1, second);
}

TEST_F(LoggingTest, EmptyHandlerRestoresTheDefault)
{
    int count = 0;
    LogFactory::setHandler([&count](const Logger&, LoggerPriority::LOGGER_PRIORITY, const String&) { ++count; });
    LogFactory::setHandler(LogHandler());
    testing::internal::CaptureStderr();
    channel("test.restored")->log(LoggerPriority::PRIORITY_ERROR, line("back"));
    EXPECT_EQ("[test.restored] back\n", testing::internal::GetCapturedStderr());
    EXPECT_EQ(0, count);
}

TEST_F(LoggingTest, WhatTheHandlerThrowsPassesThroughLog)
{
    LogFactory::setHandler(
        [](const Logger&, LoggerPriority::LOGGER_PRIORITY, const String&) { throw std::runtime_error("stop"); });
    Logger* const logger = channel("test.throwing");
    EXPECT_THROW(logger->log(LoggerPriority::PRIORITY_ERROR, line("x")), std::runtime_error);
}

TEST_F(LoggingTest, HandlerMayReplaceItselfWhileItRuns)
{
    std::vector<std::string> seen;
    const std::string large(200, 'x'); // the running handler's captures must stay alive
    LogFactory::setHandler([&seen, large](const Logger&, LoggerPriority::LOGGER_PRIORITY, const String& text) {
        LogFactory::setHandler([&seen](const Logger&, LoggerPriority::LOGGER_PRIORITY, const String& later) {
            seen.push_back(std::string("second ") + later.data());
        });
        seen.push_back(std::string("first ") + text.data() + " " + std::to_string(large.size()));
    });
    Logger* const logger = channel("test.replaces");
    logger->log(LoggerPriority::PRIORITY_ERROR, line("a"));
    logger->log(LoggerPriority::PRIORITY_ERROR, line("b"));
    EXPECT_EQ((std::vector<std::string>{"first a 200", "second b"}), seen);
}

TEST(LoggerStreamTest, IsATextWithoutVirtualDestructor)
{
    EXPECT_TRUE((std::is_base_of<String, LoggerStream>::value));
    EXPECT_FALSE(std::has_virtual_destructor<LoggerStream>::value);
    EXPECT_TRUE(LoggerStream().empty());
}

TEST(LoggerStreamTest, AppendsSignedNumbersAsDecimalText)
{
    LoggerStream stream;
    EXPECT_EQ(&(stream + 0), &stream);
    stream.append(" ");
    stream + -17;
    stream.append(" ");
    stream + INT_MAX;
    stream.append(" ");
    stream + INT_MIN;
    EXPECT_STREQ("0 -17 2147483647 -2147483648", stream.data());
}

TEST(LoggerStreamTest, AppendsUnsignedNumbersAsDecimalText)
{
    LoggerStream stream;
    EXPECT_EQ(&(stream + 0u), &stream);
    stream.append(" ");
    stream + 3000000000u + 1u;
    stream.append(" ");
    stream + UINT_MAX;
    EXPECT_STREQ("0 30000000001 4294967295", stream.data());
}

TEST(LoggerStreamTest, TakesPiecesInOrder)
{
    LoggerStream stream;
    stream.append("68 ");
    stream.append("Wrong id: ");
    stream.append(String("lamp"));
    stream.append(", number ");
    stream + 3u;
    EXPECT_STREQ("68 Wrong id: lamp, number 3", stream.data());
}

TEST(TraceLoggerTest, NullLoggerIsSilent)
{
    const LogCapture capture;
    LogFactory::setPriority(LoggerPriority::PRIORITY_ALL);
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    {
        const TraceLogger trace(nullptr, "Scene::createFromCollada", "libVideo/SceneGraph/Scene", 12);
    }
    EXPECT_EQ("", testing::internal::GetCapturedStderr());
    EXPECT_EQ("", testing::internal::GetCapturedStdout());
    EXPECT_TRUE(capture.lines().empty());
}

TEST(TraceLoggerTest, TellsStartAndEndOfItsScopeWithPriorityOne)
{
    const LogCapture capture("test.trace");
    {
        const TraceLogger trace(channel("test.trace"), "Scene::createFromCollada", "libVideo/SceneGraph/Scene", 12);
        ASSERT_EQ(1u, capture.lines().size());
        EXPECT_EQ("> Scene::createFromCollada (libVideo/SceneGraph/Scene:12)", capture.lines()[0].text);
        EXPECT_EQ(1, capture.lines()[0].priority);
    }
    ASSERT_EQ(2u, capture.lines().size());
    EXPECT_EQ("< Scene::createFromCollada", capture.lines()[1].text);
    EXPECT_EQ(1, capture.lines()[1].priority);
}

TEST(TraceLoggerTest, TellsTheEndOfAScopeThatAnExceptionLeaves)
{
    const LogCapture capture("test.traceThrow");
    const auto function = [] {
        const TraceLogger trace(channel("test.traceThrow"), "f", "file", 1);
        throw std::runtime_error("stop");
    };
    EXPECT_THROW(function(), std::runtime_error);
    ASSERT_EQ(2u, capture.lines().size());
    EXPECT_EQ("> f (file:1)", capture.lines()[0].text);
    EXPECT_EQ("< f", capture.lines()[1].text);
}

TEST(TraceLoggerTest, NestedScopesEndInnermostFirst)
{
    const LogCapture capture("test.traceNested");
    {
        const TraceLogger outer(channel("test.traceNested"), "outer", "a", 1);
        const TraceLogger inner(channel("test.traceNested"), "inner", "b", 2);
    }
    std::vector<std::string> texts;
    for (const testSupport::LogLine& shown : capture.lines()) {
        texts.push_back(shown.text);
    }
    EXPECT_EQ((std::vector<std::string>{"> outer (a:1)", "> inner (b:2)", "< inner", "< outer"}), texts);
}

TEST(TraceLoggerTest, EndOfAScopeLetsTheFirstExceptionPassThoughTheHandlerThrows)
{
    const LogCapture restores;
    bool isThrowing = false;
    LogFactory::setHandler([&isThrowing](const Logger&, LoggerPriority::LOGGER_PRIORITY, const String&) {
        if (isThrowing) {
            throw std::logic_error("second");
        }
    });
    const auto function = [&isThrowing] {
        const TraceLogger trace(channel("test.traceSecond"), "f", "file", 1);
        isThrowing = true;
        throw std::runtime_error("first");
    };
    EXPECT_THROW(function(), std::runtime_error);
}
