#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QtGlobal>

#include <string>

/// UTF-8, UTF-16 and UTF-32 as the readers and writers meet them: checking,
/// decoding, encoding and transcoding, each done one way for all formats.
/// Well-formed means what Unicode says: the shortest form, no surrogate code
/// points in UTF-8 or UTF-32, a high surrogate in UTF-16 always followed by a
/// low one, nothing above U+10FFFF. Pure functions; safe on any thread.
class UnicodeText
{
public:
    static constexpr int kMaxUtf8Length = 4; // bytes of one code point

    static bool isHighSurrogate(char32_t c) { return c >= 0xD800 && c <= 0xDBFF; }
    static bool isLowSurrogate(char32_t c) { return c >= 0xDC00 && c <= 0xDFFF; }
    static bool isSurrogate(char32_t c) { return c >= 0xD800 && c <= 0xDFFF; }
    static char32_t fromSurrogates(char32_t high, char32_t low)
    {
        return 0x10000 + ((high - 0xD800) << 10) + (low - 0xDC00);
    }

    // --- UTF-8 ------------------------------------------------------------------

    /// The length of the well-formed sequence that starts at `p` (before
    /// `end`), or 0 when none does.
    static int sequenceLength(const char *p, const char *end);
    enum class Nul : quint8
    {
        Allowed,
        Refused, // counts as a flaw, as in text formats that cannot hold one
    };
    /// The offset of the first byte that is not part of well-formed UTF-8
    /// (or is a NUL that `nul` refuses), or -1.
    static qsizetype firstFlaw(QByteArrayView text, Nul nul);
    /// The code point of the well-formed sequence at `p`; moves `p` past it.
    static char32_t decode(const char *&p)
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
    /// Writes the code point `c` (not a surrogate) as UTF-8 at `out`; returns
    /// the end of what was written.
    static char *encode(char32_t c, char *out)
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
    /// Appends the code point `c` as UTF-8.
    template <typename Bytes> static void append(Bytes &out, char32_t c)
    {
        char units[kMaxUtf8Length];
        out.append(units, encode(c, units) - units);
    }

    // --- UTF-16 -----------------------------------------------------------------

    /// Writes well-formed UTF-8 text as UTF-16 at `out` (room for one unit a
    /// byte is enough); returns the end of what was written.
    static char16_t *toUtf16(const char *from, const char *to, char16_t *out);
    /// Appends the code point `c` as one or two UTF-16 units.
    static void appendUtf16(std::u16string &units, char32_t c)
    {
        if (c < 0x10000) {
            units.push_back(char16_t(c));
            return;
        }
        units.push_back(char16_t(0xD800 + ((c - 0x10000) >> 10)));
        units.push_back(char16_t(0xDC00 + ((c - 0x10000) & 0x3FF)));
    }
    /// Appends well-formed UTF-8 text as UTF-16 units.
    static void appendUtf16(std::u16string &units, const char *from, const char *to);
    /// The code point at `p` in UTF-16 units (before `end`); moves `p` past it.
    /// A surrogate that is not part of a pair comes back as itself.
    static char32_t next(const char16_t *&p, const char16_t *end)
    {
        const char32_t c = *p++;
        if (isHighSurrogate(c) && p < end && isLowSurrogate(*p))
            return fromSurrogates(c, *p++);
        return c;
    }

    // --- byte streams of code units -------------------------------------------------

    /// How code units lie in bytes.
    enum class Form : quint8
    {
        Utf8,
        Utf16LE,
        Utf16BE,
        Utf32LE,
        Utf32BE,
    };
    static int unitSize(Form form);
    /// The code unit that starts at `p`, with `unitSize` bytes there.
    static quint32 unitAt(const uchar *p, Form form);

    /// Where transcoding stopped short of the end.
    enum class Flaw : quint8
    {
        None,
        Nul,           // a NUL, where one was refused
        UnpairedHigh,  // a high surrogate without a low one after it
        UnpairedLow,   // a low surrogate without a high one before it
        NotACharacter, // a UTF-32 unit that is a surrogate or beyond U+10FFFF
        PartialUnit,   // bytes left over that make no whole unit
    };
    struct Transcoded
    {
        QByteArray utf8; // the text up to the flaw, if any
        Flaw flaw = Flaw::None;
        quint32 unit = 0; // the unit that is NotACharacter
    };
    /// UTF-16 or UTF-32 units (no byte-order mark) as UTF-8, up to the first flaw.
    static Transcoded toUtf8(QByteArrayView units, Form form, Nul nul);
};
