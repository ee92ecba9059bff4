#include "GltfAnimations.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <iterator>
#include <numeric>
#include <optional>
#include <utility>
#include <vector>

namespace scenetool {

namespace {

using Json = GltfDocument::Json;

constexpr std::size_t maxSamples = 20000;     // per node
constexpr std::size_t maxFirstSamples = 5000; // per node, before refinement
constexpr std::size_t maxSpan = 512;          // samples between two keys; limits the time for long straight lines
constexpr double shortestStep = 1.0 / 4096;   // seconds; a jump becomes a slope of this length

struct Sample {
    double time;
    Trs trs;
};

// A part of a transform, which is animated on its own.
struct Path {
    const char* name;
    const char* type;
    std::size_t components;
    std::function<const float*(const Trs&)> values;
    bool isRotation;
};

const std::array<Path, 3>& paths()
{
    static const std::array<Path, 3> all{
        Path{"translation", "VEC3", 3, [](const Trs& trs) { return trs.translation.data(); }, false},
        Path{"rotation", "VEC4", 4, [](const Trs& trs) { return trs.rotation.data(); }, true},
        Path{"scale", "VEC3", 3, [](const Trs& trs) { return trs.scale.data(); }, false}};
    return all;
}

// What a player shows at a time between two keys: spherical interpolation for rotations, linear for the others.
std::array<double, 4> between(const Path& path, const Sample& a, const Sample& b, double time)
{
    const double share = (time - a.time) / (b.time - a.time);
    const float* const first = path.values(a.trs);
    const float* const second = path.values(b.trs);
    double weights[2] = {1 - share, share};
    if (path.isRotation) {
        double cosine = 0;
        for (std::size_t i = 0; i < 4; ++i) {
            cosine += static_cast<double>(first[i]) * static_cast<double>(second[i]);
        }
        const double sign = cosine < 0 ? -1 : 1;
        const double angle = std::acos(std::min(1.0, std::fabs(cosine)));
        if (angle > 1e-6) {
            weights[0] = std::sin((1 - share) * angle) / std::sin(angle);
            weights[1] = std::sin(share * angle) / std::sin(angle);
        }
        weights[1] *= sign;
    }
    std::array<double, 4> result{};
    for (std::size_t i = 0; i < path.components; ++i) {
        result[i] = weights[0] * static_cast<double>(first[i]) + weights[1] * static_cast<double>(second[i]);
    }
    return result;
}

// Difference between a sample and what a player would show at its time.
double errorOf(const Path& path, const Sample& a, const Sample& b, const Sample& sample)
{
    const std::array<double, 4> shown = between(path, a, b, sample.time);
    const float* const wanted = path.values(sample.trs);
    double same = 0;
    double turned = 0; // a quaternion and its negative are the same rotation
    for (std::size_t i = 0; i < path.components; ++i) {
        same = std::max(same, std::fabs(shown[i] - static_cast<double>(wanted[i])));
        turned = std::max(turned, std::fabs(shown[i] + static_cast<double>(wanted[i])));
    }
    return path.isRotation ? std::min(same, turned) : same;
}

// A key of a cubic curve: its value, and the slopes on both sides per second.
struct CubicKey {
    using Values = std::array<double, 3>;

    double time = 0;
    Values value{};
    Values slopeBefore{};
    Values slopeAfter{};
};

// The weights of the values and slopes of both keys at a share of the time between them.
struct CubicWeights {
    explicit CubicWeights(double share, double length)
        : first((1 + 2 * share) * (1 - share) * (1 - share)),
          firstSlope(share * (1 - share) * (1 - share) * length),
          second(share * share * (3 - 2 * share)),
          secondSlope(share * share * (share - 1) * length)
    {}

    double first;
    double firstSlope;
    double second;
    double secondSlope;
};

// Samples one node.
class NodeMotion {
public:
    NodeMotion(libVideo::Node& node, const GltfOptions& options) : m_node(&node), m_options(&options) {}

