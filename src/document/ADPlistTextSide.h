#pragma once

#include "shared/KZRange.h"

#include <QString>

#include <optional>

class ADUndoManager;

/// Options of `rangeOfString`, as bits.
constexpr qint64 ADTextSearchCaseInsensitive = 1;
constexpr qint64 ADTextSearchBackwards = 4;

/// The text half of a plist document: where its text is shown and typed.
/// The window's text view controller is one; `ADPlainTextSide` is one with no
/// widget. Typing registers its undo on the document's undo manager with
/// `undoTarget()` as the target, and nothing else does: that is how the
/// document tells a text edit from a tree edit. Nothing here parses the
/// text. Ranges are in UTF-16 units; {KZNotFound, 0} handed to an editing
/// operation means the whole text. Main thread only.
class ADPlistTextSide
{
public:
    virtual ~ADPlistTextSide() = default;

    /// The document's; not owned, may be null (typing is then not undoable).
    virtual void setUndoManager(ADUndoManager *manager) = 0;
    /// What typing registers its undo with.
    virtual const void *undoTarget() const = 0;

    virtual QString currentText() = 0;
    /// Replaces the whole text; records no undo (the document does).
    virtual void updatePlistText(const QString &text) = 0;
    /// The text is being made elsewhere and comes with the next
    /// `updatePlistText`: until then the side is empty, says the text is on
    /// its way, and takes no typing.
    virtual void showTextBeingMade() = 0;
    /// None unless the range lies within the text.
    virtual std::optional<QString> textInRange(KZRange range) = 0;
    virtual QString selectedText() = 0;
    /// False unless the range lies within the text.
    virtual bool selectTextInRange(KZRange range) = 0;
    /// Searches from the end of the selection to the end of the text, or
    /// backwards from the start of the selection to the start of the text;
    /// with `wrap`, then the other part. Not found is {KZNotFound, 0}.
    virtual KZRange rangeOfString(const QString &string, qint64 options, bool wrap) = 0;
    /// Replaces text as one undoable text edit that selects the old range
    /// again when undone. False unless the range lies within the text.
    virtual bool replaceTextInRange(KZRange range, const QString &text) = 0;
};
