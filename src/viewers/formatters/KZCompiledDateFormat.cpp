#include "KZCompiledDateFormat.h"

namespace {

qsizetype runLength(const QString &text, qsizetype at)
{
    qsizetype end = at;
    while (end < text.size() && text[end] == text[at])
        ++end;
    return end - at;
}

void appendNumber(QString &out, int value, int width)
{
    char digits[12];
    int count = 0;
    do {
        digits[count++] = char('0' + value % 10);
        value /= 10;
    } while (value > 0);
    for (int i = count; i < width; ++i)
        out += u'0';
    while (count > 0)
        out += QLatin1Char(digits[--count]);
}

// Whether the format shows AM and PM outside its quoted text, which makes "h" count to 12.
bool showsAmPm(const QString &format)
{
    bool quoted = false;
    for (const QChar c : format) {
        if (c == u'\'')
            quoted = !quoted;
        else if (!quoted && (c == u'a' || c == u'A'))
            return true;
    }
    return false;
}

// Hands the text of the quoted run at `at` to `literal` ('' is a quote,
// inside a run or alone) and answers where the run ends.
template <typename Literal>
qsizetype quotedText(const QString &format, qsizetype at, const Literal &literal)
{
    QString text;
    ++at;
    while (at < format.size()) {
        if (format[at] != u'\'') {
            text += format[at++];
        } else if (at + 1 < format.size() && format[at + 1] == u'\'') {
            text += u'\'';
            at += 2;
        } else {
            ++at;
            break;
        }
    }
    literal(text.isEmpty() ? QStringLiteral("'") : text);
    return at;
}

} // namespace

KZCompiledDateFormat::KZCompiledDateFormat(const QLocale &locale, const QString &format)
    : _amUpper(locale.amText().toUpper()), _pmUpper(locale.pmText().toUpper()),
      _amLower(locale.amText().toLower()), _pmLower(locale.pmText().toLower())
{
    for (int month = 1; month <= 12; ++month) {
        _shortMonths[month - 1] = locale.monthName(month, QLocale::ShortFormat);
        _longMonths[month - 1] = locale.monthName(month, QLocale::LongFormat);
    }
    _valid = locale.zeroDigit() == u"0";
    compile(format);
}

void KZCompiledDateFormat::compile(const QString &format)
{
    const bool twelveHour = showsAmPm(format);
    const auto literal = [this](const QString &text) {
        if (!_tokens.empty() && _tokens.back().field == Field::Literal)
            _tokens.back().literal += text;
        else
            _tokens.push_back({Field::Literal, text});
    };
    for (qsizetype at = 0; at < format.size() && _valid;) {
        const QChar c = format[at];
        if (c == u'\'') {
            at = quotedText(format, at, literal);
            continue;
        }
        const qsizetype run = runLength(format, at);
        Field field = Field::Literal;
        qsizetype used = run;
        switch (c.unicode()) {
        case u'd':
            _valid = run <= 2;
            field = run == 1 ? Field::Day : Field::Day2;
            break;
        case u'M':
            _valid = run <= 4;
            field = run == 1   ? Field::Month
                    : run == 2 ? Field::Month2
                    : run == 3 ? Field::MonthShort
                               : Field::MonthLong;
            break;
        case u'y':
            _valid = run == 2 || run == 4;
            field = run == 2 ? Field::Year2 : Field::Year4;
            break;
        case u'h':
            _valid = run <= 2;
            field = twelveHour ? (run == 1 ? Field::Hour12 : Field::Hour12Padded)
                               : (run == 1 ? Field::Hour : Field::HourPadded);
            break;
        case u'H':
            _valid = run <= 2;
            field = run == 1 ? Field::Hour : Field::HourPadded;
            break;
        case u'm':
            _valid = run <= 2;
            field = run == 1 ? Field::Minute : Field::MinutePadded;
            break;
        case u's':
            _valid = run <= 2;
            field = run == 1 ? Field::Second : Field::SecondPadded;
            break;
        case u'A':
        case u'a':
            field = c == u'A' ? Field::AmPmUpper : Field::AmPmLower;
            used = at + 1 < format.size() && format[at + 1] == (c == u'A' ? u'P' : u'p') ? 2 : 1;
            break;
        case u'z':
        case u't':
            _valid = false;
            break;
        default:
            literal(format.mid(at, run));
            at += run;
            continue;
        }
        _tokens.push_back({field, {}});
        at += used;
    }
}

