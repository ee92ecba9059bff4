#include "support/VideoTest.h"

#include <libVideo/SceneGraph/Animation.h>

#include <iomanip>
#include <random>

namespace {

using namespace libVideo;
using namespace testSupport;

using Kinds = vesk::Buffer<unsigned char>;
using Numbers = std::vector<double>;
using ModulusFunction = double (Animation::*)(double);
using IndicesFunction = bool (Animation::*)(double, unsigned*, unsigned*);
using LinearFunction = double (Animation::*)(double, double, double, double, double);
using BezierFunction = double (Animation::*)(double, double, double, double, double, double, double);

PRIVATE_MEMBER(kindsField, Kinds Animation::*, &Animation::m_kinds)
PRIVATE_MEMBER(lengthField, double Animation::*, &Animation::m_animationLength)
PRIVATE_MEMBER(modulusTime, ModulusFunction, &Animation::getModulusTime)
PRIVATE_MEMBER(indices, IndicesFunction, &Animation::getIndicesFromSeconds)
PRIVATE_MEMBER(linearBy, LinearFunction, &Animation::getLinearInterpolation)
PRIVATE_MEMBER(bezierBy, BezierFunction, &Animation::getBezierInterpolation)

constexpr double infinity = std::numeric_limits<double>::infinity();
/// The arrays of a curve in a document. Each holds the same number of values for each time; an empty one makes no
/// input.
struct CurveText {
    Numbers times;
    Numbers values;
    std::string words = std::string();
    Numbers inTangents = Numbers();
    Numbers outTangents = Numbers();
};

Animation loadSpread(const CurveText& curve, unsigned size);

struct EvaluationCase : Row {
    CurveText curve;
    double time;
    bool isStatic;   ///< the input is returned
    double expected; ///< otherwise this, times c + 1 in component c
};

class AnimationEvaluationTest : public testing::TestWithParam<EvaluationCase> {};

TEST_P(AnimationEvaluationTest, Scalar)
{
    Animation animation = loadSpread(GetParam().curve, 1);
    const double result = animation.applyAnimation(99.0, GetParam().time);
    if (GetParam().isStatic) {
        EXPECT_EQ(99.0, result);
    } else if (std::isnan(GetParam().expected)) {
        EXPECT_TRUE(std::isnan(result));
    } else {
        EXPECT_DOUBLE_EQ(GetParam().expected, result);
    }
}

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

// ---- curves from documents

std::string textOf(const Numbers& numbers);

/// One input and its source, which holds `records` records.
std::string floatInput(const std::string& semantic, const Numbers& numbers, std::size_t records)
{
    const std::size_t stride = records == 0 ? 1 : numbers.size() / records;
    return "<source id='" + semantic + "'><float_array id='" + semantic + "-array' count='" +
           std::to_string(numbers.size()) + "'>" + textOf(numbers) +
           "</float_array><technique_common><accessor source='#" + semantic + "-array' count='" +
           std::to_string(records) + "' stride='" + std::to_string(stride) + "'/></technique_common></source>";
}

Animation load(const CurveText& curve);

// A kind that no document can request.
void setFirstKind(Animation& animation, unsigned char kind)
{
    Kinds& kinds = kindsField(animation);
    kinds.resize(animation.getCount(), true);
    kinds[0] = kind;
}

// ---- the same curve for all three overloads

Vector3 staticVector()
{
    return Vector3(99.0f, 199.0f, 299.0f);
}

Matrix4 staticMatrix()
{
    Matrix4 matrix;
    for (unsigned i = 0; i < 16; ++i) {
        matrix[i] = 99.0f + 100.0f * static_cast<float>(i);
    }
    return matrix;
}

template <unsigned size, class Value>
void expectStatic(const Value& result)
{
    for (unsigned c = 0; c < size; ++c) {
        EXPECT_EQ(99.0f + 100.0f * static_cast<float>(c), result[c]) << "component " << c;
    }
}

template <unsigned size, class Value>
void expectSpread(double scalar, const Value& result);

TEST_P(AnimationEvaluationTest, Vector)
{
    Animation animation = loadSpread(GetParam().curve, 3);
    const Vector3 result = animation.applyAnimation(staticVector(), GetParam().time);
    if (GetParam().isStatic) {
        expectStatic<3>(result);
    } else {
        expectSpread<3>(GetParam().expected, result);
    }
}

TEST_P(AnimationEvaluationTest, Matrix)
{
    Animation animation = loadSpread(GetParam().curve, 16);
    const Matrix4 result = animation.applyAnimation(staticMatrix(), GetParam().time);
    if (GetParam().isStatic) {
        expectStatic<16>(result);
    } else {
        expectSpread<16>(GetParam().expected, result);
    }
}

EvaluationCase value(const char* name, const CurveText& curve, double time, double expected)
{
    return {name, curve, time, false, expected};
}

EvaluationCase input(const char* name, const CurveText& curve, double time)
{
    return {name, curve, time, true, 0.0};
}

/// Keys at 1, 2 and 3 seconds with the values 10, 20 and 40.
CurveText usual(const char* words)
{
    return {{1, 2, 3}, {10, 20, 40}, words};
}

CurveText linear()
{
    return usual("LINEAR LINEAR LINEAR");
}

CurveText step()
{
    return usual("STEP STEP STEP");
}

INSTANTIATE_ROWS(Linear, AnimationEvaluationTest, input("SecondZero", linear(), 0),
                 input("NegativeZero", linear(), -0.0), input("LengthWrapsToZero", linear(), 3),
                 input("TwiceTheLength", linear(), 6), input("MinusTheLength", linear(), -3),
                 input("BeforeTheFirstKey", linear(), 0.5), input("WrapsBeforeTheFirstKey", linear(), 3.5),
                 value("FirstKey", linear(), 1, 10), value("WrapsToTheFirstKey", linear(), 4, 10),
                 value("WrapsTwiceToTheFirstKey", linear(), 7, 10), value("SecondKey", linear(), 2, 20),
                 value("FirstSpan", linear(), 1.5, 15), value("SecondSpan", linear(), 2.5, 30),
                 value("WrapsToTheSecondSpan", linear(), 5.5, 30),
                 // (40 - 20) * 0.999 + 20
                 value("JustBeforeTheLastKey", linear(), 2.999, 39.98), input("MinusOne", linear(), -1),
                 input("MinusTwoAndAHalf", linear(), -2.5), input("NotANumber", linear(), notANumber),
                 input("Infinity", linear(), infinity), input("MinusInfinity", linear(), -infinity),
                 value("NoInterpolationInput", {{1, 2, 3}, {10, 20, 40}}, 2.5, 30));

INSTANTIATE_ROWS(Step, AnimationEvaluationTest, value("FirstSpanHoldsTheFirstKey", step(), 1.5, 10),
                 value("SecondSpanHoldsTheSecondKey", step(), 2.5, 20),
                 value("JustBeforeTheLastKeyHoldsTheSecond", step(), 2.999, 20), value("SecondKey", step(), 2, 20),
                 value("FirstKey", step(), 1, 10), input("SecondZero", step(), 0),
                 input("LengthWrapsToZero", step(), 3), input("BeforeTheFirstKey", step(), 0.5));

INSTANTIATE_ROWS(KindOfTheEarlierKey, AnimationEvaluationTest,
                 value("StepThenLinearHolds", usual("STEP LINEAR LINEAR"), 1.5, 10),
                 value("StepThenLinearGoesStraightLater", usual("STEP LINEAR LINEAR"), 2.5, 30),
                 value("LinearThenStepGoesStraight", usual("LINEAR STEP STEP"), 1.5, 15),
                 value("LinearThenStepHoldsLater", usual("LINEAR STEP STEP"), 2.5, 20),
                 value("LinearThenHermiteGoesStraight", usual("LINEAR HERMITE LINEAR"), 1.5, 15),
                 value("LinearThenBezierNeedsNoTangents", usual("LINEAR BEZIER BEZIER"), 1.5, 15));

INSTANTIATE_ROWS(Unevaluated, AnimationEvaluationTest,
                 input("HermiteGivesTheInputBetweenKeys", usual("HERMITE LINEAR LINEAR"), 1.5),
                 input("CardinalGivesTheInputBetweenKeys", usual("CARDINAL LINEAR LINEAR"), 1.5),
                 input("BsplineGivesTheInputBetweenKeys", usual("BSPLINE LINEAR LINEAR"), 1.5),
                 value("HermiteKeyIsHit", usual("HERMITE HERMITE HERMITE"), 1, 10),
                 value("CardinalKeyIsHit", usual("CARDINAL CARDINAL CARDINAL"), 2, 20),
                 value("BsplineKeyIsHit", usual("BSPLINE BSPLINE BSPLINE"), 1, 10),
                 input("HermiteOfTheSecondKey", usual("LINEAR HERMITE LINEAR"), 2.5),
                 value("LinearBehindAHermiteSpan", usual("HERMITE LINEAR LINEAR"), 2.5, 30));

/// Control points as pairs of one number for each key: in, out.
CurveText bezier(const Numbers& times, const Numbers& values, const Numbers& in, const Numbers& out)
{
    CurveText curve{times, values, "", in, out};
    for (std::size_t i = 0; i < times.size(); ++i) {
        curve.words += "BEZIER ";
    }
    return curve;
}

INSTANTIATE_ROWS(
    Bezier, AnimationEvaluationTest,
    // The other two control points, 500 and 700, belong to the spans on either side.
    // 3·6/8 + 3·2/8 + 0 + 8/8 = 2.25 + 0.75 + 0 + 1
    value("HalfTheSpan", bezier({1, 2}, {0, 8}, {500, 6}, {2, 700}), 1.5, 4),
    // s = 1/4: 3·6·(1/16)·(3/4) + 3·2·(1/4)·(9/16) + 4·(27/64) + 8·(1/64) = 0.84375 + 0.84375 + 1.6875 + 0.125
    value("QuarterOfTheSpan", bezier({1, 3}, {4, 8}, {500, 6}, {2, 700}), 1.5, 3.5),
    // s = 1/2: 3·1/8 + 3·5/8 + 8/8 + 16/8 = 0.375 + 1.875 + 1 + 2
    value("SecondSpan", bezier({1, 2, 3}, {0, 8, 16}, {500, 6, 1}, {2, 5, 700}), 2.5, 5.25),
    // With its control points at the thirds, a curve is straight: s = 1/4 of 0 to 12.
    value("StraightCurve", bezier({1, 3}, {0, 12}, {500, 8}, {4, 700}), 1.5, 3),
    value("FirstKeyWithoutTangents", usual("BEZIER BEZIER BEZIER"), 1, 10),
    value("SecondKeyWithoutTangents", usual("BEZIER BEZIER BEZIER"), 2, 20),
    input("SecondZeroWithoutTangents", usual("BEZIER BEZIER BEZIER"), 0),
    input("BeforeTheFirstKeyWithoutTangents", usual("BEZIER BEZIER BEZIER"), 0.5));

INSTANTIATE_ROWS(OddTimes, AnimationEvaluationTest, input("NoRecordsAtSecondZero", {{}, {}}, 0),
                 input("NoRecordsLater", {{}, {}}, 1), input("NoRecordsEarlier", {{}, {}}, -1),
                 input("NoRecordsAtNoNumber", {{}, {}}, notANumber), input("OneKeyAtZeroAtSecondZero", {{0}, {7}}, 0),
                 input("OneKeyAtZeroLater", {{0}, {7}}, 0.5), input("OneKeyAtZeroEarlier", {{0}, {7}}, -0.5),
                 input("OneKeyAtTwoAtItsTime", {{2}, {7}}, 2), input("OneKeyAtTwoBefore", {{2}, {7}}, 1.5),
                 input("OneKeyAtTwoBehind", {{2}, {7}}, 2.5), input("OneKeyAtTwoEarlier", {{2}, {7}}, -2),
                 input("OneKeyAtTwoFarBehind", {{2}, {7}}, 6),
                 // The length 3 keeps the sign of a time: -1.5 stays.
                 value("NegativeTimesAreReached", {{-2, -1, 3}, {10, 20, 40}}, -1.5, 15),
                 value("NegativeTimeIsHit", {{-2, -1, 3}, {10, 20, 40}}, -2, 10),
                 value("NegativeTimesWrap", {{-2, -1, 3}, {10, 20, 40}}, -4.5, 15),
                 // A length of 0 or less wraps nothing.
                 value("NegativeLengthDoesNotWrap", {{-3, -2, -1}, {10, 20, 40}}, -2.5, 15),
                 value("NegativeLengthHitsItsLastKey", {{-3, -2, -1}, {10, 20, 40}}, -1, 40),
                 input("NegativeLengthIsOverLater", {{-3, -2, -1}, {10, 20, 40}}, 5),
                 input("NegativeLengthStillLeavesSecondZero", {{-3, -2, -1}, {10, 20, 40}}, 0),
                 value("LengthZeroReachesNegativeTimes", {{-2, -1, 0}, {10, 20, 40}}, -0.5, 30),
                 input("LengthZeroIsOverLater", {{-2, -1, 0}, {10, 20, 40}}, 0.5),
                 // A curve that covers second 0 is not evaluated there, nor at multiples of its length.
                 input("SecondZeroInsideACurve", {{-1, 1, 3}, {10, 20, 40}}, 0),
                 input("LengthOfACurveAroundZero", {{-1, 1, 3}, {10, 20, 40}}, 3),
                 input("MinusTheLengthOfACurveAroundZero", {{-1, 1, 3}, {10, 20, 40}}, -3),
                 value("NearSecondZeroInsideACurve", {{-1, 1, 3}, {10, 20, 40}}, 0.5, 17.5),
                 value("FirstOfEqualTimesIsHit", {{1, 2, 2, 4}, {10, 20, 40, 80}}, 2, 20),
                 value("SpanUpToEqualTimes", {{1, 2, 2, 4}, {10, 20, 40, 80}}, 1.5, 15),
                 value("SpanBehindEqualTimes", {{1, 2, 2, 4}, {10, 20, 40, 80}}, 3, 60),
                 input("BeforeEqualTimesAtTheStart", {{2, 2, 4}, {10, 20, 40}}, 1),
                 // The first record that is not before 2.5 is the one at 5, although the one at 1 comes after it.
                 value("DescendingTimeIsPassedOver", {{2, 5, 1, 6}, {10, 40, 0, 0}}, 2.5, 15),
                 value("FirstMatchNotBestMatch", {{1, 5, 2, 6}, {10, 50, 0, 0}}, 2, 20),
                 input("EarlierTimeBehindTheFirstKeyIsNotFound", {{2, 1, 6}, {10, 20, 40}}, 1),
                 // A key whose time is NaN stops the search, and interpolation up to it gives NaN.
                 input("FirstTimeIsNoNumber", {{notANumber, 2, 3}, {10, 20, 40}}, 1.5),
                 value("SpanToATimeThatIsNoNumber", {{1, notANumber, 3}, {10, 20, 40}}, 2, notANumber),
                 value("HitBeforeATimeThatIsNoNumber", {{1, notANumber, 3}, {10, 20, 40}}, 1, 10),
                 value("StepUpToATimeThatIsNoNumber", {{1, notANumber, 3}, {10, 20, 40}, "STEP STEP STEP"}, 2, 10),
                 // A length that is NaN is not greater than 0, so nothing wraps.
                 value("LengthThatIsNoNumberDoesNotWrap", {{1, 2, notANumber}, {10, 20, 40}}, 1.5, 15),
                 value("LengthThatIsNoNumberHasALastKey", {{1, 2, notANumber}, {10, 20, 40}}, 9, notANumber),
                 // An infinite length turns every time into 0 times infinity.
                 input("InfiniteLength", {{1, 2, infinity}, {10, 20, 40}}, 1.5),
                 input("InfiniteLengthAtAKey", {{1, 2, infinity}, {10, 20, 40}}, 1),
                 // infinity / infinity is NaN, which converts like a quotient beyond 32 bits: infinity stays.
                 value("InfiniteLengthAtInfinity", {{1, 2, infinity}, {10, 20, 40}}, infinity, 40),
                 // (20 - 10) · 1 / infinity + 10
                 value("SpanToAnInfiniteTime", {{1, infinity, 3}, {10, 20, 40}}, 2, 10),
                 value("SpanFromMinusInfinity", {{-infinity, 2, 3}, {10, 20, 40}}, 1, notANumber),
                 value("MinusInfinityIsHit", {{-infinity, 2, -1}, {10, 20, 40}}, -infinity, 10),
                 value("InfinityIsHit", {{1, infinity, -1}, {10, 20, 40}}, infinity, 20),
                 input("MinusInfinityAsLength", {{1, 2, -infinity}, {10, 20, 40}}, 3),
                 value("MinusInfinityAsLengthDoesNotWrap", {{1, 2, -infinity}, {10, 20, 40}}, 1.5, 15),
                 // 9·10^9 / 3 is beyond 32 bits: t = 9·10^9 + 2^31 · 3, far past the last key.
                 input("QuotientAbove32Bits", linear(), 9e9),
                 // -6442450949 / 3 is below -2^31: t = -6442450949 + 2147483648 · 3 = -5, before the first key at -4.
                 input("QuotientBelow32BitsBeforeTheFirstKey", {{-4, -1, 3}, {10, 40, 80}}, -6442450949.0),
                 // -6442450946 / 3 is -2147483648.67, which still fits: t = -2.
                 value("QuotientOfTheSmallestInteger", {{-4, -1, 3}, {10, 40, 80}}, -6442450946.0, 30),
                 // -6442450947.5 / 3 is -2147483649.17: t = -3.5, where an exact quotient would give -0.5.
                 value("QuotientBelow32Bits", {{-4, -1, 3}, {10, 40, 80}}, -6442450947.5, 15));

// ---- reading of the records by overload

/// Keys at 1, 2 and 3 with this many values each, all of them 5.
Animation withValues(unsigned size, const char* words)
{
    return load({{1, 2, 3}, Numbers(3 * size, 5.0), words});
}

struct KeySizeCase : Row {
    unsigned size;
    bool scalarReads;
    bool vectorReads;
    bool matrixReads;
};

class AnimationKeySizeTest : public testing::TestWithParam<KeySizeCase> {
public:
    static void expectAt(Animation& animation, double time)
    {
        EXPECT_EQ(GetParam().scalarReads ? 5.0 : 99.0, animation.applyAnimation(99.0, time));
        const Vector3 vector = animation.applyAnimation(staticVector(), time);
        const Matrix4 matrix = animation.applyAnimation(staticMatrix(), time);
        if (GetParam().vectorReads) {
            EXPECT_EQ(5.0f, vector[0]);
            EXPECT_EQ(5.0f, vector[1]);
            EXPECT_EQ(5.0f, vector[2]);
        } else {
            expectStatic<3>(vector);
        }
        if (GetParam().matrixReads) {
            for (unsigned i = 0; i < 16; ++i) {
                EXPECT_EQ(5.0f, matrix[i]);
            }
        } else {
            expectStatic<16>(matrix);
        }
    }
};

TEST_P(AnimationKeySizeTest, DecidesAtAnExactHit)
{
    Animation animation = withValues(GetParam().size, "LINEAR LINEAR LINEAR");
    expectAt(animation, 1.0);
    expectAt(animation, 2.0);
}

TEST_P(AnimationKeySizeTest, DecidesOnAStep)
{
    Animation animation = withValues(GetParam().size, "STEP STEP STEP");
    expectAt(animation, 1.5);
    expectAt(animation, 2.5);
}

INSTANTIATE_ROWS(Sizes, AnimationKeySizeTest, {"None", 0, false, false, false}, {"One", 1, true, false, false},
                 {"Two", 2, true, false, false}, {"Three", 3, true, true, false}, {"Four", 4, true, false, false},
                 {"Fifteen", 15, true, false, false}, {"Sixteen", 16, true, false, true},
                 {"Seventeen", 17, true, false, false});

TEST(AnimationOverloadTest, MatrixKeyFillsTheResultInFlatRowMajorOrder)
{
    Numbers values;
    for (int i = 0; i < 32; ++i) {
        values.push_back(i);
    }
    Animation animation = load({{1, 2}, values});
    Matrix4 result = animation.applyAnimation(staticMatrix(), 1.0);
    for (unsigned i = 0; i < 16; ++i) {
        EXPECT_EQ(static_cast<float>(i), result[i]);
    }
    EXPECT_EQ(7.0f, result(1, 3));
    EXPECT_EQ(13.0f, result(3, 1));
    result = animation.applyAnimation(staticMatrix(), 1.5);
    for (unsigned i = 0; i < 16; ++i) {
        EXPECT_EQ(static_cast<float>(i) + 8.0f, result[i]);
    }
}

TEST(AnimationOverloadTest, ScalarReadsTheFirstOfManyValues)
{
    Animation animation = load({{1, 2}, {10, 1000, 20, 2000}});
    EXPECT_EQ(10.0, animation.applyAnimation(99.0, 1.0));
    EXPECT_EQ(15.0, animation.applyAnimation(99.0, 1.5));
}

TEST(AnimationOverloadTest, InterpolationTakesTheFirstOfTooManyValues)
{
    Animation animation = load({{1, 2}, {10, 20, 30, 40, 50, 60, 70, 80}});
    const Vector3 result = animation.applyAnimation(staticVector(), 1.5);
    EXPECT_EQ(30.0f, result[0]);
    EXPECT_EQ(40.0f, result[1]);
    EXPECT_EQ(50.0f, result[2]);
}

TEST(AnimationOverloadTest, ScalarKeepsAllDigitsAndTheOthersNarrow)
{
    Animation scalar = load({{1, 2}, {0.1, 0.1}});
    EXPECT_EQ(0.1, scalar.applyAnimation(99.0, 1.0));
    EXPECT_EQ(0.1, scalar.applyAnimation(99.0, 1.5));
    Animation vector = load({{1, 2}, Numbers(6, 0.1)});
    EXPECT_EQ(0.1f, vector.applyAnimation(staticVector(), 1.0)[2]);
    EXPECT_EQ(0.1f, vector.applyAnimation(staticVector(), 1.5)[2]);
    Animation matrix = load({{1, 2}, Numbers(32, 0.1)});
    EXPECT_EQ(0.1f, matrix.applyAnimation(staticMatrix(), 1.0)[15]);
    EXPECT_EQ(0.1f, matrix.applyAnimation(staticMatrix(), 1.5)[15]);
}

TEST(AnimationOverloadTest, VectorIsInterpolatedInDoubleAndNarrowedOnce)
{
    // 2^24 + 1 is not a float. If it were rounded first, the result would be 8388608.5, which rounds to 8388608.
    Animation animation = load({{1, 2}, {16777217, 0, 0, 1, 0, 0}});
    EXPECT_EQ(8388609.0f, animation.applyAnimation(staticVector(), 1.5)[0]);
}

TEST(AnimationOverloadTest, InterpolationOfTooFewValuesThrows)
{
    Animation none = load({{1, 2}, {}});
    expectIndexOutOfBounds(-1, 0, [&] { none.applyAnimation(99.0, 1.5); });
    expectIndexOutOfBounds(-1, 0, [&] { none.applyAnimation(staticVector(), 1.5); });
    expectIndexOutOfBounds(-1, 0, [&] { none.applyAnimation(staticMatrix(), 1.5); });
    Animation one = load({{1, 2}, {5, 6}});
    expectIndexOutOfBounds(0, 1, [&] { one.applyAnimation(staticVector(), 1.5); });
    expectIndexOutOfBounds(0, 1, [&] { one.applyAnimation(staticMatrix(), 1.5); });
    Animation two = load({{1, 2}, {5, 6, 7, 8}});
    expectIndexOutOfBounds(1, 2, [&] { two.applyAnimation(staticVector(), 1.5); });
    EXPECT_EQ(99.0f, two.applyAnimation(staticVector(), 1.0)[0]);
    Animation fifteen = load({{1, 2}, Numbers(30, 5.0)});
    expectIndexOutOfBounds(14, 15, [&] { fifteen.applyAnimation(staticMatrix(), 1.5); });
}

TEST(AnimationOverloadTest, TooFewValuesInTheLaterKeyThrowAsWell)
{
    const auto withOutputs = [](const std::string& outputs, const std::string& inputs) {
        ColladaBuilder builder("<library_animations><animation>" + floatInput("INPUT", {1, 2}, 2) + outputs +
                               "<sampler id='sampler'><input semantic='INPUT' source='#INPUT'/>" + inputs +
                               "</sampler><channel source='#sampler' target='node/move'/></animation>"
                               "</library_animations>");
        const domCOLLADA* const root = builder.open();
        return Animation(root->getLibrary_animations_array()[0]->getAnimation_array()[0], builder.dae());
    };
    // One value for each key, and two more for the first.
    Animation animation = withOutputs(floatInput("all", {5, 5}, 2) + floatInput("first", {5, 5}, 1),
                                      "<input semantic='OUTPUT' source='#all'/><input semantic='OUTPUT' "
                                      "source='#first'/>");
    expectIndexOutOfBounds(0, 1, [&] { animation.applyAnimation(staticVector(), 1.5); });
    EXPECT_EQ(5.0, animation.applyAnimation(99.0, 1.5));
    Animation bare = withOutputs(floatInput("first", {5, 5, 5}, 1), "<input semantic='OUTPUT' source='#first'/>");
    expectIndexOutOfBounds(-1, 0, [&] { bare.applyAnimation(99.0, 1.5); });
}

TEST(AnimationOverloadTest, BezierWithoutTangentsThrowsBetweenKeys)
{
    Animation scalar = loadSpread(usual("BEZIER BEZIER BEZIER"), 1);
    expectIndexOutOfBounds(-1, 1, [&] { scalar.applyAnimation(99.0, 1.5); });
    Animation vector = loadSpread(usual("BEZIER BEZIER BEZIER"), 3);
    expectIndexOutOfBounds(-1, 1, [&] { vector.applyAnimation(staticVector(), 1.5); });
    Animation matrix = loadSpread(usual("BEZIER BEZIER BEZIER"), 16);
    expectIndexOutOfBounds(-1, 1, [&] { matrix.applyAnimation(staticMatrix(), 1.5); });
}

TEST(AnimationOverloadTest, BezierNeedsBothTangents)
{
    const Numbers pairs = {0, 1, 0, 2};
    Animation onlyIn = load({{1, 2}, {0, 8}, "BEZIER BEZIER", pairs, {}});
    expectIndexOutOfBounds(-1, 1, [&] { onlyIn.applyAnimation(99.0, 1.5); });
    Animation onlyOut = load({{1, 2}, {0, 8}, "BEZIER BEZIER", {}, pairs});
    expectIndexOutOfBounds(-1, 1, [&] { onlyOut.applyAnimation(99.0, 1.5); });
    // One number for each key is no pair.
    Animation noPairs = load({{1, 2}, {0, 8}, "BEZIER BEZIER", {1, 2}, {1, 2}});
    expectIndexOutOfBounds(0, 1, [&] { noPairs.applyAnimation(99.0, 1.5); });
}

TEST(AnimationOverloadTest, InTangentIsReadBeforeTheOutTangent)
{
    Animation empty = load({{1, 2}, {0, 8}, "BEZIER BEZIER", {}, {1, 2}});
    expectIndexOutOfBounds(-1, 1, [&] { empty.applyAnimation(99.0, 1.5); });
    Animation single = load({{1, 2}, {0, 8}, "BEZIER BEZIER", {1, 2}, {}});
    expectIndexOutOfBounds(0, 1, [&] { single.applyAnimation(99.0, 1.5); });
}

TEST(AnimationOverloadTest, BezierOfAVectorNeedsAPairForEachComponent)
{
    const Numbers onePair = {0, 1, 0, 2};
    Animation vector = load({{1, 2}, Numbers(6, 5.0), "BEZIER BEZIER", onePair, onePair});
    expectIndexOutOfBounds(1, 3, [&] { vector.applyAnimation(staticVector(), 1.5); });
    const Numbers fifteenPairs(60, 1.0);
    Animation matrix = load({{1, 2}, Numbers(32, 5.0), "BEZIER BEZIER", fifteenPairs, fifteenPairs});
    expectIndexOutOfBounds(29, 31, [&] { matrix.applyAnimation(staticMatrix(), 1.5); });
}

TEST(AnimationOverloadTest, UnevaluatedKindDoesNotLookAtValues)
{
    for (const char* words : {"HERMITE HERMITE", "CARDINAL CARDINAL", "BSPLINE BSPLINE"}) {
        Animation animation = load({{1, 2}, {}, words});
        EXPECT_EQ(99.0, animation.applyAnimation(99.0, 1.5)) << words;
        expectStatic<3>(animation.applyAnimation(staticVector(), 1.5));
        expectStatic<16>(animation.applyAnimation(staticMatrix(), 1.5));
    }
}

TEST(AnimationOverloadTest, NumberOutsideTheKindsGivesZerosAndAScalarInput)
{
    for (const int kind : {6, 7, 255}) {
        for (const unsigned size : {0u, 1u, 3u, 16u}) {
            Animation animation = load({{1, 2}, Numbers(2 * size, 5.0)});
            setFirstKind(animation, static_cast<unsigned char>(kind));
            EXPECT_EQ(99.0, animation.applyAnimation(99.0, 1.5));
            const Vector3 vector = animation.applyAnimation(staticVector(), 1.5);
            for (unsigned i = 0; i < 3; ++i) {
                EXPECT_EQ(0.0f, vector[i]);
            }
            const Matrix4 matrix = animation.applyAnimation(staticMatrix(), 1.5);
            for (unsigned i = 0; i < 16; ++i) {
                EXPECT_EQ(0.0f, matrix[i]);
            }
        }
    }
}

TEST(AnimationOverloadTest, NumberOutsideTheKindsStillHasItsKey)
{
    Animation animation = load({{1, 2}, Numbers(6, 5.0)});
    setFirstKind(animation, 6);
    EXPECT_EQ(5.0, animation.applyAnimation(99.0, 1.0));
    EXPECT_EQ(5.0f, animation.applyAnimation(staticVector(), 1.0)[2]);
    expectStatic<16>(animation.applyAnimation(staticMatrix(), 1.0));
}

// ---- the private steps

Animation ofLength(double length)
{
    Animation animation = load({{}, {}});
    lengthField(animation) = length;
    return animation;
}

double modulus(double length, double time)
{
    Animation animation = ofLength(length);
    return modulusTime(animation, time);
}

struct ModulusCase : Row {
    double length;
    double time;
    double expected;
};

class AnimationModulusTest : public testing::TestWithParam<ModulusCase> {};

TEST_P(AnimationModulusTest, WrapsByATruncatedQuotient)
{
    const double result = modulus(GetParam().length, GetParam().time);
    if (std::isnan(GetParam().expected)) {
        EXPECT_TRUE(std::isnan(result)) << result;
    } else {
        EXPECT_EQ(GetParam().expected, result);
    }
}

// A quotient that does not fit into 32 bits is converted to -2147483648.
INSTANTIATE_ROWS(Times, AnimationModulusTest, {"Zero", 3, 0, 0}, {"Inside", 3, 2.5, 2.5}, {"Length", 3, 3, 0},
                 {"OneRound", 3, 3.5, 0.5}, {"ManyRounds", 3, 3001, 1}, {"NegativeKeepsItsSign", 3, -1, -1},
                 {"NegativeRound", 3, -4, -1}, {"NegativeLengthOfTime", 3, -3, 0}, {"LengthZero", 0, 7.5, 7.5},
                 {"LengthNegativeZero", -0.0, 7.5, 7.5}, {"LengthNegative", -3, 7.5, 7.5},
                 {"LengthNegativeAndTimeNegative", -3, -7.5, -7.5}, {"LengthNotANumber", notANumber, 7.5, 7.5},
                 {"LengthMinusInfinity", -infinity, 7.5, 7.5}, {"LengthInfinity", infinity, 7.5, notANumber},
                 {"FractionalLength", 0.25, 1.125, 0.125}, {"LargestQuotient", 1, 2147483647.5, 0.5},
                 {"QuotientAboveTheLargest", 1, 2147483648.0, 4294967296.0},
                 {"QuotientAboveTheLargestWithAFraction", 1, 2147483648.5, 4294967296.5},
                 {"SmallestQuotient", 1, -2147483648.0, 0}, {"QuotientAboveTheSmallest", 1, -2147483647.5, -0.5},
                 {"SmallestQuotientWithAFraction", 1, -2147483648.5, -0.5},
                 {"QuotientBelowTheSmallest", 1, -2147483649.0, -1},
                 {"QuotientFarBelowTheSmallest", 1, -3000000000.0, -852516352.0},
                 {"QuotientAboveUnsigned32Bits", 1, 4294967301.0, 6442450949.0},
                 {"QuotientAboveWithALength", 3, 9e9, 15442450944.0}, {"TinyLength", 1e-10, 1.0, 1.2147483648},
                 {"TimeInfinity", 3, infinity, infinity}, {"TimeMinusInfinity", 3, -infinity, -infinity},
                 {"TimeNotANumber", 3, notANumber, notANumber}, {"TimeInfinityWithoutLength", 0, infinity, infinity});

constexpr unsigned untouched = 77;

struct SearchResult {
    bool isFound = false;
    unsigned first = untouched;
    unsigned second = untouched;

