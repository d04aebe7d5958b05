#pragma once

#include "shared/KZRange.h"

#include <QObject>
#include <QPointer>
#include <QString>

#include <memory>

class ADUndoManager;
class QTextDocument;

/// Records the edits of a text document as undo steps on the program's undo
/// manager, with the document as their target, so that a document tells text
/// edits from tree edits by the last undo target. The text document's own
/// undo is to be off: there is one stack for the whole program.
///
/// Qt reports an edit only after it happened. So before each input that may
/// edit, the view calls `prepareForEdit` with where that input acts (the
/// selection, a drop position), and the recorder keeps the text of those
/// lines; what an edit removes is taken from there. An edit that removes text
/// outside what was kept cannot be undone: then it and all earlier text steps
/// are dropped from undo (their actions do nothing), rather than let undo put
/// wrong characters in.
///
/// A burst of typing is one undo group, named "Typing": characters typed at
/// the end of what was typed just before, or deleted back or forward from
/// there, with no other undo registered in between, extend the step that the
/// first keystroke registered. Any other edit is a group of its own.
///
/// Works on one document, which it does not own; records nothing without an
/// undo manager. Main thread only.
class ADTextUndoRecorder : public QObject
{
    Q_OBJECT

public:
    explicit ADTextUndoRecorder(QTextDocument *document, QObject *parent = nullptr);
    ~ADTextUndoRecorder() override;

    ADUndoManager *undoManager() const;
    /// Not owned; may be null.
    void setUndoManager(ADUndoManager *manager);

    /// Keeps the text of the lines that `from` to `to` touch, and of the line
    /// before and after them: all that one input at that place can remove.
    void prepareForEdit(qint64 from, qint64 to);
    /// The next edit starts a new undo group.
    void breakCoalescing();
    /// Replaces a range within the text as an undo step of its own, which
    /// puts the old text back and reports it restored.
    void replaceRange(KZRange range, const QString &text);
    /// While paused, edits are not recorded: whoever makes them registers
    /// their undo.
    void setPaused(bool paused);

signals:
    /// An undo or redo put this text back.
    void textRestored(KZRange range);

private:
    struct Step;
    struct Shared;

    void contentsChange(int position, int removed, int added);
    void record(qint64 position, const QString &removed, qint64 added);
    bool extendBurst(qint64 position, const QString &removed, qint64 added);
    bool burstContinues() const;
    static void registerStep(ADUndoManager &manager, const std::weak_ptr<Shared> &shared,
                             const std::shared_ptr<Step> &step);
    static void applyStep(ADUndoManager &manager, const std::weak_ptr<Shared> &shared,
                          const Step &step);

    std::shared_ptr<Shared> _shared; // what the registered actions reach
    QPointer<ADUndoManager> _manager;
    qint64 _keptFrom = 0;
    QString _kept; // the text from `_keptFrom`, as it stands now
    std::shared_ptr<Step> _burst;
    int _burstCount = 0; // the undo stack when the burst was registered
    int _burstIndex = 0;
    bool _paused = false;
};
