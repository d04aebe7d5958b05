#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <optional>

/// The text encodings data can be shown in, by the platform's encoding
/// numbers (ASCII 1, UTF-8 4, UTF-16 10, Mac OS Roman 30, ...). Decoding is
/// strict: bytes that are not valid in the encoding give no text, never
/// replacement characters. Stateless; any thread.
class KZStringEncoding
{
public:
    static constexpr quint64 ASCII = 1;
    static constexpr quint64 UTF8 = 4;
    static constexpr quint64 ISOLatin1 = 5;
    static constexpr quint64 UTF16 = 10; // a byte-order mark, else big-endian
    static constexpr quint64 WindowsCP1252 = 12;
    static constexpr quint64 MacOSRoman = 30;
    static constexpr quint64 UTF16BigEndian = 0x90000100;
    static constexpr quint64 UTF16LittleEndian = 0x94000100;

    static std::optional<QString> decode(QByteArrayView bytes, quint64 encoding);
    /// No bytes when a character has no place in the encoding.
    static std::optional<QByteArray> encode(const QString &text, quint64 encoding);
    /// "ASCII", "UTF-8", "UTF-16", "MacOS Roman", or the encoding's long name.
    static QString name(quint64 encoding);
};
