#pragma once

#include <QDate>
#include <QLocale>
#include <QString>
#include <QTime>

#include <vector>

/// A Qt date-time format ("MMM d, yyyy, h:mm:ss AP") taken apart once, so
/// that showing a date is appending numbers and the locale's names, not
/// parsing the format again: QLocale::toString with the same format is its
/// plain twin, and gives the same text. Formats with fields it does not
/// handle (weekday names, milliseconds, time zones), locales with other
/// digits, and years outside 1 to 9999 are left to QLocale: `isValid()` and
/// `format` say so. Immutable once made; any thread.
class KZCompiledDateFormat
{
public:
    KZCompiledDateFormat(const QLocale &locale, const QString &format);

    bool isValid() const { return _valid; }
    /// The text of a local date and time; a null string when this cannot show it.
    QString format(QDate date, QTime time) const;
    /// The same for the local time `seconds` after 1970-01-01 00:00:00.
    QString format(qint64 seconds) const;

private:
    enum class Field : quint8
    {
        Literal,
        Day,
        Day2,
        Month,
        Month2,
        MonthShort,
        MonthLong,
        Year2,
        Year4,
        Hour12,
        Hour12Padded,
        Hour,
        HourPadded,
        Minute,
        MinutePadded,
        Second,
        SecondPadded,
        AmPmUpper,
        AmPmLower,
    };
    struct Token
    {
        Field field;
        QString literal;
    };
    void compile(const QString &format);
    QString format(int year, int month, int day, int hour, int minute, int second) const;

    std::vector<Token> _tokens;
    QString _shortMonths[12];
    QString _longMonths[12];
    QString _amUpper;
    QString _pmUpper;
    QString _amLower;
    QString _pmLower;
    bool _valid = true;
};
