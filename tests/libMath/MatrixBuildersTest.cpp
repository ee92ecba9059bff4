#include "support/MatrixValues.h"
#include "support/Rows.h"

#include <libMath/MatrixBuilders.h>

#include <cmath>
#include <string>
#include <type_traits>
#include <utility>

#include <gtest/gtest.h>

namespace {

using namespace testSupport;

using libMath::axisAngleRotationMatrix;
using libMath::lookAtTransformMatrix;

constexpr double pi = 3.141592653589793;

/// p' = M · p for a point p.
Vector3 transformed(const Matrix4& m, const Vector3& p);
void expectNearVector(const Vector3& v, float x, float y, float z);

void expectLastRowOfATransform(const Matrix4& m);

// Rotation

TEST(AxisAngleRotationMatrixTest, QuarterTurnAboutZTurnsXTowardsY)
{
    const Matrix4 m = axisAngleRotationMatrix(Vector3(0.0f, 0.0f, 1.0f), pi / 2);
    expectNearVector(transformed(m, Vector3(1.0f, 0.0f, 0.0f)), 0.0f, 1.0f, 0.0f);
    expectNearVector(transformed(m, Vector3(0.0f, 1.0f, 0.0f)), -1.0f, 0.0f, 0.0f);
    expectNearVector(transformed(m, Vector3(0.0f, 0.0f, 1.0f)), 0.0f, 0.0f, 1.0f);
}

TEST(AxisAngleRotationMatrixTest, QuarterTurnAboutXTurnsYTowardsZ)
{
    const Matrix4 m = axisAngleRotationMatrix(Vector3(1.0f, 0.0f, 0.0f), pi / 2);
    expectNear({1, 0, 0, 0, 0, 0, -1, 0, 0, 1, 0, 0, 0, 0, 0, 1}, elements(m), 1e-7f);
    expectNearVector(transformed(m, Vector3(0.0f, 1.0f, 0.0f)), 0.0f, 0.0f, 1.0f);
}

TEST(AxisAngleRotationMatrixTest, QuarterTurnAboutYTurnsZTowardsX)
{
    const Matrix4 m = axisAngleRotationMatrix(Vector3(0.0f, 1.0f, 0.0f), pi / 2);
    expectNear({0, 0, 1, 0, 0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 0, 1}, elements(m), 1e-7f);
    expectNearVector(transformed(m, Vector3(0.0f, 0.0f, 1.0f)), 1.0f, 0.0f, 0.0f);
}

TEST(AxisAngleRotationMatrixTest, NegativeAngleTurnsBack)
{
    const Matrix4 m = axisAngleRotationMatrix(Vector3(0.0f, 0.0f, 1.0f), -pi / 2);
    expectNear({0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}, elements(m), 1e-7f);
}

TEST(AxisAngleRotationMatrixTest, OppositeAxisTurnsBack)
{
    const Matrix4 m = axisAngleRotationMatrix(Vector3(0.0f, 0.0f, -2.0f), pi / 2);
    expectNear({0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}, elements(m), 1e-7f);
}

TEST(AxisAngleRotationMatrixTest, AngleIsInRadians)
{
    // cos 30° is half the root of 3, sin 30° is 1/2.
    const Matrix4 m = axisAngleRotationMatrix(Vector3(0.0f, 0.0f, 1.0f), pi / 6);
    expectNear({0.8660254f, -0.5f, 0, 0, 0.5f, 0.8660254f, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}, elements(m), 1e-7f);
}

TEST(AxisAngleRotationMatrixTest, ThirdOfATurnAboutTheSpaceDiagonalExchangesTheAxes)
{
    const Matrix4 m = axisAngleRotationMatrix(Vector3(1.0f, 1.0f, 1.0f), 2 * pi / 3);
    expectNear({0, 0, 1, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 1}, elements(m), 1e-6f);
}

TEST(AxisAngleRotationMatrixTest, AngleZeroGivesTheIdentity)
{
    // x·0·x + 1 and the like are exact.
    expectSame({1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1},
               elements(axisAngleRotationMatrix(Vector3(0.3f, -7.0f, 2.0f), 0.0)));
}

TEST(AxisAngleRotationMatrixTest, AxisOfAnyLengthIsNormalized)
{
    const Matrix4 unit = axisAngleRotationMatrix(Vector3(0.0f, 1.0f, 0.0f), 0.75);
    const Matrix4 longer = axisAngleRotationMatrix(Vector3(0.0f, 12.5f, 0.0f), 0.75);
    for (unsigned i = 0; i < 16; ++i) {
        EXPECT_EQ(unit[i], longer[i]) << "flat index " << i;
    }
    EXPECT_EQ(static_cast<float>(std::sin(0.75)), longer[2]);
}

TEST(AxisAngleRotationMatrixTest, AxisIsNotChanged)
{
    const Vector3 axis(3.0f, 4.0f, 12.0f);
    axisAngleRotationMatrix(axis, 1.0);
    EXPECT_EQ(3.0f, axis[0]);
    EXPECT_EQ(4.0f, axis[1]);
    EXPECT_EQ(12.0f, axis[2]);
}

TEST(AxisAngleRotationMatrixTest, AngleStaysDouble)
{
    // The double next to π/2 misses it by 6.123234e-17; π/2 as a float would give −4.371139e-8.
    const Matrix4 m = axisAngleRotationMatrix(Vector3(0.0f, 0.0f, 1.0f), pi / 2);
    EXPECT_FLOAT_EQ(6.123234e-17f, m[0]);
    EXPECT_FLOAT_EQ(6.123234e-17f, m[5]);
}

TEST(AxisAngleRotationMatrixTest, FourthRowAndColumnAreThoseOfTheIdentity)
{
    const Matrix4 m = axisAngleRotationMatrix(Vector3(-2.0f, 3.0f, 0.5f), 2.5);
    expectLastRowOfATransform(m);
    EXPECT_EQ(0.0f, m[3]);
    EXPECT_EQ(0.0f, m[7]);
    EXPECT_EQ(0.0f, m[11]);
}

TEST(AxisAngleRotationMatrixTest, ZeroAxisGivesNanInsideAnIntactFrame)
{
    const Matrix4 m = axisAngleRotationMatrix(Vector3(0.0f, 0.0f, 0.0f), 1.0);
    for (unsigned r = 0; r < 3; ++r) {
        for (unsigned c = 0; c < 3; ++c) {
            EXPECT_TRUE(std::isnan(m[4 * r + c])) << "row " << r << ", column " << c;
        }
        EXPECT_EQ(0.0f, m[4 * r + 3]) << "row " << r;
    }
    expectLastRowOfATransform(m);
}

struct RotationCase : Row {
    float axis[3];
    double radians;
};

class AxisAngleStepsTest : public testing::TestWithParam<RotationCase> {};

TEST_P(AxisAngleStepsTest, AxisIsNormalizedInFloatAndElementsAreMadeInDouble)
{
    const RotationCase& row = GetParam();
    const float xx = row.axis[0] * row.axis[0];
    const float yy = row.axis[1] * row.axis[1];
    const float zz = row.axis[2] * row.axis[2];
    const float xxPlusYy = xx + yy;
    const float squaredLength = xxPlusYy + zz;
    const float length = std::sqrt(squaredLength);
    const float unitX = row.axis[0] / length;
    const float unitY = row.axis[1] / length;
    const float unitZ = row.axis[2] / length;

    const double x = unitX;
    const double y = unitY;
    const double z = unitZ;
    const double c = std::cos(row.radians);
    const double s = std::sin(row.radians);
    const double t = 1.0 - c;
    const double xt = x * t;
    const double yt = y * t;
    const double zt = z * t;
    const double xtx = xt * x;
    const double xty = xt * y;
    const double xtz = xt * z;
    const double yty = yt * y;
    const double ytz = yt * z;
    const double ztz = zt * z;
    const double xs = x * s;
    const double ys = y * s;
    const double zs = z * s;

    const Elements expected = {static_cast<float>(xtx + c),
                               static_cast<float>(xty - zs),
                               static_cast<float>(xtz + ys),
                               0.0f,
                               static_cast<float>(xty + zs),
                               static_cast<float>(yty + c),
                               static_cast<float>(ytz - xs),
                               0.0f,
                               static_cast<float>(xtz - ys),
                               static_cast<float>(ytz + xs),
                               static_cast<float>(ztz + c),
                               0.0f,
                               0.0f,
                               0.0f,
                               0.0f,
                               1.0f};
    expectSame(expected,
               elements(axisAngleRotationMatrix(Vector3(row.axis[0], row.axis[1], row.axis[2]), row.radians)));
}

// With the first three, an axis normalized in double, a float angle or elements made in float show in most elements. In
// each of the others, the two terms of an element nearly cancel, so that the rest shows the order of the factors: x·t
// first, then the second component.
INSTANTIATE_ROWS(Rotations, AxisAngleStepsTest, {"MixedSigns", {-7.8f, -7.1f, 6.0f}, 9.7},
                 {"NegativeAngle", {-2.8f, 3.4f, -9.6f}, -8.1}, {"LargeNegativeAngle", {5.1f, -5.5f, -4.1f}, -9.2},
                 {"CancelsAtRow0Column0", {5.0f, 1.0f, 7.0f}, 2.0943950713059478},
                 {"CancelsAtRow0Column1", {8.0f, 3.0f, 2.0f}, 1.2627815920498833},
                 {"CancelsAtRow0Column2", {5.0f, 6.0f, 9.0f}, -2.0180984661443491},
                 {"CancelsAtRow1Column0", {4.0f, 9.0f, 1.0f}, -0.53670635853495696},
                 {"CancelsAtRow1Column1", {2.0f, 1.0f, 2.0f}, 1.6961241664111277},
                 {"CancelsAtRow1Column2", {4.0f, 7.0f, 1.0f}, 2.7172564412624749},
                 {"CancelsAtRow2Column0", {2.0f, 5.0f, 5.0f}, 2.6101343972079234},
                 {"CancelsAtRow2Column1", {6.0f, 2.0f, 3.0f}, -2.8577985318644883},
                 {"CancelsAtRow2Column2", {4.0f, 7.0f, 5.0f}, 1.9655875474809306});

// Look at

TEST(LookAtTransformMatrixTest, FromTheOriginAlongZ)
{
    const Matrix4 m =
        lookAtTransformMatrix(Vector3(0.0f, 0.0f, 0.0f), Vector3(0.0f, 0.0f, 1.0f), Vector3(0.0f, 1.0f, 0.0f));
    expectSame({-1, 0, 0, 0, 0, 1, 0, 0, 0, 0, -1, 0, 0, 0, 0, 1}, elements(m));
}

TEST(LookAtTransformMatrixTest, FromZTowardsTheOrigin)
{
    const Matrix4 m =
        lookAtTransformMatrix(Vector3(0.0f, 0.0f, 5.0f), Vector3(0.0f, 0.0f, 0.0f), Vector3(0.0f, 1.0f, 0.0f));
    expectSame({1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, -5, 0, 0, 0, 1}, elements(m));
}

TEST(LookAtTransformMatrixTest, AxesStandInColumns)
{
    const Matrix4 m =
        lookAtTransformMatrix(Vector3(5.0f, 0.0f, 0.0f), Vector3(0.0f, 0.0f, 0.0f), Vector3(0.0f, 1.0f, 0.0f));
    // f = (1, 0, 0), s = up × f = (0, 0, −1), u = f × s = (0, 1, 0)
    expectSame({0, 0, 1, 0, 0, 1, 0, 0, -1, 0, 0, -5, 0, 0, 0, 1}, elements(m));
}

TEST(LookAtTransformMatrixTest, TranslationIsTheNegatedEyeAlongEachAxis)
{
    // f = (0, 1, 0), s = (0, 0, 1) × f = (−1, 0, 0), u = f × s = (0, 0, 1)
    const Matrix4 m =
        lookAtTransformMatrix(Vector3(2.0f, 3.0f, 7.0f), Vector3(2.0f, -1.0f, 7.0f), Vector3(0.0f, 0.0f, 1.0f));
    expectSame({-1, 0, 0, 2, 0, 0, 1, -7, 0, 1, 0, -3, 0, 0, 0, 1}, elements(m));
}

TEST(LookAtTransformMatrixTest, LengthOfUpAndDistanceDoNotScaleTheAxes)
{
    const Matrix4 m =
        lookAtTransformMatrix(Vector3(0.0f, 0.0f, 80.0f), Vector3(0.0f, 0.0f, 16.0f), Vector3(0.0f, 0.25f, 0.0f));
    expectSame({1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, -80, 0, 0, 0, 1}, elements(m));
}

TEST(LookAtTransformMatrixTest, UpNeedNotBePerpendicular)
{
    const Matrix4 m =
        lookAtTransformMatrix(Vector3(0.0f, 0.0f, 5.0f), Vector3(0.0f, 0.0f, 0.0f), Vector3(0.0f, 2.0f, 9.0f));
    expectSame({1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, -5, 0, 0, 0, 1}, elements(m));
}

TEST(LookAtTransformMatrixTest, ArgumentsAreNotChanged)
{
    const Vector3 eye(1.0f, 2.0f, 3.0f);
    const Vector3 interest(4.0f, 5.0f, 7.0f);
    const Vector3 up(0.0f, 3.0f, 0.0f);
    lookAtTransformMatrix(eye, interest, up);
    for (unsigned i = 0; i < 3; ++i) {
        EXPECT_EQ(static_cast<float>(i + 1), eye[i]);
    }
    EXPECT_EQ(4.0f, interest[0]);
    EXPECT_EQ(7.0f, interest[2]);
    EXPECT_EQ(3.0f, up[1]);
}

TEST(LookAtTransformMatrixTest, TranslationFromTheOriginIsNegativeZero)
{
    // Each dot product begins with 0, so it is 0 whatever the signs of its terms, and is then negated.
    const Matrix4 m =
        lookAtTransformMatrix(Vector3(0.0f, 0.0f, 0.0f), Vector3(0.0f, 0.0f, 1.0f), Vector3(0.0f, 1.0f, 0.0f));
    for (unsigned r = 0; r < 3; ++r) {
        EXPECT_EQ(0.0f, m[4 * r + 3]) << "row " << r;
        EXPECT_TRUE(std::signbit(m[4 * r + 3])) << "row " << r;
    }
    for (unsigned i = 12; i < 15; ++i) {
        EXPECT_FALSE(std::signbit(m[i])) << "flat index " << i;
    }
}

struct Steps {
    float x;
    float y;
    float z;
};

float dotInSteps(const Steps& a, const Steps& b)
{
    const float xx = a.x * b.x;
    const float yy = a.y * b.y;
    const float zz = a.z * b.z;
    const float first = 0.0f + xx;
    const float second = first + yy;
    return second + zz;
}

Steps normalizedInSteps(const Steps& v)
{
    const float squaredLength = dotInSteps(v, v);
    const float length = std::sqrt(squaredLength);
    return {v.x / length, v.y / length, v.z / length};
}

Steps crossInSteps(const Steps& a, const Steps& b)
{
    const float yz = a.y * b.z;
    const float zy = a.z * b.y;
    const float zx = a.z * b.x;
    const float xz = a.x * b.z;
    const float xy = a.x * b.y;
    const float yx = a.y * b.x;
    return {yz - zy, zx - xz, xy - yx};
}

struct LookAtCase : Row {
    Steps eye;
    Steps interest;
    Steps up;
};

class LookAtStepsTest : public testing::TestWithParam<LookAtCase> {};

TEST_P(LookAtStepsTest, EachStepIsRoundedToFloatInItsOrder)
{
    const LookAtCase& row = GetParam();
    const Steps toEye = {row.eye.x - row.interest.x, row.eye.y - row.interest.y, row.eye.z - row.interest.z};
    const Steps f = normalizedInSteps(toEye);
    const Steps s = normalizedInSteps(crossInSteps(row.up, f));
    const Steps u = crossInSteps(f, s);

    // With these operands, dividing u or up by its length would change the result.
    ASSERT_NE(u.x, normalizedInSteps(u).x);
    ASSERT_NE(s.x, normalizedInSteps(crossInSteps(normalizedInSteps(row.up), f)).x);

    const Elements expected = {s.x, u.x, f.x, -dotInSteps(row.eye, s), s.y, u.y, f.y, -dotInSteps(row.eye, u),
                               s.z, u.z, f.z, -dotInSteps(row.eye, f), 0,   0,   0,   1};
    expectSame(expected, elements(lookAtTransformMatrix(Vector3(row.eye.x, row.eye.y, row.eye.z),
                                                        Vector3(row.interest.x, row.interest.y, row.interest.z),
                                                        Vector3(row.up.x, row.up.y, row.up.z))));
}

INSTANTIATE_ROWS(Views, LookAtStepsTest, {"Downwards", {2.9f, 3.8f, 3.9f}, {9.2f, -8.5f, 7.7f}, {0.3f, 1.1f, -0.2f}},
                 {"Sideways", {2.8f, 1.8f, -3.6f}, {3.4f, 2.8f, -6.2f}, {0.3f, 1.1f, -0.2f}},
                 {"Upwards", {-8.3f, -3.9f, 5.9f}, {9.2f, 3.4f, -2.6f}, {0.3f, 1.1f, -0.2f}},
                 {"Far", {5.6f, 2.8f, 9.6f}, {1.7f, 2.5f, -6.7f}, {0.3f, 1.1f, -0.2f}});

TEST(LookAtTransformMatrixTest, EyeAtInterestGivesNan)
{
    const Vector3 eye(1.0f, 2.0f, 3.0f);
    const Matrix4 m = lookAtTransformMatrix(eye, eye, Vector3(0.0f, 1.0f, 0.0f));
    for (unsigned i = 0; i < 12; ++i) {
        EXPECT_TRUE(std::isnan(m[i])) << "flat index " << i;
    }
    expectLastRowOfATransform(m);
}

class LookAtParallelTest : public testing::TestWithParam<Case<float>> {};

TEST_P(LookAtParallelTest, UpWithoutADirectionOfItsOwnGivesNan)
{
    // f = (0, 0, 1), and up × f is zero.
    const Matrix4 m = lookAtTransformMatrix(Vector3(2.0f, 3.0f, 5.0f), Vector3(2.0f, 3.0f, 1.0f),
                                            Vector3(0.0f, 0.0f, GetParam().given));
    for (unsigned r = 0; r < 3; ++r) {
        EXPECT_TRUE(std::isnan(m[4 * r])) << "row " << r;
        EXPECT_TRUE(std::isnan(m[4 * r + 1])) << "row " << r;
        EXPECT_EQ(r == 2 ? 1.0f : 0.0f, m[4 * r + 2]) << "row " << r;
    }
    EXPECT_TRUE(std::isnan(m[3]));
    EXPECT_TRUE(std::isnan(m[7]));
    EXPECT_EQ(-5.0f, m[11]);
    expectLastRowOfATransform(m);
}

INSTANTIATE_ROWS(Ups, LookAtParallelTest, {"Parallel", 1.0f}, {"ParallelAndLong", 40.0f}, {"Opposite", -1.0f},
                 {"Zero", 0.0f});

static_assert(std::is_same<Matrix4, decltype(axisAngleRotationMatrix(std::declval<const Vector3&>(), 0.0))>::value,
              "rotation");
static_assert(
    std::is_same<Matrix4, decltype(lookAtTransformMatrix(std::declval<const Vector3&>(), std::declval<const Vector3&>(),
                                                         std::declval<const Vector3&>()))>::value,
    "look at");

Vector3 transformed(const Matrix4& m, const Vector3& p)
{
    Vector3 result;
    for (unsigned r = 0; r < 3; ++r) {
        result[r] = m[4 * r] * p[0] + m[4 * r + 1] * p[1] + m[4 * r + 2] * p[2] + m[4 * r + 3];
    }
    return result;
}

void expectNearVector(const Vector3& v, float x, float y, float z)
{
    EXPECT_NEAR(x, v[0], 1e-6f);
    EXPECT_NEAR(y, v[1], 1e-6f);
    EXPECT_NEAR(z, v[2], 1e-6f);
}

void expectLastRowOfATransform(const Matrix4& m)
{
    EXPECT_EQ(0.0f, m[12]);
    EXPECT_EQ(0.0f, m[13]);
    EXPECT_EQ(0.0f, m[14]);
    EXPECT_EQ(1.0f, m[15]);
}

} // namespace
