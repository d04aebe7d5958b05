#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <optional>

/// What the program adds to data: hexadecimal and Base64 text, and text decoding.

/// Lowercase hexadecimal digits, two a byte, nothing between them.
QString hexString(QByteArrayView bytes);

/// Hexadecimal text with a blank after every `padInterval` bytes (none when 0),
/// led by "0x" when asked.
QString hexStringWithBytes(QByteArrayView bytes, int padInterval, bool prepend0x);

/// Bytes from hexadecimal digits in either case; no value for anything else or
/// an odd count of digits.
std::optional<QByteArray> hexStringData(QStringView text);

/// As `hexStringData`, and with `padded` blanks between digits are skipped
/// (a leading "0x" too).
std::optional<QByteArray> hexStringDataWithPadding(QStringView text, bool padded);

/// Bytes from Base64, ignoring blanks and line breaks; no value when the text is not Base64.
std::optional<QByteArray> dataFromBase64String(QStringView text);

/// The bytes decoded as UTF-8, or no value when they are not valid UTF-8.
std::optional<QString> stringValue(QByteArrayView bytes);
