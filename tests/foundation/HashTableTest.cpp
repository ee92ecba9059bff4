#include "support/FoundationTest.h"

#include <pugixml.hpp>

using namespace testSupport;
using namespace vesk;

namespace {

struct Resource {
    explicit Resource(int resourceNumber) : number(resourceNumber) {}
    int number;
};

using Handle = SharedResource<PointerStorage<Resource, 0, 3>, 0>;
using Link = CopiedResource<PointerStorage<Resource, 3, 2>>;

template <class V>
using Table = HashTable<String, V, EqualFunc<String>, HashFunc<String>>;
using TextTable = Table<String>;
using NumberTable = Table<unsigned>;
using HandleTable = Table<Handle>;
using LinkTable = Table<Link>;
using CountingTable = Table<CountingElement>;
using NumberBucket = _Bucket<String, unsigned, EqualFunc<String>>;
using CountingBucket = _Bucket<String, CountingElement, EqualFunc<String>>;

} // namespace

// Buckets

TEST(HashTableBucketTest, NewBucketHasNoNextAndCopiesOfKeyAndValue)
{
    String key("lamp");
    const NumberBucket bucket(key, 4);
    key.append("2");
    EXPECT_EQ(nullptr, bucket.next);
    EXPECT_EQ(bucket.key, String("lamp"));
    EXPECT_EQ(4u, bucket.value);
}

namespace {

String numbered(const char* prefix, unsigned number)
{
    String text(prefix);
    text.append(std::to_string(number).c_str());
    return text;
}

template <class V>
std::map<std::string, V> content(const Table<V>& table)
{
    std::map<std::string, V> all;
    for (const auto& bucket : table) {
        EXPECT_TRUE(all.emplace(bucket.key.data(), bucket.value).second) << "twice: " << bucket.key;
    }
    EXPECT_EQ(all.size(), table.size());
    return all;
}

/// The buckets of one head.
std::vector<const NumberBucket*> chain(const _HashTableRep& rep, unsigned head)
{
    std::vector<const NumberBucket*> buckets;
    for (const _BucketBase* bucket = rep.heads()[head]; bucket != nullptr; bucket = bucket->next) {
        buckets.push_back(static_cast<const NumberBucket*>(bucket));
    }
    return buckets;
}

NumberBucket* newBucket(const char* key, unsigned value)
{
    return new NumberBucket(key, value);
}

/// The events of traced keys and values, in order.
std::vector<std::string>& events()
{
    static std::vector<std::string> all;
    return all;
}

/// A key or value that reports its copies and comparisons.
struct Traced {
    Traced(const char* tracedText) : text(tracedText) {}
    Traced(const Traced& other) : text(other.text) { events().push_back("copy " + text); }
    Traced& operator=(const Traced&) = delete;
    ~Traced() { events().push_back("destroy " + text); }
    std::string text;
};

struct TracedEqual {
    static bool equal(const Traced& stored, const Traced& given)
    {
        events().push_back("equal " + stored.text + " " + given.text);
        lastGiven = &given;
        return stored.text == given.text;
    }
    static const Traced* lastGiven;
};

const Traced* TracedEqual::lastGiven = nullptr;

struct TracedHash {
    static unsigned hash(const Traced& key)
    {
        events().push_back("hash " + key.text);
        return static_cast<unsigned>(key.text.size());
    }
};

} // namespace

PRIVATE_MEMBER(numberTableRep, _HashTableRep NumberTable::*, &NumberTable::m_rep)
PRIVATE_MEMBER(repHeadCount, unsigned _HashTableRep::*, &_HashTableRep::m_headCount)
PRIVATE_MEMBER(repHeads, _BucketBase** _HashTableRep::*, &_HashTableRep::m_heads)

/// Values that are written and read as text, and record it.
template <>
struct vesk::detail::SerializedValue<Traced> {
    static constexpr bool isSupported = true;
    static const char* arrayName() { return "Abc"; }
    static String text(const Traced& value)
    {
        events().push_back("write " + value.text);
        return value.text.c_str();
    }
    static Traced value(const String& text)
    {
        events().push_back(std::string("read ") + text.data());
        return text.data();
    }
};

template class vesk::HashTable<String, String, EqualFunc<String>, HashFunc<String>>;
template class vesk::HashTable<String, Handle, EqualFunc<String>, HashFunc<String>>;
template class vesk::HashTable<String, Link, EqualFunc<String>, HashFunc<String>>;
template class vesk::HashTable<String, CountingElement, EqualFunc<String>, HashFunc<String>>;
template class vesk::_Bucket<String, Handle, EqualFunc<String>>;

TEST(HashTableBucketTest, HoldsNextKeyAndValueAndNothingMore)
{
    struct Expected {
        void* table;
        _BucketBase* next;
        String key;
        Handle value;
    };
    using Bucket = _Bucket<String, Handle, EqualFunc<String>>;
    EXPECT_EQ(sizeof(_BucketBase), 2 * sizeof(void*));
    EXPECT_EQ(sizeof(Bucket), sizeof(Expected));
    const Bucket bucket("k", Handle());
    EXPECT_LT(static_cast<const void*>(&bucket.key), static_cast<const void*>(&bucket.value));
}

TEST(HashTableBucketTest, VirtualOperationsStandInTheirOrder)
{
    EXPECT_TRUE(std::is_abstract<_BucketBase>::value);
    EXPECT_TRUE(std::has_virtual_destructor<_BucketBase>::value);
    EXPECT_EQ(2u, slotOf(&_BucketBase::equals)); // the destructor takes two places
    EXPECT_EQ(3u, slotOf(&_BucketBase::clone));
}

TEST(HashTableBucketTest, EqualsComparesTheKeyExactly)
{
    const NumberBucket bucket("lamp", 4);
    const String same("lamp");
    const String otherCase("Lamp");
    const String longer("lamps");
    EXPECT_TRUE(bucket.equals(&same));
    EXPECT_FALSE(bucket.equals(&otherCase));
    EXPECT_FALSE(bucket.equals(&longer));
    EXPECT_TRUE(EqualFunc<String>::equal("a", "a"));
    EXPECT_FALSE(EqualFunc<String>::equal("a", "A"));
}

TEST(HashTableBucketTest, CloneHasCopiesAndNoNext)
{
    using Bucket = _Bucket<String, Handle, EqualFunc<String>>;
    Bucket other("other", Handle());
    Bucket bucket("lamp", Handle(new Resource(3)));
    bucket.next = &other;
    {
        const std::unique_ptr<_BucketBase> clone(bucket.clone());
        const auto* const copy = static_cast<const Bucket*>(clone.get());
        EXPECT_EQ(nullptr, copy->next);
        EXPECT_EQ(copy->key, String("lamp"));
        EXPECT_NE(&copy->key, &bucket.key);
        EXPECT_EQ(copy->value.get(), bucket.value.get());
        EXPECT_EQ(2u, bucket.value.useCount());
    }
    EXPECT_EQ(1u, bucket.value.useCount());
}

