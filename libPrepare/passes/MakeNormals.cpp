#include "Passes.h"

#include <libPrepare/document/Transforms.h>
#include <libPrepare/document/Tree.h>
#include <libPrepare/geometry/GeometryCopier.h>
#include <libPrepare/geometry/Sources.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>
#include <unordered_set>

namespace libPrepare {

namespace {

constexpr double degree = 3.14159265358979323846 / 180.0;
constexpr double sameNormal = 1e-12; // of two normals of length 1: how far they are apart, squared
// If a vertex has more directions than this, they are sorted into cells first, so that the time stays linear.
constexpr std::size_t maxDirections = 64;

double dot(const Vector3& a, const Vector3& b)
{
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

// The normal of a triangle, of length 1; zero if it has no area.
Vector3 normalOf(const Vector3& a, const Vector3& b, const Vector3& c)
{
    Vector3 u{};
    Vector3 v{};
    double longest = 0;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        u[axis] = b[axis] - a[axis];
        v[axis] = c[axis] - a[axis];
        longest = std::max({longest, std::abs(u[axis]), std::abs(v[axis])});
    }
    if (!(longest > 0) || !std::isfinite(longest)) {
        return {};
    }
    for (std::size_t axis = 0; axis < 3; ++axis) { // tiny faces have normals, too
        u[axis] /= longest;
        v[axis] /= longest;
    }
    Vector3 result = {u[1] * v[2] - u[2] * v[1], u[2] * v[0] - u[0] * v[2], u[0] * v[1] - u[1] * v[0]};
    const double length = std::sqrt(dot(result, result));
    if (!(length > 1e-14)) {
        return {};
    }
    for (double& value : result) {
        value /= length;
    }
    return result;
}

class NormalMaker {
public:
    NormalMaker(Document& document, double angle)
        : m_document(document), m_sources(document), m_cosine(std::cos(std::clamp(angle, 0.0, 180.0) * degree))
    {}

    void run(pugi::xml_node geometry)
    {
        m_lists.clear();
        m_corners.clear();
        m_positions = nullptr;
        for (const pugi::xml_node primitive : primitivesOf(geometry)) {
            const std::vector<Input> inputs = inputsOf(primitive);
            const SourceLayout* const positions = positionsOf(m_document, m_sources, inputs);
            const bool isFit = is(primitive, "triangles") && positions != nullptr && primitive.child("p") &&
                               firstInput(inputs, "NORMAL") == nullptr &&
                               (m_positions == nullptr || positions == m_positions);
            if (isFit) {
                m_positions = positions;
                read(primitive, inputs);
            }
        }
        if (m_corners.empty() || !m_document.takeBytes(40 * static_cast<std::uint64_t>(m_corners.size()))) {
            return;
        }
        work();
        write(geometry);
    }

private:
    struct List {
        pugi::xml_node primitive;
        std::vector<Input> inputs;
        std::vector<std::int32_t> entries;
        std::size_t stride;
        std::size_t corners;
    };

    void read(pugi::xml_node primitive, const std::vector<Input>& inputs)
    {
        List list{primitive, inputs, {}, strideOf(inputs), 0};
        std::string scratch;
        list.entries = indices(textOf(primitive.child("p"), scratch));
        const std::size_t held = list.entries.size() / list.stride / 3;
        list.corners = 3 * std::min(held, wholeOr(primitive.attribute("count").value(), 0));
        const std::size_t offset = firstInput(inputs, "VERTEX")->offset;
        for (std::size_t corner = 0; corner < list.corners; ++corner) {
            m_corners.push_back(list.entries[corner * list.stride + offset]);
        }
        m_lists.push_back(std::move(list));
    }

    void work()
    {
        const std::vector<double>& values = m_sources.values(*m_positions);
        const std::size_t width = m_positions->width();
        const auto point = [&](std::int32_t vertex) {
            const double* const at = values.data() + static_cast<std::size_t>(vertex) * width;
            return Vector3{at[0], at[1], width > 2 ? at[2] : 0.0};
        };
        const auto isThere = [&](std::int32_t vertex) {
            return vertex >= 0 && static_cast<std::size_t>(vertex) < m_positions->count;
        };
        m_faceNormals.assign(m_corners.size() / 3, Vector3{});
        for (std::size_t face = 0; face < m_faceNormals.size(); ++face) {
            const std::int32_t* const corners = m_corners.data() + 3 * face;
            if (isThere(corners[0]) && isThere(corners[1]) && isThere(corners[2])) {
                m_faceNormals[face] = normalOf(point(corners[0]), point(corners[1]), point(corners[2]));
            }
        }
        // The corners of each vertex, one vertex after the other.
        std::vector<std::size_t> starts(m_positions->count + 2, 0);
        const auto slot = [&](std::int32_t vertex) {
            return isThere(vertex) ? static_cast<std::size_t>(vertex) : m_positions->count;
        };
        for (const std::int32_t vertex : m_corners) {
            ++starts[slot(vertex) + 1];
        }
        std::partial_sum(starts.begin(), starts.end(), starts.begin());
        std::vector<std::size_t> order(m_corners.size());
        std::vector<std::size_t> next = starts;
        for (std::size_t corner = 0; corner < m_corners.size(); ++corner) {
            order[next[slot(m_corners[corner])]++] = corner;
        }
        m_normals.clear();
        m_indices.assign(m_corners.size(), 0);
        for (std::size_t vertex = 0; vertex + 1 < starts.size(); ++vertex) {
            average(order.data() + starts[vertex], starts[vertex + 1] - starts[vertex]);
        }
    }