QString KZCompiledDateFormat::format(QDate date, QTime time) const
{
    if (!date.isValid() || !time.isValid())
        return QString();
    int year = 0;
    int month = 0;
    int day = 0;
    date.getDate(&year, &month, &day);
    return format(year, month, day, time.hour(), time.minute(), time.second());
}

QString KZCompiledDateFormat::format(qint64 seconds) const
{
    // Days to a civil date, after Howard Hinnant's days_from_civil inverse.
    const qint64 days = seconds >= 0 ? seconds / 86400 : (seconds - 86399) / 86400;
    const qint64 secondOfDay = seconds - days * 86400;
    const qint64 z = days + 719468;
    const qint64 era = (z >= 0 ? z : z - 146096) / 146097;
    const qint64 dayOfEra = z - era * 146097;
    const qint64 yearOfEra =
        (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const qint64 dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const qint64 shiftedMonth = (5 * dayOfYear + 2) / 153;
    const int day = int(dayOfYear - (153 * shiftedMonth + 2) / 5 + 1);
    const int month = int(shiftedMonth < 10 ? shiftedMonth + 3 : shiftedMonth - 9);
    const qint64 year = yearOfEra + era * 400 + (month <= 2 ? 1 : 0);
    if (year < 1 || year > 9999)
        return QString();
    return format(int(year), month, day, int(secondOfDay / 3600), int(secondOfDay / 60 % 60),
                  int(secondOfDay % 60));
}

QString KZCompiledDateFormat::format(int year, int month, int day, int hour, int minute,
                                     int second) const
{
    if (!_valid || year < 1 || year > 9999)
        return QString();
    QString out;
    out.reserve(32);
    const int hour12 = hour % 12 == 0 ? 12 : hour % 12;
    for (const Token &token : _tokens) {
        switch (token.field) {
        case Field::Literal:
            out += token.literal;
            break;
        case Field::Day:
        case Field::Day2:
            appendNumber(out, day, token.field == Field::Day2 ? 2 : 1);
            break;
        case Field::Month:
        case Field::Month2:
            appendNumber(out, month, token.field == Field::Month2 ? 2 : 1);
            break;
        case Field::MonthShort:
            out += _shortMonths[month - 1];
            break;
        case Field::MonthLong:
            out += _longMonths[month - 1];
            break;
        case Field::Year2:
            appendNumber(out, year % 100, 2);
            break;
        case Field::Year4:
            appendNumber(out, year, 4);
            break;
        case Field::Hour12:
        case Field::Hour12Padded:
            appendNumber(out, hour12, token.field == Field::Hour12Padded ? 2 : 1);
            break;
        case Field::Hour:
        case Field::HourPadded:
            appendNumber(out, hour, token.field == Field::HourPadded ? 2 : 1);
            break;
        case Field::Minute:
        case Field::MinutePadded:
            appendNumber(out, minute, token.field == Field::MinutePadded ? 2 : 1);
            break;
        case Field::Second:
        case Field::SecondPadded:
            appendNumber(out, second, token.field == Field::SecondPadded ? 2 : 1);
            break;
        case Field::AmPmUpper:
            out += hour < 12 ? _amUpper : _pmUpper;
            break;
        case Field::AmPmLower:
            out += hour < 12 ? _amLower : _pmLower;
            break;
        }
    }
    return out;
}
