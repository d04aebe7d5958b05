#include "outline/ADPlistOutlineController.h"
#include "support/ValueBuilders.h"

#include "model/ADKeySortPreferences.h"
#include "model/ADUndoManager.h"
#include "outline/ADPlistPasteboard.h"
#include "preferences/KZUserDefaults.h"
#include "storage/PlistSerialization.h"

#include <QAbstractItemModelTester>
#include <QClipboard>
#include <QFile>
#include <QGuiApplication>
#include <QMimeData>
#include <QTemporaryDir>
#include <QUrl>

#include <gtest/gtest.h>

namespace {

// What a document gives its outline: an undo manager and a private centre.
class ADPlistOutlineControllerTest : public testing::Test
{
protected:
    void SetUp() override
    {
        undo.setNotificationCenter(&center);
        undo.setGroupsByEvent(false);
        controller.setNotificationCenter(&center);
        controller.setUndoManager(&undo);
        // Reports any broken promise of the model as a test failure.
        tester = std::make_unique<QAbstractItemModelTester>(
            &controller.model(), QAbstractItemModelTester::FailureReportingMode::Warning);
    }

    ADPlistObject::Pointer show(const PlistValue &value)
    {
        auto root = ADPlistObject::createWithPlist(value.kz_copyMutableContainers());
        controller.setPlistRoot(root);
        controller.model().expandItem(root.get());
        return root;
    }
    /// A command that runs its own outline update, grouped as one event's pass groups it.
    template <typename Edit> void grouped(Edit &&edit)
    {
        undo.beginUndoGrouping();
        edit();
        undo.endUndoGrouping();
    }
    template <typename Edit> void command(Edit &&edit)
    {
        controller.performOutlineUpdate([&] {
            undo.beginUndoGrouping();
            edit();
            undo.endUndoGrouping();
        });
    }
    // The model's rows below `item`, as its key texts.
    QStringList shownKeys(ADPlistObject *item)
    {
        ADPlistOutlineModel &model = controller.model();
        const QModelIndex parent = model.indexForItem(item);
        QStringList keys;
        for (int row = 0; row < model.rowCount(parent); ++row) {
            const QModelIndex index = model.index(row, 0, parent);
            EXPECT_EQ(ADPlistOutlineModel::itemForIndex(index), item->childAtIndex(row));
            keys << index.data().toString();
        }
        return keys;
    }
    std::vector<ADPlistObject *> children(ADPlistObject *item, std::initializer_list<int> rows)
    {
        std::vector<ADPlistObject *> found;
        for (const int row : rows)
            found.push_back(item->childAtIndex(row));
        return found;
    }

