#include "support/ColladaBuilder.h"
#include "support/Process.h"

#include <nlohmann/json.hpp>

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <utility>

namespace {

using testSupport::ColladaBuilder;
using testSupport::TemporaryFile;

namespace fs = std::filesystem;

// A folder of documents, converted.
class FolderConversionTest : public testing::Test {
protected:
    FolderConversionTest()
        : m_first(ColladaBuilder().addScene("<node id='a'><scale>1 1 1</scale></node>").text(), "first.dae")
    {
        fs::create_directories(m_first.folder() / "below");
        fs::copy(m_first.path(), m_first.folder() / "below" / "second.DAE");
        std::ofstream(m_first.folder() / "broken.dae") << "<COLLADA";
        std::ofstream(m_first.folder() / "notes.txt") << "no document";
    }

    fs::path in() const { return m_first.folder(); }
    fs::path out() const { return m_first.folder() / "results"; }

    // The exit status, and the result for each document by file name.
    std::pair<int, std::map<std::string, std::string>> convert(const std::string& jobs)
    {
        const testSupport::ProcessResult result = testSupport::runProcess(
            {SCENETOOL_PROGRAM, "convert", in().string(), "-o", out().string(), "--jobs", jobs, "--as-loaded"});
        std::map<std::string, std::string> states;
        std::istringstream lines(result.output);
        for (std::string line; std::getline(lines, line);) {
            const nlohmann::json json = nlohmann::json::parse(line);
            states[fs::path(json["file"].get<std::string>()).filename().string()] = json["status"].get<std::string>();
        }
        return {result.status, states};
    }

private:
    TemporaryFile m_first;
};

using States = std::map<std::string, std::string>;

TEST_F(FolderConversionTest, EachDocumentBelowIsConvertedOrFailsAlone)
{
    const auto [status, states] = convert("2");
    EXPECT_EQ(1, status);
    EXPECT_EQ((States{{"first.dae", "converted"}, {"second.DAE", "converted"}, {"broken.dae", "failed"}}), states);
    EXPECT_TRUE(fs::exists(out() / "first.glb"));
    EXPECT_TRUE(fs::exists(out() / "below" / "second.glb"));
    EXPECT_FALSE(fs::exists(out() / "broken.glb"));
}

TEST_F(FolderConversionTest, SecondRunConvertsOnlyWhatIsNewer)
{
    convert("1");
    fs::last_write_time(in() / "first.dae", fs::file_time_type::clock::now() + std::chrono::hours(1));
    EXPECT_EQ((States{{"first.dae", "converted"}, {"second.DAE", "up to date"}, {"broken.dae", "failed"}}),
              convert("1").second);
}

TEST_F(FolderConversionTest, RemainsOfAnInterruptedRunGo)
{
    fs::create_directories(out());
    const fs::path remains = out() / "first.glb.part999999999"; // no process has this number
    std::ofstream(remains.string()) << "half";
    convert("1");
    EXPECT_FALSE(fs::exists(remains));
    EXPECT_TRUE(fs::exists(out() / "first.glb"));
}

} // namespace
