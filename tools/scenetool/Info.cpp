#include "Info.h"

#include "common/Printable.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <iomanip>
#include <sstream>
#include <vector>

namespace scenetool {

namespace {

constexpr std::size_t maxNodes = 200;
constexpr std::size_t maxIndented = 24; // levels

class Painter {
public:
    explicit Painter(bool isColored) : m_isColored(isColored) {}
    std::string bold(const std::string& text) const { return paint("1", text); }
    std::string faint(const std::string& text) const { return paint("2", text); }
    std::string green(const std::string& text) const { return paint("32", text); }
    std::string red(const std::string& text) const { return paint("31", text); }

private:
    std::string paint(const char* code, const std::string& text) const
    {
        return m_isColored ? "\033[" + std::string(code) + "m" + text + "\033[0m" : text;
    }

    bool m_isColored;
};

std::string numberText(double value)
{
    std::ostringstream text;
    text << std::setprecision(4) << (value == 0.0 ? 0.0 : value); // 0 instead of -0
    return text.str();
}

// The shortest exact description of a matrix.
std::string matrixText(const libMath::Matrix<float, 4, 4>& matrix)
{
    bool isZero = true;
    bool isTranslation = true;
    bool hasOffset = false;
    for (unsigned i = 0; i < 16; ++i) {
        const bool isOffset = i == 3 || i == 7 || i == 11;
        isZero = isZero && matrix[i] == 0.0f;
        hasOffset = hasOffset || (isOffset && matrix[i] != 0.0f);
        isTranslation = isTranslation && (isOffset || matrix[i] == (i % 5 == 0 ? 1.0f : 0.0f));
    }
    if (isZero) {
        return "zero matrix";
    }
    if (isTranslation && !hasOffset) {
        return "identity";
    }
    std::string text;
    if (isTranslation) {
        return "translation " + numberText(matrix[3]) + " " + numberText(matrix[7]) + " " + numberText(matrix[11]);
    }
    for (unsigned i = 0; i < 16; ++i) {
        text += (i == 0 ? "" : i % 4 == 0 ? " | " : " ") + numberText(matrix[i]);
    }
    return "[" + text + "]";
}

std::string nodeTitle(const libVideo::Node& node)
{
    std::string name = printable(node.name().data());
    const std::string id = printable(node.id().data());
    if (name.empty() && id.empty()) {
        return "(unnamed)";
    }
    if (id.empty() || name == id) {
        return name;
    }
    return name.empty() ? "#" + id : name + " #" + id;
}

std::string counted(std::size_t count, const std::string& thing)
{
    return std::to_string(count) + " " + thing + (count == 1 ? "" : "s");
}

struct TreeLine {
    const libVideo::Node* node;
    std::size_t depth;
};

// Depth first, children in document order, without recursion: documents can be deep.
std::vector<TreeLine> treeLines(const LoadedScene& loaded, std::size_t maxLines, std::size_t& deepest)
{
    std::vector<TreeLine> lines;
    std::vector<TreeLine> open;
    const auto push = [&open](const libVideo::Node& parent, std::size_t depth) {
        for (unsigned i = parent.children().size(); i-- > 0;) {
            open.push_back({parent.children()[i].get(), depth});
        }
    };
    deepest = 0;
    push(loaded.scene().root(), 1);
    while (!open.empty()) {
        const TreeLine line = open.back();
        open.pop_back();
        deepest = std::max(deepest, line.depth);
        if (lines.size() < maxLines) {
            lines.push_back(line);
        }
        push(*line.node, line.depth + 1);
    }
    return lines;
}

void writeCounts(const LoadedScene& loaded, std::size_t deepest, const Painter& paint, std::ostream& out)
{
    std::size_t animated = 0;
    std::size_t collapsed = 0;
    double longest = 0.0;
    for (const libVideo::Node* const node : loaded.nodes()) {
        animated += node->hasAnimation() ? 1 : 0;
        collapsed += matrixText(node->transform()) == "zero matrix" ? 1 : 0;
        longest = std::max(longest, node->animationLength());
    }
    out << paint.bold("Nodes") << "       " << loaded.nodes().size() << " on " << counted(deepest, "level") << '\n';
    if (collapsed > 0) {
        out << paint.bold("Collapsed") << "   " << counted(collapsed, "node")
            << " with a zero matrix, as nodes without transforms have; everything below them collapses, too\n";
    }
    out << paint.bold("Animations") << "  ";
    if (animated == 0) {
        out << "none\n";
    } else {
        out << "on " << counted(animated, "node") << ", the longest " << numberText(longest) << " s\n";
    }
}

void writeTree(const LoadedScene& loaded, const std::vector<TreeLine>& lines, const Painter& paint, std::ostream& out)
{
    out << paint.bold("Tree") << '\n';
    for (const TreeLine& line : lines) {
        const std::size_t indented = std::min(line.depth, maxIndented);
        out << std::string(2 * indented, ' ');
        if (line.depth > maxIndented) {
            out << paint.faint("(level " + std::to_string(line.depth) + ") ");
        }
        out << nodeTitle(*line.node) << "  " << paint.faint(matrixText(line.node->transform()));
        if (line.node->hasAnimation()) {
            out << "  " << paint.green("animated, " + numberText(line.node->animationLength()) + " s");
        }
        out << '\n';
    }
    if (lines.size() < loaded.nodes().size()) {
        out << "  ... and " << loaded.nodes().size() - lines.size() << " more (--all shows them)\n";
    }
}

const char* semanticWord(libVideo::VertexSemantic semantic)
{
    switch (semantic) {
    case libVideo::SEMANTIC_BINORMAL:
        return "binormal";
    case libVideo::SEMANTIC_WEIGHT:
        return "weight";
    case libVideo::SEMANTIC_COLOR:
        return "color";
    case libVideo::SEMANTIC_NORMAL:
        return "normal";
    case libVideo::SEMANTIC_POSITION:
        return "position";
    case libVideo::SEMANTIC_TANGENT:
        return "tangent";
    case libVideo::SEMANTIC_TEXCOORD:
        return "texcoord";
    case libVideo::SEMANTIC_INPUT:
        return "input";
    case libVideo::SEMANTIC_OUTPUT:
        return "output";
    case libVideo::SEMANTIC_INTERPOLATION:
        return "interpolation";
    case libVideo::SEMANTIC_IN_TANGENT:
        return "in tangent";
    case libVideo::SEMANTIC_OUT_TANGENT:
        return "out tangent";
    case libVideo::SEMANTIC_UNKNOWN:
        break;
    }
    return "unknown";
}

// The attributes in their order, each with its number of floats.
std::string layoutText(const libVideo::Primitive& primitive)
{
    std::string text;
    for (const libVideo::VertexLayout& attribute : primitive.vertexLayout()) {
        text += (text.empty() ? "" : ", ") + std::string(semanticWord(attribute.semantic)) + " " +
                std::to_string(attribute.byteSize / sizeof(float));
    }
    return text.empty() ? "nothing" : text;
}

// The bounding box of all positions; empty text without any.
std::string boxText(libVideo::Primitive& primitive)
{
    libVideo::VertexLayout layout;
    const std::size_t stride = primitive.bytesPerVertex();
    if (!primitive.positionLayout(layout) || layout.byteSize < 3 * sizeof(float) || primitive.totalByteSize() == 0) {
        return std::string();
    }
    float low[3] = {INFINITY, INFINITY, INFINITY};
    float high[3] = {-INFINITY, -INFINITY, -INFINITY};
    for (std::size_t start = layout.byteOffset; start + 3 * sizeof(float) <= primitive.totalByteSize();
         start += stride) {
        float position[3] = {};
        std::memcpy(position, primitive.vertexBuffer().get() + start, sizeof(position));
        for (unsigned i = 0; i < 3; ++i) {
            low[i] = std::fmin(low[i], position[i]);
            high[i] = std::fmax(high[i], position[i]);
        }
    }
    std::string text = ", box";
    for (unsigned i = 0; i < 3; ++i) {
        text += " " + numberText(low[i]) + ".." + numberText(high[i]);
    }
    return text;
}

std::string primitiveText(libVideo::Primitive& primitive)
{
    const std::size_t size = primitive.bytesPerVertex();
    const std::size_t vertices = size == 0 ? 0 : primitive.totalByteSize() / size;
    std::string text;
    switch (primitive.type()) {
    case libVideo::PRIMITIVE_TRIANGLE_LIST:
        text = counted(primitive.count(), "triangle");
        break;
    case libVideo::PRIMITIVE_POINT_CLOUD:
        text = counted(primitive.count(), "point");
        break;
    case libVideo::PRIMITIVE_INVALID:
        return "not loaded";
    }
    const std::string material = printable(primitive.material().data());
    return text + ", " + std::to_string(vertices) + (vertices == 1 ? " vertex of " : " vertices of ") +
           counted(size, "byte") + ": " + layoutText(primitive) + boxText(primitive) +
           (material.empty() ? "" : ", material " + material);
}

void writeGeometries(const LoadedScene& loaded, const Painter& paint, std::ostream& out)
{
    if (loaded.scene().geometryTable().size() == 0) {
        return;
    }
    out << paint.bold("Geometries") << '\n';
    for (const auto& [id, bucket] : sorted(loaded.scene().geometryTable())) {
        const libVideo::Geometry& geometry = *bucket->value;
        out << "  " << printable(id);
        if (!geometry.name().empty() && geometry.name() != geometry.id()) {
            out << " (" << printable(geometry.name().data()) << ")";
        }
        for (const libVideo::NodeHandle& node : geometry.nodes()) {
            out << paint.faint("  on " + nodeTitle(*node));
        }
        out << '\n';
        for (const libVideo::SharedHandle<libVideo::Primitive>& primitive : geometry.mesh().primitives()) {
            out << "    " << primitiveText(*primitive) << '\n';
        }
    }
}

std::string colorText(const char* name, const float* color, const libVideo::SharedHandle<libVideo::Texture>& texture)
{
    std::string text = std::string("  ") + name;
    if (!texture) {
        return text + " " + numberText(color[0]) + " " + numberText(color[1]) + " " + numberText(color[2]);
    }
    const std::string file = printable(texture->textureFile().data());
    return text + " " + (file.empty() ? "without its texture" : file);
}

void writeMaterials(const LoadedScene& loaded, const Painter& paint, std::ostream& out)
{
    if (loaded.scene().blinnMaterialTable().size() == 0) {
        return;
    }
    out << paint.bold("Materials") << '\n';
    for (const auto& [symbol, bucket] : sorted(loaded.scene().blinnMaterialTable())) {
        const libVideo::BlinnMaterial::Component& values = bucket->value->component();
        out << "  " << printable(symbol) << colorText("diffuse", values.diffuse, values.diffuseTexture)
            << colorText("specular", values.specular, values.specularTexture) << "  shininess "
            << numberText(values.shininess) << colorText("emission", values.emission, values.emissionTexture) << '\n';
    }
}

std::string vectorText(const libMath::Vector<float, 3>& vector)
{
    return numberText(vector[0]) + " " + numberText(vector[1]) + " " + numberText(vector[2]);
}

std::string placeText(const libVideo::NodeLink& node)
{
    return node ? "on " + nodeTitle(*node) : "on no node";
}

std::string targetText(const libVideo::NodeLink& node)
{
    return node ? ", looks at " + nodeTitle(*node) : std::string();
}

// Derives the optics from the projection matrix, which is what a renderer gets.
std::string projectionText(const libMath::Matrix<float, 4, 4>& projection)
{
    constexpr double degrees = 180.0 / 3.141592653589793;
    const double depthScale = projection[10];
    const double near = -projection[14] / depthScale;
    const double far = depthScale * near / (depthScale - 1.0);
    return numberText(2.0 * degrees * std::atan(1.0 / projection[0])) + " by " +
           numberText(2.0 * degrees * std::atan(1.0 / projection[5])) + " degrees, aspect " +
           numberText(double(projection[0]) / projection[5]) + ", near " + numberText(near) + ", far " +
           numberText(far);
}

void writeCameras(const LoadedScene& loaded, const Painter& paint, std::ostream& out)
{
    if (loaded.scene().cameraList().size() == 0) {
        return;
    }
    out << paint.bold("Cameras") << '\n';
    for (const libVideo::CameraInstanceHandle& shown : loaded.scene().cameraList()) {
        const libVideo::Camera& camera = *shown->camera();
        out << "  " << printable(camera.id().data()) << "  " << placeText(shown->node()) << ": "
            << projectionText(camera.projectionMatrix()) << targetText(shown->lookAtNode());
        if (camera.animationLength() > 0.0) {
            out << "  " << paint.green("animated, " + numberText(camera.animationLength()) + " s");
        }
        out << '\n';
    }
}

template <class Light>
std::string lightText(const Light& light)
{
    return "color " + vectorText(light.color()) + ", attenuation " + numberText(light.constantAttenuation()) + " " +
           numberText(light.linearAttenuation()) + " " + numberText(light.quadraticAttenuation());
}

void writeLights(const LoadedScene& loaded, const Painter& paint, std::ostream& out)
{
    const libVideo::VisualScene& scene = loaded.scene();
    if (scene.pointLightList().size() + scene.spotLightList().size() == 0) {
        return;
    }
    out << paint.bold("Lights") << '\n';
    for (const libVideo::PointLightInstanceHandle& shown : scene.pointLightList()) {
        out << "  " << printable(shown->pointLight()->id().data()) << "  point " << placeText(shown->node()) << ": "
            << lightText(*shown->pointLight()) << '\n';
    }
    for (const libVideo::SpotLightInstanceHandle& shown : scene.spotLightList()) {
        const libVideo::SpotLight& spot = *shown->spotLight();
        out << "  " << printable(spot.id().data()) << "  spot " << placeText(shown->node()) << ": " << lightText(spot)
            << ", cone " << numberText(spot.innerConeAngle()) << " to " << numberText(spot.outerConeAngle())
            << " degrees, exponent " << numberText(spot.falloffExponent()) << targetText(shown->lookatNode()) << '\n';
    }
}

} // namespace

void writeInfo(const LoadedScene& loaded, const InfoOptions& options, std::ostream& out)
{
    const Painter paint(options.isColored);
    out << paint.bold(printable(loaded.file())) << '\n';
    std::size_t deepest = 0;
    const std::vector<TreeLine> lines =
        treeLines(loaded, options.showsAllNodes ? loaded.nodes().size() : maxNodes, deepest);
    writeCounts(loaded, deepest, paint, out);
    if (!lines.empty()) {
        writeTree(loaded, lines, paint, out);
    }
    writeCameras(loaded, paint, out);
    writeLights(loaded, paint, out);
    writeGeometries(loaded, paint, out);
    writeMaterials(loaded, paint, out);
    if (!loaded.log().empty()) {
        out << paint.bold("Messages") << '\n';
    }
    for (const LogLine& line : loaded.log()) {
        out << "  " << paint.red(line.channel) << " " << printable(line.text) << '\n';
    }
}

} // namespace scenetool
