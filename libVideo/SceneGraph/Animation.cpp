#include <libVideo/SceneGraph/Animation.h>

#include "detail/Dom.h"
#include "detail/Log.h"
#include "detail/MemoryBudget.h"
#include "detail/Semantic.h"

#include <vesk/SharedResource.h>

#include <algorithm>
#include <cstdint>
#include <unordered_map>

namespace libVideo {

VIDEO_LOG_CHANNEL("libVideo.animation")
VIDEO_SOURCE_PATH("libVideo/SceneGraph/Animation")

namespace {

// Maximum number of records of an accessor without an array.
constexpr unsigned maxUnbackedRecords = 1048576;
// Memory charged per key, besides its numbers: its time and its kind.
constexpr std::uint64_t bytesPerKey = sizeof(double) + 1;
// The numbers of the arrays that the curves of one list use. Several curves may share an array.
class CurveNumbers {
public:
    using Numbers = SharedHandle<vesk::Buffer<double>>;

    CurveNumbers() : m_before(current) { current = this; }
    ~CurveNumbers() { current = m_before; }
    CurveNumbers(const CurveNumbers&) = delete;
    CurveNumbers& operator=(const CurveNumbers&) = delete;

    /// The first `count` numbers of an array; those past its end are 0. @return empty if the memory budget is too small
    static Numbers of(const domFloat_array& array, std::uint64_t count)
    {
        Numbers own;
        Numbers& numbers = current != nullptr ? current->m_byArray[&array] : own;
        if (numbers == nullptr || numbers->size() < count) {
            if (!detail::MemoryBudget::take(count, sizeof(double))) {
                return Numbers();
            }
            const Numbers made = Numbers::make();
            made->resize(count, false);
            const std::uint64_t held = std::min<std::uint64_t>(count, array.getValue().getCount());
            std::copy_n(detail::dataOf(array.getValue()), held, made->data());
            std::fill_n(made->data() + held, count - held, 0.0);
            numbers = made;
        }
        return numbers;
    }

private:
    static thread_local CurveNumbers* current;

