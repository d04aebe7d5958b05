#include "shared/PlistValue.h"
#include "shared/PlistArray.h"
#include "shared/PlistDictionary.h"
#include "support/ValueBuilders.h"

#include <QStringList>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

// An array holding `depth` arrays, each inside the next, around one string.
PlistValue nestedArrays(int depth)
{
    PlistValue inner = str("seed");
    for (int i = 0; i < depth; ++i) {
        PlistArray outer = PlistArray::create(1);
        outer.append(inner);
        inner = outer;
    }
    return inner;
}

QStringList keysOf(const PlistDictionary &d)
{
    QStringList keys;
    for (qsizetype i = 0; i < d.count(); ++i)
        keys << d.keyAt(i);
    return keys;
}

TEST(PlistValue, KeepsNumbersExactAcrossTheInlineBoundary)
{
    const qint64 limits[] = {0,
                             -1,
                             (qint64(1) << 60) - 1,
                             qint64(1) << 60,
                             -(qint64(1) << 60),
                             -(qint64(1) << 60) - 1,
                             std::numeric_limits<qint64>::max(),
                             std::numeric_limits<qint64>::min()};
    for (const qint64 i : limits) {
        const PlistValue v(i);
        EXPECT_EQ(v.toInteger(), i);
        EXPECT_TRUE(v.isInteger());
        EXPECT_FALSE(v.isUnsigned());
        EXPECT_EQ(v.plistType(), ADPlistTypeNumber);
    }
    const PlistValue big(std::numeric_limits<quint64>::max());
    EXPECT_TRUE(big.isUnsigned());
    EXPECT_EQ(big.toUnsigned(), std::numeric_limits<quint64>::max());
    EXPECT_FALSE(PlistValue(quint64(5)).isUnsigned()) << "small unsigned values are plain integers";

    for (const double d :
         {0.5, 0.1, -0.0, 1e300, 5e-324, std::numeric_limits<double>::infinity()}) {
        const PlistValue v(d);
        EXPECT_TRUE(v.isReal());
        EXPECT_EQ(std::bit_cast<quint64>(v.toReal()), std::bit_cast<quint64>(d)) << d;
        const PlistValue date = PlistValue::date(d);
        EXPECT_EQ(std::bit_cast<quint64>(date.toDate()), std::bit_cast<quint64>(d)) << d;
    }
    EXPECT_EQ(PlistValue::uid(std::numeric_limits<quint64>::max()).toUid(),
              std::numeric_limits<quint64>::max());
    EXPECT_EQ(PlistValue::uid(7).toUid(), 7u);
}

TEST(PlistValue, TellsTypesApart)
{
    EXPECT_EQ(PlistValue().plistType(), ADPlistTypeUnknown);
    EXPECT_EQ(PlistValue::uid(1).plistType(), ADPlistTypeUnknown);
    EXPECT_EQ(PlistValue(true).plistType(), ADPlistTypeBoolean);
    EXPECT_EQ(PlistValue::null().plistType(), ADPlistTypeNull);
    EXPECT_EQ(PlistValue::data("x").plistType(), ADPlistTypeData);
    EXPECT_EQ(PlistValue::date(0).plistType(), ADPlistTypeDate);
    EXPECT_EQ(str("").plistType(), ADPlistTypeString);
    EXPECT_EQ(PlistValue(PlistArray::create()).plistType(), ADPlistTypeArray);
    EXPECT_EQ(PlistValue(PlistDictionary::create()).plistType(), ADPlistTypeDictionary);
}

TEST(PlistValue, StoresTextExactly)
{
    const QString texts[] = {QString(), QStringLiteral("plain"), QStringLiteral("caf\u00e9"),
                             QString::fromUtf8("\xF0\x9F\x98\x80 smile"), QStringLiteral("\u2603")};
    for (const QString &t : texts) {
        const PlistValue v(t);
        EXPECT_EQ(v.toString(), t);
        EXPECT_EQ(v.stringLength(), t.size());
        EXPECT_TRUE(
            v.isEqualToPlist(PlistValue::fromUtf8(t.toUtf8().constData(), t.toUtf8().size())));
    }
}

