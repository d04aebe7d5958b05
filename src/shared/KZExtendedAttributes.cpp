#include "KZExtendedAttributes.h"

#include <QFile>

#include <cerrno>
#include <cstring>

#include <sys/xattr.h>

namespace {

// Asks a size-then-fill call for its bytes, retrying when the value grows between the two calls.
template <typename Call> std::optional<QByteArray> readSized(Call &&call)
{
    for (int attempt = 0; attempt < 4; ++attempt) {
        const ssize_t size = call(nullptr, 0);
        if (size < 0)
            return std::nullopt;
        QByteArray bytes(qsizetype(size), Qt::Uninitialized);
        const ssize_t read = call(bytes.data(), size_t(size));
        if (read >= 0) {
            bytes.truncate(qsizetype(read));
            return bytes;
        }
        if (errno != ERANGE)
            return std::nullopt;
    }
    return std::nullopt;
}

QStringList splitNames(const QByteArray &list)
{
    QStringList names;
    for (const QByteArray &name : list.split('\0')) {
        if (!name.isEmpty())
            names << QString::fromUtf8(name);
    }
    return names;
}

} // namespace

std::optional<QByteArray> KZExtendedAttributes::value(const QString &path, const QString &name)
{
    const QByteArray file = QFile::encodeName(path);
    const QByteArray attribute = name.toUtf8();
    return readSized([&](char *buffer, size_t size) {
        return ::getxattr(file.constData(), attribute.constData(), buffer, size);
    });
}

bool KZExtendedAttributes::setValue(const QString &path, const QString &name,
                                    const QByteArray &value)
{
    return ::setxattr(QFile::encodeName(path).constData(), name.toUtf8().constData(),
                      value.constData(), size_t(value.size()), 0) == 0;
}

QStringList KZExtendedAttributes::names(const QString &path)
{
    const QByteArray file = QFile::encodeName(path);
    const std::optional<QByteArray> list = readSized(
        [&](char *buffer, size_t size) { return ::listxattr(file.constData(), buffer, size); });
    return list ? splitNames(*list) : QStringList();
}

bool KZExtendedAttributes::copyAll(const QString &fromPath, int toFd, QString *error)
{
    for (const QString &name : names(fromPath)) {
        const bool mustKeep = name.startsWith(QLatin1StringView("user."));
        const std::optional<QByteArray> bytes = value(fromPath, name);
        const QByteArray attribute = name.toUtf8();
        const bool copied = bytes && ::fsetxattr(toFd, attribute.constData(), bytes->constData(),
                                                 size_t(bytes->size()), 0) == 0;
        if (copied || !mustKeep)
            continue;
        if (error)
            *error =
                QStringLiteral("%1: %2").arg(name, QString::fromLocal8Bit(std::strerror(errno)));
        return false;
    }
    return true;
}
