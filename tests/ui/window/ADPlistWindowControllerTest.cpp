#include "ui/window/ADPlistWindowController.h"

#include "document/ADPlistDocument.h"
#include "model/ADUndoManager.h"
#include "preferences/ADPreferences.h"
#include "preferences/KZUserDefaults.h"
#include "shared/KZStringAdditions.h"
#include "storage/PlistSerialization.h"
#include "support/ValueBuilders.h"
#include "ui/document/ADPlistTextView.h"
#include "ui/document/ADTextViewController.h"
#include "ui/outline/ADPlistOutlineView.h"
#include "ui/window/ADPlistWindow.h"

#include <QAction>
#include <QComboBox>
#include <QFile>
#include <QMenu>
#include <QPushButton>
#include <QSplitter>
#include <QTemporaryDir>
#include <QTest>
#include <QTextCursor>
#include <QToolButton>

#include <gtest/gtest.h>

namespace {

using Editability = ADPlistWindowController::Editability;

struct EditabilityRow
{
    const char *name;
    ADEditMode mode;
    ADPlistFormat format;
    Editability expected;
};

class EditModeLocking : public testing::TestWithParam<EditabilityRow>
{};

TEST_P(EditModeLocking, LocksTheSideWithoutTheEdits)
{
    const EditabilityRow &row = GetParam();
    EXPECT_EQ(ADPlistWindowController::editabilityFor(row.mode, true, row.format), row.expected);
    EXPECT_EQ(ADPlistWindowController::editabilityFor(row.mode, false, row.format), Editability{})
        << "nothing is editable where editing is not allowed";
}

// {text editable, outline editable, Sync Text, Sync Outline}
INSTANTIATE_TEST_SUITE_P(
    ADPlistWindowController, EditModeLocking,
    testing::Values(
        EditabilityRow{"InStep", ADEditModeNone, ADPlistFormatXML, {true, true, false, false}},
        EditabilityRow{"BinaryTextIsReadOnly",
                       ADEditModeNone,
                       ADPlistFormatBinary,
                       {false, true, false, false}},
        EditabilityRow{
            "OutlineEdits", ADEditModeOutline, ADPlistFormatXML, {false, true, true, false}},
        EditabilityRow{"OutlineEditsOfBinary",
                       ADEditModeOutline,
                       ADPlistFormatBinary,
                       {false, true, false, false}},
        EditabilityRow{
            "TextEdits", ADEditModeText, ADPlistFormatASCII, {true, false, false, true}}),
    [](const auto &info) { return std::string(info.param.name); });

class ADPlistWindowControllerTest : public testing::Test
{
protected:
    /// A document read from a file of `plist` in `format`, in its window.
    ADPlistWindowController &open(const PlistValue &plist, ADPlistFormat format)
    {
        const QString path = folder.filePath(QStringLiteral("file.plist"));
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(PlistSerialization::write(plist, format).data);
        file.close();
        document.setFileURL(path);
        document.readFromURL(path, ADPlistDocumentPropertyListType,
                             [](const std::optional<KZError> &error) { EXPECT_FALSE(error); });
        window = std::make_unique<ADPlistWindowController>(document, prefs);
        window->window()->show();
        return *window;
    }
    bool textEditable() const
    {
        return !window->textViewController().plistTextView()->isReadOnly();
    }
    bool outlineEditable() { return window->outlineController().isEditable(); }

