#pragma once

#include "model/ADPlistObject.h"
#include "shared/KZRange.h"

/// What a plist document asks of the window that shows it: the outline's
/// editing and selection, and the window's panes. The window controller
/// implements it; a document without a window has none. The window also
/// follows the document's signals (root, format, edit mode, definition) and
/// makes the new root's parent the outline controller. Main thread only.
class ADPlistDocumentWindow
{
public:
    virtual ~ADPlistDocumentWindow() = default;

    /// Ends an edit in progress in the outline; false when it cannot end.
    virtual bool commitEditing() = 0;
    /// Makes sure the text pane can be seen.
    virtual void exposePlistTextView() = 0;
    /// The definitions changed: the outline asks its definition again.
    virtual void reloadStructureDefinition() = 0;
    virtual void bringToFront() = 0;

    /// May be null.
    virtual ADPlistObject *firstSelectedItem() = 0;
    virtual ADPlistObjectList selectedItems() = 0;
    virtual void selectItems(const ADPlistObjectList &items) = 0;
    /// Starts editing the value (or key) of `item` with `range` of its text selected.
    virtual void editValueForItem(ADPlistObject *item, KZRange range) = 0;
    virtual void editKeyForItem(ADPlistObject *item, KZRange range) = 0;
};
