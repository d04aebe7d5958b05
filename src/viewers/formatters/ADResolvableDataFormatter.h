#pragma once

#include "KZFormatter.h"

#include <utility>
#include <vector>

/// Data that records where a file is (an alias or a bookmark), shown as the
/// path it stores and edited as a path: typing the path of an existing file
/// makes a new record for it. A record that holds no path, or cannot be
/// read, shows why as an error; its data is never changed by showing it.
/// Subclasses read and write one kind of record.
class ADResolvableDataFormatter : public KZFormatter
{
    Q_OBJECT
public:
    using ResourceValues = std::vector<std::pair<QString, PlistValue>>;

    /// What a record is called in text: "Alias", "Bookmark".
    virtual QString localizedDataTypeName() const = 0;
    /// The stored path, or a null string and the reason in `error`.
    virtual QString pathForResolvableData(const QByteArray &data, QString *error) const = 0;
    /// A record for the file at `path`, or none and the reason in `error`.
    virtual std::optional<QByteArray> resolvableDataForPath(const QString &path,
                                                            QString *error) const = 0;
    /// What else the record stores, by the platform's resource key names;
    /// none when the kind of record offers none.
    virtual std::optional<ResourceValues>
    resourceValuesForResolvableData(const QByteArray &data) const = 0;

    std::optional<QString> stringForObjectValue(const PlistValue &value) const override;
    std::optional<QString> editingStringForObjectValue(const PlistValue &value) const override;
    bool getObjectValue(PlistValue *value, const QString &string,
                        QString *errorDescription) const override;
    std::optional<KZStyledText>
    attributedStringForObjectValue(const PlistValue &value) const override;

protected:
    ADResolvableDataFormatter() = default;
};
