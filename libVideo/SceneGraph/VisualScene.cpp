#include <libVideo/SceneGraph/VisualScene.h>

#include "detail/Dom.h"
#include "detail/Log.h"
#include "detail/PoolIndex.h"

#include <libVideo/SceneGraph/Animation.h>
#include <libVideo/SceneGraph/Camera.h>
#include <libVideo/SceneGraph/Geometry.h>
#include <libVideo/SceneGraph/Instance.h>
#include <libVideo/SceneGraph/Light.h>
#include <libVideo/SceneGraph/Material.h>

namespace libVideo {

VIDEO_LOG_CHANNEL("libVideo.visualScene")
VIDEO_SOURCE_PATH("libVideo/SceneGraph/VisualScene")

/// A `<node>` while the tree is converted to a list.
struct VisualScene::TreePrototype {
    static constexpr unsigned noParent = 0xFFFFFFFFu;

    domNode* node = nullptr;        // of the document
    vesk::Array<unsigned> children; // indices in the list, in document order
    unsigned parent = noParent;     // index in the list
};

namespace {

bool hasInstances(const domNode& node)
{
    return node.getInstance_camera_array().getCount() > 0 || node.getInstance_light_array().getCount() > 0 ||
           node.getInstance_geometry_array().getCount() > 0;
}

} // namespace

VisualScene::~VisualScene() = default;

bool VisualScene::createFromCollada(const domVisual_scene& scene, const SceneResourcesLink& resources)
{
    VIDEO_TRACE("VisualScene::createFromCollada");
    if (m_root.children().size() > 0) { // a load that failed before the first node may be repeated
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
    // Only now, because an instance may name any node, and all are in the table.
    detail::PoolIndex pool(*m_resources);
    for (unsigned i = 0; i < tree.size(); ++i) {
        if (hasInstances(*tree[i].node)) { // most nodes of a large tree have none
            processNodeInstances(m_nodeList[i], tree[i].node, pool);
        }
    }
    addAnimationsToNodes();
    return true;
}

// Breadth first and without recursion, so the depth of a document costs no stack. Finds the order with plain entries,
// which are cheap to copy while the array grows, and then makes each record once.
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
    m_nodeTable = NodeTable(32);
    m_nodeList.clear();
    m_nodeList.grow(tree.size(), NodeHandle());
    m_nodeTable.reserve(tree.size());
    for (unsigned i = 0; i < tree.size(); ++i) {
        const TreePrototype& slot = tree[i];
        NodeHandle& node = m_nodeList[i];
        node = NodeHandle::make(*slot.node);
        Node& parent = slot.parent == TreePrototype::noParent ? m_root : *m_nodeList[slot.parent];
        node->setParent(NodeLink(&parent));
        parent.addChild(NodeLink(node));
    }
    // In a loop of its own, so that the buckets lie side by side and a search touches few pages.
    for (const NodeHandle& node : m_nodeList) {
        m_nodeTable.insert(node->id(), NodeLink(node));
    }
}

void VisualScene::processNodeInstances(const NodeHandle& node, const daeSmartRef<domNode>& element,
                                       detail::PoolIndex& pool)
{
    if (element->getInstance_camera_array().getCount() > 0) {
        addCameraInstance(node, element->getInstance_camera_array(), pool);
    }
    if (element->getInstance_light_array().getCount() > 0) {
        addLightInstance(node, element->getInstance_light_array(), pool);
    }
    if (element->getInstance_geometry_array().getCount() > 0) {
        addGeometryInstance(node, element->getInstance_geometry_array());
    }
}

unsigned VisualScene::addCameraInstance(const NodeHandle& node,
                                        const daeTArray<daeSmartRef<domInstance_camera>>& instances,
                                        detail::PoolIndex& pool)
{
    for (std::size_t i = 0; i < instances.getCount(); ++i) {
        const auto instance = CameraInstanceHandle::make(NodeLink(node));
        const daeElementRef target = instances[i]->getUrl().getElement();
        const CameraHandle camera = target != nullptr ? pool.camera(target->getID()) : CameraHandle();
        if (instance->bind(target, camera, m_nodeTable)) {
            m_cameraList.append(instance);
        }
    }
    return m_cameraList.size();
}

unsigned VisualScene::addLightInstance(const NodeHandle& node,
                                       const daeTArray<daeSmartRef<domInstance_light>>& instances,
                                       detail::PoolIndex& pool)
{
    for (std::size_t i = 0; i < instances.getCount(); ++i) {
        const daeElementRef element = instances[i]->getUrl().getElement();
        if (element == nullptr) {
            VIDEO_LOG("domInstance_light does not point to a light element");
            return 0; // sic: the lights after it are not read either
        }
        const domLightRef light = daeSafeCast<domLight>(element);
        if (light == nullptr) {
            VIDEO_LOG("Element is not a light");
            return 0;
        }
        // If both kinds have a light with this id, the point light is used.
        const vesk::String id(light->getId());
        if (const PointLightHandle point = pool.pointLight(id)) {
            const auto instance = PointLightInstanceHandle::make(NodeLink(node), Link<PointLight>(point));
            if (instance->createFromCollada(*instances[i])) {
                m_pointLightList.append(instance);
            }
        } else if (const SpotLightHandle spot = pool.spotLight(id)) {
            const auto instance = SpotLightInstanceHandle::make(NodeLink(node), Link<SpotLight>(spot));
            if (instance->createFromCollada(*instances[i], m_nodeTable)) {
                m_spotLightList.append(instance);
            }
        }
    }
    return m_pointLightList.size() + m_spotLightList.size();
}

unsigned VisualScene::addGeometryInstance(const NodeHandle& node,
                                          const daeTArray<daeSmartRef<domInstance_geometry>>& instances)
{
    for (std::size_t i = 0; i < instances.getCount(); ++i) {
        const domGeometryRef element = detail::resolve<domGeometry>(instances[i]->getUrl());
        if (element == nullptr) {
            VIDEO_LOG("Not a geometry element");
            continue;
        }
        registerMaterials(*instances[i]);
        const GeometryHandle geometry = createAndRegisterGeometry(element);
        if (!geometry) {
            VIDEO_LOG("Unable to initialize geometry instance");
            continue;
        }
        geometry->addNode(node);
    }
    return 0; // sic: not the number of instances
}

// Materials are registered even if building the geometry fails later.
void VisualScene::registerMaterials(const domInstance_geometry& instance)
{
    const domBind_materialRef binding = instance.getBind_material();
    const domBind_material::domTechnique_commonRef technique =
        binding != nullptr ? binding->getTechnique_common() : domBind_material::domTechnique_commonRef();
    if (technique == nullptr) {
        return;
    }
    const domInstance_material_Array& materials = technique->getInstance_material_array();
    for (std::size_t i = 0; i < materials.getCount(); ++i) {
        const domMaterialRef material = detail::resolve<domMaterial>(materials[i]->getTarget());
        if (material != nullptr) {
            registerMaterialAttributes(materials[i]->getSymbol(), material);
        }
    }
}

// Returns an empty handle for a geometry that is in the table already, so it shows at its first node only. A geometry
// that fails to build is returned without being stored, and is destroyed with the handle.
GeometryHandle VisualScene::createAndRegisterGeometry(domGeometry* const geometry)
{
    if (m_geometryTable.lookup(geometry->getId()) != nullptr) {
        return GeometryHandle();
    }
    const auto result = GeometryHandle::make();
    if (result->createFromCollada(geometry)) {
        m_geometryTable.insert(result->id(), result);
    }
    return result;
}

void VisualScene::registerMaterialAttributes(const vesk::String& symbol, domMaterial* const material)
{
    const domInstance_effectRef instance = material->getInstance_effect();
    if (instance == nullptr) {
        return;
    }
    const domEffectRef effect = detail::resolve<domEffect>(instance->getUrl());
    if (effect == nullptr || m_blinnMaterialTable.lookup(symbol) != nullptr) {
        return; // the first binding of a symbol wins
    }
    const domFx_profile_abstract_Array& profiles = effect->getFx_profile_abstract_array();
    for (std::size_t i = 0; i < profiles.getCount(); ++i) {
        const domProfile_COMMONRef profile = daeSafeCast<domProfile_COMMON>(profiles[i]);
        const domProfile_COMMON::domTechniqueRef technique =
            profile != nullptr ? profile->getTechnique() : domProfile_COMMON::domTechniqueRef();
        if (technique == nullptr || (technique->getBlinn() == nullptr && technique->getPhong() == nullptr)) {
            continue;
        }
        const auto made = BlinnMaterialHandle::make();
        if (technique->getBlinn() != nullptr) {
            made->createFromCollada(technique->getBlinn(), profile);
        } else {
            made->createFromCollada(technique->getPhong(), profile);
        }
        m_blinnMaterialTable.insert(symbol, made);
    }
}

void VisualScene::addAnimationsToNodes()
{
    if (m_resources->animationList.size() == 0) {
        return;
    }
    // The camera of the first instance of each id; the case of ids matters here.
    TableByName<Link<Camera>> cameras(32);
    cameras.reserve(m_cameraList.size());
    for (const CameraInstanceHandle& instance : m_cameraList) {
        cameras.insert(instance->cameraId(), instance->camera());
    }
    for (const AnimationHandle& animation : m_resources->animationList) {
        const vesk::String target = animation->getTargetNode();
        if (const NodeTable::Bucket* const bucket = m_nodeTable.lookup(target)) {
            bucket->value->addAnimation(animation);
            continue;
        }
        if (const auto* const bucket = cameras.lookup(target)) {
            bucket->value->addAnimation(animation);
            continue;
        }
        VIDEO_LOG("Unable to find the animation's target node with id: ", target);
    }
}

void VisualScene::transform()
{
    for (const NodeHandle& node : m_nodeList) {
        if (node) { // empty if a load ran out of memory
            node->updateTransform();
        }
    }
}

} // namespace libVideo
