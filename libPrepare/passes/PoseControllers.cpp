#include "Passes.h"

#include <libPrepare/document/Motion.h>
#include <libPrepare/document/Numbers.h>
#include <libPrepare/document/Tree.h>
#include <libPrepare/geometry/GeometryCopier.h>
#include <libPrepare/geometry/Joints.h>
#include <libPrepare/geometry/Sources.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <memory>
#include <unordered_map>
#include <unordered_set>

namespace libPrepare {

namespace {

using Values = std::vector<double>; // three numbers a record

constexpr std::size_t longestChain = 64; // of skins and morphs that take each other for their source
constexpr std::size_t maxSkeletons = 64; // that an instance names

// The input of a primitive with one semantic.
struct Attribute {
    std::shared_ptr<const Values> values; // null if it has none
    bool isOfVertices = false;            // an input of `<vertices>`
    pugi::xml_node input;
};

// A mesh for blending: its positions, and the readable normals of each primitive.
struct Shape {
    std::vector<pugi::xml_node> primitives;
    pugi::xml_node vertices;
    Values positions;
    std::vector<std::shared_ptr<const Values>> normals;
};

Vector3 record(const Values& values, std::size_t index)
{
    return {values[3 * index], values[3 * index + 1], values[3 * index + 2]};
}

bool holdsFaces(pugi::xml_node primitive)
{
    return !is(primitive, "lines") && !is(primitive, "linestrips");
}

// The index lists of a primitive, those of polygons with holes included.
std::vector<pugi::xml_node> indexListsOf(pugi::xml_node primitive)
{
    std::vector<pugi::xml_node> result;
    for (const pugi::xml_node child : primitive.children()) {
        if (is(child, "p")) {
            result.push_back(child);
        }
        for (const pugi::xml_node loop : is(child, "ph") ? child.children() : pugi::xml_node().children()) {
            if (is(loop, "p") || is(loop, "h")) {
                result.push_back(loop);
            }
        }
    }
    return result;
}

Vector3 unit(const Vector3& vector)
{
    const double length = std::hypot(vector[0], vector[1], vector[2]);
    return length > 0 ? Vector3{vector[0] / length, vector[1] / length, vector[2] / length} : vector;
}

class Poser {
public:
    explicit Poser(Document& document) : m_document(document), m_sources(document), m_copier(document) {}

    void run()
    {
        const pugi::xml_node scene = shownScene(m_document);
        std::vector<pugi::xml_node> instances;
        for (const pugi::xml_node node : nodesIn(scene)) {
            for (const pugi::xml_node instance : node.children("instance_controller")) {
                instances.push_back(instance);
            }
        }
        if (instances.empty()) {
            return;
        }
        m_motion = std::make_unique<Motion>(m_document);
        m_pose = std::make_unique<Pose>(*m_motion, m_document.options().time);
        m_joints = std::make_unique<Joints>(m_document, scene);
        for (const pugi::xml_node instance : instances) {
            poseInstance(scene, instance);
        }
        m_document.sources().forget();
    }

private:
    void poseInstance(pugi::xml_node scene, pugi::xml_node instance)
    {
        std::vector<pugi::xml_node> chain; // of skins and morphs, the outermost first
        pugi::xml_node base = m_document.resolve(instance.attribute("url").value(), {"controller"});
        while (is(base, "controller") && chain.size() < longestChain &&
               std::find(chain.begin(), chain.end(), bodyOf(base)) == chain.end()) {
            const pugi::xml_node body = bodyOf(base);
            chain.push_back(body);
            base = m_document.resolve(body.attribute("source").value(), {"geometry", "controller"});
        }
        if (chain.empty() || !is(base, "geometry")) {
            m_document.lost(instance, "controller", "A controller leads to no geometry.",
                            "Nothing is shown for it. Check its source.");
            return;
        }
        Shape shape = shapeOf(base);
        for (auto body = chain.rbegin(); body != chain.rend(); ++body) {
            if (is(*body, "morph")) {
                applyMorph(*body, shape);
            } else if (*body != chain.front()) {
                m_document.lost(*body, "skin", "A skin that another controller takes for its source is not applied.",
                                "Swap the two: the skin takes the morph for its source.");
            }
        }
        const bool isSkin = is(chain.front(), "skin");
        const std::uint64_t size = 32 * static_cast<std::uint64_t>(shape.positions.size());
        pugi::xml_node geometry =
            shape.primitives.empty() || !m_document.takeBytes(size) ? pugi::xml_node() : m_copier.copy(base);
        if (!geometry) {
            m_document.lost(instance, "controller",
                            "The mesh of a controller cannot be read, or would make the result too big.",
                            "Nothing is shown for it.");
            return;
        }
        const std::vector<Matrix4> matrices =
            isSkin ? skinMatrices(chain.front(), instance, shape.positions.size() / 3) : std::vector<Matrix4>();
        write(shape, base, geometry, matrices);
        for (const pugi::xml_node body : chain) {
            const std::string name = body.name();
            m_document.rewritten(body, name.c_str(), "A <" + name + "> is not read.",
                                 "Its pose is the geometry #" + std::string(geometry.attribute("id").value()) +
                                     " now.");
        }
        showInstead(scene, instance, geometry, isSkin);
    }

