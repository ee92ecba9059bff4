#include "SceneRenderer.h"

#include "../Printable.h"
#include "Picture.h"
#include "TextureFile.h"

#include <algorithm>

namespace scenetool {

namespace {

constexpr unsigned mostLights = 32;
constexpr unsigned mostVertexBytes = 2048; // what every driver takes as the distance of two vertices
constexpr float ambientLight = 0.2f;       // documents' ambient lights are not read, so there is always a little
constexpr float besideOthers = 0.4f;       // strength of a head light where there are lights
constexpr float pointSize = 3.0f;          // pixels

enum Channel { emissionChannel, ambientChannel, diffuseChannel, specularChannel };

const char* const vertexShader = R"(#version 330 core
layout(location = 0) in vec3 position;
layout(location = 1) in vec3 normal;
layout(location = 2) in vec2 texcoord;
layout(location = 3) in vec4 color;
uniform mat4 clipFromWorld;
uniform mat4 worldFromModel;
uniform mat3 normalMatrix;
out vec3 worldPosition;
out vec3 worldNormal;
out vec2 vertexTexcoord;
out vec3 vertexColor;
void main()
{
    vec4 world = worldFromModel * vec4(position, 1.0);
    worldPosition = world.xyz;
    worldNormal = normalMatrix * normal;
    vertexTexcoord = texcoord;
    vertexColor = color.rgb;
    gl_Position = clipFromWorld * world;
}
)";

const char* const fragmentShader = R"(#version 330 core
const int mostLights = 32;
in vec3 worldPosition;
in vec3 worldNormal;
in vec2 vertexTexcoord;
in vec3 vertexColor;
uniform vec3 eye;
uniform vec3 ambientLight;
uniform int lightCount;
uniform vec3 lightPosition[mostLights];
uniform vec3 lightColor[mostLights];
uniform vec3 lightAttenuation[mostLights];
uniform vec3 lightDirection[mostLights];
uniform vec3 lightCone[mostLights]; // cosines of the inner and the outer edge, exponent
uniform vec3 colors[4];             // emission, ambient, diffuse, specular
uniform bool hasTexture[4];
uniform sampler2D textures[4];
uniform float shininess;
uniform bool isAmbientDiffuse;
uniform bool hasNormal;
uniform bool isPoints;
uniform bool hasColor;
out vec4 result;

vec3 facingNormal(vec3 towardsEye)
{
    if (isPoints && !hasNormal) {
        return towardsEye;
    }
    if (isPoints) {
        vec3 own = dot(worldNormal, worldNormal) > 0.0 ? normalize(worldNormal) : towardsEye;
        return dot(own, towardsEye) < 0.0 ? -own : own;
    }
    // Both sides of a face are shown, each lit as if it were the outer one.
    vec3 flatNormal = cross(dFdx(worldPosition), dFdy(worldPosition));
    flatNormal = dot(flatNormal, flatNormal) > 0.0 ? normalize(flatNormal) : towardsEye;
    flatNormal = dot(flatNormal, towardsEye) < 0.0 ? -flatNormal : flatNormal;
    if (!hasNormal || !(dot(worldNormal, worldNormal) > 0.0)) {
        return flatNormal;
    }
    vec3 own = normalize(worldNormal);
    return dot(own, flatNormal) < 0.0 ? -own : own;
}

float spot(int i, vec3 towardsLight)
{
    vec3 cone = lightCone[i];
    if (cone.x < -1.0) {
        return 1.0;
    }
    float cosine = dot(-towardsLight, lightDirection[i]);
    float edge = cone.x > cone.y ? clamp((cosine - cone.y) / (cone.x - cone.y), 0.0, 1.0) : step(cone.x, cosine);
    return cone.z > 0.0 ? edge * pow(max(cosine, 0.0), cone.z) : edge;
}

void main()
{
    vec3 emission = hasTexture[0] ? colors[0] * texture(textures[0], vertexTexcoord).rgb : colors[0];
    vec3 ambient = hasTexture[1] ? colors[1] * texture(textures[1], vertexTexcoord).rgb : colors[1];
    vec3 diffuse = hasTexture[2] ? colors[2] * texture(textures[2], vertexTexcoord).rgb : colors[2];
    vec3 specular = hasTexture[3] ? colors[3] * texture(textures[3], vertexTexcoord).rgb : colors[3];
    diffuse = hasColor ? diffuse * vertexColor : diffuse;
    ambient = isAmbientDiffuse ? diffuse : ambient;

    vec3 towardsEye = normalize(eye - worldPosition);
    vec3 normal = facingNormal(towardsEye);
    vec3 sum = emission + ambient * ambientLight;
    for (int i = 0; i < lightCount; ++i) {
        vec3 way = lightPosition[i] - worldPosition;
        float far = length(way);
        vec3 towardsLight = far > 0.0 ? way / far : normal;
        float facing = dot(normal, towardsLight);
        if (facing <= 0.0) {
            continue;
        }
        float fading = dot(lightAttenuation[i], vec3(1.0, far, far * far));
        vec3 light = lightColor[i] * spot(i, towardsLight) / max(fading, 1e-6);
        sum += diffuse * light * facing;
        if (shininess > 0.0) {
            vec3 halfway = normalize(towardsLight + towardsEye);
            sum += specular * light * pow(max(dot(normal, halfway), 0.0), shininess);
        }
    }
    result = vec4(clamp(sum, 0.0, 1.0), 1.0);
}
)";

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

