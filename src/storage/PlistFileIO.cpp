#include "PlistFileIO.h"

#include "PlistSerialization.h"
#include "SafeFileWriter.h"

#include "shared/HugePages.h"
#include "shared/KZLocalizedString.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>

#include <unistd.h>

namespace {

constexpr qint64 kParseErrorCode = 3840;
constexpr qint64 kReadErrorCode = 256;
constexpr qint64 kWriteErrorCode = 512;

KZError parseError(const QString &path, const QString &plistReason, const QString &jsonReason)
{
    const QString format = KZLocalizedStringWithID(
        109, QStringLiteral("The file %@ could not be opened because an error occurred parsing the "
                            "file.\n\nPlist parse error: %@\n\nJSON parse error: %@"));
    KZError error(KZErrorDomain, kParseErrorCode,
                  KZStringWithFormat(format, {path, plistReason, jsonReason}));
    error.setUserInfoValue(QStringLiteral("NSFilePath"), path);
    return error;
}

struct FileBytes
{
    QByteArray bytes;
    std::optional<KZError> error;
};

// The bytes of an open file. A big buffer gets huge pages before it is
// filled: large binary data may share it.
QByteArray readAllOf(QFile &file)
{
    const qint64 size = file.size();
    if (size <= 0)
        return file.readAll(); // empty, or no regular file
    QByteArray bytes = HugePages::buffer(size);
    const qint64 read = file.read(bytes.data(), size);
    bytes.truncate(std::max<qint64>(read, 0));
    if (read == size)
        bytes += file.readAll(); // what was added since the size was taken
    return bytes;
}

// The whole file, or no bytes at all when the user may not read it (the
// parsers then refuse the empty input).
FileBytes readWholeFile(const QString &path)
{
    if (::access(QFile::encodeName(path).constData(), R_OK) != 0)
        return {};
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {{}, PlistFileIO::readError(file.errorString())};
    QByteArray bytes = readAllOf(file);
    if (file.error() != QFileDevice::NoError)
        return {{}, PlistFileIO::readError(file.errorString())};
    return {std::move(bytes), std::nullopt};
}

template <typename T> void fill(T *out, T value)
{
    if (out)
        *out = std::move(value);
}

// Reads bytes no one else needs, which large binary data may then share.
PlistValue readPlistTaking(QByteArray &&data, const QString &path, ADPlistFormat *format,
                           std::optional<KZError> *error)
{
    fill(format, ADPlistFormatUnknown);
    ReadError jsonError;
    ReadResult plist = PlistSerialization::readAnyFormat(std::move(data), jsonError);
    if (plist) {
        fill(format, plist.format);
        return plist.value;
    }
    fill(error, std::optional<KZError>(
                    parseError(path, plist.error.description(), jsonError.description())));
    return {};
}

} // namespace

PlistValue PlistFileIO::readPlistFromFile(const QString &path, bool, ADPlistFormat *format,
                                          std::optional<KZError> *error)
{
    fill(format, ADPlistFormatUnknown);
    FileBytes file = readWholeFile(path);
    if (file.error) {
        fill(error, file.error);
        return {};
    }
    // A relative path says little in a message read elsewhere: name the file in full.
    const QFileInfo info(path);
    return readPlistTaking(std::move(file.bytes),
                           info.isRelative() ? info.absoluteFilePath() : path, format, error);
}

PlistValue PlistFileIO::readPlistFromData(const QByteArray &data, const QString &path,
                                          ADPlistFormat *format, std::optional<KZError> *error)
{
    return readPlistTaking(QByteArray(data), path, format, error);
}

PlistFileIO::DataRead PlistFileIO::readPlistData(const QByteArray &data)
{
    ReadError jsonError;
    ReadResult read = PlistSerialization::readAnyFormat(QByteArray(data), jsonError);
    DataRead result;
    if (!read) {
        result.errorString = jsonError.description();
        return result;
    }
    // JSON, tried when no property list format reads the bytes, has no format code here.
    if (read.format != ADPlistFormatJSON)
        result.plistFormat = read.format;
    result.value = std::move(read.value);
    return result;
}

std::optional<KZError> PlistFileIO::writePlist(const PlistValue &plist, const QString &path,
                                               ADPlistFormat format, bool humanReadable)
{
    const WriteResult written = PlistSerialization::write(plist, format, humanReadable);
    if (!written)
        return KZError(KZErrorDomain, kWriteErrorCode, written.error);
    return SafeFileWriter::write(path, written.data);
}

KZError PlistFileIO::readError(const QString &reason)
{
    return KZError(KZErrorDomain, kReadErrorCode, reason);
}

QString PlistFileIO::displayStringForPlistFormat(ADPlistFormat format)
{
    switch (format) {
    case ADPlistFormatXML:
        return KZLocalizedStringWithID(103, QStringLiteral("XML"));
    case ADPlistFormatASCII:
        return KZLocalizedStringWithID(104, QStringLiteral("ASCII"));
    case ADPlistFormatBinary:
        return KZLocalizedStringWithID(105, QStringLiteral("Binary"));
    case ADPlistFormatJSON:
        return KZLocalizedStringWithID(106, QStringLiteral("JSON"));
    default:
        return QString();
    }
}
