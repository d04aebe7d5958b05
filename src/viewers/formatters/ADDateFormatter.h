#pragma once

#include "KZCompiledDateFormat.h"
#include "KZFormatter.h"

#include <QLocale>
#include <QString>
#include <QTimeZone>

#include <optional>

/// Shows dates in a locale's medium date and time styles ("Nov 22, 2026,
/// 3:04:05 PM" in English) and reads them back leniently: the same form,
/// the date alone, the ISO 8601 form and the description form
/// "2026-11-22 15:04:05 +0000" all parse. Dates are plain date values
/// (seconds since 2001-01-01 UTC). Immutable once made; any thread.
class ADDateFormatter : public KZFormatter
{
    Q_OBJECT
public:
    /// The default locale and the system's time zone.
    Q_INVOKABLE ADDateFormatter();
    explicit ADDateFormatter(const QLocale &locale,
                             const QTimeZone &zone = QTimeZone::systemTimeZone());

    /// The one formatter of the process for coercions, made on first use.
    static const ADDateFormatter &standardDateFormatter();

    const QTimeZone &timeZone() const { return _zone; }
    QString stringFromDate(double secondsSinceReferenceDate) const;
    std::optional<double> dateFromString(const QString &text) const;

    std::optional<QString> stringForObjectValue(const PlistValue &value) const override;
    bool getObjectValue(PlistValue *value, const QString &text,
                        QString *errorDescription) const override;

private:
    QLocale _locale;
    QTimeZone _zone;
    QString _dateFormat; // the medium date style
    QString _timeFormat; // the medium time style
    QString _dateTimeFormat;
    KZCompiledDateFormat _compiledFormat; // _dateTimeFormat, ready to show dates fast
    std::optional<int> _fixedOffset;      // of a zone without transitions, in seconds
};
