#include "ADDataFormatter.h"

#include "shared/KZDataAdditions.h"
#include "shared/KZLocalizedString.h"
#include "shared/KZStringAdditions.h"

namespace {

constexpr int kPadInterval = 2;

} // namespace

QString ADDataFormatter::stringForData(QByteArrayView data) const
{
    if (data.size() <= qsizetype(_maxNumBytes))
        return hexStringWithBytes(data, kPadInterval, false);
    const qsizetype head = _maxNumBytes / 2;
    const qsizetype tail = _maxNumBytes - head;
    return hexStringWithBytes(data.first(head), kPadInterval, false) + horizontalEllipsisString() +
           hexStringWithBytes(data.last(tail), kPadInterval, false);
}

QString ADDataFormatter::labelForData(QByteArrayView data) const
{
    return KZStringWithFormat(KZLocalizedStringWithID(29, QStringLiteral("%lu bytes: ")),
                              {QString::number(data.size())});
}

std::optional<QString> ADDataFormatter::stringForObjectValue(const PlistValue &value) const
{
    if (value.kind() != PlistValue::Kind::Data)
        return std::nullopt;
    return stringForData(value.dataView());
}

std::optional<QString> ADDataFormatter::editingStringForObjectValue(const PlistValue &value) const
{
    if (value.kind() != PlistValue::Kind::Data)
        return std::nullopt;
    return hexStringWithBytes(value.dataView(), kPadInterval, false);
}

bool ADDataFormatter::getObjectValue(PlistValue *value, const QString &string,
                                     QString *errorDescription) const
{
    const std::optional<QByteArray> bytes = hexStringDataWithPadding(string, true);
    if (!bytes)
        return fail(errorDescription,
                    KZLocalizedStringWithID(
                        28, QStringLiteral("Invalid hexadecimal data for data object")));
    if (value)
        *value = PlistValue::data(*bytes);
    return true;
}

std::optional<KZStyledText>
ADDataFormatter::attributedStringForObjectValue(const PlistValue &value) const
{
    if (value.kind() != PlistValue::Kind::Data)
        return std::nullopt;
    return attributedStringWithLabel(labelForData(value.dataView()),
                                     stringForData(value.dataView()));
}
