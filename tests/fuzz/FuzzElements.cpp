// Passes elements of a document directly to the classes, in any order, including arguments that a load never passes: no
// element, no pool, an element from another place, the same one twice. The documents are opened once, so a sequence is
// cheap.

#include "Check.h"

#include "support/LogCapture.h"
#include "support/PrivateAccess.h"
#include "support/SilentDocumentModel.h"

#include <libVideo/ColladaDom.h>
#include <libVideo/SceneGraph.h>
#include <libVideo/SceneGraph/document/ColladaReader.h>

#include <vesk/Exception.h>

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <map>
#include <set>
#include <vector>

namespace {

using vesk::String;

using Children = daeTArray<daeSmartRef<daeElement>>;
PRIVATE_MEMBER(accumulateAll, void (libVideo::Node::*)(const Children&), &libVideo::Node::accumulateTransform)
PRIVATE_MEMBER(setSid, void (libVideo::Node::*)(const String&), &libVideo::Node::setSid)

// The documents of the seeds, and all their elements of a type.
class Documents {
public:
    Documents()
    {
        // In order of their names, so that an input means the same everywhere.
        const std::filesystem::directory_iterator folder(SEED_FOLDER);
        for (const std::filesystem::path& file : std::set<std::filesystem::path>(begin(folder), end(folder))) {
            m_reader.open(file);
        }
        fuzz::check(all(domNode::ID()).size() > 1, "seeds without a node");
    }

    DAE& dae() { return m_dae; }
    const std::vector<daeElement*>& all(daeInt type)
    {
        const auto [entry, isNew] = m_elements.try_emplace(type);
        if (isNew) {
            m_dae.getDatabase()->typeLookup(type, entry->second);
        }
        return entry->second;
    }

private:
    testSupport::SilentDocumentModel m_silence;
    libVideo::detail::ColladaReader m_reader{m_dae};
    DAE m_dae{&m_reader.database(), &m_reader, "1.4.1"};
    std::map<daeInt, std::vector<daeElement*>> m_elements; // by type
};

// A host that takes its next step from the next bytes.
class Host {
public:
    Host(Documents& documents, const std::uint8_t* data, std::size_t size) : m_documents(documents), m_bytes(data, size)
    {}

    void run()
    {
        constexpr void (Host::*steps[])() = {
            &Host::useNode,           &Host::useVisualScene, &Host::useCamera, &Host::useCameraInstance,
            &Host::useLightInstances, &Host::useLists,       &Host::useMesh,   &Host::useTriangles,
            &Host::usePoints,         &Host::useInputs,      &Host::useSource, &Host::useAccessor,
            &Host::useMaterial,       &Host::useTexture,     &Host::useCurve,  &Host::useEmptyTransformation};
        while (m_bytes.remaining_bytes() > 0) {
            const auto step = m_bytes.PickValueInArray(steps);
            try {
                (this->*step)();
            } catch (const vesk::Exception&) {
                continue; // a valid outcome
            }
        }
    }

private:
    // An element of this type, or none.
    template <class Element>
    Element* pick()
    {
        const std::vector<daeElement*>& elements = m_documents.all(Element::ID());
        return elements.empty() || m_bytes.ConsumeIntegralInRange(0, 7) == 0
                   ? nullptr
                   : static_cast<Element*>(
                         elements[m_bytes.ConsumeIntegralInRange<std::size_t>(0, elements.size() - 1)]);
    }

    // An element for functions that take a reference.
    template <class Element>
    const Element& some()
    {
        if (const Element* const element = pick<Element>()) {
            return *element;
        }
        return *static_cast<const Element*>(m_documents.all(Element::ID()).at(0));
    }

    String text() { return String(m_bytes.ConsumeRandomLengthString(12).c_str()); }
    unsigned index() { return m_bytes.ConsumeBool() ? m_bytes.ConsumeIntegralInRange(0u, 9u) : any<unsigned>(); }

    template <class Number>
    Number any()
    {
        Number value = 0;
        m_bytes.ConsumeData(&value, sizeof(value));
        return value;
    }

    void useNode()
    {
        const domNode& element = some<domNode>();
        libVideo::Node node(element);
        accumulateAll(node, some<domNode>().getContents());
        setSid(node, text());
        node.createFromCollada(some<domNode>());
        node.transform(any<double>());
    }

    // A scene without a pool, then with one, then once more.
    void useVisualScene()
    {
        libVideo::VisualScene scene;
        const domVisual_scene& element = some<domVisual_scene>();
        fuzz::check(!scene.createFromCollada(element, libVideo::SceneResourcesLink()), "a scene without a pool");
        libVideo::SceneResources pool;
        const libVideo::SceneResourcesLink link(&pool);
        if (scene.createFromCollada(element, link)) {
            fuzz::check(!scene.createFromCollada(element, link), "a scene that is loaded twice");
        }
    }

    void useCamera()
    {
        libVideo::PerspectiveCamera camera(pick<domCamera>(), m_documents.dae());
        camera.createFromCollada(pick<domCamera>(), m_documents.dae());
        camera.setAspectRatio(any<double>());
        camera.projectionMatrix(any<double>());
    }

    void useCameraInstance()
    {
        vesk::Array<libVideo::CameraHandle> cameras;
        for (unsigned count = m_bytes.ConsumeIntegralInRange(0u, 2u); count > 0; --count) {
            cameras.append(
                libVideo::CameraHandle::make<libVideo::PerspectiveCamera>(pick<domCamera>(), m_documents.dae()));
        }
        const auto node = libVideo::NodeHandle::make(some<domNode>());
        libVideo::NodeTable nodes(32);
        nodes.insert(node->id(), libVideo::NodeLink(node));
        libVideo::CameraInstance instance;
        if (instance.createFromCollada(some<domInstance_camera>(), cameras, nodes)) {
            fuzz::check(bool(instance.camera()), "an instance without its camera");
        }
        instance.setNode(libVideo::NodeLink(node));
        instance.view(any<double>());
    }

