#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <optional>

/// Extended attributes of files: named byte values the file system keeps
/// beside a file's contents. Names are the system's own; attributes of ours
/// take the `user.` namespace. A file system without attributes simply keeps
/// none: reading answers nothing and setting answers false. Symbolic links
/// are followed. Any thread.
class KZExtendedAttributes
{
public:
    static std::optional<QByteArray> value(const QString &path, const QString &name);
    static bool setValue(const QString &path, const QString &name, const QByteArray &value);
    static QStringList names(const QString &path);

    /// Puts every attribute of the file at `fromPath` on the open file `toFd`.
    /// Attributes outside `user.` (access lists, security labels) are copied
    /// where the system allows; failing to copy a `user.` attribute fails the
    /// copy, with the reason in `error` (may be null).
    static bool copyAll(const QString &fromPath, int toFd, QString *error);
};