    bool operator==(const SearchResult& other) const
    {
        return isFound == other.isFound && first == other.first && second == other.second;
    }
};

std::ostream& operator<<(std::ostream& out, const SearchResult& result)
{
    return out << (result.isFound ? "true " : "false ") << result.first << ' ' << result.second;
}

SearchResult search(Animation& animation, double seconds)
{
    SearchResult result;
    result.isFound = indices(animation, seconds, &result.first, &result.second);
    return result;
}

/// The linear search that every search has to agree with.
SearchResult walk(const Numbers& times, double seconds)
{
    SearchResult result;
    result.first = 0;
    unsigned k = 0;
    while (k < times.size() && seconds > times[k]) {
        ++k;
    }
    if (k == times.size()) {
        return result;
    }
    if (seconds == times[k]) {
        result.first = k;
        result.second = k;
        result.isFound = true;
    } else if (k > 0) {
        result.first = k - 1;
        result.second = k;
        result.isFound = true;
    }
    return result;
}

TEST(AnimationSearchTest, FindsTheTwoRecordsAroundATime)
{
    Animation animation = load(linear());
    EXPECT_EQ((SearchResult{false, 0, untouched}), search(animation, 0.5));
    EXPECT_EQ((SearchResult{true, 0, 0}), search(animation, 1));
    EXPECT_EQ((SearchResult{true, 0, 1}), search(animation, 1.5));
    EXPECT_EQ((SearchResult{true, 1, 1}), search(animation, 2));
    EXPECT_EQ((SearchResult{true, 1, 2}), search(animation, 2.5));
    EXPECT_EQ((SearchResult{true, 2, 2}), search(animation, 3));
    EXPECT_EQ((SearchResult{false, 0, untouched}), search(animation, 3.5));
    EXPECT_EQ((SearchResult{false, 0, untouched}), search(animation, notANumber));
    EXPECT_EQ((SearchResult{false, 0, untouched}), search(animation, infinity));
    EXPECT_EQ((SearchResult{false, 0, untouched}), search(animation, -infinity));
}

TEST(AnimationSearchTest, FindsNothingAmongNoRecords)
{
    Animation animation = load({{}, {}});
    EXPECT_EQ((SearchResult{false, 0, untouched}), search(animation, 0));
    EXPECT_EQ((SearchResult{false, 0, untouched}), search(animation, notANumber));
}

TEST(AnimationSearchTest, StopsAtTheFirstOfEqualTimes)
{
    Animation animation = load({{1, 2, 2, 2, 3}, {}});
    EXPECT_EQ((SearchResult{true, 1, 1}), search(animation, 2));
    EXPECT_EQ((SearchResult{true, 0, 1}), search(animation, 1.5));
    EXPECT_EQ((SearchResult{true, 3, 4}), search(animation, 2.5));
}

TEST(AnimationSearchTest, PositiveAndNegativeZeroAreEqual)
{
    Animation animation = load({{-1, -0.0, 1}, {}});
    EXPECT_EQ((SearchResult{true, 1, 1}), search(animation, 0.0));
    EXPECT_EQ((SearchResult{true, 1, 1}), search(animation, -0.0));
}

/// One animation, whose times are replaced in the open document and then read again.
class TimesDocument {
public:
    TimesDocument()
        : m_builder("<library_animations><animation>" + floatInput("INPUT", {0}, 1) + floatInput("OUTPUT", {0}, 1) +
                    "<sampler id='sampler'><input semantic='INPUT' source='#INPUT'/>"
                    "<input semantic='OUTPUT' source='#OUTPUT'/></sampler>"
                    "<channel source='#sampler' target='node/move'/></animation></library_animations>"),
          m_element(m_builder.open()->getLibrary_animations_array()[0]->getAnimation_array()[0]),
          m_animation(m_element, m_builder.dae())
    {}

