#include <libVideo/SceneGraph/Primitive.h>

#include "detail/Dom.h"
#include "detail/Log.h"
#include "detail/MemoryBudget.h"
#include "vertices/TupleTable.h"
#include "vertices/VertexReader.h"

#include <libVideo/SceneGraph/Input.h>

#include <cstdint>

namespace libVideo {

VIDEO_LOG_CHANNEL("libVideo.primitive")
VIDEO_SOURCE_PATH("libVideo/SceneGraph/Primitive")

namespace {

// Maximum number of points that sources may have without an array, and of the bytes of these points.
constexpr unsigned maxUnbackedPoints = 1048576;
constexpr unsigned maxUnbackedBytes = 67108864;

// Memory charged for a vertex: its bytes plus 32 for each source, because a source without an accessor adds bytes that
// its layout does not count.
std::uint64_t vertexCost(unsigned bytes, unsigned sources)
{
    constexpr std::uint64_t costOfARead = 32;
    return bytes + costOfARead * sources;
}

// Charges vertices to the memory budget in portions that double in size, so that few vertices cost a call.
class VertexBudget {
public:
    explicit VertexBudget(std::uint64_t costOfAVertex) : m_cost(costOfAVertex) {}

    bool takeVertex()
    {
        if (m_used == m_taken) {
            const unsigned more = m_taken < 16 ? 16 : m_taken;
            if (!detail::MemoryBudget::take(more, m_cost)) {
                return false;
            }
            m_taken += more;
        }
        ++m_used;
        return true;
    }

private:
    std::uint64_t m_cost;
    unsigned m_taken = 0; // charged so far
    unsigned m_used = 0;
};

unsigned maxPoints(unsigned backed, unsigned recordBytes)
{
    const unsigned inBytes = recordBytes == 0 ? maxUnbackedPoints : maxUnbackedBytes / recordBytes;
    const unsigned unbacked = inBytes < maxUnbackedPoints ? inBytes : maxUnbackedPoints;
    return backed > unbacked ? backed : unbacked;
}

} // namespace

Primitive::~Primitive() = default;

bool Primitive::vertex(unsigned index, vesk::Buffer<unsigned char>& out) const
{
    unsigned start = 0;
    if (m_indexBuffer.size() > 0) {
        if (index >= m_indexBuffer.size()) {
            return false;
        }
        start = m_indexBuffer[index] * m_bytesPerVertex;
    } else {
        if (index >= m_vertexStream.size()) { // sic: in bytes, not in vertices
            return false;
        }
        start = index * m_bytesPerVertex;
    }
    out.resize(m_bytesPerVertex, false);
    for (unsigned i = 0; i < m_bytesPerVertex; ++i) {
        out[i] = m_vertexStream[start + i];
    }
    return true;
}

bool Primitive::findLayout(VertexSemantic semantic, VertexLayout& layout) const
{
    for (const VertexLayout& known : m_vertexLayout) {
        if (known == VertexLayout(semantic)) {
            layout = known;
            return true;
        }
    }
    return false;
}

bool Primitive::createIndexedVertexBuffer(const SharedHandle<InputLocalOffset>& input)
{
    const unsigned total = m_vertexPerPrimitive * m_count;
    m_indexBuffer.clear();
    m_indexBuffer.grow(total, 0);
    if (!input->hasData()) {
        return false;
    }
    detail::TupleTable known(input->offsetCount(), total);
    detail::VertexReader reader(*input);
    VertexBudget budget(vertexCost(m_bytesPerVertex, m_vertexLayout.size()));
    unsigned* const indices = m_indexBuffer.getData();
    for (unsigned c = 0; c < total; ++c) {
        const detail::TupleTable::Place place = known.insert(reader.tuple(c));
        if (place.isNew && !budget.takeVertex()) {
            VIDEO_LOG(detail::MemoryBudget::exceeded);
            m_count = 0;
            m_indexBuffer.clear();
            m_vertexStream.clear();
            return false;
        }
        if (place.isNew) {
            reader.append(c, m_vertexStream);
        }
        indices[c] = place.index;
    }
    return m_vertexStream.size() > 0;
}

TriangleList::TriangleList(domTriangles* const triangles)
{
    createFromCollada(triangles);
}

TriangleList::~TriangleList() = default;

bool TriangleList::createFromCollada(domTriangles* const triangles)
{
    if (triangles == nullptr) {
        VIDEO_LOG("NULL domTriangles passed in");
        return false;
    }
    m_material = triangles->getMaterial();
    if (triangles->getInput_array().getCount() == 0) {
        VIDEO_LOG("Skipping <triangles> element with no vertex description");
        return false;
    }
    m_count = detail::low32(triangles->getCount());
    const domPRef p = triangles->getP();
    const auto input = SharedHandle<InputLocalOffset>::make(triangles->getInput_array(), p);
    m_bytesPerVertex = input->bytePerAccess();
    m_vertexPerPrimitive = 3;
    m_vertexLayout = input->layout();
    m_type = PRIMITIVE_TRIANGLE_LIST;
    m_id = triangles->getName();

    const std::uint64_t indexCount = p != nullptr ? p->getValue().getCount() : 0;
    const std::uint64_t wholeTriangles = indexCount / (std::uint64_t(m_vertexPerPrimitive) * input->offsetCount());
    if (m_count > wholeTriangles) {
        VIDEO_LOG("Triangles have fewer indices than their count");
        m_count = static_cast<unsigned>(wholeTriangles);
    }
    return createIndexedVertexBuffer(input);
}

PointCloud::PointCloud(domVertices* const vertices)
{
    createFromCollada(vertices);
}

PointCloud::~PointCloud() = default;

bool PointCloud::createFromCollada(domVertices* const vertices)
{
    VIDEO_TRACE("PointCloud::createFromCollada");
    if (vertices == nullptr) {
        VIDEO_LOG("NULL domVertices passed");
        return false;
    }
    m_id = vertices->getId();
    m_vertexLayout.clear();
    InputLocal input(vertices->getInput_array());
    m_bytesPerVertex = input.bytePerAccess();
    m_vertexLayout = input.layout();
    m_vertexStream.clear();
    m_count = input.numVertices();
    m_vertexPerPrimitive = 1;
    const unsigned limit = maxPoints(input.backedVertices(), m_bytesPerVertex);
    m_count = m_count < limit ? m_count : limit;
    if (!detail::MemoryBudget::take(m_count, vertexCost(m_bytesPerVertex, m_vertexLayout.size()))) {
        VIDEO_LOG(detail::MemoryBudget::exceeded);
        m_count = 0;
    }
    detail::VertexReader reader(input);
    for (unsigned i = 0; i < m_count; ++i) {
        reader.append(i, m_vertexStream);
    }
    m_type = PRIMITIVE_POINT_CLOUD;
    return true;
}

unsigned createPrimitive(const domMesh& mesh, vesk::Array<SharedHandle<Primitive>>& primitives)
{
    using PrimitiveHandle = SharedHandle<Primitive>;
    primitives.clear();
    // sic: lines are counted but not read, and a mesh with lines gets no point cloud
    auto result = static_cast<unsigned>(mesh.getLines_array().getCount());
    const domTriangles_Array& triangles = mesh.getTriangles_array();
    for (std::size_t i = 0; i < triangles.getCount(); ++i) {
        const auto list = PrimitiveHandle::make<TriangleList>();
        static_cast<TriangleList&>(*list).createFromCollada(triangles[i]);
        primitives.append(list);
        ++result;
    }
    if (result != 0) {
        return result;
    }
    const auto cloud = PrimitiveHandle::make<PointCloud>();
    static_cast<PointCloud&>(*cloud).createFromCollada(mesh.getVertices());
    primitives.append(cloud);
    return 1;
}

} // namespace libVideo
