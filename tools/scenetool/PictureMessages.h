#pragma once

#include <functional>
#include <string>

namespace scenetool {

/// Prints a line about a document on standard error; about none if `file` is empty.
/// @param isOverBar takes the line that a bar is drawn on, which is drawn again after it
void complain(const std::string& file, const std::string& line, bool isOverBar = false);

/// Runs a command that draws. @return its status; of what it throws a line and 1, or 2 for options that do not fit
int statusOf(const std::string& file, const std::function<int()>& command, bool isOverBar = false);

} // namespace scenetool
