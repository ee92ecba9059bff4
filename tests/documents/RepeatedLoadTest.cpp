#include "DocumentFolder.h"

#include "support/LogCapture.h"
#include "support/Rows.h"
#include "support/SceneWalker.h"
#include "support/SilentLog.h"

#include <libVideo/SceneGraph.h>

#include <vesk/Exception.h>

#include <gtest/gtest.h>

#include <malloc.h>

#include <cstddef>
#include <memory>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#if !defined(__SANITIZE_ADDRESS__) && defined(__has_feature)
#if __has_feature(address_sanitizer)
#define __SANITIZE_ADDRESS__ 1
#endif
#endif
#ifdef __SANITIZE_ADDRESS__
extern "C" std::size_t __sanitizer_get_current_allocated_bytes(); // not every compiler has the header
#endif

// Loads one after the other, in parallel, and interrupted ones.

namespace {

using documents::StoredDocument;
using libVideo::Scene;
using namespace testSupport;

// Bytes that the process has allocated and not freed.
std::size_t bytesInUse();

// The document that most modules log messages about, and the one with content for most modules.
std::string faultyDocument()
{
    return SEED_FOLDER "/faults.dae";
}

std::string richDocument()
{
    return DATA_FOLDER "/lighthouse.dae";
}

TEST(RepeatedLoadTest, AThousandScenesLeaveNothingBehind)
{
    const auto cycle = [](unsigned i) {
        Scene scene;
        static_cast<void>(loadAndWalk(scene, i % 4 == 0 ? faultyDocument() : richDocument()));
    };
    constexpr unsigned warmUp = 100;
    constexpr unsigned cycles = 1000;
    // In separate threads, because the C library counts the blocks that it keeps for a thread while that exists.
    const auto run = [&](unsigned count) {
        std::thread([&] {
            for (unsigned i = 0; i < count; ++i) {
                cycle(i);
            }
        }).join();
    };
    run(warmUp);
    const std::size_t before = bytesInUse();
    run(cycles);
    EXPECT_LE(bytesInUse(), before + 16 * cycles) << "a block that each cycle lost would take more";
}

std::size_t bytesInUse()
{
#ifdef __SANITIZE_ADDRESS__
    return __sanitizer_get_current_allocated_bytes();
#else
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
#endif
}

// The scene at a time as text: positions of nodes, sizes of primitives, lengths of lists.
std::string fingerprint(Scene& scene, double time)
{
    std::ostringstream text;
    vesk::Array<libVideo::NodeLink> nodes = scene.visualScene().root().children();
    for (unsigned i = 0; i < nodes.size(); ++i) {
        const libMath::Vector<float, 3> place = nodes[i]->position(time);
        text << nodes[i]->id() << ' ' << place[0] << ' ' << place[1] << ' ' << place[2] << '\n';
        nodes.appendArray(nodes[i]->children());
    }
    for (const auto& bucket : scene.visualScene().geometryTable()) {
        for (const auto& primitive : bucket.value->mesh().primitives()) {
            text << bucket.key << ' ' << primitive->totalByteSize() << ' ' << primitive->indexBuffer().size() << '\n';
        }
    }
    text << scene.visualScene().blinnMaterialTable().size() << ' ' << scene.visualScene().cameraList().size() << ' '
         << scene.visualScene().pointLightList().size() << ' ' << scene.visualScene().spotLightList().size();
    return text.str();
}

bool load(Scene& scene, const std::string& path)
{
    return scene.createFromCollada(vesk::String(path.c_str()));
}

TEST(RepeatedLoadTest, ARefusedDocumentLeavesNothingBehind)
{
    const SilentLog log;
    const auto cycle = [] {
        Scene scene;
        EXPECT_FALSE(load(scene, SEED_FOLDER "/no-such-document.dae"));
        EXPECT_FALSE(load(scene, SEED_FOLDER));
        EXPECT_FALSE(load(scene, SEED_FOLDER "/../serializable/strings.xml"));
    };
    constexpr unsigned warmUp = 20;
    constexpr unsigned cycles = 200;
    for (unsigned i = 0; i < warmUp; ++i) {
        cycle();
    }
    const std::size_t before = bytesInUse();
    for (unsigned i = 0; i < cycles; ++i) {
        cycle();
    }
    EXPECT_LE(bytesInUse(), before + 16 * cycles);
}

TEST(RepeatedLoadTest, TwoScenesAtOnceDoNotDisturbEachOther)
{
    const LogCapture log;
    std::string richAlone;
    std::string faultyAlone;
    {
        Scene scene;
        ASSERT_TRUE(load(scene, richDocument()));
        richAlone = fingerprint(scene, 1.5);
    }
    {
        Scene scene;
        static_cast<void>(loadAndWalk(scene, faultyDocument()));
        faultyAlone = fingerprint(scene, 1.5);
    }
    ASSERT_NE(richAlone, faultyAlone);

    auto first = std::make_unique<Scene>();
    Scene second;
    ASSERT_TRUE(load(*first, richDocument()));
    static_cast<void>(loadAndWalk(second, faultyDocument()));
    EXPECT_EQ(fingerprint(*first, 1.5), richAlone);
    EXPECT_EQ(fingerprint(second, 1.5), faultyAlone);

    // Loads the same document twice and destroys one scene while the other stays in use.
    Scene third;
    ASSERT_TRUE(load(third, richDocument()));
    EXPECT_EQ(fingerprint(*first, 0.25), fingerprint(third, 0.25));
    first.reset();
    EXPECT_EQ(fingerprint(third, 1.5), richAlone);
    EXPECT_EQ(fingerprint(second, 1.5), faultyAlone);
    first = std::make_unique<Scene>();
    ASSERT_TRUE(load(*first, richDocument()));
    EXPECT_EQ(fingerprint(*first, 1.5), richAlone);
    EXPECT_EQ("", walkScene(third));
    EXPECT_EQ("", walkScene(second));
}

// --- a handler that throws

struct HandlerThrew {};

// While an object exists, the handler throws at message `line`, counted from 0, and accepts the others.
class ThrowingHandler {
public:
    explicit ThrowingHandler(unsigned line)
    {
        m_before = vesk::LogFactory::setHandler(
            [this, line](const vesk::Logger&, vesk::LoggerPriority::LOGGER_PRIORITY, const vesk::String&) {
                if (m_lines++ == line) {
                    throw HandlerThrew();
                }
            });
    }

