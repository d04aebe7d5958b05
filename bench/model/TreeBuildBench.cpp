// What a tree costs over the value it stands on: reading each generated file
// alone against reading it, building the tree and visiting the root's
// children (what an outline shows first). In process, best of several runs,
// and as whole processes for time and peak memory. `--large` adds the 100 MB
// files to the 1 MB ones; `--shape=NAME` keeps one shape.

#include "storage/BenchShapes.h"

#include "model/ADPlistObject.h"
#include "shared/KZError.h"
#include "storage/PlistSerialization.h"

#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

namespace {

struct SizeStep
{
    const char *name;
    qint64 bytes;
};

PlistValue readFile(const QString &path)
{
    std::optional<KZError> error;
    PlistValue value = ADPlistObject::readPlistFromFile(path, false, nullptr, &error);
    if (value.isNone()) {
        std::fprintf(stderr, "benchmark input refused: %s\n", qPrintable(path));
        std::exit(1);
    }
    return value;
}

// Builds the tree and makes every child node of the root, asking each what
// an outline asks of a row before it draws it: its type and whether it opens.
// Drawing a row's text is the outline's own cost, not the tree's.
qint64 buildAndVisit(const PlistValue &value)
{
    const ADPlistObject::Pointer root = ADPlistObject::createWithPlist(value);
    qint64 seen = 0;
    for (qint64 i = 0, n = root->childCount(); i < n; ++i) {
        const ADPlistObject *child = root->childAtIndex(i);
        seen += child->plistType() + (child->hasChildren() ? 1 : 0);
    }
    return seen;
}

// One whole job: "read" or "tree"; answers a checksum so nothing is optimised away.
qint64 runJob(const QString &path, const char *job)
{
    const PlistValue value = readFile(path);
    return std::strcmp(job, "tree") == 0 ? buildAndVisit(value) : qint64(value.plistType());
}

double bestSeconds(const QString &path, const char *job, int runs)
{
    double best = 1e9;
    for (int i = 0; i < runs; ++i) {
        malloc_trim(0);
        QElapsedTimer timer;
        timer.start();
        runJob(path, job);
        best = std::min(best, double(timer.nsecsElapsed()) / 1e9);
    }
    return best;
}

long ownPeakKilobytes()
{
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.rfind("VmHWM:", 0) == 0)
            return std::stol(line.substr(6));
    }
    return -1;
}

struct ProcessFigures
{
    double seconds = -1;
    long peakKilobytes = -1;
};

// The job as the whole work of a fresh process: its wall time and peak memory.
ProcessFigures runInChild(const QString &path, const char *job)
{
    const std::string command =
        "/proc/" + std::to_string(getpid()) + "/exe --job '" + path.toStdString() + "' " + job;
    QElapsedTimer timer;
    timer.start();
    FILE *child = popen(command.c_str(), "r");
    if (!child)
        return {};
    ProcessFigures figures;
    if (std::fscanf(child, "%ld", &figures.peakKilobytes) != 1)
        figures.peakKilobytes = -1;
    if (pclose(child) != 0)
        return {};
    figures.seconds = double(timer.nsecsElapsed()) / 1e9;
    return figures;
}

ProcessFigures bestInChild(const QString &path, const char *job, int runs)
{
    ProcessFigures best{1e9, 0};
    for (int i = 0; i < runs; ++i) {
        const ProcessFigures one = runInChild(path, job);
        best.seconds = std::min(best.seconds, one.seconds);
        best.peakKilobytes = std::max(best.peakKilobytes, one.peakKilobytes);
    }
    return best;
}

QString writeInput(const QTemporaryDir &dir, BenchShape shape, const SizeStep &size)
{
    const PlistValue value = makeBenchValue(shape, size.bytes, false);
    const WriteResult xml = PlistSerialization::write(value, ADPlistFormatXML, false);
    const QString path = dir.filePath(benchShapeName(shape) + u'-' + QLatin1StringView(size.name) +
                                      QStringLiteral(".plist"));
    QFile file(path);
    if (!xml || !file.open(QIODevice::WriteOnly) || file.write(xml.data) != xml.data.size()) {
        std::fprintf(stderr, "cannot write benchmark input %s\n", qPrintable(path));
        std::exit(1);
    }
    return path;
}

void reportShape(const QString &path, BenchShape shape, const SizeStep &size)
{
    const int runs = size.bytes > (16 << 20) ? 3 : 10;
    const double megabytes = double(QFile(path).size()) / (1 << 20);
    const double read = bestSeconds(path, "read", runs);
    const double tree = bestSeconds(path, "tree", runs);
    const ProcessFigures readProcess = bestInChild(path, "read", runs);
    const ProcessFigures treeProcess = bestInChild(path, "tree", runs);
    std::printf("%-8s %-6s %7.1f | %8.3f %8.3f %6.2fx | %8.3f %8.3f %6.2fx | %7.0f %7.0f %6.2fx\n",
                qPrintable(benchShapeName(shape)), size.name, megabytes, read, tree, tree / read,
                readProcess.seconds, treeProcess.seconds, treeProcess.seconds / readProcess.seconds,
                double(readProcess.peakKilobytes) / 1024, double(treeProcess.peakKilobytes) / 1024,
                double(treeProcess.peakKilobytes) / double(readProcess.peakKilobytes));
}

} // namespace

int main(int argc, char **argv)
{
    if (argc == 4 && std::strcmp(argv[1], "--job") == 0) {
        const qint64 checksum = runJob(QString::fromLocal8Bit(argv[2]), argv[3]);
        std::printf("%ld\n", ownPeakKilobytes());
        return checksum == -2 ? 1 : 0;
    }
    std::vector<SizeStep> sizes{{"1MB", 1 << 20}};
    std::vector<BenchShape> shapes = allBenchShapes();
    for (int i = 1; i < argc; ++i) {
        const QLatin1StringView arg(argv[i]);
        if (arg == QLatin1StringView("--large"))
            sizes.push_back({"100MB", 100 << 20});
        else if (arg.startsWith(QLatin1StringView("--shape=")))
            std::erase_if(shapes,
                          [&](BenchShape shape) { return benchShapeName(shape) != arg.sliced(8); });
    }
    QTemporaryDir dir;
    std::printf("read: the file to a value; tree: read, build the tree, visit the root's children\n"
                "%-8s %-6s %7s | %8s %8s %7s | %8s %8s %7s | %7s %7s %7s\n",
                "shape", "size", "MB", "read s", "tree s", "ratio", "proc rd", "proc tr", "ratio",
                "peak rd", "peak tr", "ratio");
    for (const SizeStep &size : sizes) {
        for (const BenchShape shape : shapes)
            reportShape(writeInput(dir, shape, size), shape, size);
    }
    return 0;
}
