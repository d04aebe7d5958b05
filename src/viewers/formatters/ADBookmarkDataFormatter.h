#pragma once

#include "ADResolvableDataFormatter.h"

/// Bookmark records (see KZBookmarkData): the path each stores, which a
/// bookmark to a file that no longer exists still shows, a new bookmark for
/// a typed path, and the resource values a bookmark carries.
class ADBookmarkDataFormatter : public ADResolvableDataFormatter
{
    Q_OBJECT
public:
    Q_INVOKABLE ADBookmarkDataFormatter() = default;

    QString localizedDataTypeName() const override;
    QString pathForResolvableData(const QByteArray &data, QString *error) const override;
    std::optional<QByteArray> resolvableDataForPath(const QString &path,
                                                    QString *error) const override;
    std::optional<ResourceValues>
    resourceValuesForResolvableData(const QByteArray &data) const override;
};
