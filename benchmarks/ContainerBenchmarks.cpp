#include "Benchmarks.h"

#include <vesk/Array.h>
#include <vesk/HashTable.h>
#include <vesk/String.h>

#include <benchmark/benchmark.h>

#include <strings.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <random>
#include <string>
#include <type_traits>
#include <unordered_map>
#include <vector>

namespace benchmarks {

namespace {

using vesk::String;
using VeskTable = vesk::HashTable<String, unsigned, vesk::EqualFunc<String>, vesk::HashFunc<String>>;
using StdTable = std::unordered_map<std::string, unsigned>;

// Operations that have different names in both libraries.

template <class T>
void append(vesk::Array<T>& array, const T& value)
{
    array.append(value);
}

template <class T>
void append(std::vector<T>& array, const T& value)
{
    array.push_back(value);
}

void insert(VeskTable& table, const String& key, unsigned value)
{
    table.insert(key, value);
}

void insert(StdTable& table, const std::string& key, unsigned value)
{
    table.emplace(key, value);
}

bool contains(const VeskTable& table, const String& key)
{
    return table.lookup(key) != nullptr;
}

bool contains(const StdTable& table, const std::string& key)
{
    return table.find(key) != table.end();
}

String part(const String& text, unsigned start, unsigned length)
{
    return text.subString(start, length);
}

std::string part(const std::string& text, unsigned start, unsigned length)
{
    return text.substr(start, length);
}

int compareNoCase(const String& a, const String& b)
{
    return String::compareNoCase(a, b);
}

int compareNoCase(const std::string& a, const std::string& b)
{
    return strcasecmp(a.c_str(), b.c_str());
}

float number(const String& text)
{
    float value = 0.0f;
    String::strToReal32(text, value);
    return value;
}

float number(const std::string& text)
{
    return std::strtof(text.c_str(), nullptr);
}

unsigned sizeOf(const benchmark::State& state)
{
    return static_cast<unsigned>(state.range(0));
}

void countItems(benchmark::State& state, unsigned itemsOfIteration)
{
    state.counters["seconds_per_item"] = benchmark::Counter(
        itemsOfIteration, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

// Arrays.

template <class Container>
Container filled(unsigned size)
{
    Container container;
    for (unsigned i = 0; i < size; ++i) {
        append(container, i);
    }
    return container;
}

template <class Container>
void appendNumbers(benchmark::State& state)
{
    for ([[maybe_unused]] auto _ : state) {
        const Container container = filled<Container>(sizeOf(state));
        benchmark::DoNotOptimize(&container[0]);
        benchmark::ClobberMemory();
    }
    countItems(state, sizeOf(state));
}

template <class Container, class Text>
void appendTexts(benchmark::State& state)
{
    const Text text("a text that is longer than what fits inside");
    for ([[maybe_unused]] auto _ : state) {
        Container container;
        for (unsigned i = 0; i < sizeOf(state); ++i) {
            append(container, text);
        }
        benchmark::DoNotOptimize(&container[0]);
    }
    countItems(state, sizeOf(state));
}

template <class Container>
void indexNumbers(benchmark::State& state)
{
    const Container container = filled<Container>(sizeOf(state));
    for ([[maybe_unused]] auto _ : state) {
        unsigned sum = 0;
        const auto size = container.size(); // of the container's own size type
        for (std::remove_const_t<decltype(size)> i = 0; i < size; ++i) {
            sum += container[i];
        }
        benchmark::DoNotOptimize(sum);
    }
    countItems(state, sizeOf(state));
}

template <class Container>
void iterateNumbers(benchmark::State& state)
{
    const Container container = filled<Container>(sizeOf(state));
    for ([[maybe_unused]] auto _ : state) {
        unsigned sum = 0;
        for (const unsigned value : container) {
            sum += value;
        }
        benchmark::DoNotOptimize(sum);
    }
    countItems(state, sizeOf(state));
}

template <class Container>
void copyNumbers(benchmark::State& state)
{
    const Container container = filled<Container>(sizeOf(state));
    for ([[maybe_unused]] auto _ : state) {
        const Container copy(container); // NOLINT(performance-unnecessary-copy-initialization): is measured
        benchmark::DoNotOptimize(&copy[0]);
        benchmark::ClobberMemory();
    }
    countItems(state, sizeOf(state));
}

// Tables.

// "node-0", "node-1" and so on, in an order that no cache foresees.
template <class Text>
std::vector<Text> shuffledKeys(unsigned count, const std::string& start)
{
    std::vector<Text> keys;
    for (unsigned i = 0; i < count; ++i) {
        keys.emplace_back((start + std::to_string(i)).c_str());
    }
    std::mt19937 generator(1); // NOLINT(cert-msc32-c,cert-msc51-cpp): the same order in every run
    std::shuffle(keys.begin(), keys.end(), generator);
    return keys;
}

template <class Table, class Text>
void fill(Table& table, const std::vector<Text>& keys)
{
    unsigned value = 0;
    for (const Text& key : keys) {
        insert(table, key, value++);
    }
}

// With freeing the table.
template <class Table, class Text>
void insertKeys(benchmark::State& state)
{
    const std::vector<Text> keys = shuffledKeys<Text>(sizeOf(state), "node-");
    for ([[maybe_unused]] auto _ : state) {
        Table table(32);
        fill(table, keys);
        benchmark::DoNotOptimize(table.size());
    }
    countItems(state, sizeOf(state));
}

template <class Table, class Text>
void findKeys(benchmark::State& state, const std::string& start, bool isThere)
{
    Table table(32);
    fill(table, shuffledKeys<Text>(sizeOf(state), "node-"));
    std::vector<Text> keys = shuffledKeys<Text>(sizeOf(state), start);
    std::reverse(keys.begin(), keys.end()); // not in the order of insertion
    std::size_t next = 0;
    for ([[maybe_unused]] auto _ : state) {
        if (contains(table, keys[next]) != isThere) {
            fail(state, "the table is wrong");
            return;
        }
        next = next + 1 == keys.size() ? 0 : next + 1;
    }
    countItems(state, 1);
}

template <class Table, class Text>
void findPresent(benchmark::State& state)
{
    findKeys<Table, Text>(state, "node-", true);
}

template <class Table, class Text>
void findAbsent(benchmark::State& state)
{
    findKeys<Table, Text>(state, "edge-", false);
}

// Texts.

template <class Text>
Text textOf(unsigned size)
{
    const std::string bytes(size, 'x');
    const char* const start = bytes.c_str();
    return Text(start);
}

template <class Text>
void copyText(benchmark::State& state)
{
    const Text text = textOf<Text>(sizeOf(state));
    for ([[maybe_unused]] auto _ : state) {
        Text copy(text); // NOLINT(performance-unnecessary-copy-initialization): is measured
        benchmark::DoNotOptimize(copy);
    }
    countItems(state, 1);
}

template <class Text>
void makeText(benchmark::State& state)
{
    const std::string bytes(sizeOf(state), 'x');
    const char* const start = bytes.c_str();
    for ([[maybe_unused]] auto _ : state) {
        Text text(start);
        benchmark::DoNotOptimize(text);
    }
    countItems(state, 1);
}

template <class Text>
void appendText(benchmark::State& state)
{
    const Text added = textOf<Text>(sizeOf(state));
    for ([[maybe_unused]] auto _ : state) {
        Text text("node/");
        text.append(added);
        benchmark::DoNotOptimize(text);
    }
    countItems(state, 1);
}

template <class Text>
void equalTexts(benchmark::State& state)
{
    Text a = textOf<Text>(sizeOf(state));
    Text b = textOf<Text>(sizeOf(state));
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(a);
        benchmark::DoNotOptimize(b);
        benchmark::DoNotOptimize(a == b);
    }
    countItems(state, 1);
}

template <class Text>
void compareTexts(benchmark::State& state)
{
    Text a = textOf<Text>(sizeOf(state));
    Text b = textOf<Text>(sizeOf(state));
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(a);
        benchmark::DoNotOptimize(b);
        benchmark::DoNotOptimize(compareNoCase(a, b));
    }
    countItems(state, 1);
}

// Cuts a target such as "node/rotateX.ANGLE" at its slash.
template <class Text>
void cutText(benchmark::State& state)
{
    Text text = textOf<Text>(sizeOf(state) / 2);
    text.append("/").append(textOf<Text>(sizeOf(state) - sizeOf(state) / 2 - 1));
    for ([[maybe_unused]] auto _ : state) {
        const auto slash = static_cast<unsigned>(text.find('/'));
        benchmark::DoNotOptimize(part(text, slash + 1, sizeOf(state)));
    }
    countItems(state, 1);
}

template <class Text>
void parseNumber(benchmark::State& state)
{
    Text text("-12.345678");
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(text);
        benchmark::DoNotOptimize(number(text));
    }
    countItems(state, 1);
}

using Function = void (*)(benchmark::State&);

void registerTwins(const std::string& name, Function vesk, Function twin, unsigned small, unsigned big)
{
    benchmark::RegisterBenchmark((name + "/vesk").c_str(), vesk)->Arg(small)->Arg(big);
    benchmark::RegisterBenchmark((name + "/std").c_str(), twin)->Arg(small)->Arg(big);
}

void registerArrays(const std::string& name, Function vesk, Function twin)
{
    registerTwins("array/" + name, vesk, twin, 1000, 1000000);
}

void registerTables(const std::string& name, Function vesk, Function twin)
{
    registerTwins("hashTable/" + name, vesk, twin, 1000, 1000000);
}

void registerTexts(const std::string& name, Function vesk, Function twin)
{
    registerTwins("string/" + name, vesk, twin, 10, 100);
}

} // namespace

