#include "support/FoundationTest.h"

using namespace testSupport;
using namespace vesk;

namespace {

struct Resource {
    int number = 0;
};

using Handle = SharedResource<PointerStorage<Resource, 0, 3>, 0>;
using Link = CopiedResource<PointerStorage<Resource, 3, 2>>;

/// A plain struct as element.
struct Record {
    double time;
    unsigned id;
    bool operator==(const Record& other) const { return time == other.time && id == other.id; }
};

class ArrayTest : public testing::Test {
public:
    ArrayTest() { CountingElement::reset(); }
    ~ArrayTest() override { EXPECT_EQ(0, CountingElement::counts().alive) << "elements leaked"; }
};

} // namespace

template class vesk::Array<CountingElement>;
template class vesk::Array<Handle>;
template class vesk::Array<Link>;
template class vesk::Array<Record>;
template class vesk::Array<String>;
template class vesk::Array<unsigned>;
template class vesk::Array<double>;
template class vesk::Array<unsigned char>;

// Form of the object and of the block

TEST_F(ArrayTest, HasOnePointerBesideItsBase)
{
    EXPECT_EQ(sizeof(Array<CountingElement>), sizeof(vesk::Serializable) + sizeof(void*));
    EXPECT_EQ(sizeof(Array<unsigned char>), 2 * sizeof(void*));
    EXPECT_TRUE((std::is_base_of<vesk::Serializable, Array<Record>>::value));
}

namespace {

/// Neither a default constructor nor an assignment nor a comparison.
class Meagre {
public:
    explicit Meagre(int number) : m_number(number) {}
    Meagre(const Meagre&) = default;
    Meagre& operator=(const Meagre&) = delete;
    int number() const { return m_number; }

private:
    int m_number;
};

std::vector<int> values(const Array<CountingElement>& array)
{
    std::vector<int> list;
    for (unsigned i = 0; i < array.size(); ++i) {
        list.push_back(array[i].value);
    }
    return list;
}

/// 1, 2, 3, ...
template <class T>
void fill(Array<T>& array, int count)
{
    for (int i = 1; i <= count; ++i) {
        array.append(static_cast<T>(i));
    }
}

std::vector<int> upTo(int last)
{
    std::vector<int> list;
    for (int i = 1; i <= last; ++i) {
        list.push_back(i);
    }
    return list;
}

/// The numbers of the elements that an event happened to: "copy" or "destroy".
std::vector<int> events(const std::string& word)
{
    std::vector<int> numbers;
    for (const std::string& entry : CountingElement::counts().history) {
        if (entry.compare(0, word.size() + 1, word + " ") == 0) {
            numbers.push_back(std::stoi(entry.substr(word.size() + 1)));
        }
    }
    return numbers;
}

std::string nullPointerMessage(const std::function<void()>& operation)
{
    try {
        operation();
    } catch (const NullPointer& exception) {
        return exception.what();
    }
    return "nothing thrown";
}

/// The same, when the first request for memory fails.
std::string messageWithoutMemory(const std::function<void()>& operation)
{
    const FailingAllocator allocator(0);
    return nullPointerMessage(operation);
}

std::string sizeMessage(unsigned size)
{
    return "Asked for array of size: " + std::to_string(size);
}

template <class Container>
void expectOutOfBounds(Container& array, unsigned index, int high, int shownIndex)
{
    try {
        static_cast<void>(array[index]);
        ADD_FAILURE() << "nothing thrown at " << index;
    } catch (const IndexOutOfBounds& exception) {
        EXPECT_EQ(0, exception.low());
        EXPECT_EQ(exception.high(), high);
        EXPECT_EQ(exception.index(), shownIndex);
    }
}

/// Lets each memory request of `operation` fail in turn, and calls `verify` after each failure. @return number of
/// requests
int failAtEachPoint(const std::function<void()>& operation, const std::function<void(bool wasThrown)>& verify)
{
    for (int point = 0; point < 1000; ++point) {
        bool wasThrown = false;
        bool hasFailed = false;
        {
            const FailingAllocator allocator(point);
            try {
                operation();
            } catch (const NullPointer&) {
                wasThrown = true;
            } catch (const std::bad_alloc&) {
                wasThrown = true;
            }
            hasFailed = allocator.hasFailed();
        }
        if (!hasFailed) {
            return point;
        }
        SCOPED_TRACE("request " + std::to_string(point));
        verify(wasThrown);
    }
    ADD_FAILURE() << "no end";
    return -1;
}

} // namespace

TEST_F(ArrayTest, BlockIsCountAndCapacityFollowedByElements)
{
    Array<double> array;
    fill(array, 9);
    unsigned header[2];
    std::memcpy(header, reinterpret_cast<const unsigned char*>(array.getData()) - sizeof(header), sizeof(header));
    EXPECT_EQ(9u, header[0]);
    EXPECT_EQ(16u, header[1]);
}

TEST_F(ArrayTest, ElementNeedsOnlyCopyConstructorAndDestructor)
{
    Array<Meagre> array;
    for (int i = 0; i < 20; ++i) {
        array.append(Meagre(i));
    }
    const Array<Meagre> copy(array);
    array.clear();
    array = copy;
    EXPECT_EQ(20u, array.size());
    EXPECT_EQ(19, array[19].number());
}

// Construction and capacity

TEST_F(ArrayTest, NewArrayHasSizeZeroAndCapacityEight)
{
    const Array<CountingElement> array;
    EXPECT_EQ(0u, array.size());
    EXPECT_EQ(8u, array.capacity());
    EXPECT_NE(nullptr, array.getData());
    EXPECT_EQ(0, CountingElement::counts().defaultConstructed);
}

