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
    if (static_cast<unsigned>(scene.getNode_array().getCount()) == 0) {
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

    const vesk::Array<TreePrototype> tree = flatten(scene);
    createNodes(tree);
    // All nodes stand in the table now, so an instance may name any of them.
    for (unsigned i = 0; i < tree.size(); ++i) {
        processNodeInstances(m_nodeList[i], tree[i].node);
    }
    addAnimationsToNodes();
    return true;
}

// Breadth first and without recursion, so the depth of a document costs no stack. The order is found with plain entries,
// which are cheap to move while the list grows, and only then turned into records, each of them made once.
vesk::Array<VisualScene::TreePrototype> VisualScene::flatten(const domVisual_scene& scene)
{
    struct Entry {
        domNode* node;
        unsigned parent;
    };
    vesk::Array<Entry> order;
    const auto appendAll = [&order](const domNode_Array& nodes, unsigned parent) {
        for (std::size_t i = 0; i < nodes.getCount(); ++i) {
            order.append(Entry{nodes[i], parent});
        }
    };
    appendAll(scene.getNode_array(), TreePrototype::noParent);
    for (unsigned i = 0; i < order.size(); ++i) {
        appendAll(order[i].node->getNode_array(), i);
    }

    vesk::Array<TreePrototype> tree(order.size());
    for (unsigned i = 0; i < tree.size(); ++i) {
        tree[i].node = order[i].node;
        tree[i].parent = order[i].parent;
        if (tree[i].parent != TreePrototype::noParent) {
            tree[tree[i].parent].children.append(i);
        }
    }
    return tree;
}

void VisualScene::createNodes(const vesk::Array<TreePrototype>& tree)
{
    m_nodeList.clear();
    m_nodeList.grow(tree.size(), NodeHandle());
    m_nodeTable.reserve(tree.size());
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
