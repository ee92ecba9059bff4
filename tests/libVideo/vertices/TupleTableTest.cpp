#include "support/VideoTest.h"

#include <libVideo/SceneGraph/vertices/TupleTable.h>

#include <map>
#include <random>

namespace {

using namespace libVideo;
using namespace testSupport;

using libVideo::detail::TupleTable;
using Tuple = std::vector<unsigned>;
using Answer = std::pair<unsigned, bool>; ///< the number, and whether the tuple was new

static_assert(std::is_same_v<TupleTable::Place, decltype(std::declval<TupleTable&>().insert(nullptr))>);

Answer insert(TupleTable& table, const Tuple& tuple)
{
    const TupleTable::Place place = table.insert(tuple.data());
    return {place.index, place.isNew};
}

/// What a table has to answer, by comparing whole tuples in their order.
class Model {
public:
    Answer insert(const Tuple& tuple)
    {
        const auto [known, isNew] = m_numbers.emplace(tuple, static_cast<unsigned>(m_numbers.size()));
        return {known->second, isNew};
    }

private:
    std::map<Tuple, unsigned> m_numbers;
};

/// Gives the same tuples to a table and to the model. Stops at the first difference.
void expectAnswersOfModel(TupleTable& table, const std::vector<Tuple>& tuples)
{
    Model model;
    for (std::size_t i = 0; i < tuples.size(); ++i) {
        ASSERT_EQ(model.insert(tuples[i]), insert(table, tuples[i])) << "tuple " << i;
    }
}

// --- One tuple after the other ---

TEST(TupleTableTest, FirstTupleIsNewAndNumberZero)
{
    TupleTable table(2, 6);
    EXPECT_EQ(Answer(0, true), insert(table, {5, 6}));
}

TEST(TupleTableTest, KnownTupleKeepsItsNumber)
{
    TupleTable table(2, 6);
    insert(table, {5, 6});
    insert(table, {7, 8});
    EXPECT_EQ(Answer(0, false), insert(table, {5, 6}));
    EXPECT_EQ(Answer(1, false), insert(table, {7, 8}));
    EXPECT_EQ(Answer(0, false), insert(table, {5, 6}));
}

TEST(TupleTableTest, NumbersFollowTheOrderOfFirstUse)
{
    TupleTable table(1, 6);
    EXPECT_EQ(Answer(0, true), insert(table, {7}));
    EXPECT_EQ(Answer(1, true), insert(table, {3}));
    EXPECT_EQ(Answer(0, false), insert(table, {7}));
    EXPECT_EQ(Answer(2, true), insert(table, {5}));
    EXPECT_EQ(Answer(1, false), insert(table, {3}));
}

TEST(TupleTableTest, EntryOrderCounts)
{
    TupleTable table(2, 6);
    EXPECT_EQ(Answer(0, true), insert(table, {1, 2}));
    EXPECT_EQ(Answer(1, true), insert(table, {2, 1}));
}

TEST(TupleTableTest, EmptyTuplesAreAllOne)
{
    TupleTable table(0, 6);
    EXPECT_EQ(Answer(0, true), insert(table, {}));
    EXPECT_EQ(Answer(0, false), insert(table, {}));
}

TEST(TupleTableTest, AnyEntryIsAValue)
{
    // Among them the number that stands for an empty slot.
    TupleTable table(2, 6);
    EXPECT_EQ(Answer(0, true), insert(table, {0xFFFFFFFFu, 0xFFFFFFFFu}));
    EXPECT_EQ(Answer(1, true), insert(table, {0, 0}));
    EXPECT_EQ(Answer(2, true), insert(table, {0, 0xFFFFFFFFu}));
    EXPECT_EQ(Answer(3, true), insert(table, {0xFFFFFFFFu, 0}));
    EXPECT_EQ(Answer(0, false), insert(table, {0xFFFFFFFFu, 0xFFFFFFFFu}));
}

TEST(TupleTableTest, TuplesAreCopied)
{
    TupleTable table(1, 6);
    unsigned scratch = 4;
    table.insert(&scratch);
    scratch = 9;
    table.insert(&scratch);
    EXPECT_EQ(Answer(0, false), insert(table, {4}));
    EXPECT_EQ(Answer(1, false), insert(table, {9}));
}

TEST(TupleTableTest, TablesAreIndependent)
{
    TupleTable first(1, 6);
    TupleTable second(1, 6);
    insert(first, {8});
    EXPECT_EQ(Answer(0, true), insert(second, {9}));
    EXPECT_EQ(Answer(1, true), insert(second, {8}));
}

// --- Whole tuples ---

class TupleTableLengthTest : public testing::TestWithParam<unsigned> {};

TEST_P(TupleTableLengthTest, DifferenceInAnyOneEntryMakesANewTuple)
{
    TupleTable table(GetParam(), 6);
    const Tuple base(GetParam(), 7);
    insert(table, base);
    for (unsigned place = 0; place < GetParam(); ++place) {
        Tuple other = base;
        other[place] = 8;
        EXPECT_EQ(Answer(place + 1, true), insert(table, other)) << place;
        EXPECT_EQ(Answer(place + 1, false), insert(table, other)) << place;
    }
    EXPECT_EQ(Answer(0, false), insert(table, base));
}

TEST_P(TupleTableLengthTest, RandomTuplesAreNumberedAsByAnOrderedMap)
{
    for (const unsigned values : {2u, 9u, 1000u, 0xFFFFFFFFu}) {
        std::mt19937 random(GetParam() * 31 + values);
        std::vector<Tuple> tuples;
        for (unsigned i = 0; i < 20000; ++i) {
            Tuple tuple;
            for (unsigned entry = 0; entry < GetParam(); ++entry) {
                tuple.push_back(static_cast<unsigned>(random() % values));
            }
            tuples.push_back(tuple);
        }
        TupleTable table(GetParam(), static_cast<unsigned>(tuples.size()));
        expectAnswersOfModel(table, tuples);
    }
}

INSTANTIATE_TEST_SUITE_P(Lengths, TupleTableLengthTest, testing::Values(1u, 2u, 3u, 4u, 5u, 17u),
                         [](const auto& test) { return "Length" + std::to_string(test.param); });

// --- Index lists as meshes have them ---

struct Pattern : Row {
    Tuple (*tuple)(unsigned i);
};

class TupleTablePatternTest : public testing::TestWithParam<Pattern> {};

TEST_P(TupleTablePatternTest, IsNumberedAsByAnOrderedMap)
{
    std::vector<Tuple> tuples;
    for (unsigned i = 0; i < 50000; ++i) {
        tuples.push_back(GetParam().tuple(i));
    }
    TupleTable table(3, static_cast<unsigned>(tuples.size()));
    expectAnswersOfModel(table, tuples);
}

INSTANTIATE_ROWS(Patterns, TupleTablePatternTest,
                 {"AllDistinct",
                  [](unsigned i) {
                      return Tuple{i, i, i};
                  }},
                 {"AllTheSame",
                  [](unsigned) {
                      return Tuple{4, 4, 4};
                  }},
                 {"FanRoundOneVertex",
                  [](unsigned i) {
                      const unsigned rim = i / 3 + i % 3;
                      return i % 3 == 0 ? Tuple{0, 0, 0} : Tuple{rim, rim, rim};
                  }},
                 {"OneEntryCounts",
                  [](unsigned i) {
                      return Tuple{i, 0, 0};
                  }},
                 {"LastEntryCounts",
                  [](unsigned i) {
                      return Tuple{0, 0, i};
                  }},
                 {"EntriesCancelEachOther",
                  [](unsigned i) {
                      return Tuple{i, i, 0};
                  }},
                 {"OneUpOneDown",
                  [](unsigned i) {
                      return Tuple{i, 50000 - i, i % 2};
                  }},
                 {"HighBitsOnly",
                  [](unsigned i) {
                      return Tuple{i << 16, 0, i << 16};
                  }},
                 {"Grid",
                  [](unsigned i) {
                      return Tuple{i % 100, i / 100 % 100, 1};
                  }},
                 {"Permutations", [](unsigned i) {
                      return Tuple{i % 7, i / 7 % 7, i / 49 % 7};
                  }});

// --- Growth ---

class TupleTableHintTest : public testing::TestWithParam<Case<unsigned>> {};

TEST_P(TupleTableHintTest, ManyTuplesOutgrowTheStart)
{
    constexpr unsigned distinct = 300000;
    TupleTable table(2, GetParam().given);
    for (unsigned i = 0; i < distinct; ++i) {
        ASSERT_EQ(Answer(i, true), insert(table, {i, i / 2}));
    }
    for (unsigned i = 0; i < distinct; ++i) {
        ASSERT_EQ(Answer(i, false), insert(table, {i, i / 2}));
    }
}

INSTANTIATE_ROWS(Hints, TupleTableHintTest, {"NoCorners", 0}, {"OneTriangle", 3}, {"LessThanCome", 1000},
                 {"AsManyAsCome", 300000}, {"MoreThanCome", 1000000});

TEST(TupleTableTest, EachDoublingKeepsTheNumbers)
{
    // Every tuple is looked up again after each of the first insertions, so at every fill of the smallest tables.
    TupleTable table(1, 0);
    for (unsigned count = 0; count < 600; ++count) {
        ASSERT_EQ(Answer(count, true), insert(table, {count * 16}));
        for (unsigned i = 0; i <= count; ++i) {
            ASSERT_EQ(Answer(i, false), insert(table, {i * 16})) << "of " << count;
        }
    }
}

TEST(TupleTableTest, KnownTupleAllocatesNothing)
{
    TupleTable table(3, 100);
    const Tuple tuple{1, 2, 3};
    insert(table, tuple);
    const FailingAllocator allocator(-1);
    for (unsigned i = 0; i < 1000; ++i) {
        table.insert(tuple.data());
    }
    EXPECT_EQ(0, allocator.requests());
}

TEST(TupleTableTest, NewTuplesAllocateOnlyWhereTheTableDoubles)
{
    TupleTable table(3, 0);
    const FailingAllocator allocator(-1);
    for (unsigned i = 0; i < 100000; ++i) {
        const unsigned tuple[] = {i, i + 1, i + 2};
        table.insert(tuple);
    }
    // Doublings up to 2^18 slots, and up to 2^19 entries, of which a doubling may make more than one block.
    EXPECT_LE(allocator.requests(), 100);
}

} // namespace
