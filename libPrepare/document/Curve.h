#pragma once

#include <libPrepare/document/Records.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace libPrepare {

/// How a curve runs from one key to the next. Anything else (`CARDINAL`, `BSPLINE`, no word at all) is linear.
enum class Interpolation : std::uint8_t { step, linear, bezier, hermite };

/// One `<sampler>`: keys in ascending order of time, each with the same number of values, all of them finite.
class Curve {
public:
    /// @return null unless the sampler has at least one key with a time and values
    static std::unique_ptr<Curve> read(Document& document, pugi::xml_node sampler, Reading reading);

    std::size_t count() const { return m_times.size(); }
    std::size_t width() const { return m_values.width(); }
    double time(std::size_t key) const { return m_times[key]; }
    double firstTime() const { return m_times.front(); }
    double lastTime() const { return m_times.back(); }
    /// The last key at a time or before it; the first if there is none.
    std::size_t keyBefore(double time) const;
    /// The `width` values of a key.
    const double* values(std::size_t key) const { return m_values[key]; }
    /// From a key to the next.
    Interpolation kind(std::size_t key) const { return m_kinds[key]; }

    /// Whether each key holds its values or leads straight to the next.
    bool isStraight() const;

    /// Whether reading the arrays directly from their start gives the same: one input per semantic, each with one
    /// record per key, no offset, no unnamed param, only `STEP`, `LINEAR` and `BEZIER`.
    bool isPlain() const { return m_isPlain; }

    /// The control points between a key and the next, for one component. Those of a Hermite curve are converted to
    /// Bezier.
    struct Controls {
        bool areTimed = false; ///< False if the curve's parameter is the time itself.
        double time[2] = {0, 0};
        double value[2] = {0, 0};
    };
    /// Nothing if the way to the next key is straight, which includes tangents that do not fit.
    std::optional<Controls> controls(std::size_t key, std::size_t component) const;

    /// The values at a time: those of the first key before it, those of the last key after it.
    /// @param result `width` numbers
    void evaluate(double time, double* result) const;
    /// One of the values at a time.
    double evaluate(double time, std::size_t component) const;

private:
    void readKinds(Document& document, pugi::xml_node source);
    bool hasPlainInputs(Document& document, pugi::xml_node sampler) const;
    bool isSorted() const;
    void sort();
    double evaluate(std::size_t key, double time, std::size_t component) const;

    std::vector<double> m_times;
    Records m_values;
    std::vector<Interpolation> m_kinds;
    Records m_outTangents; // as many as keys, or none
    Records m_inTangents;
    bool m_hasOddKinds = false; // words besides those of a plain curve
    bool m_isPlain = false;
    mutable std::size_t m_lastKey = 0; // that `keyBefore` returned
};

} // namespace libPrepare
