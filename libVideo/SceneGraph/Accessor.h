#pragma once // SPDX-License-Identifier: MIT

#include <libVideo/Export.h>
#include <libVideo/Handles.h>
#include <libVideo/SceneGraph/DataType.h>

#include <vesk/Array.h>
#include <vesk/Buffer.h>
#include <vesk/String.h>

namespace libVideo {

/// One component of a record, as one `<param>` declares it, with the bytes of its value in the current record.
///
/// A value is `stride()` tokens, `tokenByteSize()` bytes apart; each is a 32-bit float in host byte order in the first
/// four of them. All other bytes are zero.
class LIBVIDEO_API Data {
public:
    /// Zeros, until an accessor fills it.
    Data(const vesk::String& name, unsigned stride, DataType dataType, unsigned offset, unsigned tokenByteSize);

    /// The `name` of the `<param>`; empty if the accessor has no `<param>`.
    const vesk::String& name() const { return m_name; }
    /// Number of tokens: 1 for a float, 16 for a float4x4.
    unsigned stride() const { return m_stride; }
    DataType dataType() const { return m_dataType; } ///< `DATA_TYPE_FLOAT` or `DATA_TYPE_FLOAT4X4`.
    /// Position of the first token in a record, in floats.
    unsigned offset() const { return m_offset; }
    /// Bytes from one token to the next: 4 for a float, 64 for a float4x4.
    unsigned tokenByteSize() const { return m_tokenByteSize; }

    /// The first byte of a token, not owned by the handle.
    /// @throws vesk::AssertionFailure if `index` is not below `stride()`
    Link<unsigned char> operator[](unsigned index);
    const Link<unsigned char> operator[](unsigned index) const; ///< As above.

private:
    vesk::String m_name;
    unsigned m_stride;
    DataType m_dataType;
    unsigned m_offset;
    unsigned m_tokenByteSize;
    vesk::Buffer<unsigned char> m_buffer;
};

/// Reads an array of a document as a sequence of records, on demand: `[]` reads a record into a list of components,
/// which keeps it until another record is read.
class LIBVIDEO_API Accessor {
public:
    Accessor(const Accessor&) = default;
    Accessor& operator=(const Accessor&) = default;

protected:
    Accessor() = default;

    /// Reads a record into the list.
    virtual const vesk::Array<Data>& readDataFromArray(unsigned index) = 0;

private:
    virtual unsigned typeStride(DataType type) const = 0;
    virtual unsigned typeByteSize(DataType type) const = 0;
    virtual DataType stringToType(const vesk::String& type) const = 0;

protected:
    /// Floats that all `<param>`s take together.
    virtual unsigned calculateStride(const daeSmartRef<domAccessor>& accessor) const = 0;

public:
    virtual ~Accessor();

    /// Reads the `<accessor>`. Meant to run once on an object.
    /// @return false, with one message on "libVideo.accessor" and only `count()` set, if its source is no array of the
    ///     right kind
    virtual bool createFromCollada(const daeSmartRef<domAccessor>& accessor) = 0;

    /// The components of record `index`, in the order of the `<param>`s; valid until another record is read.
    /// Reading the current record again costs nothing; no read allocates.
    /// @throws vesk::AssertionFailure if `index` is not below `count()`
    const vesk::Array<Data>& operator[](unsigned index);

    /// Number of records: the `count` of the `<accessor>`.
    unsigned count() const { return m_count; }
    /// Floats from one record to the next: the `stride` of the `<accessor>` if it is above 1, else the floats that all
    /// `<param>`s take together.
    unsigned stride() const { return m_stride; }
    /// Bytes of one record, its components one after the other; 0 without any `<param>`.
    unsigned bytePerAccess() const { return m_bytePerAccess; }
    /// Empty.
    const vesk::String& name() const { return m_name; }

    /// How many records begin inside the array; 0 without an array.
    virtual unsigned backedCount() const = 0;

protected:
    static constexpr unsigned noIndex = 0xFFFFFFFFu; ///< No record is current.

    unsigned m_stride = 0;             ///< In floats.
    unsigned m_offset = 0;             ///< In records.
    unsigned m_count = 0;              ///< In records.
    unsigned m_currentIndex = noIndex; ///< The record in `m_data`.
    unsigned m_bytePerAccess = 0;      ///< Of one record.
    vesk::String m_name;               ///< Never set by a document.
    vesk::Array<Data> m_data;          ///< The components of the current record.
};

/// Reads a `<float_array>`, whose document has to stay open as long as the accessor is used.
///
/// Record i starts at float (offset + i) · stride of the array, so the `offset` of the `<accessor>` counts records. A
/// `<param>` without a name is skipped, but takes up its floats in the record. What is past the end of the array reads
/// as 0.
class LIBVIDEO_API AccessorFloat : public Accessor {
public:
    AccessorFloat() = default;
    AccessorFloat(const AccessorFloat&) = default;
    AccessorFloat& operator=(const AccessorFloat&) = default;
    ~AccessorFloat() override;

    /// @copydoc Accessor::createFromCollada
    /// An array that is shorter than the records need gives true, with one message.
    /// @throws vesk::AssertionFailure if a `<param>` has a type other than "float" and "float4x4", whatever its case
    bool createFromCollada(const daeSmartRef<domAccessor>& accessor) override;
    unsigned backedCount() const override;

protected:
    const vesk::Array<Data>& readDataFromArray(unsigned index) override;
    /// @throws vesk::AssertionFailure if a `<param>` has a type other than "float" and "float4x4"
    unsigned calculateStride(const daeSmartRef<domAccessor>& accessor) const override;
    /// Whether the text names a type that a component can have.
    bool isTypeValid(const vesk::String& type) const;

private:
    friend class detail::VertexReader;

    unsigned typeStride(DataType type) const override;
    unsigned typeByteSize(DataType type) const override;
    DataType stringToType(const vesk::String& type) const override;

    // The first float of a record in the array. The product wraps in 32 bits.
    unsigned recordStart(unsigned index) const { return (m_offset + index) * m_stride; }
    bool isAllowed(const domAccessor& accessor) const;
    void appendComponents(const domAccessor& accessor);
    bool reachesBeyondArray() const;

    domFloat_array* m_floatArray = nullptr; // of the document
};

} // namespace libVideo