    // Samples the motion. @return whether the node has one that can be written
    bool sample()
    {
        const double length = m_node->animationLength();
        if (!(length > 0) || !std::isfinite(length)) {
            return false;
        }
        const double wanted = std::ceil(length * m_options->sampleRate);
        const std::size_t steps = static_cast<std::size_t>(std::clamp(wanted, 1.0, double(maxFirstSamples)));
        for (std::size_t i = 0; i <= steps; ++i) {
            // Time wraps at the end, so the last value is taken just before it.
            const double time = i < steps ? length * double(i) / double(steps) : std::nextafter(length, 0.0);
            m_samples.push_back(at(time));
        }
        m_samples.back().time = length;
        for (const Path& path : paths()) {
            refine(path);
        }
        return true;
    }

    // Samples to keep so that linear interpolation stays within the tolerance; empty if the part does not move.
    std::vector<const Sample*> keys(const Path& path) const
    {
        const double allowed = tolerance(path);
        const auto isAtRest = [&](const Sample& sample) {
            return errorOf(path, {0, m_samples.front().trs}, {1, m_samples.front().trs}, {0.5, sample.trs}) <=
                   allowed / 4;
        };
        if (std::all_of(m_samples.begin(), m_samples.end(), isAtRest)) {
            return {};
        }
        std::vector<const Sample*> result{&m_samples.front()};
        for (std::size_t from = 0; from + 1 < m_samples.size();) {
            from = reach(from, [&](std::size_t to) { return isStraight(path, from, to, allowed); });
            result.push_back(&m_samples[from]);
        }
        return result;
    }

    // Like `keys`, for cubic interpolation. Not for rotations, because players have to normalize their cubics.
    std::vector<CubicKey> cubicKeys(const Path& path) const
    {
        const double allowed = tolerance(path);
        std::vector<CubicKey> result{keyAt(path, 0)};
        for (std::size_t from = 0; from + 1 < m_samples.size();) {
            CubicKey first = result.back();
            CubicKey second;
            const std::size_t to = reach(from, [&](std::size_t end) {
                second = keyAt(path, end);
                return fitCubic(path, from, end, allowed, first, second);
            });
            second = keyAt(path, to);
            fitCubic(path, from, to, allowed, first, second);
            result.back() = first;
            result.push_back(second);
            from = to;
        }
        return result;
    }

    bool isSheared() const { return m_isSheared; }

private:
    // The last sample that a single piece of a curve from `from` can reach. Doubles the step while the piece fits, and
    // then halves it.
    template <class Fits>
    std::size_t reach(std::size_t from, Fits fits) const
    {
        const std::size_t last = std::min(m_samples.size() - 1, from + maxSpan);
        std::size_t reached = from + 1;
        std::size_t missed = last + 1;
        for (std::size_t step = 2; reached < last && missed > last; step *= 2) {
            const std::size_t to = std::min(last, from + step);
            if (fits(to)) {
                reached = to;
            } else {
                missed = to;
            }
        }
        while (reached + 1 < missed) {
            const std::size_t middle = (reached + missed) / 2;
            if (fits(middle)) {
                reached = middle;
            } else {
                missed = middle;
            }
        }
        return reached;
    }

    CubicKey keyAt(const Path& path, std::size_t index) const
    {
        CubicKey key;
        key.time = m_samples[index].time;
        std::copy_n(path.values(m_samples[index].trs), path.components, key.value.begin());
        return key;
    }

