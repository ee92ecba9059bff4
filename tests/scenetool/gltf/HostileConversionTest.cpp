#include "documents/DocumentFolder.h"

#include "support/ColladaBuilder.h"
#include "support/DocumentChange.h"
#include "support/Process.h"

#include <nlohmann/json.hpp>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace {

// Each conversion runs in its own process, so its line gives a crash, a hang or a sanitizer error as the reason.
TEST(HostileConversionTest, BentDocumentsAreConvertedOrRefusedWithAReason)
{
    constexpr std::size_t mostBytes = 50000;
    constexpr unsigned variants = 4;
    const testSupport::TemporaryFile folder(testSupport::ColladaBuilder().text());
    std::vector<documents::StoredDocument> originals = documents::documentsBelow("hostile", HOSTILE_FOLDER);
    for (const documents::StoredDocument& seed : documents::documentsBelow("seed", SEED_FOLDER)) {
        originals.push_back(seed);
    }
    std::size_t written = 1;
    for (const documents::StoredDocument& original : originals) {
        std::string content = original.content();
        for (unsigned seed = 0; seed < variants && content.size() < mostBytes; ++seed, ++written) {
            std::ofstream(folder.folder() / (original.name + std::to_string(seed) + ".dae"), std::ios::binary)
                << content;
            content = original.content();
            testSupport::DocumentMutator(seed).mutate(content);
        }
    }

    const testSupport::ProcessResult result =
        testSupport::runProcess({SCENETOOL_PROGRAM, "convert", folder.folder().string(), "-o",
                                 (folder.folder() / "results").string(), "--jobs", "2", "--time-limit", "300"});

    std::size_t converted = 0;
    std::size_t lineCount = 0;
    std::istringstream lines(result.output);
    for (std::string line; std::getline(lines, line); ++lineCount) {
        const nlohmann::json json = nlohmann::json::parse(line);
        converted += json["status"] == "converted" ? 1 : 0;
        const std::string reason = json.value("reason", std::string());
        for (const char* const end :
             {"crashed", "failed with an exception", "without a reason", "was killed", "did not finish"}) {
            EXPECT_EQ(std::string::npos, reason.find(end)) << line;
        }
    }
    EXPECT_EQ(written, lineCount);
    EXPECT_LT(written / 4, converted);
}

} // namespace
