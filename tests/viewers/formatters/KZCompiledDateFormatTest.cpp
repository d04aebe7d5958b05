// The compiled date format against its plain twin, QLocale::toString, over
// the same dates, formats and locales; and the date formatter's fast path
// against the time zones it converts to.

#include "viewers/formatters/KZCompiledDateFormat.h"
#include "viewers/formatters/ADDateFormatter.h"

#include <QTimeZone>

#include <gtest/gtest.h>

namespace {

TEST(CompiledDateFormat, WritesWhatQLocaleWrites)
{
    const char *const locales[] = {"en_US", "de_DE", "fr_FR", "ja_JP", "en_GB", "C"};
    const char *const formats[] = {"MMM d, yyyy, h:mm:ss AP", "d. MMM yyyy, HH:mm:ss",
                                   "yy/M/d H:m:s ap",         "'at' h 'o''clock' A, MMMM dd",
                                   "dd.MM.yyyy hh:mm",        "s's' m'm'"};
    for (const char *name : locales) {
        const QLocale locale(QString::fromLatin1(name));
        QStringList allFormats = {locale.dateTimeFormat(QLocale::ShortFormat)};
        for (const char *format : formats)
            allFormats.append(QString::fromLatin1(format));
        for (const QString &format : allFormats) {
            SCOPED_TRACE(qPrintable(QStringLiteral("%1 %2").arg(QLatin1StringView(name), format)));
            const KZCompiledDateFormat compiled(locale, format);
            ASSERT_TRUE(compiled.isValid());
            for (int step = 0; step < 400; ++step) {
                const QDate date = QDate(1899, 12, 31).addDays(step * 197);
                const QTime time(step % 24, (step * 7) % 60, (step * 13) % 60);
                ASSERT_EQ(compiled.format(date, time),
                          locale.toString(QDateTime(date, time, QTimeZone::utc()), format));
            }
        }
    }
}

TEST(CompiledDateFormat, CountsSecondsToTheSameCivilDatesAsQDateTime)
{
    const KZCompiledDateFormat compiled(QLocale::c(), QStringLiteral("yyyy-MM-dd HH:mm:ss"));
    for (qint64 seconds = -62135596800 + 1; seconds < 253402300799; seconds += 987654321) {
        const QDateTime when = QDateTime::fromSecsSinceEpoch(seconds, QTimeZone::utc());
        ASSERT_EQ(compiled.format(seconds), compiled.format(when.date(), when.time())) << seconds;
    }
    for (const qint64 seconds : {qint64(-1), qint64(0), qint64(86399), qint64(-86401)}) {
        const QDateTime when = QDateTime::fromSecsSinceEpoch(seconds, QTimeZone::utc());
        EXPECT_EQ(compiled.format(seconds), when.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")));
    }
    EXPECT_TRUE(compiled.format(qint64(-62135596800 - 1)).isNull()); // the year 0
}

TEST(CompiledDateFormat, LeavesWhatItCannotWriteToQLocale)
{
    const QLocale english(QStringLiteral("en_US"));
    for (const char *format : {"dddd, MMM d", "h:mm:ss.zzz", "h:mm t", "yyy"})
        EXPECT_FALSE(KZCompiledDateFormat(english, QString::fromLatin1(format)).isValid())
            << format;
    EXPECT_FALSE(KZCompiledDateFormat(QLocale(QStringLiteral("ar_EG")), QStringLiteral("d/M/yyyy"))
                     .isValid());
    EXPECT_TRUE(KZCompiledDateFormat(english, QStringLiteral("d"))
                    .format(QDate(10000, 1, 1), QTime(0, 0))
                    .isNull());
}

TEST(DateFormatter, ShowsLocalTimeInItsZoneAcrossDaylightSaving)
{
    const QLocale german(QStringLiteral("de_DE"));
    const ADDateFormatter utc(german, QTimeZone::utc());
    for (const char *zoneName : {"Europe/Berlin", "America/New_York", "Asia/Kolkata"}) {
        const QTimeZone zone(zoneName);
        ASSERT_TRUE(zone.isValid()) << zoneName;
        const ADDateFormatter local(german, zone);
        for (double seconds = -3.2e9; seconds < 3.2e9; seconds += 8.7654321e6) {
            const int offset = zone.offsetFromUtc(QDateTime::fromSecsSinceEpoch(
                qint64(std::floor(seconds)) + 978307200, QTimeZone::utc()));
            ASSERT_EQ(local.stringFromDate(seconds), utc.stringFromDate(seconds + offset))
                << zoneName << " " << seconds;
        }
    }
    EXPECT_EQ(utc.stringFromDate(-0.5), utc.stringFromDate(-1));
}

} // namespace