    std::unordered_map<const domFloat_array*, Numbers> m_byArray;
    CurveNumbers* m_before;
};

thread_local CurveNumbers* CurveNumbers::current = nullptr;

InterpolationType interpolationOf(const char* text)
{
    struct Word {
        vesk::String word;
        InterpolationType type;
    };
    static const Word words[] = {{"STEP", STEP},       {"LINEAR", LINEAR},     {"BEZIER", BEZIER},
                                 {"HERMITE", HERMITE}, {"CARDINAL", CARDINAL}, {"BSPLINE", BSPLINE}};
    const vesk::String name(text);
    for (const Word& known : words) {
        if (vesk::String::compareNoCase(name, known.word) == 0) {
            return known.type;
        }
    }
    return LINEAR;
}

// Number of records that the array of an input can fill.
std::uint64_t backedRecords(const domFloat_array* floats, const domName_array* names, unsigned stride)
{
    if (floats != nullptr && floats->getCount() > 0) {
        return stride == 0 ? maxUnbackedRecords : floats->getValue().getCount() / stride;
    }
    if (names != nullptr && names->getCount() > 0) {
        return names->getValue().getCount();
    }
    return maxUnbackedRecords;
}

} // namespace

Animation::Animation(const daeSmartRef<domAnimation>& animation, DAE& dae)
{
    createFromCollada(animation, dae);
}

bool Animation::createFromCollada(const daeSmartRef<domAnimation>& animation, DAE& /*dae*/)
{
    detail::expectElement(animation, "Animation");
    m_name = animation->getName();
    m_animationLength = 0.0;
    m_count = 0;
    m_times = Numbers();
    m_kinds = vesk::Buffer<unsigned char>();
    m_values.parts.clear();
    m_inTangents.parts.clear();
    m_outTangents.parts.clear();
    m_latestTimes.clear();
    m_isAscending = false;
    const bool isComplete = readCurve(*animation);
    indexTimes();
    return isComplete;
}

bool Animation::readCurve(const domAnimation& animation)
{
    if (animation.getChannel_array().getCount() == 0) {
        VIDEO_LOG("Cannot create an animation without a channel element.");
        return false;
    }
    const domChannelRef channel = animation.getChannel_array()[0];
    const domSamplerRef sampler = detail::resolve<domSampler>(channel->getSource());
    if (sampler == nullptr) {
        VIDEO_LOG("Cannot create an animation without a channel that points to a valid sampler element.");
        return false;
    }
    const domInputLocal_Array& inputs = sampler->getInput_array();
    if (inputs.getCount() == 0) {
        VIDEO_LOG("Cannot create an animation without any input.");
        return false;
    }
    for (std::size_t i = 0; i < inputs.getCount(); ++i) {
        if (!createInputFromCollada(inputs[i])) {
            return false;
        }
    }
    setTarget(channel->getTarget());
    if (m_count > 0) {
        m_animationLength = timeAt(m_count - 1);
    }
    return true;
}

bool Animation::createInputFromCollada(const daeSmartRef<domInputLocal>& input)
{
    detail::expectElement(input, "Animation");
    const VertexSemantic semantic = detail::semanticOf(input->getSemantic());
    const domSourceRef source = detail::resolve<domSource>(input->getSource());
    if (source == nullptr) {
        return false;
    }
    const domSource::domTechnique_commonRef technique = source->getTechnique_common();
    const domAccessorRef accessor = technique != nullptr ? technique->getAccessor() : domAccessorRef();
    if (accessor == nullptr) {
        return false;
    }
    const unsigned count = detail::low32(accessor->getCount());
    const unsigned stride = detail::low32(accessor->getStride());
    if (m_count > 0 && count > m_count) {
        VIDEO_LOG("Cannot create an animation because the counts of all the inputs do not match.");
        return false;
    }
    const daeElementRef array = accessor->getSource().getElement();
    const domFloat_arrayRef floats = daeSafeCast<domFloat_array>(array);
    const domName_arrayRef names = daeSafeCast<domName_array>(array);
    if (count > backedRecords(floats, names, stride)) {
        VIDEO_LOG("Cannot create an animation because an array is shorter than its accessor says.");
        return false;
    }
    if (m_count == 0) {
        if (!detail::MemoryBudget::take(count, bytesPerKey)) {
            VIDEO_LOG(detail::MemoryBudget::exceeded);
            return false;
        }
        m_count = count;
    }
    if (floats != nullptr && floats->getCount() > 0) {
        return createFloatEvolution(floats, semantic, count, stride);
    }
    if (names != nullptr && names->getCount() > 0) {
        return createNameEvolution(names, semantic, count, stride);
    }
    return true;
}

bool Animation::createFloatEvolution(const domFloat_array* array, const VertexSemantic& semantic, unsigned count,
                                     unsigned stride)
{
    if (semantic != SEMANTIC_INPUT && semantic != SEMANTIC_OUTPUT && semantic != SEMANTIC_IN_TANGENT &&
        semantic != SEMANTIC_OUT_TANGENT) {
        VIDEO_LOG("Cannot create a float evolution input from: ", static_cast<int>(semantic));
        return false;
    }
    if (count == 0) {
        return true;
    }
    if (semantic == SEMANTIC_INPUT && stride == 0) {
        throw vesk::IndexOutOfBounds(0, -1, 0); // a record without numbers has no time
    }
    const unsigned records = std::min(count, m_count);
    const Numbers numbers = CurveNumbers::of(*array, std::uint64_t{records} * stride);
    if (numbers == nullptr) {
        VIDEO_LOG(detail::MemoryBudget::exceeded);
        return false;
    }
    if (semantic == SEMANTIC_INPUT) {
        setTimes(numbers, records, stride);
    } else {
        Column& column = semantic == SEMANTIC_OUTPUT       ? m_values
                         : semantic == SEMANTIC_IN_TANGENT ? m_inTangents
                                                           : m_outTangents;
        column.parts.append({records, stride, numbers});
    }
    if (records < count) {
        throw vesk::IndexOutOfBounds(0, static_cast<int>(m_count) - 1, static_cast<int>(m_count));
    }
    return true;
}

// The first number of each record is its time.
void Animation::setTimes(const Numbers& numbers, unsigned count, unsigned stride)
{
    m_latestTimes.clear(); // belongs to the previous times
    m_isAscending = false;
    if (count == m_count && stride == 1) {
        m_times = numbers;
        return;
    }
    Numbers times(new vesk::Buffer<double>);
    times->resize(m_count, true);
    for (unsigned i = 0; i < m_count; ++i) {
        (*times)[i] = i < count ? (*numbers)[std::uint64_t{i} * stride] : timeAt(i);
    }
    m_times = times;
}

bool Animation::createNameEvolution(const domName_array* array, const VertexSemantic& semantic, unsigned count,
                                    unsigned stride)
{
    if (semantic != SEMANTIC_INTERPOLATION || stride > 1) {
        VIDEO_LOG("Cannot create a name evolution input from: ", int(semantic), ", with a stride of: ", stride);
        return false;
    }
    if (m_kinds.size() == 0) {
        m_kinds.resize(m_count, true);
        for (unsigned i = 0; i < m_count; ++i) {
            m_kinds[i] = LINEAR;
        }
    }
    const domListOfNames& names = array->getValue();
    const char* lastName = nullptr;
    InterpolationType lastType = interpolationOf(nullptr);
    for (unsigned i = 0; i < count; ++i) {
        if (i == m_count) {
            throw vesk::IndexOutOfBounds(0, static_cast<int>(m_count) - 1, static_cast<int>(m_count));
        }
        const char* const name = i < names.getCount() ? names[i] : nullptr;
        if (name != lastName) { // repeated names have the same address
            lastName = name;
            lastType = interpolationOf(name);
        }
        m_kinds[i] = static_cast<unsigned char>(lastType);
    }
    return true;
}

void Animation::setTarget(vesk::String target)
{
    const unsigned slash = target.find('/');
    if (slash == vesk::String::npos) {
        return;
    }
    m_targetNode = target.subString(0, slash);
    const unsigned dot = target.find(slash, '.');
    const unsigned length = dot == vesk::String::npos ? vesk::String::npos : dot - slash - 1;
    m_targetTransform = target.subString(slash + 1, length);
}

unsigned createAnimationListFromCollada(const domCOLLADA* const collada, DAE& dae,
                                        vesk::Array<AnimationHandle>& animations)
{
    // sic: the name of the camera class; the words are an interface
    VIDEO_TRACE("Camera::createAnimationListFromCollada");
    if (collada == nullptr) {
        VIDEO_LOG("Cannot create an animation list from a NULL domCOLLADA pointer");
        return 0;
    }
    animations.clear();
    const CurveNumbers numbers; // shared by the curves
    const domLibrary_animations_Array& libraries = collada->getLibrary_animations_array();
    for (std::size_t i = 0; i < libraries.getCount(); ++i) {
        const domAnimation_Array& elements = libraries[i]->getAnimation_array();
        for (std::size_t j = 0; j < elements.getCount(); ++j) {
            animations.append(AnimationHandle::make(elements[j], dae));
        }
    }
    return animations.size();
}

} // namespace libVideo
