#pragma once

#include <functional>
#include <string>

namespace scenetool {

/// Status of a command that could not draw all that it was asked for.
constexpr int drawingFailed = 1;

/// Prints a message about a document to standard error. `file` may be empty.
/// @param isOverBar replaces the progress bar on the current line; the next update of the bar draws it again
void complain(const std::string& file, const std::string& line, bool isOverBar = false);

/// Runs a command that draws, and prints the message of an exception.
/// @return the status of the command; after an exception `drawingFailed`, or 2 if the options are wrong
int statusOf(const std::string& file, const std::function<int()>& command, bool isOverBar = false);

} // namespace scenetool