TEST(HashTableBucketTest, DestructionEndsTheValueThenTheKey)
{
    {
        const Traced key("key");
        const Traced value("value");
        const std::unique_ptr<_BucketBase> bucket(new _Bucket<Traced, Traced, TracedEqual>(key, value));
        events().clear();
    }
    ASSERT_GE(events().size(), 2u);
    EXPECT_EQ("destroy value", events()[0]);
    EXPECT_EQ("destroy key", events()[1]);
}

// The chains

TEST(HashTableRepTest, NewTableIsEmptyWithThatManyHeads)
{
    for (const unsigned heads : {1u, 7u, 32u, 1000u}) {
        const _HashTableRep rep(heads);
        EXPECT_EQ(rep.headCount(), heads);
        EXPECT_EQ(0u, rep.size());
        for (unsigned i = 0; i < heads; ++i) {
            EXPECT_EQ(nullptr, rep.heads()[i]);
        }
    }
}

TEST(HashTableRepTest, TableOfNoHeadsIsUsable)
{
    _HashTableRep rep(0);
    const String key("a");
    EXPECT_EQ(nullptr, rep.lookup(5, &key));
    EXPECT_TRUE(rep.insert(5, newBucket("a", 1), &key));
    EXPECT_NE(nullptr, rep.lookup(5, &key));
}

TEST(HashTableRepTest, CountOfHeadsStandsBeforeTheHeads)
{
    // The two fields follow a first word of the table's own.
    const _HashTableRep rep(32);
    const auto* const start = reinterpret_cast<const unsigned char*>(&rep);
    const auto* const count = reinterpret_cast<const unsigned char*>(&repHeadCount(rep));
    const auto* const heads = reinterpret_cast<const unsigned char*>(&repHeads(rep));
    EXPECT_GT(count, start);
    EXPECT_GT(heads, count);
    EXPECT_EQ(32u, repHeadCount(rep));
    EXPECT_EQ(repHeads(rep), rep.heads());
}

TEST(HashTableRepTest, LookupFindsTheEqualKeyInTheChainOfItsHash)
{
    _HashTableRep rep(4);
    const String keys[] = {"a", "b", "c"};
    _BucketBase* buckets[3] = {};
    for (unsigned i = 0; i < 3; ++i) {
        buckets[i] = newBucket(keys[i].data(), i);
        EXPECT_TRUE(rep.insert(9, buckets[i], &keys[i])); // all in one chain
    }
    for (unsigned i = 0; i < 3; ++i) {
        EXPECT_EQ(rep.lookup(9, &keys[i]), buckets[i]);
    }
    const String absent("d");
    EXPECT_EQ(nullptr, rep.lookup(9, &absent));
    EXPECT_EQ(nullptr, rep.lookup(8, &keys[0])); // another chain
    EXPECT_EQ(3u, rep.size());
}

TEST(HashTableRepTest, InsertOfAnEqualKeyDeletesTheNewBucketAndSaysSo)
{
    CountingElement::reset();
    {
        _HashTableRep rep(4);
        const String key("a");
        EXPECT_TRUE(rep.insert(1, new CountingBucket(key, 1), &key));
        EXPECT_EQ(1, CountingElement::counts().alive);
        EXPECT_FALSE(rep.insert(1, new CountingBucket(key, 2), &key));
        EXPECT_EQ(1, CountingElement::counts().alive); // the refused one has gone
        EXPECT_EQ(1u, rep.size());
        EXPECT_EQ(1, static_cast<const CountingBucket*>(rep.lookup(1, &key))->value.value);
    }
    EXPECT_EQ(0, CountingElement::counts().alive);
}

TEST(HashTableRepTest, InsertWithoutCheckKeepsBothAndLookupGivesTheFirst)
{
    _HashTableRep rep(4);
    const String key("a");
    _BucketBase* const first = newBucket("a", 1);
    rep.insertWithoutCheck(1, first, &key);
    rep.insertWithoutCheck(1, newBucket("a", 2), &key);
    EXPECT_EQ(2u, rep.size());
    EXPECT_EQ(rep.lookup(1, &key), first);
    EXPECT_EQ(2u, chain(rep, 1).size());
}

TEST(HashTableRepTest, ClearDeletesAllBucketsAndKeepsTheTableUsable)
{
    CountingElement::reset();
    _HashTableRep rep(4);
    for (unsigned i = 0; i < 20; ++i) {
        const String key = numbered("k", i);
        rep.insert(i, new CountingBucket(key, static_cast<int>(i)), &key);
    }
    EXPECT_EQ(20, CountingElement::counts().alive);
    rep.clear();
    EXPECT_EQ(0, CountingElement::counts().alive);
    EXPECT_EQ(0u, rep.size());
    const String key("k3");
    EXPECT_EQ(nullptr, rep.lookup(3, &key));
    EXPECT_TRUE(rep.insert(3, new CountingBucket(key, 3), &key));
    EXPECT_NE(nullptr, rep.lookup(3, &key));
    rep.clear();
    rep.clear();
    EXPECT_EQ(0, CountingElement::counts().alive);
}

TEST(HashTableRepTest, DestructionDeletesAllBuckets)
{
    CountingElement::reset();
    {
        _HashTableRep rep(2);
        for (unsigned i = 0; i < 9; ++i) {
            const String key = numbered("k", i);
            rep.insert(i, new CountingBucket(key, 0), &key);
        }
        EXPECT_EQ(9, CountingElement::counts().alive);
    }
    EXPECT_EQ(0, CountingElement::counts().alive);
}

TEST(HashTableRepTest, CopyHasClonesInTheSameChains)
{
    _HashTableRep rep(3);
    for (unsigned i = 0; i < 7; ++i) {
        const String key = numbered("k", i);
        rep.insert(i, newBucket(key.data(), i), &key);
    }
    const _HashTableRep copy(rep);
    _HashTableRep assigned(50);
    const String old("old");
    assigned.insert(0, newBucket("old", 0), &old);
    EXPECT_EQ(&(assigned = rep), &assigned);
    for (const _HashTableRep* other : {&copy, const_cast<const _HashTableRep*>(&assigned)}) {
        EXPECT_EQ(3u, other->headCount());
        EXPECT_EQ(7u, other->size());
        EXPECT_EQ(nullptr, other->lookup(0, &old));
        for (unsigned head = 0; head < 3; ++head) {
            const auto mine = chain(rep, head);
            const auto theirs = chain(*other, head);
            ASSERT_EQ(mine.size(), theirs.size());
            for (std::size_t i = 0; i < mine.size(); ++i) {
                EXPECT_NE(mine[i], theirs[i]);
                EXPECT_EQ(mine[i]->key, theirs[i]->key);
                EXPECT_EQ(mine[i]->value, theirs[i]->value);
            }
        }
    }
    rep.clear();
    EXPECT_EQ(7u, copy.size());
}

