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
    /// Of an input without a list of indices: corner i is record i of every source.
    explicit VertexReader(InputLocal& input);

    /// The tuple of a corner, as `InputLocalOffset::pIndex` gives it; valid until the next call. Not for an input
    /// without a list of indices.
    const unsigned* tuple(unsigned corner);
    /// Appends the bytes of a corner's vertex. @throws what `Input::data` throws, with the stream unchanged
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

    Input& m_input;
    InputLocalOffset* m_indexed;         // the input, if it has a list of indices
    const daeULong* m_entries = nullptr; // of `<p>`
    std::size_t m_entryCount = 0;
    unsigned m_length; // of a tuple
    bool m_isDirect = true;
    std::vector<Records> m_records;
    std::vector<unsigned> m_tuple;
    std::vector<float> m_vertex;
};

} // namespace libVideo::detail
