#include "SceneWalker.h"

#include "LogCapture.h"
#include "PrivateAccess.h"

#include <libVideo/SceneGraph.h>

#include <vesk/Exception.h>

#include <cstdint>
#include <exception>
#include <limits>
#include <set>
#include <vector>

namespace testSupport {

namespace {

using libVideo::Animation;
using libVideo::Evolution;
using libVideo::Node;
using libVideo::NodeHandle;
using libVideo::NodeLink;
using libVideo::Primitive;
using libVideo::Scene;
using libVideo::SceneResources;
using libVideo::Transformation;
using libVideo::TransformationHandle;
using Matrix4 = libMath::Matrix<float, 4, 4>;
using Vector3 = libMath::Vector<float, 3>;

PRIVATE_MEMBER(sceneResourcesField, SceneResources Scene::*, &Scene::m_resources)
PRIVATE_MEMBER(nodeTransformationsField, vesk::Array<TransformationHandle> Node::*, &Node::m_transformations)

constexpr std::size_t mostTimes = 16;

// One walk over one scene. All values that are read are added to one sum, so that the compiler cannot drop a read.
class Walker {
public:
    explicit Walker(Scene& scene) : m_scene(scene), m_resources(sceneResourcesField(scene)) {}

    std::string run()
    {
        collectNodes();
        collectTimes();
        readPool();
        readScene();
        for (const double time : m_times) {
            evaluate(time);
        }
        attempt([this] { m_scene.visualScene().transform(); });
        readScene();
        return m_fault;
    }

private:
    // Makes one call, which may throw an exception of the library.
    template <class Question>
    void attempt(const Question& question)
    {
        try {
            question();
        } catch (const vesk::Exception& exception) {
            read(exception.message());
            read(vesk::String(exception.what()));
        }
    }

    void fail(const std::string& words)
    {
        if (m_fault.empty()) {
            m_fault = words;
        }
    }

    void read(double number) { m_sum = m_sum + number; }
    void read(const vesk::String& text)
    {
        for (unsigned i = 0; i < text.size(); ++i) {
            read(text.data()[i]);
        }
        if (text.data()[text.size()] != '\0') {
            fail("a text without its end");
        }
    }
    void read(const Matrix4& matrix)
    {
        for (unsigned i = 0; i < 16; ++i) {
            read(static_cast<double>(matrix[i]));
        }
    }
    void read(const Vector3& vector)
    {
        for (unsigned i = 0; i < 3; ++i) {
            read(static_cast<double>(vector[i]));
        }
    }
    void read(const vesk::Array<double>& numbers)
    {
        for (const double number : numbers) {
            read(number);
        }
    }

    void collectNodes()
    {
        const Node& root = m_scene.visualScene().root();
        std::vector<const Node*> parents{&root};
        std::set<const Node*> seen{&root};
        for (std::size_t i = 0; i < parents.size(); ++i) {
            const Node* const parent = parents[i]; // the list grows below
            for (const NodeLink& child : parent->children()) {
                if (!child || !seen.insert(child.get()).second) {
                    fail("a child that is missing, or a child twice");
                    continue;
                }
                if (child->parent().get() != parent) {
                    fail("a child of another parent");
                }
                parents.push_back(child.get());
                m_nodes.push_back(child.get());
            }
        }
    }

    void collectTimes()
    {
        m_times = {
            -1.0, 0.0, 0.37, 1e9, std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()};
        for (const libVideo::AnimationHandle& animation : m_resources.animationList) {
            const unsigned keys = animation->getCount();
            if (keys == 0 || m_times.size() + 2 > mostTimes) {
                continue;
            }
            m_times.push_back(animation->evolution(0).time);
            m_times.push_back(animation->evolution(keys - 1).time);
        }
    }

    void readPool()
    {
        for (const libVideo::AnimationHandle& animation : m_resources.animationList) {
            readAnimation(*animation);
        }
        for (const libVideo::CameraHandle& camera : m_resources.cameraList) {
            attempt([&] {
                const libVideo::CameraHandle copy = camera->clone();
                readCamera(*copy);
                read(copy->transform(copy->projectionMatrix()));
            });
        }
        for (const libVideo::PointLightHandle& light : m_resources.pointLightList) {
            readLight(*light);
        }
        for (const libVideo::SpotLightHandle& light : m_resources.spotLightList) {
            readSpotLight(*light);
        }
    }

