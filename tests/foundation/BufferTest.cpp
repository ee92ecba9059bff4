#include "support/FoundationTest.h"

using namespace testSupport;
using namespace vesk;

namespace {

/// `size` elements that count up from `first`.
template <class T>
std::vector<T> counted(std::uint64_t size, unsigned first = 1)
{
    std::vector<T> numbers;
    for (std::uint64_t i = 0; i < size; ++i) {
        numbers.push_back(static_cast<T>(first + i));
    }
    return numbers;
}

template <class T>
Buffer<T> bufferOf(const std::vector<T>& numbers)
{
    Buffer<T> buffer;
    buffer.assign(numbers.data(), numbers.size());
    return buffer;
}

template <class T>
std::vector<T> elements(const Buffer<T>& buffer)
{
    return std::vector<T>(buffer.data(), buffer.data() + buffer.size());
}

/// The fields in memory order: data, storage, size.
template <class T>
struct Fields {
    explicit Fields(const Buffer<T>& buffer) { std::memcpy(words, &buffer, sizeof(words)); }
    std::uint64_t words[3];
};

template <class T>
class BufferTest : public testing::Test {};

using ElementTypes = testing::Types<unsigned char, unsigned>;

struct ElementTypeName {
    template <class T>
    static std::string GetName(int)
    {
        return sizeof(T) == 1 ? "Bytes" : "Numbers";
    }
};

TYPED_TEST_SUITE(BufferTest, ElementTypes, ElementTypeName);

} // namespace

template class vesk::Buffer<unsigned char>;
template class vesk::Buffer<unsigned>;

TYPED_TEST(BufferTest, DefaultConstructedIsEmptyWithoutMemory)
{
    const FailingAllocator allocator(-1);
    const Buffer<TypeParam> buffer;
    const long requests = allocator.requests();
    EXPECT_EQ(0, requests);
    EXPECT_EQ(0u, buffer.size());
    EXPECT_EQ(nullptr, buffer.data());
}

TYPED_TEST(BufferTest, HoldsDataStorageAndSizeInThisOrder)
{
    ASSERT_EQ(24u, sizeof(Buffer<TypeParam>));
    const Buffer<TypeParam> empty;
    EXPECT_EQ(0u, Fields<TypeParam>(empty).words[0]);
    EXPECT_EQ(0u, Fields<TypeParam>(empty).words[1]);
    EXPECT_EQ(0u, Fields<TypeParam>(empty).words[2]);
    const Buffer<TypeParam> buffer = bufferOf(counted<TypeParam>(5));
    const Fields<TypeParam> fields(buffer);
    EXPECT_EQ(fields.words[0], reinterpret_cast<std::uintptr_t>(buffer.data()));
    EXPECT_EQ(fields.words[1], reinterpret_cast<std::uintptr_t>(buffer.data()));
    EXPECT_EQ(5u, fields.words[2]);
}

TYPED_TEST(BufferTest, CopyHasMemoryAndElementsOfItsOwn)
{
    Buffer<TypeParam> source = bufferOf(counted<TypeParam>(5));
    const Buffer<TypeParam> copy(source);
    EXPECT_NE(copy.data(), source.data());
    source[0] = 99;
    EXPECT_EQ(elements(copy), counted<TypeParam>(5));
}

TYPED_TEST(BufferTest, CopyOfAnEmptyBufferIsEmpty)
{
    const Buffer<TypeParam> source;
    const Buffer<TypeParam> copy(source);
    EXPECT_EQ(0u, copy.size());
    EXPECT_EQ(nullptr, copy.data());
}

TYPED_TEST(BufferTest, CopyTakesOnlyTheElementsInUse)
{
    Buffer<TypeParam> source = bufferOf(counted<TypeParam>(10));
    source = bufferOf(counted<TypeParam>(6, 50)); // reuses the memory of ten
    const Buffer<TypeParam> copy(source);
    EXPECT_EQ(elements(copy), counted<TypeParam>(6, 50));
}

