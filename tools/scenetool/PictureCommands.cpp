#include "PictureCommands.h"

#include "Printable.h"
#include "TemporaryFolder.h"
#include "Viewer.h"
#include "render/Offscreen.h"
#include "render/Sheet.h"
#include "sandbox/Sandbox.h"
#include "sandbox/SharedCell.h"

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <optional>
#include <thread>
#include <utility>

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

// "sky", "none", or a color such as 33383f with or without a #.
void readBackground(const std::string& text, Background& background)
{
    if (text == "sky" || text == "none") {
        background.kind = text == "sky" ? Background::Kind::sky : Background::Kind::none;
        return;
    }
    const std::string digits = text.substr(text.rfind('#', 0) == 0 ? 1 : 0);
    unsigned value = 0;
    if (digits.size() != 6 || !parse(digits, 16, value)) {
        throw PictureUsageError("--background wants sky, none or a color such as 33383f, not " + text);
    }
    background.kind = Background::Kind::color;
    for (unsigned i = 0; i < 3; ++i) {
        background.color[i] = static_cast<float>((value >> (16u - 8u * i)) & 255u) / 255.0f;
    }
}

LightChoice lightChoice(const std::string& text)
{
    const std::pair<const char*, LightChoice> choices[] = {
        {"document", LightChoice::document}, {"head", LightChoice::head}, {"both", LightChoice::both}};
    for (const auto& [name, choice] : choices) {
        if (text == name) {
            return choice;
        }
    }
    throw PictureUsageError("--lights wants document, head or both, not " + text);
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
    m_render
        ->add_option("-o,--output", m_output, "The picture, with a name that ends in .png, or - for standard output")
        ->required();
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
    command.add_option("--lights", m_lights,
                       "What lights the scene: document, head (a light goes with the eye) or both; the document if not "
                       "said, and the head where it lights nothing");
    command.add_flag("--as-loaded", m_isAsLoaded,
                     "Show what the library delivers of the document as it is, which is not prepared then");
    command.add_option("--size", m_size, "Width and height of the picture in pixels; 960x640 if not said");
    command.add_option(
        "--background", m_background,
        "What is behind the scene: sky, none (a PNG with alpha) or a color such as 33383f; sky if not said");
    command.add_flag("--identity-for-empty", m_options.isIdentityForEmpty,
                     "Draw nodes without transforms, whose matrix is zero, as if they had the identity");
}

void PictureCommands::checkOptions()
{
    if (!m_size.empty()) {
        readSize(m_size, m_options);
    }
    if (!m_background.empty()) {
        readBackground(m_background, m_options.drawing.background);
    }
    if (!m_lights.empty()) {
        m_options.drawing.lights = lightChoice(m_lights);
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
    if (m_output == standardOutput && m_frames > 0) {
        throw PictureUsageError("--frames wants a name that ends in .png for --output");
    }
    if (m_output != standardOutput && !isPngName(m_output)) {
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

int PictureCommands::render(const std::filesystem::path& folder)
{
    PictureDocument document(m_file, folder, documentOptions());
    if (!document.isLoaded()) {
        complain(m_file, document.fault());
        return failed;
    }
    const Shortfalls::Sink sink = [this](const std::string& line) { complain(m_file, line); };
    const OffscreenContext context;
    if (m_frames == 0) {
        writePicture(renderPicture(document, m_options, sink), m_output, hasAlpha());
        return EXIT_SUCCESS;
    }
    m_sequence.frames = m_frames;
    m_sequence.hasBar = m_hasBar;
    renderSequence(document, m_options, m_sequence, m_output, sink);
    return EXIT_SUCCESS;
}

int PictureCommands::view()
{
    const TemporaryFolder folder;
    const DocumentOpener open = [this, &folder](const std::string& file) {
        return std::make_unique<PictureDocument>(file, folder.path(), documentOptions());
    };
    viewScene(m_file, open, m_options,
              [this](const std::string& file, const std::string& line) { complain(file, line); });
    return EXIT_SUCCESS;
}

DocumentOptions PictureCommands::documentOptions() const
{
    DocumentOptions options;
    options.isAsLoaded = m_isAsLoaded;
    options.time = m_options.time;
    options.aspect = static_cast<double>(m_options.width) / m_options.height;
    return options;
}

bool PictureCommands::hasAlpha() const
{
    return m_options.drawing.background.kind == Background::Kind::none;
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
    if (isBoxed) { // a context belongs to one thread, so without processes there is one document at a time
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
    writePicture(renderSheet(files, m_folder, layout, worker, progress), m_output, hasAlpha());
    return hasFault ? failed : EXIT_SUCCESS;
}

SheetCell PictureCommands::drawCell(const std::string& file, const std::filesystem::path& folder) const
{
    SheetCell cell;
    PictureDocument document(file, folder, documentOptions());
    if (!document.isLoaded()) {
        cell.fault = document.fault();
    } else {
        try {
            const auto sink = [this, &file](const std::string& line) { complain(file, line); };
            cell.picture = renderPicture(document, m_options, sink);
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
    const TemporaryFolder folder; // of this process, which removes it however the other ends
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
        const TemporaryFolder folder; // of this process, which removes it however a sandbox ends
        return m_sandbox.run(m_file, 1,
                             [this, &folder] { return reported([this, &folder] { return render(folder.path()); }); });
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
