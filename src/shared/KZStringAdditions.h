#pragma once

#include "KZComparison.h"
#include "KZRange.h"

#include <QHash>
#include <QSet>
#include <QString>
#include <QStringList>

#include <optional>
#include <utility>

/// What the program adds to strings and string lists.

/// Lines as the text view counts them: a walk from line to line that stops
/// once one past a line's end is no longer in the text. So a string shorter
/// than two units has 0 lines, "a\nb" has 1, and a final newline adds none.
qint64 numberOfLines(QStringView text);

/// The range of line `lineNumber` (from 0) on the same walk, terminator
/// included, or `{KZNotFound, 0}` when the walk ends first.
KZRange rangeForLineNumber(QStringView text, quint32 lineNumber);

/// Removes the last UTF-16 unit; nothing on an empty string.
void deleteLastCharacter(QString &text);

QString horizontalEllipsisString(); // U+2026
QString longDashString();           // U+2014
QString commandSymbolString();      // U+2318

/// `base` itself when `taken` lacks it, else the first of "base 2", "base 3", ... that it lacks.
QString kz_uniquifyInStrings(const QString &base, const QSet<QString> &taken);

/// Inserts `object` after every element that does not sort after it, so equal
/// elements keep the order they came in.
void insertObjectSortedBySelector(QStringList &list, const QString &object,
                                  KZComparison comparison);

/// The part of `text` before the first `separator` and the part after it (empty
/// when nothing follows); nothing when `separator` does not occur.
std::optional<std::pair<QString, QString>> kz_substringUpToString(const QString &text,
                                                                  const QString &separator);

/// "a=1&b=2" as a dictionary: pieces split at "&", each at its first "=";
/// a piece without "=" is dropped, and a later key wins.
QHash<QString, QString> kz_parseQueryString(const QString &query);
