#pragma once

#include <QByteArray>
#include <QByteArrayView>

#include <optional>

/// The text of a date in the old-style form, "2001-01-01 00:00:00 +0000":
/// what the typed value `<*D...>` holds and what the writer puts in quotes.
/// Dates are seconds since 2001-01-01 00:00:00 UTC. Stateless.
class AsciiDate
{
public:
    /// The date of "YYYY-MM-DD HH:MM:SS +HHMM" (the offset may be negative),
    /// or nothing when the text is not exactly that or names no real day.
    static std::optional<double> parse(QByteArrayView text);
    /// The date in UTC with whole seconds (rounded down), or nothing when it
    /// is not finite or lies beyond any four-or-more-digit year.
    static std::optional<QByteArray> format(double secondsSinceReferenceDate);
};
