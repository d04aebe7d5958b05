#pragma once

#include "StorageResult.h"

#include <QByteArray>
#include <QByteArrayView>

/// The one way between bytes and plain values. Reading tells the formats
/// apart by their content, never by a name: binary by its magic, XML by its
/// first markup, and everything else as the old-style text form (strings files
/// included). JSON is a separate entry, tried by callers after a refusal.
/// Stateless; safe on any thread.
class PlistSerialization
{
public:
    /// Binary, XML or old-style text, as the bytes say.
    static ReadResult read(QByteArrayView bytes);
    /// The same; a binary file's large data values may share `bytes`.
    static ReadResult read(const QByteArray &bytes);
    static ReadResult readJson(QByteArrayView bytes);
    /// `read`, then `readJson` when that refuses: what opening a file does.
    /// Takes the bytes, which large binary data may then share. When both
    /// refuse, the result holds the first reason and `jsonError` the second.
    static ReadResult readAnyFormat(QByteArray &&bytes, ReadError &jsonError);

    /// Writes XML, binary, old-style text or JSON; `humanReadable` matters for
    /// JSON only. Types a format cannot hold are refused with a message.
    static WriteResult write(const PlistValue &value, ADPlistFormat format,
                             bool humanReadable = true);
};
