// Any sequence of a host's actions on loaded scenes: copies, evaluations at any time, setting values. The scenes are
// loaded once, so a sequence is cheap.

#include "Check.h"

#include "support/LogCapture.h"
#include "support/PrivateAccess.h"

#include <libVideo/SceneGraph.h>

#include <vesk/Exception.h>

#include <fuzzer/FuzzedDataProvider.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <memory>
#include <set>
#include <vector>

namespace {

using libVideo::AnimationHandle;
using libVideo::CameraHandle;
using libVideo::Node;
using libVideo::NodeLink;
using libVideo::Scene;
using Matrix = libMath::Matrix<float, 4, 4>;
using vesk::String;

PRIVATE_MEMBER(resourcesOf, libVideo::SceneResources Scene::*, &Scene::m_resources)
PRIVATE_MEMBER(turnUp, void (Scene::*)(domUpAxisType), &Scene::transformToYUP)
using FoldTransform = void (Node::*)(const daeTArray<double>&);
PRIVATE_MEMBER(translate, FoldTransform, &Node::translate)
PRIVATE_MEMBER(rotate, FoldTransform, &Node::rotate)
PRIVATE_MEMBER(scale, FoldTransform, &Node::scale)
PRIVATE_MEMBER(transform, FoldTransform, &Node::transform)
PRIVATE_MEMBER(setId, void (Node::*)(const String&), &Node::setId)

bool hasSameBits(const Matrix& a, const Matrix& b)
{
    return std::memcmp(&a[0], &b[0], 16 * sizeof(float)) == 0;
}

// The content of the seeds.
struct Scenes {
    Scenes()
    {
        // In order of their names, so that an input means the same everywhere.
        const std::filesystem::directory_iterator folder(SEED_FOLDER);
        const std::set<std::filesystem::path> files(begin(folder), end(folder));
        for (const std::filesystem::path& file : files) {
            auto scene = std::make_unique<Scene>();
            try {
                if (scene->createFromCollada(file.c_str())) {
                    collect(*scene);
                    all.push_back(std::move(scene));
                }
            } catch (const vesk::Exception&) {
                continue; // the load of this seed throws
            }
        }
        fuzz::check(!nodes.empty() && !cameras.empty() && !geometries.empty(), "seeds without a scene");
    }

    void collect(Scene& scene)
    {
        const libVideo::VisualScene& visual = scene.visualScene();
        std::vector<NodeLink> found;
        for (const NodeLink& child : visual.root().children()) {
            found.push_back(child);
        }
        for (std::size_t i = 0; i < found.size(); ++i) {
            for (const NodeLink& child : found[i]->children()) {
                found.push_back(child);
            }
        }
        nodes.insert(nodes.end(), found.begin(), found.end());
        for (const libVideo::CameraInstanceHandle& camera : visual.cameraList()) {
            cameras.push_back(camera.get());
        }
        for (const libVideo::SpotLightInstanceHandle& light : visual.spotLightList()) {
            spotLights.push_back(light.get());
        }
        for (const libVideo::GeometryTable::Bucket& bucket : visual.geometryTable()) {
            geometries.push_back(bucket.value.get());
        }
        for (const AnimationHandle& animation : resourcesOf(scene).animationList) {
            animations.push_back(animation);
        }
    }

    std::vector<std::unique_ptr<Scene>> all;
    std::vector<NodeLink> nodes;
    std::vector<libVideo::CameraInstance*> cameras;
    std::vector<libVideo::SpotLightInstance*> spotLights;
    std::vector<libVideo::Geometry*> geometries;
    std::vector<AnimationHandle> animations;
};

// A host that takes its next step from the next bytes.
class Host {
public:
    Host(const Scenes& scenes, const std::uint8_t* data, std::size_t size) : m_scenes(scenes), m_bytes(data, size) {}

