#include "support/FoundationTest.h"

using namespace testSupport;
using namespace vesk;

namespace {

/// Counts its instances that are alive and those destroyed.
struct Resource {
    explicit Resource(int resourceNumber = 0) : number(resourceNumber) { ++alive; }
    Resource(const Resource&) = delete;
    Resource& operator=(const Resource&) = delete;
    ~Resource()
    {
        --alive;
        ++died;
    }

    static void reset()
    {
        alive = 0;
        died = 0;
    }

    int number;
    static int alive;
    static int died;
};

int Resource::alive = 0;
int Resource::died = 0;

using Handle = SharedResource<PointerStorage<Resource, 0, 3>, 0>;
using Link = CopiedResource<PointerStorage<Resource, 3, 2>>;
using Destroyer = SharedResourceDestroyer<PointerStorage<Resource, 0, 3>>;

class SharedResourceTest : public testing::Test {
public:
    SharedResourceTest() { Resource::reset(); }
};

} // namespace

TEST_F(SharedResourceTest, StorageHasANullPointerAsNullValue)
{
    EXPECT_EQ(nullptr, (PointerStorage<Resource, 0, 3>::nullValue));
    EXPECT_EQ(nullptr, (PointerStorage<Resource, 3, 2>::nullValue));
    EXPECT_EQ(nullptr, (PointerStorage<Resource, 0, 3>().value));
    EXPECT_EQ(sizeof(PointerStorage<Resource, 0, 3>), sizeof(void*));
}

namespace {

/// A family with a virtual destructor.
struct Base {
    virtual ~Base() = default;
};

struct Derived : Base {
    explicit Derived(int& died) : m_died(died) {}
    Derived(const Derived&) = delete;
    Derived& operator=(const Derived&) = delete;
    ~Derived() override { ++m_died; }
    int& m_died;
};

using BaseHandle = SharedResource<PointerStorage<Base, 0, 3>, 0>;

/// The three fields in memory order.
struct Fields {
    explicit Fields(const Handle& handle) { std::memcpy(words, &handle, sizeof(words)); }
    std::uintptr_t words[3];
};

} // namespace

template class vesk::SharedResource<PointerStorage<Resource, 0, 3>, 0>;
template class vesk::SharedResource<PointerStorage<Base, 0, 3>, 0>;
template class vesk::SharedResourceDestroyer<PointerStorage<Resource, 0, 3>>;

TEST_F(SharedResourceTest, DefaultConstructedIsEmpty)
{
    const Handle handle;
    EXPECT_EQ(nullptr, handle.get());
    EXPECT_EQ(nullptr, handle.operator->());
    EXPECT_FALSE(handle);
    EXPECT_EQ(0u, handle.useCount());
    const Fields fields(handle);
    EXPECT_EQ(0u, fields.words[0]);
    EXPECT_EQ(0u, fields.words[1]);
    EXPECT_EQ(0u, fields.words[2]);
}

TEST_F(SharedResourceTest, HoldsValueCountAndDestroyerInThisOrder)
{
    ASSERT_EQ(sizeof(Handle), 3 * sizeof(void*));
    auto* const resource = new Resource;
    const Handle handle(resource);
    const Handle copy(handle);
    const Fields fields(handle);
    EXPECT_EQ(fields.words[0], reinterpret_cast<std::uintptr_t>(resource));
    unsigned count = 0;
    std::memcpy(&count, reinterpret_cast<const void*>(fields.words[1]), sizeof(count));
    EXPECT_EQ(2u, count);
    EXPECT_NE(0u, fields.words[2]);
}

TEST_F(SharedResourceTest, CopiesShareOneCountAndOneDestroyer)
{
    const Handle handle(new Resource);
    const Handle copy(handle);
    const Fields a(handle);
    const Fields b(copy);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(a.words[i], b.words[i]) << i;
    }
}

TEST_F(SharedResourceTest, AdoptionByConstructionHoldsTheResourceOnce)
{
    auto* const resource = new Resource(7);
    {
        const Handle handle(resource);
        EXPECT_EQ(handle.get(), resource);
        EXPECT_EQ(7, handle->number);
        EXPECT_EQ(&*handle, resource);
        EXPECT_TRUE(handle);
        EXPECT_EQ(1u, handle.useCount());
        EXPECT_EQ(1, Resource::alive);
    }
    EXPECT_EQ(0, Resource::alive);
    EXPECT_EQ(1, Resource::died);
}

