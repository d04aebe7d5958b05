#include "JsonEncoding.h"

#include "TextPosition.h"

#include <QtEndian>

#include <cstring>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace {

enum class Encoding
{
    Utf8,
    Utf16LE,
    Utf16BE,
    Utf32LE,
    Utf32BE,
};

struct Detected
{
    Encoding encoding;
    qsizetype bomSize;
};

Detected detect(QByteArrayView bytes)
{
    const auto at = [&bytes](qsizetype i) { return i < bytes.size() ? uchar(bytes[i]) : 0x100; };
    if (at(0) == 0xEF && at(1) == 0xBB && at(2) == 0xBF)
        return {Encoding::Utf8, 3};
    if (at(0) == 0xFF && at(1) == 0xFE && at(2) == 0 && at(3) == 0)
        return {Encoding::Utf32LE, 4};
    if (at(0) == 0 && at(1) == 0 && at(2) == 0xFE && at(3) == 0xFF)
        return {Encoding::Utf32BE, 4};
    if (at(0) == 0xFF && at(1) == 0xFE)
        return {Encoding::Utf16LE, 2};
    if (at(0) == 0xFE && at(1) == 0xFF)
        return {Encoding::Utf16BE, 2};
    if (bytes.size() < 2)
        return {Encoding::Utf8, 0};
    // Without a mark, the first character is taken to be ASCII.
    if (at(0) == 0)
        return {at(1) == 0 && bytes.size() >= 4 ? Encoding::Utf32BE : Encoding::Utf16BE, 0};
    if (at(1) == 0) {
        const bool wide = bytes.size() >= 4 && at(2) == 0 && at(3) == 0;
        return {wide ? Encoding::Utf32LE : Encoding::Utf16LE, 0};
    }
    return {Encoding::Utf8, 0};
}

int wellFormedLength(const uchar *p, const uchar *end)
{
    const uchar lead = p[0];
    const qsizetype left = end - p;
    const auto continuation = [p](int i) { return (p[i] & 0xC0) == 0x80; };
    if (lead >= 0xC2 && lead <= 0xDF)
        return left >= 2 && continuation(1) ? 2 : 0;
    if (lead >= 0xE0 && lead <= 0xEF) {
        if (left < 3 || !continuation(1) || !continuation(2))
            return 0;
        if (lead == 0xE0 && p[1] < 0xA0)
            return 0; // overlong
        if (lead == 0xED && p[1] >= 0xA0)
            return 0; // a surrogate
        return 3;
    }
    if (lead >= 0xF0 && lead <= 0xF4) {
        if (left < 4 || !continuation(1) || !continuation(2) || !continuation(3))
            return 0;
        if (lead == 0xF0 && p[1] < 0x90)
            return 0; // overlong
        if (lead == 0xF4 && p[1] >= 0x90)
            return 0; // above U+10FFFF
        return 4;
    }
    return 0;
}

// Offset of the first byte that is NUL or not well-formed UTF-8, or -1.
qsizetype firstBadUtf8(QByteArrayView text)
{
    const char *begin = text.data();
    const char *end = begin + text.size();
    const char *p = begin;
    while (p < end) {
#ifdef __SSE2__
        const __m128i zero = _mm_setzero_si128();
        while (end - p >= 16) {
            const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i *>(p));
            if (_mm_movemask_epi8(_mm_or_si128(v, _mm_cmpeq_epi8(v, zero))) != 0)
                break;
            p += 16;
        }
        if (p == end)
            break;
#endif
        if (*p == 0)
            return p - begin;
        if (uchar(*p) < 0x80) {
            ++p;
            continue;
        }
        const int length = JsonEncoding::sequenceLength(p, end);
        if (length == 0)
            return p - begin;
        p += length;
    }
    return -1;
}

void appendUtf8(QByteArray &out, char32_t c)
{
    if (c < 0x80) {
        out.append(char(c));
    } else if (c < 0x800) {
        const char units[] = {char(0xC0 | (c >> 6)), char(0x80 | (c & 0x3F))};
        out.append(units, 2);
    } else if (c < 0x10000) {
        const char units[] = {char(0xE0 | (c >> 12)), char(0x80 | ((c >> 6) & 0x3F)),
                              char(0x80 | (c & 0x3F))};
        out.append(units, 3);
    } else {
        const char units[] = {char(0xF0 | (c >> 18)), char(0x80 | ((c >> 12) & 0x3F)),
                              char(0x80 | ((c >> 6) & 0x3F)), char(0x80 | (c & 0x3F))};
        out.append(units, 4);
    }
}

bool isSurrogate(char32_t c)
{
    return c >= 0xD800 && c <= 0xDFFF;
}

JsonEncoding::Utf8Text failure(JsonEncoding::Utf8Text text, const QString &message)
{
    text.text = text.storage;
    text.errorAt = text.storage.size();
    text.error = message;
    return text;
}