    ~ThrowingHandler() { vesk::LogFactory::setHandler(m_before); }
    ThrowingHandler(const ThrowingHandler&) = delete;
    ThrowingHandler& operator=(const ThrowingHandler&) = delete;

    unsigned lines() const { return m_lines; }

private:
    unsigned m_lines = 0;
    vesk::LogHandler m_before;
};

class ThrowingHandlerTest : public testing::TestWithParam<StoredDocument> {};

// @return whether the handler threw; it does not if the load logs fewer messages
bool loadWithThrow(Scene& scene, const std::string& path, unsigned line)
{
    const ThrowingHandler handler(line);
    bool hasThrown = false;
    try {
        static_cast<void>(load(scene, path));
    } catch (const HandlerThrew&) {
        hasThrown = true;
    } catch (const vesk::Exception&) {
        hasThrown = false; // the document's own
    }
    EXPECT_EQ(hasThrown, handler.lines() > line) << "line " << line;
    return hasThrown;
}

TEST_P(ThrowingHandlerTest, WhatItThrowsAtEachLineLeavesTheLoad)
{
    const SilentLog log;
    unsigned line = 0;
    for (bool hasThrown = true; hasThrown; ++line) {
        ASSERT_LT(line, 1000u);
        {
            Scene scene;
            hasThrown = loadWithThrow(scene, GetParam().path, line);
            EXPECT_EQ("", walkScene(scene)) << "line " << line;
        }
        Scene scene;
        loadWithThrow(scene, GetParam().path, line);
        const LoadOutcome again = loadAndWalk(scene, richDocument());
        EXPECT_EQ("", again.fault) << "line " << line;
    }
}

TEST_P(ThrowingHandlerTest, NothingIsLeftBehind)
{
    // In a separate thread, as above.
    const auto allLines = [] {
        unsigned line = 0;
        std::thread([&line] {
            for (bool hasThrown = true; hasThrown; ++line) {
                Scene scene;
                hasThrown = loadWithThrow(scene, GetParam().path, line);
            }
        }).join();
        return line;
    };
    // The first few loads allocate what later ones reuse. The allocator's own data varies by a few blocks; a leak of
    // anything in the scene grows far larger in twenty rounds.
    for (unsigned i = 0; i < 4; ++i) {
        allLines();
    }
    const std::size_t before = bytesInUse();
    unsigned lines = 0;
    for (unsigned i = 0; i < 20; ++i) {
        lines += allLines();
    }
    EXPECT_LE(bytesInUse(), before + 8'192 + 16 * lines);
}

INSTANTIATE_TEST_SUITE_P(Documents, ThrowingHandlerTest, testing::ValuesIn(documents::ownDocuments()), rowName);

TEST(ThrowingHandlerTest, TheFaultyDocumentHasManyLines)
{
    Scene scene;
    EXPECT_GT(loadAndWalk(scene, faultyDocument()).lineCount, 10u);
}

} // namespace