TEST(HashTableRepTest, SelfAssignmentKeepsTheBuckets)
{
    _HashTableRep rep(3);
    const String key("a");
    _BucketBase* const bucket = newBucket("a", 1);
    rep.insert(5, bucket, &key);
    const _HashTableRep& self = rep;
    rep = self;
    EXPECT_EQ(rep.lookup(5, &key), bucket);
    EXPECT_EQ(1u, rep.size());
}

TEST(HashTableRepTest, ChainKeepsTheOrderOfInsertion)
{
    _HashTableRep rep(4);
    for (unsigned i = 0; i < 6; ++i) {
        const String key = numbered("k", i);
        rep.insert(2, newBucket(key.data(), i), &key);
    }
    const auto buckets = chain(rep, 2);
    ASSERT_EQ(6u, buckets.size());
    for (unsigned i = 0; i < 6; ++i) {
        EXPECT_EQ(buckets[i]->value, i);
    }
}

// The cursor

TEST(HashTableIteratorTest, EmptyTableHasNoBucket)
{
    const _HashTableRep rep(32);
    _HashTableIteratorBase cursor(rep.heads(), rep.heads() + rep.headCount());
    EXPECT_EQ(nullptr, cursor.current());
    ++cursor;
    EXPECT_EQ(nullptr, cursor.current());
    const _HashTableIteratorBase none(rep.heads(), rep.heads());
    EXPECT_EQ(nullptr, none.current());
}

TEST(HashTableIteratorTest, WalksAlongEachChainFromTheFirstHeadToTheLast)
{
    NumberBucket a("a", 1);
    NumberBucket b("b", 2);
    NumberBucket c("c", 3);
    NumberBucket d("d", 4);
    a.next = &b;
    c.next = &d;
    _BucketBase* heads[] = {nullptr, &a, nullptr, nullptr, &c, nullptr};
    _HashTableIteratorBase cursor(heads, heads + 6);
    EXPECT_EQ(cursor.current(), &a);
    EXPECT_EQ((++cursor).current(), &b);
    EXPECT_EQ((++cursor).current(), &c);
    EXPECT_EQ((++cursor).current(), &d);
    EXPECT_EQ(nullptr, (++cursor).current());
    EXPECT_EQ(nullptr, (++cursor).current());
}

TEST(HashTableIteratorTest, ReachesTheFirstAndTheLastHead)
{
    NumberBucket a("a", 1);
    NumberBucket b("b", 2);
    _BucketBase* heads[] = {&a, nullptr, &b};
    _HashTableIteratorBase cursor(heads, heads + 3);
    EXPECT_EQ(cursor.current(), &a);
    EXPECT_EQ((++cursor).current(), &b);
    EXPECT_EQ(nullptr, (++cursor).current());
}

// The table

TEST(HashTableTest, IsASerializableThatHoldsItsChainsByValue)
{
    EXPECT_TRUE((std::is_base_of<Serializable, TextTable>::value));
    EXPECT_EQ(sizeof(TextTable), sizeof(Serializable) + sizeof(_HashTableRep));
}

TEST(HashTableTest, LookupInAnEmptyTableIsNull)
{
    const HandleTable table(32);
    EXPECT_EQ(nullptr, table.lookup("lamp"));
    EXPECT_EQ(nullptr, table.lookup(""));
    EXPECT_EQ(0u, table.size());
}

TEST(HashTableTest, StartsWithTheHeadsItIsGiven)
{
    const NumberTable table(32);
    EXPECT_EQ(32u, numberTableRep(table).headCount());
}

TEST(HashTableTest, LookupFindsAnEqualKeyWithItsValue)
{
    NumberTable table(32);
    EXPECT_TRUE(table.insert("lamp", 3));
    EXPECT_TRUE(table.insert("", 4));
    const NumberTable::Bucket* const bucket = table.lookup("lamp");
    ASSERT_NE(nullptr, bucket);
    EXPECT_EQ(bucket->key, String("lamp"));
    EXPECT_EQ(3u, bucket->value);
    ASSERT_NE(nullptr, table.lookup(""));
    EXPECT_EQ(4u, table.lookup("")->value);
    EXPECT_EQ(nullptr, table.lookup("lam"));
    EXPECT_EQ(nullptr, table.lookup("lamps"));
    EXPECT_EQ(2u, table.size());
}

TEST(HashTableTest, KeyInTheTableIsIndependentOfTheCallers)
{
    TextTable table(32);
    String key("lamp");
    String value("value");
    table.insert(key, value);
    key.append("2");
    value = "other";
    ASSERT_NE(nullptr, table.lookup("lamp"));
    EXPECT_EQ(table.lookup("lamp")->value, String("value"));
    EXPECT_EQ(nullptr, table.lookup("lamp2"));
}

TEST(HashTableTest, KeysThatDifferByCaseAreDifferent)
{
    NumberTable table(32);
    EXPECT_TRUE(table.insert("Lamp", 1));
    EXPECT_TRUE(table.insert("lamp", 2));
    EXPECT_TRUE(table.insert("LAMP", 3));
    EXPECT_EQ(1u, table.lookup("Lamp")->value);
    EXPECT_EQ(2u, table.lookup("lamp")->value);
    EXPECT_EQ(3u, table.lookup("LAMP")->value);
    EXPECT_EQ(nullptr, table.lookup("lAMP"));
}

TEST(HashTableTest, RepeatedKeyKeepsItsFirstValueAndInsertAnswersFalse)
{
    CountingElement::reset();
    {
        CountingTable table(32);
        EXPECT_TRUE(table.insert("lamp", 1));
        const CountingTable::Bucket* const bucket = table.lookup("lamp");
        EXPECT_FALSE(table.insert("lamp", 2));
        EXPECT_EQ(1u, table.size());
        EXPECT_EQ(table.lookup("lamp"), bucket);
        EXPECT_EQ(1, bucket->value.value);
        EXPECT_EQ(1, CountingElement::counts().alive);
    }
    EXPECT_EQ(0, CountingElement::counts().alive);
}

TEST(HashTableTest, RefusedOwningHandleIsLetGo)
{
    HandleTable table(32);
    const Handle first(new Resource(1));
    const Handle second(new Resource(2));
    table.insert("a", first);
    table.insert("a", second);
    EXPECT_EQ(2u, first.useCount());
    EXPECT_EQ(1u, second.useCount());
}

