#include "document/ADTextUndoRecorder.h"

#include "document/ADDocumentText.h"
#include "model/ADUndoManager.h"
#include "shared/KZNotificationCenter.h"

#include <QCoreApplication>
#include <QPlainTextDocumentLayout>
#include <QTextCursor>
#include <QTextDocument>
#include <QUndoStack>

#include <gtest/gtest.h>

namespace {

// Edits as a view makes them: the recorder is told where before each one,
// and each is an event-loop pass of its own.
class ADTextUndoRecorderTest : public testing::Test
{
protected:
    ADTextUndoRecorderTest()
    {
        _undo.setNotificationCenter(&_center);
        _document.setDocumentLayout(new QPlainTextDocumentLayout(&_document)); // as a text view has
        _document.setUndoRedoEnabled(false);
        _document.setPlainText(QStringLiteral("<dict>\n\t<key>name</key>\n</dict>"));
        _recorder.setUndoManager(&_undo);
    }

    void edit(qint64 from, qint64 to, const QString &text)
    {
        _recorder.prepareForEdit(from, to);
        QTextCursor cursor(&_document);
        cursor.setPosition(int(from));
        cursor.setPosition(int(to), QTextCursor::KeepAnchor);
        if (text.isEmpty())
            cursor.removeSelectedText();
        else
            cursor.insertText(text);
        QCoreApplication::processEvents(); // ends the pass, and the undo group it opened
    }
    void type(qint64 at, const QString &keys)
    {
        for (const QChar key : keys)
            edit(at, at, key), ++at;
    }
    QString text() const { return ADDocumentText::text(_document); }

    const QString _original = QStringLiteral("<dict>\n\t<key>name</key>\n</dict>");
    KZNotificationCenter _center;
    ADUndoManager _undo;
    QTextDocument _document;
    ADTextUndoRecorder _recorder{&_document};
};

TEST_F(ADTextUndoRecorderTest, ABurstOfTypingIsOneGroupWithTheDocumentAsTarget)
{
    type(13, QStringLiteral("d_"));
    edit(14, 15, QString()); // backspace over what was just typed
    type(14, QStringLiteral("x"));
    EXPECT_EQ(text(), QStringLiteral("<dict>\n\t<key>dxname</key>\n</dict>"));
    EXPECT_EQ(_undo.lastUndoTarget(), &_document);
    EXPECT_EQ(_undo.undoStack()->count(), 1);
    EXPECT_EQ(_undo.undoActionName(), QStringLiteral("Typing"));

    _undo.undo();
    EXPECT_EQ(text(), _original);
    _undo.redo();
    EXPECT_EQ(text(), QStringLiteral("<dict>\n\t<key>dxname</key>\n</dict>"));
}

TEST_F(ADTextUndoRecorderTest, DeletingBackPastTheTypedTextKeepsWhatStoodBefore)
{
    type(23, QStringLiteral("!"));
    edit(23, 24, QString());
    edit(22, 23, QString()); // the ">" that was there before
    edit(7, 8, QString());   // elsewhere: a group of its own
    EXPECT_EQ(text(), QStringLiteral("<dict>\n<key>name</key\n</dict>"));
    EXPECT_EQ(_undo.undoStack()->count(), 2);
    _undo.undo();
    _undo.undo();
    EXPECT_EQ(text(), _original);
}

TEST_F(ADTextUndoRecorderTest, AReplacementAcrossLinesIsItsOwnGroup)
{
    edit(5, 15, QStringLiteral("y>\n<i"));
    type(10, QStringLiteral("n"));
    EXPECT_EQ(text(), QStringLiteral("<dicty>\n<inme</key>\n</dict>"));
    EXPECT_EQ(_undo.undoStack()->count(), 2) << "typing after a paste starts a new group";
    _undo.undo();
    EXPECT_EQ(text(), QStringLiteral("<dicty>\n<ime</key>\n</dict>"));
    _undo.undo();
    EXPECT_EQ(text(), _original);
}

TEST_F(ADTextUndoRecorderTest, AnotherUndoInBetweenEndsTheBurst)
{
    type(13, QStringLiteral("a"));
    int other = 0;
    _undo.registerUndo(&other, [&other] { other = 1; });
    QCoreApplication::processEvents();
    type(14, QStringLiteral("b"));
    EXPECT_EQ(_undo.undoStack()->count(), 3);
    _undo.undo();
    EXPECT_EQ(text(), QStringLiteral("<dict>\n\t<key>aname</key>\n</dict>"));
}

TEST_F(ADTextUndoRecorderTest, AnEditItWasNotToldOfDropsTextUndoRatherThanCorruptIt)
{
    _recorder.setPaused(true);
    _document.setPlainText(QStringLiteral("a\nb\nc\nd\ne\nf"));
    _recorder.setPaused(false);
    type(10, QStringLiteral("g"));
    QTextCursor cursor(&_document); // removes what no one kept, lines away
    cursor.setPosition(0);
    cursor.setPosition(3, QTextCursor::KeepAnchor);
    cursor.removeSelectedText();
    const QString after = text();
    _undo.undo();
    EXPECT_EQ(text(), after);
}

TEST_F(ADTextUndoRecorderTest, PausedEditsAreNotRecorded)
{
    _recorder.setPaused(true);
    edit(0, 0, QStringLiteral("x"));
    _recorder.setPaused(false);
    EXPECT_FALSE(_undo.canUndo());
}

} // namespace
