#include "PlistSerialization.h"

#include "AsciiReader.h"
#include "AsciiWriter.h"
#include "BinaryReader.h"
#include "BinaryWriter.h"
#include "JsonReader.h"
#include "JsonWriter.h"
#include "XmlReader.h"
#include "XmlWriter.h"

#include <algorithm>

namespace {

// UTF-8 text up to its first character that is not white space, included.
// JSON refuses valid UTF-8 that starts with markup right there, so this much
// gives its reason for the whole, and the XML reader never writes over it.
QByteArrayView untilFirstMarkup(QByteArrayView text)
{
    qsizetype i = text.startsWith("\xEF\xBB\xBF") ? 3 : 0;
    while (i < text.size() &&
           (text[i] == ' ' || text[i] == '\t' || text[i] == '\n' || text[i] == '\r'))
        ++i;
    return text.first(std::min(i + 1, text.size()));
}

} // namespace

ReadResult PlistSerialization::read(QByteArrayView bytes)
{
    if (bytes.isEmpty())
        return ReadResult::failure({QStringLiteral("the data is empty")});
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
    if (BinaryReader::recognizes(bytes) || !XmlReader::recognizes(bytes)) {
        ReadResult plist = read(std::as_const(bytes));
        if (plist)
            return plist;
        ReadResult json = readJson(bytes);
        if (json)
            return json;
        jsonError = json.error;
        return plist;
    }
    // What reads as XML never reads as JSON; only JSON's reason is wanted, and
    // only when XML refuses the bytes too.
    bool wroteOver = false;
    ReadResult xml = XmlReader::read(std::move(bytes), &wroteOver);
    if (!xml)
        jsonError = readJson(wroteOver ? untilFirstMarkup(bytes) : QByteArrayView(bytes)).error;
    return xml;
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