TEST(HashTableTest, InsertionTakesAShareOfAnOwningHandleAndThePointerOfAnother)
{
    const Handle handle(new Resource(1));
    HandleTable owning(32);
    owning.insert("a", handle);
    EXPECT_EQ(2u, handle.useCount());
    LinkTable links(32);
    links.insert("a", Link(handle));
    EXPECT_EQ(2u, handle.useCount());
    EXPECT_EQ(links.lookup("a")->value.get(), handle.get());
}

TEST(HashTableTest, InsertionCopiesThenHashesThenAsksWithTheCallersKey)
{
    HashTable<Traced, Traced, TracedEqual, TracedHash> table(4);
    const Traced first("key");
    const Traced value("v");
    events().clear();
    table.insert(first, value);
    EXPECT_EQ((std::vector<std::string>{"copy key", "copy v", "hash key"}), events());
    const Traced second("yek"); // same hash
    events().clear();
    table.insert(second, value);
    EXPECT_EQ((std::vector<std::string>{"copy yek", "copy v", "hash yek", "equal key yek"}), events());
    EXPECT_EQ(TracedEqual::lastGiven, &second);
    events().clear();
    table.insert(first, value);
    EXPECT_EQ((std::vector<std::string>{"copy key", "copy v", "hash key", "equal key key", "destroy v", "destroy key"}),
              events());
    events().clear();
    EXPECT_NE(nullptr, table.lookup(second));
    EXPECT_EQ((std::vector<std::string>{"hash yek", "equal key yek", "equal yek yek"}), events());
    EXPECT_EQ(TracedEqual::lastGiven, &second);
}

TEST(HashTableTest, IterationVisitsEachBucketOnce)
{
    NumberTable table(32);
    EXPECT_TRUE(content(table).empty());
    EXPECT_FALSE(table.begin() != table.end());
    std::map<std::string, unsigned> expected;
    for (unsigned i = 0; i < 500; ++i) {
        const String key = numbered("node", i);
        table.insert(key, i);
        expected[key.data()] = i;
    }
    EXPECT_EQ(content(table), expected);
    EXPECT_EQ(table.begin()->key, (*table.begin()).key);
}

TEST(HashTableTest, CopyHasBucketsOfItsOwn)
{
    NumberTable table(32);
    for (unsigned i = 0; i < 100; ++i) {
        table.insert(numbered("k", i), i);
    }
    NumberTable copy(table);
    EXPECT_EQ(content(copy), content(table));
    EXPECT_NE(copy.lookup("k7"), table.lookup("k7"));
    copy.insert("new", 1);
    EXPECT_EQ(nullptr, table.lookup("new"));
    table.insert("other", 1);
    EXPECT_EQ(nullptr, copy.lookup("other"));
    for (unsigned i = 100; i < 1000; ++i) {
        copy.insert(numbered("k", i), i); // a copy grows on its own
    }
    EXPECT_EQ(999u, copy.lookup("k999")->value);
    EXPECT_EQ(101u, table.size());
}

TEST(HashTableTest, EachCopyOfTheTableSharesItsResources)
{
    const Handle handle(new Resource(1));
    HandleTable table(32);
    table.insert("a", handle);
    EXPECT_EQ(2u, handle.useCount());
    {
        const HandleTable first(table);
        EXPECT_EQ(3u, handle.useCount());
        HandleTable second(1);
        second = table;
        EXPECT_EQ(4u, handle.useCount());
        EXPECT_EQ(second.lookup("a")->value.get(), handle.get());
    }
    EXPECT_EQ(2u, handle.useCount());
}

TEST(HashTableTest, AssignmentReplacesTheContent)
{
    CountingElement::reset();
    {
        CountingTable table(32);
        CountingTable other(4);
        table.insert("old", 1);
        other.insert("a", 2);
        other.insert("b", 3);
        EXPECT_EQ(&(table = other), &table);
        EXPECT_EQ(4, CountingElement::counts().alive);
        EXPECT_EQ(nullptr, table.lookup("old"));
        EXPECT_EQ(2, table.lookup("a")->value.value);
        EXPECT_NE(table.lookup("a"), other.lookup("a"));
        EXPECT_EQ(2u, table.size());
    }
    EXPECT_EQ(0, CountingElement::counts().alive);
}

TEST(HashTableTest, SelfAssignmentKeepsTheContent)
{
    NumberTable table(32);
    table.insert("a", 1);
    const NumberTable::Bucket* const bucket = table.lookup("a");
    const NumberTable& self = table;
    table = self;
    EXPECT_EQ(table.lookup("a"), bucket);
    EXPECT_EQ(1u, table.size());
}

TEST(HashTableTest, RefusedCopyOfAValueLeavesBothTables)
{
    CountingElement::reset();
    {
        CountingTable table(2);
        CountingTable source(2);
        table.insert("old", 1);
        for (int i = 0; i < 5; ++i) {
            source.insert(numbered("k", static_cast<unsigned>(i)), i);
        }
        for (int i = 0; i < 5; ++i) {
            CountingElement::counts().copiesUntilThrow = i;
            EXPECT_THROW(table = source, CountingElement::CopyRefused);
            CountingElement::counts().copiesUntilThrow = i;
            EXPECT_THROW(const CountingTable copy(source), CountingElement::CopyRefused);
            CountingElement::counts().copiesUntilThrow = -1;
            EXPECT_EQ(1u, table.size());
            EXPECT_NE(nullptr, table.lookup("old"));
            EXPECT_EQ(5u, source.size());
            EXPECT_EQ(6, CountingElement::counts().alive);
        }
        CountingElement::counts().copiesUntilThrow = 0;
        const CountingElement value(9);
        EXPECT_THROW(table.insert("new", value), CountingElement::CopyRefused);
        CountingElement::counts().copiesUntilThrow = -1;
        EXPECT_EQ(1u, table.size());
        EXPECT_EQ(nullptr, table.lookup("new"));
    }
    EXPECT_EQ(0, CountingElement::counts().alive);
}

TEST(HashTableTest, MemoryFailingAtEachPointOfAnInsertionLosesNothing)
{
    for (long point = 0; point < 5; ++point) {
        SCOPED_TRACE(point);
        TextTable table(4);
        for (unsigned i = 0; i < 4; ++i) { // the next one lets the heads grow
            table.insert(longText(i), longText(i));
        }
        const String key = longText(4);
        const String value = longText(5);
        bool wasThrown = false;
        try {
            const FailingAllocator allocator(point);
            table.insert(key, value);
        } catch (const std::bad_alloc&) {
            wasThrown = true;
        }
        EXPECT_EQ(wasThrown, point < 3); // the bucket, its key, its value; without larger heads it does as well
        EXPECT_EQ(table.size(), wasThrown ? 4u : 5u);
        EXPECT_EQ(table.lookup(key) == nullptr, wasThrown);
        for (unsigned i = 0; i < 4; ++i) {
            EXPECT_NE(nullptr, table.lookup(longText(i)));
        }
        EXPECT_EQ(table.insert(key, value), wasThrown);
        EXPECT_EQ(5u, table.size());
    }
}

