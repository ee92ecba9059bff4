#include "Curve.h"

#include "Numbers.h"
#include "Words.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace libPrepare {

namespace {

Interpolation interpolation(std::string_view word)
{
    if (word == "LINEAR") {
        return Interpolation::linear;
    }
    if (word == "STEP") {
        return Interpolation::step;
    }
    if (word == "BEZIER") {
        return Interpolation::bezier;
    }
    return word == "HERMITE" ? Interpolation::hermite : Interpolation::linear;
}

double bezier(double p0, double c0, double c1, double p1, double s)
{
    const double r = 1 - s;
    return p0 * r * r * r + 3 * c0 * s * r * r + 3 * c1 * s * s * r + p1 * s * s * s;
}

// The parameter at which a curve from 0 to 1 reaches a time. Times are fractions of the span.
double parameterAt(double c0, double c1, double wanted)
{
    double low = 0;
    double high = 1;
    unsigned step = 0;
    if (c0 >= 0 && c0 <= 1 && c1 >= 0 && c1 <= 1) { // it ascends: Newton's method gets where halving would
        double near = wanted;
        for (unsigned i = 0; i < 5; ++i) {
            const double r = 1 - near;
            const double slope = 3 * c0 * r * r + 6 * (c1 - c0) * near * r + 3 * (1 - c1) * near * near;
            near = std::clamp(slope > 0 ? near - (bezier(0, c0, c1, 1, near) - wanted) / slope : near, 0.0, 1.0);
        }
        constexpr unsigned steps = 44;
        constexpr double cells = std::uint64_t(1) << steps;
        const double cell = std::floor(near * cells);
        const double first = std::max(cell, 0.0) / cells;
        const double last = (cell + 1) / cells;
        if (last <= 1 && bezier(0, c0, c1, 1, first) < wanted && !(bezier(0, c0, c1, 1, last) < wanted)) {
            low = first;
            high = last;
            step = steps;
        }
    }
    for (; step < 54; ++step) {
        const double middle = (low + high) / 2;
        (bezier(0, c0, c1, 1, middle) < wanted ? low : high) = middle;
    }
    return (low + high) / 2;
}

// Time (absent: at a third) and value of the control point that a tangent has for a component.
bool readControl(const Records& tangents, std::size_t key, std::size_t component, std::size_t width,
                 std::optional<double>& time, double& value)
{
    if (key >= tangents.count()) {
        return false;
    }
    const double* const record = tangents[key];
    if (tangents.width() == 2 * width) {
        time = record[2 * component];
        value = record[2 * component + 1];
    } else if (tangents.width() == width) {
        time.reset();
        value = record[component];
    } else if (tangents.width() == width + 1) {
        time = record[0];
        value = record[1 + component];
    } else {
        return false;
    }
    return std::isfinite(value) && (!time || std::isfinite(*time));
}

} // namespace

std::unique_ptr<Curve> Curve::read(Document& document, pugi::xml_node sampler, Reading reading)
{
    std::unique_ptr<Curve> curve(new Curve);
    for (const pugi::xml_node input : sampler.children("input")) {
        const std::string_view semantic = input.attribute("semantic").value();
        const pugi::xml_node source = document.resolve(input.attribute("source").value(), {"source"});
        if (semantic == "INPUT") {
            curve->m_times = Records::read(document, source, Reading::now).takeFirstNumbers();
        } else if (semantic == "OUTPUT") {
            curve->m_values = Records::read(document, source, reading);
        } else if (semantic == "INTERPOLATION") {
            curve->readKinds(document, source);
        } else if (semantic == "OUT_TANGENT") {
            curve->m_outTangents = Records::read(document, source, Reading::now);
        } else if (semantic == "IN_TANGENT") {
            curve->m_inTangents = Records::read(document, source, Reading::now);
        }
    }
    const std::size_t count = std::min(curve->m_times.size(), curve->m_values.count());
    curve->m_times.resize(count);
    curve->m_values.shorten(count);
    curve->m_kinds.resize(count, Interpolation::linear);
    for (Records* const tangents : {&curve->m_outTangents, &curve->m_inTangents}) {
        if (tangents->count() < count) {
            *tangents = Records();
        }
    }
    curve->m_isPlain = curve->hasPlainInputs(document, sampler);
    curve->sort();
    return curve->count() == 0 ? nullptr : std::move(curve);
}

