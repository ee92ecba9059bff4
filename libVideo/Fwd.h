#pragma once // SPDX-License-Identifier: MIT

/// @file
/// All public classes by name, without any definition. The classes of COLLADA DOM that declarations mention are named
/// as well, so a host that only walks a scene does not need their headers.

namespace vesk {

class String;
template <class T>
class Array;

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

class PoolIndex;
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

} // namespace libVideo
