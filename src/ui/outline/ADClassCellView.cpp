#include "ADClassCellView.h"

#include "ADPlistOutlineView.h"

#include <QComboBox>

QWidget *ADClassCellView::createEditor(QWidget *parent, const QStyleOptionViewItem &,
                                       const QModelIndex &index) const
{
    const ADPlistObject *item = itemAt(index);
    if (!item)
        return nullptr;
    auto *popUp = new QComboBox(parent);
    for (const ADPlistType type : controller().allowedPlistTypes(*item))
        popUp->addItem(ADPlistObject::classNameForPlistType(type), QVariant::fromValue(type));
    // The pick is the edit: it goes in as soon as it is made.
    connect(popUp, &QComboBox::activated, popUp,
            [&outline = view(), popUp] { outline.finishEditing(popUp); });
    return opened(popUp);
}

void ADClassCellView::setEditorData(QWidget *editor, const QModelIndex &index) const
{
    auto *popUp = static_cast<QComboBox *>(editor);
    popUp->setCurrentIndex(popUp->findData(QVariant::fromValue(itemAt(index)->plistType())));
}

void ADClassCellView::setModelData(QWidget *editor, QAbstractItemModel *,
                                   const QModelIndex &index) const
{
    const QVariant type = static_cast<QComboBox *>(editor)->currentData();
    if (ADPlistObject *item = itemAt(index); item && type.isValid())
        controller().changeClass(*item, type.value<ADPlistType>());
}
