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

/// How a curve runs from one key to the next, by the word in the "INTERPOLATION" input. Any word but these, whose case
/// does not matter, is `LINEAR`.
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
/// A curve is evaluated for whatever holds it: a single value, a vector of three or a matrix of sixteen, by position in
/// `Evolution::values`. Member selections of a channel (`.X`, `.ANGLE`, `(0)(1)`) take no part in that.
class LIBVIDEO_API Animation {
public:
    /// Loads as `createFromCollada` does, whose result is dropped: a curve that failed has no target.
    Animation(const daeSmartRef<domAnimation>& animation, DAE& dae);

    /// Reads the first `<channel>` and its `<sampler>`; nested animations are not read. May run again: the records
    /// start anew.
    /// @return false if the element is of no use, with one line on "libVideo.animation" unless an input leads to no
    ///     `<source>` with a `<technique_common>` and an `<accessor>`; the records made until then stay
    bool createFromCollada(const daeSmartRef<domAnimation>& animation, DAE& dae);

    /// Id of the node or camera: the channel's target up to the first "/".
    vesk::String getTargetNode() const { return m_targetNode; }
    /// `sid` of the transformation or camera parameter: what stands behind that "/", up to the next ".".
    vesk::String getTargetTransform() const { return m_targetTransform; }
    /// Number of keys.
    unsigned getCount() { return m_count; }
    /// The key at that place in the document, by value.
    /// @throws vesk::IndexOutOfBounds if there are not so many
    Evolution evolution(unsigned index) const;
    /// Time of the last key in seconds; 0 until loading has run to its end.
    double animationLength() const { return m_animationLength; }

    /// The value at a time in seconds of something that rests at `value`.
    ///
    /// Time wraps with the length of the animation, counted from second 0. `value` comes back where the curve says
    /// nothing: at second 0 and each multiple of the length, before the first key, behind the last, between keys of a
    /// kind that is not evaluated, and at a key that has another number of values. An evaluation takes time
    /// logarithmic in the number of keys.
    ///
    /// Between keys, `LINEAR` goes straight and `BEZIER` is a cubic in normalized time s, with r = 1 − s and the values
    /// of the two control points: 3·in·s²·r + 3·out·s·r² + value0·r³ + value1·s³.
    /// @throws vesk::IndexOutOfBounds if two keys to interpolate between have too few values or tangents
    double applyAnimation(double value, double time);
    /// Of three components, each as above.
    libMath::Vector<float, 3> applyAnimation(const libMath::Vector<float, 3>& value, double time);
    /// Of sixteen components, row by row, each as above.
    libMath::Matrix<float, 4, 4> applyAnimation(const libMath::Matrix<float, 4, 4>& value, double time);

private:
    struct Span;

    /// Numbers that curves may share; they do not change any more.
    using Numbers = SharedHandle<vesk::Buffer<double>>;

    /// What one input says of the first keys: `stride` numbers each.
    struct Part {
        unsigned records;
        unsigned stride;
        Numbers numbers;
    };

    /// The numbers of one kind of all keys. Those of a key are what the parts say of it, one after the other.
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
    // The keys, in the order of the document, by what they have: a key as a record would take several times as much.
    unsigned m_count = 0;
    Numbers m_times;                     // all 0 if there are none
    vesk::Buffer<unsigned char> m_kinds; // all linear if there are none
    Column m_values;
    Column m_inTangents;
    Column m_outTangents;
    bool m_isAscending = false; // the times, which are their own index then
    // The latest time up to each record: ascending whatever the order of the records, so that the first record which
    // is not before a time can be found by halving. Empty if the times ascend, or have not been looked at.
    vesk::Array<double> m_latestTimes;
};

/// Fills the list with one entry for each `<animation>` directly below the document's `<library_animations>`, in
/// document order, also for those that fail to load.
/// @return the size of the list; 0, with a line on "libVideo.animation" and an untouched list, without a document
LIBVIDEO_API unsigned createAnimationListFromCollada(const domCOLLADA* const collada, DAE& dae,
                                                     vesk::Array<AnimationHandle>& animations);

} // namespace libVideo
