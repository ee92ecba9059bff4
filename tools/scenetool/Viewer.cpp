#include "Viewer.h"

#include "common/Printable.h"
#include "render/Offscreen.h"
#include "render/Overlay.h"
#include "render/Sheet.h"

#define GLFW_INCLUDE_NONE
#include <GLFW/glfw3.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <memory>
#include <system_error>
#include <utility>
#include <vector>

namespace scenetool {

const char* const viewerHelp =
    "Mouse: drag to turn, with Shift or the right button to move; use the wheel to zoom; drag along the lower edge "
    "to go through time. Drop a document on the window to show it.\n"
    "Keys: Space plays and pauses, Left and Right step in time, C goes to the next camera and 1 to 9 to that camera, "
    "F shows the whole scene, W switches between faces, faces with edges, and wires, G shows a grid and the axes, "
    "N and B go to the next and the previous document of the folder, P saves a picture, H shows the keys, Q quits.";

namespace {

constexpr double timeStep = 0.1;         // seconds per key press
constexpr int timelineHeight = 10;       // pixels
constexpr float radiansPerPixel = 0.01f; // for dragging
constexpr float maxPitch = 1.55f;        // slightly less than a right angle
constexpr float zoomPerNotch = 0.88f;
constexpr double secondsBetweenLooks = 0.5; // between checks whether the file has changed

std::string windowError()
{
    const char* text = nullptr;
    glfwGetError(&text);
    return text == nullptr ? "no reason is given" : printable(text);
}

// Initializes GLFW for the lifetime of the object.
class WindowSystem {
public:
    WindowSystem()
    {
#if defined(GLFW_PLATFORM) // 3.4
        // Without the folder of a login session, Wayland does not work and prints messages of its own.
        if (std::getenv("XDG_RUNTIME_DIR") == nullptr && glfwPlatformSupported(GLFW_PLATFORM_X11) == GLFW_TRUE) {
            glfwInitHint(GLFW_PLATFORM, GLFW_PLATFORM_X11);
        }
#endif
        if (glfwInit() != GLFW_TRUE) {
            throw PictureError("cannot open a window: " + windowError());
        }
    }
    ~WindowSystem()
    {
        glfwTerminate();
    }
    WindowSystem(const WindowSystem&) = delete;
    WindowSystem& operator=(const WindowSystem&) = delete;
};

struct CloseWindow {
    void operator()(GLFWwindow* window) const { glfwDestroyWindow(window); }
};
using Window = std::unique_ptr<GLFWwindow, CloseWindow>;

Window openWindow(const RenderOptions& options)
{
    glfwWindowHint(GLFW_CONTEXT_VERSION_MAJOR, 3);
    glfwWindowHint(GLFW_CONTEXT_VERSION_MINOR, 3);
    glfwWindowHint(GLFW_OPENGL_PROFILE, GLFW_OPENGL_CORE_PROFILE);
    glfwWindowHint(GLFW_OPENGL_FORWARD_COMPAT, GLFW_TRUE);
    glfwWindowHint(GLFW_SAMPLES, 4);
    Window window(glfwCreateWindow(static_cast<int>(options.width), static_cast<int>(options.height), "scenetool",
                                   nullptr, nullptr));
    if (window == nullptr) {
        throw PictureError("cannot open a window: " + windowError());
    }
    glfwMakeContextCurrent(window.get());
    glfwSwapInterval(1);
    requireGl33();
    return window;
}

// Shown by the key H.
const std::vector<std::string> helpLines = {
    "Space       play, pause",
    "Left, Right step in time",
    "C           next camera, then the whole scene",
    "1 to 9      that camera",
    "F           the whole scene",
    "W           faces, faces and edges, wires",
    "G           grid and axes",
    "N, B        next, previous document of the folder",
    "P           save a picture",
    "H           this help",
    "Q           quit",
    "Mouse       turn; Shift or right button: move; wheel: zoom",
};

class Viewer {
public:
    Viewer(GLFWwindow* window, const std::string& file, DocumentOpener open, const RenderOptions& options,
           ViewerSink sink)
        : m_window(window),
          m_open(std::move(open)),
          m_sink(std::move(sink)),
          m_options(options),
          m_drawing(options.drawing),
          m_time(options.time.value_or(0.0))
    {
        readSize();
        show(file);
        glfwSetWindowUserPointer(m_window, this);
        glfwSetKeyCallback(m_window, [](GLFWwindow* w, int key, int, int action, int) {
            if (action != GLFW_RELEASE) {
                of(w).press(key);
            }
        });
        glfwSetScrollCallback(m_window, [](GLFWwindow* w, double, double notches) { of(w).zoom(notches); });
        glfwSetMouseButtonCallback(m_window, [](GLFWwindow* w, int button, int action, int modifiers) {
            of(w).button(button, action, modifiers);
        });
        glfwSetCursorPosCallback(m_window, [](GLFWwindow* w, double x, double y) { of(w).drag(x, y); });
        glfwSetDropCallback(m_window, [](GLFWwindow* w, int count, const char** paths) {
            if (count > 0) {
                of(w).goToFile(paths[0]);
            }
        });
    }

