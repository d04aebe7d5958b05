#include "ADLiteralWriter.h"

#include "shared/NumberText.h"
#include "shared/PlistArray.h"
#include "shared/PlistDictionary.h"

#include <QStringList>

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace {

QString numberText(const PlistValue &number)
{
    if (number.isUnsigned())
        return QString::number(number.toUnsigned());
    if (number.isInteger())
        return QString::number(number.toInteger());
    char text[64];
    return QString::fromLatin1(text, NumberText::formatReal(number.toReal(), text) - text);
}

// An interval as %g with 15 digits, ".0" added where it would read as an integer.
QString intervalText(double seconds)
{
    if (std::isnan(seconds))
        return QStringLiteral("nan");
    if (std::isinf(seconds))
        return seconds > 0 ? QStringLiteral("inf") : QStringLiteral("-inf");
    char text[64];
    std::snprintf(text, sizeof text, "%.15g", seconds);
    QString result = QString::fromLatin1(text);
    if (!result.contains(u'.') && !result.contains(u'e'))
        result += QStringLiteral(".0");
    return result;
}

// The text in double quotes as a debugger shows it.
QString debugQuoted(const QString &text)
{
    QString quoted(u'"');
    for (const QChar c : text) {
        switch (c.unicode()) {
        case '\\':
            quoted += QStringLiteral("\\\\");
            break;
        case '"':
            quoted += QStringLiteral("\\\"");
            break;
        case '\'':
            quoted += QStringLiteral("\\'");
            break;
        case '\n':
            quoted += QStringLiteral("\\n");
            break;
        case '\r':
            quoted += QStringLiteral("\\r");
            break;
        case '\t':
            quoted += QStringLiteral("\\t");
            break;
        case 0:
            quoted += QStringLiteral("\\0");
            break;
        default:
            if (c.unicode() < 0x20 || c.unicode() == 0x7f)
                quoted += QStringLiteral("\\u{%1}").arg(c.unicode(), 0, 16);
            else
                quoted += c;
        }
    }
    return quoted + u'"';
}

std::vector<PlistValue> elementsOf(const PlistValue &array)
{
    const PlistArray values = array.toArray();
    return {values.begin(), values.end()};
}

} // namespace

ADLiteralWriter::ADLiteralWriter(std::vector<PlistValue> plists, Forms forms)
    : _plists(std::move(plists)), _forms(std::move(forms))
{}

QString ADLiteralWriter::literal() const
{
    return _plists.size() == 1 ? literalOf(_plists.front()) : arrayLiteral(_plists);
}

QString ADLiteralWriter::literalOf(const PlistValue &value) const
{
    if (const std::optional<QString> answered = answeredLiteral(value))
        return *answered;
    switch (value.kind()) {
    case PlistValue::Kind::Date:
        return _forms.dateOpen + intervalText(value.toDate()) + _forms.dateClose;
    case PlistValue::Kind::Data:
        return _forms.dataOpen + QString::fromLatin1(value.toData().toBase64()) + _forms.dataClose;
    default:
        return QStringLiteral("nil");
    }
}

std::optional<QString> ADLiteralWriter::answeredLiteral(const PlistValue &value) const
{
    switch (value.kind()) {
    case PlistValue::Kind::String:
        return stringLiteral(value.toString());
    case PlistValue::Kind::Boolean:
        return value.toBool() ? _forms.trueText : _forms.falseText;
    case PlistValue::Kind::Number:
        return _forms.numberOpen + numberText(value) + _forms.numberClose;
    case PlistValue::Kind::Array:
        return arrayLiteral(elementsOf(value));
    case PlistValue::Kind::Dictionary:
        return dictionaryLiteral(value);
    default:
        return std::nullopt;
    }
}

// Backslashes first, so that the escapes of quotes are not doubled.
QString ADLiteralWriter::stringLiteral(const QString &text) const
{
    QString escaped = text;
    escaped.replace(u'\\', QStringLiteral("\\\\"));
    escaped.replace(u'"', QStringLiteral("\\\""));
    return _forms.stringPrefix + u'"' + escaped + u'"';
}

QString ADLiteralWriter::arrayLiteral(const std::vector<PlistValue> &values) const
{
    QStringList items;
    for (const PlistValue &value : values)
        items << literalOf(value);
    return _forms.arrayOpen + items.join(QStringLiteral(", ")) + _forms.arrayClose;
}

QString ADLiteralWriter::dictionaryLiteral(const PlistValue &value) const
{
    const PlistDictionary dictionary = value.toDictionary();
    std::vector<qsizetype> order(size_t(dictionary.count()));
    for (qsizetype i = 0; i < dictionary.count(); ++i)
        order[size_t(i)] = i;
    std::sort(order.begin(), order.end(),
              [&](qsizetype a, qsizetype b) { return dictionary.keyAt(a) < dictionary.keyAt(b); });
    QStringList pairs;
    for (const qsizetype i : order) {
        const std::optional<QString> answered = answeredLiteral(dictionary.valueAt(i));
        pairs << stringLiteral(dictionary.keyAt(i)) + QStringLiteral(": ") +
                     (answered ? QStringLiteral("Optional(") + debugQuoted(*answered) + u')'
                               : QStringLiteral("nil"));
    }
    return _forms.dictionaryOpen + pairs.join(QStringLiteral(", ")) + _forms.dictionaryClose;
}
