#include "ADTextViewController.h"

#include "ADPlistTextView.h"

#include "document/ADDocumentText.h"
#include "document/ADTextChange.h"
#include "document/ADTextUndoRecorder.h"
#include "document/ADXMLTagColorizer.h"
#include "model/ADUndoManager.h"
#include "preferences/ADPreferences.h"
#include "preferences/KZUserDefaults.h"
#include "shared/KZLocalizedString.h"
#include "shared/KZNotificationCenter.h"

#include <QFontDatabase>
#include <QTimer>
#include <QUndoStack>

namespace {

constexpr qint64 kTextEditMode = 1;
constexpr int kFallbackFontSize = 10;
// Characters put into the view in one pass of the event loop when loading:
// about a tenth of a second's work.
constexpr qsizetype kLoadPiece = 256 * 1024;

// Where the piece from `from` ends: at a line's end past the piece's length.
qsizetype pieceEnd(const QString &text, qsizetype from)
{
    if (text.size() - from <= kLoadPiece)
        return text.size();
    const qsizetype newline = text.indexOf(u'\n', from + kLoadPiece);
    return newline < 0 ? text.size() : newline + 1;
}

} // namespace

ADTextViewController::ADTextViewController(ADPreferences &preferences, QWidget *parentWidget,
                                           QObject *parent)
    : QObject(parent), _preferences(preferences),
      _plistTextView(new ADPlistTextView(parentWidget)), // owned by the widget, or deleted here
      _colorizer(new ADXMLTagColorizer(_plistTextView->document(), this)),
      _undoRecorder(new ADTextUndoRecorder(_plistTextView->document(), this)),
      _loadTimer(new QTimer(this))
{
    connect(_loadTimer, &QTimer::timeout, this,
            [this] { loadPiece(pieceEnd(_pendingText, _pendingFrom)); });
    _plistTextView->setColorizer(_colorizer);
    _plistTextView->setUndoRecorder(_undoRecorder);
    connect(_plistTextView, &QPlainTextEdit::textChanged, this,
            &ADTextViewController::textDidChange);
    // Typing and replacing make the text the view shows differ from the one put in.
    connect(_plistTextView->document(), &QTextDocument::contentsChange, this,
            [this] { _shownText = QString(); });
    connect(_undoRecorder, &ADTextUndoRecorder::textRestored, this,
            [this](KZRange range) { selectTextInRange(range); });
    connect(_plistTextView, &ADPlistTextView::undoRequested, this, [this] {
        if (_undoManager && _undoManager->canUndo())
            _undoManager->undo();
    });
    connect(_plistTextView, &ADPlistTextView::redoRequested, this, [this] {
        if (_undoManager && _undoManager->canRedo())
            _undoManager->redo();
    });
    connect(&_preferences.userDefaults(), &KZUserDefaults::valueChanged, this,
            &ADTextViewController::userDefaultDidChange);
    _colorObservation = _preferences.notificationCenter().addObserver(
        PreferenceDidChangeNotification, &XMLTagColorKey,
        [this](const KZNotification &) { colorizeAllText(); });
    refreshFonts();
    colorizeAllText();
}

ADTextViewController::~ADTextViewController()
{
    _preferences.notificationCenter().removeObserver(_colorObservation);
    if (_plistTextView && !_plistTextView->parent())
        delete _plistTextView.data();
}

void ADTextViewController::setUndoManager(ADUndoManager *manager)
{
    if (_undoManager)
        _undoManager->undoStack()->disconnect(this);
    _undoManager = manager;
    _undoRecorder->setUndoManager(manager);
    const auto offerUndo = [this] {
        const QUndoStack *stack = _undoManager ? _undoManager->undoStack() : nullptr;
        _plistTextView->setUndoAvailability(stack && stack->canUndo(), stack && stack->canRedo());
    };
    offerUndo();
    if (!manager)
        return;
    connect(manager->undoStack(), &QUndoStack::canUndoChanged, this, offerUndo);
    connect(manager->undoStack(), &QUndoStack::canRedoChanged, this, offerUndo);
}

void ADTextViewController::setSyntaxColoringEnabled(bool enabled)
{
    if (std::exchange(_syntaxColoringEnabled, enabled) != enabled)
        colorizeAllText();
}

void ADTextViewController::setEditable(bool editable)
{
    if (std::exchange(_editable, editable) != editable && !isLoading())
        _plistTextView->setReadOnly(!editable);
}

void ADTextViewController::refreshFonts()
{
    QFont fallback = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    fallback.setPointSize(kFallbackFontSize);
    _plistTextView->setFont(_preferences.fontForEditMode(kTextEditMode).value_or(fallback));
}

void ADTextViewController::colorizeAllText()
{
    _colorizer->setEnabled(_syntaxColoringEnabled &&
                           _preferences.userDefaults().boolForKey(EnableXMLTagColoringKey));
    _colorizer->setTagColor(_preferences.XMLTagColor());
    _colorizer->invalidateAll();
    _plistTextView->viewport()->update();
}

void ADTextViewController::finishLoading()
{
    if (!_pendingText.isNull()) // a text being made is the document's to finish
        loadPiece(_pendingText.size());
}

QString ADTextViewController::currentText()
{
    finishLoading();
    return ADDocumentText::text(*_plistTextView->document());
}

QTextDocument *ADTextViewController::textStorageForPrinting() const
{
    return _plistTextView->document();
}

