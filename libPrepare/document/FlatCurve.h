#pragma once

#include <libPrepare/document/Motion.h>

#include <functional>

namespace libPrepare {

/// One number of a target: that of a curve, or one that does not change.
struct Component {
    const Curve* curve = nullptr;
    std::size_t index = 0; ///< Among the values of the curve.
    double constant = 0;   ///< Without a curve.

    double at(double time) const;
};

/// The meaning of a curve's numbers, which determines the largest error.
enum class Measure {
    degrees, ///< `Options::tolerance` is the largest error.
    length,  ///< It is relative to the largest number.
    matrix,  ///< As `length`, separately for the translation; what follows the matrix counts as translation.
};

/// How curves that cannot be written exactly are sampled.
struct Sampling {
    explicit Sampling(const Options& options);

    double rate;      ///< Least number of samples compared per second.
    double tolerance; ///< See `Measure`.
    /// Total samples for all curves, however long they are and whatever the tolerance is. Curves after that are sampled
    /// coarsely.
    std::uint64_t left = 4000000;
};

/// A curve as the scene graph reads it: complete values, keys at 0 or later, `STEP`, `LINEAR`, and `BEZIER` whose
/// parameter is the time itself.
class FlatCurve {
public:
    /// Combines numbers into one curve: exact where all are linear, steps or cubics over time, sampled elsewhere.
    static FlatCurve combine(const std::vector<Component>& components, Measure measure, Sampling& sampling);
    /// Samples a function that is smooth between the given times, which must ascend.
    using Function = std::function<void(double time, double* result)>;
    static FlatCurve sample(std::size_t width, const Function& function, const std::vector<double>& times,
                            Measure measure, Sampling& sampling);
    /// One key at second 0.
    static FlatCurve constant(const std::vector<double>& values);

    /// Some of the numbers of each value, at the same times.
    FlatCurve part(std::size_t first, std::size_t width) const;
    /// Holds the last value up to a time.
    void extendTo(double end);

    std::size_t count() const { return m_times.size(); }
    std::size_t width() const { return m_width; }
    bool isConstant() const;
    /// The value of the first key, which is that at second 0.
    std::vector<double> first() const;
    /// The largest error of a number.
    double toleranceOf(std::size_t component) const { return m_tolerances[component]; }
    /// Approximate size in a document in bytes.
    std::uint64_t size() const;

    /// Fills an empty `<animation>` with sources, sampler and channel.
    void write(Document& document, pugi::xml_node animation, const std::string& idStart,
               const std::string& target) const;

private:
    // What its keys say besides their times and values, as lists; no tangents if no way is a cubic.
    struct KeyTexts {
        std::string kinds;
        std::string inTangents;
        std::string outTangents;
    };

    KeyTexts keyTexts() const;
    explicit FlatCurve(std::size_t width);
    void measure(Measure measure, const std::vector<double>& largest, double tolerance);
    void add(double time, const double* values, Interpolation kind);
    struct Fit;
    Fit fit(double from, double to, const Function& function, Sampling& sampling) const;
    void addStretch(double from, double to, const Function& function, Sampling& sampling);
    void addJump(double time, const double* before, const double* after, bool isConstant);

    std::size_t m_width;
    std::vector<double> m_tolerances;
    std::vector<double> m_times;
    std::vector<double> m_values;
    std::vector<Interpolation> m_kinds;
    std::vector<double> m_out; // control points, one number per value; used only where a key is BEZIER
    std::vector<double> m_in;
    std::vector<double> m_nextIn; // of the next key
};

/// Whether the scene graph reads a curve unchanged and evaluates it the same between all keys, within a tolerance.
bool isFlat(const Curve& curve, double tolerance);
/// The largest absolute value of a component, including control points.
double largestOf(const Curve& curve, std::size_t component);
/// The times at which one of the curves has a key, ascending, from 0 on; 0 is among them if a curve starts before.
std::vector<double> keyTimes(const std::vector<const Curve*>& curves);

} // namespace libPrepare