    QTemporaryDir folder;
    KZUserDefaults defaults{folder.filePath(QStringLiteral("settings.plist"))};
    KZNotificationCenter center;
    ADPreferences prefs{defaults, center};
    ADPlistDocument document{prefs};
    std::unique_ptr<ADPlistWindowController> window;
};

const PlistValue kSample = dictionaryOf({{"name", str("arbor")}, {"count", PlistValue(3)}});

TEST_F(ADPlistWindowControllerTest, OneSideWithEditsLocksTheOtherUntilASync)
{
    ADPlistWindowController &controller = open(kSample, ADPlistFormatXML);
    EXPECT_TRUE(textEditable());
    EXPECT_TRUE(outlineEditable());
    EXPECT_FALSE(controller.syncTextButton()->isEnabled());
    EXPECT_FALSE(controller.syncOutlineButton()->isEnabled());
    EXPECT_FALSE(document.undoManager().canUndo()) << "setting up is not undoable";

    ADPlistTextView *text = controller.textViewController().plistTextView();
    const qsizetype at = text->toPlainText().indexOf(QStringLiteral("arbor"));
    QTextCursor cursor = text->textCursor();
    cursor.setPosition(int(at));
    cursor.setPosition(int(at + 5), QTextCursor::KeepAnchor);
    text->setTextCursor(cursor);
    QTest::keyClicks(text, QStringLiteral("oak"));
    QCoreApplication::processEvents();
    EXPECT_EQ(document.editMode(), ADEditModeText);
    EXPECT_FALSE(outlineEditable());
    EXPECT_TRUE(controller.syncOutlineButton()->isEnabled());

    QTest::mouseClick(controller.syncOutlineButton(), Qt::LeftButton);
    EXPECT_EQ(document.editMode(), ADEditModeNone);
    EXPECT_TRUE(outlineEditable());
    EXPECT_EQ(document.plistRoot()->childForKey(QStringLiteral("name"))->plist().toString(),
              QStringLiteral("oak"));
    EXPECT_EQ(controller.outlineController().plistRoot(), document.plistRoot().get());
    EXPECT_EQ(document.plistRoot()->undoManager(), &document.undoManager());
    controller.action(QStringLiteral("toggleAutoSyncText"))->trigger();
    ASSERT_FALSE(document.autoSyncText());
    QCoreApplication::processEvents();

    document.plistRoot()->childForKey(QStringLiteral("count"))->setPlist(PlistValue(4));
    QCoreApplication::processEvents();
    EXPECT_EQ(document.editMode(), ADEditModeOutline);
    EXPECT_FALSE(textEditable());
    EXPECT_TRUE(controller.syncTextButton()->isEnabled());
    controller.action(QStringLiteral("syncText"))->trigger();
    EXPECT_EQ(document.editMode(), ADEditModeNone);
    EXPECT_TRUE(controller.textViewController().currentText().contains(QStringLiteral("4")));
}

TEST_F(ADPlistWindowControllerTest, BinaryTextIsNeverEditableNorHasLines)
{
    ADPlistWindowController &controller = open(kSample, ADPlistFormatBinary);
    EXPECT_FALSE(textEditable());
    EXPECT_FALSE(controller.syncTextButton()->isEnabled());
    EXPECT_FALSE(controller.syncOutlineButton()->isEnabled());
    controller.refreshActions();
    EXPECT_FALSE(controller.action(QStringLiteral("gotoLine"))->isEnabled());
    EXPECT_EQ(controller.formatPopUp()->currentText(), QStringLiteral("Binary"));
}

TEST_F(ADPlistWindowControllerTest, GoesToALineAndOpensACollapsedTextPane)
{
    ADPlistWindowController &controller = open(kSample, ADPlistFormatXML);
    QSplitter *splitter = controller.splitter();
    splitter->setSizes({splitter->height(), 0});
    ASSERT_EQ(splitter->sizes().value(1), 0);

    controller.acceptGotoLine(3);
    const QString text = controller.textViewController().currentText();
    const KZRange third = rangeForLineNumber(text, 2);
    EXPECT_EQ(controller.textViewController().selectedText(),
              text.mid(third.location, third.length));
    EXPECT_EQ(splitter->sizes().value(1), 120) << "the text pane comes back into view";

    const QList<int> before = splitter->sizes();
    controller.acceptGotoLine(10000);
    EXPECT_EQ(controller.textViewController().selectedText(),
              text.mid(third.location, third.length))
        << "a line past the end changes nothing";
    EXPECT_EQ(splitter->sizes(), before);
}

TEST_F(ADPlistWindowControllerTest, ToolbarFollowsTheDocumentAndTheSelection)
{
    ADPlistWindowController &controller = open(kSample, ADPlistFormatXML);
    EXPECT_EQ(controller.formatPopUp()->currentText(), QStringLiteral("XML"));

    const int binary = controller.formatPopUp()->findText(QStringLiteral("Binary"));
    controller.formatPopUp()->setCurrentIndex(binary);
    emit controller.formatPopUp()->activated(binary);
    EXPECT_EQ(document.plistFormat(), ADPlistFormatBinary);
    controller.refreshActions();
    EXPECT_TRUE(controller.action(QStringLiteral("changePlistFormat%1").arg(ADPlistFormatBinary))
                    ->isChecked());
    document.undoManager().undo();
    EXPECT_EQ(controller.formatPopUp()->currentText(), QStringLiteral("XML"))
        << "an undone format change shows too";

    emit controller.viewAsButton()->menu()->aboutToShow(); // as it opens
    const QList<QAction *> viewAs = controller.viewAsButton()->menu()->actions();
    ASSERT_FALSE(viewAs.isEmpty());
    EXPECT_TRUE(std::any_of(viewAs.begin(), viewAs.end(), [](const QAction *action) {
        return action->isEnabled();
    })) << "the selected root has viewers to choose";
    controller.outlineController().selectItems({});
    emit controller.viewAsButton()->menu()->aboutToShow();
    const QList<QAction *> none = controller.viewAsButton()->menu()->actions();
    ASSERT_EQ(none.size(), 1);
    EXPECT_EQ(none.front()->text(), QStringLiteral("No selection"));
    EXPECT_FALSE(none.front()->isEnabled());
}

TEST_F(ADPlistWindowControllerTest, ClosingTheWindowClosesTheDocument)
{
    ADPlistWindowController &controller = open(kSample, ADPlistFormatXML);
    bool documentClosed = false;
    QObject::connect(&document, &KZDocument::closed, [&] { documentClosed = true; });
    bool windowClosed = false;
    QObject::connect(&controller, &ADPlistWindowController::windowClosed,
                     [&] { windowClosed = true; });
    controller.window()->close();
    EXPECT_TRUE(documentClosed);
    EXPECT_TRUE(windowClosed);
    EXPECT_EQ(document.window(), nullptr) << "the document no longer asks the window";
}

TEST_F(ADPlistWindowControllerTest, EditingKeysReachTheOutline)
{
    ADPlistWindowController &controller = open(kSample, ADPlistFormatXML);
    ADPlistOutlineController &outline = controller.outlineController();
    ADPlistObject *root = outline.plistRoot();
    outline.selectItems({root->childForKey(QStringLiteral("name"))});
    controller.refreshActions();
    // Shortcuts reach the active window only.
    controller.window()->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(controller.window()));
    controller.outlineView()->setFocus();

    QTest::keySequence(controller.window(), QKeySequence::Copy);
    QTest::keySequence(controller.window(), QKeySequence::Paste);
    QCoreApplication::processEvents();
    EXPECT_TRUE(root->childForKey(QStringLiteral("name 2"))) << "pasted beside itself";

    outline.selectItems({root->childForKey(QStringLiteral("count"))});
    controller.refreshActions();
    QTest::keySequence(controller.window(), QKeySequence::Delete);
    QCoreApplication::processEvents();
    EXPECT_FALSE(root->childForKey(QStringLiteral("count")));
    EXPECT_EQ(document.undoManager().undoActionName(), QStringLiteral("Delete"));

    document.plistRoot()->setPlist(PlistValue(QStringLiteral("scalar")));
    QCoreApplication::processEvents();
    outline.selectItems({outline.plistRoot()});
    controller.refreshActions();
    EXPECT_FALSE(controller.action(QStringLiteral("delete"))->isEnabled()) << "the root stays";
    EXPECT_FALSE(controller.action(QStringLiteral("pasteChild"))->isEnabled());
}

} // namespace
