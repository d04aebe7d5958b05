#include "CUAlias.h"

#include "KZByteView.h"
#include "KZStringEncoding.h"

#include "shared/KZDataAdditions.h"
#include "shared/KZLocalizedString.h"

#include <QFileInfo>
#include <QStorageInfo>
#include <QtEndian>

#include <sys/stat.h>

#include <cerrno>
#include <cstring>

namespace {

// Seconds from 1904-01-01, the record's epoch, to 2001-01-01.
constexpr double kSeconds1904To2001 = 3061152000.0;

constexpr qsizetype kVersion2Header = 150;
constexpr qsizetype kVersion3Header = 58;
constexpr qsizetype kVolumeNameCapacity = 27;
constexpr qsizetype kTargetNameCapacity = 63;

enum Tag : qint16
{
    ParentFolderName = 0,
    DirectoryIDs = 1,
    CarbonPath = 2,
    UnicodeTargetName = 14,
    UnicodeVolumeName = 15,
    HighResolutionVolumeDate = 16,
    HighResolutionTargetDate = 17,
    PosixPath = 18,
    PosixMountPoint = 19,
    End = -1,
};

// Names in records are UTF-8 on later systems and Mac OS Roman on earlier ones.
QString recordText(QByteArrayView bytes)
{
    if (std::optional<QString> text = stringValue(bytes))
        return *text;
    return KZStringEncoding::decode(bytes, KZStringEncoding::MacOSRoman).value_or(QString());
}

double lowResolutionDate(quint32 seconds)
{
    return seconds == 0 ? std::numeric_limits<double>::quiet_NaN()
                        : double(seconds) - kSeconds1904To2001;
}

double highResolutionDate(quint64 units)
{
    return units == 0 ? std::numeric_limits<double>::quiet_NaN()
                      : double(units) / 65536.0 - kSeconds1904To2001;
}

// --- writing ---------------------------------------------------------------------

void appendBigEndian16(QByteArray &out, quint16 value)
{
    char bytes[2];
    qToBigEndian(value, bytes);
    out.append(bytes, 2);
}

void appendBigEndian32(QByteArray &out, quint32 value)
{
    char bytes[4];
    qToBigEndian(value, bytes);
    out.append(bytes, 4);
}

// A Pascal string of `capacity` characters in a field one byte longer.
void appendPascalString(QByteArray &out, const QString &text, qsizetype capacity)
{
    QByteArray bytes =
        KZStringEncoding::encode(QString(text).replace(u':', u'/'), KZStringEncoding::MacOSRoman)
            .value_or(QByteArray(text.size(), '?'))
            .left(capacity);
    out.append(char(bytes.size()));
    out.append(bytes);
    out.append(QByteArray(capacity - bytes.size(), '\0'));
}

void appendTag(QByteArray &out, qint16 tag, const QByteArray &value)
{
    appendBigEndian16(out, quint16(tag));
    appendBigEndian16(out, quint16(value.size()));
    out.append(value);
    if (value.size() % 2 != 0)
        out.append('\0');
}

QByteArray unicodeName(const QString &name)
{
    QByteArray value;
    appendBigEndian16(value, quint16(name.size()));
    for (const QChar c : name)
        appendBigEndian16(value, c.unicode());
    return value;
}

quint32 dateSince1904(const QDateTime &when)
{
    if (!when.isValid())
        return 0;
    return quint32(when.toSecsSinceEpoch() + qint64(kSeconds1904To2001) - 978307200);
}

} // namespace

CUAlias::CUAlias(const QByteArray &data) : _data(data)
{
    read();
}

bool CUAlias::fail(qsizetype offset, const QString &reason)
{
    _error =
        KZLocalizedStringWithFormat(4020, QStringLiteral("Not a valid alias record: %@ (byte %@)"),
                                    {reason, QString::number(offset)});
    return false;
}

