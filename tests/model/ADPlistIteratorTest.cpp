#include "model/ADPlistIterator.h"
#include "model/ADPlistObject.h"
#include "model/PlistEnumerator.h"

#include "shared/PlistArray.h"
#include "shared/PlistDictionary.h"
#include "storage/PlistSerialization.h"
#include "support/Corpus.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

std::vector<ADPlistObject *> forward(ADPlistIterator &walk)
{
    std::vector<ADPlistObject *> seen;
    while (ADPlistObject *node = walk.nextObject())
        seen.push_back(node);
    return seen;
}

// {"b": [1, [], [2]], "a": {}, "c": "x"}, keys sorted a, b, c.
ADPlistObject::Pointer sampleTree()
{
    PlistArray inner = PlistArray::create();
    inner.append(PlistValue(2));
    PlistArray list = PlistArray::create();
    list.append(PlistValue(1));
    list.append(PlistArray::create());
    list.append(inner);
    PlistDictionary d = PlistDictionary::create();
    d.insert(QStringLiteral("b"), list);
    d.insert(QStringLiteral("a"), PlistDictionary::create());
    d.insert(QStringLiteral("c"), PlistValue(QStringLiteral("x")));
    return ADPlistObject::createWithPlist(d);
}

QStringList names(const std::vector<ADPlistObject *> &nodes)
{
    QStringList out;
    for (const ADPlistObject *node : nodes)
        out << (node->plistObjectParent() ? node->path().constLast().toString()
                                          : QStringLiteral("root"));
    return out;
}

TEST(ADPlistIterator, WalksDepthFirstBothWays)
{
    const auto root = sampleTree();
    ADPlistIterator walk(root);
    EXPECT_EQ(walk.currentObject(), root.get());
    const std::vector<ADPlistObject *> there = forward(walk);
    EXPECT_EQ(names(there), (QStringList{"a", "b", "0", "1", "2", "0", "c"}));
    EXPECT_EQ(walk.currentObject(), nullptr);

    ADPlistIterator back(root);
    std::vector<ADPlistObject *> again;
    while (ADPlistObject *node = back.previousObject())
        again.push_back(node);
    std::reverse(again.begin(), again.end());
    EXPECT_EQ(again, there) << "backward is the exact reverse";

    PlistEnumerator enumerator = root->objectEnumerator();
    std::vector<ADPlistObject *> enumerated;
    while (ADPlistObject *node = enumerator.nextObject())
        enumerated.push_back(node);
    EXPECT_EQ(enumerated, there);
}

TEST(ADPlistIterator, WrapsThroughTheRoot)
{
    const auto root = sampleTree();
    ADPlistIterator walk(root, true);
    EXPECT_EQ(names({walk.previousObject()}), QStringList{"c"})
        << "back from the start: the last node";
    EXPECT_EQ(walk.nextObject(), root.get()) << "after the last node: the root";
    EXPECT_EQ(names({walk.nextObject()}), QStringList{"a"});
    EXPECT_EQ(walk.previousObject(), root.get());

    walk.setWraps(false);
    forward(walk);
    EXPECT_EQ(names({walk.nextObject()}), QStringList{"a"}) << "after a null the walk starts over";

    ADPlistObject *deep = root->objectAtPath({QStringLiteral("b"), qint64(2), qint64(0)});
    walk.jumpToObject(deep);
    EXPECT_EQ(walk.currentObject(), deep);
    EXPECT_EQ(names({walk.nextObject()}), QStringList{"c"});
    EXPECT_EQ(walk.previousObject(), deep);
    walk.jumpToObject(nullptr);
    EXPECT_EQ(walk.currentObject(), root.get());
}

TEST(ADPlistIterator, EndsAtOnceOnLeavesAndEmptyContainers)
{
    for (const PlistValue &value : {PlistValue(5), PlistValue(PlistArray::create())}) {
        const auto root = ADPlistObject::createWithPlist(value);
        ADPlistIterator plain(root);
        EXPECT_EQ(plain.nextObject(), nullptr);
        EXPECT_EQ(ADPlistIterator(root).previousObject(), nullptr);
        ADPlistIterator wrapping(root, true);
        EXPECT_EQ(wrapping.nextObject(), root.get());
        EXPECT_EQ(wrapping.nextObject(), root.get());
        EXPECT_EQ(wrapping.previousObject(), root.get());
    }
}

TEST(ADPlistIterator, SurvivesChildrenRemovedUnderIt)
{
    const auto root = sampleTree();
    ADPlistIterator walk(root);
    walk.nextObject(); // a
    walk.nextObject(); // b
    walk.nextObject(); // b.0
    walk.nextObject(); // b.1
    root->childForKey("b")->removeChildrenAtIndexes(KZIndexSet::range(0, 3));
    EXPECT_EQ(names({walk.nextObject()}), QStringList{"c"}) << "the emptied container simply ends";
    EXPECT_EQ(walk.nextObject(), nullptr);
}

TEST(ADPlistIterator, WalksDeepTreesWithoutRecursion)
{
    PlistValue inner = PlistValue(QStringLiteral("seed"));
    for (int i = 0; i < 100000; ++i) {
        PlistArray outer = PlistArray::create(1);
        outer.append(inner);
        inner = outer;
    }
    const auto root = ADPlistObject::createWithPlist(inner);
    ADPlistIterator walk(root);
    EXPECT_EQ(forward(walk).size(), 100000u);
    ADPlistIterator back(root);
    EXPECT_EQ(back.previousObject()->plist().toString(), QStringLiteral("seed"));
    PlistEnumerator all = root->objectEnumerator();
    size_t count = 0;
    while (all.nextObject())
        ++count;
    EXPECT_EQ(count, 100000u);
}

class CorpusWalk : public testing::TestWithParam<CorpusFile>
{};

TEST_P(CorpusWalk, ForwardAndBackwardAgree)
{
    ReadResult read = PlistSerialization::read(GetParam().bytes());
    if (!read)
        read = PlistSerialization::readJson(GetParam().bytes());
    ASSERT_TRUE(read);
    const auto root = ADPlistObject::createWithPlist(read.value);
    ADPlistIterator there(root), back(root);
    const std::vector<ADPlistObject *> forwardOrder = forward(there);
    std::vector<ADPlistObject *> backwardOrder;
    while (ADPlistObject *node = back.previousObject())
        backwardOrder.push_back(node);
    std::reverse(backwardOrder.begin(), backwardOrder.end());
    EXPECT_EQ(forwardOrder, backwardOrder);
}

INSTANTIATE_TEST_SUITE_P(Corpus, CorpusWalk, testing::ValuesIn(validCorpusFiles()),
                         [](const auto &row) { return row.param.testName(); });

} // namespace
