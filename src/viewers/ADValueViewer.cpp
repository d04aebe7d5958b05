#include "ADValueViewer.h"

#include "ADValueViewerRegistry.h"

#include "model/ADPlistObject.h"
#include "shared/KZClassRegistry.h"
#include "shared/KZError.h"
#include "shared/KZLocalizedString.h"
#include "shared/KZVersionNumber.h"
#include "shared/PlistDictionary.h"

#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

namespace {

// The remembered viewers: key, then type name, then viewer identifier.
PlistDictionary &preferredViewerIdentifiers()
{
    static PlistDictionary identifiers = [] {
        const PlistValue read = ADPlistObject::readPlistFromFile(
            ADValueViewer::preferredViewerStoragePath(), false, nullptr, nullptr);
        return read.isDictionary() ? read.toDictionary() : PlistDictionary::create();
    }();
    return identifiers;
}

} // namespace

QString ADValueViewer::preferredViewerStoragePath()
{
    return QStandardPaths::writableLocation(QStandardPaths::AppDataLocation) +
           QStringLiteral("/PreferredValueViewerIdentifiers.plist");
}

QString ADValueViewer::preferredViewerIdentifierForKey(const QString &key, ADPlistType plistType)
{
    const PlistValue inner = preferredViewerIdentifiers().value(key);
    if (!inner.isDictionary())
        return QString();
    const PlistValue identifier =
        inner.toDictionary().value(ADPlistObject::classNameForPlistType(plistType));
    return identifier.isString() ? identifier.toString() : QString();
}

void ADValueViewer::setPreferredViewerIdentifier(const QString &identifier, const QString &key,
                                                 ADPlistType plistType)
{
    PlistDictionary &all = preferredViewerIdentifiers();
    PlistValue inner = all.value(key);
    if (!inner.isDictionary()) {
        inner = PlistValue(PlistDictionary::create());
        all.insert(key, inner);
    }
    const QString typeName = ADPlistObject::classNameForPlistType(plistType);
    if (identifier.isNull())
        inner.toDictionary().remove(typeName);
    else
        inner.toDictionary().insert(typeName, PlistValue(identifier));
    const QString path = preferredViewerStoragePath();
    QDir().mkpath(QFileInfo(path).path());
    (void)ADPlistObject::writePlist(all.value(), path, ADPlistFormatXML, true);
}

std::shared_ptr<ADValueViewer> ADValueViewer::valueViewerWithDictionary(const PlistValue &entry)
{
    if (!entry.isDictionary())
        return nullptr;
    const PlistDictionary dictionary = entry.toDictionary();
    const PlistValue minimum = dictionary.value(QStringLiteral("minimumSystemVersion"));
    if (minimum.isString() &&
        KZVersionNumber::versionWithString(minimum.toString()) > KZSystemVersionNumber())
        return nullptr;
    const PlistValue className = dictionary.value(QStringLiteral("class"));
    if (!className.isString())
        return nullptr;
    std::unique_ptr<QObject> object = KZClassRegistry::newObjectOfClass(className.toString());
    auto *viewer = qobject_cast<ADValueViewer *>(object.get());
    if (!viewer)
        return nullptr;
    object.release();
    std::shared_ptr<ADValueViewer> owned(viewer);
    const PlistValue properties = dictionary.value(QStringLiteral("properties"));
    if (!properties.isNone() && !KZClassRegistry::setValuesForKeys(*owned, properties))
        return nullptr;
    return owned;
}

std::shared_ptr<ADValueViewer> ADValueViewer::copy() const
{
    std::shared_ptr<ADValueViewer> other(
        qobject_cast<ADValueViewer *>(metaObject()->newInstance()));
    Q_ASSERT(other); // every viewer class has a Q_INVOKABLE constructor without arguments
    copySettingsTo(*other);
    return other;
}

void ADValueViewer::copySettingsTo(ADValueViewer &other) const
{
    other._identifier = _identifier;
    other._isDefault = _isDefault;
    other._dataType = _dataType;
    other._name = _name;
    other._nameStringID = _nameStringID;
    other._registry = _registry;
    other._formatter = _formatter;
    other._formatterInfo = _formatterInfo;
    other._nibName = _nibName;
    other._editable = _editable;
    other._infoViewControllerClassName = _infoViewControllerClassName;
}

QString ADValueViewer::name() const
{
    return _nameStringID > 0 ? KZLocalizedStringWithID(_nameStringID, _name) : _name;
}

ADValueViewerRegistry *ADValueViewer::registry() const
{
    return static_cast<ADValueViewerRegistry *>(_registry.data());
}

void ADValueViewer::setRegistry(ADValueViewerRegistry *registry)
{
    _registry = registry;
}

void ADValueViewer::setFormatterInfo(const PlistValue &info)
{
    _formatterInfo = info;
    std::unique_ptr<QObject> object = KZClassRegistry::objectFromInfoDictionary(info);
    auto *formatter = qobject_cast<KZFormatter *>(object.get());
    if (formatter)
        object.release();
    _formatter.reset(formatter);
}

std::optional<QString> ADValueViewer::displayStringForPlist(const PlistValue &plist) const
{
    if (_formatter)
        return _formatter->stringForObjectValue(plist);
    const QString text = plist.displayString();
    return text.isNull() ? std::nullopt : std::optional<QString>(text);
}

std::optional<KZStyledText>
ADValueViewer::styledDisplayStringForPlist(const PlistValue &plist) const
{
    if (_formatter)
        return _formatter->attributedStringForObjectValue(plist);
    const std::optional<QString> text = displayStringForPlist(plist);
    if (!text)
        return std::nullopt;
    return KZStyledText{{}, KZStyledText::Role::Secondary, *text};
}

std::optional<QString> ADValueViewer::editingStringForPlist(const PlistValue &plist) const
{
    if (!_formatter)
        return displayStringForPlist(plist);
    if (std::optional<QString> editing = _formatter->editingStringForObjectValue(plist))
        return editing;
    return _formatter->stringForObjectValue(plist);
}

PlistValue ADValueViewer::plistForEditingString(const QString &string, QString *errorString) const
{
    if (!_formatter)
        return PlistValue(string);
    PlistValue value;
    QString error;
    if (!_formatter->getObjectValue(&value, string, &error)) {
        if (errorString)
            *errorString = error;
        return PlistValue();
    }
    return value;
}

std::optional<QString> ADValueViewer::setEditingString(const QString &string,
                                                       ADPlistObject &object) const
{
    QString error;
    const PlistValue value = plistForEditingString(string, &error);
    if (!error.isEmpty())
        return error;
    if (value.isNone())
        return std::nullopt; // refused without a reason: nothing to set
    object.setPlist(value);
    return std::nullopt;
}
