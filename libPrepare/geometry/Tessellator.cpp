#include "Tessellator.h"

#include <GL/glu.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <numeric>

namespace libPrepare {

namespace {

// A polygon counts as flat if its area is below this fraction of the square of its size.
constexpr double noArea = 1e-13;
// How far a fan's triangle may be turned over, as a share of the polygon's area squared: rounding of collinear corners.
constexpr double turnedSlack = 1e-9;
// Looks at corners that each corner brings for the polygons that need ears; keeps the time linear in the document.
constexpr std::uint64_t stepsPerCorner = 512;
// Smaller polygons are not counted against the limit.
constexpr std::size_t fewCorners = 256;

Vector3 cross(const Vector3& a, const Vector3& b)
{
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

Vector3 difference(const Vector3& a, const Vector3& b)
{
    return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}

double dot(const Vector3& a, const Vector3& b)
{
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

// Corners that the callbacks of GLU collect.
struct Collected {
    std::vector<std::size_t> corners;
    std::vector<std::array<double, 3>> places;
    bool hasNewPoint = false;
    bool hasFailed = false;
};

void onVertex(void* corner, void* collected)
{
    // Corner numbers travel as pointers into the list of places.
    auto& target = *static_cast<Collected*>(collected);
    target.corners.push_back(
        static_cast<std::size_t>(static_cast<std::array<double, 3>*>(corner) - target.places.data()));
}

void onEdgeFlag(GLboolean, void*) {} // its presence makes GLU give separate triangles

void onCombine(GLdouble place[3], void* corners[4], GLfloat[4], void** result, void* collected)
{
    auto& target = *static_cast<Collected*>(collected);
    for (unsigned i = 0; i < 4; ++i) {
        if (corners[i] == nullptr) {
            continue;
        }
        const auto& given = *static_cast<std::array<double, 3>*>(corners[i]);
        if (given[0] == place[0] && given[1] == place[1]) {
            *result = corners[i]; // two corners at one place
            return;
        }
    }
    *result = corners[0];
    target.hasNewPoint = true;
}

void onError(GLenum, void* collected)
{
    static_cast<Collected*>(collected)->hasFailed = true;
}

template <class Function>
_GLUfuncptr callback(Function* function)
{
    return reinterpret_cast<_GLUfuncptr>(function); // GLU's interface expects this type
}

} // namespace

struct Tessellator::Glu {
    Glu() : tess(gluNewTess())
    {
        gluTessCallback(tess, GLU_TESS_VERTEX_DATA, callback(&onVertex));
        gluTessCallback(tess, GLU_TESS_EDGE_FLAG_DATA, callback(&onEdgeFlag));
        gluTessCallback(tess, GLU_TESS_COMBINE_DATA, callback(&onCombine));
        gluTessCallback(tess, GLU_TESS_ERROR_DATA, callback(&onError));
        gluTessProperty(tess, GLU_TESS_WINDING_RULE, GLU_TESS_WINDING_ODD);
        gluTessNormal(tess, 0, 0, 1);
    }
    Glu(const Glu&) = delete;
    Glu& operator=(const Glu&) = delete;
    ~Glu() { gluDeleteTess(tess); }

    GLUtesselator* tess;
    Collected collected;
};

Tessellator::Tessellator() = default;
Tessellator::~Tessellator() = default;

// Moves the corners about the first one and makes them small. Sizes and distances from the origin that occur must not
// overflow, nor lose the shape of a tiny polygon. @return false if all corners are at one place, or at none
bool Tessellator::scale(const std::vector<Vector3>& points)
{
    double greatest = 0;
    for (const Vector3& point : points) {
        greatest = std::max({greatest, std::abs(point[0]), std::abs(point[1]), std::abs(point[2])});
    }
    const double calm = greatest > 1e300 ? 1e-10 : 1;
    double extent = 0;
    m_scaled.resize(points.size());
    for (std::size_t i = 0; i < points.size(); ++i) {
        for (std::size_t axis = 0; axis < 3; ++axis) {
            m_scaled[i][axis] = points[i][axis] * calm - points[0][axis] * calm;
            extent = std::max(extent, std::abs(m_scaled[i][axis]));
        }
    }
    if (!(extent > 0)) {
        return false;
    }
    for (Vector3& point : m_scaled) {
        for (double& value : point) {
            value /= extent;
        }
    }
    return true;
}

// @param corners of the outer loop @return false if it has no area
bool Tessellator::findNormal(std::size_t corners)
{
    m_normal = {};
    for (std::size_t i = 1; i + 1 < corners; ++i) {
        const Vector3 part = cross(m_scaled[i], m_scaled[i + 1]);
        for (std::size_t axis = 0; axis < 3; ++axis) {
            m_normal[axis] += part[axis];
        }
    }
    return dot(m_normal, m_normal) > noArea * noArea;
}

Tessellator::Result Tessellator::triangulate(const Polygon& polygon, std::vector<std::size_t>& triangles)
{
    const std::size_t count = polygon.points.size();
    if (!scale(polygon.points) || !findNormal(polygon.lengths[0])) {
        return Result::flat;
    }
    if (polygon.lengths.size() == 1 && isFan()) {
        for (std::size_t i = 1; i + 1 < count; ++i) {
            triangles.insert(triangles.end(), {0, i, i + 1});
        }
        return Result::done;
    }
    project(polygon);
    const std::size_t before = triangles.size();
    m_steps += stepsPerCorner * count;
    // Where edges cross GLU makes new points, all of them before it can be stopped; and it keeps the edges that its sweep
    // meets in a list.
    const std::uint64_t cost = count > fewCorners ? static_cast<std::uint64_t>(count) * count : 0;
    if (takePairs(cost)) {
        if (!crossesItself(polygon) && runGlu(polygon, triangles)) {
            return Result::done;
        }
        triangles.resize(before);
    }
    if (count == 4 && polygon.lengths.size() == 1) {
        cutQuad(triangles);
        return Result::done;
    }
    if (clipEars(m_flat, turnedLoops(polygon), m_steps, triangles)) {
        return Result::done;
    }
    triangles.resize(before);
    return Result::tooLong;
}

// The corners of each loop: the outer one counter-clockwise, the others clockwise.
std::vector<std::vector<std::size_t>> Tessellator::turnedLoops(const Polygon& polygon) const
{
    std::vector<std::vector<std::size_t>> result(polygon.lengths.size());
    for (std::size_t loop = 0; loop < result.size(); ++loop) {
        for (std::size_t i = 0; i < polygon.lengths[loop]; ++i) {
            result[loop].push_back(m_starts[loop] + i);
        }
        if (m_isTurned[loop]) {
            std::reverse(result[loop].begin(), result[loop].end());
        }
    }
    return result;
}

bool Tessellator::isClearlyFan(const std::vector<Vector3>& points)
{
    constexpr std::size_t mostCorners = 16;
    constexpr double margin = 1e-6; // far more than these corners have rounding errors
    constexpr double least = 1e-30; // sizes whose fourth power is a plain number
    constexpr double greatest = 1e30;
    if (points.size() > mostCorners) {
        return false;
    }
    std::array<Vector3, mostCorners> parts; // the normals of the triangles, each as long as twice its area
    Vector3 normal{};
    double extent = 0;
    Vector3 before{};
    for (std::size_t i = 1; i < points.size(); ++i) {
        Vector3 corner{};
        for (std::size_t axis = 0; axis < 3; ++axis) {
            corner[axis] = points[i][axis] - points[0][axis];
            extent = std::max(extent, std::abs(corner[axis]));
        }
        parts[i] = cross(before, corner);
        for (std::size_t axis = 0; axis < 3; ++axis) {
            normal[axis] += parts[i][axis];
        }
        before = corner;
    }
    const double size = dot(normal, normal);
    if (!(extent > least && extent < greatest && size > margin * extent * extent * extent * extent)) {
        return false;
    }
    for (std::size_t i = 2; i < points.size(); ++i) {
        if (!(dot(parts[i], normal) > margin * size)) {
            return false;
        }
    }
    return true;
}

// Of the pairs, or of the steps once these run out.
bool Tessellator::takePairs(std::uint64_t pairs)
{
    std::uint64_t& budget = pairs <= m_pairs ? m_pairs : m_steps;
    const bool isEnough = pairs <= budget;
    budget -= isEnough ? pairs : 0;
    return isEnough;
}

bool Tessellator::isFan() const
{
    const double slack = -turnedSlack * dot(m_normal, m_normal);
    for (std::size_t i = 1; i + 1 < m_scaled.size(); ++i) {
        if (dot(cross(m_scaled[i], m_scaled[i + 1]), m_normal) < slack) {
            return false;
        }
    }
    return true;
}

// Cuts a quad whose edges cross along the diagonal whose triangles look away from it least.
void Tessellator::cutQuad(std::vector<std::size_t>& triangles) const
{
    constexpr std::array<std::array<std::size_t, 6>, 2> cuts = {{{0, 1, 2, 0, 2, 3}, {0, 1, 3, 1, 2, 3}}};
    std::array<double, 2> least{};
    for (std::size_t cut = 0; cut < cuts.size(); ++cut) {
        for (std::size_t i = 0; i < 6; i += 3) {
            const Vector3& first = m_scaled[cuts[cut][i]];
            const Vector3 part =
                cross(difference(m_scaled[cuts[cut][i + 1]], first), difference(m_scaled[cuts[cut][i + 2]], first));
            const double length = std::sqrt(dot(part, part));
            least[cut] = std::min(least[cut], length > noArea ? dot(part, m_normal) / length : 0.0);
        }
    }
    const auto& best = cuts[least[1] > least[0] ? 1 : 0];
    triangles.insert(triangles.end(), best.begin(), best.end());
}

// Puts the corners on the plane of the outer loop, which goes counter-clockwise there.
void Tessellator::project(const Polygon& polygon)
{
    Vector3 normal = m_normal;
    const double length = std::sqrt(dot(normal, normal));
    for (double& value : normal) {
        value /= length;
    }
    std::size_t least = 0;
    for (std::size_t axis = 1; axis < 3; ++axis) {
        least = std::abs(normal[axis]) < std::abs(normal[least]) ? axis : least;
    }
    Vector3 axis{};
    axis[least] = 1;
    Vector3 right = cross(axis, normal);
    const double rightLength = std::sqrt(dot(right, right));
    for (double& value : right) {
        value /= rightLength;
    }
    const Vector3 up = cross(normal, right);
    m_flat.resize(m_scaled.size());
    for (std::size_t i = 0; i < m_scaled.size(); ++i) {
        m_flat[i] = {dot(m_scaled[i], right), dot(m_scaled[i], up)};
    }
    m_starts.clear();
    m_isTurned.clear();
    std::size_t start = 0;
    for (const std::size_t size : polygon.lengths) {
        double area = 0;
        for (std::size_t i = 0; i < size; ++i) {
            const Point2& a = m_flat[start + i];
            const Point2& b = m_flat[start + (i + 1) % size];
            area += a.x * b.y - b.x * a.y;
        }
        m_isTurned.push_back(m_starts.empty() ? area < 0 : area > 0); // holes go round the other way
        m_starts.push_back(start);
        start += size;
    }
}

// Whether two edges meet anywhere but at corners of both.
bool Tessellator::crossesItself(const Polygon& polygon)
{
    m_edges.clear();
    for (std::size_t loop = 0; loop < polygon.lengths.size(); ++loop) {
        for (std::size_t i = 0; i < polygon.lengths[loop]; ++i) {
            m_edges.push_back({m_flat[m_starts[loop] + i], m_flat[m_starts[loop] + (i + 1) % polygon.lengths[loop]]});
        }
    }
    const auto turn = [](const Point2& a, const Point2& b, const Point2& c) {
        const double area = (b.x - a.x) * (c.y - a.y) - (c.x - a.x) * (b.y - a.y);
        return area > 0 ? 1 : area < 0 ? -1 : 0;
    };
    const auto isSame = [](const Point2& a, const Point2& b) { return a.x == b.x && a.y == b.y; };
    for (std::size_t i = 0; i < m_edges.size(); ++i) {
        const auto& [a, b] = m_edges[i];
        const auto [left, right] = std::minmax(a.x, b.x);
        const auto [low, high] = std::minmax(a.y, b.y);
        for (std::size_t j = i + 1; j < m_edges.size(); ++j) {
            const auto& [c, d] = m_edges[j];
            if (std::max(c.x, d.x) < left || std::min(c.x, d.x) > right || std::max(c.y, d.y) < low ||
                std::min(c.y, d.y) > high || isSame(a, c) || isSame(a, d) || isSame(b, c) || isSame(b, d)) {
                continue;
            }
            if (turn(a, b, c) * turn(a, b, d) <= 0 && turn(c, d, a) * turn(c, d, b) <= 0) {
                return true;
            }
        }
    }
    return false;
}

// @return whether what GLU made has the polygon's own corners and edges
bool Tessellator::runGlu(const Polygon& polygon, std::vector<std::size_t>& triangles)
{
    if (!m_glu) {
        m_glu = std::make_unique<Glu>();
    }
    Collected& collected = m_glu->collected;
    collected.corners.clear();
    collected.hasNewPoint = false;
    collected.hasFailed = m_glu->tess == nullptr;
    if (collected.hasFailed) {
        return false;
    }
    collected.places.resize(m_flat.size());
    for (std::size_t i = 0; i < m_flat.size(); ++i) {
        collected.places[i] = {m_flat[i].x, m_flat[i].y, 0};
    }
    gluTessBeginPolygon(m_glu->tess, &collected);
    for (std::size_t loop = 0; loop < polygon.lengths.size(); ++loop) {
        gluTessBeginContour(m_glu->tess);
        for (std::size_t i = 0; i < polygon.lengths[loop]; ++i) {
            std::array<double, 3>& place = collected.places[m_starts[loop] + i];
            gluTessVertex(m_glu->tess, place.data(), &place);
        }
        gluTessEndContour(m_glu->tess);
    }
    gluTessEndPolygon(m_glu->tess);
    if (collected.hasFailed || collected.hasNewPoint || collected.corners.size() % 3 != 0 ||
        !coversAllEdges(polygon, collected.corners)) {
        return false;
    }
    triangles.insert(triangles.end(), collected.corners.begin(), collected.corners.end());
    return true;
}

void Tessellator::identify(const Polygon& polygon)
{
    const std::size_t corners = polygon.points.size();
    const auto tuple = [&](std::size_t corner) { return polygon.tuples + corner * polygon.stride; };
    const auto compare = [&](std::size_t a, std::size_t b) {
        for (std::size_t i = 0; i < polygon.stride; ++i) {
            if (tuple(a)[i] != tuple(b)[i]) {
                return tuple(a)[i] < tuple(b)[i] ? -1 : 1;
            }
        }
        return 0;
    };
    m_order.resize(corners);
    std::iota(m_order.begin(), m_order.end(), std::size_t(0));
    std::sort(m_order.begin(), m_order.end(), [&](std::size_t a, std::size_t b) {
        const int order = compare(a, b);
        return order != 0 ? order < 0 : a < b;
    });
    m_identities.resize(corners);
    for (std::size_t i = 0; i < corners; ++i) {
        const bool isSame = i > 0 && compare(m_order[i], m_order[i - 1]) == 0;
        m_identities[m_order[i]] = isSame ? m_identities[m_order[i - 1]] : m_order[i];
    }
}

// Whether triangles have every edge of the loops once, in its direction, and beside these only diagonals, in both.
bool Tessellator::coversAllEdges(const Polygon& polygon, const std::vector<std::size_t>& triangles)
{
    struct Edge {
        std::size_t low;
        std::size_t high;
        int loop;     // how often it runs upwards in the loops, less how often downwards
        int triangle; // the same in the triangles
        int least;    // how often it must be there at least, in either direction
        int most;
    };
    identify(polygon);
    std::vector<Edge> edges;
    edges.reserve(m_flat.size() + triangles.size());
    const auto add = [&](std::size_t from, std::size_t to, bool isLoop) {
        const std::size_t a = m_identities[from];
        const std::size_t b = m_identities[to];
        if (a != b) {
            const int sign = a < b ? 1 : -1;
            edges.push_back(
                {std::min(a, b), std::max(a, b), isLoop ? sign : 0, isLoop ? 0 : sign, isLoop ? 1 : 0, isLoop ? 0 : 1});
        }
    };
    for (std::size_t loop = 0; loop < polygon.lengths.size(); ++loop) {
        const std::size_t size = polygon.lengths[loop];
        for (std::size_t i = 0; i < size; ++i) {
            const std::size_t from = m_starts[loop] + i;
            const std::size_t to = m_starts[loop] + (i + 1) % size;
            m_isTurned[loop] ? add(to, from, true) : add(from, to, true);
        }
    }
    for (std::size_t i = 0; i < triangles.size(); ++i) {
        add(triangles[i], triangles[i - i % 3 + (i % 3 + 1) % 3], false);
    }
    std::sort(edges.begin(), edges.end(),
              [](const Edge& a, const Edge& b) { return a.low != b.low ? a.low < b.low : a.high < b.high; });
    for (std::size_t i = 0; i < edges.size();) {
        Edge sum = edges[i];
        for (++i; i < edges.size() && edges[i].low == sum.low && edges[i].high == sum.high; ++i) {
            sum.loop += edges[i].loop;
            sum.triangle += edges[i].triangle;
            sum.least += edges[i].least;
            sum.most += edges[i].most;
        }
        if (sum.loop != sum.triangle || sum.most < sum.least) {
            return false;
        }
    }
    return true;
}

namespace {

struct EarNode {
    std::size_t corner;
    std::size_t previous;
    std::size_t next;
};

double area(const Point2& a, const Point2& b, const Point2& c)
{
    return (b.x - a.x) * (c.y - a.y) - (c.x - a.x) * (b.y - a.y);
}

bool areEqual(const Point2& a, const Point2& b)
{
    return a.x == b.x && a.y == b.y;
}

bool isInside(const Point2& a, const Point2& b, const Point2& c, const Point2& point)
{
    return area(a, b, point) >= 0 && area(b, c, point) >= 0 && area(c, a, point) >= 0;
}

class EarClipper {
public:
    EarClipper(const std::vector<Point2>& points, const std::vector<std::vector<std::size_t>>& loops,
               std::uint64_t& steps)
        : m_points(points), m_steps(steps)
    {
        for (const std::vector<std::size_t>& loop : loops) {
            m_firsts.push_back(m_nodes.size());
            for (std::size_t i = 0; i < loop.size(); ++i) {
                const std::size_t first = m_firsts.back();
                m_nodes.push_back(
                    {loop[i], first + (i + loop.size() - 1) % loop.size(), first + (i + 1) % loop.size()});
            }
        }
    }

    bool run(std::vector<std::size_t>& triangles)
    {
        m_left = m_nodes.empty() ? 0 : loopLength(m_firsts[0]);
        std::vector<std::pair<double, std::size_t>> holes;
        for (std::size_t i = 1; i < m_firsts.size(); ++i) {
            const std::size_t rightmost = rightmostOf(m_firsts[i]);
            holes.emplace_back(-at(rightmost).x, rightmost);
        }
        std::sort(holes.begin(), holes.end());
        for (const auto& hole : holes) {
            if (!bridge(hole.second)) {
                return false;
            }
        }
        clip(triangles);
        return true;
    }

private:
    const Point2& at(std::size_t node) const { return m_points[m_nodes[node].corner]; }
    std::size_t next(std::size_t node) const { return m_nodes[node].next; }
    std::size_t previous(std::size_t node) const { return m_nodes[node].previous; }
    double turn(std::size_t node) const { return area(at(previous(node)), at(node), at(next(node))); }

    // False once the polygon has used up what it may take.
    bool step()
    {
        m_steps -= m_steps > 0 ? 1 : 0;
        return m_steps > 0;
    }

    std::size_t loopLength(std::size_t first) const
    {
        std::size_t length = 1;
        for (std::size_t node = next(first); node != first; node = next(node)) {
            ++length;
        }
        return length;
    }

    std::size_t rightmostOf(std::size_t first) const
    {
        std::size_t best = first;
        for (std::size_t node = next(first); node != first; node = next(node)) {
            best = at(node).x > at(best).x ? node : best;
        }
        return best;
    }

    // Joins a hole to the loop around it by two edges that run to and fro.
    bool bridge(std::size_t hole)
    {
        const std::size_t found = visibleFrom(hole);
        if (m_steps == 0) {
            return false;
        }
        m_left += loopLength(hole) + 2;
        const std::size_t holeTwin = m_nodes.size();
        const std::size_t foundTwin = holeTwin + 1;
        m_nodes.push_back({m_nodes[hole].corner, previous(hole), foundTwin});
        m_nodes.push_back({m_nodes[found].corner, holeTwin, next(found)});
        m_nodes[previous(hole)].next = holeTwin;
        m_nodes[next(found)].previous = foundTwin;
        m_nodes[found].next = hole;
        m_nodes[hole].previous = found;
        return true;
    }

    // A node of the outer loop that a hole's rightmost node sees.
    std::size_t visibleFrom(std::size_t hole)
    {
        const std::size_t start = m_firsts[0];
        const Point2& eye = at(hole);
        double nearest = HUGE_VAL;
        std::size_t best = start;
        bool hasHit = false;
        std::size_t node = start;
        do { // the edge to the right of the eye that is hit first by a ray along x
            const Point2& a = at(node);
            const Point2& b = at(next(node));
            if (a.y <= eye.y && b.y >= eye.y && a.y != b.y) { // inside lies to the left of it
                const double x = a.x + (eye.y - a.y) * (b.x - a.x) / (b.y - a.y);
                if (x >= eye.x && x < nearest) {
                    nearest = x;
                    hasHit = true;
                    best = b.y == eye.y ? next(node) : a.y == eye.y || a.x > b.x ? node : next(node);
                }
            }
            node = next(node);
        } while (node != start && step());
        if (!hasHit) {
            return closestTo(eye);
        }
        const Point2 hit{nearest, eye.y};
        if (areEqual(at(best), hit)) {
            return twinThatSees(hole, best);
        }
        // Corners within the triangle of eye, hit and the edge's end are in the way; the one closest to the ray does not.
        const Point2 end = at(best);
        double steepest = HUGE_VAL;
        double closest = HUGE_VAL;
        const bool isAbove = end.y > eye.y;
        node = start;
        const std::size_t edgeEnd = best;
        do {
            const Point2& point = at(node);
            const bool isBetween = isAbove ? isInside(eye, hit, end, point) : isInside(eye, end, hit, point);
            if (isBetween && point.x > eye.x && (node == edgeEnd || turn(node) < 0)) {
                const double slope = std::abs(point.y - eye.y) / (point.x - eye.x);
                const double away = point.x - eye.x;
                if (slope < steepest || (slope == steepest && away < closest)) {
                    steepest = slope;
                    closest = away;
                    best = node;
                }
            }
            node = next(node);
        } while (node != start && step());
        return twinThatSees(hole, best);
    }

    // Bridges make twins of nodes: the one on whose side the hole lies.
    std::size_t twinThatSees(std::size_t hole, std::size_t found)
    {
        const std::size_t start = m_firsts[0];
        std::size_t node = start;
        do {
            if (areEqual(at(node), at(found)) && isLocallyInside(node, hole)) {
                return node;
            }
            node = next(node);
        } while (node != start && step());
        return found;
    }

    // Whether a bridge from a node to a target leaves into the polygon.
    bool isLocallyInside(std::size_t node, std::size_t target) const
    {
        const Point2& before = at(previous(node));
        const Point2& here = at(node);
        const Point2& after = at(next(node));
        const Point2& aim = at(target);
        return turn(node) > 0 ? area(here, after, aim) >= 0 && area(before, here, aim) >= 0
                              : area(here, after, aim) > 0 || area(before, here, aim) > 0;
    }

    std::size_t closestTo(const Point2& point)
    {
        const std::size_t start = m_firsts[0];
        std::size_t best = start;
        double least = HUGE_VAL;
        std::size_t node = start;
        do {
            const double away = std::hypot(at(node).x - point.x, at(node).y - point.y);
            if (away < least) {
                least = away;
                best = node;
            }
            node = next(node);
        } while (node != start && step());
        return best;
    }

    // Whether nothing of the loop lies in the triangle that cutting off a node would make.
    bool isEar(std::size_t node)
    {
        const Point2& a = at(previous(node));
        const Point2& b = at(node);
        const Point2& c = at(next(node));
        if (!(area(a, b, c) > 0)) {
            return false;
        }
        const double left = std::min({a.x, b.x, c.x});
        const double right = std::max({a.x, b.x, c.x});
        const double low = std::min({a.y, b.y, c.y});
        const double high = std::max({a.y, b.y, c.y});
        for (std::size_t other = next(next(node)); other != previous(node); other = next(other)) {
            if (!step()) {
                return true; // out of time: any corner that turns the right way will do
            }
            const Point2& point = at(other);
            if (point.x < left || point.x > right || point.y < low || point.y > high || !isInside(a, b, c, point)) {
                continue;
            }
            if (areEqual(point, a) || areEqual(point, b) || areEqual(point, c)) {
                if (crossesInto(other, node)) {
                    return false;
                }
                continue;
            }
            return false;
        }
        return true;
    }

    // Whether the loop runs into the triangle of an ear at a corner that touches one of the ear's.
    bool crossesInto(std::size_t other, std::size_t node) const
    {
        const Point2& a = at(previous(node));
        const Point2& b = at(node);
        const Point2& c = at(next(node));
        const auto isStrictlyInside = [&](const Point2& point) {
            return area(a, b, point) > 0 && area(b, c, point) > 0 && area(c, a, point) > 0;
        };
        if (areEqual(at(other), b)) {
            const auto isInWedge = [&](const Point2& point) {
                return area(a, b, point) >= 0 && area(b, c, point) >= 0;
            };
            return isInWedge(at(next(other))) && isInWedge(at(previous(other)));
        }
        return isStrictlyInside(at(next(other))) || isStrictlyInside(at(previous(other)));
    }

    // Whether the loop turns back on itself at a node, so that cutting it off changes nothing.
    bool isSpike(std::size_t node) const
    {
        const Point2& before = at(previous(node));
        const Point2& after = at(next(node));
        return areEqual(before, after) || areEqual(before, at(node)) || areEqual(at(node), after);
    }

    void cut(std::size_t node, std::vector<std::size_t>& triangles)
    {
        triangles.insert(triangles.end(),
                         {m_nodes[previous(node)].corner, m_nodes[node].corner, m_nodes[next(node)].corner});
        m_nodes[previous(node)].next = next(node);
        m_nodes[next(node)].previous = previous(node);
        --m_left;
    }

    void clip(std::vector<std::size_t>& triangles)
    {
        std::size_t node = m_firsts[0];
        std::size_t sinceCut = 0;
        // What may be cut off gets less choosy each time that a whole round finds nothing: ears, corners that have no
        // area, corners that turn the right way, any.
        unsigned stage = 0;
        while (m_left > 3) {
            const double area = turn(node);
            const bool mayCut = !step()      ? true
                                : stage == 0 ? isSpike(node) || isEar(node)
                                : stage == 1 ? area == 0
                                : stage == 2 ? area > 0
                                             : true;
            if (mayCut) {
                const std::size_t after = next(node);
                cut(node, triangles);
                node = next(after);
                sinceCut = 0;
                stage = 0;
                continue;
            }
            node = next(node);
            if (++sinceCut > m_left) {
                sinceCut = 0;
                ++stage;
            }
        }
        if (m_left == 3) {
            cut(next(node), triangles);
        }
    }

    const std::vector<Point2>& m_points;
    std::vector<EarNode> m_nodes;
    std::vector<std::size_t> m_firsts;
    std::size_t m_left = 0;
    std::uint64_t& m_steps;
};

} // namespace

bool clipEars(const std::vector<Point2>& points, const std::vector<std::vector<std::size_t>>& loops,
              std::uint64_t& steps, std::vector<std::size_t>& triangles)
{
    return EarClipper(points, loops, steps).run(triangles);
}

} // namespace libPrepare
