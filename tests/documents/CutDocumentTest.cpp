#include "DocumentFolder.h"

#include "support/CrashReport.h"
#include "support/Rows.h"
#include "support/SceneWalker.h"
#include "support/TortureFolder.h"

#include <libVideo/SceneGraph/Scene.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

// Documents that are cut off.

namespace {

using documents::StoredDocument;
using namespace testSupport;

// Where a document is cut: after every byte, or at evenly spread places that are closer together near its end.
std::vector<std::size_t> placesOf(std::size_t size);

bool isUtf16(const std::string& text)
{
    return text.compare(0, 2, "\xFF\xFE") == 0;
}

bool isCompressed(const std::string& text)
{
    return text.compare(0, 2, "\x1F\x8B") == 0;
}

// Whether the first bytes hold the whole root element, and no partial character after it.
bool isWhole(const std::string& text, std::size_t size)
{
    const std::size_t letter = isUtf16(text) ? 2 : 1;
    return size >= text.rfind('>') + letter && size % letter == 0;
}

class CutDocumentTest : public testing::TestWithParam<StoredDocument> {};

TEST_P(CutDocumentTest, IsRefusedWithALineUnlessTheRootIsWhole)
{
    const std::string whole = GetParam().content();
    const TortureFolder folder;
    CrashReport report(60);
    libVideo::Scene wholeScene;
    const LoadOutcome expected = loadAndWalk(wholeScene, folder.write(whole));
    auto scene = std::make_unique<libVideo::Scene>(); // a scene may load again after a refusal
    for (const std::size_t place : placesOf(whole.size())) {
        const std::string path = folder.write(whole.substr(0, place));
        report.begin("the first " + std::to_string(place) + " bytes of " + GetParam().path + ", see " + path);
        const LoadOutcome outcome = loadAndWalk(*scene, path);
        EXPECT_EQ("", outcome.fault) << place;
        if (isCompressed(whole)) {
            continue; // the last bytes are a checksum
        }
        if (!isWhole(whole, place)) {
            EXPECT_FALSE(outcome.isLoaded || outcome.hasThrown) << place;
            EXPECT_EQ(1u, outcome.lineCount) << place;
        } else {
            EXPECT_EQ(outcome.isLoaded, expected.isLoaded) << place;
            EXPECT_EQ(outcome.hasThrown, expected.hasThrown) << place;
            scene = std::make_unique<libVideo::Scene>();
        }
    }
}

constexpr std::size_t everyByteUpTo = 20000;
constexpr std::size_t placesOfLargeOnes = 200;

std::vector<std::size_t> placesOf(std::size_t size)
{
    constexpr std::size_t closeEnd = 20;
    const std::size_t step = size <= everyByteUpTo ? 1 : size / placesOfLargeOnes;
    std::vector<std::size_t> places;
    for (std::size_t place = 0; place < size;
         place += size - place <= closeEnd ? 1 : std::min(step, size - place - closeEnd)) {
        places.push_back(place);
    }
    return places;
}

INSTANTIATE_TEST_SUITE_P(Documents, CutDocumentTest, testing::ValuesIn(documents::allDocuments()), rowName);

} // namespace
