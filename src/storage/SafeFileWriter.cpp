#include "SafeFileWriter.h"

#include "shared/KZExtendedAttributes.h"
#include "shared/KZLocalizedString.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr qint64 kWriteErrorCode = 512;
constexpr int kMaxLinks = 40; // as the system's own limit on a path
constexpr int kNameAttempts = 100;
constexpr qint64 kLargestWrite = qint64(1) << 30;

std::atomic<qint64> g_faultAfterBytes{-1};

QString systemReason(int code)
{
    return QString::fromLocal8Bit(std::strerror(code));
}

KZError writeError(const QString &path, const QString &reason)
{
    KZError error(KZErrorDomain, kWriteErrorCode, reason);
    error.setUserInfoValue(QStringLiteral("NSFilePath"), path);
    return error;
}

std::optional<QByteArray> readLink(const QByteArray &path)
{
    QByteArray target(256, Qt::Uninitialized);
    for (;;) {
        const ssize_t length = ::readlink(path.constData(), target.data(), size_t(target.size()));
        if (length < 0)
            return std::nullopt;
        if (length < target.size()) {
            target.truncate(qsizetype(length));
            return target;
        }
        target.resize(target.size() * 2);
    }
}

/// The new file beside the target until it is renamed over it; removed
/// unless it was.
class NewFile
{
public:
    NewFile() = default;
    NewFile(const NewFile &) = delete;
    NewFile &operator=(const NewFile &) = delete;
    ~NewFile()
    {
        if (_fd >= 0)
            ::close(_fd);
        if (!_path.isEmpty())
            ::unlink(_path.constData());
    }

    /// A hidden file named after `target` in its folder, open for writing.
    bool create(const QString &target, mode_t mode, QString *reason)
    {
        const QFileInfo info(target);
        for (int attempt = 0; attempt < kNameAttempts; ++attempt) {
            const QString name =
                QStringLiteral("%1/.%2.%3")
                    .arg(info.absolutePath(), info.fileName())
                    .arg(QRandomGenerator::global()->generate(), 8, 16, QLatin1Char('0'));
            const QByteArray path = QFile::encodeName(name);
            _fd = ::open(path.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
            if (_fd >= 0) {
                _path = path;
                return true;
            }
            if (errno != EEXIST)
                break;
        }
        *reason = systemReason(errno);
        return false;
    }

    int fd() const { return _fd; }

    bool writeAll(const QByteArray &bytes, QString *reason)
    {
        const qint64 fault = g_faultAfterBytes.load();
        qint64 done = 0;
        while (done < bytes.size()) {
            qint64 chunk = std::min(bytes.size() - done, kLargestWrite);
            if (fault >= 0 && done + chunk > fault)
                chunk = fault - done;
            if (chunk <= 0) {
                *reason = systemReason(ENOSPC);
                return false;
            }
            const ssize_t written = ::write(_fd, bytes.constData() + done, size_t(chunk));
            if (written < 0 && errno == EINTR)
                continue;
            if (written < 0) {
                *reason = systemReason(errno);
                return false;
            }
            done += written;
        }
        return true;
    }

    bool finish(QString *reason)
    {
        const int fd = std::exchange(_fd, -1);
        if (::fsync(fd) != 0 || ::close(fd) != 0) {
            *reason = systemReason(errno);
            return false;
        }
        return true;
    }

    bool renameOver(const QByteArray &target, QString *reason)
    {
        if (::rename(_path.constData(), target.constData()) != 0) {
            *reason = systemReason(errno);
            return false;
        }
        _path.clear();
        return true;
    }

private:
    int _fd = -1;
    QByteArray _path; // empty once renamed
};

// Owner and group first: changing them clears the set-id bits that the mode then puts back.
void keepOwnerAndMode(int fd, const struct stat &old)
{
    struct stat now;
    if (::fstat(fd, &now) == 0 && (now.st_uid != old.st_uid || now.st_gid != old.st_gid)) {
        if (::fchown(fd, old.st_uid, old.st_gid) != 0)
            (void)::fchown(fd, uid_t(-1), old.st_gid); // a user may still give away the group
    }
    (void)::fchmod(fd, old.st_mode & 07777);
}

// The rename is only lasting once the folder is on the disk too.
void syncFolder(const QString &target)
{
    const int fd = ::open(QFile::encodeName(QFileInfo(target).absolutePath()).constData(),
                          O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0)
        return;
    (void)::fsync(fd);
    ::close(fd);
}

} // namespace

std::optional<KZError> SafeFileWriter::write(const QString &path, const QByteArray &bytes)
{
    QString reason;
    const std::optional<QString> target = resolvedTarget(path, &reason);
    if (!target)
        return writeError(path, reason);
    const QByteArray targetName = QFile::encodeName(*target);
    struct stat old;
    const bool exists = ::stat(targetName.constData(), &old) == 0;
    if (!exists && errno != ENOENT)
        return writeError(path, systemReason(errno));
    if (exists && !S_ISREG(old.st_mode))
        return writeError(path, KZLocalizedStringWithID(7100, QStringLiteral("Not a plain file")));
    if (exists && ::access(targetName.constData(), W_OK) != 0)
        return writeError(path, systemReason(errno));

    // A file that exists is kept private until it has the old file's mode; a
    // new one takes the user's usual mode (the system applies the umask).
    NewFile file;
    if (!file.create(*target, exists ? 0600 : 0666, &reason))
        return writeError(path, reason);
    if (exists) {
        keepOwnerAndMode(file.fd(), old);
        if (!KZExtendedAttributes::copyAll(*target, file.fd(), &reason))
            return writeError(path, reason);
    }
    if (!file.writeAll(bytes, &reason) || !file.finish(&reason) ||
        !file.renameOver(targetName, &reason))
        return writeError(path, reason);
    syncFolder(*target);
    return std::nullopt;
}

std::optional<QString> SafeFileWriter::resolvedTarget(const QString &path, QString *reason)
{
    QString current = QFileInfo(path).absoluteFilePath();
    for (int hops = 0; hops <= kMaxLinks; ++hops) {
        const QByteArray name = QFile::encodeName(current);
        struct stat info;
        if (::lstat(name.constData(), &info) != 0) {
            if (errno == ENOENT)
                return current; // a new file, or the missing end of a link
            *reason = systemReason(errno);
            return std::nullopt;
        }
        if (!S_ISLNK(info.st_mode))
            return current;
        const std::optional<QByteArray> link = readLink(name);
        if (!link) {
            *reason = systemReason(errno);
            return std::nullopt;
        }
        const QString next = QFile::decodeName(*link);
        current =
            QDir::isRelativePath(next) ? QFileInfo(current).absolutePath() + u'/' + next : next;
    }
    *reason = systemReason(ELOOP);
    return std::nullopt;
}

void SafeFileWriter::injectFaultAfterBytes(qint64 bytes)
{
    g_faultAfterBytes.store(bytes);
}
