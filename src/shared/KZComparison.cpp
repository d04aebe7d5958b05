#include "KZComparison.h"

#include "PlistValue.h"

#include <QChar>
#include <QString>

namespace {

int sign(int c)
{
    return c < 0 ? -1 : (c > 0 ? 1 : 0);
}

bool isDigit(char16_t c)
{
    return c >= u'0' && c <= u'9';
}

// Compares the runs of digits that start at i and j by value; moves both past them.
int compareDigitRuns(QStringView a, qsizetype &i, QStringView b, qsizetype &j)
{
    while (i < a.size() && a[i] == u'0' && i + 1 < a.size() && isDigit(a[i + 1].unicode()))
        ++i;
    while (j < b.size() && b[j] == u'0' && j + 1 < b.size() && isDigit(b[j + 1].unicode()))
        ++j;
    const qsizetype startA = i, startB = j;
    while (i < a.size() && isDigit(a[i].unicode()))
        ++i;
    while (j < b.size() && isDigit(b[j].unicode()))
        ++j;
    const qsizetype lengthA = i - startA, lengthB = j - startB;
    if (lengthA != lengthB)
        return lengthA < lengthB ? -1 : 1;
    return sign(a.mid(startA, lengthA).compare(b.mid(startB, lengthB)));
}

// Text runs compare unit by unit, digit runs by their value ("a2" < "a10").
int numericCompare(QStringView a, QStringView b, Qt::CaseSensitivity cs)
{
    qsizetype i = 0, j = 0;
    while (i < a.size() && j < b.size()) {
        if (isDigit(a[i].unicode()) && isDigit(b[j].unicode())) {
            if (const int c = compareDigitRuns(a, i, b, j))
                return c;
            continue;
        }
        const char16_t x =
            cs == Qt::CaseInsensitive ? a[i].toCaseFolded().unicode() : a[i].unicode();
        const char16_t y =
            cs == Qt::CaseInsensitive ? b[j].toCaseFolded().unicode() : b[j].unicode();
        if (x != y)
            return x < y ? -1 : 1;
        ++i;
        ++j;
    }
    const qsizetype restA = a.size() - i, restB = b.size() - j;
    return restA == restB ? 0 : (restA < restB ? -1 : 1);
}

// The view's units as UTF-16, copied into `buffer` only when stored otherwise.
QStringView utf16View(QAnyStringView view, QString &buffer)
{
    return view.visit([&buffer](auto v) -> QStringView {
        if constexpr (std::is_same_v<decltype(v), QStringView>) {
            return v;
        } else {
            buffer = v.toString();
            return buffer;
        }
    });
}

int numericCompare(QAnyStringView a, QAnyStringView b, Qt::CaseSensitivity cs)
{
    QString bufferA, bufferB;
    return numericCompare(utf16View(a, bufferA), utf16View(b, bufferB), cs);
}

} // namespace

int KZCompareStrings(KZComparison comparison, QAnyStringView a, QAnyStringView b)
{
    switch (comparison) {
    case KZComparison::Compare:
        return sign(QAnyStringView::compare(a, b, Qt::CaseSensitive));
    case KZComparison::CaseInsensitiveCompare:
    case KZComparison::PlistCompare:
        return sign(QAnyStringView::compare(a, b, Qt::CaseInsensitive));
    case KZComparison::NumericCompare:
        return numericCompare(a, b, Qt::CaseSensitive);
    case KZComparison::NumericCaseInsensitiveCompare:
        return numericCompare(a, b, Qt::CaseInsensitive);
    }
    return 0;
}

int KZCompareValues(KZComparison comparison, const PlistValue &a, const PlistValue &b)
{
    if (a.isString() && b.isString())
        return KZCompareStrings(comparison, a.stringView(), b.stringView());
    switch (comparison) {
    case KZComparison::PlistCompare:
        return a.plistCompare(b);
    case KZComparison::Compare:
        return a.compare(b);
    default:
        return 0;
    }
}
