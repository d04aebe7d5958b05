#pragma once

#include <QFont>

#include <QPointer>
#include <QStyledItemDelegate>
#include <functional>

class ADPlistObject;
class ADPlistOutlineController;
class ADPlistOutlineView;
class QModelIndex;

/// What the three cell views of the outline share: the outline font, the
/// one editor open at a time (which the outline commits or drops before a
/// command), and whether the last commit was taken. Children of their view.
class ADOutlineCellView : public QStyledItemDelegate
{
    Q_OBJECT

public:
    explicit ADOutlineCellView(ADPlistOutlineView &view);

    void setFont(const QFont &font) { _font = font; }
    /// Takes what the open editor holds, if one is open; false when the value was refused.
    bool commitOpenEditor();
    void abortOpenEditor();

    void destroyEditor(QWidget *editor, const QModelIndex &index) const override;
    void initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const override;

protected:
    /// Remembers the editor as the open one; every cell view calls it from `createEditor`.
    QWidget *opened(QWidget *editor) const;
    /// A frameless text field whose completions come from the controller as the user types.
    QWidget *openedTextField(QWidget *parent, const QModelIndex &index) const;
    ADPlistOutlineController &controller() const;
    ADPlistOutlineView &view() const { return _view; }
    static ADPlistObject *itemAt(const QModelIndex &index);
    /// Says whether the value set from the editor was taken.
    /// An alert on the outline's window with one OK button, once the edit
    /// has closed: a modal loop inside a commit would take the editor's focus
    /// and commit it again.
    void showAlertLater(const QString &title, const QString &text) const;
    /// Runs `step` once the edit has closed, for the same reason.
    void afterEditing(std::function<void()> step) const;

private:
    ADPlistOutlineView &_view;
    QFont _font;
    mutable QPointer<QWidget> _openEditor;
    mutable bool _commitTaken = true;
};
