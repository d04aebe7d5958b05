#pragma once

#include "shared/ADTypes.h"
#include "shared/KZError.h"
#include "shared/PlistValue.h"

#include <QByteArray>
#include <QString>

#include <optional>

/// The one route between property list files and plain values, for the tree,
/// the documents and the command line tool alike. Reading takes the whole
/// file, tries the property list formats and then JSON, and names the file by
/// its full path in the message when nothing reads it. Writing goes through
/// `SafeFileWriter`: it is atomic, leaves the old file as it was on any
/// failure, and keeps the file's permissions, links and extended attributes.
/// Any thread.
class PlistFileIO
{
public:
    /// The file's value with mutable containers, or none; `format` (may be
    /// null) gets the format or -1, `error` (may be null) the reason.
    static PlistValue readPlistFromFile(const QString &path, bool authorizeIfNecessary,
                                        ADPlistFormat *format, std::optional<KZError> *error);
    /// The same for bytes already in memory; `path` names them in the message as given.
    static PlistValue readPlistFromData(const QByteArray &data, const QString &path,
                                        ADPlistFormat *format, std::optional<KZError> *error);

    /// What reading bytes without a name gives: the value or none, the format
    /// when a property list format read them (-1 for JSON and on failure), and
    /// JSON's reason when nothing did.
    struct DataRead
    {
        PlistValue value;
        ADPlistFormat plistFormat = ADPlistFormatUnknown;
        QString errorString;
    };
    static DataRead readPlistData(const QByteArray &data);

    static std::optional<KZError> writePlist(const PlistValue &plist, const QString &path,
                                             ADPlistFormat format, bool humanReadable);

    /// An error of reading a file, with `reason` as its text.
    static KZError readError(const QString &reason);
    /// "XML", "Binary", "ASCII" or "JSON"; a null string for any other code.
    static QString displayStringForPlistFormat(ADPlistFormat format);
};
