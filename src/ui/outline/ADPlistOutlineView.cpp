#include "ADPlistOutlineView.h"

#include "ADClassCellView.h"
#include "ADKeyCellView.h"
#include "ADValueCellView.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QFontMetrics>
#include <QHeaderView>
#include <QScopedValueRollback>

ADPlistOutlineView::ADPlistOutlineView(ADPlistOutlineController &controller, QWidget *parent)
    : QTreeView(parent), _controller(controller), _keyCells(new ADKeyCellView(*this)),
      _classCells(new ADClassCellView(*this)), _valueCells(new ADValueCellView(*this))
{
    ADPlistOutlineModel &model = controller.model();
    setModel(&model);
    setSelectionModel(model.selectionModel());
    setItemDelegateForColumn(ADPlistOutlineModel::KeyColumn, _keyCells);
    setItemDelegateForColumn(ADPlistOutlineModel::ClassColumn, _classCells);
    setItemDelegateForColumn(ADPlistOutlineModel::ValueColumn, _valueCells);
    // Rows of one height let a million rows scroll without measuring each.
    setUniformRowHeights(true);
    setSelectionMode(ExtendedSelection);
    setSelectionBehavior(SelectRows);
    setEditTriggers(DoubleClicked | EditKeyPressed | SelectedClicked);
    setAllColumnsShowFocus(true);
    // Rows move within the outline, copy to other windows, and go out as text.
    setDragDropMode(DragDrop);
    setDefaultDropAction(Qt::MoveAction);
    setDropIndicatorShown(true);
    setAlternatingRowColors(true);
    setAccessibleName(tr("Property list outline"));
    header()->setStretchLastSection(true);
    header()->setSectionsMovable(false);
    header()->resizeSection(ADPlistOutlineModel::KeyColumn, 240);
    header()->resizeSection(ADPlistOutlineModel::ClassColumn, 100);
    header()->setObjectName(QStringLiteral("PlistOutlineView"));

    connect(&model, &ADPlistOutlineModel::expansionChanged, this,
            &ADPlistOutlineView::followModelExpansion);
    connect(this, &QTreeView::expanded, this, [this](const QModelIndex &index) {
        if (!_followingModel)
            _controller.model().expandItem(ADPlistOutlineModel::itemForIndex(index));
    });
    connect(this, &QTreeView::collapsed, this, [this](const QModelIndex &index) {
        if (!_followingModel)
            _controller.model().collapseItem(ADPlistOutlineModel::itemForIndex(index), false);
    });
    // The rows held may point at nodes that go once the change is told: lay out now.
    connect(&model, &QAbstractItemModel::layoutChanged, this, [this] { doItemsLayout(); });
    connect(&model, &QAbstractItemModel::modelReset, this, [this] {
        if (ADPlistObject *root = _controller.plistRoot())
            _controller.model().expandItem(root);
    });
    controller.setView(this);
    if (ADPlistObject *root = controller.plistRoot())
        controller.model().expandItem(root);
}

ADPlistOutlineView::~ADPlistOutlineView()
{
    _controller.setView(nullptr);
}

void ADPlistOutlineView::followModelExpansion(const QModelIndex &index, bool expanded)
{
    const QScopedValueRollback following(_followingModel, true);
    setExpanded(index, expanded);
}

void ADPlistOutlineView::setOutlineFont(const QFont &font)
{
    setFont(font);
    _keyCells->setFont(font);
    _classCells->setFont(font);
    _valueCells->setFont(font);
    doItemsLayout();
}

bool ADPlistOutlineView::commitEditing()
{
    return _keyCells->commitOpenEditor() && _classCells->commitOpenEditor() &&
           _valueCells->commitOpenEditor();
}

void ADPlistOutlineView::abortEditing()
{
    _keyCells->abortOpenEditor();
    _classCells->abortOpenEditor();
    _valueCells->abortOpenEditor();
}

void ADPlistOutlineView::editColumn(int column, ADPlistObject *item)
{
    const QModelIndex index = _controller.model().indexForItem(item, column);
    if (!index.isValid())
        return;
    scrollTo(index);
    setCurrentIndex(index);
    if (!edit(index, AllEditTriggers, nullptr))
        setFocus();
}

void ADPlistOutlineView::scrollItemToVisible(ADPlistObject *item)
{
    scrollTo(_controller.model().indexForItem(item));
}

bool ADPlistOutlineView::isInKeyWindow() const
{
    return window()->isActiveWindow();
}

void ADPlistOutlineView::finishEditing(QWidget *editor)
{
    commitData(editor);
    closeEditor(editor, QAbstractItemDelegate::NoHint);
}

void ADPlistOutlineView::moveEditAlongRow(bool forward)
{
    const QModelIndex current = currentIndex();
    ADPlistObject *item = ADPlistOutlineModel::itemForIndex(current);
    if (!item)
        return;
    const int column = _controller.nextEditableColumn(*item, current.column(), forward);
    if (column < 0) {
        setFocus();
        return;
    }
    editColumn(column, item);
}

void ADPlistOutlineView::closeEditor(QWidget *editor, QAbstractItemDelegate::EndEditHint hint)
{
    // Tab goes round the row being edited, never on to another row.
    const bool along = hint == QAbstractItemDelegate::EditNextItem ||
                       hint == QAbstractItemDelegate::EditPreviousItem;
    QTreeView::closeEditor(editor, along ? QAbstractItemDelegate::NoHint : hint);
    if (along)
        moveEditAlongRow(hint == QAbstractItemDelegate::EditNextItem);
}

void ADPlistOutlineView::contextMenuEvent(QContextMenuEvent *event)
{
    const QModelIndex index = indexAt(event->pos());
    _clickedItem = ADPlistOutlineModel::itemForIndex(index);
    emit contextMenuRequested(event->globalPos());
    _clickedItem = nullptr;
}

void ADPlistOutlineView::keyPressEvent(QKeyEvent *event)
{
    // Return on a row edits its value, as a double click does.
    if ((event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) &&
        state() != EditingState && currentIndex().isValid()) {
        ADPlistObject *item = ADPlistOutlineModel::itemForIndex(currentIndex());
        editColumn(ADPlistOutlineModel::ValueColumn, item);
        return;
    }
    QTreeView::keyPressEvent(event);
}
