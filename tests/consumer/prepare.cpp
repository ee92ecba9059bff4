// A project of its own that prepares a document without loading any.

#include <libPrepare/Prepare.h>

#include <cstdio>

int main(int argc, char** argv)
{
    if (argc != 2) {
        return 2;
    }
    const libPrepare::Report found = libPrepare::inspect(argv[1]);
    const libPrepare::Report report = libPrepare::prepare(argv[1], "/dev/null");
    for (const libPrepare::Finding& finding : report.findings) {
        std::printf("%u: %s\n", finding.place.line, finding.text.c_str());
    }
    return found.done && report.done ? 0 : 1;
}
