#pragma once

#include "shared/PlistValue.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <utility>
#include <vector>

/// One bookmark record, the platform's newer form for remembering where a
/// file is: a little-endian header, typed items, and tables of contents that
/// map keys to items. Away from its platform a bookmark cannot be resolved,
/// so this reads what it stores (the target's path components, volume,
/// dates and flags) and offers them as the platform's resource values. It
/// also writes a bookmark for a file that exists here.
///
/// Every item is read when the record is, within bounds and a budget: a
/// malformed record gives `isValid()` false with a reason naming the byte
/// where reading stopped, and no input crashes or hangs the reader (items
/// that refer to each other end at the budget). A plain value.
class KZBookmarkData
{
public:
    /// Keys of the standard items.
    enum Key : quint32
    {
        TargetPath = 0x1004,
        TargetIDPath = 0x1005,
        TargetFlags = 0x1010,
        TargetName = 0x1020,
        TargetCreationDate = 0x1040,
        VolumePath = 0x2002,
        VolumeURL = 0x2005,
        VolumeName = 0x2010,
        VolumeUUID = 0x2011,
        VolumeSize = 0x2012,
        VolumeCreationDate = 0x2013,
        VolumeFlags = 0x2020,
        VolumeIsRoot = 0x2030,
        ContainingFolderIndex = 0xC001,
        CreatorUserName = 0xC011,
        CreatorUserID = 0xC012,
        CreationOptions = 0xD010,
        DisplayName = 0xF017,
    };

    /// Reads `data`; check `isValid()`.
    explicit KZBookmarkData(const QByteArray &data);
    /// A bookmark for the file or folder at `path`; invalid, with the
    /// reason, when there is none.
    static KZBookmarkData bookmarkDataWithPath(const QString &path);

    bool isValid() const { return _error.isEmpty(); }
    const QString &errorString() const { return _error; }
    const QByteArray &bookmarkData() const { return _data; }

    /// The item stored under `key` in the first table that has it, as a
    /// plain value (URLs and UUIDs as strings); none when absent.
    PlistValue valueForKey(quint32 key) const;
    /// "/" and the stored path components; null when the bookmark holds none.
    QString path() const;

    /// The names of the resource values a bookmark may answer, as the
    /// platform spells them, in the order the platform lists them.
    static const QStringList &allResourceKeys();
    /// The resource values this bookmark stores, in the order of
    /// `allResourceKeys`: path and name, dates, the target's flags, and
    /// its volume's name, URL, size, dates and flags.
    std::vector<std::pair<QString, PlistValue>> resourceValues() const;

private:
    KZBookmarkData() = default;
    bool read();
    bool fail(qint64 offset, const QString &reason);

    QByteArray _data;
    QString _error;
    std::vector<std::pair<quint32, PlistValue>> _items; // in table order
};
