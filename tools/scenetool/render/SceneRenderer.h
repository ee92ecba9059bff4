#pragma once

#include "GlObject.h"
#include "PictureDocument.h"
#include "ScenePose.h"
#include "ShaderProgram.h"
#include "Shortfalls.h"
#include "TextureStore.h"
#include "Viewpoint.h"

#include <array>
#include <optional>
#include <string>
#include <vector>

namespace scenetool {

/// Which lights shine on a scene.
enum class LightChoice {
    automatic, ///< the document's lights, or a head light if it has none
    document,
    head,
    both,
};

/// The background of a picture.
struct Background {
    enum class Kind { sky, color, none };
    Kind kind = Kind::sky;
    std::array<float, 3> color{0.0f, 0.0f, 0.0f}; ///< for `Kind::color`
};

/// How triangles are drawn: as faces, as faces with their edges, or as edges.
enum class Faces { filled, outlined, wires };

/// How a scene is drawn.
struct DrawOptions {
    Background background;
    LightChoice lights = LightChoice::automatic;
    Faces faces = Faces::filled;
};

/// Draws the geometries and materials of a scene with OpenGL.
///
/// Vertex streams and index buffers are uploaded unchanged, and described by the vertex layouts. A pixel is the sum of
/// the emission and, for each light, of its color times diffuse times cosine and of specular times the Phong lobe.
/// Colors are used as the document has them, and limited to 1 at the end.
class SceneRenderer {
public:
    /// Needs a current OpenGL 3.3 context, which has to outlive the renderer.
    /// @throws PictureError if the driver refuses a shader
    SceneRenderer(const PictureDocument& document, Shortfalls& shortfalls);

    /// Whether there is nothing to draw.
    bool isEmpty() const { return m_items.empty(); }
    /// Clears the bound framebuffer and draws the scene into it.
    /// @return whether any part of the scene is visible
    bool draw(const ScenePose& pose, const Viewpoint& viewpoint, const DrawOptions& options);

private:
    static constexpr unsigned channelCount = 4;
    static constexpr unsigned textureCount = channelCount + 1;

    struct Material {
        float colors[channelCount][3] = {}; ///< emission, ambient, diffuse, specular
        UsedTexture textures[textureCount]; ///< for these and for the opacity
        float shininess = 0.0f;
        float opacity = 1.0f;
        float opacityFactor = 1.0f; ///< for the opacity texture
        bool isOpacityByColor = false;
        bool isOpacityInverted = false;
        bool isAmbientDiffuse = false;       ///< the document has no ambient color
        std::array<float, 3> ambientLight{}; ///< the part that is not in the emission

        bool isTransparent() const;
        bool isTextured() const;
    };
    struct Mesh {
        GlObject vertexArray;
        GlObject vertices;
        GlObject indices;
        GLsizei count = 0;
        bool isPoints = false;
        bool hasNormal = false;
        bool isTwoSided = false; ///< computed normals do not tell the sides apart
        bool hasColor = false;
        libVideo::Primitive* primitive = nullptr;
        Material material;
    };
    struct Item {
        std::size_t mesh;
        const libVideo::Node* node;
    };
    /// A transparent triangle.
    struct Face {
        float depth;
        std::size_t item;
        std::size_t firstIndex;
    };

    void addGeometry(const libVideo::Geometry& geometry);
    bool addMesh(libVideo::Primitive& primitive);
    Material material(const std::string& symbol);
    void addOpacityTexture(const std::string& symbol, Material& material);
    void useProgram(bool isTextured);
    /// Uploads the lights. @return their number
    std::size_t loadLights(const ScenePose& pose, const Viewpoint& viewpoint, LightChoice choice);
    /// Sets the uniforms that all items of a picture share, in all programs.
    void setPicture(const Viewpoint& viewpoint, std::size_t lightCount);
    void setFlat(bool isFlat);
    void setItem(const ScenePose& pose, const Item& item);
    void drawFilled(const ScenePose& pose, const Viewpoint& viewpoint);
    void drawWires(const ScenePose& pose);
    void drawSky();
    void drawWhole(const Mesh& mesh) const;
    void drawTransparent(const ScenePose& pose, const Viewpoint& viewpoint);
    std::vector<Face> sortedFaces(const ScenePose& pose, const Viewpoint& viewpoint) const;

    const PictureDocument* m_document;
    Shortfalls* m_shortfalls;
    std::array<std::optional<ShaderProgram>, 2> m_programs; ///< without and with textures, made on first use
    ShaderProgram* m_program = nullptr;                     ///< the current one
    bool m_isAmbientSeen = false;                           ///< a material shows the ambient lights
    ShaderProgram m_sky;
    GlObject m_skyArray; ///< empty, but a core context requires one
    GlObject m_lightBuffer;
    GlObject m_lightTexture;
    GlObject m_sortedIndices;
    TextureStore m_textures;
    std::vector<Mesh> m_meshes;
    std::vector<Item> m_items;
};

} // namespace scenetool
