#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <limits>

/// One alias record, the older of the platform's two forms for remembering
/// where a file is (versions 2 and 3; big-endian, a fixed header and then
/// tagged fields). Away from its platform an alias cannot be resolved, so
/// this reads what the record stores: the volume, the target's names and
/// dates, and above all its paths. It also writes a version 2 record for a
/// file that exists here.
///
/// A malformed record gives `isValid()` false and a reason naming the byte
/// where reading stopped; no input crashes or hangs the reader. A plain value.
class CUAlias
{
public:
    /// Reads `data`; check `isValid()`.
    explicit CUAlias(const QByteArray &data);
    /// A record for the file or folder at `path`; invalid, with the reason,
    /// when there is none or it cannot be described.
    static CUAlias aliasWithPath(const QString &path);

    bool isValid() const { return _error.isEmpty(); }
    /// Why the record could not be read or made; empty when valid.
    const QString &errorString() const { return _error; }
    const QByteArray &aliasData() const { return _data; }

    /// The stored path: the POSIX path joined to its volume's mount point
    /// when the record has them, else its colon-separated path; null when it
    /// holds neither.
    QString aliasPath() const;

    int version() const { return _version; }
    bool isFolder() const { return _kind == 1; }
    const QString &volumeName() const { return _volumeName; }
    const QString &targetName() const { return _targetName; }
    const QString &parentFolderName() const { return _parentFolderName; }
    const QString &carbonPath() const { return _carbonPath; }
    const QString &posixPath() const { return _posixPath; }
    const QString &volumeMountPoint() const { return _volumeMountPoint; }
    /// Seconds since 2001-01-01 UTC; NaN when the record holds none.
    double volumeCreationDate() const { return _volumeCreationDate; }
    double targetCreationDate() const { return _targetCreationDate; }
    quint32 targetID() const { return _targetID; }
    quint32 parentDirectoryID() const { return _parentDirectoryID; }
    const QList<quint32> &directoryIDPath() const { return _directoryIDPath; }

private:
    CUAlias() = default;
    bool read();
    bool readTags(qsizetype offset, qsizetype end);
    bool fail(qsizetype offset, const QString &reason);

    QByteArray _data;
    QString _error;
    int _version = 0;
    int _kind = 0;
    QString _volumeName;
    QString _targetName;
    QString _parentFolderName;
    QString _carbonPath;
    QString _posixPath;
    QString _volumeMountPoint;
    double _volumeCreationDate = std::numeric_limits<double>::quiet_NaN();
    double _targetCreationDate = std::numeric_limits<double>::quiet_NaN();
    quint32 _targetID = 0;
    quint32 _parentDirectoryID = 0;
    QList<quint32> _directoryIDPath;
};
