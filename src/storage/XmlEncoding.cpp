#include "XmlEncoding.h"

#include <cstring>
#include <initializer_list>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace {

using Form = XmlEncoding::Form;

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

int unitSize(Form form)
{
    switch (form) {
    case Form::Utf8:
        return 1;
    case Form::Utf16LE:
    case Form::Utf16BE:
        return 2;
    case Form::Utf32LE:
    case Form::Utf32BE:
        return 4;
    }
    return 1;
}

// The code unit at `i` (a multiple of the unit size; the caller checks that it fits).
quint32 unitAt(const quint8 *p, Form form)
{
    switch (form) {
    case Form::Utf8:
        return p[0];
    case Form::Utf16LE:
        return quint32(p[0]) | quint32(p[1]) << 8;
    case Form::Utf16BE:
        return quint32(p[0]) << 8 | p[1];
    case Form::Utf32LE:
        return quint32(p[0]) | quint32(p[1]) << 8 | quint32(p[2]) << 16 | quint32(p[3]) << 24;
    case Form::Utf32BE:
        return quint32(p[0]) << 24 | quint32(p[1]) << 16 | quint32(p[2]) << 8 | p[3];
    }
    return 0;
}

char *appendUtf8(quint32 c, char *out)
{
    if (c < 0x80) {
        *out++ = char(c);
    } else if (c < 0x800) {
        *out++ = char(0xC0 | (c >> 6));
        *out++ = char(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        *out++ = char(0xE0 | (c >> 12));
        *out++ = char(0x80 | ((c >> 6) & 0x3F));
        *out++ = char(0x80 | (c & 0x3F));
    } else {
        *out++ = char(0xF0 | (c >> 18));
        *out++ = char(0x80 | ((c >> 12) & 0x3F));
        *out++ = char(0x80 | ((c >> 6) & 0x3F));
        *out++ = char(0x80 | (c & 0x3F));
    }
    return out;
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

bool isContinuation(quint8 b)
{
    return (b & 0xC0) == 0x80;
}

// Length of the well-formed sequence at `i` led by a byte of 0x80 or more, or 0.
qsizetype sequenceLength(const quint8 *p, qsizetype left)
{
    const quint8 lead = p[0];
    qsizetype length = 0;
    quint8 low = 0x80, high = 0xBF; // the range of the second byte
    if (lead >= 0xC2 && lead <= 0xDF) {
        length = 2;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        length = 3;
        low = lead == 0xE0 ? 0xA0 : 0x80;  // not overlong
        high = lead == 0xED ? 0x9F : 0xBF; // no surrogates
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        length = 4;
        low = lead == 0xF0 ? 0x90 : 0x80;
        high = lead == 0xF4 ? 0x8F : 0xBF; // at most U+10FFFF
    } else {
        return 0;
    }
    if (left < length || p[1] < low || p[1] > high)
        return 0;
    for (qsizetype k = 2; k < length; ++k) {
        if (!isContinuation(p[k]))
            return 0;
    }
    return length;
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
    const int width = unitSize(sniffed.form);
    const auto *p = reinterpret_cast<const quint8 *>(bytes.data());
    QByteArray prefix;
    for (qsizetype i = sniffed.markSize; bytes.size() - i >= width && prefix.size() < limit;
         i += width) {
        const quint32 c = unitAt(p + i, sniffed.form);
        if (c >= 0x80)
            break;
        prefix.append(char(c));
    }
    return prefix;
}

bool XmlEncoding::toUtf8(QByteArrayView bytes, Sniffed sniffed, QByteArray &out)
{
    const int width = unitSize(sniffed.form);
    const auto *p = reinterpret_cast<const quint8 *>(bytes.data());
    const qsizetype size = bytes.size();
    out.resize((size - sniffed.markSize) / width * 4); // UTF-16 pairs take four bytes too
    char *const begin = out.data();
    char *o = begin;
    qsizetype i = sniffed.markSize;
    bool ok = true;
    for (; size - i >= width; i += width) {
        quint32 c = unitAt(p + i, sniffed.form);
        if (width == 2 && c >= 0xD800 && c <= 0xDBFF && size - i >= 4) {
            const quint32 low = unitAt(p + i + 2, sniffed.form);
            if (low >= 0xDC00 && low <= 0xDFFF) {
                c = 0x10000 + ((c - 0xD800) << 10) + (low - 0xDC00);
                i += 2;
            }
        }
        if ((c >= 0xD800 && c <= 0xDFFF) || c > 0x10FFFF) {
            ok = false;
            break;
        }
        o = appendUtf8(c, o);
    }
    out.resize(o - begin);
    return ok && i == size;
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

qsizetype XmlEncoding::invalidUtf8At(QByteArrayView text)
{
    const auto *p = reinterpret_cast<const quint8 *>(text.data());
    const qsizetype size = text.size();
    qsizetype i = 0;
    while (i < size) {
#ifdef __SSE2__
        while (size - i >= 16) {
            const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i *>(p + i));
            if (_mm_movemask_epi8(v) != 0)
                break;
            i += 16;
        }
        if (i == size)
            break;
#endif
        if (p[i] < 0x80) {
            ++i;
            continue;
        }
        const qsizetype length = sequenceLength(p + i, size - i);
        if (length == 0)
            return i;
        i += length;
    }
    return -1;
}
