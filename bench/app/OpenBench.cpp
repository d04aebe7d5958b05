// Whole-process start of the editor on the offscreen platform: from the
// command to the first window painted with the outline ready for input
// (`arbordeck --exit-when-shown FILE`), against `ardeck lint` of the same
// file, in time and in peak memory, for every generated shape in every
// format; and the absolute time for a 1 MB file. Runs alternate; medians.
// Usage: OpenBench ARBORDECK ARDECK [--size=MB] [--runs=N] [--shape=NAME]
//        [--format=NAME] [--keep=FOLDER]  (keeps the generated files there, for profiling)

#include "storage/BenchShapes.h"

#include "storage/PlistSerialization.h"

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QStringList>
#include <QTemporaryDir>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <vector>

namespace {

struct Run
{
    double seconds = 0;
    double peakMegabytes = 0;
};

// Runs the command with its output thrown away; its wall time and peak resident size.
Run run(const QStringList &command)
{
    std::vector<QByteArray> words;
    for (const QString &word : command)
        words.push_back(word.toLocal8Bit());
    std::vector<char *> argv;
    for (QByteArray &word : words)
        argv.push_back(word.data());
    argv.push_back(nullptr);
    std::fflush(nullptr); // the child must not write our buffered output again
    const auto start = std::chrono::steady_clock::now();
    const pid_t child = fork();
    if (child == 0) {
        freopen("/dev/null", "w", stdout);
        freopen("/dev/null", "w", stderr);
        execv(argv[0], argv.data());
        _exit(127);
    }
    int status = 0;
    rusage usage{};
    wait4(child, &status, 0, &usage);
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        std::fprintf(stderr, "failed: %s\n", qPrintable(command.join(u' ')));
        std::exit(1);
    }
    return {elapsed.count(), double(usage.ru_maxrss) / 1024.0};
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

// The medians of both commands, run in turn `runs` times after a warm-up.
std::pair<Run, Run> medians(const QStringList &a, const QStringList &b, int runs)
{
    std::vector<double> aTimes, bTimes, aPeaks, bPeaks;
    for (int round = -1; round < runs; ++round) {
        const Run first = run(a);
        const Run second = run(b);
        if (round < 0)
            continue;
        aTimes.push_back(first.seconds);
        aPeaks.push_back(first.peakMegabytes);
        bTimes.push_back(second.seconds);
        bPeaks.push_back(second.peakMegabytes);
    }
    return {{median(aTimes), median(aPeaks)}, {median(bTimes), median(bPeaks)}};
}

QString argumentValue(const QStringList &arguments, const QString &name, const QString &fallback)
{
    for (const QString &argument : arguments) {
        if (argument.startsWith(name + u'='))
            return argument.sliced(name.size() + 1);
    }
    return fallback;
}

} // namespace

int main(int argc, char *argv[])
{
    QStringList arguments;
    for (int i = 1; i < argc; ++i)
        arguments << QString::fromLocal8Bit(argv[i]);
    if (arguments.size() < 2) {
        std::fprintf(stderr, "usage: OpenBench ARBORDECK ARDECK [--size=MB] [--runs=N] "
                             "[--shape=NAME] [--format=NAME] [--keep=FOLDER]\n");
        return 2;
    }
    const QString arbordeck = arguments[0];
    const QString ardeck = arguments[1];
    const qint64 megabytes = argumentValue(arguments, QStringLiteral("--size"), "100").toLongLong();
    const int runs = argumentValue(arguments, QStringLiteral("--runs"), "3").toInt();
    const QString onlyShape = argumentValue(arguments, QStringLiteral("--shape"), QString());
    const QString onlyFormat = argumentValue(arguments, QStringLiteral("--format"), QString());
    const QString keep = argumentValue(arguments, QStringLiteral("--keep"), QString());

    QTemporaryDir dir;
    // Settings and autosaves of the runs alone, on the offscreen platform.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("XDG_CONFIG_HOME", dir.filePath(QStringLiteral("config")).toLocal8Bit());
    qputenv("XDG_DATA_HOME", dir.filePath(QStringLiteral("data")).toLocal8Bit());

    const QString small =
        writeBenchFile(dir.filePath(QStringLiteral("small.plist")),
                       makeBenchValue(BenchShape::Records, 1 << 20, false), ADPlistFormatXML);
    const auto [smallOpen, smallLint] =
        medians({arbordeck, QStringLiteral("--exit-when-shown"), small}, {ardeck, "lint", small},
                std::max(runs, 5));
    std::printf("1 MB records XML: open to painted window %.3f s, %.0f MB (ardeck lint %.3f s)\n\n",
                smallOpen.seconds, smallOpen.peakMegabytes, smallLint.seconds);

    std::printf("%-8s %-7s %9s %9s %7s %9s %9s %7s\n", "shape", "format", "open s", "lint s",
                "time", "open MB", "lint MB", "memory");
    const std::vector<std::pair<ADPlistFormat, const char *>> formats{
        {ADPlistFormatXML, "xml"},
        {ADPlistFormatBinary, "binary"},
        {ADPlistFormatASCII, "ascii"},
        {ADPlistFormatJSON, "json"}};
    for (const BenchShape shape : allBenchShapes()) {
        if (!onlyShape.isEmpty() && benchShapeName(shape) != onlyShape)
            continue;
        for (const auto &[format, name] : formats) {
            if (!onlyFormat.isEmpty() && onlyFormat != QLatin1StringView(name))
                continue;
            // Dates and data become strings where the format cannot hold them.
            const bool plainOnly = format == ADPlistFormatJSON || format == ADPlistFormatASCII;
            const QString path = writeBenchFile(
                QDir(keep.isEmpty() ? dir.path() : keep)
                    .filePath(benchShapeName(shape) + u'.' + QString::fromUtf8(name)),
                makeBenchValue(shape, megabytes << 20, plainOnly), format);
            const auto [open, lint] =
                medians({arbordeck, QStringLiteral("--exit-when-shown"), path},
                        {ardeck, "lint", path}, runs);
            std::printf("%-8s %-7s %9.3f %9.3f %6.2fx %9.0f %9.0f %6.2fx\n",
                        qPrintable(benchShapeName(shape)), name, open.seconds, lint.seconds,
                        open.seconds / lint.seconds, open.peakMegabytes, lint.peakMegabytes,
                        open.peakMegabytes / lint.peakMegabytes);
            std::fflush(stdout);
            if (keep.isEmpty())
                QFile::remove(path);
        }
    }
    return 0;
}
