#pragma once

#include "shared/KZRange.h"

#include <QString>

class QTextDocument;

/// The plain text of a text document, with "\n" between its blocks, and its
/// parts. Unlike `QTextDocument::toPlainText`, no character is replaced (a
/// no-break space stays one): this is the text that gets parsed and saved.
class ADDocumentText
{
public:
    static QString text(const QTextDocument &document);
    /// The length of `text`, without making it.
    static qint64 length(const QTextDocument &document);
    /// The text of a range that lies within the text.
    static QString textInRange(const QTextDocument &document, KZRange range);
    /// Replaces a range within the text, as one edit.
    static void replace(QTextDocument &document, KZRange range, const QString &text);
    static bool containsRange(const QTextDocument &document, KZRange range);
    /// The whole text for {KZNotFound, 0}, else `range`.
    static KZRange wholeTextIfNotFound(const QTextDocument &document, KZRange range);
    /// Where `string` is next found in `text` from `selection`: forward from
    /// its end, or with `ADTextSearchBackwards` backward from its start; with
    /// `wrap`, then in the other part. Not found is {KZNotFound, 0}.
    static KZRange rangeOfString(const QString &text, KZRange selection, const QString &string,
                                 qint64 options, bool wrap);
};
