#include "model/ADKeyOrder.h"
#include "support/ValueBuilders.h"

#include "shared/PlistDictionary.h"

#include <QStringList>

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <random>

namespace {

// The order a plain stable sort with the comparison itself gives: what the
// fast path must match key for key.
std::vector<qsizetype> referenceOrder(const PlistDictionary &d, KZComparison comparison)
{
    std::vector<qsizetype> order(static_cast<size_t>(d.count()));
    std::iota(order.begin(), order.end(), 0);
    std::stable_sort(order.begin(), order.end(), [&](qsizetype a, qsizetype b) {
        return KZCompareStrings(comparison, d.keyValueAt(a).stringView(),
                                d.keyValueAt(b).stringView()) < 0;
    });
    return order;
}

PlistDictionary dictionaryWithKeys(const QStringList &keys)
{
    PlistDictionary d = PlistDictionary::create();
    for (const QString &key : keys)
        d.insert(key, PlistValue(true));
    return d;
}

struct KeySet
{
    const char *name;
    QStringList keys;
};

const KeySet kKeySets[] = {
    {"Case", {"b", "B", "a", "A", "_", "Z", "z", "aa", "a"}},
    {"LongSharedPrefixes",
     {"CFBundleDocumentTypesAndMoreText2", "CFBundleDocumentTypesAndMoreText10",
      "cfbundledocumenttypesandmoretext1", "CFBundleDocumentTypesAndMore", "CFBundle"}},
    {"Digits",
     {"item10",
      "item9",
      "Item2",
      "item02",
      "item2",
      "x1y10",
      "x1y9",
      "10",
      "9",
      "a007",
      "a7",
      "a0",
      "a00",
      "a/",
      "a:",
      "n12345678901",
      "n12345678902",
      "n9",
      "abcdefghijklmnopqrstuv123",
      "abcdefghijklmnopqrstuv45"}},
    {"NotAscii",
     {QString::fromUtf8("\u00e9t\u00e9"), "ete", QString::fromUtf8("\u00c4rger"), "Arger",
      QString::fromUtf8("\u00b5m"), "mu", QString::fromUtf8("\u212aelvin"), "kelvin",
      QString::fromUtf8("Stra\u00dfe"), "strasse", QString::fromUtf8("\u03a9mega"),
      QString::fromUtf8("\U0001F600smile"), "smile"}},
    {"Nul", {QString("a") + QChar(0) + "b", "a", QString("a") + QChar(0), "ab"}},
    {"Empty", {"", "a", " ", "A"}},
};

class KeyOrderSets : public testing::TestWithParam<KeySet>
{};

TEST_P(KeyOrderSets, MatchesTheComparisonItselfForEveryComparison)
{
    for (const KZComparison comparison :
         {KZComparison::Compare, KZComparison::CaseInsensitiveCompare, KZComparison::NumericCompare,
          KZComparison::NumericCaseInsensitiveCompare}) {
        // Many copies under distinct suffixes take the many-key path as well.
        for (const int copies : {1, 200}) {
            QStringList keys;
            for (int c = 0; c < copies; ++c) {
                for (const QString &key : GetParam().keys)
                    keys << (copies == 1
                                 ? key
                                 : key + QString::number(c % 7) + u'#' + QString::number(c));
            }
            const PlistDictionary d = dictionaryWithKeys(keys);
            std::vector<qsizetype> order = ADKeyOrder::sortedOrder(d, comparison);
            if (order.empty()) {
                order.resize(static_cast<size_t>(d.count()));
                std::iota(order.begin(), order.end(), 0);
            }
            EXPECT_EQ(order, referenceOrder(d, comparison))
                << "comparison " << int(comparison) << ", copies " << copies;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Rows, KeyOrderSets, testing::ValuesIn(kKeySets),
                         [](const auto &row) { return std::string(row.param.name); });

TEST(ADKeyOrderTest, SortsManyKeysOnAllCoresLikeOneSort)
{
    // More keys than one core takes, with a few that only the full comparison orders.
    std::mt19937 rng(7);
    QStringList keys;
    for (int i = 0; i < 150000; ++i) {
        QString key = QStringLiteral("Key_%1_%2").arg(rng() % 5000).arg(rng() % 100);
        if (i % 97 == 0)
            key += QString::fromUtf8("\u00e9");
        keys << key;
    }
    const PlistDictionary d = dictionaryWithKeys(keys);
    for (const KZComparison comparison :
         {KZComparison::CaseInsensitiveCompare, KZComparison::NumericCaseInsensitiveCompare})
        EXPECT_EQ(ADKeyOrder::sortedOrder(d, comparison), referenceOrder(d, comparison));
}

TEST(ADKeyOrderTest, SortsEveryDictionaryBelowUnlessTheOrderIsKept)
{
    const PlistValue tree =
        dictionaryOf({{"b", arrayOf({dictionaryOf({{"y", PlistValue(1)}, {"x", PlistValue(2)}})})},
                      {"a", dictionaryOf({{"d", PlistValue(3)}, {"c", PlistValue(4)}})}});
    ADKeySortPreferences::Values keep;
    keep.keepKeyOrder = true;
    ADKeyOrder::applyToSubtree(tree, keep);
    EXPECT_EQ(tree.toDictionary().keyAt(0), QStringLiteral("b"));

    ADKeyOrder::applyToSubtree(tree, {});
    EXPECT_TRUE(tree.isIdenticalTo(dictionaryOf(
        {{"a", dictionaryOf({{"c", PlistValue(4)}, {"d", PlistValue(3)}})},
         {"b", arrayOf({dictionaryOf({{"x", PlistValue(2)}, {"y", PlistValue(1)}})})}})));
}

} // namespace
