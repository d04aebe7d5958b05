#include "ADKeyViewer.h"

#include "ADValueViewerElement.h"

#include "model/ADPlistObject.h"
#include "shared/KZLocalizedString.h"

ADKeyViewer::ADKeyViewer(const std::vector<KeyInfo> &keyInfos, bool showRawKeys)
    : _cellViewNibName(QStringLiteral("LocalizedKeyCellView"))
{
    if (!showRawKeys) {
        _keysToLocalizedStrings.emplace();
        _localizedStringsToKeys.emplace();
    }
    for (const KeyInfo &info : keyInfos) {
        if (showRawKeys) {
            _knownKeyStrings.append(info.keyName);
            continue;
        }
        _localizedStringsToKeys->insert(info.localizedString, info.keyName);
        _keysToLocalizedStrings->insert(info.keyName, info.localizedString);
        _knownKeyStrings.append(info.localizedString);
    }
}

std::shared_ptr<ADKeyViewer> ADKeyViewer::keyViewerForPlistObject(const ADPlistObject *object,
                                                                  bool showRawKeys)
{
    if (!object)
        return nullptr;
    auto viewer = std::make_shared<ADKeyViewer>();
    if (object->isRoot()) {
        const ADValueViewerElement *element = ADValueViewerElement::elementForPlistObject(*object);
        const QString text = element ? element->localizedString() : QString();
        viewer->setKeyString(text.isEmpty() ? KZLocalizedStringWithID(19, QStringLiteral("Root"))
                                            : text);
        return viewer;
    }
    if (!object->shouldDisplayLocalizedKey())
        return viewer;
    const ADPlistObject *parent = object->plistObjectParent();
    const ADValueViewerElement *parentElement =
        parent ? ADValueViewerElement::elementForPlistObject(*parent) : nullptr;
    if (parentElement && parentElement->isDictionaryElement()) {
        if (std::shared_ptr<ADKeyViewer> localized =
                parentElement->keyViewerForPlistObject(*object, showRawKeys))
            return localized;
    }
    return viewer;
}

QString ADKeyViewer::keyStringForPlistObject(const ADPlistObject &object, bool showRawKeys)
{
    if (showRawKeys)
        return object.key();
    return keyViewerForPlistObject(&object, false)->keyStringForPlistObject(object);
}

QString ADKeyViewer::rawKeyForKeyString(const QString &keyString) const
{
    if (_localizedStringsToKeys) {
        const auto it = _localizedStringsToKeys->constFind(keyString);
        if (it != _localizedStringsToKeys->constEnd())
            return *it;
    }
    return keyString;
}

QString ADKeyViewer::keyStringForPlistObject(const ADPlistObject &object) const
{
    if (!_keyString.isNull())
        return _keyString;
    const QString key = object.key();
    if (_keysToLocalizedStrings && !key.isNull())
        return _keysToLocalizedStrings->value(key, key);
    if (!key.isNull())
        return key;
    return QString::number(object.indexInParent());
}

void ADKeyViewer::setKeyString(const QString &keyString, ADPlistObject &object) const
{
    const QString rawKey = rawKeyForKeyString(keyString);
    if (!_keyString.isNull() || rawKey.isNull())
        return;
    if (ADPlistObject *parent = object.plistObjectParent())
        parent->setKey(rawKey, object.indexInParent());
}

std::optional<KZError> ADKeyViewer::validateKeyString(const QString &keyString,
                                                      const ADPlistObject &object) const
{
    const QString rawKey = rawKeyForKeyString(keyString);
    if (rawKey == object.key())
        return std::nullopt;
    const ADPlistObject *parent = object.plistObjectParent();
    if (!parent || !parent->childForKey(rawKey))
        return std::nullopt;
    KZError error(ADErrorDomain, 8001,
                  KZLocalizedStringWithID(20, QStringLiteral("Key already exists")));
    error.setLocalizedRecoverySuggestion(KZStringWithFormat(
        KZLocalizedStringWithID(
            21, QStringLiteral("There is already an object for the key “%@” in this dictionary.  "
                               "Do you want to replace this object with the one whose key you are "
                               "changing?")),
        {keyString}));
    error.addRecoveryOption(KZLocalizedStringWithID(22, QStringLiteral("Replace")),
                            []() -> std::optional<KZError> { return std::nullopt; });
    error.addRecoveryOption(KZLocalizedStringWithID(23, QStringLiteral("Cancel")),
                            []() -> std::optional<KZError> {
                                return KZError(QStringLiteral("NSCocoaErrorDomain"), 3072);
                            });
    return error;
}
