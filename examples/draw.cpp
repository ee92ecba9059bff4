// Draws one moment of a document with plain OpenGL, without a window: draw FILE.dae OUT.ppm [SECONDS]
#include <libVideo/SceneGraph.h>

#include <epoxy/egl.h>
#include <epoxy/gl.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

namespace {

using Matrix = libMath::Matrix<float, 4, 4>;
using Vector3 = libMath::Vector<float, 3>;

constexpr int height = 480;
constexpr int cannotDraw = 77; // what a test takes for "skipped"

bool makeContext()
{
    auto* const display = eglGetPlatformDisplayEXT(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr);
    if (display == EGL_NO_DISPLAY || eglInitialize(display, nullptr, nullptr) != EGL_TRUE) {
        return false;
    }
    eglBindAPI(EGL_OPENGL_API);
    const EGLint wanted[] = {EGL_CONTEXT_MAJOR_VERSION, 3, EGL_CONTEXT_MINOR_VERSION, 3, EGL_NONE};
    auto* const context = eglCreateContext(display, EGL_NO_CONFIG_KHR, EGL_NO_CONTEXT, wanted);
    return context != EGL_NO_CONTEXT && eglMakeCurrent(display, EGL_NO_SURFACE, EGL_NO_SURFACE, context) == EGL_TRUE;
}

void makePicture(int width)
{
    GLuint buffers[3] = {}; // of color, of depth, and both
    glGenFramebuffers(1, &buffers[2]);
    glBindFramebuffer(GL_FRAMEBUFFER, buffers[2]);
    glGenRenderbuffers(2, buffers);
    const GLenum formats[] = {GL_RGBA8, GL_DEPTH_COMPONENT24};
    const GLenum places[] = {GL_COLOR_ATTACHMENT0, GL_DEPTH_ATTACHMENT};
    for (int i = 0; i < 2; ++i) {
        glBindRenderbuffer(GL_RENDERBUFFER, buffers[i]);
        glRenderbufferStorage(GL_RENDERBUFFER, formats[i], width, height);
        glFramebufferRenderbuffer(GL_FRAMEBUFFER, places[i], GL_RENDERBUFFER, buffers[i]);
    }
    glViewport(0, 0, width, height);
    glEnable(GL_DEPTH_TEST);
    glClearColor(0.6f, 0.75f, 0.9f, 1.0f);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
}

bool writePicture(const char* path, int width)
{
    std::vector<char> pixels(static_cast<std::size_t>(width) * height * 3);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(0, 0, width, height, GL_RGB, GL_UNSIGNED_BYTE, pixels.data());
    std::ofstream file(path, std::ios::binary);
    file << "P6\n" << width << ' ' << height << "\n255\n";
    const std::streamsize stride = std::streamsize(width) * 3;
    for (int row = height; row-- > 0;) { // the first row of OpenGL is the lowest
        file.write(pixels.data() + row * stride, stride);
    }
    return static_cast<bool>(file.flush());
}

// [vertex-shader]
const char* const vertexShader = R"(#version 330
layout(location = 0) in vec3 position;
layout(location = 1) in vec3 normal;
uniform mat4 world, view, projection;
out vec3 place, direction;
void main()
{
    vec4 point = world * vec4(position, 1.0);
    vec4 clip = projection * view * point;
    place = point.xyz;
    direction = transpose(inverse(mat3(world))) * normal;
    // The view is left-handed and the document right-handed, and depth runs from 0 to 1.
    gl_Position = vec4(-clip.x, clip.y, 2.0 * clip.z - clip.w, clip.w);
}
)";
// [/vertex-shader]

const char* const fragmentShader = R"(#version 330
const int most = 8;
uniform vec3 emission, diffuse, lightPlace[most], lightColor[most], lightAttenuation[most];
uniform int lightCount;
in vec3 place, direction;
out vec4 color;
void main()
{
    vec3 sum = emission;
    for (int i = 0; i < lightCount; ++i) {
        vec3 way = lightPlace[i] - place;
        float distance = length(way);
        float fall = dot(lightAttenuation[i], vec3(1.0, distance, distance * distance));
        float facing = max(dot(normalize(direction), way / distance), 0.0);
        sum += lightColor[i] / (fall > 0.0 ? fall : 1.0) * diffuse * facing;
    }
    color = vec4(sum, 1.0);
}
)";

