#pragma once

#include "GlObject.h"
#include "Picture.h"

namespace scenetool {

/// An OpenGL 3.3 core context of this thread without window or display, current as long as it lives.
class OffscreenContext {
public:
    /// @throws PictureError where the machine has no EGL or no such OpenGL
    OffscreenContext();
    ~OffscreenContext();
    OffscreenContext(const OffscreenContext&) = delete;
    OffscreenContext& operator=(const OffscreenContext&) = delete;

private:
    void* m_display = nullptr;
    void* m_context = nullptr;
};

/// Pixels to draw into, smoothed by several samples each where that is to be had.
class Canvas {
public:
    /// @throws PictureError if there is no memory for it
    Canvas(unsigned width, unsigned height);

    /// Makes it the target of what is drawn from now on.
    void bind() const;
    /// What was drawn so far. @throws PictureError if the drawing failed
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
