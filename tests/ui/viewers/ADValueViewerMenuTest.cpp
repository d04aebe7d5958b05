// The "View As" menu built from the registry's items.

#include "ui/viewers/ADValueViewerMenu.h"

#include "model/ADPlistObject.h"
#include "shared/PlistDictionary.h"

#include <QAction>
#include <QMenu>

#include <gtest/gtest.h>

namespace {

TEST(ValueViewerMenu, ChecksTheViewersShowingTheSelectionAndReportsTheChoice)
{
    PlistDictionary root = PlistDictionary::create();
    root.insert(QStringLiteral("a"), PlistValue(qint64(1)));
    root.insert(QStringLiteral("b"), PlistValue(qint64(2)));
    const auto tree = ADPlistObject::createWithPlist(PlistValue(root));
    ADValueViewerRegistry registry;
    registry.setSavePreferredViewerIdentifiers(false); // no preferences file is read
    const QString hex = QStringLiteral("com.fernhollow.value-viewer.number.hex.big-endian");
    tree->childForKey(QStringLiteral("b"))->setValueViewer(registry.viewerForIdentifier(hex));

    QMenu menu;
    menu.addAction(QStringLiteral("stale"));
    QString chosen;
    ADValueViewerMenu::populateMenu(&menu, registry, {tree->childForKey(QStringLiteral("a"))},
                                    [&](const QString &identifier) { chosen = identifier; });
    const QList<QAction *> actions = menu.actions();
    ASSERT_EQ(actions.size(), 10);
    EXPECT_EQ(actions[0]->text(), QStringLiteral("Decimal"));
    EXPECT_TRUE(actions[0]->isChecked());
    EXPECT_TRUE(actions[1]->isSeparator());
    QAction *hexAction = nullptr;
    for (QAction *action : actions) {
        if (action->data().toString() == hex)
            hexAction = action;
    }
    ASSERT_TRUE(hexAction);
    EXPECT_FALSE(hexAction->isChecked());
    hexAction->trigger();
    EXPECT_EQ(chosen, hex);

    ADValueViewerMenu::populateMenu(
        &menu, registry,
        {tree->childForKey(QStringLiteral("a")), tree->childForKey(QStringLiteral("b"))},
        [](const QString &) {});
    int mixed = 0;
    for (QAction *action : menu.actions())
        mixed += action->icon().isNull() ? 0 : 1;
    EXPECT_EQ(mixed, 2);
}

} // namespace
