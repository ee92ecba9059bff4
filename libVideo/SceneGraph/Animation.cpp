#include <libVideo/SceneGraph/Animation.h>

#include "detail/Dom.h"
#include "detail/Log.h"
#include "detail/MemoryBudget.h"
#include "detail/Semantic.h"

#include <vesk/SharedResource.h>

#include <cmath>
#include <cstdint>
#include <limits>

namespace libVideo {

VIDEO_LOG_CHANNEL("libVideo.animation")
VIDEO_SOURCE_PATH("libVideo/SceneGraph/Animation")

namespace {

// How many records an accessor may ask for that no array backs.
constexpr unsigned mostUnbackedRecords = 1048576;
// What the array of a record takes besides its numbers, the room for some more included.
constexpr std::uint64_t bytesPerValues = 64;

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

bool isEvaluated(InterpolationType type)
{
    return type == LINEAR || type == BEZIER;
}

bool isUnevaluated(InterpolationType type)
{
    return type == HERMITE || type == CARDINAL || type == BSPLINE;
}

// Cut to a signed 32-bit integer. What does not fit gives the smallest one, as the processor's own conversion does.
double truncated(double number)
{
    constexpr std::int32_t smallest = std::numeric_limits<std::int32_t>::min();
    const bool fits = number > -2147483649.0 && number < 2147483648.0;
    return fits ? static_cast<std::int32_t>(number) : smallest;
}

// Where the numbers of an input go, the times excepted.
vesk::Array<double> Evolution::*arrayOf(VertexSemantic semantic)
{
    if (semantic == SEMANTIC_OUTPUT) {
        return &Evolution::values;
    }
    return semantic == SEMANTIC_IN_TANGENT ? &Evolution::inTangent : &Evolution::outTangent;
}

// What lies behind the end reads as 0.
void appendValues(const daeTArray<double>& values, std::size_t start, unsigned count, vesk::Array<double>& numbers)
{
    if (start + count <= values.getCount()) {
        numbers.append(detail::dataOf(values) + start, count);
        return;
    }
    for (unsigned i = 0; i < count; ++i) {
        numbers.append(detail::valueAt(values, start + i));
    }
}

// The records that the array of an input can fill.
std::uint64_t backedRecords(const domFloat_array* floats, const domName_array* names, unsigned stride)
{
    if (floats != nullptr && floats->getCount() > 0) {
        return stride == 0 ? mostUnbackedRecords : floats->getValue().getCount() / stride;
    }
    if (names != nullptr && names->getCount() > 0) {
        return names->getValue().getCount();
    }
    return mostUnbackedRecords;
}

} // namespace

// Where a time falls: between two records, or on one of them, which then stands in both places.
struct Animation::Span {
    const Evolution* first = nullptr;
    const Evolution* second = nullptr;
    double time = 0.0; // reduced to the length of the animation

