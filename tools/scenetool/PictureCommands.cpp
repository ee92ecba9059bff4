#include "PictureCommands.h"

#include "Printable.h"
#include "Viewer.h"
#include "render/Offscreen.h"
#include "render/Sheet.h"
#include "sandbox/Sandbox.h"
#include "sandbox/SharedCell.h"

#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <iostream>
#include <optional>

namespace scenetool {

namespace {

constexpr int failed = 1;
constexpr int usageError = 2;
constexpr unsigned mostFrames = 100000;

// The whole text as a number.
bool parse(const std::string& text, int base, unsigned& value)
{
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value, base);
    return result.ec == std::errc() && result.ptr == text.data() + text.size();
}

void readSize(const std::string& text, RenderOptions& options)
{
    const std::size_t cross = text.find('x');
    const bool isRead = cross != std::string::npos && parse(text.substr(0, cross), 10, options.width) &&
                        parse(text.substr(cross + 1), 10, options.height);
    if (!isRead || options.width == 0 || options.height == 0 || options.width > mostPictureSize ||
        options.height > mostPictureSize) {
        const std::string most = std::to_string(mostPictureSize);
        throw PictureUsageError("--size wants a width and a height such as 960x640, 1x1 to " + most + "x" + most +
                                ", not " + text);
    }
}

void readBackground(const std::string& text, RenderOptions& options)
{
    unsigned value = 0;
    if (text.size() != 6 || !parse(text, 16, value)) {
        throw PictureUsageError("--background wants a color such as 33383f, not " + text);
    }
    for (unsigned i = 0; i < 3; ++i) {
        options.drawing.background[i] = static_cast<float>((value >> (16u - 8u * i)) & 255u) / 255.0f;
    }
}

bool isPngName(const std::string& path)
{
    std::string end = path.substr(path.size() < 4 ? 0 : path.size() - 4);
    std::transform(end.begin(), end.end(), end.begin(), [](unsigned char c) { return std::tolower(c); });
    return end == ".png" && path.size() > 4;
}

} // namespace

PictureCommands::PictureCommands(CLI::App& app, SandboxOptions& sandbox) : m_sandbox(sandbox)
{
    m_render = app.add_subcommand("render", "Draws the scene into a PNG file, or a row of them.");
    m_render->add_option("FILE", m_file, "The document");
    m_render->add_option("--sheet", m_folder,
                         "Draw all documents below this folder on one picture instead; --size is then that of each");
    m_render->add_option("-o,--output", m_output, "The picture, with a name that ends in .png")->required();
    addViewOptions(*m_render);
    m_render->add_option("--frames", m_frames, "Draw so many pictures, OUT-0000.png and on, from --time or 0");
    sandbox.addTo(*m_render);
    m_render->add_option("--fps", m_sequence.framesPerSecond, "How many of them make a second; 25 if not said");

    m_view = app.add_subcommand("view", "Shows the scene in a window.");
    m_view->add_option("FILE", m_file, "The document")->required();
    addViewOptions(*m_view);
    m_view->footer(viewerHelp);
}

void PictureCommands::addViewOptions(CLI::App& command)
{
    command.add_option("--time", m_options.time, "Show the scene at this time in seconds");
    command.add_option("--camera", m_options.camera, "Look through this camera of the scene, counted from 0");
    command.add_flag("--framed", m_options.isFramed, "Show all of the scene, whatever cameras it has");
    command.add_option("--up", m_up, "The axis that points up where all of the scene is shown: x, y or z");
    command.add_option("--size", m_size, "Width and height of the picture in pixels; 960x640 if not said");
    command.add_option("--background", m_background, "Color behind the scene, as 33383f is the one if not said");
    command.add_flag("--identity-for-empty", m_options.isIdentityForEmpty,
                     "Draw nodes without transforms, whose matrix is zero, as if they had the identity");
}

void PictureCommands::checkOptions()
{
    if (!m_size.empty()) {
        readSize(m_size, m_options);
    }
    if (!m_background.empty()) {
        readBackground(m_background, m_options);
    }
    if (m_up != "x" && m_up != "y" && m_up != "z") {
        throw PictureUsageError("--up wants x, y or z, not " + m_up);
    }
    m_options.up = m_up == "x" ? UpAxis::x : m_up == "y" ? UpAxis::y : UpAxis::z;
    if (m_options.time && !std::isfinite(*m_options.time)) {
        throw PictureUsageError("--time wants a number of seconds");
    }
}

void PictureCommands::checkRenderOptions()
{
    if (m_file.empty() == m_folder.empty()) {
        throw PictureUsageError("render wants either FILE or --sheet (see scenetool render --help)");
    }
    if (!m_folder.empty() && m_frames > 0) {
        throw PictureUsageError("--frames goes with a single FILE");
    }
    if (!isPngName(m_output)) {
        throw PictureUsageError("--output wants a name that ends in .png, not " + m_output);
    }
    if (m_render->count("--frames") > 0 && (m_frames == 0 || m_frames > mostFrames)) {
        throw PictureUsageError("--frames wants a number from 1 to " + std::to_string(mostFrames));
    }
    if (m_render->count("--fps") > 0 && m_frames == 0) {
        throw PictureUsageError("--fps needs --frames");
    }
    if (!std::isfinite(m_sequence.framesPerSecond) || !(m_sequence.framesPerSecond > 0.0)) {
        throw PictureUsageError("--fps wants a number above 0");
    }
}

