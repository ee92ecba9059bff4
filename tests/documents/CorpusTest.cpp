#include "DocumentCheck.h"
#include "DocumentFolder.h"
#include "PlainReader.h"

#include "support/Process.h"
#include "support/Rows.h"

#include <nlohmann/json.hpp>

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace {

using documents::documentsBelow;
using documents::PlainDocument;
using documents::StoredDocument;
using Json = nlohmann::json;
using testSupport::ProcessResult;
using testSupport::rowName;

TEST(CorpusFolderTest, HoldsDocuments)
{
    const std::string folder = CORPUS_FOLDER;
    if (folder.empty()) {
        GTEST_SKIP() << "No folder of further documents is configured (LIBVIDEO_CORPUS).";
    }
    EXPECT_FALSE(documentsBelow("corpus", folder).empty()) << folder;
}

TEST(CorpusFolderTest, DataHoldsDocuments)
{
    EXPECT_FALSE(documentsBelow("data", DATA_FOLDER).empty());
}

class CorpusTest : public testing::TestWithParam<StoredDocument> {
protected:
    void SetUp() override
    {
        m_expected = documents::readPlainly(GetParam().path);
        if (m_expected.leadsElsewhere) {
            GTEST_SKIP() << "The plain reader does not follow references into other files.";
        }
    }

    const std::string& path() const { return GetParam().path; }
    const PlainDocument& expected() const { return m_expected; }
    bool loads() const { return m_expected.outcome == PlainDocument::Outcome::loads; }

private:
    PlainDocument m_expected;
};

TEST_P(CorpusTest, LoadsAsAPlainReaderReadsIt)
{
    documents::expectLoadAsRead(path(), expected());
}

#ifdef SCENETOOL_PROGRAM

void expectStatus(const ProcessResult& result, bool loads)
{
    EXPECT_EQ(result.status, loads ? 0 : 1);
    if (!loads) {
        EXPECT_EQ(1, std::count(result.errors.begin(), result.errors.end(), '\n')) << result.errors;
    }
}

TEST_P(CorpusTest, IsDumpedAsAPlainReaderReadsIt)
{
    const ProcessResult result = testSupport::runProcess({SCENETOOL_PROGRAM, "dump", path()});
    expectStatus(result, loads());
    const Json dump = Json::parse(result.output, nullptr, false);
    ASSERT_TRUE(dump.is_object()) << result.output;
    documents::expectDumpAsRead(dump, expected());
}

TEST_P(CorpusTest, IsDumpedAtATimeAndFolded)
{
    const ProcessResult result =
        testSupport::runProcess({SCENETOOL_PROGRAM, "dump", path(), "--time", "0.7", "--fold"});
    const Json dump = Json::parse(result.output, nullptr, false);
    ASSERT_TRUE(dump.is_object()) << result.output;
    expectStatus(result, loads() && dump.at("error").is_null()); // an evaluation may throw
    documents::expectFoldedDumpAsRead(dump, expected());
    const bool hasAnimation = std::any_of(expected().nodes.begin(), expected().nodes.end(),
                                          [](const documents::PlainNode& node) { return node.isAnimated; });
    if (loads() && !hasAnimation) {
        EXPECT_TRUE(dump.at("error").is_null()) << dump.at("error");
    }
}

#endif

std::vector<StoredDocument> allDocuments()
{
    std::vector<StoredDocument> all = documentsBelow("data", DATA_FOLDER);
    for (const StoredDocument& document : documentsBelow("corpus", CORPUS_FOLDER)) {
        all.push_back(document);
    }
    return all;
}

INSTANTIATE_TEST_SUITE_P(Documents, CorpusTest, testing::ValuesIn(allDocuments()), rowName);

} // namespace