    Animation& read(const Numbers& times, const Numbers& values = Numbers())
    {
        set("INPUT", times);
        set("OUTPUT", values);
        EXPECT_TRUE(m_animation.createFromCollada(m_element, m_builder.dae()));
        EXPECT_EQ(times.size(), m_animation.getCount());
        return m_animation;
    }

private:
    void set(const std::string& id, const Numbers& numbers)
    {
        domFloat_array& array = *m_builder.element<domFloat_array>((id + "-array").c_str());
        domListOfFloats list;
        for (const double number : numbers) {
            list.append(number);
        }
        array.setValue(list);
        array.setCount(numbers.size());
        m_builder.element<domSource>(id.c_str())->getTechnique_common()->getAccessor()->setCount(numbers.size());
    }

    ColladaBuilder m_builder;
    domAnimationRef m_element;
    Animation m_animation;
};

using Generator = std::mt19937; // gives the same numbers everywhere

double anyTime(Generator& generator)
{
    switch (generator() % 16) {
    case 0:
        return notANumber;
    case 1:
        return infinity;
    case 2:
        return -infinity;
    case 3:
        return (static_cast<double>(generator()) - 2147483648.0) * 1e300;
    default:
        return static_cast<double>(generator() % 17) * 0.5 - 4.0; // a small grid, so that many are equal
    }
}

Numbers anyTimes(Generator& generator)
{
    Numbers times;
    const unsigned size = static_cast<unsigned>(generator() % 24);
    const unsigned kind = static_cast<unsigned>(generator() % 4);
    double time = static_cast<double>(generator() % 9) * 0.5 - 4.0;
    for (unsigned i = 0; i < size; ++i) {
        if (kind == 0) { // any order
            times.push_back(anyTime(generator));
            continue;
        }
        // mostly ascending with equal neighbours; kind 2 has descending stretches, kind 3 single outliers
        const double stride = static_cast<double>(generator() % 3) * 0.5;
        time += kind == 2 && i / 4 % 2 == 1 ? -stride : stride;
        times.push_back(kind == 3 && generator() % 8 == 0 ? anyTime(generator) : time);
    }
    return times;
}

TEST(AnimationSearchTest, AgreesWithAWalkWhateverTheTimes)
{
    TimesDocument document;
    Generator generator(20260101);
    unsigned found = 0;
    unsigned hits = 0;
    for (unsigned round = 0; round < 4000; ++round) {
        const Numbers times = anyTimes(generator);
        Animation& animation = document.read(times);
        Numbers questions = {notANumber, infinity, -infinity, 0.0};
        questions.insert(questions.end(), times.begin(), times.end());
        for (int i = -20; i <= 20; ++i) {
            questions.push_back(i * 0.25);
        }
        for (unsigned i = 0; i < 4; ++i) {
            questions.push_back(anyTime(generator));
        }
        for (const double seconds : questions) {
            const SearchResult expected = walk(times, seconds);
            found += expected.isFound ? 1 : 0;
            hits += expected.isFound && expected.first == expected.second ? 1 : 0;
            ASSERT_EQ(expected, search(animation, seconds))
                << "round " << round << ", seconds " << seconds << ", times " << textOf(times);
        }
    }
    // Both outcomes occur often enough.
    EXPECT_GT(found, 50000u);
    EXPECT_GT(hits, 20000u);
    EXPECT_GT(found - hits, 20000u);
}

TEST(AnimationSearchTest, CopiesAgreeWithAWalkAsTheirSourceDid)
{
    TimesDocument document;
    const Numbers before = {3, 1, 2, 2, 5};
    const Numbers after = {1, 2, 3, 4, 5};
    const Animation copy(document.read(before));
    Animation assigned(document.read(after));
    assigned = copy;
    Animation constructed(copy);
    for (int i = 0; i <= 24; ++i) {
        const double seconds = i * 0.25;
        EXPECT_EQ(walk(before, seconds), search(constructed, seconds)) << seconds;
        EXPECT_EQ(walk(before, seconds), search(assigned, seconds)) << seconds;
    }
}

TEST(AnimationSearchTest, RecordsOfAFailedLoadAreSearchedAlike)
{
    // The second input fails after the times.
    ColladaBuilder builder("<library_animations><animation>" + floatInput("INPUT", {1, 2, 3}, 3) +
                           "<sampler id='sampler'><input semantic='INPUT' source='#INPUT'/>"
                           "<input semantic='OUTPUT' source='#nothing'/></sampler>"
                           "<channel source='#sampler' target='node/move'/></animation></library_animations>");
    const domAnimationRef element = builder.open()->getLibrary_animations_array()[0]->getAnimation_array()[0];
    Animation animation(element, builder.dae());
    ASSERT_EQ(3u, animation.getCount());
    ASSERT_EQ("", std::string(animation.getTargetNode().data()));
    EXPECT_EQ((SearchResult{true, 0, 1}), search(animation, 1.5));
    EXPECT_EQ((SearchResult{true, 2, 2}), search(animation, 3));
    EXPECT_EQ((SearchResult{false, 0, untouched}), search(animation, 4));
}

TEST(AnimationSearchTest, RecordsOfAThrowingLoadAreSearchedAlike)
{
    // The second input of times has no number for a record, so the load throws.
    ColladaBuilder builder("<library_animations><animation>" + floatInput("INPUT", {1, 2, 3}, 3) +
                           "<source id='bad'><float_array id='bad-array' count='1'>1</float_array><technique_common>"
                           "<accessor source='#bad-array' count='3' stride='0'/></technique_common></source>"
                           "<sampler id='sampler'><input semantic='INPUT' source='#INPUT'/>"
                           "<input semantic='INPUT' source='#bad'/></sampler>"
                           "<channel source='#sampler' target='node/move'/></animation></library_animations>");
    const domAnimationRef element = builder.open()->getLibrary_animations_array()[0]->getAnimation_array()[0];
    Animation animation = load({{5, 6, 7}, {}});
    EXPECT_THROW(animation.createFromCollada(element, builder.dae()), vesk::IndexOutOfBounds);
    ASSERT_EQ(3u, animation.getCount());
    EXPECT_EQ((SearchResult{true, 0, 1}), search(animation, 1.5));
    EXPECT_EQ((SearchResult{true, 2, 2}), search(animation, 3));
    EXPECT_EQ((SearchResult{false, 0, untouched}), search(animation, 4));
}

TEST(AnimationSearchTest, HundredThousandKeysAnswerLikeAWalk)
{
    constexpr unsigned count = 100000;
    Numbers times;
    Numbers values;
    for (unsigned i = 0; i < count; ++i) {
        // Ascending in steps of an eighth; every seventh time equals the previous one, and every thousandth is far
        // smaller.
        times.push_back(i % 1000 == 999 ? 1.0 : (i % 7 == 6 ? i - 1 : i) * 0.125 + 1.0);
        values.push_back(i % 2 == 0 ? 1.0 * i : -1.0 * i);
    }
    times.back() = 12501.0;
    TimesDocument document;
    Animation& animation = document.read(times, values);
    ASSERT_EQ(12501.0, animation.animationLength());
    for (unsigned i = 0; i < count; i += 397) {
        for (const double seconds : {times[i], times[i] + 0.03125, times[i] - 0.0625}) {
            const SearchResult expected = walk(times, seconds);
            ASSERT_EQ(expected, search(animation, seconds)) << seconds;
            if (!expected.isFound) {
                ASSERT_EQ(0.5, animation.applyAnimation(0.5, seconds)) << seconds;
                continue;
            }
            const unsigned p = expected.first;
            const unsigned k = expected.second;
            const double value =
                p == k ? values[p] : (values[k] - values[p]) * (seconds - times[p]) / (times[k] - times[p]) + values[p];
            ASSERT_EQ(value, animation.applyAnimation(0.5, seconds)) << seconds;
        }
    }
    EXPECT_EQ((SearchResult{false, 0, untouched}), search(animation, 12501.5));
    EXPECT_EQ(0.5, animation.applyAnimation(0.5, 12501.0));
}

double straight(double value0, double value1, double time0, double time1, double time)
{
    Animation animation = load({{}, {}});
    return linearBy(animation, value0, value1, time0, time1, time);
}

TEST(AnimationInterpolationTest, LinearGoesStraight)
{
    EXPECT_EQ(15.0, straight(10, 20, 1, 2, 1.5));
    EXPECT_EQ(10.0, straight(10, 20, 1, 2, 1));
    EXPECT_EQ(20.0, straight(10, 20, 1, 2, 2));
    EXPECT_EQ(30.0, straight(10, 20, 1, 2, 3)); // also beyond its span
    EXPECT_EQ(-2.5, straight(5, -5, 0, 8, 6));
}

TEST(AnimationInterpolationTest, LinearMultipliesBeforeItDivides)
{
    EXPECT_EQ(infinity, straight(0, 1e308, 0, 100, 10)); // the product alone overflows
}

TEST(AnimationInterpolationTest, LinearOverNoSpanGivesWhatTheDivisionGives)
{
    EXPECT_EQ(infinity, straight(0, 10, 2, 2, 3));
    EXPECT_EQ(-infinity, straight(0, 10, 2, 2, 1));
    EXPECT_TRUE(std::isnan(straight(0, 10, 2, 2, 2)));
    EXPECT_TRUE(std::isnan(straight(5, 5, 2, 2, 3)));
}

double curved(double value0, double value1, double time0, double time1, double time, double in, double out)
{
    Animation animation = load({{}, {}});
    return bezierBy(animation, value0, value1, time0, time1, time, in, out);
}

TEST(AnimationInterpolationTest, BezierAddsItsFourTerms)
{
    EXPECT_EQ(4.0, curved(0, 8, 0, 1, 0.5, 6, 2));
    EXPECT_EQ(4.0, curved(0, 8, 10, 14, 12, 6, 2)); // time counts by its share of the span
    EXPECT_EQ(3.5, curved(4, 8, 1, 3, 1.5, 6, 2));
}

TEST(AnimationInterpolationTest, BezierWeighsEachArgumentByItsOwnPolynomial)
{
    // s = 1/4, r = 3/4
    EXPECT_EQ(0.421875, curved(1, 0, 0, 4, 1, 0, 0)); // r·r·r
    EXPECT_EQ(0.015625, curved(0, 1, 0, 4, 1, 0, 0)); // s·s·s
    EXPECT_EQ(0.140625, curved(0, 0, 0, 4, 1, 1, 0)); // 3·s·s·r
    EXPECT_EQ(0.421875, curved(0, 0, 0, 4, 1, 0, 1)); // 3·s·r·r
    // s = 3/4, r = 1/4
    EXPECT_EQ(0.421875, curved(0, 0, 0, 4, 3, 1, 0));
    EXPECT_EQ(0.140625, curved(0, 0, 0, 4, 3, 0, 1));
}

TEST(AnimationInterpolationTest, BezierStartsAndEndsAtItsKeys)
{
    EXPECT_EQ(3.0, curved(3, 8, 1, 2, 1, 100, 200));
    EXPECT_EQ(8.0, curved(3, 8, 1, 2, 2, 100, 200));
}

TEST(AnimationInterpolationTest, BezierAddsTheMiddleTermsFirst)
{
    // At s = 1/2 the terms are 3·2^52, 0.75 and 0.75, where doubles are 2 apart, so only the sum of the small terms
    // counts.
    EXPECT_EQ(13510798882111490.0, curved(6, 0, 0, 1, 0.5, 36028797018963968.0, 2));
}

TEST(AnimationInterpolationTest, BezierOverNoSpanIsNoNumber)
{
    EXPECT_TRUE(std::isnan(curved(1, 2, 3, 3, 3, 4, 5)));
}

// ---- no state

void expectSame(const Animation& a, const Animation& b)
{
    EXPECT_EQ(a.animationLength(), b.animationLength());
    EXPECT_TRUE(a.getTargetNode() == b.getTargetNode());
    EXPECT_TRUE(a.getTargetTransform() == b.getTargetTransform());
    const auto numbers = [](const vesk::Array<double>& array) { return Numbers(array.begin(), array.end()); };
    ASSERT_EQ(Animation(a).getCount(), Animation(b).getCount());
    for (unsigned i = 0; i < Animation(a).getCount(); ++i) {
        const Evolution left = a.evolution(i);
        const Evolution right = b.evolution(i);
        EXPECT_EQ(left.time, right.time);
        EXPECT_EQ(left.interpolation, right.interpolation);
        EXPECT_EQ(numbers(left.values), numbers(right.values));
        EXPECT_EQ(numbers(left.inTangent), numbers(right.inTangent));
        EXPECT_EQ(numbers(left.outTangent), numbers(right.outTangent));
    }
}

CurveText mixedCurve()
{
    return {
        {1, 2, 3, 4, 5}, {10, 20, 40, 80, 160}, "LINEAR BEZIER STEP HERMITE LINEAR", {1, 2, 3, 4, 5}, {6, 7, 8, 9, 10}};
}

TEST(AnimationStateTest, EvaluationChangesNothing)
{
    Animation animation = loadSpread(mixedCurve(), 16);
    const Animation before(animation);
    const Matrix4 matrix = staticMatrix();
    for (int i = -10; i < 100; ++i) {
        animation.applyAnimation(matrix, i * 0.25);
        animation.applyAnimation(99.0, i * 0.25);
        animation.applyAnimation(staticVector(), i * 0.25);
    }
    expectSame(before, animation);
    expectStatic<16>(matrix);
}

TEST(AnimationStateTest, FailedEvaluationChangesNothing)
{
    Animation animation = loadSpread(mixedCurve(), 1);
    const Animation before(animation);
    EXPECT_THROW(animation.applyAnimation(staticVector(), 1.5), vesk::IndexOutOfBounds);
    EXPECT_THROW(animation.applyAnimation(staticMatrix(), 2.5), vesk::IndexOutOfBounds);
    expectSame(before, animation);
    EXPECT_EQ(15.0, animation.applyAnimation(99.0, 1.5));
}

TEST(AnimationStateTest, OrderOfQuestionsPlaysNoPart)
{
    Animation animation = loadSpread(usual("LINEAR LINEAR LINEAR"), 1);
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(30.0, animation.applyAnimation(99.0, 2.5));
        EXPECT_EQ(15.0, animation.applyAnimation(99.0, 1.5));
        EXPECT_EQ(99.0, animation.applyAnimation(99.0, 0.5));
        EXPECT_EQ(7.0, animation.applyAnimation(7.0, 0.0));
    }
}

