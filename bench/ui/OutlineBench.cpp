// The outline over the generated large files (the records array and the wide
// dictionary): the time from an opened tree to the first painted outline,
// opening the root again, scrolling to the end, selecting all, and deleting
// every other row of the root with the undo of it, each through its repaint.
// Best of a few runs each; `--size-mb=N` for other files (100 by default),
// `--shape=NAME` for one of the two. `--edits` times the editing commands
// instead: pasting a 100,000-entry dictionary, deleting 100,000 selected rows
// and sorting a 1,000,000-element array, each with its undo.

#include "storage/BenchShapes.h"

#include "model/ADUndoManager.h"
#include "outline/ADPlistPasteboard.h"
#include "preferences/KZUserDefaults.h"
#include "shared/KZNotificationCenter.h"
#include "shared/PlistArray.h"
#include "shared/PlistDictionary.h"
#include "storage/PlistSerialization.h"
#include "ui/outline/ADPlistOutlineView.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QScrollBar>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace {

constexpr int kRuns = 3;

// A document's outline in a window of a usual size.
struct Outline
{
    QTemporaryDir folder;
    KZUserDefaults defaults{folder.filePath(QStringLiteral("settings.plist"))};
    KZNotificationCenter center;
    ADUndoManager undo;
    ADPlistOutlineController controller{defaults};
    ADPlistOutlineView view{controller};

    Outline()
    {
        undo.setNotificationCenter(&center);
        controller.setNotificationCenter(&center);
        controller.setUndoManager(&undo);
        view.resize(900, 700);
        view.show();
    }
    void paint()
    {
        QApplication::processEvents();
        view.viewport()->repaint();
    }
};

double seconds(const std::function<void()> &step)
{
    QElapsedTimer timer;
    timer.start();
    step();
    return double(timer.nsecsElapsed()) / 1e9;
}

// The figures of one run over a fresh tree of `value`.
std::map<std::string, double> runOnce(const PlistValue &value)
{
    std::map<std::string, double> figures;
    Outline outline;
    const ADPlistObject::Pointer root =
        ADPlistObject::createWithPlist(value.kz_copyMutableContainers());
    figures["first paint"] = seconds([&] {
        outline.controller.setPlistRoot(root);
        outline.paint();
    });
    outline.controller.model().collapseItem(root.get(), false);
    outline.paint();
    figures["expand root"] = seconds([&] {
        outline.controller.model().expandItem(root.get());
        outline.paint();
    });
    figures["scroll to end"] = seconds([&] {
        outline.view.verticalScrollBar()->setValue(outline.view.verticalScrollBar()->maximum());
        outline.paint();
    });
    figures["select all"] = seconds([&] {
        outline.view.selectAll();
        outline.paint();
    });
    // What the menus' items ask after a selection changes.
    figures["validate all commands"] = seconds([&] {
        for (const QString &command : ADPlistOutlineController::validatedCommands())
            (void)outline.controller.validateCommand(command);
    });
    KZIndexSet half;
    for (qint64 i = 0; i < root->childCount(); i += 2)
        half.addIndex(i);
    figures["delete half"] = seconds([&] {
        outline.controller.performOutlineUpdate([&] {
            outline.undo.beginUndoGrouping();
            root->removeChildrenAtIndexes(half);
            outline.undo.endUndoGrouping();
        });
        outline.paint();
    });
    figures["undo the delete"] = seconds([&] {
        outline.controller.undo();
        outline.paint();
    });
    if (outline.controller.model().rowCount(outline.controller.model().indexForItem(root.get())) !=
            root->childCount() ||
        root->childCount() != value.containerCount())
        std::fprintf(stderr, "the undo did not bring every row back\n");
    return figures;
}

PlistValue numbers(qint64 count, bool shuffled)
{
    PlistArray values = PlistArray::create(count);
    quint64 state = 88172645463325252ull;
    for (qint64 i = 0; i < count; ++i) {
        state ^= state << 13;
        state ^= state >> 7;
        state ^= state << 17;
        values.append(PlistValue(shuffled ? qint64(state % 10000000) : i));
    }
    return values.value();
}

