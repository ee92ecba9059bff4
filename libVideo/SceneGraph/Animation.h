#pragma once // SPDX-License-Identifier: MIT

#include <libVideo/Export.h>
#include <libVideo/Handles.h>
#include <libVideo/SceneGraph/Semantic.h>

#include <libMath/Matrix.h>
#include <libMath/Vector.h>

#include <vesk/Array.h>
#include <vesk/Buffer.h>
#include <vesk/SharedResource.h>
#include <vesk/String.h>

#include <cstdint>

namespace libVideo {

/// How a curve runs from one key to the next: the word in the "INTERPOLATION" input, in any case. Any other word
/// is `LINEAR`.
enum InterpolationType : unsigned {
    STEP = 0,
    LINEAR = 1,
    BEZIER = 2,
    HERMITE = 3,  ///< read, not evaluated
    CARDINAL = 4, ///< read, not evaluated
    BSPLINE = 5   ///< read, not evaluated
};

/// One key of a curve.
struct LIBVIDEO_API Evolution {
    double time = 0.0;                        ///< in seconds
    InterpolationType interpolation = LINEAR; ///< How the curve runs from here to the next key.
    vesk::Array<double> values;               ///< as many as the stride of the "OUTPUT" input
    vesk::Array<double> inTangent;            ///< pairs of time and value, one for each of `values`
    vesk::Array<double> outTangent;           ///< likewise
};

/// One keyframe curve, as an `<animation>` with a `<channel>` defines it. It keeps no link to the document. Further
/// channels, nested animations and `<animation_clip>` are not read.
///
/// A curve is evaluated for a single value, a vector of three or a matrix of sixteen, whose components are at the same
/// positions in `Evolution::values`. Member selections of a channel (`.X`, `.ANGLE`, `(0)(1)`) are ignored.
class LIBVIDEO_API Animation {
public:
    /// Loads as `createFromCollada` does, and drops its result: a curve that failed has no target.
    Animation(const daeSmartRef<domAnimation>& animation, DAE& dae);

    /// Reads the first `<channel>` and its `<sampler>`; nested animations are not read. Another call replaces all keys.
    /// @return false if the curve cannot be used. Logs one message on "libVideo.animation", except if an input does not
    ///     lead to a `<source>` with a `<technique_common>` and an `<accessor>`. Keys read before the failure are kept
    bool createFromCollada(const daeSmartRef<domAnimation>& animation, DAE& dae);

    /// Id of the node or camera: the channel's target up to the first "/".
    vesk::String getTargetNode() const { return m_targetNode; }
    /// `sid` of the transformation or camera parameter: the target after that "/", up to the next ".".
    vesk::String getTargetTransform() const { return m_targetTransform; }
    /// Number of keys.
    unsigned getCount() { return m_count; }
    /// A copy of a key; keys are in document order.
    /// @throws vesk::IndexOutOfBounds if `index` is not below `getCount()`
    Evolution evolution(unsigned index) const;
    /// Time of the last key in seconds; 0 if the curve failed to load.
    double animationLength() const { return m_animationLength; }

    /// The value of the curve at a time in seconds; `value` is the rest value.
    ///
    /// Time wraps with the length of the animation, counted from second 0. The result is `value` where the curve has no
    /// value: at second 0 and each multiple of the length, before the first key, after the last, between keys of a
    /// kind that is not evaluated, and at a key with another number of values. An evaluation takes time
    /// logarithmic in the number of keys.
    ///
    /// Between keys, `LINEAR` is a straight line and `BEZIER` is a cubic in normalized time s, with r = 1 − s and the values
    /// of the two control points: 3·in·s²·r + 3·out·s·r² + value0·r³ + value1·s³.
    /// @throws vesk::IndexOutOfBounds if two keys to interpolate between have too few values or tangents
    double applyAnimation(double value, double time);
    /// Three components, each as above.
    libMath::Vector<float, 3> applyAnimation(const libMath::Vector<float, 3>& value, double time);
    /// Sixteen components, row by row, each as above.
    libMath::Matrix<float, 4, 4> applyAnimation(const libMath::Matrix<float, 4, 4>& value, double time);

private:
    struct Span;

    /// Numbers that curves may share; they never change.
    using Numbers = SharedHandle<vesk::Buffer<double>>;

    /// The numbers that one input has for the first `records` keys: `stride` for each.
    struct Part {
        unsigned records;
        unsigned stride;
        Numbers numbers;
    };

    /// The numbers of one kind for all keys. Those of a key are the numbers that each part has for it, in order.
    struct Column {
        vesk::Array<Part> parts;

        std::uint64_t sizeAt(unsigned record) const;
        /// @throws vesk::IndexOutOfBounds
        double at(unsigned record, unsigned index) const;
        vesk::Array<double> copyOf(unsigned record) const;
    };

    bool readCurve(const domAnimation& animation);
    bool createInputFromCollada(const daeSmartRef<domInputLocal>& input);
    bool createFloatEvolution(const domFloat_array* array, const VertexSemantic& semantic, unsigned count,
                              unsigned stride);
    bool createNameEvolution(const domName_array* array, const VertexSemantic& semantic, unsigned count,
                             unsigned stride);
    void setTarget(vesk::String target);

    double getModulusTime(double time);
    bool getIndicesFromSeconds(double seconds, unsigned* first, unsigned* second);
    double getLinearInterpolation(double value0, double value1, double time0, double time1, double time);
    double getBezierInterpolation(double value0, double value1, double time0, double time1, double time,
                                  double inControl, double outControl);

    void setTimes(const Numbers& numbers, unsigned count, unsigned stride);
    double timeAt(unsigned record) const { return m_times == nullptr ? 0.0 : (*m_times)[record]; }
    InterpolationType kindAt(unsigned record) const;
    void indexTimes();
    unsigned firstRecordNotBefore(double seconds) const;
    bool findSpan(double time, Span& span);
    double interpolate(const Span& span, unsigned component);
    template <unsigned size, class Value>
    Value evaluate(const Value& value, double time);

    vesk::String m_name;
    vesk::String m_targetNode;
    vesk::String m_targetTransform;
    double m_animationLength = 0.0;
    // The keys in document order, as columns, because a record per key would take several times the memory.
    unsigned m_count = 0;
    Numbers m_times;                     // null: all times are 0
    vesk::Buffer<unsigned char> m_kinds; // empty: all keys are linear
    Column m_values;
    Column m_inTangents;
    Column m_outTangents;
    bool m_isAscending = false; // the times ascend, so they need no index
    // The latest time up to each record. It ascends even if the times do not, so bisection finds the first record that
    // is not before a time. Empty if the times ascend, or before `indexTimes()`.
    vesk::Array<double> m_latestTimes;
};

/// Fills the list with one entry for each `<animation>` directly below the document's `<library_animations>`, in
/// document order, also for those that fail to load.
/// @return the size of the list; 0, with a message on "libVideo.animation" and an unchanged list, without a document
LIBVIDEO_API unsigned createAnimationListFromCollada(const domCOLLADA* const collada, DAE& dae,
                                                     vesk::Array<AnimationHandle>& animations);

} // namespace libVideo
