#include "FlatCurve.h"

#include "Numbers.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

namespace libPrepare {

namespace {

constexpr unsigned maxSamples = 4096; // that are compared between two keys
constexpr unsigned fewSamples = 8;
constexpr unsigned maxHalvings = 30; // of the time between two keys
constexpr unsigned fewHalvings = 2;  // once there are no more samples to take
constexpr double maxParts = 1024;    // of the time between two keys, unless that is long

// How a component runs through a stretch between two neighboring key times.
struct Way {
    enum class Kind { constant, straight, cubic, other };
    Kind kind = Kind::constant;
    double points[4] = {0, 0, 0, 0}; // start, two control points, end
};

double blossom(const double (&points)[4], double a, double b, double c)
{
    const auto mix = [](double from, double to, double part) { return from + (to - from) * part; };
    const double p[3] = {mix(points[0], points[1], a), mix(points[1], points[2], a), mix(points[2], points[3], a)};
    return mix(mix(p[0], p[1], b), mix(p[1], p[2], b), c);
}

Way constantWay(double value)
{
    return {Way::Kind::constant, {value, value, value, value}};
}

Way straightWay(double from, double to)
{
    return {Way::Kind::straight, {from, from + (to - from) / 3, to - (to - from) / 3, to}};
}

// Whether time and parameter are the same between two keys, so nearly that no value differs by more than a tolerance.
bool isParameterTime(const Curve& curve, std::size_t key, std::size_t component, const Curve::Controls& controls,
                     double tolerance)
{
    const double span = curve.time(key + 1) - curve.time(key);
    const double first = (controls.time[0] - curve.time(key)) / span - 1.0 / 3;
    const double second = (controls.time[1] - curve.time(key)) / span - 2.0 / 3;
    const double shift = std::max(std::abs(first), std::abs(second));
    const double from = curve.values(key)[component];
    const double to = curve.values(key + 1)[component];
    const double reach = std::max({from, to, controls.value[0], controls.value[1]}) -
                         std::min({from, to, controls.value[0], controls.value[1]});
    // The time at a parameter is off by at most 3/4 of the shift, and a cubic's slope is at most three times its reach.
    return !controls.areTimed || shift * 0.75 * 3 * reach <= tolerance;
}

Way wayOf(const Component& component, double from, double to, double tolerance)
{
    const Curve* const curve = component.curve;
    if (curve == nullptr) {
        return constantWay(component.constant);
    }
    const std::size_t c = component.index;
    if (to <= curve->firstTime()) {
        return constantWay(curve->values(0)[c]);
    }
    if (from >= curve->lastTime()) {
        return constantWay(curve->values(curve->count() - 1)[c]);
    }
    const std::size_t key = curve->keyBefore(from);
    const double start = curve->values(key)[c];
    if (curve->kind(key) == Interpolation::step) {
        return constantWay(start);
    }
    const double end = curve->values(key + 1)[c];
    const double span = curve->time(key + 1) - curve->time(key);
    const double s0 = (from - curve->time(key)) / span;
    const double s1 = (to - curve->time(key)) / span;
    const bool isWhole = s0 == 0 && s1 == 1;
    const std::optional<Curve::Controls> controls = curve->controls(key, c);
    if (!controls) {
        return isWhole ? straightWay(start, end) : straightWay(start + (end - start) * s0, start + (end - start) * s1);
    }
    if (!isParameterTime(*curve, key, c, *controls, tolerance / 2)) {
        return {Way::Kind::other, {}};
    }
    const double points[4] = {start, controls->value[0], controls->value[1], end};
    if (isWhole) {
        return {Way::Kind::cubic, {points[0], points[1], points[2], points[3]}};
    }
    return {Way::Kind::cubic,
            {blossom(points, s0, s0, s0), blossom(points, s0, s0, s1), blossom(points, s0, s1, s1),
             blossom(points, s1, s1, s1)}};
}

const char* word(Interpolation kind)
{
    if (kind == Interpolation::step) {
        return "STEP";
    }
    return kind == Interpolation::bezier ? "BEZIER" : "LINEAR";
}

struct Params {
    std::vector<const char*> names;
    const char* type;
    std::size_t stride;
};

Params paramsOf(std::size_t width)
{
    switch (width) {
    case 1:
        return {{"VALUE"}, "float", 1};
    case 3:
        return {{"X", "Y", "Z"}, "float", 3};
    default:
        return {{"TRANSFORM"}, "float4x4", 16};
    }
}

void writeSource(Document& document, pugi::xml_node animation, const std::string& id, const char* arrayName,
                 const std::string& numbers, std::size_t count, const Params& params)
{
    pugi::xml_node source = animation.append_child("source");
    document.setId(source, id);
    pugi::xml_node array = source.append_child(arrayName);
    const std::string arrayId = document.freshId(id + "-array");
    document.setId(array, arrayId);
    array.append_attribute("count") = std::uint64_t(count) * params.stride;
    array.append_child(pugi::node_pcdata).set_value(numbers.c_str());
    pugi::xml_node accessor = source.append_child("technique_common").append_child("accessor");
    accessor.append_attribute("source") = ("#" + arrayId).c_str();
    accessor.append_attribute("count") = static_cast<unsigned long long>(count);
    accessor.append_attribute("stride") = static_cast<unsigned long long>(params.stride);
    for (const char* const name : params.names) {
        pugi::xml_node param = accessor.append_child("param");
        param.append_attribute("name") = name;
        param.append_attribute("type") = params.type;
    }
}

} // namespace

double Component::at(double time) const
{
    return curve == nullptr ? constant : curve->evaluate(time, index);
}

Sampling::Sampling(const Options& options)
    : rate(std::isfinite(options.sampleRate) ? std::max(options.sampleRate, 0.0) : 60.0),
      tolerance(std::isfinite(options.tolerance) ? std::max(options.tolerance, 1e-9) : 1e-4)
{}

FlatCurve::FlatCurve(std::size_t width) : m_width(width), m_tolerances(width), m_nextIn(width) {}

void FlatCurve::measure(Measure measure, const std::vector<double>& largest, double tolerance)
{
    double sizes[2] = {1e-9, 1e-9};
    const auto group = [&](std::size_t component) {
        return measure == Measure::matrix && ((component % 4 == 3 && component < 12) || component >= 16) ? 1U : 0U;
    };
    for (std::size_t c = 0; c < m_width; ++c) {
        sizes[group(c)] = std::max(sizes[group(c)], largest[c]);
    }
    for (std::size_t c = 0; c < m_width; ++c) {
        m_tolerances[c] = tolerance * (measure == Measure::degrees ? 1 : sizes[group(c)]);
    }
}

void FlatCurve::add(double time, const double* values, Interpolation kind)
{
    m_times.push_back(time);
    m_values.insert(m_values.end(), values, values + m_width);
    m_kinds.push_back(kind);
    m_out.resize(m_values.size());
    m_in.insert(m_in.end(), m_nextIn.begin(), m_nextIn.end());
    std::fill(m_nextIn.begin(), m_nextIn.end(), 0.0);
}

// Adds a key before a jump. Without it, the curve would run to the value after the jump.
void FlatCurve::addJump(double time, const double* before, const double* after, bool isConstant)
{
    bool isJump = false;
    for (std::size_t c = 0; c < m_width; ++c) {
        isJump = isJump || std::abs(after[c] - before[c]) > 1e-3 * m_tolerances[c];
    }
    const double last = std::nextafter(time, 0.0);
    if (isJump && isConstant) {
        m_kinds.back() = Interpolation::step;
    } else if (isJump && (m_times.empty() || m_times.back() < last)) { // else there is no time in between
        add(last, before, Interpolation::linear);
    }
}

// A cubic through a function's values at both ends and at each third, and whether it, or a straight line, is close
// enough to all values in between.
struct FlatCurve::Fit {
    std::vector<double> start;
    std::vector<double> end;
    std::vector<double> out; // control points
    std::vector<double> in;
    bool isCubic = true;
    bool isStraight = true;
    bool isConstant = true;
};

FlatCurve::Fit FlatCurve::fit(double from, double to, const Function& function, Sampling& sampling) const
{
    std::vector<double> values(m_width);
    const auto valuesAt = [&](double part) -> const std::vector<double>& {
        function(part < 1 ? from + (to - from) * part : to, values.data());
        sampling.left -= std::min<std::uint64_t>(sampling.left, 1);
        return values;
    };
    Fit fit;
    fit.start = valuesAt(0);
    fit.end = valuesAt(1);
    fit.out = valuesAt(1.0 / 3);
    fit.in = valuesAt(2.0 / 3);
    for (std::size_t c = 0; c < m_width; ++c) {
        const double first = fit.out[c];
        const double second = fit.in[c];
        fit.out[c] = (-5 * fit.start[c] + 18 * first - 9 * second + 2 * fit.end[c]) / 6;
        fit.in[c] = (2 * fit.start[c] - 9 * first + 18 * second - 5 * fit.end[c]) / 6;
    }
    const bool isHasty = sampling.left == 0;
    const double most = std::min(std::ceil((to - from) * sampling.rate), double(maxSamples));
    const unsigned count = isHasty ? 0 : std::max(fewSamples, static_cast<unsigned>(std::max(most, 0.0)));
    for (unsigned i = 1; i < count && (fit.isCubic || fit.isStraight); ++i) {
        const double s = double(i) / count;
        const double r = 1 - s;
        const std::vector<double>& between = valuesAt(s);
        for (std::size_t c = 0; c < m_width; ++c) {
            const double straight = fit.start[c] * r + fit.end[c] * s;
            const double cubic = fit.start[c] * r * r * r + 3 * fit.out[c] * s * r * r + 3 * fit.in[c] * s * s * r +
                                 fit.end[c] * s * s * s;
            fit.isStraight = fit.isStraight && !(std::abs(straight - between[c]) > m_tolerances[c] / 2);
            fit.isCubic = fit.isCubic && !(std::abs(cubic - between[c]) > m_tolerances[c] / 2);
        }
        fit.isConstant = fit.isConstant && between == fit.start;
    }
    fit.isStraight = fit.isStraight && !isHasty;
    fit.isConstant = fit.isConstant && fit.start == fit.end && !isHasty;
    return fit;
}

// A stretch is halved until each part is straight or a cubic.
void FlatCurve::addStretch(double from, double to, const Function& function, Sampling& sampling)
{
    struct Part {
        double from;
        double to;
        unsigned halvings;
    };
    const double before = std::nextafter(to, from); // before any step at the end
    std::vector<double> last(m_width);
    if (!(before > from)) { // the two sides of a jump, with no time in between
        function(from, last.data());
        add(from, last.data(), Interpolation::linear);
        return;
    }
    bool isConstant = true;
    const double most = std::max(maxParts, (to - from) * sampling.rate);
    double parts = 0;
    std::vector<Part> ahead{{from, to, 0}};
    while (!ahead.empty()) {
        const Part part = ahead.back();
        ahead.pop_back();
        const double middle = part.from + (part.to - part.from) / 2;
        const bool canHalve = middle > part.from && middle < part.to && parts < most &&
                              part.halvings < (sampling.left == 0 ? fewHalvings : maxHalvings);
        const Fit fit = this->fit(part.from, part.to == to ? before : part.to, function, sampling);
        if (!fit.isStraight && canHalve && (!fit.isCubic || sampling.left == 0)) {
            ahead.push_back({middle, part.to, part.halvings + 1});
            ahead.push_back({part.from, middle, part.halvings + 1});
            continue;
        }
        ++parts;
        isConstant = isConstant && fit.isConstant;
        const bool isCubic = fit.isCubic && !fit.isStraight; // neither if it jumps where it can't be halved any more
        add(part.from, fit.start.data(), isCubic ? Interpolation::bezier : Interpolation::linear);
        if (isCubic) {
            std::copy(fit.out.begin(), fit.out.end(), m_out.end() - static_cast<std::ptrdiff_t>(m_width));
            m_nextIn = fit.in;
        }
        last = fit.end;
    }
    std::vector<double> after(m_width);
    function(to, after.data());
    addJump(to, last.data(), after.data(), isConstant);
}

FlatCurve FlatCurve::combine(const std::vector<Component>& components, Measure measure, Sampling& sampling)
{
    const std::size_t width = components.size();
    FlatCurve result(width);
    std::vector<const Curve*> curves;
    std::vector<double> largest(width);
    for (std::size_t c = 0; c < width; ++c) {
        const Curve* const curve = components[c].curve;
        largest[c] = std::abs(components[c].constant);
        if (curve == nullptr) {
            continue;
        }
        if (std::find(curves.begin(), curves.end(), curve) == curves.end()) {
            curves.push_back(curve);
        }
        largest[c] = largestOf(*curve, components[c].index);
    }
    result.measure(measure, largest, sampling.tolerance);
    const std::vector<double> times = keyTimes(curves);
    const Function function = [&](double time, double* values) {
        for (std::size_t c = 0; c < width; ++c) {
            values[c] = components[c].at(time);
        }
    };
    std::vector<Way> ways(width);
    std::vector<double> from(width);
    std::vector<double> to(width);
    std::vector<double> after(width);
    if (times.front() > 0) { // the first value holds until then
        function(0, to.data());
        function(times.front(), after.data());
        result.addJump(times.front(), to.data(), after.data(), false);
    }
    for (std::size_t i = 0; i + 1 < times.size(); ++i) {
        Way::Kind kind = Way::Kind::constant;
        for (std::size_t c = 0; c < width; ++c) {
            ways[c] = wayOf(components[c], times[i], times[i + 1], result.m_tolerances[c]);
            kind = std::max(kind, ways[c].kind);
            from[c] = ways[c].points[0];
            to[c] = ways[c].points[3];
        }
        if (kind == Way::Kind::other) {
            result.addStretch(times[i], times[i + 1], function, sampling);
            continue;
        }
        const bool isCubic = kind == Way::Kind::cubic;
        result.add(times[i], from.data(), isCubic ? Interpolation::bezier : Interpolation::linear);
        for (std::size_t c = 0; c < width && isCubic; ++c) {
            result.m_out[result.m_out.size() - width + c] = ways[c].points[1];
            result.m_nextIn[c] = ways[c].points[2];
        }
        function(times[i + 1], after.data());
        result.addJump(times[i + 1], to.data(), after.data(), kind == Way::Kind::constant);
    }
    function(times.back(), to.data());
    result.add(times.back(), to.data(), Interpolation::linear);
    return result;
}

FlatCurve FlatCurve::sample(std::size_t width, const Function& function, const std::vector<double>& times,
                            Measure measure, Sampling& sampling)
{
    FlatCurve result(width);
    std::vector<double> largest(width);
    std::vector<double> values(width);
    for (const double time : times) {
        function(time, values.data());
        for (std::size_t c = 0; c < width; ++c) {
            largest[c] = std::max(largest[c], std::abs(values[c]));
        }
    }
    result.measure(measure, largest, sampling.tolerance);
    for (std::size_t i = 0; i + 1 < times.size(); ++i) {
        result.addStretch(times[i], times[i + 1], function, sampling);
    }
    function(times.back(), values.data());
    result.add(times.back(), values.data(), Interpolation::linear);
    return result;
}

FlatCurve FlatCurve::constant(const std::vector<double>& values)
{
    FlatCurve result(values.size());
    result.add(0, values.data(), Interpolation::linear);
    return result;
}

FlatCurve FlatCurve::part(std::size_t first, std::size_t width) const
{
    FlatCurve result(width);
    for (std::size_t key = 0; key < count(); ++key) {
        const std::size_t at = key * m_width + first;
        result.add(m_times[key], m_values.data() + at, m_kinds[key]);
        std::copy_n(m_out.data() + at, width, result.m_out.data() + key * width);
        std::copy_n(m_in.data() + at, width, result.m_in.data() + key * width);
    }
    return result;
}

void FlatCurve::extendTo(double end)
{
    if (end > m_times.back()) {
        m_kinds.back() = Interpolation::linear;
        const std::vector<double> last(m_values.end() - static_cast<std::ptrdiff_t>(m_width), m_values.end());
        add(end, last.data(), Interpolation::linear);
    }
}

bool FlatCurve::isConstant() const
{
    for (std::size_t i = m_width; i < m_values.size(); ++i) {
        if (m_values[i] != m_values[i - m_width]) {
            return false;
        }
    }
    return std::find(m_kinds.begin(), m_kinds.end(), Interpolation::bezier) == m_kinds.end();
}

std::vector<double> FlatCurve::first() const
{
    return {m_values.begin(), m_values.begin() + static_cast<std::ptrdiff_t>(m_width)};
}

std::uint64_t FlatCurve::size() const
{
    const bool hasTangents = std::find(m_kinds.begin(), m_kinds.end(), Interpolation::bezier) != m_kinds.end();
    return 1500 + m_times.size() * (28 + m_width * (hasTangents ? 80 : 20));
}

FlatCurve::KeyTexts FlatCurve::keyTexts() const
{
    KeyTexts result;
    const auto add = [](std::string& list, double number) {
        list += list.empty() ? "" : " ";
        append(list, number);
    };
    const bool hasTangents = std::find(m_kinds.begin(), m_kinds.end(), Interpolation::bezier) != m_kinds.end();
    for (std::size_t key = 0; key < count(); ++key) {
        result.kinds += key == 0 ? "" : " ";
        result.kinds += word(m_kinds[key]);
        const double before = key == 0 ? m_times[key] : m_times[key] - (m_times[key] - m_times[key - 1]) / 3;
        const double after = key + 1 == count() ? m_times[key] : m_times[key] + (m_times[key + 1] - m_times[key]) / 3;
        const bool isEnd = key > 0 && m_kinds[key - 1] == Interpolation::bezier;
        const bool isStart = m_kinds[key] == Interpolation::bezier && key + 1 < count();
        for (std::size_t i = key * m_width; hasTangents && i < (key + 1) * m_width; ++i) {
            add(result.inTangents, before);
            add(result.inTangents, isEnd ? m_in[i] : m_values[i]);
            add(result.outTangents, after);
            add(result.outTangents, isStart ? m_out[i] : m_values[i]);
        }
    }
    return result;
}

void FlatCurve::write(Document& document, pugi::xml_node animation, const std::string& idStart,
                      const std::string& target) const
{
    const KeyTexts keys = keyTexts();
    const bool hasTangents = !keys.inTangents.empty();
    Params pairs{{}, "float", 2 * m_width};
    for (std::size_t i = 0; i < m_width; ++i) {
        pairs.names.insert(pairs.names.end(), {"X", "Y"});
    }
    const struct {
        const char* semantic;
        const char* ending;
        const char* array;
        std::string numbers;
        Params params;
        bool isThere;
    } sources[] = {{"INPUT", "-input", "float_array", text(m_times), {{"TIME"}, "float", 1}, true},
                   {"OUTPUT", "-output", "float_array", text(m_values), paramsOf(m_width), true},
                   {"INTERPOLATION", "-interpolation", "Name_array", keys.kinds, {{"INTERPOLATION"}, "name", 1}, true},
                   {"IN_TANGENT", "-in-tangent", "float_array", keys.inTangents, pairs, hasTangents},
                   {"OUT_TANGENT", "-out-tangent", "float_array", keys.outTangents, pairs, hasTangents}};
    std::vector<std::string> ids;
    for (const auto& source : sources) {
        ids.push_back(source.isThere ? document.freshId(idStart + source.ending) : std::string());
        if (source.isThere) {
            writeSource(document, animation, ids.back(), source.array, source.numbers, count(), source.params);
        }
    }
    pugi::xml_node sampler = animation.append_child("sampler");
    document.setId(sampler, document.freshId(idStart + "-sampler"));
    std::size_t index = 0;
    for (const auto& source : sources) {
        if (source.isThere) {
            pugi::xml_node input = sampler.append_child("input");
            input.append_attribute("semantic") = source.semantic;
            input.append_attribute("source") = ("#" + ids[index]).c_str();
        }
        ++index;
    }
    pugi::xml_node channel = animation.append_child("channel");
    channel.append_attribute("source") = ("#" + std::string(sampler.attribute("id").value())).c_str();
    channel.append_attribute("target") = target.c_str();
}

bool isFlat(const Curve& curve, double tolerance)
{
    for (std::size_t key = 0; key + 1 < curve.count(); ++key) {
        if (curve.kind(key) == Interpolation::hermite || !(curve.time(key + 1) > curve.time(key))) {
            return false;
        }
        for (std::size_t c = 0; c < curve.width() && curve.kind(key) == Interpolation::bezier; ++c) {
            const std::optional<Curve::Controls> controls = curve.controls(key, c);
            if (!controls || !isParameterTime(curve, key, c, *controls, tolerance)) {
                return false;
            }
        }
    }
    return curve.isPlain() && curve.firstTime() >= 0;
}

double largestOf(const Curve& curve, std::size_t component)
{
    double result = 0;
    for (std::size_t key = 0; key < curve.count(); ++key) {
        result = std::max(result, std::abs(curve.values(key)[component]));
        if (const std::optional<Curve::Controls> controls = curve.controls(key, component)) {
            result = std::max({result, std::abs(controls->value[0]), std::abs(controls->value[1])});
        }
    }
    return result;
}

std::vector<double> keyTimes(const std::vector<const Curve*>& curves)
{
    std::vector<double> result;
    for (const Curve* const curve : curves) {
        for (std::size_t key = 0; key < curve->count(); ++key) {
            result.push_back(std::max(curve->time(key), 0.0));
        }
    }
    std::sort(result.begin(), result.end());
    result.erase(std::unique(result.begin(), result.end()), result.end());
    return result;
}

} // namespace libPrepare
