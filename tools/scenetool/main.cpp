#include "CheckCommand.h"
#include "CommandLine.h"
#include "DumpCommand.h"
#include "InfoCommand.h"
#include "PrepareCommand.h"
#include "SandboxOptions.h"
#include "common/Printable.h"
#ifdef SCENETOOL_HAS_PICTURES
#include "ConvertCommand.h"
#include "RenderCommand.h"
#include "ViewCommand.h"
#endif
#ifdef SCENETOOL_HAS_PAGE
#include "PageCommand.h"
#endif

#include <cstdlib>
#include <exception>
#include <iostream>
#include <string>

namespace {

constexpr int failed = 1;
constexpr int usageError = 2;

// Runs the command that the command line names, which is one of these.
int runParsed()
{
    return failed;
}
template <class Command, class... Others>
int runParsed(Command& command, Others&... others)
{
    return command.isParsed() ? command.run() : runParsed(others...);
}

int run(int argc, char** argv)
{
    scenetool::CommandLine line("scenetool",
                                "Shows what a COLLADA 1.4.1 document holds, as the libVideo scene graph loads it.",
                                "scenetool " SCENETOOL_VERSION);
    scenetool::SandboxOptions sandbox;
    const scenetool::InfoCommand info(line, sandbox);
    const scenetool::DumpCommand dump(line, sandbox);
    const scenetool::CheckCommand check(line, sandbox);
    scenetool::PrepareCommand prepare(line);
#ifdef SCENETOOL_HAS_PICTURES
    const scenetool::ConvertCommand convert(line, sandbox);
#ifdef SCENETOOL_HAS_PAGE
    const scenetool::PageCommand page(line);
#endif
    scenetool::RenderCommand render(line, sandbox);
    scenetool::ViewCommand view(line);
#endif

    const std::string first = argc > 1 ? argv[1] : "";
    if (const std::string unknown = line.unknownCommand(first); !unknown.empty()) {
        std::cerr << "scenetool: " << scenetool::printable(unknown) << " (see scenetool --help)\n";
        return usageError;
    }
    try {
        if (!line.parse(argc, argv)) {
            return EXIT_SUCCESS;
        }
    } catch (const scenetool::CommandLineError& error) {
        std::cerr << "scenetool: " << scenetool::printable(error.what()) << " (see scenetool --help)\n";
        return first == "check" ? scenetool::CheckCommand::usageError : usageError;
    }
#ifdef SCENETOOL_HAS_PAGE
    if (page.isParsed()) {
        return page.run();
    }
#endif
#ifdef SCENETOOL_HAS_PICTURES
    if (convert.isParsed() || render.isParsed() || view.isParsed()) {
        return runParsed(convert, render, view);
    }
#endif
    return runParsed(info, dump, check, prepare);
}

} // namespace

int main(int argc, char** argv)
{
    try {
        const int status = run(argc, argv);
        if (!std::cout.flush()) {
            std::cerr << "scenetool: cannot write to standard output\n";
            return failed;
        }
        return status;
    } catch (const std::exception& exception) {
        std::cerr << "scenetool: " << exception.what() << '\n';
        return failed;
    }
}
