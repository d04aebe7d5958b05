#include "ADPlainTextSide.h"

#include "ADDocumentText.h"
#include "ADTextUndoRecorder.h"

#include <QTextDocument>

ADPlainTextSide::ADPlainTextSide(QObject *parent)
    : QObject(parent), _document(new QTextDocument(this)),
      _undoRecorder(new ADTextUndoRecorder(_document, this)), _selection(_document)
{
    _document->setUndoRedoEnabled(false); // the document's undo manager keeps the one history
    connect(_undoRecorder, &ADTextUndoRecorder::textRestored, this,
            [this](KZRange range) { selectTextInRange(range); });
}

ADPlainTextSide::~ADPlainTextSide() = default;

void ADPlainTextSide::prepareForEdit(qint64 from, qint64 to)
{
    _undoRecorder->prepareForEdit(from, to);
}

void ADPlainTextSide::setUndoManager(ADUndoManager *manager)
{
    _undoRecorder->setUndoManager(manager);
}

QString ADPlainTextSide::currentText()
{
    return ADDocumentText::text(*_document);
}

void ADPlainTextSide::updatePlistText(const QString &text)
{
    _undoRecorder->setPaused(true);
    _document->setPlainText(text);
    _undoRecorder->setPaused(false);
    _selection = QTextCursor(_document);
}

void ADPlainTextSide::showTextBeingMade()
{
    updatePlistText(QString());
}

std::optional<QString> ADPlainTextSide::textInRange(KZRange range)
{
    if (!ADDocumentText::containsRange(*_document, range))
        return std::nullopt;
    return ADDocumentText::textInRange(*_document, range);
}

QString ADPlainTextSide::selectedText()
{
    return ADDocumentText::textInRange(*_document, selection());
}

bool ADPlainTextSide::selectTextInRange(KZRange range)
{
    range = ADDocumentText::wholeTextIfNotFound(*_document, range);
    if (!ADDocumentText::containsRange(*_document, range))
        return false;
    _selection.setPosition(int(range.location));
    _selection.setPosition(int(range.end()), QTextCursor::KeepAnchor);
    return true;
}

KZRange ADPlainTextSide::rangeOfString(const QString &string, qint64 options, bool wrap)
{
    return ADDocumentText::rangeOfString(currentText(), selection(), string, options, wrap);
}

bool ADPlainTextSide::replaceTextInRange(KZRange range, const QString &text)
{
    range = ADDocumentText::wholeTextIfNotFound(*_document, range);
    if (!ADDocumentText::containsRange(*_document, range))
        return false;
    _undoRecorder->replaceRange(range, text);
    return true;
}

KZRange ADPlainTextSide::selection() const
{
    return {_selection.selectionStart(), _selection.selectionEnd() - _selection.selectionStart()};
}
