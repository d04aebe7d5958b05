#pragma once

#include <QList>
#include <QString>

/// A dotted version such as "6.4.2", compared part by part as numbers
/// (missing parts count as 0, so "6.4" equals "6.4.0"). Text after the
/// numbers ("6.4.2-rc1") is ignored. A plain value.
class KZVersionNumber
{
public:
    static KZVersionNumber versionWithString(const QString &text);

    int compare(const KZVersionNumber &other) const;
    bool operator<(const KZVersionNumber &other) const { return compare(other) < 0; }
    bool operator>(const KZVersionNumber &other) const { return compare(other) > 0; }
    bool operator==(const KZVersionNumber &other) const { return compare(other) == 0; }

private:
    QList<quint64> _parts;
};

/// The version of the platform this program runs on, which is Qt's runtime
/// here: what a resource entry that needs a newer platform is compared with.
KZVersionNumber KZSystemVersionNumber();
