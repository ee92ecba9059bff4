#pragma once

#include "GlObject.h"
#include "Picture.h"

namespace scenetool {

/// An OpenGL 3.3 core context without a window or display, current in this thread until it is destroyed.
class OffscreenContext {
public:
    /// @throws PictureError if the machine has no EGL or no OpenGL 3.3
    OffscreenContext();
    ~OffscreenContext();
    OffscreenContext(const OffscreenContext&) = delete;
    OffscreenContext& operator=(const OffscreenContext&) = delete;

private:
    void* m_display = nullptr;
    void* m_context = nullptr;
};

/// A framebuffer, with several samples per pixel if the driver supports that.
class Canvas {
public:
    /// @throws PictureError if it is too large for the driver, or if out of memory
    Canvas(unsigned width, unsigned height);

    /// Makes it the target of all drawing.
    void bind() const;
    /// Reads the picture. @throws PictureError if OpenGL reports an error
    Picture picture() const;

private:
    unsigned m_width;
    unsigned m_height;
    GlObject m_sampledColor;
    GlObject m_sampledDepth;
    GlObject m_sampled;
    GlObject m_color;
    GlObject m_resolved;
};

/// @throws PictureError unless the current context has OpenGL 3.3
void requireGl33();

} // namespace scenetool
