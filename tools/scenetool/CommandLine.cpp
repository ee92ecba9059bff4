#include "CommandLine.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <numeric>
#include <utility>

namespace scenetool {

namespace {

// Edit distance of two words: the number of characters to insert, delete or replace.
std::size_t distance(const std::string& one, const std::string& other)
{
    std::vector<std::size_t> row(other.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t(0));
    for (std::size_t i = 1; i <= one.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i;
        for (std::size_t j = 1; j <= other.size(); ++j) {
            const std::size_t replaced = diagonal + (one[i - 1] == other[j - 1] ? 0 : 1);
            diagonal = row[j];
            row[j] = std::min({row[j] + 1, row[j - 1] + 1, replaced});
        }
    }
    return row.back();
}

} // namespace

Option& Option::require()
{
    m_option->required();
    return *this;
}

Option& Option::exclude(const Option& other)
{
    m_option->excludes(other.m_option);
    return *this;
}

Option& Option::check(const Check& check)
{
    m_option->check(CLI::Validator([check](const std::string& text) { return check(text); }, ""));
    return *this;
}

Option& Option::checkRange(unsigned lowest, unsigned highest)
{
    m_option->check(CLI::Range(lowest, highest));
    return *this;
}

Option& Option::checkPositive()
{
    m_option->check(CLI::PositiveNumber);
    return *this;
}

Option& Option::showDefault()
{
    m_option->capture_default_str();
    return *this;
}

Option& Option::showDefault(const char* text)
{
    m_option->default_str(text);
    return *this;
}

Option& Option::hideType()
{
    m_option->type_name("");
    return *this;
}

Option Command::add(const char* names, std::string& value, const char* help)
{
    return Option(m_command->add_option(names, value, help));
}

Option Command::add(const char* names, std::vector<std::string>& values, const char* help)
{
    return Option(m_command->add_option(names, values, help));
}

Option Command::add(const char* names, std::optional<double>& value, const char* help)
{
    return Option(m_command->add_option(names, value, help));
}

Option Command::add(const char* names, double& value, const char* help)
{
    return Option(m_command->add_option(names, value, help));
}

Option Command::add(const char* names, unsigned& value, const char* help)
{
    return Option(m_command->add_option(names, value, help));
}

Option Command::add(const char* names, std::optional<unsigned>& value, const char* help)
{
    return Option(m_command->add_option(names, value, help));
}

Option Command::add(const char* names, std::uint64_t& value, const char* help)
{
    return Option(m_command->add_option(names, value, help));
}

Option Command::addFlag(const char* name, bool& value, const char* help)
{
    return Option(m_command->add_flag(name, value, help));
}

Option Command::addChoice(const char* names, int& value, const std::map<std::string, int>& words, const char* help)
{
    CLI::Option* const option = m_command->add_option(names, value, help);
    option->transform(CLI::CheckedTransformer(words, CLI::ignore_case).description(""));
    return Option(option);
}

Option Command::addSize(const char* names, std::uint64_t& value, const char* help)
{
    CLI::Option* const option = m_command->add_option(names, value, help);
    option->transform(CLI::AsSizeValue(false).description(""));
    return Option(option);
}

Option Command::addOptional(const char* name, const Option::Check& read, const char* help)
{
    const std::function<void(const std::string&)> store = [read, name = std::string(name)](const std::string& text) {
        if (const std::string fault = read(text); !fault.empty()) {
            throw CLI::ValidationError(name, fault);
        }
    };
    CLI::Option* const option = m_command->add_option_function<std::string>(name, store, help);
    option->expected(0, 1);
    return Option(option);
}

void Command::addFooter(const char* text)
{
    m_command->footer(text);
}

bool Command::isParsed() const
{
    return m_command->parsed();
}

bool Command::has(const char* option) const
{
    return m_command->count(option) > 0;
}

CommandLine::CommandLine(const char* program, const char* purpose, const char* version)
    : m_app(std::make_unique<CLI::App>(purpose, program))
{
    m_app->set_version_flag("--version", version);
    m_app->require_subcommand(1);
}

CommandLine::~CommandLine() = default;

Command CommandLine::addCommand(const char* name, const char* purpose)
{
    return Command(m_app->add_subcommand(name, purpose));
}

std::string CommandLine::unknownCommand(const std::string& word) const
{
    std::string nearest;
    for (const CLI::App* const command : std::as_const(*m_app).get_subcommands({})) {
        const std::string& name = command->get_name();
        if (name == word) {
            return "";
        }
        if (nearest.empty() || distance(word, name) < distance(word, nearest)) {
            nearest = name;
        }
    }
    if (word.empty() || word.front() == '-') {
        return "";
    }
    const bool isNear = distance(word, nearest) <= std::max<std::size_t>(2, word.size() / 2);
    return "there is no command \"" + word.substr(0, 60) + '"' + (isNear ? "; did you mean " + nearest + '?' : "");
}

bool CommandLine::parse(int argc, char** argv)
{
    try {
        m_app->parse(argc, argv);
        return true;
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() != static_cast<int>(CLI::ExitCodes::Success)) {
            throw CommandLineError(error.what());
        }
        m_app->exit(error); // prints the help or the version
        return false;
    }
}

} // namespace scenetool