    static pugi::xml_node bodyOf(pugi::xml_node controller)
    {
        const pugi::xml_node skin = controller.child("skin");
        return skin ? skin : controller.child("morph");
    }

    // The positions that all primitives of a mesh share, and the normals of each.
    Shape shapeOf(pugi::xml_node geometry)
    {
        Shape shape;
        for (const pugi::xml_node primitive : primitivesOf(geometry)) {
            const std::vector<Input> inputs = inputsOf(primitive);
            const SourceLayout* const positions = positionsOf(m_document, m_sources, inputs);
            if (positions == nullptr || !holdsFaces(primitive)) {
                continue;
            }
            if (shape.primitives.empty()) {
                shape.positions = *wide(*positions);
                shape.vertices = verticesOf(inputs);
            }
            shape.primitives.push_back(primitive);
            shape.normals.push_back(attributeOf(inputs, "NORMAL").values);
        }
        return shape;
    }

    pugi::xml_node verticesOf(const std::vector<Input>& inputs)
    {
        const Input* const vertex = firstInput(inputs, "VERTEX");
        return vertex == nullptr ? pugi::xml_node()
                                 : m_document.resolve(vertex->element.attribute("source").value(), {"vertices"});
    }

    // The records of a source, three numbers each. Repeated calls return the same object.
    std::shared_ptr<const Values> wide(const SourceLayout& layout)
    {
        std::shared_ptr<const Values>& known = m_wide[layout.source.hash_value()];
        if (!known) {
            const std::vector<double>& values = m_sources.values(layout);
            Values result(3 * layout.count);
            for (std::size_t i = 0; i < layout.count; ++i) {
                for (std::size_t axis = 0; axis < std::min<std::size_t>(layout.width(), 3); ++axis) {
                    result[3 * i + axis] = values[i * layout.width() + axis];
                }
            }
            known = std::make_shared<const Values>(std::move(result));
        }
        return known;
    }

    // The lowest of several sets; an input of the primitive takes precedence over one of `<vertices>`.
    Attribute attributeOf(const std::vector<Input>& inputs, std::string_view semantic)
    {
        Attribute result;
        const Input* best = nullptr;
        for (const Input& input : inputs) {
            if (input.semantic == semantic && (best == nullptr || input.set < best->set)) {
                const SourceLayout* const layout = layoutOf(input);
                if (layout != nullptr) {
                    best = &input;
                    result = {wide(*layout), false, input.element};
                }
            }
        }
        for (const Input& input : best == nullptr ? inputsOf(verticesOf(inputs)) : std::vector<Input>()) {
            if (input.semantic == semantic) {
                const SourceLayout* const layout = layoutOf(input);
                return layout == nullptr ? Attribute() : Attribute{wide(*layout), true, input.element};
            }
        }
        return result;
    }

