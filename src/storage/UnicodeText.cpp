#include "UnicodeText.h"

#include "SimdText.h"

#include <QtEndian>

namespace {

bool isContinuation(uchar b)
{
    return (b & 0xC0) == 0x80;
}

} // namespace

int UnicodeText::sequenceLength(const char *p, const char *end)
{
    const auto *u = reinterpret_cast<const uchar *>(p);
    const uchar lead = u[0];
    int length = 0;
    uchar low = 0x80, high = 0xBF; // the range of the second byte
    if (lead >= 0xC2 && lead <= 0xDF) {
        length = 2;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        length = 3;
        low = lead == 0xE0 ? 0xA0 : 0x80;  // not overlong
        high = lead == 0xED ? 0x9F : 0xBF; // no surrogates
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        length = 4;
        low = lead == 0xF0 ? 0x90 : 0x80;  // not overlong
        high = lead == 0xF4 ? 0x8F : 0xBF; // at most U+10FFFF
    } else {
        return 0;
    }
    if (end - p < length || u[1] < low || u[1] > high)
        return 0;
    for (int k = 2; k < length; ++k) {
        if (!isContinuation(u[k]))
            return 0;
    }
    return length;
}

qsizetype UnicodeText::firstFlaw(QByteArrayView text, Nul nul)
{
    const char *const begin = text.data();
    const char *const end = begin + text.size();
    const char *p = begin;
    for (;;) {
        p = SimdText::skipAscii(p, end, nul == Nul::Refused);
        if (p == end)
            return -1;
        const int length = *p == 0 ? 0 : sequenceLength(p, end);
        if (length == 0)
            return p - begin;
        p += length;
    }
}

char16_t *UnicodeText::toUtf16(const char *from, const char *to, char16_t *out)
{
    while (from < to) {
        const char32_t c = decode(from);
        if (c < 0x10000) {
            *out++ = char16_t(c);
        } else {
            *out++ = char16_t(0xD800 + ((c - 0x10000) >> 10));
            *out++ = char16_t(0xDC00 + ((c - 0x10000) & 0x3FF));
        }
    }
    return out;
}

void UnicodeText::appendUtf16(std::u16string &units, const char *from, const char *to)
{
    while (from < to) {
        if (uchar(*from) < 0x80)
            units.push_back(char16_t(uchar(*from++)));
        else
            appendUtf16(units, decode(from));
    }
}

int UnicodeText::unitSize(Form form)
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

quint32 UnicodeText::unitAt(const uchar *p, Form form)
{
    switch (form) {
    case Form::Utf8:
        return p[0];
    case Form::Utf16LE:
        return qFromLittleEndian<quint16>(p);
    case Form::Utf16BE:
        return qFromBigEndian<quint16>(p);
    case Form::Utf32LE:
        return qFromLittleEndian<quint32>(p);
    case Form::Utf32BE:
        return qFromBigEndian<quint32>(p);
    }
    return 0;
}

UnicodeText::Transcoded UnicodeText::toUtf8(QByteArrayView units, Form form, Nul nul)
{
    const int width = unitSize(form);
    const auto *p = reinterpret_cast<const uchar *>(units.data());
    const qsizetype size = units.size();
    Transcoded result;
    // A UTF-16 pair takes four bytes too, so four a unit is always enough.
    result.utf8.resize(size / width * kMaxUtf8Length);
    char *const begin = result.utf8.data();
    char *out = begin;
    qsizetype i = 0;
    for (; size - i >= width; i += width) {
        char32_t c = unitAt(p + i, form);
        if (width == 2 && isHighSurrogate(c)) {
            const char32_t low = size - i >= 4 ? unitAt(p + i + 2, form) : 0;
            if (!isLowSurrogate(low)) {
                result.flaw = Flaw::UnpairedHigh;
                break;
            }
            c = fromSurrogates(c, low);
            i += 2;
        } else if (width == 2 && isLowSurrogate(c)) {
            result.flaw = Flaw::UnpairedLow;
            break;
        } else if (c > 0x10FFFF || isSurrogate(c)) {
            result.flaw = Flaw::NotACharacter;
            result.unit = quint32(c);
            break;
        } else if (c == 0 && nul == Nul::Refused) {
            result.flaw = Flaw::Nul;
            break;
        }
        out = encode(c, out);
    }
    if (result.flaw == Flaw::None && i != size)
        result.flaw = Flaw::PartialUnit;
    result.utf8.truncate(out - begin);
    return result;
}
