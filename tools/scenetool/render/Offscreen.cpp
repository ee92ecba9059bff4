#include "Offscreen.h"

#include <epoxy/egl.h>

#include <dlfcn.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace scenetool {

namespace {

constexpr GLsizei maxSamples = 4;
constexpr std::size_t maxSampledPixels = 16777216; // samples of more pixels would take gigabytes

// The dispatch library aborts the process if it does not find a library, so this is checked first.
bool hasLibrary(const char* name)
{
    void* const library = dlopen(name, RTLD_LAZY | RTLD_LOCAL);
    return library != nullptr; // stays open, because it is needed soon
}

void requireLibraries()
{
    if (!hasLibrary("libEGL.so.1") || (!hasLibrary("libOpenGL.so.0") && !hasLibrary("libGL.so.1"))) {
        throw PictureError("cannot draw: this machine has no EGL and OpenGL libraries");
    }
}

bool hasExtension(const char* all, const char* name)
{
    const std::size_t size = std::strlen(name);
    for (const char* at = all == nullptr ? nullptr : std::strstr(all, name); at != nullptr;
         at = std::strstr(at + size, name)) {
        if ((at == all || at[-1] == ' ') && (at[size] == ' ' || at[size] == '\0')) {
            return true;
        }
    }
    return false;
}

EGLDisplay surfacelessDisplay()
{
    const char* const extensions = eglQueryString(EGL_NO_DISPLAY, EGL_EXTENSIONS);
    if (hasExtension(extensions, "EGL_EXT_platform_base") &&
        hasExtension(extensions, "EGL_MESA_platform_surfaceless")) {
        return eglGetPlatformDisplayEXT(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr);
    }
    return eglGetDisplay(EGL_DEFAULT_DISPLAY);
}

EGLConfig anyConfig(EGLDisplay display)
{
    const EGLint wanted[] = {EGL_RENDERABLE_TYPE, EGL_OPENGL_BIT, EGL_SURFACE_TYPE, EGL_DONT_CARE, EGL_NONE};
    EGLConfig config = nullptr;
    EGLint count = 0;
    return eglChooseConfig(display, wanted, &config, 1, &count) == EGL_TRUE && count > 0 ? config : nullptr;
}

} // namespace

void requireGl33()
{
    const int version = epoxy_gl_version();
    if (!epoxy_is_desktop_gl() || version < 33) {
        throw PictureError("cannot draw: OpenGL " + std::to_string(version / 10) + "." + std::to_string(version % 10) +
                           " is too old, 3.3 is needed");
    }
}

OffscreenContext::OffscreenContext()
{
    requireLibraries();
    setenv("EGL_LOG_LEVEL", "fatal", 0); // errors are reported below, in one line
    EGLint major = 0;
    EGLint minor = 0;
    m_display = surfacelessDisplay();
    if (m_display == EGL_NO_DISPLAY || eglInitialize(m_display, &major, &minor) != EGL_TRUE) {
        throw PictureError("cannot draw: EGL does not start (is a driver such as libegl-mesa0 installed?)");
    }
    const EGLint attributes[] = {
        EGL_CONTEXT_MAJOR_VERSION,           3,       EGL_CONTEXT_MINOR_VERSION, 3, EGL_CONTEXT_OPENGL_PROFILE_MASK,
        EGL_CONTEXT_OPENGL_CORE_PROFILE_BIT, EGL_NONE};
    EGLConfig config = anyConfig(m_display);
    m_context = config != nullptr && eglBindAPI(EGL_OPENGL_API) == EGL_TRUE
                    ? eglCreateContext(m_display, config, EGL_NO_CONTEXT, attributes)
                    : EGL_NO_CONTEXT;
    if (m_context == EGL_NO_CONTEXT ||
        eglMakeCurrent(m_display, EGL_NO_SURFACE, EGL_NO_SURFACE, m_context) != EGL_TRUE) {
        eglTerminate(m_display);
        throw PictureError("cannot draw: EGL has no OpenGL 3.3 context without a window");
    }
    requireGl33();
}