    // Sets the slopes of two keys so that they fit the samples between them best. @return whether the error is allowed
    bool fitCubic(const Path& path, std::size_t from, std::size_t to, double allowed, CubicKey& first,
                  CubicKey& second) const
    {
        const double length = second.time - first.time;
        double a = 0; // coefficients of the normal equations; components differ only in the right side
        double b = 0;
        double c = 0;
        CubicKey::Values right{};
        CubicKey::Values otherRight{};
        for (std::size_t i = from + 1; i < to; ++i) {
            const CubicWeights weights((m_samples[i].time - first.time) / length, length);
            a += weights.firstSlope * weights.firstSlope;
            b += weights.firstSlope * weights.secondSlope;
            c += weights.secondSlope * weights.secondSlope;
            for (std::size_t k = 0; k < path.components; ++k) {
                const double rest = static_cast<double>(path.values(m_samples[i].trs)[k]) -
                                    weights.first * first.value[k] - weights.second * second.value[k];
                right[k] += weights.firstSlope * rest;
                otherRight[k] += weights.secondSlope * rest;
            }
        }
        const double determinant = a * c - b * b;
        const bool isDetermined = to - from > 2 && determinant > 1e-12 * a * c;
        for (std::size_t k = 0; k < path.components; ++k) {
            if (isDetermined) {
                first.slopeAfter[k] = (right[k] * c - otherRight[k] * b) / determinant;
                second.slopeBefore[k] = (otherRight[k] * a - right[k] * b) / determinant;
                continue;
            }
            // Too few samples to fit: a straight line, or the parabola through the one sample.
            const double way = second.value[k] - first.value[k];
            double bend = 0;
            if (to - from == 2) {
                const double share = (m_samples[from + 1].time - first.time) / length;
                const double middle = static_cast<double>(path.values(m_samples[from + 1].trs)[k]);
                bend = (way * share - (middle - first.value[k])) / (share - share * share);
            }
            first.slopeAfter[k] = (way - bend) / length;
            second.slopeBefore[k] = (way + bend) / length;
        }
        for (std::size_t i = from + 1; i < to; ++i) {
            const CubicWeights weights((m_samples[i].time - first.time) / length, length);
            for (std::size_t k = 0; k < path.components; ++k) {
                const double shown = weights.first * first.value[k] + weights.firstSlope * first.slopeAfter[k] +
                                     weights.second * second.value[k] + weights.secondSlope * second.slopeBefore[k];
                if (!(std::fabs(shown - static_cast<double>(path.values(m_samples[i].trs)[k])) <= allowed)) {
                    return false;
                }
            }
        }
        return true;
    }

    Sample at(double time)
    {
        const Matrix4& matrix = m_node->transform(time);
        const std::optional<Trs> trs = trsOf(matrix);
        m_isSheared = m_isSheared || !trs;
        return {time, trs ? *trs : trsPairOf(matrix).outer};
    }

    double tolerance(const Path& path) const
    {
        double size = 1;
        if (!path.isRotation) {
            size = 0;
            for (const Sample& sample : m_samples) {
                for (std::size_t i = 0; i < path.components; ++i) {
                    size = std::max(size, std::fabs(static_cast<double>(path.values(sample.trs)[i])));
                }
            }
        }
        return std::max(m_options->tolerance * size, 1e-7);
    }

    bool isStraight(const Path& path, std::size_t from, std::size_t to, double allowed) const
    {
        for (std::size_t i = from + 1; i < to; ++i) {
            if (errorOf(path, m_samples[from], m_samples[to], m_samples[i]) > allowed) {
                return false;
            }
        }
        return true;
    }

    // Adds a sample in the middle of each step where linear interpolation fails, to find jumps and sharp bends.
    void refine(const Path& path)
    {
        const double allowed = tolerance(path);
        std::vector<Sample> all;
        std::vector<Sample> waiting(m_samples.rbegin(), m_samples.rend());
        all.push_back(waiting.back());
        waiting.pop_back();
        while (!waiting.empty()) {
            const Sample& a = all.back();
            const Sample& b = waiting.back();
            const double middle = (a.time + b.time) / 2;
            if (b.time - a.time > shortestStep && all.size() + waiting.size() < maxSamples) {
                const Sample sample = at(middle);
                if (errorOf(path, a, b, sample) > allowed) {
                    waiting.push_back(sample);
                    continue;
                }
            }
            all.push_back(b);
            waiting.pop_back();
        }
        m_samples = std::move(all);
    }