TEST_F(SharedResourceTest, AdoptionByAssignmentReleasesWhatWasHeld)
{
    Handle handle(new Resource(1));
    const Handle other(handle);
    auto* const second = new Resource(2);
    EXPECT_EQ(&(handle = second), &handle);
    EXPECT_EQ(handle.get(), second);
    EXPECT_EQ(1u, handle.useCount());
    EXPECT_EQ(1u, other.useCount());
    EXPECT_EQ(0, Resource::died);
    handle = new Resource(3);
    EXPECT_EQ(1, Resource::died);
    EXPECT_EQ(3, handle->number);
    EXPECT_EQ(1, other->number);
}

TEST_F(SharedResourceTest, AdoptionAllocatesOneBlockForCountAndDestroyerAndCopyingNone)
{
    auto* const resource = new Resource;
    FailingAllocator allocator(-1);
    const Handle handle(resource);
    const long ofAdoption = allocator.requests();
    const Handle copy(handle);
    Handle assigned;
    assigned = handle;
    const long ofAll = allocator.requests();
    EXPECT_EQ(1, ofAdoption);
    EXPECT_EQ(1, ofAll);
}

TEST_F(SharedResourceTest, HandleThatAdoptsNullCountsAsNotEmpty)
{
    Handle handle(static_cast<Resource*>(nullptr));
    EXPECT_EQ(nullptr, handle.get());
    EXPECT_FALSE(handle); // asked by value
    EXPECT_EQ(1u, handle.useCount());
    {
        const Handle copy(handle);
        EXPECT_EQ(2u, handle.useCount());
    }
    EXPECT_EQ(1u, handle.useCount());
    handle = Handle();
    EXPECT_EQ(0u, handle.useCount());
    handle = static_cast<Resource*>(nullptr);
    EXPECT_EQ(1u, handle.useCount());
    EXPECT_EQ(0, Resource::died);
}

TEST_F(SharedResourceTest, TwoHandlesDeleteTheResourceOnceAtTheLast)
{
    auto first = std::make_unique<Handle>(new Resource);
    auto second = std::make_unique<Handle>(*first);
    EXPECT_EQ(2u, first->useCount());
    EXPECT_EQ(2u, second->useCount());
    EXPECT_EQ(first->get(), second->get());
    first.reset();
    EXPECT_EQ(0, Resource::died);
    EXPECT_EQ(1u, second->useCount());
    second.reset();
    EXPECT_EQ(1, Resource::died);
    EXPECT_EQ(0, Resource::alive);
}

TEST_F(SharedResourceTest, CopyOfAnEmptyHandleIsEmpty)
{
    const Handle empty;
    const Handle copy(empty);
    EXPECT_FALSE(copy);
    EXPECT_EQ(0u, copy.useCount());
}

TEST_F(SharedResourceTest, CopyOfAnEmptiedHandleIsEmpty)
{
    Handle emptied(new Resource);
    emptied = Handle(); // the destroyer field may now keep a stale address
    const Handle copy(emptied);
    Handle assigned(new Resource);
    assigned = emptied;
    EXPECT_EQ(nullptr, copy.get());
    EXPECT_EQ(0u, copy.useCount());
    EXPECT_EQ(0u, assigned.useCount());
    EXPECT_EQ(2, Resource::died);
}

TEST_F(SharedResourceTest, AssignmentSharesAndReleases)
{
    Handle first(new Resource(1));
    const Handle second(new Resource(2));
    EXPECT_EQ(&(first = second), &first);
    EXPECT_EQ(1, Resource::died);
    EXPECT_EQ(first.get(), second.get());
    EXPECT_EQ(2u, first.useCount());
    EXPECT_EQ(2u, second.useCount());
}

TEST_F(SharedResourceTest, AssignmentToAnEmptyHandleShares)
{
    const Handle full(new Resource);
    Handle empty;
    empty = full;
    EXPECT_EQ(empty.get(), full.get());
    EXPECT_EQ(2u, full.useCount());
}

TEST_F(SharedResourceTest, AssignmentOfAnotherHandleOfTheSameResourceKeepsTheCount)
{
    Handle first(new Resource);
    const Handle second(first);
    first = second;
    EXPECT_EQ(2u, first.useCount());
    EXPECT_EQ(0, Resource::died);
}

