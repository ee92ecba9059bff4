#include <libVideo/SceneGraph/Input.h>

#include "detail/Dom.h"
#include "detail/Log.h"
#include "detail/MemoryBudget.h"
#include "detail/Semantic.h"

#include <cstdint>

namespace libVideo {

VIDEO_LOG_CHANNEL("libVideo.input")
VIDEO_SOURCE_PATH("libVideo/SceneGraph/Input")

namespace {

using SourceHandle = SharedHandle<Source>;

// Memory charged per source, without its components: the objects and the handles to them.
constexpr std::uint64_t bytesPerSource = 512;

const char* fragmentOf(const domInputLocalOffset& input)
{
    return input.getSource().fragment().c_str();
}

// The low 32 bits of an entry of an index list; 0 past its end.
unsigned entryAt(const domP* p, std::size_t place)
{
    if (p == nullptr || place >= p->getValue().getCount()) {
        return 0;
    }
    return detail::low32(p->getValue()[place]);
}

} // namespace

Input::~Input() = default;

void Input::dataAsByteStream(const vesk::Array<Data>& data)
{
    for (const Data& component : data) {
        for (unsigned j = 0; j < component.stride(); ++j) {
            m_byteStream.append(component[j].get(), component.tokenByteSize());
        }
    }
}

InputLocal::InputLocal(const daeTArray<daeSmartRef<domInputLocal>>& inputs)
{
    createFromCollada(inputs);
}

InputLocal::~InputLocal() = default;

bool InputLocal::createFromCollada(const daeTArray<daeSmartRef<domInputLocal>>& inputs)
{
    VIDEO_TRACE("InputLocal::createFromCollada");
    m_bytePerAccess = 0;
    m_layout.clear();
    m_sources.clear();
    m_cachedIndex = noIndex;
    for (std::size_t i = 0; i < inputs.getCount(); ++i) {
        detail::expectElement(inputs[i], "InputLocal");
        const vesk::String semantic(inputs[i]->getSemantic());
        VertexLayout layout(detail::semanticOf(semantic));
        if (layout.semantic == SEMANTIC_UNKNOWN) {
            VIDEO_LOG("Does not recognize input semantic ", semantic);
            continue;
        }
        const SourceHandle source = createSourceFromCollada(inputs[i]->getSource());
        if (!source) {
            continue;
        }
        layout.dataType = source->dataType();
        if (layout.dataType == DATA_TYPE_INVALID) {
            VIDEO_LOG("Cannot use an invalid type in a vertex layout");
            continue;
        }
        layout.byteSize = source->bytePerAccess();
        layout.byteOffset = m_bytePerAccess;
        m_bytePerAccess += layout.byteSize;
        m_layout.append(layout);
        m_sources.append(source);
    }
    if (m_sources.size() == 0) {
        VIDEO_LOG("createFromCollada failed");
        return false;
    }
    m_numVertices = m_sources[0]->count();
    return true;
}

const vesk::Array<unsigned char>& InputLocal::data(unsigned index)
{
    if (index != m_cachedIndex) {
        m_cachedIndex = index;
        m_byteStream.truncate(0);
        for (const SourceHandle& source : m_sources) {
            dataAsByteStream(source->data(index));
        }
    }
    return m_byteStream;
}

unsigned InputLocal::backedVertices() const
{
    unsigned longest = 0;
    for (const SourceHandle& source : m_sources) {
        const unsigned backed = source->backedCount();
        longest = backed > longest ? backed : longest;
    }
    return longest;
}

InputLocalOffset::InputLocalOffset(const daeTArray<daeSmartRef<domInputLocalOffset>>& inputs, domP* const p)
{
    createFromCollada(inputs, p);
}

InputLocalOffset::~InputLocalOffset() = default;

bool InputLocalOffset::createFromCollada(const daeTArray<daeSmartRef<domInputLocalOffset>>& inputs, domP* const p)
{
    VIDEO_TRACE("InputLocalOffset::createFromCollada");
    m_offsetCount = 0;
    m_bytePerAccess = 0;
    m_offsets.clear();
    for (std::size_t i = 0; i < inputs.getCount(); ++i) {
        detail::expectElement(inputs[i], "InputLocalOffset");
        const vesk::String semantic(inputs[i]->getSemantic());
        addOffset(detail::low32(inputs[i]->getOffset()));
        if (vesk::String::compareNoCase(semantic, "VERTEX") == 0) {
            createVertices(inputs[i]);
            continue;
        }
        VertexLayout layout(detail::semanticOf(semantic));
        if (layout.semantic == SEMANTIC_UNKNOWN) {
            VIDEO_LOG("Does not recognize input semantic ", semantic);
            continue;
        }
        const SourceHandle source = createSourceFromCollada(inputs[i]->getSource());
        if (!source) {
            VIDEO_LOG("Does not have a class representation for source ", fragmentOf(*inputs[i]));
            continue;
        }
        m_sources.append(source);
        layout.byteOffset = m_bytePerAccess;
        layout.byteSize = source->bytePerAccess();
        m_bytePerAccess += layout.byteSize;
        layout.dataType = source->dataType();
        m_layout.append(layout);
    }
    if (m_sources.size() > 0) {
        m_p = p;
        return true;
    }
    VIDEO_LOG("createFromCollada failed");
    return false;
}

void InputLocalOffset::addOffset(unsigned offset)
{
    if (!m_offsets.contains(offset)) {
        ++m_offsetCount;
    }
    m_offsets.append(offset);
}

void InputLocalOffset::createVertices(const daeSmartRef<domInputLocalOffset>& input)
{
    VIDEO_TRACE("InputLocalOffset::createVertices");
    detail::expectElement(input, "InputLocalOffset");
    const domVerticesRef vertices = detail::resolve<domVertices>(input->getSource());
    if (vertices == nullptr) {
        VIDEO_LOG("Input is not a <vertices> element ", fragmentOf(*input));
        return;
    }
    if (!detail::MemoryBudget::take(vertices->getInput_array().getCount(), bytesPerSource)) {
        VIDEO_LOG(detail::MemoryBudget::exceeded);
        return;
    }
    const InputLocal local(vertices->getInput_array());
    if (!local.hasData()) {
        return;
    }
    m_sources.appendArray(local.sources());
    for (VertexLayout layout : local.layout()) {
        layout.byteOffset += m_bytePerAccess;
        m_layout.append(layout);
    }
    m_bytePerAccess += local.bytePerAccess();
}

const vesk::Array<unsigned char>& InputLocalOffset::data(unsigned index)
{
    if (index == m_cachedIndex) {
        return m_byteStream;
    }
    m_byteStream.truncate(0);
    const std::size_t start = std::size_t(m_offsetCount) * index;
    for (unsigned i = 0; i < m_sources.size(); ++i) {
        dataAsByteStream(m_sources[i]->data(entryAt(m_p, start + m_offsets[i])));
    }
    refreshTuple(index);
    m_cachedIndex = index;
    return m_byteStream;
}

const vesk::Array<unsigned>& InputLocalOffset::pIndex(unsigned index)
{
    if (index != m_cachedIndex) {
        refreshTuple(index);
    }
    return m_pIndices;
}

void InputLocalOffset::refreshTuple(unsigned index)
{
    if (m_pIndices.size() != m_offsetCount) {
        m_pIndices.clear();
        m_pIndices.grow(m_offsetCount, 0);
    }
    const std::size_t start = std::size_t(m_offsetCount) * index;
    for (unsigned i = 0; i < m_offsetCount; ++i) {
        m_pIndices.getData()[i] = entryAt(m_p, start + i);
    }
}

} // namespace libVideo