TEST(HashTableTest, MemoryFailingAtEachPointOfACopyLosesNothing)
{
    TextTable source(4);
    TextTable table(4);
    table.insert("old", "value");
    for (unsigned i = 0; i < 10; ++i) {
        source.insert(longText(i), longText(i));
    }
    int points = 0;
    for (bool hasFailed = true; hasFailed && points < 1000; ++points) {
        bool wasThrown = false;
        {
            const FailingAllocator allocator(points);
            try {
                table = source;
            } catch (const std::bad_alloc&) {
                wasThrown = true;
            }
            hasFailed = allocator.hasFailed();
        }
        if (hasFailed) {
            EXPECT_TRUE(wasThrown);
            EXPECT_EQ(1u, table.size());
            EXPECT_NE(nullptr, table.lookup("old"));
        }
    }
    EXPECT_EQ(32, points); // the heads, ten times bucket, key and value, and the run without failure
    EXPECT_EQ(10u, table.size());
}

// Size

namespace {

struct KeyRow : Row {
    std::string (*key)(unsigned number);
};

class HashTableSizeTest : public testing::TestWithParam<KeyRow> {};

std::string hexadecimal(unsigned number)
{
    char digits[16] = {};
    std::snprintf(digits, sizeof(digits), "%08x", number);
    return digits;
}

} // namespace

TEST_P(HashTableSizeTest, ChainsOfManyKeysStayShort)
{
    const unsigned count = GetParam().name == std::string("Plain") ? 1000000u : 200000u;
    NumberTable table(32);
    for (unsigned i = 0; i < count; ++i) {
        ASSERT_TRUE(table.insert(GetParam().key(i).c_str(), i));
    }
    EXPECT_EQ(table.size(), count);
    const _HashTableRep& rep = numberTableRep(table);
    EXPECT_GE(rep.headCount(), count); // one bucket for each head on average
    EXPECT_LE(rep.headCount(), 4 * count);
    std::size_t longest = 0;
    double steps = 0.0;
    unsigned found = 0;
    for (unsigned head = 0; head < rep.headCount(); ++head) {
        const std::size_t length = chain(rep, head).size();
        longest = std::max(longest, length);
        steps += static_cast<double>(length) * static_cast<double>(length + 1) / 2.0;
        found += static_cast<unsigned>(length);
    }
    EXPECT_EQ(found, count);
    // Random placement gives chains of up to about ten; all lookups together take 1.5 steps per key.
    EXPECT_LE(longest, 20u);
    EXPECT_LE(steps / count, 2.0);
    for (unsigned i = 0; i < count; i += 997) {
        const NumberTable::Bucket* const bucket = table.lookup(GetParam().key(i).c_str());
        ASSERT_NE(nullptr, bucket) << i;
        EXPECT_EQ(bucket->value, i);
    }
    EXPECT_EQ(nullptr, table.lookup("absent"));
    EXPECT_FALSE(table.insert(GetParam().key(count / 2).c_str(), 0u));
}

INSTANTIATE_ROWS(Rows, HashTableSizeTest, {"Plain", [](unsigned i) { return "node" + std::to_string(i); }},
                 {"Number", [](unsigned i) { return std::to_string(i); }},
                 {"SevenBytesThenOneWord", [](unsigned i) { return "geom-id" + hexadecimal(i); }},
                 {"WholeWord", [](unsigned i) { return hexadecimal(i); }},
                 {"LongPrefix", [](unsigned i) { return std::string(100, 'x') + std::to_string(i); }},
                 {"LongSuffix", [](unsigned i) { return hexadecimal(i) + "-lib-visual_scene-instance"; }},
                 {"Reversed",
                  [](unsigned i) {
                      std::string text = hexadecimal(i);
                      std::reverse(text.begin(), text.end());
                      return text + "________";
                  }},
                 {"ThreeBytes", [](unsigned i) {
                      const char text[] = {static_cast<char>(1 + i % 64), static_cast<char>(1 + i / 64 % 64),
                                           static_cast<char>(1 + i / 4096), '\0'};
                      return std::string(text);
                  }});

TEST(HashTableTest, HashOfATextIsTheSameForEqualTexts)
{
    const String a("lamp");
    String b("la");
    b.append("mp");
    EXPECT_EQ(HashFunc<String>::hash(a), HashFunc<String>::hash(b));
    EXPECT_EQ(HashFunc<String>::hash(String()), HashFunc<String>::hash(""));
    std::set<unsigned> hashes;
    for (unsigned length = 0; length < 40; ++length) {
        hashes.insert(HashFunc<String>::hash(std::string(length, 'a').c_str()));
    }
    EXPECT_EQ(40u, hashes.size());
}

TEST(HashTableTest, HeadsGrowButBucketsStayWhereTheyAre)
{
    NumberTable table(32);
    std::vector<const NumberTable::Bucket*> buckets;
    for (unsigned i = 0; i < 32; ++i) {
        table.insert(numbered("k", i), i);
        buckets.push_back(table.lookup(numbered("k", i)));
    }
    const _HashTableRep& rep = numberTableRep(table);
    EXPECT_EQ(32u, rep.headCount());
    for (unsigned i = 32; i < 5000; ++i) {
        table.insert(numbered("k", i), i);
    }
    EXPECT_GT(rep.headCount(), 32u);
    for (unsigned i = 0; i < 32; ++i) {
        EXPECT_EQ(table.lookup(numbered("k", i)), buckets[i]);
    }
}

TEST(HashTableTest, ChainsKeepTheOrderOfInsertionWhenTheHeadsGrow)
{
    NumberTable table(2);
    for (unsigned i = 0; i < 3000; ++i) {
        table.insert(numbered("k", i), i);
    }
    const _HashTableRep& rep = numberTableRep(table);
    for (unsigned head = 0; head < rep.headCount(); ++head) {
        const auto buckets = chain(rep, head);
        for (std::size_t i = 1; i < buckets.size(); ++i) {
            EXPECT_LT(buckets[i - 1]->value, buckets[i]->value);
        }
    }
}

// Keys that were made to collide

