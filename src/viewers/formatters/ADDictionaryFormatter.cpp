#include "ADDictionaryFormatter.h"

#include "ADDateFormatter.h"

#include "shared/KZLocalizedString.h"
#include "shared/PlistDictionary.h"

namespace {

QString previewText(const PlistValue &value)
{
    switch (value.kind()) {
    case PlistValue::Kind::Boolean:
        return value.toBool() ? QStringLiteral("YES") : QStringLiteral("NO");
    case PlistValue::Kind::Date:
        return ADDateFormatter::standardDateFormatter().stringFromDate(value.toDate());
    case PlistValue::Kind::Number:
    case PlistValue::Kind::String:
        return value.displayString();
    default:
        return QString();
    }
}

} // namespace

ADDictionaryFormatter::ADDictionaryFormatter()
    : _countFormat(KZLocalizedStringWithID(17, QStringLiteral("%lu key/value pairs"))),
      _previewFormat(KZLocalizedStringWithID(18, QStringLiteral("%lu key/value pairs (%@ = %@)")))
{}

PlistValue ADDictionaryFormatter::valueForKeyPath(const PlistValue &dictionary,
                                                  const QString &keyPath)
{
    PlistValue current = dictionary;
    for (const QStringView key : QStringView(keyPath).split(u'.')) {
        if (!current.isDictionary())
            return PlistValue();
        current = current.toDictionary().value(key);
    }
    return current;
}

QString ADDictionaryFormatter::stringForDictionary(const PlistValue &dictionary) const
{
    const QString count = QString::number(dictionary.toDictionary().count());
    const QString preview = _previewKeyPath.isEmpty()
                                ? QString()
                                : previewText(valueForKeyPath(dictionary, _previewKeyPath));
    if (preview.isNull())
        return KZStringWithFormat(
            KZLocalizedStringWithID(17, QStringLiteral("%lu key/value pairs")), {count});
    return KZStringWithFormat(
        KZLocalizedStringWithID(18, QStringLiteral("%lu key/value pairs (%@ = %@)")),
        {count, _previewKeyPath, preview});
}

std::optional<QString> ADDictionaryFormatter::stringForObjectValue(const PlistValue &value) const
{
    if (!value.isDictionary())
        return std::nullopt;
    return stringForDictionary(value);
}
