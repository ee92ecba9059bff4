#include "support/MatrixValues.h"
#include "support/Rows.h"
#include "support/UsedMemory.h"

#include <cmath>
#include <cstring>
#include <limits>
#include <new>
#include <string>
#include <type_traits>
#include <utility>

#include <gtest/gtest.h>

// Instantiates all functions of the size that has them all, whether a test calls them or not.
template class libMath::Vector<float, 3>;

namespace {

using namespace testSupport;

using Vector4 = libMath::Vector<float, 4>;

static_assert(std::is_trivially_copyable<Vector3>::value && std::is_trivially_copyable<Vector4>::value,
              "a copy is made element by element");
static_assert(!std::is_polymorphic<Vector3>::value && !std::is_polymorphic<Vector4>::value, "nothing but elements");
static_assert(std::is_same<float&, decltype(std::declval<Vector3&>()[0u])>::value, "elements can be written");
static_assert(std::is_same<Vector3, decltype(std::declval<const Vector3&>() - std::declval<const Vector3&>())>::value,
              "difference");
static_assert(std::is_same<Vector3, decltype(std::declval<const Vector3&>().normalized())>::value, "normalized");
static_assert(
    std::is_same<Vector3, decltype(std::declval<const Vector3&>().cross(std::declval<const Vector3&>()))>::value,
    "cross product");
static_assert(std::is_same<float, decltype(std::declval<const Vector3&>().dot(std::declval<const Vector3&>()))>::value,
              "dot product");

TEST(VectorTest, HoldsItsElementsAndNothingElse)
{
    EXPECT_EQ(3 * sizeof(float), sizeof(Vector3));
    EXPECT_EQ(4 * sizeof(float), sizeof(Vector4));
}

/// The lowest integer whose successor is no float: 16777217 rounds back to it.
constexpr float limit = 16777216.0f;
/// Its square is 1 + 2^-11 + 2^-24, which float rounds to 1 + 2^-11.
constexpr float justAboveOne = 1.0f + 1.0f / 4096.0f;
constexpr float roundedSquare = 1.0f + 1.0f / 2048.0f;

TEST(VectorTest, ElementsLieOneAfterAnotherFromTheStart)
{
    const Vector3 v(2.0f, 3.0f, 5.0f);
    float elements[3];
    std::memcpy(elements, &v, sizeof(elements));
    EXPECT_EQ(2.0f, elements[0]);
    EXPECT_EQ(3.0f, elements[1]);
    EXPECT_EQ(5.0f, elements[2]);
}

TEST(VectorTest, DefaultConstructorZeroesThreeElements)
{
    const MadeInUsedMemory<Vector3> made;
    EXPECT_EQ(triple(0.0f, 0.0f, 0.0f), triple(*made));
}

TEST(VectorTest, DefaultConstructorZeroesFourElements)
{
    const MadeInUsedMemory<Vector4> made;
    for (unsigned i = 0; i < 4; ++i) {
        EXPECT_EQ(0.0f, (*made)[i]) << i;
    }
}

TEST(VectorTest, ConstructorStoresXThenYThenZ)
{
    EXPECT_EQ(triple(-1.5f, 2.25f, 1e30f), triple(Vector3(-1.5f, 2.25f, 1e30f)));
}

TEST(VectorTest, CopyTakesEachElementAndIsIndependent)
{
    Vector3 original(1.0f, 2.0f, 3.0f);
    const Vector3 copy(original);
    original[0] = 7.0f;
    original[1] = 8.0f;
    original[2] = 9.0f;
    EXPECT_EQ(triple(1.0f, 2.0f, 3.0f), triple(copy));
    EXPECT_EQ(triple(7.0f, 8.0f, 9.0f), triple(original));
}

TEST(VectorTest, AssignmentTakesEachElementAndIsIndependent)
{
    Vector3 original(1.0f, 2.0f, 3.0f);
    Vector3 assigned(4.0f, 5.0f, 6.0f);
    assigned = original;
    original[1] = 8.0f;
    EXPECT_EQ(triple(1.0f, 2.0f, 3.0f), triple(assigned));
}

TEST(VectorTest, CopyKeepsNegativeZeroAndNan)
{
    const Vector3 original(-0.0f, std::numeric_limits<float>::quiet_NaN(), -0.0f);
    const Vector3 copy(original);
    EXPECT_TRUE(copy[0] == 0.0f && std::signbit(copy[0]));
    EXPECT_TRUE(std::isnan(copy[1]));
    EXPECT_TRUE(copy[2] == 0.0f && std::signbit(copy[2]));
}

TEST(VectorTest, AccessWritesOneElement)
{
    Vector3 v(1.0f, 2.0f, 3.0f);
    v[1] = -4.0f;
    EXPECT_EQ(triple(1.0f, -4.0f, 3.0f), triple(v));
}

TEST(VectorTest, FourElementsAreWrittenReadAndCopied)
{
    Vector4 v;
    for (unsigned i = 0; i < 4; ++i) {
        v[i] = static_cast<float>(i) + 0.5f;
    }
    const Vector4 copy = v;
    v[3] = 9.0f;
    EXPECT_EQ(0.5f, copy[0]);
    EXPECT_EQ(1.5f, copy[1]);
    EXPECT_EQ(2.5f, copy[2]);
    EXPECT_EQ(3.5f, copy[3]);
}

TEST(VectorTest, FirstThreeOfFourElementsMakeAVectorOfThree)
{
    Vector4 v;
    v[0] = 2.0f;
    v[1] = 3.0f;
    v[2] = 5.0f;
    v[3] = 7.0f;
    const Vector4& read = v;
    EXPECT_EQ(triple(2.0f, 3.0f, 5.0f), triple(Vector3(read[0], read[1], read[2])));
}

TEST(VectorTest, DifferenceIsLeftMinusRightInEachElement)
{
    const Vector3 left(10.0f, 2.0f, -3.0f);
    const Vector3 right(1.0f, 5.0f, -7.5f);
    EXPECT_EQ(triple(9.0f, -3.0f, 4.5f), triple(left - right));
    EXPECT_EQ(triple(-9.0f, 3.0f, -4.5f), triple(right - left));
    EXPECT_EQ(triple(10.0f, 2.0f, -3.0f), triple(left));
    EXPECT_EQ(triple(1.0f, 5.0f, -7.5f), triple(right));
}

TEST(VectorTest, DifferenceWithItselfIsPositiveZero)
{
    const Vector3 v(0.1f, -2.0f, 3e20f);
    const Vector3 difference = v - v;
    for (unsigned i = 0; i < 3; ++i) {
        EXPECT_EQ(0.0f, difference[i]) << i;
        EXPECT_FALSE(std::signbit(difference[i])) << i;
    }
}

TEST(VectorTest, DifferenceIsRoundedToFloat)
{
    // 2^24 + 1 and 0.1 + 2^24 are no floats.
    EXPECT_EQ(triple(limit, limit, limit + 4.0f), triple(Vector3(limit, 0.1f, limit) - Vector3(-1.0f, -limit, -3.0f)));
}

TEST(VectorTest, NormalizedDividesByTheLength)
{
    const Vector3 v(2.0f, -3.0f, 6.0f);
    EXPECT_EQ(triple(2.0f / 7.0f, -3.0f / 7.0f, 6.0f / 7.0f), triple(v.normalized()));
    EXPECT_EQ(triple(2.0f, -3.0f, 6.0f), triple(v));
}

TEST(VectorTest, NormalizedLeavesUnitAxesAsTheyAre)
{
    EXPECT_EQ(triple(1.0f, 0.0f, 0.0f), triple(Vector3(1.0f, 0.0f, 0.0f).normalized()));
    EXPECT_EQ(triple(0.0f, -1.0f, 0.0f), triple(Vector3(0.0f, -1.0f, 0.0f).normalized()));
    EXPECT_EQ(triple(0.0f, 0.0f, 1.0f), triple(Vector3(0.0f, 0.0f, 1.0f).normalized()));
}

struct NormalizedCase : Row {
    float x;
    float y;
    float z;
};

class VectorNormalizedTest : public testing::TestWithParam<NormalizedCase> {};

TEST_P(VectorNormalizedTest, SumsSquaresInOrderTakesTheRootAndDividesAllInFloat)
{
    const NormalizedCase& row = GetParam();
    const float xx = row.x * row.x;
    const float yy = row.y * row.y;
    const float zz = row.z * row.z;
    const float first = 0.0f + xx;
    const float second = first + yy;
    const float third = second + zz;
    const float length = std::sqrt(third);

    // With these operands, another order, a wider type or a product with the reciprocal would change the result.
    const float xAndZFirst = xx + zz;
    const float otherLength = std::sqrt(xAndZFirst + yy);
    const float yAndZFirst = yy + zz;
    const float thirdLength = std::sqrt(yAndZFirst + xx);
    const double wideX = row.x;
    const double wideLength =
        std::sqrt(wideX * row.x + static_cast<double>(row.y) * row.y + static_cast<double>(row.z) * row.z);
    const float reciprocal = 1.0f / length;
    const float expected = row.x / length;
    ASSERT_NE(expected, row.x / otherLength);
    ASSERT_NE(expected, row.x / thirdLength);
    ASSERT_NE(expected, static_cast<float>(row.x / wideLength));
    ASSERT_NE(expected, row.x * reciprocal);

    EXPECT_EQ(triple(expected, row.y / length, row.z / length), triple(Vector3(row.x, row.y, row.z).normalized()));
}

INSTANTIATE_ROWS(Operands, VectorNormalizedTest, {"LargeZ", 2.6f, 2.9f, 6.4f}, {"Rising", 1.4f, 2.5f, 4.1f},
                 {"Falling", 6.2f, 4.2f, 2.1f}, {"LargeY", 3.2f, 9.9f, 6.9f});

TEST(VectorTest, NormalizedZeroVectorIsNan)
{
    const Vector3 result = Vector3(0.0f, 0.0f, 0.0f).normalized();
    EXPECT_TRUE(std::isnan(result[0]));
    EXPECT_TRUE(std::isnan(result[1]));
    EXPECT_TRUE(std::isnan(result[2]));
}

TEST(VectorTest, NormalizedVectorOfNegativeZerosIsNan)
{
    const Vector3 result = Vector3(-0.0f, -0.0f, -0.0f).normalized();
    EXPECT_TRUE(std::isnan(result[0]));
    EXPECT_TRUE(std::isnan(result[1]));
    EXPECT_TRUE(std::isnan(result[2]));
}

TEST(VectorTest, NormalizedKeepsTheSignOfAZeroElement)
{
    const Vector3 result = Vector3(3.0f, -0.0f, 4.0f).normalized();
    EXPECT_EQ(triple(3.0f / 5.0f, 0.0f, 4.0f / 5.0f), triple(result));
    EXPECT_TRUE(std::signbit(result[1]));
}

TEST(VectorTest, NormalizedSquareBeyondFloatGivesZero)
{
    // 1e40 is no float, so the length is infinite.
    EXPECT_EQ(triple(0.0f, 0.0f, 0.0f), triple(Vector3(1e20f, 1.0f, 0.0f).normalized()));
}

TEST(VectorTest, NormalizedSquareBelowFloatGivesInfinity)
{
    // 1e-60 is no float, so the length is 0, and nothing prevents the division.
    const Vector3 result = Vector3(1e-30f, 0.0f, -1e-30f).normalized();
    EXPECT_EQ(std::numeric_limits<float>::infinity(), result[0]);
    EXPECT_TRUE(std::isnan(result[1]));
    EXPECT_EQ(-std::numeric_limits<float>::infinity(), result[2]);
}

TEST(VectorTest, NormalizedPassesNanOn)
{
    const Vector3 result = Vector3(1.0f, std::numeric_limits<float>::quiet_NaN(), 2.0f).normalized();
    EXPECT_TRUE(std::isnan(result[0]));
    EXPECT_TRUE(std::isnan(result[1]));
    EXPECT_TRUE(std::isnan(result[2]));
}

TEST(VectorTest, CrossFollowsItsFormulaInEachElement)
{
    const Vector3 a(2.0f, 3.0f, 5.0f);
    const Vector3 b(7.0f, 11.0f, 13.0f);
    // 3·13 − 5·11, 5·7 − 2·13, 2·11 − 3·7
    EXPECT_EQ(triple(-16.0f, 9.0f, 1.0f), triple(a.cross(b)));
    EXPECT_EQ(triple(16.0f, -9.0f, -1.0f), triple(b.cross(a)));
    EXPECT_EQ(triple(2.0f, 3.0f, 5.0f), triple(a));
    EXPECT_EQ(triple(7.0f, 11.0f, 13.0f), triple(b));
}

TEST(VectorTest, CrossOfAxesIsRightHanded)
{
    const Vector3 x(1.0f, 0.0f, 0.0f);
    const Vector3 y(0.0f, 1.0f, 0.0f);
    const Vector3 z(0.0f, 0.0f, 1.0f);
    EXPECT_EQ(triple(0.0f, 0.0f, 1.0f), triple(x.cross(y)));
    EXPECT_EQ(triple(1.0f, 0.0f, 0.0f), triple(y.cross(z)));
    EXPECT_EQ(triple(0.0f, 1.0f, 0.0f), triple(z.cross(x)));
}

TEST(VectorTest, CrossOfParallelVectorsIsZero)
{
    EXPECT_EQ(triple(0.0f, 0.0f, 0.0f), triple(Vector3(1.0f, 2.0f, -3.0f).cross(Vector3(-2.0f, -4.0f, 6.0f))));
}

TEST(VectorTest, CrossRoundsEachProductToFloat)
{
    // The first product is 1 + 2^-11 + 2^-24 before it is rounded, the second 1 + 2^-11; a wider type leaves 2^-24.
    const float product = justAboveOne * justAboveOne;
    ASSERT_EQ(roundedSquare, product);
    ASSERT_NE(static_cast<double>(roundedSquare), static_cast<double>(justAboveOne) * justAboveOne);
    EXPECT_EQ(triple(0.0f, 0.0f, 0.0f),
              triple(Vector3(0.0f, justAboveOne, roundedSquare).cross(Vector3(0.0f, 1.0f, justAboveOne))));
    EXPECT_EQ(triple(0.0f, 0.0f, 0.0f),
              triple(Vector3(roundedSquare, 0.0f, justAboveOne).cross(Vector3(justAboveOne, 0.0f, 1.0f))));
    EXPECT_EQ(triple(0.0f, 0.0f, 0.0f),
              triple(Vector3(justAboveOne, roundedSquare, 0.0f).cross(Vector3(1.0f, justAboveOne, 0.0f))));
}

TEST(VectorTest, CrossSubtractsFromTheFirstProductItself)
{
    // −0 − 0 is −0; a sum begun with 0 would lose the sign.
    const Vector3 result = Vector3(-0.0f, -0.0f, -0.0f).cross(Vector3(1.0f, -1.0f, 1.0f));
    // x: −0·1 − (−0·−1) = −0 − 0, y: −0·1 − (−0·1) = −0 + 0, z: −0·−1 − (−0·1) = 0 + 0
    EXPECT_EQ(triple(0.0f, 0.0f, 0.0f), triple(result));
    EXPECT_TRUE(std::signbit(result[0]));
    EXPECT_FALSE(std::signbit(result[1]));
    EXPECT_FALSE(std::signbit(result[2]));
}

TEST(VectorTest, DotSumsTheProducts)
{
    const Vector3 a(2.0f, 3.0f, 5.0f);
    const Vector3 b(7.0f, -11.0f, 13.0f);
    EXPECT_EQ(46.0f, a.dot(b)); // 14 − 33 + 65
    EXPECT_EQ(46.0f, b.dot(a));
    EXPECT_EQ(38.0f, a.dot(a));
    EXPECT_EQ(triple(2.0f, 3.0f, 5.0f), triple(a));
    EXPECT_EQ(triple(7.0f, -11.0f, 13.0f), triple(b));
}

TEST(VectorTest, DotOfPerpendicularAxesIsZero)
{
    EXPECT_EQ(0.0f, Vector3(1.0f, 0.0f, 0.0f).dot(Vector3(0.0f, 1.0f, 0.0f)));
    EXPECT_EQ(0.0f, Vector3(0.0f, 1.0f, 0.0f).dot(Vector3(0.0f, 0.0f, 1.0f)));
    EXPECT_EQ(0.0f, Vector3(0.0f, 0.0f, 1.0f).dot(Vector3(1.0f, 0.0f, 0.0f)));
}

TEST(VectorTest, DotSumsFromXToZ)
{
    const float first = 0.0f + limit;
    const float second = first + 1.0f; // rounds back to 2^24
    const float third = second - limit;
    ASSERT_EQ(0.0f, third);
    const float yAndZ = 1.0f - limit;
    ASSERT_EQ(1.0f, yAndZ + limit);
    // With x and z, or y and z, summed first, or in a wider type, 1 would be left.
    EXPECT_EQ(third, Vector3(limit, 1.0f, -limit).dot(Vector3(1.0f, 1.0f, 1.0f)));
    EXPECT_EQ(third, Vector3(1.0f, 1.0f, 1.0f).dot(Vector3(limit, 1.0f, -limit)));
    EXPECT_EQ(1.0f, Vector3(limit, -limit, 1.0f).dot(Vector3(1.0f, 1.0f, 1.0f)));
    EXPECT_EQ(0.0f, Vector3(1.0f, limit, -limit).dot(Vector3(1.0f, 1.0f, 1.0f)));
}

TEST(VectorTest, DotRoundsEachProductToFloat)
{
    EXPECT_EQ(0.0f, Vector3(justAboveOne, -roundedSquare, 0.0f).dot(Vector3(justAboveOne, 1.0f, 0.0f)));
    EXPECT_EQ(0.0f, Vector3(-roundedSquare, justAboveOne, 0.0f).dot(Vector3(1.0f, justAboveOne, 0.0f)));
    EXPECT_EQ(0.0f, Vector3(0.0f, -roundedSquare, justAboveOne).dot(Vector3(0.0f, 1.0f, justAboveOne)));
}

TEST(VectorTest, DotOfNegativeZeroProductsIsPositiveZero)
{
    // 0 + −0 is 0, so the result shows that the sum starts with 0.
    const float result = Vector3(-0.0f, -0.0f, -0.0f).dot(Vector3(1.0f, 2.0f, 3.0f));
    EXPECT_EQ(0.0f, result);
    EXPECT_FALSE(std::signbit(result));
    const float mixed = Vector3(-1.0f, 0.0f, -5.0f).dot(Vector3(0.0f, -4.0f, 0.0f));
    EXPECT_EQ(0.0f, mixed);
    EXPECT_FALSE(std::signbit(mixed));
}

TEST(VectorTest, DotOverflowsInFloat)
{
    EXPECT_EQ(std::numeric_limits<float>::infinity(), Vector3(1e20f, 0.0f, 0.0f).dot(Vector3(1e20f, 0.0f, 0.0f)));
    EXPECT_TRUE(std::isnan(Vector3(1e20f, 1e20f, 0.0f).dot(Vector3(1e20f, -1e20f, 0.0f))));
}

} // namespace