    void run()
    {
        double before = glfwGetTime();
        while (glfwWindowShouldClose(m_window) == GLFW_FALSE) {
            readSize();
            draw();
            glfwSwapBuffers(m_window);
            if (m_isPlaying) {
                glfwPollEvents();
            } else {
                glfwWaitEventsTimeout(secondsBetweenLooks);
            }
            const double now = glfwGetTime();
            if (m_isPlaying) {
                goTo(m_time + now - before);
            }
            before = now;
            reloadIfChanged(now);
        }
    }

private:
    enum class Drag { none, turn, move, time };

    static Viewer& of(GLFWwindow* window) { return *static_cast<Viewer*>(glfwGetWindowUserPointer(window)); }

    // Replaces the document. The window is empty if the new document cannot be shown.
    void show(const std::string& file)
    {
        m_show.reset();
        m_document.reset(); // only one document at a time may receive the log
        m_file = file;
        m_changed = changeOf(file);
        m_document = m_open(file);
        if (!m_document->isLoaded()) {
            throw PictureError(m_document->fault());
        }
        const Shortfalls::Sink sink = [this](const std::string& line) { m_sink(m_file, line); };
        m_show = std::make_unique<SceneShow>(*m_document, m_options, sink);
        m_camera = m_show->camera();
        m_orbit = m_show->framedOrbit(aspect());
    }

    // Like `show`, but reports a document that cannot be shown instead of throwing.
    void tryToShow(const std::string& file)
    {
        try {
            show(file);
        } catch (const PictureError& error) {
            m_show.reset();
            m_sink(file, error.what());
        }
    }

    // A new document starts with the time and camera of the options.
    void goToFile(const std::string& file)
    {
        m_options.camera.reset();
        m_options.time.reset();
        m_isPlaying = false;
        m_time = 0.0;
        tryToShow(file);
    }

    static std::filesystem::file_time_type changeOf(const std::string& file)
    {
        std::error_code error;
        const std::filesystem::file_time_type changed = std::filesystem::last_write_time(file, error);
        return error ? std::filesystem::file_time_type::min() : changed;
    }

    // A file that is missing for a moment is probably being rewritten.
    void reloadIfChanged(double now)
    {
        if (now - m_lookedAt < secondsBetweenLooks) {
            return;
        }
        m_lookedAt = now;
        const std::filesystem::file_time_type changed = changeOf(m_file);
        if (changed == m_changed || changed == std::filesystem::file_time_type::min()) {
            return;
        }
        const std::optional<unsigned> camera = m_camera;
        const Orbit orbit = m_orbit;
        const bool hadShow = m_show != nullptr;
        tryToShow(m_file);
        if (m_show != nullptr && hadShow) {
            m_orbit = orbit;
            m_camera = camera && *camera < m_show->cameraCount() ? camera : std::nullopt;
        }
    }

    // Goes to the next or previous document of the folder, and wraps around.
    void goToNeighbor(bool isForward)
    {
        try {
            const std::filesystem::path folder = std::filesystem::absolute(m_file).parent_path();
            std::vector<std::string> files = documentsDirectlyIn(folder.string());
            const std::string own = (folder / std::filesystem::path(m_file).filename()).string();
            const auto found = std::find(files.begin(), files.end(), own);
            if (found == files.end() || files.size() < 2) {
                return;
            }
            const auto place = static_cast<std::size_t>(found - files.begin());
            goToFile(files[(place + (isForward ? 1 : files.size() - 1)) % files.size()]);
        } catch (const std::exception& error) { // the folder may have been removed
            m_sink(m_file, error.what());
        }
    }

    void readSize()
    {
        glfwGetFramebufferSize(m_window, &m_width, &m_height);
        m_width = std::max(m_width, 1);
        m_height = std::max(m_height, 1);
    }

    float aspect() const { return static_cast<float>(m_width) / static_cast<float>(m_height); }

