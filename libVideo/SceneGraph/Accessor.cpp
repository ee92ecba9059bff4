#include <libVideo/SceneGraph/Accessor.h>

#include "detail/Dom.h"
#include "detail/Log.h"
#include "detail/MemoryBudget.h"

#include <cstdint>
#include <cstring>

namespace libVideo {

VIDEO_LOG_CHANNEL("libVideo.accessor")
VIDEO_SOURCE_PATH("libVideo/SceneGraph/Accessor")

namespace {

const vesk::String& floatWord()
{
    static const vesk::String word("float");
    return word;
}

const vesk::String& float4x4Word()
{
    static const vesk::String word("float4x4");
    return word;
}

// Each of the sixteen tokens of a matrix has room for the whole matrix.
constexpr std::uint64_t bytesPerMatrix = std::uint64_t{16} * 16 * sizeof(float);

// The type of the element that a reference refers to, or the text of the reference if it refers to nothing.
const char* typeNameOr(const daeElementRef& element, const daeURI& reference)
{
    return element != nullptr ? element->getTypeName() : reference.getOriginalURI();
}

} // namespace

Data::Data(const vesk::String& name, unsigned stride, DataType dataType, unsigned offset, unsigned tokenByteSize)
    : m_name(name), m_stride(stride), m_dataType(dataType), m_offset(offset), m_tokenByteSize(tokenByteSize)
{
    // Zeroed, because all bytes of a token reach the vertex stream, but a value may fill only the first of them.
    m_buffer.resize(std::uint64_t(stride) * tokenByteSize, true);
}

Link<unsigned char> Data::operator[](unsigned index)
{
    VIDEO_ASSERT(index < m_stride);
    return Link<unsigned char>(m_buffer.data() + std::size_t(index) * m_tokenByteSize);
}

const Link<unsigned char> Data::operator[](unsigned index) const
{
    VIDEO_ASSERT(index < m_stride);
    // There is no handle to const bytes. Users of a const component only read them.
    return Link<unsigned char>(const_cast<unsigned char*>(m_buffer.data()) + std::size_t(index) * m_tokenByteSize);
}

Accessor::~Accessor() = default;

const vesk::Array<Data>& Accessor::operator[](unsigned index)
{
    VIDEO_ASSERT(index < m_count);
    if (index == m_currentIndex) {
        return m_data;
    }
    return readDataFromArray(index);
}

AccessorFloat::~AccessorFloat() = default;

bool AccessorFloat::createFromCollada(const daeSmartRef<domAccessor>& accessor)
{
    detail::expectElement(accessor, "AccessorFloat");
    m_count = detail::low32(accessor->getCount());
    const daeElementRef source = accessor->getSource().getElement();
    m_floatArray = daeSafeCast<domFloat_array>(source);
    if (m_floatArray == nullptr) {
        VIDEO_LOG("Data source is not a float array ", typeNameOr(source, accessor->getSource()));
        return false;
    }
    if (!isAllowed(*accessor)) {
        VIDEO_LOG(detail::MemoryBudget::exceeded);
        m_floatArray = nullptr;
        return false;
    }
    m_offset = detail::low32(accessor->getOffset());
    m_stride = calculateStride(accessor);
    if (accessor->getParam_array().getCount() == 0) {
        m_data.append(Data(vesk::String::EMPTY(), 1, DATA_TYPE_FLOAT, 0, typeByteSize(DATA_TYPE_FLOAT)));
    } else {
        appendComponents(*accessor);
    }
    if (reachesBeyondArray()) {
        VIDEO_LOG("Accessor reaches beyond its float array");
    }
    return true;
}

// Charged for every accessor, because each has its own components, even if several read the same element.
bool AccessorFloat::isAllowed(const domAccessor& accessor) const
{
    const domParam_Array& params = accessor.getParam_array();
    if (!detail::MemoryBudget::take(params.getCount(), sizeof(Data))) {
        return false;
    }
    std::uint64_t bytes = 0;
    for (std::size_t i = 0; i < params.getCount(); ++i) {
        const char* const name = params[i]->getName();
        const bool isMatrix = vesk::String::compareNoCase(params[i]->getType(), float4x4Word()) == 0;
        bytes += (name != nullptr ? std::strlen(name) : 0) + (isMatrix ? bytesPerMatrix : sizeof(float));
    }
    return detail::MemoryBudget::take(bytes, 1);
}

void AccessorFloat::appendComponents(const domAccessor& accessor)
{
    const domParam_Array& params = accessor.getParam_array();
    unsigned position = 0;
    for (std::size_t i = 0; i < params.getCount(); ++i) {
        const vesk::String typeText(params[i]->getType());
        const DataType type = stringToType(typeText);
        const unsigned tokens = typeStride(type);
        const char* const name = params[i]->getName();
        if (name != nullptr && isTypeValid(typeText)) {
            const unsigned tokenByteSize = typeByteSize(type);
            m_data.append(Data(name, tokens, type, position, tokenByteSize));
            m_bytePerAccess += tokenByteSize * tokens;
        }
        position += tokens;
    }
}

bool AccessorFloat::reachesBeyondArray() const
{
    std::uint64_t recordEnd = 0;
    for (const Data& component : m_data) {
        const std::uint64_t end = std::uint64_t(component.offset()) + component.stride();
        recordEnd = end > recordEnd ? end : recordEnd;
    }
    if (m_count == 0 || recordEnd == 0) {
        return false;
    }
    // Divides instead of multiplying, because the position of the last record may overflow 64 bits.
    const std::uint64_t lastRecord = std::uint64_t(m_offset) + m_count - 1;
    const std::uint64_t length = m_floatArray->getValue().getCount();
    return recordEnd > length || (m_stride != 0 && lastRecord > (length - recordEnd) / m_stride);
}

unsigned AccessorFloat::backedCount() const
{
    const std::uint64_t length = m_floatArray != nullptr ? m_floatArray->getValue().getCount() : 0;
    const std::uint64_t step = m_stride == 0 ? 1 : m_stride;
    const std::uint64_t records = (length + step - 1) / step; // the last one may be incomplete
    const std::uint64_t afterOffset = records > m_offset ? records - m_offset : 0;
    return afterOffset < m_count ? static_cast<unsigned>(afterOffset) : m_count;
}

const vesk::Array<Data>& AccessorFloat::readDataFromArray(unsigned index)
{
    if (m_data.size() == 0) {
        VIDEO_LOG("No data to read from the accessor");
        return m_data;
    }
    if (m_floatArray == nullptr) {
        throw vesk::NullPointer("Accessor has no array to read from");
    }
    const unsigned tokenBytes = typeByteSize(DATA_TYPE_FLOAT);
    const unsigned base = recordStart(index);
    const daeTArray<double>& values = m_floatArray->getValue();
    for (Data& component : m_data) {
        for (unsigned j = 0; j < component.stride(); ++j) {
            const float value = detail::floatAt(values, std::size_t(base) + component.offset() + j);
            std::memcpy(component[j].get(), &value, tokenBytes);
        }
    }
    m_currentIndex = index;
    return m_data;
}

unsigned AccessorFloat::calculateStride(const daeSmartRef<domAccessor>& accessor) const
{
    const unsigned stride = detail::low32(accessor->getStride());
    if (stride > 1) {
        return stride;
    }
    // An accessor without the attribute has a stride of 1, too, so the params decide.
    const domParam_Array& params = accessor->getParam_array();
    unsigned sum = 0;
    for (std::size_t i = 0; i < params.getCount(); ++i) {
        sum += typeStride(stringToType(params[i]->getType()));
    }
    return sum;
}

bool AccessorFloat::isTypeValid(const vesk::String& type) const
{
    return vesk::String::compareNoCase(type, floatWord()) == 0 ||
           vesk::String::compareNoCase(type, float4x4Word()) == 0;
}

unsigned AccessorFloat::typeStride(DataType type) const
{
    if (type == DATA_TYPE_FLOAT4X4) {
        return 16;
    }
    if (type == DATA_TYPE_FLOAT) {
        return 1;
    }
    VIDEO_ASSERT(false);
}

unsigned AccessorFloat::typeByteSize(DataType type) const
{
    return typeStride(type) * static_cast<unsigned>(sizeof(float));
}

DataType AccessorFloat::stringToType(const vesk::String& type) const
{
    if (vesk::String::compareNoCase(type, float4x4Word()) == 0) {
        return DATA_TYPE_FLOAT4X4;
    }
    if (vesk::String::compareNoCase(type, floatWord()) == 0) {
        return DATA_TYPE_FLOAT;
    }
    VIDEO_ASSERT(false);
}

} // namespace libVideo
