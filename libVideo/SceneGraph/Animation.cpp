#include <libVideo/SceneGraph/Animation.h>

#include "detail/Dom.h"
#include "detail/Log.h"
#include "detail/MemoryBudget.h"
#include "detail/Semantic.h"

#include <vesk/SharedResource.h>

#include <cstdint>

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
