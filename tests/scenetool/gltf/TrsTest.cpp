#include "../../../tools/scenetool/gltf/Trs.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using namespace scenetool;

Matrix4 matrixOfRows(const float (&rows)[3][4])
{
    Matrix4 result = identity();
    for (unsigned i = 0; i < 12; ++i) {
        result[i] = rows[i / 4][i % 4];
    }
    return result;
}

void expectEqual(const Matrix4& expected, const Matrix4& actual)
{
    for (unsigned i = 0; i < 16; ++i) {
        EXPECT_NEAR(expected[i], actual[i], 1e-5F) << "element " << i;
    }
}

TEST(TrsTest, QuarterTurnAboutZHasHalfItsAngleInTheQuaternion)
{
    const std::optional<Trs> trs = trsOf(matrixOfRows({{0, -2, 0, 5}, {1, 0, 0, 6}, {0, 0, 3, 7}}));
    ASSERT_TRUE(trs);
    EXPECT_EQ((std::array<float, 3>{5, 6, 7}), trs->translation);
    EXPECT_EQ((std::array<float, 3>{1, 2, 3}), trs->scale);
    const float half = std::sqrt(0.5F); // sine and cosine of 45 degrees
    EXPECT_NEAR(0, trs->rotation[0], 1e-6F);
    EXPECT_NEAR(0, trs->rotation[1], 1e-6F);
    EXPECT_NEAR(half, trs->rotation[2], 1e-6F);
    EXPECT_NEAR(half, trs->rotation[3], 1e-6F);
}

TEST(TrsTest, HalfTurnsHaveQuaternionsOfLengthOne)
{
    for (unsigned axis = 0; axis < 3; ++axis) {
        Matrix4 matrix = identity();
        matrix((axis + 1) % 3, (axis + 1) % 3) = -1;
        matrix((axis + 2) % 3, (axis + 2) % 3) = -1;
        const std::optional<Trs> trs = trsOf(matrix);
        ASSERT_TRUE(trs);
        EXPECT_NEAR(1, std::fabs(trs->rotation[axis]), 1e-6F);
        expectEqual(matrix, matrixOf(*trs));
    }
}

TEST(TrsTest, MirrorGoesIntoTheScale)
{
    const Matrix4 matrix = matrixOfRows({{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, -1, 0}});
    const std::optional<Trs> trs = trsOf(matrix);
    ASSERT_TRUE(trs);
    EXPECT_LT(trs->scale[0] * trs->scale[1] * trs->scale[2], 0);
    expectEqual(matrix, matrixOf(*trs));
}

TEST(TrsTest, MatrixWithoutSizeKeepsARotationOfLengthOne)
{
    Matrix4 flat = matrixOfRows({{0, 0, 0, 1}, {0, 2, 0, 2}, {0, 0, 0, 3}});
    const std::optional<Trs> trs = trsOf(flat);
    ASSERT_TRUE(trs);
    expectEqual(flat, matrixOf(*trs));
    flat(1, 1) = 0;
    ASSERT_TRUE(trsOf(flat));
    expectEqual(flat, matrixOf(*trsOf(flat)));
}

TEST(TrsTest, ShearHasNoTransform)
{
    EXPECT_FALSE(trsOf(matrixOfRows({{1, 1, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}})));
    EXPECT_FALSE(trsOf(matrixOfRows({{NAN, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}})));
}

TEST(TrsTest, PairSaysAnyAffineMatrix)
{
    const float rows[][3][4] = {{{1, 1, 0, 4}, {0, 1, 0, 5}, {0, 0, 1, 6}},
                                {{1, 2, 3, 0}, {4, 5, 6, 0}, {7, 8, 10, 0}},
                                {{-1, 0.5F, 0, 1}, {0, 2, 0.25F, 2}, {3, 0, 1, 3}},
                                {{1, 1, 1, 0}, {1, 1, 1, 0}, {1, 1, 1, 0}}};
    for (const auto& each : rows) {
        const Matrix4 matrix = matrixOfRows(each);
        const TrsPair pair = trsPairOf(matrix);
        expectEqual(matrix, matrixOf(pair.outer) * matrixOf(pair.inner));
        EXPECT_EQ((std::array<float, 3>{1, 1, 1}), pair.inner.scale);
    }
}

} // namespace
