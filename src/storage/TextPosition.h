#pragma once

#include <QByteArrayView>
#include <QtGlobal>

/// Line and column (both from 1) of a byte offset in UTF-8 text, counted only
/// when an error is reported. A column counts characters, not bytes; CR LF,
/// CR and LF each end a line.
struct TextPosition
{
    qint64 line = 1;
    qint64 column = 1;

    static TextPosition at(QByteArrayView text, qint64 offset);
    /// Moves on over text[from, to), which follows what this position counted.
    void advance(QByteArrayView text, qint64 from, qint64 to);
};
