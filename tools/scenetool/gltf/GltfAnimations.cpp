#include "GltfAnimations.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <limits>
#include <optional>
#include <utility>
#include <vector>

namespace scenetool {

namespace {

using Json = GltfDocument::Json;

constexpr std::size_t mostSamples = 20000;     // of one node
constexpr std::size_t mostFirstSamples = 5000; // before bends are looked for
constexpr double shortestStep = 1.0 / 4096;    // seconds; a jump becomes a slope of this length

struct Sample {
    double time;
    Trs trs;
};

// The parts of a transform that are animated one by one.
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

// What a player makes of a time between two keys: spherical for rotations, straight for the others.
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

// How far a sample is from what a player would show in its place.
double errorOf(const Path& path, const Sample& a, const Sample& b, const Sample& sample)
{
    const std::array<double, 4> shown = between(path, a, b, sample.time);
    const float* const wanted = path.values(sample.trs);
    double same = 0;
    double turned = 0; // a quaternion and its opposite are one rotation
    for (std::size_t i = 0; i < path.components; ++i) {
        same = std::max(same, std::fabs(shown[i] - static_cast<double>(wanted[i])));
        turned = std::max(turned, std::fabs(shown[i] + static_cast<double>(wanted[i])));
    }
    return path.isRotation ? std::min(same, turned) : same;
}

// Samples one node.
class NodeMotion {
public:
    NodeMotion(libVideo::Node& node, const GltfOptions& options) : m_node(&node), m_options(&options) {}

    // Whether the node has a motion that can be written.
    bool sample()
    {
        const double length = m_node->animationLength();
        if (!(length > 0) || !std::isfinite(length)) {
            return false;
        }
        const double wanted = std::ceil(length * m_options->sampleRate);
        const std::size_t steps = static_cast<std::size_t>(std::clamp(wanted, 1.0, double(mostFirstSamples)));
        for (std::size_t i = 0; i <= steps; ++i) {
            // Time wraps at the very end, where the curve has to show its last value.
            const double time = i < steps ? length * double(i) / double(steps) : std::nextafter(length, 0.0);
            m_samples.push_back(at(time));
        }
        m_samples.back().time = length;
        for (const Path& path : paths()) {
            refine(path);
        }
        return true;
    }

    // The fewest samples that keep within the tolerance; empty if the part does not move.
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
        std::size_t from = 0;
        while (from + 1 < m_samples.size()) {
            std::size_t to = from + 1;
            while (to + 1 < m_samples.size() && isStraight(path, from, to + 1, allowed)) {
                ++to;
            }
            result.push_back(&m_samples[to]);
            from = to;
        }
        return result;
    }

    bool isSheared() const { return m_isSheared; }

private:
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
        constexpr std::size_t mostSpan = 512; // bounds the time of long straight lines
        if (to - from > mostSpan) {
            return false;
        }
        for (std::size_t i = from + 1; i < to; ++i) {
            if (errorOf(path, m_samples[from], m_samples[to], m_samples[i]) > allowed) {
                return false;
            }
        }
        return true;
    }

    // Halves the steps whose middle a straight line misses, so that jumps and sharp bends are found.
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
            if (b.time - a.time > shortestStep && all.size() + waiting.size() < mostSamples) {
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
                      std::string("A curve cannot be evaluated, and its node stays still: ") + exception.what());
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
            std::vector<float> times;
            std::vector<float> values;
            for (const Sample* const key : keys) {
                const float time = static_cast<float>(key->time);
                if (!times.empty() && !(time > times.back())) {
                    continue; // too near for single precision
                }
                times.push_back(time);
                const float* const part = path.values(key->trs);
                float sign = 1.0f;
                if (path.isRotation && values.size() >= 4) { // the short way from the key before
                    float cosine = 0.0f;
                    for (std::size_t c = 0; c < 4; ++c) {
                        cosine += part[c] * values[values.size() - 4 + c];
                    }
                    sign = cosine < 0.0f ? -1.0f : 1.0f;
                }
                for (std::size_t c = 0; c < path.components; ++c) {
                    values.push_back(sign * part[c]);
                }
            }
            const std::size_t input = document.addNumbers(times, "SCALAR", 1, true);
            const std::size_t output = document.addNumbers(values, path.type, path.components, false);
            channels.push_back({{"sampler", samplers.size()}, {"target", {{"node", i}, {"path", path.name}}}});
            samplers.push_back({{"input", input}, {"output", output}, {"interpolation", "LINEAR"}});
        }
    }
    if (!channels.empty()) {
        document.add("animations", {{"channels", std::move(channels)}, {"samplers", std::move(samplers)}});
    }
}

} // namespace scenetool
