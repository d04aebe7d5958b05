#include "model/ADPlistNotifications.h"
#include "model/ADPlistObject.h"
#include "model/ADUndoManager.h"
#include "support/ValueBuilders.h"

#include "shared/KZNotificationCenter.h"
#include "shared/PlistArray.h"
#include "shared/PlistDictionary.h"

#include <gtest/gtest.h>

namespace {

// What stands above a document's root: its undo manager and private centre.
class Document : public ADPlistParent
{
public:
    Document()
    {
        undo.setNotificationCenter(&center);
        undo.setGroupsByEvent(false);
        center.addObserver({}, nullptr, [this](const KZNotification &n) {
            if (n.name != ADUndoManagerWillCloseUndoGroupNotification)
                heard.push_back(n);
        });
    }
    KZNotificationCenter *notificationCenter() const override { return &center; }
    ADUndoManager *undoManager() const override
    {
        ++undoLookups;
        return &undo;
    }
    const void *scriptingObject() const override { return this; }
    ADPlistType plistType() const override { return ADPlistTypeUnknown; }
    ADStructureDefinition *structureDefinition() const override { return nullptr; }

    template <typename Edit> void edit(Edit &&change)
    {
        undo.beginUndoGrouping();
        change();
        undo.endUndoGrouping();
    }
    QStringList names() const
    {
        QStringList out;
        for (const KZNotification &n : heard)
            out << n.name.chopped(int(QStringLiteral("Notification").size()))
                       .mid(int(QStringLiteral("PlistObject").size()));
        return out;
    }

