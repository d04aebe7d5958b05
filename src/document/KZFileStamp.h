#pragma once

#include <QString>

/// What a file looked like on disk at one moment: enough to tell later that
/// someone changed it, also within one tick of the clock or by replacing it.
/// A default stamp stands for no file looked at yet.
struct KZFileStamp
{
    bool exists = false;
    qint64 modifiedNanoseconds = 0; // since the epoch
    qint64 size = 0;
    quint64 device = 0;
    quint64 inode = 0;

    /// The file at `path` now, links followed; a stamp that does not exist when there is none.
    static KZFileStamp ofFile(const QString &path);

    friend bool operator==(const KZFileStamp &, const KZFileStamp &) = default;
};
