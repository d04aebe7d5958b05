#include "ADBookmarkDataFormatter.h"

#include "KZBookmarkData.h"

#include "shared/KZLocalizedString.h"

QString ADBookmarkDataFormatter::localizedDataTypeName() const
{
    return KZLocalizedStringWithID(96, QStringLiteral("Bookmark"));
}

QString ADBookmarkDataFormatter::pathForResolvableData(const QByteArray &data, QString *error) const
{
    const KZBookmarkData bookmark(data);
    const QString path = bookmark.path();
    if (!path.isNull())
        return path;
    if (error)
        *error =
            bookmark.isValid()
                ? KZLocalizedStringWithID(
                      4040, QStringLiteral("The bookmark could not be resolved: it holds no path"))
                : bookmark.errorString();
    return QString();
}

std::optional<QByteArray> ADBookmarkDataFormatter::resolvableDataForPath(const QString &path,
                                                                         QString *error) const
{
    const KZBookmarkData bookmark = KZBookmarkData::bookmarkDataWithPath(path);
    if (!bookmark.isValid()) {
        if (error)
            *error = bookmark.errorString();
        return std::nullopt;
    }
    return bookmark.bookmarkData();
}

std::optional<ADResolvableDataFormatter::ResourceValues>
ADBookmarkDataFormatter::resourceValuesForResolvableData(const QByteArray &data) const
{
    const KZBookmarkData bookmark(data);
    if (!bookmark.isValid())
        return std::nullopt;
    return bookmark.resourceValues();
}
