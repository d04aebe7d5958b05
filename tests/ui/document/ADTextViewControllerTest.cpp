#include "ui/document/ADTextViewController.h"

#include "model/ADUndoManager.h"
#include "preferences/ADPreferences.h"
#include "preferences/KZUserDefaults.h"
#include "shared/KZNotificationCenter.h"
#include "ui/document/ADPlistTextView.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QTemporaryDir>
#include <QTest>
#include <QTextBlock>
#include <QTextLayout>
#include <QUndoStack>

#include <gtest/gtest.h>

namespace {

class ADTextViewControllerTest : public testing::Test
{
protected:
    ADTextViewControllerTest()
    {
        _undo.setNotificationCenter(&_center);
        _controller.setUndoManager(&_undo);
        _controller.setSyntaxColoringEnabled(true);
        view()->resize(400, 300);
        view()->show();
    }

    ADPlistTextView *view() const { return _controller.plistTextView(); }
    void setText(const QString &text)
    {
        _controller.updatePlistText(text);
        _undo.removeAllActions();
    }
    void moveTo(qint64 position)
    {
        QTextCursor cursor = view()->textCursor();
        cursor.setPosition(int(position));
        view()->setTextCursor(cursor);
    }
    // Keys as a user types them: each its own pass of the event loop.
    void typeKeys(const QString &keys)
    {
        for (const QChar key : keys) {
            QTest::keyClick(view(), key.toLatin1());
            QCoreApplication::processEvents();
        }
    }
    // The coloured ranges of a line after the view painted.
    std::vector<std::pair<int, int>> coloredRanges(int line)
    {
        view()->grab();
        std::vector<std::pair<int, int>> ranges;
        for (const auto &range : view()->document()->findBlockByNumber(line).layout()->formats())
            ranges.emplace_back(range.start, range.length);
        return ranges;
    }
    QPoint pointOfCharacter(qint64 position)
    {
        QTextCursor cursor = view()->textCursor();
        cursor.setPosition(int(position));
        const QRect caret = view()->cursorRect(cursor);
        return {caret.left() + view()->fontMetrics().averageCharWidth() / 2, caret.center().y()};
    }