    // Sets each corner of a vertex to the mean of the directions within the angle of its own. Triangles of a flat face
    // share one direction, which counts once.
    void average(const std::size_t* corners, std::size_t count)
    {
        m_directions.clear();
        m_directionOf.assign(count, 0);
        const bool isCrowded = count > maxDirections;
        if (isCrowded) {
            m_cells.fill(0);
        }
        for (std::size_t i = 0; i < count; ++i) {
            const Vector3& normal = m_faceNormals[corners[i] / 3];
            m_directionOf[i] = isCrowded ? cellOf(normal) : directionOf(normal);
        }
        const std::size_t first = m_normals.size() / 3;
        std::vector<std::size_t>& indices = m_directionIndices;
        indices.clear();
        for (const Vector3& direction : m_directions) {
            Vector3 sum{};
            for (const Vector3& other : m_directions) {
                if (&other == &direction || dot(direction, other) > m_cosine) {
                    for (std::size_t axis = 0; axis < 3; ++axis) {
                        sum[axis] += other[axis];
                    }
                }
            }
            indices.push_back(indexOf(sum, direction, first));
        }
        for (std::size_t i = 0; i < count; ++i) {
            m_indices[corners[i]] = indices[m_directionOf[i]];
        }
    }

    std::size_t directionOf(const Vector3& normal)
    {
        for (std::size_t i = 0; i < m_directions.size(); ++i) {
            const Vector3& known = m_directions[i];
            const Vector3 apart = {known[0] - normal[0], known[1] - normal[1], known[2] - normal[2]};
            if (dot(apart, apart) < sameNormal) {
                return i;
            }
        }
        m_directions.push_back(normal);
        return m_directions.size() - 1;
    }

    // The direction of the cell that a normal falls into: that of its first normal.
    std::size_t cellOf(const Vector3& normal)
    {
        std::size_t cell = 0;
        for (const double value : normal) {
            cell = cellsAnAxis * cell + static_cast<std::size_t>(std::clamp((value + 1) / 2, 0.0, 0.999) * cellsAnAxis);
        }
        if (m_cells[cell] == 0) {
            m_directions.push_back(normal);
            m_cells[cell] = m_directions.size();
        }
        return m_cells[cell] - 1;
    }

    // The record of a direction among those of this vertex. If the sum has no length, as with faces back to back, it is
    // the face's own direction.
    std::size_t indexOf(const Vector3& sum, const Vector3& own, std::size_t first)
    {
        const double length = std::sqrt(dot(sum, sum));
        Vector3 normal = length > 1e-9 ? sum : own;
        const double scale = length > 1e-9 ? length : 1;
        for (double& value : normal) { // more digits than single precision has would only make the document longer
            value = std::round(value / scale * 1e8) / 1e8 + 0.0;
        }
        for (std::size_t index = first; 3 * index < m_normals.size(); ++index) {
            if (std::equal(normal.begin(), normal.end(), m_normals.begin() + static_cast<std::ptrdiff_t>(3 * index))) {
                return index;
            }
        }
        m_normals.insert(m_normals.end(), normal.begin(), normal.end());
        return m_normals.size() / 3 - 1;
    }

    void write(pugi::xml_node geometry)
    {
        const pugi::xml_node source = addVectorSource(m_document, geometry, "normals");
        fillVectorSource(m_document, source, m_normals);
        std::size_t corner = 0;
        for (List& list : m_lists) {
            std::string text;
            text.reserve(list.entries.size() * 8);
            for (std::size_t i = 0; i < list.corners; ++i, ++corner) {
                for (std::size_t column = 0; column < list.stride; ++column) {
                    appendEntry(text, list.entries[i * list.stride + column]);
                }
                appendEntry(text, static_cast<long long>(m_indices[corner]));
            }
            pugi::xml_node p = list.primitive.child("p");
            setText(p, text);
            pugi::xml_node input = list.primitive.insert_child_after("input", list.inputs.back().element);
            setAttribute(input, "semantic", "NORMAL");
            setAttribute(input, "source", '#' + std::string(source.attribute("id").value()));
            setAttribute(input, "offset", std::to_string(list.stride));
            m_document.rewritten(list.primitive, "normals", "A list of triangles has no normals.",
                                 "They were made of its faces.");
        }
        m_document.report().madeNormals.emplace_back(geometry.attribute("id").value());
    }

    static constexpr std::size_t cellsAnAxis = 8;

    Document& m_document;
    Sources m_sources;
    double m_cosine;
    const SourceLayout* m_positions = nullptr;
    std::vector<List> m_lists;
    std::vector<std::int32_t> m_corners; // the vertex of each, of all lists
    std::vector<Vector3> m_faceNormals;
    std::vector<double> m_normals;      // three numbers a record
    std::vector<std::size_t> m_indices; // the record of each corner

    // Of the vertex at hand:
    std::vector<Vector3> m_directions;
    std::vector<std::size_t> m_directionOf;
    std::vector<std::size_t> m_directionIndices;
    std::array<std::size_t, cellsAnAxis * cellsAnAxis * cellsAnAxis> m_cells{};
};

} // namespace

void makeNormals(Document& document)
{
    if (!document.options().normals || std::isnan(*document.options().normals) ||
        !document.census().hasGeometryInstances) {
        return;
    }
    NormalMaker maker(document, *document.options().normals);
    std::unordered_set<std::size_t> done;
    for (const pugi::xml_node node : nodesIn(shownScene(document))) {
        for (const pugi::xml_node instance : node.children("instance_geometry")) {
            const pugi::xml_node geometry = document.resolve(instance.attribute("url").value(), {"geometry"});
            if (geometry && done.insert(geometry.hash_value()).second) {
                maker.run(geometry);
            }
        }
    }
}

} // namespace libPrepare
