#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
} // namespace CLI

namespace scenetool {

/// Thrown if the command line is wrong. The message is one line.
class CommandLineError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// An option or argument of a command, which owns it.
class Option {
public:
    /// Returns the fault of a value, or an empty text if it has none.
    using Check = std::function<std::string(const std::string& text)>;

    explicit Option(CLI::Option* option) : m_option(option) {}

    Option& require();
    Option& exclude(const Option& other);
    Option& check(const Check& check);
    /// The value has to be from `lowest` to `highest`, which the help shows.
    Option& checkRange(unsigned lowest, unsigned highest);
    /// The value has to be above 0, which the help shows.
    Option& checkPositive();
    /// Shows the present value in the help as the default.
    Option& showDefault();
    Option& showDefault(const char* text);
    /// Does not show in the help what kind of value is expected.
    Option& hideType();

private:
    CLI::Option* m_option;
};

/// A command of the program. Its options store what they read in the variables given, which have to outlive the parse.
/// All code of the parser is compiled with this class, and not with each command, because it is large.
class Command {
public:
    explicit Command(CLI::App* command) : m_command(command) {}

    /// Adds an option such as "-o,--output", or an argument such as "FILE". @param help its line in the help
    Option add(const char* names, std::string& value, const char* help);
    Option add(const char* names, std::vector<std::string>& values, const char* help);
    Option add(const char* names, std::optional<double>& value, const char* help);
    Option add(const char* names, double& value, const char* help);
    Option add(const char* names, unsigned& value, const char* help);
    Option add(const char* names, std::optional<unsigned>& value, const char* help);
    Option add(const char* names, std::uint64_t& value, const char* help);
    Option addFlag(const char* name, bool& value, const char* help);
    /// Adds an option for one of these words, in upper or lower case. `value` gets the number of the word.
    Option addChoice(const char* names, int& value, const std::map<std::string, int>& words, const char* help);
    /// Adds an option for a number of bytes such as 500MB.
    Option addSize(const char* names, std::uint64_t& value, const char* help);
    /// Adds an option that can be given without a value, which then is "true".
    /// @param read stores a value, and returns its fault or an empty text
    Option addOptional(const char* name, const Option::Check& read, const char* help);
    /// Adds text to the end of the help.
    void addFooter(const char* text);

    /// Whether the command line names this command.
    bool isParsed() const;
    /// Whether the command line has this option.
    bool has(const char* option) const;

private:
    CLI::App* m_command;
};

/// The command line of the program: one command with its options and arguments.
class CommandLine {
public:
    /// @param version what `--version` prints
    CommandLine(const char* program, const char* purpose, const char* version);
    ~CommandLine();
    CommandLine(const CommandLine&) = delete;
    CommandLine& operator=(const CommandLine&) = delete;

    Command addCommand(const char* name, const char* purpose);
    /// What is wrong if the first word of a command line is not the name of a command, and which command it may mean;
    /// empty if the word is a command or an option.
    std::string unknownCommand(const std::string& word) const;
    /// @return false if the help or the version was requested, which is printed then @throws CommandLineError
    bool parse(int argc, char** argv);

private:
    std::unique_ptr<CLI::App> m_app;
};

} // namespace scenetool
