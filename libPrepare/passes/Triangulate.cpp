#include "Passes.h"

#include <libPrepare/document/Numbers.h>
#include <libPrepare/geometry/IndexReader.h>
#include <libPrepare/geometry/Sources.h>
#include <libPrepare/geometry/Tessellator.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <numeric>

namespace libPrepare {

namespace {

enum class Kind { none, triangles, polylist, polygons, tristrips, trifans };

Kind kindOf(pugi::xml_node element)
{
    const std::string_view name = element.name();
    return name == "triangles"   ? Kind::triangles
           : name == "polylist"  ? Kind::polylist
           : name == "polygons"  ? Kind::polygons
           : name == "tristrips" ? Kind::tristrips
           : name == "trifans"   ? Kind::trifans
                                 : Kind::none;
}

// Faces that are left out, by reason.
struct Rejects {
    std::size_t outside = 0; // an index beyond the positions, or a position that is no number
    std::size_t small = 0;   // fewer than three corners
    std::size_t flat = 0;    // no area
    std::size_t tooLong = 0;

    std::size_t all() const { return outside + small + flat + tooLong; }
};

bool isBlankText(pugi::xml_node node)
{
    return node.type() == pugi::node_pcdata && trimmed(node.value()).empty();
}

std::string plural(std::size_t count, const std::string& noun)
{
    return std::to_string(count) + ' ' + noun + (count == 1 ? "" : "s");
}

// Turns one primitive into triangles.
class FaceReader {
public:
    FaceReader(Document& document, Sources& sources, Tessellator& tessellator, pugi::xml_node element)
        : m_document(document),
          m_sources(sources),
          m_tessellator(tessellator),
          m_element(element),
          m_kind(kindOf(element))
    {
        const std::vector<Input> inputs = inputsOf(element);
        m_positions = positionsOf(document, sources, inputs);
        m_stride = strideOf(inputs);
        if (const Input* const vertex = firstInput(inputs, "VERTEX")) {
            m_vertexOffset = vertex->offset;
        }
    }

    void run()
    {
        switch (m_kind) {
        case Kind::none:
            return;
        case Kind::triangles:
            readTriangles();
            break;
        case Kind::polylist:
            readPolylist();
            break;
        case Kind::polygons:
            readPolygons();
            break;
        case Kind::tristrips:
        case Kind::trifans:
            readStrips();
            break;
        }
        write();
    }

private:
    // The text of a corner.
    struct Span {
        const char* start = nullptr;
        const char* end = nullptr;
    };

    bool isShown(const std::int32_t* corner) const
    {
        const std::int32_t index = corner[m_vertexOffset];
        if (index < 0 || m_positions == nullptr || static_cast<std::size_t>(index) >= m_positions->count) {
            return false;
        }
        if (m_positions->isFinite) {
            return true;
        }
        const double* const values = position(index);
        const std::size_t width = std::min<std::size_t>(m_positions->width(), 3);
        return std::all_of(values, values + width, [](double value) { return std::isfinite(value); });
    }

    const double* position(std::int32_t index) const
    {
        if (m_values == nullptr) {
            m_values = m_sources.values(*m_positions).data();
        }
        return m_values + static_cast<std::size_t>(index) * m_positions->width();
    }

    Vector3 point(const std::int32_t* corner) const
    {
        const double* const values = position(corner[m_vertexOffset]);
        return {values[0], values[1], m_positions->width() > 2 ? values[2] : 0.0};
    }

    // The whole tuples of a list are appended to m_tuples. Returns their number.
    std::size_t readTuples(pugi::xml_node list)
    {
        std::string scratch;
        std::vector<std::int32_t> entries = indices(textOf(list, scratch));
        const std::size_t count = entries.size() / m_stride;
        entries.resize(count * m_stride);
        if (m_tuples.empty()) {
            m_tuples = std::move(entries);
        } else {
            m_tuples.insert(m_tuples.end(), entries.begin(), entries.end());
        }
        return count;
    }

    const std::int32_t* corner(std::size_t index) const { return m_tuples.data() + index * m_stride; }

    void appendTriangle(std::size_t a, std::size_t b, std::size_t c)
    {
        for (const std::size_t index : {a, b, c}) {
            const std::int32_t* const entries = corner(index);
            for (std::size_t i = 0; i < m_stride; ++i) {
                appendEntry(m_text, entries[i]);
            }
            count(entries);
        }
        ++m_count;
    }

