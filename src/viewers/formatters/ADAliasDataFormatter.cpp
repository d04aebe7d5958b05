#include "ADAliasDataFormatter.h"

#include "CUAlias.h"

#include "shared/KZLocalizedString.h"

#include <QFileInfo>

namespace {

std::optional<QByteArray> failWith(QString *error, const QString &message)
{
    if (error)
        *error = message;
    return std::nullopt;
}

} // namespace

QString ADAliasDataFormatter::localizedDataTypeName() const
{
    return KZLocalizedStringWithID(91, QStringLiteral("Alias"));
}

QString ADAliasDataFormatter::pathForResolvableData(const QByteArray &data, QString *error) const
{
    const CUAlias alias(data);
    const QString path = alias.aliasPath();
    if (!path.isNull())
        return path;
    if (error)
        *error = alias.isValid()
                     ? KZLocalizedStringWithID(
                           95, QStringLiteral("No path could be determined from the alias record"))
                     : alias.errorString();
    return QString();
}

std::optional<QByteArray> ADAliasDataFormatter::resolvableDataForPath(const QString &path,
                                                                      QString *error) const
{
    if (!QFileInfo::exists(path))
        return failWith(
            error, KZStringWithFormat(KZLocalizedStringWithID(
                                          94, QStringLiteral("No file exists at the path “%@”")),
                                      {path}));
    const CUAlias alias = CUAlias::aliasWithPath(path);
    if (!alias.isValid())
        return failWith(error, alias.errorString());
    if (alias.aliasData().isEmpty())
        return failWith(error,
                        KZLocalizedStringWithID(92, QStringLiteral("Could not create alias data")));
    return alias.aliasData();
}

std::optional<ADResolvableDataFormatter::ResourceValues>
ADAliasDataFormatter::resourceValuesForResolvableData(const QByteArray &) const
{
    return std::nullopt;
}