TEST_F(ArrayTest, ElementsTakeOneBlock)
{
    FailingAllocator allocator(-1);
    const Array<double> sized(100);
    Array<double> filled;
    filled.append(1.0);
    const long requests = allocator.requests();
    EXPECT_EQ(2, requests);
}

namespace {

struct CapacityRow {
    unsigned size;
    unsigned capacity;
    friend void PrintTo(const CapacityRow& row, std::ostream* out) { *out << row.size; }
};

class ArrayCapacityTest : public testing::TestWithParam<CapacityRow> {};

} // namespace

TEST_P(ArrayCapacityTest, OfSizedConstructor)
{
    CountingElement::reset();
    {
        const Array<CountingElement> array(GetParam().size);
        EXPECT_EQ(array.size(), GetParam().size);
        EXPECT_EQ(array.capacity(), GetParam().capacity);
        EXPECT_EQ(CountingElement::counts().defaultConstructed, static_cast<int>(GetParam().size));
        EXPECT_EQ(0, CountingElement::counts().copied);
    }
    EXPECT_EQ(0, CountingElement::counts().alive);
}

TEST_P(ArrayCapacityTest, OfAppendedElements)
{
    Array<unsigned> array;
    fill(array, static_cast<int>(GetParam().size));
    EXPECT_EQ(array.size(), GetParam().size);
    EXPECT_EQ(array.capacity(), GetParam().capacity);
}

TEST_P(ArrayCapacityTest, OfElementsAppendedAtOnce)
{
    const std::vector<unsigned> source(GetParam().size, 3u);
    Array<unsigned> array;
    array.append(source.data(), GetParam().size);
    EXPECT_EQ(array.capacity(), GetParam().capacity);
    EXPECT_EQ(elements(array), source);
}

TEST_P(ArrayCapacityTest, OfGrowth)
{
    Array<unsigned> array;
    array.grow(GetParam().size, 5u);
    EXPECT_EQ(array.capacity(), GetParam().capacity);
    EXPECT_EQ(elements(array), std::vector<unsigned>(GetParam().size, 5u));
}

INSTANTIATE_TEST_SUITE_P(Rows, ArrayCapacityTest,
                         testing::Values(CapacityRow{0, 8}, CapacityRow{1, 8}, CapacityRow{7, 8}, CapacityRow{8, 8},
                                         CapacityRow{9, 16}, CapacityRow{16, 16}, CapacityRow{17, 32},
                                         CapacityRow{32, 32}, CapacityRow{33, 64}, CapacityRow{1000, 1024}),
                         [](const auto& row) { return "Size" + std::to_string(row.param.size); });

TEST_F(ArrayTest, SizedConstructorMakesNumbersZero)
{
    EXPECT_EQ(elements(Array<unsigned>(9)), std::vector<unsigned>(9, 0u));
    EXPECT_EQ(elements(Array<double>(3)), std::vector<double>(3, 0.0));
    EXPECT_EQ(elements(Array<String>(2)), std::vector<String>(2));
}

TEST_F(ArrayTest, NinthAppendDoublesCapacityToSixteenAndSeventeenthToThirtyTwo)
{
    Array<CountingElement> array;
    for (int i = 1; i <= 33; ++i) {
        array.append(i);
        EXPECT_EQ(array.size(), static_cast<unsigned>(i));
        EXPECT_EQ(array.capacity(), i <= 8 ? 8u : (i <= 16 ? 16u : (i <= 32 ? 32u : 64u))) << i;
    }
    EXPECT_EQ(values(array), upTo(33));
}

TEST_F(ArrayTest, AppendWithinTheCapacityKeepsTheBlock)
{
    Array<unsigned> array;
    array.append(0);
    const unsigned* const data = array.getData();
    array.clear();
    EXPECT_EQ(array.getData(), data);
    fill(array, 8);
    EXPECT_EQ(array.getData(), data);
    array.append(9);
    EXPECT_NE(array.getData(), data);
}

// Bounds: what passes them throws before anything is asked of the machine

namespace {

struct BoundRow : Row {
    std::size_t elementSize;
    unsigned size;
    unsigned capacity; // 0: refused
};

class ArrayBoundTest : public testing::TestWithParam<BoundRow> {};

} // namespace

TEST_P(ArrayBoundTest, OfOneElementSize)
{
    const BoundRow& row = GetParam();
    if (row.capacity != 0) {
        EXPECT_EQ(vesk::detail::arrayCapacity(row.size, row.elementSize), row.capacity);
    } else {
        EXPECT_EQ(nullPointerMessage([&row] { vesk::detail::arrayCapacity(row.size, row.elementSize); }),
                  sizeMessage(row.size));
    }
}

// The block is 8 bytes and the elements; together at most 0xFFFFFFFF.
INSTANTIATE_ROWS(Rows, ArrayBoundTest, {"EightBytesLastPowerBelow", 8, 0x10000000u, 0x10000000u},
                 {"EightBytesRoundedPastTheBound", 8, 0x10000001u, 0},
                 {"EightBytesBoundItselfIsNoPower", 8, 0x1FFFFFFEu, 0},
                 {"FourBytesLastPowerBelow", 4, 0x20000000u, 0x20000000u},
                 {"FourBytesRoundedPastTheBound", 4, 0x20000001u, 0}, {"OneByteLastPower", 1, 0x80000000u, 0x80000000u},
                 {"OneByteWrapTakesTheRequest", 1, 0x80000001u, 0x80000001u},
                 {"OneByteWrapAtTheBound", 1, 0xFFFFFFF7u, 0xFFFFFFF7u}, {"OneByteWrapPastTheBound", 1, 0xFFFFFFF8u, 0},
                 {"OneByteAllOnes", 1, 0xFFFFFFFFu, 0}, {"EightBytesWrap", 8, 0x80000001u, 0},
                 {"EightBytesAllOnes", 8, 0xFFFFFFFFu, 0}, {"WidestThatFitsEightTimes", 0x1FFFFFFEu, 0, 8},
                 {"TooWideForEight", 0x1FFFFFFFu, 0, 0}, {"TwelveBytesLastPowerBelow", 12, 0x10000000u, 0x10000000u},
                 {"TwelveBytesRoundedPastTheBound", 12, 0x10000001u, 0});

