#include "VertexReader.h"

#include "../detail/Dom.h"

#include <libVideo/SceneGraph/Accessor.h>
#include <libVideo/SceneGraph/Source.h>

#include <algorithm>
#include <typeinfo>
#include <utility>

namespace libVideo::detail {

VertexReader::VertexReader(InputLocalOffset& input)
    : m_input(input), m_indexed(&input), m_length(input.offsetCount()), m_tuple(input.offsetCount())
{
    if (input.m_p != nullptr) {
        m_entries = dataOf(input.m_p->getValue());
        m_entryCount = input.m_p->getValue().getCount();
    }
    // A class derived by the host may read in its own way. If there are more sources than offsets, `data` reports it at
    // the first vertex.
    m_isDirect = typeid(input) == typeid(InputLocalOffset) && input.m_sources.size() <= input.m_offsets.size();
    for (unsigned i = 0; m_isDirect && i < input.m_sources.size(); ++i) {
        m_isDirect = addSource(*input.m_sources[i], input.m_offsets[i]);
    }
}

VertexReader::VertexReader(InputLocal& input) : m_input(input), m_indexed(nullptr), m_length(1)
{
    m_isDirect = typeid(input) == typeid(InputLocal);
    for (unsigned i = 0; m_isDirect && i < input.m_sources.size(); ++i) {
        m_isDirect = addSource(*input.m_sources[i], 0);
    }
}

// @return false if the records have to be read by the source itself
bool VertexReader::addSource(const Source& source, unsigned entry)
{
    if (typeid(source) != typeid(SourceFloat)) {
        return false;
    }
    const auto& floats = static_cast<const SourceFloat&>(source);
    const Accessor* const base = floats.m_accessor.get();
    if (base == nullptr || typeid(*base) != typeid(AccessorFloat)) {
        return false;
    }
    const auto& accessor = static_cast<const AccessorFloat&>(*base);
    if (accessor.m_floatArray == nullptr || accessor.m_data.size() == 0) {
        return false;
    }
    const daeTArray<double>& values = accessor.m_floatArray->getValue();
    Records records{&accessor, dataOf(values), values.getCount(), entry, 0, {}};
    for (const Data& component : accessor.m_data) {
        if (component.tokenByteSize() != sizeof(float)) {
            return false; // its tokens have gaps between them
        }
        const std::size_t end = std::size_t{component.offset()} + component.stride();
        records.end = std::max(records.end, end);
        if (!records.runs.empty() && records.runs.back().offset + records.runs.back().length == component.offset()) {
            records.runs.back().length += component.stride();
        } else {
            records.runs.push_back({component.offset(), component.stride()});
        }
        m_vertex.resize(m_vertex.size() + component.stride());
    }
    m_records.push_back(std::move(records));
    return true;
}

const unsigned* VertexReader::tuple(unsigned corner)
{
    const std::size_t start = std::size_t{m_length} * corner;
    if (start + m_length > m_entryCount) {
        return m_indexed->pIndex(corner).getData();
    }
    for (unsigned i = 0; i < m_length; ++i) {
        m_tuple[i] = static_cast<unsigned>(m_entries[start + i]);
    }
    return m_tuple.data();
}

void VertexReader::append(unsigned corner, vesk::Array<unsigned char>& stream)
{
    if (m_isDirect && readRecords(corner)) {
        stream.append(reinterpret_cast<const unsigned char*>(m_vertex.data()),
                      static_cast<unsigned>(m_vertex.size() * sizeof(float)));
    } else {
        stream.appendArray(m_input.data(corner));
    }
}

// @return false if an index is missing or beyond the array; the sources handle such cases themselves
bool VertexReader::readRecords(unsigned corner)
{
    const std::size_t start = std::size_t{m_length} * corner;
    float* out = m_vertex.data();
    for (const Records& records : m_records) {
        const std::size_t place = start + records.entry;
        unsigned index = corner;
        if (m_indexed != nullptr) {
            index = place < m_entryCount ? static_cast<unsigned>(m_entries[place]) : 0;
        }
        const unsigned base = records.accessor->recordStart(index);
        if (index >= records.accessor->count() || std::size_t{base} + records.end > records.valueCount) {
            return false;
        }
        for (const Run& run : records.runs) {
            const double* const values = records.values + base + run.offset;
            for (unsigned j = 0; j < run.length; ++j) {
                *out++ = static_cast<float>(values[j]);
            }
        }
    }
    return true;
}

} // namespace libVideo::detail