// Small data lives in its node, larger data in a buffer of its own; the
// sizes straddle the line between the two.
TEST(PlistValue, StoresDataExactlyAtEverySize)
{
    for (const qsizetype size : {0, 1, 200, 243, 244, 245, 246, 300}) {
        QByteArray bytes(size, Qt::Uninitialized);
        for (qsizetype i = 0; i < size; ++i)
            bytes[i] = char(i * 37 + size);
        const PlistValue made = PlistValue::data(bytes);
        const PlistValue copied = PlistValue::dataCopy(bytes);
        const QByteArray original = bytes;
        bytes.fill('x'); // the values hold bytes of their own
        for (const PlistValue &v : {made, copied}) {
            EXPECT_EQ(v.plistType(), ADPlistTypeData);
            EXPECT_EQ(v.toData(), original) << size;
            EXPECT_EQ(v.dataView(), QByteArrayView(original)) << size;
        }
        EXPECT_TRUE(made.isIdenticalTo(copied));
        EXPECT_EQ(made.compare(PlistValue::data(original + '\0')), -1);
        if (size > 0) {
            EXPECT_FALSE(made.isEqualToPlist(PlistValue::data(bytes)));
        }
    }
}

TEST(PlistValue, EqualityFollowsPlistTypes)
{
    EXPECT_FALSE(PlistValue(true).isEqualToPlist(PlistValue(1)));
    EXPECT_FALSE(PlistValue(1).isEqualToPlist(PlistValue(true)));
    EXPECT_TRUE(PlistValue(1).isEqualToPlist(PlistValue(1.0)));
    EXPECT_FALSE(PlistValue(1).isIdenticalTo(PlistValue(1.0)));
    EXPECT_FALSE(PlistValue(std::numeric_limits<quint64>::max()).isEqualToPlist(PlistValue(-1)));
    EXPECT_FALSE(
        PlistValue(qint64(1) << 62).isEqualToPlist(PlistValue(double(qint64(1) << 62) + 1024.0)));
    EXPECT_FALSE(PlistValue::date(5).isEqualToPlist(PlistValue(5)));
    EXPECT_FALSE(str("1").isEqualToPlist(PlistValue(1)));

    PlistDictionary a = PlistDictionary::create(), b = PlistDictionary::create();
    a.insert(QStringLiteral("x"), PlistValue(true));
    a.insert(QStringLiteral("y"), PlistValue(2));
    b.insert(QStringLiteral("y"), PlistValue(2.0));
    b.insert(QStringLiteral("x"), PlistValue(true));
    EXPECT_TRUE(PlistValue(a).isEqualToPlist(b)) << "dictionaries are equal in any order";
    EXPECT_FALSE(PlistValue(a).isIdenticalTo(b));
    b.replaceAt(1, PlistValue(1));
    EXPECT_FALSE(PlistValue(a).isEqualToPlist(b)) << "a nested boolean never equals 1";
}

TEST(PlistValue, ComparesLikeTheValueClasses)
{
    EXPECT_EQ(PlistValue::data(QByteArray("\xff\xff")).compare(PlistValue::data("\x01\x01\x01")),
              -1);
    EXPECT_EQ(PlistValue::data("ab").compare(PlistValue::data("ac")), -1);
    EXPECT_EQ(PlistValue::data("ab").compare(str("ab")), 0);
    EXPECT_EQ(PlistValue(2).compare(PlistValue(1.5)), 1);
    EXPECT_EQ(PlistValue(std::numeric_limits<quint64>::max()).compare(PlistValue(1)), 1);
    EXPECT_EQ(PlistValue(std::numeric_limits<qint64>::max()).compare(PlistValue(9.3e18)), -1);
    EXPECT_EQ(PlistValue::date(1).compare(PlistValue::date(2)), -1);
    EXPECT_EQ(str("B").compare(str("a")), -1);
    EXPECT_EQ(str("B").plistCompare(str("a")), 1);
    EXPECT_EQ(PlistValue::null().plistCompare(PlistValue::null()), 0);
    EXPECT_EQ(PlistValue::null().plistCompare(PlistValue(1)), 1);
}

struct NumberOrder
{
    const char *name;
    PlistValue a, b;
    int expected; // a.compare(b); b.compare(a) gives the opposite
};

const NumberOrder kNumberOrders[] = {
    {"RealBelowInteger", PlistValue(1.5), PlistValue(2), -1},
    {"RealAboveInteger", PlistValue(2.5), PlistValue(2), 1},
    {"RealEqualsInteger", PlistValue(2.0), PlistValue(2), 0},
    {"NegativeFractionAboveItsFloor", PlistValue(-0.5), PlistValue(-1), 1},
    {"IntegerBeyondDoublePrecision", PlistValue(9007199254740992.0),
     PlistValue((qint64(1) << 53) + 1), -1},
    {"RealBeyondSignedRange", PlistValue(1e19), PlistValue(std::numeric_limits<qint64>::max()), 1},
    {"RealBelowUnsignedValue", PlistValue(1e19), PlistValue(std::numeric_limits<quint64>::max()),
     -1},
    {"UnsignedAboveRealInSignedRange", PlistValue(std::numeric_limits<quint64>::max()),
     PlistValue(-1e300), 1},
    {"BooleanCountsAsOne", PlistValue(true), PlistValue(0.5), 1},
};

