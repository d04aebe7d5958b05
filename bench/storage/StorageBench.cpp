// Reads and writes the four benchmark shapes with our storage code and with
// libplist side by side, then prints the ratios and the peak memory of reading
// the largest XML files. `--large` adds the 100 MB files to the 1 MB ones;
// `--shape=NAME` keeps one shape.

#include "BenchShapes.h"
#include "RatioReporter.h"

#include "shared/HugePages.h"
#include "storage/PlistSerialization.h"

#include <benchmark/benchmark.h>
#include <plist/plist.h>

#include <QFile>
#include <QTemporaryDir>

#include <malloc.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace {

struct SizeStep
{
    const char *name;
    qint64 bytes;
};

constexpr qint64 kLargeInput = qint64(16) << 20;

// Everything one shape and size needs, made once before the runs.
struct Inputs
{
    BenchShape shape;
    PlistValue value;
    QByteArray xml, binary, xmlSafe, json, ascii;
    plist_t libplistValue = nullptr;
};

QByteArray written(const PlistValue &value, ADPlistFormat format)
{
    WriteResult result = PlistSerialization::write(value, format, false);
    if (!result) {
        std::fprintf(stderr, "cannot write benchmark input: %s\n", qPrintable(result.error));
        std::exit(1);
    }
    return result.data;
}

// `loop` runs the timed iterations over `state`.
void registerLoop(const std::string &name, qint64 bytes,
                  std::function<void(benchmark::State &)> loop)
{
    benchmark::RegisterBenchmark(name.c_str(),
                                 [bytes, loop](benchmark::State &state) {
                                     // Untimed: hand the heap back tidy, so that no run
                                     // pays for what the one before it freed.
                                     malloc_trim(0);
                                     loop(state);
                                     state.SetBytesProcessed(state.iterations() * bytes);
                                 })
        ->Unit(benchmark::kMillisecond)
        ->MeasureProcessCPUTime()
        ->UseRealTime()
        // A run shorter than this is timed again over more iterations, and the
        // first, cold one is dropped: a large file's run is otherwise a single
        // iteration that pays for faulting in all its memory.
        ->MinTime(bytes >= kLargeInput ? 2.0 : 0.5);
}

void registerRun(const std::string &name, qint64 bytes, std::function<void()> body)
{
    registerLoop(name, bytes, [body](benchmark::State &state) {
        for (auto _ : state)
            body();
    });
}

void readOurs(const QByteArray &bytes, bool json)
{
    ReadResult result =
        json ? PlistSerialization::readJson(bytes) : PlistSerialization::read(bytes);
    if (!result) {
        std::fprintf(stderr, "benchmark input refused: %s\n",
                     qPrintable(result.error.description()));
        std::exit(1);
    }
    benchmark::DoNotOptimize(result.value);
}

void registerShape(BenchShape shape, const SizeStep &size, Inputs &in)
{
    const std::string tail = QStringLiteral("/%1/%2/")
                                 .arg(benchShapeName(shape), QLatin1StringView(size.name))
                                 .toStdString();
    registerRun("read/xml" + tail + "ours", in.xml.size(), [&in] { readOurs(in.xml, false); });
    registerRun("read/xml" + tail + "libplist", in.xml.size(), [&in] {
        plist_t p = nullptr;
        plist_from_xml(in.xml.constData(), uint32_t(in.xml.size()), &p);
        plist_free(p);
    });
    // As opening a file does: the reader takes bytes of its own. Copying them
    // stands in, untimed, for reading the file.
    registerLoop("read/xmltaken" + tail + "ours", in.xml.size(), [&in](benchmark::State &state) {
        for (auto _ : state) {
            state.PauseTiming();
            QByteArray bytes = HugePages::buffer(in.xml.size()); // as a file's are
            std::memcpy(bytes.data(), in.xml.constData(), size_t(bytes.size()));
            state.ResumeTiming();
            ReadError jsonError;
            benchmark::DoNotOptimize(
                PlistSerialization::readAnyFormat(std::move(bytes), jsonError));
        }
    });
    registerRun("read/binary" + tail + "ours", in.binary.size(),
                [&in] { readOurs(in.binary, false); });
    registerRun("read/binary" + tail + "libplist", in.binary.size(), [&in] {
        plist_t p = nullptr;
        plist_from_bin(in.binary.constData(), uint32_t(in.binary.size()), &p);
        plist_free(p);
    });
    registerRun("write/xml" + tail + "ours", in.xml.size(),
                [&in] { benchmark::DoNotOptimize(written(in.value, ADPlistFormatXML)); });
    registerRun("write/xml" + tail + "libplist", in.xml.size(), [&in] {
        char *out = nullptr;
        uint32_t length = 0;
        plist_to_xml(in.libplistValue, &out, &length);
        plist_to_xml_free(out);
    });
    registerRun("write/binary" + tail + "ours", in.binary.size(),
                [&in] { benchmark::DoNotOptimize(written(in.value, ADPlistFormatBinary)); });
    registerRun("write/binary" + tail + "libplist", in.binary.size(), [&in] {
        char *out = nullptr;
        uint32_t length = 0;
        plist_to_bin(in.libplistValue, &out, &length);
        plist_to_bin_free(out);
    });
    registerRun("read/xmlsafe" + tail + "ours", in.xmlSafe.size(),
                [&in] { readOurs(in.xmlSafe, false); });
    registerRun("read/json" + tail + "ours", in.json.size(), [&in] { readOurs(in.json, true); });
    registerRun("read/ascii" + tail + "ours", in.ascii.size(),
                [&in] { readOurs(in.ascii, false); });
}

