#include "KZStringEncoding.h"

#include "shared/KZDataAdditions.h"

#include <QStringDecoder>
#include <QStringEncoder>

#include <array>

namespace {

// Characters of the bytes 0x80 to 0xFF in Mac OS Roman.
constexpr std::array<char16_t, 128> kMacRomanHigh = {
    0x00C4, 0x00C5, 0x00C7, 0x00C9, 0x00D1, 0x00D6, 0x00DC, 0x00E1, 0x00E0, 0x00E2, 0x00E4, 0x00E3,
    0x00E5, 0x00E7, 0x00E9, 0x00E8, 0x00EA, 0x00EB, 0x00ED, 0x00EC, 0x00EE, 0x00EF, 0x00F1, 0x00F3,
    0x00F2, 0x00F4, 0x00F6, 0x00F5, 0x00FA, 0x00F9, 0x00FB, 0x00FC, 0x2020, 0x00B0, 0x00A2, 0x00A3,
    0x00A7, 0x2022, 0x00B6, 0x00DF, 0x00AE, 0x00A9, 0x2122, 0x00B4, 0x00A8, 0x2260, 0x00C6, 0x00D8,
    0x221E, 0x00B1, 0x2264, 0x2265, 0x00A5, 0x00B5, 0x2202, 0x2211, 0x220F, 0x03C0, 0x222B, 0x00AA,
    0x00BA, 0x03A9, 0x00E6, 0x00F8, 0x00BF, 0x00A1, 0x00AC, 0x221A, 0x0192, 0x2248, 0x2206, 0x00AB,
    0x00BB, 0x2026, 0x00A0, 0x00C0, 0x00C3, 0x00D5, 0x0152, 0x0153, 0x2013, 0x2014, 0x201C, 0x201D,
    0x2018, 0x2019, 0x00F7, 0x25CA, 0x00FF, 0x0178, 0x2044, 0x20AC, 0x2039, 0x203A, 0xFB01, 0xFB02,
    0x2021, 0x00B7, 0x201A, 0x201E, 0x2030, 0x00C2, 0x00CA, 0x00C1, 0x00CB, 0x00C8, 0x00CD, 0x00CE,
    0x00CF, 0x00CC, 0x00D3, 0x00D4, 0xF8FF, 0x00D2, 0x00DA, 0x00DB, 0x00D9, 0x0131, 0x02C6, 0x02DC,
    0x00AF, 0x02D8, 0x02D9, 0x02DA, 0x00B8, 0x02DD, 0x02DB, 0x02C7};

// Characters of the bytes 0x80 to 0x9F in Windows code page 1252; 0 where it has none.
constexpr std::array<char16_t, 32> kWindows1252High = {
    0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0,      0x017D, 0,      0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};

// A single-byte encoding: the character of each byte, 0 for a byte it does not define.
char16_t singleByteCharacter(quint64 encoding, uchar byte)
{
    if (byte < 0x80)
        return byte;
    switch (encoding) {
    case KZStringEncoding::ISOLatin1:
        return byte;
    case KZStringEncoding::WindowsCP1252:
        return byte < 0xA0 ? kWindows1252High[byte - 0x80] : byte;
    case KZStringEncoding::MacOSRoman:
        return kMacRomanHigh[byte - 0x80];
    default:
        return 0;
    }
}

bool isSingleByte(quint64 encoding)
{
    return encoding == KZStringEncoding::ASCII || encoding == KZStringEncoding::ISOLatin1 ||
           encoding == KZStringEncoding::WindowsCP1252 || encoding == KZStringEncoding::MacOSRoman;
}

std::optional<QString> decodeSingleByte(QByteArrayView bytes, quint64 encoding)
{
    QString text(bytes.size(), Qt::Uninitialized);
    QChar *out = text.data();
    for (const char byte : bytes) {
        const char16_t c = singleByteCharacter(encoding, uchar(byte));
        if (c == 0 && byte != 0)
            return std::nullopt;
        *out++ = QChar(c);
    }
    return text;
}

std::optional<QByteArray> encodeSingleByte(const QString &text, quint64 encoding)
{
    QByteArray bytes;
    bytes.reserve(text.size());
    for (const QChar c : text) {
        if (c.unicode() < 0x80) {
            bytes.append(char(c.unicode()));
            continue;
        }
        int found = -1;
        for (int byte = 0x80; byte < 0x100 && found < 0; ++byte) {
            if (singleByteCharacter(encoding, uchar(byte)) == c.unicode())
                found = byte;
        }
        if (found < 0)
            return std::nullopt;
        bytes.append(char(found));
    }
    return bytes;
}

// A high surrogate not followed by a low one, or a low one on its own.
bool hasLoneSurrogate(const QString &text)
{
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i].isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate())
            ++i;
        else if (text[i].isSurrogate())
            return true;
    }
    return false;
}