    libVideo::Node* m_node;
    const GltfOptions* m_options;
    std::vector<Sample> m_samples;
    bool m_isSheared = false;
};

// The times and values of a sampler.
struct Curve {
    // Adds a time. @return false, without adding it, unless it is later than the last one in single precision
    bool add(double time)
    {
        const float rounded = static_cast<float>(time);
        const bool isLater = times.empty() || rounded > times.back();
        if (isLater) {
            times.push_back(rounded);
        }
        return isLater;
    }

    std::vector<float> times;
    std::vector<float> values;
};

Curve curveOf(const Path& path, const std::vector<const Sample*>& keys)
{
    Curve curve;
    for (const Sample* const key : keys) {
        if (!curve.add(key->time)) {
            continue;
        }
        const float* const part = path.values(key->trs);
        float sign = 1.0f;
        if (path.isRotation && !curve.values.empty()) { // the shorter way from the previous key
            const float cosine = std::inner_product(part, part + path.components,
                                                    curve.values.end() - std::ptrdiff_t(path.components), 0.0f);
            sign = cosine < 0.0f ? -1.0f : 1.0f;
        }
        std::transform(part, part + path.components, std::back_inserter(curve.values),
                       [sign](float value) { return sign * value; });
    }
    return curve;
}

Curve curveOf(const Path& path, const std::vector<CubicKey>& keys)
{
    Curve curve;
    for (const CubicKey& key : keys) {
        if (curve.add(key.time)) {
            for (const CubicKey::Values& values : {key.slopeBefore, key.value, key.slopeAfter}) {
                std::copy_n(values.begin(), path.components, std::back_inserter(curve.values));
            }
        }
    }
    return curve;
}

} // namespace

void addAnimations(LoadedScene& loaded, const GltfOptions& options, GltfDocument& document, const GltfNodes& nodes,
                   ConversionNotes& notes)
{
    Json channels = Json::array();
    Json samplers = Json::array();
    for (std::size_t i = 0; i < loaded.nodes().size(); ++i) {
        libVideo::Node& node = *loaded.nodes()[i];
        if (!node.hasAnimation()) {
            continue;
        }
        NodeMotion motion(node, options);
        try {
            if (!motion.sample()) {
                continue;
            }
        } catch (const vesk::Exception& exception) {
            notes.add("motion",
                      std::string("A curve cannot be evaluated, so its node does not move: ") + exception.what());
            continue;
        }
        if (motion.isSheared() || nodes.isPair(i)) {
            notes.add("shear", "Nodes that shear while they move lose the shear.");
        }
        for (const Path& path : paths()) {
            const std::vector<const Sample*> keys = motion.keys(path);
            if (keys.empty()) {
                continue;
            }
            // A cubic key has three times the numbers of a linear one, and a curve needs at least two.
            const bool mayBeCubic = !path.isRotation && keys.size() > 6;
            const std::vector<CubicKey> cubics = mayBeCubic ? motion.cubicKeys(path) : std::vector<CubicKey>();
            const bool isCubic = mayBeCubic && 3 * cubics.size() < keys.size();
            const Curve curve = isCubic ? curveOf(path, cubics) : curveOf(path, keys);
            const std::size_t input = document.addNumbers(curve.times, "SCALAR", 1, true);
            const std::size_t output = document.addNumbers(curve.values, path.type, path.components, false);
            channels.push_back({{"sampler", samplers.size()}, {"target", {{"node", i}, {"path", path.name}}}});
            samplers.push_back(
                {{"input", input}, {"output", output}, {"interpolation", isCubic ? "CUBICSPLINE" : "LINEAR"}});
        }
    }
    if (!channels.empty()) {
        document.add("animations", {{"channels", std::move(channels)}, {"samplers", std::move(samplers)}});
    }
}

} // namespace scenetool
