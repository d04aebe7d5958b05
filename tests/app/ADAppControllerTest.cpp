#include "app/ADAppController.h"

#include "app/ADDocumentController.h"
#include "document/ADPlistDocument.h"
#include "model/ADUndoManager.h"
#include "preferences/ADPreferences.h"
#include "preferences/KZUserDefaults.h"
#include "storage/PlistSerialization.h"
#include "support/ValueBuilders.h"
#include "ui/window/ADPlistWindow.h"
#include "ui/window/ADPlistWindowController.h"

#include <QApplication>
#include <QClipboard>
#include <QDir>
#include <QFile>
#include <QProgressDialog>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTimer>
#include <QUrl>

#include <gtest/gtest.h>

namespace {

class ADAppControllerTest : public testing::Test
{
protected:
    ADAppControllerTest() { defaults.setBool(false, ADDocumentShouldAutoSaveKey); }

    QString file(const char *name, const PlistValue &plist = dictionaryOf({{"k", str("v")}}))
    {
        const QString path = folder.filePath(QString::fromUtf8(name));
        QFile out(path);
        EXPECT_TRUE(out.open(QIODevice::WriteOnly));
        out.write(PlistSerialization::write(plist, ADPlistFormatXML).data);
        return path;
    }
    std::vector<KZError> open(const QStringList &items)
    {
        std::vector<KZError> errors;
        app.processFiles(
            items, [&errors](const auto &, const std::vector<KZError> &found) { errors = found; });
        QCoreApplication::processEvents(); // windows come one pass later
        return errors;
    }
    const std::vector<std::unique_ptr<KZDocument>> &documents() const
    {
        return app.documentController().documents();
    }
    /// Lets closed documents and windows go.
    static void settle()
    {
        for (int pass = 0; pass < 3; ++pass) {
            QCoreApplication::processEvents();
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        }
    }

    QTemporaryDir folder;
    QTemporaryDir autosave;
    KZUserDefaults defaults{folder.filePath(QStringLiteral("settings.plist"))};
    KZNotificationCenter center;
    ADPreferences prefs{defaults, center};
    ADAppController app{prefs, autosave.path()};
};

TEST_F(ADAppControllerTest, TheFirstFileTakesThePlaceOfTheUntouchedBlankDocument)
{
    app.applicationDidFinishLaunching({});
    QCoreApplication::processEvents();
    ASSERT_EQ(documents().size(), 1u);
    KZDocument *blank = documents().front().get();
    ADPlistWindowController *blankWindow = app.windowControllerFor(blank);
    ASSERT_TRUE(blankWindow);
    blankWindow->window()->setGeometry(140, 120, 700, 520);

    EXPECT_TRUE(open({QUrl::fromLocalFile(file("a.plist")).toString()}).empty())
        << "a file URL opens as its path";
    settle();
    ASSERT_EQ(documents().size(), 1u);
    KZDocument *opened = documents().front().get();
    EXPECT_TRUE(opened->fileURL().endsWith(QStringLiteral("a.plist")));
    ADPlistWindowController *window = app.windowControllerFor(opened);
    ASSERT_TRUE(window);
    EXPECT_EQ(window->window()->geometry(), QRect(140, 120, 700, 520))
        << "the file opens where the blank one stood";

    EXPECT_TRUE(open({file("b.plist")}).empty());
    settle();
    EXPECT_EQ(documents().size(), 2u) << "only the blank document is ever replaced";
}

TEST_F(ADAppControllerTest, AnEditedBlankDocumentStays)
{
    app.applicationDidFinishLaunching({});
    QCoreApplication::processEvents();
    auto *blank = static_cast<ADPlistDocument *>(documents().front().get());
    blank->plistRoot()->setPlist(dictionaryOf({{"typed", str("x")}}));
    QCoreApplication::processEvents();
    ASSERT_TRUE(blank->isDocumentEdited());

    EXPECT_TRUE(open({file("a.plist")}).empty());
    settle();
    EXPECT_EQ(documents().size(), 2u);
}

TEST_F(ADAppControllerTest, ALaunchWithNothingToOpenMakesADocumentOnlyWhenAsked)
{
    prefs.setReopenAction(1);
    app.openRequests({});
    QCoreApplication::processEvents();
    EXPECT_TRUE(documents().empty());

    prefs.setReopenAction(0);
    app.openRequests({});
    QCoreApplication::processEvents();
    ASSERT_EQ(documents().size(), 1u);
    app.openRequests({});
    QCoreApplication::processEvents();
    EXPECT_EQ(documents().size(), 1u) << "an open window comes forward instead";
}

TEST_F(ADAppControllerTest, AFolderAmongTheFilesOpensNothing)
{
    const std::vector<KZError> errors = open({file("a.plist"), folder.path()});
    ASSERT_EQ(errors.size(), 1u);
    EXPECT_TRUE(errors.front().localizedDescription().contains(QDir(folder.path()).dirName()));
    EXPECT_TRUE(documents().empty());

    const std::vector<KZError> missing = open({folder.filePath(QStringLiteral("none.plist"))});
    EXPECT_EQ(missing.size(), 1u) << "a missing file is an error of its own";
}

// Cancelling the open of the only file asked for leaves nothing to show.
TEST_F(ADAppControllerTest, ALaunchWhoseOnlyOpenIsCancelledQuits)
{
    const QString path =
        file("big.plist", dictionaryOf({{"blob", PlistValue::data(QByteArray(13 << 20, 'x'))}}));
    bool timedOut = false;
    QTimer::singleShot(0, &app, [&] { app.openRequests({path}); });
    // Chosen as soon as the progress exists, before it has had time to show.
    QTimer::singleShot(0, &app, [] {
        for (QWidget *widget : QApplication::topLevelWidgets()) {
            if (auto *progress = qobject_cast<QProgressDialog *>(widget))
                progress->findChild<QPushButton *>()->click();
        }
    });
    QTimer::singleShot(20'000, &app, [&] {
        timedOut = true;
        QCoreApplication::quit();
    });
    QCoreApplication::exec();
    EXPECT_FALSE(timedOut);
    EXPECT_TRUE(documents().empty());
}

TEST_F(ADAppControllerTest, PlistTextHandedOverBecomesAnUnchangedDocument)
{
    app.applicationDidFinishLaunching(
        {}, PlistSerialization::write(arrayOf({PlistValue(7)}), ADPlistFormatBinary).data);
    QCoreApplication::processEvents();
    ASSERT_EQ(documents().size(), 1u) << "no blank document beside it";
    auto *document = static_cast<ADPlistDocument *>(documents().front().get());
    EXPECT_EQ(document->plistFormat(), ADPlistFormatBinary);
    EXPECT_TRUE(document->plistRoot()->plist().isEqualToPlist(arrayOf({PlistValue(7)})));
    EXPECT_FALSE(document->isDocumentEdited());
    EXPECT_FALSE(document->undoManager().canUndo());
    EXPECT_TRUE(document->fileURL().isEmpty());

    const auto openClipboard = [this] {
        QString failure = QStringLiteral("unanswered");
        app.openPlistTextFromClipboard([&failure](const QString &text) { failure = text; });
        return failure;
    };
    QGuiApplication::clipboard()->setText(QString());
    EXPECT_EQ(openClipboard(),
              QStringLiteral("Could not open property list text: no string present in selection"));
    QGuiApplication::clipboard()->setText(QStringLiteral("{ a = 1; }"));
    EXPECT_TRUE(openClipboard().isNull());
    EXPECT_EQ(documents().size(), 2u);
}

} // namespace
