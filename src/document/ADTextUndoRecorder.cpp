#include "ADTextUndoRecorder.h"

#include "ADDocumentText.h"

#include "model/ADUndoManager.h"
#include "shared/KZLocalizedString.h"

#include <QTextBlock>
#include <QTextDocument>
#include <QUndoStack>

namespace {

// Past this, the text an edit put in is not read again to keep the lines
// current: only one input's edits need them, and those are small.
constexpr qint64 kKeepLimit = 1 << 20;

} // namespace

/// One undo step: the text from `position` of length `insertedLength` is to
/// become `removed` again. Made in `epoch`; a step of an older epoch is dead.
struct ADTextUndoRecorder::Step
{
    qint64 position;
    QString removed;
    qint64 insertedLength;
    quint64 epoch;
};

struct ADTextUndoRecorder::Shared
{
    QPointer<QTextDocument> document;
    ADTextUndoRecorder *owner;
    quint64 epoch = 0;
    bool applying = false;
};

ADTextUndoRecorder::ADTextUndoRecorder(QTextDocument *document, QObject *parent)
    : QObject(parent), _shared(std::make_shared<Shared>(Shared{document, this}))
{
    document->documentLayout(); // a document without one reports no changes
    connect(document, &QTextDocument::contentsChange, this, &ADTextUndoRecorder::contentsChange);
}

ADTextUndoRecorder::~ADTextUndoRecorder() = default;

ADUndoManager *ADTextUndoRecorder::undoManager() const
{
    return _manager;
}

void ADTextUndoRecorder::setUndoManager(ADUndoManager *manager)
{
    _manager = manager;
    breakCoalescing();
}

void ADTextUndoRecorder::prepareForEdit(qint64 from, qint64 to)
{
    const QTextDocument *document = _shared->document;
    if (!document)
        return;
    const qint64 length = ADDocumentText::length(*document);
    QTextBlock first = document->findBlock(int(qBound<qint64>(0, from, length)));
    QTextBlock last = document->findBlock(int(qBound<qint64>(0, to, length)));
    if (first.previous().isValid())
        first = first.previous();
    if (last.next().isValid())
        last = last.next();
    _keptFrom = first.position();
    const qint64 end = std::min<qint64>(last.position() + last.length(), length);
    _kept = ADDocumentText::textInRange(*document, {_keptFrom, end - _keptFrom});
}

void ADTextUndoRecorder::breakCoalescing()
{
    _burst.reset();
}

void ADTextUndoRecorder::replaceRange(KZRange range, const QString &text)
{
    QTextDocument *document = _shared->document;
    if (!document)
        return;
    if (_manager) {
        registerStep(*_manager, _shared,
                     std::make_shared<Step>(Step{range.location,
                                                 ADDocumentText::textInRange(*document, range),
                                                 text.size(), _shared->epoch}));
    }
    _burst.reset();
    _shared->applying = true;
    ADDocumentText::replace(*document, range, text);
    _shared->applying = false;
}

void ADTextUndoRecorder::setPaused(bool paused)
{
    _paused = paused;
}

void ADTextUndoRecorder::contentsChange(int position, int removed, int added)
{
    const QTextDocument *document = _shared->document;
    if (_shared->applying || _paused || !_manager || !document) {
        _kept.clear(); // the text moved under it
        _burst.reset();
        return;
    }
    // A change that reaches the end of the text counts the last line's
    // separator, which is no text, on both sides.
    const qint64 length = ADDocumentText::length(*document);
    const qint64 excess = std::max<qint64>(0, position + removed - (length - added + removed));
    const qint64 removedLength = removed - excess;
    const qint64 addedLength = std::max<qint64>(0, added - excess);

    const qint64 keptEnd = _keptFrom + _kept.size();
    if (removedLength > 0 && (position < _keptFrom || position + removedLength > keptEnd)) {
        qWarning("text edit at %d outside the kept lines: earlier text steps dropped from undo",
                 position);
        ++_shared->epoch;
        _burst.reset();
        _kept.clear();
        return;
    }
    const QString before = _kept.mid(position - _keptFrom, removedLength);
    const bool inKept = position >= _keptFrom && position <= keptEnd;
    const bool readAgain = inKept && addedLength <= kKeepLimit;
    const QString after =
        readAgain ? ADDocumentText::textInRange(*document, {position, addedLength}) : QString();
    if (readAgain)
        _kept.replace(position - _keptFrom, removedLength, after);
    else
        _kept.clear();

    // Formats changing, or a report wider than the edit, show as equal ends.
    qint64 same = 0;
    if (readAgain) {
        while (same < before.size() && same < after.size() && before[same] == after[same])
            ++same;
        qint64 tail = 0;
        while (tail < before.size() - same && tail < after.size() - same &&
               before[before.size() - 1 - tail] == after[after.size() - 1 - tail])
            ++tail;
        record(position + same, before.mid(same, before.size() - same - tail),
               after.size() - same - tail);
        return;
    }
    record(position, before, addedLength);
}

