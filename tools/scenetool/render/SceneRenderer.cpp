#include "SceneRenderer.h"

#include "../common/Printable.h"
#include "Picture.h"
#include "SceneShaders.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <optional>

namespace scenetool {

namespace {

constexpr unsigned maxLights = 4096;      // a picture with more would take hours
constexpr unsigned maxVertexBytes = 2048; // the largest stride that every driver supports
constexpr float ambientFloor = 0.2f;      // for documents as loaded, whose ambient lights are not read
constexpr float besideOthers = 0.4f;      // strength of a head light besides other lights
constexpr float pointSize = 3.0f;         // pixels
constexpr unsigned lightUnit = 5;         // texture unit after those of the material

enum Channel { emissionChannel, ambientChannel, diffuseChannel, specularChannel, opacityChannel };

const char* const skyVertexShader = R"(#version 330 core
out float height;
void main()
{
    vec2 corner = vec2(gl_VertexID == 1 ? 3.0 : -1.0, gl_VertexID == 2 ? 3.0 : -1.0);
    height = 0.5 + 0.5 * corner.y;
    gl_Position = vec4(corner, 1.0, 1.0);
}
)";

const char* const skyFragmentShader = R"(#version 330 core
in float height;
out vec4 result;
void main()
{
    vec3 below = vec3(0.86, 0.89, 0.91);
    vec3 above = vec3(0.42, 0.57, 0.72);
    result = vec4(mix(below, above, smoothstep(0.0, 1.0, height)), 1.0);
}
)";