bool CUAlias::read()
{
    const KZByteView view(_data);
    const std::optional<quint16> size = view.bigEndian<quint16>(4);
    const std::optional<quint16> version = view.bigEndian<quint16>(6);
    if (!size || !version)
        return fail(view.size(),
                    KZLocalizedStringWithID(4021, QStringLiteral("it is shorter than its header")));
    _version = *version;
    if (_version != 2 && _version != 3)
        return fail(6, KZLocalizedStringWithFormat(
                           4023, QStringLiteral("version %@ is not one that can be read"),
                           {QString::number(_version)}));
    const qsizetype header = _version == 2 ? kVersion2Header : kVersion3Header;
    if (*size < header)
        return fail(4,
                    KZLocalizedStringWithID(4021, QStringLiteral("it is shorter than its header")));
    if (*size > view.size())
        return fail(4, KZLocalizedStringWithFormat(
                           4022,
                           QStringLiteral("its length field says %@ bytes, but only %@ are there"),
                           {QString::number(*size), QString::number(view.size())}));
    _kind = *view.bigEndian<quint16>(8);
    if (_version == 3) {
        _volumeCreationDate = highResolutionDate(*view.bigEndian<quint64>(10));
        _parentDirectoryID = *view.bigEndian<quint32>(24);
        _targetID = *view.bigEndian<quint32>(28);
        _targetCreationDate = highResolutionDate(*view.bigEndian<quint64>(32));
        return readTags(kVersion3Header, *size);
    }
    const quint8 volumeNameLength = quint8(_data[10]);
    const quint8 targetNameLength = quint8(_data[50]);
    if (volumeNameLength > kVolumeNameCapacity)
        return fail(
            10, KZLocalizedStringWithID(4025, QStringLiteral("a name is longer than its field")));
    if (targetNameLength > kTargetNameCapacity)
        return fail(
            50, KZLocalizedStringWithID(4025, QStringLiteral("a name is longer than its field")));
    _volumeName = recordText(*view.bytes(11, volumeNameLength)).replace(u'/', u':');
    _volumeCreationDate = lowResolutionDate(*view.bigEndian<quint32>(38));
    _parentDirectoryID = *view.bigEndian<quint32>(46);
    _targetName = recordText(*view.bytes(51, targetNameLength)).replace(u'/', u':');
    _targetID = *view.bigEndian<quint32>(114);
    _targetCreationDate = lowResolutionDate(*view.bigEndian<quint32>(118));
    return readTags(kVersion2Header, *size);
}

bool CUAlias::readTags(qsizetype offset, qsizetype end)
{
    const KZByteView view(QByteArrayView(_data).first(end));
    while (true) {
        const std::optional<qint16> tag = view.bigEndian<qint16>(offset);
        const std::optional<quint16> length = view.bigEndian<quint16>(offset + 2);
        if (!tag || !length)
            return fail(offset, KZLocalizedStringWithID(
                                    4026, QStringLiteral("the record ends without its end mark")));
        if (*tag == End)
            return true;
        const std::optional<QByteArrayView> value = view.bytes(offset + 4, *length);
        if (!value)
            return fail(offset,
                        KZLocalizedStringWithID(
                            4024, QStringLiteral("a field runs past the end of the record")));
        switch (*tag) {
        case ParentFolderName:
            _parentFolderName = recordText(*value);
            break;
        case DirectoryIDs:
            _directoryIDPath.clear();
            for (qsizetype at = 0; at + 4 <= value->size(); at += 4)
                _directoryIDPath.append(qFromBigEndian<quint32>(value->data() + at));
            break;
        case CarbonPath: // the folder's path, a NUL, the target's name
            _carbonPath = recordText(*value).remove(QChar(0));
            break;
        case UnicodeTargetName:
        case UnicodeVolumeName: {
            const KZByteView name(*value);
            const std::optional<quint16> count = name.bigEndian<quint16>(0);
            const std::optional<QByteArrayView> units =
                name.bytes(2, qint64(count.value_or(0)) * 2);
            if (!count || !units)
                return fail(offset,
                            KZLocalizedStringWithID(
                                4024, QStringLiteral("a field runs past the end of the record")));
            const QString text = KZStringEncoding::decode(*units, KZStringEncoding::UTF16BigEndian)
                                     .value_or(QString());
            (*tag == UnicodeTargetName ? _targetName : _volumeName) = text;
            break;
        }
        case HighResolutionVolumeDate:
        case HighResolutionTargetDate:
            if (const std::optional<quint64> units = KZByteView(*value).bigEndian<quint64>(0))
                (*tag == HighResolutionVolumeDate ? _volumeCreationDate : _targetCreationDate) =
                    highResolutionDate(*units);
            break;
        case PosixPath:
            _posixPath = recordText(*value);
            break;
        case PosixMountPoint:
            _volumeMountPoint = recordText(*value);
            break;
        default:
            break;
        }
        offset += 4 + *length + (*length % 2);
    }
}

