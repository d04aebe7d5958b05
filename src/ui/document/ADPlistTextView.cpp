#include "ADPlistTextView.h"

#include "document/ADBracketMatching.h"
#include "document/ADDocumentText.h"
#include "document/ADTextUndoRecorder.h"
#include "document/ADXMLTagColorizer.h"

#include <QApplication>
#include <QKeyEvent>
#include <QMenu>
#include <QTextBlock>
#include <QTextLayout>

namespace {

constexpr int kTabWidthInSpaces = 4;

// Whether a key may change the text, so that the recorder must keep the
// lines it acts on first. Moving keys need not: a selection may be huge.
bool mayEdit(const QKeyEvent *event)
{
    static const QKeySequence::StandardKey kEditing[] = {
        QKeySequence::Cut,
        QKeySequence::Paste,
        QKeySequence::Delete,
        QKeySequence::DeleteStartOfWord,
        QKeySequence::DeleteEndOfWord,
        QKeySequence::DeleteEndOfLine,
        QKeySequence::DeleteCompleteLine,
        QKeySequence::InsertParagraphSeparator,
        QKeySequence::InsertLineSeparator,
    };
    for (const QKeySequence::StandardKey key : kEditing) {
        if (event->matches(key))
            return true;
    }
    switch (event->key()) {
    case Qt::Key_Backspace:
    case Qt::Key_Delete:
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Tab:
    case Qt::Key_Backtab:
        return true;
    default:
        return !event->text().isEmpty() && event->text().front().isPrint();
    }
}

} // namespace

ADPlistTextView::ADPlistTextView(QWidget *parent) : QPlainTextEdit(parent)
{
    setUndoRedoEnabled(false); // one undo stack: the program's
    setLineWrapMode(QPlainTextEdit::NoWrap);
    setTabStopDistance(fontMetrics().horizontalAdvance(QLatin1Char(' ')) * kTabWidthInSpaces);
}

void ADPlistTextView::setColorizer(ADXMLTagColorizer *colorizer)
{
    _colorizer = colorizer;
    viewport()->update();
}

void ADPlistTextView::setUndoRecorder(ADTextUndoRecorder *recorder)
{
    _recorder = recorder;
}

void ADPlistTextView::setUndoAvailability(bool canUndo, bool canRedo)
{
    _canUndo = canUndo;
    _canRedo = canRedo;
}

void ADPlistTextView::prepareForEdit(qint64 position)
{
    if (!_recorder)
        return;
    const QTextCursor cursor = textCursor();
    qint64 from = cursor.selectionStart();
    qint64 to = cursor.selectionEnd();
    if (position >= 0) {
        from = std::min(from, position);
        to = std::max(to, position);
    }
    _recorder->prepareForEdit(from, to);
}

void ADPlistTextView::balance()
{
    const KZRange range =
        ADBracketMatching::balanceFrom(*document(), textCursor().selectionStart());
    if (range.isNotFound()) {
        QApplication::beep();
        return;
    }
    selectRange(range.location, range.end());
}

void ADPlistTextView::paintEvent(QPaintEvent *event)
{
    if (_colorizer) {
        // The lines to be shown, from the line counts the layout keeps, so
        // that no line is laid out before it has its colours.
        const QTextBlock first = firstVisibleBlock();
        const qreal lineHeight = fontMetrics().lineSpacing();
        qreal height = contentOffset().y();
        QTextBlock last = first;
        for (QTextBlock block = first; block.isValid() && height <= viewport()->height();
             block = block.next()) {
            last = block;
            height += std::max(1, block.lineCount()) * lineHeight;
        }
        _colorizer->colorBlocks(first, last);
    }
    QPlainTextEdit::paintEvent(event);
}

void ADPlistTextView::keyPressEvent(QKeyEvent *event)
{
    if (event->matches(QKeySequence::Undo) || event->matches(QKeySequence::Redo)) {
        event->accept();
        if (event->matches(QKeySequence::Undo))
            emit undoRequested();
        else
            emit redoRequested();
        return;
    }
    if (!isReadOnly() && mayEdit(event))
        prepareForEdit();
    QPlainTextEdit::keyPressEvent(event);
}