TEST_F(SharedResourceTest, SelfAssignmentChangesNothingAlsoOfTheOnlyHandle)
{
    Handle handle(new Resource(5));
    const Resource* const resource = handle.get();
    const Handle& self = handle;
    handle = self;
    EXPECT_EQ(handle.get(), resource);
    EXPECT_EQ(1u, handle.useCount());
    EXPECT_EQ(0, Resource::died);
    const Handle copy(handle);
    handle = self;
    EXPECT_EQ(2u, handle.useCount());
    Handle empty;
    const Handle& emptySelf = empty;
    empty = emptySelf;
    EXPECT_EQ(0u, empty.useCount());
}

TEST_F(SharedResourceTest, AssignmentOfAnEmptyHandleReleasesAndEmpties)
{
    Handle full(new Resource);
    const Handle empty;
    full = empty;
    EXPECT_EQ(1, Resource::died);
    EXPECT_EQ(nullptr, full.get());
    EXPECT_EQ(0u, full.useCount());
}

TEST_F(SharedResourceTest, AssignmentOfAnEmptyHandleOnlyLowersASharedCount)
{
    Handle full(new Resource);
    const Handle other(full);
    full = Handle();
    EXPECT_EQ(0, Resource::died);
    EXPECT_EQ(0u, full.useCount());
    EXPECT_EQ(1u, other.useCount());
}

TEST_F(SharedResourceTest, HandleIsUsableAgainAfterItWasEmptied)
{
    Handle handle(new Resource(1));
    handle = Handle();
    handle = new Resource(2);
    EXPECT_EQ(2, handle->number);
    EXPECT_EQ(1u, handle.useCount());
}

namespace {

/// A list element that owns the rest of the list.
struct Link1 {
    SharedResource<PointerStorage<Link1, 0, 3>, 0> next;
    int number = 0;
};

} // namespace

TEST_F(SharedResourceTest, SourceInsideOfTheReleasedObjectIsSafe)
{
    SharedResource<PointerStorage<Link1, 0, 3>, 0> head(new Link1);
    head->number = 1;
    head->next = new Link1;
    head->next->number = 2;
    head = head->next;
    EXPECT_EQ(2, head->number);
    EXPECT_EQ(1u, head.useCount());
}

TEST_F(SharedResourceTest, ResourceIsDeletedByItsVirtualDestructor)
{
    int died = 0;
    {
        const BaseHandle handle(new Derived(died));
        EXPECT_EQ(0, died);
    }
    EXPECT_EQ(1, died);
}

TEST_F(SharedResourceTest, MakeTakesOneBlockForObjectCountAndDestroyer)
{
    FailingAllocator allocator(-1);
    Handle handle = Handle::make(7);
    EXPECT_EQ(1, allocator.requests());
    EXPECT_EQ(7, handle->number);
    EXPECT_EQ(1u, handle.useCount());
    {
        const Handle copy(handle);
        EXPECT_EQ(2u, handle.useCount());
        EXPECT_EQ(handle.get(), copy.get());
    }
    EXPECT_EQ(1, Resource::alive);
    handle = Handle();
    EXPECT_EQ(0, Resource::alive);
    EXPECT_EQ(1, Resource::died);
}

TEST_F(SharedResourceTest, MakeTakesAnObjectOfADerivedClass)
{
    int died = 0;
    {
        const BaseHandle handle = BaseHandle::make<Derived>(died);
        EXPECT_EQ(&died, &static_cast<Derived&>(*handle).m_died);
        EXPECT_EQ(0, died);
    }
    EXPECT_EQ(1, died);
}

TEST_F(SharedResourceTest, MakeOfAnObjectThatThrowsLeaksNothing)
{
    struct Refused {
        Refused() { throw 3; }
    };
    using RefusedHandle = SharedResource<PointerStorage<Refused, 0, 3>, 0>;
    EXPECT_THROW(RefusedHandle::make(), int); // the leak sanitizer fails the program on a leak
    const FailingAllocator allocator(0);
    EXPECT_THROW(Handle::make(1), std::bad_alloc);
    EXPECT_EQ(0, Resource::alive);
}

TEST_F(SharedResourceTest, DisarmedBlockDoesNotDestroyItsObject)
{
    {
        const Handle handle = Handle::make(7);
        reinterpret_cast<SharedResourceDestroyerBase*>(Fields(handle).words[2])->disarm();
    }
    EXPECT_EQ(0, Resource::died);
}