    QTemporaryDir dir;
    KZUserDefaults defaults{dir.filePath(QStringLiteral("settings.plist"))};
    KZNotificationCenter center;
    ADUndoManager undo;
    ADPlistOutlineController controller{defaults};
    std::unique_ptr<QAbstractItemModelTester> tester;
};

const PlistValue kSample = dictionaryOf({{"a", PlistValue(1)},
                                         {"b", arrayOf({PlistValue(10), PlistValue(20)})},
                                         {"c", str("x")},
                                         {"d", PlistValue(true)}});

TEST_F(ADPlistOutlineControllerTest, CommandsMoveRowsAndSelectWhatChanged)
{
    const auto root = show(kSample);
    ADPlistObject *b = root->childForKey("b");
    command([&] { root->createNewChildOfType(ADPlistTypeString, 1, QStringLiteral("n")); });
    EXPECT_EQ(shownKeys(root.get()), (QStringList{"a", "n", "b", "c", "d"}));
    EXPECT_EQ(controller.selectedItems(), children(root.get(), {1})) << "the new row is selected";

    command([&] { root->removeChildrenAtIndexes(KZIndexSet::fromIndexes({1, 3})); });
    EXPECT_EQ(shownKeys(root.get()), (QStringList{"a", "b", "d"}));
    EXPECT_EQ(controller.selectedItems(), children(root.get(), {0}));

    command([&] { root->moveChildIndexes(KZIndexSet(2), 0); });
    EXPECT_EQ(shownKeys(root.get()), (QStringList{"d", "a", "b"}));
    EXPECT_EQ(controller.selectedItems(), children(root.get(), {0})) << "moved rows are selected";

    controller.model().expandItem(b);
    controller.selectItems({b->childAtIndex(1)});
    controller.undo(); // the move
    controller.undo(); // the removal: the same nodes come back
    EXPECT_EQ(shownKeys(root.get()), (QStringList{"a", "n", "b", "c", "d"}));
    EXPECT_TRUE(controller.model().isItemExpanded(b));
    EXPECT_EQ(shownKeys(b), (QStringList{"0", "1"}));
    controller.redo();
    EXPECT_EQ(shownKeys(root.get()), (QStringList{"a", "b", "d"}));
}

TEST_F(ADPlistOutlineControllerTest, ChangesFromElsewhereReloadAndLeaveTheSelection)
{
    const auto root = show(kSample);
    ADPlistObject *c = root->childForKey("c");
    controller.selectItems({c});
    undo.beginUndoGrouping();
    root->removeChildAtIndex(0);
    root->childForKey("c")->setPlist(dictionaryOf({{"k", PlistValue(1)}}));
    undo.endUndoGrouping();
    EXPECT_EQ(shownKeys(root.get()), (QStringList{"b", "c", "d"}));
    EXPECT_EQ(controller.selectedItems(), std::vector<ADPlistObject *>{c});
    EXPECT_TRUE(controller.model().hasChildren(controller.model().indexForItem(c)))
        << "a string that became a dictionary opens";

    // Many ranges at once go out as one layout change, keeping the survivors.
    PlistArray many = PlistArray::create();
    for (int i = 0; i < 40; ++i)
        many.append(PlistValue(i));
    const auto list = show(many);
    controller.selectItems(children(list.get(), {5, 7}));
    KZIndexSet odd;
    for (int i = 1; i < 40; i += 2)
        odd.addIndex(i);
    command([&] { list->removeChildrenAtIndexes(odd); });
    EXPECT_EQ(controller.model().rowCount(controller.model().indexForItem(list.get())), 20);
    shownKeys(list.get());
    command([&] { list->removeChildrenAtIndexes(KZIndexSet::range(0, 20)); });
    EXPECT_EQ(controller.selectedItems(), std::vector<ADPlistObject *>{list.get()})
        << "with no row left, the parent";

    // A selection of very many separate runs would cost every later change
    // the square of its runs: it is the first item alone.
    PlistArray huge = PlistArray::create();
    for (int i = 0; i < 5000; ++i)
        huge.append(PlistValue(i));
    const auto big = show(huge);
    std::vector<ADPlistObject *> everyOther;
    for (int i = 0; i < 5000; i += 2)
        everyOther.push_back(big->childAtIndex(i));
    controller.selectItems(everyOther);
    EXPECT_EQ(controller.selectedItems(), std::vector<ADPlistObject *>{everyOther.front()});
    controller.selectItems({everyOther.begin(), everyOther.begin() + 100});
    EXPECT_EQ(controller.selectedItems().size(), 100u);
}

TEST_F(ADPlistOutlineControllerTest, KeepsTheSelectionToOneParent)
{
    const auto root = show(kSample);
    ADPlistObject *b = root->childForKey("b");
    controller.model().expandItem(b);
    QItemSelectionModel *selection = controller.model().selectionModel();
    const auto rowOf = [&](ADPlistObject *item) { return controller.model().indexForItem(item); };

    controller.selectItems({root->childForKey("a")});
    selection->select(rowOf(b->childAtIndex(0)), QItemSelectionModel::Select);
    EXPECT_EQ(controller.selectedItems(), children(root.get(), {0})) << "extending stays home";
    EXPECT_EQ(controller.selectedParent(), root.get());

    selection->select(rowOf(b->childAtIndex(1)), QItemSelectionModel::ClearAndSelect);
    EXPECT_EQ(controller.selectedItems(), children(b, {1})) << "a click elsewhere moves";
    EXPECT_EQ(controller.selectedParent(), b);

    selection->clearSelection();
    EXPECT_EQ(controller.firstSelectedItem(), root.get());
    EXPECT_EQ(controller.selectedParent(), nullptr);
}

TEST_F(ADPlistOutlineControllerTest, KeepsViewStateByPathAcrossANewTree)
{
    const auto root = show(kSample);
    controller.model().expandItem(root->childForKey("b"));
    controller.selectItems(children(root.get(), {2, 3}));
    EXPECT_EQ(controller.selectedPaths(), (QList<QVariantList>{{"c"}, {"d"}}));

    const auto next = ADPlistObject::createWithPlist(
        dictionaryOf({{"b", arrayOf({PlistValue(1)})}, {"d", PlistValue(2)}}));
    controller.setPlistRoot(next);
    EXPECT_EQ(controller.expandedPaths(), (QList<QVariantList>{{}, {"b"}}));
    EXPECT_EQ(controller.selectedPaths(), (QList<QVariantList>{{"d"}})) << "\"c\" went";

    undo.beginUndoGrouping();
    controller.setPlistRoot(ADPlistObject::createWithPlist(PlistArray::create()));
    undo.endUndoGrouping();
    EXPECT_TRUE(controller.selectedItems().empty());
    controller.undo();
    EXPECT_EQ(controller.plistRoot(), next.get()) << "a new tree is undone";
}

struct RemovalRow
{
    const char *name;
    std::vector<qint64> removed;
    qint64 count;    // children before
    qint64 selected; // -1: the parent
};

const RemovalRow kRemovals[] = {
    {"FirstTwo", {0, 1}, 5, -1},
    {"Last", {6}, 7, 5},
    {"TwoApart", {2, 4}, 7, 1},
    {"All", {0, 1, 2}, 3, -1},
};

class SelectionAfterRemoval : public testing::TestWithParam<RemovalRow>
{};

TEST_P(SelectionAfterRemoval, NamesTheSurvivorAbove)
{
    PlistArray plain = PlistArray::create();
    for (qint64 i = 0; i < GetParam().count; ++i)
        plain.append(PlistValue(i));
    const auto parent = ADPlistObject::createWithPlist(plain);
    const KZIndexSet removed = KZIndexSet::fromIndexes(GetParam().removed);
    parent->removeChildrenAtIndexes(removed);
    const ADPlistObject *chosen =
        ADPlistOutlineController::objectToSelectAfterRemovingChildIndexes(removed, parent.get());
    if (GetParam().selected < 0)
        EXPECT_EQ(chosen, parent.get());
    else
        EXPECT_EQ(chosen->plist().toInteger(), GetParam().selected);
}

INSTANTIATE_TEST_SUITE_P(Rows, SelectionAfterRemoval, testing::ValuesIn(kRemovals),
                         [](const auto &row) { return std::string(row.param.name); });

TEST_F(ADPlistOutlineControllerTest, EnablesCommandsByTheirRules)
{
    const auto root = show(kSample);
    ADPlistObject *b = root->childForKey("b");
    controller.model().expandItem(b);
    struct Row
    {
        std::vector<ADPlistObject *> selection;
        const char *command;
        bool enabled;
    };
    const Row rows[] = {
        {{}, "delete", false},
        {{root.get()}, "delete", false},
        {{root.get()}, "addChild", true},
        {{root.get()}, "addSibling", false},
        {{b}, "addSibling", true},
        {{root->childForKey("a")}, "addChild", false},
        {{b->childAtIndex(0)}, "editKey", false},
        {{b}, "editKey", true},
        {{b, root->childForKey("a")}, "sortValues", false},
        {{b}, "sortValues", true},
        {{b}, "sortKeys", false},
        {{root.get()}, "sortKeys", true},
        {{b}, "selectParent", true},
        {{root.get()}, "toggleRawKeysAndValues", false},
        {{root.get()}, "someCommandWithNoRule", true},
    };
    for (const Row &row : rows) {
        controller.selectItems(row.selection);
        EXPECT_EQ(controller.validateCommand(QString::fromLatin1(row.command)), row.enabled)
            << row.command << " with " << row.selection.size() << " selected";
    }
    controller.setEditable(false);
    controller.selectItems({b});
    EXPECT_FALSE(controller.validateCommand(QStringLiteral("sortValues")));
    EXPECT_TRUE(controller.validateCommand(QStringLiteral("copy")));
    EXPECT_FALSE(controller.validateCommand(QStringLiteral("undo")));
}

TEST_F(ADPlistOutlineControllerTest, EditsCellsWithTheirViewersAndNamesTheUndo)
{
    const auto root = show(kSample);
    ADPlistObject *a = root->childForKey("a");
    ADPlistOutlineModel &model = controller.model();
    EXPECT_EQ(model.indexForItem(a, ADPlistOutlineModel::ClassColumn).data().toString(),
              QStringLiteral("Number"));
    EXPECT_EQ(model.indexForItem(a, ADPlistOutlineModel::ValueColumn).data().toString(),
              QStringLiteral("1"));

    EXPECT_TRUE(controller.setValueFromCell(*a, QStringLiteral("twelve")).has_value());
    EXPECT_EQ(a->plist().toInteger(), 1) << "text that does not parse changes nothing";
    undo.beginUndoGrouping(); // as an event's pass groups the edit
    EXPECT_FALSE(controller.setValueFromCell(*a, QStringLiteral("12")).has_value());
    undo.endUndoGrouping();
    EXPECT_EQ(a->plist().toInteger(), 12);
    EXPECT_EQ(undo.undoActionName(), QStringLiteral("Edit Value"));

    undo.beginUndoGrouping();
    controller.changeClass(*a, ADPlistTypeString);
    undo.endUndoGrouping();
    EXPECT_EQ(a->plist().toString(), QStringLiteral("12"));
    EXPECT_EQ(undo.undoActionName(), QStringLiteral("Edit Class"));

    // Tab goes round one row: an array element's key is fixed.
    ADPlistObject *element = root->childForKey("b")->childAtIndex(0);
    EXPECT_EQ(controller.nextEditableColumn(*element, ADPlistOutlineModel::ValueColumn, true),
              ADPlistOutlineModel::ClassColumn);
    EXPECT_EQ(controller.nextEditableColumn(*a, ADPlistOutlineModel::ValueColumn, true),
              ADPlistOutlineModel::KeyColumn);
    EXPECT_EQ(controller.nextEditableColumn(*a, ADPlistOutlineModel::KeyColumn, false),
              ADPlistOutlineModel::ValueColumn);
    controller.setPlistFormat(ADPlistFormatJSON);
    EXPECT_EQ(controller.allowedPlistTypes(*root),
              (std::vector<ADPlistType>{ADPlistTypeArray, ADPlistTypeDictionary}));
}

TEST_F(ADPlistOutlineControllerTest, MakesNewItemsAndWrapsTheSelection)
{
    const auto root = show(kSample);
    controller.selectItems({root.get()});
    grouped([&] { controller.addChild(ADPlistTypeString); });
    EXPECT_EQ(shownKeys(root.get()).front(), QStringLiteral("New item"));
    EXPECT_EQ(controller.selectedItems(), children(root.get(), {0})) << "the new row is selected";
    EXPECT_EQ(undo.undoActionName(), QStringLiteral("New Child"));
    grouped([&] { controller.addSibling(ADPlistTypeNumber); });
    EXPECT_EQ(shownKeys(root.get()).mid(0, 2),
              (QStringList{QStringLiteral("New item"), QStringLiteral("New item 2")}));
    undo.undo();
    undo.undo();
    EXPECT_EQ(shownKeys(root.get()), (QStringList{"a", "b", "c", "d"}));

    // Two siblings go into a new dictionary where the first stood, in reverse order.
    controller.selectItems(children(root.get(), {2, 3}));
    grouped([&] { controller.addDictionaryWithSelection(); });
    EXPECT_EQ(shownKeys(root.get()), (QStringList{"a", "b", "New item"}));
    ADPlistObject *wrapper = root->childForKey(QStringLiteral("New item"));
    EXPECT_EQ(shownKeys(wrapper), (QStringList{"d", "c"}));
    undo.undo();
    EXPECT_EQ(shownKeys(root.get()), (QStringList{"a", "b", "c", "d"}));

    // One item keeps its key on the wrapper; the root's children all go one level down.
    controller.selectItems({root->childForKey("a")});
    grouped([&] { controller.addArrayWithSelection(); });
    EXPECT_EQ(root->childForKey("a")->plist().toArray().at(0).toInteger(), 1);
    controller.selectItems({root.get()});
    grouped([&] { controller.addArrayWithSelection(); });
    ASSERT_EQ(root->childCount(), 1);
    EXPECT_EQ(root->childAtIndex(0)->childCount(), 4);
    EXPECT_TRUE(root->childAtIndex(0)->plist().isArray());
}

TEST_F(ADPlistOutlineControllerTest, CopiesPastesDuplicatesAndDeletes)
{
    const auto root = show(kSample);
    controller.selectItems(children(root.get(), {0, 2}));
    controller.copy();
    const QMimeData *clipboard = QGuiApplication::clipboard()->mimeData();
    ASSERT_TRUE(clipboard->hasFormat(PlistObjectsPboardType));
    EXPECT_TRUE(clipboard->text().contains(QStringLiteral("<key>c</key>")))
        << "other programs get the text";
    const PlistValue copied = dictionaryOf({{"a", PlistValue(1)}, {"c", str("x")}});
    for (const QByteArray &form :
         {clipboard->data(PlistObjectsPboardType), clipboard->text().toUtf8()})
        EXPECT_TRUE(PlistSerialization::read(form).value.isEqualToPlist(copied))
            << "each form the clipboard carries reads back as the copied values";

    // Into the dictionary itself: the keys clash and are made unique.
    controller.selectItems(children(root.get(), {3}));
    grouped([&] { controller.paste(); });
    EXPECT_EQ(shownKeys(root.get()), (QStringList{"a", "b", "c", "d", "a 2", "c 2"}));
    EXPECT_EQ(controller.selectedItems(), children(root.get(), {4, 5}));
    EXPECT_EQ(undo.undoActionName(), QStringLiteral("Paste"));
    undo.undo();

    // Into an array: the values alone, below the clicked row.
    ADPlistObject *b = root->childForKey("b");
    controller.model().expandItem(b);
    controller.selectItems(children(b, {0}));
    grouped([&] { controller.paste(); });
    ASSERT_EQ(b->childCount(), 4);
    EXPECT_EQ(b->childAtIndex(1)->plist().toInteger(), 1);
    EXPECT_EQ(b->childAtIndex(2)->plist().toString(), QStringLiteral("x"));

    // Duplicating leaves the user's clipboard alone.
    QGuiApplication::clipboard()->setText(QStringLiteral("(7, 8, 9)"));
    controller.selectItems(children(b, {3}));
    grouped([&] { controller.duplicate(); });
    EXPECT_EQ(b->childCount(), 5);
    EXPECT_EQ(undo.undoActionName(), QStringLiteral("Duplicate"));
    EXPECT_EQ(QGuiApplication::clipboard()->text(), QStringLiteral("(7, 8, 9)"));

    // Plist text from another program pastes as its values.
    controller.selectItems({b});
    grouped([&] { controller.pasteChild(); });
    EXPECT_EQ(b->childCount(), 8);
    EXPECT_EQ(b->childAtIndex(0)->plist().toString(), QStringLiteral("7"));

    // Delete selects the survivor above; undo brings rows and selection back.
    controller.selectItems(children(b, {1, 2}));
    grouped([&] { controller.deletePlist(); });
    EXPECT_EQ(b->childCount(), 6);
    EXPECT_EQ(controller.selectedItems(), children(b, {0}));
    EXPECT_EQ(undo.undoActionName(), QStringLiteral("Delete"));
    undo.undo();
    EXPECT_EQ(b->childCount(), 8);
    EXPECT_EQ(controller.selectedItems(), children(b, {1, 2}));

    grouped([&] { controller.cut(); });
    EXPECT_EQ(b->childCount(), 6);
    EXPECT_EQ(undo.undoActionName(), QStringLiteral("Cut"));
    const std::optional<PlistValue> cut = ADPlistPasteboard::general().propertyList();
    ASSERT_TRUE(cut);
    EXPECT_EQ(cut->toArray().count(), 2);
}

TEST_F(ADPlistOutlineControllerTest, SortsKeysValuesAndBySubkeyWithUndo)
{
    // Built in the file's order, then sorted by code point.
    ADKeySortPreferences::setProvider([] {
        return ADKeySortPreferences::Values{false, false, true};
    });
    const auto root = show(dictionaryOf(
        {{"people", arrayOf({dictionaryOf({{"age", PlistValue(40)}}), str("nobody"),
                             dictionaryOf({{"age", PlistValue(7)}}), dictionaryOf({})})},
         {"list", arrayOf({PlistValue(9), PlistValue(4)})},
         {"A", PlistValue(3)},
         {"b", PlistValue(2)}}));
    ADKeySortPreferences::setProvider([] { return ADKeySortPreferences::Values{}; });
    ASSERT_EQ(shownKeys(root.get()), (QStringList{"people", "list", "A", "b"}));

    controller.selectItems({root.get()});
    grouped([&] { controller.sortKeys(); });
    EXPECT_EQ(shownKeys(root.get()), (QStringList{"A", "b", "list", "people"}));
    EXPECT_EQ(undo.undoActionName(), QStringLiteral("Sort Keys"));
    undo.undo();
    EXPECT_EQ(shownKeys(root.get()), (QStringList{"people", "list", "A", "b"}));

    ADPlistObject *list = root->childForKey("list");
    controller.selectItems({list});
    grouped([&] { controller.sortAllValues(); });
    EXPECT_EQ(list->childAtIndex(0)->plist().toInteger(), 4);
    EXPECT_EQ(controller.selectedItems(), std::vector<ADPlistObject *>{list})
        << "the selection stays on the same object";

    ADPlistObject *people = root->childForKey("people");
    controller.selectItems({people});
    grouped([&] { controller.sortBySubkey(QStringLiteral("age")); });
    EXPECT_EQ(people->childAtIndex(0)->plist().toDictionary().value(u"age").toInteger(), 7);
    EXPECT_TRUE(people->childAtIndex(2)->plist().toDictionary().isEmpty())
        << "dictionaries without the subkey come after those with it";
    EXPECT_TRUE(people->childAtIndex(3)->plist().isString()) << "then everything else";
    ADKeySortPreferences::setProvider({});
}

TEST_F(ADPlistOutlineControllerTest, CopiesKeyPathsAndJsonAsText)
{
    const auto root = show(kSample);
    ADPlistObject *b = root->childForKey("b");
    controller.model().expandItem(b);
    controller.selectItems(children(b, {1}));
    controller.copyKeyPath();
    EXPECT_EQ(QGuiApplication::clipboard()->text(), QStringLiteral("b.1"));

    controller.selectItems(children(root.get(), {0, 2}));
    ASSERT_FALSE(controller.copyAsJSON());
    const ReadResult json =
        PlistSerialization::readJson(QGuiApplication::clipboard()->text().toUtf8());
    ASSERT_TRUE(json);
    EXPECT_EQ(json.format, ADPlistFormatJSON);
    EXPECT_TRUE(json.value.isEqualToPlist(dictionaryOf({{"a", PlistValue(1)}, {"c", str("x")}})));

    controller.selectItems(children(root.get(), {3}));
    controller.copyAsSwiftLiteral();
    EXPECT_EQ(QGuiApplication::clipboard()->text(), QStringLiteral("true"));
}

TEST_F(ADPlistOutlineControllerTest, DropsMoveOwnRowsAndTakeOthersAsValues)
{
    const auto root = show(kSample);
    ADPlistOutlineModel &model = controller.model();
    ADPlistObject *b = root->childForKey("b");
    model.expandItem(b);
    const QModelIndex list = model.indexForItem(b);

    // Two rows of the dictionary dragged into the array: they move, keys dropped.
    std::unique_ptr<QMimeData> rows(model.mimeData(
        {model.indexForItem(root->childForKey("a")), model.indexForItem(root->childForKey("c"))}));
    EXPECT_TRUE(rows->text().contains(QStringLiteral("<key>a</key>"))) << "out as text";
    EXPECT_FALSE(model.canDropMimeData(rows.get(), Qt::MoveAction, 0, 0,
                                       model.indexForItem(root->childForKey("a"))))
        << "not into a scalar";
    grouped([&] { EXPECT_TRUE(model.dropMimeData(rows.get(), Qt::MoveAction, 2, 0, list)); });
    EXPECT_EQ(shownKeys(root.get()), (QStringList{"b", "d"}));
    ASSERT_EQ(b->childCount(), 4);
    EXPECT_EQ(b->childAtIndex(2)->plist().toString(), QStringLiteral("x"));
    EXPECT_EQ(b->childAtIndex(3)->plist().toInteger(), 1);
    undo.undo();
    EXPECT_EQ(shownKeys(root.get()), (QStringList{"a", "b", "c", "d"}));

    // Another outline, as another window has it, takes copies of the rows.
    ADPlistOutlineController other(defaults);
    other.setNotificationCenter(&center);
    other.setUndoManager(&undo);
    const auto otherRoot = ADPlistObject::createWithPlist(arrayOf({}).kz_copyMutableContainers());
    other.setPlistRoot(otherRoot);
    grouped([&] {
        EXPECT_TRUE(other.model().dropMimeData(rows.get(), Qt::MoveAction, -1, 0,
                                               other.model().indexForItem(otherRoot.get())));
    });
    EXPECT_EQ(otherRoot->childCount(), 2);
    EXPECT_EQ(shownKeys(root.get()), (QStringList{"a", "b", "c", "d"})) << "the source keeps them";

    // A container never goes into itself.
    std::unique_ptr<QMimeData> self(model.mimeData({list}));
    EXPECT_FALSE(model.canDropMimeData(self.get(), Qt::MoveAction, 0, 0, list));

    // Text and files from other programs come in as one value each.
    QMimeData text;
    text.setText(QStringLiteral("{ x = 1; }"));
    grouped([&] { EXPECT_TRUE(model.dropMimeData(&text, Qt::CopyAction, -1, 0, list)); });
    ASSERT_EQ(b->childCount(), 3);
    EXPECT_TRUE(b->childAtIndex(2)->hasKeys());
    QTemporaryDir files;
    const QString path = files.filePath(QStringLiteral("drop.plist"));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(PlistSerialization::write(arrayOf({str("f")}), ADPlistFormatBinary).data);
    file.close();
    QMimeData dropped;
    dropped.setUrls({QUrl::fromLocalFile(path)});
    grouped([&] { EXPECT_TRUE(model.dropMimeData(&dropped, Qt::CopyAction, 0, 0, list)); });
    EXPECT_TRUE(b->childAtIndex(0)->plist().isArray());
}

} // namespace
