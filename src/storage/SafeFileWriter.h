#pragma once

#include "shared/KZError.h"

#include <QByteArray>
#include <QString>

#include <optional>

/// Replaces a file's contents in one step, keeping what the user did not
/// touch. The bytes go to a new file beside the old one, which takes the old
/// file's permissions, owner and group (as far as the user may set them) and
/// extended attributes, is flushed to the disk, and is then renamed over the
/// old one. A reader thus sees the old file or the new one, never part of
/// either; on any failure the old file stays as it was and the new one is
/// removed.
///
/// A symbolic link is followed, through a chain of links, to the file it
/// names: that file gets the new contents and the link stays a link. A file
/// the user may not write is refused, although its folder would allow
/// replacing it. The rename makes a new file: other hard links to the old
/// one keep the old contents.
///
/// For tests, a fault can be injected: a write that fails after a given
/// number of bytes, as a full disk would. Any thread.
class SafeFileWriter
{
public:
    static std::optional<KZError> write(const QString &path, const QByteArray &bytes);

    /// The file that a write to `path` replaces: the end of its chain of
    /// symbolic links, made absolute; none (with the reason) for a chain that
    /// loops or cannot be read.
    static std::optional<QString> resolvedTarget(const QString &path, QString *reason);

    /// From now on every write fails after `bytes` bytes of the new file; -1
    /// ends the fault.
    static void injectFaultAfterBytes(qint64 bytes);
};
