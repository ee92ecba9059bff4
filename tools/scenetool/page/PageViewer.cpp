#include "PageViewer.h"

// The build makes the script (see Bundle.cmake), and the assembler embeds it unchanged.
asm(".section .rodata\n"
    "scenetoolPageViewer:\n"
    ".incbin \"" SCENETOOL_PAGE_VIEWER "\"\n"
    "scenetoolPageViewerEnd:\n"
    ".byte 0\n"
    ".previous\n");

extern "C" {
__attribute__((visibility("hidden"))) extern const char scenetoolPageViewer[];
__attribute__((visibility("hidden"))) extern const char scenetoolPageViewerEnd[];
}

namespace scenetool {

std::string_view pageViewer()
{
    return {scenetoolPageViewer, static_cast<std::size_t>(scenetoolPageViewerEnd - scenetoolPageViewer)};
}

} // namespace scenetool