namespace {

/// Counts the comparisons.
struct CountingEqual {
    static bool equal(const String& a, const String& b)
    {
        ++count;
        return a == b;
    }
    static std::size_t count;
};

std::size_t CountingEqual::count = 0;

/// A custom hash without a key.
struct UnkeyedHash {
    static unsigned hash(const String& key) { return HashFunc<String>::hash(key); }
};

template <class Hash>
using CountedTable = HashTable<String, unsigned, CountingEqual, Hash>;

template <class Table>
void insertAll(Table& table, const std::vector<std::string>& keys)
{
    for (std::size_t i = 0; i < keys.size(); ++i) {
        EXPECT_TRUE(table.insert(keys[i].c_str(), static_cast<unsigned>(i)));
    }
}

template <class Table>
void expectAll(const Table& table, const std::vector<std::string>& keys)
{
    EXPECT_EQ(keys.size(), table.size());
    for (std::size_t i = 0; i < keys.size(); ++i) {
        const auto* const bucket = table.lookup(keys[i].c_str());
        ASSERT_NE(nullptr, bucket) << keys[i];
        EXPECT_EQ(i, bucket->value);
    }
}

template <class Table>
std::vector<unsigned> walk(const Table& table)
{
    std::vector<unsigned> values;
    for (const auto& bucket : table) {
        values.push_back(bucket.value);
    }
    return values;
}

bool isKeyed(const NumberTable& table)
{
    return numberTableRep(table).isKeyed();
}

} // namespace

TEST(CollidingKeysTest, CostAsManyComparisonsAsOthers)
{
    const std::vector<std::string> keys = testSupport::collidingTexts(4000);
    ASSERT_EQ(4000u, keys.size());
    std::set<unsigned> hashes;
    for (const std::string& key : keys) {
        hashes.insert(HashFunc<String>::hash(key.c_str()));
    }
    ASSERT_EQ(1u, hashes.size());
    CountedTable<HashFunc<String>> table(32);
    CountingEqual::count = 0;
    insertAll(table, keys);
    expectAll(table, keys);
    EXPECT_LE(CountingEqual::count, 4 * keys.size());
}

TEST(CollidingKeysTest, NeedAKeyedHash)
{
    const std::vector<std::string> keys = testSupport::collidingTexts(500);
    CountedTable<UnkeyedHash> table(32);
    CountingEqual::count = 0;
    insertAll(table, keys);
    EXPECT_EQ(500u * 499u / 2, CountingEqual::count);
    expectAll(table, keys);
}

TEST(CollidingKeysTest, AreFoundAfterAPreparationToo)
{
    const std::vector<std::string> keys = testSupport::collidingTexts(1000);
    NumberTable table(32);
    table.reserve(1000);
    insertAll(table, keys);
    expectAll(table, keys);
    EXPECT_FALSE(table.insert(keys[7].c_str(), 1000));
    EXPECT_EQ(nullptr, table.lookup("absent"));
    EXPECT_TRUE(isKeyed(table));
}

TEST(CollidingKeysTest, GoOverWhenAChainGrowsPastItsBound)
{
    const std::vector<std::string> keys = testSupport::collidingTexts(_HashTableRep::maxChain + 1);
    NumberTable table(32);
    for (unsigned i = 0; i < _HashTableRep::maxChain; ++i) {
        table.insert(keys[i].c_str(), i);
    }
    EXPECT_FALSE(isKeyed(table));
    std::vector<unsigned> inOrder(_HashTableRep::maxChain);
    std::iota(inOrder.begin(), inOrder.end(), 0u);
    EXPECT_EQ(inOrder, walk(table));
    const NumberTable::Bucket* const bucket = table.lookup(keys[3].c_str());
    table.insert(keys.back().c_str(), _HashTableRep::maxChain);
    EXPECT_TRUE(isKeyed(table));
    EXPECT_EQ(bucket, table.lookup(keys[3].c_str())); // buckets stay where they are
    expectAll(table, keys);
}

TEST(CollidingKeysTest, HaveASecretOfTheirOwnInEachTable)
{
    const std::vector<std::string> keys = testSupport::collidingTexts(1000);
    NumberTable first(32);
    NumberTable second(32);
    insertAll(first, keys);
    insertAll(second, keys);
    EXPECT_NE(walk(first), walk(second));
}

TEST(CollidingKeysTest, AreCopiedWithTheirSecret)
{
    const std::vector<std::string> keys = testSupport::collidingTexts(200);
    NumberTable table(32);
    insertAll(table, keys);
    const NumberTable copy(table);
    NumberTable assigned(1);
    assigned.insert("other", 9);
    assigned = table;
    EXPECT_EQ(walk(table), walk(copy));
    expectAll(copy, keys);
    expectAll(assigned, keys);
    assigned.insert("one more", 200);
    EXPECT_NE(nullptr, assigned.lookup("one more"));
}

TEST(CollidingKeysTest, LeaveNothingBehindInAClearedTable)
{
    const std::vector<std::string> keys = testSupport::collidingTexts(200);
    NumberTable table(32);
    insertAll(table, keys);
    _HashTableRep& rep = numberTableRep(table);
    EXPECT_TRUE(rep.isKeyed());
    rep.clear();
    EXPECT_FALSE(rep.isKeyed());
    insertAll(table, keys);
    expectAll(table, keys);
}

TEST(CollidingKeysTest, KeepEqualKeysInTheirOrder)
{
    const auto keyedHash = [](const _BucketBase* bucket, const void* key, const HashSecret& secret) {
        return HashFunc<String>::keyedHash(bucket != nullptr ? static_cast<const NumberBucket*>(bucket)->key
                                                             : *static_cast<const String*>(key),
                                           secret);
    };
    _HashTableRep rep(4, nullptr, keyedHash);
    const String twice("twice");
    const _BucketBase* const first = newBucket("twice", 1);
    rep.insertWithoutCheck(2, const_cast<_BucketBase*>(first), &twice);
    rep.insertWithoutCheck(2, newBucket("twice", 2), &twice);
    for (unsigned i = 0; i < _HashTableRep::maxChain; ++i) {
        const String key = numbered("k", i);
        rep.insertWithoutCheck(2, newBucket(key.data(), i), &key);
    }
    EXPECT_TRUE(rep.isKeyed());
    EXPECT_EQ(first, rep.lookup(2, &twice));
    EXPECT_EQ(_HashTableRep::maxChain + 2, rep.size());
}

TEST(CollidingKeysTest, OrdinaryKeysStayInTheSameOrderInEveryTable)
{
    std::vector<std::string> keys;
    for (unsigned i = 0; i < 50000; ++i) {
        keys.push_back("node-" + std::to_string(i));
    }
    NumberTable first(32);
    NumberTable second(32);
    insertAll(first, keys);
    insertAll(second, keys);
    EXPECT_FALSE(isKeyed(first));
    EXPECT_EQ(walk(first), walk(second));
}