class PlistValueNumberOrder : public testing::TestWithParam<NumberOrder>
{};

TEST_P(PlistValueNumberOrder, ComparesIntegersAndRealsEitherWayRound)
{
    const NumberOrder &row = GetParam();
    EXPECT_EQ(row.a.compare(row.b), row.expected);
    EXPECT_EQ(row.b.compare(row.a), -row.expected);
}

INSTANTIATE_TEST_SUITE_P(Rows, PlistValueNumberOrder, testing::ValuesIn(kNumberOrders),
                         [](const auto &row) { return std::string(row.param.name); });

TEST(PlistValue, DisplaysLeaves)
{
    EXPECT_EQ(PlistValue(true).displayString(), QStringLiteral("YES"));
    EXPECT_EQ(PlistValue(false).displayString(), QStringLiteral("NO"));
    EXPECT_EQ(PlistValue(-42).displayString(), QStringLiteral("-42"));
    EXPECT_EQ(PlistValue(0.1).displayString(), QStringLiteral("0.1"));
    EXPECT_EQ(PlistValue(std::numeric_limits<quint64>::max()).displayString(),
              QStringLiteral("18446744073709551615"));
    EXPECT_EQ(PlistValue::date(0).displayString(), QStringLiteral("2001-01-01 00:00:00 +0000"));
    EXPECT_TRUE(PlistValue::data("x").displayString().isNull());
    EXPECT_TRUE(PlistValue(PlistArray::create()).displayString().isNull());
}

TEST(PlistValue, ContainersAreSharedAndDeepCopiesAreNot)
{
    PlistArray leafHolder = PlistArray::create();
    leafHolder.append(str("leaf"));
    PlistDictionary root = PlistDictionary::create();
    root.insert(QStringLiteral("list"), leafHolder);

    const PlistValue alias = root;
    alias.toDictionary().insert(QStringLiteral("added"), PlistValue(1));
    EXPECT_EQ(root.count(), 2) << "a copied handle is the same dictionary";

    const PlistValue copy = PlistValue(root).kz_copyMutableContainers();
    EXPECT_TRUE(copy.isIdenticalTo(root));
    PlistArray copiedList = copy.toDictionary().value(u"list").toArray();
    EXPECT_FALSE(copiedList.isSameObject(leafHolder));
    EXPECT_TRUE(copiedList.at(0).isSameObject(leafHolder.at(0))) << "leaves are shared";
    copiedList.append(PlistValue(2));
    EXPECT_EQ(leafHolder.count(), 1);
}

TEST(PlistDictionary, KeepsInsertionOrderThroughEdits)
{
    PlistDictionary d = PlistDictionary::create();
    for (const char *k : {"zeta", "alpha", "mid"})
        d.insert(QString::fromUtf8(k), PlistValue(1));
    d.insert(QStringLiteral("alpha"), PlistValue(2)); // replaced in place
    EXPECT_EQ(keysOf(d), (QStringList{"zeta", "alpha", "mid"}));
    EXPECT_EQ(d.value(u"alpha").toInteger(), 2);

    d.insertAt(1, str("beta"), PlistValue(3));
    EXPECT_EQ(keysOf(d), (QStringList{"zeta", "beta", "alpha", "mid"}));
    EXPECT_TRUE(d.remove(u"zeta"));
    EXPECT_FALSE(d.remove(u"zeta"));
    d.reorder({2, 0, 1});
    EXPECT_EQ(keysOf(d), (QStringList{"mid", "beta", "alpha"}));
    EXPECT_EQ(d.value(u"beta").toInteger(), 3);
}

