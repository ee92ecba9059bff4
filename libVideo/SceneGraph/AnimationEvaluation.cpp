#include <libVideo/SceneGraph/Animation.h>

#include <vesk/SharedResource.h>

#include <cmath>
#include <cstdint>
#include <limits>

// Evaluates curves. Animation.cpp reads them.

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

// Truncates to a signed 32-bit integer. A number out of range gives the smallest one, as x86 processors do.
double truncated(double number)
{
    constexpr std::int32_t smallest = std::numeric_limits<std::int32_t>::min();
    const bool fits = number > -2147483649.0 && number < 2147483648.0;
    return fits ? static_cast<std::int32_t>(number) : smallest;
}

} // namespace

// Position of a time: between two records, or at a single record, which is both `first` and `second` then.
struct Animation::Span {
    unsigned first = 0;
    unsigned second = 0;
    InterpolationType kind = LINEAR; // of the first record
    double time = 0.0;               // wrapped to the length of the animation

    bool isBetween() const { return first != second && kind != STEP; }
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
    if (found == m_count) {
        return false;
    }
    if (seconds == timeAt(found)) {
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
    m_isAscending = true;
    for (unsigned i = 1; i < m_count; ++i) {
        m_isAscending = m_isAscending && timeAt(i - 1) <= timeAt(i); // false if one is NaN
    }
    if (m_isAscending && (m_count == 0 || !std::isnan(timeAt(0)))) {
        return;
    }
    m_isAscending = false;
    m_latestTimes.grow(m_count, 0.0);
    double latest = -std::numeric_limits<double>::infinity();
    for (unsigned i = 0; i < m_count; ++i) {
        // No time is after a record whose time is NaN, so the search stops there.
        const double time = timeAt(i);
        latest = std::isnan(time) ? std::numeric_limits<double>::infinity() : std::fmax(latest, time);
        m_latestTimes[i] = latest;
    }
}

Evolution Animation::evolution(unsigned index) const
{
    if (index >= m_count) {
        throw vesk::IndexOutOfBounds(0, static_cast<int>(m_count) - 1, static_cast<int>(index));
    }
    Evolution key;
    key.time = timeAt(index);
    key.interpolation = kindAt(index);
    key.values = m_values.copyOf(index);
    key.inTangent = m_inTangents.copyOf(index);
    key.outTangent = m_outTangents.copyOf(index);
    return key;
}

InterpolationType Animation::kindAt(unsigned record) const
{
    return m_kinds.size() == 0 ? LINEAR : static_cast<InterpolationType>(m_kinds[record]);
}

std::uint64_t Animation::Column::sizeAt(unsigned record) const
{
    std::uint64_t size = 0;
    for (const Part& part : parts) {
        size += record < part.records ? part.stride : 0;
    }
    return size;
}

double Animation::Column::at(unsigned record, unsigned index) const
{
    unsigned rest = index;
    for (const Part& part : parts) {
        if (record < part.records) {
            if (rest < part.stride) {
                return (*part.numbers)[std::size_t{record} * part.stride + rest];
            }
            rest -= part.stride;
        }
    }
    throw vesk::IndexOutOfBounds(0, static_cast<int>(sizeAt(record)) - 1, static_cast<int>(index));
}

vesk::Array<double> Animation::Column::copyOf(unsigned record) const
{
    vesk::Array<double> copy;
    for (const Part& part : parts) {
        if (record < part.records && part.stride > 0) {
            copy.append(part.numbers->data() + std::size_t{record} * part.stride, part.stride);
        }
    }
    return copy;
}

// The first record for which `seconds` is not greater than its time; the number of records if there is none.
unsigned Animation::firstRecordNotBefore(double seconds) const
{
    unsigned first = 0;
    if (!m_isAscending && m_latestTimes.size() != m_count) {
        while (first < m_count && seconds > timeAt(first)) {
            ++first;
        }
        return first;
    }
    unsigned last = m_count;
    while (first < last) {
        const unsigned middle = first + (last - first) / 2;
        if (seconds > (m_isAscending ? timeAt(middle) : m_latestTimes[middle])) {
            first = middle + 1;
        } else {
            last = middle;
        }
    }
    return first;
}

// @return false if the curve has no value at that time
bool Animation::findSpan(double time, Span& span)
{
    span.time = getModulusTime(time);
    if (span.time == 0.0 || !getIndicesFromSeconds(span.time, &span.first, &span.second)) {
        return false;
    }
    span.kind = kindAt(span.first);
    return true;
}

double Animation::interpolate(const Span& span, unsigned component)
{
    const double value0 = m_values.at(span.first, component);
    const double value1 = m_values.at(span.second, component);
    const double time0 = timeAt(span.first);
    const double time1 = timeAt(span.second);
    if (span.kind == LINEAR) {
        return getLinearInterpolation(value0, value1, time0, time1, span.time);
    }
    // A control point is a pair of time and value, of which only the value is used.
    // Read in separate statements, so that an exception always names the same array if both are too short.
    const unsigned control = 2 * component + 1;
    const double inControl = m_inTangents.at(span.second, control);
    const double outControl = m_outTangents.at(span.first, control);
    return getBezierInterpolation(value0, value1, time0, time1, span.time, inControl, outControl);
}

// The vector or matrix of the curve at a time, or `value` if the curve has none.
template <unsigned size, class Value>
Value Animation::evaluate(const Value& value, double time)
{
    Span span;
    if (!findSpan(time, span)) {
        return value;
    }
    Value result;
    if (!span.isBetween()) {
        if (m_values.sizeAt(span.first) != size) {
            return value;
        }
        for (unsigned i = 0; i < size; ++i) {
            result[i] = static_cast<float>(m_values.at(span.first, i));
        }
        return result;
    }
    if (isUnevaluated(span.kind)) {
        return value;
    }
    if (isEvaluated(span.kind)) {
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
        return m_values.sizeAt(span.first) > 0 ? m_values.at(span.first, 0) : value;
    }
    return isEvaluated(span.kind) ? interpolate(span, 0) : value;
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