TYPED_TEST(BufferTest, SelfAssignmentDoesNothing)
{
    Buffer<TypeParam> buffer = bufferOf(counted<TypeParam>(5));
    const TypeParam* const before = buffer.data();
    const Buffer<TypeParam>& self = buffer;
    EXPECT_EQ(&(buffer = self), &buffer);
    EXPECT_EQ(buffer.data(), before);
    EXPECT_EQ(elements(buffer), counted<TypeParam>(5));
}

TYPED_TEST(BufferTest, AssignmentOfAnEmptyBufferFreesTheMemory)
{
    Buffer<TypeParam> buffer = bufferOf(counted<TypeParam>(5));
    buffer = Buffer<TypeParam>();
    const Fields<TypeParam> fields(buffer);
    EXPECT_EQ(0u, fields.words[0]);
    EXPECT_EQ(0u, fields.words[1]);
    EXPECT_EQ(0u, fields.words[2]);
}

TYPED_TEST(BufferTest, AssignmentOfNoElementsFreesTheMemory)
{
    Buffer<TypeParam> buffer = bufferOf(counted<TypeParam>(5));
    buffer.assign(nullptr, 0);
    EXPECT_EQ(nullptr, buffer.data());
    EXPECT_EQ(0u, buffer.size());
    buffer = bufferOf(counted<TypeParam>(5));
    const TypeParam one = 1;
    buffer.assign(&one, 0);
    EXPECT_EQ(nullptr, buffer.data());
    EXPECT_EQ(0u, buffer.size());
}

namespace {

struct AssignRow : Row {
    std::uint64_t before;
    std::uint64_t after;
    bool isReused;
};

class BufferAssignTest : public testing::TestWithParam<AssignRow> {};

template <class T>
void expectAssign(const AssignRow& row, bool isFromBuffer)
{
    Buffer<T> buffer = bufferOf(counted<T>(row.before));
    const Buffer<T> source = bufferOf(counted<T>(row.after, 100));
    const T* const data = buffer.data();
    long requests = 0;
    {
        const FailingAllocator allocator(-1);
        if (isFromBuffer) {
            buffer = source;
        } else {
            buffer.assign(source.data(), source.size());
        }
        requests = allocator.requests();
    }
    EXPECT_EQ(requests, row.isReused ? 0 : 1);
    EXPECT_EQ(buffer.data() == data, row.isReused);
    EXPECT_EQ(buffer.size(), row.after);
    EXPECT_EQ(elements(buffer), counted<T>(row.after, 100));
    EXPECT_NE(buffer.data(), source.data());
}

} // namespace

TEST_P(BufferAssignTest, FromABufferOfBytes)
{
    expectAssign<unsigned char>(GetParam(), true);
}

TEST_P(BufferAssignTest, FromABufferOfNumbers)
{
    expectAssign<unsigned>(GetParam(), true);
}

TEST_P(BufferAssignTest, FromElementsAndACount)
{
    expectAssign<unsigned>(GetParam(), false);
}

INSTANTIATE_ROWS(Rows, BufferAssignTest, {"SixtyToHundredReuses", 100, 60, true},
                 {"FiftyOneToHundredReuses", 100, 51, true}, {"FiftyToHundredAllocates", 100, 50, false},
                 {"FortyToHundredAllocates", 100, 40, false}, {"EqualSizeReuses", 100, 100, true},
                 {"OneMoreAllocates", 100, 101, false}, {"HalfOfOddSizeIsRoundedDown", 101, 51, true},
                 {"RoundedHalfOfOddSizeAllocates", 101, 50, false}, {"OneToOneReuses", 1, 1, true},
                 {"OneToTwoAllocates", 2, 1, false}, {"ToEmptyAllocates", 0, 3, false});

