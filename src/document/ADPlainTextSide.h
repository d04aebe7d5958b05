#pragma once

#include "ADPlistTextSide.h"

#include <QObject>
#include <QTextCursor>

class ADTextUndoRecorder;
class QTextDocument;

/// The text side of a document that has no window: a text document with a
/// selection of its own, and typing recorded like the text view's. Edits made
/// through `textDocument()` with a cursor count as typing, once
/// `prepareForEdit` has been called for where they act (as the view does for
/// each key). Main thread only.
class ADPlainTextSide : public QObject, public ADPlistTextSide
{
    Q_OBJECT

public:
    explicit ADPlainTextSide(QObject *parent = nullptr);
    ~ADPlainTextSide() override;

    QTextDocument *textDocument() const { return _document; }
    /// Before an edit through `textDocument()` from `from` to `to`.
    void prepareForEdit(qint64 from, qint64 to);

    void setUndoManager(ADUndoManager *manager) override;
    const void *undoTarget() const override { return _document; }
    QString currentText() override;
    void updatePlistText(const QString &text) override;
    void showTextBeingMade() override;
    std::optional<QString> textInRange(KZRange range) override;
    QString selectedText() override;
    bool selectTextInRange(KZRange range) override;
    KZRange rangeOfString(const QString &string, qint64 options, bool wrap) override;
    bool replaceTextInRange(KZRange range, const QString &text) override;

private:
    KZRange selection() const;

    QTextDocument *_document;          // child
    ADTextUndoRecorder *_undoRecorder; // child
    QTextCursor _selection;
};
