#include <libVideo/SceneGraph/VisualScene.h>

#include "detail/Dom.h"
#include "detail/Log.h"

#include <libVideo/SceneGraph/Animation.h>

namespace libVideo {

VIDEO_LOG_CHANNEL("libVideo.visualScene")
VIDEO_SOURCE_PATH("libVideo/SceneGraph/VisualScene")

/// One `<node>` while the tree is turned into a list.
struct VisualScene::TreePrototype {
    static constexpr unsigned noParent = 0xFFFFFFFFu;

    daeSmartRef<domNode> node;
    vesk::Array<unsigned> children; // slots, in document order
    unsigned parent = noParent;     // slot
};

VisualScene::~VisualScene() = default;

bool VisualScene::createFromCollada(const domVisual_scene& scene, const SceneResourcesLink& resources)
{
    VIDEO_TRACE("VisualScene::createFromCollada");
    if (m_resources) {
        VIDEO_LOG("Visual scene is already loaded");
        return false;
    }
    if (!resources) {
        VIDEO_LOG("Cannot create using an empty scene resources");
        return false;
    }
    const domNode_Array& topNodes = scene.getNode_array();
    const unsigned topCount = static_cast<unsigned>(topNodes.getCount());
    if (topCount == 0) {
        VIDEO_LOG("Visual scene has no visual nodes");
        return false;
    }
    if (scene.getName() != nullptr) {
        m_name = scene.getName();
    }
    if (scene.getId() != nullptr) {
        m_id = scene.getId();
    }
    m_resources = resources;

    vesk::Array<TreePrototype> tree(topCount);
    for (unsigned i = 0; i < topCount; ++i) {
        tree[i].node = topNodes[i];
    }
    // Breadth first, and without recursion: the list grows under the loop, and a slot is looked up anew after that.
    for (unsigned i = 0; i < tree.size(); ++i) {
        const domNode_Array& children = tree[i].node->getNode_array();
        for (std::size_t j = 0; j < children.getCount(); ++j) {
            TreePrototype child;
            child.node = children[j];
            child.parent = i;
            const unsigned slot = tree.size();
            tree.append(child);
            tree[i].children.append(slot);
        }
    }

    createNodes(tree);
    // All nodes stand in the table now, so an instance may name any of them.
    for (unsigned i = 0; i < tree.size(); ++i) {
        processNodeInstances(m_nodeList[i], tree[i].node);
    }
    addAnimationsToNodes();
    return true;
}

void VisualScene::createNodes(const vesk::Array<TreePrototype>& tree)
{
    m_nodeList.clear();
    m_nodeList.grow(tree.size(), NodeHandle());
    for (unsigned i = 0; i < tree.size(); ++i) {
        const TreePrototype& slot = tree[i];
        NodeHandle& node = m_nodeList[i];
        node = new Node(*slot.node);
        m_nodeTable.insert(node->id(), NodeLink(node));
        Node& parent = slot.parent == TreePrototype::noParent ? m_root : *m_nodeList[slot.parent];
        node->setParent(NodeLink(&parent));
        parent.addChild(NodeLink(node));
    }
}

void VisualScene::processNodeInstances(const NodeHandle& /*node*/, const daeSmartRef<domNode>& /*element*/)
{
    // Cameras, lights and geometries join here, in this order.
}

void VisualScene::addAnimationsToNodes()
{
    for (const AnimationHandle& animation : m_resources->animationList) {
        const vesk::String target = animation->getTargetNode();
        if (const NodeTable::Bucket* const bucket = m_nodeTable.lookup(target)) {
            bucket->value->addAnimation(animation);
            continue;
        }
        VIDEO_LOG("Unable to find the animation's target node with id: ", target);
    }
}

void VisualScene::transform()
{
    for (const NodeHandle& node : m_nodeList) {
        node->updateTransform();
    }
}

} // namespace libVideo
