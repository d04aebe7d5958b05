#include "ADEditSheetController.h"

#include "shared/KZLocalizedString.h"
#include "shared/KZStringAdditions.h"
#include "viewers/ADValueViewerRegistry.h"

#include <algorithm>

ADEditSheetController::ADEditSheetController(ADValueViewerRegistry &registry) : _registry(registry)
{}

bool ADEditSheetController::canEditPlistObjects(const std::vector<ADPlistObject *> &objects)
{
    if (objects.empty() || objects.front()->hasChildren())
        return false;
    const ADPlistType type = objects.front()->plistType();
    return std::all_of(objects.begin(), objects.end(),
                       [type](const ADPlistObject *object) { return object->plistType() == type; });
}

void ADEditSheetController::startEditingPlistObjects(const std::vector<ADPlistObject *> &objects)
{
    _editedObjects.clear();
    std::optional<QString> shared;
    bool differ = false;
    for (ADPlistObject *object : objects) {
        _editedObjects.emplace_back(object);
        const QString text = _registry.editingStringForPlistObject(*object).value_or(QString());
        if (!shared)
            shared = text;
        else if (*shared != text)
            differ = true;
    }
    _initialText = differ || !shared ? QString() : *shared;
    if (objects.size() != 1) {
        _infoText =
            KZStringWithFormat(KZLocalizedStringWithID(24, QStringLiteral("Editing %lu values")),
                               {QString::number(objects.size())});
        return;
    }
    const QString key = objects.front()->key();
    _infoText =
        key.isNull()
            ? KZStringWithFormat(KZLocalizedStringWithID(26, QStringLiteral("Editing item %ld")),
                                 {QString::number(objects.front()->indexInParent())})
            : KZStringWithFormat(KZLocalizedStringWithID(25, QStringLiteral("Editing key %@")),
                                 {key});
}

std::optional<QString> ADEditSheetController::acceptEditValue(const QString &text)
{
    // Every value is read before the first is stored, so a refusal changes nothing.
    std::vector<PlistValue> values;
    for (const ADPlistObject::Pointer &object : _editedObjects) {
        QString error;
        PlistValue value = _registry.plistForEditingString(text, *object, &error);
        if (value.isNone())
            return KZStringWithFormat(
                KZLocalizedStringWithID(27, QStringLiteral("The entered text is not valid: %@")),
                {error});
        values.push_back(std::move(value));
    }
    for (size_t i = 0; i < values.size(); ++i)
        _editedObjects[i]->setPlist(values[i]);
    return std::nullopt;
}
