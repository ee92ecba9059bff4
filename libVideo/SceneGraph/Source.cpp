#include <libVideo/SceneGraph/Source.h>

#include "detail/Dom.h"
#include "detail/Log.h"

#include <cstring>

namespace libVideo {

VIDEO_LOG_CHANNEL("libVideo.source")
VIDEO_SOURCE_PATH("libVideo/SceneGraph/Source")

namespace {

using SourceHandle = SharedHandle<Source>;

const Data& singleFloatData()
{
    static const Data data(vesk::String::EMPTY(), 1, DATA_TYPE_FLOAT, 0, sizeof(float));
    return data;
}

domAccessorRef accessorOf(const domSource& source)
{
    const domSource::domTechnique_commonRef technique = source.getTechnique_common();
    return technique != nullptr ? technique->getAccessor() : domAccessorRef();
}

// The id of the element that a reference refers to, or the text of the reference if it refers to nothing.
const char* idOr(const daeElementRef& element, const daeURI& reference)
{
    return element != nullptr ? element->getID() : reference.getOriginalURI();
}

SourceHandle instantiateSource(const vesk::String& type, const domSourceRef& source)
{
    if (vesk::String::compareNoCase(type, "float") == 0 || vesk::String::compareNoCase(type, "float4x4") == 0) {
        return SourceHandle::make<SourceFloat>(source);
    }
    VIDEO_LOG("Cannot instantiate a Source object with type ", type);
    return SourceHandle();
}

} // namespace

Source::~Source() = default;

SourceFloat::SourceFloat() : Source(DATA_TYPE_INVALID) {}

SourceFloat::SourceFloat(const daeSmartRef<domSource>& source) : Source(DATA_TYPE_FLOAT, source)
{
    SourceFloat::createFromCollada(source);
}

SourceFloat::~SourceFloat() = default;

bool SourceFloat::createFromCollada(const daeSmartRef<domSource>& source)
{
    detail::expectElement(source, "SourceFloat");
    m_id = source->getId();
    const domAccessorRef accessor = accessorOf(*source);
    if (accessor != nullptr) {
        m_accessor = decltype(m_accessor)::make<AccessorFloat>();
        if (m_accessor->createFromCollada(accessor)) {
            return takeStride();
        }
    }
    m_floatArray = source->getFloat_array();
    m_arrayCount = m_floatArray != nullptr ? detail::low32(m_floatArray->getCount()) : 0;
    m_singleValue.clear();
    m_singleValue.append(singleFloatData());
    if (m_floatArray == nullptr) {
        VIDEO_LOG("Source has no float array");
    }
    return m_arrayCount > 0;
}

bool SourceFloat::takeStride()
{
    switch (m_accessor->stride()) {
    case 1:
        m_dataType = DATA_TYPE_FLOAT;
        return true;
    case 2:
        m_dataType = DATA_TYPE_FLOAT2;
        return true;
    case 3:
        m_dataType = DATA_TYPE_FLOAT3;
        return true;
    case 4:
        m_dataType = DATA_TYPE_FLOAT4;
        return true;
    case 16:
        m_dataType = DATA_TYPE_FLOAT4X4;
        return true;
    default:
        break;
    }
    VIDEO_LOG("Does not have a matching float data type for stride ", m_accessor->stride());
    return false;
}

const vesk::Array<Data>& SourceFloat::operator[](unsigned index) const
{
    if (m_accessor) {
        return (*m_accessor)[index];
    }
    VIDEO_ASSERT(index < m_arrayCount);
    const float value = detail::floatAt(m_floatArray->getValue(), index);
    std::memcpy(m_singleValue[0][0].get(), &value, sizeof(value));
    return m_singleValue;
}

SharedHandle<Source> createSourceFromCollada(const daeURI& uri)
{
    const daeElementRef element = uri.getElement();
    const domSourceRef source = daeSafeCast<domSource>(element);
    if (source == nullptr) {
        VIDEO_LOG("Element ", idOr(element, uri), " is not a source");
        return SourceHandle();
    }
    const domFloat_arrayRef floats = source->getFloat_array();
    if (floats == nullptr) {
        VIDEO_LOG("Source has no float array");
        return SourceHandle();
    }
    if (detail::low32(floats->getCount()) > 0) {
        return SourceHandle::make<SourceFloat>(source);
    }
    const domAccessorRef accessor = accessorOf(*source);
    if (accessor == nullptr) {
        VIDEO_LOG("Not interested in <source> that has no data and accessors");
        return SourceHandle();
    }
    if (accessor->getParam_array().getCount() == 0) {
        VIDEO_LOG("Not interested in <accessor> that has no param");
        return SourceHandle();
    }
    return instantiateSource(accessor->getParam_array()[0]->getType(), source);
}

} // namespace libVideo
