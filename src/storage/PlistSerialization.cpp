#include "PlistSerialization.h"

#include "AsciiReader.h"
#include "AsciiWriter.h"
#include "BinaryReader.h"
#include "BinaryWriter.h"
#include "JsonReader.h"
#include "JsonWriter.h"
#include "XmlReader.h"
#include "XmlWriter.h"

ReadResult PlistSerialization::read(QByteArrayView bytes)
{
    if (bytes.isEmpty())
        return ReadResult::failure(
            {QStringLiteral("the data is empty"), -1, -1, -1, ReadError::Kind::Empty});
    if (BinaryReader::recognizes(bytes))
        return BinaryReader::read(bytes);
    if (XmlReader::recognizes(bytes))
        return XmlReader::read(bytes);
    return AsciiReader::read(bytes);
}

ReadResult PlistSerialization::read(const QByteArray &bytes)
{
    if (BinaryReader::recognizes(bytes))
        return BinaryReader::read(bytes);
    return read(QByteArrayView(bytes));
}

ReadResult PlistSerialization::readJson(QByteArrayView bytes)
{
    return JsonReader::read(bytes);
}

ReadResult PlistSerialization::readAnyFormat(QByteArray &&bytes, ReadError &jsonError)
{
    const QByteArray taken = std::move(bytes);
    ReadResult plist = read(taken);
    if (plist)
        return plist;
    ReadResult json = readJson(taken);
    if (json)
        return json;
    jsonError = json.error;
    return plist;
}

WriteResult PlistSerialization::write(const PlistValue &value, ADPlistFormat format,
                                      bool humanReadable)
{
    switch (format) {
    case ADPlistFormatXML:
        return XmlWriter::write(value);
    case ADPlistFormatBinary:
        return BinaryWriter::write(value);
    case ADPlistFormatASCII:
        return AsciiWriter::write(value);
    case ADPlistFormatJSON:
        return JsonWriter::write(value, humanReadable);
    default:
        return WriteResult::failure(QStringLiteral("unknown property list format %1").arg(format));
    }
}
