#pragma once

#include <epoxy/gl.h>

#include <utility>

namespace scenetool {

/// Owns one OpenGL object name. The context of the object has to be current when it is destroyed.
class GlObject {
public:
    using Delete = void (*)(GLuint name);

    GlObject() = default;
    GlObject(GLuint name, Delete destroy) : m_name(name), m_delete(destroy) {}
    GlObject(GlObject&& other) noexcept
        : m_name(std::exchange(other.m_name, 0)), m_delete(std::exchange(other.m_delete, nullptr))
    {}
    GlObject& operator=(GlObject&& other) noexcept
    {
        std::swap(m_name, other.m_name);
        std::swap(m_delete, other.m_delete);
        return *this;
    }
    GlObject(const GlObject&) = delete;
    GlObject& operator=(const GlObject&) = delete;
    ~GlObject()
    {
        if (m_delete != nullptr) {
            m_delete(m_name);
        }
    }

    GLuint name() const { return m_name; }

private:
    GLuint m_name = 0;
    Delete m_delete = nullptr;
};

inline GlObject newBuffer()
{
    GLuint name = 0;
    glGenBuffers(1, &name);
    return {name, [](GLuint old) { glDeleteBuffers(1, &old); }};
}

inline GlObject newVertexArray()
{
    GLuint name = 0;
    glGenVertexArrays(1, &name);
    return {name, [](GLuint old) { glDeleteVertexArrays(1, &old); }};
}

inline GlObject newTexture()
{
    GLuint name = 0;
    glGenTextures(1, &name);
    return {name, [](GLuint old) { glDeleteTextures(1, &old); }};
}

inline GlObject newRenderbuffer()
{
    GLuint name = 0;
    glGenRenderbuffers(1, &name);
    return {name, [](GLuint old) { glDeleteRenderbuffers(1, &old); }};
}

inline GlObject newFramebuffer()
{
    GLuint name = 0;
    glGenFramebuffers(1, &name);
    return {name, [](GLuint old) { glDeleteFramebuffers(1, &old); }};
}

inline GlObject newQuery()
{
    GLuint name = 0;
    glGenQueries(1, &name);
    return {name, [](GLuint old) { glDeleteQueries(1, &old); }};
}

inline GlObject newShader(GLenum kind)
{
    return {glCreateShader(kind), [](GLuint old) { glDeleteShader(old); }};
}

inline GlObject newProgram()
{
    return {glCreateProgram(), [](GLuint old) { glDeleteProgram(old); }};
}

} // namespace scenetool