// The peak resident memory of this process in kilobytes, from its own mapping
// (what a parent learns by waiting would include the parent's own peak).
long ownPeakKilobytes()
{
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.rfind("VmHWM:", 0) == 0)
            return std::stol(line.substr(6));
    }
    return -1;
}

// Reads `path` with one implementation as the whole work of a fresh process,
// and prints that process's peak memory.
int readForPeakMemory(const char *path, const char *implementation)
{
    QFile file(QString::fromLocal8Bit(path));
    if (!file.open(QIODevice::ReadOnly))
        return 1;
    QByteArray bytes = file.readAll();
    bool read = true; // "none" measures the process and the file's bytes alone
    if (std::strcmp(implementation, "libplist") == 0) {
        plist_t p = nullptr;
        plist_from_xml(bytes.constData(), uint32_t(bytes.size()), &p);
        read = p != nullptr;
    } else if (std::strcmp(implementation, "ours") == 0) {
        // As opening a file does: the reader takes the bytes it was given.
        ReadError jsonError;
        read = bool(PlistSerialization::readAnyFormat(std::move(bytes), jsonError));
    }
    std::printf("%ld\n", ownPeakKilobytes());
    return read ? 0 : 1;
}

long peakKilobytesOfRead(const QString &path, const char *implementation)
{
    const std::string command = "/proc/" + std::to_string(getpid()) + "/exe --peak-read '" +
                                path.toStdString() + "' " + implementation;
    FILE *child = popen(command.c_str(), "r");
    if (!child)
        return -1;
    long kilobytes = -1;
    if (std::fscanf(child, "%ld", &kilobytes) != 1)
        kilobytes = -1;
    return pclose(child) == 0 ? kilobytes : -1;
}

// A virtual machine backs its memory lazily: the first touch of a page the
// guest has never used costs a trip to the host, several times the cost of
// the work done in it, and the guest hands out such pages first for huge-page
// requests. Touching the memory the large runs need once, up front, measures
// both implementations as on real hardware rather than by which of them
// happens to draw fresh pages.
void warmMemory(size_t bytes)
{
    void *mapped = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapped == MAP_FAILED)
        return;
    madvise(mapped, bytes, MADV_HUGEPAGE);
    auto *bytesOf = static_cast<volatile char *>(mapped);
    for (size_t i = 0; i < bytes; i += 4096)
        bytesOf[i] = 1;
    munmap(mapped, bytes);
}

void reportPeakMemory(const std::vector<std::unique_ptr<Inputs>> &inputs, const SizeStep &size)
{
    QTemporaryDir dir;
    std::printf("\npeak memory reading %s XML, beyond holding the file (multiple of its size)\n",
                size.name);
    std::printf("%-10s %10s %10s %10s %8s\n", "shape", "file MB", "ours", "libplist", "ratio");
    for (const auto &in : inputs) {
        const QString path = dir.filePath(benchShapeName(in->shape) + QStringLiteral(".plist"));
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write(in->xml) != in->xml.size())
            return;
        file.close();
        const double megabytes = double(in->xml.size()) / (1 << 20);
        const long base = peakKilobytesOfRead(path, "none");
        const double ours = double(peakKilobytesOfRead(path, "ours") - base) / 1024 / megabytes;
        const double theirs =
            double(peakKilobytesOfRead(path, "libplist") - base) / 1024 / megabytes;
        std::printf("%-10s %10.1f %10.2f %10.2f %7.2fx\n", qPrintable(benchShapeName(in->shape)),
                    megabytes, ours, theirs, theirs > 0 ? ours / theirs : 0.0);
    }
}

} // namespace

int main(int argc, char **argv)
{
    if (argc == 4 && std::strcmp(argv[1], "--peak-read") == 0)
        return readForPeakMemory(argv[2], argv[3]);
    std::vector<SizeStep> sizes{{"1MB", 1 << 20}};
    std::vector<BenchShape> shapes = allBenchShapes();
    std::vector<char *> args;
    for (int i = 0; i < argc; ++i) {
        const QLatin1StringView arg(argv[i]);
        if (arg == QLatin1StringView("--large")) {
            sizes.push_back({"100MB", 100 << 20});
        } else if (arg.startsWith(QLatin1StringView("--shape="))) {
            std::erase_if(shapes,
                          [&](BenchShape shape) { return benchShapeName(shape) != arg.sliced(8); });
        } else {
            args.push_back(argv[i]);
        }
    }
    int count = int(args.size());
    benchmark::Initialize(&count, args.data());

    std::vector<std::vector<std::unique_ptr<Inputs>>> bySize;
    for (const SizeStep &size : sizes) {
        auto &inputs = bySize.emplace_back();
        for (const BenchShape shape : shapes) {
            auto in = std::make_unique<Inputs>();
            in->shape = shape;
            const PlistValue made = makeBenchValue(shape, size.bytes, false);
            in->xml = written(made, ADPlistFormatXML);
            in->binary = written(made, ADPlistFormatBinary);
            // Each writer gets the tree its own reader makes of the same file,
            // as when a file is opened, edited and saved.
            in->value = PlistSerialization::read(in->binary).value;
            const PlistValue safe = makeBenchValue(shape, size.bytes, true);
            in->xmlSafe = written(safe, ADPlistFormatXML);
            in->json = written(safe, ADPlistFormatJSON);
            in->ascii = written(safe, ADPlistFormatASCII);
            plist_from_bin(in->binary.constData(), uint32_t(in->binary.size()), &in->libplistValue);
            registerShape(shape, size, *in);
            inputs.push_back(std::move(in));
        }
    }

    if (sizes.size() > 1)
        warmMemory(size_t(6) << 30); // after the inputs, which would use it up
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    reportPeakMemory(bySize.back(), sizes.back());
    benchmark::Shutdown();
    return 0;
}