TEST_F(ArrayTest, SizedConstructorPastTheBoundThrowsNamingTheRequest)
{
    EXPECT_EQ(nullPointerMessage([] { const Array<double> array(0x10000001u); }), sizeMessage(0x10000001u));
    EXPECT_EQ(nullPointerMessage([] { const Array<double> array(0x1FFFFFFFu); }), sizeMessage(0x1FFFFFFFu));
    EXPECT_EQ(nullPointerMessage([] { const Array<Handle> array(0x0AAAAAABu); }), sizeMessage(0x0AAAAAABu));
}

TEST_F(ArrayTest, RequestWhoseDoublingWrapsThrowsNamingTheRequest)
{
    EXPECT_EQ(nullPointerMessage([] { const Array<double> array(0x80000001u); }), sizeMessage(2147483649u));
    EXPECT_EQ(nullPointerMessage([] { const Array<unsigned> array(0xFFFFFFFFu); }), sizeMessage(4294967295u));
    EXPECT_EQ(nullPointerMessage([] { const Array<unsigned char> array(0xFFFFFFF8u); }), sizeMessage(4294967288u));
}

TEST_F(ArrayTest, GrowPastTheBoundThrowsAndLeavesTheArray)
{
    Array<unsigned> array;
    fill(array, 3);
    const unsigned* const data = array.getData();
    EXPECT_EQ(nullPointerMessage([&array] { array.grow(0x20000001u, 1u); }), sizeMessage(0x20000001u));
    EXPECT_EQ(nullPointerMessage([&array] { array.grow(0xFFFFFFFFu, 1u); }), sizeMessage(0xFFFFFFFFu));
    EXPECT_EQ(array.getData(), data);
    EXPECT_EQ(8u, array.capacity());
    EXPECT_EQ((std::vector<unsigned>{1, 2, 3}), elements(array));
}

TEST_F(ArrayTest, AppendOfManyPastTheBoundThrowsAndLeavesTheArray)
{
    Array<unsigned> array;
    fill(array, 3);
    const unsigned* const none = array.getData(); // must not be read
    EXPECT_EQ(nullPointerMessage([&] { array.append(none, 0x20000000u); }), sizeMessage(0x20000003u));
    EXPECT_THROW(array.append(none, 0xFFFFFFFFu), NullPointer); // the sum passes 32 bits
    EXPECT_EQ((std::vector<unsigned>{1, 2, 3}), elements(array));
}

// Access

TEST_F(ArrayTest, IndexReachesEachElementForReadingAndWriting)
{
    Array<unsigned> array;
    fill(array, 3);
    array[1] = 20;
    const Array<unsigned>& constant = array;
    EXPECT_EQ(1u, constant[0]);
    EXPECT_EQ(20u, constant[1]);
    EXPECT_EQ(3u, constant[2]);
    EXPECT_EQ(&array[2], array.getData() + 2);
    EXPECT_EQ(&constant[2], constant.getData() + 2);
}

TEST_F(ArrayTest, IndexOnEmptyArrayThrowsWithHighMinusOne)
{
    Array<unsigned> array;
    const Array<unsigned>& constant = array;
    expectOutOfBounds(array, 0, -1, 0);
    expectOutOfBounds(constant, 0, -1, 0);
    expectOutOfBounds(array, 5, -1, 5);
}

TEST_F(ArrayTest, IndexAtOrPastCountThrowsAlsoWithinTheCapacity)
{
    Array<unsigned> array;
    fill(array, 3);
    const Array<unsigned>& constant = array;
    expectOutOfBounds(array, 3, 2, 3);
    expectOutOfBounds(constant, 3, 2, 3);
    expectOutOfBounds(array, 7, 2, 7);
    expectOutOfBounds(constant, 0x7FFFFFFFu, 2, 2147483647);
    expectOutOfBounds(array, 0xFFFFFFFFu, 2, -1); // the index is shown as a signed number
    EXPECT_EQ((std::vector<unsigned>{1, 2, 3}), elements(array));
}

TEST_F(ArrayTest, GetDataIsNotCheckedAndFollowsTheBlock)
{
    Array<unsigned> array;
    EXPECT_NE(nullptr, array.getData());
    fill(array, 9);
    EXPECT_EQ(9u, array.getData()[8]);
    array.getData()[8] = 90;
    EXPECT_EQ(90u, array[8]);
}

TEST_F(ArrayTest, RangeForWalksElementsInOrder)
{
    Array<unsigned> array;
    for (unsigned& element : array) {
        element = 0;
        ADD_FAILURE() << "an empty array has no element";
    }
    fill(array, 10);
    for (unsigned& element : array) {
        element *= 2;
    }
    const Array<unsigned>& constant = array;
    std::vector<unsigned> seen;
    for (const unsigned& element : constant) {
        seen.push_back(element);
    }
    EXPECT_EQ((std::vector<unsigned>{2, 4, 6, 8, 10, 12, 14, 16, 18, 20}), seen);
}

// Growth

