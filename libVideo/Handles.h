#pragma once // SPDX-License-Identifier: MIT

/// @file
/// The handles that own objects of the scene graph or refer to them, and the tables of handles.

#include <libVideo/Fwd.h>

#include <vesk/CopiedResource.h>
#include <vesk/PointerStorage.h>
#include <vesk/SharedResource.h>

namespace vesk {

template <class K>
struct EqualFunc;
template <class K>
struct HashFunc;
template <class K, class V, class Equal, class Hash>
class HashTable;

} // namespace vesk

namespace libVideo {

/// A handle that shares ownership of its object with all its copies.
template <class T>
using SharedHandle = vesk::SharedResource<vesk::PointerStorage<T, 0, 3>, 0>;
/// A handle to an object that something else owns.
template <class T>
using Link = vesk::CopiedResource<vesk::PointerStorage<T, 3, 2>>;
/// A table with text keys.
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