// The shader location of an attribute, and how many of its floats are used there.
struct Slot {
    GLuint location;
    unsigned maxFloats;
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

// Describes the bound buffer in the bound vertex array. Uses the first of several attributes of one kind.
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
        glVertexAttribPointer(slot->location, static_cast<GLint>(std::min(floats, slot->maxFloats)), GL_FLOAT, GL_FALSE,
                              static_cast<GLsizei>(primitive.bytesPerVertex()),
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

float determinantOf(const Matrix4& matrix)
{
    return columnOf(matrix, 0).dot(columnOf(matrix, 1).cross(columnOf(matrix, 2)));
}

// Rows of the transposed inverse times a factor above 0. Unlike the inverse, they also exist for a flattened object.
std::array<float, 9> normalMatrixOf(const Matrix4& world)
{
    const Vector3 x = columnOf(world, 0);
    const Vector3 y = columnOf(world, 1);
    const Vector3 z = columnOf(world, 2);
    const Vector3 columns[] = {y.cross(z), z.cross(x), x.cross(y)};
    // Removes huge and tiny factors; the length does not matter.
    float longest = 0.0f;
    for (const Vector3& column : columns) {
        longest = std::max(longest, length(column));
    }
    const float scale = determinantOf(world) < 0.0f ? -longest : longest;
    std::array<float, 9> result{};
    for (unsigned i = 0; i < 9; ++i) {
        result[i] = longest > 0.0f ? columns[i % 3][i / 3] / scale : 0.0f;
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

void append(std::vector<float>& values, const Vector3& vector, float fourth)
{
    values.insert(values.end(), {vector[0], vector[1], vector[2], fourth});
}

} // namespace

bool SceneRenderer::Material::isTransparent() const
{
    const StoredTexture* const image = textures[diffuseChannel].stored;
    return opacity < 1.0f || (image != nullptr && image->hasAlpha) || textures[opacityChannel].stored != nullptr;
}

bool SceneRenderer::Material::isTextured() const
{
    return std::any_of(std::begin(textures), std::end(textures),
                       [](const UsedTexture& texture) { return texture.stored != nullptr; });
}

SceneRenderer::SceneRenderer(const PictureDocument& document, Shortfalls& shortfalls)
    : m_document(&document),
      m_shortfalls(&shortfalls),
      m_sky(skyVertexShader, skyFragmentShader),
      m_skyArray(newVertexArray()),
      m_lightBuffer(newBuffer()),
      m_lightTexture(newTexture()),
      m_sortedIndices(newBuffer()),
      m_textures(document, shortfalls)
{
    for (const auto& [id, bucket] : sorted(document.scene().scene().geometryTable())) {
        addGeometry(*bucket->value);
    }
}

void SceneRenderer::addGeometry(const libVideo::Geometry& geometry)
{
    for (const libVideo::SharedHandle<libVideo::Primitive>& primitive : geometry.mesh().primitives()) {
        if (!addMesh(*primitive)) {
            continue;
        }
        m_meshes.back().isTwoSided = m_document->hasMadeNormals(geometry.id().data());
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
    if (stride > maxVertexBytes) {
        m_shortfalls->add("a primitive " + name + " has vertices of " + std::to_string(stride) +
                          " bytes, more than drivers support");
        return false;
    }
    Mesh mesh;
    mesh.primitive = &primitive;
    mesh.isPoints = primitive.type() == libVideo::PRIMITIVE_POINT_CLOUD;
    mesh.hasNormal = primitive.hasNormal();
    mesh.hasColor = hasAttribute(primitive, libVideo::SEMANTIC_COLOR);
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
    mesh.material = material(primitive.material().data());
    useProgram(mesh.material.isTextured());
    m_meshes.push_back(std::move(mesh));
    return true;
}

void SceneRenderer::useProgram(bool isTextured)
{
    std::optional<ShaderProgram>& program = m_programs[isTextured ? 1 : 0];
    if (!program) {
        program.emplace(sceneShaders::vertex, sceneShaders::fragment(isTextured).c_str());
    }
    m_program = &*program;
    m_program->use();
}

SceneRenderer::Material SceneRenderer::material(const std::string& symbol)
{
    Material result;
    if (!m_document->isPrepared()) {
        result.ambientLight.fill(ambientFloor);
    }
    const auto* const bucket = m_document->scene().scene().blinnMaterialTable().lookup(symbol.c_str());
    if (bucket == nullptr) {
        if (!symbol.empty()) {
            m_shortfalls->add("the material " + printable(symbol) + " has no values, so it is drawn white");
        }
        std::fill_n(result.colors[diffuseChannel], 3, 1.0f);
        result.isAmbientDiffuse = !m_document->isPrepared();
        return result;
    }
    const libVideo::BlinnMaterial::Component& values = bucket->value->component();
    // An image that cannot be loaded is reported for the first channel that uses it.
    const struct {
        Channel channel;
        const char* name;
        const float* color;
        const libVideo::SharedHandle<libVideo::Texture>& texture;
    } channels[channelCount] = {{diffuseChannel, "diffuse", values.diffuse, values.diffuseTexture},
                                {emissionChannel, "emission", values.emission, values.emissionTexture},
                                {ambientChannel, "ambient", values.ambient, values.ambientTexture},
                                {specularChannel, "specular", values.specular, values.specularTexture}};
    for (const auto& [channel, name, color, shown] : channels) {
        float* const own = result.colors[channel];
        std::copy_n(color, 3, own);
        if (!shown) {
            continue;
        }
        result.textures[channel] = m_textures.use(*shown, "the " + std::string(name) + " of " + printable(symbol));
        if (channel != diffuseChannel && result.textures[channel].stored == nullptr) {
            std::fill_n(own, 3, 0.0f); // the color of a channel with a texture is white
        }
    }
    result.shininess = values.shininess;
    if (m_document->isPrepared()) {
        const std::array<float, 3> ambient = m_document->ambientLight();
        for (unsigned i = 0; i < 3; ++i) {
            m_isAmbientSeen =
                m_isAmbientSeen || (ambient[i] > 0.0f && (values.ambient[i] > 0.0f || values.ambientTexture));
        }
        if (values.ambientTexture || values.emissionTexture) {
            result.ambientLight = m_document->ambientLight();
        }
        result.opacity = std::isfinite(values.transparency) ? std::clamp(values.transparency, 0.0f, 1.0f) : 1.0f;
        addOpacityTexture(symbol, result);
        return result;
    }
    // White is the library's default for a color that the document does not have. An object that emits white would show
    // no shape, so a white emission counts as none, and a white ambient color as the diffuse one.
    if (isWhite(result.colors[emissionChannel]) && !values.emissionTexture) {
        std::fill_n(result.colors[emissionChannel], 3, 0.0f);
    }
    result.isAmbientDiffuse = isWhite(result.colors[ambientChannel]) && !values.ambientTexture;
    return result;
}

// Preparing makes a material with an opacity texture opaque, or gives it the opacity without the texture.
void SceneRenderer::addOpacityTexture(const std::string& symbol, Material& material)
{
    const libPrepare::OpacityTexture* const shown = m_document->opacityTexture(symbol);
    if (shown == nullptr) {
        return;
    }
    material.textures[opacityChannel] =
        m_textures.use(shown->file, shown->wrapS, shown->wrapT, "the opacity of " + printable(symbol));
    if (material.textures[opacityChannel].stored != nullptr) {
        material.opacity = 1.0f;
        material.opacityFactor = static_cast<float>(shown->factor);
        material.isOpacityByColor = shown->isByColor;
        material.isOpacityInverted = shown->isInverted;
    }
}

std::size_t SceneRenderer::loadLights(const ScenePose& pose, const Viewpoint& viewpoint, LightChoice choice)
{
    std::vector<PlacedLight> lights;
    if (choice != LightChoice::head) {
        lights = pose.lights();
    }
    const bool isDark = lights.empty() && !m_isAmbientSeen;
    if (choice == LightChoice::head || choice == LightChoice::both || (choice == LightChoice::automatic && isDark)) {
        if (choice == LightChoice::automatic) {
            m_shortfalls->add("the document lights nothing, so a light moves with the eye (--lights document leaves it "
                              "dark)");
        }
        PlacedLight headLight;
        headLight.kind = PlacedLight::Kind::head;
        headLight.position = viewpoint.eye;
        const float strength = lights.empty() ? 1.0f : besideOthers;
        headLight.color = {strength, strength, strength};
        lights.insert(lights.begin(), headLight);
    }
    if (lights.size() > maxLights) {
        m_shortfalls->add("only the first " + std::to_string(maxLights) + " of " + std::to_string(lights.size()) +
                          " lights are used");
        lights.resize(maxLights);
    }
    std::vector<float> texels;
    for (const PlacedLight& light : lights) {
        append(texels, light.position, static_cast<float>(light.kind));
        append(texels, light.color, light.innerCosine);
        append(texels, light.attenuation, light.outerCosine);
        append(texels, light.direction, light.exponent);
    }
    texels.resize(std::max<std::size_t>(texels.size(), 4)); // the buffer must not be empty
    glBindBuffer(GL_TEXTURE_BUFFER, m_lightBuffer.name());
    glBufferData(GL_TEXTURE_BUFFER, static_cast<GLsizeiptr>(texels.size() * sizeof(float)), texels.data(),
                 GL_STREAM_DRAW);
    glActiveTexture(GL_TEXTURE0 + lightUnit);
    glBindTexture(GL_TEXTURE_BUFFER, m_lightTexture.name());
    glTexBuffer(GL_TEXTURE_BUFFER, GL_RGBA32F, m_lightBuffer.name());
    return lights.size();
}

void SceneRenderer::setPicture(const Viewpoint& viewpoint, std::size_t lightCount)
{
    const Vector3& from = viewpoint.isFar ? viewpoint.towards : viewpoint.eye;
    for (std::optional<ShaderProgram>& program : m_programs) {
        if (!program) {
            continue;
        }
        program->use();
        const GLint units[textureCount] = {0, 1, 2, 3, 4};
        glUniform1iv(program->uniform("textures"), textureCount, units);
        glUniform4f(program->uniform("eye"), from[0], from[1], from[2], viewpoint.isFar ? 0.0f : 1.0f);
        // The matrix is row-major, so OpenGL has to transpose it.
        glUniformMatrix4fv(program->uniform("clipFromWorld"), 1, GL_TRUE, elementsOf(viewpoint.clipFromWorld).data());
        glUniform1i(program->uniform("lights"), lightUnit);
        glUniform1i(program->uniform("lightCount"), static_cast<GLint>(lightCount));
    }
}

void SceneRenderer::setFlat(bool isFlat)
{
    for (std::optional<ShaderProgram>& program : m_programs) {
        if (program) {
            program->use();
            glUniform1i(program->uniform("isFlat"), isFlat ? 1 : 0);
        }
    }
}

// Sets the matrices and the material of an item, and binds its vertices.
void SceneRenderer::setItem(const ScenePose& pose, const Item& item)
{
    const Mesh& mesh = m_meshes[item.mesh];
    const Matrix4& world = pose.world(item.node);
    useProgram(mesh.material.isTextured());
    glUniformMatrix4fv(m_program->uniform("worldFromModel"), 1, GL_TRUE, elementsOf(world).data());
    glUniformMatrix3fv(m_program->uniform("normalMatrix"), 1, GL_TRUE, normalMatrixOf(world).data());
    const Material& material = mesh.material;
    GLint hasTexture[textureCount] = {};
    for (unsigned i = 0; i < textureCount; ++i) {
        hasTexture[i] = material.textures[i].stored != nullptr ? 1 : 0;
        material.textures[i].bind(i);
    }
    glUniform1iv(m_program->uniform("hasTexture"), textureCount, hasTexture);
    glUniform3fv(m_program->uniform("colors"), channelCount, &material.colors[0][0]);
    glUniform1f(m_program->uniform("shininess"), material.shininess);
    glUniform1f(m_program->uniform("opacity"), material.opacity);
    glUniform1f(m_program->uniform("opacityFactor"), material.opacityFactor);
    glUniform1i(m_program->uniform("isOpacityByColor"), material.isOpacityByColor ? 1 : 0);
    glUniform1i(m_program->uniform("isOpacityInverted"), material.isOpacityInverted ? 1 : 0);
    glUniform3fv(m_program->uniform("ambientLight"), 1, material.ambientLight.data());
    glUniform1i(m_program->uniform("isAmbientDiffuse"), material.isAmbientDiffuse ? 1 : 0);
    glUniform1i(m_program->uniform("hasNormal"), mesh.hasNormal ? 1 : 0);
    glUniform1i(m_program->uniform("isTwoSided"), mesh.isTwoSided ? 1 : 0);
    glFrontFace(determinantOf(world) < 0.0f ? GL_CW : GL_CCW); // a reflection reverses the winding
    glUniform1i(m_program->uniform("isPoints"), mesh.isPoints ? 1 : 0);
    glUniform1i(m_program->uniform("hasColor"), mesh.hasColor ? 1 : 0);
    glBindVertexArray(mesh.vertexArray.name());
}

void SceneRenderer::drawWhole(const Mesh& mesh) const
{
    if (mesh.isPoints) {
        glDrawArrays(GL_POINTS, 0, mesh.count);
    } else {
        glDrawElements(GL_TRIANGLES, mesh.count, GL_UNSIGNED_INT, nullptr);
    }
}

// The transparent triangles, the farthest first.
std::vector<SceneRenderer::Face> SceneRenderer::sortedFaces(const ScenePose& pose, const Viewpoint& viewpoint) const
{
    std::vector<Face> faces;
    for (std::size_t i = 0; i < m_items.size(); ++i) {
        const Mesh& mesh = m_meshes[m_items[i].mesh];
        const Matrix4& world = pose.world(m_items[i].node);
        libVideo::VertexLayout layout;
        if (!mesh.material.isTransparent() || mesh.isPoints || isZero(world) || !isFinite(world) ||
            !mesh.primitive->positionLayout(layout)) {
            continue;
        }
        const std::size_t size = std::min<std::size_t>(layout.byteSize, 3 * sizeof(float));
        const unsigned char* const bytes = mesh.primitive->vertexBuffer().get() + layout.byteOffset;
        const std::size_t stride = mesh.primitive->bytesPerVertex();
        const Matrix4 clip = viewpoint.clipFromWorld * world;
        const vesk::Array<unsigned>& indices = mesh.primitive->indexBuffer();
        for (unsigned corner = 0; corner + 2 < indices.size(); corner += 3) {
            float sums[3] = {};
            for (unsigned k = 0; k < 3; ++k) {
                float point[3] = {};
                std::memcpy(point, bytes + stride * indices[corner + k], size);
                for (unsigned axis = 0; axis < 3; ++axis) {
                    sums[axis] += point[axis];
                }
            }
            const float depth = clip[8] * sums[0] + clip[9] * sums[1] + clip[10] * sums[2] + 3.0f * clip[11];
            faces.push_back({std::isfinite(depth) ? depth : 0.0f, i, corner});
        }
    }
    std::stable_sort(faces.begin(), faces.end(), [](const Face& a, const Face& b) { return a.depth > b.depth; });
    return faces;
}

// Far faces are visible through near ones, so they are drawn first, without writing depth.
void SceneRenderer::drawTransparent(const ScenePose& pose, const Viewpoint& viewpoint)
{
    const std::vector<Face> faces = sortedFaces(pose, viewpoint);
    std::vector<unsigned> indices;
    indices.reserve(3 * faces.size());
    for (const Face& face : faces) {
        const vesk::Array<unsigned>& all = m_meshes[m_items[face.item].mesh].primitive->indexBuffer();
        for (unsigned k = 0; k < 3; ++k) {
            indices.push_back(all[static_cast<unsigned>(face.firstIndex) + k]);
        }
    }
    glEnable(GL_BLEND);
    glBlendFuncSeparate(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA, GL_ONE, GL_ONE_MINUS_SRC_ALPHA);
    glDepthMask(GL_FALSE);
    for (std::size_t first = 0; first < faces.size();) {
        std::size_t last = first;
        while (last < faces.size() && faces[last].item == faces[first].item) {
            ++last;
        }
        const Item& item = m_items[faces[first].item];
        setItem(pose, item);
        glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, m_sortedIndices.name());
        if (first == 0) {
            glBufferData(GL_ELEMENT_ARRAY_BUFFER, static_cast<GLsizeiptr>(indices.size() * sizeof(unsigned)),
                         indices.data(), GL_STREAM_DRAW);
        }
        const std::size_t offset = 3 * first * sizeof(unsigned);
        glDrawElements(GL_TRIANGLES, static_cast<GLsizei>(3 * (last - first)), GL_UNSIGNED_INT,
                       reinterpret_cast<const void*>(offset)); // NOLINT(performance-no-int-to-ptr): OpenGL's way
        glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, m_meshes[item.mesh].indices.name());
        first = last;
    }
    glDepthMask(GL_TRUE);
    glDisable(GL_BLEND);
}

void SceneRenderer::drawFilled(const ScenePose& pose, const Viewpoint& viewpoint)
{
    bool hasTransparent = false;
    for (const Item& item : m_items) {
        const Mesh& mesh = m_meshes[item.mesh];
        const Matrix4& world = pose.world(item.node);
        if (isZero(world) || !isFinite(world)) {
            continue;
        }
        if (mesh.material.isTransparent() && !mesh.isPoints) {
            hasTransparent = true;
            continue;
        }
        setItem(pose, item);
        drawWhole(mesh);
    }
    if (hasTransparent) {
        drawTransparent(pose, viewpoint);
    }
}

void SceneRenderer::drawWires(const ScenePose& pose)
{
    glPolygonMode(GL_FRONT_AND_BACK, GL_LINE);
    for (const Item& item : m_items) {
        const Mesh& mesh = m_meshes[item.mesh];
        const Matrix4& world = pose.world(item.node);
        if (!isZero(world) && isFinite(world)) {
            setItem(pose, item);
            drawWhole(mesh);
        }
    }
    glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
}

void SceneRenderer::drawSky()
{
    glDisable(GL_DEPTH_TEST);
    m_sky.use();
    glBindVertexArray(m_skyArray.name());
    glDrawArrays(GL_TRIANGLES, 0, 3);
}

bool SceneRenderer::draw(const ScenePose& pose, const Viewpoint& viewpoint, const DrawOptions& options)
{
    const Background& background = options.background;
    const float alpha = background.kind == Background::Kind::none ? 0.0f : 1.0f;
    glDepthMask(GL_TRUE);
    glClearColor(background.color[0] * alpha, background.color[1] * alpha, background.color[2] * alpha, alpha);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    if (background.kind == Background::Kind::sky) {
        drawSky();
    }
    glEnable(GL_DEPTH_TEST);
    glDepthFunc(GL_LEQUAL);
    glPointSize(pointSize);
    setPicture(viewpoint, loadLights(pose, viewpoint, options.lights));
    setFlat(false);
    const GlObject query = newQuery();
    glBeginQuery(GL_ANY_SAMPLES_PASSED, query.name());
    if (options.faces == Faces::wires) {
        drawWires(pose);
    } else {
        const bool isOutlined = options.faces == Faces::outlined;
        if (isOutlined) { // keeps the faces from hiding their edges
            glEnable(GL_POLYGON_OFFSET_FILL);
            glPolygonOffset(1.0f, 1.0f);
        }
        drawFilled(pose, viewpoint);
        glDisable(GL_POLYGON_OFFSET_FILL);
    }
    glEndQuery(GL_ANY_SAMPLES_PASSED);
    if (options.faces == Faces::outlined) {
        setFlat(true);
        drawWires(pose);
    }
    GLuint isSeen = 0;
    glGetQueryObjectuiv(query.name(), GL_QUERY_RESULT, &isSeen);
    return isSeen != 0;
}

} // namespace scenetool
