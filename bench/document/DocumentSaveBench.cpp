// Saving a document against what `ardeck convert` spends writing the same
// tree in the same format: its fit check and its write, the same calls the
// tool makes. Each shape's value (about --size MB as XML) is opened from a
// file as a document; then, round by round in alternating order, the
// document saves to its file and the tool's write goes to another. Reports
// the median and the spread of each, the ratio of the medians with the
// lowest and highest ratio of a single round, and the ratio of the fastest
// runs, the steadiest figure while other builders share the machine. Usage: DocumentSaveBench
// [--size=MB] [--runs=N] [--shape=NAME]

#include "storage/BenchShapes.h"

#include "document/ADPlistDocument.h"
#include "model/ADPlistObject.h"
#include "preferences/ADPreferences.h"
#include "preferences/KZUserDefaults.h"
#include "storage/PlistSerialization.h"
#include "storage/SafeFileWriter.h"

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QTemporaryDir>

#include <malloc.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace {

struct Format
{
    const char *name;
    ADPlistFormat format;
    const QString &type;
};

const Format kFormats[] = {
    {"xml", ADPlistFormatXML, ADPlistDocumentPropertyListType},
    {"binary", ADPlistFormatBinary, ADPlistDocumentPropertyListType},
    {"json", ADPlistFormatJSON, ADPlistDocumentJSONType},
};

[[noreturn]] void fail(const char *what, const QString &why)
{
    std::fprintf(stderr, "%s: %s\n", what, qPrintable(why));
    std::exit(1);
}

template <typename Work> double secondsOf(Work &&work)
{
    malloc_trim(0); // no run pays for what the one before it freed
    QElapsedTimer timer;
    timer.start();
    work();
    return double(timer.nsecsElapsed()) / 1e9;
}

struct Spread
{
    double median, low, high;
};

Spread spreadOf(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return {values[values.size() / 2], values.front(), values.back()};
}

// What `ardeck convert` does with a value it has read, without coercion.
void ardeckWrite(const PlistValue &value, const QString &path, ADPlistFormat format)
{
    if (ADPlistObject::firstIncompatibleValueForFormat(value, format))
        fail("ardeck", QStringLiteral("the value does not fit"));
    if (const std::optional<KZError> error = ADPlistObject::writePlist(value, path, format, false))
        fail("ardeck", error->localizedDescription());
}

void documentSave(ADPlistDocument &document, const QString &type)
{
    document.saveToURL(document.fileURL(), type, KZSaveOperation::Save,
                       [](const std::optional<KZError> &error) {
                           if (error)
                               fail("document", error->localizedDescription());
                       });
}

void measure(ADPreferences &preferences, const QTemporaryDir &folder, BenchShape shape,
             const Format &format, qint64 megabytes, int runs)
{
    const QString input = folder.filePath(QStringLiteral("input"));
    {
        const PlistValue value =
            makeBenchValue(shape, megabytes << 20, format.format == ADPlistFormatJSON);
        const WriteResult written = PlistSerialization::write(value, format.format, false);
        if (!written)
            fail("input", written.error);
        if (const std::optional<KZError> error = SafeFileWriter::write(input, written.data))
            fail("input", error->localizedDescription());
    }
    ADPlistDocument document(preferences);
    document.setSaveJSONHumanReadable(false); // as the tool writes JSON unless told
    document.setFileURL(input);
    document.readFromURL(input, format.type, [](const std::optional<KZError> &error) {
        if (error)
            fail("document", error->localizedDescription());
    });
    const PlistValue tree = document.plistRoot()->entryValue();
    const QString other = folder.filePath(QStringLiteral("ardeck"));

    std::vector<double> saves, writes, ratios;
    for (int round = -1; round < runs; ++round) { // round -1 warms up
        double save = 0;
        double write = 0;
        const auto doSave = [&] { save = secondsOf([&] { documentSave(document, format.type); }); };
        const auto doWrite = [&] {
            write = secondsOf([&] { ardeckWrite(tree, other, format.format); });
        };
        if (round % 2 == 0) {
            doSave();
            doWrite();
        } else {
            doWrite();
            doSave();
        }
        if (round < 0)
            continue;
        saves.push_back(save);
        writes.push_back(write);
        ratios.push_back(save / write);
    }
    const Spread s = spreadOf(saves);
    const Spread w = spreadOf(writes);
    const Spread r = spreadOf(ratios);
    std::printf("%-8s %-7s %7.3f [%6.3f-%6.3f] %7.3f [%6.3f-%6.3f] %6.3fx [%5.3f-%5.3f] %6.3fx\n",
                qPrintable(benchShapeName(shape)), format.name, s.median, s.low, s.high, w.median,
                w.low, w.high, s.median / w.median, r.low, r.high, s.low / w.low);
    std::fflush(stdout);
}

} // namespace

int main(int argc, char **argv)
{
    if (!std::getenv("QT_QPA_PLATFORM"))
        setenv("QT_QPA_PLATFORM", "offscreen", 0);
    QGuiApplication application(argc, argv); // the preferences' fonts need one
    qint64 megabytes = 100;
    int runs = 7;
    QString onlyShape;
    for (int i = 1; i < argc; ++i) {
        const QLatin1StringView arg(argv[i]);
        if (arg.startsWith(QLatin1StringView("--size=")))
            megabytes = arg.sliced(7).toLongLong();
        else if (arg.startsWith(QLatin1StringView("--runs=")))
            runs = arg.sliced(7).toInt();
        else if (arg.startsWith(QLatin1StringView("--shape=")))
            onlyShape = QString(arg.sliced(8));
    }
    QTemporaryDir settings;
    KZUserDefaults defaults(settings.filePath(QStringLiteral("settings.plist")));
    ADPreferences preferences(defaults, KZNotificationCenter::defaultCenter());
    defaults.setBool(true, KeepKeyOrderKey); // the tool keeps the file's order too

    QTemporaryDir folder;
    std::printf("%d rounds of %lld MB; seconds as median [lowest-highest]\n", runs, megabytes);
    std::printf("%-8s %-7s %25s %25s %23s %7s\n", "shape", "format", "document save",
                "ardeck convert's write", "ratio [per round]", "lows");
    for (const BenchShape shape : allBenchShapes()) {
        if (!onlyShape.isEmpty() && benchShapeName(shape) != onlyShape)
            continue;
        for (const Format &format : kFormats)
            measure(preferences, folder, shape, format, megabytes, runs);
    }
    return 0;
}
