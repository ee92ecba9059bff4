#include "PictureMessages.h"

#include "common/Printable.h"
#include "render/SceneShow.h"

#include <iostream>

namespace scenetool {

namespace {

constexpr int usageError = 2;

} // namespace

void complain(const std::string& file, const std::string& line, bool isOverBar)
{
    std::cerr << (isOverBar ? "\r\033[K" : "") << "scenetool: " << printable(file) << (file.empty() ? "" : ": ")
              << printable(line) << '\n';
}

int statusOf(const std::string& file, const std::function<int()>& command, bool isOverBar)
{
    try {
        return command();
    } catch (const PictureUsageError& error) {
        complain("", error.what(), isOverBar);
        return usageError;
    } catch (const PictureError& error) {
        complain(file, error.what(), isOverBar);
        return drawingFailed;
    }
}

} // namespace scenetool
