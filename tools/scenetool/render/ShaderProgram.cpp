#include "ShaderProgram.h"

#include "../common/Printable.h"
#include "Picture.h"

#include <array>

namespace scenetool {

namespace {

GlObject compiled(GLenum kind, const char* source)
{
    GlObject shader = newShader(kind);
    glShaderSource(shader.name(), 1, &source, nullptr);
    glCompileShader(shader.name());
    GLint isCompiled = GL_FALSE;
    glGetShaderiv(shader.name(), GL_COMPILE_STATUS, &isCompiled);
    if (isCompiled != GL_TRUE) {
        std::array<char, 512> text{};
        glGetShaderInfoLog(shader.name(), static_cast<GLsizei>(text.size()), nullptr, text.data());
        throw PictureError("cannot draw: the driver refuses a shader: " + printable(text.data()));
    }
    return shader;
}

} // namespace

ShaderProgram::ShaderProgram(const char* vertexShader, const char* fragmentShader)
{
    const GlObject vertex = compiled(GL_VERTEX_SHADER, vertexShader);
    const GlObject fragment = compiled(GL_FRAGMENT_SHADER, fragmentShader);
    m_program = newProgram();
    glAttachShader(m_program.name(), vertex.name());
    glAttachShader(m_program.name(), fragment.name());
    glLinkProgram(m_program.name());
    GLint isLinked = GL_FALSE;
    glGetProgramiv(m_program.name(), GL_LINK_STATUS, &isLinked);
    if (isLinked != GL_TRUE) {
        throw PictureError("cannot draw: the driver does not link the shaders");
    }
}

GLint ShaderProgram::uniform(const char* name)
{
    const auto found = m_uniforms.find(name);
    if (found != m_uniforms.end()) {
        return found->second;
    }
    return m_uniforms.emplace(name, glGetUniformLocation(m_program.name(), name)).first->second;
}

} // namespace scenetool
