#include <libVideo/SceneGraph/Geometry.h>

#include "detail/Dom.h"
#include "detail/Log.h"

#include <libVideo/SceneGraph/Node.h>

namespace libVideo {

VIDEO_LOG_CHANNEL("libVideo.geometry")

Mesh::~Mesh() = default;

bool Mesh::createFromCollada(domMesh* const mesh)
{
    detail::expectElement(daeSmartRef<domMesh>(mesh), "Mesh");
    return createPrimitive(*mesh, m_primitives) != 0;
}

Geometry::~Geometry() = default;

bool Geometry::createFromCollada(const daeSmartRef<domGeometry>& geometry)
{
    detail::expectElement(geometry, "Geometry");
    const domMeshRef mesh = geometry->getMesh();
    if (mesh == nullptr) {
        VIDEO_LOG("Program does not handle geometry type other than meshes right now.");
        return false;
    }
    if (!m_mesh.createFromCollada(mesh)) {
        VIDEO_LOG("Mesh instantiation failed");
        return false;
    }
    m_id = geometry->getId();
    m_name = geometry->getName();
    return true;
}

void Geometry::addNode(const NodeHandle& node)
{
    if (!node) {
        throw vesk::NullPointer("Cannot list an empty node handle on geometry " + m_id);
    }
    for (const NodeHandle& listed : m_nodes) {
        if (vesk::String::compareNoCase(listed->id(), node->id()) == 0) {
            return;
        }
    }
    m_nodes.append(node);
}

} // namespace libVideo