JsonEncoding::Utf8Text fromUtf16(QByteArrayView units, bool bigEndian)
{
    JsonEncoding::Utf8Text result;
    result.transcoded = true;
    result.storage.reserve(units.size() / 2);
    const auto *p = reinterpret_cast<const uchar *>(units.data());
    const qsizetype count = units.size() / 2;
    const auto unitAt = [p, bigEndian](qsizetype i) -> char32_t {
        return bigEndian ? qFromBigEndian<quint16>(p + 2 * i)
                         : qFromLittleEndian<quint16>(p + 2 * i);
    };
    for (qsizetype i = 0; i < count; ++i) {
        char32_t c = unitAt(i);
        if (c == 0)
            return failure(std::move(result), QStringLiteral("the text contains a NUL character"));
        if (c >= 0xDC00 && c <= 0xDFFF)
            return failure(std::move(result),
                           QStringLiteral("the UTF-16 text has an unpaired low surrogate"));
        if (c >= 0xD800 && c <= 0xDBFF) {
            const char32_t low = i + 1 < count ? unitAt(i + 1) : 0;
            if (low < 0xDC00 || low > 0xDFFF)
                return failure(std::move(result),
                               QStringLiteral("the UTF-16 text has an unpaired high surrogate"));
            c = 0x10000 + ((c - 0xD800) << 10) + (low - 0xDC00);
            ++i;
        }
        appendUtf8(result.storage, c);
    }
    if (units.size() % 2 != 0)
        return failure(std::move(result), QStringLiteral("the UTF-16 text ends in half a unit"));
    result.text = result.storage;
    return result;
}

JsonEncoding::Utf8Text fromUtf32(QByteArrayView units, bool bigEndian)
{
    JsonEncoding::Utf8Text result;
    result.transcoded = true;
    result.storage.reserve(units.size() / 4);
    const auto *p = reinterpret_cast<const uchar *>(units.data());
    const qsizetype count = units.size() / 4;
    for (qsizetype i = 0; i < count; ++i) {
        const char32_t c =
            bigEndian ? qFromBigEndian<quint32>(p + 4 * i) : qFromLittleEndian<quint32>(p + 4 * i);
        if (c == 0)
            return failure(std::move(result), QStringLiteral("the text contains a NUL character"));
        if (c > 0x10FFFF || isSurrogate(c))
            return failure(std::move(result),
                           QStringLiteral("the UTF-32 text holds 0x%1, which is no character")
                               .arg(quint32(c), 0, 16));
        appendUtf8(result.storage, c);
    }
    if (units.size() % 4 != 0)
        return failure(std::move(result), QStringLiteral("the UTF-32 text ends in part of a unit"));
    result.text = result.storage;
    return result;
}

} // namespace

ReadError JsonEncoding::Utf8Text::parseError(qsizetype offset, const QString &message) const
{
    const qsizetype bad = firstBadUtf8(text);
    if (bad < 0)
        return readError(offset, message);
    return readError(bad, text[bad] == 0
                              ? QStringLiteral("the text contains a NUL character")
                              : QStringLiteral("byte 0x%1 is not valid UTF-8")
                                    .arg(uint(uchar(text[bad])), 2, 16, QLatin1Char('0')));
}

ReadError JsonEncoding::Utf8Text::readError(qsizetype offset, const QString &message) const
{
    const TextPosition position = TextPosition::at(text, offset);
    return {message, transcoded ? -1 : skipped + offset, position.line, position.column};
}

JsonEncoding::Utf8Text JsonEncoding::decode(QByteArrayView bytes)
{
    const Detected detected = detect(bytes);
    const QByteArrayView units = bytes.sliced(detected.bomSize);
    switch (detected.encoding) {
    case Encoding::Utf16LE:
    case Encoding::Utf16BE:
        return fromUtf16(units, detected.encoding == Encoding::Utf16BE);
    case Encoding::Utf32LE:
    case Encoding::Utf32BE:
        return fromUtf32(units, detected.encoding == Encoding::Utf32BE);
    case Encoding::Utf8:
        break;
    }
    Utf8Text result;
    result.skipped = detected.bomSize;
    result.text = units;
    return result;
}

int JsonEncoding::sequenceLength(const char *p, const char *end)
{
    return wellFormedLength(reinterpret_cast<const uchar *>(p),
                            reinterpret_cast<const uchar *>(end));
}

bool JsonEncoding::isValid(const char *from, const char *to)
{
    return firstBadUtf8(QByteArrayView(from, to)) < 0;
}

char32_t JsonEncoding::next(const char *&p)
{
    const auto *u = reinterpret_cast<const uchar *>(p);
    if (u[0] < 0x80) {
        ++p;
        return u[0];
    }
    if (u[0] < 0xE0) {
        p += 2;
        return (char32_t(u[0] & 0x1F) << 6) | (u[1] & 0x3F);
    }
    if (u[0] < 0xF0) {
        p += 3;
        return (char32_t(u[0] & 0x0F) << 12) | (char32_t(u[1] & 0x3F) << 6) | (u[2] & 0x3F);
    }
    p += 4;
    return (char32_t(u[0] & 0x07) << 18) | (char32_t(u[1] & 0x3F) << 12) |
           (char32_t(u[2] & 0x3F) << 6) | (u[3] & 0x3F);
}

void JsonEncoding::appendUtf16(std::u16string &units, char32_t c)
{
    if (c < 0x10000) {
        units.push_back(char16_t(c));
        return;
    }
    units.push_back(char16_t(0xD800 + ((c - 0x10000) >> 10)));
    units.push_back(char16_t(0xDC00 + ((c - 0x10000) & 0x3FF)));
}

void JsonEncoding::appendUtf16(std::u16string &units, const char *from, const char *to)
{
    while (from < to) {
        if (uchar(*from) < 0x80)
            units.push_back(char16_t(uchar(*from++)));
        else
            appendUtf16(units, next(from));
    }
}
