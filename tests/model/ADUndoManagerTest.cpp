#include "model/ADUndoManager.h"

#include "shared/KZNotificationCenter.h"

#include <QCoreApplication>
#include <QUndoStack>

#include <gtest/gtest.h>

namespace {

// A value whose setter registers its own inverse, as tree operations do.
struct Cell
{
    explicit Cell(ADUndoManager &manager) : undo(manager) {}
    ADUndoManager &undo;
    int value = 0;
    std::vector<int> history;

    void set(int v)
    {
        const int old = value;
        undo.registerUndo(this, [this, old] { set(old); });
        value = v;
        history.push_back(v);
    }
};

class ADUndoManagerTest : public testing::Test
{
protected:
    void SetUp() override { undo.setNotificationCenter(&center); }
    KZNotificationCenter center;
    ADUndoManager undo;
};

TEST_F(ADUndoManagerTest, UndoesGroupsInReverseAndRedoesThem)
{
    Cell cell{undo};
    undo.beginUndoGrouping();
    cell.set(1);
    undo.beginUndoGrouping(); // nested groups join the outer one
    cell.set(2);
    undo.endUndoGrouping();
    undo.setActionName(QStringLiteral("Edit"));
    undo.endUndoGrouping();
    EXPECT_EQ(undo.undoStack()->count(), 1);
    EXPECT_EQ(undo.undoActionName(), QStringLiteral("Edit"));

    cell.history.clear();
    undo.undo();
    EXPECT_EQ(cell.value, 0);
    EXPECT_EQ(cell.history, (std::vector<int>{1, 0})) << "last registered runs first";
    EXPECT_TRUE(undo.canRedo());
    EXPECT_EQ(undo.redoActionName(), QStringLiteral("Edit"));

    undo.redo();
    EXPECT_EQ(cell.value, 2);
    undo.undo();
    EXPECT_EQ(cell.value, 0);
    undo.redo();
    EXPECT_EQ(cell.value, 2) << "each undo and redo registers the way back";
}

TEST_F(ADUndoManagerTest, GroupsByEventLoopPass)
{
    Cell cell{undo};
    cell.set(1);
    cell.set(2);
    EXPECT_EQ(undo.groupingLevel(), 1);
    QCoreApplication::processEvents();
    EXPECT_EQ(undo.groupingLevel(), 0);
    cell.set(3);
    undo.undo(); // closes the pass's group first
    EXPECT_EQ(cell.value, 2);
    undo.undo();
    EXPECT_EQ(cell.value, 0);
    EXPECT_FALSE(undo.canUndo());
}

TEST_F(ADUndoManagerTest, ANewEditDropsWhatCouldBeRedone)
{
    Cell cell{undo};
    undo.setGroupsByEvent(false);
    undo.beginUndoGrouping();
    cell.set(1);
    undo.endUndoGrouping();
    undo.undo();
    ASSERT_TRUE(undo.canRedo());
    undo.beginUndoGrouping();
    cell.set(5);
    EXPECT_FALSE(undo.canRedo());
    undo.endUndoGrouping();
    undo.removeAllActions();
    EXPECT_FALSE(undo.canUndo());
}

TEST_F(ADUndoManagerTest, AnnouncesClosingGroupsToObserversThatMayStillRegister)
{
    Cell cell{undo}, follower{undo};
    int closings = 0;
    center.addObserver(
        ADUndoManagerWillCloseUndoGroupNotification, &undo, [&](const KZNotification &) {
            ++closings;
            if (undo.lastUndoTarget() == &cell && !undo.isUndoing() && !undo.isRedoing())
                follower.set(cell.value * 10); // like a text side following the tree
        });
    undo.beginUndoGrouping();
    cell.set(4);
    undo.endUndoGrouping();
    EXPECT_EQ(closings, 1);
    EXPECT_EQ(follower.value, 40);
    undo.undo();
    EXPECT_EQ(closings, 2) << "the group that undo builds closes too";
    EXPECT_EQ(cell.value, 0);
    EXPECT_EQ(follower.value, 0) << "one undo takes back both";
}

TEST_F(ADUndoManagerTest, RemembersTheTargetEvenWithRegistrationDisabled)
{
    Cell a{undo}, b{undo};
    undo.beginUndoGrouping();
    a.set(1);
    EXPECT_EQ(undo.lastUndoTarget(), &a);
    undo.disableUndoRegistration();
    b.set(2);
    undo.enableUndoRegistration();
    EXPECT_EQ(undo.lastUndoTarget(), &b);
    undo.endUndoGrouping();
    undo.undo();
    EXPECT_EQ(a.value, 0);
    EXPECT_EQ(b.value, 2) << "nothing was recorded for b";
}

TEST_F(ADUndoManagerTest, NamesOnlyTheGroupOfTheEditThatNamesIt)
{
    Cell cell{undo};
    cell.set(1);
    undo.setActionName(QStringLiteral("Edit Value"));
    QCoreApplication::processEvents();
    undo.setActionName(QStringLiteral("Sort Values")); // a sort that changed nothing
    EXPECT_EQ(undo.undoActionName(), QStringLiteral("Edit Value"));

    undo.setGroupsByEvent(false);
    undo.beginUndoGrouping();
    undo.setActionName(QStringLiteral("Convert")); // before anything is recorded
    EXPECT_EQ(undo.undoActionName(), QStringLiteral("Edit Value"));
    cell.set(2);
    undo.endUndoGrouping();
    EXPECT_EQ(undo.undoActionName(), QStringLiteral("Convert"));
    undo.beginUndoGrouping();
    undo.setActionName(QStringLiteral("Nothing"));
    undo.endUndoGrouping(); // empty: nothing is pushed, and the name goes with it
    undo.beginUndoGrouping();
    cell.set(3);
    undo.endUndoGrouping();
    EXPECT_EQ(undo.undoStack()->count(), 3);
    EXPECT_EQ(undo.undoActionName(), QString());
}

} // namespace
