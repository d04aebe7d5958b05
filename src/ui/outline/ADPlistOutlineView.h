#pragma once

#include "outline/ADPlistOutlineController.h"

#include <QPointer>
#include <QTreeView>

class ADKeyCellView;
class ADClassCellView;
class ADValueCellView;

/// The outline of a document: a tree view over its controller's model, with
/// the key, class and value columns drawn and edited by their cell views.
/// Expansion follows the model both ways, and a right-click names the row a
/// command works on while its menu is up (`contextMenuRequested`). Tab and
/// Shift+Tab move along a row only; Return ends an edit in place.
///
/// The view lays out its rows again at once when the model's layout changes,
/// since the nodes behind the rows it held may go right after. Owned by its
/// parent widget; the controller outlives it.
class ADPlistOutlineView : public QTreeView, public ADPlistOutlineViewAccess
{
    Q_OBJECT

public:
    explicit ADPlistOutlineView(ADPlistOutlineController &controller, QWidget *parent = nullptr);
    ~ADPlistOutlineView() override;

    ADPlistOutlineController &controller() const { return _controller; }
    /// Follows the outline font of the preferences; rows take its height.
    void setOutlineFont(const QFont &font);

    // --- ADPlistOutlineViewAccess
    ADPlistObject *clickedItem() const override { return _clickedItem; }
    bool commitEditing() override;
    void abortEditing() override;
    void editColumn(int column, ADPlistObject *item) override;
    void scrollItemToVisible(ADPlistObject *item) override;
    bool isInKeyWindow() const override;

    /// Takes what `editor` holds and closes it, as Return does.
    void finishEditing(QWidget *editor);
    /// Moves the edit to the next editable cell of the row being edited.
    void moveEditAlongRow(bool forward);

signals:
    /// A context menu for `items` at `globalPosition`; `clickedItem` is set while it shows.
    void contextMenuRequested(const QPoint &globalPosition);

protected:
    void contextMenuEvent(QContextMenuEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void closeEditor(QWidget *editor, QAbstractItemDelegate::EndEditHint hint) override;

private:
    void followModelExpansion(const QModelIndex &index, bool expanded);

    ADPlistOutlineController &_controller;
    ADKeyCellView *_keyCells;     // child
    ADClassCellView *_classCells; // child
    ADValueCellView *_valueCells; // child
    ADPlistObject *_clickedItem = nullptr;
    bool _followingModel = false;
};