    // Adds the entries of a written corner to the census.
    void count(const std::int32_t* entries)
    {
        if (m_greatest.empty()) { // no earlier, since an offset may be huge, but not that of a corner
            m_greatest.assign(m_stride, -1);
            m_hasInvalid.assign(m_stride, false);
        }
        for (std::size_t i = 0; i < m_stride; ++i) {
            m_greatest[i] = std::max(m_greatest[i], entries[i]);
            if (entries[i] < 0) {
                m_hasInvalid[i] = true;
            }
        }
    }

    // Handles several `<p>`, of which only the first would be read, a wrong count, and faces that cannot be shown.
    void readTriangles()
    {
        if (needsNothing()) {
            m_isUntouched = true;
            return;
        }
        std::size_t lists = 0;
        for (const pugi::xml_node list : m_element.children("p")) {
            readTuples(list);
            ++lists;
        }
        const std::size_t held = m_tuples.size() / m_stride / 3;
        const std::string_view declared = trimmed(m_element.attribute("count").value());
        m_faces = std::min(wholeOr(declared, held), held);
        const bool fits = lists == 1 && wholeOr(declared, held + 1) <= held;
        std::size_t first = 0;
        while (first < m_faces && areShown(3 * first, 3)) {
            ++first;
        }
        m_keepsList = lists == 1 && first == m_faces;
        if (m_keepsList) {
            m_isUntouched = fits;
            m_count = m_faces;
            return;
        }
        for (std::size_t face = 0; face < m_faces; ++face) {
            if (face < first || areShown(3 * face, 3)) {
                appendTriangle(3 * face, 3 * face + 1, 3 * face + 2);
            } else {
                ++m_rejects.outside;
            }
        }
    }

    // Most lists of triangles are correct, which can be checked without storing their indices.
    bool needsNothing() const
    {
        const pugi::xml_node list = m_element.child("p");
        if (m_positions == nullptr || !m_positions->isFinite || !list || list.next_sibling("p")) {
            return false;
        }
        std::string scratch;
        const std::string_view text = textOf(list, scratch);
        const std::size_t declared = wholeOr(trimmed(m_element.attribute("count").value()), text.size());
        ColumnCensus census = censusOf(text, m_stride, 3 * declared);
        const bool isFine = census.tuples == 3 * declared && m_vertexOffset < census.greatest.size() &&
                            !census.hasInvalid[m_vertexOffset] &&
                            static_cast<std::ptrdiff_t>(census.greatest[m_vertexOffset]) <
                                static_cast<std::ptrdiff_t>(m_positions->count);
        if (isFine) {
            m_sources.keepCensus(list, m_stride, 3 * declared, std::move(census));
        }
        return isFine;
    }

    bool areShown(std::size_t start, std::size_t count) const
    {
        for (std::size_t i = start; i < start + count; ++i) {
            if (!isShown(corner(i))) {
                return false;
            }
        }
        return true;
    }

    void readPolylist()
    {
        std::string scratch;
        IndexReader entries(joinedLists(scratch));
        std::string countScratch;
        WordReader counts(textOf(m_element.child("vcount"), countScratch));
        bool isOnlyTriangles = true;
        while (counts.next()) {
            ++m_faces;
            long long count = -1;
            const std::from_chars_result read = std::from_chars(counts.start(), counts.end(), count);
            const bool isWhole = read.ptr == counts.end() && read.ec == std::errc();
            const std::size_t length = isWhole ? static_cast<std::size_t>(std::max(count, 0LL)) : 0;
            isOnlyTriangles = isOnlyTriangles && length == 3;
            if (!readFace(entries, length) || length < 3) {
                ++m_rejects.small;
            } else {
                m_lengths.assign(1, length);
                appendFace();
            }
        }
        m_keepsList = isOnlyTriangles && m_rejects.all() == 0 && m_element.child("p") &&
                      !m_element.child("p").next_sibling("p") && !readFace(entries, 1);
    }

    // The text of `<p>`, or the complete tuples of all of them.
    std::string_view joinedLists(std::string& scratch)
    {
        const pugi::xml_node list = m_element.child("p");
        std::string_view text = textOf(list, scratch);
        if (list.next_sibling("p")) {
            for (const pugi::xml_node each : m_element.children("p")) {
                readTuples(each);
            }
            scratch.clear();
            for (const std::int32_t entry : m_tuples) {
                appendEntry(scratch, entry);
            }
            text = scratch;
        }
        m_text.reserve(text.size() + text.size() / 2); // which quads take
        return text;
    }

