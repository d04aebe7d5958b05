#pragma once

#include "StorageResult.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

/// Turns the bytes of a text file into checked UTF-8 for the text readers.
///
/// The encoding is found as JSON defines it: a byte-order mark (UTF-8,
/// UTF-16 or UTF-32, either order), else the pattern of zero bytes at the
/// start (an ASCII character first makes UTF-16 or UTF-32 show zeros beside
/// it), else UTF-8. The old-style reader uses the same rule, since strings
/// files are often UTF-16 and sometimes lack the mark.
///
/// UTF-8 input is used where it lies and not checked here: a reader checks
/// the bytes its grammar lets through unseen (strings, comments) as it goes;
/// when a parse fails, `parseError` reports an ill-formed byte first, as if
/// the whole text had been checked before reading. Valid UTF-8 means shortest
/// forms only, no surrogates, no code point above U+10FFFF. UTF-16 and UTF-32
/// are transcoded. A NUL character is refused in every encoding: no text
/// format here allows one outside an escape. Also what the two readers share
/// around their parsers: the entry, how a failure is placed and worded.
/// Stateless; safe on any thread.
class JsonEncoding
{
public:
    /// Where and why a parse of the text failed.
    struct Failure
    {
        qsizetype offset = 0; // in UTF-8 text
        ReadError::Kind kind = ReadError::Kind::None;
        QString message;
    };

    /// The text without its byte-order mark, or where and why it is not text.
    struct Utf8Text
    {
        QByteArray storage;      // holds the UTF-8 when the input was not UTF-8
        QByteArrayView text;     // the whole text, or on error the part before it
        bool transcoded = false; // else `text` lies in the input, `skipped` bytes in
        qsizetype skipped = 0;
        ReadError error; // of kind None when the text is good

        /// The error of a parse that failed, unless the text holds a NUL or an
        /// ill-formed byte, whose error comes first.
        ReadError parseError(const Failure &failure) const;
        /// An error at a UTF-8 offset in `text`, with its line and column.
        ReadError readError(const Failure &failure) const;
    };

    /// `bytes` must outlive the result when it is UTF-8, which is not copied.
    static Utf8Text decode(QByteArrayView bytes);
    /// A parse's failure at `at` in the text from `begin` to `end`. Something
    /// out of place at the end of the text means it was cut short.
    static Failure failure(const char *begin, const char *end, const char *at, ReadError::Kind kind,
                           const QString &message);
    /// For a message at the end of the text, where the innermost open
    /// container began: " (the array opened at line 2, column 3 is not closed)".
    static QString unclosedNote(const char *begin, const char *end, const char *openedAt,
                                QLatin1StringView what);
    /// Decodes `bytes` and reads the text with `Parser(text).parse()`, which
    /// gives a value or none with its `failure()`; an ill-formed byte of the
    /// text is reported before that failure.
    template <typename Parser> static ReadResult read(QByteArrayView bytes, ADPlistFormat format)
    {
        const Utf8Text input = decode(bytes);
        if (input.error.kind != ReadError::Kind::None)
            return ReadResult::failure(input.error);
        Parser parser(input.text);
        PlistValue value = parser.parse();
        if (!value.isNone())
            return ReadResult::success(std::move(value), format);
        return ReadResult::failure(input.parseError(parser.failure()));
    }
    /// What stands at `p`, for the "found ..." of a message: a printable
    /// character in quotes, a control or ill-formed byte by its code, or the
    /// end of the text.
    static QString describe(const char *p, const char *end);
};
