#pragma once

#include "ADOutlineCellView.h"

/// The class column: a pop-up of the types the document's format holds at
/// the row's place (a JSON top holds only a dictionary or an array). Choosing
/// one converts the value, with undo.
class ADClassCellView : public ADOutlineCellView
{
    Q_OBJECT

public:
    using ADOutlineCellView::ADOutlineCellView;

    QWidget *createEditor(QWidget *parent, const QStyleOptionViewItem &option,
                          const QModelIndex &index) const override;
    void setEditorData(QWidget *editor, const QModelIndex &index) const override;
    void setModelData(QWidget *editor, QAbstractItemModel *model,
                      const QModelIndex &index) const override;
};