void Curve::readKinds(Document& document, pugi::xml_node source)
{
    m_kinds.clear();
    m_hasOddKinds = false;
    const pugi::xml_node accessor = descend(source, "technique_common/accessor");
    const pugi::xml_node array = document.resolve(accessor.attribute("source").value(),
                                                  {"Name_array", "IDREF_array", "float_array", "int_array"});
    if (!is(array, "Name_array") && !is(array, "IDREF_array")) {
        return;
    }
    const auto add = [&](std::string_view word, std::size_t times) {
        const Interpolation kind = interpolation(word);
        m_hasOddKinds =
            m_hasOddKinds || kind == Interpolation::hermite || (kind == Interpolation::linear && word != "LINEAR");
        m_kinds.insert(m_kinds.end(), times, kind);
    };
    std::string scratch;
    const std::string_view text = trimmed(textOf(array, scratch));
    std::string_view rest = text;
    const std::string_view first = takeWord(rest);
    const std::size_t step = first.size() + 1;
    if ((text.size() + 1) % step == 0 && !rest.empty() && text.substr(step) == text.substr(0, text.size() - step)) {
        add(first, (text.size() + 1) / step); // one word repeated, the usual case
    } else {
        forEachWord(text, [&](const char* begin, const char* end) {
            add(std::string_view(begin, static_cast<std::size_t>(end - begin)), 1);
            return true;
        });
    }
    RecordLayout(accessor, m_kinds.size()).pick(m_kinds);
}

bool Curve::hasPlainInputs(Document& document, pugi::xml_node sampler) const
{
    std::unordered_set<std::string_view> seen;
    const bool hasTangents = m_outTangents.count() > 0 || m_inTangents.count() > 0;
    for (const pugi::xml_node input : sampler.children("input")) {
        const std::string_view semantic = input.attribute("semantic").value();
        const pugi::xml_node source = document.resolve(input.attribute("source").value(), {"source"});
        const pugi::xml_node accessor = descend(source, "technique_common/accessor");
        const pugi::xml_node array = document.resolve(accessor.attribute("source").value());
        const bool isWord = semantic == "INTERPOLATION";
        std::size_t width = 1;
        if (semantic == "OUTPUT") {
            width = this->width();
        } else if (semantic == "IN_TANGENT" || semantic == "OUT_TANGENT") {
            width = hasTangents ? 2 * this->width() : 0;
        } else if (semantic != "INPUT" && !isWord) {
            return false;
        }
        if (!seen.insert(semantic).second || source.parent() != sampler.parent() || array.parent() != source ||
            !is(array, isWord ? "Name_array" : "float_array") || wholeNumber(array.attribute("count"), 0) == 0 ||
            wholeNumber(accessor.attribute("count"), 0) != count() ||
            wholeNumber(accessor.attribute("offset"), 0) != 0 ||
            wholeNumber(accessor.attribute("stride"), 1) != width) {
            return false;
        }
        for (const pugi::xml_node param : accessor.children("param")) {
            if (*param.attribute("name").value() == 0) {
                return false;
            }
        }
    }
    return !m_hasOddKinds;
}

bool Curve::isStraight() const
{
    return std::all_of(m_kinds.begin(), m_kinds.end(),
                       [](Interpolation kind) { return kind == Interpolation::step || kind == Interpolation::linear; });
}

