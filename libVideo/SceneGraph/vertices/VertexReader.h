#pragma once

/// @file
/// Copies records of floats into vertices.

#include <libVideo/ColladaDom.h>
#include <libVideo/SceneGraph/Input.h>

#include <vesk/Array.h>

#include <cstddef>
#include <vector>

namespace libVideo::detail {

/// Reads the same vertices as the `data` of an input, but directly from the arrays of the document, without a call for
/// each value. The input has to outlive the reader, and must not be loaded again.
class VertexReader {
public:
    explicit VertexReader(InputLocalOffset& input);
    /// For an input without a list of indices: corner i is record i of every source.
    explicit VertexReader(InputLocal& input);

    /// The tuple of a corner, as `InputLocalOffset::pIndex` returns it; valid until the next call. Only for an input
    /// with a list of indices.
    const unsigned* tuple(unsigned corner);
    /// Appends the bytes of a corner's vertex. @throws what `Input::data` throws; the stream is unchanged then
    void append(unsigned corner, vesk::Array<unsigned char>& stream);

private:
    /// Adjacent tokens of a record.
    struct Run {
        unsigned offset;
        unsigned length;
    };
    /// A source whose records are read directly.
    struct Records {
        const AccessorFloat* accessor;
        const double* values;
        std::size_t valueCount;
        unsigned entry;  ///< position of its index in a tuple
        std::size_t end; ///< past the last value of a record, from its start
        std::vector<Run> runs;
    };

    bool addSource(const Source& source, unsigned entry);
    bool readRecords(unsigned corner);

    Input& m_input;
    InputLocalOffset* m_indexed;         // the input if it has a list of indices, or null
    const daeULong* m_entries = nullptr; // of `<p>`
    std::size_t m_entryCount = 0;
    unsigned m_length; // of a tuple
    bool m_isDirect = true;
    std::vector<Records> m_records;
    std::vector<unsigned> m_tuple;
    std::vector<float> m_vertex;
};

} // namespace libVideo::detail