TEST(AnimationStateTest, EvaluationAllocatesNothingAndLogsNothing)
{
    Animation animation = loadSpread(mixedCurve(), 16);
    const Matrix4 matrix = staticMatrix();
    const Vector3 vector = staticVector();
    LogCapture log;
    long requests = 0;
    long control = 0;
    {
        const FailingAllocator allocator(-1);
        for (int i = -10; i < 100; ++i) {
            animation.applyAnimation(99.0, i * 0.25);
            animation.applyAnimation(vector, i * 0.25);
            animation.applyAnimation(matrix, i * 0.25);
        }
        animation.applyAnimation(matrix, notANumber);
        animation.applyAnimation(vector, 1e300);
        requests = allocator.requests();
        const vesk::Array<double> array(1);
        control = allocator.requests();
    }
    EXPECT_EQ(0, requests);
    EXPECT_EQ(1, control);
    EXPECT_EQ("", log.text());
}

static_assert(std::is_same_v<double, decltype(std::declval<Animation&>().applyAnimation(1.0, 1.0))>);
static_assert(std::is_same_v<Vector3, decltype(std::declval<Animation&>().applyAnimation(Vector3(), 1.0))>);
static_assert(std::is_same_v<Matrix4, decltype(std::declval<Animation&>().applyAnimation(Matrix4(), 1.0))>);

