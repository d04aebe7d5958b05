#pragma once

#include "viewers/ADValueViewerRegistry.h"

#include <functional>

class QMenu;

/// Fills a "View As" menu with the viewers of a selection, as the registry
/// lists them: checkable items, the viewers showing the selection checked,
/// a mixed mark (the style's partly checked box) where several do.
/// Choosing an item calls `action` with the viewer's identifier.
class ADValueViewerMenu
{
public:
    static void populateMenu(QMenu *menu, ADValueViewerRegistry &registry,
                             const std::vector<const ADPlistObject *> &objects,
                             const std::function<void(const QString &identifier)> &action);
};
