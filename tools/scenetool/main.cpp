#include "Dump.h"
#include "Info.h"
#include "LoadedScene.h"
#include "PrepareCommand.h"
#include "Printable.h"
#include "SandboxOptions.h"
#ifdef SCENETOOL_HAS_PICTURES
#include "ConvertCommand.h"
#include "PictureCommands.h"
#endif
#ifdef SCENETOOL_HAS_PAGE
#include "PageCommand.h"
#endif

#include <CLI/CLI.hpp>

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <optional>
#include <string>
#include <vector>

namespace {

constexpr int loadFailed = 1;
constexpr int usageError = 2;

// Reports what failed, if anything did, in one line on standard error.
void reportFault(const scenetool::LoadedScene& loaded)
{
    const std::string fault = loaded.fault();
    if (!fault.empty()) {
        std::cerr << "scenetool: " << scenetool::printable(loaded.file()) << ": " << scenetool::printable(fault)
                  << '\n';
    }
}

int info(const std::string& file, bool showsAllNodes)
{
    const scenetool::LoadedScene loaded(file);
    if (loaded.isLoaded()) {
        scenetool::InfoOptions options;
        options.isColored = isatty(STDOUT_FILENO) == 1 && std::getenv("NO_COLOR") == nullptr;
        options.showsAllNodes = showsAllNodes;
        scenetool::writeInfo(loaded, options, std::cout);
    }
    reportFault(loaded);
    return loaded.isLoaded() ? EXIT_SUCCESS : loadFailed;
}

int dump(const std::string& file, const std::optional<double>& time, bool folds)
{
    scenetool::LoadedScene loaded(file);
    if (loaded.isLoaded()) {
        const bool isEvaluated = !time || loaded.evaluate(*time);
        if (folds && isEvaluated) {
            loaded.fold();
        }
    }
    scenetool::writeDump(loaded, std::cout);
    reportFault(loaded);
    return loaded.isLoaded() ? EXIT_SUCCESS : loadFailed;
}

int run(int argc, char** argv)
{
    CLI::App app("Shows what a COLLADA 1.4.1 document holds, as the libVideo scene graph loads it.", "scenetool");
    app.set_version_flag("--version", "scenetool " SCENETOOL_VERSION);
    app.require_subcommand(1);

    std::vector<std::string> files;
    scenetool::SandboxOptions sandbox;
    bool showsAllNodes = false;
    CLI::App* const infoCommand = app.add_subcommand(
        "info", "Prints counts, the node tree with its transforms and animations, and messages, for people.");
    infoCommand->add_option("FILE", files, "The documents")->required();
    infoCommand->add_flag("--all", showsAllNodes, "Show all nodes of the tree, not only the first two hundred");
    sandbox.addTo(*infoCommand);

    std::optional<double> time;
    bool folds = false;
    CLI::App* const dumpCommand = app.add_subcommand("dump", "Prints the whole scene as one JSON object.");
    std::string file;
    dumpCommand->add_option("FILE", file, "The document")->required();
    dumpCommand->add_option("--time", time, "Ask every node for its state at this time in seconds first");
    dumpCommand->add_flag("--fold", folds, "Fold parents into the nodes, so that matrices are world matrices");
    sandbox.addTo(*dumpCommand);

    scenetool::PrepareCommand prepare(app);

#ifdef SCENETOOL_HAS_PICTURES
    const scenetool::ConvertCommand convert(app, sandbox);
#ifdef SCENETOOL_HAS_PAGE
    const scenetool::PageCommand page(app);
#endif
    scenetool::PictureCommands pictures(app, sandbox);
#endif

    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success)) {
            return app.exit(error); // help and version
        }
        std::cerr << "scenetool: " << scenetool::printable(error.what()) << " (see scenetool --help)\n";
        return usageError;
    }
#ifdef SCENETOOL_HAS_PICTURES
#ifdef SCENETOOL_HAS_PAGE
    if (page.isParsed()) {
        return page.run();
    }
#endif
    if (convert.isParsed()) {
        return convert.run();
    }
    if (pictures.isParsed()) {
        return pictures.run();
    }
#endif
    if (prepare.isParsed()) {
        return prepare.run();
    }
    if (dumpCommand->parsed()) {
        return sandbox.run(file, 1, [&] { return dump(file, time, folds); });
    }
    int status = EXIT_SUCCESS;
    for (const std::string& each : files) {
        if (&each != &files.front()) {
            std::cout << '\n';
        }
        status = std::max(status, sandbox.run(each, files.size(), [&] { return info(each, showsAllNodes); }));
    }
    return status;
}

} // namespace

int main(int argc, char** argv)
{
    try {
        const int status = run(argc, argv);
        if (!std::cout.flush()) {
            std::cerr << "scenetool: cannot write to standard output\n";
            return loadFailed;
        }
        return status;
    } catch (const std::exception& exception) {
        std::cerr << "scenetool: " << exception.what() << '\n';
        return loadFailed;
    }
}
