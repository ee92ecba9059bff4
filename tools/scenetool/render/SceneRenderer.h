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
    automatic, ///< those of the document, or where it has none a light that goes with the eye
    document,
    head,
    both,
};

/// What is behind the scene.
struct Background {
    enum class Kind { sky, color, none };
    Kind kind = Kind::sky;
    std::array<float, 3> color{0.0f, 0.0f, 0.0f}; ///< of one that has a color
};

/// Faces, their edges, or both.
enum class Faces { filled, outlined, wires };

/// How a scene is drawn.
struct DrawOptions {
    Background background;
    LightChoice lights = LightChoice::automatic;
    Faces faces = Faces::filled;
};

/// The geometries and materials of a scene as buffers, textures and a shader of OpenGL.
///
/// Vertex streams and index buffers go over as they are; a vertex layout becomes the pointers into them. Each pixel is
/// emission, plus for each light its color times diffuse times the cosine, plus specular times the lobe of Phong;
/// colors are as the document writes them, cut off at 1 at the end.
class SceneRenderer {
public:
    /// Needs a current context of OpenGL 3.3, which has to stay as long as the renderer does.
    /// @throws PictureError if the driver refuses the shader
    SceneRenderer(const PictureDocument& document, Shortfalls& shortfalls);

    /// Whether there is anything to draw at all.
    bool isEmpty() const { return m_items.empty(); }
    /// Clears the bound framebuffer and draws the scene into it.
    /// @return whether anything of the scene is in the picture
    bool draw(const ScenePose& pose, const Viewpoint& viewpoint, const DrawOptions& options);

private:
    static constexpr unsigned channelCount = 4;
    static constexpr unsigned textureCount = channelCount + 1;

    struct Material {
        float colors[channelCount][3] = {}; ///< emission, ambient, diffuse, specular
        UsedTexture textures[textureCount]; ///< of these and of the opacity
        float shininess = 0.0f;
        float opacity = 1.0f;
        float opacityFactor = 1.0f; ///< of the opacity's texture
        bool isOpacityByColor = false;
        bool isOpacityInverted = false;
        bool isAmbientDiffuse = false;       ///< the document gives no ambient color
        std::array<float, 3> ambientLight{}; ///< as far as it is not in the emission

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
        bool isTwoSided = false; ///< the document does not say which side is the outer one
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
    /// Puts the lights into their buffer. @return how many there are
    std::size_t loadLights(const ScenePose& pose, const Viewpoint& viewpoint, LightChoice choice);
    /// Sets what all items of a picture share, in all programs.
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
    std::array<std::optional<ShaderProgram>, 2> m_programs; ///< without and with textures, as far as a mesh has such
    ShaderProgram* m_program = nullptr;                     ///< the one in use
    bool m_isAmbientSeen = false;                           ///< ambient lights show on a material
    ShaderProgram m_sky;
    GlObject m_skyArray; ///< of no vertices, which a core context wants all the same
    GlObject m_lightBuffer;
    GlObject m_lightTexture;
    GlObject m_sortedIndices;
    TextureStore m_textures;
    std::vector<Mesh> m_meshes;
    std::vector<Item> m_items;
};

} // namespace scenetool