TEST_F(ArrayTest, AppendCopiesTheValueOnceIntoItsSlot)
{
    Array<CountingElement> array;
    const CountingElement value(7);
    array.append(value);
    EXPECT_EQ(1, CountingElement::counts().copied);
    EXPECT_EQ(0, CountingElement::counts().defaultConstructed);
    EXPECT_EQ(0, CountingElement::counts().assigned);
    EXPECT_EQ(0, CountingElement::counts().destroyed);
    EXPECT_EQ(std::vector<int>{7}, values(array));
}

TEST_F(ArrayTest, ReservationCopiesAscendingAndThenDestroysAscending)
{
    Array<CountingElement> array;
    fill(array, 8);
    const CountingElement ninth(9);
    CountingElement::counts().history.clear();
    array.append(ninth);
    const std::vector<int> copies = events("copy");
    EXPECT_EQ(copies, upTo(9)); // the old ones, then the new one
    EXPECT_EQ(events("destroy"), upTo(8));
    // No element is destroyed before all have been copied.
    const std::vector<std::string>& history = CountingElement::counts().history;
    for (std::size_t i = 0; i < 8; ++i) {
        EXPECT_EQ(history[i], "copy " + std::to_string(i + 1));
    }
    EXPECT_EQ(0, CountingElement::counts().assigned);
}

TEST_F(ArrayTest, AppendOfOwnElementWhenFullAppendsThatElement)
{
    Array<CountingElement> array;
    fill(array, 8);
    array.append(array[0]);
    EXPECT_EQ((std::vector<int>{1, 2, 3, 4, 5, 6, 7, 8, 1}), values(array));
    Array<String> texts;
    for (unsigned i = 0; i < 16; ++i) {
        texts.append(longText(i));
    }
    texts.append(texts[15]);
    EXPECT_EQ(17u, texts.size());
    EXPECT_EQ(texts[16], longText(15));
    EXPECT_EQ(texts[15], longText(15));
}

TEST_F(ArrayTest, AppendOfManyAppendsInOrder)
{
    Array<unsigned char> array;
    const unsigned char bytes[] = {10, 20, 30};
    array.append(bytes, 3);
    array.append(bytes + 1, 1);
    array.append(bytes, 0);
    array.append(static_cast<const unsigned char*>(nullptr), 0);
    EXPECT_EQ(elements(array), (std::vector<unsigned char>{10, 20, 30, 20}));
}

TEST_F(ArrayTest, AppendOfManyFromTheArrayItselfAppendsThese)
{
    Array<CountingElement> array;
    fill(array, 6);
    array.append(array.getData() + 1, 2); // fits
    array.append(array.getData(), 3);     // does not
    EXPECT_EQ((std::vector<int>{1, 2, 3, 4, 5, 6, 2, 3, 1, 2, 3}), values(array));
}

TEST_F(ArrayTest, AppendArrayAppendsAllElementsInOrder)
{
    Array<CountingElement> array;
    Array<CountingElement> other;
    for (int i = 1; i <= 5; ++i) {
        array.append(i);
        other.append(i + 5);
    }
    array.appendArray(other);
    EXPECT_EQ(values(array), upTo(10));
    EXPECT_EQ(16u, array.capacity());
    EXPECT_EQ((std::vector<int>{6, 7, 8, 9, 10}), values(other));
    array.appendArray(Array<CountingElement>());
    EXPECT_EQ(10u, array.size());
}

TEST_F(ArrayTest, AppendArrayOfItselfDoublesIt)
{
    Array<CountingElement> array;
    array.append(1);
    array.append(2);
    array.appendArray(array); // fits
    EXPECT_EQ((std::vector<int>{1, 2, 1, 2}), values(array));
    array.appendArray(array);
    array.appendArray(array); // does not
    EXPECT_EQ((std::vector<int>{1, 2, 1, 2, 1, 2, 1, 2, 1, 2, 1, 2, 1, 2, 1, 2}), values(array));
}

TEST_F(ArrayTest, GrowExtendsWithCopiesOfTheValue)
{
    Array<CountingElement> array;
    array.append(1);
    array.grow(3, 7);
    EXPECT_EQ((std::vector<int>{1, 7, 7}), values(array));
    array.grow(9, 8);
    EXPECT_EQ((std::vector<int>{1, 7, 7, 8, 8, 8, 8, 8, 8}), values(array));
    EXPECT_EQ(16u, array.capacity());
}

TEST_F(ArrayTest, GrowToTheCountOrBelowChangesNothing)
{
    Array<unsigned> array;
    fill(array, 9);
    array.grow(9, 77u);
    array.grow(3, 77u);
    array.grow(0, 77u);
    EXPECT_EQ((std::vector<unsigned>{1, 2, 3, 4, 5, 6, 7, 8, 9}), elements(array));
    EXPECT_EQ(16u, array.capacity());
}

TEST_F(ArrayTest, GrowWithOwnElementCopiesThatElement)
{
    Array<CountingElement> array;
    array.append(1);
    array.append(2);
    array.grow(20, array[1]);
    EXPECT_EQ(20u, array.size());
    EXPECT_EQ(1, array[0].value);
    for (unsigned i = 1; i < 20; ++i) {
        EXPECT_EQ(2, array[i].value) << i;
    }
}

TEST_F(ArrayTest, GrowOnClearedArrayFillsIt)
{
    Array<unsigned char> array;
    fill(array, 40);
    array.clear();
    array.grow(12, 0);
    EXPECT_EQ(elements(array), std::vector<unsigned char>(12, 0));
    EXPECT_EQ(16u, array.capacity());
}