void ADPlistTextView::inputMethodEvent(QInputMethodEvent *event)
{
    prepareForEdit();
    QPlainTextEdit::inputMethodEvent(event);
}

void ADPlistTextView::insertFromMimeData(const QMimeData *source)
{
    if (!_dropping) // a drop kept its lines before it moved any text
        prepareForEdit();
    QPlainTextEdit::insertFromMimeData(source);
}

void ADPlistTextView::dropEvent(QDropEvent *event)
{
    prepareForEdit(cursorForPosition(event->position().toPoint()).position());
    _dropping = true;
    QPlainTextEdit::dropEvent(event);
    _dropping = false;
}

void ADPlistTextView::mousePressEvent(QMouseEvent *event)
{
    if (_recorder)
        _recorder->breakCoalescing();
    QPlainTextEdit::mousePressEvent(event);
}

void ADPlistTextView::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() == Qt::MiddleButton) // pastes the primary selection there
        prepareForEdit(cursorForPosition(event->position().toPoint()).position());
    QPlainTextEdit::mouseReleaseEvent(event);
}

void ADPlistTextView::mouseDoubleClickEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton) {
        QPlainTextEdit::mouseDoubleClickEvent(event);
        return;
    }
    qint64 position = characterIndexAt(event->position().toPoint());
    if (textCursor().hasSelection() || position < 0 ||
        position >= ADDocumentText::length(*document())) {
        event->accept();
        return;
    }
    const QChar c = document()->characterAt(int(position));
    if (!ADBracketMatching::endCharForStartChar(c).isNull())
        ++position;
    else if (ADBracketMatching::startCharForEndChar(c).isNull()) {
        QPlainTextEdit::mouseDoubleClickEvent(event); // a word
        return;
    }
    const KZRange range = ADBracketMatching::balanceFrom(*document(), position);
    if (range.isNotFound()) {
        QPlainTextEdit::mouseDoubleClickEvent(event);
        return;
    }
    event->accept();
    selectRange(range.location, range.end());
}

void ADPlistTextView::contextMenuEvent(QContextMenuEvent *event)
{
    prepareForEdit();
    std::unique_ptr<QMenu> menu(createStandardContextMenu(event->pos()));
    for (QAction *action : menu->actions()) {
        const bool undo = action->objectName() == QLatin1String("edit-undo");
        if (!undo && action->objectName() != QLatin1String("edit-redo"))
            continue;
        action->disconnect(); // from the text's own undo, which is off
        action->setEnabled(!isReadOnly() && (undo ? _canUndo : _canRedo));
        connect(action, &QAction::triggered, this,
                undo ? &ADPlistTextView::undoRequested : &ADPlistTextView::redoRequested);
    }
    menu->exec(event->globalPos());
}

void ADPlistTextView::focusOutEvent(QFocusEvent *event)
{
    if (_recorder)
        _recorder->breakCoalescing();
    QPlainTextEdit::focusOutEvent(event);
}

void ADPlistTextView::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::FontChange)
        setTabStopDistance(fontMetrics().horizontalAdvance(QLatin1Char(' ')) * kTabWidthInSpaces);
    QPlainTextEdit::changeEvent(event);
}

qint64 ADPlistTextView::characterIndexAt(const QPoint &point) const
{
    const QTextBlock block = cursorForPosition(point).block();
    if (!block.isValid())
        return -1;
    const QPointF local =
        point - blockBoundingGeometry(block).translated(contentOffset()).topLeft();
    const QTextLayout *layout = block.layout();
    for (int i = 0; i < layout->lineCount(); ++i) {
        const QTextLine line = layout->lineAt(i);
        if (local.y() >= line.y() && local.y() < line.y() + line.height())
            return block.position() + line.xToCursor(local.x(), QTextLine::CursorOnCharacter);
    }
    return -1;
}

void ADPlistTextView::selectRange(qint64 from, qint64 to)
{
    const qint64 length = ADDocumentText::length(*document());
    QTextCursor cursor = textCursor();
    cursor.setPosition(int(std::clamp<qint64>(from, 0, length)));
    cursor.setPosition(int(std::clamp<qint64>(to, 0, length)), QTextCursor::KeepAnchor);
    setTextCursor(cursor);
}