// Where an attribute goes in, and how many of its floats are of use there; of a kind that is not drawn nothing.
struct Slot {
    GLuint location;
    unsigned mostFloats;
};

std::optional<Slot> slotOf(libVideo::VertexSemantic semantic)
{
    switch (semantic) {
    case libVideo::SEMANTIC_POSITION:
        return Slot{0, 3};
    case libVideo::SEMANTIC_NORMAL:
        return Slot{1, 3};
    case libVideo::SEMANTIC_TEXCOORD:
        return Slot{2, 2};
    case libVideo::SEMANTIC_COLOR:
        return Slot{3, 4};
    case libVideo::SEMANTIC_BINORMAL:
    case libVideo::SEMANTIC_WEIGHT:
    case libVideo::SEMANTIC_TANGENT:
    case libVideo::SEMANTIC_INPUT:
    case libVideo::SEMANTIC_OUTPUT:
    case libVideo::SEMANTIC_INTERPOLATION:
    case libVideo::SEMANTIC_IN_TANGENT:
    case libVideo::SEMANTIC_OUT_TANGENT:
    case libVideo::SEMANTIC_UNKNOWN:
        break;
    }
    return std::nullopt;
}

// Into the bound vertex array, from the bound buffer. Of several attributes of a kind the first is drawn.
void setPointers(const libVideo::Primitive& primitive)
{
    bool isTaken[4] = {};
    for (const libVideo::VertexLayout& attribute : primitive.vertexLayout()) {
        const std::optional<Slot> slot = slotOf(attribute.semantic);
        const unsigned floats = attribute.byteSize / static_cast<unsigned>(sizeof(float));
        if (!slot || floats == 0 || isTaken[slot->location]) {
            continue;
        }
        isTaken[slot->location] = true;
        const std::size_t offset = attribute.byteOffset;
        glEnableVertexAttribArray(slot->location);
        glVertexAttribPointer(slot->location, static_cast<GLint>(std::min(floats, slot->mostFloats)), GL_FLOAT,
                              GL_FALSE, static_cast<GLsizei>(primitive.bytesPerVertex()),
                              reinterpret_cast<const void*>(offset)); // NOLINT(performance-no-int-to-ptr): OpenGL's way
    }
}

bool hasAttribute(const libVideo::Primitive& primitive, libVideo::VertexSemantic semantic)
{
    return primitive.vertexLayout().contains(libVideo::VertexLayout(semantic));
}

bool isWhite(const float* color)
{
    return color[0] == 1.0f && color[1] == 1.0f && color[2] == 1.0f;
}