    void run()
    {
        constexpr void (Host::*steps[])() = {&Host::useNode,           &Host::foldNode,          &Host::moveNode,
                                             &Host::useScene,          &Host::useTransformation, &Host::useCamera,
                                             &Host::useCameraInstance, &Host::useSpotLight,      &Host::useMesh,
                                             &Host::useTexts,          &Host::useEmptyObjects};
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
    double number() { return m_bytes.ConsumeBool() ? m_bytes.ConsumeIntegralInRange(-9, 9) : any<double>(); }

    template <class Number>
    Number any()
    {
        Number value = 0;
        m_bytes.ConsumeData(&value, sizeof(value));
        return value;
    }

    String text() { return String(m_bytes.ConsumeRandomLengthString(12).c_str()); }

    template <class Item>
    Item pick(const std::vector<Item>& items)
    {
        return items.empty() || m_bytes.ConsumeIntegralInRange(0, 7) == 0
                   ? Item()
                   : items[m_bytes.ConsumeIntegralInRange<std::size_t>(0, items.size() - 1)];
    }

    // The same time gives the same matrix.
    void useNode()
    {
        const NodeLink link = pick(m_scenes.nodes);
        Node node = link ? *link : Node();
        const double time = number();
        const Matrix first = node.transform(time);
        node.position(number());
        node.up(number());
        fuzz::check(hasSameBits(first, node.transform(time)), "a time with two matrices");
        const Matrix updated = node.updateTransform();
        fuzz::check(hasSameBits(updated, node.transform()), "an update that is not kept");
        node.animationLength();
        node.position();
        node.up();
    }

    daeTArray<double> numbers()
    {
        daeTArray<double> values;
        for (unsigned count = m_bytes.ConsumeIntegralInRange(0u, 17u); count > 0; --count) {
            values.append(number());
        }
        return values;
    }

    // As the load does with the content of a node.
    void foldNode()
    {
        const NodeLink link = pick(m_scenes.nodes);
        Node node = link ? *link : Node();
        const daeTArray<double> values = numbers();
        switch (m_bytes.ConsumeIntegralInRange(0, 3)) {
        case 0:
            translate(node, values);
            break;
        case 1:
            rotate(node, values);
            break;
        case 2:
            scale(node, values);
            break;
        default:
            transform(node, values);
            break;
        }
        setId(node, text());
        node.transform();
    }

    // A loaded scene does not load a second document.
    void useScene()
    {
        Scene& scene = *m_scenes.all[m_bytes.ConsumeIntegralInRange<std::size_t>(0, m_scenes.all.size() - 1)];
        turnUp(scene, static_cast<domUpAxisType>(m_bytes.ConsumeIntegralInRange(0, 3)));
        fuzz::check(!scene.createFromCollada(SEED_FOLDER), "a scene that is loaded twice");
    }

    void moveNode()
    {
        const NodeLink link = pick(m_scenes.nodes);
        Node node = link ? *link : Node();
        const unsigned childCount = node.children().size();
        const NodeLink other = pick(m_scenes.nodes);
        node.setParent(other);
        node.addChild(other);
        fuzz::check(node.parent() == other && node.children().size() == childCount + 1, "a child that is not there");
        const bool wasAnimated = node.hasAnimation();
        const bool isAdded = node.addAnimation(pick(m_scenes.animations));
        fuzz::check(node.hasAnimation() == (wasAnimated || isAdded), "an animation that came or went");
    }

    template <class Kind>
    void useKind()
    {
        Kind made(numbers(), text());
        const AnimationHandle animation = pick(m_scenes.animations);
        made.setAnimation(animation);
        made.transformationAtTime(number());
        Kind copy(made);
        fuzz::check(copy.transformation() == made.transformation(), "a copy with a matrix of its own");
        fuzz::check(copy.animation() == animation, "a copy without the animation");
        copy.setTransformation(numbers());
        copy.setSid(text());
        made = copy;
        fuzz::check(hasSameBits(*made.transformation(), *copy.transformation()), "an assignment that changes a matrix");
    }

    template <class Kind>
    void useFixedKind()
    {
        double values[9];
        for (double& value : values) {
            value = number();
        }
        Kind made(m_bytes.ConsumeBool() ? values : nullptr, text());
        fuzz::check(made.setTransformation(values), "values that are refused");
        const Kind copy(made);
        made.transformation();
    }

    void useTransformation()
    {
        constexpr void (Host::*kinds[])() = {
            &Host::useKind<libVideo::Transformation>, &Host::useKind<libVideo::Translation>,
            &Host::useKind<libVideo::Rotation>,       &Host::useKind<libVideo::Scale>,
            &Host::useFixedKind<libVideo::View>,      &Host::useFixedKind<libVideo::Skew>};
        (this->*m_bytes.PickValueInArray(kinds))();
    }

    void useCamera()
    {
        libVideo::CameraInstance* const instance = pick(m_scenes.cameras);
        if (instance == nullptr || !instance->camera()) {
            return;
        }
        const CameraHandle camera = instance->camera()->clone();
        camera->setAspectRatio(number());
        const double time = number();
        const Matrix first = camera->projectionMatrix(time);
        fuzz::check(hasSameBits(first, camera->projectionMatrix(time)), "a time with two projections");
        camera->animationLength();
        camera->addAnimation(pick(m_scenes.animations));
        camera->projectionMatrix(number());
        camera->transform(first);
    }

    void useCameraInstance()
    {
        const libVideo::CameraInstance* const instance = pick(m_scenes.cameras);
        libVideo::CameraInstance camera = instance != nullptr ? *instance : libVideo::CameraInstance();
        const NodeLink node = pick(m_scenes.nodes);
        const Matrix view = camera.setLookAtNode(node);
        fuzz::check(camera.lookAtNode() == node && hasSameBits(view, camera.view()), "a view that is not kept");
        camera.view(number());
        camera.cameraId();
        camera.name();
        camera.nodeId();
        camera.setNode(node);
        camera.setAspectRatio(number());
        camera.projection(number());
        camera.projection();
    }

    void useSpotLight()
    {
        const libVideo::SpotLightInstance* const instance = pick(m_scenes.spotLights);
        libVideo::SpotLightInstance light = instance != nullptr ? *instance : libVideo::SpotLightInstance();
        light.setLookatNode(pick(m_scenes.nodes));
        light.lookAtVector();
        light.name();
        light.nodeId();
    }

    void useMesh()
    {
        const libVideo::Geometry* const loaded = pick(m_scenes.geometries);
        libVideo::Geometry geometry = loaded != nullptr ? *loaded : libVideo::Geometry();
        const unsigned corner = any<unsigned>();
        for (const libVideo::SharedHandle<libVideo::Primitive>& primitive : geometry.mesh().primitives()) {
            vesk::Buffer<unsigned char> bytes;
            for (const unsigned index : {corner, corner % (primitive->indexBuffer().size() + 1)}) {
                const bool isThere = primitive->vertex(index, bytes);
                fuzz::check(!isThere || bytes.size() == primitive->bytesPerVertex(), "a vertex of another size");
            }
            libVideo::VertexLayout layout;
            fuzz::check(primitive->hasPosition() == primitive->positionLayout(layout), "positions without a layout");
            fuzz::check(primitive->hasNormal() == primitive->normalLayout(layout), "normals without a layout");
            fuzz::check(primitive->hasTextureCoord() == primitive->textureCoordLayout(layout),
                        "texels without a layout");
        }
        const unsigned nodeCount = geometry.nodes().size();
        const auto node = libVideo::NodeHandle::make();
        geometry.addNode(node);
        geometry.addNode(node); // once for an id
        fuzz::check(geometry.nodes().size() <= nodeCount + 1, "a node that is listed twice");
        geometry.addNode(libVideo::NodeHandle());
    }

    void useTexts()
    {
        libVideo::VertexLayout layout;
        const libVideo::VertexSemantic semantic = libVideo::inputSemanticToVertexSemantic(text(), layout);
        fuzz::check(semantic == layout.semantic, "a semantic that is not stored");
        const libVideo::VisualScene& scene =
            m_scenes.all[m_bytes.ConsumeIntegralInRange<std::size_t>(0, m_scenes.all.size() - 1)]->visualScene();
        scene.geometryTable().lookup(text());
        scene.blinnMaterialTable().lookup(text());
    }

    // Without a document there is no result, but no crash either.
    void useEmptyObjects()
    {
        fuzz::check(libVideo::PointLightInstance().nodeId().empty(), "an empty light with a node");
        fuzz::check(libVideo::Mesh().primitives().size() == 0, "an empty mesh with primitives");
        fuzz::check(libVideo::SourceFloat().count() == 0, "an empty source with records");
        const Scene scene;
        fuzz::check(scene.visualScene().root().children().size() == 0, "an empty scene with nodes");
        if (m_bytes.ConsumeBool()) {
            libVideo::CameraInstance().projection();
        } else {
            libVideo::PointLightInstance().name();
        }
    }

    const Scenes& m_scenes;
    FuzzedDataProvider m_bytes;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const Scenes scenes;
    const testSupport::LogCapture log;
    Host(scenes, data, size).run();
    return 0;
}
