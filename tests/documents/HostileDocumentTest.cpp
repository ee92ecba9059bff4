#include "DocumentFolder.h"

#include "support/CrashReport.h"
#include "support/LogCapture.h"
#include "support/Rows.h"
#include "support/SceneWalker.h"
#include "support/TortureFolder.h"
#include "support/Words.h"

#include <libVideo/SceneGraph/Scene.h>

#include <gtest/gtest.h>

#include <functional>
#include <string>

// Documents made to crash a reader. Each file is named after its content.

namespace {

using documents::StoredDocument;
using namespace testSupport;

class RefusedDocumentTest : public testing::TestWithParam<StoredDocument> {};

TEST_P(RefusedDocumentTest, IsRefusedWithOneLine)
{
    CrashReport report(60);
    report.begin(GetParam().path);
    const LogCapture log;
    libVideo::Scene scene;
    EXPECT_FALSE(scene.createFromCollada(vesk::String(GetParam().path.c_str())));
    EXPECT_EQ(log.text(), "Collada file does not exist " + GetParam().path);
}

INSTANTIATE_TEST_SUITE_P(Documents, RefusedDocumentTest,
                         testing::ValuesIn(documents::documentsBelow("hostile", HOSTILE_FOLDER "/refused")), rowName);

class SurvivedDocumentTest : public testing::TestWithParam<StoredDocument> {};

TEST_P(SurvivedDocumentTest, LoadsOrThrowsAndIsWalked)
{
    CrashReport report(60);
    report.begin(GetParam().path);
    libVideo::Scene scene;
    const LoadOutcome outcome = loadAndWalk(scene, GetParam().path);
    EXPECT_EQ("", outcome.fault);
    EXPECT_TRUE(outcome.isLoaded || outcome.hasThrown) << "it has a scene";
}

INSTANTIATE_TEST_SUITE_P(Documents, SurvivedDocumentTest,
                         testing::ValuesIn(documents::documentsBelow("hostile", HOSTILE_FOLDER "/survived")), rowName);

// --- documents too large for a file

std::string withNodes(const std::string& nodes)
{
    return "<COLLADA xmlns='http://www.collada.org/2005/11/COLLADASchema' version='1.4.1'>"
           "<library_visual_scenes><visual_scene id='scene'>" +
           nodes +
           "</visual_scene></library_visual_scenes><scene><instance_visual_scene url='#scene'/></scene></COLLADA>";
}

std::string withNodesAtDepth(std::size_t levels)
{
    constexpr std::size_t levelsAbove = 3; // the root, the library and the scene
    return withNodes(repeated("<node>", levels - levelsAbove) + repeated("</node>", levels - levelsAbove));
}

std::string withUnknownAtDepth(std::size_t levels)
{
    return withNodes("<node><extra><technique profile='P'>" + repeated("<a>", levels) + repeated("</a>", levels) +
                     "</technique></extra></node>");
}

class LargeDocumentTest : public testing::TestWithParam<Case<std::function<std::string()>, bool>> {};

TEST_P(LargeDocumentTest, LoadsOrIsRefused)
{
    CrashReport report(120);
    report.begin(GetParam().name);
    const TortureFolder folder;
    libVideo::Scene scene;
    const LoadOutcome outcome = loadAndWalk(scene, folder.write(GetParam().given()));
    EXPECT_EQ("", outcome.fault);
    EXPECT_EQ(outcome.isLoaded, GetParam().expected);
}

INSTANTIATE_ROWS(
    Documents, LargeDocumentTest, {"DeepestNodes", [] { return withNodesAtDepth(10000); }, true},
    {"NodesTooDeep", [] { return withNodesAtDepth(10001); }, false},
    {"NodesMuchTooDeep", [] { return withNodesAtDepth(500000); }, false},
    {"UnknownDeep", [] { return withUnknownAtDepth(9000); }, true},
    {"UnknownTooDeep", [] { return withUnknownAtDepth(300000); }, false},
    {"OnlyStartTags", [] { return repeated("<COLLADA>", 500000); }, false},
    {"LongAttribute", [] { return withNodes("<node id='" + std::string(1000000, 'a') + "'/>"); }, true},
    {"AttributeTooLong", [] { return withNodes("<node id='" + std::string(1100000, 'a') + "'/>"); }, false},
    {"StartTagWithoutEnd", [] { return "<COLLADA " + std::string(5000000, 'a'); }, false},
    {"LongText", [] { return withNodes("<node><translate>" + repeated("1 ", 1000000) + "</translate></node>"); }, true},
    {"LongComment", [] { return withNodes("<!--" + std::string(3000000, 'c') + "--><node/>"); }, true},
    {"ManyNodes", [] { return withNodes(repeated("<node/>", 5000)); }, true},
    {"Zeros", [] { return std::string(1000000, '\0'); }, false},
    {"Blanks", [] { return std::string(1000000, ' '); }, false});

} // namespace
