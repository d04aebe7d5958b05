#include "model/ADPlistObject.h"
#include "model/ADKeySortPreferences.h"
#include "model/ADPlistNotifications.h"

#include "shared/KZNotificationCenter.h"
#include "shared/PlistArray.h"
#include "shared/PlistDictionary.h"

#include <gtest/gtest.h>

namespace {

// Stands above a root as an outline would, with a notification centre.
class FakeOutline : public ADPlistParent
{
public:
    KZNotificationCenter *notificationCenter() const override { return &center; }
    ADUndoManager *undoManager() const override { return nullptr; }
    const void *scriptingObject() const override { return this; }
    ADPlistType plistType() const override { return ADPlistTypeUnknown; }
    ADStructureDefinition *structureDefinition() const override { return nullptr; }
    mutable KZNotificationCenter center;
};

PlistValue sampleValue()
{
    PlistArray list = PlistArray::create();
    list.append(PlistValue(1));
    list.append(PlistValue(QStringLiteral("two")));
    PlistDictionary d = PlistDictionary::create();
    d.insert(QStringLiteral("zeta"), PlistValue(true));
    d.insert(QStringLiteral("Beta"), list);
    d.insert(QStringLiteral("alpha"), PlistValue::uid(7));
    d.insert(QStringLiteral("item10"), PlistValue(10));
    d.insert(QStringLiteral("item9"), PlistValue(9));
    return d;
}

QStringList plainKeys(const PlistValue &v)
{
    QStringList keys;
    for (qsizetype i = 0; i < v.toDictionary().count(); ++i)
        keys << v.toDictionary().keyAt(i);
    return keys;
}

class ADPlistObjectTest : public testing::Test
{
protected:
    void TearDown() override { ADKeySortPreferences::setProvider({}); }
};

TEST_F(ADPlistObjectTest, SharesContainersAndSortsKeysOnBothSides)
{
    const auto root = ADPlistObject::createWithPlist(sampleValue());
    const QStringList sorted{"alpha", "Beta", "item10", "item9", "zeta"};
    EXPECT_EQ(root->keys(), sorted) << "case-insensitive, not numeric, by default";
    EXPECT_EQ(plainKeys(root->plist()), sorted) << "the plain dictionary takes the tree's order";
    for (qint64 i = 0; i < root->childCount(); ++i) {
        const ADPlistObject *child = root->childAtIndex(i);
        EXPECT_EQ(child->indexInParent(), i);
        EXPECT_EQ(child->parent(), root.get());
        EXPECT_EQ(root->childForKey(sorted[i]), child);
    }
    const ADPlistObject *list = root->childForKey("Beta");
    EXPECT_TRUE(list->plist().isSameObject(root->plist().toDictionary().value(u"Beta")));
    EXPECT_TRUE(list->childAtIndex(1)->plist().isSameObject(list->plist().toArray().at(1)));
    EXPECT_FALSE(list->keys().has_value());
    EXPECT_TRUE(root->isRoot());
    EXPECT_TRUE(list->hasAncestor(list));
    EXPECT_TRUE(list->hasAncestor(root.get()));
    EXPECT_FALSE(root->hasAncestor(list));
}

TEST_F(ADPlistObjectTest, FollowsTheSortDefaults)
{
    ADKeySortPreferences::setProvider([] {
        return ADKeySortPreferences::Values{true, true, false};
    });
    EXPECT_EQ(ADPlistObject::createWithPlist(sampleValue())->keys(),
              (QStringList{"Beta", "alpha", "item9", "item10", "zeta"}));
    ADKeySortPreferences::setProvider([] {
        return ADKeySortPreferences::Values{false, false, true};
    });
    const PlistValue value = sampleValue();
    EXPECT_EQ(ADPlistObject::createWithPlist(value)->keys(), plainKeys(value)) << "file order kept";
}

TEST_F(ADPlistObjectTest, ShowsArchiverUidsAsDictionaries)
{
    const auto root = ADPlistObject::createWithPlist(sampleValue());
    const ADPlistObject *uid = root->childForKey("alpha");
    EXPECT_EQ(uid->plistType(), ADPlistTypeDictionary);
    ASSERT_EQ(uid->childCount(), 1);
    EXPECT_EQ(uid->keyAtIndex(0), QStringLiteral("CF$UID"));
    EXPECT_TRUE(uid->childAtIndex(0)->plist().isEqualToPlist(PlistValue(7)));
    EXPECT_EQ(root->plist().toDictionary().value(u"alpha").kind(), PlistValue::Kind::Uid)
        << "the parent keeps the UID for the writer";
}

TEST_F(ADPlistObjectTest, FindsNodesByPathBothWays)
{
    const auto root = ADPlistObject::createWithPlist(sampleValue());
    ADPlistObject *two = root->childForKey("Beta")->childAtIndex(1);
    const QVariantList path = two->path();
    EXPECT_EQ(path, (QVariantList{QStringLiteral("Beta"), qint64(1)}));
    EXPECT_EQ(root->objectAtPath(path), two);
    EXPECT_TRUE(root->path().isEmpty());
    EXPECT_EQ(root->objectAtPath({}), root.get());
    EXPECT_EQ(root->objectAtPath({qint64(0)}), nullptr) << "a number step on a dictionary";
    EXPECT_EQ(root->objectAtPath({QStringLiteral("Beta"), QStringLiteral("0")}), nullptr)
        << "a string step on an array";
    EXPECT_EQ(root->objectAtPath({QStringLiteral("Beta"), qint64(2)}), nullptr);
    EXPECT_EQ(root->objectAtPath({QStringLiteral("Beta"), qint64(-1)}), nullptr);
    EXPECT_EQ(root->objectAtPath({QStringLiteral("missing")}), nullptr);
}

TEST_F(ADPlistObjectTest, RenamesOnlyWithoutAClash)
{
    const auto root = ADPlistObject::createWithPlist(sampleValue());
    ADPlistObject *zeta = root->childForKey("zeta");
    zeta->setName(QStringLiteral("alpha"));
    EXPECT_EQ(zeta->key(), QStringLiteral("zeta")) << "a sibling has the name: nothing changes";
    EXPECT_EQ(root->childCount(), 5);
    zeta->setName(QStringLiteral("omega"));
    EXPECT_EQ(zeta->name(), QStringLiteral("omega"));
    EXPECT_EQ(root->childForKey("omega"), zeta);
    EXPECT_EQ(root->childForKey("zeta"), nullptr);
    EXPECT_EQ(plainKeys(root->plist()).last(), QStringLiteral("omega")) << "renamed in place";
    EXPECT_TRUE(root->plist().toDictionary().value(u"omega").isSameObject(zeta->plist()));

    root->setName(QStringLiteral("Root"));
    EXPECT_EQ(root->name(), QStringLiteral("Root"));
    EXPECT_EQ(root->childForKey("Beta")->childAtIndex(0)->name(), QString(""));
    EXPECT_EQ(root->uniqueKeyWithPrefix(QStringLiteral("alpha")) == QStringLiteral("alpha"), false);
    EXPECT_EQ(root->uniqueKey(), QStringLiteral("New item"));
}

TEST_F(ADPlistObjectTest, MakesDefaultValuesAndNames)
{
    EXPECT_TRUE(ADPlistObject::defaultValueForPlistType(ADPlistTypeBoolean)
                    .isIdenticalTo(PlistValue(true)));
    EXPECT_TRUE(
        ADPlistObject::defaultValueForPlistType(ADPlistTypeNumber).isIdenticalTo(PlistValue(0)));
    const double date = ADPlistObject::defaultValueForPlistType(ADPlistTypeDate).toDate();
    EXPECT_EQ(date, std::floor(date));
    EXPECT_TRUE(ADPlistObject::defaultValueForPlistType(8).isNone());
    EXPECT_EQ(ADPlistObject::createWithPlistType(8)->plistType(), ADPlistTypeUnknown);
    EXPECT_EQ(ADPlistObject::create()->plistType(), ADPlistTypeString);
    EXPECT_EQ(ADPlistObject::classNameForPlistType(ADPlistTypeNull), QStringLiteral("Null"));
    EXPECT_TRUE(ADPlistObject::classNameForPlistType(8).isNull());
    EXPECT_EQ(ADPlistObject::plistTypeForValueKind(PlistValue::Kind::Uid), ADPlistTypeArray);
    const auto empty = ADPlistObject::createWithPlistType(ADPlistTypeDictionary);
    EXPECT_TRUE(empty->hasChildren());
    EXPECT_EQ(empty->childCount(), 0);
}

TEST_F(ADPlistObjectTest, PostsOnlyThroughTheParentChain)
{
    FakeOutline outline;
    const auto root = ADPlistObject::createWithPlist(sampleValue(), &outline);
    EXPECT_TRUE(root->isRoot()) << "an outline above is not a node";
    std::vector<KZNotification> heard;
    outline.center.addObserver({}, nullptr,
                               [&heard](const KZNotification &n) { heard.push_back(n); });

    root->destroyChildrenAndNotify(true);
    ASSERT_EQ(heard.size(), 1u);
    EXPECT_EQ(heard[0].name, PlistObjectDidRemoveChildNotification);
    EXPECT_EQ(heard[0].userInfo.value(PlistObjectChildIndexesKey).value<KZIndexSet>(),
              KZIndexSet::range(0, 5));
    EXPECT_FALSE(heard[0].userInfo.contains(PlistObjectChildKey));
    EXPECT_EQ(root->keys(), QStringList());
    EXPECT_EQ(root->plist().toDictionary().count(), 5) << "the plain value is untouched";

    root->createChildrenAndNotify(true);
    ASSERT_EQ(heard.size(), 2u);
    EXPECT_EQ(heard[1].name, PlistObjectDidAddChildNotification);
    EXPECT_EQ(heard[1].object, root.get());

    const auto orphan = ADPlistObject::createWithPlist(sampleValue());
    orphan->createChildrenAndNotify(true);
    EXPECT_EQ(heard.size(), 2u) << "a parentless tree posts nothing";
}

TEST_F(ADPlistObjectTest, BuildsCopiesAndFreesDeepTrees)
{
    PlistValue inner = PlistValue(QStringLiteral("seed"));
    for (int i = 0; i < 100000; ++i) {
        PlistArray outer = PlistArray::create(1);
        outer.append(inner);
        inner = outer;
    }
    auto root = ADPlistObject::createWithPlist(inner);
    const ADPlistObject *node = root.get();
    int depth = 0;
    while (node->childCount() == 1) {
        node = node->childAtIndex(0);
        ++depth;
    }
    EXPECT_EQ(depth, 100000);
    EXPECT_EQ(node->plist().toString(), QStringLiteral("seed"));
    const auto copy = root->copy();
    EXPECT_TRUE(copy->plist().isEqualToPlist(root->plist()));
    EXPECT_FALSE(copy->plist().isSameObject(root->plist()));
    root.reset();
}

} // namespace
