// Loads the XML text of generated plists into the text view with tag
// colouring on and off, and times the first painted frame after the load
// starts, the whole load through its last frame, and one keystroke at the
// end of the text (the key, its undo step, its colours and the repaint), and
// the text made again after one value in its middle changed ("remake"). Each is repeated,
// interleaved at random, and a table at the end gives the median with the spread, and colouring on
// over off.
// `--large` adds the 100 MB text to the 1 MB and 10 MB ones; `--shape=NAME`
// picks the generated shape (records by default).

#include "storage/BenchShapes.h"

#include "model/ADUndoManager.h"
#include "preferences/ADPreferences.h"
#include "preferences/KZUserDefaults.h"
#include "shared/KZNotificationCenter.h"
#include "storage/XmlWriter.h"
#include "ui/document/ADPlistTextView.h"
#include "ui/document/ADTextViewController.h"

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QKeyEvent>
#include <QTemporaryDir>

#include <malloc.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace {

struct SizeStep
{
    const char *name;
    qint64 bytes;
};

constexpr int kRepetitions = 5;
constexpr int kKeystrokes = 20;

// One text view over the program's preferences, kept in a folder of its own.
struct Editor
{
    QTemporaryDir folder;
    KZUserDefaults defaults{folder.filePath(QStringLiteral("settings.plist"))};
    KZNotificationCenter center;
    ADPreferences prefs{defaults, center};
    ADUndoManager undo;
    ADTextViewController controller{prefs};

    explicit Editor(bool coloring)
    {
        undo.setNotificationCenter(&center);
        controller.setUndoManager(&undo);
        controller.setSyntaxColoringEnabled(coloring);
        controller.plistTextView()->resize(1000, 800);
        controller.plistTextView()->show();
        QCoreApplication::processEvents();
    }
};

QString xmlText(BenchShape shape, qint64 bytes)
{
    const WriteResult written = XmlWriter::write(makeBenchValue(shape, bytes, false));
    if (!written) {
        std::fprintf(stderr, "cannot write benchmark input: %s\n", qPrintable(written.error));
        std::exit(1);
    }
    return QString::fromUtf8(written.data);
}

void typeAtEnd(ADPlistTextView &view)
{
    QKeyEvent press(QEvent::KeyPress, Qt::Key_X, Qt::NoModifier, QStringLiteral("x"));
    QKeyEvent release(QEvent::KeyRelease, Qt::Key_X, Qt::NoModifier, QStringLiteral("x"));
    QCoreApplication::sendEvent(&view, &press);
    QCoreApplication::sendEvent(&view, &release);
    view.viewport()->repaint();
}

void setTime(benchmark::State &state, const QElapsedTimer &timer)
{
    state.SetIterationTime(double(timer.nsecsElapsed()) / 1e9);
}

// Times putting the text into the view through its first frame, or with
// `whole` through the frame after all of it is in.
void registerLoad(const std::string &name, bool coloring, const QString &text, bool whole)
{
    benchmark::RegisterBenchmark(name.c_str(),
                                 [coloring, &text, whole](benchmark::State &state) {
                                     malloc_trim(0); // no run pays for what another freed
                                     Editor editor(coloring);
                                     ADPlistTextView &view = *editor.controller.plistTextView();
                                     for (auto _ : state) {
                                         QElapsedTimer timer;
                                         timer.start();
                                         editor.controller.updatePlistText(text);
                                         view.viewport()->repaint();
                                         if (whole) {
                                             editor.controller.finishLoading();
                                             view.viewport()->repaint();
                                         }
                                         setTime(state, timer);
                                     }
                                 })
        ->UseManualTime()
        ->Iterations(1)
        ->Repetitions(kRepetitions)
        ->Unit(benchmark::kMillisecond);
}

// Registers `run` over a view that holds all of `text`.
void registerWithText(const std::string &name, bool coloring, const QString &text, int iterations,
                      const std::function<void(Editor &, benchmark::State &)> &run)
{
    benchmark::RegisterBenchmark(name.c_str(),
                                 [coloring, &text, run](benchmark::State &state) {
                                     malloc_trim(0);
                                     Editor editor(coloring);
                                     editor.controller.updatePlistText(text);
                                     editor.controller.finishLoading();
                                     run(editor, state);
                                 })
        ->UseManualTime()
        ->Iterations(iterations)
        ->Repetitions(kRepetitions)
        ->Unit(benchmark::kMillisecond);
}