// Rows of the transposed inverse but for a factor, which exists for a flattened object as well.
std::array<float, 9> normalMatrixOf(const Matrix4& world)
{
    const Vector3 x = columnOf(world, 0);
    const Vector3 y = columnOf(world, 1);
    const Vector3 z = columnOf(world, 2);
    const Vector3 columns[] = {y.cross(z), z.cross(x), x.cross(y)};
    // Without huge or tiny factors, since the length does not matter.
    float longest = 0.0f;
    for (const Vector3& column : columns) {
        longest = std::max(longest, length(column));
    }
    std::array<float, 9> result{};
    for (unsigned i = 0; i < 9; ++i) {
        result[i] = longest > 0.0f ? columns[i % 3][i / 3] / longest : 0.0f;
    }
    return result;
}

std::array<float, 16> elementsOf(const Matrix4& matrix)
{
    std::array<float, 16> result{};
    for (unsigned i = 0; i < 16; ++i) {
        result[i] = matrix[i];
    }
    return result;
}

void append(std::vector<float>& values, const Vector3& vector)
{
    values.insert(values.end(), {vector[0], vector[1], vector[2]});
}

GlObject uploaded(Picture picture)
{
    // Texture coordinates start at the lower left corner.
    for (unsigned y = 0; y < picture.height / 2; ++y) {
        std::swap_ranges(picture.row(y), picture.row(y) + 4 * std::size_t(picture.width),
                         picture.row(picture.height - 1 - y));
    }
    GLint most = 0;
    glGetIntegerv(GL_MAX_TEXTURE_SIZE, &most);
    if (std::max(picture.width, picture.height) > static_cast<unsigned>(most)) {
        throw PictureError("is too large for the driver");
    }
    GlObject texture = newTexture();
    glBindTexture(GL_TEXTURE_2D, texture.name());
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, static_cast<GLsizei>(picture.width), static_cast<GLsizei>(picture.height),
                 0, GL_RGBA, GL_UNSIGNED_BYTE, picture.bytes.data());
    glGenerateMipmap(GL_TEXTURE_2D);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_LINEAR);
    return texture;
}

} // namespace

SceneRenderer::SceneRenderer(const LoadedScene& loaded, Shortfalls& shortfalls)
    : m_loaded(&loaded), m_shortfalls(&shortfalls)
{
    compile();
    for (const auto& [id, bucket] : sorted(loaded.scene().geometryTable())) {
        addGeometry(*bucket->value);
    }
}

void SceneRenderer::compile()
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

void SceneRenderer::addGeometry(const libVideo::Geometry& geometry)
{
    for (const libVideo::SharedHandle<libVideo::Primitive>& primitive : geometry.mesh().primitives()) {
        if (!addMesh(*primitive)) {
            continue;
        }
        for (const libVideo::NodeHandle& node : geometry.nodes()) {
            m_items.push_back({m_meshes.size() - 1, node.get()});
        }
    }
}

bool SceneRenderer::addMesh(libVideo::Primitive& primitive)
{
    const unsigned stride = primitive.bytesPerVertex();
    if (!primitive.hasPosition() || primitive.type() == libVideo::PRIMITIVE_INVALID || primitive.count() == 0 ||
        stride == 0 || primitive.totalByteSize() < stride) {
        return false;
    }
    const std::string name = printable(primitive.id().data());
    if (stride > mostVertexBytes) {
        m_shortfalls->add("a primitive " + name + " has vertices of " + std::to_string(stride) +
                          " bytes, which is more than drivers take");
        return false;
    }
    Mesh mesh;
    mesh.isPoints = primitive.type() == libVideo::PRIMITIVE_POINT_CLOUD;
    mesh.hasNormal = primitive.hasNormal();
    mesh.vertexArray = newVertexArray();
    glBindVertexArray(mesh.vertexArray.name());
    mesh.vertices = newBuffer();
    glBindBuffer(GL_ARRAY_BUFFER, mesh.vertices.name());
    glBufferData(GL_ARRAY_BUFFER, static_cast<GLsizeiptr>(primitive.totalByteSize()), primitive.vertexBuffer().get(),
                 GL_STATIC_DRAW);
    setPointers(primitive);
    if (mesh.isPoints) {
        mesh.count = static_cast<GLsizei>(primitive.totalByteSize() / stride);
    } else {
        const vesk::Array<unsigned>& indices = primitive.indexBuffer();
        mesh.count = static_cast<GLsizei>(indices.size());
        mesh.indices = newBuffer();
        glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, mesh.indices.name());
        glBufferData(GL_ELEMENT_ARRAY_BUFFER, static_cast<GLsizeiptr>(indices.size() * sizeof(unsigned)),
                     indices.getData(), GL_STATIC_DRAW);
    }
    const std::string symbol = primitive.material().data();
    mesh.material = material(symbol);
    // Colors of vertices stand in where there is no material; beside one they are data of any kind.
    mesh.hasColor = hasAttribute(primitive, libVideo::SEMANTIC_COLOR) &&
                    m_loaded->scene().blinnMaterialTable().lookup(primitive.material()) == nullptr;
    m_meshes.push_back(std::move(mesh));
    return true;
}

