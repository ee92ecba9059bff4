#pragma once // SPDX-License-Identifier: MIT

#include <libVideo/Export.h>
#include <libVideo/Handles.h>
#include <libVideo/SceneGraph/Source.h>
#include <libVideo/SceneGraph/VertexLayout.h>

#include <vesk/Array.h>

namespace libVideo {

/// The inputs of one primitive, resolved to sources, and its vertices as bytes.
///
/// A vertex is the concatenation of one record per source, in source order; a record is its components in `<param>`
/// order; a component is its tokens, each a float of four bytes in host order. There is no alignment, and no gap.
class LIBVIDEO_API Input {
public:
    Input() = default;
    Input(const Input&) = default;
    Input& operator=(const Input&) = default;
    virtual ~Input();

    /// The bytes of a vertex, valid until the next call. Calling it again for the current vertex reads nothing.
    virtual const vesk::Array<unsigned char>& data(unsigned index) = 0;

    /// Whether there is any source.
    bool hasData() const { return m_sources.size() > 0; }
    /// One entry for each source, in the same order.
    const vesk::Array<VertexLayout>& layout() const { return m_layout; }
    /// Sum of the `byteSize` of all attributes.
    unsigned bytePerAccess() const { return m_bytePerAccess; }

protected:
    static constexpr unsigned noIndex = 0xFFFFFFFFu; ///< No vertex is current.

    /// Appends the bytes of a record to the stream.
    void dataAsByteStream(const vesk::Array<Data>& data);

    unsigned m_cachedIndex = noIndex;            ///< The vertex in the stream.
    unsigned m_bytePerAccess = 0;                ///< Of one vertex.
    vesk::Array<unsigned char> m_byteStream;     ///< The bytes of the current vertex.
    vesk::Array<VertexLayout> m_layout;          ///< One entry for each source.
    vesk::Array<SharedHandle<Source>> m_sources; ///< In the order of the inputs that could be used.
};

/// The inputs of a `<vertices>`: one index picks one record of every source.
class LIBVIDEO_API InputLocal : public Input {
public:
    /// Loads as `createFromCollada` does, and drops its result.
    explicit InputLocal(const daeTArray<daeSmartRef<domInputLocal>>& inputs);
    InputLocal(const InputLocal&) = default;
    InputLocal& operator=(const InputLocal&) = default;
    ~InputLocal() override;

    /// Replaces all inputs by these; those that cannot be used are skipped, each with a message on "libVideo.input" or
    /// "libVideo.source".
    /// @return true if at least one source was made; else false, with a further message
    bool createFromCollada(const daeTArray<daeSmartRef<domInputLocal>>& inputs);

    /// @throws vesk::AssertionFailure if a source has no such record; the stream then has what was read before it
    const vesk::Array<unsigned char>& data(unsigned index) override;

    /// Number of records of the first source, 0 without an accessor. The others may have fewer.
    unsigned numVertices() const { return m_numVertices; }
    /// The largest number of records that begin inside the array of a source.
    unsigned backedVertices() const;

private:
    friend class InputLocalOffset;
    friend class detail::VertexReader;
    const vesk::Array<SharedHandle<Source>>& sources() const { return m_sources; }

    unsigned m_numVertices = 0;
};

/// The inputs of a `<triangles>`: the indices of a vertex come from `<p>`, as many as there are distinct offsets.
///
/// Sources and offsets are paired by position: source i takes the offset of the i-th `<input>`. A "VERTEX" input is
/// replaced by all inputs of its `<vertices>`; several of these, or a skipped input, shift all that follow.
class LIBVIDEO_API InputLocalOffset : public Input {
public:
    /// Loads as `createFromCollada` does, and drops its result.
    InputLocalOffset(const daeTArray<daeSmartRef<domInputLocalOffset>>& inputs, domP* const p);
    InputLocalOffset(const InputLocalOffset&) = default;
    InputLocalOffset& operator=(const InputLocalOffset&) = default;
    ~InputLocalOffset() override;

    /// Skips inputs that cannot be used, as `InputLocal` does. Sources of an earlier call are kept.
    /// @param p the index list, not owned; null reads as an empty one
    /// @return true if there is at least one source; else false, with a further message
    bool createFromCollada(const daeTArray<daeSmartRef<domInputLocalOffset>>& inputs, domP* const p);

    /// The bytes of the vertex of the `index`-th tuple. Indices past the end of `<p>` read as 0.
    /// @throws vesk::IndexOutOfBounds if there are more sources than inputs
    /// @throws vesk::AssertionFailure if a source has no record of an index
    const vesk::Array<unsigned char>& data(unsigned index) override;
    /// The `index`-th tuple of `<p>`, valid until the next call; not refreshed if `data` returned that vertex last.
    const vesk::Array<unsigned>& pIndex(unsigned index);

    /// Length of a tuple.
    unsigned offsetCount() const { return m_offsetCount; }

private:
    friend class detail::VertexReader;

    void addOffset(unsigned offset);
    void createVertices(const daeSmartRef<domInputLocalOffset>& input);
    void refreshTuple(unsigned index);

    unsigned m_offsetCount = 0;
    vesk::Array<unsigned> m_offsets; // of each input, with repeats
    domP* m_p = nullptr;             // of the document
    vesk::Array<unsigned> m_pIndices;
};

} // namespace libVideo