TEST_F(ArrayTest, RunOfAppendsAllocatesOnlyAtEachDoubling)
{
    Array<unsigned> array;
    FailingAllocator allocator(-1);
    fill(array, 8192);
    const long requests = allocator.requests();
    EXPECT_EQ(11, requests); // 8, 16 and on to 8192
}

// Copies

TEST_F(ArrayTest, CopyHasTheCapacityOfItsSourceAndElementsOfItsOwn)
{
    Array<CountingElement> source;
    fill(source, 9);
    Array<CountingElement> copy(source);
    EXPECT_EQ(9u, copy.size());
    EXPECT_EQ(16u, copy.capacity());
    EXPECT_NE(copy.getData(), source.getData());
    copy[0].value = 100;
    source[1].value = 200;
    source.append(10);
    EXPECT_EQ((std::vector<int>{100, 2, 3, 4, 5, 6, 7, 8, 9}), values(copy));
    EXPECT_EQ((std::vector<int>{1, 200, 3, 4, 5, 6, 7, 8, 9, 10}), values(source));
}

TEST_F(ArrayTest, CopyCopiesAscendingAndNothingElse)
{
    Array<CountingElement> source;
    fill(source, 5);
    CountingElement::counts().history.clear();
    const Array<CountingElement> copy(source);
    EXPECT_EQ(events("copy"), upTo(5));
    EXPECT_TRUE(events("destroy").empty());
    EXPECT_EQ(0, CountingElement::counts().defaultConstructed);
}

TEST_F(ArrayTest, CopyOfAnEmptyArrayHasABlock)
{
    const Array<CountingElement> source;
    Array<CountingElement> copy(source);
    EXPECT_EQ(0u, copy.size());
    EXPECT_EQ(8u, copy.capacity());
    copy.append(1);
    EXPECT_EQ(std::vector<int>{1}, values(copy));
}

TEST_F(ArrayTest, CopySharesResourcesOfOwningHandles)
{
    Array<Handle> source;
    source.append(Handle(new Resource));
    source.append(Handle(new Resource));
    EXPECT_EQ(1u, source[0].useCount());
    {
        const Array<Handle> copy(source);
        EXPECT_EQ(copy[0].get(), source[0].get());
        EXPECT_EQ(2u, source[0].useCount());
        EXPECT_EQ(2u, source[1].useCount());
    }
    EXPECT_EQ(1u, source[0].useCount());
    EXPECT_EQ(1u, source[1].useCount());
}

TEST_F(ArrayTest, AssignmentDestroysTheOldAndCopiesTheNewInAscendingOrder)
{
    Array<CountingElement> target;
    Array<CountingElement> source;
    fill(target, 3);
    for (int i = 1; i <= 9; ++i) {
        source.append(10 + i);
    }
    CountingElement::counts().history.clear();
    EXPECT_EQ(&(target = source), &target);
    EXPECT_EQ(events("destroy"), upTo(3));
    EXPECT_EQ((std::vector<int>{11, 12, 13, 14, 15, 16, 17, 18, 19}), events("copy"));
    EXPECT_EQ(0, CountingElement::counts().assigned); // no element is reused
    EXPECT_EQ(16u, target.capacity());
    EXPECT_EQ(values(target), values(source));
    EXPECT_NE(target.getData(), source.getData());
}

TEST_F(ArrayTest, AssignmentTakesTheCapacityOfItsSource)
{
    Array<unsigned> large;
    fill(large, 100);
    const Array<unsigned> small;
    large = small;
    EXPECT_EQ(0u, large.size());
    EXPECT_EQ(8u, large.capacity());
}

TEST_F(ArrayTest, SelfAssignmentDoesNothing)
{
    Array<CountingElement> array;
    fill(array, 9);
    const CountingElement* const data = array.getData();
    const Array<CountingElement>& self = array;
    CountingElement::counts().history.clear();
    array = self;
    EXPECT_TRUE(CountingElement::counts().history.empty());
    EXPECT_EQ(array.getData(), data);
    EXPECT_EQ(values(array), upTo(9));
}

TEST_F(ArrayTest, SwapExchangesElementsWithoutCopies)
{
    Array<CountingElement> a;
    Array<CountingElement> b;
    a.append(1);
    fill(b, 9);
    CountingElement::counts().history.clear();
    a.swap(b);
    EXPECT_TRUE(CountingElement::counts().history.empty());
    EXPECT_EQ(values(a), upTo(9));
    EXPECT_EQ(values(b), upTo(1));
    EXPECT_EQ(16u, a.capacity());
    EXPECT_EQ(8u, b.capacity());
}

// Clear and destruction

TEST_F(ArrayTest, ClearDestroysAscendingAndFallsBackToCapacityEight)
{
    for (const int count : {0, 3, 8, 9, 20}) {
        SCOPED_TRACE(count);
        CountingElement::reset();
        Array<CountingElement> array;
        for (int i = 1; i <= count; ++i) {
            array.append(i);
        }
        CountingElement::counts().history.clear();
        array.clear();
        EXPECT_EQ(events("destroy"), upTo(count));
        EXPECT_TRUE(events("copy").empty());
        EXPECT_EQ(0, CountingElement::counts().alive);
        EXPECT_EQ(0u, array.size());
        EXPECT_EQ(8u, array.capacity());
        array.append(5); // usable at once
        EXPECT_EQ(std::vector<int>{5}, values(array));
    }
}

