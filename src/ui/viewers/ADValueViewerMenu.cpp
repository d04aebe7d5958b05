#include "ADValueViewerMenu.h"

#include <QAction>
#include <QMenu>
#include <QPainter>
#include <QStyle>
#include <QStyleOptionButton>

namespace {

// The style's own partly checked box, drawn with the menu's palette.
QIcon mixedStateIcon(const QWidget *menu)
{
    const int size = menu->style()->pixelMetric(QStyle::PM_IndicatorWidth, nullptr, menu);
    QPixmap pixmap(size, size);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    QStyleOptionButton option;
    option.initFrom(menu);
    option.rect = QRect(0, 0, size, size);
    option.state = QStyle::State_NoChange | QStyle::State_Enabled;
    menu->style()->drawPrimitive(QStyle::PE_IndicatorCheckBox, &option, &painter, menu);
    return QIcon(pixmap);
}

} // namespace

void ADValueViewerMenu::populateMenu(QMenu *menu, ADValueViewerRegistry &registry,
                                     const std::vector<const ADPlistObject *> &objects,
                                     const std::function<void(const QString &identifier)> &action)
{
    menu->clear();
    for (const ADValueViewerMenuItem &item : registry.menuItemsForPlistObjects(objects)) {
        if (item.isSeparator) {
            menu->addSeparator();
            continue;
        }
        QAction *entry = menu->addAction(item.title);
        entry->setData(item.identifier);
        entry->setCheckable(item.state != Qt::PartiallyChecked);
        entry->setChecked(item.state == Qt::Checked);
        if (item.state == Qt::PartiallyChecked)
            entry->setIcon(mixedStateIcon(menu));
        const QString identifier = item.identifier;
        QObject::connect(entry, &QAction::triggered, menu,
                         [action, identifier] { action(identifier); });
    }
}
