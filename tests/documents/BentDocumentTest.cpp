#include "DocumentFolder.h"

#include "support/CrashReport.h"
#include "support/DocumentChange.h"
#include "support/Rows.h"
#include "support/SceneWalker.h"
#include "support/TortureFolder.h"

#include <libVideo/SceneGraph/Scene.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

// Documents with one thing changed: each attribute, number, reference and element in turn.

namespace {

using documents::StoredDocument;
using namespace testSupport;

// Limits the variants of a document to keep the tests short: the total bytes to load, and the minimum number for large
// documents. With LIBVIDEO_EVERY_CHANGE in the environment, all variants are loaded, however long that takes.
#ifdef __SANITIZE_ADDRESS__
constexpr std::size_t slowness = 4;
#else
constexpr std::size_t slowness = 1;
#endif
constexpr std::size_t mostBytes = 4000000 / slowness;
constexpr std::size_t fewestVariants = 20 / slowness;
constexpr std::size_t mostVariants = 600 / slowness;
constexpr std::uint32_t mostSeeds = 1500 / slowness;

std::string wordsOf(const DocumentChange& change);

// Evenly spread over all changes.
std::vector<DocumentChange> sampleOf(const std::vector<DocumentChange>& changes, std::size_t documentSize);

class BentDocumentTest : public testing::TestWithParam<StoredDocument> {};

TEST_P(BentDocumentTest, EachVariantLoadsOrIsRefusedWithALine)
{
    const std::string original = GetParam().content();
    ChangeableDocument whole;
    if (!whole.read(original)) {
        GTEST_SKIP() << "not plain text";
    }
    const TortureFolder folder;
    CrashReport report(60);
    std::size_t loaded = 0;
    const std::vector<DocumentChange> sample = sampleOf(whole.everyChange(), original.size());
    for (const DocumentChange& change : sample) {
        ChangeableDocument document;
        ASSERT_TRUE(document.read(original));
        document.apply(change);
        const std::string path = folder.write(document.text());
        report.begin(wordsOf(change) + " of " + GetParam().path + ", see " + path);
        libVideo::Scene scene;
        const LoadOutcome outcome = loadAndWalk(scene, path);
        EXPECT_EQ("", outcome.fault) << wordsOf(change);
        loaded += outcome.isLoaded ? 1 : 0;
    }
    RecordProperty("variants", std::to_string(sample.size()));
    RecordProperty("loaded", std::to_string(loaded));
    const std::string path = folder.write(original);
    libVideo::Scene scene;
    if (loadAndWalk(scene, path).isLoaded) {
        EXPECT_GT(loaded, sample.size() / 4) << "a changed value is no reason to refuse a document";
    }
}

INSTANTIATE_TEST_SUITE_P(Documents, BentDocumentTest, testing::ValuesIn(documents::allDocuments()), rowName);

// Several changes at a time, at random but the same in each run.
TEST(BentDocumentTest, ManyChangesAtOnceLoadOrAreRefusedWithALine)
{
    const std::vector<StoredDocument> originals = documents::ownDocuments();
    ASSERT_GT(originals.size(), 10u);
    const TortureFolder folder;
    CrashReport report(60);
    for (std::uint32_t seed = 1; seed <= mostSeeds; ++seed) {
        std::string text = originals[seed % originals.size()].content();
        DocumentMutator mutator(seed);
        if (seed % 5 == 0) {
            mutator.crossOver(text, originals[seed / 5 % originals.size()].content());
        }
        for (std::uint32_t i = 0; i < 1 + seed % 3; ++i) {
            mutator.mutate(text);
        }
        const std::string path = folder.write(text);
        report.begin("seed " + std::to_string(seed) + ", see " + path);
        libVideo::Scene scene;
        EXPECT_EQ("", loadAndWalk(scene, path).fault) << "seed " << seed;
    }
}

std::string wordsOf(const DocumentChange& change)
{
    return "change of kind " + std::to_string(change.kind) + " at element " + std::to_string(change.element) +
           ", part " + std::to_string(change.part) + ", value " + std::to_string(change.value);
}

std::vector<DocumentChange> sampleOf(const std::vector<DocumentChange>& changes, std::size_t documentSize)
{
    const std::size_t wanted =
        std::clamp(mostBytes / std::max<std::size_t>(documentSize, 1), fewestVariants, mostVariants);
    if (changes.size() <= wanted || std::getenv("LIBVIDEO_EVERY_CHANGE") != nullptr) {
        return changes;
    }
    std::vector<DocumentChange> sample;
    for (std::size_t i = 0; i < wanted; ++i) {
        sample.push_back(changes[i * changes.size() / wanted]);
    }
    return sample;
}

} // namespace
