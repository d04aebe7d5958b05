#pragma once

#include "ADResolvableDataFormatter.h"

/// Alias records (see CUAlias): the path each stores, and a new record for
/// a typed path. Aliases offer no further resource values.
class ADAliasDataFormatter : public ADResolvableDataFormatter
{
    Q_OBJECT
public:
    Q_INVOKABLE ADAliasDataFormatter() = default;

    QString localizedDataTypeName() const override;
    QString pathForResolvableData(const QByteArray &data, QString *error) const override;
    std::optional<QByteArray> resolvableDataForPath(const QString &path,
                                                    QString *error) const override;
    std::optional<ResourceValues>
    resourceValuesForResolvableData(const QByteArray &data) const override;
};
