#include "support/FoundationTest.h"

using namespace testSupport;
using namespace vesk;

// What the interface of the foundation promises beyond its functions: units, constness and exact types.

namespace {

using Handle = vesk::SharedResource<vesk::PointerStorage<int, 0, 3>, 0>;
using Link = vesk::CopiedResource<vesk::PointerStorage<int, 3, 2>>;

template <class T>
const T& constant(T& object)
{
    return object;
}

TEST(OpenPointTest, PositionsInATextCountBytes)
{
    const String text("\xC3\xA4\xE2\x82\xAC#lamp"); // letters of two and of three bytes
    EXPECT_EQ(5u, text.find('#'));
    EXPECT_EQ(5u, text.find(5, '#'));
    EXPECT_EQ(text.find(6, '#'), String::npos);
    EXPECT_EQ(4u, text.find('\xAC'));
    EXPECT_EQ(text.subString(2, 3), String("\xE2\x82\xAC"));
    EXPECT_EQ(text.subString(1, 2), String("\xA4\xE2"));
    EXPECT_EQ(text.subString(6, String::npos), String("lamp"));
}

TEST(OpenPointTest, HandlerOfLinesHasItsExactType)
{
    EXPECT_TRUE((std::is_same<vesk::LogHandler,
                              std::function<void(const Logger&, LoggerPriority::LOGGER_PRIORITY, const String&)>>()));
    EXPECT_TRUE((std::is_same<decltype(&LogFactory::setHandler), vesk::LogHandler (*)(vesk::LogHandler)>()));
    EXPECT_TRUE((std::is_same<decltype(&LogFactory::setPriority), void (*)(LoggerPriority::LOGGER_PRIORITY)>()));
    EXPECT_TRUE((std::is_same<decltype(&LogFactory::findLogger), Logger* (*)(const char*)>()));
    EXPECT_TRUE((std::is_same<decltype(std::declval<const Logger&>().channel()), const String&>()));
    EXPECT_TRUE((std::is_same<decltype(Logger::priority), LoggerPriority::LOGGER_PRIORITY>()));
}

TEST(OpenPointTest, ChannelThatIsThereIsFound)
{
    EXPECT_EQ(nullptr, LogFactory::findLogger("test.openPoint"));
    Logger* made = nullptr;
    LogFactory::createLogger("test.openPoint", made);
    EXPECT_NE(nullptr, made);
    EXPECT_EQ(LogFactory::findLogger("test.openPoint"), made);
}

TEST(OpenPointTest, ContainersAreAskedWithoutBeingChanged)
{
    vesk::Array<unsigned> array;
    array.append(7);
    EXPECT_EQ(8u, constant(array).capacity());
    EXPECT_EQ(1, constant(array).end() - constant(array).begin());
    EXPECT_TRUE((std::is_same<decltype(*constant(array).begin()), const unsigned&>()));
    EXPECT_TRUE((std::is_same<decltype(*array.begin()), unsigned&>()));

    vesk::HashTable<String, unsigned, vesk::EqualFunc<String>, vesk::HashFunc<String>> table(32);
    EXPECT_TRUE((std::is_same<decltype(table.insert("lamp", 1)), bool>()));
    table.insert("lamp", 1);
    EXPECT_EQ(1u, constant(table).size());
    unsigned visited = 0;
    for (const auto& bucket : constant(table)) {
        EXPECT_EQ(bucket.key, String("lamp"));
        ++visited;
    }
    EXPECT_EQ(1u, visited);
}

TEST(OpenPointTest, HandlesAreAskedWithoutBeingChanged)
{
    const Handle empty;
    const Handle handle(new int(5));
    const Link none;
    const Link link(handle);
    EXPECT_TRUE((std::is_same<decltype(handle.get()), int*>()));
    EXPECT_TRUE((std::is_same<decltype(link.get()), int*>()));
    EXPECT_EQ(5, *handle.get());
    EXPECT_EQ(link.get(), handle.get());
    EXPECT_TRUE(static_cast<bool>(handle));
    EXPECT_TRUE(static_cast<bool>(link));
    EXPECT_FALSE(static_cast<bool>(empty));
    EXPECT_FALSE(static_cast<bool>(none));
    EXPECT_EQ(0u, empty.useCount());
    EXPECT_EQ(1u, handle.useCount());
}

} // namespace