GLuint makeProgram()
{
    const GLuint program = glCreateProgram();
    const GLenum kinds[] = {GL_VERTEX_SHADER, GL_FRAGMENT_SHADER};
    const char* const sources[] = {vertexShader, fragmentShader};
    for (int i = 0; i < 2; ++i) {
        const GLuint shader = glCreateShader(kinds[i]);
        glShaderSource(shader, 1, &sources[i], nullptr);
        glCompileShader(shader);
        glAttachShader(program, shader);
    }
    glLinkProgram(program);
    glUseProgram(program);
    return program;
}

// [view]
// The view of a camera that looks at no node: along -z of its own one, in the form that the library gives.
Matrix viewFrom(const libVideo::Node& node)
{
    Matrix view;
    const float sign[] = {-1.0f, 1.0f, -1.0f};
    for (unsigned axis = 0; axis < 3; ++axis) {
        const libMath::Vector<float, 4> column = node.transform().column(axis);
        const Vector3 unit = Vector3(column[0], column[1], column[2]).normalized();
        for (unsigned i = 0; i < 3; ++i) {
            view(i, axis) = sign[axis] * unit[i];
        }
        view(3, axis) = -sign[axis] * unit.dot(node.position());
    }
    view(3, 3) = 1.0f;
    return view;
}
// [/view]

class Drawing {
public:
    explicit Drawing(const libVideo::VisualScene& scene) : m_scene(scene), m_program(makeProgram()) {}

    void draw()
    {
        setLights();
        // [geometries]
        for (const libVideo::GeometryTable::Bucket& bucket : m_scene.geometryTable()) {
            const libVideo::Geometry& geometry = *bucket.value;
            for (const libVideo::SharedHandle<libVideo::Primitive>& primitive : geometry.mesh().primitives()) {
                upload(*primitive);
                setMaterial(primitive->material());
                for (const libVideo::NodeHandle& node : geometry.nodes()) {
                    const libVideo::Node& placed = *node;
                    glUniformMatrix4fv(place("world"), 1, GL_TRUE, &placed.transform()[0]);
                    drawPrimitive(*primitive);
                }
            }
        }
        // [/geometries]
    }

    // [camera]
    void setCamera(libVideo::CameraInstance& camera, double time)
    {
        // Once more, now that the nodes stand in the world.
        const Matrix view = camera.lookAtNode() ? camera.setLookAtNode(camera.lookAtNode()) : viewFrom(*camera.node());
        // Both are for row vectors, row by row, which OpenGL takes for their transposes, for column vectors.
        glUniformMatrix4fv(place("view"), 1, GL_FALSE, &view[0]);
        glUniformMatrix4fv(place("projection"), 1, GL_FALSE, &camera.projection(time)[0]);
        m_eye = camera.node()->position();
    }
    // [/camera]

private:
    GLint place(const std::string& name) const { return glGetUniformLocation(m_program, name.c_str()); }

    void setVector(const std::string& name, const Vector3& v) const { glUniform3f(place(name), v[0], v[1], v[2]); }

