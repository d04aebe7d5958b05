#include "model/ADPlistCoercionHandler.h"
#include "support/ValueBuilders.h"

#include "shared/PlistArray.h"
#include "shared/PlistDictionary.h"
#include "viewers/formatters/ADDateFormatter.h"

#include <QDateTime>

#include <clocale>
#include <string>

#include <gtest/gtest.h>

namespace {

struct Coercion
{
    const char *name;
    PlistValue from;
    ADPlistType to;
    PlistValue expected;
};

std::vector<Coercion> coercions()
{
    return {
        {"StringYesIsTrue", str("YES"), ADPlistTypeBoolean, PlistValue(true)},
        {"StringOneIsTrue", str("1"), ADPlistTypeBoolean, PlistValue(true)},
        {"LowercaseYesIsFalse", str("yes"), ADPlistTypeBoolean, PlistValue(false)},
        {"StringOneAndAHalf", str("1.5"), ADPlistTypeNumber, PlistValue(1.5)},
        {"NegativeFractionIsCut", str("-1.5"), ADPlistTypeNumber, PlistValue(-1)},
        {"TrailingTextIgnored", str("42 apples"), ADPlistTypeNumber, PlistValue(42)},
        {"LettersAloneGiveZero", str("apples"), ADPlistTypeNumber, PlistValue(0)},
        {"ExponentMakesAReal", str(" 2.5e2"), ADPlistTypeNumber, PlistValue(250.0)},
        {"HexIsAZeroAndText", str("0x1A"), ADPlistTypeNumber, PlistValue(0)},
        {"HexStringToData", str("00ff"), ADPlistTypeData,
         PlistValue::data(QByteArray("\x00\xff", 2))},
        {"BadHexGivesEmptyData", str("xyz"), ADPlistTypeData, PlistValue::data(QByteArray())},
        {"BoolToString", PlistValue(false), ADPlistTypeString, str("NO")},
        {"BoolToNumber", PlistValue(true), ADPlistTypeNumber, PlistValue(1)},
        {"RealToString", PlistValue(2.5), ADPlistTypeString, str("2.500000")},
        {"IntegerCutTo32Bits", PlistValue(qint64(1) << 32 | 7), ADPlistTypeString, str("7")},
        {"NumberToBool", PlistValue(-3), ADPlistTypeBoolean, PlistValue(true)},
        {"DataToString", PlistValue::data("\x01\xab"), ADPlistTypeString, str("01ab")},
        {"DateToNumberHasNoRoute", PlistValue::date(100), ADPlistTypeNumber, PlistValue(0)},
        {"NullToStringIsEmpty", PlistValue::null(), ADPlistTypeString, str("")},
        {"SameTypeCopies", str("same"), ADPlistTypeString, str("same")},
    };
}

class CoercionTable : public testing::TestWithParam<Coercion>
{};

TEST_P(CoercionTable, ConvertsOrFallsBackToTheDefault)
{
    const Coercion &row = GetParam();
    const PlistValue result =
        ADPlistCoercionHandler::sharedCoercionHandler().coercePlist(row.from, row.to);
    EXPECT_TRUE(result.isIdenticalTo(row.expected)) << qPrintable(result.displayString());
}

INSTANTIATE_TEST_SUITE_P(Rows, CoercionTable, testing::ValuesIn(coercions()),
                         [](const auto &row) { return std::string(row.param.name); });

// The application object sets the C library's locale from the environment, so
// text typed as "1.5" must not read as 1 where a comma is the decimal separator.
TEST(ADPlistCoercionHandler, ReadsNumbersAlikeInEveryLocale)
{
    const std::string before = std::setlocale(LC_NUMERIC, nullptr);
    if (!std::setlocale(LC_NUMERIC, "de_DE.UTF-8"))
        GTEST_SKIP() << "no de_DE.UTF-8 locale here (scripts/bootstrap makes one)";
    ADPlistCoercionHandler &handler = ADPlistCoercionHandler::sharedCoercionHandler();
    const PlistValue point = handler.coercePlist(str("1.5"), ADPlistTypeNumber);
    const PlistValue comma = handler.coercePlist(str("1,5"), ADPlistTypeNumber);
    std::setlocale(LC_NUMERIC, before.c_str());
    EXPECT_TRUE(point.isIdenticalTo(PlistValue(1.5))) << qPrintable(point.displayString());
    EXPECT_TRUE(comma.isIdenticalTo(PlistValue(1))) << qPrintable(comma.displayString());
}

TEST(ADPlistCoercionHandler, ConvertsContainers)
{
    ADPlistCoercionHandler &handler = ADPlistCoercionHandler::sharedCoercionHandler();
    PlistArray array = PlistArray::create();
    array.append(str("a"));
    array.append(str("b"));
    const PlistDictionary d = handler.coercePlist(array, ADPlistTypeDictionary).toDictionary();
    ASSERT_EQ(d.count(), 2);
    EXPECT_EQ(d.keyAt(0), QStringLiteral("0"));
    EXPECT_EQ(d.value(u"1").toString(), QStringLiteral("b"));

    PlistDictionary source = PlistDictionary::create();
    source.insert(QStringLiteral("b"), str("second"));
    source.insert(QStringLiteral("a"), str("first"));
    const PlistArray values = handler.coercePlist(source, ADPlistTypeArray).toArray();
    ASSERT_EQ(values.count(), 2);
    EXPECT_EQ(values.at(0).toString(), QStringLiteral("first"));

    const PlistValue copy = handler.coercePlist(source, ADPlistTypeDictionary);
    EXPECT_TRUE(copy.isIdenticalTo(source));
    EXPECT_FALSE(copy.isSameObject(source));
    EXPECT_TRUE(handler.coercePlist(PlistValue(), ADPlistTypeString).isNone());
}

TEST(ADPlistCoercionHandler, DatesGoThroughTheStandardFormatter)
{
    ADPlistCoercionHandler &handler = ADPlistCoercionHandler::sharedCoercionHandler();
    const double when = 700000000;
    const PlistValue shown = handler.coercePlist(PlistValue::date(when), ADPlistTypeString);
    EXPECT_EQ(shown.toString(), ADDateFormatter::standardDateFormatter().stringFromDate(when));
    EXPECT_TRUE(handler.coercePlist(shown, ADPlistTypeDate).isIdenticalTo(PlistValue::date(when)));
    const PlistValue described =
        handler.coercePlist(str("2001-01-02 00:00:00 +0100"), ADPlistTypeDate);
    EXPECT_EQ(described.toDate(), 86400.0 - 3600.0);
    const double before = double(QDateTime::currentSecsSinceEpoch() - 978307200 - 1);
    EXPECT_GE(handler.coercePlist(str("no date at all"), ADPlistTypeDate).toDate(), before)
        << "text that is no date gives the current date";
}

TEST(ADPlistCoercionHandler, TableCellsCanBeChanged)
{
    ADPlistCoercionHandler handler;
    handler.setHandler([](const PlistValue &v) { return PlistValue(v.toDate()); }, ADPlistTypeDate,
                       ADPlistTypeNumber);
    EXPECT_TRUE(
        handler.coercePlist(PlistValue::date(5), ADPlistTypeNumber).isIdenticalTo(PlistValue(5.0)));
    handler.removeHandler(ADPlistTypeString, ADPlistTypeBoolean);
    EXPECT_TRUE(
        handler.coercePlist(str("YES"), ADPlistTypeBoolean).isIdenticalTo(PlistValue(false)));
}

} // namespace
