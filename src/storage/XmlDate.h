#pragma once

#include <QByteArrayView>

#include <optional>

/// The <date> text of XML property lists, "YYYY-MM-DDTHH:MM:SSZ" in UTC, to
/// the second. Years may be far from now: a sign and more than four digits are
/// read and written. As in the platform's calendar, dates before 1582-10-15
/// are Julian, and out-of-range fields carry over ("2024-01-32" is the first
/// of February). Pure functions.
class XmlDate
{
public:
    /// The longest text `format` writes.
    static constexpr int kMaxLength = 32;

    /// Seconds since 2001-01-01 00:00:00 UTC, or no value when the text is not a date.
    static std::optional<double> parse(QByteArrayView text);
    /// Writes the date, rounded down to the second; returns the end, or
    /// nullptr for a date too far out (or not a number) to be written exactly.
    static char *format(double secondsSinceReferenceDate, char *out);
};