    const SourceLayout* layoutOf(const Input& input)
    {
        const SourceLayout* const layout =
            m_sources.find(m_document.resolve(input.element.attribute("source").value(), {"source"}));
        return layout != nullptr && layout->width() > 0 ? layout : nullptr;
    }

    // The weighted targets of a morph.
    struct Blend {
        struct Target {
            const Shape* shape;
            double weight;
        };
        std::vector<Target> targets; // each once
        bool isRelative = false;

        // @param valuesOf returns the values of a target; null or another number of values if none fit
        template <class ValuesOf>
        Values of(const Values& base, const ValuesOf& valuesOf) const
        {
            double rest = 1;
            Values sum(base.size(), 0.0);
            for (const Target& target : targets) {
                const Values* const values = valuesOf(*target.shape);
                if (values == nullptr || values->size() != base.size()) {
                    continue;
                }
                rest -= isRelative ? 0 : target.weight;
                for (std::size_t i = 0; i < sum.size(); ++i) {
                    sum[i] += target.weight * (*values)[i];
                }
            }
            for (std::size_t i = 0; i < sum.size(); ++i) {
                sum[i] += rest * base[i];
            }
            return sum;
        }
    };

    void applyMorph(pugi::xml_node morph, Shape& shape)
    {
        pugi::xml_node targets;
        pugi::xml_node weights;
        for (const Input& input : inputsOf(morph.child("targets"))) {
            const pugi::xml_node source = m_document.resolve(input.element.attribute("source").value(), {"source"});
            if (input.semantic == "MORPH_TARGET") {
                targets = source;
            } else if (input.semantic == "MORPH_WEIGHT") {
                weights = source;
            }
        }
        const SourceLayout* const layout = m_sources.find(weights);
        if (layout == nullptr) {
            return;
        }
        if (m_motion->isAnimated(layout->array)) {
            m_document.lost(morph, "morph", "The weights of a morph are animated.",
                            "The mesh keeps one pose. Choose its time.");
        }
        Blend blend;
        blend.targets = readTargets(morph, targets, *layout);
        blend.isRelative = std::string_view(morph.attribute("method").value()) == "RELATIVE";
        shape.positions = blend.of(shape.positions, [](const Shape& target) { return &target.positions; });
        blendNormals(blend, shape);
    }

    // The targets that a morph names, with their weights.
    std::vector<Blend::Target> readTargets(pugi::xml_node morph, pugi::xml_node names, const SourceLayout& weights)
    {
        const std::optional<double> start = m_document.isAtStart() ? std::optional(0.0) : std::nullopt;
        const std::optional<double> time = m_document.options().time;
        const std::vector<double> all = m_motion->values(weights.array, time ? time : start);
        std::vector<Blend::Target> targets;
        std::unordered_map<const Shape*, std::size_t> places; // among the targets: one may come more than once
        std::size_t place = 0;
        for (const std::string& name : wordRecords(m_document, names)) {
            const std::size_t at =
                weights.offset + place * weights.stride + (weights.columns.empty() ? 0 : weights.columns.front());
            if (place++ >= weights.count || at >= all.size()) {
                break;
            }
            const pugi::xml_node geometry = m_document.byId(name, {"geometry"});
            if (!geometry) {
                m_document.lost(morph, "morph", "A morph names a target that is not there: " + name + '.',
                                "It is passed over.");
                continue;
            }
            const auto [known, isNew] = m_targets.try_emplace(geometry.hash_value());
            if (isNew) {
                known->second = std::make_unique<Shape>(shapeOf(geometry));
            }
            const auto [target, isFirst] = places.try_emplace(known->second.get(), targets.size());
            if (isFirst) {
                targets.push_back({known->second.get(), all[at]});
            } else {
                targets[target->second].weight += all[at];
            }
        }
        return targets;
    }

