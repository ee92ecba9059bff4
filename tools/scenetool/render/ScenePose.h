#pragma once

#include "PictureDocument.h"
#include "RenderMath.h"

#include <cstddef>
#include <vector>

namespace scenetool {

/// A light where it stands in the world.
struct PlacedLight {
    enum class Kind { point, spot, directional, head }; ///< as the shader numbers them; the last goes with the eye
    Kind kind = Kind::point;
    Vector3 position;
    Vector3 color;
    /// Factors of 1, of the distance and of its square; 1, 0, 0 for a light that has none.
    Vector3 attenuation{1.0f, 0.0f, 0.0f};
    Vector3 direction{0.0f, 0.0f, -1.0f}; ///< into which a spot or a directional light shines
    /// Cosines between the direction and the edges of a spot's cone: bright up to the inner one, dark from the outer
    /// one on. Below -1 for a cone of all directions.
    float innerCosine = -2.0f;
    float outerCosine = -2.0f;
    float exponent = 0.0f; ///< of the cosine, by which a spot falls off towards its edge
};

/// The scene in the world as its nodes stand now.
class ScenePose {
public:
    /// Composes the local matrices of all nodes down the tree.
    /// @param isIdentityForEmpty takes the identity for a zero matrix, which a node without transforms has
    ScenePose(const LoadedScene& loaded, bool isIdentityForEmpty) : ScenePose(loaded, nullptr, isIdentityForEmpty) {}
    /// As the other one, with directional lights where prepare has put stand-ins.
    ScenePose(const PictureDocument& document, bool isIdentityForEmpty)
        : ScenePose(document.scene(), &document, isIdentityForEmpty)
    {}

    /// The identity for the root and for no node.
    const Matrix4& world(const libVideo::Node* node) const;
    /// Of the node above, the identity for one directly below the root.
    const Matrix4& worldOfParent(const libVideo::Node& node) const { return world(node.parent().get()); }
    /// Point lights, then spot lights, in the scene's order.
    const std::vector<PlacedLight>& lights() const { return m_lights; }

private:
    ScenePose(const LoadedScene& loaded, const PictureDocument* document, bool isIdentityForEmpty);
    void placeLights();

    const PictureDocument* m_document;
    const LoadedScene* m_loaded;
    std::vector<Matrix4> m_world;
    std::vector<PlacedLight> m_lights;
    Matrix4 m_rootWorld = identity();
};

/// All points that the scene shows, in the world. Geometry that is collapsed to nothing has none.
std::vector<Vector3> pointsOf(const LoadedScene& loaded, const ScenePose& pose);

/// The box around them.
Box boxOf(const LoadedScene& loaded, const ScenePose& pose);

} // namespace scenetool