TYPED_TEST(BufferTest, ReuseGoesByThePresentSizeNotByTheAllocation)
{
    Buffer<TypeParam> buffer = bufferOf(counted<TypeParam>(100));
    const TypeParam* const data = buffer.data();
    buffer = bufferOf(counted<TypeParam>(60));
    buffer = bufferOf(counted<TypeParam>(31));
    EXPECT_EQ(buffer.data(), data);
    const Buffer<TypeParam> back = bufferOf(counted<TypeParam>(60));
    long requests = 0;
    {
        const FailingAllocator allocator(-1);
        buffer = back; // more than 31, although it would fit
        requests = allocator.requests();
    }
    EXPECT_EQ(1, requests);
    EXPECT_EQ(elements(buffer), counted<TypeParam>(60));
}

TYPED_TEST(BufferTest, AssignmentFromOwnRangeTakesTheElementsAsTheyWere)
{
    Buffer<TypeParam> overlapping = bufferOf(counted<TypeParam>(10));
    overlapping.assign(overlapping.data() + 2, 8); // within the memory
    EXPECT_EQ(elements(overlapping), counted<TypeParam>(8, 3));
    Buffer<TypeParam> fresh = bufferOf(counted<TypeParam>(10));
    fresh.assign(fresh.data() + 6, 3); // less than half, so in new memory
    EXPECT_EQ(elements(fresh), counted<TypeParam>(3, 7));
    Buffer<TypeParam> whole = bufferOf(counted<TypeParam>(10));
    whole.assign(whole.data(), 10);
    EXPECT_EQ(elements(whole), counted<TypeParam>(10));
}

TYPED_TEST(BufferTest, ResizeToZeroFreesTheMemory)
{
    Buffer<TypeParam> buffer = bufferOf(counted<TypeParam>(5));
    buffer.resize(0, true);
    EXPECT_EQ(nullptr, buffer.data());
    EXPECT_EQ(0u, buffer.size());
    EXPECT_EQ(0u, Fields<TypeParam>(buffer).words[1]);
    buffer.resize(0, false);
    EXPECT_EQ(nullptr, buffer.data());
}

TYPED_TEST(BufferTest, ResizeToTheCurrentSizeDoesNothing)
{
    Buffer<TypeParam> buffer = bufferOf(counted<TypeParam>(5));
    const TypeParam* const data = buffer.data();
    long requests = 0;
    {
        const FailingAllocator allocator(-1);
        buffer.resize(5, true);
        buffer.resize(5, false);
        requests = allocator.requests();
    }
    EXPECT_EQ(0, requests);
    EXPECT_EQ(buffer.data(), data);
    EXPECT_EQ(elements(buffer), counted<TypeParam>(5));
}

TYPED_TEST(BufferTest, ResizeToMoreKeepsTheElementsAndFillsWithZeros)
{
    Buffer<TypeParam> buffer = bufferOf(counted<TypeParam>(3));
    buffer.resize(6, true);
    EXPECT_EQ((std::vector<TypeParam>{1, 2, 3, 0, 0, 0}), elements(buffer));
}

TYPED_TEST(BufferTest, ResizeToMoreWithoutFillKeepsTheElements)
{
    Buffer<TypeParam> buffer = bufferOf(counted<TypeParam>(3));
    buffer.resize(6, false);
    EXPECT_EQ(6u, buffer.size());
    EXPECT_EQ(1, buffer[0]);
    EXPECT_EQ(2, buffer[1]);
    EXPECT_EQ(3, buffer[2]);
    buffer[5] = 9; // the memory is allocated
    EXPECT_EQ(9, buffer[5]);
}

TYPED_TEST(BufferTest, ResizeOfAnEmptyBufferFillsAllWithZeros)
{
    Buffer<TypeParam> buffer;
    buffer.resize(4, true);
    EXPECT_EQ((std::vector<TypeParam>{0, 0, 0, 0}), elements(buffer));
}