SceneRenderer::Material SceneRenderer::material(const std::string& symbol)
{
    Material result;
    std::fill_n(result.colors[diffuseChannel], 3, 0.8f);
    result.isAmbientDiffuse = true;
    const auto* const bucket = m_loaded->scene().blinnMaterialTable().lookup(symbol.c_str());
    if (bucket == nullptr) {
        if (!symbol.empty()) {
            m_shortfalls->add("the material " + printable(symbol) + " has no values, grey is drawn");
        }
        return result;
    }
    const libVideo::BlinnMaterial::Component& values = bucket->value->component();
    const struct {
        const char* name;
        const float* color;
        const libVideo::SharedHandle<libVideo::Texture>& texture;
    } channels[channelCount] = {{"emission", values.emission, values.emissionTexture},
                                {"ambient", values.ambient, values.ambientTexture},
                                {"diffuse", values.diffuse, values.diffuseTexture},
                                {"specular", values.specular, values.specularTexture}};
    for (unsigned i = 0; i < channelCount; ++i) {
        std::copy_n(channels[i].color, 3, result.colors[i]);
        if (channels[i].texture) {
            result.textures[i] =
                texture(*channels[i].texture, "the " + std::string(channels[i].name) + " of " + printable(symbol));
        }
    }
    // White is what the library gives where the document says nothing. An object that glows all white would show no
    // shape, so an emission of white is taken for none, and such an ambient color for the diffuse one.
    if (isWhite(result.colors[emissionChannel]) && result.textures[emissionChannel] == nullptr) {
        std::fill_n(result.colors[emissionChannel], 3, 0.0f);
    }
    result.isAmbientDiffuse = isWhite(result.colors[ambientChannel]) && result.textures[ambientChannel] == nullptr;
    if (values.specularTexture && result.textures[specularChannel] == nullptr) {
        std::fill_n(result.colors[specularChannel], 3, 0.0f);
    }
    // Some exporters write the exponent as a part of one.
    result.shininess = values.shininess < 1.0f ? 128.0f * values.shininess : values.shininess;
    return result;
}

const GlObject* SceneRenderer::texture(const libVideo::Texture& shown, const std::string& channel)
{
    const std::string reference = shown.textureFile().data();
    if (reference.empty()) {
        m_shortfalls->add("the texture for " + channel + " leads to no file");
        return nullptr;
    }
    const std::string path = textureFile(m_loaded->file(), reference);
    auto found = m_textures.find(path);
    if (found == m_textures.end()) {
        GlObject loaded;
        try {
            loaded = uploaded(readPicture(path));
        } catch (const PictureError& error) {
            m_shortfalls->add("the texture " + printable(reference) + " for " + channel + " " +
                              printable(error.what()));
        }
        found = m_textures.emplace(path, std::move(loaded)).first;
    }
    return found->second.name() == 0 ? nullptr : &found->second;
}

GLint SceneRenderer::uniform(const char* name) const
{
    return glGetUniformLocation(m_program.name(), name);
}