    // Reads the corners of a face to m_tuples, and their positions in the text. @return false if the list is too short
    bool readFace(IndexReader& entries, std::size_t length)
    {
        IndexReader reader = entries; // a copy, which stays in registers
        if (length > reader.left() / m_stride) {
            entries = IndexReader({});
            return false;
        }
        m_tuples.resize(length * m_stride);
        m_spans.resize(length);
        bool isPlain = true;
        const char* following = nullptr; // where the next entry starts if there is one blank before it
        std::int32_t* tuple = m_tuples.data();
        for (Span& span : m_spans) {
            for (std::size_t i = 0; i < m_stride; ++i) {
                if (!reader.next()) {
                    entries = reader;
                    return false;
                }
                const char* const start = reader.start();
                const std::int32_t index = reader.index();
                *tuple++ = index;
                isPlain = isPlain && index >= 0 && (*start != '0' || reader.end() - start == 1) &&
                          (following == nullptr || (start == following && following[-1] == ' '));
                span.start = i == 0 ? start : span.start;
                following = reader.end() + 1;
            }
            span.end = reader.end();
        }
        m_isPlainText = isPlain;
        entries = reader;
        return true;
    }

    void readPolygons()
    {
        for (const pugi::xml_node face : m_element.children()) {
            const bool hasHoles = is(face, "ph");
            if (!hasHoles && !is(face, "p")) {
                continue;
            }
            ++m_faces;
            m_tuples.clear();
            m_isPlainText = false;
            m_lengths.clear();
            if (!hasHoles) {
                m_lengths.push_back(readTuples(face));
            }
            for (const pugi::xml_node loop : face.children()) {
                if (hasHoles && (is(loop, "p") || is(loop, "h"))) {
                    m_lengths.push_back(readTuples(loop));
                }
            }
            if (m_lengths.empty() || *std::min_element(m_lengths.begin(), m_lengths.end()) < 3) {
                ++m_rejects.small;
            } else {
                appendFace();
            }
        }
    }

    // A face with loops of m_lengths corners.
    void appendFace()
    {
        const std::size_t corners = std::accumulate(m_lengths.begin(), m_lengths.end(), std::size_t(0));
        if (!areShown(0, corners)) {
            ++m_rejects.outside;
            return;
        }
        if (corners == 3) {
            appendFan(corners);
            return;
        }
        m_polygon.points.resize(corners);
        for (std::size_t i = 0; i < corners; ++i) {
            m_polygon.points[i] = point(corner(i));
        }
        if (m_lengths.size() == 1 && Tessellator::isClearlyFan(m_polygon.points)) {
            appendFan(corners);
            return;
        }
        m_polygon.lengths = m_lengths;
        m_polygon.tuples = m_tuples.data();
        m_polygon.stride = m_stride;
        m_triangles.clear();
        switch (m_tessellator.triangulate(m_polygon, m_triangles)) {
        case Tessellator::Result::flat:
            if (m_lengths.size() > 1 || !hasThreeVertices(corners)) {
                ++m_rejects.flat;
                return;
            }
            appendFan(corners); // it may be a sliver whose area is lost in rounding
            break;
        case Tessellator::Result::tooLong:
            ++m_rejects.tooLong;
            return;
        case Tessellator::Result::done:
            break;
        }
        for (std::size_t i = 0; i + 2 < m_triangles.size(); i += 3) {
            appendTriangle(m_triangles[i], m_triangles[i + 1], m_triangles[i + 2]);
        }
    }

    void appendFan(std::size_t corners)
    {
        if (!m_isPlainText) {
            for (std::size_t i = 1; i + 1 < corners; ++i) {
                appendTriangle(0, i, i + 1);
            }
            return;
        }
        for (std::size_t i = 0; i < corners; ++i) {
            count(corner(i));
        }
        for (std::size_t i = 1; i + 1 < corners; ++i) {
            appendText(m_spans[0].start, m_spans[0].end);
            appendText(m_spans[i].start, m_spans[i + 1].end);
        }
        m_count += corners - 2;
    }

    void appendText(const char* start, const char* end)
    {
        if (!m_text.empty()) {
            m_text += ' ';
        }
        m_text.append(start, static_cast<std::size_t>(end - start));
    }

    bool hasThreeVertices(std::size_t corners) const
    {
        const std::int32_t first = corner(0)[m_vertexOffset];
        std::int32_t second = first;
        for (std::size_t i = 0; i < corners; ++i) {
            const std::int32_t vertex = corner(i)[m_vertexOffset];
            if (second == first) {
                second = vertex;
            } else if (vertex != first && vertex != second) {
                return true;
            }
        }
        return false;
    }

