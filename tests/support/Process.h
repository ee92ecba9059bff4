#pragma once

#include <chrono>
#include <string>
#include <vector>

namespace testSupport {

/// How `runProcess` starts a program.
struct ProcessOptions {
    /// Standard output is a pseudo-terminal instead of a pipe; its line ends then read "\r\n".
    bool hasTerminal = false;
    /// "NAME=value" sets a variable of the environment, "NAME" alone takes it away; the others are inherited.
    std::vector<std::string> environment;
    /// A program that takes longer is killed.
    std::chrono::seconds limit{120};
};

/// What a program left behind.
struct ProcessResult {
    int status = -1;    ///< what it returned; 128 and the signal's number if a signal ended it
    std::string output; ///< all of standard output
    std::string errors; ///< all of standard error
};

/// Whether a pseudo-terminal can be opened: a bare system may have none.
bool hasTerminals();

/// Runs a program to its end, with an empty standard input. No shell stands between, so every argument arrives as it
/// is written here.
/// @param arguments the path of the program, and what it is given
/// @throws std::runtime_error if the program does not start or does not end in time
ProcessResult runProcess(const std::vector<std::string>& arguments, const ProcessOptions& options = ProcessOptions());

} // namespace testSupport
