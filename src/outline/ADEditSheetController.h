#pragma once

#include "model/ADPlistObject.h"

#include <QString>

#include <optional>
#include <vector>

class ADValueViewerRegistry;

/// What the sheet for editing one or several values in a large text does:
/// the text it starts with, the line that says what is edited, and taking the
/// typed text for every value at once or for none. The sheet's window is the
/// UI's; this holds the decisions. Main thread.
class ADEditSheetController
{
public:
    explicit ADEditSheetController(ADValueViewerRegistry &registry);

    /// Whether the sheet edits these: some, all of one type, and no container.
    static bool canEditPlistObjects(const std::vector<ADPlistObject *> &objects);

    /// Takes the objects; the text starts as their shared editing text, or
    /// empty when they differ.
    void startEditingPlistObjects(const std::vector<ADPlistObject *> &objects);
    const QString &initialText() const { return _initialText; }
    /// "Editing key …", "Editing item …" or "Editing … values".
    const QString &infoText() const { return _infoText; }

    /// Reads `text` for each object; only when every one takes it are they
    /// all set, in order. Otherwise nothing changes and the answer is the
    /// message the sheet shows under the text.
    std::optional<QString> acceptEditValue(const QString &text);

private:
    ADValueViewerRegistry &_registry;
    std::vector<ADPlistObject::Pointer> _editedObjects;
    QString _initialText;
    QString _infoText;
};
