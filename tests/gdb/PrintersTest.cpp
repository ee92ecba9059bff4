#include "support/Process.h"

#include <map>
#include <optional>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

// What gdb shows of the containers and handles of a program that it has stopped.

namespace {

struct Sample {
    const char* expression;
    const char* shown; ///< a regular expression
};

const std::vector<Sample>& samples();

// Each expression with what gdb prints for it, of one run; nothing where programs may not be traced.
std::optional<std::map<std::string, std::string>> shown();

// One test, since each would start gdb anew.
TEST(PrintersTest, ShowWhatIsInside)
{
    if (std::string(GDB_PROGRAM).empty()) {
        GTEST_SKIP() << "gdb is not installed";
    }
    const auto values = shown();
    if (!values) {
        GTEST_SKIP() << "this machine lets no program be traced";
    }
    for (const Sample& sample : samples()) {
        const auto found = values->find(sample.expression);
        ASSERT_NE(values->end(), found) << "gdb printed nothing for " << sample.expression;
        EXPECT_TRUE(std::regex_match(found->second, std::regex(sample.shown)))
            << sample.expression << " = " << found->second;
    }
}

const std::vector<Sample>& samples()
{
    static const std::vector<Sample> all = {
        {"text", R"("lamp ä \\"x\\"")"},
        {"none", R"("")"},
        {"narrow", R"("lamp ä \\"x\\"")"},
        {"numbers", R"(vesk::Array of 3 \(capacity 8\) = \{10, 20, 30\})"},
        {"words", R"(vesk::Array of 2 \(capacity 8\) = \{"sea", "rock"\})"},
        {"nothing", R"(vesk::Array of 0 \(capacity 8\))"},
        {"bytes", R"(vesk::Buffer of 2 = \{0 '\\000', 7 '\\a'\})"},
        {"table", R"(vesk::HashTable of 2 = \{\["(lamp"\] = 7, \["lens"\] = 8|lens"\] = 8, \["lamp"\] = 7)\})"},
        {"nested", R"(vesk::HashTable of 1 = \{\["all"\] = vesk::Array of 3 \(capacity 8\) = \{10, 20, 30\}\})"},
        {"shared", R"(vesk::SharedResource, 2 handles = \{get\(\) = 0x[0-9a-f]+\})"},
        {"single", R"(vesk::SharedResource, 1 handle = \{get\(\) = 0x[0-9a-f]+\})"},
        {"empty", R"(vesk::SharedResource, empty)"},
        {"link", R"(vesk::CopiedResource = \{get\(\) = 0x[0-9a-f]+\})"},
        {"loose", R"(vesk::CopiedResource, empty)"},
        {"vector", R"(\(1, 2\.5, -3\))"},
        {"matrix", R"(\[0, 4; 0, 0\])"},
    };
    return all;
}

std::optional<std::map<std::string, std::string>> shown()
{
    std::vector<std::string> command = {GDB_PROGRAM, "-batch", "-nx"};
    const auto execute = [&command](const std::string& line) { command.insert(command.end(), {"-ex", line}); };
    // Not every machine lets gdb call a function of the program, so that nothing here may need one. The shell of the
    // user does not matter either.
    for (const char* const line : {"set auto-load off", "set debuginfod enabled off", "set host-charset UTF-8",
                                   "set target-charset UTF-8", "set startup-with-shell off",
                                   "set may-call-functions off", "source " PRINTERS, "break stopHere", "run", "up"}) {
        execute(line);
    }
    for (const Sample& sample : samples()) {
        execute(std::string("echo <") + sample.expression + ">\\n");
        execute(std::string("print ") + sample.expression);
    }
    command.emplace_back(SAMPLES_PROGRAM);
    // The leak checker does not run in a program that is being traced.
    const testSupport::ProcessResult result =
        testSupport::runProcess(command, {false, {"ASAN_OPTIONS=detect_leaks=0", "LC_ALL=C.UTF-8"}});
    if (result.errors.find("Could not trace the inferior process") != std::string::npos) {
        return std::nullopt;
    }
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
}

} // namespace