    void readAnimation(Animation& animation)
    {
        read(animation.getTargetNode());
        read(animation.getTargetTransform());
        read(animation.getCount());
        read(animation.animationLength());
        for (unsigned i = 0; i < animation.getCount(); ++i) {
            const Evolution key = animation.evolution(i);
            read(key.time);
            read(key.interpolation);
            read(key.values);
            read(key.inTangent);
            read(key.outTangent);
        }
        for (const double time : m_times) {
            attempt([&] { read(animation.applyAnimation(1.0, time)); });
            attempt([&] { read(animation.applyAnimation(Vector3{1.0f, 2.0f, 3.0f}, time)); });
            attempt([&] { read(animation.applyAnimation(Matrix4(), time)); });
        }
    }

    void readCamera(libVideo::Camera& camera)
    {
        read(camera.id());
        read(camera.name());
        read(camera.lookAtNode());
        read(camera.animationLength());
        read(camera.projectionMatrix());
        if (const auto* const perspective = dynamic_cast<const libVideo::PerspectiveCamera*>(&camera)) {
            read(perspective->lookAtNodeURI());
        }
    }

    template <class Light>
    void readLight(const Light& light)
    {
        read(light.id());
        read(light.color());
        read(static_cast<double>(light.constantAttenuation() + light.linearAttenuation() +
                                 light.quadraticAttenuation()));
    }

    void readSpotLight(const libVideo::SpotLight& light)
    {
        readLight(light);
        read(light.lookAtNodeId());
        read(static_cast<double>(light.innerConeAngle() + light.outerConeAngle() + light.falloffExponent()));
    }

    void readScene()
    {
        for (const Node* const node : m_nodes) {
            readNode(*node);
        }
        readInstances();
        for (const auto& bucket : m_scene.visualScene().geometryTable()) {
            readGeometry(*bucket.value, bucket.key);
        }
        for (const auto& bucket : m_scene.visualScene().blinnMaterialTable()) {
            read(bucket.key);
            readMaterial(bucket.value->component());
        }
    }

    void readNode(const Node& node)
    {
        read(node.id());
        read(node.sid());
        read(node.name());
        read(node.transform());
        read(node.position());
        read(node.up());
        read(node.animationLength() + (node.hasAnimation() ? 1.0 : 0.0));
        for (const TransformationHandle& transformation : nodeTransformationsField(node)) {
            read(transformation->sid());
            if (transformation->transformation()) {
                read(*transformation->transformation());
            }
            read(transformation->animation() ? transformation->animation()->animationLength() : 0.0);
        }
    }

    void readInstances()
    {
        libVideo::VisualScene& scene = m_scene.visualScene();
        for (const libVideo::CameraInstanceHandle& instance : scene.cameraList()) {
            readPlace(*instance);
            read(instance->cameraId());
            read(instance->view());
            attempt([&] { read(instance->projection()); });
            attempt([&] { readCamera(*instance->camera()); });
            readLink(instance->lookAtNode());
        }
        for (const libVideo::PointLightInstanceHandle& instance : scene.pointLightList()) {
            readPlace(*instance);
            readLight(*instance->pointLight());
        }
        for (const libVideo::SpotLightInstanceHandle& instance : scene.spotLightList()) {
            readPlace(*instance);
            readSpotLight(*instance->spotLight());
            readLink(instance->lookatNode());
            read(instance->lookAtVector());
        }
    }

    void readPlace(const libVideo::Instance& instance)
    {
        read(instance.sid());
        read(instance.name());
        read(instance.nodeId());
        if (!instance.node()) {
            fail("an instance without a node");
        }
        readLink(instance.node());
    }

    void readLink(const NodeLink& node)
    {
        if (node) {
            read(node->id());
            read(node->transform());
        }
    }

    void readGeometry(const libVideo::Geometry& geometry, const vesk::String& key)
    {
        read(geometry.name());
        read(geometry.mesh().id());
        if (geometry.id() != key) {
            fail("a geometry under another id");
        }
        for (const NodeHandle& node : geometry.nodes()) {
            read(node->id());
        }
        for (const auto& primitive : geometry.mesh().primitives()) {
            readPrimitive(*primitive);
        }
    }

    void readPrimitive(Primitive& primitive)
    {
        read(primitive.id());
        read(primitive.material());
        read(primitive.type());
        read(primitive.vertexPerPrimitive());
        readLayout(primitive);
        readVertices(primitive);
        const unsigned corners = primitive.indexBuffer().size();
        const bool isList = primitive.type() == libVideo::PRIMITIVE_TRIANGLE_LIST;
        if (isList && primitive.totalByteSize() != 0 && corners / 3 != primitive.count()) {
            fail("a triangle list of another number of corners than it counts");
        }
        // A source without params adds bytes to the stream but none to the layout, so there may be more than counted
        // here.
        const std::uint64_t bytes = primitive.bytesPerVertex();
        for (const unsigned index : primitive.indexBuffer()) {
            if (primitive.totalByteSize() != 0 && (std::uint64_t(index) + 1) * bytes > primitive.totalByteSize()) {
                fail("an index without a vertex");
            }
        }
        vesk::Buffer<unsigned char> vertex;
        for (const unsigned corner : {0u, 1u, corners / 2, corners - 1, corners, primitive.count(), 0xFFFFFFFFu}) {
            attempt([&] {
                const bool isRead = primitive.vertex(corner, vertex);
                for (std::uint64_t i = 0; isRead && i < vertex.size(); ++i) {
                    read(vertex[i]);
                }
            });
        }
    }