// Computed by an implementation of the formula in another language, which gives the number that its authors published.
TEST(CollidingKeysTest, KeyedHashIsSipHash)
{
    HashSecret secret;
    secret.words[0] = 0x0706050403020100u;
    secret.words[1] = 0x0F0E0D0C0B0A0908u;
    const auto hash = [&](const char* text) { return HashFunc<String>::keyedHash(text, secret); };
    EXPECT_EQ(0xDD0E0E31u, hash(""));
    EXPECT_EQ(0xA71148CAu, hash("a"));
    EXPECT_EQ(0x958C4A67u, hash("lamp"));
    EXPECT_EQ(0xA380F00Fu, hash("eightbyt"));
    EXPECT_EQ(0x4F9C18B9u, hash("a text of 24 characters!"));
    std::string text;
    for (int i = 0; i < 80; ++i) {
        text += "long"; // more bytes than their number modulo 256 says
    }
    EXPECT_EQ(0x824A3FA8u, hash(text.c_str()));
}

// Class names

TEST(HashTableTest, ClassNameIsMadeOfTheInnerNamesOfBothArrays)
{
    EXPECT_EQ(HandleTable::className(), String("H(rayOfStrin,rayOfOther)"));
    EXPECT_EQ(LinkTable::className(), String("H(rayOfStrin,rayOfOther)"));
    EXPECT_EQ(TextTable::className(), String("H(rayOfStrin,rayOfStrin)"));
    EXPECT_EQ(NumberTable::className(), String("H(rayOfStrin,rayOfUnsigne)"));
}

namespace {

struct NameOfThree {
    bool operator==(const NameOfThree&) const { return true; }
};
struct NameOfFour : NameOfThree {};

struct NoHash {
    template <class K>
    static unsigned hash(const K&)
    {
        return 0;
    }
};

} // namespace

template <>
struct vesk::detail::SerializedValue<NameOfThree> {
    static constexpr bool isSupported = false;
    static const char* arrayName() { return "Abc"; }
};

template <>
struct vesk::detail::SerializedValue<NameOfFour> {
    static constexpr bool isSupported = false;
    static const char* arrayName() { return "Abcd"; }
};

TEST(HashTableTest, NameOfFewerThanFourCharactersStaysAsItIs)
{
    using Three = HashTable<NameOfThree, NameOfFour, EqualFunc<NameOfThree>, NoHash>;
    EXPECT_EQ(Three::className(), String("H(Abc,c)"));
    EXPECT_EQ(Three(4).getClassName(), String("H(Abc,c)"));
}

TEST(HashTableTest, ClassNameKeepsReturningTheSameObject)
{
    const String& first = HandleTable::className();
    EXPECT_EQ(&HandleTable::className(), &first);
    EXPECT_EQ(HandleTable::className(), String("H(rayOfStrin,rayOfOther)")); // nothing is appended again
    const HandleTable table(32);
    EXPECT_EQ(&table.getClassName(), &first);
    const Serializable& base = table;
    EXPECT_EQ(&base.getClassName(), &first);
    EXPECT_NE(&LinkTable::className(), &first);
}

// Serialization

namespace {

/// Records the calls that the table makes on its base class.
class TracedTable : public HashTable<Traced, Traced, TracedEqual, TracedHash> {
public:
    TracedTable() : HashTable<Traced, Traced, TracedEqual, TracedHash>(4) {}

protected:
    void serializeBegin(const String& name) override
    {
        events().push_back(std::string("serializeBegin ") + name.data());
        Serializable::serializeBegin(name);
    }
    void serializeEnd() override
    {
        events().push_back("serializeEnd");
        Serializable::serializeEnd();
    }
    void getSerializedXML(String& xml) override
    {
        events().push_back("getSerializedXML");
        Serializable::getSerializedXML(xml);
    }
    void deserializeBegin(const XmlElement* element) override
    {
        events().push_back("deserializeBegin " + std::to_string(size()));
        Serializable::deserializeBegin(element);
    }
    void deserializeEnd() override
    {
        events().push_back("deserializeEnd " + std::to_string(size()));
        Serializable::deserializeEnd();
    }
};

/// The events without copies and destructions.
std::vector<std::string> calls()
{
    std::vector<std::string> all;
    for (const std::string& event : events()) {
        if (event.compare(0, 5, "copy ") != 0 && event.compare(0, 8, "destroy ") != 0) {
            all.push_back(event);
        }
    }
    return all;
}

/// Traced keys with values that refuse to be read or written.
using RefusingTable = HashTable<Traced, Handle, TracedEqual, TracedHash>;

/// Writes the input of a table of texts, with arrays of any sizes.
class TwoArrays : public Serializable {
public:
    const String& getClassName() const override { return TextTable::className(); }
    void serializeMembers(const String& name, String& xml) override
    {
        serializeBegin(name);
        serialize("m_arrKey", keys);
        serialize("m_arrValue", values);
        serializeEnd();
        getSerializedXML(xml);
    }
    String xml()
    {
        String text;
        doSerialization("table", text);
        return text;
    }
    Array<String> keys;
    Array<String> values;
};

void fill(Array<String>& array, const std::vector<const char*>& texts)
{
    for (const char* text : texts) {
        array.append(text);
    }
}

} // namespace

TEST(HashTableTest, SerializationCallsInItsOrder)
{
    TracedTable table;
    table.insert("a", "1");
    table.insert("bb", "2"); // by the length, in the next head
    events().clear();
    String xml("before");
    table.serializeMembers("t", xml);
    EXPECT_EQ((std::vector<std::string>{"serializeBegin t", "write a", "write bb", "write 1", "write 2", "serializeEnd",
                                        "getSerializedXML"}),
              calls());
    EXPECT_EQ(xml.subString(0, 6), String("before"));
    const std::string all = xml.data();
    EXPECT_LT(all.find("m_arrKey"), all.find("m_arrValue"));
    EXPECT_NE(std::string::npos, all.find("m_arrValue"));
}

TEST(HashTableTest, DeserializationCallsInItsOrderAndClearsOnlyBehindTheReading)
{
    TracedTable table;
    table.insert("a", "1");
    table.insert("bb", "2");
    String xml;
    table.doSerialization("t", xml);
    TracedTable read;
    read.insert("old", "0");
    events().clear();
    EXPECT_TRUE(read.deserialize(xml));
    EXPECT_EQ((std::vector<std::string>{"deserializeBegin 1", "read a", "read bb", "read 1", "read 2", "hash a",
                                        "hash bb", "deserializeEnd 2"}),
              calls());
    EXPECT_EQ(nullptr, read.lookup("old"));
    EXPECT_EQ("1", read.lookup("a")->value.text);
    EXPECT_EQ("2", read.lookup("bb")->value.text);
}

