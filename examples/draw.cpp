// Draws a document with plain OpenGL, without a window: draw FILE.dae OUT.ppm [SECONDS [FRAMES]]
//
// With FRAMES it draws that many pictures, 25 for a second, with a number in front of the ending: OUT-0000.ppm and on.
#include <libVideo/SceneGraph.h>

#include <epoxy/egl.h>
#include <epoxy/gl.h>
#define STB_IMAGE_IMPLEMENTATION
#define STBI_FAILURE_USERMSG
#include <stb/stb_image.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <string>
#include <vector>

namespace {

using Matrix = libMath::Matrix<float, 4, 4>;
using Vector3 = libMath::Vector<float, 3>;

constexpr int pictureHeight = 480;
constexpr double framesPerSecond = 25.0;
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
        glRenderbufferStorage(GL_RENDERBUFFER, formats[i], width, pictureHeight);
        glFramebufferRenderbuffer(GL_FRAMEBUFFER, places[i], GL_RENDERBUFFER, buffers[i]);
    }
    glViewport(0, 0, width, pictureHeight);
    glEnable(GL_DEPTH_TEST);
    glClearColor(0.6f, 0.75f, 0.9f, 1.0f);
}

bool writePicture(const std::string& path, int width)
{
    std::vector<char> pixels(static_cast<std::size_t>(width) * pictureHeight * 3);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(0, 0, width, pictureHeight, GL_RGB, GL_UNSIGNED_BYTE, pixels.data());
    std::ofstream file(path, std::ios::binary);
    file << "P6\n" << width << ' ' << pictureHeight << "\n255\n";
    const std::streamsize stride = std::streamsize(width) * 3;
    for (int row = pictureHeight; row-- > 0;) { // the first row of OpenGL is the lowest
        file.write(pixels.data() + row * stride, stride);
    }
    return static_cast<bool>(file.flush());
}

// [vertex-shader]
const char* const vertexShader = R"(#version 330
layout(location = 0) in vec3 position;
layout(location = 1) in vec3 normal;
layout(location = 2) in vec2 texturePlace;
uniform mat4 world, view, projection;
out vec3 place, direction;
out vec2 texel;
void main()
{
    vec4 point = world * vec4(position, 1.0);
    vec4 clip = projection * view * point;
    place = point.xyz;
    direction = transpose(inverse(mat3(world))) * normal;
    texel = texturePlace;
    // The view is left-handed and the document right-handed, and depth runs from 0 to 1.
    gl_Position = vec4(-clip.x, clip.y, 2.0 * clip.z - clip.w, clip.w);
}
)";
// [/vertex-shader]

