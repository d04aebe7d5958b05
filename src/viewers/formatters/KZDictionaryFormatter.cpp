#include "KZDictionaryFormatter.h"

#include "shared/KZLocalizedString.h"

KZDictionaryFormatter::KZDictionaryFormatter(const StringToObject &stringToObject)
{
    setStringToObjectDictionary(stringToObject);
}

KZDictionaryFormatter::ObjectToString
KZDictionaryFormatter::invertDictionary(const StringToObject &stringToObject)
{
    ObjectToString inverse;
    for (const auto &pair : stringToObject) {
        const QString &string = pair.first;
        const PlistValue &object = pair.second;
        const auto same = std::find_if(inverse.begin(), inverse.end(), [&](const auto &entry) {
            return entry.first.isEqualToPlist(object);
        });
        if (same != inverse.end())
            same->second = string;
        else
            inverse.emplace_back(object, string);
    }
    return inverse;
}

KZDictionaryFormatter::StringToObject
KZDictionaryFormatter::invertDictionary(const ObjectToString &objectToString)
{
    StringToObject inverse;
    for (const auto &pair : objectToString) {
        const PlistValue &object = pair.first;
        const QString &string = pair.second;
        const auto same = std::find_if(inverse.begin(), inverse.end(),
                                       [&](const auto &entry) { return entry.first == string; });
        if (same != inverse.end())
            same->second = object;
        else
            inverse.emplace_back(string, object);
    }
    return inverse;
}

void KZDictionaryFormatter::setStringToObjectDictionary(const StringToObject &dictionary)
{
    _stringToObject = dictionary;
    _objectToString = invertDictionary(dictionary);
}

void KZDictionaryFormatter::setObjectToStringDictionary(const ObjectToString &dictionary)
{
    _objectToString = dictionary;
    _stringToObject = invertDictionary(dictionary);
}

void KZDictionaryFormatter::setMissingValueFormatter(std::shared_ptr<KZFormatter> formatter)
{
    _missingValueFormatter = std::move(formatter);
}

std::optional<QString> KZDictionaryFormatter::stringForObjectValue(const PlistValue &value) const
{
    for (const auto &[object, string] : _objectToString) {
        if (object.isEqualToPlist(value))
            return string;
    }
    if (value.isString())
        return value.toString();
    if (_missingValueFormatter)
        return _missingValueFormatter->stringForObjectValue(value);
    return std::nullopt;
}

bool KZDictionaryFormatter::getObjectValue(PlistValue *value, const QString &string,
                                           QString *errorDescription) const
{
    for (const auto &[entry, object] : _stringToObject) {
        if (entry == string) {
            if (value)
                *value = object;
            return true;
        }
    }
    const QString missing = KZStringWithFormat(
        KZLocalizedStringWithID(4041,
                                QStringLiteral("No valid object value found for string \"%@\"")),
        {string});
    if (_missingValueFormatter) {
        PlistValue parsed;
        const bool ok = _missingValueFormatter->getObjectValue(&parsed, string, errorDescription);
        if (parsed.isNone())
            return fail(errorDescription, missing);
        if (value)
            *value = parsed;
        return ok;
    }
    if (string.isNull())
        return fail(errorDescription, missing);
    if (value)
        *value = PlistValue(string);
    return true;
}

std::unique_ptr<KZFormatter> KZDictionaryFormatter::copy() const
{
    auto other = std::make_unique<KZDictionaryFormatter>(_stringToObject);
    if (_missingValueFormatter)
        other->setMissingValueFormatter(
            std::shared_ptr<KZFormatter>(_missingValueFormatter->copy()));
    return other;
}