bool Curve::isSorted() const
{
    const auto isFinite = [](double value) { return std::isfinite(value); };
    return std::all_of(m_times.begin(), m_times.end(), isFinite) && std::is_sorted(m_times.begin(), m_times.end()) &&
           m_values.areFinite();
}

void Curve::sort()
{
    if (isSorted()) {
        return;
    }
    std::vector<std::size_t> order;
    for (std::size_t key = 0; key < count(); ++key) {
        const double* const record = m_values[key];
        if (std::isfinite(m_times[key]) &&
            std::all_of(record, record + width(), [](double value) { return std::isfinite(value); })) {
            order.push_back(key);
        }
    }
    m_isPlain = false;
    std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) { return m_times[a] < m_times[b]; });
    std::vector<double> times;
    std::vector<Interpolation> kinds;
    for (const std::size_t key : order) {
        times.push_back(m_times[key]);
        kinds.push_back(m_kinds[key]);
    }
    m_times = std::move(times);
    m_kinds = std::move(kinds);
    m_values = m_values.reordered(order);
    for (Records* const tangents : {&m_outTangents, &m_inTangents}) {
        if (tangents->count() > 0) {
            *tangents = tangents->reordered(order);
        }
    }
}

std::optional<Curve::Controls> Curve::controls(std::size_t key, std::size_t component) const
{
    const Interpolation way = m_kinds[key];
    if ((way != Interpolation::bezier && way != Interpolation::hermite) || key + 1 >= count()) {
        return {};
    }
    std::optional<double> times[2];
    Controls result;
    if (!readControl(m_outTangents, key, component, width(), times[0], result.value[0]) ||
        !readControl(m_inTangents, key + 1, component, width(), times[1], result.value[1])) {
        return {};
    }
    result.areTimed = times[0] && times[1];
    if (result.areTimed) {
        result.time[0] = *times[0];
        result.time[1] = *times[1];
    }
    if (way == Interpolation::hermite) { // tangents, which are three times as long as the way to the control points
        result.value[0] = m_values[key][component] + result.value[0] / 3;
        result.value[1] = m_values[key + 1][component] - result.value[1] / 3;
        result.time[0] = m_times[key] + result.time[0] / 3;
        result.time[1] = m_times[key + 1] - result.time[1] / 3;
    }
    return result;
}

std::size_t Curve::keyBefore(double time) const
{
    const std::size_t key = m_lastKey; // curves are mostly evaluated in order of time
    for (std::size_t near = key; near < std::min(key + 2, count()); ++near) {
        if (m_times[near] <= time && (near + 1 == count() || time < m_times[near + 1])) {
            return m_lastKey = near;
        }
    }
    const auto after = std::upper_bound(m_times.begin(), m_times.end(), time);
    return m_lastKey = after == m_times.begin() ? 0 : static_cast<std::size_t>(after - m_times.begin()) - 1;
}

void Curve::evaluate(double time, double* result) const
{
    const std::size_t key = keyBefore(time);
    for (std::size_t c = 0; c < width(); ++c) {
        result[c] = evaluate(key, time, c);
    }
}

double Curve::evaluate(double time, std::size_t component) const
{
    return evaluate(keyBefore(time), time, component);
}

double Curve::evaluate(std::size_t key, double time, std::size_t component) const
{
    const double from = m_values[key][component];
    if (!(time > m_times[key]) || key + 1 == count() || m_kinds[key] == Interpolation::step) {
        return from;
    }
    const double to = m_values[key + 1][component];
    const double span = m_times[key + 1] - m_times[key];
    const double part = (time - m_times[key]) / span;
    const std::optional<Controls> way = controls(key, component);
    if (!way) {
        return from + (to - from) * part;
    }
    const double parameter =
        way->areTimed ? parameterAt((way->time[0] - m_times[key]) / span, (way->time[1] - m_times[key]) / span, part)
                      : part;
    return bezier(from, way->value[0], way->value[1], to, parameter);
}

} // namespace libPrepare