const char* const fragmentShader = R"(#version 330
const int maxLights = 8;
uniform vec3 emission, diffuse, lightPlace[maxLights], lightColor[maxLights], lightAttenuation[maxLights];
uniform vec3 lightDirection[maxLights];  // zero for a light that shines all round
uniform vec2 lightCone[maxLights];       // cosine of half its angle, exponent
uniform int lightCount;
uniform sampler2D image;
uniform bool hasImage;
in vec3 place, direction;
in vec2 texel;
out vec4 color;
void main()
{
    vec3 surface = hasImage ? texture(image, texel).rgb : diffuse;
    // A mesh without normals is flat.
    vec3 normal = normalize(direction == vec3(0.0) ? cross(dFdx(place), dFdy(place)) : direction);
    vec3 sum = emission;
    for (int i = 0; i < lightCount; ++i) {
        vec3 way = lightPlace[i] - place;
        float distance = length(way);
        float fall = dot(lightAttenuation[i], vec3(1.0, distance, distance * distance));
        float strength = max(dot(normal, way / distance), 0.0) / (fall > 0.0 ? fall : 1.0);
        if (lightDirection[i] != vec3(0.0)) {
            float cosine = dot(-way / distance, lightDirection[i]);
            strength *= cosine < lightCone[i].x ? 0.0 : pow(max(cosine, 0.0), lightCone[i].y);
        }
        sum += lightColor[i] * surface * strength;
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

// [moment]
// World matrices of all nodes at a time. They are computed here and not by VisualScene::transform(), which can be called once.
using Worlds = std::map<const libVideo::Node*, Matrix>;

Worlds worldsAt(const libVideo::VisualScene& scene, double time)
{
    Worlds worlds;
    worlds[&scene.root()] = scene.root().transform(); // the identity
    vesk::Array<libVideo::NodeLink> nodes = scene.root().children();
    for (unsigned i = 0; i < nodes.size(); ++i) { // the list grows: parents come before their children
        libVideo::Node& node = *nodes[i];
        worlds[&node] = worlds[node.parent().get()] * node.transform(time);
        nodes.appendArray(node.children());
    }
    return worlds;
}

// Column of a world matrix: 0 to 2 are the axes of the node, 3 is its position.
Vector3 columnOf(const Matrix& world, unsigned column)
{
    return {world(0, column), world(1, column), world(2, column)};
}
// [/moment]

// [view]
// The view from a node towards a target, in the form of CameraInstance::view(); without a target, along -z of the node.
Matrix viewFrom(const Matrix& world, const Matrix* target)
{
    const Vector3 eye = columnOf(world, 3);
    const Vector3 back = target != nullptr ? eye - columnOf(*target, 3) : columnOf(world, 2);
    const Vector3 z = (Vector3() - back).normalized();
    const Vector3 x = columnOf(world, 1).cross(z).normalized();
    const Vector3 axes[] = {x, z.cross(x), z};
    Matrix view;
    for (unsigned axis = 0; axis < 3; ++axis) {
        for (unsigned i = 0; i < 3; ++i) {
            view(i, axis) = axes[axis][i];
        }
        view(3, axis) = -axes[axis].dot(eye);
    }
    view(3, 3) = 1.0f;
    return view;
}
// [/view]

// [texture]
// A texture of an image file next to the document; 0 without one.
GLuint loadTexture(const libVideo::SharedHandle<libVideo::Texture>& texture, const std::filesystem::path& folder)
{
    if (!texture || texture->textureFile().empty()) {
        return 0;
    }
    const std::string file = (folder / texture->textureFile().data()).string();
    int width = 0;
    int height = 0;
    stbi_set_flip_vertically_on_load(1); // the first row of OpenGL is the lowest
    stbi_uc* const pixels = stbi_load(file.c_str(), &width, &height, nullptr, 4);
    if (pixels == nullptr) {
        std::cerr << file << ": " << stbi_failure_reason() << '\n';
        return 0;
    }
    GLuint name = 0;
    glGenTextures(1, &name);
    glBindTexture(GL_TEXTURE_2D, name);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, width, height, 0, GL_RGBA, GL_UNSIGNED_BYTE, pixels);
    glGenerateMipmap(GL_TEXTURE_2D);
    stbi_image_free(pixels);
    return name;
}
// [/texture]

class Drawing {
public:
    // Uploads everything, once for all pictures.
    Drawing(const libVideo::VisualScene& scene, const std::filesystem::path& folder)
        : m_scene(scene), m_program(makeProgram())
    {
        // [geometries]
        for (const libVideo::GeometryTable::Bucket& bucket : m_scene.geometryTable()) {
            const libVideo::Geometry& geometry = *bucket.value;
            for (const libVideo::SharedHandle<libVideo::Primitive>& primitive : geometry.mesh().primitives()) {
                m_meshes.push_back(
                    {upload(*primitive), primitive, &geometry, materialOf(primitive->material(), folder)});
            }
        }
        // [/geometries]
    }

    void draw(const Worlds& worlds)
    {
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        setLights(worlds);
        // [draw]
        for (const Mesh& mesh : m_meshes) {
            glBindVertexArray(mesh.array);
            glUniform3fv(place("emission"), 1, mesh.material.values.emission);
            glUniform3fv(place("diffuse"), 1, mesh.material.values.diffuse);
            glUniform1i(place("hasImage"), mesh.material.image != 0 ? 1 : 0);
            glBindTexture(GL_TEXTURE_2D, mesh.material.image);
            for (const libVideo::NodeHandle& node : mesh.geometry->nodes()) {
                glUniformMatrix4fv(place("world"), 1, GL_TRUE, &worlds.at(node.get())[0]);
                drawPrimitive(*mesh.primitive);
            }
        }
        // [/draw]
    }

    // [camera]
    void setCamera(libVideo::CameraInstance& camera, const Worlds& worlds, double time)
    {
        const Matrix& world = worlds.at(camera.node().get());
        const Matrix view = viewFrom(world, camera.lookAtNode() ? &worlds.at(camera.lookAtNode().get()) : nullptr);
        // Both are for row vectors, row by row, which OpenGL takes for their transposes, for column vectors.
        glUniformMatrix4fv(place("view"), 1, GL_FALSE, &view[0]);
        glUniformMatrix4fv(place("projection"), 1, GL_FALSE, &camera.projection(time)[0]);
        m_eye = columnOf(world, 3);
    }
    // [/camera]

private:
    struct Material {
        libVideo::BlinnMaterial::Component values; // white
        GLuint image = 0;                          // of the diffuse channel
    };

    struct Mesh {
        GLuint array;
        libVideo::SharedHandle<libVideo::Primitive> primitive;
        const libVideo::Geometry* geometry;
        Material material;
    };

    GLint place(const std::string& name) const { return glGetUniformLocation(m_program, name.c_str()); }

    void setVector(const std::string& name, const Vector3& v) const { glUniform3f(place(name), v[0], v[1], v[2]); }

    // [upload]
    static GLuint upload(libVideo::Primitive& primitive)
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
        if (primitive.textureCoordLayout(layout)) {
            setAttribute(2, layout, primitive.bytesPerVertex());
        }
        return buffers[2];
    }

    static void setAttribute(GLuint location, const libVideo::VertexLayout& layout, unsigned stride)
    {
        const auto components = static_cast<GLint>(std::clamp<std::size_t>(layout.byteSize / sizeof(float), 1, 4));
        glEnableVertexAttribArray(location);
        // NOLINTNEXTLINE(performance-no-int-to-ptr): OpenGL takes an offset as a pointer
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
    Material materialOf(const vesk::String& symbol, const std::filesystem::path& folder) const
    {
        const libVideo::BlinnMaterialTable::Bucket* const bucket = m_scene.blinnMaterialTable().lookup(symbol);
        Material material;
        if (bucket == nullptr) {
            std::fill_n(material.values.emission, 3, 0.0f); // white, but not by itself
        } else {
            material.values = bucket->value->component();
            material.image = loadTexture(material.values.diffuseTexture, folder);
        }
        return material;
    }
    // [/material]

    // [lights]
    void setLights(const Worlds& worlds)
    {
        m_lightCount = 0;
        for (const libVideo::PointLightInstanceHandle& light : m_scene.pointLightList()) {
            addLight(*light->pointLight(), columnOf(worlds.at(light->node().get()), 3));
        }
        for (const libVideo::SpotLightInstanceHandle& light : m_scene.spotLightList()) {
            const libVideo::SpotLight& spot = *light->spotLight();
            const Vector3 position = columnOf(worlds.at(light->node().get()), 3);
            if (light->lookatNode()) { // else it shines all round
                const Vector3 target = columnOf(worlds.at(light->lookatNode().get()), 3);
                setVector("lightDirection" + indexOfNextLight(), (target - position).normalized());
                glUniform2f(place("lightCone" + indexOfNextLight()),
                            std::cos(spot.innerConeAngle() / 2.0f * 3.14159265f / 180.0f), spot.falloffExponent());
            }
            addLight(spot, position);
        }
        if (m_lightCount == 0) {
            addLight(libVideo::PointLight("at the eye"), m_eye);
        }
        glUniform1i(place("lightCount"), std::min(m_lightCount, 8)); // OpenGL skips what has no place
    }
    // [/lights]

    std::string indexOfNextLight() const { return "[" + std::to_string(m_lightCount) + "]"; }

    template <class Light>
    void addLight(const Light& light, const Vector3& position)
    {
        setVector("lightPlace" + indexOfNextLight(), position);
        setVector("lightColor" + indexOfNextLight(), light.color());
        setVector("lightAttenuation" + indexOfNextLight(),
                  Vector3(light.constantAttenuation(), light.linearAttenuation(), light.quadraticAttenuation()));
        ++m_lightCount;
    }

    const libVideo::VisualScene& m_scene;
    GLuint m_program;
    std::vector<Mesh> m_meshes;
    Vector3 m_eye;
    int m_lightCount = 0;
};

// OUT.ppm for a single picture, else OUT-0007.ppm.
std::string nameOf(const std::filesystem::path& out, unsigned long frame, unsigned long frameCount)
{
    if (frameCount <= 1) {
        return out.string();
    }
    const std::string number = std::to_string(frame);
    const std::string zeros(number.size() < 4 ? 4 - number.size() : 0, '0');
    return (out.parent_path() / (out.stem().string() + '-' + zeros + number + out.extension().string())).string();
}

} // namespace