    double length() const { return m_show == nullptr ? 0.0 : m_show->length(); }

    // Draws the scene and its overlay into the bound framebuffer.
    void drawAll()
    {
        if (m_show == nullptr) {
            glClearColor(0.2f, 0.2f, 0.22f, 1.0f);
            glClear(GL_COLOR_BUFFER_BIT);
            m_overlay.drawText({"This document cannot be shown; see the terminal.", "N, B: other documents"}, m_width,
                               m_height);
            return;
        }
        Viewpoint viewpoint = m_camera ? m_show->cameraView(*m_camera, aspect()) : viewpointOf(m_orbit, aspect());
        if (!m_show->draw(viewpoint, m_drawing) && m_isNewCamera && m_camera) {
            m_sink(m_file, "camera " + std::to_string(*m_camera) + " sees nothing, so the whole scene is shown");
            m_camera.reset();
            viewpoint = viewpointOf(m_orbit, aspect());
            m_show->draw(viewpoint, m_drawing);
        }
        m_isNewCamera = false;
        if (m_hasGrid) {
            m_overlay.drawGrid(viewpoint, m_orbit.radius);
        }
        if (m_hasHelp) {
            m_overlay.drawText(helpLines, m_width, m_height);
        }
    }

    void draw()
    {
        glBindFramebuffer(GL_FRAMEBUFFER, 0);
        glViewport(0, 0, m_width, m_height);
        drawAll();
        drawTimeline();
        const std::string camera = m_camera ? ", camera " + std::to_string(*m_camera) : "";
        char time[32] = "";
        if (length() > 0.0) {
            std::snprintf(time, sizeof(time), ", %.2f s", m_time); // NOLINT(cert-err33-c): a long text is cut
        }
        glfwSetWindowTitle(m_window, (printable(m_file) + camera + time).c_str());
    }

    // A bar along the lower edge, bright up to the current time.
    void drawTimeline()
    {
        if (!(length() > 0.0)) {
            return;
        }
        const auto done = static_cast<int>(m_width * std::fmod(m_time, length()) / length());
        glEnable(GL_SCISSOR_TEST);
        glScissor(0, 0, m_width, timelineHeight);
        glClearColor(0.1f, 0.1f, 0.12f, 1.0f);
        glClear(GL_COLOR_BUFFER_BIT);
        glScissor(0, 0, std::max(done, 0), timelineHeight);
        glClearColor(0.85f, 0.6f, 0.2f, 1.0f);
        glClear(GL_COLOR_BUFFER_BIT);
        glDisable(GL_SCISSOR_TEST);
    }

    void goTo(double time)
    {
        if (m_show == nullptr) {
            return;
        }
        m_time = std::max(time, 0.0);
        if (length() > 0.0) {
            m_time = std::fmod(m_time, length());
        }
        m_show->setTime(m_time);
    }

    void press(int key)
    {
        switch (key) {
        case GLFW_KEY_N:
            goToNeighbor(true);
            return;
        case GLFW_KEY_B:
            goToNeighbor(false);
            return;
        case GLFW_KEY_Q:
        case GLFW_KEY_ESCAPE:
            glfwSetWindowShouldClose(m_window, GLFW_TRUE);
            return;
        case GLFW_KEY_H:
            m_hasHelp = !m_hasHelp;
            return;
        default:
            break;
        }
        if (m_show != nullptr) {
            pressForScene(key);
        }
    }

    void pressForScene(int key)
    {
        switch (key) {
        case GLFW_KEY_SPACE:
            m_isPlaying = !m_isPlaying && length() > 0.0;
            break;
        case GLFW_KEY_LEFT:
            goTo(m_time - timeStep);
            break;
        case GLFW_KEY_RIGHT:
            goTo(m_time + timeStep);
            break;
        case GLFW_KEY_C:
            look(m_camera ? *m_camera + 1 : 0);
            break;
        case GLFW_KEY_F:
            m_camera.reset();
            m_orbit = m_show->framedOrbit(aspect());
            break;
        case GLFW_KEY_W:
            m_drawing.faces = m_drawing.faces == Faces::filled     ? Faces::outlined
                              : m_drawing.faces == Faces::outlined ? Faces::wires
                                                                   : Faces::filled;
            break;
        case GLFW_KEY_G:
            m_hasGrid = !m_hasGrid;
            break;
        case GLFW_KEY_P:
            writeView();
            break;
        default:
            if (key >= GLFW_KEY_1 && key <= GLFW_KEY_9 &&
                static_cast<unsigned>(key - GLFW_KEY_1) < m_show->cameraCount()) {
                look(static_cast<unsigned>(key - GLFW_KEY_1));
            }
            break;
        }
    }

