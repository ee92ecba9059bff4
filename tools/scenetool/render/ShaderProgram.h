#pragma once

#include "GlObject.h"

#include <map>
#include <string>

namespace scenetool {

/// A vertex and a fragment shader of OpenGL with the places of their uniforms.
class ShaderProgram {
public:
    /// @throws PictureError if the driver refuses one
    ShaderProgram(const char* vertexShader, const char* fragmentShader);

    void use() const { glUseProgram(m_program.name()); }
    /// -1, which OpenGL passes over, for one that there is not.
    GLint uniform(const char* name);

private:
    GlObject m_program;
    std::map<std::string, GLint> m_uniforms;
};

} // namespace scenetool
