#include "KZStringAdditions.h"

namespace {

bool isLineTerminator(char16_t c)
{
    return c == u'\n' || c == u'\r' || c == u'\u0085' || c == u'\u2028' || c == u'\u2029';
}

// End of the line that starts at `start`, past its terminator (CR LF counts as one).
qint64 lineEnd(QStringView text, qint64 start)
{
    for (qint64 i = start; i < text.size(); ++i) {
        const char16_t c = text[i].unicode();
        if (!isLineTerminator(c))
            continue;
        if (c == u'\r' && i + 1 < text.size() && text[i + 1] == u'\n')
            return i + 2;
        return i + 1;
    }
    return text.size();
}

// Walks the lines; `visit(index, range)` returns true to stop. Answers the count walked.
template <typename Visit> qint64 walkLines(QStringView text, Visit &&visit)
{
    if (text.size() < 2)
        return 0;
    qint64 count = 0;
    qint64 start = 0;
    for (;;) {
        const qint64 end = lineEnd(text, start);
        if (visit(count, KZRange{start, end - start}))
            return count + 1;
        ++count;
        if (end + 1 >= text.size())
            return count;
        start = end;
    }
}

} // namespace

qint64 numberOfLines(QStringView text)
{
    return walkLines(text, [](qint64, KZRange) { return false; });
}

KZRange rangeForLineNumber(QStringView text, quint32 lineNumber)
{
    KZRange found;
    walkLines(text, [&](qint64 index, KZRange range) {
        if (index != qint64(lineNumber))
            return false;
        found = range;
        return true;
    });
    return found;
}

void deleteLastCharacter(QString &text)
{
    if (!text.isEmpty())
        text.chop(1);
}

QString horizontalEllipsisString()
{
    static const QString s(QChar(0x2026));
    return s;
}

QString longDashString()
{
    static const QString s(QChar(0x2014));
    return s;
}

QString commandSymbolString()
{
    static const QString s(QChar(0x2318));
    return s;
}

QString kz_uniquifyInStrings(const QString &base, const QSet<QString> &taken)
{
    if (!taken.contains(base))
        return base;
    for (qint64 n = 2;; ++n) {
        QString candidate = base + u' ' + QString::number(n);
        if (!taken.contains(candidate))
            return candidate;
    }
}

void insertObjectSortedBySelector(QStringList &list, const QString &object, KZComparison comparison)
{
    qsizetype low = 0, high = list.size();
    while (low < high) {
        const qsizetype mid = low + (high - low) / 2;
        if (KZCompareStrings(comparison, list[mid], object) <= 0)
            low = mid + 1;
        else
            high = mid;
    }
    list.insert(low, object);
}

std::optional<std::pair<QString, QString>> kz_substringUpToString(const QString &text,
                                                                  const QString &separator)
{
    const qsizetype at = text.indexOf(separator);
    if (at < 0)
        return std::nullopt;
    return std::pair(text.first(at), text.sliced(at + separator.size()));
}

QHash<QString, QString> kz_parseQueryString(const QString &query)
{
    QHash<QString, QString> arguments;
    for (const QString &piece : query.split(u'&')) {
        if (const auto pair = kz_substringUpToString(piece, QStringLiteral("=")))
            arguments.insert(pair->first, pair->second);
    }
    return arguments;
}