int PictureCommands::render()
{
    LoadedScene loaded(m_file);
    if (!loaded.isLoaded()) {
        complain(m_file, loaded.fault());
        return failed;
    }
    const Shortfalls::Sink sink = [this](const std::string& line) { complain(m_file, line); };
    const OffscreenContext context;
    if (m_frames == 0) {
        writePicture(renderPicture(loaded, m_options, sink), m_output);
        return EXIT_SUCCESS;
    }
    m_sequence.frames = m_frames;
    m_sequence.hasBar = m_hasBar;
    renderSequence(loaded, m_options, m_sequence, m_output, sink);
    return EXIT_SUCCESS;
}

int PictureCommands::view()
{
    LoadedScene loaded(m_file);
    if (!loaded.isLoaded()) {
        complain(m_file, loaded.fault());
        return failed;
    }
    viewScene(loaded, m_options, [this](const std::string& line) { complain(m_file, line); });
    return EXIT_SUCCESS;
}

int PictureCommands::sheet()
{
    SheetOptions layout;
    if (m_size.empty()) {
        m_options.width = layout.cellWidth;
        m_options.height = layout.cellHeight;
    }
    layout.cellWidth = m_options.width;
    layout.cellHeight = m_options.height;
    const std::vector<std::string> files = documentsIn(m_folder);
    const bool isBoxed = m_sandbox.applyTo(files.size());
    if (isBoxed && !canDrawInSandbox()) {
        return failed;
    }
    std::optional<OffscreenContext> context;
    if (!isBoxed) {
        context.emplace();
    }
    const SheetWorker worker = [this, isBoxed](const std::string& file) {
        return isBoxed ? drawCellInSandbox(file) : drawCell(file);
    };
    const SheetProgress progress = [this](unsigned done, unsigned all) {
        if (m_hasBar) {
            showBar(done, all);
        }
    };
    writePicture(renderSheet(files, m_folder, layout, worker, progress), m_output);
    return EXIT_SUCCESS;
}

SheetCell PictureCommands::drawCell(const std::string& file) const
{
    SheetCell cell;
    LoadedScene loaded(file);
    if (!loaded.isLoaded()) {
        cell.fault = loaded.fault();
    } else {
        try {
            const auto sink = [this, &file](const std::string& line) { complain(file, line); };
            cell.picture = renderPicture(loaded, m_options, sink);
        } catch (const PictureError& error) {
            cell.fault = error.what();
        }
    }
    if (!cell.picture) {
        complain(file, cell.fault);
    }
    return cell;
}

SheetCell PictureCommands::drawCellInSandbox(const std::string& file) const
{
    SharedCell shared(m_options.width, m_options.height);
    const SandboxResult result = runInSandbox(m_sandbox.limits(), [&] {
        const OffscreenContext context;
        shared.put(drawCell(file));
        return EXIT_SUCCESS;
    });
    if (result.failure.empty()) {
        return shared.take();
    }
    SheetCell cell;
    cell.fault = "the load " + result.failure;
    complain(file, cell.fault);
    return cell;
}

// Tried before the first document. In a child as well, since a driver does not survive being forked.
bool PictureCommands::canDrawInSandbox() const
{
    const SandboxResult result = runInSandbox(m_sandbox.limits(), [this] {
        try {
            const OffscreenContext context;
            return EXIT_SUCCESS;
        } catch (const PictureError& error) {
            complain("", error.what());
            return EXIT_FAILURE;
        }
    });
    if (!result.failure.empty()) {
        complain("", "the driver " + result.failure);
    }
    return result.failure.empty() && result.status == EXIT_SUCCESS;
}

void PictureCommands::complain(const std::string& file, const std::string& line) const
{
    // Over the bar, which is drawn again behind it.
    std::cerr << (m_hasBar ? "\r\033[K" : "") << "scenetool: " << printable(file) << (file.empty() ? "" : ": ")
              << printable(line) << '\n';
}

int PictureCommands::run()
{
    m_hasBar = isatty(STDOUT_FILENO) == 1 && (m_frames > 0 || !m_folder.empty());
    return reported([this] {
        checkOptions();
        if (m_view->parsed()) {
            return view();
        }
        checkRenderOptions();
        if (!m_folder.empty()) {
            return sheet();
        }
        return m_sandbox.run(m_file, 1, [this] { return reported([this] { return render(); }); });
    });
}

// Runs an action, and makes a line and a status of what it throws.
int PictureCommands::reported(const std::function<int()>& action) const
{
    try {
        return action();
    } catch (const PictureUsageError& error) {
        complain("", error.what());
        return usageError;
    } catch (const PictureError& error) {
        complain(m_file, error.what());
        return failed;
    }
}

} // namespace scenetool
