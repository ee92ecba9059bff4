#pragma once

#include "GlObject.h"
#include "RenderMath.h"
#include "ShaderProgram.h"
#include "Viewpoint.h"

#include <array>
#include <string>
#include <vector>

namespace scenetool {

/// Draws over a scene: a grid with the axes, and text. Needs a current OpenGL 3.3 context.
class Overlay {
public:
    /// @throws PictureError if the driver refuses the shader
    Overlay();

    /// Draws a grid around the origin in the plane of X and Z, with steps of a power of ten, and the axes: X red, Y
    /// green, Z blue. The scene hides what is behind it.
    /// @param radius of the scene
    void drawGrid(const Viewpoint& viewpoint, float radius);
    /// Draws lines of text in the upper left corner, on a dark background.
    void drawText(const std::vector<std::string>& lines, int width, int height);

private:
    using Color = std::array<float, 4>;

    void draw(GLenum mode, const std::vector<float>& points, const Matrix4& clipFromPoint, const Color& color);

    ShaderProgram m_program;
    GlObject m_array;
    GlObject m_buffer;
};

} // namespace scenetool