TEST(PlistDictionary, FindsKeysInLargeDictionariesAfterMoves)
{
    PlistDictionary d = PlistDictionary::create();
    const int n = 5000;
    for (int i = 0; i < n; ++i)
        d.insert(QStringLiteral("key%1").arg(i), PlistValue(i));
    d.insert(QStringLiteral("caf\u00e9\u2603"), PlistValue(-1));
    EXPECT_EQ(d.indexOf(u"key4999"), 4999);
    EXPECT_EQ(d.indexOf(QLatin1StringView("key17")), 17);
    EXPECT_EQ(d.indexOf(QUtf8StringView("key123")), 123);
    EXPECT_EQ(d.indexOf(QUtf8StringView("caf\xc3\xa9\xe2\x98\x83")), n);
    EXPECT_EQ(d.value(QStringLiteral("caf\u00e9\u2603")).toInteger(), -1);
    EXPECT_EQ(d.indexOf(u"key5000"), -1);
    d.insert(PlistValue(QLatin1StringView("na\xEFve")), PlistValue(7)); // stored as Latin-1
    EXPECT_EQ(d.indexOf(u"na\u00efve"), n + 1);
    EXPECT_EQ(d.indexOf(QUtf8StringView("na\xc3\xafve")), n + 1);

    d.removeAt(0);
    d.insertAt(10, str("inserted"), PlistValue(0));
    std::vector<qsizetype> reversed(size_t(d.count()));
    for (qsizetype i = 0; i < d.count(); ++i)
        reversed[size_t(i)] = d.count() - 1 - i;
    d.reorder(reversed);
    for (const int probe : {1, 2500, 4999}) {
        const qsizetype at = d.indexOf(QStringLiteral("key%1").arg(probe));
        ASSERT_GE(at, 0);
        EXPECT_EQ(d.valueAt(at).toInteger(), probe);
        EXPECT_EQ(d.keyAt(at), QStringLiteral("key%1").arg(probe));
    }
    EXPECT_EQ(d.indexOf(u"key0"), -1);
    EXPECT_EQ(d.valueAt(d.indexOf(u"inserted")).toInteger(), 0);
}

// A renamed key is found under its new name and no longer under its old one,
// in dictionaries small enough to scan and large enough to be indexed.
TEST(PlistDictionary, FindsRenamedKeys)
{
    for (const int size : {4, 8, 9, 100}) {
        PlistDictionary d = PlistDictionary::create();
        for (int i = 0; i < size; ++i)
            d.insert(QStringLiteral("key%1").arg(i), PlistValue(i));
        ASSERT_EQ(d.indexOf(u"key3"), 3); // builds the index where there is one
        d.renameAt(3, str("renamed"));
        EXPECT_EQ(d.indexOf(u"renamed"), 3) << size;
        EXPECT_EQ(d.indexOf(u"key3"), -1) << size;
        EXPECT_EQ(d.value(u"renamed").toInteger(), 3) << size;
        d.insert(QStringLiteral("key3"), PlistValue(-3)); // the old name is free again
        EXPECT_EQ(d.indexOf(u"key3"), size) << size;
        EXPECT_EQ(d.count(), size + 1);
    }
}

// What readers rely on: a repeated key keeps its first place and its last
// value, at every size, reserved or not, whichever way pairs are added.
TEST(PlistDictionary, AddsPairsInBulkLikeSingleInserts)
{
    struct Fill
    {
        int pairs;
        int keys;
        qsizetype reserve;
    };
    for (const Fill fill : {Fill{3000, 1000, 0}, Fill{3000, 1000, 3000}, Fill{7, 3, 7},
                            Fill{9, 9, 9}, Fill{12, 5, 0}}) {
        std::vector<PlistValue> pairs;
        PlistDictionary one = PlistDictionary::create();
        PlistDictionary appended = PlistDictionary::create(fill.reserve);
        for (int i = 0; i < fill.pairs; ++i) {
            const QString key = QStringLiteral("k%1").arg(i % fill.keys);
            pairs.push_back(PlistValue(key));
            pairs.push_back(PlistValue(i));
            one.insert(key, PlistValue(i));
            appended.append(PlistValue(key), PlistValue(i));
        }
        appended.endAppending();
        PlistDictionary inserted = PlistDictionary::create(fill.reserve);
        inserted.insertPairs(pairs);
        ASSERT_EQ(one.count(), fill.keys);
        EXPECT_EQ(one.valueAt(0).toInteger(), fill.pairs - 1 - (fill.pairs - 1) % fill.keys);
        for (const PlistDictionary &d : {inserted, appended}) {
            EXPECT_TRUE(d.value().isIdenticalTo(one.value())) << fill.pairs << " " << fill.keys;
            for (int k = 0; k < fill.keys; k += 7)
                EXPECT_EQ(d.indexOf(QStringLiteral("k%1").arg(k)), k);
        }
    }
}

TEST(PlistValue, HandlesDeepNestingWithoutRecursion)
{
    const int depth = 100000;
    PlistValue deep = nestedArrays(depth);
    const PlistValue copy = deep.kz_copyMutableContainers();
    EXPECT_TRUE(copy.isEqualToPlist(deep));
    EXPECT_TRUE(copy.isIdenticalTo(deep));
    EXPECT_FALSE(copy.toArray().isSameObject(deep.toArray()));
    EXPECT_FALSE(nestedArrays(depth - 1).isEqualToPlist(deep));
    deep = PlistValue(); // frees 100,000 levels
    EXPECT_EQ(copy.toArray().count(), 1);
}

} // namespace