std::string textOf(const Numbers& numbers)
{
    std::ostringstream text;
    text << std::setprecision(17);
    for (const double number : numbers) {
        if (std::isnan(number)) {
            text << "NaN ";
        } else if (std::isinf(number)) {
            text << (number > 0 ? "INF " : "-INF ");
        } else {
            text << number << ' ';
        }
    }
    return text.str();
}

Animation load(const CurveText& curve)
{
    const std::size_t count = curve.times.size();
    std::string sources = floatInput("INPUT", curve.times, count);
    std::string inputs = "<input semantic='INPUT' source='#INPUT'/>";
    const auto add = [&](const char* semantic, const Numbers& numbers) {
        if (!numbers.empty()) {
            sources += floatInput(semantic, numbers, count);
            inputs += std::string("<input semantic='") + semantic + "' source='#" + semantic + "'/>";
        }
    };
    add("OUTPUT", curve.values);
    add("IN_TANGENT", curve.inTangents);
    add("OUT_TANGENT", curve.outTangents);
    if (!curve.words.empty()) {
        sources += "<source id='kind'><Name_array id='words' count='" + std::to_string(count) + "'>" + curve.words +
                   "</Name_array><technique_common><accessor source='#words' count='" + std::to_string(count) +
                   "'/></technique_common></source>";
        inputs += "<input semantic='INTERPOLATION' source='#kind'/>";
    }
    ColladaBuilder builder(
        "<library_animations><animation>" + sources + "<sampler id='sampler'>" + inputs +
        "</sampler><channel source='#sampler' target='node/move'/></animation></library_animations>");
    const domAnimationRef element = builder.open()->getLibrary_animations_array()[0]->getAnimation_array()[0];
    LogCapture log;
    Animation animation(element, builder.dae());
    EXPECT_EQ("", log.text());
    EXPECT_EQ(count, animation.getCount());
    return animation;
}

