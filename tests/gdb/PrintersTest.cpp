#include "support/Process.h"

#include <map>
#include <ostream>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

// What gdb shows of the containers and handles of a program that it has stopped.

namespace {

struct Sample {
    const char* name;
    const char* expression;
    const char* shown; ///< a regular expression
};

void PrintTo(const Sample& sample, std::ostream* out)
{
    *out << sample.name;
}

const std::vector<Sample>& samples()
{
    static const std::vector<Sample> all = {
        {"String", "text", R"("lamp ä \\"x\\"")"},
        {"EmptyString", "none", R"("")"},
        {"CString", "narrow", R"("lamp ä \\"x\\"")"},
        {"Array", "numbers", R"(vesk::Array of 3 \(capacity 8\) = \{10, 20, 30\})"},
        {"ArrayOfStrings", "words", R"(vesk::Array of 2 \(capacity 8\) = \{"sea", "rock"\})"},
        {"EmptyArray", "nothing", R"(vesk::Array of 0 \(capacity 8\))"},
        {"Buffer", "bytes", R"(vesk::Buffer of 2 = \{0 '\\000', 7 '\\a'\})"},
        {"HashTable", "table",
         R"(vesk::HashTable of 2 = \{\["(lamp"\] = 7, \["lens"\] = 8|lens"\] = 8, \["lamp"\] = 7)\})"},
        {"HashTableOfArrays", "nested",
         R"(vesk::HashTable of 1 = \{\["all"\] = vesk::Array of 3 \(capacity 8\) = \{10, 20, 30\}\})"},
        {"SharedResource", "shared", R"(vesk::SharedResource, 2 handles = \{get\(\) = 0x[0-9a-f]+\})"},
        {"LastSharedResource", "single", R"(vesk::SharedResource, 1 handle = \{get\(\) = 0x[0-9a-f]+\})"},
        {"EmptySharedResource", "empty", R"(vesk::SharedResource, empty)"},
        {"CopiedResource", "link", R"(vesk::CopiedResource = \{get\(\) = 0x[0-9a-f]+\})"},
        {"EmptyCopiedResource", "loose", R"(vesk::CopiedResource, empty)"},
        {"Vector", "vector", R"(\(1, 2\.5, -3\))"},
        {"Matrix", "matrix", R"(\[0, 4; 0, 0\])"},
    };
    return all;
}

// Each expression with what gdb prints for it, of one run.
const std::map<std::string, std::string>& shown()
{
    static const std::map<std::string, std::string> all = [] {
        std::vector<std::string> command = {GDB_PROGRAM,
                                            "-batch",
                                            "-nx",
                                            "-ex",
                                            "set auto-load off",
                                            "-ex",
                                            "set debuginfod enabled off",
                                            "-ex",
                                            "source " PRINTERS,
                                            "-ex",
                                            "set host-charset UTF-8",
                                            "-ex",
                                            "set target-charset UTF-8",
                                            "-ex",
                                            "break stopHere",
                                            "-ex",
                                            "run",
                                            "-ex",
                                            "up"};
        for (const Sample& sample : samples()) {
            command.insert(command.end(), {"-ex", std::string("printf \"<%s>\\n\", \"") + sample.expression + "\"",
                                           "-ex", std::string("print ") + sample.expression});
        }
        command.emplace_back(SAMPLES_PROGRAM);
        // The leak checker does not run in a program that is being traced.
        const testSupport::ProcessResult result =
            testSupport::runProcess(command, {false, {"ASAN_OPTIONS=detect_leaks=0", "LC_ALL=C.UTF-8"}});
        EXPECT_EQ(0, result.status) << result.output << result.errors;
        std::map<std::string, std::string> values;
        std::istringstream lines(result.output);
        std::string name;
        for (std::string line; std::getline(lines, line);) {
            if (line.size() > 2 && line.front() == '<' && line.back() == '>') {
                name = line.substr(1, line.size() - 2);
            } else if (const std::size_t start = line.find(" = "); !name.empty() && start != std::string::npos) {
                values[name] = line.substr(start + 3);
                name.clear();
            }
        }
        if (values.empty()) {
            ADD_FAILURE() << result.output << result.errors;
        }
        return values;
    }();
    return all;
}

class PrintersTest : public testing::TestWithParam<Sample> {};

TEST_P(PrintersTest, ShowsWhatIsInside)
{
    if (std::string(GDB_PROGRAM).empty()) {
        GTEST_SKIP() << "gdb is not installed";
    }
    const auto found = shown().find(GetParam().expression);
    ASSERT_NE(shown().end(), found) << "gdb printed nothing";
    EXPECT_TRUE(std::regex_match(found->second, std::regex(GetParam().shown))) << found->second;
}

INSTANTIATE_TEST_SUITE_P(Samples, PrintersTest, testing::ValuesIn(samples()),
                         [](const auto& row) { return std::string(row.param.name); });

} // namespace
