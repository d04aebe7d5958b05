// Formatting the display strings of every value of the large records file,
// beside the time to read that file: what the outline asks of the value
// viewers for a whole tree, set against what opening it costs. Each is run
// several times on a machine shared with other work, so the report gives
// the median and the spread of the runs. `--size-mb=N` sets the file's size
// (100 MB unless given).

#include "storage/BenchShapes.h"

#include "storage/PlistSerialization.h"
#include "viewers/ADValueViewerRegistry.h"

#include "shared/PlistArray.h"
#include "shared/PlistDictionary.h"

#include <benchmark/benchmark.h>

#include <QCoreApplication>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <map>
#include <string>
#include <vector>

namespace {

constexpr int kRepetitions = 7;

struct Counts
{
    qint64 values = 0;
    qint64 characters = 0;
};

// Every value of the tree, containers included, through the default viewer
// of its type, on an explicit stack as the tree may be deep. The walk only
// points at values, so what it costs beside the formatting is small.
Counts formatEveryValue(const PlistValue &root,
                        const std::vector<ADValueViewerRegistry::Viewer> &viewers)
{
    Counts counts;
    std::vector<const PlistValue *> stack{&root};
    while (!stack.empty()) {
        const PlistValue &value = *stack.back();
        stack.pop_back();
        const ADPlistType type = value.plistType();
        if (type >= 0 && size_t(type) < viewers.size()) {
            counts.characters +=
                viewers[size_t(type)]->displayStringForPlist(value).value_or(QString()).size();
            ++counts.values;
        }
        if (value.isArray()) {
            for (const PlistValue &element : value.toArray())
                stack.push_back(&element);
        } else if (value.isDictionary()) {
            const PlistDictionary dictionary = value.toDictionary();
            for (qsizetype i = 0; i < dictionary.count(); ++i)
                stack.push_back(&dictionary.valueAt(i));
        }
    }
    return counts;
}

// The console report, then for each benchmark the median of its runs, the
// fastest and slowest, and the spread between them; last, formatting as a
// share of reading.
class SpreadReporter : public benchmark::ConsoleReporter
{
public:
    void ReportRuns(const std::vector<Run> &runs) override
    {
        ConsoleReporter::ReportRuns(runs);
        for (const Run &run : runs) {
            if (run.run_type == Run::RT_Iteration)
                _seconds[run.run_name.function_name].push_back(run.GetAdjustedRealTime() / 1e3);
        }
    }
    void Finalize() override
    {
        ConsoleReporter::Finalize();
        std::map<std::string, double> medians;
        std::printf("\n%-10s %10s %10s %10s %8s\n", "", "median s", "fastest s", "slowest s",
                    "spread");
        for (auto &[name, seconds] : _seconds) {
            std::sort(seconds.begin(), seconds.end());
            const double median = seconds[seconds.size() / 2];
            medians[name] = median;
            std::printf("%-10s %10.3f %10.3f %10.3f %7.1f%%\n", name.c_str(), median,
                        seconds.front(), seconds.back(),
                        100 * (seconds.back() - seconds.front()) / median);
        }
        if (medians.count("read") && medians.count("format"))
            std::printf("\nformatting every value takes %.2f times as long as reading the file\n",
                        medians["format"] / medians["read"]);
    }

private:
    std::map<std::string, std::vector<double>> _seconds; // by benchmark, one per run
};

qint64 takeSizeArgument(int &argc, char **argv)
{
    qint64 megabytes = 100;
    for (int i = 1; i < argc; ++i) {
        if (std::strncmp(argv[i], "--size-mb=", 10) != 0)
            continue;
        megabytes = std::atoll(argv[i] + 10);
        std::copy(argv + i + 1, argv + argc, argv + i);
        --argc;
        break;
    }
    return std::max<qint64>(1, megabytes) << 20;
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    const qint64 bytes = takeSizeArgument(argc, argv);
    const PlistValue value = makeBenchValue(BenchShape::Records, bytes, false);
    const QByteArray xml = PlistSerialization::write(value, ADPlistFormatXML).data;
    ADValueViewerRegistry registry;
    std::vector<ADValueViewerRegistry::Viewer> viewers;
    for (ADPlistType type = ADPlistTypeArray; type <= ADPlistTypeNull; ++type)
        viewers.push_back(registry.defaultViewerForType(type));
    const Counts counts = formatEveryValue(value, viewers);
    std::printf("records file: %.1f MB of XML, %lld values, %.1f MB of display text\n",
                double(xml.size()) / (1 << 20), counts.values,
                double(counts.characters) * 2 / (1 << 20));

    benchmark::RegisterBenchmark("read",
                                 [&xml](benchmark::State &state) {
                                     for (auto _ : state) {
                                         const ReadResult result = PlistSerialization::read(xml);
                                         benchmark::DoNotOptimize(result.value);
                                     }
                                     state.SetBytesProcessed(state.iterations() * xml.size());
                                 })
        ->Unit(benchmark::kMillisecond)
        ->UseRealTime()
        ->Iterations(1)
        ->Repetitions(kRepetitions);
    benchmark::RegisterBenchmark("format",
                                 [&](benchmark::State &state) {
                                     for (auto _ : state)
                                         benchmark::DoNotOptimize(formatEveryValue(value, viewers));
                                     state.counters["values/s"] = benchmark::Counter(
                                         double(counts.values) * state.iterations(),
                                         benchmark::Counter::kIsRate);
                                 })
        ->Unit(benchmark::kMillisecond)
        ->UseRealTime()
        ->Iterations(1)
        ->Repetitions(kRepetitions);

    benchmark::Initialize(&argc, argv);
    SpreadReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}
