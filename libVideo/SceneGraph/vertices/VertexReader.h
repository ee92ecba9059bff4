#pragma once

/// @file
/// Copies records of floats into vertices, without a call for each value.

#include <libVideo/ColladaDom.h>
#include <libVideo/SceneGraph/Input.h>

#include <vesk/Array.h>

#include <cstddef>
#include <vector>

namespace libVideo::detail {

/// Reads vertices of an input as its `data` gives them, straight from the arrays of the document. Lasts as long as the
/// input, which must not be loaded again.
class VertexReader {
public:
    explicit VertexReader(InputLocalOffset& input);

    /// The tuple of a corner, as `InputLocalOffset::pIndex` gives it; valid until the next call.
    const unsigned* tuple(unsigned corner);
    /// Appends the bytes of a corner's vertex. @throws what `InputLocalOffset::data` throws, with the stream unchanged
    void append(unsigned corner, vesk::Array<unsigned char>& stream);

private:
    /// Neighbouring tokens of a record.
    struct Run {
        unsigned offset;
        unsigned length;
    };
    /// A source whose records are read here.
    struct Records {
        const AccessorFloat* accessor;
        const double* values;
        std::size_t valueCount;
        unsigned entry;  ///< place of its index behind the start of a tuple
        std::size_t end; ///< how far a record reaches
        std::vector<Run> runs;
    };

    bool addSource(const Source& source, unsigned entry);
    bool readRecords(unsigned corner);

    InputLocalOffset& m_input;
    const daeULong* m_entries = nullptr; // of `<p>`
    std::size_t m_entryCount = 0;
    unsigned m_length; // of a tuple
    bool m_isDirect = true;
    std::vector<Records> m_records;
    std::vector<unsigned> m_tuple;
    std::vector<float> m_vertex;
};

} // namespace libVideo::detail
