#include "support/MatrixValues.h"
#include "support/Rows.h"

#include <vesk/Exception.h>
#include <vesk/Logging.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <new>
#include <string>
#include <type_traits>
#include <utility>

#include <gtest/gtest.h>

// Instantiates all functions, whether a test calls them or not.
template class libMath::Matrix<float, 4, 4>;

namespace {

using namespace testSupport;

using Vector4 = libMath::Vector<float, 4>;

static_assert(std::is_trivially_copyable<Matrix4>::value, "a copy is made element by element");
static_assert(!std::is_polymorphic<Matrix4>::value, "no virtual operation");
static_assert(std::is_same<void, decltype(std::declval<Matrix4&>().setIdentity())>::value, "setIdentity");
static_assert(std::is_same<float&, decltype(std::declval<Matrix4&>()[0u])>::value, "flat access");
static_assert(std::is_same<const float&, decltype(std::declval<const Matrix4&>()[0u])>::value, "const flat access");
static_assert(std::is_same<float&, decltype(std::declval<Matrix4&>()(0u, 0u))>::value, "access by row and column");
static_assert(std::is_same<const float&, decltype(std::declval<const Matrix4&>()(0u, 0u))>::value,
              "const access by row and column");
static_assert(std::is_same<Vector4, decltype(std::declval<const Matrix4&>().column(0u))>::value, "column");
static_assert(
    std::is_same<void, decltype(std::declval<Matrix4&>().setColumn(0u, std::declval<const Vector4&>()))>::value,
    "setColumn");
static_assert(std::is_same<Matrix4, decltype(Matrix4::diagonal(std::declval<const Vector4&>()))>::value, "diagonal");
static_assert(std::is_same<Matrix4, decltype(std::declval<const Matrix4&>() * std::declval<const Matrix4&>())>::value,
              "product");

TEST(MatrixTest, HoldsItsElementsAndNothingElse)
{
    EXPECT_EQ(16 * sizeof(float), sizeof(Matrix4));
    EXPECT_EQ(alignof(float), alignof(Matrix4));
}

constexpr unsigned unsignedMax = std::numeric_limits<unsigned>::max();
/// The lowest integer whose successor is no float: 16777217 rounds back to it.
constexpr float limit = 16777216.0f;

Vector4 vector(float x, float y, float z, float w)
{
    Vector4 result;
    result[0] = x;
    result[1] = y;
    result[2] = z;
    result[3] = w;
    return result;
}

void expectElements(const Vector4& v, float x, float y, float z, float w)
{
    EXPECT_EQ(x, v[0]);
    EXPECT_EQ(y, v[1]);
    EXPECT_EQ(z, v[2]);
    EXPECT_EQ(w, v[3]);
}

TEST(MatrixTest, ElementsLieInFlatOrderFromTheStart)
{
    const Matrix4 m = matrixOf(counting);
    float elements[16];
    std::memcpy(elements, &m, sizeof(elements));
    for (unsigned i = 0; i < 16; ++i) {
        EXPECT_EQ(counting[i], elements[i]) << i;
    }
}

TEST(MatrixTest, DefaultConstructorMakesAllZeroAndNotTheIdentity)
{
    alignas(Matrix4) unsigned char memory[sizeof(Matrix4)];
    std::memset(memory, 0xA5, sizeof(memory));
    const Matrix4* made = new (memory) Matrix4;
    expectSame(zero, elements(*made));
}

TEST(MatrixTest, CopyTakesEachElementAndIsIndependent)
{
    Matrix4 original = matrixOf(counting);
    const Matrix4 copy(original);
    original.setIdentity();
    expectSame(counting, elements(copy));
    expectSame(identity, elements(original));
}

TEST(MatrixTest, AssignmentTakesEachElementAndIsIndependent)
{
    Matrix4 original = matrixOf(counting);
    Matrix4 assigned;
    assigned.setIdentity();
    assigned = original;
    original[5] = -1.0f;
    expectSame(counting, elements(assigned));
}

TEST(MatrixTest, AssignmentToItselfChangesNothing)
{
    Matrix4 m = matrixOf(counting);
    const Matrix4& same = m;
    m = same;
    expectSame(counting, elements(m));
}

TEST(MatrixTest, CopyKeepsNegativeZeroAndNan)
{
    Matrix4 original;
    original[2] = -0.0f;
    original[15] = std::numeric_limits<float>::quiet_NaN();
    const Matrix4 copy(original);
    EXPECT_TRUE(copy[2] == 0.0f && std::signbit(copy[2]));
    EXPECT_TRUE(std::isnan(copy[15]));
}

TEST(MatrixTest, SetIdentityFillsZeroMatrix)
{
    Matrix4 m;
    m.setIdentity();
    expectSame(identity, elements(m));
}

TEST(MatrixTest, SetIdentityReplacesEveryElement)
{
    Matrix4 m = matrixOf(counting);
    m[7] = std::numeric_limits<float>::quiet_NaN();
    m.setIdentity();
    expectSame(identity, elements(m));
}

TEST(MatrixTest, FlatIndexIsFourTimesRowPlusColumn)
{
    Matrix4 m;
    for (unsigned r = 0; r < 4; ++r) {
        for (unsigned c = 0; c < 4; ++c) {
            m(r, c) = static_cast<float>(10 * r + c);
        }
    }
    expectSame({0, 1, 2, 3, 10, 11, 12, 13, 20, 21, 22, 23, 30, 31, 32, 33}, elements(m));
}

TEST(MatrixTest, RowAndColumnAccessReadsWhatFlatAccessWrote)
{
    Matrix4 m = matrixOf(counting);
    EXPECT_EQ(2.0f, m(0, 1));
    EXPECT_EQ(5.0f, m(1, 0));
    EXPECT_EQ(12.0f, m(2, 3));
    EXPECT_EQ(15.0f, m(3, 2));
}

TEST(MatrixTest, AConstMatrixReadsTheSameElementsByRowAndColumn)
{
    const Matrix4 m = matrixOf(counting);
    EXPECT_EQ(2.0f, m(0, 1));
    EXPECT_EQ(5.0f, m(1, 0));
    EXPECT_EQ(12.0f, m(2, 3));
    EXPECT_EQ(15.0f, m(3, 2));
}

TEST(MatrixTest, FlatAccessWritesOneElement)
{
    Matrix4 m;
    m[6] = 2.5f;
    expectSame({0, 0, 0, 0, 0, 0, 2.5f, 0, 0, 0, 0, 0, 0, 0, 0, 0}, elements(m));
}

TEST(MatrixTest, EveryValidIndexIsAccepted)
{
    Matrix4 m = matrixOf(counting);
    const Matrix4& constant = m;
    for (unsigned i = 0; i < 16; ++i) {
        EXPECT_NO_THROW(EXPECT_EQ(&m[0] + i, &m[i]));
        EXPECT_NO_THROW(EXPECT_EQ(&m[0] + i, &constant[i]));
        EXPECT_NO_THROW(EXPECT_EQ(&m[0] + i, &m(i / 4, i % 4)));
    }
}

TEST(MatrixTest, ColumnGivesItsElementsFromTheFirstRowDown)
{
    const Matrix4 m = matrixOf(counting);
    expectElements(m.column(0), 1, 5, 9, 13);
    expectElements(m.column(1), 2, 6, 10, 14);
    expectElements(m.column(2), 3, 7, 11, 15);
    expectElements(m.column(3), 4, 8, 12, 16);
    expectSame(counting, elements(m));
}

TEST(MatrixTest, LastColumnOfTranslationIsTheTranslationAndOne)
{
    Matrix4 translation;
    translation.setIdentity();
    translation(0, 3) = 1.0f;
    translation(1, 3) = 2.0f;
    translation(2, 3) = 3.0f;
    expectElements(translation.column(3), 1, 2, 3, 1);
}

TEST(MatrixTest, ColumnIsACopy)
{
    Matrix4 m = matrixOf(counting);
    Vector4 column = m.column(1);
    column[0] = 99.0f;
    expectSame(counting, elements(m));
}

TEST(MatrixTest, SetColumnStoresFromTheFirstRowDownAndLeavesTheRest)
{
    Matrix4 m = matrixOf(counting);
    m.setColumn(2, vector(-1, -2, -3, -4));
    expectSame({1, 2, -1, 4, 5, 6, -2, 8, 9, 10, -3, 12, 13, 14, -4, 16}, elements(m));
    m.setColumn(0, vector(20, 21, 22, 23));
    expectSame({20, 2, -1, 4, 21, 6, -2, 8, 22, 10, -3, 12, 23, 14, -4, 16}, elements(m));
    m.setColumn(3, m.column(0));
    expectSame({20, 2, -1, 20, 21, 6, -2, 21, 22, 10, -3, 22, 23, 14, -4, 23}, elements(m));
}

TEST(MatrixTest, SetColumnTakesNoReferenceToTheVector)
{
    Matrix4 m;
    Vector4 v = vector(1, 2, 3, 4);
    m.setColumn(1, v);
    v[0] = 9.0f;
    expectElements(m.column(1), 1, 2, 3, 4);
}

TEST(MatrixTest, DiagonalHoldsTheVectorAndElseZero)
{
    expectSame({2, 0, 0, 0, 0, 3, 0, 0, 0, 0, 5, 0, 0, 0, 0, 7}, elements(Matrix4::diagonal(vector(2, 3, 5, 7))));
}

TEST(MatrixTest, DiagonalOfOnesIsTheIdentity)
{
    expectSame(identity, elements(Matrix4::diagonal(vector(1, 1, 1, 1))));
}

// Failed assertions

enum class Access { Flat, ConstFlat, RowAndColumn, ConstRowAndColumn, Column, SetColumn };

struct AssertionCase : Row {
    Access access;
    unsigned x;
    unsigned y; ///< of row and column access alone
    const char* expression;
};
/// Makes the access of the row. @return the value that was read, if the assertion does not prevent it
float access(Matrix4& m, const AssertionCase& row)
{
    const Matrix4& constant = m;
    switch (row.access) {
    case Access::Flat:
        return m[row.x] = 99.0f;
    case Access::ConstFlat:
        return constant[row.x];
    case Access::RowAndColumn:
        return m(row.x, row.y) = 99.0f;
    case Access::ConstRowAndColumn:
        return constant(row.x, row.y);
    case Access::Column:
        return constant.column(row.x)[0];
    case Access::SetColumn:
        m.setColumn(row.x, vector(99, 99, 99, 99));
        return 99.0f;
    }
    return 0.0f;
}

class MatrixAssertionTest : public testing::TestWithParam<AssertionCase> {};

TEST_P(MatrixAssertionTest, ThrowsModuleLineAndExpressionAndChangesNothing)
{
    Matrix4 m = matrixOf(counting);
    try {
        access(m, GetParam());
        FAIL() << "nothing thrown";
    } catch (const vesk::AssertionFailure& failure) {
        EXPECT_STREQ("libMath/include/libMath/Matrix", failure.file());
        EXPECT_STREQ(GetParam().expression, failure.expression());
        EXPECT_GT(failure.line(), 0u);
    }
    expectSame(counting, elements(m));
}

TEST_P(MatrixAssertionTest, WritesNoLogLine)
{
    int lines = 0;
    const vesk::LoggerPriority::LOGGER_PRIORITY priorityBefore = vesk::LogFactory::getPriority();
    const vesk::LogHandler handlerBefore = vesk::LogFactory::setHandler(
        [&lines](const vesk::Logger&, vesk::LoggerPriority::LOGGER_PRIORITY, const vesk::String&) { ++lines; });
    vesk::LogFactory::setPriority(vesk::LoggerPriority::PRIORITY_ALL);
    Matrix4 m;
    EXPECT_THROW(access(m, GetParam()), vesk::AssertionFailure);
    vesk::LogFactory::setPriority(priorityBefore);
    vesk::LogFactory::setHandler(handlerBefore);
    EXPECT_EQ(0, lines);
}

constexpr const char* flatExpression = "index < (row * col)";
constexpr const char* pairExpression = "(x<row) && (y<col)";
constexpr const char* columnExpression = "x < col";

INSTANTIATE_ROWS(Accesses, MatrixAssertionTest, {"FlatSixteen", Access::Flat, 16, 0, flatExpression},
                 {"FlatLargest", Access::Flat, unsignedMax, 0, flatExpression},
                 {"ConstFlatSixteen", Access::ConstFlat, 16, 0, flatExpression},
                 {"ConstFlatLargest", Access::ConstFlat, unsignedMax, 0, flatExpression},
                 {"RowFour", Access::RowAndColumn, 4, 0, pairExpression},
                 {"ColumnFour", Access::RowAndColumn, 0, 4, pairExpression},
                 // The flat index of both would be valid.
                 {"ColumnFourOfAMiddleRow", Access::RowAndColumn, 1, 4, pairExpression},
                 {"RowThatWrapsToFlatZero", Access::RowAndColumn, unsignedMax / 4 + 1, 0, pairExpression},
                 {"BothFour", Access::RowAndColumn, 4, 4, pairExpression},
                 {"LargestRow", Access::RowAndColumn, unsignedMax, 0, pairExpression},
                 {"LargestColumn", Access::RowAndColumn, 0, unsignedMax, pairExpression},
                 {"ConstRowFour", Access::ConstRowAndColumn, 4, 0, pairExpression},
                 {"ConstColumnFour", Access::ConstRowAndColumn, 0, 4, pairExpression},
                 {"WholeColumnFour", Access::Column, 4, 0, columnExpression},
                 {"WholeColumnLargest", Access::Column, unsignedMax, 0, columnExpression},
                 {"SetColumnFour", Access::SetColumn, 4, 0, columnExpression},
                 {"SetColumnLargest", Access::SetColumn, unsignedMax, 0, columnExpression});

TEST(MatrixTest, FailedAssertionIsThrownByValue)
{
    Matrix4 m;
    EXPECT_THROW(m[16], vesk::AssertionFailure);
    EXPECT_THROW(m[16], vesk::Exception);
}

// Products

TEST(MatrixTest, ProductSumsRowsTimesColumns)
{
    const Matrix4 a = matrixOf({1, 2, 3, 4, 0, -1, 2, 5, 7, 0, 1, -2, 3, 1, 0, 6});
    const Matrix4 b = matrixOf({2, 0, 1, -1, 3, 4, 0, 2, -5, 1, 2, 0, 1, 6, -3, 7});
    const Elements expected = {
        2 + 6 - 15 + 4, 0 + 8 + 3 + 24, 1 + 0 + 6 - 12, -1 + 4 + 0 + 28, // 1 2 3 4
        0 - 3 - 10 + 5, 0 - 4 + 2 + 30, 0 + 0 + 4 - 15, 0 - 2 + 0 + 35,  // 0 -1 2 5
        14 + 0 - 5 - 2, 0 + 0 + 1 - 12, 7 + 0 + 2 + 6,  -7 + 0 + 0 - 14, // 7 0 1 -2
        6 + 3 + 0 + 6,  0 + 4 + 0 + 36, 3 + 0 + 0 - 18, -3 + 2 + 0 + 42, // 3 1 0 6
    };
    expectSame(expected, elements(a * b));
}

TEST(MatrixTest, ProductChangesNeitherOperand)
{
    const Elements factors = {2, 0, 1, -1, 3, 4, 0, 2, -5, 1, 2, 0, 1, 6, -3, 7};
    Matrix4 a = matrixOf(counting);
    Matrix4 b = matrixOf(factors);
    const Matrix4 product = a * b;
    expectSame(counting, elements(a));
    expectSame(factors, elements(b));
    a = Matrix4();
    b = Matrix4();
    EXPECT_EQ(-3.0f, product[0]); // 2 + 6 − 15 + 4
}

constexpr Elements countedSquare = {90, 100, 110, 120, 202, 228, 254, 280, 314, 356, 398, 440, 426, 484, 542, 600};

TEST(MatrixTest, ProductWithItselfIsItsSquare)
{
    const Matrix4 m = matrixOf(counting);
    expectSame(countedSquare, elements(m * m));
}

TEST(MatrixTest, ProductCopiedOverAnOperandMultipliesInPlace)
{
    Matrix4 m = matrixOf(counting);
    m = m * m;
    expectSame(countedSquare, elements(m));
}

TEST(MatrixTest, IdentityTimesAnyMatrixIsThatMatrix)
{
    const Elements any = {0.1f,   -2.7f,  3e30f, 1e-38f, limit, 0.3333333f, -5e-20f, 8.0f,
                          1e-45f, -1e38f, 7.7f,  0.0f,   13.5f, -1.0f,      0.7f,    3.4e38f};
    Matrix4 one;
    one.setIdentity();
    expectSame(any, elements(one * matrixOf(any)));
    expectSame(any, elements(matrixOf(any) * one));
}

TEST(MatrixTest, LeftFactorIsTheOuterTransform)
{
    Matrix4 translation;
    translation.setIdentity();
    translation.setColumn(3, vector(1, 2, 3, 1));
    const Matrix4 scale = Matrix4::diagonal(vector(10, 20, 30, 1));
    // Scaled, then moved: the translation stays as it is.
    expectSame({10, 0, 0, 1, 0, 20, 0, 2, 0, 0, 30, 3, 0, 0, 0, 1}, elements(translation * scale));
    // Moved, then scaled.
    expectSame({10, 0, 0, 10, 0, 20, 0, 40, 0, 0, 30, 90, 0, 0, 0, 1}, elements(scale * translation));
}

TEST(MatrixTest, PointIsAColumnOnTheRight)
{
    Matrix4 transform;
    transform.setIdentity();
    transform.setColumn(3, vector(1, 2, 3, 1));
    Matrix4 points;
    points.setColumn(0, vector(10, 20, 30, 1));
    expectElements((transform * points).column(0), 11, 22, 33, 1);
}

struct SumCase : Row {
    float terms[4];
};

class MatrixProductOrderTest : public testing::TestWithParam<SumCase> {};

// The terms are in each row and, in turn, in each column, with ones on the other side, so every element of the
// product is their sum.
TEST_P(MatrixProductOrderTest, SumsFromFirstTermToLastInFloatInEveryElement)
{
    const float(&terms)[4] = GetParam().terms;
    const float first = terms[0];
    const float second = first + terms[1];
    const float third = second + terms[2];
    const float sum = third + terms[3];
    // A wider type gives 2 in all rows.
    ASSERT_NE(2.0f, sum);

    Matrix4 ones;
    Matrix4 inRows;
    Matrix4 inColumns;
    for (unsigned i = 0; i < 16; ++i) {
        ones[i] = 1.0f;
        inRows[i] = terms[i % 4];
        inColumns[i] = terms[i / 4];
    }
    const Matrix4 byRows = inRows * ones;
    const Matrix4 byColumns = ones * inColumns;
    for (unsigned i = 0; i < 16; ++i) {
        EXPECT_EQ(sum, byRows[i]) << "flat index " << i;
        EXPECT_EQ(sum, byColumns[i]) << "flat index " << i;
    }
}

// Every other order of four terms, save an exchange of the first two, misses at least one row; so does a sum of pairs.
INSTANTIATE_ROWS(Terms, MatrixProductOrderTest, {"BothOnesLost", {limit, 1.0f, 1.0f, -limit}},
                 {"FirstOneLost", {limit, 1.0f, -limit, 1.0f}}, {"FirstTermLost", {1.0f, limit, -limit, 1.0f}});

TEST(MatrixTest, ProductRoundsEachTermToFloat)
{
    // The square of 1 + 2^-12 is 1 + 2^-11 + 2^-24, which float rounds to 1 + 2^-11.
    const float factor = 1.0f + 1.0f / 4096.0f;
    const float square = factor * factor;
    const float rounded = 1.0f + 1.0f / 2048.0f;
    ASSERT_EQ(rounded, square);
    for (unsigned k = 0; k < 4; ++k) {
        Matrix4 a;
        Matrix4 b;
        const unsigned other = (k + 1) % 4;
        a(2, k) = factor;
        b(k, 1) = factor;
        a(2, other) = -rounded;
        b(other, 1) = 1.0f;
        EXPECT_EQ(0.0f, (a * b)(2, 1)) << "term " << k;
    }
}

TEST(MatrixTest, ProductSumStartsWithTheFirstTermItself)
{
    // −0 + −0 is −0; a sum begun with 0 would lose the sign.
    Matrix4 negativeZeros;
    Matrix4 ones;
    for (unsigned i = 0; i < 16; ++i) {
        negativeZeros[i] = -0.0f;
        ones[i] = 1.0f;
    }
    const Matrix4 product = negativeZeros * ones;
    for (unsigned i = 0; i < 16; ++i) {
        EXPECT_EQ(0.0f, product[i]) << i;
        EXPECT_TRUE(std::signbit(product[i])) << i;
    }
    // −0 + 0 is 0.
    Matrix4 one;
    one.setIdentity();
    EXPECT_TRUE(std::signbit((one * negativeZeros)[0]));
    negativeZeros(1, 0) = 0.0f;
    EXPECT_FALSE(std::signbit((one * negativeZeros)[0]));
}

TEST(MatrixTest, ProductPassesNanAndInfinityOn)
{
    const float infinity = std::numeric_limits<float>::infinity();
    Matrix4 one;
    one.setIdentity();
    Matrix4 m = matrixOf(counting);
    m(2, 1) = infinity;
    Matrix4 product = one * m;
    // 0 · infinity is in column 1 of all other rows.
    EXPECT_TRUE(std::isnan(product(0, 1)));
    EXPECT_TRUE(std::isnan(product(1, 1)));
    EXPECT_EQ(infinity, product(2, 1));
    EXPECT_TRUE(std::isnan(product(3, 1)));
    EXPECT_EQ(1.0f, product(0, 0));
}

} // namespace
