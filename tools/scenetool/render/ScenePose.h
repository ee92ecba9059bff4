#pragma once

#include "PictureDocument.h"
#include "RenderMath.h"

#include <cstddef>
#include <vector>

namespace scenetool {

/// A light in world coordinates.
struct PlacedLight {
    enum class Kind { point, spot, directional, head }; ///< in the order of the shader; a head light follows the eye
    Kind kind = Kind::point;
    Vector3 position;
    Vector3 color;
    /// Factors of 1, of the distance and of its square; 1, 0, 0 for a light that does not fade.
    Vector3 attenuation{1.0f, 0.0f, 0.0f};
    Vector3 direction{0.0f, 0.0f, -1.0f}; ///< in which a spot or a directional light shines
    /// Cosines of the angles between the direction and the cones of a spot: full light within the inner cone, none
    /// outside the outer one. Below -1 for light in all directions.
    float innerCosine = -2.0f;
    float outerCosine = -2.0f;
    float exponent = 0.0f; ///< of the cosine, for the falloff of a spot towards its edge
};

/// The world matrices of the current state of a scene, and its lights.
class ScenePose {
public:
    /// Multiplies the local matrices of all nodes down the tree.
    /// @param isIdentityForEmpty replaces a zero matrix, which nodes without transforms have, by the identity
    ScenePose(const LoadedScene& loaded, bool isIdentityForEmpty) : ScenePose(loaded, nullptr, isIdentityForEmpty) {}
    /// The same, but with directional lights in place of their approximations.
    ScenePose(const PictureDocument& document, bool isIdentityForEmpty)
        : ScenePose(document.scene(), &document, isIdentityForEmpty)
    {}

    /// World matrix of a node; the identity for the root and for null.
    const Matrix4& world(const libVideo::Node* node) const;
    /// World matrix of the parent; the identity for a node directly below the root.
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

/// All visible points of a scene in world coordinates, without those of geometry that a zero matrix collapses.
std::vector<Vector3> pointsOf(const LoadedScene& loaded, const ScenePose& pose);

/// The bounding box of these points.
Box boxOf(const LoadedScene& loaded, const ScenePose& pose);

} // namespace scenetool
