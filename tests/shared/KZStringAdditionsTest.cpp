#include "shared/KZStringAdditions.h"
#include "shared/KZComparison.h"
#include "shared/PlistValue.h"

#include <gtest/gtest.h>

namespace {

struct LineCase
{
    const char *name;
    const char16_t *text;
    qint64 lines;
};

const LineCase kLineCases[] = {
    {"Empty", u"", 0},
    {"OneCharacter", u"a", 0},
    {"TwoCharacters", u"ab", 1},
    {"LastLineOfOneCharacterUncounted", u"a\nb", 1},
    {"LastLineLonger", u"a\nbc", 2},
    {"TrailingNewlineAddsNoLine", u"ab\ncd\n", 2},
    {"CrLfIsOneTerminator", u"ab\r\ncd", 2},
    {"UnicodeSeparators", u"ab\u2028cd\u2029ef", 3},
};

class LineCount : public testing::TestWithParam<LineCase>
{};

TEST_P(LineCount, CountsAsTheTextViewDoes)
{
    EXPECT_EQ(numberOfLines(QStringView(GetParam().text)), GetParam().lines);
}

INSTANTIATE_TEST_SUITE_P(Rows, LineCount, testing::ValuesIn(kLineCases),
                         [](const auto &row) { return std::string(row.param.name); });

TEST(StringAdditions, FindsLineRangesOnTheSameWalk)
{
    const QString text = QStringLiteral("ab\r\ncd\nef");
    EXPECT_EQ(rangeForLineNumber(text, 0), (KZRange{0, 4}));
    EXPECT_EQ(rangeForLineNumber(text, 1), (KZRange{4, 3}));
    EXPECT_EQ(rangeForLineNumber(text, 2), (KZRange{7, 2}));
    EXPECT_TRUE(rangeForLineNumber(text, 3).isNotFound());
    EXPECT_TRUE(rangeForLineNumber(u"a\nb", 1).isNotFound());
    EXPECT_TRUE(rangeForLineNumber(u"a", 0).isNotFound());
}

TEST(StringAdditions, EditsAndSymbols)
{
    QString s = QStringLiteral("ab");
    deleteLastCharacter(s);
    EXPECT_EQ(s, QStringLiteral("a"));
    QString empty;
    deleteLastCharacter(empty);
    EXPECT_TRUE(empty.isEmpty());
    EXPECT_EQ(horizontalEllipsisString(), QString(QChar(0x2026)));
    EXPECT_EQ(longDashString(), QString(QChar(0x2014)));
    EXPECT_EQ(commandSymbolString(), QString(QChar(0x2318)));
}

TEST(StringAdditions, UniquifiesAgainstTakenNames)
{
    EXPECT_EQ(kz_uniquifyInStrings("New item", {}), QStringLiteral("New item"));
    const QSet<QString> taken{"New item", "New item 2"};
    const QString unique = kz_uniquifyInStrings("New item", taken);
    EXPECT_FALSE(taken.contains(unique));
    EXPECT_TRUE(unique.startsWith(QStringLiteral("New item")));
}

struct CompareCase
{
    const char *name;
    KZComparison comparison;
    const char16_t *a, *b;
    int expected;
};

const CompareCase kCompareCases[] = {
    {"OrdinalUppercaseFirst", KZComparison::Compare, u"B", u"a", -1},
    {"CaseInsensitive", KZComparison::CaseInsensitiveCompare, u"B", u"a", 1},
    {"CaseInsensitiveEqual", KZComparison::CaseInsensitiveCompare, u"Key", u"kEY", 0},
    {"NumericRuns", KZComparison::NumericCompare, u"item9", u"item10", -1},
    {"PlainOrdinalIsNotNumeric", KZComparison::Compare, u"item9", u"item10", 1},
    {"NumericLeadingZeros", KZComparison::NumericCompare, u"v007", u"v7", 0},
    {"NumericKeepsCase", KZComparison::NumericCompare, u"A2", u"a1", -1},
    {"NumericIgnoringCase", KZComparison::NumericCaseInsensitiveCompare, u"A2", u"a10", -1},
    {"PrefixFirst", KZComparison::NumericCompare, u"abc", u"abc1", -1},
};

class StringComparison : public testing::TestWithParam<CompareCase>
{};

TEST_P(StringComparison, OrdersStrings)
{
    const CompareCase &row = GetParam();
    EXPECT_EQ(KZCompareStrings(row.comparison, QStringView(row.a), QStringView(row.b)),
              row.expected);
    EXPECT_EQ(KZCompareStrings(row.comparison, QStringView(row.b), QStringView(row.a)),
              -row.expected);
}

INSTANTIATE_TEST_SUITE_P(Rows, StringComparison, testing::ValuesIn(kCompareCases),
                         [](const auto &row) { return std::string(row.param.name); });

TEST(StringAdditions, StringComparisonOfANonStringIsZero)
{
    EXPECT_EQ(KZCompareValues(KZComparison::NumericCompare, PlistValue(QStringLiteral("1")),
                              PlistValue(2)),
              0);
    EXPECT_EQ(KZCompareValues(KZComparison::PlistCompare, PlistValue(1), PlistValue(2)), -1);
}

TEST(StringAdditions, InsertsAtTheSortedPlaceAfterEqualElements)
{
    QStringList list;
    for (const char *s : {"b10", "a", "b9", "B9"})
        insertObjectSortedBySelector(list, QString::fromUtf8(s),
                                     KZComparison::NumericCaseInsensitiveCompare);
    EXPECT_EQ(list, (QStringList{"a", "b9", "B9", "b10"}));
}

} // namespace