    // A number past the last camera shows the whole scene.
    void look(unsigned camera)
    {
        m_camera = camera < m_show->cameraCount() ? std::optional<unsigned>(camera) : std::nullopt;
        m_isNewCamera = true;
    }

    // Writes the picture under the first free name in the current folder.
    void writeView()
    {
        const std::string stem = std::filesystem::path(m_file).stem().string();
        std::string path;
        for (unsigned number = 1; path.empty() || std::filesystem::exists(path); ++number) {
            path = stem + "-" + std::to_string(number) + ".png";
        }
        try {
            const Canvas canvas(static_cast<unsigned>(m_width), static_cast<unsigned>(m_height));
            canvas.bind();
            drawAll();
            writePicture(canvas.picture(), path, m_drawing.background.kind == Background::Kind::none);
            std::cout << "The picture is in " << printable(path) << std::endl;
        } catch (const PictureError& error) {
            std::cerr << "scenetool: " << printable(error.what()) << '\n';
        }
    }

    void zoom(double notches)
    {
        m_camera.reset();
        const float factor = std::pow(zoomPerNotch, static_cast<float>(notches));
        m_orbit.distance = std::clamp(m_orbit.distance * factor, 1e-3f * m_orbit.radius, 1e3f * m_orbit.radius);
    }

    void button(int button, int action, int modifiers)
    {
        m_drag = Drag::none;
        if (action != GLFW_PRESS) {
            return;
        }
        glfwGetCursorPos(m_window, &m_x, &m_y);
        int width = 0;
        int height = 0;
        glfwGetWindowSize(m_window, &width, &height);
        if (length() > 0.0 && m_y >= height - timelineHeight) {
            m_drag = Drag::time;
            drag(m_x, m_y);
            return;
        }
        const bool isMove = button != GLFW_MOUSE_BUTTON_LEFT || (modifiers & GLFW_MOD_SHIFT) != 0;
        m_drag = isMove ? Drag::move : Drag::turn;
    }

    void drag(double x, double y)
    {
        const auto right = static_cast<float>(x - m_x);
        const auto down = static_cast<float>(y - m_y);
        m_x = x;
        m_y = y;
        int width = 0;
        int height = 0;
        glfwGetWindowSize(m_window, &width, &height);
        switch (m_drag) {
        case Drag::none:
            return;
        case Drag::turn:
            m_orbit.yaw -= right * radiansPerPixel;
            m_orbit.pitch = std::clamp(m_orbit.pitch + down * radiansPerPixel, -maxPitch, maxPitch);
            break;
        case Drag::move: {
            const float step = m_orbit.spanAtTarget() / static_cast<float>(std::max(height, 1));
            m_orbit.target =
                sum(m_orbit.target, sum(scaled(m_orbit.right(), -right * step), scaled(m_orbit.above(), down * step)));
            break;
        }
        case Drag::time:
            goTo(std::clamp(x / std::max(width, 1), 0.0, 0.9999) * length());
            return;
        }
        m_camera.reset();
    }

    GLFWwindow* m_window;
    DocumentOpener m_open;
    ViewerSink m_sink;
    RenderOptions m_options;
    DrawOptions m_drawing;
    Overlay m_overlay;
    std::string m_file;
    std::filesystem::file_time_type m_changed;
    double m_lookedAt = 0.0; ///< time of the last check for changes
    std::unique_ptr<PictureDocument> m_document;
    std::unique_ptr<SceneShow> m_show; ///< null if the document cannot be shown
    std::optional<unsigned> m_camera;  ///< nothing for the orbit
    bool m_isNewCamera = true;         ///< whether the camera has not been drawn yet
    Orbit m_orbit;
    double m_time;
    bool m_isPlaying = false;
    bool m_hasGrid = false;
    bool m_hasHelp = false;
    Drag m_drag = Drag::none;
    double m_x = 0.0; ///< mouse position
    double m_y = 0.0;
    int m_width = 1; ///< framebuffer size
    int m_height = 1;
};

} // namespace

void viewScene(const std::string& file, const DocumentOpener& open, const RenderOptions& options,
               const ViewerSink& sink)
{
    const WindowSystem system;
    const Window window = openWindow(options);
    Viewer viewer(window.get(), file, open, options, sink);
    std::cout << viewerHelp << std::endl;
    viewer.run();
}

} // namespace scenetool
