#include "DocumentCheck.h"
#include "PlainReader.h"

#include "support/Process.h"
#include "support/Rows.h"

#include <nlohmann/json.hpp>

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <ostream>
#include <set>
#include <string>
#include <system_error>
#include <vector>

namespace {

using documents::PlainDocument;
using Json = nlohmann::json;
using testSupport::ProcessResult;
using testSupport::rowName;

// A document and the name of its tests.
struct Document {
    std::string name;
    std::string path;
};

void PrintTo(const Document& document, std::ostream* out)
{
    *out << document.name;
}

bool isDocument(const std::filesystem::path& path);

// All documents of a folder and of those below it, sorted by path.
std::vector<std::filesystem::path> documentsBelow(const std::filesystem::path& folder);

// What names of tests may hold.
std::string identifierOf(const std::string& text);
std::vector<Document> allDocuments();

TEST(CorpusFolderTest, HoldsDocuments)
{
    const std::filesystem::path folder = CORPUS_FOLDER;
    if (folder.empty()) {
        GTEST_SKIP() << "No folder of further documents is configured (LIBVIDEO_CORPUS).";
    }
    EXPECT_FALSE(documentsBelow(folder).empty()) << folder;
}

TEST(CorpusFolderTest, DataHoldsDocuments)
{
    EXPECT_FALSE(documentsBelow(DATA_FOLDER).empty());
}

class CorpusTest : public testing::TestWithParam<Document> {
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

INSTANTIATE_TEST_SUITE_P(Documents, CorpusTest, testing::ValuesIn(allDocuments()), rowName);

// --- what the tests are written with ---

bool isDocument(const std::filesystem::path& path)
{
    std::string ending = path.extension().string();
    std::transform(ending.begin(), ending.end(), ending.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return ending == ".dae";
}

std::vector<std::filesystem::path> documentsBelow(const std::filesystem::path& folder)
{
    std::vector<std::filesystem::path> paths;
    std::error_code error;
    for (std::filesystem::recursive_directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        if (entry->is_regular_file() && isDocument(entry->path())) {
            paths.push_back(entry->path());
        }
    }
    std::sort(paths.begin(), paths.end());
    return paths;
}

std::string identifierOf(const std::string& text)
{
    std::string result = text;
    for (char& c : result) {
        c = std::isalnum(static_cast<unsigned char>(c)) != 0 ? c : '_';
    }
    return result;
}

std::vector<Document> allDocuments()
{
    struct Root {
        const char* name;
        const char* folder;
    };
    std::vector<Document> all;
    std::set<std::string> names;
    for (const Root& root : {Root{"data", DATA_FOLDER}, Root{"corpus", CORPUS_FOLDER}}) {
        const std::filesystem::path folder = root.folder;
        if (folder.empty()) {
            continue;
        }
        for (const std::filesystem::path& path : documentsBelow(folder)) {
            const std::filesystem::path shown = path.lexically_relative(folder).replace_extension();
            std::string name = identifierOf(std::string(root.name) + "_" + shown.string());
            while (!names.insert(name).second) {
                name += "_";
            }
            all.push_back({name, path.string()});
        }
    }
    return all;
}

} // namespace
