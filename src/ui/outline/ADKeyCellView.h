#pragma once

#include "ADOutlineCellView.h"

/// The key column: a text field for a dictionary child's key (the root and
/// array elements have fixed keys). A key that a sibling has already is a
/// question: replace that sibling, or keep the old key.
class ADKeyCellView : public ADOutlineCellView
{
    Q_OBJECT

public:
    using ADOutlineCellView::ADOutlineCellView;

    QWidget *createEditor(QWidget *parent, const QStyleOptionViewItem &option,
                          const QModelIndex &index) const override;
    void setModelData(QWidget *editor, QAbstractItemModel *model,
                      const QModelIndex &index) const override;
};