    // Primitives often share their normals and those of the targets. Then they also share the result.
    void blendNormals(const Blend& blend, Shape& shape)
    {
        std::map<std::vector<const Values*>, std::shared_ptr<const Values>> made;
        for (std::size_t i = 0; i < shape.normals.size(); ++i) {
            if (!shape.normals[i]) {
                continue;
            }
            std::vector<const Values*> key = {shape.normals[i].get()};
            const auto valuesOf = [&](const Shape& target) {
                return i < target.normals.size() ? target.normals[i].get() : nullptr;
            };
            for (const Blend::Target& target : blend.targets) {
                key.push_back(valuesOf(*target.shape));
            }
            std::shared_ptr<const Values>& blended = made[key];
            if (!blended) {
                m_held.push_back(shape.normals[i]); // keeps the key's address from being used again
                Values sum = blend.of(*shape.normals[i], valuesOf);
                // Faces between the points are compared by direction only.
                for (std::size_t k = 0; 3 * k < sum.size(); ++k) {
                    put(sum, k, unit(record(sum, k)));
                }
                blended = std::make_shared<const Values>(std::move(sum));
            }
            shape.normals[i] = blended;
        }
    }

    // The matrix that takes each vertex of the source to the world. The node of the instance does not matter.
    std::vector<Matrix4> skinMatrices(pugi::xml_node skin, pugi::xml_node instance, std::size_t count)
    {
        const pugi::xml_node shapeElement = skin.child("bind_shape_matrix");
        const Matrix4 shape = shapeElement ? transformMatrix("matrix", numbersOf(shapeElement)) : identity();
        std::vector<Matrix4> result(count, shape);
        pugi::xml_node jointSource;
        const SourceLayout* inverse = nullptr;
        for (const Input& input : inputsOf(skin.child("joints"))) {
            const pugi::xml_node source = m_document.resolve(input.element.attribute("source").value(), {"source"});
            if (input.semantic == "JOINT") {
                jointSource = source;
            } else if (input.semantic == "INV_BIND_MATRIX") {
                inverse = m_sources.find(source);
            }
        }
        if (!jointSource || inverse == nullptr || inverse->width() != 16) {
            m_document.lost(skin, "skin", "A skin has no joints, or none with their inverse bind matrices.",
                            "Its mesh stands in the bind shape.");
            return result;
        }
        std::vector<pugi::xml_node> skeletons;
        for (const pugi::xml_node skeleton : instance.children("skeleton")) {
            const pugi::xml_node root = m_document.resolve(textOf(skeleton), {"node"});
            if (root && skeletons.size() < maxSkeletons) {
                skeletons.push_back(root);
            }
        }
        const std::vector<double> inverses = m_sources.values(*inverse);
        std::vector<Matrix4> moves;
        bool isAnimated = false;
        std::unordered_set<std::size_t> seen;
        for (const std::string& name : jointNames(m_document, *m_joints, jointSource)) {
            const pugi::xml_node joint =
                m_joints->find(name, skeletons, static_cast<bool>(jointSource.child("IDREF_array")));
            Matrix4 move = identity();
            if (!joint) {
                m_document.lost(skin, "joint", "A skin names a joint that is not there: " + name + '.',
                                "Its vertices stay where they are in the bind shape.");
            } else if (moves.size() < inverse->count) {
                const double* const values = inverses.data() + 16 * moves.size();
                move = m_pose->world(joint) * transformMatrix("matrix", std::vector<double>(values, values + 16));
            }
            for (pugi::xml_node node = joint; is(node, "node") && !isAnimated && seen.insert(node.hash_value()).second;
                 node = node.parent()) {
                isAnimated = m_motion->isNodeAnimated(node);
            }
            moves.push_back(move);
        }
        if (isAnimated) {
            m_document.lost(skin, "skin", "The joints of a skin are animated.",
                            "The mesh keeps one pose. Choose its time.");
        }
        blend(skin.child("vertex_weights"), moves, shape, result);
        return result;
    }

