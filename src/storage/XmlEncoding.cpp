#include "XmlEncoding.h"

#include <initializer_list>

namespace {

using Form = UnicodeText::Form;

quint8 byteAt(QByteArrayView bytes, qsizetype i)
{
    return static_cast<quint8>(bytes[i]);
}

bool startsWith(QByteArrayView bytes, std::initializer_list<quint8> prefix)
{
    if (bytes.size() < qsizetype(prefix.size()))
        return false;
    qsizetype i = 0;
    for (const quint8 b : prefix) {
        if (byteAt(bytes, i++) != b)
            return false;
    }
    return true;
}

bool isSpace(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

qsizetype skipSpace(QByteArrayView text, qsizetype i)
{
    while (i < text.size() && isSpace(text[i]))
        ++i;
    return i;
}

} // namespace

XmlEncoding::Sniffed XmlEncoding::sniff(QByteArrayView bytes)
{
    if (startsWith(bytes, {0x00, 0x00, 0xFE, 0xFF}))
        return {Form::Utf32BE, 4};
    if (startsWith(bytes, {0xFF, 0xFE, 0x00, 0x00}))
        return {Form::Utf32LE, 4};
    if (startsWith(bytes, {0xFE, 0xFF}))
        return {Form::Utf16BE, 2};
    if (startsWith(bytes, {0xFF, 0xFE}))
        return {Form::Utf16LE, 2};
    if (startsWith(bytes, {0xEF, 0xBB, 0xBF}))
        return {Form::Utf8, 3};
    if (bytes.size() >= 4 && !bytes[0] && !bytes[1] && !bytes[2] && bytes[3])
        return {Form::Utf32BE, 0};
    if (bytes.size() >= 4 && bytes[0] && !bytes[1] && !bytes[2] && !bytes[3])
        return {Form::Utf32LE, 0};
    if (bytes.size() >= 2 && !bytes[0] && bytes[1])
        return {Form::Utf16BE, 0};
    if (bytes.size() >= 2 && bytes[0] && !bytes[1])
        return {Form::Utf16LE, 0};
    return {Form::Utf8, 0};
}

QByteArray XmlEncoding::asciiPrefix(QByteArrayView bytes, qsizetype limit)
{
    const Sniffed sniffed = sniff(bytes);
    const int width = UnicodeText::unitSize(sniffed.form);
    const auto *p = reinterpret_cast<const quint8 *>(bytes.data());
    QByteArray prefix;
    for (qsizetype i = sniffed.markSize; bytes.size() - i >= width && prefix.size() < limit;
         i += width) {
        const quint32 c = UnicodeText::unitAt(p + i, sniffed.form);
        if (c >= 0x80)
            break;
        prefix.append(char(c));
    }
    return prefix;
}

QByteArrayView XmlEncoding::declared(QByteArrayView text)
{
    qsizetype i = skipSpace(text, 0);
    if (!text.sliced(i).startsWith("<?xml") || text.size() - i < 6 || !isSpace(text[i + 5]))
        return {};
    const qsizetype close = text.indexOf("?>", i);
    const QByteArrayView declaration = text.sliced(i, (close < 0 ? text.size() : close) - i);
    qsizetype at = declaration.indexOf("encoding");
    if (at < 0)
        return {};
    at = skipSpace(declaration, at + 8);
    if (at >= declaration.size() || declaration[at] != '=')
        return {};
    at = skipSpace(declaration, at + 1);
    if (at >= declaration.size() || (declaration[at] != '"' && declaration[at] != '\''))
        return {};
    const qsizetype end = declaration.indexOf(declaration[at], at + 1);
    return end < 0 ? QByteArrayView() : declaration.sliced(at + 1, end - at - 1);
}

bool XmlEncoding::readsAsUtf8(QByteArrayView name)
{
    static const char *const kNames[] = {"utf-8",    "utf8",     "us-ascii", "ascii",
                                         "utf-16",   "utf-16le", "utf-16be", "utf-32",
                                         "utf-32le", "utf-32be"};
    const QByteArray lower = name.toByteArray().toLower();
    for (const char *known : kNames) {
        if (lower == known)
            return true;
    }
    return false;
}