QString CUAlias::aliasPath() const
{
    if (!isValid())
        return QString();
    if (!_posixPath.isEmpty()) {
        QString relative = _posixPath;
        while (relative.startsWith(u'/'))
            relative.remove(0, 1);
        QString mount = _volumeMountPoint.isEmpty() ? QStringLiteral("/") : _volumeMountPoint;
        if (!mount.endsWith(u'/'))
            mount += u'/';
        return mount + relative;
    }
    return _carbonPath.isEmpty() ? QString() : _carbonPath;
}

CUAlias CUAlias::aliasWithPath(const QString &path)
{
    CUAlias alias;
    const QFileInfo info(path);
    struct stat status;
    const QByteArray nativePath = QFile::encodeName(info.absoluteFilePath());
    if (::stat(nativePath.constData(), &status) != 0) {
        alias._error = KZStringWithFormat(
            KZLocalizedStringWithID(93, QStringLiteral("%@ (%ld)")),
            {QString::fromLocal8Bit(std::strerror(errno)), QString::number(errno)});
        return alias;
    }
    struct stat parentStatus;
    const QByteArray parentPath = QFile::encodeName(info.absolutePath());
    const quint32 parentID =
        ::stat(parentPath.constData(), &parentStatus) == 0 ? quint32(parentStatus.st_ino) : 0;

    const QStorageInfo volume(info.absoluteFilePath());
    const QString mountPoint = volume.isValid() ? volume.rootPath() : QStringLiteral("/");
    const QString volumeName = volume.isValid() ? volume.displayName() : mountPoint;
    QString relative = info.absoluteFilePath().mid(mountPoint.size());
    if (!relative.startsWith(u'/'))
        relative.prepend(u'/');
    const QString targetName = info.fileName();
    const QString parentName = QFileInfo(info.absolutePath()).fileName();
    const QDateTime created = info.birthTime().isValid() ? info.birthTime() : info.lastModified();

    QByteArray out;
    out.append(4, '\0');       // application's own type
    appendBigEndian16(out, 0); // length, set below
    appendBigEndian16(out, 2); // version
    appendBigEndian16(out, info.isDir() ? 1 : 0);
    appendPascalString(out, volumeName, kVolumeNameCapacity);
    appendBigEndian32(out, 0); // volume creation date: not known here
    out.append(2, '\0');       // file system signature: none of the platform's
    appendBigEndian16(out, 0); // fixed disk
    appendBigEndian32(out, parentID);
    appendPascalString(out, targetName, kTargetNameCapacity);
    appendBigEndian32(out, quint32(status.st_ino));
    appendBigEndian32(out, dateSince1904(created));
    out.append(8, '\0');            // type and creator codes
    appendBigEndian16(out, 0xFFFF); // levels from the alias to the root: unknown
    appendBigEndian16(out, 0xFFFF); // levels from the root to the target: unknown
    appendBigEndian32(out, 0);      // volume attributes
    out.append(2, '\0');            // file system identifier
    out.append(10, '\0');           // reserved

    appendTag(out, ParentFolderName, parentName.toUtf8());
    const QString carbon = (QStringList{volumeName} + relative.mid(1).split(u'/')).join(u':');
    appendTag(out, CarbonPath, carbon.toUtf8());
    appendTag(out, UnicodeTargetName, unicodeName(targetName));
    appendTag(out, UnicodeVolumeName, unicodeName(volumeName));
    appendTag(out, PosixPath, relative.toUtf8());
    appendTag(out, PosixMountPoint, mountPoint.toUtf8());
    appendBigEndian16(out, quint16(End));
    appendBigEndian16(out, 0);
    if (out.size() > 0xFFFF) {
        alias._error = KZLocalizedStringWithID(92, QStringLiteral("Could not create alias data"));
        return alias;
    }
    qToBigEndian(quint16(out.size()), out.data() + 4);
    return CUAlias(out);
}
