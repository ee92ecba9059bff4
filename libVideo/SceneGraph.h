#pragma once

/// @file
/// Everything of the scene graph.

#include <libVideo/SceneGraph/Accessor.h>
#include <libVideo/SceneGraph/Animation.h>
#include <libVideo/SceneGraph/Node.h>
#include <libVideo/SceneGraph/Scene.h>
#include <libVideo/SceneGraph/Transformation.h>
#include <libVideo/SceneGraph/VertexLayout.h>
#include <libVideo/SceneGraph/VisualScene.h>
