#include <libVideo/SceneGraph/Animation.h>

#include <vesk/SharedResource.h>

#include <cmath>
#include <cstdint>
#include <limits>

// The value of a curve at a time. Animation.cpp reads curves.

namespace libVideo {

namespace {

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

} // namespace

// Where a time falls: between two records, or on one of them, which then stands in both places.
struct Animation::Span {
    const Evolution* first = nullptr;
    const Evolution* second = nullptr;
    double time = 0.0; // reduced to the length of the animation

    bool isBetween() const { return first != second && first->interpolation != STEP; }
};

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

} // namespace libVideo
