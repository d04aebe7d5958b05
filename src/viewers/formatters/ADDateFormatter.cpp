#include "ADDateFormatter.h"

#include "shared/KZLocalizedString.h"
#include "shared/KZReferenceDate.h"

#include <QDateTime>
#include <QRegularExpression>

#include <cmath>

namespace {

// A medium style from the locale's long one: abbreviated month names, no
// weekday, no time zone.
QString mediumDateFormat(const QLocale &locale)
{
    QString format = locale.dateFormat(QLocale::LongFormat);
    format.remove(QStringLiteral("dddd, ")).remove(QStringLiteral("dddd "));
    format.replace(QStringLiteral("MMMM"), QStringLiteral("MMM"));
    return format.trimmed();
}

QString mediumTimeFormat(const QLocale &locale)
{
    QString format = locale.timeFormat(QLocale::LongFormat);
    format.remove(QStringLiteral(" t")).remove(u't');
    return format.trimmed();
}

// The description form of a date, "2001-01-01 00:00:00 +0000".
std::optional<double> descriptionDate(const QString &text)
{
    static const QRegularExpression form(
        QStringLiteral(R"(^(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d) ([+-])(\d\d)(\d\d)$)"));
    const QRegularExpressionMatch match = form.match(text);
    if (!match.hasMatch())
        return std::nullopt;
    QDateTime when =
        QDateTime::fromString(match.captured(1), QStringLiteral("yyyy-MM-dd HH:mm:ss"));
    if (!when.isValid())
        return std::nullopt;
    when.setTimeZone(QTimeZone::utc());
    const int sign = match.captured(2) == u"-" ? -1 : 1;
    const int offset = sign * (match.captured(3).toInt() * 3600 + match.captured(4).toInt() * 60);
    return KZReferenceDate::fromDateTime(when) - offset;
}

constexpr double kCompiledRange = 2.5e11; // seconds: years well within 1 to 9999

} // namespace

ADDateFormatter::ADDateFormatter() : ADDateFormatter(currentLocale()) {}

ADDateFormatter::ADDateFormatter(const QLocale &locale, const QTimeZone &zone)
    : _locale(locale), _zone(zone), _dateFormat(mediumDateFormat(locale)),
      _timeFormat(mediumTimeFormat(locale)),
      _dateTimeFormat(_dateFormat + QStringLiteral(", ") + _timeFormat),
      _compiledFormat(locale, _dateTimeFormat)
{
    if (!zone.hasTransitions())
        _fixedOffset = zone.offsetFromUtc(QDateTime::currentDateTimeUtc());
}

const ADDateFormatter &ADDateFormatter::standardDateFormatter()
{
    static const ADDateFormatter formatter;
    return formatter;
}

QString ADDateFormatter::stringFromDate(double secondsSinceReferenceDate) const
{
    const double seconds =
        std::floor(secondsSinceReferenceDate + KZReferenceDate::kSecondsFromEpoch);
    if (_compiledFormat.isValid() && std::fabs(seconds) < kCompiledRange) {
        const int offset =
            _fixedOffset
                ? *_fixedOffset
                : _zone.offsetFromUtc(QDateTime::fromSecsSinceEpoch(qint64(seconds), Qt::UTC));
        const QString text = _compiledFormat.format(qint64(seconds) + offset);
        if (!text.isNull())
            return text;
    }
    return _locale.toString(KZReferenceDate::toDateTime(secondsSinceReferenceDate, _zone),
                            _dateTimeFormat);
}

std::optional<double> ADDateFormatter::dateFromString(const QString &text) const
{
    const QString trimmed = text.simplified();
    const QString forms[] = {_dateTimeFormat, _dateFormat + u' ' + _timeFormat,
                             _locale.dateTimeFormat(QLocale::ShortFormat),
                             _locale.dateTimeFormat(QLocale::LongFormat)};
    for (const QString &form : forms) {
        QDateTime when = _locale.toDateTime(trimmed, form);
        if (when.isValid()) {
            when.setTimeZone(_zone);
            return KZReferenceDate::fromDateTime(when);
        }
    }
    for (const QString &form : {_dateFormat, _locale.dateFormat(QLocale::ShortFormat)}) {
        const QDate day = _locale.toDate(trimmed, form);
        if (day.isValid())
            return KZReferenceDate::fromDateTime(QDateTime(day, QTime(0, 0), _zone));
    }
    if (const std::optional<double> described = descriptionDate(trimmed))
        return described;
    const QDateTime iso = QDateTime::fromString(trimmed, Qt::ISODate);
    if (iso.isValid())
        return KZReferenceDate::fromDateTime(iso);
    return std::nullopt;
}

std::optional<QString> ADDateFormatter::stringForObjectValue(const PlistValue &value) const
{
    if (value.kind() != PlistValue::Kind::Date)
        return std::nullopt;
    return stringFromDate(value.toDate());
}

bool ADDateFormatter::getObjectValue(PlistValue *value, const QString &text,
                                     QString *errorDescription) const
{
    const std::optional<double> seconds = dateFromString(text);
    if (!seconds)
        return fail(
            errorDescription,
            KZStringWithFormat(KZLocalizedStringWithID(4003, QStringLiteral("“%@” is not a date")),
                               {text}));
    if (value)
        *value = PlistValue::date(*seconds);
    return true;
}