    QTemporaryDir _folder;
    KZUserDefaults _defaults{_folder.filePath(QStringLiteral("settings.plist"))};
    KZNotificationCenter _center;
    ADPreferences _prefs{_defaults, _center};
    ADUndoManager _undo;
    ADTextViewController _controller{_prefs};
};

TEST_F(ADTextViewControllerTest, UndoesABurstOfTypingAsOneTextGroup)
{
    setText(QStringLiteral("<key>name</key>"));
    moveTo(9);
    typeKeys(QStringLiteral("xy"));
    QTest::keyClick(view(), Qt::Key_Backspace);
    QCoreApplication::processEvents();
    typeKeys(QStringLiteral("z"));
    EXPECT_EQ(_controller.currentText(), QStringLiteral("<key>namexz</key>"));
    EXPECT_EQ(_undo.lastUndoTarget(), _controller.textStorageForPrinting());
    EXPECT_EQ(_undo.undoStack()->count(), 1);

    QTest::mouseClick(view()->viewport(), Qt::LeftButton, {}, pointOfCharacter(1));
    moveTo(0);
    typeKeys(QStringLiteral("!"));
    EXPECT_EQ(_undo.undoStack()->count(), 2) << "a click ends the burst";

    QTest::keyClick(view(), Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(_controller.currentText(), QStringLiteral("<key>namexz</key>"));
    QTest::keyClick(view(), Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(_controller.currentText(), QStringLiteral("<key>name</key>"));
    EXPECT_EQ(_controller.selectedText(), QString()) << "undo selects what it put back";
    _undo.redo();
    EXPECT_EQ(_controller.currentText(), QStringLiteral("<key>namexz</key>"));
    EXPECT_FALSE(view()->document()->isUndoAvailable()) << "the text keeps no undo of its own";
}

TEST_F(ADTextViewControllerTest, EveryKindOfEditUndoesBackToTheStart)
{
    const QString original =
        QStringLiteral("<dict>\n\t<key>first</key>\n\t<key>second</key>\n</dict>");
    setText(original);
    QGuiApplication::clipboard()->setText(QStringLiteral("pasted\nlines"));
    const auto key = [&](int key, Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(view(), Qt::Key(key), modifiers);
        QCoreApplication::processEvents();
    };
    moveTo(19);                                  // after "first"
    key(Qt::Key_Backspace, Qt::ControlModifier); // the word before
    key(Qt::Key_Return);
    ASSERT_TRUE(_controller.selectTextInRange({30, 6})); // "second"
    key(Qt::Key_V, Qt::ControlModifier);
    moveTo(7);
    key(Qt::Key_Delete);
    moveTo(6);
    key(Qt::Key_Delete);                 // joins two lines
    key(Qt::Key_K, Qt::ControlModifier); // deletes to the end of the line, where bound
    const QString edited = _controller.currentText();
    ASSERT_NE(edited, original);

    while (_undo.canUndo())
        _undo.undo();
    EXPECT_EQ(_controller.currentText(), original);
    while (_undo.canRedo())
        _undo.redo();
    EXPECT_EQ(_controller.currentText(), edited);
}

TEST_F(ADTextViewControllerTest, ColoursTagsInThePreferencesColour)
{
    setText(QStringLiteral("<dict>\n\t<key>a</key>"));
    EXPECT_EQ(coloredRanges(1), (std::vector<std::pair<int, int>>{{1, 5}, {7, 6}}));
    const auto format = view()->document()->findBlockByNumber(1).layout()->formats().front().format;
    EXPECT_EQ(format.foreground().color(), _prefs.XMLTagColor());

    _prefs.setXMLTagColor(QColor(200, 10, 10));
    coloredRanges(1);
    EXPECT_EQ(view()
                  ->document()
                  ->findBlockByNumber(1)
                  .layout()
                  ->formats()
                  .front()
                  .format.foreground()
                  .color(),
              QColor(200, 10, 10));

    setText(QStringLiteral("<dict>\n\t<key"));
    EXPECT_TRUE(coloredRanges(1).empty()) << "nothing closes that tag yet";
    moveTo(12);
    typeKeys(QStringLiteral(">"));
    EXPECT_EQ(coloredRanges(1), (std::vector<std::pair<int, int>>{{1, 5}}));
}

TEST_F(ADTextViewControllerTest, NoColoursWhenOffOrNotXml)
{
    setText(QStringLiteral("<dict>"));
    _defaults.setBool(false, EnableXMLTagColoringKey);
    EXPECT_TRUE(coloredRanges(0).empty());
    _defaults.setBool(true, EnableXMLTagColoringKey);
    EXPECT_FALSE(coloredRanges(0).empty());
    _controller.setSyntaxColoringEnabled(false); // as for a format other than XML
    EXPECT_TRUE(coloredRanges(0).empty());
}

TEST_F(ADTextViewControllerTest, FollowsTheFontPreference)
{
    QFont font = _controller.plistTextView()->font();
    font.setPointSize(17);
    _prefs.setFont(font, 1);
    EXPECT_EQ(view()->font().pointSize(), 17);
    _defaults.removeObjectForKey(EditFontsYosemiteKey);
    EXPECT_EQ(view()->font(), ADPreferences::defaultFonts()[1]);
}

TEST_F(ADTextViewControllerTest, ADoubleClickOnABracketSelectsThroughItsPartner)
{
    setText(QStringLiteral("[x (y) z]"));
    QTest::mouseDClick(view()->viewport(), Qt::LeftButton, {}, pointOfCharacter(5));
    EXPECT_EQ(_controller.selectedText(), QStringLiteral("(y)"));
    moveTo(0);
    QTest::mouseDClick(view()->viewport(), Qt::LeftButton, {}, pointOfCharacter(0));
    EXPECT_EQ(_controller.selectedText(), QStringLiteral("[x (y) z]"));
}

TEST_F(ADTextViewControllerTest, AnswersTheDocumentsQuestions)
{
    setText(QStringLiteral("one two one"));
    EXPECT_EQ(_controller.textInRange({4, 3}), QStringLiteral("two"));
    EXPECT_FALSE(_controller.textInRange({9, 3}).has_value());
    EXPECT_FALSE(_controller.selectTextInRange({12, 0}));

    ASSERT_TRUE(_controller.selectTextInRange({4, 3}));
    EXPECT_EQ(_controller.rangeOfString(QStringLiteral("one"), 0, false), (KZRange{8, 3}));
    EXPECT_EQ(_controller.rangeOfString(QStringLiteral("ONE"), ADTextSearchBackwards, false),
              KZRange{})
        << "case matters unless told";
    EXPECT_EQ(_controller.rangeOfString(QStringLiteral("ONE"),
                                        ADTextSearchBackwards | ADTextSearchCaseInsensitive, false),
              (KZRange{0, 3}));
    ASSERT_TRUE(_controller.selectTextInRange({8, 3}));
    EXPECT_EQ(_controller.rangeOfString(QStringLiteral("one"), 0, false), KZRange{});
    EXPECT_EQ(_controller.rangeOfString(QStringLiteral("one"), 0, true), (KZRange{0, 3}));

    EXPECT_TRUE(_controller.replaceTextInRange({4, 3}, QStringLiteral("three")));
    EXPECT_EQ(_controller.currentText(), QStringLiteral("one three one"));
    EXPECT_EQ(_undo.lastUndoTarget(), _controller.textStorageForPrinting());
    QCoreApplication::processEvents();
    _undo.undo();
    EXPECT_EQ(_controller.currentText(), QStringLiteral("one two one"));
    EXPECT_EQ(_controller.selectedText(), QStringLiteral("two"));
    _undo.redo();
    EXPECT_EQ(_controller.currentText(), QStringLiteral("one three one"));

    _controller.updatePlistText(QString());
    EXPECT_EQ(_controller.currentText(), QString());
}

TEST_F(ADTextViewControllerTest, ALongTextGoesInPieceByPieceAndAnswersWhole)
{
    QString text;
    for (int i = 0; text.size() < 1'000'000; ++i)
        text += QStringLiteral("\t<key>item %1</key>\n").arg(i);
    std::vector<qint64> progress;
    QObject::connect(&_controller, &ADTextViewController::loadProgress,
                     [&](qint64 loaded, qint64 total) {
                         EXPECT_EQ(total, text.size());
                         progress.push_back(loaded);
                     });
    _controller.updatePlistText(text);
    EXPECT_TRUE(_controller.isLoading());
    EXPECT_TRUE(view()->isReadOnly()) << "no typing into half a text";
    EXPECT_LT(view()->document()->characterCount(), text.size());
    EXPECT_EQ(view()->document()->firstBlock().text(), QStringLiteral("\t<key>item 0</key>"));

    QCoreApplication::processEvents();
    EXPECT_GE(progress.size(), 2u);
    EXPECT_EQ(_controller.currentText(), text) << "a question waits for the whole text";
    EXPECT_FALSE(_controller.isLoading());
    EXPECT_FALSE(view()->isReadOnly());
    EXPECT_EQ(progress.back(), text.size());
    EXPECT_TRUE(std::is_sorted(progress.begin(), progress.end()));
    EXPECT_FALSE(_undo.canUndo()) << "loading is no edit";

    _controller.updatePlistText(text); // a second load replaces the first
    _controller.updatePlistText(QStringLiteral("short"));
    EXPECT_FALSE(_controller.isLoading());
    EXPECT_EQ(_controller.currentText(), QStringLiteral("short"));
}

} // namespace

TEST_F(ADTextViewControllerTest, ATextBeingMadeKeepsTheViewEmptyAndLocked)
{
    setText(QStringLiteral("typed over"));
    typeKeys(QStringLiteral("x")); // a text that is no longer the one put in goes
    _controller.showTextBeingMade();
    _controller.setEditable(true);
    EXPECT_TRUE(_controller.currentText().isEmpty());
    EXPECT_TRUE(view()->isReadOnly()) << "nothing typed into a text on its way";
    EXPECT_FALSE(view()->placeholderText().isEmpty());

    _controller.updatePlistText(QStringLiteral("made"));
    EXPECT_FALSE(_controller.isLoading());
    EXPECT_FALSE(view()->isReadOnly());
    EXPECT_TRUE(view()->placeholderText().isEmpty());
    EXPECT_EQ(_controller.currentText(), QStringLiteral("made"));
}

// A text made again after a small change of the tree changes only that part
// of the view, so a long text is not taken in anew; typed text never serves
// as the base of such a change.
TEST_F(ADTextViewControllerTest, AMadeTextReplacesOnlyWhatChanged)
{
    QString text;
    for (int i = 0; text.size() < 1'000'000; ++i)
        text += QStringLiteral("\t<integer>%1</integer>\n").arg(i);
    setText(text);
    _controller.finishLoading();
    moveTo(500'000);

    _controller.showTextBeingMade();
    EXPECT_EQ(_controller.currentText(), text) << "the old text stays while the new is made";
    EXPECT_TRUE(view()->isReadOnly());
    QString changed = text;
    changed.replace(QStringLiteral(">4000<"), QStringLiteral(">-4000<"));
    _controller.updatePlistText(changed);
    EXPECT_FALSE(_controller.isLoading()) << "no piece by piece load for a small change";
    EXPECT_FALSE(view()->isReadOnly());
    EXPECT_EQ(_controller.currentText(), changed);
    EXPECT_EQ(view()->textCursor().position(), 500'001) << "the place in the text is kept";

    moveTo(0);
    typeKeys(QStringLiteral("typed"));
    _controller.updatePlistText(text);
    _controller.finishLoading();
    EXPECT_EQ(_controller.currentText(), text);
}