OffscreenContext::~OffscreenContext()
{
    eglMakeCurrent(m_display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
    eglDestroyContext(m_display, m_context);
    eglTerminate(m_display);
}

Canvas::Canvas(unsigned width, unsigned height) : m_width(width), m_height(height)
{
    GLint maxSide = 0;
    GLint samples = 0;
    glGetIntegerv(GL_MAX_RENDERBUFFER_SIZE, &maxSide);
    glGetIntegerv(GL_MAX_SAMPLES, &samples);
    if (std::max(width, height) > static_cast<unsigned>(maxSide)) {
        throw PictureError("cannot draw: the driver supports at most " + std::to_string(maxSide) + " pixels per side");
    }
    samples = std::size_t(width) * height > maxSampledPixels ? 0 : std::min(samples, maxSamples);
    const auto columns = static_cast<GLsizei>(width);
    const auto rows = static_cast<GLsizei>(height);
    m_sampledColor = newRenderbuffer();
    glBindRenderbuffer(GL_RENDERBUFFER, m_sampledColor.name());
    glRenderbufferStorageMultisample(GL_RENDERBUFFER, samples, GL_RGBA8, columns, rows);
    m_sampledDepth = newRenderbuffer();
    glBindRenderbuffer(GL_RENDERBUFFER, m_sampledDepth.name());
    glRenderbufferStorageMultisample(GL_RENDERBUFFER, samples, GL_DEPTH_COMPONENT24, columns, rows);
    m_color = newRenderbuffer();
    glBindRenderbuffer(GL_RENDERBUFFER, m_color.name());
    glRenderbufferStorage(GL_RENDERBUFFER, GL_RGBA8, columns, rows);

    m_resolved = newFramebuffer();
    glBindFramebuffer(GL_FRAMEBUFFER, m_resolved.name());
    glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_RENDERBUFFER, m_color.name());
    const bool isResolvedWhole = glCheckFramebufferStatus(GL_FRAMEBUFFER) == GL_FRAMEBUFFER_COMPLETE;
    m_sampled = newFramebuffer();
    glBindFramebuffer(GL_FRAMEBUFFER, m_sampled.name());
    glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_RENDERBUFFER, m_sampledColor.name());
    glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_DEPTH_ATTACHMENT, GL_RENDERBUFFER, m_sampledDepth.name());
    if (!isResolvedWhole || glCheckFramebufferStatus(GL_FRAMEBUFFER) != GL_FRAMEBUFFER_COMPLETE ||
        glGetError() != GL_NO_ERROR) {
        throw PictureError("cannot draw: no memory for a picture of " + std::to_string(width) + " by " +
                           std::to_string(height) + " pixels");
    }
}

void Canvas::bind() const
{
    glBindFramebuffer(GL_FRAMEBUFFER, m_sampled.name());
    glViewport(0, 0, static_cast<GLsizei>(m_width), static_cast<GLsizei>(m_height));
}

Picture Canvas::picture() const
{
    const auto columns = static_cast<GLsizei>(m_width);
    const auto rows = static_cast<GLsizei>(m_height);
    glBindFramebuffer(GL_READ_FRAMEBUFFER, m_sampled.name());
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, m_resolved.name());
    glBlitFramebuffer(0, 0, columns, rows, 0, 0, columns, rows, GL_COLOR_BUFFER_BIT, GL_NEAREST);
    glBindFramebuffer(GL_READ_FRAMEBUFFER, m_resolved.name());
    Picture picture(m_width, m_height);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(0, 0, columns, rows, GL_RGBA, GL_UNSIGNED_BYTE, picture.bytes.data());
    if (const GLenum error = glGetError(); error != GL_NO_ERROR) {
        throw PictureError("cannot draw: OpenGL reports error " + std::to_string(error));
    }
    // OpenGL counts rows from the bottom.
    for (unsigned y = 0; y < m_height / 2; ++y) {
        std::swap_ranges(picture.row(y), picture.row(y) + 4 * std::size_t(m_width), picture.row(m_height - 1 - y));
    }
    return picture;
}

} // namespace scenetool