// A command through its repaint, then its undo through the next.
void timeWithUndo(const char *name, Outline &outline, const std::function<void()> &command)
{
    const double done = seconds([&] {
        command();
        outline.paint();
    });
    const double undone = seconds([&] {
        outline.controller.undo();
        outline.paint();
    });
    std::printf("%-28s %8.3fs  undo %8.3fs  together %8.3fs\n", name, done, undone, done + undone);
}

void runEdits()
{
    {
        Outline outline;
        const auto root = ADPlistObject::createWithPlist(
            PlistDictionary::create().value().kz_copyMutableContainers());
        outline.controller.setPlistRoot(root);
        PlistDictionary entries = PlistDictionary::create(100000);
        for (int i = 0; i < 100000; ++i)
            entries.insert(QStringLiteral("key %1").arg(i, 6, 10, QLatin1Char('0')), PlistValue(i));
        ADPlistPasteboard::general().writePropertyList(entries.value());
        outline.controller.selectItems({root.get()});
        outline.paint();
        timeWithUndo("paste 100,000 entries", outline, [&] { outline.controller.pasteChild(); });
    }
    {
        Outline outline;
        const auto root = ADPlistObject::createWithPlist(numbers(150000, false));
        outline.controller.setPlistRoot(root);
        std::vector<ADPlistObject *> rows;
        for (qint64 i = 25000; i < 125000; ++i)
            rows.push_back(root->childAtIndex(i));
        outline.controller.selectItems(rows);
        outline.paint();
        timeWithUndo("delete 100,000 selected rows", outline,
                     [&] { outline.controller.deletePlist(); });
    }
    {
        Outline outline;
        const auto root = ADPlistObject::createWithPlist(numbers(1000000, true));
        outline.controller.setPlistRoot(root);
        outline.controller.selectItems({root.get()});
        outline.paint();
        timeWithUndo("sort 1,000,000 values", outline, [&] { outline.controller.sortValues(); });
    }
}

} // namespace

int main(int argc, char **argv)
{
    if (!std::getenv("QT_QPA_PLATFORM"))
        setenv("QT_QPA_PLATFORM", "offscreen", 0);
    QApplication app(argc, argv);
    if (argc > 1 && QLatin1StringView(argv[1]) == QLatin1StringView("--edits")) {
        runEdits();
        return 0;
    }
    qint64 megabytes = 100;
    std::vector<BenchShape> shapes{BenchShape::Records, BenchShape::Wide};
    for (int i = 1; i < argc; ++i) {
        const QLatin1StringView arg(argv[i]);
        if (arg.startsWith(QLatin1StringView("--size-mb=")))
            megabytes = arg.sliced(10).toLongLong();
        else if (arg.startsWith(QLatin1StringView("--shape=")))
            std::erase_if(shapes,
                          [&](BenchShape shape) { return benchShapeName(shape) != arg.sliced(8); });
    }
    const char *const steps[] = {"first paint",    "expand root",           "scroll to end",
                                 "select all",     "validate all commands", "delete half",
                                 "undo the delete"};
    std::printf("%-8s %9s", "shape", "rows");
    for (const char *step : steps)
        std::printf(" %22s", step);
    std::printf("\n");
    for (const BenchShape shape : shapes) {
        // Read back from its file form, as an opened document's tree is.
        const PlistValue value =
            PlistSerialization::read(
                PlistSerialization::write(makeBenchValue(shape, megabytes << 20, false),
                                          ADPlistFormatBinary, false)
                    .data)
                .value;
        std::map<std::string, double> best;
        for (int run = 0; run < kRuns; ++run) {
            for (const auto &[step, time] : runOnce(value))
                best[step] = run == 0 ? time : std::min(best[step], time);
        }
        std::printf("%-8s %9lld", qPrintable(benchShapeName(shape)),
                    static_cast<long long>(value.containerCount()));
        for (const char *step : steps)
            std::printf(" %21.3fs", best[step]);
        std::printf("\n");
    }
    return 0;
}
