#include "KZDictionaryFormatter.h"

#include "shared/KZLocalizedString.h"

namespace {

bool same(const QString &a, const QString &b)
{
    return a == b;
}

bool same(const PlistValue &a, const PlistValue &b)
{
    return a.isEqualToPlist(b);
}

// Each value to its key; where two keys share a value, the later key wins.
template <typename Key, typename Value>
std::vector<std::pair<Key, Value>> inverted(const std::vector<std::pair<Value, Key>> &table)
{
    std::vector<std::pair<Key, Value>> inverse;
    for (const auto &entry : table) {
        const auto found = std::find_if(inverse.begin(), inverse.end(), [&](const auto &known) {
            return same(known.first, entry.second);
        });
        if (found != inverse.end())
            found->second = entry.first;
        else
            inverse.emplace_back(entry.second, entry.first);
    }
    return inverse;
}

} // namespace

KZDictionaryFormatter::KZDictionaryFormatter(const StringToObject &stringToObject)
{
    setStringToObjectDictionary(stringToObject);
}

KZDictionaryFormatter::ObjectToString
KZDictionaryFormatter::invertDictionary(const StringToObject &stringToObject)
{
    return inverted<PlistValue, QString>(stringToObject);
}

KZDictionaryFormatter::StringToObject
KZDictionaryFormatter::invertDictionary(const ObjectToString &objectToString)
{
    return inverted<QString, PlistValue>(objectToString);
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
