#include "ADDocumentText.h"

#include "ADPlistTextSide.h"

#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>

QString ADDocumentText::text(const QTextDocument &document)
{
    return document.toRawText().replace(QChar::ParagraphSeparator, QLatin1Char('\n'));
}

qint64 ADDocumentText::length(const QTextDocument &document)
{
    return document.characterCount() - 1; // the last block's separator is no text
}

QString ADDocumentText::textInRange(const QTextDocument &document, KZRange range)
{
    Q_ASSERT(containsRange(document, range));
    QString text;
    text.reserve(range.length);
    for (QTextBlock block = document.findBlock(int(range.location)); text.size() < range.length;
         block = block.next()) {
        const qint64 from = std::max<qint64>(range.location - block.position(), 0);
        text += QStringView(block.text()).mid(from, range.length - text.size());
        if (text.size() < range.length)
            text += QLatin1Char('\n');
    }
    return text;
}

void ADDocumentText::replace(QTextDocument &document, KZRange range, const QString &text)
{
    Q_ASSERT(containsRange(document, range));
    QTextCursor cursor(&document);
    cursor.setPosition(int(range.location));
    cursor.setPosition(int(range.end()), QTextCursor::KeepAnchor);
    cursor.insertText(text);
}

bool ADDocumentText::containsRange(const QTextDocument &document, KZRange range)
{
    return range.location >= 0 && range.length >= 0 &&
           range.location <= length(document) - range.length;
}

KZRange ADDocumentText::wholeTextIfNotFound(const QTextDocument &document, KZRange range)
{
    return range.isNotFound() ? KZRange{0, length(document)} : range;
}

KZRange ADDocumentText::rangeOfString(const QString &text, KZRange selection, const QString &string,
                                      qint64 options, bool wrap)
{
    if (string.isEmpty())
        return {};
    const Qt::CaseSensitivity sensitivity =
        options & ADTextSearchCaseInsensitive ? Qt::CaseInsensitive : Qt::CaseSensitive;
    const bool backwards = options & ADTextSearchBackwards;
    const auto search = [&](KZRange part) -> KZRange {
        const QStringView view = QStringView(text).mid(part.location, part.length);
        const qsizetype at = backwards ? view.lastIndexOf(string, -1, sensitivity)
                                       : view.indexOf(string, 0, sensitivity);
        return at < 0 ? KZRange{} : KZRange{part.location + at, string.size()};
    };
    const KZRange ahead{selection.end(), text.size() - selection.end()};
    const KZRange behind{0, selection.location};
    const KZRange found = search(backwards ? behind : ahead);
    if (!found.isNotFound() || !wrap)
        return found;
    return search(backwards ? ahead : behind);
}