void ADTextViewController::showTextBeingMade()
{
    // A whole text stays in view, read-only, until the new one replaces what changed.
    if (_shownText.isNull())
        updatePlistText(QString());
    _textBeingMade = true;
    _plistTextView->setPlaceholderText(
        KZLocalizedStringWithID(7390, QStringLiteral("Making the text…")));
    _plistTextView->setReadOnly(true);
}

void ADTextViewController::updatePlistText(const QString &text)
{
    _loadTimer->stop();
    _pendingText = QString();
    if (std::exchange(_textBeingMade, false))
        _plistTextView->setPlaceholderText(QString());
    if (replaceChangedPart(text)) {
        _plistTextView->setReadOnly(!_editable);
        return;
    }
    const qsizetype first = pieceEnd(text, 0);
    putText([&] { _plistTextView->setPlainText(first == text.size() ? text : text.left(first)); });
    if (first == text.size()) {
        keepIfShown(text);
        _plistTextView->setReadOnly(!_editable);
        return;
    }
    _pendingText = text;
    _pendingFrom = first;
    _plistTextView->setReadOnly(true);
    emit loadProgress(first, text.size());
    _loadTimer->start(0);
}

std::optional<QString> ADTextViewController::textInRange(KZRange range)
{
    finishLoading();
    const QTextDocument &document = *_plistTextView->document();
    if (!ADDocumentText::containsRange(document, range))
        return std::nullopt;
    return ADDocumentText::textInRange(document, range);
}

QString ADTextViewController::selectedText()
{
    finishLoading();
    const QTextCursor cursor = _plistTextView->textCursor();
    return ADDocumentText::textInRange(
        *_plistTextView->document(),
        {cursor.selectionStart(), cursor.selectionEnd() - cursor.selectionStart()});
}

bool ADTextViewController::selectTextInRange(KZRange range)
{
    finishLoading();
    range = ADDocumentText::wholeTextIfNotFound(*_plistTextView->document(), range);
    if (!ADDocumentText::containsRange(*_plistTextView->document(), range))
        return false;
    QTextCursor cursor = _plistTextView->textCursor();
    cursor.setPosition(int(range.location));
    cursor.setPosition(int(range.end()), QTextCursor::KeepAnchor);
    _plistTextView->setTextCursor(cursor);
    scrollToSelection();
    _plistTextView->setFocus();
    return true;
}

KZRange ADTextViewController::rangeOfString(const QString &string, qint64 options, bool wrap)
{
    const QTextCursor cursor = _plistTextView->textCursor();
    return ADDocumentText::rangeOfString(
        currentText(), {cursor.selectionStart(), cursor.selectionEnd() - cursor.selectionStart()},
        string, options, wrap);
}

bool ADTextViewController::replaceTextInRange(KZRange range, const QString &text)
{
    finishLoading();
    const QTextDocument &document = *_plistTextView->document();
    range = ADDocumentText::wholeTextIfNotFound(document, range);
    if (!ADDocumentText::containsRange(document, range))
        return false;
    _undoRecorder->replaceRange(range, text);
    return true;
}

void ADTextViewController::scrollToSelection()
{
    _plistTextView->ensureCursorVisible();
}

void ADTextViewController::userDefaultDidChange(const QString &key)
{
    if (key == EnableXMLTagColoringKey)
        colorizeAllText();
    else if (key == ADPreferences::editFontsKey())
        refreshFonts();
}

void ADTextViewController::textDidChange()
{
    // A font set on the view by other means than the preference becomes it.
    const std::optional<QFont> preferred = _preferences.fontForEditMode(kTextEditMode);
    if (!preferred || *preferred != _plistTextView->font())
        _preferences.setFont(_plistTextView->font(), kTextEditMode);
}

void ADTextViewController::loadPiece(qsizetype end)
{
    QTextCursor cursor(_plistTextView->document());
    cursor.movePosition(QTextCursor::End);
    putText([&] {
        cursor.insertText(
            QStringView(_pendingText).mid(_pendingFrom, end - _pendingFrom).toString());
    });
    _pendingFrom = end;
    const qint64 total = _pendingText.size();
    if (end == total) {
        _loadTimer->stop();
        keepIfShown(std::exchange(_pendingText, QString()));
        _plistTextView->setReadOnly(!_editable);
    }
    emit loadProgress(end, total);
}

bool ADTextViewController::replaceChangedPart(const QString &text)
{
    if (_shownText.isNull())
        return false;
    const ADTextChange change = ADTextChange::between(_shownText, text);
    if (change.inserted.length > kLoadPiece)
        return false;
    const QString inserted = text.mid(change.inserted.location, change.inserted.length);
    QTextDocument &document = *_plistTextView->document();
    putText([&] { ADDocumentText::replace(document, change.replaced, inserted); });
    keepIfShown(text);
    // Where the view holds characters otherwise than the text, start afresh.
    return !_shownText.isNull() &&
           ADDocumentText::textInRange(document, change.inserted) == inserted;
}

// What the view holds as given is the base of the next change; a view that
// holds it otherwise (its length tells) takes the next text whole.
void ADTextViewController::keepIfShown(const QString &text)
{
    const bool shown = ADDocumentText::length(*_plistTextView->document()) == text.size();
    _shownText = shown ? text : QString();
}

void ADTextViewController::putText(const std::function<void()> &put)
{
    _undoRecorder->setPaused(true);
    put();
    _undoRecorder->setPaused(false);
}