    void useLightInstances()
    {
        const libVideo::NodeTable nodes(32);
        libVideo::SpotLightInstance spot;
        fuzz::check(!spot.createFromCollada(some<domInstance_light>(), nodes), "an instance of no light");
        libVideo::PointLightInstance point;
        point.createFromCollada(some<domInstance_light>());
        point.name();
    }

    void useLists()
    {
        const domCOLLADA* const root = pick<domCOLLADA>();
        libVideo::SceneResources pool;
        const unsigned cameras = libVideo::createCameraListFromCollada(root, m_documents.dae(), pool.cameraList);
        const unsigned points = libVideo::createPointLightListFromCollada(root, pool.pointLightList);
        const unsigned spots = libVideo::createSpotLightListFromCollada(root, m_documents.dae(), pool.spotLightList);
        const unsigned curves = libVideo::createAnimationListFromCollada(root, m_documents.dae(), pool.animationList);
        fuzz::check(root != nullptr || cameras + points + spots + curves == 0, "objects of no document");
    }

    void useMesh()
    {
        libVideo::Mesh mesh;
        fuzz::check(!mesh.createFromCollada(nullptr), "a mesh of nothing");
        mesh.createFromCollada(pick<domMesh>());
        libVideo::Geometry geometry;
        geometry.createFromCollada(pick<domGeometry>());
    }

    void useTriangles()
    {
        domTriangles* const element = pick<domTriangles>();
        libVideo::TriangleList triangles(element);
        fuzz::check(element != nullptr || triangles.count() == 0, "triangles of nothing");
        triangles.createFromCollada(pick<domTriangles>());
        libVideo::Primitive::VertexId first;
        const libVideo::Primitive::VertexId second = first;
        fuzz::check(first == second, "indices that differ from their copy");
    }

    void usePoints()
    {
        libVideo::PointCloud points(pick<domVertices>());
        points.createFromCollada(pick<domVertices>());
    }

    // A corner gives the same bytes when it is read again, whatever list of indices it is read from.
    void useInputs()
    {
        const domTriangles& triangles = some<domTriangles>();
        libVideo::InputLocalOffset input(triangles.getInput_array(), pick<domP>());
        const unsigned corner = index();
        const vesk::Array<unsigned char> first = input.data(corner);
        const vesk::Array<unsigned char> again = input.data(corner);
        fuzz::check(first.size() == again.size() && std::equal(first.begin(), first.end(), again.begin()),
                    "a corner with two sets of bytes");
        input.pIndex(index());
        libVideo::InputLocal local(some<domVertices>().getInput_array());
        local.data(index());
        local.createFromCollada(some<domVertices>().getInput_array());
    }

    void useSource()
    {
        const libVideo::SourceFloat empty;
        fuzz::check(!empty.isInitialized() && empty.id().empty() && empty.stride() == 0, "a source of nothing");
        libVideo::SourceFloat source(pick<domSource>());
        source[index()];
        source.createFromCollada(pick<domSource>());
        source.data(index());
        libVideo::createSourceFromCollada(daeURI(m_documents.dae(), text().data()));
    }

    void useAccessor()
    {
        libVideo::AccessorFloat accessor;
        fuzz::check(accessor.name().empty() && accessor.count() == 0, "an accessor of nothing");
        accessor[index()];
        accessor.createFromCollada(pick<domAccessor>());
        for (const libVideo::Data& data : accessor[index()]) {
            fuzz::check(data.dataType() == libVideo::DATA_TYPE_FLOAT || data.dataType() == libVideo::DATA_TYPE_FLOAT4X4,
                        "a component of another type");
            data.name();
        }
        accessor.createFromCollada(pick<domAccessor>());
    }

    void useMaterial()
    {
        libVideo::BlinnMaterial material;
        domProfile_COMMON* const profile = pick<domProfile_COMMON>();
        if (m_bytes.ConsumeBool()) {
            material.createFromCollada(daeSmartRef(pick<domProfile_COMMON::domTechnique::domBlinn>()), profile);
        } else {
            material.createFromCollada(daeSmartRef(pick<domProfile_COMMON::domTechnique::domPhong>()), profile);
        }
    }

    void useTexture()
    {
        const domProfile_COMMON::domTechnique::domPhong& shader = some<domProfile_COMMON::domTechnique::domPhong>();
        libVideo::Texture texture;
        const daeSmartRef<domCommon_color_or_texture_type> channels[] = {shader.getDiffuse(), shader.getEmission(),
                                                                         shader.getSpecular()};
        texture.createFromCollada(m_bytes.PickValueInArray(channels), pick<domProfile_COMMON>());
    }

    void useCurve()
    {
        libVideo::Animation animation(pick<domAnimation>(), m_documents.dae());
        animation.createFromCollada(pick<domAnimation>(), m_documents.dae());
        animation.applyAnimation(any<double>(), any<double>());
        animation.evolution(index());
    }

    // There is no matrix that an animation could change.
    void useEmptyTransformation()
    {
        libVideo::Transformation empty;
        empty.setAnimation(libVideo::AnimationHandle::make(pick<domAnimation>(), m_documents.dae()));
        empty.transformationAtTime(any<double>());
    }

    Documents& m_documents;
    FuzzedDataProvider m_bytes;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static Documents documents;
    const testSupport::LogCapture log;
    Host(documents, data, size).run();
    return 0;
}
