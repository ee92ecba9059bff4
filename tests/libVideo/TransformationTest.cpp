#include "support/VideoTest.h"

#include <libVideo/SceneGraph/Animation.h>
#include <libVideo/SceneGraph/Transformation.h>

namespace {

using namespace libVideo;
using namespace testSupport;

using Values = daeTArray<double>;
using UpdateByMatrix = void (Transformation::*)(Matrix4);
using UpdateByTranslation = void (Translation::*)(const Vector3&);
using UpdateByAngle = void (Rotation::*)(double);
using UpdateByScale = void (Scale::*)(const Vector3&);

PRIVATE_MEMBER(declaredMatrix, Matrix4 Transformation::*, &Transformation::m_matrix)
PRIVATE_MEMBER(currentMatrix, MatrixHandle Transformation::*, &Transformation::m_transformation)
PRIVATE_MEMBER(sidField, vesk::String Transformation::*, &Transformation::m_sid)
PRIVATE_MEMBER(animationField, AnimationHandle Transformation::*, &Transformation::m_animation)
PRIVATE_MEMBER(translationField, Vector3 Translation::*, &Translation::m_translation)
PRIVATE_MEMBER(axisField, Vector3 Rotation::*, &Rotation::m_axis)
PRIVATE_MEMBER(angleField, double Rotation::*, &Rotation::m_angle)
PRIVATE_MEMBER(scaleField, Vector3 Scale::*, &Scale::m_scale)
PRIVATE_MEMBER(updateTransformation, UpdateByMatrix, &Transformation::updateTransformation)
PRIVATE_MEMBER(updateTranslation, UpdateByTranslation, &Translation::updateTransformation)
PRIVATE_MEMBER(updateRotation, UpdateByAngle, &Rotation::updateTransformation)
PRIVATE_MEMBER(updateScale, UpdateByScale, &Scale::updateTransformation)

TEST(TransformationTest, FieldsStandInOrder)
{
    const Transformation transformation;
    EXPECT_LT(place(declaredMatrix(transformation)), place(currentMatrix(transformation)));
    EXPECT_LT(place(currentMatrix(transformation)), place(sidField(transformation)));
    EXPECT_LT(place(sidField(transformation)), place(animationField(transformation)));
    const Rotation rotation;
    EXPECT_LT(place(animationField(rotation)), place(axisField(rotation)));
    EXPECT_LT(place(axisField(rotation)), place(angleField(rotation)));
}

/// `first`, `first` + 1 and on.
Values counted(unsigned count, double first);

/// Elements `first`, `first` + 1 and on.
void expectCounted(const Matrix4& matrix, float first)
{
    for (unsigned i = 0; i < 16; ++i) {
        EXPECT_EQ(first + static_cast<float>(i), matrix[i]) << "flat index " << i;
    }
}

/// A right angle about Z turns X towards Y.
constexpr Elements quarterAboutZ{0, -1, 0, 0, 1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

/// Keys at 1, 2 and 3 seconds; as many values for each.
AnimationHandle animationOf(const std::string& values, const std::string& member = "X")
{
    return loadedCurve("node/move." + member, "1 2 3", values);
}

/// At 1.5 seconds 15, 150, 1500.
AnimationHandle vectorAnimation()
{
    return animationOf("10 100 1000 20 200 2000 40 400 4000");
}

/// At 1.5 seconds 90.
AnimationHandle angleAnimation()
{
    return animationOf("0 180 360", "ANGLE");
}

/// At 1 second 100, 101 and on, at 1.5 seconds 150, 151 and on, at 2 seconds 200, 201 and on.
AnimationHandle matrixAnimation();

/// Exposes the protected constructor.
class NamedTransformation : public Transformation {
public:
    explicit NamedTransformation(const vesk::String& sid) : Transformation(sid) {}
};

// ---- construction

template <class Kind>
class TransformationFamilyTest : public testing::Test {};

using Family = testing::Types<Transformation, Translation, Rotation, Scale, View, Skew>;
struct FamilyNames {
    template <class Kind>
    static std::string GetName(int index)
    {
        static const char* const names[] = {"Transformation", "Translation", "Rotation", "Scale", "View", "Skew"};
        return names[index];
    }
};

TYPED_TEST_SUITE(TransformationFamilyTest, Family, FamilyNames);

TYPED_TEST(TransformationFamilyTest, DefaultHasAZeroMatrixDeclaredAndNoHandles)
{
    TypeParam transformation;
    expectSame(zero, elements(declaredMatrix(transformation)));
    EXPECT_EQ(nullptr, transformation.transformation());
    EXPECT_EQ(0u, transformation.transformation().useCount());
    EXPECT_EQ(nullptr, animationField(transformation));
    EXPECT_TRUE(transformation.sid().empty());
    EXPECT_EQ(nullptr, transformation.transformationAtTime(1.5));
}

TYPED_TEST(TransformationFamilyTest, SidIsAssignedAndReturned)
{
    TypeParam transformation;
    const vesk::String& result = transformation.setSid("turn");
    EXPECT_EQ(&transformation.sid(), &result);
    EXPECT_STREQ("turn", transformation.sid().data());
    EXPECT_EQ(&sidField(transformation), &transformation.sid());
    transformation.setSid("");
    EXPECT_TRUE(transformation.sid().empty());
}

TYPED_TEST(TransformationFamilyTest, TransformationIsTheFieldItself)
{
    TypeParam transformation;
    EXPECT_EQ(&currentMatrix(transformation), &transformation.transformation());
    EXPECT_EQ(&currentMatrix(transformation), &transformation.transformationAtTime(2.0));
}

TYPED_TEST(TransformationFamilyTest, SecondAnimationReleasesTheFirst)
{
    const AnimationHandle first = vectorAnimation();
    const AnimationHandle second = vectorAnimation();
    {
        TypeParam transformation;
        transformation.setAnimation(first);
        EXPECT_EQ(2u, first.useCount());
        EXPECT_EQ(first, animationField(transformation));
        transformation.setAnimation(second);
        EXPECT_EQ(1u, first.useCount());
        EXPECT_EQ(2u, second.useCount());
        EXPECT_EQ(second, animationField(transformation));
        transformation.setAnimation(second);
        EXPECT_EQ(2u, second.useCount());
        transformation.setAnimation(AnimationHandle());
        EXPECT_EQ(1u, second.useCount());
        EXPECT_EQ(nullptr, animationField(transformation));
        transformation.setAnimation(first);
    }
    EXPECT_EQ(1u, first.useCount());
}

TYPED_TEST(TransformationFamilyTest, LastHandleReleasesMatrixAndAnimation)
{
    const AnimationHandle animation = vectorAnimation();
    MatrixHandle matrix;
    {
        TransformationHandle owner(new TypeParam());
        // Called through the base class, because some classes hide this function.
        owner->setTransformation(counted(16, 1));
        owner->setAnimation(animation);
        matrix = owner->transformation();
        EXPECT_EQ(2u, matrix.useCount());
        EXPECT_EQ(2u, animation.useCount());
    }
    EXPECT_EQ(1u, matrix.useCount());
    EXPECT_EQ(1u, animation.useCount());
}

TYPED_TEST(TransformationFamilyTest, CopyAndAssignmentShareBothHandles)
{
    const AnimationHandle animation = vectorAnimation();
    TypeParam source;
    static_cast<Transformation&>(source).setTransformation(counted(16, 1));
    source.setSid("source");
    source.setAnimation(animation);
    TypeParam copy(source);
    TypeParam assigned;
    static_cast<Transformation&>(assigned).setTransformation(counted(16, 50));
    const MatrixHandle old = assigned.transformation();
    assigned = source;
    EXPECT_EQ(1u, old.useCount());
    for (TypeParam* const other : {&copy, &assigned}) {
        EXPECT_EQ(source.transformation(), other->transformation());
        EXPECT_EQ(animation, animationField(*other));
        EXPECT_STREQ("source", other->sid().data());
        for (unsigned i = 0; i < 16; ++i) {
            EXPECT_EQ(declaredMatrix(source)[i], declaredMatrix(*other)[i]);
        }
    }
    EXPECT_EQ(3u, source.transformation().useCount());
    EXPECT_EQ(4u, animation.useCount());
    copy.setSid("copy");
    EXPECT_STREQ("source", source.sid().data());
    TypeParam& self = assigned;
    assigned = self;
    EXPECT_EQ(source.transformation(), assigned.transformation());
    EXPECT_EQ(3u, source.transformation().useCount());
}

TYPED_TEST(TransformationFamilyTest, WithoutAnimationAnyTimeGivesTheSameHandleAndAllocatesNothing)
{
    TypeParam transformation;
    static_cast<Transformation&>(transformation).setTransformation(counted(16, 1));
    const MatrixHandle matrix = transformation.transformation();
    const std::vector<double> times = {0.0, 1.5, -7.0, 1e300, std::numeric_limits<double>::quiet_NaN()};
    long requests = -1;
    bool isSame = true;
    {
        const FailingAllocator allocator(-1);
        for (const double time : times) {
            const MatrixHandle& result = transformation.transformationAtTime(time);
            isSame = isSame && &result == &transformation.transformation() && result == matrix;
        }
        requests = allocator.requests();
    }
    EXPECT_TRUE(isSame);
    EXPECT_EQ(0, requests);
    EXPECT_EQ(2u, matrix.useCount());
}

// Most matrices of a scene are never requested individually.
TEST(TransformationTest, DeclaredMatrixIsMadeWhenItIsAskedFor)
{
    Translation translation(valuesOf({1, 2, 3}), "t");
    FailingAllocator allocator(-1);
    EXPECT_EQ(1u, translation.transformation().useCount());
    EXPECT_EQ(1, allocator.requests());
    EXPECT_EQ(1u, translation.transformation().useCount());
    EXPECT_EQ(1, allocator.requests());
    expectSame(translated(1, 2, 3), elements(*translation.transformation()));
}

TEST(TransformationTest, DeclaredMatrixThatCannotBeMadeIsMadeLater)
{
    Scale scale(valuesOf({1, 2, 3}), "s");
    {
        const FailingAllocator allocator(0);
        EXPECT_THROW(scale.transformation(), std::bad_alloc);
    }
    expectSame(scaled(1, 2, 3), elements(*scale.transformation()));
}

TEST(TransformationTest, CopyMadeBeforeAnyQuestionSharesTheMatrix)
{
    Rotation rotation(valuesOf({0, 0, 1, 90}), "r");
    Rotation copy(rotation);
    Rotation assigned;
    assigned = rotation;
    EXPECT_EQ(rotation.transformation(), copy.transformation());
    EXPECT_EQ(rotation.transformation(), assigned.transformation());
    EXPECT_EQ(3u, rotation.transformation().useCount());
    expectNear(quarterAboutZ, elements(*copy.transformation()));
}

TEST(TransformationTest, DeclarationAfterACopyIsItsOwn)
{
    Translation translation(valuesOf({1, 2, 3}), "t");
    Translation copy(translation);
    translation.setTransformation(valuesOf({4, 5, 6}));
    copy = Translation(valuesOf({7, 8, 9}), "c");
    expectSame(translated(4, 5, 6), elements(*translation.transformation()));
    expectSame(translated(7, 8, 9), elements(*copy.transformation()));
}

TEST(TransformationTest, DefaultVectorsAreZero)
{
    EXPECT_EQ(triple(0, 0, 0), triple(translationField(Translation())));
    EXPECT_EQ(triple(0, 0, 0), triple(scaleField(Scale())));
    EXPECT_EQ(triple(0, 0, 0), triple(axisField(Rotation())));
}

TEST(TransformationTest, SidAloneMakesNoMatrix)
{
    NamedTransformation transformation("turn");
    EXPECT_STREQ("turn", transformation.sid().data());
    EXPECT_EQ(nullptr, transformation.transformation());
    expectSame(zero, elements(declaredMatrix(transformation)));
    EXPECT_EQ(nullptr, animationField(transformation));
}

TEST(TransformationTest, ConstructorsStoreTheSid)
{
    const double nine[9] = {1, 2, 3, 4, 5, 6, 7, 8, 9};
    EXPECT_STREQ("m", Transformation(counted(16, 1), "m").sid().data());
    EXPECT_STREQ("t", Translation(counted(3, 1), "t").sid().data());
    EXPECT_STREQ("r", Rotation(counted(4, 1), "r").sid().data());
    EXPECT_STREQ("s", Scale(counted(3, 1), "s").sid().data());
    EXPECT_STREQ("v", View(nine, "v").sid().data());
    EXPECT_STREQ("k", Skew(nine, "k").sid().data());
}

TEST(TransformationTest, NothingIsLogged)
{
    LogCapture log;
    Rotation(valuesOf({0, 0, 0, 90}), "r");
    Transformation(valuesOf({}), "m");
    Translation(valuesOf({}), "t");
    Scale(valuesOf({1}), "s");
    View(nullptr, "v");
    Skew(nullptr, "k");
    Transformation animated;
    animated.setAnimation(matrixAnimation());
    EXPECT_THROW(animated.transformationAtTime(1.5), vesk::NullPointer);
    EXPECT_EQ("", log.text());
}

// ---- what a document declares

TEST(TransformationTest, MatrixIsStoredTwiceInFlatRowMajorOrder)
{
    Transformation transformation(counted(16, 1), "m");
    expectCounted(declaredMatrix(transformation), 1);
    ASSERT_NE(nullptr, transformation.transformation());
    expectCounted(*transformation.transformation(), 1);
    EXPECT_EQ(4.0f, (*transformation.transformation())(0, 3));
    EXPECT_EQ(13.0f, (*transformation.transformation())(3, 0));
    EXPECT_NE(&declaredMatrix(transformation), transformation.transformation().get());
}

TEST(TransformationTest, MatrixValuesNarrow)
{
    Transformation transformation(valuesOf({0.1, 16777217}), "m");
    EXPECT_EQ(0.1f, (*transformation.transformation())[0]);
    EXPECT_EQ(16777216.0f, (*transformation.transformation())[1]);
    EXPECT_EQ(0.1f, declaredMatrix(transformation)[0]);
}

TEST(TransformationTest, MissingMatrixValuesAreZeroAndNotTheIdentity)
{
    Transformation transformation(valuesOf({1, 2, 3}), "m");
    const Elements expected{1, 2, 3};
    expectSame(expected, elements(*transformation.transformation()));
    expectSame(expected, elements(declaredMatrix(transformation)));
    EXPECT_TRUE(transformation.setTransformation(valuesOf({})));
    expectSame(zero, elements(*transformation.transformation()));
    expectSame(zero, elements(declaredMatrix(transformation)));
}

TEST(TransformationTest, ValuesBeyondTheNeededAreIgnored)
{
    Transformation transformation(counted(20, 1), "m");
    expectCounted(*transformation.transformation(), 1);
    expectSame(translated(1, 2, 3), elements(*Translation(counted(5, 1), "t").transformation()));
    expectSame(scaled(2, 3, 4), elements(*Scale(counted(5, 2), "s").transformation()));
    expectNear(quarterAboutZ, elements(*Rotation(valuesOf({0, 0, 1, 90, 45}), "r").transformation()));
}

TEST(TransformationTest, TranslationStandsInTheFourthColumn)
{
    Translation translation(valuesOf({1, 2, 3}), "t");
    expectSame(translated(1, 2, 3), elements(*translation.transformation()));
    EXPECT_EQ(triple(1, 2, 3), triple(translationField(translation)));
    expectSame(zero, elements(declaredMatrix(translation)));
}

TEST(TransformationTest, MissingTranslationValuesAreZero)
{
    expectSame(translated(1, 2, 0), elements(*Translation(valuesOf({1, 2}), "t").transformation()));
    expectSame(translated(0, 0, 0), elements(*Translation(valuesOf({}), "t").transformation()));
}

TEST(TransformationTest, ScaleStandsOnTheDiagonal)
{
    Scale scale(valuesOf({2, 3, 4}), "s");
    expectSame(scaled(2, 3, 4), elements(*scale.transformation()));
    EXPECT_EQ(triple(2, 3, 4), triple(scaleField(scale)));
    expectSame(zero, elements(declaredMatrix(scale)));
}

TEST(TransformationTest, MissingScaleValuesAreZero)
{
    expectSame(scaled(2, 0, 0), elements(*Scale(valuesOf({2}), "s").transformation()));
    expectSame(scaled(0, 0, 0), elements(*Scale(valuesOf({}), "s").transformation()));
}

TEST(TransformationTest, ValuesOfVectorsNarrow)
{
    expectSame(translated(0.1f, 16777216.0f, -0.1f),
               elements(*Translation(valuesOf({0.1, 16777217, -0.1}), "t").transformation()));
    expectSame(scaled(0.1f, 16777216.0f, -0.1f),
               elements(*Scale(valuesOf({0.1, 16777217, -0.1}), "s").transformation()));
}

TEST(TransformationTest, RotationNormalizesItsAxis)
{
    Rotation rotation(valuesOf({0, 0, 2, 90}), "r");
    expectNear(quarterAboutZ, elements(*rotation.transformation()));
    EXPECT_FLOAT_EQ(-1.0f, (*rotation.transformation())(0, 1));
    EXPECT_FLOAT_EQ(1.0f, (*rotation.transformation())(1, 0));
    EXPECT_EQ(triple(0, 0, 2), triple(axisField(rotation)));
    EXPECT_EQ(90.0, angleField(rotation));
    expectSame(zero, elements(declaredMatrix(rotation)));
}

TEST(TransformationTest, RotationAboutXTurnsYTowardsZ)
{
    const Elements expected{1, 0, 0, 0, 0, 0, -1, 0, 0, 1, 0, 0, 0, 0, 0, 1};
    expectNear(expected, elements(*Rotation(valuesOf({1, 0, 0, 90}), "r").transformation()));
}

TEST(TransformationTest, RotationAboutYTurnsZTowardsX)
{
    const Elements expected{0, 0, 1, 0, 0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 0, 1};
    expectNear(expected, elements(*Rotation(valuesOf({0, 1, 0, 90}), "r").transformation()));
}

TEST(TransformationTest, RotationAboutTheDiagonalMovesEachAxisToTheNext)
{
    const Elements expected{0, 0, 1, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 1};
    expectNear(expected, elements(*Rotation(valuesOf({1, 1, 1, 120}), "r").transformation()));
}

TEST(TransformationTest, AngleBecomesRadiansInDouble)
{
    Rotation rotation(valuesOf({0, 0, 1, 33.3}), "r");
    const double radians = 33.3 * 3.141592653589793 / 180.0;
    EXPECT_EQ(33.3, angleField(rotation));
    EXPECT_EQ(static_cast<float>(std::cos(radians)), (*rotation.transformation())(0, 0));
    EXPECT_EQ(static_cast<float>(-std::sin(radians)), (*rotation.transformation())(0, 1));
    EXPECT_EQ(static_cast<float>(std::sin(radians)), (*rotation.transformation())(1, 0));
    EXPECT_EQ(1.0f, (*rotation.transformation())(2, 2));
}

TEST(TransformationTest, ZeroAxisGivesNoNumbersInTheUpperLeftBlock)
{
    Rotation rotation(valuesOf({0, 0, 0, 90}), "r");
    Matrix4& matrix = *rotation.transformation();
    for (unsigned i = 0; i < 3; ++i) {
        for (unsigned j = 0; j < 3; ++j) {
            EXPECT_TRUE(std::isnan(matrix(i, j))) << i << ' ' << j;
        }
        EXPECT_EQ(0.0f, matrix(i, 3));
        EXPECT_EQ(0.0f, matrix(3, i));
    }
    EXPECT_EQ(1.0f, matrix(3, 3));
}

TEST(TransformationTest, MissingRotationValuesAreZero)
{
    Rotation rotation(valuesOf({0, 0, 1}), "r");
    expectSame(identity, elements(*rotation.transformation()));
    EXPECT_EQ(0.0, angleField(rotation));
    Rotation empty(valuesOf({}), "r");
    EXPECT_TRUE(std::isnan((*empty.transformation())[0]));
}

TEST(TransformationTest, ViewFillsTheUpperLeftBlockByColumns)
{
    const double values[9] = {1, 2, 3, 4, 5, 6, 7, 8, 9};
    View view(values, "v");
    const Elements expected{1, 4, 7, 0, 2, 5, 8, 0, 3, 6, 9, 0, 0, 0, 0, 0};
    expectSame(expected, elements(*view.transformation()));
    expectSame(zero, elements(declaredMatrix(view)));
    const double narrow[9] = {0.1, 16777217};
    EXPECT_TRUE(view.setTransformation(narrow));
    EXPECT_EQ(0.1f, (*view.transformation())(0, 0));
    EXPECT_EQ(16777216.0f, (*view.transformation())(1, 0));
}

TEST(TransformationTest, ViewOfNoValuesChangesNothing)
{
    View empty(nullptr, "v");
    EXPECT_STREQ("v", empty.sid().data());
    EXPECT_EQ(nullptr, empty.transformation());
    EXPECT_FALSE(empty.setTransformation(nullptr));
    EXPECT_EQ(nullptr, empty.transformation());
    const double values[9] = {1, 2, 3, 4, 5, 6, 7, 8, 9};
    EXPECT_TRUE(empty.setTransformation(values));
    const MatrixHandle before = empty.transformation();
    EXPECT_FALSE(empty.setTransformation(nullptr));
    EXPECT_EQ(before, empty.transformation());
    EXPECT_EQ(9.0f, (*before)(2, 2));
}

TEST(TransformationTest, SkewIsTheIdentityWhateverItsValues)
{
    Skew null(nullptr, "k");
    expectSame(identity, elements(*null.transformation()));
    const double values[7] = {45, 0, 1, 0, 1, 0, 0};
    Skew skew(values, "k");
    expectSame(identity, elements(*skew.transformation()));
    expectSame(zero, elements(declaredMatrix(skew)));
    const MatrixHandle before = skew.transformation();
    EXPECT_TRUE(skew.setTransformation(nullptr));
    EXPECT_NE(before, skew.transformation());
    EXPECT_EQ(1u, before.useCount());
    expectSame(identity, elements(*skew.transformation()));
}

TEST(TransformationTest, ViewAndSkewInheritTheOperationOnDocumentValues)
{
    View view;
    EXPECT_TRUE(static_cast<Transformation&>(view).setTransformation(counted(16, 1)));
    expectCounted(*view.transformation(), 1);
    EXPECT_TRUE(view.Transformation::setTransformation(counted(16, 2)));
    expectCounted(*view.transformation(), 2);
    EXPECT_TRUE(view.Transformation::setTransformation(counted(16, 1)));
    expectCounted(declaredMatrix(view), 1);
    Skew skew;
    EXPECT_TRUE(static_cast<Transformation&>(skew).setTransformation(counted(16, 1)));
    expectCounted(*skew.transformation(), 1);
    expectCounted(declaredMatrix(skew), 1);
}

TEST(TransformationTest, SetOperationsAreVirtual)
{
    Translation translation;
    EXPECT_TRUE(static_cast<Transformation&>(translation).setTransformation(valuesOf({1, 2, 3})));
    expectSame(translated(1, 2, 3), elements(*translation.transformation()));
    expectSame(zero, elements(declaredMatrix(translation)));
    Scale scale;
    EXPECT_TRUE(static_cast<Transformation&>(scale).setTransformation(valuesOf({2, 3, 4})));
    expectSame(scaled(2, 3, 4), elements(*scale.transformation()));
    expectSame(zero, elements(declaredMatrix(scale)));
    Rotation rotation;
    EXPECT_TRUE(static_cast<Transformation&>(rotation).setTransformation(valuesOf({0, 0, 1, 90})));
    expectNear(quarterAboutZ, elements(*rotation.transformation()));
    expectSame(zero, elements(declaredMatrix(rotation)));
}

TYPED_TEST(TransformationFamilyTest, SetOperationMakesANewMatrixAndReleasesTheOld)
{
    TypeParam object;
    Transformation& transformation = object;
    EXPECT_TRUE(transformation.setTransformation(counted(16, 1)));
    const MatrixHandle before = transformation.transformation();
    const Matrix4 content = *before;
    EXPECT_EQ(2u, before.useCount());
    EXPECT_TRUE(transformation.setTransformation(counted(16, 5)));
    EXPECT_NE(before, transformation.transformation());
    EXPECT_EQ(1u, before.useCount());
    EXPECT_EQ(1u, transformation.transformation().useCount());
    for (unsigned i = 0; i < 16; ++i) {
        EXPECT_EQ(content[i], (*before)[i]);
    }
}

TEST(TransformationTest, ViewReleasesItsOldMatrix)
{
    const double values[9] = {1, 2, 3, 4, 5, 6, 7, 8, 9};
    View view(values, "v");
    const MatrixHandle before = view.transformation();
    EXPECT_TRUE(view.setTransformation(values));
    EXPECT_NE(before, view.transformation());
    EXPECT_EQ(1u, before.useCount());
}

// ---- the private steps

TEST(TransformationTest, UpdateOfTheBaseWritesInPlace)
{
    Transformation transformation(counted(16, 1), "m");
    const MatrixHandle shared = transformation.transformation();
    Matrix4 other;
    for (unsigned i = 0; i < 16; ++i) {
        other[i] = 30.0f + static_cast<float>(i);
    }
    updateTransformation(transformation, other);
    EXPECT_EQ(shared, transformation.transformation());
    expectCounted(*shared, 30);
    expectCounted(declaredMatrix(transformation), 1);
}

TEST(TransformationTest, UpdatesOfSubclassesMakeANewMatrixAndStoreNothing)
{
    Translation translation(valuesOf({1, 2, 3}), "t");
    const MatrixHandle oldTranslation = translation.transformation();
    updateTranslation(translation, Vector3(7, 8, 9));
    expectSame(translated(7, 8, 9), elements(*translation.transformation()));
    expectSame(translated(1, 2, 3), elements(*oldTranslation));
    EXPECT_EQ(1u, oldTranslation.useCount());
    EXPECT_EQ(triple(1, 2, 3), triple(translationField(translation)));

    Scale scale(valuesOf({1, 2, 3}), "s");
    const MatrixHandle oldScale = scale.transformation();
    updateScale(scale, Vector3(7, 8, 9));
    expectSame(scaled(7, 8, 9), elements(*scale.transformation()));
    expectSame(scaled(1, 2, 3), elements(*oldScale));
    EXPECT_EQ(1u, oldScale.useCount());
    EXPECT_EQ(triple(1, 2, 3), triple(scaleField(scale)));

    Rotation rotation(valuesOf({0, 0, 1, 0}), "r");
    const MatrixHandle oldRotation = rotation.transformation();
    updateRotation(rotation, 90.0);
    expectNear(quarterAboutZ, elements(*rotation.transformation()));
    expectSame(identity, elements(*oldRotation));
    EXPECT_EQ(1u, oldRotation.useCount());
    EXPECT_EQ(0.0, angleField(rotation));
}

// ---- animated

TEST(TransformationTest, MatrixAnimationWritesIntoTheMatrixThatIsThere)
{
    Transformation transformation(counted(16, 1), "m");
    const MatrixHandle shared = transformation.transformation();
    transformation.setAnimation(matrixAnimation());
    expectCounted(*shared, 1);
    const MatrixHandle& result = transformation.transformationAtTime(1.5);
    EXPECT_EQ(&transformation.transformation(), &result);
    EXPECT_EQ(shared, result);
    expectCounted(*shared, 150);
    expectCounted(declaredMatrix(transformation), 1);
    EXPECT_EQ(2u, shared.useCount());
}

TEST(TransformationTest, AnimatedMatrixIsTheDeclaredOneWhereTheCurveSaysNothing)
{
    Transformation transformation(counted(16, 1), "m");
    transformation.setAnimation(matrixAnimation());
    expectCounted(*transformation.transformationAtTime(2), 200);
    expectCounted(*transformation.transformationAtTime(0), 1);
    expectCounted(*transformation.transformationAtTime(2.5), 250);
    expectCounted(*transformation.transformationAtTime(0.5), 1);
    expectCounted(*transformation.transformationAtTime(1), 100);
    expectCounted(*transformation.transformationAtTime(3), 1);
}

TEST(TransformationTest, AnimationOfAnotherSizeLeavesTheDeclaredMatrixAtAKey)
{
    Transformation transformation(counted(16, 1), "m");
    transformation.setAnimation(vectorAnimation());
    expectCounted(*transformation.transformationAtTime(1), 1);
    expectIndexOutOfBounds(2, 3, [&] { transformation.transformationAtTime(1.5); });
    expectCounted(*transformation.transformation(), 1);
}

TEST(TransformationTest, LastEvaluatedMatrixStays)
{
    const double times[] = {1.5, 0.0, 2.0};
    Transformation matrix(counted(16, 1), "m");
    matrix.setAnimation(matrixAnimation());
    Translation translation(valuesOf({1, 2, 3}), "t");
    translation.setAnimation(vectorAnimation());
    const float expected[] = {150, 1, 200};
    const float expectedX[] = {15, 1, 20};
    for (unsigned i = 0; i < 3; ++i) {
        matrix.transformationAtTime(times[i]);
        EXPECT_EQ(expected[i], (*matrix.transformation())[0]);
        translation.transformationAtTime(times[i]);
        EXPECT_EQ(expectedX[i], (*translation.transformation())(0, 3));
    }
    matrix.setAnimation(AnimationHandle());
    EXPECT_EQ(200.0f, (*matrix.transformationAtTime(1.5))[0]);
}

TEST(TransformationTest, TranslationAnimationMakesANewMatrix)
{
    Translation translation(valuesOf({1, 2, 3}), "t");
    translation.setAnimation(vectorAnimation());
    const MatrixHandle before = translation.transformation();
    const MatrixHandle& result = translation.transformationAtTime(1.5);
    EXPECT_EQ(&translation.transformation(), &result);
    expectSame(translated(15, 150, 1500), elements(*result));
    expectSame(translated(1, 2, 3), elements(*before));
    EXPECT_NE(before, result);
    EXPECT_EQ(1u, before.useCount());
    EXPECT_EQ(triple(1, 2, 3), triple(translationField(translation)));
    expectSame(translated(1, 2, 3), elements(*translation.transformationAtTime(0)));
    expectSame(zero, elements(declaredMatrix(translation)));
}

TEST(TransformationTest, ScaleAnimationMakesANewMatrix)
{
    Scale scale(valuesOf({1, 2, 3}), "s");
    scale.setAnimation(vectorAnimation());
    const MatrixHandle before = scale.transformation();
    const MatrixHandle& result = scale.transformationAtTime(1.5);
    EXPECT_EQ(&scale.transformation(), &result);
    expectSame(scaled(15, 150, 1500), elements(*result));
    expectSame(scaled(1, 2, 3), elements(*before));
    EXPECT_NE(before, result);
    EXPECT_EQ(1u, before.useCount());
    EXPECT_EQ(triple(1, 2, 3), triple(scaleField(scale)));
    expectSame(scaled(1, 2, 3), elements(*scale.transformationAtTime(0)));
    expectSame(zero, elements(declaredMatrix(scale)));
}

TEST(TransformationTest, RotationAnimationDrivesTheAngleAlone)
{
    Rotation rotation(valuesOf({0, 0, 2, 30}), "r");
    rotation.setAnimation(angleAnimation());
    const MatrixHandle before = rotation.transformation();
    const Matrix4 declared = *before;
    const MatrixHandle& result = rotation.transformationAtTime(1.5);
    EXPECT_EQ(&rotation.transformation(), &result);
    expectNear(quarterAboutZ, elements(*result));
    EXPECT_NE(before, result);
    EXPECT_EQ(1u, before.useCount());
    EXPECT_EQ(30.0, angleField(rotation));
    EXPECT_EQ(triple(0, 0, 2), triple(axisField(rotation)));
    // A half turn, at the second key.
    const Elements half{-1, 0, 0, 0, 0, -1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    expectNear(half, elements(*rotation.transformationAtTime(2)));
    const Matrix4& again = *rotation.transformationAtTime(0);
    for (unsigned i = 0; i < 16; ++i) {
        EXPECT_EQ(declared[i], again[i]);
        EXPECT_EQ(declared[i], (*before)[i]);
    }
}

TEST(TransformationTest, RotationAnimationDrivesTheAngleWhateverMemberItNamed)
{
    Rotation rotation(valuesOf({0, 0, 1, 30}), "r");
    rotation.setAnimation(animationOf("0 180 360", "X"));
    expectNear(quarterAboutZ, elements(*rotation.transformationAtTime(1.5)));
    rotation.setAnimation(animationOf("0 7 7 7 180 7 7 7 360 7 7 7", "ANGLE"));
    expectNear(quarterAboutZ, elements(*rotation.transformationAtTime(1.5))); // the first of four values
}

TEST(TransformationTest, OneValueForEachKeyDoesNotDriveOneComponent)
{
    Translation translation(valuesOf({1, 2, 3}), "t");
    translation.setAnimation(animationOf("10 20 40", "X"));
    expectSame(translated(1, 2, 3), elements(*translation.transformationAtTime(1)));
    expectIndexOutOfBounds(0, 1, [&] { translation.transformationAtTime(1.5); });
    expectSame(translated(1, 2, 3), elements(*translation.transformation()));
    Scale scale(valuesOf({1, 2, 3}), "s");
    scale.setAnimation(animationOf("10 20 40", "X"));
    expectSame(scaled(1, 2, 3), elements(*scale.transformationAtTime(2)));
    expectIndexOutOfBounds(0, 1, [&] { scale.transformationAtTime(1.5); });
}

TEST(TransformationTest, EvaluationIsVirtual)
{
    Translation translation(valuesOf({1, 2, 3}), "t");
    translation.setAnimation(vectorAnimation());
    expectSame(translated(15, 150, 1500),
               elements(*static_cast<Transformation&>(translation).transformationAtTime(1.5)));
    Scale scale(valuesOf({1, 2, 3}), "s");
    scale.setAnimation(vectorAnimation());
    expectSame(scaled(15, 150, 1500), elements(*static_cast<Transformation&>(scale).transformationAtTime(1.5)));
    Rotation rotation(valuesOf({0, 0, 1, 0}), "r");
    rotation.setAnimation(angleAnimation());
    expectNear(quarterAboutZ, elements(*static_cast<Transformation&>(rotation).transformationAtTime(1.5)));
}

TEST(TransformationTest, AnimatedViewAndSkewRestAtTheirZeroMatrix)
{
    const double values[9] = {1, 2, 3, 4, 5, 6, 7, 8, 9};
    View view(values, "v");
    view.setAnimation(matrixAnimation());
    const MatrixHandle sharedView = view.transformation();
    expectCounted(*view.transformationAtTime(1.5), 150);
    EXPECT_EQ(sharedView, view.transformation());
    expectSame(zero, elements(*view.transformationAtTime(0)));
    Skew skew(nullptr, "k");
    skew.setAnimation(matrixAnimation());
    const MatrixHandle sharedSkew = skew.transformation();
    expectCounted(*skew.transformationAtTime(1.5), 150);
    EXPECT_EQ(sharedSkew, skew.transformation());
    expectSame(zero, elements(*skew.transformationAtTime(0)));
}

TEST(TransformationTest, CopyOfTheBaseFollowsItsSource)
{
    Transformation source(counted(16, 1), "m");
    source.setAnimation(matrixAnimation());
    Transformation copy(source);
    source.transformationAtTime(1.5);
    EXPECT_EQ(source.transformation(), copy.transformation());
    expectCounted(*copy.transformation(), 150);
    copy.transformationAtTime(0);
    expectCounted(*source.transformation(), 1);
}

TEST(TransformationTest, CopiesOfSubclassesKeepTheirMatrix)
{
    Translation translation(valuesOf({1, 2, 3}), "t");
    translation.setAnimation(vectorAnimation());
    Translation translationCopy(translation);
    translation.transformationAtTime(1.5);
    expectSame(translated(15, 150, 1500), elements(*translation.transformation()));
    expectSame(translated(1, 2, 3), elements(*translationCopy.transformation()));
    expectSame(translated(20, 200, 2000), elements(*translationCopy.transformationAtTime(2)));
    expectSame(translated(15, 150, 1500), elements(*translation.transformation()));

    Scale scale(valuesOf({1, 2, 3}), "s");
    scale.setAnimation(vectorAnimation());
    Scale scaleCopy(scale);
    scale.transformationAtTime(1.5);
    expectSame(scaled(1, 2, 3), elements(*scaleCopy.transformation()));
    EXPECT_EQ(triple(1, 2, 3), triple(scaleField(scaleCopy)));

    Rotation rotation(valuesOf({0, 0, 1, 0}), "r");
    rotation.setAnimation(angleAnimation());
    Rotation rotationCopy(rotation);
    rotation.transformationAtTime(1.5);
    expectSame(identity, elements(*rotationCopy.transformation()));
    EXPECT_EQ(triple(0, 0, 1), triple(axisField(rotationCopy)));
    EXPECT_EQ(0.0, angleField(rotationCopy));
}

TEST(TransformationTest, AnimationWithoutAMatrixThrows)
{
    Transformation transformation;
    transformation.setAnimation(matrixAnimation());
    View view(nullptr, "v");
    view.setAnimation(matrixAnimation());
    Skew skew;
    skew.setAnimation(matrixAnimation());
    for (Transformation* const object :
         {&transformation, static_cast<Transformation*>(&view), static_cast<Transformation*>(&skew)}) {
        for (const double time : {0.0, 1.5}) {
            try {
                object->transformationAtTime(time);
                ADD_FAILURE() << "nothing thrown";
            } catch (const vesk::NullPointer& thrown) {
                EXPECT_FALSE(thrown.message().empty());
            }
        }
        EXPECT_EQ(nullptr, object->transformation());
    }
}

TEST(TransformationTest, AnimatedSubclassesNeedNoMatrixBefore)
{
    Translation translation;
    translation.setAnimation(vectorAnimation());
    expectSame(identity, elements(*translation.transformationAtTime(0)));
    expectSame(translated(15, 150, 1500), elements(*translation.transformationAtTime(1.5)));
    Scale scale;
    scale.setAnimation(vectorAnimation());
    expectSame(scaled(0, 0, 0), elements(*scale.transformationAtTime(0)));
    expectSame(scaled(15, 150, 1500), elements(*scale.transformationAtTime(1.5)));
}

TEST(TransformationTest, AnimatedBaseAllocatesNothingAndSubclassesAMatrix)
{
    Transformation matrix(counted(16, 1), "m");
    matrix.setAnimation(matrixAnimation());
    Translation translation(valuesOf({1, 2, 3}), "t");
    translation.setAnimation(vectorAnimation());
    ASSERT_NE(nullptr, matrix.transformation()); // exists by now
    long inPlace = -1;
    long anew = -1;
    {
        const FailingAllocator allocator(-1);
        matrix.transformationAtTime(1.5);
        inPlace = allocator.requests();
        translation.transformationAtTime(1.5);
        anew = allocator.requests() - inPlace;
    }
    EXPECT_EQ(0, inPlace);
    EXPECT_GT(anew, 0);
}

TEST(TransformationTest, SharedAnimationServesSeveralTransformations)
{
    const AnimationHandle animation = vectorAnimation();
    Translation translation(valuesOf({1, 2, 3}), "t");
    Scale scale(valuesOf({4, 5, 6}), "s");
    translation.setAnimation(animation);
    scale.setAnimation(animation);
    EXPECT_EQ(3u, animation.useCount());
    expectSame(translated(15, 150, 1500), elements(*translation.transformationAtTime(1.5)));
    expectSame(scaled(4, 5, 6), elements(*scale.transformationAtTime(0)));
    expectSame(scaled(20, 200, 2000), elements(*scale.transformationAtTime(2)));
    expectSame(translated(15, 150, 1500), elements(*translation.transformation()));
}

static_assert(std::has_virtual_destructor_v<Transformation>);
static_assert(std::is_base_of_v<Transformation, Translation> && std::is_base_of_v<Transformation, Rotation> &&
              std::is_base_of_v<Transformation, Scale> && std::is_base_of_v<Transformation, View> &&
              std::is_base_of_v<Transformation, Skew>);
static_assert(std::is_convertible_v<Translation*, Transformation*> &&
              std::is_convertible_v<Rotation*, Transformation*> && std::is_convertible_v<Scale*, Transformation*> &&
              std::is_convertible_v<View*, Transformation*> && std::is_convertible_v<Skew*, Transformation*>);
static_assert(sizeof(View) == sizeof(Transformation) && sizeof(Skew) == sizeof(Transformation));
static_assert(!std::is_constructible_v<Transformation, const vesk::String&>);
static_assert(
    std::is_same_v<bool, decltype(std::declval<Transformation&>().setTransformation(std::declval<const Values&>()))>);
static_assert(std::is_same_v<const MatrixHandle&, decltype(std::declval<Transformation&>().transformationAtTime(0.0))>);
static_assert(std::is_same_v<const MatrixHandle&, decltype(std::declval<Transformation&>().transformation())>);
static_assert(std::is_same_v<const vesk::String&, decltype(std::declval<const Transformation&>().sid())>);
static_assert(std::is_same_v<const vesk::String&, decltype(std::declval<Transformation&>().setSid("x"))>);
static_assert(
    std::is_same_v<bool, decltype(std::declval<View&>().setTransformation(static_cast<const double*>(nullptr)))>);
static_assert(
    std::is_same_v<bool, decltype(std::declval<Skew&>().setTransformation(static_cast<const double*>(nullptr)))>);

/// Whether `setTransformation` accepts the values of a document.
template <class Type, class = void>
struct TakesDocumentValues : std::false_type {};
template <class Type>
struct TakesDocumentValues<
    Type, std::void_t<decltype(std::declval<Type&>().setTransformation(std::declval<const Values&>()))>>
    : std::true_type {};
static_assert(TakesDocumentValues<Scale>::value);
static_assert(!TakesDocumentValues<View>::value && !TakesDocumentValues<Skew>::value);

Values counted(unsigned count, double first)
{
    Values values;
    for (unsigned i = 0; i < count; ++i) {
        values.append(first + i);
    }
    return values;
}

AnimationHandle matrixAnimation()
{
    std::string values;
    for (int key = 1; key <= 3; ++key) {
        for (int i = 0; i < 16; ++i) {
            values += std::to_string(100 * key + i) + " ";
        }
    }
    return animationOf(values);
}

} // namespace
