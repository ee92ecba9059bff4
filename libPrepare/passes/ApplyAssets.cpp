#include "Passes.h"

#include <libPrepare/document/Frame.h>
#include <libPrepare/document/Tree.h>

#include <algorithm>

namespace libPrepare {

namespace {

bool saysFrame(pugi::xml_node element)
{
    const pugi::xml_node asset = element.child("asset");
    return asset && (asset.child("unit") || asset.child("up_axis"));
}

bool isSame(const Frame& a, const Frame& b)
{
    return a.up == b.up && a.meter == b.meter;
}

class Assets {
public:
    explicit Assets(Document& document) : m_document(document), m_base(Frame::read(document.root().child("asset"), {}))
    {}

    void run()
    {
        const pugi::xml_node scene = shownScene(m_document);
        const Frame sceneFrame = Frame::read(scene.child("asset"), m_base);
        m_frames[scene.hash_value()] = sceneFrame;
        const std::vector<pugi::xml_node> nodes = nodesIn(scene);
        if (!saysFrame(scene) && std::none_of(nodes.begin(), nodes.end(), saysFrame) && !hasGeometryFrames()) {
            return;
        }
        for (pugi::xml_node node : nodes) {
            const Frame above = m_frames[node.parent().hash_value()];
            const Frame own = Frame::read(node.child("asset"), above);
            m_frames[node.hash_value()] = own;
            const Frame& outer = node.parent() == scene ? m_base : above;
            for (const pugi::xml_node child : childrenOf(node)) {
                if (is(child, "instance_geometry")) {
                    showGeometry(child, own);
                } else if (is(child, "instance_controller")) {
                    checkController(child, own);
                }
            }
            if (!isSame(own, outer)) {
                prependTransform(node, "matrix", text(outer.from(own)));
                report(node, own, outer);
            }
        }
        for (const pugi::xml_node node : nodes) {
            forget(node);
        }
        forget(scene);
        for (const pugi::xml_node geometry : m_geometries) {
            forget(geometry);
        }
    }

private:
    bool hasGeometryFrames() const
    {
        for (const pugi::xml_node library : m_document.root().children("library_geometries")) {
            const auto geometries = library.children("geometry");
            if (std::any_of(geometries.begin(), geometries.end(), saysFrame)) {
                return true;
            }
        }
        return false;
    }

    static std::vector<pugi::xml_node> childrenOf(pugi::xml_node node)
    {
        return {node.children().begin(), node.children().end()};
    }

    void report(pugi::xml_node where, const Frame& from, const Frame& to)
    {
        m_document.rewritten(where, "asset",
                             std::string("What has ") + from.up + " up and a unit of its own is turned and scaled to " +
                                 to.up + " up and the unit around it.");
    }

    // A geometry with another frame gets its own node, which turns and scales it.
    void showGeometry(pugi::xml_node instance, const Frame& around)
    {
        const pugi::xml_node geometry = m_document.resolve(instance.attribute("url").value(), {"geometry"});
        const Frame own = Frame::read(geometry.child("asset"), m_base);
        if (!saysFrame(geometry)) {
            return;
        }
        m_geometries.push_back(geometry);
        if (isSame(own, around) || !m_document.takeBytes(300)) {
            return;
        }
        report(instance, own, around);
        pugi::xml_node node = instance.parent().insert_child_before("node", instance);
        prependTransform(node, "matrix", text(around.from(own)));
        node.append_move(instance);
    }

    void checkController(pugi::xml_node instance, const Frame& around)
    {
        const pugi::xml_node controller = m_document.resolve(instance.attribute("url").value(), {"controller"});
        const pugi::xml_node body = controller.child("skin") ? controller.child("skin") : controller.child("morph");
        const pugi::xml_node geometry = m_document.resolve(body.attribute("source").value(), {"geometry"});
        if (saysFrame(geometry) && !isSame(Frame::read(geometry.child("asset"), m_base), around)) {
            m_document.lost(geometry, "asset", "The unit and up axis of a geometry with a controller have no effect.",
                            "Bring the geometry into the unit and up axis of the document.");
        }
    }

    // What has been applied must not be applied again.
    void forget(pugi::xml_node element)
    {
        pugi::xml_node asset = element.child("asset");
        const Frame said = Frame::read(asset, m_base);
        if (!isSame(said, m_base)) {
            for (const char* const name : {"unit", "up_axis"}) {
                while (const pugi::xml_node child = asset.child(name)) {
                    removeElement(child);
                }
            }
        }
    }

    Document& m_document;
    Frame m_base;
    std::unordered_map<std::size_t, Frame> m_frames;
    std::vector<pugi::xml_node> m_geometries;
};

} // namespace

void applyAssets(Document& document)
{
    if (document.census().hasInnerAssets) {
        Assets(document).run();
    }
}

} // namespace libPrepare