std::optional<QString> decodeUtf16(QByteArrayView bytes, QStringConverter::Encoding order)
{
    if (bytes.size() % 2 != 0)
        return std::nullopt;
    QStringDecoder decoder(order, QStringConverter::Flag::Stateless);
    QString text = decoder.decode(bytes);
    if (decoder.hasError() || hasLoneSurrogate(text))
        return std::nullopt;
    return text;
}

std::optional<QByteArray> encodeUtf16(const QString &text, QStringConverter::Encoding order,
                                      bool bom)
{
    QStringEncoder encoder(order, bom ? QStringConverter::Flag::WriteBom
                                      : QStringConverter::Flag::Stateless);
    QByteArray bytes = encoder.encode(text);
    if (encoder.hasError())
        return std::nullopt;
    return bytes;
}

} // namespace

std::optional<QString> KZStringEncoding::decode(QByteArrayView bytes, quint64 encoding)
{
    if (isSingleByte(encoding))
        return decodeSingleByte(bytes, encoding);
    switch (encoding) {
    case UTF8:
        return stringValue(bytes);
    case UTF16:
        if (bytes.startsWith("\xFF\xFE"))
            return decodeUtf16(bytes.sliced(2), QStringConverter::Utf16LE);
        if (bytes.startsWith("\xFE\xFF"))
            return decodeUtf16(bytes.sliced(2), QStringConverter::Utf16BE);
        return decodeUtf16(bytes, QStringConverter::Utf16BE);
    case UTF16BigEndian:
        return decodeUtf16(bytes, QStringConverter::Utf16BE);
    case UTF16LittleEndian:
        return decodeUtf16(bytes, QStringConverter::Utf16LE);
    default:
        return std::nullopt;
    }
}

std::optional<QByteArray> KZStringEncoding::encode(const QString &text, quint64 encoding)
{
    if (isSingleByte(encoding))
        return encodeSingleByte(text, encoding);
    switch (encoding) {
    case UTF8: {
        QStringEncoder encoder(QStringConverter::Utf8, QStringConverter::Flag::Stateless);
        QByteArray bytes = encoder.encode(text);
        if (encoder.hasError())
            return std::nullopt;
        return bytes;
    }
    case UTF16:
        return encodeUtf16(text, QStringConverter::Utf16BE, true);
    case UTF16BigEndian:
        return encodeUtf16(text, QStringConverter::Utf16BE, false);
    case UTF16LittleEndian:
        return encodeUtf16(text, QStringConverter::Utf16LE, false);
    default:
        return std::nullopt;
    }
}

QString KZStringEncoding::name(quint64 encoding)
{
    switch (encoding) {
    case ASCII:
        return QStringLiteral("ASCII");
    case UTF8:
        return QStringLiteral("UTF-8");
    case UTF16:
        return QStringLiteral("UTF-16");
    case MacOSRoman:
        return QStringLiteral("MacOS Roman");
    case ISOLatin1:
        return QStringLiteral("Western (ISO Latin 1)");
    case WindowsCP1252:
        return QStringLiteral("Western (Windows Latin 1)");
    case UTF16BigEndian:
        return QStringLiteral("Unicode (UTF-16BE)");
    case UTF16LittleEndian:
        return QStringLiteral("Unicode (UTF-16LE)");
    default:
        return QStringLiteral("Encoding %1").arg(encoding);
    }
}
