#include "ADResolvableDataFormatter.h"

#include "shared/KZLocalizedString.h"

#include <QFileInfo>

namespace {

QString uppercaseFirst(const QString &text)
{
    return text.isEmpty() ? text : text.front().toUpper() + text.mid(1);
}

} // namespace

std::optional<QString>
ADResolvableDataFormatter::stringForObjectValue(const PlistValue &value) const
{
    if (value.kind() != PlistValue::Kind::Data)
        return std::nullopt;
    QString error;
    const QString path = pathForResolvableData(value.toData(), &error);
    if (path.isNull())
        return error;
    return uppercaseFirst(localizedDataTypeName()) + QStringLiteral(": ") + path;
}

std::optional<QString>
ADResolvableDataFormatter::editingStringForObjectValue(const PlistValue &value) const
{
    if (value.kind() != PlistValue::Kind::Data)
        return std::nullopt;
    const QString path = pathForResolvableData(value.toData(), nullptr);
    return path.isNull() ? QStringLiteral("") : path;
}

bool ADResolvableDataFormatter::getObjectValue(PlistValue *value, const QString &string,
                                               QString *errorDescription) const
{
    if (!QFileInfo::exists(string))
        return fail(errorDescription,
                    KZStringWithFormat(KZLocalizedStringWithID(
                                           37, QStringLiteral("No file exists at the path “%@”")),
                                       {string}));
    QString error;
    const std::optional<QByteArray> data = resolvableDataForPath(string, &error);
    if (!data)
        return fail(errorDescription, error);
    if (value)
        *value = PlistValue::data(*data);
    return true;
}

std::optional<KZStyledText>
ADResolvableDataFormatter::attributedStringForObjectValue(const PlistValue &value) const
{
    if (value.kind() != PlistValue::Kind::Data)
        return std::nullopt;
    QString error;
    const QString path = pathForResolvableData(value.toData(), &error);
    if (!path.isNull())
        return attributedStringWithLabel(
            uppercaseFirst(localizedDataTypeName()) + QStringLiteral(": "), path);
    KZStyledText styled;
    styled.text = error;
    styled.textRole = KZStyledText::Role::Error;
    return styled;
}
