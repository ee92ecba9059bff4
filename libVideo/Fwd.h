#pragma once

/// @file
/// All public classes by name, and the handles that own or refer to them. Classes of COLLADA DOM that stand in
/// declarations are named here as well, so that a host which only walks a scene does not meet their headers.

#include <vesk/CopiedResource.h>
#include <vesk/PointerStorage.h>
#include <vesk/SharedResource.h>
#include <vesk/String.h>

namespace vesk {

template <class T>
class Array;
template <class K>
struct EqualFunc;
template <class K>
struct HashFunc;
template <class K, class V, class Equal, class Hash>
class HashTable;

} // namespace vesk

namespace libMath {

template <class T, unsigned row, unsigned col>
class Matrix;
template <class T, unsigned Size>
class Vector;

} // namespace libMath

class DAE;
class daeElement;
template <class T>
class daeSmartRef;
template <class T>
class daeTArray;

namespace ColladaDOM141 {

class domAccessor;
class domAnimation;
class domCOLLADA;
class domCamera;
class domFloat_array;
class domGeometry;
class domInputLocal;
class domInputLocalOffset;
class domInstance_camera;
class domInstance_geometry;
class domInstance_light;
class domMaterial;
class domName_array;
class domNode;
class domP;
class domVisual_scene;

} // namespace ColladaDOM141

namespace libVideo::detail {

class VertexReader;

} // namespace libVideo::detail

namespace libVideo {

using ColladaDOM141::domAccessor;
using ColladaDOM141::domAnimation;
using ColladaDOM141::domCamera;
using ColladaDOM141::domCOLLADA;
using ColladaDOM141::domFloat_array;
using ColladaDOM141::domGeometry;
using ColladaDOM141::domInputLocal;
using ColladaDOM141::domInputLocalOffset;
using ColladaDOM141::domInstance_camera;
using ColladaDOM141::domInstance_geometry;
using ColladaDOM141::domInstance_light;
using ColladaDOM141::domMaterial;
using ColladaDOM141::domName_array;
using ColladaDOM141::domNode;
using ColladaDOM141::domP;
using ColladaDOM141::domVisual_scene;

class Accessor;
class AccessorFloat;
class Animation;
class BlinnMaterial;
class Camera;
class CameraInstance;
class Data;
class Geometry;
class Input;
class InputLocal;
class InputLocalOffset;
class Instance;
class Mesh;
class Node;
class PerspectiveCamera;
class PointCloud;
class PointLight;
class PointLightInstance;
class Primitive;
class Rotation;
class Scale;
class Scene;
class Skew;
class Source;
class SourceFloat;
class SpotLight;
class SpotLightInstance;
class Texture;
class Transformation;
class TriangleList;
class Translation;
class View;
class VisualScene;
struct Evolution;
struct PerspectiveParameter;
struct SceneResources;
struct VertexLayout;

/// A handle that owns its object together with all its copies.
template <class T>
using SharedHandle = vesk::SharedResource<vesk::PointerStorage<T, 0, 3>, 0>;
/// A handle that refers to an object which something else owns.
template <class T>
using Link = vesk::CopiedResource<vesk::PointerStorage<T, 3, 2>>;
/// A table by text.
template <class Value>
using TableByName = vesk::HashTable<vesk::String, Value, vesk::EqualFunc<vesk::String>, vesk::HashFunc<vesk::String>>;

using AnimationHandle = SharedHandle<Animation>;                   ///< Owns the class in its name.
using BlinnMaterialHandle = SharedHandle<BlinnMaterial>;           ///< Owns the class in its name.
using CameraHandle = SharedHandle<Camera>;                         ///< Owns the class in its name.
using CameraInstanceHandle = SharedHandle<CameraInstance>;         ///< Owns the class in its name.
using GeometryHandle = SharedHandle<Geometry>;                     ///< Owns the class in its name.
using MatrixHandle = SharedHandle<libMath::Matrix<float, 4, 4>>;   ///< Owns a matrix.
using NodeHandle = SharedHandle<Node>;                             ///< Owns the class in its name.
using PointLightHandle = SharedHandle<PointLight>;                 ///< Owns the class in its name.
using PointLightInstanceHandle = SharedHandle<PointLightInstance>; ///< Owns the class in its name.
using SpotLightHandle = SharedHandle<SpotLight>;                   ///< Owns the class in its name.
using SpotLightInstanceHandle = SharedHandle<SpotLightInstance>;   ///< Owns the class in its name.
using TransformationHandle = SharedHandle<Transformation>;         ///< Owns the class in its name.

using NodeLink = Link<Node>;                     ///< Refers to a node that the scene owns.
using SceneResourcesLink = Link<SceneResources>; ///< Refers to the pool that the scene owns.

using BlinnMaterialTable = TableByName<BlinnMaterialHandle>; ///< Materials by a primitive's symbol.
using GeometryTable = TableByName<GeometryHandle>;           ///< Geometries by their id.
using NodeTable = TableByName<NodeLink>;                     ///< Nodes by their id.

} // namespace libVideo