    // Weights are normalized; a vertex without any stays in the bind shape, and so does the share of joint -1.
    void blend(pugi::xml_node block, const std::vector<Matrix4>& moves, const Matrix4& shape,
               std::vector<Matrix4>& result)
    {
        const std::vector<Input> inputs = inputsOf(block);
        const Input* const joint = firstInput(inputs, "JOINT");
        const Input* const weight = firstInput(inputs, "WEIGHT");
        const SourceLayout* const layout = weight == nullptr ? nullptr : layoutOf(*weight);
        if (joint == nullptr || layout == nullptr) {
            return;
        }
        const std::vector<double>& weights = m_sources.values(*layout);
        const std::size_t stride = strideOf(inputs);
        const std::vector<long long> counts = integers(textOf(block.child("vcount")));
        const std::vector<long long> entries = integers(textOf(block.child("v")));
        std::size_t at = 0;
        for (std::size_t vertex = 0; vertex < std::min(counts.size(), result.size()); ++vertex) {
            double total = 0;
            Matrix4 sum = identity();
            for (unsigned i = 0; i < 16; ++i) {
                sum[i] = 0;
            }
            for (long long i = 0; i < counts[vertex] && at + stride <= entries.size(); ++i, at += stride) {
                const long long bone = entries[at + joint->offset];
                const long long index = entries[at + weight->offset];
                const bool isThere = bone >= -1 && bone < static_cast<long long>(moves.size()) && index >= 0 &&
                                     static_cast<std::size_t>(index) < layout->count;
                const double share =
                    isThere ? weights[static_cast<std::size_t>(index) * layout->width()] : std::nan("");
                if (!std::isfinite(share)) {
                    continue;
                }
                const Matrix4& move = bone < 0 ? m_still : moves[static_cast<std::size_t>(bone)];
                for (unsigned k = 0; k < 16; ++k) {
                    sum[k] += share * move[k];
                }
                total += share;
            }
            if (std::abs(total) > 1e-12) {
                for (unsigned k = 0; k < 16; ++k) {
                    sum[k] /= total;
                }
                result[vertex] = sum * shape;
            }
        }
    }

    // Sets the positions and directions of a copy to those of the pose.
    void write(const Shape& shape, pugi::xml_node base, pugi::xml_node geometry, const std::vector<Matrix4>& matrices)
    {
        const std::size_t count = shape.positions.size() / 3;
        Values positions = shape.positions;
        for (std::size_t i = 0; i < matrices.size(); ++i) {
            put(positions, i, transformPoint(matrices[i], record(shape.positions, i)));
        }
        m_pairs.clear();
        m_made.clear();
        pugi::xml_node vertices = ownVertices(shape, geometry.child("mesh"));
        const std::string positionId = addSource(geometry, "positions", positions);
        for (pugi::xml_node input : vertices.children("input")) {
            if (trimmed(input.attribute("semantic").value()) == "POSITION") {
                setAttribute(input, "source", '#' + positionId);
                break;
            }
        }
        const std::vector<pugi::xml_node> originals = primitivesOf(base);
        const std::vector<pugi::xml_node> copies = primitivesOf(geometry);
        std::size_t index = 0;
        for (std::size_t i = 0; i < copies.size() && index < shape.primitives.size(); ++i) {
            if (originals[i] != shape.primitives[index]) {
                continue; // cannot be read
            }
            const std::vector<Input> inputs = inputsOf(copies[i]);
            pugi::xml_node vertex = firstInput(inputs, "VERTEX")->element;
            setAttribute(vertex, "source", '#' + std::string(vertices.attribute("id").value()));
            for (const char* const semantic : {"NORMAL", "TANGENT", "BINORMAL"}) {
                Attribute attribute = attributeOf(inputs, semantic);
                const bool isNormal = std::string_view(semantic) == "NORMAL";
                attribute.values = isNormal ? shape.normals[index] : attribute.values;
                if (attribute.values && attribute.input) {
                    turn(geometry, copies[i], attribute, semantic, matrices, count);
                }
            }
            ++index;
        }
        for (const auto& made : m_pairs) {
            fillVectorSource(m_document, made.second.source, made.second.values);
        }
    }