void registerContainerBenchmarks()
{
    using Numbers = vesk::Array<unsigned>;
    using StdNumbers = std::vector<unsigned>;
    registerArrays("append", appendNumbers<Numbers>, appendNumbers<StdNumbers>);
    registerArrays("appendText", appendTexts<vesk::Array<String>, String>,
                   appendTexts<std::vector<std::string>, std::string>);
    registerArrays("index", indexNumbers<Numbers>, indexNumbers<StdNumbers>);
    registerArrays("iterate", iterateNumbers<Numbers>, iterateNumbers<StdNumbers>);
    registerArrays("copy", copyNumbers<Numbers>, copyNumbers<StdNumbers>);

    registerTables("insert", insertKeys<VeskTable, String>, insertKeys<StdTable, std::string>);
    registerTables("find", findPresent<VeskTable, String>, findPresent<StdTable, std::string>);
    registerTables("findAbsent", findAbsent<VeskTable, String>, findAbsent<StdTable, std::string>);

    registerTexts("make", makeText<String>, makeText<std::string>);
    registerTexts("copy", copyText<String>, copyText<std::string>);
    registerTexts("append", appendText<String>, appendText<std::string>);
    registerTexts("equal", equalTexts<String>, equalTexts<std::string>);
    registerTexts("compareNoCase", compareTexts<String>, compareTexts<std::string>);
    registerTexts("cut", cutText<String>, cutText<std::string>);
    benchmark::RegisterBenchmark("string/number/vesk", parseNumber<String>)->Arg(10);
    benchmark::RegisterBenchmark("string/number/std", parseNumber<std::string>)->Arg(10);
}

} // namespace benchmarks