TEST_F(SharedResourceTest, EachFailedAllocationOfAdoptionPassesAndNothingLeaks)
{
    long point = 0;
    for (bool isThrown = true; isThrown; ++point) {
        SCOPED_TRACE(point);
        Resource::reset();
        auto* const resource = new Resource;
        isThrown = false;
        try {
            const FailingAllocator allocator(point);
            const Handle handle(resource);
        } catch (const std::bad_alloc&) {
            isThrown = true;
        }
        EXPECT_EQ(0, Resource::alive);
        EXPECT_EQ(1, Resource::died);
    }
    EXPECT_GT(point, 1);
}

TEST_F(SharedResourceTest, EachFailedAllocationOfAdoptionByAssignmentLeavesTheHandleReleased)
{
    long point = 0;
    for (bool isThrown = true; isThrown; ++point) {
        SCOPED_TRACE(point);
        Resource::reset();
        Handle handle(new Resource(1));
        auto* const second = new Resource(2);
        isThrown = false;
        try {
            const FailingAllocator allocator(point);
            handle = second;
        } catch (const std::bad_alloc&) {
            isThrown = true;
        }
        EXPECT_EQ(handle.get(), isThrown ? nullptr : second);
        EXPECT_EQ(handle.useCount(), isThrown ? 0u : 1u);
        EXPECT_EQ(Resource::alive, isThrown ? 0 : 1);
        EXPECT_EQ(Resource::died, isThrown ? 2 : 1);
    }
    EXPECT_GT(point, 1);
}

TEST_F(SharedResourceTest, HandlesCompareByTheirResource)
{
    const Handle first(new Resource(1));
    const Handle copy(first);
    const Handle second(new Resource(1));
    const Handle empty;
    EXPECT_TRUE(first == copy);
    EXPECT_FALSE(first != copy);
    EXPECT_FALSE(first == second);
    EXPECT_TRUE(first != second);
    EXPECT_TRUE(empty == Handle());
    EXPECT_TRUE(empty == nullptr);
    EXPECT_TRUE(nullptr == empty);
    EXPECT_FALSE(empty != nullptr);
    EXPECT_FALSE(nullptr != empty);
    EXPECT_TRUE(first != nullptr);
    EXPECT_TRUE(nullptr != first);
    EXPECT_FALSE(first == nullptr);
}

TEST_F(SharedResourceTest, OwningAndNonOwningHandlesCompare)
{
    const Handle first(new Resource(1));
    const Handle second(new Resource(2));
    const Link link(first);
    EXPECT_TRUE(link == first);
    EXPECT_TRUE(first == link);
    EXPECT_FALSE(link != first);
    EXPECT_TRUE(link != second);
    EXPECT_FALSE(second == link);
}

TEST_F(SharedResourceTest, EmptinessTestIsExplicit)
{
    EXPECT_FALSE((std::is_convertible<Handle, bool>::value));
    EXPECT_TRUE((std::is_constructible<bool, Handle>::value));
}

TEST_F(SharedResourceTest, NonOwningHandleDoesNotBecomeAnOwningOne)
{
    EXPECT_FALSE((std::is_constructible<Handle, Link>::value));
    EXPECT_FALSE((std::is_assignable<Handle&, Link>::value));
}

TEST(SharedResourceDestroyerTest, HasVirtualDestructorAndPureDisarmInThisOrder)
{
    EXPECT_TRUE(std::has_virtual_destructor<SharedResourceDestroyerBase>::value);
    EXPECT_TRUE(std::is_abstract<SharedResourceDestroyerBase>::value);
    EXPECT_TRUE((std::is_base_of<SharedResourceDestroyerBase, Destroyer>::value));
    EXPECT_EQ(2u, slotOf(&SharedResourceDestroyerBase::disarm)); // the destructor takes two places
    EXPECT_EQ(sizeof(Destroyer), 2 * sizeof(void*));
}

TEST(SharedResourceDestroyerTest, DeletesItsResourceThroughTheBase)
{
    Resource::reset();
    SharedResourceDestroyerBase* const destroyer = new Destroyer(new Resource);
    EXPECT_EQ(0, Resource::died);
    delete destroyer;
    EXPECT_EQ(1, Resource::died);
}

TEST(SharedResourceDestroyerTest, DisarmedDeletesNothing)
{
    Resource::reset();
    Resource resource;
    SharedResourceDestroyerBase* const destroyer = new Destroyer(&resource);
    destroyer->disarm();
    delete destroyer;
    EXPECT_EQ(0, Resource::died);
}

TEST(SharedResourceDestroyerTest, NullResourceIsNotDeleted)
{
    Resource::reset();
    delete static_cast<SharedResourceDestroyerBase*>(new Destroyer(nullptr));
    EXPECT_EQ(0, Resource::died);
}
