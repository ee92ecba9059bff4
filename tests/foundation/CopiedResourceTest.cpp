#include "support/FoundationTest.h"

using namespace testSupport;
using namespace vesk;

namespace {

struct Target {
    explicit Target(int targetNumber = 0) : number(targetNumber) { ++alive; }
    Target(const Target&) = delete;
    Target& operator=(const Target&) = delete;
    ~Target() { --alive; }
    int number;
    static int alive;
};

int Target::alive = 0;

using Link = CopiedResource<PointerStorage<Target, 3, 2>>;
using Handle = SharedResource<PointerStorage<Target, 0, 3>, 0>;
using ByteLink = CopiedResource<PointerStorage<unsigned char, 3, 2>>;

struct Unfinished; // a handle may name an incomplete class
using UnfinishedLink = CopiedResource<PointerStorage<Unfinished, 3, 2>>;

class CopiedResourceTest : public testing::Test {
public:
    CopiedResourceTest() { Target::alive = 0; }
};

} // namespace

template class vesk::CopiedResource<PointerStorage<Target, 3, 2>>;
template class vesk::CopiedResource<PointerStorage<unsigned char, 3, 2>>;

TEST_F(CopiedResourceTest, IsOnePointer)
{
    EXPECT_EQ(sizeof(Link), sizeof(void*));
    EXPECT_FALSE(std::is_polymorphic<Link>::value);
    Target target;
    const Link link(&target);
    const Target* stored = nullptr;
    std::memcpy(&stored, &link, sizeof(stored));
    EXPECT_EQ(stored, &target);
}

TEST_F(CopiedResourceTest, DefaultConstructedHoldsTheNullValue)
{
    const Link link;
    EXPECT_EQ(link.get(), (PointerStorage<Target, 3, 2>::nullValue));
    EXPECT_EQ(nullptr, link.get());
    EXPECT_EQ(nullptr, link.operator->());
    EXPECT_FALSE(link);
}

TEST_F(CopiedResourceTest, ConstructionAndAssignmentTakeAPointer)
{
    Target first(1);
    Target second(2);
    Link link(&first);
    EXPECT_EQ(link.get(), &first);
    EXPECT_EQ(1, link->number);
    EXPECT_EQ(&*link, &first);
    EXPECT_TRUE(link);
    link = &second;
    EXPECT_EQ(link.get(), &second);
    link = nullptr;
    EXPECT_FALSE(link);
}

TEST_F(CopiedResourceTest, ConstructionFromOwningHandleDoesNotRaiseTheCount)
{
    const Handle handle(new Target(3));
    const Link link(handle);
    EXPECT_EQ(link.get(), handle.get());
    EXPECT_EQ(1u, handle.useCount());
}

TEST_F(CopiedResourceTest, AssignmentFromOwningHandleDoesNotRaiseTheCount)
{
    const Handle handle(new Target(3));
    Link link;
    link = handle;
    EXPECT_EQ(link.get(), handle.get());
    EXPECT_EQ(1u, handle.useCount());
    link = Handle();
    EXPECT_FALSE(link);
    EXPECT_EQ(1u, handle.useCount());
}

TEST_F(CopiedResourceTest, DoesNotKeepTheResourceAlive)
{
    Handle handle(new Target);
    const Link link(handle);
    handle = Handle();
    EXPECT_EQ(0, Target::alive);
    EXPECT_NE(nullptr, link.get()); // it does not notice the destruction
}

TEST_F(CopiedResourceTest, CopyCopiesThePointer)
{
    Target target;
    const Link link(&target);
    const Link copy(link);
    EXPECT_EQ(copy.get(), &target);
    Link assigned;
    EXPECT_EQ(&(assigned = link), &assigned);
    EXPECT_EQ(assigned.get(), &target);
    EXPECT_EQ(1, Target::alive);
}

TEST_F(CopiedResourceTest, SelfAssignmentKeepsThePointer)
{
    Target target;
    Link link(&target);
    const Link& self = link;
    link = self;
    EXPECT_EQ(link.get(), &target);
}

TEST_F(CopiedResourceTest, CopyAndSourceAreIndependent)
{
    Target first;
    Target second;
    Link link(&first);
    const Link copy(link);
    link = &second;
    EXPECT_EQ(copy.get(), &first);
}

TEST_F(CopiedResourceTest, DestructionLeavesTheTargetUntouched)
{
    Target target(9);
    {
        const Link link(&target);
    }
    EXPECT_EQ(1, Target::alive);
    EXPECT_EQ(9, target.number);
}

TEST_F(CopiedResourceTest, ChangesTheTargetThroughTheHandle)
{
    Target target(1);
    const Link link(&target);
    link->number = 2;
    (*link).number += 1;
    EXPECT_EQ(3, target.number);
}

TEST_F(CopiedResourceTest, ViewsBytesThatSomethingElseOwns)
{
    unsigned char bytes[] = {1, 2, 3};
    const ByteLink link(bytes);
    EXPECT_EQ(link.get(), bytes);
    EXPECT_EQ(1, *link);
    EXPECT_EQ(3, link.get()[2]);
}

TEST_F(CopiedResourceTest, NamesAClassThatIsNotCompleteYet)
{
    const UnfinishedLink link;
    const UnfinishedLink copy(link);
    EXPECT_TRUE(link == copy);
    EXPECT_FALSE(link);
}

TEST_F(CopiedResourceTest, HandlesCompareByTheirPointer)
{
    Target first;
    Target second;
    const Link link(&first);
    EXPECT_TRUE(link == Link(&first));
    EXPECT_FALSE(link != Link(&first));
    EXPECT_TRUE(link != Link(&second));
    EXPECT_FALSE(link == Link(&second));
    EXPECT_TRUE(link != nullptr);
    EXPECT_TRUE(nullptr != link);
    EXPECT_FALSE(link == nullptr);
    EXPECT_FALSE(nullptr == link);
    EXPECT_TRUE(Link() == nullptr);
    EXPECT_TRUE(nullptr == Link());
    EXPECT_FALSE(Link() != nullptr);
    EXPECT_FALSE(nullptr != Link());
}

TEST_F(CopiedResourceTest, EmptinessTestIsExplicit)
{
    EXPECT_FALSE((std::is_convertible<Link, bool>::value));
    EXPECT_TRUE((std::is_constructible<bool, Link>::value));
}
