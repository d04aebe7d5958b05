#include "KZFileStamp.h"

#include <QFile>

#include <sys/stat.h>

KZFileStamp KZFileStamp::ofFile(const QString &path)
{
    struct stat info;
    if (::stat(QFile::encodeName(path).constData(), &info) != 0)
        return {};
    return {true, qint64(info.st_mtim.tv_sec) * 1000000000 + info.st_mtim.tv_nsec,
            qint64(info.st_size), quint64(info.st_dev), quint64(info.st_ino)};
}
