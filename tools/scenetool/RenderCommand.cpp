#include "RenderCommand.h"

#include "PictureMessages.h"
#include "common/TemporaryFolder.h"
#include "render/Offscreen.h"
#include "render/SharedCell.h"
#include "sandbox/Sandbox.h"

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cctype>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <optional>
#include <thread>

namespace scenetool {

namespace {

constexpr int failed = 1;
constexpr unsigned maxFrames = 100000;

bool isPngName(const std::string& path)
{
    std::string end = path.substr(path.size() < 4 ? 0 : path.size() - 4);
    std::transform(end.begin(), end.end(), end.begin(), [](unsigned char c) { return std::tolower(c); });
    return end == ".png" && path.size() > 4;
}

} // namespace

RenderCommand::RenderCommand(CLI::App& app, SandboxOptions& sandbox) : m_sandbox(sandbox)
{
    m_command = app.add_subcommand("render", "Draws the scene into a PNG file, or a sequence of them.");
    m_command->add_option("FILE", m_file, "The document");
    m_command->add_option("--sheet", m_folder,
                          "Draw all documents in this folder and its subfolders in one picture instead; --size is "
                          "the size of each (default: 320x240)");
    m_command->add_option("-o,--output", m_output, "The picture: a name that ends in .png, or - for standard output")
        ->required();
    m_options.addTo(*m_command);
    m_command->add_option("--frames", m_frames,
                          "Draw this many pictures, OUT-0000.png and so on, starting at --time or 0");
    m_command->add_option("--fps", m_sequence.framesPerSecond, "Pictures per second with --frames (default: 25)");
    sandbox.addTo(*m_command);
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
    if (m_command->count("--frames") > 0 && (m_frames == 0 || m_frames > maxFrames)) {
        throw PictureUsageError("--frames expects a number from 1 to " + std::to_string(maxFrames));
    }
    if (m_command->count("--fps") > 0 && m_frames == 0) {
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
        return failed;
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
        return failed;
    }
    std::optional<OffscreenContext> context;
    if (isBoxed) { // a context belongs to one thread, so several documents at a time need several processes
        layout.workers = std::max(1u, std::thread::hardware_concurrency());
    } else {
        context.emplace();
    }
    std::atomic<bool> hasFault{false};
    const SheetWorker worker = [this, isBoxed, &hasFault](const std::string& file) {
        SheetCell cell = isBoxed ? drawCellInSandbox(file) : drawCell(file, TemporaryFolder().path());
        hasFault = hasFault || !cell.picture;
        return cell;
    };
    const SheetProgress progress = [this](unsigned done, unsigned all) {
        if (m_hasBar) {
            showBar(done, all);
        }
    };
    writePicture(renderSheet(files, m_folder, layout, worker, progress), m_output, m_options.hasAlpha());
    return hasFault ? failed : EXIT_SUCCESS;
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

SheetCell RenderCommand::drawCellInSandbox(const std::string& file) const
{
    SharedCell shared(m_options.picture().width, m_options.picture().height);
    const TemporaryFolder folder; // removed by this process, even if the child crashes
    const SandboxResult result = runInSandbox(m_sandbox.limits(), [&] {
        const OffscreenContext context;
        shared.put(drawCell(file, folder.path()));
        return EXIT_SUCCESS;
    });
    if (result.failure.empty()) {
        return shared.take();
    }
    SheetCell cell;
    cell.fault = "the load " + result.failure;
    complain(file, cell.fault, m_hasBar);
    return cell;
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