    void readStrips()
    {
        for (const pugi::xml_node list : m_element.children("p")) {
            m_tuples.clear();
            const std::size_t corners = readTuples(list);
            for (std::size_t i = 0; i + 2 < corners; ++i) {
                ++m_faces;
                const bool isTurned = m_kind == Kind::tristrips && i % 2 == 1;
                const std::size_t a = m_kind == Kind::trifans ? 0 : i;
                const std::size_t b = isTurned ? i + 2 : i + 1;
                const std::size_t c = isTurned ? i + 1 : i + 2;
                const auto vertex = [&](std::size_t index) { return corner(index)[m_vertexOffset]; };
                if (!isShown(corner(a)) || !isShown(corner(b)) || !isShown(corner(c))) {
                    ++m_rejects.outside;
                } else if (vertex(a) == vertex(b) || vertex(b) == vertex(c) || vertex(c) == vertex(a)) {
                    ++m_rejects.flat; // strips turn corners by these
                } else {
                    appendTriangle(a, b, c);
                }
            }
        }
    }

    void write()
    {
        if (m_isUntouched) {
            return;
        }
        report();
        pugi::xml_node list = m_keepsList ? m_element.child("p") : pugi::xml_node();
        for (pugi::xml_node child = m_element.first_child(); child;) {
            const pugi::xml_node following = child.next_sibling();
            if (child != list && (is(child, "p") || is(child, "ph") || is(child, "vcount"))) {
                if (!list) {
                    list = m_element.insert_child_before("p", child);
                    setText(list, m_text);
                    m_sources.keepCensus(list, m_stride, 3 * m_count, {m_greatest, m_hasInvalid, 3 * m_count});
                } else if (const pugi::xml_node before = child.previous_sibling(); isBlankText(before)) {
                    m_element.remove_child(before);
                }
                discard(child);
            }
            child = following;
        }
        if (!list) {
            setText(m_element.append_child("p"), m_text);
        }
        m_element.set_name("triangles");
        setAttribute(m_element, "count", std::to_string(m_count));
    }

    void report()
    {
        if (!m_document.isMade(m_element)) {
            reportChanges(); // those of a posed copy are the same
        }
        if (m_rejects.tooLong > 0) {
            m_document.lost(m_element, "faces", plural(m_rejects.tooLong, "face") + " too entangled to be cut up.",
                            "Make triangles of it in the program that it comes from.");
        }
    }

    void reportChanges()
    {
        const std::string name = m_element.name();
        if (m_kind == Kind::triangles) {
            if (m_rejects.all() == 0) {
                m_document.rewritten(
                    m_element, "count",
                    "A list of triangles has another number of corners than it says, or several lists.",
                    "It says " + plural(m_count, "triangle") + " in one list now.");
            }
        } else {
            m_document.rewritten(m_element, name.c_str(), "Faces of a <" + name + "> are not read.",
                                 plural(m_faces, "face") + " became " + plural(m_count, "triangle") + '.');
        }
        const auto drop = [&](std::size_t count, const char* why) {
            if (count > 0) {
                m_document.rewritten(m_element, "faces", plural(count, "face") + " of a <" + name + "> " + why,
                                     "Left out, as there is nothing to show.");
            }
        };
        drop(m_rejects.outside, "with a corner that names no position, or one that is no number.");
        drop(m_rejects.small, "with fewer than three corners.");
        drop(m_rejects.flat, "with fewer than three different corners.");
    }

    Document& m_document;
    Sources& m_sources;
    Tessellator& m_tessellator;
    pugi::xml_node m_element;
    Kind m_kind;
    const SourceLayout* m_positions = nullptr;
    mutable const double* m_values = nullptr; // of m_positions, read when they are needed
    std::size_t m_stride = 1;
    std::size_t m_vertexOffset = 0;

    std::vector<std::int32_t> m_tuples;
    std::vector<std::size_t> m_lengths; // of the face at hand
    std::vector<Span> m_spans;          // of its corners
    bool m_isPlainText = false;         // these are one run, written as it would be
    Polygon m_polygon;
    std::vector<std::size_t> m_triangles;

    bool m_isUntouched = false; // a list of triangles that needs nothing
    bool m_keepsList = false;   // the text of <p> stays to the letter
    std::size_t m_faces = 0;
    std::size_t m_count = 0; // triangles written
    std::string m_text;
    std::vector<std::int32_t> m_greatest; // of each column of m_text
    std::vector<bool> m_hasInvalid;
    Rejects m_rejects;
};

} // namespace

void triangulate(Document& document)
{
    Sources& sources = document.sources();
    Tessellator tessellator;
    for (const pugi::xml_node library : document.root().children("library_geometries")) {
        for (const pugi::xml_node geometry : library.children("geometry")) {
            for (const pugi::xml_node body : geometry.children()) {
                if (!is(body, "mesh") && !is(body, "convex_mesh")) {
                    continue;
                }
                for (const pugi::xml_node element : body.children()) {
                    FaceReader(document, sources, tessellator, element).run();
                }
            }
        }
    }
    sources.freeValues();
}

} // namespace libPrepare
