#pragma once

#include <chrono>
#include <string>
#include <vector>

namespace testSupport {

/// How `runProcess` starts a program.
struct ProcessOptions {
    /// Standard output is a pseudo-terminal instead of a pipe, so that lines end with "\r\n".
    bool hasTerminal = false;
    /// "NAME=value" sets an environment variable, "NAME" removes it; the others are inherited.
    std::vector<std::string> environment;
    /// A program that takes longer is killed.
    std::chrono::seconds limit{120};
};

/// The result of a program.
struct ProcessResult {
    int status = -1;    ///< exit status; 128 plus the signal's number if a signal ended it
    std::string output; ///< all of standard output
    std::string errors; ///< all of standard error
};

/// Whether a pseudo-terminal can be opened: a bare system may have none.
bool hasTerminals();

/// Runs a program until it exits, with an empty standard input. There is no shell, so arguments are passed unchanged.
/// @param arguments the path of the program, then its arguments
/// @throws std::runtime_error if the program does not start or does not exit in time
ProcessResult runProcess(const std::vector<std::string>& arguments, const ProcessOptions& options = ProcessOptions());

} // namespace testSupport