    // `<vertices>` that the primitives of a copy share.
    pugi::xml_node ownVertices(const Shape& shape, pugi::xml_node mesh)
    {
        pugi::xml_node own = mesh.child("vertices");
        if (shape.vertices.parent() == shape.primitives.front().parent()) {
            // The copy of the one that is read; others of the mesh are not.
            for (pugi::xml_node before = shape.vertices.previous_sibling("vertices"); before;
                 before = before.previous_sibling("vertices")) {
                own = own.next_sibling("vertices");
            }
        } else {
            own = {}; // it belongs to another mesh
        }
        if (!own) {
            own = mesh.prepend_child("vertices");
            m_document.setId(own, m_document.freshId("vertices"));
            for (const pugi::xml_node input : shape.vertices.children("input")) {
                own.append_copy(input);
            }
        }
        return own;
    }

    // Turns the directions of one semantic with the vertices of the corners.
    void turn(pugi::xml_node geometry, pugi::xml_node primitive, const Attribute& attribute, const char* semantic,
              const std::vector<Matrix4>& matrices, std::size_t count)
    {
        const bool isNormal = std::string_view(semantic) == "NORMAL";
        const std::vector<Input> inputs = inputsOf(primitive);
        const std::size_t vertexOffset = firstInput(inputs, "VERTEX")->offset;
        const std::size_t offset =
            attribute.isOfVertices ? vertexOffset : wholeOr(attribute.input.attribute("offset").value(), 0);
        if (!matrices.empty() && offset != vertexOffset) {
            turnPairs(geometry, primitive, attribute, semantic, matrices, count);
        } else if (!matrices.empty() || isNormal) {
            turnRecords(geometry, attribute, semantic, matrices);
        }
    }

    // One record for each record of the source, or for each vertex.
    void turnRecords(pugi::xml_node geometry, const Attribute& attribute, const char* semantic,
                     const std::vector<Matrix4>& matrices)
    {
        const bool isNormal = std::string_view(semantic) == "NORMAL";
        const Values& values = *attribute.values;
        const auto key = std::make_pair(attribute.values.get(), std::string(semantic));
        auto made = m_made.find(key);
        if (made == m_made.end()) {
            Values turned = values;
            for (std::size_t i = 0; i < std::min(values.size() / 3, matrices.size()); ++i) {
                put(turned, i, turnedBy(matrices[i], record(values, i), isNormal));
            }
            made = m_made.emplace(key, addSource(geometry, isNormal ? "normals" : "directions", turned)).first;
            m_held.push_back(attribute.values);
        }
        pugi::xml_node input = attribute.input;
        setAttribute(input, "source", '#' + made->second);
    }

    // One record for each pair of vertex and direction.
    void turnPairs(pugi::xml_node geometry, pugi::xml_node primitive, const Attribute& attribute, const char* semantic,
                   const std::vector<Matrix4>& matrices, std::size_t count)
    {
        const bool isNormal = std::string_view(semantic) == "NORMAL";
        const std::vector<Input> inputs = inputsOf(primitive);
        const std::size_t vertexOffset = firstInput(inputs, "VERTEX")->offset;
        const std::size_t offset = wholeOr(attribute.input.attribute("offset").value(), 0);
        const Values& values = *attribute.values;
        Pairs& pairs = m_pairs[std::make_pair(attribute.values.get(), std::string(semantic))];
        if (!pairs.source) {
            pairs.source = addVectorSource(m_document, geometry, isNormal ? "normals" : "directions");
            m_held.push_back(attribute.values);
        }
        const auto indexOf = [&](std::int32_t vertex, std::int32_t direction) -> std::int32_t {
            if (vertex < 0 || static_cast<std::size_t>(vertex) >= count || direction < 0 ||
                static_cast<std::size_t>(direction) >= values.size() / 3) {
                return -1;
            }
            const std::uint64_t key =
                (static_cast<std::uint64_t>(vertex) << 32U) | static_cast<std::uint32_t>(direction);
            const auto [known, isNew] = pairs.indices.try_emplace(key, static_cast<std::int32_t>(pairs.indices.size()));
            if (isNew) {
                const Vector3 turned = turnedBy(matrices[static_cast<std::size_t>(vertex)],
                                                record(values, static_cast<std::size_t>(direction)), isNormal);
                pairs.values.insert(pairs.values.end(), turned.begin(), turned.end());
            }
            return known->second;
        };
        const std::size_t stride = strideOf(inputs);
        const bool isAlone = std::count_if(inputs.begin(), inputs.end(),
                                           [&](const Input& other) { return other.offset == offset; }) == 1;
        for (const pugi::xml_node list : indexListsOf(primitive)) {
            const std::vector<std::int32_t> entries = indices(textOf(list));
            std::string text;
            for (std::size_t corner = 0; corner + stride <= entries.size(); corner += stride) {
                const std::int32_t index = indexOf(entries[corner + vertexOffset], entries[corner + offset]);
                for (std::size_t i = 0; i < stride; ++i) {
                    appendEntry(text, isAlone && i == offset ? index : entries[corner + i]);
                }
                if (!isAlone) {
                    appendEntry(text, index);
                }
            }
            setText(list, text);
        }
        pugi::xml_node input = attribute.input;
        setAttribute(input, "source", '#' + std::string(pairs.source.attribute("id").value()));
        setAttribute(input, "offset", std::to_string(isAlone ? offset : stride));
    }

