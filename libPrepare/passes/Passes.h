#pragma once

#include <libPrepare/document/Document.h>

/// @file
/// The passes. Each rewrites the document so that it says the same, and reports changes and losses. Prepare.cpp shows
/// their order.
namespace libPrepare {

// The document as a whole.
void convertVersions(Document& document);        ///< 1.4.0 and 1.5, foreign and missing namespaces: to 1.4.1.
void copyExternalReferences(Document& document); ///< Copies in elements of other documents that references name.
void repairTexts(Document& document);            ///< Texts in several runs, decimal commas, character data sections.
void repairIds(Document& document);              ///< Doubled ids, and ids beyond ASCII.
void chooseVisualScene(Document& document);      ///< Keeps the one that `<scene>` names; the others are reported.
void applyAssets(Document& document);            ///< Units and up axes of geometries, nodes and scenes.

// The tree.
void copyInstanceNodes(Document& document); ///< `<instance_node>`.
void flattenAnimations(Document& document); ///< One animation per target, with the whole value.

// Geometry.
void openConvexMeshes(Document& document);    ///< `<convex_mesh>` with faces of its own.
void poseControllers(Document& document);     ///< `<skin>` and `<morph>` become meshes.
void triangulate(Document& document);         ///< polylist, polygons, tristrips, trifans, bad faces.
void dropAnimations(Document& document);      ///< Those of weights, materials and lights, which get a fixed value.
void separateGeometries(Document& document);  ///< A geometry for every instance, a symbol for every material.
void arrangeInputs(Document& document);       ///< Inputs under `<vertices>`, other semantics, offsets, sets.
void dropUnreadInstances(Document& document); ///< Splines, hulls, broken references; lines are reported.
void makeNormals(Document& document);         ///< If `Options::normals` is set.

// Looks.
void bindMaterials(Document& document);   ///< `<bind_material>` where it is missing or ambiguous.
void completeEffects(Document& document); ///< lambert and constant, absent channels, parameters, opacity.
void resolveTextures(Document& document); ///< Samplers, surfaces and images that textures lead to.
void findImages(Document& document);      ///< Image files that are found from the folder of the result.

// Lights and cameras.
void completeLights(Document& document);  ///< Directional, ambient, attenuation, cones, targets.
void completeCameras(Document& document); ///< Orthographic, field of view, look-at nodes.

// Nodes.
void completeTransforms(Document& document); ///< Nodes without a transform, `<lookat>`, `<skew>`.
void turnScene(Document& document);          ///< `Options::upAxis` and `Options::unit`.

} // namespace libPrepare
