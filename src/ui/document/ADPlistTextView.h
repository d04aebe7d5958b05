#pragma once

#include <QPlainTextEdit>
#include <QPointer>

class ADTextUndoRecorder;
class ADXMLTagColorizer;

/// The text view of a document's plist text: a plain text editor whose own
/// undo is off, since typing goes to the program's undo manager through the
/// undo recorder, which this view tells where each input acts before it
/// edits. It has the colorizer colour the lines it is about to paint, and a
/// double click on a bracket selects through its partner.
///
/// Undo and Redo (keys and context menu) are asked of its owner through
/// `undoRequested` and `redoRequested`. Code that edits through
/// QPlainTextEdit's own slots calls `prepareForEdit` first. Made and owned
/// through Qt parenting by whoever shows it; the colorizer and recorder
/// belong to its controller.
class ADPlistTextView : public QPlainTextEdit
{
    Q_OBJECT

public:
    explicit ADPlistTextView(QWidget *parent = nullptr);

    /// Either may be null.
    void setColorizer(ADXMLTagColorizer *colorizer);
    void setUndoRecorder(ADTextUndoRecorder *recorder);
    /// Whether Undo and Redo are offered in the context menu.
    void setUndoAvailability(bool canUndo, bool canRedo);

    /// Tells the recorder that the next edit acts at the selection, and at
    /// `position` too when one is given.
    void prepareForEdit(qint64 position = -1);
    /// Selects the bracket pair around the start of the selection; beeps
    /// when there is none.
    void balance();

signals:
    void undoRequested();
    void redoRequested();

protected:
    void paintEvent(QPaintEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void inputMethodEvent(QInputMethodEvent *event) override;
    void insertFromMimeData(const QMimeData *source) override;
    void dropEvent(QDropEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    /// The character under a point of the viewport, or -1.
    qint64 characterIndexAt(const QPoint &point) const;
    void selectRange(qint64 from, qint64 to);

    QPointer<ADXMLTagColorizer> _colorizer;
    QPointer<ADTextUndoRecorder> _recorder;
    bool _canUndo = false;
    bool _canRedo = false;
    bool _dropping = false;
};