    bool isBetween() const { return first != second && first->interpolation != STEP; }
};

Animation::Animation(const daeSmartRef<domAnimation>& animation, DAE& dae)
{
    createFromCollada(animation, dae);
}

bool Animation::createFromCollada(const daeSmartRef<domAnimation>& animation, DAE& /*dae*/)
{
    detail::expectElement(animation, "Animation");
    m_name = animation->getName();
    m_animationLength = 0.0;
    m_evolutions.clear();
    m_latestTimes.clear();
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
    if (m_evolutions.size() > 0) {
        m_animationLength = m_evolutions[m_evolutions.size() - 1].time;
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
    if (m_evolutions.size() > 0 && count > m_evolutions.size()) {
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
    if (m_evolutions.size() == 0) {
        if (!detail::MemoryBudget::take(count, sizeof(Evolution))) {
            VIDEO_LOG("Asks for more memory than the size of the document allows");
            return false;
        }
        m_evolutions.grow(count, Evolution());
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
    if (semantic != SEMANTIC_INPUT &&
        !detail::MemoryBudget::take(count, bytesPerValues + sizeof(double) * std::uint64_t(stride))) {
        VIDEO_LOG("Asks for more memory than the size of the document allows");
        return false;
    }
    if (semantic == SEMANTIC_INPUT) {
        m_latestTimes.clear(); // of other times
    }
    const daeTArray<double>& values = array->getValue();
    const auto recordArray = arrayOf(semantic);
    for (unsigned i = 0; i < count; ++i) {
        const std::size_t start = std::size_t{i} * stride;
        if (semantic == SEMANTIC_INPUT) {
            if (stride == 0) {
                throw vesk::IndexOutOfBounds(0, -1, 0); // a record without numbers has no time
            }
            m_evolutions[i].time = detail::valueAt(values, start);
        } else {
            appendValues(values, start, stride, m_evolutions[i].*recordArray);
        }
    }
    return true;
}

bool Animation::createNameEvolution(const domName_array* array, const VertexSemantic& semantic, unsigned count,
                                    unsigned stride)
{
    if (semantic != SEMANTIC_INTERPOLATION || stride > 1) {
        VIDEO_LOG("Cannot create a name evolution input from: ", int(semantic), ", with a stride of: ", stride);
        return false;
    }
    const domListOfNames& names = array->getValue();
    const char* lastName = nullptr;
    InterpolationType lastType = interpolationOf(nullptr);
    for (unsigned i = 0; i < count; ++i) {
        const char* const name = i < names.getCount() ? names[i] : nullptr;
        if (name != lastName) { // one word may be many names
            lastName = name;
            lastType = interpolationOf(name);
        }
        m_evolutions[i].interpolation = lastType;
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

double Animation::getModulusTime(double time)
{
    if (!(m_animationLength > 0.0)) {
        return time;
    }
    return time - truncated(time / m_animationLength) * m_animationLength;
}

bool Animation::getIndicesFromSeconds(double seconds, unsigned* first, unsigned* second)
{
    *first = 0;
    const unsigned found = firstRecordNotBefore(seconds);
    if (found == m_evolutions.size()) {
        return false;
    }
    if (seconds == m_evolutions[found].time) {
        *first = found;
        *second = found;
        return true;
    }
    if (found == 0) {
        return false;
    }
    *first = found - 1;
    *second = found;
    return true;
}

double Animation::getLinearInterpolation(double value0, double value1, double time0, double time1, double time)
{
    return (value1 - value0) * (time - time0) / (time1 - time0) + value0;
}

double Animation::getBezierInterpolation(double value0, double value1, double time0, double time1, double time,
                                         double inControl, double outControl)
{
    const double s = (time - time0) / (time1 - time0);
    const double r = 1.0 - s;
    return 3.0 * inControl * s * s * r + (3.0 * outControl * s * r * r + r * value0 * r * r) + s * value1 * s * s;
}

void Animation::indexTimes()
{
    m_latestTimes.clear();
    m_latestTimes.grow(m_evolutions.size(), 0.0);
    double latest = -std::numeric_limits<double>::infinity();
    for (unsigned i = 0; i < m_evolutions.size(); ++i) {
        // No time lies behind a record whose time is not a number, so the search ends there.
        const double time = m_evolutions[i].time;
        latest = std::isnan(time) ? std::numeric_limits<double>::infinity() : std::fmax(latest, time);
        m_latestTimes[i] = latest;
    }
}

// The first record for which `seconds` is not greater than its time; the number of records if there is none.
unsigned Animation::firstRecordNotBefore(double seconds) const
{
    const unsigned count = m_evolutions.size();
    unsigned first = 0;
    if (m_latestTimes.size() != count) {
        while (first < count && seconds > m_evolutions[first].time) {
            ++first;
        }
        return first;
    }
    const double* const latest = m_latestTimes.getData();
    unsigned last = count;
    while (first < last) {
        const unsigned middle = first + (last - first) / 2;
        if (seconds > latest[middle]) {
            first = middle + 1;
        } else {
            last = middle;
        }
    }
    return first;
}

// False where the curve says nothing about a time.
bool Animation::findSpan(double time, Span& span)
{
    span.time = getModulusTime(time);
    unsigned first = 0;
    unsigned second = 0;
    if (span.time == 0.0 || !getIndicesFromSeconds(span.time, &first, &second)) {
        return false;
    }
    span.first = &m_evolutions[first];
    span.second = &m_evolutions[second];
    return true;
}

double Animation::interpolate(const Span& span, unsigned component)
{
    const Evolution& first = *span.first;
    const Evolution& second = *span.second;
    const double value0 = first.values[component];
    const double value1 = second.values[component];
    if (first.interpolation == LINEAR) {
        return getLinearInterpolation(value0, value1, first.time, second.time, span.time);
    }
    // Of a control point only the value counts, the second of its pair.
    const unsigned control = 2 * component + 1;
    return getBezierInterpolation(value0, value1, first.time, second.time, span.time, second.inTangent[control],
                                  first.outTangent[control]);
}

// A vector or matrix as the curve has it at a time; `value` where the curve says nothing.
template <unsigned size, class Value>
Value Animation::evaluate(const Value& value, double time)
{
    Span span;
    if (!findSpan(time, span)) {
        return value;
    }
    Value result;
    if (!span.isBetween()) {
        const vesk::Array<double>& key = span.first->values;
        if (key.size() != size) {
            return value;
        }
        for (unsigned i = 0; i < size; ++i) {
            result[i] = static_cast<float>(key[i]);
        }
        return result;
    }
    if (isUnevaluated(span.first->interpolation)) {
        return value;
    }
    if (isEvaluated(span.first->interpolation)) {
        for (unsigned i = 0; i < size; ++i) {
            result[i] = static_cast<float>(interpolate(span, i));
        }
    }
    return result;
}

double Animation::applyAnimation(double value, double time)
{
    Span span;
    if (!findSpan(time, span)) {
        return value;
    }
    if (!span.isBetween()) {
        return span.first->values.size() > 0 ? span.first->values[0] : value;
    }
    return isEvaluated(span.first->interpolation) ? interpolate(span, 0) : value;
}

libMath::Vector<float, 3> Animation::applyAnimation(const libMath::Vector<float, 3>& value, double time)
{
    return evaluate<3>(value, time);
}

libMath::Matrix<float, 4, 4> Animation::applyAnimation(const libMath::Matrix<float, 4, 4>& value, double time)
{
    return evaluate<16>(value, time);
}

unsigned createAnimationListFromCollada(const domCOLLADA* const collada, DAE& dae,
                                        vesk::Array<AnimationHandle>& animations)
{
    VIDEO_TRACE("Camera::createAnimationListFromCollada");
    if (collada == nullptr) {
        VIDEO_LOG("Cannot create an animation list from a NULL domCOLLADA pointer");
        return 0;
    }
    animations.clear();
    const domLibrary_animations_Array& libraries = collada->getLibrary_animations_array();
    for (std::size_t i = 0; i < libraries.getCount(); ++i) {
        const domAnimation_Array& elements = libraries[i]->getAnimation_array();
        for (std::size_t j = 0; j < elements.getCount(); ++j) {
            animations.append(AnimationHandle(new Animation(elements[j], dae)));
        }
    }
    return animations.size();
}

} // namespace libVideo