TEST_F(ArrayTest, TruncateDestroysWhatIsTooMuchAndKeepsTheCapacity)
{
    CountingElement::reset();
    Array<CountingElement> array;
    fill(array, 20);
    CountingElement::counts().history.clear();
    array.truncate(18);
    EXPECT_EQ((std::vector<std::string>{"destroy 20", "destroy 19"}), CountingElement::counts().history);
    EXPECT_EQ(18u, array.size());
    EXPECT_EQ(32u, array.capacity());
    EXPECT_EQ(18, array[17].value);
    array.truncate(19);
    EXPECT_EQ(18u, array.size());
    array.truncate(0);
    EXPECT_EQ(0u, array.size());
    EXPECT_EQ(32u, array.capacity());
    EXPECT_EQ(0, CountingElement::counts().alive);
    FailingAllocator allocator(-1);
    array.append(5);
    EXPECT_EQ(0, allocator.requests());
}

TEST_F(ArrayTest, TruncateOfAnArrayWithoutABlockChangesNothing)
{
    Array<unsigned> array;
    array.truncate(0);
    array.truncate(3);
    EXPECT_EQ(0u, array.size());
    EXPECT_EQ(8u, array.capacity());
}

TEST_F(ArrayTest, ClearOnlyLowersTheCapacity)
{
    Array<unsigned> array;
    fill(array, 100);
    EXPECT_EQ(128u, array.capacity());
    array.clear();
    EXPECT_EQ(8u, array.capacity());
    expectOutOfBounds(array, 0, -1, 0);
}

TEST_F(ArrayTest, DestructionDestroysEachElementOnceAscending)
{
    {
        Array<CountingElement> array;
        for (int i = 1; i <= 10; ++i) {
            array.append(i);
        }
        CountingElement::counts().history.clear();
    }
    EXPECT_EQ(events("destroy"), upTo(10));
    EXPECT_EQ(0, CountingElement::counts().alive);
}

TEST_F(ArrayTest, ContainsComparesWithEachElement)
{
    Array<unsigned> array;
    EXPECT_FALSE(array.contains(0u));
    fill(array, 3);
    EXPECT_TRUE(array.contains(1u));
    EXPECT_TRUE(array.contains(3u));
    EXPECT_FALSE(array.contains(4u));
    EXPECT_FALSE(array.contains(0u)); // free slots do not count
    Array<String> texts;
    texts.append("a");
    EXPECT_TRUE(texts.contains("a"));
    EXPECT_FALSE(texts.contains("A"));
}

// Memory that cannot be had

TEST_F(ArrayTest, ArrayWithoutElementsTakesNoMemory)
{
    EXPECT_EQ("nothing thrown", messageWithoutMemory([] {
                  Array<double> array;
                  const Array<double> sized(0);
                  const Array<double> copy(array);
                  array.clear();
                  array = copy;
                  array.appendArray(sized);
                  array.grow(0, 1.0);
                  EXPECT_EQ(8u, array.capacity());
                  EXPECT_EQ(0u, array.size());
              }));
}

TEST_F(ArrayTest, FailedAllocationOfTheFirstElementNamesItAndLeavesTheArray)
{
    Array<CountingElement> array;
    EXPECT_EQ("Asked for array of size: 1", messageWithoutMemory([&array] { array.append(1); }));
    EXPECT_EQ(0u, array.size());
    EXPECT_EQ(8u, array.capacity());
    array.append(1);
    EXPECT_EQ(values(array), upTo(1));
}

TEST_F(ArrayTest, ArraysWithoutElementsAreIndependent)
{
    Array<int> first;
    Array<int> second;
    first.append(1);
    EXPECT_EQ(0u, second.size());
    first.swap(second);
    EXPECT_EQ(0u, first.size());
    first.append(2);
    EXPECT_EQ(1, second[0]);
    EXPECT_EQ(2, first[0]);
}

TEST_F(ArrayTest, FailedAllocationOfSizedConstructorNamesTheSizeAskedFor)
{
    EXPECT_EQ("Asked for array of size: 9", messageWithoutMemory([] { const Array<CountingElement> array(9); }));
}

TEST_F(ArrayTest, FailedAllocationOfAWrappedRequestNamesIt)
{
    // Two gigabytes are never requested from the system.
    EXPECT_EQ(messageWithoutMemory([] { const Array<unsigned char> array(0x80000001u); }), sizeMessage(0x80000001u));
}

TEST_F(ArrayTest, FailedAllocationOfACopyNamesTheCapacityOfItsSource)
{
    Array<CountingElement> source;
    fill(source, 9);
    EXPECT_EQ("Asked for array of size: 16",
              messageWithoutMemory([&source] { const Array<CountingElement> copy(source); }));
}

TEST_F(ArrayTest, FailedAllocationOfAssignmentNamesTheCapacityAndLeavesTheArray)
{
    Array<CountingElement> target;
    target.append(1);
    Array<CountingElement> source;
    fill(source, 17);
    EXPECT_EQ("Asked for array of size: 32", messageWithoutMemory([&] { target = source; }));
    EXPECT_EQ(std::vector<int>{1}, values(target));
}

TEST_F(ArrayTest, FailedAllocationOfAppendNamesCountPlusOneAndLeavesTheArray)
{
    Array<CountingElement> array;
    fill(array, 8);
    const CountingElement* const data = array.getData();
    EXPECT_EQ("Asked for array of size: 9", messageWithoutMemory([&array] { array.append(9); }));
    EXPECT_EQ(values(array), upTo(8));
    EXPECT_EQ(8u, array.capacity());
    EXPECT_EQ(array.getData(), data);
}

TEST_F(ArrayTest, FailedAllocationOfOtherGrowthNamesTheNewCountAndLeavesTheArray)
{
    Array<unsigned> array;
    fill(array, 5);
    const unsigned numbers[4] = {6, 7, 8, 9};
    EXPECT_EQ("Asked for array of size: 9", messageWithoutMemory([&] { array.append(numbers, 4); }));
    EXPECT_EQ("Asked for array of size: 10", messageWithoutMemory([&] { array.appendArray(array); }));
    EXPECT_EQ("Asked for array of size: 100", messageWithoutMemory([&] { array.grow(100, 1u); }));
    EXPECT_EQ((std::vector<unsigned>{1, 2, 3, 4, 5}), elements(array));
    EXPECT_EQ(8u, array.capacity());
}

