#include "ADValueCellView.h"

#include "ADPlistOutlineView.h"

#include "shared/KZLocalizedString.h"
#include "ui/viewers/ADInfoViewController.h"
#include "viewers/ADValueViewer.h"
#include "viewers/ADValueViewerRegistry.h"
#include "viewers/formatters/KZStyledText.h"

#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPainter>

namespace {

// The colour of a role in the cell's palette, so that light and dark themes both read.
QColor roleColor(KZStyledText::Role role, const QStyleOptionViewItem &option)
{
    const bool selected = option.state & QStyle::State_Selected;
    const QColor text = option.palette.color(selected ? QPalette::HighlightedText : QPalette::Text);
    switch (role) {
    case KZStyledText::Role::Plain:
        return text;
    case KZStyledText::Role::Secondary:
        return selected ? text : option.palette.color(QPalette::PlaceholderText);
    case KZStyledText::Role::Disabled:
        return selected ? text : option.palette.color(QPalette::Disabled, QPalette::Text);
    case KZStyledText::Role::Error: {
        // Red at the lightness of the text, so that it reads on either background.
        QColor error = QColor::fromHsl(0, 200, std::clamp(text.lightness(), 90, 160));
        return selected ? text : error;
    }
    }
    return text;
}

ADValueViewerRegistry::Viewer viewerOf(ADPlistOutlineController &controller, ADPlistObject *item)
{
    return item ? controller.valueViewerRegistry().viewerForPlistObject(*item) : nullptr;
}

} // namespace

bool ADValueCellView::showsBoolean(const QModelIndex &index) const
{
    const auto viewer = viewerOf(controller(), itemAt(index));
    return viewer && viewer->dataType() == ADPlistTypeBoolean;
}

bool ADValueCellView::hasInfoPanel(const QModelIndex &index) const
{
    const auto viewer = viewerOf(controller(), itemAt(index));
    return viewer && !viewer->infoViewControllerClassName().isEmpty();
}

QRect ADValueCellView::infoButtonRect(const QStyleOptionViewItem &option)
{
    const int side = option.rect.height();
    return QRect(option.rect.right() - side + 1, option.rect.top(), side, side);
}

void ADValueCellView::paint(QPainter *painter, const QStyleOptionViewItem &option,
                            const QModelIndex &index) const
{
    QStyleOptionViewItem cell = option;
    initStyleOption(&cell, index);
    const QVariant styledData = index.data(ADPlistOutlineModel::StyledTextRole);
    if (!styledData.isValid()) {
        QStyledItemDelegate::paint(painter, cell, index);
        return;
    }
    const auto styled = styledData.value<KZStyledText>();
    cell.text.clear();
    QStyle *style = cell.widget ? cell.widget->style() : QApplication::style();
    style->drawControl(QStyle::CE_ItemViewItem, &cell, painter, cell.widget);
    QRect textRect = style->subElementRect(QStyle::SE_ItemViewItemText, &cell, cell.widget);
    if (hasInfoPanel(index)) {
        const QRect button = infoButtonRect(cell);
        textRect.setRight(button.left() - 2);
        style->drawItemText(painter, button, Qt::AlignCenter, cell.palette, true,
                            QStringLiteral("\u24d8"), QPalette::Text);
    }
    painter->save();
    painter->setFont(cell.font);
    const QFontMetrics metrics(cell.font);
    const QString label = metrics.elidedText(styled.label, Qt::ElideRight, textRect.width());
    painter->setPen(roleColor(styled.labelRole, cell));
    painter->drawText(textRect, Qt::AlignVCenter | Qt::AlignLeft, label);
    textRect.setLeft(textRect.left() + metrics.horizontalAdvance(label));
    painter->setPen(roleColor(styled.textRole, cell));
    painter->drawText(textRect, Qt::AlignVCenter | Qt::AlignLeft,
                      metrics.elidedText(styled.text, cell.textElideMode, textRect.width()));
    painter->restore();
}

QWidget *ADValueCellView::createEditor(QWidget *parent, const QStyleOptionViewItem &,
                                       const QModelIndex &index) const
{
    if (showsBoolean(index)) {
        auto *popUp = new QComboBox(parent);
        popUp->addItem(KZLocalizedStringWithID(7202, QStringLiteral("YES")), true);
        popUp->addItem(KZLocalizedStringWithID(7203, QStringLiteral("NO")), false);
        connect(popUp, &QComboBox::activated, popUp,
                [&outline = view(), popUp] { outline.finishEditing(popUp); });
        return opened(popUp);
    }
    return openedTextField(parent, index);
}

void ADValueCellView::setEditorData(QWidget *editor, const QModelIndex &index) const
{
    if (auto *popUp = qobject_cast<QComboBox *>(editor)) {
        popUp->setCurrentIndex(itemAt(index)->plist().toBool() ? 0 : 1);
        return;
    }
    static_cast<QLineEdit *>(editor)->setText(index.data(Qt::EditRole).toString());
}

void ADValueCellView::setModelData(QWidget *editor, QAbstractItemModel *,
                                   const QModelIndex &index) const
{
    ADPlistObject *item = itemAt(index);
    if (!item)
        return;
    if (auto *popUp = qobject_cast<QComboBox *>(editor)) {
        controller().setValue(*item, PlistValue(popUp->currentData().toBool()));
        return;
    }
    const QString text = static_cast<QLineEdit *>(editor)->text();
    if (const std::optional<QString> refused = controller().setValueFromCell(*item, text)) {
        // The field goes back to the old value; the reason says why.
        showAlertLater(KZLocalizedStringWithID(250, QStringLiteral("Invalid value")), *refused);
    }
}

bool ADValueCellView::editorEvent(QEvent *event, QAbstractItemModel *model,
                                  const QStyleOptionViewItem &option, const QModelIndex &index)
{
    if (event->type() == QEvent::MouseButtonRelease && hasInfoPanel(index)) {
        const auto *click = static_cast<QMouseEvent *>(event);
        const QRect button = infoButtonRect(option);
        if (button.contains(click->position().toPoint())) {
            showInfo(index, button);
            return true;
        }
    }
    return QStyledItemDelegate::editorEvent(event, model, option, index);
}

void ADValueCellView::showInfo(const QModelIndex &index, const QRect &buttonRect)
{
    const auto viewer = viewerOf(controller(), itemAt(index));
    std::unique_ptr<ADInfoViewController> panel =
        ADInfoViewController::infoViewControllerWithClassName(
            viewer->infoViewControllerClassName());
    if (!panel)
        return;
    panel->setRepresentedObject(ADPlistObject::Pointer(itemAt(index)));
    // A popover: a frameless window at the button that closes when focus leaves it.
    panel->setParent(&view(), Qt::Popup);
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->move(view().viewport()->mapToGlobal(buttonRect.bottomLeft()));
    panel.release()->show();
}