TEST(HashTableTest, SerializationOfHandlesIsRefusedAtTheValuesBehindTheKeys)
{
    RefusingTable table(4);
    table.insert("a", Handle(new Resource(1)));
    table.insert("bb", Handle(new Resource(2)));
    events().clear();
    String xml("before");
    try {
        table.serializeMembers("t", xml);
        ADD_FAILURE() << "nothing thrown";
    } catch (const SerializationFailed& exception) {
        EXPECT_STREQ("Serialization is not supported for: m_arrValue", exception.what());
    }
    EXPECT_EQ((std::vector<std::string>{"write a", "write bb"}), calls()); // the keys have been written
    EXPECT_EQ(xml, String("before"));
    EXPECT_EQ(2u, table.size());
    EXPECT_EQ(1u, table.lookup("a")->value.useCount());
}

TEST(HashTableTest, SerializationOfEveryTableOfHandlesIsRefusedAlsoWhenEmpty)
{
    HandleTable handles(32);
    LinkTable links(32);
    String xml("before");
    for (Serializable* table : {static_cast<Serializable*>(&handles), static_cast<Serializable*>(&links)}) {
        try {
            table->doSerialization("t", xml);
            ADD_FAILURE() << "nothing thrown";
        } catch (const SerializationFailed& exception) {
            EXPECT_STREQ("Serialization is not supported for: m_arrValue", exception.what());
        }
        EXPECT_EQ(xml, String("before"));
    }
}

TEST(HashTableTest, TableOfTextsRoundTrips)
{
    TextTable table(32);
    const char* const texts[] = {"",     " ",    "lamp",        "Lamp", "a<b>&\"'", "100%41", "\x01\x7F\xFF",
                                 "\n\t", "\xC3", "\xE2\x82\xAC"};
    for (const char* text : texts) {
        for (unsigned i = 0; i < 20; ++i) {
            table.insert(numbered(text, i), text);
        }
    }
    String xml;
    table.doSerialization("table", xml);
    pugi::xml_document document;
    EXPECT_TRUE(document.load_buffer(xml.data(), xml.size(), pugi::parse_full, pugi::encoding_utf8));
    TextTable read(32);
    read.insert("old", "old");
    EXPECT_TRUE(read.deserialize(xml));
    EXPECT_EQ(content(read), content(table));
    EXPECT_EQ(200u, read.size());
    EXPECT_EQ(nullptr, read.lookup("old"));
}

TEST(HashTableTest, EmptyTableRoundTripsAndClears)
{
    TextTable table(32);
    String xml;
    table.doSerialization("table", xml);
    TextTable read(32);
    read.insert("old", "old");
    EXPECT_TRUE(read.deserialize(xml));
    EXPECT_EQ(0u, read.size());
}

TEST(HashTableTest, DeserializationOfFewerValuesThanKeysThrowsWithTheEarlierPairsInserted)
{
    TwoArrays written;
    fill(written.keys, {"a", "b", "c", "d"});
    fill(written.values, {"1", "2"});
    const String xml = written.xml();
    TextTable table(32);
    table.insert("old", "old");
    try {
        static_cast<void>(table.deserialize(xml));
        ADD_FAILURE() << "nothing thrown";
    } catch (const IndexOutOfBounds& exception) {
        EXPECT_EQ(0, exception.low());
        EXPECT_EQ(1, exception.high());
        EXPECT_EQ(2, exception.index());
    }
    EXPECT_EQ(content(table), (std::map<std::string, String>{{"a", "1"}, {"b", "2"}}));
    table.insert("c", "3"); // still usable
    EXPECT_EQ(table.lookup("c")->value, String("3"));
}

TEST(HashTableTest, DeserializationOfKeysWithoutValuesThrowsWithHighMinusOne)
{
    TwoArrays written;
    fill(written.keys, {"a"});
    const String xml = written.xml();
    TextTable table(32);
    table.insert("old", "old");
    try {
        static_cast<void>(table.deserialize(xml));
        ADD_FAILURE() << "nothing thrown";
    } catch (const IndexOutOfBounds& exception) {
        EXPECT_EQ(0, exception.low());
        EXPECT_EQ(-1, exception.high());
        EXPECT_EQ(0, exception.index());
    }
    EXPECT_EQ(0u, table.size());
}

TEST(HashTableTest, DeserializationIgnoresValuesBehindTheLastKey)
{
    TwoArrays written;
    fill(written.keys, {"a"});
    fill(written.values, {"1", "2", "3"});
    TextTable table(32);
    EXPECT_TRUE(table.deserialize(written.xml()));
    EXPECT_EQ(content(table), (std::map<std::string, String>{{"a", "1"}}));
}

TEST(HashTableTest, DeserializationInsertsRepeatedKeysWithoutCheck)
{
    TwoArrays written;
    fill(written.keys, {"a", "a"});
    fill(written.values, {"1", "2"});
    TextTable table(32);
    EXPECT_TRUE(table.deserialize(written.xml()));
    EXPECT_EQ(2u, table.size());
    EXPECT_EQ(table.lookup("a")->value, String("1"));
}

TEST(HashTableTest, DeserializationOfAnotherClassIsRefusedAndChangesNothing)
{
    Array<String> array;
    String xml;
    array.doSerialization("table", xml);
    TextTable table(32);
    table.insert("kept", "1");
    EXPECT_FALSE(table.deserialize(xml));
    EXPECT_FALSE(table.deserialize("no markup"));
    EXPECT_EQ(content(table), (std::map<std::string, String>{{"kept", "1"}}));
}

TEST(HashTableTest, FailedAllocationOfEitherArrayLeavesTheTable)
{
    TextTable table(32);
    table.insert("kept", "1");
    String xml("before");
    const auto message = [](long point, const std::function<void()>& operation) -> std::string {
        const FailingAllocator allocator(point);
        try {
            operation();
        } catch (const NullPointer& exception) {
            return exception.what();
        }
        return "nothing thrown";
    };
    for (const long point : {0L, 1L}) { // the keys, the values; their texts share what the table holds
        SCOPED_TRACE(point);
        EXPECT_EQ("Asked for array of size: 1", message(point, [&] { table.serializeMembers("t", xml); }));
        EXPECT_EQ(xml, String("before"));
        EXPECT_EQ(content(table), (std::map<std::string, String>{{"kept", "1"}}));
    }
}

TEST(HashTableTest, InsertedValueIsInheritedAndDoesNothing)
{
    struct Opened : TextTable {
        Opened() : TextTable(32) {}
        void insertText(String& text) { insertValueToContainer(0, nullptr, text); }
    };
    Opened table;
    String text("v");
    table.insertText(text);
    EXPECT_EQ(text, String("v"));
    EXPECT_EQ(0u, table.size());
}