TEST_F(ArrayTest, ClearNeedsNoMemory)
{
    Array<CountingElement> array;
    fill(array, 9);
    EXPECT_EQ("nothing thrown", messageWithoutMemory([&array] { array.clear(); }));
    EXPECT_EQ(0u, array.size());
    EXPECT_EQ(8u, array.capacity());
}

TEST_F(ArrayTest, MemoryFailingAtEachPointOfTextArraysLeavesThemAsTheyWere)
{
    const auto texts = [](unsigned first, unsigned count) {
        Array<String> array;
        for (unsigned i = 0; i < count; ++i) {
            array.append(longText(first + i));
        }
        return array;
    };
    Array<String> array = texts(1, 8);
    const Array<String> other = texts(50, 9);
    const String value = longText(99);
    const std::vector<String> before = elements(array);
    const auto unchanged = [&](bool wasThrown) {
        EXPECT_TRUE(wasThrown);
        EXPECT_EQ(elements(array), before);
        EXPECT_EQ(8u, array.capacity());
    };
    EXPECT_GE(failAtEachPoint([&] { const Array<String> copy(other); }, unchanged), 10);
    // Once the operation succeeds, the array is restored to its first state.
    const auto run = [&](const std::function<void()>& operation) {
        const int points = failAtEachPoint(operation, unchanged);
        array = texts(1, 8);
        return points;
    };
    EXPECT_GE(run([&] { array.append(value); }), 10);              // the block, eight old ones, the new one
    EXPECT_GE(run([&] { array.append(other.getData(), 9); }), 18); // the block, eight old ones, nine new ones
    EXPECT_GE(run([&] { array.appendArray(array); }), 17);
    EXPECT_GE(run([&] { array.grow(12, value); }), 13);
    EXPECT_GE(run([&] { array = other; }), 10);
}

TEST_F(ArrayTest, MemoryFailingWithinTheCapacityLeavesTheArrayAsItWas)
{
    Array<String> array;
    array.append(longText(1));
    const String values[3] = {longText(2), longText(3), longText(4)};
    const auto unchanged = [&](bool wasThrown) {
        EXPECT_TRUE(wasThrown);
        ASSERT_EQ(1u, array.size());
        EXPECT_EQ(array[0], longText(1));
    };
    EXPECT_EQ(3, failAtEachPoint([&] { array.append(values, 3); }, unchanged));
    EXPECT_EQ(4u, array.size());
}

// Memory that has run out for good: not even a message can be had

namespace {

/// What `operation` throws if every memory request fails from now on.
const char* thrownWithoutMemory(const std::function<void()>& operation)
{
    const FailingAllocator allocator(0, FailingAllocator::Failure::forGood);
    try {
        operation();
    } catch (const NullPointer& exception) {
        return std::strncmp(exception.what(), "Asked for", 9) == 0 ? "NullPointer" : "NullPointer without words";
    } catch (const IndexOutOfBounds& exception) {
        return exception.low() == 0 && exception.high() == 7 && exception.index() == 8 ? "IndexOutOfBounds" : "numbers";
    } catch (const std::bad_alloc&) {
        return "bad_alloc";
    }
    return "nothing";
}

} // namespace

TEST_F(ArrayTest, LastingExhaustionThrowsThePromisedTypes)
{
    Array<unsigned> array;
    fill(array, 8);
    const unsigned numbers[4] = {6, 7, 8, 9};
    const Array<unsigned> other(100);
    EXPECT_STREQ("NullPointer", thrownWithoutMemory([&] { array.append(9); }));
    EXPECT_STREQ("NullPointer", thrownWithoutMemory([&] { array.append(numbers, 4); }));
    EXPECT_STREQ("NullPointer", thrownWithoutMemory([&] { array.appendArray(array); }));
    EXPECT_STREQ("NullPointer", thrownWithoutMemory([&] { array.grow(100, 1u); }));
    EXPECT_STREQ("NullPointer", thrownWithoutMemory([&] { array = other; }));
    EXPECT_STREQ("NullPointer", thrownWithoutMemory([&] { const Array<unsigned> copy(other); }));
    EXPECT_STREQ("NullPointer", thrownWithoutMemory([] { const Array<unsigned> sized(8); }));
    EXPECT_STREQ("NullPointer", thrownWithoutMemory([] { const Array<double> huge(0x80000000u); }));
    EXPECT_STREQ("IndexOutOfBounds", thrownWithoutMemory([&] { static_cast<void>(array[8]); }));
    EXPECT_EQ((std::vector<unsigned>{1, 2, 3, 4, 5, 6, 7, 8}), elements(array));
}

// Elements that are not complete where the array is declared

namespace {

struct Tree {
    int number = 0;
    Array<Tree> children;
};

} // namespace

TEST_F(ArrayTest, HoldsElementsOfTheTypeThatItIsAMemberOf)
{
    Tree leaf;
    leaf.number = 2;
    Tree tree;
    tree.number = 1;
    tree.children.append(leaf);
    tree.children.appendArray(tree.children);
    leaf.children.append(tree);
    EXPECT_EQ(2, leaf.children[0].children[1].number);
    EXPECT_EQ(2u, leaf.children[0].children.size());
}

// Elements that refuse to be copied

