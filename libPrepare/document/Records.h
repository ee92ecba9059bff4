#pragma once

#include <libPrepare/document/Document.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace libPrepare {

/// The entries of a list that an `<accessor>` picks: in each record those of the params that have a name, or all if none
/// has.
class RecordLayout {
public:
    /// @param size of the list
    RecordLayout(pugi::xml_node accessor, std::size_t size);

    std::size_t width() const { return m_columns.size(); } ///< Entries that a record has.
    std::size_t count() const { return m_count; }          ///< Records in the list.
    /// Whether the list begins with the records and has nothing between them.
    bool isDense() const { return m_offset == 0 && m_columns.size() == m_stride; }

    /// Takes all other entries out of the list.
    template <class T>
    void pick(std::vector<T>& list) const
    {
        std::size_t end = m_count * width();
        if (!isDense()) {
            end = 0;
            for (std::size_t record = 0; record < m_count; ++record) { // reads never overtake writes
                for (const std::size_t column : m_columns) {
                    list[end++] = list[m_offset + record * m_stride + column];
                }
            }
        }
        list.resize(end);
    }

private:
    std::size_t m_stride;
    std::size_t m_offset;
    std::vector<std::size_t> m_columns; // positions of the entries within a record
    std::size_t m_count = 0;
};

/// The whole number in an attribute; another value if there is none, or one below 0.
std::size_t wholeNumber(pugi::xml_attribute attribute, std::size_t otherwise);

/// When the numbers of a source are read.
enum class Reading : std::uint8_t {
    now,
    onDemand, ///< Those after the first record only once they are asked for. Until then the array must not change.
};

/// The numbers that the accessor of a `<source>` picks from an array.
class Records {
public:
    Records() = default;
    /// @return no records if the source is null, holds no numbers or leads to no array
    static Records read(Document& document, pugi::xml_node source, Reading reading);

    std::size_t width() const { return m_width; } ///< Numbers in a record.
    std::size_t count() const { return m_count; }
    const double* operator[](std::size_t record) const
    {
        if (record >= m_readCount) {
            readAll();
        }
        return m_values.data() + record * m_width;
    }
    bool areFinite() const;

    /// Leaves out all records after the first ones.
    void shorten(std::size_t count);
    /// The records with these indices, in this order.
    Records reordered(const std::vector<std::size_t>& order) const;
    /// The first number of each record. No records are left.
    std::vector<double> takeFirstNumbers();

private:
    Records(std::size_t width, std::vector<double> values);
    void readAll() const;

    std::size_t m_width = 0;
    std::size_t m_count = 0;
    pugi::xml_node m_array; // of finite numbers, for the records that were not read yet
    mutable std::vector<double> m_values;
    mutable std::size_t m_readCount = 0; // records in m_values
};

} // namespace libPrepare