/// Component `c` of a curve is the scalar curve times c + 1, so that components differ.
Numbers spread(const Numbers& scalars, unsigned size)
{
    Numbers all;
    for (const double number : scalars) {
        for (unsigned c = 0; c < size; ++c) {
            all.push_back(number * (c + 1));
        }
    }
    return all;
}

/// Pairs of X and Y: Y is the scalar, and X is far from any result.
Numbers spreadPairs(const Numbers& scalars, unsigned size)
{
    Numbers all;
    for (const double number : spread(scalars, size)) {
        all.push_back(-5000.0);
        all.push_back(number);
    }
    return all;
}

Animation loadSpread(const CurveText& curve, unsigned size)
{
    return load({curve.times, spread(curve.values, size), curve.words, spreadPairs(curve.inTangents, size),
                 spreadPairs(curve.outTangents, size)});
}

template <unsigned size, class Value>
void expectSpread(double scalar, const Value& result)
{
    for (unsigned c = 0; c < size; ++c) {
        const float expected = static_cast<float>(scalar * (c + 1));
        if (std::isnan(scalar)) {
            EXPECT_TRUE(std::isnan(result[c])) << "component " << c;
        } else {
            EXPECT_FLOAT_EQ(expected, result[c]) << "component " << c;
        }
    }
}

} // namespace