    mutable KZNotificationCenter center;
    mutable ADUndoManager undo;
    mutable int undoLookups = 0;
    std::vector<KZNotification> heard;
};

QStringList plainKeys(const PlistValue &v)
{
    QStringList keys;
    for (qsizetype i = 0; i < v.toDictionary().count(); ++i)
        keys << v.toDictionary().keyAt(i);
    return keys;
}

void expectConsistent(const ADPlistObject &node)
{
    for (qint64 i = 0; i < node.childCount(); ++i) {
        const ADPlistObject *child = node.childAtIndex(i);
        EXPECT_EQ(child->indexInParent(), i);
        EXPECT_EQ(child->parent(), &node);
        if (node.hasKeys()) {
            EXPECT_EQ(node.childForKey(node.keyAtIndex(i)), child);
            EXPECT_TRUE(node.plist().toDictionary().valueAt(i).isSameObject(child->plist()));
        } else {
            EXPECT_TRUE(node.plist().toArray().at(i).isSameObject(child->plist()));
        }
    }
    if (node.hasKeys()) {
        EXPECT_EQ(plainKeys(node.plist()), node.keys().value());
    }
}

class ADPlistObjectEditingTest : public testing::Test
{
protected:
    void SetUp() override
    {
        root = ADPlistObject::createWithPlist(
            dictionaryOf({{"a", PlistValue(1)},
                          {"b", PlistValue(2)},
                          {"c", arrayOf({PlistValue(10), PlistValue(20)})}}),
            &doc);
    }
    Document doc;
    ADPlistObject::Pointer root;
};

TEST_F(ADPlistObjectEditingTest, RemovalUndoesWithTheSameNodes)
{
    ADPlistObject *b = root->childForKey("b");
    doc.edit([&] { root->removeChildrenAtIndexes(KZIndexSet::fromIndexes({0, 1})); });
    EXPECT_EQ(root->keys(), QStringList{"c"});
    expectConsistent(*root);
    EXPECT_TRUE(b->isRoot());
    EXPECT_EQ(b->indexInParent(), -1);
    ASSERT_EQ(doc.heard.size(), 1u);
    EXPECT_EQ(doc.heard[0].userInfo.value(PlistObjectChildIndexesKey).value<KZIndexSet>(),
              KZIndexSet::range(0, 2));
    EXPECT_EQ(
        doc.heard[0].userInfo.value(PlistObjectChildKey).value<ADPlistObjectList>().at(1).get(), b);

    doc.undo.undo();
    EXPECT_EQ(root->childForKey("b"), b) << "the same node comes back";
    EXPECT_EQ(root->keys(), (QStringList{"a", "b", "c"}));
    expectConsistent(*root);
    doc.undo.redo();
    EXPECT_EQ(root->childCount(), 1);
    expectConsistent(*root);
}

TEST_F(ADPlistObjectEditingTest, InsertsInBulkIntoArraysAndDictionaries)
{
    ADPlistObject *list = root->childForKey("c");
    std::vector<ADPlistObject::Pointer> fresh{ADPlistObject::createWithPlist(PlistValue(1)),
                                              ADPlistObject::createWithPlist(PlistValue(3))};
    doc.edit([&] { list->insertChildren(fresh, {}, KZIndexSet::fromIndexes({0, 3})); });
    EXPECT_TRUE(list->plist().isIdenticalTo(
        arrayOf({PlistValue(1), PlistValue(10), PlistValue(20), PlistValue(3)})));
    expectConsistent(*list);
    EXPECT_TRUE(root->plist().toDictionary().value(u"c").isSameObject(list->plist()));

    ADPlistObject *made = nullptr;
    doc.edit([&] { made = root->createNewChildOfType(ADPlistTypeString, 1, QStringLiteral("a")); });
    EXPECT_NE(made->key(), QStringLiteral("a")) << "an existing key is made unique";
    EXPECT_EQ(root->keyAtIndex(1), made->key());
    expectConsistent(*root);
    doc.undo.undo();
    doc.undo.undo();
    EXPECT_TRUE(root->plist().isIdenticalTo(
        dictionaryOf({{"a", PlistValue(1)},
                      {"b", PlistValue(2)},
                      {"c", arrayOf({PlistValue(10), PlistValue(20)})}})));
}

TEST_F(ADPlistObjectEditingTest, RenamingOntoASiblingReplacesItAndUndoesAtOnce)
{
    ADPlistObject *b = root->childForKey("b");
    doc.edit([&] { root->setKey(QStringLiteral("a"), 1); }); // "a" stands before "b"
    EXPECT_EQ(root->keys(), (QStringList{"a", "c"}));
    EXPECT_EQ(root->childForKey("a"), b);
    EXPECT_EQ(b->indexInParent(), 0);
    expectConsistent(*root);
    EXPECT_EQ(doc.undo.undoActionName(), QStringLiteral("Edit Key"));
    EXPECT_EQ(doc.names(), (QStringList{"DidRemoveChild", "DidChange"}));
    EXPECT_EQ(doc.heard[1].userInfo.value(PlistObjectOldKey).toString(), QStringLiteral("b"));

    doc.undo.undo();
    EXPECT_EQ(root->keys(), (QStringList{"a", "b", "c"}));
    EXPECT_EQ(root->childForKey("b"), b);
    EXPECT_TRUE(root->childForKey("a")->plist().isIdenticalTo(PlistValue(1)));
    expectConsistent(*root);

    doc.heard.clear();
    doc.edit([&] { root->setKey(QStringLiteral("b"), 1); });
    EXPECT_TRUE(doc.heard.empty());
    EXPECT_TRUE(doc.undo.canRedo()) << "nothing was registered, so what could be redone stays";
}

TEST_F(ADPlistObjectEditingTest, SettingValuesRebuildsContainersOnly)
{
    ADPlistObject *a = root->childForKey("a");
    doc.edit([&] { a->setPlist(PlistValue(1.0)); });
    EXPECT_TRUE(doc.heard.empty()) << "an equal scalar changes nothing";
    doc.edit([&] { a->setPlist(PlistValue(QStringLiteral("text"))); });
    EXPECT_TRUE(
        root->plist().toDictionary().value(u"a").isIdenticalTo(PlistValue(QStringLiteral("text"))));
    ASSERT_EQ(doc.names(), QStringList{"DidChange"});
    EXPECT_TRUE(doc.heard[0]
                    .userInfo.value(PlistObjectOldValue)
                    .value<PlistValue>()
                    .isIdenticalTo(PlistValue(1)));

    doc.heard.clear();
    ADPlistObject *c = root->childForKey("c");
    const PlistValue same = c->plist();
    doc.edit([&] { c->setPlist(same); });
    EXPECT_EQ(doc.names(), (QStringList{"DidRemoveChild", "DidAddChild", "DidChange"}));
    EXPECT_FALSE(c->plist().isSameObject(same)) << "a node keeps a copy of what it is given";
    expectConsistent(*c);
    doc.undo.undo();
    doc.undo.undo();
    EXPECT_TRUE(a->plist().isIdenticalTo(PlistValue(1)));
}

TEST_F(ADPlistObjectEditingTest, ReordersBothSidesAndPostsTheMap)
{
    doc.edit([&] { root->moveChildIndexes(KZIndexSet(2), 0); });
    EXPECT_EQ(root->keys(), (QStringList{"c", "a", "b"}));
    expectConsistent(*root);
    ASSERT_EQ(doc.names(), QStringList{"DidChangeChildren"});
    EXPECT_EQ(doc.heard[0].userInfo.value(PlistObjectReorderMapKey).value<KZIndexMap>().indices(),
              (std::vector<qint64>{2, 0, 1}));
    EXPECT_EQ(doc.undo.undoActionName(), QStringLiteral("Move"));
    doc.undo.undo();
    EXPECT_EQ(root->keys(), (QStringList{"a", "b", "c"}));
    expectConsistent(*root);

    doc.heard.clear();
    const auto empty = ADPlistObject::createWithPlist(PlistArray::create(), &doc);
    empty->reorderChildrenUsingMap(KZIndexMap());
    EXPECT_TRUE(doc.heard.empty());
}

// The menus ask only whether there are subkeys; the answer must match the full union.
TEST(ADPlistObjectSubkeys, ThereAreSubkeysExactlyWhenTheUnionHasSome)
{
    const std::vector<PlistValue> trees{
        arrayOf({PlistValue(1), PlistDictionary::create()}),
        arrayOf({PlistValue(1), dictionaryOf({{"k", PlistValue(0)}})}),
        arrayOf({PlistValue::uid(7)}),
        dictionaryOf({{"a", arrayOf({PlistValue(1)})}}),
        PlistValue(1),
    };
    for (const PlistValue &plist : trees) {
        const auto tree = ADPlistObject::createWithPlist(plist);
        EXPECT_EQ(tree->hasChildrenSubkeys(), !tree->unionOfChildrenSubkeys().isEmpty());
    }
}

TEST_F(ADPlistObjectEditingTest, SortsKeysAndValues)
{
    const auto tree = ADPlistObject::createWithPlist(
        arrayOf({PlistValue(3),
                 dictionaryOf({{"n", PlistValue(2)}, {"b", PlistValue(0)}, {"A", PlistValue(0)}}),
                 PlistValue(1), dictionaryOf({{"x", PlistValue(0)}}),
                 dictionaryOf({{"n", PlistValue(1)}})}),
        &doc);
    doc.edit([&] { tree->sortValuesBySubkey(QStringLiteral("n"), KZComparison::PlistCompare); });
    // Dictionaries first by "n" (a missing one last), then the rest by value.
    EXPECT_EQ(tree->childAtIndex(0)->childForKey("n")->plist().toInteger(), 1);
    EXPECT_EQ(tree->childAtIndex(1)->childForKey("n")->plist().toInteger(), 2);
    EXPECT_TRUE(tree->childAtIndex(2)->childForKey("x"));
    EXPECT_EQ(tree->childAtIndex(3)->plist().toInteger(), 1);
    EXPECT_EQ(tree->childAtIndex(4)->plist().toInteger(), 3);
    EXPECT_EQ(tree->unionOfChildrenSubkeys(), (QSet<QString>{"n", "b", "A", "x"}));
    EXPECT_EQ(doc.undo.undoActionName(), QStringLiteral("Sort By Subkey “n”"));
    expectConsistent(*tree);

    doc.edit([&] { tree->sortKeysUsingSelector(KZComparison::Compare, true); });
    EXPECT_EQ(tree->childAtIndex(1)->keys(), (QStringList{"A", "b", "n"}))
        << "dictionaries inside arrays too";
    expectConsistent(*tree->childAtIndex(1));
    doc.edit([&] { tree->sortValuesUsingSelector(KZComparison::PlistCompare); });
    EXPECT_TRUE(tree->childAtIndex(0)->hasKeys())
        << "dictionaries (code 4) before numbers (code 5)";
    EXPECT_EQ(tree->childAtIndex(4)->plist().toInteger(), 3);
}

TEST_F(ADPlistObjectEditingTest, ComparesNodesByTypeThenValue)
{
    const auto tree = ADPlistObject::createWithPlist(
        arrayOf({PlistValue(QStringLiteral("b")), PlistValue(5), PlistValue(QStringLiteral("A")),
                 PlistValue::null()}));
    EXPECT_EQ(tree->childAtIndex(0)->plistCompare(tree->childAtIndex(1)), 1)
        << "strings after numbers";
    EXPECT_EQ(tree->childAtIndex(0)->plistCompare(tree->childAtIndex(2)), 1)
        << "case-insensitive by default";
    EXPECT_EQ(tree->childAtIndex(3)->plistCompare(nullptr), 0);
    EXPECT_EQ(tree->childAtIndex(1)->plistCompare(nullptr), -1);
    EXPECT_EQ(tree->childAtIndex(1)->plistTypeEnum(),
              quint32('n') << 24 | quint32('m') << 16 | 'b' << 8 | 'r');
    EXPECT_EQ(tree->childAtIndex(3)->plistTypeEnum(), 0u);
}

TEST_F(ADPlistObjectEditingTest, ParentlessTreesEditWithoutUndoOrPosts)
{
    const auto orphan = ADPlistObject::createWithPlist(arrayOf({PlistValue(1)}));
    orphan->addChild(ADPlistObject::createWithPlist(PlistValue(2)));
    orphan->removeChildAtIndex(0);
    EXPECT_TRUE(orphan->plist().isIdenticalTo(arrayOf({PlistValue(2)})));
    EXPECT_TRUE(doc.heard.empty());
    EXPECT_FALSE(doc.undo.canUndo());
}

TEST_F(ADPlistObjectEditingTest, KeepsMadeChildrenInPlaceAmongUnmadeOnes)
{
    PlistArray plain = PlistArray::create();
    for (int i = 0; i < 100; ++i)
        plain.append(PlistValue(i));
    const auto list = ADPlistObject::createWithPlist(plain, &doc);
    ADPlistObject *fifty = list->childAtIndex(50); // its siblings are not made yet
    EXPECT_EQ(list->childAtIndex(50), fifty) << "a child is made once";
    doc.edit([&] {
        list->insertChildren({ADPlistObject::createWithPlist(PlistValue(-1))}, {}, KZIndexSet(0));
    });
    EXPECT_EQ(fifty->indexInParent(), 51);
    doc.edit([&] { list->removeChildrenAtIndexes(KZIndexSet::range(10, 5)); });
    EXPECT_EQ(fifty->indexInParent(), 46);
    doc.edit([&] { list->moveChildIndexes(KZIndexSet(46), 0); });
    EXPECT_EQ(fifty->indexInParent(), 0);
    EXPECT_EQ(list->childAtIndex(0), fifty);
    EXPECT_EQ(list->childAtIndex(1)->plist().toInteger(), -1);
    doc.undo.undo();
    doc.undo.undo();
    doc.undo.undo();
    EXPECT_EQ(list->childAtIndex(50), fifty);
    EXPECT_TRUE(list->plist().isIdenticalTo(plain.value()));
    expectConsistent(*list);
}

TEST_F(ADPlistObjectEditingTest, EditsUnderAnArchiverUidReachTheFile)
{
    // A keyed archive shows a UID as {"CF$UID": n}; the plain value keeps the UID.
    const quint64 big = 3000000000u; // above 2^31, shown whole
    const auto archive = ADPlistObject::createWithPlist(
        dictionaryOf({{"root", PlistValue::uid(big)}, {"other", PlistValue::uid(1)}}), &doc);
    ADPlistObject *shown = archive->childForKey("root");
    ASSERT_TRUE(shown->hasKeys());
    EXPECT_EQ(shown->childForKey("CF$UID")->plist().toUnsigned(), big);

    doc.edit([&] { shown->childForKey("CF$UID")->setPlist(PlistValue(7)); });
    const PlistValue entry = archive->plist().toDictionary().value(u"root");
    EXPECT_EQ(entry.kind(), PlistValue::Kind::Uid) << "still a UID in the file";
    EXPECT_EQ(entry.toUid(), 7u);

    doc.edit([&] {
        shown->addChild(ADPlistObject::createWithPlist(PlistValue(QStringLiteral("x"))), "note");
    });
    EXPECT_TRUE(archive->plist().toDictionary().value(u"root").isIdenticalTo(
        dictionaryOf({{"CF$UID", PlistValue(7)}, {"note", str("x")}})))
        << "no longer a UID's shape: the dictionary itself is stored";

    doc.undo.undo();
    doc.undo.undo();
    EXPECT_EQ(archive->plist().toDictionary().value(u"root").toUid(), big);
    doc.edit([&] { archive->childForKey("other")->setPlist(shown->plist()); });
    EXPECT_EQ(archive->plist().toDictionary().value(u"other").toUid(), big)
        << "a UID's shape set on a UID's place stays a UID";
}

TEST_F(ADPlistObjectEditingTest, LooksUpTheUndoManagerOncePerCommand)
{
    // Recursive commands over deep trees stay linear: no lookup up the whole
    // chain for every node they touch.
    PlistValue inner = arrayOf({PlistValue(2), PlistValue(1)});
    for (int i = 0; i < 2000; ++i)
        inner = arrayOf({PlistValue(2), inner, PlistValue(1)});
    const auto deep = ADPlistObject::createWithPlist(inner, &doc);
    doc.undoLookups = 0;
    doc.edit([&] { deep->sortValuesUsingSelector(KZComparison::PlistCompare, true); });
    EXPECT_LE(doc.undoLookups, 2);
    doc.undoLookups = 0;
    doc.edit([&] { deep->makeCompatibleWithPlistFormat(ADPlistFormatASCII); });
    EXPECT_LE(doc.undoLookups, 2);
    EXPECT_TRUE(deep->compatibleWithPlistFormat(ADPlistFormatASCII));
}

} // namespace