void ADTextUndoRecorder::record(qint64 position, const QString &removed, qint64 added)
{
    if (removed.isEmpty() && added == 0)
        return;
    if (extendBurst(position, removed, added))
        return;
    auto step = std::make_shared<Step>(Step{position, removed, added, _shared->epoch});
    registerStep(*_manager, _shared, step);
    _manager->setActionName(KZLocalizedStringWithID(9210, QStringLiteral("Typing")));
    const bool typing = added <= 1; // a key typed or a deletion; not a paste
    _burst = typing ? step : nullptr;
    _burstCount = _manager->undoStack()->count();
    _burstIndex = _manager->undoStack()->index();
}

bool ADTextUndoRecorder::extendBurst(qint64 position, const QString &removed, qint64 added)
{
    if (!_burst || !burstContinues())
        return false;
    Step &step = *_burst;
    const qint64 end = step.position + step.insertedLength;
    if (removed.isEmpty() && position == end) { // typed on
        step.insertedLength += added;
        return true;
    }
    if (added != 0)
        return false;
    if (position == end) { // deleted forward: that text was there before
        step.removed += removed;
        return true;
    }
    if (position + removed.size() != end)
        return false;
    // Deleted backward: first what was typed, then what stood before it.
    const qint64 typedGone = std::min<qint64>(removed.size(), step.insertedLength);
    const qint64 olderGone = removed.size() - typedGone;
    step.insertedLength -= typedGone;
    step.position -= olderGone;
    step.removed.prepend(removed.left(olderGone));
    return true;
}

bool ADTextUndoRecorder::burstContinues() const
{
    return _burst->epoch == _shared->epoch && _manager->lastUndoTarget() == _shared->document &&
           !_manager->isUndoing() && !_manager->isRedoing() &&
           _manager->undoStack()->count() == _burstCount &&
           _manager->undoStack()->index() == _burstIndex;
}

void ADTextUndoRecorder::registerStep(ADUndoManager &manager, const std::weak_ptr<Shared> &shared,
                                      const std::shared_ptr<Step> &step)
{
    const std::shared_ptr<Shared> alive = shared.lock();
    manager.registerUndo(alive ? alive->document.data() : nullptr,
                         [&manager, shared, step] { applyStep(manager, shared, *step); });
}

void ADTextUndoRecorder::applyStep(ADUndoManager &manager, const std::weak_ptr<Shared> &weak,
                                   const Step &step)
{
    const std::shared_ptr<Shared> shared = weak.lock();
    if (!shared || !shared->document || step.epoch != shared->epoch)
        return;
    QTextDocument &document = *shared->document;
    const KZRange inserted{step.position, step.insertedLength};
    if (!ADDocumentText::containsRange(document, inserted))
        return;
    auto inverse =
        std::make_shared<Step>(Step{step.position, ADDocumentText::textInRange(document, inserted),
                                    step.removed.size(), step.epoch});
    shared->applying = true;
    ADDocumentText::replace(document, inserted, step.removed);
    shared->applying = false;
    registerStep(manager, weak, inverse);
    emit shared->owner->textRestored({step.position, step.removed.size()});
}