    void readLayout(const Primitive& primitive)
    {
        unsigned offset = 0;
        for (const libVideo::VertexLayout& layout : primitive.vertexLayout()) {
            read(layout.semantic);
            read(layout.dataType);
            read(layout.reserved);
            if (layout.byteOffset != offset) {
                fail("an attribute that does not follow the one before it");
            }
            offset += layout.byteSize;
        }
        if (offset != primitive.bytesPerVertex()) {
            fail("attributes that do not fill a vertex");
        }
        libVideo::VertexLayout found;
        if (primitive.positionLayout(found) != primitive.hasPosition() ||
            primitive.normalLayout(found) != primitive.hasNormal() ||
            primitive.textureCoordLayout(found) != primitive.hasTextureCoord()) {
            fail("an attribute that is there and is not");
        }
    }

    void readVertices(Primitive& primitive)
    {
        const unsigned char* const bytes = primitive.vertexBuffer().get();
        unsigned sum = 0;
        for (unsigned i = 0; i < primitive.totalByteSize(); ++i) {
            sum += bytes[i];
        }
        read(sum);
    }

    void readMaterial(const libVideo::BlinnMaterial::Component& material)
    {
        read(static_cast<double>(material.shininess + material.transparency));
        for (const float* const color :
             {material.emission, material.ambient, material.diffuse, material.specular, material.reflective}) {
            read(static_cast<double>(color[0] + color[1] + color[2]));
        }
        for (const auto* const texture : {&material.emissionTexture, &material.ambientTexture, &material.diffuseTexture,
                                          &material.specularTexture, &material.reflectiveTexture}) {
            if (*texture) {
                read((*texture)->textureFile());
                read((*texture)->sampler() != nullptr ? (*texture)->sampler()->typeID() : 0);
                read((*texture)->texture() != nullptr ? (*texture)->texture()->typeID() : 0);
            }
        }
    }

    void evaluate(double time)
    {
        for (const Node* const constant : m_nodes) {
            Node& node = const_cast<Node&>(*constant); // the scene's nodes are not const
            for (const TransformationHandle& transformation : nodeTransformationsField(node)) {
                attempt([&] { read(*transformation->transformationAtTime(time)); });
            }
            attempt([&] { read(node.transform(time)); });
            attempt([&] { read(node.position(time)); });
            attempt([&] { read(node.up(time)); });
        }
        for (const libVideo::CameraInstanceHandle& instance : m_scene.visualScene().cameraList()) {
            attempt([&] { read(instance->view(time)); });
            attempt([&] { read(instance->projection(time)); });
            attempt([&] { instance->setAspectRatio(time); });
        }
        for (const libVideo::SpotLightInstanceHandle& instance : m_scene.visualScene().spotLightList()) {
            attempt([&] { read(instance->lookAtVector()); });
        }
    }

    Scene& m_scene;
    const SceneResources& m_resources;
    std::vector<const Node*> m_nodes; // parents before their children
    std::vector<double> m_times;
    std::string m_fault;
    volatile double m_sum = 0.0;
};

} // namespace

std::string walkScene(Scene& scene)
{
    return Walker(scene).run();
}

LoadOutcome loadAndWalk(Scene& scene, const std::string& path)
{
    const LogCapture log;
    LoadOutcome outcome;
    try {
        try {
            outcome.isLoaded = scene.createFromCollada(vesk::String(path.c_str()));
        } catch (const vesk::Exception&) {
            outcome.hasThrown = true;
        }
        outcome.lineCount = static_cast<unsigned>(log.lines().size());
        if (!outcome.isLoaded && !outcome.hasThrown && outcome.lineCount == 0) {
            outcome.fault = "refused without a line";
            return outcome;
        }
        outcome.fault = walkScene(scene);
    } catch (const std::exception& exception) {
        outcome.fault = std::string("a foreign exception: ") + exception.what();
    } catch (...) {
        outcome.fault = "a foreign exception";
    }
    return outcome;
}

} // namespace testSupport
