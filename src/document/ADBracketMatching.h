#pragma once

#include "shared/KZRange.h"

#include <QChar>
#include <QString>
#include <QStringView>

#include <algorithm>

class QTextDocument;

/// The bracket pairs of plist text, "(" ")", "[" "]", "{" "}" and "<" ">",
/// and the search for the pair around a position. Pure functions over text.
class ADBracketMatching
{
public:
    /// The opener of a closer, or 0 for a character that is none.
    static QChar startCharForEndChar(QChar c);
    /// The closer of an opener, or 0.
    static QChar endCharForStartChar(QChar c);

    /// The range from the opener that encloses `position` through its closer.
    /// Backward from the character before `position`, closers stack up; the
    /// first opener met on an empty stack is the enclosing one, and so is an
    /// opener that empties the stack (a position just after a closed group
    /// gives that group). A mismatch anywhere, or no opener before the start,
    /// gives "not found". Forward from the opener, the closer that empties its
    /// stack ends the range. An opener that is the last character gives a
    /// range of length 0; text that ends before the closer, a range that runs
    /// one past the end (the caller limits it to the text).
    static KZRange balanceFrom(QStringView text, qint64 position);
    /// The same over a text document, reading only the blocks it passes.
    static KZRange balanceFrom(const QTextDocument &document, qint64 position);

    /// The same over any text: `charAt(i)` for 0 <= i < `length`.
    template <typename CharAt>
    static KZRange balanceFrom(CharAt &&charAt, qint64 length, qint64 position);
};

template <typename CharAt>
KZRange ADBracketMatching::balanceFrom(CharAt &&charAt, qint64 length, qint64 position)
{
    if (position < 0)
        return {};
    // Backward: find the opener.
    QString closers; // a stack
    qint64 opener = -1;
    for (qint64 i = std::min(position, length) - 1; i >= 0 && opener < 0; --i) {
        const QChar c = charAt(i);
        if (!startCharForEndChar(c).isNull()) {
            closers.append(c);
            continue;
        }
        if (endCharForStartChar(c).isNull())
            continue;
        if (closers.isEmpty()) {
            opener = i;
        } else {
            if (startCharForEndChar(closers.back()) != c)
                return {};
            closers.chop(1);
            if (closers.isEmpty())
                opener = i;
        }
    }
    if (opener < 0)
        return {};
    if (opener == length - 1)
        return {opener, 0};
    // Forward: find its closer.
    QString openers(1, charAt(opener));
    for (qint64 i = opener + 1; i < length; ++i) {
        const QChar c = charAt(i);
        if (!endCharForStartChar(c).isNull()) {
            openers.append(c);
            continue;
        }
        const QChar start = startCharForEndChar(c);
        if (start.isNull())
            continue;
        if (start != openers.back())
            return {};
        openers.chop(1);
        if (openers.isEmpty())
            return {opener, i - opener + 1};
    }
    return {opener, length - opener + 1};
}
