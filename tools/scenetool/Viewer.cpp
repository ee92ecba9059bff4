#include "Viewer.h"

#include "Printable.h"
#include "render/Offscreen.h"

#define GLFW_INCLUDE_NONE
#include <GLFW/glfw3.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <memory>
#include <utility>

namespace scenetool {

const char* const viewerHelp =
    "Mouse: drag turns, with shift or the right button it moves, the wheel zooms, and a drag "
    "along the lower edge goes through time.\n"
    "Keys: space plays and halts, left and right step in time, C takes the next camera, "
    "F shows all, W wires, P writes a picture, Q ends.";

namespace {

constexpr double timeStep = 0.1;         // seconds for a key
constexpr int timelineHeight = 10;       // pixels
constexpr float radiansPerPixel = 0.01f; // of a turn
constexpr float mostPitch = 1.55f;       // a little less than upright
constexpr float zoomPerNotch = 0.88f;

std::string windowError()
{
    const char* text = nullptr;
    glfwGetError(&text);
    return text == nullptr ? "no reason is given" : printable(text);
}

// The window system, as long as it lives.
class WindowSystem {
public:
    WindowSystem()
    {
#if defined(GLFW_PLATFORM) // 3.4
        // Wayland needs the folder of a login session, and complains of its own where it is missing.
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

class Viewer {
public:
    Viewer(GLFWwindow* window, LoadedScene& loaded, const RenderOptions& options, Shortfalls::Sink sink)
        : m_window(window),
          m_file(loaded.file()),
          m_drawing(options.drawing),
          m_show(loaded, options, std::move(sink)),
          m_camera(m_show.camera()),
          m_time(options.time.value_or(0.0))
    {
        readSize();
        m_orbit = m_show.framedOrbit(aspect());
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
                glfwWaitEvents();
            }
            const double now = glfwGetTime();
            if (m_isPlaying) {
                goTo(m_time + now - before);
            }
            before = now;
        }
    }

private:
    enum class Drag { none, turn, move, time };

    static Viewer& of(GLFWwindow* window) { return *static_cast<Viewer*>(glfwGetWindowUserPointer(window)); }

    void readSize()
    {
        glfwGetFramebufferSize(m_window, &m_width, &m_height);
        m_width = std::max(m_width, 1);
        m_height = std::max(m_height, 1);
    }

    float aspect() const { return static_cast<float>(m_width) / static_cast<float>(m_height); }

    Viewpoint viewpoint() { return m_camera ? m_show.cameraView(*m_camera, aspect()) : viewpointOf(m_orbit, aspect()); }

    void draw()
    {
        glBindFramebuffer(GL_FRAMEBUFFER, 0);
        glViewport(0, 0, m_width, m_height);
        m_show.draw(viewpoint(), m_drawing);
        drawTimeline();
        const std::string camera = m_camera ? ", camera " + std::to_string(*m_camera) : "";
        char time[32] = "";
        if (m_show.length() > 0.0) {
            std::snprintf(time, sizeof(time), ", %.2f s", m_time); // NOLINT(cert-err33-c): long enough, or cut
        }
        glfwSetWindowTitle(m_window, (printable(m_file) + camera + time).c_str());
    }

    // A bar along the lower edge, bright as far as the time has come.
    void drawTimeline()
    {
        if (!(m_show.length() > 0.0)) {
            return;
        }
        const auto done = static_cast<int>(m_width * std::fmod(m_time, m_show.length()) / m_show.length());
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
        m_time = std::max(time, 0.0);
        if (m_show.length() > 0.0) {
            m_time = std::fmod(m_time, m_show.length());
        }
        m_show.setTime(m_time);
    }

    void press(int key)
    {
        switch (key) {
        case GLFW_KEY_SPACE:
            m_isPlaying = !m_isPlaying && m_show.length() > 0.0;
            break;
        case GLFW_KEY_LEFT:
            goTo(m_time - timeStep);
            break;
        case GLFW_KEY_RIGHT:
            goTo(m_time + timeStep);
            break;
        case GLFW_KEY_C:
            nextCamera();
            break;
        case GLFW_KEY_F:
            m_camera.reset();
            m_orbit = m_show.framedOrbit(aspect());
            break;
        case GLFW_KEY_W:
            m_drawing.isWireframe = !m_drawing.isWireframe;
            break;
        case GLFW_KEY_P:
            writeView();
            break;
        case GLFW_KEY_Q:
        case GLFW_KEY_ESCAPE:
            glfwSetWindowShouldClose(m_window, GLFW_TRUE);
            break;
        default:
            break;
        }
    }

    // The view of all comes behind the last.
    void nextCamera()
    {
        const unsigned next = m_camera ? *m_camera + 1 : 0;
        m_camera = next < m_show.cameraCount() ? std::optional<unsigned>(next) : std::nullopt;
    }

    // Under the first free name in the present folder.
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
            m_show.draw(viewpoint(), m_drawing);
            writePicture(canvas.picture(), path);
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
        if (m_show.length() > 0.0 && m_y >= height - timelineHeight) {
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
            m_orbit.pitch = std::clamp(m_orbit.pitch + down * radiansPerPixel, -mostPitch, mostPitch);
            break;
        case Drag::move: {
            const float step = m_orbit.spanAtTarget() / static_cast<float>(std::max(height, 1));
            m_orbit.target =
                sum(m_orbit.target, sum(scaled(m_orbit.right(), -right * step), scaled(m_orbit.above(), down * step)));
            break;
        }
        case Drag::time:
            goTo(std::clamp(x / std::max(width, 1), 0.0, 0.9999) * m_show.length());
            return;
        }
        m_camera.reset();
    }

    GLFWwindow* m_window;
    std::string m_file;
    DrawOptions m_drawing;
    SceneShow m_show;
    std::optional<unsigned> m_camera; ///< without one the orbit is shown
    Orbit m_orbit;
    double m_time;
    bool m_isPlaying = false;
    Drag m_drag = Drag::none;
    double m_x = 0.0; ///< of the mouse
    double m_y = 0.0;
    int m_width = 1; ///< of the framebuffer
    int m_height = 1;
};

} // namespace

void viewScene(LoadedScene& loaded, const RenderOptions& options, Shortfalls::Sink sink)
{
    const WindowSystem system;
    const Window window = openWindow(options);
    Viewer viewer(window.get(), loaded, options, std::move(sink));
    std::cout << viewerHelp << std::endl;
    viewer.run();
}

} // namespace scenetool