TYPED_TEST(BufferTest, ResizeToLessKeepsTheFirstElementsInNewMemory)
{
    for (const bool zeroFill : {false, true}) {
        Buffer<TypeParam> buffer = bufferOf(counted<TypeParam>(100));
        long requests = 0;
        {
            const FailingAllocator allocator(-1);
            buffer.resize(60, zeroFill); // unlike an assignment it never reuses
            requests = allocator.requests();
        }
        EXPECT_EQ(1, requests);
        EXPECT_EQ(elements(buffer), counted<TypeParam>(60));
    }
}

TYPED_TEST(BufferTest, ElementsAreReadAndWrittenByIndex)
{
    Buffer<TypeParam> buffer = bufferOf(counted<TypeParam>(3));
    buffer[1] = 20;
    const Buffer<TypeParam>& constant = buffer;
    EXPECT_EQ(20, constant[1]);
    EXPECT_EQ(20, constant.data()[1]);
    EXPECT_EQ(&buffer[2], buffer.data() + 2);
}

TYPED_TEST(BufferTest, EqualityComparesSizeAndElements)
{
    const Buffer<TypeParam> three = bufferOf(counted<TypeParam>(3));
    EXPECT_TRUE(three == bufferOf(counted<TypeParam>(3)));
    EXPECT_FALSE(three != bufferOf(counted<TypeParam>(3)));
    EXPECT_FALSE(three == bufferOf(counted<TypeParam>(4)));
    EXPECT_TRUE(three != bufferOf(counted<TypeParam>(2)));
    EXPECT_FALSE(three == bufferOf(std::vector<TypeParam>{1, 2, 4}));
    EXPECT_TRUE(Buffer<TypeParam>() == Buffer<TypeParam>());
    EXPECT_FALSE(Buffer<TypeParam>() == three);
}

TYPED_TEST(BufferTest, FailedAllocationPassesAndChangesNothing)
{
    Buffer<TypeParam> buffer = bufferOf(counted<TypeParam>(5));
    const Buffer<TypeParam> larger = bufferOf(counted<TypeParam>(6, 40));
    const void* volatile shown = nullptr; // the compiler could omit an unused copy
    const auto failing = [](const auto& operation) {
        const FailingAllocator allocator(0);
        try {
            operation();
        } catch (const std::bad_alloc&) {
            return true;
        }
        return false;
    };
    EXPECT_TRUE(failing([&] { buffer = larger; }));
    EXPECT_EQ(elements(buffer), counted<TypeParam>(5));
    EXPECT_TRUE(failing([&] { buffer.assign(larger.data(), 6); }));
    EXPECT_EQ(elements(buffer), counted<TypeParam>(5));
    EXPECT_TRUE(failing([&] { buffer.resize(6, true); }));
    EXPECT_EQ(elements(buffer), counted<TypeParam>(5));
    EXPECT_TRUE(failing([&] { buffer.resize(3, false); }));
    EXPECT_EQ(elements(buffer), counted<TypeParam>(5));
    EXPECT_TRUE(failing([&] {
        const Buffer<TypeParam> copy(buffer);
        shown = copy.data();
    }));
    EXPECT_EQ(nullptr, shown);
    EXPECT_EQ(elements(buffer), counted<TypeParam>(5));
}

TEST(BufferSizeTest, SizeThatNoMemoryHoldsPassesAsAllocationFailure)
{
    Buffer<unsigned> buffer = bufferOf(counted<unsigned>(5));
    const std::uint64_t wrapping = 0x4000000000000001u; // in bytes, 64 bits leave four of it
    EXPECT_THROW(buffer.resize(wrapping, true), std::bad_alloc);
    EXPECT_THROW(buffer.resize(std::numeric_limits<std::uint64_t>::max(), false), std::bad_alloc);
    EXPECT_THROW(buffer.assign(buffer.data(), wrapping), std::bad_alloc);
    EXPECT_EQ(elements(buffer), counted<unsigned>(5));
}
