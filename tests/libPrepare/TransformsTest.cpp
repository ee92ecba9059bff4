#include <libPrepare/document/Transforms.h>

#include <gtest/gtest.h>

#include <cmath>

namespace {

using namespace libPrepare;

void expectPoint(const Vector3& expected, const Vector3& actual)
{
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_NEAR(expected[i], actual[i], 1e-12) << "component " << i;
    }
}

TEST(TransformsTest, RotationTurnsCounterClockwise)
{
    expectPoint({0, 1, 0}, transformPoint(transformMatrix("rotate", {0, 0, 2, 90}), {1, 0, 0}));
    expectPoint({1, 2, 3}, transformPoint(transformMatrix("rotate", {0, 0, 0, 90}), {1, 2, 3}));
}

TEST(TransformsTest, LookatStandsAtTheEyeAndLooksAlongNegativeZ)
{
    const Matrix4 matrix = transformMatrix("lookat", {1, 2, 3, 1, 2, 13, 0, 1, 0});
    expectPoint({1, 2, 3}, transformPoint(matrix, {0, 0, 0}));
    expectPoint({1, 2, 4}, transformPoint(matrix, {0, 0, -1}));
    expectPoint({1, 3, 3}, transformPoint(matrix, {0, 1, 0}));
}

TEST(TransformsTest, LookatAlongItsOwnUpTurnsNoMoreThanItHasTo)
{
    const Matrix4 above = transformMatrix("lookat", {0, 0, 0, 0, 10, 0, 0, 1, 0});
    expectPoint({0, 1, 0}, transformPoint(above, {0, 0, -1}));
    expectPoint({1, 0, 0}, transformPoint(above, {1, 0, 0}));
    expectPoint({0, 0, 1}, transformPoint(above, {0, 1, 0}));
    const Matrix4 behind = transformMatrix("lookat", {0, 0, 0, 0, 0, 10, 0, 0, 1});
    expectPoint({0, 0, 1}, transformPoint(behind, {0, 0, -1}));
    expectPoint({0, 1, 0}, transformPoint(behind, {0, 1, 0}));
}

TEST(TransformsTest, SkewBy45DegreesAddsOneAxisToTheOther)
{
    expectPoint({1, 1, 0}, transformPoint(transformMatrix("skew", {45, 1, 0, 0, 0, 1, 0}), {1, 0, 0}));
}

TEST(TransformsTest, NodeMultipliesItsTransformsInOrderAndItsParents)
{
    pugi::xml_document document;
    ASSERT_TRUE(document.load_string("<node><translate>1 0 0</translate><node><scale>2 2 2</scale>"
                                     "<translate>0 1<!-- a comment --> 0</translate></node></node>"));
    const pugi::xml_node inner = document.child("node").child("node");
    expectPoint({0, 2, 0}, transformPoint(localMatrix(inner), {0, 0, 0}));
    expectPoint({1, 2, 0}, transformPoint(worldMatrix(inner), {0, 0, 0}));
}

TEST(TransformsTest, InverseUndoes)
{
    const Matrix4 matrix = transformMatrix("translate", {1, 2, 3}) * transformMatrix("rotate", {1, 1, 0, 30}) *
                           transformMatrix("scale", {1, 2, 4});
    expectPoint({5, 6, 7}, transformPoint(inverse(matrix) * matrix, {5, 6, 7}));
}

} // namespace
