#pragma once // SPDX-License-Identifier: MIT

#include <libVideo/ColladaDom.h>
#include <libVideo/Export.h>
#include <libVideo/Handles.h>
#include <libVideo/SceneGraph/Accessor.h>

#include <vesk/Array.h>
#include <vesk/SharedResource.h>
#include <vesk/String.h>

namespace libVideo {

/// One `<source>` as records of components. Only arrays of floats are read. Copies share one accessor and thus one
/// current record. The document has to stay open as long as a source is read.
class LIBVIDEO_API Source {
public:
    Source(const Source&) = default;
    Source& operator=(const Source&) = default;
    virtual ~Source();

    /// Reads the `<source>`. @return whether it can be read; see `SourceFloat`
    virtual bool createFromCollada(const daeSmartRef<domSource>& source) = 0;
    /// The components of a record, valid until another one is read, also through a copy.
    virtual const vesk::Array<Data>& operator[](unsigned index) const = 0;

    /// The `id` of the element, empty without one.
    const vesk::String& id() const { return m_id; }
    /// Type of a record.
    DataType dataType() const { return m_dataType; }
    /// Whether the source has an element; it may have failed to load nevertheless.
    bool isInitialized() const { return m_element != nullptr; }

    /// Number of records; 0 without an accessor.
    unsigned count() const { return m_accessor ? m_accessor->count() : 0; }
    /// Floats from one record to the next; 0 without an accessor.
    unsigned stride() const { return m_accessor ? m_accessor->stride() : 0; }
    /// Bytes of a record; 0 without an accessor.
    unsigned bytePerAccess() const { return m_accessor ? m_accessor->bytePerAccess() : 0; }

    /// As `operator[]`.
    const vesk::Array<Data>& data(unsigned index) const { return (*this)[index]; }

    /// How many records begin inside the array of the accessor; 0 without an accessor that has an array.
    unsigned backedCount() const { return m_accessor ? m_accessor->backedCount() : 0; }

protected:
    /// @param type what a record is
    explicit Source(DataType type) : m_dataType(type) {}
    /// @param type of a record @param source kept, so that the document lives as long
    Source(DataType type, const daeSmartRef<domSource>& source) : m_dataType(type), m_element(source) {}

    DataType m_dataType;                     ///< Type of a record.
    unsigned m_arrayCount = 0;               ///< Number of floats of a source without accessor.
    vesk::String m_id;                       ///< Of the element.
    SharedHandle<Accessor> m_accessor;       ///< Shared by copies.
    daeSmartRef<domSource> m_element;        ///< Null without one.
    mutable vesk::Array<Data> m_singleValue; ///< The current float of a source without accessor.
};

/// A source of floats: through the accessor of its `<technique_common>`, or float by float from its bare `<float_array>`
/// if it has none. A source whose accessor failed still reads through it.
class LIBVIDEO_API SourceFloat : public Source {
public:
    /// A source of invalid type, without an element.
    SourceFloat();
    /// Loads as `createFromCollada` does, and drops its result.
    explicit SourceFloat(const daeSmartRef<domSource>& source);
    SourceFloat(const SourceFloat&) = default;
    SourceFloat& operator=(const SourceFloat&) = default;
    ~SourceFloat() override;

    /// @return true if the accessor loaded and its stride is 1, 2, 3, 4 or 16, or if there is none and the array's
    ///     `count` is above 0; else false, with a message on "libVideo.source" or "libVideo.accessor"
    bool createFromCollada(const daeSmartRef<domSource>& source) override;
    /// @throws vesk::AssertionFailure past the last record, or past the last float of a bare array
    const vesk::Array<Data>& operator[](unsigned index) const override;

private:
    friend class detail::VertexReader;

    bool takeStride();

    daeSmartRef<domFloat_array> m_floatArray;
};

/// Makes the source that a reference leads to; each call makes a new one.
/// @return an empty handle, with one message on "libVideo.source", if it leads to no `<source>` or to one that cannot be
///     read as floats
LIBVIDEO_API SharedHandle<Source> createSourceFromCollada(const daeURI& uri);

} // namespace libVideo