int main(int argc, char** argv)
try {
    // [load]
    if (argc < 3) {
        std::cerr << "usage: draw FILE.dae OUT.ppm [SECONDS [FRAMES]]\n";
        return 2;
    }
    libVideo::Scene scene;
    if (!scene.createFromCollada(argv[1])) {
        return 1; // the reason went to standard error
    }
    const libVideo::VisualScene& world = scene.visualScene();
    if (world.cameraList().size() == 0) {
        std::cerr << "the document has no camera\n";
        return 1;
    }
    // [/load]
    const double start = argc > 3 ? std::strtod(argv[3], nullptr) : 0.0;
    const unsigned long frameCount = argc > 4 ? std::strtoul(argv[4], nullptr, 10) : 1;
    // [picture]
    libVideo::CameraInstance& camera = *world.cameraList()[0];
    const Matrix& projection = camera.projection(start);
    const double aspectRatio = double(projection[5] / projection[0]); // width to height
    // [/picture]
    const bool fits = aspectRatio > 0.1 && aspectRatio < 10.0;
    const int width = fits ? static_cast<int>(std::lround(pictureHeight * aspectRatio)) : pictureHeight;
    if (!makeContext()) {
        std::cerr << "there is no OpenGL 3.3 without a window\n";
        return cannotDraw;
    }
    makePicture(width);
    // [loop]
    Drawing drawing(world, std::filesystem::path(argv[1]).parent_path());
    for (unsigned long frame = 0; frame < frameCount; ++frame) {
        const double time = start + double(frame) / framesPerSecond;
        const Worlds worlds = worldsAt(world, time);
        drawing.setCamera(camera, worlds, time);
        drawing.draw(worlds);
        if (!writePicture(nameOf(argv[2], frame, frameCount), width)) {
            return 1;
        }
    }
    // [/loop]
    return glGetError() == GL_NO_ERROR ? 0 : 1;
} catch (const std::exception& exception) {
    std::cerr << exception.what() << '\n';
    return 1;
}
