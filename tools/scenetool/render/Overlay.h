#pragma once

#include "GlObject.h"
#include "RenderMath.h"
#include "ShaderProgram.h"
#include "Viewpoint.h"

#include <array>
#include <string>
#include <vector>

namespace scenetool {

/// What a window draws over a scene: a grid with the axes, and text. Needs a current context of OpenGL 3.3.
class Overlay {
public:
    /// @throws PictureError if the driver refuses the shader
    Overlay();

    /// A grid around the origin on the ground, which is square to Y, with steps of a power of ten; X red, Y green, Z
    /// blue. What stands in front of it hides it.
    /// @param radius of the scene
    void drawGrid(const Viewpoint& viewpoint, float radius);
    /// Lines of text in the upper left corner, on a dark ground.
    void drawText(const std::vector<std::string>& lines, int width, int height);

private:
    using Color = std::array<float, 4>;

    void draw(GLenum mode, const std::vector<float>& points, const Matrix4& clipFromPoint, const Color& color);

    ShaderProgram m_program;
    GlObject m_array;
    GlObject m_buffer;
};

} // namespace scenetool
