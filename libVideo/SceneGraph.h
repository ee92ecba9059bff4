#pragma once // SPDX-License-Identifier: MIT

/// @file
/// Everything of the scene graph.

#include <libVideo/SceneGraph/Accessor.h>
#include <libVideo/SceneGraph/Animation.h>
#include <libVideo/SceneGraph/Camera.h>
#include <libVideo/SceneGraph/DataType.h>
#include <libVideo/SceneGraph/Geometry.h>
#include <libVideo/SceneGraph/Input.h>
#include <libVideo/SceneGraph/Instance.h>
#include <libVideo/SceneGraph/Light.h>
#include <libVideo/SceneGraph/Material.h>
#include <libVideo/SceneGraph/Node.h>
#include <libVideo/SceneGraph/Primitive.h>
#include <libVideo/SceneGraph/Scene.h>
#include <libVideo/SceneGraph/SceneResources.h>
#include <libVideo/SceneGraph/Semantic.h>
#include <libVideo/SceneGraph/Source.h>
#include <libVideo/SceneGraph/Texture.h>
#include <libVideo/SceneGraph/Transformation.h>
#include <libVideo/SceneGraph/VertexLayout.h>
#include <libVideo/SceneGraph/VisualScene.h>