namespace {

/// Lets one copy throw during `operation`: the first one, the second one, up to the `copies`-th.
void refuseEachCopy(int copies, const std::function<void()>& operation, const std::function<void()>& verify)
{
    for (int i = 0; i < copies; ++i) {
        SCOPED_TRACE("copy " + std::to_string(i));
        const int alive = CountingElement::counts().alive;
        CountingElement::counts().copiesUntilThrow = i;
        EXPECT_THROW(operation(), CountingElement::CopyRefused);
        CountingElement::counts().copiesUntilThrow = -1;
        EXPECT_EQ(CountingElement::counts().alive, alive);
        verify();
    }
}

} // namespace

TEST_F(ArrayTest, RefusedCopyLeavesTheArrayAsItWas)
{
    Array<CountingElement> array;
    fill(array, 8);
    Array<CountingElement> other;
    fill(other, 3);
    const CountingElement value(9);
    const CountingElement* const data = array.getData();
    const auto verify = [&] {
        EXPECT_EQ(values(array), upTo(8));
        EXPECT_EQ(8u, array.capacity());
        EXPECT_EQ(array.getData(), data);
        EXPECT_EQ(values(other), upTo(3));
    };
    refuseEachCopy(
        9, [&] { array.append(value); }, verify);
    refuseEachCopy(
        11, [&] { array.append(other.getData(), 3); }, verify);
    refuseEachCopy(
        11, [&] { array.appendArray(other); }, verify);
    refuseEachCopy(
        16, [&] { array.appendArray(array); }, verify);
    refuseEachCopy(
        10, [&] { array.grow(10, value); }, verify);
    refuseEachCopy(
        3, [&] { array = other; }, verify);
    refuseEachCopy(
        8, [&] { const Array<CountingElement> copy(array); }, verify);
}

TEST_F(ArrayTest, RefusedCopyWithinTheCapacityLeavesTheArrayAsItWas)
{
    Array<CountingElement> array;
    array.append(1);
    Array<CountingElement> other(3);
    const auto verify = [&] { EXPECT_EQ(values(array), upTo(1)); };
    refuseEachCopy(
        1, [&] { array.append(other[0]); }, verify);
    refuseEachCopy(
        3, [&] { array.appendArray(other); }, verify);
    refuseEachCopy(
        4, [&] { array.grow(5, other[0]); }, verify);
}

// Class names and serialization

TEST_F(ArrayTest, ClassNameOfArraysOfOthersIsTheSame)
{
    EXPECT_EQ(Array<Handle>::className(), String("ArrayOfOthers"));
    EXPECT_EQ(Array<Link>::className(), String("ArrayOfOthers"));
    EXPECT_EQ(Array<Record>::className(), String("ArrayOfOthers"));
    EXPECT_EQ(Array<CountingElement>::className(), String("ArrayOfOthers"));
    EXPECT_EQ(Array<int>::className(), String("ArrayOfOthers"));
    EXPECT_EQ(Array<float>::className(), String("ArrayOfOthers"));
}

TEST_F(ArrayTest, ArraysOfTheFoundationHaveNamesOfTheirOwn)
{
    EXPECT_EQ(Array<String>::className(), String("ArrayOfString"));
    EXPECT_EQ(Array<unsigned>::className(), String("ArrayOfUnsigned"));
    EXPECT_EQ(Array<double>::className(), String("ArrayOfDouble"));
    EXPECT_EQ(Array<unsigned char>::className(), String("ArrayOfByte"));
}

TEST_F(ArrayTest, ClassNameIsOneTextForTheProcess)
{
    EXPECT_EQ(&Array<Record>::className(), &Array<Record>::className());
    EXPECT_EQ(&Array<Record>().getClassName(), &Array<Record>::className());
    const Array<String> texts;
    const vesk::Serializable& base = texts;
    EXPECT_EQ(&base.getClassName(), &Array<String>::className());
}

TEST_F(ArrayTest, SerializationOfOthersIsRefusedWithTheName)
{
    Array<Record> array;
    array.append(Record{1.0, 2});
    String xml("before");
    try {
        array.serializeMembers("m_list", xml);
        ADD_FAILURE() << "nothing thrown";
    } catch (const SerializationFailed& exception) {
        EXPECT_STREQ("Serialization is not supported for: m_list", exception.what());
    }
    EXPECT_EQ(xml, String("before"));
    EXPECT_EQ(1u, array.size());
    EXPECT_THROW(array.doSerialization("m_list", xml), SerializationFailed);
    EXPECT_EQ(xml, String("before"));
}

TEST_F(ArrayTest, DeserializationOfOthersWritesTheNoticeAndLeavesTheArray)
{
    Array<Record> array;
    array.append(Record{1.0, 2});
    testing::internal::CaptureStderr();
    testing::internal::CaptureStdout();
    EXPECT_NO_THROW(array.deserializeMembers(nullptr));
    EXPECT_EQ("Serialization isn't support for this class!!!\n", testing::internal::GetCapturedStdout());
    EXPECT_EQ("", testing::internal::GetCapturedStderr());
    EXPECT_EQ((std::vector<Record>{{1.0, 2}}), elements(array));
}

TEST_F(ArrayTest, InsertedValueOfOthersDoesNothing)
{
    struct Opened : Array<Record> {
        void insert(String& text) { insertValueToContainer(0, nullptr, text); }
    };
    Opened array;
    array.append(Record{1.0, 2});
    String text("5");
    testing::internal::CaptureStdout();
    array.insert(text);
    EXPECT_EQ("", testing::internal::GetCapturedStdout());
    EXPECT_EQ(text, String("5"));
    EXPECT_EQ((std::vector<Record>{{1.0, 2}}), elements(array));
}