    static void put(Values& values, std::size_t index, const Vector3& vector)
    {
        std::copy(vector.begin(), vector.end(), values.begin() + static_cast<std::ptrdiff_t>(3 * index));
    }

    static Vector3 turnedBy(const Matrix4& matrix, const Vector3& vector, bool isNormal)
    {
        return unit(transformVector(isNormal ? normalMatrix(matrix) : matrix, vector));
    }

    std::string addSource(pugi::xml_node geometry, const char* role, const Values& values)
    {
        const pugi::xml_node source = addVectorSource(m_document, geometry, role);
        fillVectorSource(m_document, source, values);
        return source.attribute("id").value();
    }

    // A posed skin is in world space, so a separate node shows it.
    void showInstead(pugi::xml_node scene, pugi::xml_node instance, pugi::xml_node geometry, bool isSkin)
    {
        instance.set_name("instance_geometry");
        setAttribute(instance, "url", '#' + std::string(geometry.attribute("id").value()));
        while (const pugi::xml_node skeleton = instance.child("skeleton")) {
            removeElement(skeleton);
        }
        if (!isSkin) {
            return;
        }
        const pugi::xml_node from = instance.parent();
        const std::string name = from.attribute("id") ? from.attribute("id").value() : "skin";
        pugi::xml_node last;
        for (const pugi::xml_node node : scene.children("node")) {
            last = node;
        }
        pugi::xml_node node = scene.insert_child_after("node", m_lastNode ? m_lastNode : last);
        m_lastNode = node;
        m_document.setOrigin(node, from);
        m_document.setId(node, m_document.freshId(name + "-skin"));
        setAttribute(node, "name", node.attribute("id").value());
        setText(node.append_child("matrix"), "1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1");
        node.append_move(instance);
    }

    struct Pairs {
        pugi::xml_node source;
        Values values;
        std::unordered_map<std::uint64_t, std::int32_t> indices;
    };
    using Key = std::pair<const Values*, std::string>;

    Document& m_document;
    Sources m_sources;
    GeometryCopier m_copier;
    std::unique_ptr<Motion> m_motion;
    std::unique_ptr<Pose> m_pose;
    std::unique_ptr<Joints> m_joints;
    std::unordered_map<std::size_t, std::shared_ptr<const Values>> m_wide; // by source
    std::unordered_map<std::size_t, std::unique_ptr<Shape>> m_targets;     // of morphs, by geometry
    std::vector<std::shared_ptr<const Values>> m_held;                     // whose addresses are keys
    std::map<Key, Pairs> m_pairs;                                          // of the geometry at hand
    std::map<Key, std::string> m_made;                                     // ids of its sources
    const Matrix4 m_still = identity();
    pugi::xml_node m_lastNode;
};

} // namespace

void poseControllers(Document& document)
{
    if (document.census().hasControllerInstances) {
        Poser(document).run();
    }
}

} // namespace libPrepare
