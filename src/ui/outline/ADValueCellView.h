#pragma once

#include "ADOutlineCellView.h"

/// The value column. A value shows as its viewer shows it: a grey label
/// before the text where the viewer gives one, a summary of a container in
/// the disabled colour, a record that cannot be read in the error colour.
/// Booleans edit in a YES/NO pop-up, everything else as text that the
/// viewer reads back; text it cannot read is refused with its reason and
/// the cell shows the old value again. A value whose viewer has an info
/// panel shows a button that opens it.
class ADValueCellView : public ADOutlineCellView
{
    Q_OBJECT

public:
    using ADOutlineCellView::ADOutlineCellView;

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override;
    QWidget *createEditor(QWidget *parent, const QStyleOptionViewItem &option,
                          const QModelIndex &index) const override;
    void setEditorData(QWidget *editor, const QModelIndex &index) const override;
    void setModelData(QWidget *editor, QAbstractItemModel *model,
                      const QModelIndex &index) const override;
    bool editorEvent(QEvent *event, QAbstractItemModel *model, const QStyleOptionViewItem &option,
                     const QModelIndex &index) override;

private:
    bool showsBoolean(const QModelIndex &index) const;
    bool hasInfoPanel(const QModelIndex &index) const;
    static QRect infoButtonRect(const QStyleOptionViewItem &option);
    void showInfo(const QModelIndex &index, const QRect &buttonRect);
};
