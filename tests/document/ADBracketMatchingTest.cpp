#include "document/ADBracketMatching.h"

#include <QTextDocument>

#include <gtest/gtest.h>

namespace {

struct BalanceRow
{
    const char *name;
    const char16_t *text;
    qint64 position;
    KZRange expected;
};

constexpr KZRange kNotFound{};

const BalanceRow kBalanceRows[] = {
    {"OnTheCloser", u"(a)", 2, {0, 3}},
    {"InsideNested", u"(a(b)c)", 4, {2, 3}},
    {"AroundNested", u"(a(b)c)", 1, {0, 7}},
    {"AfterANestedGroupGivesThatGroup", u"(a(b)c)", 6, {2, 3}},
    {"JustAfterAGroupGivesThatGroup", u"x(a)y", 4, {1, 3}},
    {"MismatchedPair", u"(]", 1, kNotFound},
    {"MismatchOnTheWayBack", u"([a)", 3, kNotFound},
    {"NoOpener", u"abc", 2, kNotFound},
    {"NegativePosition", u"(a)", -1, kNotFound},
    {"OpenerIsTheLastCharacter", u"ab(", 3, {2, 0}},
    {"TextEndsBeforeTheCloser", u"(ab", 1, {0, 4}},
    {"Tag", u"<key>a</key>", 4, {0, 5}},
    {"AcrossLines", u"{\n\t(a)\n}", 2, {0, 8}},
};

class ADBracketMatchingRows : public testing::TestWithParam<BalanceRow>
{};

TEST_P(ADBracketMatchingRows, FindsThePairAroundAPosition)
{
    const QString text = QString::fromUtf16(GetParam().text);
    EXPECT_EQ(ADBracketMatching::balanceFrom(text, GetParam().position), GetParam().expected);
    QTextDocument document(text);
    EXPECT_EQ(ADBracketMatching::balanceFrom(document, GetParam().position), GetParam().expected)
        << "a document reads the same as its text";
}

INSTANTIATE_TEST_SUITE_P(Rows, ADBracketMatchingRows, testing::ValuesIn(kBalanceRows),
                         [](const auto &row) { return std::string(row.param.name); });

TEST(ADBracketMatching, PairsOpenersWithClosers)
{
    const QString openers = QStringLiteral("([{<"), closers = QStringLiteral(")]}>");
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(ADBracketMatching::endCharForStartChar(openers[i]), closers[i]);
        EXPECT_EQ(ADBracketMatching::startCharForEndChar(closers[i]), openers[i]);
    }
    EXPECT_TRUE(ADBracketMatching::endCharForStartChar(u')').isNull());
    EXPECT_TRUE(ADBracketMatching::startCharForEndChar(u'a').isNull());
}

} // namespace
