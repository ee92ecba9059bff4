#include "RenderCommand.h"

#include "PictureMessages.h"
#include "common/TemporaryFolder.h"
#include "render/Offscreen.h"
#include "render/SharedCell.h"
#include "sandbox/Sandbox.h"

#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <map>
#include <memory>
#include <thread>
#include <utility>

namespace scenetool {

namespace {

constexpr unsigned maxFrames = 100000;

bool isPngName(const std::string& path)
{
    std::string end = path.substr(path.size() < 4 ? 0 : path.size() - 4);
    std::transform(end.begin(), end.end(), end.begin(), [](unsigned char c) { return std::tolower(c); });
    return end == ".png" && path.size() > 4;
}

} // namespace

RenderCommand::RenderCommand(CommandLine& line, SandboxOptions& sandbox)
    : m_sandbox(sandbox),
      m_command(line.addCommand("render", "Draws the scene into a PNG file, or a sequence of them."))
{
    m_command.add("FILE", m_file, "The document");
    m_command.add("--sheet", m_folder,
                  "Draw all documents in this folder and its subfolders in one picture instead; --size is "
                  "the size of each (default: 320x240)");
    m_command.add("-o,--output", m_output, "The picture: a name that ends in .png, or - for standard output").require();
    m_options.addTo(m_command);
    m_command.add("--frames", m_frames, "Draw this many pictures, OUT-0000.png and so on, starting at --time or 0");
    m_command.add("--fps", m_sequence.framesPerSecond, "Pictures per second with --frames (default: 25)");
    sandbox.addTo(m_command);
}

void RenderCommand::checkOptions()
{
    m_options.read();
    if (m_file.empty() == m_folder.empty()) {
        throw PictureUsageError("render expects either FILE or --sheet (see scenetool render --help)");
    }
    if (!m_folder.empty() && m_frames > 0) {
        throw PictureUsageError("--frames needs a single FILE");
    }
    if (m_output == standardOutput && m_frames > 0) {
        throw PictureUsageError("--frames needs an --output that ends in .png");
    }
    if (m_output != standardOutput && !isPngName(m_output)) {
        throw PictureUsageError("--output expects a name that ends in .png, not " + m_output);
    }
    if (m_command.has("--frames") && (m_frames == 0 || m_frames > maxFrames)) {
        throw PictureUsageError("--frames expects a number from 1 to " + std::to_string(maxFrames));
    }
    if (m_command.has("--fps") && m_frames == 0) {
        throw PictureUsageError("--fps needs --frames");
    }
    if (!std::isfinite(m_sequence.framesPerSecond) || !(m_sequence.framesPerSecond > 0.0)) {
        throw PictureUsageError("--fps expects a number above 0");
    }
}

int RenderCommand::render(const std::filesystem::path& folder)
{
    PictureDocument document(m_file, folder, m_options.document());
    if (!document.isLoaded()) {
        complain(m_file, document.fault(), m_hasBar);
        return drawingFailed;
    }
    const Shortfalls::Sink sink = [this](const std::string& line) { complain(m_file, line, m_hasBar); };
    const OffscreenContext context;
    if (m_frames == 0) {
        writePicture(renderPicture(document, m_options.picture(), sink), m_output, m_options.hasAlpha());
        return EXIT_SUCCESS;
    }
    m_sequence.frames = m_frames;
    m_sequence.hasBar = m_hasBar;
    renderSequence(document, m_options.picture(), m_sequence, m_output, sink);
    return EXIT_SUCCESS;
}

int RenderCommand::sheet()
{
    SheetOptions layout;
    if (!m_options.hasSize()) {
        m_options.setSize(layout.cellWidth, layout.cellHeight);
    }
    layout.cellWidth = m_options.picture().width;
    layout.cellHeight = m_options.picture().height;
    const std::vector<std::string> files = documentsIn(m_folder);
    const bool isBoxed = m_sandbox.applyTo(files.size());
    if (isBoxed && !canDrawInSandbox()) {
        return drawingFailed;
    }
    bool hasFault = false;
    const SheetDrawing draw = [this, isBoxed, &hasFault](const std::vector<std::string>& documents) {
        std::vector<SheetCell> cells = isBoxed ? drawCellsInSandboxes(documents) : drawCells(documents);
        hasFault = std::any_of(cells.begin(), cells.end(), [](const SheetCell& cell) { return !cell.picture; });
        return cells;
    };
    writePicture(renderSheet(files, m_folder, layout, draw), m_output, m_options.hasAlpha());
    return hasFault ? drawingFailed : EXIT_SUCCESS;
}

void RenderCommand::showProgress(std::size_t done, std::size_t all) const
{
    if (m_hasBar) {
        showBar(static_cast<unsigned>(done), static_cast<unsigned>(all));
    }
}

SheetCell RenderCommand::drawCell(const std::string& file, const std::filesystem::path& folder) const
{
    SheetCell cell;
    PictureDocument document(file, folder, m_options.document());
    if (!document.isLoaded()) {
        cell.fault = document.fault();
    } else {
        try {
            const auto sink = [this, &file](const std::string& line) { complain(file, line, m_hasBar); };
            cell.picture = renderPicture(document, m_options.picture(), sink);
        } catch (const PictureError& error) {
            cell.fault = error.what();
        }
    }
    if (!cell.picture) {
        complain(file, cell.fault, m_hasBar);
    }
    return cell;
}

std::vector<SheetCell> RenderCommand::drawCells(const std::vector<std::string>& files) const
{
    const OffscreenContext context;
    std::vector<SheetCell> cells;
    for (const std::string& file : files) {
        cells.push_back(drawCell(file, TemporaryFolder().path()));
        showProgress(cells.size(), files.size());
    }
    return cells;
}

// A drawing context belongs to one thread, so several documents at a time need several processes.
std::vector<SheetCell> RenderCommand::drawCellsInSandboxes(const std::vector<std::string>& files) const
{
    struct Drawing {
        std::size_t place;
        SharedCell cell;
        TemporaryFolder folder; // removed by this process, even if the child crashes
    };
    std::vector<SheetCell> cells(files.size());
    std::map<pid_t, std::unique_ptr<Drawing>> running;
    Sandbox sandbox(m_sandbox.limits());
    std::size_t done = 0;
    const auto finishOne = [&] {
        const Sandbox::Ended ended = sandbox.wait();
        const std::unique_ptr<Drawing> drawing = std::move(running.extract(ended.process).mapped());
        SheetCell& cell = cells[drawing->place];
        if (ended.result.failure.empty()) {
            cell = drawing->cell.take();
        } else {
            cell.fault = "the load " + ended.result.failure;
            complain(files[drawing->place], cell.fault, m_hasBar);
        }
        showProgress(++done, files.size());
    };
    for (std::size_t i = 0; i < files.size(); ++i) {
        if (sandbox.runningCount() >= std::max(1u, std::thread::hardware_concurrency())) {
            finishOne();
        }
        auto drawing = std::unique_ptr<Drawing>(
            new Drawing{i, SharedCell(m_options.picture().width, m_options.picture().height), TemporaryFolder()});
        const pid_t process = sandbox.start([&] {
            const OffscreenContext context;
            drawing->cell.put(drawCell(files[i], drawing->folder.path()));
            return EXIT_SUCCESS;
        });
        running.emplace(process, std::move(drawing));
    }
    while (sandbox.runningCount() > 0) {
        finishOne();
    }
    return cells;
}

// Tests drawing before the first document. Does so in a child process, because a driver that is in use before a fork
// does not work after it.
bool RenderCommand::canDrawInSandbox() const
{
    const SandboxResult result = runInSandbox(m_sandbox.limits(), [this] {
        try {
            const OffscreenContext context;
            return EXIT_SUCCESS;
        } catch (const PictureError& error) {
            complain("", error.what(), m_hasBar);
            return EXIT_FAILURE;
        }
    });
    if (!result.failure.empty()) {
        complain("", "the driver " + result.failure, m_hasBar);
    }
    return result.failure.empty() && result.status == EXIT_SUCCESS;
}

int RenderCommand::run()
{
    m_hasBar = isatty(STDOUT_FILENO) == 1 && (m_frames > 0 || !m_folder.empty());
    const auto status = [this](const std::function<int()>& command) { return statusOf(m_file, command, m_hasBar); };
    return status([this, &status] {
        checkOptions();
        if (!m_folder.empty()) {
            return sheet();
        }
        const TemporaryFolder folder; // removed by this process, even if a sandbox crashes
        return m_sandbox.run(
            m_file, 1, [this, &status, &folder] { return status([this, &folder] { return render(folder.path()); }); });
    });
}

} // namespace scenetool
