#pragma once

#include "../LoadedScene.h"
#include "GlObject.h"
#include "ScenePose.h"
#include "Viewpoint.h"

#include <array>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace scenetool {

/// Takes what falls short of a whole picture: one line of text each, none twice.
class Shortfalls {
public:
    using Sink = std::function<void(const std::string& line)>;

    explicit Shortfalls(Sink sink) : m_sink(std::move(sink)) {}
    void add(const std::string& line)
    {
        if (m_known.insert(line).second) {
            m_sink(line);
        }
    }

private:
    Sink m_sink;
    std::set<std::string> m_known;
};

/// How a scene is drawn.
struct DrawOptions {
    std::array<float, 3> background{0.20f, 0.22f, 0.25f};
    bool isWireframe = false;
};

/// The geometries and materials of a scene as buffers, textures and a shader of OpenGL.
///
/// Vertex streams and index buffers go over as they are; a vertex layout becomes the pointers into them. Shading is
/// Blinn's and Phong's with all lights of the pose, on colors as the document writes them.
class SceneRenderer {
public:
    /// Needs a current context of OpenGL 3.3, which has to stay as long as the renderer does.
    /// @throws PictureError if the driver refuses the shader
    SceneRenderer(const LoadedScene& loaded, Shortfalls& shortfalls);

    /// Whether there is anything to draw at all.
    bool isEmpty() const { return m_items.empty(); }
    /// Clears the bound framebuffer and draws the scene into it.
    void draw(const ScenePose& pose, const Viewpoint& viewpoint, const DrawOptions& options);

private:
    static constexpr unsigned channelCount = 4;

    struct Material {
        float colors[channelCount][3] = {}; ///< emission, ambient, diffuse, specular
        const GlObject* textures[channelCount] = {};
        float shininess = 0.0f;
        bool isAmbientDiffuse = false; ///< the document gives no ambient color
    };
    struct Mesh {
        GlObject vertexArray;
        GlObject vertices;
        GlObject indices;
        GLsizei count = 0;
        bool isPoints = false;
        bool hasNormal = false;
        bool hasColor = false;
        Material material;
    };
    struct Item {
        std::size_t mesh;
        const libVideo::Node* node;
    };

    void compile();
    void addGeometry(const libVideo::Geometry& geometry);
    bool addMesh(libVideo::Primitive& primitive);
    Material material(const std::string& symbol);
    const GlObject* texture(const libVideo::Texture& shown, const std::string& channel);
    void setLights(const ScenePose& pose, const Viewpoint& viewpoint);
    void setMaterial(const Mesh& mesh);
    GLint uniform(const char* name) const;

    const LoadedScene* m_loaded;
    Shortfalls* m_shortfalls;
    GlObject m_program;
    std::map<std::string, GlObject> m_textures; ///< by the file; without a name where it cannot be had
    std::vector<Mesh> m_meshes;
    std::vector<Item> m_items;
};

} // namespace scenetool
