#include "CheckCommand.h"
#include "CommandLine.h"
#include "Dump.h"
#include "Info.h"
#include "PrepareCommand.h"
#include "SandboxOptions.h"
#include "common/LoadedScene.h"
#include "common/PreparedFile.h"
#include "common/Printable.h"
#ifdef SCENETOOL_HAS_PICTURES
#include "ConvertCommand.h"
#include "RenderCommand.h"
#include "ViewCommand.h"
#endif
#ifdef SCENETOOL_HAS_PAGE
#include "PageCommand.h"
#endif

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <memory>
#include <numeric>
#include <optional>
#include <string>
#include <vector>

namespace {

constexpr int loadFailed = 1;
constexpr int usageError = 2;

// Prints the failure of a load or an evaluation, if any, to standard error.
void reportFault(const scenetool::LoadedScene& loaded)
{
    const std::string fault = loaded.faultLine();
    if (!fault.empty()) {
        std::cerr << "scenetool: " << fault << '\n';
    }
}

// The prepared document, or null if the document is loaded as it is.
std::unique_ptr<scenetool::PreparedFile> prepared(const std::string& file, bool isWanted)
{
    return isWanted ? std::make_unique<scenetool::PreparedFile>(file, libPrepare::Options()) : nullptr;
}

int info(const std::string& file, bool showsAllNodes, bool prepares)
{
    const std::unique_ptr<scenetool::PreparedFile> source = prepared(file, prepares);
    const scenetool::LoadedScene loaded(file, source ? source->path() : file);
    if (loaded.isLoaded()) {
        scenetool::InfoOptions options;
        options.isColored = isatty(STDOUT_FILENO) == 1 && std::getenv("NO_COLOR") == nullptr;
        options.showsAllNodes = showsAllNodes;
        scenetool::writeInfo(loaded, options, std::cout);
    }
    reportFault(loaded);
    return loaded.isLoaded() ? EXIT_SUCCESS : loadFailed;
}

int dump(const std::string& file, const std::optional<double>& time, bool folds, bool prepares)
{
    const std::unique_ptr<scenetool::PreparedFile> source = prepared(file, prepares);
    scenetool::LoadedScene loaded(file, source ? source->path() : file);
    if (loaded.isLoaded()) {
        const bool isEvaluated = !time || loaded.evaluate(*time);
        if (folds && isEvaluated) {
            loaded.fold();
        }
    }
    scenetool::writeDump(loaded, std::cout);
    reportFault(loaded);
    return loaded.isLoaded() && !loaded.failure() ? EXIT_SUCCESS : loadFailed;
}

// Edit distance of two words: the number of characters to insert, delete or replace.
std::size_t distance(const std::string& one, const std::string& other)
{
    std::vector<std::size_t> row(other.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t(0));
    for (std::size_t i = 1; i <= one.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i;
        for (std::size_t j = 1; j <= other.size(); ++j) {
            const std::size_t replaced = diagonal + (one[i - 1] == other[j - 1] ? 0 : 1);
            diagonal = row[j];
            row[j] = std::min({row[j] + 1, row[j - 1] + 1, replaced});
        }
    }
    return row.back();
}

// A message if the first word is not a command; empty if it is a command or an option.
std::string unknownCommand(const std::vector<std::string>& commands, const std::string& word)
{
    std::string nearest;
    for (const std::string& command : commands) {
        if (command == word) {
            return "";
        }
        if (nearest.empty() || distance(word, command) < distance(word, nearest)) {
            nearest = command;
        }
    }
    if (word.empty() || word.front() == '-') {
        return "";
    }
    const bool isNear = distance(word, nearest) <= std::max<std::size_t>(2, word.size() / 2);
    return "there is no command \"" + word.substr(0, 60) + '"' + (isNear ? "; did you mean " + nearest + '?' : "");
}

int run(int argc, char** argv)
{
    scenetool::CommandLine line("scenetool",
                                "Shows what a COLLADA 1.4.1 document holds, as the libVideo scene graph loads it.",
                                "scenetool " SCENETOOL_VERSION);

    std::vector<std::string> files;
    scenetool::SandboxOptions sandbox;
    bool showsAllNodes = false;
    bool prepares = false;
    scenetool::Command infoCommand = line.addCommand(
        "info", "Prints a summary: counts, the node tree with its transforms and animations, and messages.");
    infoCommand.add("FILE", files, "The documents").require();
    infoCommand.addFlag("--all", showsAllNodes, "Show all nodes of the tree, not only the first 200");
    infoCommand.addFlag("--prepare", prepares, "Prepare the documents first");
    sandbox.addTo(infoCommand);

    std::optional<double> time;
    bool folds = false;
    scenetool::Command dumpCommand = line.addCommand("dump", "Prints the whole scene as one JSON object.");
    std::string file;
    dumpCommand.add("FILE", file, "The document").require();
    dumpCommand.add("--time", time, "Evaluate the scene at this time in seconds first");
    dumpCommand.addFlag("--fold", folds, "Fold the parents into the nodes, so that matrices are world matrices");
    dumpCommand.addFlag("--prepare", prepares, "Prepare the document first");
    sandbox.addTo(dumpCommand);

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
    if (const std::string unknown = unknownCommand(line.commands(), first); !unknown.empty()) {
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
#ifdef SCENETOOL_HAS_PICTURES
#ifdef SCENETOOL_HAS_PAGE
    if (page.isParsed()) {
        return page.run();
    }
#endif
    if (convert.isParsed()) {
        return convert.run();
    }
    if (render.isParsed()) {
        return render.run();
    }
    if (view.isParsed()) {
        return view.run();
    }
#endif
    if (check.isParsed()) {
        return check.run();
    }
    if (prepare.isParsed()) {
        return prepare.run();
    }
    if (dumpCommand.isParsed()) {
        return sandbox.run(file, 1, [&] { return dump(file, time, folds, prepares); });
    }
    int status = EXIT_SUCCESS;
    for (const std::string& each : files) {
        if (&each != &files.front()) {
            std::cout << '\n';
        }
        status = std::max(status, sandbox.run(each, files.size(), [&] { return info(each, showsAllNodes, prepares); }));
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
