// Display and parse rules of the scalar formatters, each table run under
// en_US and de_DE: the rows give both locales' texts where they differ.

#include "LocaleTest.h"

#include "viewers/formatters/ADBooleanFormatter.h"
#include "viewers/formatters/ADDateFormatter.h"
#include "viewers/formatters/ADFourCharCodeNumberFormatter.h"
#include "viewers/formatters/ADHMSFormatter.h"
#include "viewers/formatters/ADHexNumberFormatter.h"
#include "viewers/formatters/ADNullFormatter.h"
#include "viewers/formatters/ADNumberFormatter.h"
#include "viewers/formatters/ADStorageSizeFormatter.h"
#include "viewers/formatters/ADTimeIntervalNumberFormatter.h"

#include <functional>

namespace {

using Factory = std::function<std::unique_ptr<KZFormatter>()>;

template <typename T> Factory make()
{
    return [] { return std::make_unique<T>(); };
}

Factory hexWithOrder(int order)
{
    return [order] {
        auto formatter = std::make_unique<ADHexNumberFormatter>();
        formatter->setByteOrder(order);
        return formatter;
    };
}

Factory hmsWithLeadingZero(bool leadingZero)
{
    return [leadingZero] {
        auto formatter = std::make_unique<ADHMSFormatter>();
        formatter->setIncludeLeadingZero(leadingZero);
        return formatter;
    };
}

Factory storageSizeInMode(int mode)
{
    return [mode] {
        auto formatter = std::make_unique<ADStorageSizeFormatter>();
        formatter->setStorageSizeMode(mode);
        return formatter;
    };
}

struct DisplayRow
{
    const char *name;
    Factory formatter;
    PlistValue value;
    const char *english;           // null: no display string
    const char *german;            // null: as in English
    const char *editing = nullptr; // null: as displayed
};

const DisplayRow kDisplayRows[] = {
    {"BooleanYes", make<ADBooleanFormatter>(), PlistValue(true), "YES", nullptr},
    {"BooleanNo", make<ADBooleanFormatter>(), PlistValue(false), "NO", nullptr},
    {"BooleanOfString", make<ADBooleanFormatter>(), PlistValue(QStringLiteral("YES")), nullptr,
     nullptr},
    {"Integer", make<ADNumberFormatter>(), PlistValue(qint64(1000)), "1000", nullptr},
    {"NegativeInteger", make<ADNumberFormatter>(), PlistValue(qint64(-5)), "-5", nullptr},
    {"LargestUnsigned", make<ADNumberFormatter>(), PlistValue(quint64(18446744073709551615ULL)),
     "18446744073709551615", nullptr},
    {"Real", make<ADNumberFormatter>(), PlistValue(1.5), "1.5", "1,5"},
    {"WholeReal", make<ADNumberFormatter>(), PlistValue(1.0), "1.0", "1,0"},
    {"RealRoundedForDisplayOnly", make<ADNumberFormatter>(), PlistValue(0.1 + 0.2), "0.3", "0,3"},
    {"HugeReal", make<ADNumberFormatter>(), PlistValue(1e300), "1.0E+300", "1,0E+300"},
    {"NumberOfString", make<ADNumberFormatter>(), PlistValue(QStringLiteral("1")), nullptr,
     nullptr},
    {"HexBigEndian", hexWithOrder(2), PlistValue(qint64(0x1234)), "0x1234", nullptr},
    {"HexLittleEndian", hexWithOrder(1), PlistValue(qint64(0x1234)), "0x3412", nullptr},
    {"HexNegative", hexWithOrder(2), PlistValue(qint64(-1)), "0xFFFFFFFFFFFFFFFF", nullptr},
    {"HexZero", hexWithOrder(2), PlistValue(qint64(0)), "0x00", nullptr},
    {"FourCharCode", make<ADFourCharCodeNumberFormatter>(), PlistValue(qint64(0x61626364)), "abcd",
     nullptr},
    {"HMSHoursMinutesSeconds", make<ADHMSFormatter>(), PlistValue(3661.5), "1:01:01.500", nullptr},
    {"HMSMinutes", make<ADHMSFormatter>(), PlistValue(qint64(65)), "01:05", nullptr},
    {"HMSSeconds", make<ADHMSFormatter>(), PlistValue(qint64(5)), ":05", nullptr},
    {"HMSZero", make<ADHMSFormatter>(), PlistValue(qint64(0)), ":00", nullptr},
    {"HMSOneDay", make<ADHMSFormatter>(), PlistValue(qint64(86400)), "1:0:00:00", nullptr},
    {"HMSNegative", make<ADHMSFormatter>(), PlistValue(qint64(-5)), "-:05", nullptr},
    {"HMSMinutesNoLeadingZero", hmsWithLeadingZero(false), PlistValue(qint64(65)), "1:05", nullptr},
    {"HMSSecondsNoLeadingZero", hmsWithLeadingZero(false), PlistValue(qint64(5)), ":5", nullptr},
    {"StorageZero", make<ADStorageSizeFormatter>(), PlistValue(qint64(0)), "0 bytes", nullptr, "0"},
    {"StorageNegative", make<ADStorageSizeFormatter>(), PlistValue(qint64(-1)), "--", nullptr,
     "-1.0"},
    {"StorageOneByte", make<ADStorageSizeFormatter>(), PlistValue(qint64(1)), "1.0 bytes",
     "1,0 bytes", "1.0"},
    {"StorageDecimalKilobytes", make<ADStorageSizeFormatter>(), PlistValue(qint64(1500)), "1.5 KB",
     "1,5 KB", "1,500.0"},
    {"StorageBinaryKilobytes", storageSizeInMode(0), PlistValue(qint64(1536)), "1.5 KB", "1,5 KB",
     "1,536.0"},
    {"NullShowsNull", make<ADNullFormatter>(), PlistValue::null(), "<null>", nullptr},
};

class ScalarDisplay : public LocaleTest
{};

TEST_P(ScalarDisplay, ShowsEachRowAsTheLocaleWrites)
{
    for (const DisplayRow &row : kDisplayRows) {
        SCOPED_TRACE(row.name);
        const std::unique_ptr<KZFormatter> formatter = row.formatter();
        const std::optional<QString> shown = formatter->stringForObjectValue(row.value);
        if (!row.english) {
            EXPECT_FALSE(shown.has_value());
            continue;
        }
        const char *expected = german() && row.german ? row.german : row.english;
        EXPECT_EQ(shown.value_or(QStringLiteral("(none)")), QString::fromUtf8(expected));
        if (row.editing) {
            QString editing = QString::fromUtf8(row.editing);
            if (german())
                editing.replace(u',', u'#').replace(u'.', u',').replace(u'#', u'.');
            EXPECT_EQ(formatter->editingStringForObjectValue(row.value).value_or(QString()),
                      editing);
        }
    }
}

AD_INSTANTIATE_LOCALES(ScalarDisplay);

struct ParseRow
{
    const char *name;
    Factory formatter;
    const char *english;
    const char *german;                       // null: the same text
    PlistValue expected;                      // none: the parse fails
    PlistValue germanExpected = PlistValue(); // none: as in English
    const char *message = nullptr;
};

const ParseRow kParseRows[] = {
    {"Yes", make<ADBooleanFormatter>(), "YES", nullptr, PlistValue(true)},
    {"No", make<ADBooleanFormatter>(), "NO", nullptr, PlistValue(false)},
    {"LowercaseYes", make<ADBooleanFormatter>(), "yes", nullptr, PlistValue(), PlistValue(),
     "The string for a boolean must be either “YES” or “NO”."},
    {"Thousands", make<ADNumberFormatter>(), "1,000", "1.000", PlistValue(qint64(1000))},
    {"CommaIsDecimalInGerman", make<ADNumberFormatter>(), "1,000", nullptr,
     PlistValue(qint64(1000)), PlistValue(1.0)},
    {"DecimalSeparatorMakesReal", make<ADNumberFormatter>(), "1.0", "1,0", PlistValue(1.0)},
    {"PointIsThousandsInGerman", make<ADNumberFormatter>(), "1.5", nullptr, PlistValue(1.5),
     PlistValue(qint64(15))},
    {"ExponentWithDecimal", make<ADNumberFormatter>(), "1.0E+300", "1,0E+300", PlistValue(1e300)},
    {"BeyondSigned", make<ADNumberFormatter>(), "18446744073709551615", nullptr,
     PlistValue(quint64(18446744073709551615ULL))},
    {"Empty", make<ADNumberFormatter>(), "", nullptr, PlistValue(), PlistValue(),
     "No value entered"},
    {"NotANumber", make<ADNumberFormatter>(), "abc", nullptr, PlistValue(), PlistValue(),
     "“abc” is not a whole number"},
    {"HexBigEndian", hexWithOrder(2), "0x1234", nullptr, PlistValue(qint64(0x1234))},
    {"HexLittleEndian", hexWithOrder(1), "0x3412", nullptr, PlistValue(qint64(0x1234))},
    {"HexWithoutPrefixWithBlanks", hexWithOrder(2), "12 34", nullptr, PlistValue(qint64(0x1234))},
    {"HexTopBitIsNegative", hexWithOrder(2), "0xFFFFFFFFFFFFFFFF", nullptr, PlistValue(qint64(-1))},
    {"HexTooLong", hexWithOrder(2), "0x10000000000000000", nullptr, PlistValue(), PlistValue(),
     "A hexadecimal number has at most 16 digits"},
    {"HexNotHex", hexWithOrder(2), "0xzz", nullptr, PlistValue(), PlistValue(),
     "“0xzz” is not a hexadecimal number"},
    {"FourCharCode", make<ADFourCharCodeNumberFormatter>(), "abcd", nullptr,
     PlistValue(qint64(0x61626364))},
    {"FourCharCodeHighByte", make<ADFourCharCodeNumberFormatter>(),
     "\xC3\x84"
     "bcd",
     nullptr, PlistValue(qint64(0x80626364))},
    {"FourCharCodeTooShort", make<ADFourCharCodeNumberFormatter>(), "abc", nullptr, PlistValue(),
     PlistValue(), "OSType string must be exactly 4 characters long"},
    {"FourCharCodeNotRoman", make<ADFourCharCodeNumberFormatter>(),
     "ab\xE4\xB8\xAD"
     "d",
     nullptr, PlistValue(), PlistValue(), "Could not encode string as OSType"},
    {"HMSFull", make<ADHMSFormatter>(), "1:01:01.500", nullptr, PlistValue(3661.5)},
    {"HMSLeadingColon", make<ADHMSFormatter>(), ":05", nullptr, PlistValue(qint64(5))},
    {"HMSEmpty", make<ADHMSFormatter>(), "", nullptr, PlistValue(qint64(0))},
    {"HMSFractionKeepsItsSign", make<ADHMSFormatter>(), "-1:30.5", nullptr, PlistValue(-89.5)},
    {"HMSFiveComponents", make<ADHMSFormatter>(), "1:2:3:4:5", nullptr,
     PlistValue(qint64(2 * 86400 + 3 * 3600 + 4 * 60 + 5))},
    {"HMSSecondsTooLarge", make<ADHMSFormatter>(), "60", nullptr, PlistValue(), PlistValue(),
     "Value 60 too large for seconds component"},
    {"HMSHoursTooLarge", make<ADHMSFormatter>(), "24:00:00", nullptr, PlistValue(), PlistValue(),
     "Value 24 too large for hours component"},
    {"HMSTooSmall", make<ADHMSFormatter>(), "1:-5", nullptr, PlistValue(), PlistValue(),
     "Value -5 too small for seconds component"},
    {"HMSTwoPoints", make<ADHMSFormatter>(), "1.2.3", nullptr, PlistValue(), PlistValue(),
     "Illegal characters in seconds component"},
    {"HMSBadMilliseconds", make<ADHMSFormatter>(), "5.x", nullptr, PlistValue(), PlistValue(),
     "Illegal milliseconds value"},
    {"HMSExtraCharacters", make<ADHMSFormatter>(), "5.3x", nullptr, PlistValue(), PlistValue(),
     "Illegal extra characters"},
    {"HMSNoDigits", make<ADHMSFormatter>(), "a:05", nullptr, PlistValue(), PlistValue(),
     "Invalid value for minutes component"},
    {"StorageKilobytes", make<ADStorageSizeFormatter>(), "2 KB", nullptr, PlistValue(qint64(2000))},
    {"StorageLowercaseUnit", make<ADStorageSizeFormatter>(), "2 kb", nullptr,
     PlistValue(qint64(2000))},
    {"StorageBinaryKilobytes", storageSizeInMode(0), "2 KB", nullptr, PlistValue(qint64(2048))},
    {"StorageFractionDropped", make<ADStorageSizeFormatter>(), "1.5 MB", "1,5 MB",
     PlistValue(qint64(1000000))},
    {"StorageWithoutUnit", make<ADStorageSizeFormatter>(), "1,536.0", "1.536,0",
     PlistValue(qint64(1536))},
    {"StorageNegative", make<ADStorageSizeFormatter>(), "-2 KB", nullptr, PlistValue(),
     PlistValue(), "A storage size cannot be negative"},
    {"StorageTooLarge", make<ADStorageSizeFormatter>(), "20000000 TB", nullptr, PlistValue(),
     PlistValue(), "“20000000 TB” is too large for a storage size"},
    {"NullText", make<ADNullFormatter>(), "<null>", nullptr, PlistValue::null()},
    {"NullReplacedByString", make<ADNullFormatter>(), "text", nullptr,
     PlistValue(QStringLiteral("text"))},
};

class ScalarParse : public LocaleTest
{};

TEST_P(ScalarParse, ReadsWhatIsTypedOrSaysWhyNot)
{
    for (const ParseRow &row : kParseRows) {
        SCOPED_TRACE(row.name);
        const std::unique_ptr<KZFormatter> formatter = row.formatter();
        const QString text = QString::fromUtf8(german() && row.german ? row.german : row.english);
        const PlistValue expected =
            german() && !row.germanExpected.isNone() ? row.germanExpected : row.expected;
        PlistValue value;
        QString message;
        const bool ok = formatter->getObjectValue(&value, text, &message);
        if (expected.isNone()) {
            EXPECT_FALSE(ok);
            EXPECT_EQ(message, QString::fromUtf8(row.message));
            continue;
        }
        ASSERT_TRUE(ok) << qPrintable(message);
        EXPECT_TRUE(value.isIdenticalTo(expected))
            << qPrintable(value.displayString()) << " kind " << int(value.kind());
    }
}

TEST_P(ScalarParse, EditingStringsReadBackAsTheSameValue)
{
    const PlistValue values[] = {
        PlistValue(qint64(-42)), PlistValue(0.1 + 0.2),
        PlistValue(1.0),         PlistValue(1e-300),
        PlistValue(-2.5e17),     PlistValue(quint64(18446744073709551615ULL))};
    const std::unique_ptr<KZFormatter> formatters[] = {std::make_unique<ADNumberFormatter>(),
                                                       hexWithOrder(1)(), hexWithOrder(2)()};
    for (const auto &formatter : formatters) {
        for (const PlistValue &value : values) {
            if (formatter.get() != formatters[0].get() && (value.isReal() || value.isUnsigned()))
                continue;
            const QString text = formatter->editingStringForObjectValue(value).value();
            PlistValue back;
            ASSERT_TRUE(formatter->getObjectValue(&back, text, nullptr)) << qPrintable(text);
            EXPECT_TRUE(back.isIdenticalTo(value)) << qPrintable(text);
        }
    }
}

TEST_P(ScalarParse, DatesReadBackInTheLocalesMediumStyle)
{
    const ADDateFormatter formatter(QLocale(), QTimeZone::utc());
    const double when = 785516645; // 2025-11-22 15:04:05 UTC
    const QString shown = formatter.stringForObjectValue(PlistValue::date(when)).value();
    EXPECT_TRUE(shown.contains(german() ? QStringLiteral("15:04:05") : QStringLiteral("3:04:05")))
        << qPrintable(shown);
    PlistValue back;
    ASSERT_TRUE(formatter.getObjectValue(&back, shown, nullptr)) << qPrintable(shown);
    EXPECT_EQ(back.toDate(), when);
    QString message;
    EXPECT_FALSE(formatter.getObjectValue(&back, QStringLiteral("soon"), &message));
    EXPECT_EQ(message, QStringLiteral("“soon” is not a date"));
}

TEST_P(ScalarParse, TimeIntervalsCountFromTheirReferenceDate)
{
    ADTimeIntervalNumberFormatter since2001;
    ADTimeIntervalNumberFormatter since1970;
    since1970.setReferenceDate(QDateTime(QDate(1970, 1, 1), QTime(0, 0), QTimeZone::utc()));
    const ADDateFormatter dates;
    EXPECT_EQ(since1970.stringForObjectValue(PlistValue(qint64(0))),
              dates.stringFromDate(-978307200));
    EXPECT_EQ(since2001.stringForObjectValue(PlistValue(qint64(60))), dates.stringFromDate(60));
    for (ADTimeIntervalNumberFormatter *formatter : {&since2001, &since1970}) {
        const QString shown =
            formatter->stringForObjectValue(PlistValue(qint64(1700000000))).value();
        PlistValue back;
        ASSERT_TRUE(formatter->getObjectValue(&back, shown, nullptr));
        EXPECT_TRUE(back.isReal());
        EXPECT_EQ(back.toReal(), 1700000000.0);
    }
    EXPECT_EQ(since2001.attributedStringForObjectValue(PlistValue(qint64(0)))->label,
              QStringLiteral("Time interval date: "));
}

AD_INSTANTIATE_LOCALES(ScalarParse);

TEST(ScalarLabels, LabelledFormattersPutTheLabelApartFromTheEditedText)
{
    struct Row
    {
        const char *name;
        Factory formatter;
        PlistValue value;
        const char *label;
    };
    const Row rows[] = {
        {"HexBigEndian", hexWithOrder(2), PlistValue(qint64(1)), "Hex (big-endian): "},
        {"HexLittleEndian", hexWithOrder(1), PlistValue(qint64(1)), "Hex (little-endian): "},
        {"FourCharCode", make<ADFourCharCodeNumberFormatter>(), PlistValue(qint64(0x61626364)),
         "OSType: "},
        {"HMS", make<ADHMSFormatter>(), PlistValue(qint64(5)), "HMS: "},
        {"StorageSize", make<ADStorageSizeFormatter>(), PlistValue(qint64(5)), "Storage Size: "},
        {"Boolean", make<ADBooleanFormatter>(), PlistValue(true), ""},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        const std::unique_ptr<KZFormatter> formatter = row.formatter();
        const KZStyledText styled = formatter->attributedStringForObjectValue(row.value).value();
        EXPECT_EQ(styled.label, QString::fromUtf8(row.label));
        EXPECT_EQ(styled.labelRole, KZStyledText::Role::Secondary);
        EXPECT_EQ(styled.text, formatter->stringForObjectValue(row.value));
    }
}

} // namespace