void SceneRenderer::setLights(const ScenePose& pose, const Viewpoint& viewpoint)
{
    std::vector<PlacedLight> lights = pose.lights();
    if (viewpoint.hasHeadLight || lights.empty()) {
        PlacedLight headLight;
        headLight.position = viewpoint.eye;
        const float strength = lights.empty() ? 1.0f : besideOthers;
        headLight.color = {strength, strength, strength};
        lights.insert(lights.begin(), headLight);
    }
    if (lights.size() > mostLights) {
        m_shortfalls->add("of " + std::to_string(lights.size()) + " lights the first " + std::to_string(mostLights) +
                          " are drawn");
        lights.resize(mostLights);
    }
    std::vector<float> positions;
    std::vector<float> colors;
    std::vector<float> attenuations;
    std::vector<float> directions;
    std::vector<float> cones;
    for (const PlacedLight& light : lights) {
        append(positions, light.position);
        append(colors, light.color);
        append(attenuations, light.attenuation);
        append(directions, light.direction);
        append(cones, {light.innerCosine, light.outerCosine, light.exponent});
    }
    const auto count = static_cast<GLsizei>(lights.size());
    glUniform1i(uniform("lightCount"), count);
    glUniform3fv(uniform("lightPosition"), count, positions.data());
    glUniform3fv(uniform("lightColor"), count, colors.data());
    glUniform3fv(uniform("lightAttenuation"), count, attenuations.data());
    glUniform3fv(uniform("lightDirection"), count, directions.data());
    glUniform3fv(uniform("lightCone"), count, cones.data());
}

void SceneRenderer::setMaterial(const Mesh& mesh)
{
    const Material& material = mesh.material;
    GLint hasTexture[channelCount] = {};
    for (unsigned i = 0; i < channelCount; ++i) {
        hasTexture[i] = material.textures[i] != nullptr ? 1 : 0;
        glActiveTexture(GL_TEXTURE0 + i);
        glBindTexture(GL_TEXTURE_2D, material.textures[i] != nullptr ? material.textures[i]->name() : 0);
    }
    glUniform1iv(uniform("hasTexture"), channelCount, hasTexture);
    glUniform3fv(uniform("colors"), channelCount, &material.colors[0][0]);
    glUniform1f(uniform("shininess"), material.shininess);
    glUniform1i(uniform("isAmbientDiffuse"), material.isAmbientDiffuse ? 1 : 0);
    glUniform1i(uniform("hasNormal"), mesh.hasNormal ? 1 : 0);
    glUniform1i(uniform("isPoints"), mesh.isPoints ? 1 : 0);
    glUniform1i(uniform("hasColor"), mesh.hasColor ? 1 : 0);
}

void SceneRenderer::draw(const ScenePose& pose, const Viewpoint& viewpoint, const DrawOptions& options)
{
    glClearColor(options.background[0], options.background[1], options.background[2], 1.0f);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    glEnable(GL_DEPTH_TEST);
    glDepthFunc(GL_LEQUAL);
    glPointSize(pointSize);
    glPolygonMode(GL_FRONT_AND_BACK, options.isWireframe ? GL_LINE : GL_FILL);
    glUseProgram(m_program.name());
    const GLint units[channelCount] = {0, 1, 2, 3};
    glUniform1iv(uniform("textures"), channelCount, units);
    glUniform3f(uniform("ambientLight"), ambientLight, ambientLight, ambientLight);
    glUniform3f(uniform("eye"), viewpoint.eye[0], viewpoint.eye[1], viewpoint.eye[2]);
    // Row by row, which OpenGL transposes.
    glUniformMatrix4fv(uniform("clipFromWorld"), 1, GL_TRUE, elementsOf(viewpoint.clipFromWorld).data());
    setLights(pose, viewpoint);
    for (const Item& item : m_items) {
        const Mesh& mesh = m_meshes[item.mesh];
        const Matrix4& world = pose.world(item.node);
        if (isZero(world) || !isFinite(world)) {
            continue;
        }
        glUniformMatrix4fv(uniform("worldFromModel"), 1, GL_TRUE, elementsOf(world).data());
        glUniformMatrix3fv(uniform("normalMatrix"), 1, GL_TRUE, normalMatrixOf(world).data());
        setMaterial(mesh);
        glBindVertexArray(mesh.vertexArray.name());
        if (mesh.isPoints) {
            glDrawArrays(GL_POINTS, 0, mesh.count);
        } else {
            glDrawElements(GL_TRIANGLES, mesh.count, GL_UNSIGNED_INT, nullptr);
        }
    }
    glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
}

} // namespace scenetool