void registerSize(const SizeStep &size, const QString &text)
{
    for (const bool coloring : {false, true}) {
        const std::string suffix = std::string(size.name) + (coloring ? "/on" : "/off");
        registerLoad("firstpaint/" + suffix, coloring, text, false);
        registerLoad("fullload/" + suffix, coloring, text, true);
        registerWithText(
            "keystroke/" + suffix, coloring, text, kKeystrokes,
            [](Editor &editor, benchmark::State &state) {
                ADPlistTextView &view = *editor.controller.plistTextView();
                view.moveCursor(QTextCursor::End);
                view.ensureCursorVisible();
                view.viewport()->repaint();
                QCoreApplication::processEvents();
                for (auto _ : state) {
                    QElapsedTimer timer;
                    timer.start();
                    typeAtEnd(view);
                    setTime(state, timer);
                    QCoreApplication::processEvents(); // the end of a pass: its undo group closes
                }
            });
        // One value in the middle changes, as after an edit of the tree with auto sync.
        registerWithText("remake/" + suffix, coloring, text, 4,
                         [&text](Editor &editor, benchmark::State &state) {
                             QString changed = text;
                             changed.insert(changed.indexOf(u'>', changed.size() / 2) + 1, u'-');
                             bool toChanged = true;
                             for (auto _ : state) {
                                 QElapsedTimer timer;
                                 timer.start();
                                 editor.controller.updatePlistText(toChanged ? changed : text);
                                 editor.controller.finishLoading();
                                 editor.controller.plistTextView()->viewport()->repaint();
                                 setTime(state, timer);
                                 toChanged = !toChanged;
                             }
                         });
    }
}

/// Prints the console report, then per size and measure the median time of
/// the repetitions with colouring off and on, their range, and on over off.
class SpreadReporter : public benchmark::ConsoleReporter
{
public:
    void ReportRuns(const std::vector<Run> &runs) override
    {
        ConsoleReporter::ReportRuns(runs);
        for (const Run &run : runs) {
            if (run.run_type == Run::RT_Iteration)
                _times[run.run_name.function_name].push_back(run.GetAdjustedRealTime());
        }
    }

    void Finalize() override
    {
        ConsoleReporter::Finalize();
        std::printf("\n%-22s %24s %24s %8s\n", "ms (median [min..max])", "colouring off",
                    "colouring on", "on/off");
        for (const auto &[name, off] : _times) {
            const std::string::size_type cut = name.rfind("/off");
            if (cut == std::string::npos)
                continue;
            const auto on = _times.find(name.substr(0, cut) + "/on");
            if (on == _times.end())
                continue;
            std::printf("%-22s %24s %24s %7.2fx\n", name.substr(0, cut).c_str(),
                        spread(off).c_str(), spread(on->second).c_str(),
                        median(on->second) / median(off));
        }
    }

private:
    static double median(std::vector<double> values)
    {
        std::sort(values.begin(), values.end());
        return values[values.size() / 2];
    }
    static std::string spread(const std::vector<double> &values)
    {
        const auto [low, high] = std::minmax_element(values.begin(), values.end());
        char text[64];
        std::snprintf(text, sizeof text, "%.2f [%.2f..%.2f]", median(values), *low, *high);
        return text;
    }

    std::map<std::string, std::vector<double>> _times; // by name, one per repetition
};

} // namespace

int main(int argc, char **argv)
{
    if (!std::getenv("QT_QPA_PLATFORM"))
        setenv("QT_QPA_PLATFORM", "offscreen", 0);
    QApplication app(argc, argv);

    bool large = false;
    BenchShape shape = BenchShape::Records;
    std::vector<char *> args;
    for (int i = 0; i < argc; ++i) {
        const QString arg = QString::fromLocal8Bit(argv[i]);
        if (arg == QLatin1String("--large")) {
            large = true;
            continue;
        }
        if (arg.startsWith(QLatin1String("--shape="))) {
            for (const BenchShape candidate : allBenchShapes()) {
                if (benchShapeName(candidate) == arg.mid(8))
                    shape = candidate;
            }
            continue;
        }
        args.push_back(argv[i]);
    }
    // Repetitions of the on and off runs take turns, so that a neighbour's
    // load on a shared machine falls on both alike.
    char interleave[] = "--benchmark_enable_random_interleaving=true";
    args.insert(args.begin() + 1, interleave);
    int count = int(args.size());
    benchmark::Initialize(&count, args.data());

    std::vector<SizeStep> sizes{{"1MB", qint64(1) << 20}, {"10MB", qint64(10) << 20}};
    if (large)
        sizes.push_back({"100MB", qint64(100) << 20});
    std::vector<std::unique_ptr<QString>> texts; // alive through the runs
    for (const SizeStep &size : sizes) {
        texts.push_back(std::make_unique<QString>(xmlText(shape, size.bytes)));
        registerSize(size, *texts.back());
    }
    std::printf("shape %s\n", qPrintable(benchShapeName(shape)));
    SpreadReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}