    // [upload]
    void upload(libVideo::Primitive& primitive)
    {
        GLuint buffers[3] = {}; // of vertices, of indices, and the array of both
        glGenVertexArrays(1, &buffers[2]);
        glBindVertexArray(buffers[2]);
        glGenBuffers(2, buffers);
        glBindBuffer(GL_ARRAY_BUFFER, buffers[0]);
        glBufferData(GL_ARRAY_BUFFER, primitive.totalByteSize(), primitive.vertexBuffer().get(), GL_STATIC_DRAW);
        glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, buffers[1]);
        const vesk::Array<unsigned>& indices = primitive.indexBuffer();
        glBufferData(GL_ELEMENT_ARRAY_BUFFER, GLsizeiptr(indices.size() * sizeof(unsigned)), indices.getData(),
                     GL_STATIC_DRAW);
        libVideo::VertexLayout layout;
        if (primitive.positionLayout(layout)) {
            setAttribute(0, layout, primitive.bytesPerVertex());
        }
        if (primitive.normalLayout(layout)) {
            setAttribute(1, layout, primitive.bytesPerVertex());
        }
    }

    static void setAttribute(GLuint location, const libVideo::VertexLayout& layout, unsigned stride)
    {
        const auto components = static_cast<GLint>(std::clamp<std::size_t>(layout.byteSize / sizeof(float), 1, 4));
        glEnableVertexAttribArray(location);
        // NOLINTNEXTLINE(performance-no-int-to-ptr): so OpenGL wants an offset
        const void* const offset = reinterpret_cast<const void*>(std::uintptr_t(layout.byteOffset));
        glVertexAttribPointer(location, components, GL_FLOAT, GL_FALSE, static_cast<GLsizei>(stride), offset);
    }

    static void drawPrimitive(const libVideo::Primitive& primitive)
    {
        if (primitive.type() == libVideo::PRIMITIVE_TRIANGLE_LIST) {
            glDrawElements(GL_TRIANGLES, static_cast<GLsizei>(primitive.indexBuffer().size()), GL_UNSIGNED_INT,
                           nullptr);
        } else if (primitive.type() == libVideo::PRIMITIVE_POINT_CLOUD) {
            glDrawArrays(GL_POINTS, 0, static_cast<GLsizei>(primitive.count()));
        }
    }
    // [/upload]

    // [material]
    void setMaterial(const vesk::String& symbol)
    {
        const libVideo::BlinnMaterialTable::Bucket* const bucket = m_scene.blinnMaterialTable().lookup(symbol);
        libVideo::BlinnMaterial::Component values; // white
        std::fill_n(values.emission, 3, 0.0f);     // but not by itself, if nothing is bound to the symbol
        if (bucket != nullptr) {
            values = bucket->value->component();
        }
        glUniform3fv(place("emission"), 1, values.emission);
        glUniform3fv(place("diffuse"), 1, values.diffuse);
    }
    // [/material]

    void setLights()
    {
        for (const libVideo::PointLightInstanceHandle& light : m_scene.pointLightList()) {
            addLight(*light->pointLight(), light->node()->position());
        }
        for (const libVideo::SpotLightInstanceHandle& light : m_scene.spotLightList()) {
            addLight(*light->spotLight(), light->node()->position()); // as if it shone all round
        }
        if (m_lightCount == 0) {
            addLight(libVideo::PointLight("at the eye"), m_eye);
        }
        glUniform1i(place("lightCount"), std::min(m_lightCount, 8)); // OpenGL passes over what has no place
    }

    template <class Light>
    void addLight(const Light& light, const Vector3& position)
    {
        const std::string index = "[" + std::to_string(m_lightCount++) + "]";
        setVector("lightPlace" + index, position);
        setVector("lightColor" + index, light.color());
        setVector("lightAttenuation" + index,
                  Vector3(light.constantAttenuation(), light.linearAttenuation(), light.quadraticAttenuation()));
    }

    const libVideo::VisualScene& m_scene;
    GLuint m_program;
    Vector3 m_eye;
    int m_lightCount = 0;
};

// [moment]
// Puts every node where it stands in the world at a time. Of one scene this can be done once.
void moveTo(libVideo::VisualScene& scene, double time)
{
    vesk::Array<libVideo::NodeLink> nodes = scene.root().children();
    for (unsigned i = 0; i < nodes.size(); ++i) {
        libVideo::Node& node = *nodes[i];
        node.transform(time);
        nodes.appendArray(node.children());
    }
    scene.transform();
}
// [/moment]

} // namespace

int main(int argc, char** argv)
try {
    // [load]
    libVideo::Scene scene;
    if (argc < 3 || !scene.createFromCollada(argv[1])) {
        return 1; // the reason went to standard error
    }
    libVideo::VisualScene& world = scene.visualScene();
    if (world.cameraList().size() == 0) {
        std::cerr << "the document has no camera\n";
        return 1;
    }
    // [/load]
    const double time = argc > 3 ? std::strtod(argv[3], nullptr) : 0.0;
    moveTo(world, time);
    // [picture]
    libVideo::CameraInstance& camera = *world.cameraList()[0];
    const Matrix& projection = camera.projection(time);
    const double aspectRatio = double(projection[5] / projection[0]); // width to height
    // [/picture]
    const bool fits = aspectRatio > 0.1 && aspectRatio < 10.0;
    const int width = fits ? static_cast<int>(std::lround(height * aspectRatio)) : height;
    if (!makeContext()) {
        std::cerr << "there is no OpenGL 3.3 without a window\n";
        return cannotDraw;
    }
    makePicture(width);
    Drawing drawing(world);
    drawing.setCamera(camera, time);
    drawing.draw();
    return glGetError() == GL_NO_ERROR && writePicture(argv[2], width) ? 0 : 1;
} catch (const std::exception& exception) {
    std::cerr << exception.what() << '\n';
    return 1;
}
