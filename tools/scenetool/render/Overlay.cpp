#include "Overlay.h"

#include <stb/stb_easy_font.h>

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace scenetool {

namespace {

constexpr int gridSteps = 10;     // to each side of the origin
constexpr float textScale = 1.5f; // pixels per unit of the font
constexpr float lineHeight = 12.0f;
constexpr float margin = 8.0f;

const char* const vertexShader = R"(#version 330 core
layout(location = 0) in vec3 point;
uniform mat4 clipFromPoint;
void main() { gl_Position = clipFromPoint * vec4(point, 1.0); }
)";

const char* const fragmentShader = R"(#version 330 core
uniform vec4 color;
out vec4 result;
void main() { result = color; }
)";

void addLine(std::vector<float>& points, const Vector3& from, const Vector3& to)
{
    points.insert(points.end(), {from[0], from[1], from[2], to[0], to[1], to[2]});
}

// Adds a box as two triangles.
void addBox(std::vector<float>& points, float left, float top, float right, float bottom)
{
    for (const auto& [x, y] : {std::array<float, 2>{left, top},
                               {right, top},
                               {right, bottom},
                               {left, top},
                               {right, bottom},
                               {left, bottom}}) {
        points.insert(points.end(), {x, y, 0.0f});
    }
}

} // namespace

Overlay::Overlay() : m_program(vertexShader, fragmentShader), m_array(newVertexArray()), m_buffer(newBuffer())
{
    glBindVertexArray(m_array.name());
    glBindBuffer(GL_ARRAY_BUFFER, m_buffer.name());
    glEnableVertexAttribArray(0);
    glVertexAttribPointer(0, 3, GL_FLOAT, GL_FALSE, 3 * sizeof(float), nullptr);
}

void Overlay::draw(GLenum mode, const std::vector<float>& points, const Matrix4& clipFromPoint, const Color& color)
{
    m_program.use();
    glBindVertexArray(m_array.name());
    glBindBuffer(GL_ARRAY_BUFFER, m_buffer.name());
    glBufferData(GL_ARRAY_BUFFER, static_cast<GLsizeiptr>(points.size() * sizeof(float)), points.data(),
                 GL_STREAM_DRAW);
    std::array<float, 16> elements{};
    for (unsigned i = 0; i < 16; ++i) {
        elements[i] = clipFromPoint[i];
    }
    glUniformMatrix4fv(m_program.uniform("clipFromPoint"), 1, GL_TRUE, elements.data());
    glUniform4fv(m_program.uniform("color"), 1, color.data());
    glEnable(GL_BLEND);
    glBlendFuncSeparate(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA, GL_ONE, GL_ONE_MINUS_SRC_ALPHA);
    glDrawArrays(mode, 0, static_cast<GLsizei>(points.size() / 3));
    glDisable(GL_BLEND);
}

void Overlay::drawGrid(const Viewpoint& viewpoint, float radius)
{
    const float size = radius > 0.0f && std::isfinite(radius) ? radius : 1.0f;
    const float step = std::pow(10.0f, std::ceil(std::log10(size / gridSteps)));
    const float end = step * gridSteps;
    std::vector<float> grid;
    for (int i = -gridSteps; i <= gridSteps; ++i) {
        const float at = step * static_cast<float>(i);
        addLine(grid, {at, 0, -end}, {at, 0, end});
        addLine(grid, {-end, 0, at}, {end, 0, at});
    }
    glEnable(GL_DEPTH_TEST);
    draw(GL_LINES, grid, viewpoint.clipFromWorld, {0.35f, 0.37f, 0.4f, 0.6f});
    const Color colors[3] = {{0.85f, 0.15f, 0.15f, 1.0f}, {0.1f, 0.65f, 0.15f, 1.0f}, {0.15f, 0.3f, 0.9f, 1.0f}};
    for (unsigned axis = 0; axis < 3; ++axis) {
        Vector3 tip(0, 0, 0);
        tip[axis] = end;
        std::vector<float> line;
        addLine(line, {0, 0, 0}, tip);
        draw(GL_LINES, line, viewpoint.clipFromWorld, colors[axis]);
    }
}

void Overlay::drawText(const std::vector<std::string>& lines, int width, int height)
{
    // Pixels are counted from the upper left corner.
    Matrix4 clipFromPixel = identity();
    clipFromPixel(0, 0) = 2.0f / static_cast<float>(std::max(width, 1));
    clipFromPixel(1, 1) = -2.0f / static_cast<float>(std::max(height, 1));
    clipFromPixel(0, 3) = -1.0f;
    clipFromPixel(1, 3) = 1.0f;
    std::vector<float> letters;
    float widest = 0.0f;
    float top = 2.0f * margin;
    for (std::string line : lines) {
        struct Corner {
            float x, y, z;
            unsigned char color[4];
        };
        std::vector<Corner> corners(320 * line.size() + 4); // four per stroke; letters have fewer than 80 strokes
        const int strokes = stb_easy_font_print(0, 0, line.data(), nullptr, corners.data(),
                                                static_cast<int>(corners.size() * sizeof(Corner)));
        for (int i = 0; i < strokes; ++i) {
            const Corner& first = corners[4 * static_cast<std::size_t>(i)];
            const Corner& last = corners[4 * static_cast<std::size_t>(i) + 2];
            addBox(letters, 2.0f * margin + textScale * first.x, top + textScale * first.y,
                   2.0f * margin + textScale * last.x, top + textScale * last.y);
            widest = std::max(widest, textScale * last.x);
        }
        top += textScale * lineHeight;
    }
    glDisable(GL_DEPTH_TEST);
    std::vector<float> ground;
    addBox(ground, margin, margin, 3.0f * margin + widest, top + margin);
    draw(GL_TRIANGLES, ground, clipFromPixel, {0.07f, 0.08f, 0.1f, 0.8f});
    draw(GL_TRIANGLES, letters, clipFromPixel, {0.95f, 0.95f, 0.92f, 1.0f});
    glEnable(GL_DEPTH_TEST);
}

} // namespace scenetool
