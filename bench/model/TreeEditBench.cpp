// Bulk tree edits: inserting and removing N children in one call must cost
// one renumbering, so time grows linearly with N (Google Benchmark fits the
// complexity and prints it as "BigO").

#include "model/ADPlistObject.h"

#include "shared/PlistArray.h"
#include "shared/PlistDictionary.h"

#include <benchmark/benchmark.h>

namespace {

std::vector<ADPlistObject::Pointer> freshNodes(qint64 count)
{
    std::vector<ADPlistObject::Pointer> nodes;
    nodes.reserve(size_t(count));
    for (qint64 i = 0; i < count; ++i)
        nodes.push_back(ADPlistObject::createWithPlist(PlistValue(i)));
    return nodes;
}

// Every other index of a list twice as long: the new children interleave with the old.
KZIndexSet interleaved(qint64 count)
{
    KZIndexSet indexes;
    for (qint64 i = 0; i < count; ++i)
        indexes.addIndex(2 * i);
    return indexes;
}

void insertAndRemoveInArray(benchmark::State &state)
{
    const qint64 n = state.range(0);
    PlistArray plain = PlistArray::create();
    for (qint64 i = 0; i < n; ++i)
        plain.append(PlistValue(i));
    const auto root = ADPlistObject::createWithPlist(plain);
    const KZIndexSet indexes = interleaved(n);
    for (auto _ : state) {
        state.PauseTiming();
        const std::vector<ADPlistObject::Pointer> nodes = freshNodes(n);
        state.ResumeTiming();
        root->insertChildren(nodes, {}, indexes);
        root->removeChildrenAtIndexes(indexes);
    }
    state.SetComplexityN(n);
}

void insertAndRemoveInDictionary(benchmark::State &state)
{
    const qint64 n = state.range(0);
    PlistDictionary plain = PlistDictionary::create();
    for (qint64 i = 0; i < n; ++i)
        plain.insert(QStringLiteral("old%1").arg(i), PlistValue(i));
    const auto root = ADPlistObject::createWithPlist(plain);
    QStringList keys;
    for (qint64 i = 0; i < n; ++i)
        keys << QStringLiteral("new%1").arg(i);
    const KZIndexSet indexes = interleaved(n);
    for (auto _ : state) {
        state.PauseTiming();
        const std::vector<ADPlistObject::Pointer> nodes = freshNodes(n);
        state.ResumeTiming();
        root->insertChildren(nodes, keys, indexes);
        root->removeChildrenAtIndexes(indexes);
    }
    state.SetComplexityN(n);
}

} // namespace

BENCHMARK(insertAndRemoveInArray)
    ->RangeMultiplier(10)
    ->Range(1000, 1000000)
    ->Unit(benchmark::kMillisecond)
    ->Complexity();
BENCHMARK(insertAndRemoveInDictionary)
    ->RangeMultiplier(10)
    ->Range(1000, 1000000)
    ->Unit(benchmark::kMillisecond)
    ->Complexity();

BENCHMARK_MAIN();
