#include "XmlDate.h"

#include "PlistCalendar.h"

#include <cmath>

namespace {

constexpr qint64 kSecondsPerDay = PlistCalendar::kSecondsPerDay;
constexpr qint64 kReferenceDay = PlistCalendar::kReferenceDay;
constexpr int kMaxYearDigits = 11;                      // keeps the arithmetic far inside 64 bits
constexpr double kMaxExactSeconds = 9007199254740992.0; // 2^53: every whole second a double holds

class Cursor
{
public:
    explicit Cursor(QByteArrayView text) : _text(text) {}

    bool digits(int minCount, int maxCount, qint64 &value)
    {
        value = 0;
        int count = 0;
        while (_pos < _text.size() && count < maxCount && isDigit(_text[_pos])) {
            value = value * 10 + (_text[_pos++] - '0');
            ++count;
        }
        return count >= minCount && !(_pos < _text.size() && isDigit(_text[_pos]));
    }
    bool take(char c)
    {
        if (_pos >= _text.size() || _text[_pos] != c)
            return false;
        ++_pos;
        return true;
    }
    bool atEnd() const { return _pos == _text.size(); }

private:
    static bool isDigit(char c) { return c >= '0' && c <= '9'; }

    QByteArrayView _text;
    qsizetype _pos = 0;
};

char *writeDigits(quint64 value, int minWidth, char *out)
{
    char buffer[24];
    int n = 0;
    do {
        buffer[n++] = char('0' + value % 10);
        value /= 10;
    } while (value != 0);
    while (n < minWidth)
        buffer[n++] = '0';
    while (n > 0)
        *out++ = buffer[--n];
    return out;
}

// A field of two digits (0-99) followed by its separator.
char *writeField(int value, char separator, char *out)
{
    out[0] = char('0' + value / 10);
    out[1] = char('0' + value % 10);
    out[2] = separator;
    return out + 3;
}

// Seconds of a date; the fields may run over as the reader allows.
std::optional<double> secondsOf(qint64 year, qint64 month, qint64 day, qint64 hour, qint64 minute,
                                qint64 second)
{
    // Months past twelve carry into years, as days carry into months.
    year += (month - 1) / 12;
    month = (month - 1) % 12 + 1;
    if (month == 0) {
        month = 12;
        --year;
    }
    const qint64 days = PlistCalendar::daysFromCivil(year, month, day);
    const qint64 seconds =
        (days - kReferenceDay) * kSecondsPerDay + hour * 3600 + minute * 60 + second;
    if (double(std::llabs(seconds)) > kMaxExactSeconds)
        return std::nullopt;
    return double(seconds);
}

// The common form, four-digit year and all, without the general cursor.
std::optional<double> parseUsual(const char *p)
{
    static constexpr char kPattern[] = "dddd-dd-ddTdd:dd:ddZ";
    for (int i = 0; i < 20; ++i) {
        const bool digit = p[i] >= '0' && p[i] <= '9';
        if (kPattern[i] == 'd' ? !digit : p[i] != kPattern[i])
            return std::nullopt;
    }
    auto number = [p](int at, int count) {
        qint64 value = 0;
        for (int i = at; i < at + count; ++i)
            value = value * 10 + (p[i] - '0');
        return value;
    };
    return secondsOf(number(0, 4), number(5, 2), number(8, 2), number(11, 2), number(14, 2),
                     number(17, 2));
}

} // namespace

std::optional<double> XmlDate::parse(QByteArrayView text)
{
    if (text.size() == 20)
        return parseUsual(text.data());
    Cursor in(text);
    const bool negative = in.take('-');
    qint64 year, month, day, hour, minute, second;
    const bool ok = in.digits(4, kMaxYearDigits, year) && in.take('-') && in.digits(2, 2, month) &&
                    in.take('-') && in.digits(2, 2, day) && in.take('T') && in.digits(2, 2, hour) &&
                    in.take(':') && in.digits(2, 2, minute) && in.take(':') &&
                    in.digits(2, 2, second) && in.take('Z') && in.atEnd();
    if (!ok)
        return std::nullopt;
    return secondsOf(negative ? -year : year, month, day, hour, minute, second);
}

char *XmlDate::format(double secondsSinceReferenceDate, char *out)
{
    const double whole = std::floor(secondsSinceReferenceDate);
    if (!(std::fabs(whole) <= kMaxExactSeconds))
        return nullptr; // also NaN
    const auto seconds = qint64(whole);
    qint64 days = seconds / kSecondsPerDay;
    qint64 rest = seconds % kSecondsPerDay;
    if (rest < 0) {
        rest += kSecondsPerDay;
        --days;
    }
    days += kReferenceDay;
    const PlistCalendar::Civil date = PlistCalendar::civilFromDays(days);
    if (date.year < 0)
        *out++ = '-';
    out = writeDigits(quint64(std::llabs(date.year)), 4, out);
    *out++ = '-';
    out = writeField(date.month, '-', out);
    out = writeField(date.day, 'T', out);
    const int secondOfDay = int(rest);
    out = writeField(secondOfDay / 3600, ':', out);
    out = writeField(secondOfDay / 60 % 60, ':', out);
    return writeField(secondOfDay % 60, 'Z', out);
}
