#include "ADValueViewerRegistry.h"

#include "ADAllowableValueViewer.h"
#include "ADValueViewerElement.h"
#include "ADViewerClasses.h"

#include "model/ADPlistObject.h"
#include "storage/PlistSerialization.h"
#include "viewers/formatters/ADDictionaryFormatter.h"

#include "shared/PlistArray.h"

#include <QCollator>
#include <QFile>
#include <QSet>

QString ADValueViewerRegistry::defaultViewerTablePath()
{
    return QStringLiteral(":/viewers/ValueViewers.plist");
}

ADValueViewerRegistry::ADValueViewerRegistry(const QString &viewerTablePath, QObject *parent)
    : QObject(parent)
{
    ADRegisterViewerClasses();
    addViewersFromContentsOfFile(viewerTablePath);
}

ADValueViewerRegistry &ADValueViewerRegistry::sharedRegistry()
{
    static ADValueViewerRegistry registry;
    return registry;
}

bool ADValueViewerRegistry::addViewersFromContentsOfFile(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    const ReadResult table = PlistSerialization::read(file.readAll());
    if (!table || !table.value.isArray())
        return false;
    for (const PlistValue &entry : table.value.toArray()) {
        if (Viewer viewer = ADValueViewer::valueViewerWithDictionary(entry))
            registerViewer(viewer);
    }
    return true;
}

void ADValueViewerRegistry::registerViewer(const Viewer &viewer)
{
    _availableViewers[viewer->dataType()].push_back(viewer);
    _viewersByIdentifier.insert(viewer->identifier(), viewer);
    viewer->setRegistry(this);
    if (viewer->isDefault())
        _defaultViewers.insert(viewer->dataType(), viewer);
}

std::vector<ADValueViewerRegistry::Viewer>
ADValueViewerRegistry::availableViewersForType(ADPlistType type) const
{
    return _availableViewers.value(type);
}

ADValueViewerRegistry::Viewer ADValueViewerRegistry::defaultViewerForType(ADPlistType type) const
{
    return _defaultViewers.value(type);
}

ADValueViewerRegistry::Viewer
ADValueViewerRegistry::viewerForIdentifier(const QString &identifier) const
{
    return _viewersByIdentifier.value(identifier);
}

ADValueViewerRegistry::Viewer
ADValueViewerRegistry::viewerForDictionaryWithPreviewKeyPath(const QString &keyPath)
{
    if (keyPath.isEmpty())
        return nullptr;
    if (const Viewer cached = _dictionaryViewers.value(keyPath))
        return cached;
    auto formatter = std::make_shared<ADDictionaryFormatter>();
    formatter->setPreviewKeyPath(keyPath);
    auto viewer = std::make_shared<ADValueViewer>();
    viewer->setDataType(ADPlistTypeDictionary);
    viewer->setFormatter(formatter);
    viewer->setIdentifier(QStringLiteral("com.fernhollow.dictionary-with-preview.%1").arg(keyPath));
    viewer->setNibName(QStringLiteral("TextValueView"));
    viewer->setEditable(false);
    viewer->setRegistry(this);
    _dictionaryViewers.insert(keyPath, viewer);
    return viewer;
}

ADValueViewerRegistry::Viewer
ADValueViewerRegistry::allowableValueViewerForDefinitionElement(const ADValueViewerElement &element)
{
    const ADValueViewerElement::AllowableValues values = element.allowableValues();
    if (values.empty())
        return nullptr;
    if (const Viewer cached = _cachedAllowableValueViewers.value(element.name()))
        return cached;
    const Viewer raw = defaultViewerForType(element.plistType());
    ADValueViewer fallback;
    fallback.setDataType(element.plistType());
    auto viewer = std::make_shared<ADAllowableValueViewer>(values, raw ? *raw : fallback);
    viewer->setRegistry(this);
    viewer->setIdentifier(QStringLiteral("com.fernhollow.allowable-values.%1.%2")
                              .arg(element.structureDefinitionIdentifier(), element.name()));
    viewer->setNibName(QStringLiteral("AllowableValueView"));
    _cachedAllowableValueViewers.insert(element.name(), viewer);
    return viewer;
}

