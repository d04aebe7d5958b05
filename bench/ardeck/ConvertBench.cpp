// Whole-process conversions of the generated medium files: `ardeck convert`
// against libplist's `plistutil` doing the same, binary to XML and XML to
// binary, and `ardeck lint` of the same file for scale. Runs alternate and
// the median of each is reported, with the ratio plistutil ÷ ardeck (above 1:
// ardeck is faster). Usage: ConvertBench ARDECK [--size=MB] [--runs=N].

#include "storage/BenchShapes.h"

#include "storage/PlistSerialization.h"

#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <vector>

namespace {

QString writeInput(const QTemporaryDir &dir, BenchShape shape, qint64 bytes, ADPlistFormat format)
{
    const PlistValue value = makeBenchValue(shape, bytes, false);
    const WriteResult written = PlistSerialization::write(value, format, false);
    const QString path = dir.filePath(benchShapeName(shape) + (format == ADPlistFormatXML
                                                                   ? QStringLiteral(".plist")
                                                                   : QStringLiteral(".bplist")));
    QFile file(path);
    if (!written || !file.open(QIODevice::WriteOnly) ||
        file.write(written.data) != written.data.size()) {
        std::fprintf(stderr, "cannot write %s\n", qPrintable(path));
        std::exit(1);
    }
    return path;
}

double secondsOf(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.setStandardOutputFile(QProcess::nullDevice());
    QElapsedTimer timer;
    timer.start();
    process.start(program, arguments);
    if (!process.waitForFinished(600000) || process.exitCode() != 0) {
        std::fprintf(stderr, "%s failed\n", qPrintable(program));
        std::exit(1);
    }
    return double(timer.nsecsElapsed()) / 1e9;
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

struct Job
{
    QString program;
    QStringList arguments;
};

// The medians of the jobs, run in turn `runs` times after one warm-up round.
std::vector<double> medians(const std::vector<Job> &jobs, int runs)
{
    std::vector<std::vector<double>> times(jobs.size());
    for (int round = -1; round < runs; ++round) {
        for (size_t j = 0; j < jobs.size(); ++j) {
            const double seconds = secondsOf(jobs[j].program, jobs[j].arguments);
            if (round >= 0)
                times[j].push_back(seconds);
        }
    }
    std::vector<double> result;
    for (const std::vector<double> &t : times)
        result.push_back(median(t));
    return result;
}

} // namespace

int main(int argc, char **argv)
{
    if (argc < 2) {
        std::fprintf(stderr, "usage: ConvertBench ARDECK [--size=MB] [--runs=N]\n");
        return 2;
    }
    const QString ardeck = QString::fromLocal8Bit(argv[1]);
    qint64 megabytes = 10;
    int runs = 5;
    for (int i = 2; i < argc; ++i) {
        const QLatin1StringView arg(argv[i]);
        if (arg.startsWith(QLatin1StringView("--size=")))
            megabytes = arg.sliced(7).toLongLong();
        else if (arg.startsWith(QLatin1StringView("--runs=")))
            runs = arg.sliced(7).toInt();
    }
    QTemporaryDir dir;
    const QString out = dir.filePath(QStringLiteral("out"));
    std::printf("%-8s %-16s %9s %9s %9s %8s\n", "shape", "conversion", "lint s", "ardeck s",
                "plistutil", "ratio");
    for (const BenchShape shape : allBenchShapes()) {
        const QString xml = writeInput(dir, shape, megabytes << 20, ADPlistFormatXML);
        const QString binary = writeInput(dir, shape, megabytes << 20, ADPlistFormatBinary);
        struct Conversion
        {
            const char *name;
            QString input;
            const char *ardeckFormat;
            const char *plistutilFormat;
        };
        for (const Conversion &c : {Conversion{"binary to xml", binary, "xml", "xml"},
                                    Conversion{"xml to binary", xml, "binary", "bin"}}) {
            const std::vector<double> m =
                medians({{ardeck, {QStringLiteral("lint"), c.input}},
                         {ardeck,
                          {QStringLiteral("convert"), QLatin1StringView(c.ardeckFormat),
                           QStringLiteral("-o"), out, c.input}},
                         {QStringLiteral("plistutil"),
                          {QStringLiteral("-i"), c.input, QStringLiteral("-o"), out,
                           QStringLiteral("-f"), QLatin1StringView(c.plistutilFormat)}}},
                        runs);
            std::printf("%-8s %-16s %9.3f %9.3f %9.3f %7.2fx\n", qPrintable(benchShapeName(shape)),
                        c.name, m[0], m[1], m[2], m[2] / m[1]);
        }
    }
    return 0;
}
