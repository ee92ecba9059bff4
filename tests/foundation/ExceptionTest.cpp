#include "support/FoundationTest.h"

#include <cxxabi.h>
#include <exception>
#include <typeinfo>

using namespace testSupport;
using namespace vesk;

namespace {

template <class T>
class ExceptionFamilyTest : public testing::Test {};

using Family = testing::Types<NullPointer, IndexOutOfBounds, SerializationFailed, AssertionFailure>;

struct FamilyName {
    template <class T>
    static std::string GetName(int)
    {
        const std::string names[] = {"NullPointer", "IndexOutOfBounds", "SerializationFailed", "AssertionFailure"};
        return names[std::is_same<T, IndexOutOfBounds>::value + 2 * std::is_same<T, SerializationFailed>::value +
                     3 * std::is_same<T, AssertionFailure>::value];
    }
};

TYPED_TEST_SUITE(ExceptionFamilyTest, Family, FamilyName);

template <class T>
T make();

template <>
NullPointer make()
{
    return NullPointer("a message that is long enough to have memory of its own");
}

template <>
IndexOutOfBounds make()
{
    return IndexOutOfBounds(0, 4, 9);
}

template <>
SerializationFailed make()
{
    return SerializationFailed("a message that is long enough to have memory of its own");
}

template <>
AssertionFailure make()
{
    return AssertionFailure("libVideo/SceneGraph/Accessor", 68, "index < m_count");
}

} // namespace

TYPED_TEST(ExceptionFamilyTest, DerivesFromExceptionDirectly)
{
    // A class with one public base that is not virtual names this base in its type information.
    const auto* const type = dynamic_cast<const abi::__si_class_type_info*>(&typeid(TypeParam));
    ASSERT_NE(nullptr, type);
    EXPECT_EQ(*type->__base_type, typeid(Exception));
    EXPECT_TRUE((std::is_convertible<TypeParam*, Exception*>::value));
    EXPECT_TRUE((std::is_convertible<TypeParam*, std::exception*>::value));
}

TYPED_TEST(ExceptionFamilyTest, HasVirtualDestructorAndPublicCopyConstructor)
{
    EXPECT_TRUE(std::has_virtual_destructor<TypeParam>::value);
    EXPECT_TRUE(std::is_copy_constructible<TypeParam>::value);
}

TYPED_TEST(ExceptionFamilyTest, IsCaughtByValueAsItselfAsBaseAndAsStandardException)
{
    EXPECT_THROW(throw make<TypeParam>(), TypeParam);
    EXPECT_THROW(throw make<TypeParam>(), Exception);
    EXPECT_THROW(throw make<TypeParam>(), std::exception);
}

TYPED_TEST(ExceptionFamilyTest, CopyKeepsItsMessageWhenTheFirstHasGone)
{
    auto first = std::make_unique<TypeParam>(make<TypeParam>());
    const std::string words = first->what();
    const TypeParam copy(*first);
    first.reset();
    EXPECT_EQ(copy.what(), words);
    EXPECT_FALSE(words.empty());
}

TYPED_TEST(ExceptionFamilyTest, WhatShowsTheMessage)
{
    const TypeParam exception = make<TypeParam>();
    EXPECT_STREQ(exception.what(), exception.message().data());
    const std::exception& standard = exception;
    EXPECT_STREQ(standard.what(), exception.message().data());
}

TYPED_TEST(ExceptionFamilyTest, IsMadeAndCopiedWithoutMemory)
{
    const FailingAllocator allocator(0, FailingAllocator::Failure::forGood);
    bool isCaught = false;
    try {
        throw make<TypeParam>();
    } catch (const TypeParam& exception) {
        const TypeParam copy(exception);
        isCaught = copy.what()[0] != '\0' && std::strncmp(copy.what(), exception.what(), 8) == 0;
    } catch (const std::bad_alloc&) {
        isCaught = false;
    }
    EXPECT_TRUE(isCaught);
    EXPECT_TRUE(std::is_nothrow_copy_constructible<TypeParam>::value);
}

TEST(ExceptionTest, NullPointerCarriesItsMessage)
{
    const NullPointer exception("Asked for array of size: 8");
    EXPECT_EQ(exception.message(), String("Asked for array of size: 8"));
    EXPECT_STREQ("Asked for array of size: 8", exception.what());
}

TEST(ExceptionTest, SerializationFailedCarriesItsMessage)
{
    const SerializationFailed exception("Serialization is not supported for: n\xC3\xA4me");
    EXPECT_STREQ("Serialization is not supported for: n\xC3\xA4me", exception.what());
}

TEST(ExceptionTest, IndexOutOfBoundsCarriesBoundsAndIndex)
{
    const IndexOutOfBounds exception(0, 4, 9);
    EXPECT_EQ(0, exception.low());
    EXPECT_EQ(4, exception.high());
    EXPECT_EQ(9, exception.index());
    const IndexOutOfBounds copy(exception);
    EXPECT_EQ(0, copy.low());
    EXPECT_EQ(4, copy.high());
    EXPECT_EQ(9, copy.index());
}

TEST(ExceptionTest, IndexOutOfBoundsOfAnEmptyContainerHasHighMinusOne)
{
    const IndexOutOfBounds exception(0, -1, 0);
    EXPECT_EQ(0, exception.low());
    EXPECT_EQ(-1, exception.high());
    EXPECT_EQ(0, exception.index());
}

TEST(ExceptionTest, IndexOutOfBoundsNamesItsNumbersInTheMessage)
{
    const std::string words = IndexOutOfBounds(0, 41, 973).what();
    EXPECT_NE(std::string::npos, words.find("41"));
    EXPECT_NE(std::string::npos, words.find("973"));
}

TEST(ExceptionTest, AssertionFailureCarriesFileLineAndExpression)
{
    const AssertionFailure exception("libVideo/SceneGraph/Source", 0x1FFFFFFFFull, "index < m_arrayCount");
    EXPECT_STREQ("libVideo/SceneGraph/Source", exception.file());
    EXPECT_EQ(0x1FFFFFFFFull, exception.line());
    EXPECT_STREQ("index < m_arrayCount", exception.expression());
    const AssertionFailure copy(exception);
    EXPECT_STREQ("libVideo/SceneGraph/Source", copy.file());
    EXPECT_EQ(0x1FFFFFFFFull, copy.line());
    EXPECT_STREQ("index < m_arrayCount", copy.expression());
}

TEST(ExceptionTest, AssertionFailureNamesFileLineAndExpressionInTheMessage)
{
    const std::string words = AssertionFailure("libMath/include/libMath/Matrix", 321, "x < col").what();
    EXPECT_NE(std::string::npos, words.find("libMath/include/libMath/Matrix"));
    EXPECT_NE(std::string::npos, words.find("321"));
    EXPECT_NE(std::string::npos, words.find("x < col"));
}