ADValueViewerRegistry::Viewer
ADValueViewerRegistry::chosenViewerForPlistObject(const ADPlistObject &object)
{
    if (object.valueViewer())
        return object.valueViewer();
    if (const ADValueViewerElement *element = ADValueViewerElement::elementForPlistObject(object)) {
        if (const Viewer byIdentifier = viewerForIdentifier(element->valueViewerIdentifier()))
            return byIdentifier;
        if (const Viewer allowable = allowableValueViewerForDefinitionElement(*element))
            return allowable;
        if (element->isDictionaryElement()) {
            if (const Viewer preview = viewerForDictionaryWithPreviewKeyPath(
                    element->identifyingKeyInPlistObject(object)))
                return preview;
        }
    }
    const QString key = object.key();
    if (_savePreferredViewerIdentifiers && !key.isNull())
        return viewerForIdentifier(
            ADValueViewer::preferredViewerIdentifierForKey(key, object.plistType()));
    return nullptr;
}

ADValueViewerRegistry::Viewer
ADValueViewerRegistry::viewerForPlistObject(const ADPlistObject &object)
{
    Viewer viewer = chosenViewerForPlistObject(object);
    if (!viewer || viewer->dataType() != object.plistType())
        viewer = defaultViewerForType(object.plistType());
    if (viewer)
        viewer->setRegistry(this);
    return viewer;
}

std::vector<ADValueViewerMenuItem>
ADValueViewerRegistry::menuItemsForPlistObjects(const std::vector<const ADPlistObject *> &objects)
{
    if (objects.empty())
        return {};
    const ADPlistType type = objects.front()->plistType();
    QSet<const ADValueViewer *> showing;
    for (const ADPlistObject *object : objects) {
        if (object->plistType() != type)
            return {};
        showing.insert(viewerForPlistObject(*object).get());
    }
    const Qt::CheckState checked = showing.size() == 1 ? Qt::Checked : Qt::PartiallyChecked;
    std::optional<ADValueViewerMenuItem> defaultItem;
    std::vector<ADValueViewerMenuItem> others;
    for (const Viewer &viewer : availableViewersForType(type)) {
        const ADValueViewerMenuItem item{viewer->name(), viewer->identifier(),
                                         showing.contains(viewer.get()) ? checked : Qt::Unchecked};
        if (viewer->isDefault() && !defaultItem)
            defaultItem = item;
        else
            others.push_back(item);
    }
    QCollator collator;
    collator.setNumericMode(true);
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    std::stable_sort(others.begin(), others.end(), [&](const auto &a, const auto &b) {
        return collator.compare(a.title, b.title) < 0;
    });
    std::vector<ADValueViewerMenuItem> items;
    if (defaultItem)
        items.push_back(*defaultItem);
    if (defaultItem && !others.empty())
        items.push_back(ADValueViewerMenuItem{{}, {}, Qt::Unchecked, true});
    items.insert(items.end(), others.begin(), others.end());
    return items;
}

std::optional<QString>
ADValueViewerRegistry::displayStringForPlistObject(const ADPlistObject &object)
{
    const Viewer viewer = viewerForPlistObject(object);
    return viewer ? viewer->displayStringForPlist(object.plist()) : std::nullopt;
}

std::optional<QString>
ADValueViewerRegistry::editingStringForPlistObject(const ADPlistObject &object)
{
    const Viewer viewer = viewerForPlistObject(object);
    return viewer ? viewer->editingStringForPlist(object.plist()) : std::nullopt;
}

PlistValue ADValueViewerRegistry::plistForEditingString(const QString &string,
                                                        const ADPlistObject &object,
                                                        QString *errorString)
{
    const Viewer viewer = viewerForPlistObject(object);
    return viewer ? viewer->plistForEditingString(string, errorString) : PlistValue();
}

std::optional<QString> ADValueViewerRegistry::setEditingString(const QString &string,
                                                               ADPlistObject &object)
{
    const Viewer viewer = viewerForPlistObject(object);
    return viewer ? viewer->setEditingString(string, object) : std::nullopt;
}
