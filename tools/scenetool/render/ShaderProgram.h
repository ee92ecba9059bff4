#pragma once

#include "GlObject.h"

#include <map>
#include <string>

namespace scenetool {

/// An OpenGL program of a vertex and a fragment shader, with the locations of its uniforms.
class ShaderProgram {
public:
    /// @throws PictureError if the driver refuses a shader
    ShaderProgram(const char* vertexShader, const char* fragmentShader);

    void use() const { glUseProgram(m_program.name()); }
    /// Location of a uniform; -1, which OpenGL ignores, if there is none with that name.
    GLint uniform(const char* name);

private:
    GlObject m_program;
    std::map<std::string, GLint> m_uniforms;
};

} // namespace scenetool
