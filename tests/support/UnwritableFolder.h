#pragma once

// A folder that no new file can be put into, not even by the superuser: its
// write permission is taken away, and where that is not enough the file
// system's immutable flag is set. Both are undone when the guard goes.

#include <QFile>
#include <QString>

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

class UnwritableFolder
{
public:
    explicit UnwritableFolder(const QString &path) : _path(QFile::encodeName(path))
    {
        ::chmod(_path.constData(), 0555);
        if (!acceptsFiles())
            return;
        _immutable = setImmutable(true);
    }
    ~UnwritableFolder()
    {
        if (_immutable)
            setImmutable(false);
        ::chmod(_path.constData(), 0755);
    }
    UnwritableFolder(const UnwritableFolder &) = delete;
    UnwritableFolder &operator=(const UnwritableFolder &) = delete;

    /// False where this system lets the user write the folder anyway: skip then.
    bool holds() const { return !acceptsFiles(); }

private:
    bool acceptsFiles() const
    {
        const QByteArray probe = _path + "/.probe";
        const int fd = ::open(probe.constData(), O_WRONLY | O_CREAT | O_EXCL, 0600);
        if (fd < 0)
            return false;
        ::close(fd);
        ::unlink(probe.constData());
        return true;
    }
    bool setImmutable(bool on) const
    {
        const int fd = ::open(_path.constData(), O_RDONLY | O_DIRECTORY);
        if (fd < 0)
            return false;
        int flags = 0;
        bool done = ::ioctl(fd, FS_IOC_GETFLAGS, &flags) == 0;
        flags = on ? flags | FS_IMMUTABLE_FL : flags & ~FS_IMMUTABLE_FL;
        done = done && ::ioctl(fd, FS_IOC_SETFLAGS, &flags) == 0;
        ::close(fd);
        return done;
    }

    QByteArray _path;
    bool _immutable = false;
};
