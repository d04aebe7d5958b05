#include "ui/outline/ADPlistOutlineView.h"
#include "support/ValueBuilders.h"

#include "model/ADUndoManager.h"
#include "preferences/KZUserDefaults.h"
#include "ui/document/ADPlistTextView.h"
#include "ui/outline/ADEditSheet.h"

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

namespace {

// Answers the next message box that opens with the button of that text,
// looking for it on every pass of the event loop until it shows; the flag
// turns true once it is answered.
std::shared_ptr<bool> answerNextMessageBox(const QString &button)
{
    auto answered = std::make_shared<bool>(false);
    auto *watch = new QTimer(qApp);
    QObject::connect(watch, &QTimer::timeout, watch, [watch, button, answered] {
        for (QWidget *widget : QApplication::topLevelWidgets()) {
            auto *box = qobject_cast<QMessageBox *>(widget);
            if (!box || !box->isVisible())
                continue;
            for (QAbstractButton *candidate : box->buttons()) {
                if (candidate->text() != button)
                    continue;
                watch->stop();
                watch->deleteLater();
                candidate->click();
                *answered = true;
                return;
            }
        }
    });
    watch->start(5);
    return answered;
}

// Runs the event loop until the flag turns true, for at most a few seconds.
bool waitFor(const std::shared_ptr<bool> &flag)
{
    for (int pass = 0; pass < 500 && !*flag; ++pass)
        QTest::qWait(10);
    return *flag;
}

class ADPlistOutlineViewTest : public testing::Test
{
protected:
    ADPlistOutlineViewTest()
    {
        undo.setNotificationCenter(&center);
        controller.setNotificationCenter(&center);
        controller.setUndoManager(&undo);
        root = ADPlistObject::createWithPlist(dictionaryOf({{"alpha", PlistValue(1)},
                                                            {"list", arrayOf({str("x"), str("y")})},
                                                            {"name", str("text")},
                                                            {"on", PlistValue(false)}}));
        controller.setPlistRoot(root);
        view.resize(600, 400);
        view.show();
        QApplication::setActiveWindow(&view);
    }

    QModelIndex cell(ADPlistObject *item, int column)
    {
        return controller.model().indexForItem(item, column);
    }
    // Starts editing a cell and answers its editor.
    QWidget *startEditing(ADPlistObject *item, int column)
    {
        QApplication::setActiveWindow(&view); // a closed alert may have taken it
        QApplication::processEvents();
        view.editColumn(column, item);
        QApplication::processEvents();
        for (QWidget *editor : view.viewport()->findChildren<QWidget *>()) {
            if (editor->isVisible() &&
                (qobject_cast<QLineEdit *>(editor) || qobject_cast<QComboBox *>(editor)))
                return editor;
        }
        return nullptr;
    }
    void typeAndReturn(QWidget *editor, const QString &text)
    {
        auto *field = qobject_cast<QLineEdit *>(editor);
        ASSERT_NE(field, nullptr);
        field->selectAll();
        QTest::keyClicks(field, text);
        QTest::keyClick(field, Qt::Key_Return);
        QApplication::processEvents();
    }

    QTemporaryDir dir;
    KZUserDefaults defaults{dir.filePath(QStringLiteral("settings.plist"))};
    KZNotificationCenter center;
    ADUndoManager undo;
    ADPlistOutlineController controller{defaults};
    ADPlistOutlineView view{controller};
    ADPlistObject::Pointer root;
};

TEST_F(ADPlistOutlineViewTest, EditsKeysInPlaceAndAsksBeforeReplacingASibling)
{
    ADPlistObject *alpha = root->childForKey("alpha");
    typeAndReturn(startEditing(alpha, ADPlistOutlineModel::KeyColumn), QStringLiteral("first"));
    EXPECT_EQ(alpha->key(), QStringLiteral("first"));
    EXPECT_EQ(view.focusWidget(), &view) << "Return ends the edit and leaves focus on the outline";

    auto answered = answerNextMessageBox(QStringLiteral("Cancel"));
    typeAndReturn(startEditing(alpha, ADPlistOutlineModel::KeyColumn), QStringLiteral("name"));
    ASSERT_TRUE(waitFor(answered));
    EXPECT_EQ(alpha->key(), QStringLiteral("first"));
    EXPECT_EQ(root->childCount(), 4);

    answered = answerNextMessageBox(QStringLiteral("Replace"));
    typeAndReturn(startEditing(alpha, ADPlistOutlineModel::KeyColumn), QStringLiteral("name"));
    ASSERT_TRUE(waitFor(answered));
    EXPECT_EQ(alpha->key(), QStringLiteral("name"));
    EXPECT_EQ(root->childCount(), 3);
    EXPECT_EQ(cell(alpha, ADPlistOutlineModel::KeyColumn).data().toString(),
              QStringLiteral("name"));
}

TEST_F(ADPlistOutlineViewTest, EditsValuesAndTypesAndRefusesWhatDoesNotRead)
{
    ADPlistObject *alpha = root->childForKey("alpha");
    typeAndReturn(startEditing(alpha, ADPlistOutlineModel::ValueColumn), QStringLiteral("42"));
    EXPECT_EQ(alpha->plist().toInteger(), 42);

    const auto alerted = answerNextMessageBox(QStringLiteral("OK"));
    typeAndReturn(startEditing(alpha, ADPlistOutlineModel::ValueColumn), QStringLiteral("many"));
    ASSERT_TRUE(waitFor(alerted)) << "the refusal says why";
    EXPECT_EQ(alpha->plist().toInteger(), 42) << "refused, the old value stays";
    EXPECT_EQ(cell(alpha, ADPlistOutlineModel::ValueColumn).data().toString(),
              QStringLiteral("42"));

    auto *popUp = qobject_cast<QComboBox *>(startEditing(alpha, ADPlistOutlineModel::ClassColumn));
    ASSERT_NE(popUp, nullptr);
    popUp->setCurrentIndex(popUp->findText(QStringLiteral("String")));
    emit popUp->activated(popUp->currentIndex());
    QApplication::processEvents();
    EXPECT_EQ(alpha->plistType(), ADPlistTypeString);
    EXPECT_EQ(alpha->plist().toString(), QStringLiteral("42"));

    ADPlistObject *on = root->childForKey("on");
    auto *yesNo = qobject_cast<QComboBox *>(startEditing(on, ADPlistOutlineModel::ValueColumn));
    ASSERT_NE(yesNo, nullptr);
    yesNo->setCurrentIndex(0);
    emit yesNo->activated(0);
    QApplication::processEvents();
    EXPECT_TRUE(on->plist().toBool());

    controller.undo();
    EXPECT_FALSE(on->plist().toBool());
}

TEST_F(ADPlistOutlineViewTest, TabGoesRoundTheRowOnly)
{
    ADPlistObject *name = root->childForKey("name");
    QWidget *editor = startEditing(name, ADPlistOutlineModel::ValueColumn);
    QTest::keyClick(editor, Qt::Key_Tab);
    QApplication::processEvents();
    EXPECT_EQ(view.currentIndex(), cell(name, ADPlistOutlineModel::KeyColumn))
        << "wraps to the key";
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Backtab);
    QApplication::processEvents();
    EXPECT_EQ(view.currentIndex(), cell(name, ADPlistOutlineModel::ValueColumn));

    ADPlistObject *element = root->childForKey("list")->childAtIndex(0);
    view.expand(cell(root->childForKey("list"), 0));
    editor = startEditing(element, ADPlistOutlineModel::ValueColumn);
    QTest::keyClick(editor, Qt::Key_Tab);
    QApplication::processEvents();
    EXPECT_EQ(view.currentIndex(), cell(element, ADPlistOutlineModel::ClassColumn))
        << "an element's fixed key is skipped";
}

TEST_F(ADPlistOutlineViewTest, ArrowKeysOpenAndCloseAndTypingSelectsAKey)
{
    ADPlistObject *list = root->childForKey("list");
    view.setCurrentIndex(cell(list, 0));
    QTest::keyClick(&view, Qt::Key_Right);
    EXPECT_TRUE(controller.model().isItemExpanded(list)) << "the view tells the model";
    QTest::keyClick(&view, Qt::Key_Left);
    EXPECT_FALSE(controller.model().isItemExpanded(list));

    view.setCurrentIndex(cell(root->childForKey("alpha"), 0));
    QTest::keyClicks(&view, QStringLiteral("na"));
    EXPECT_EQ(controller.selectedItems(), std::vector<ADPlistObject *>{root->childForKey("name")});
    EXPECT_EQ(view.model()->headerData(0, Qt::Horizontal, Qt::AccessibleTextRole).toString(),
              QStringLiteral("Key"));
}

TEST_F(ADPlistOutlineViewTest, EditSheetSetsEveryValueOrNone)
{
    ADPlistObject *list = root->childForKey("list");
    const std::vector<ADPlistObject *> both{list->childAtIndex(0), list->childAtIndex(1)};
    ADEditSheet sheet(controller.valueViewerRegistry(), &view);
    sheet.startEditingPlistObjects(both, view.font());
    EXPECT_TRUE(sheet.textView()->toPlainText().isEmpty()) << "the values differ";

    sheet.textView()->setPlainText(QStringLiteral("same\nlines"));
    QTest::keyClick(sheet.textView(), Qt::Key_Enter, Qt::KeypadModifier);
    EXPECT_FALSE(sheet.isVisible());
    EXPECT_EQ(both[1]->plist().toString(), QStringLiteral("same\nlines"));

    ADPlistObject *alpha = root->childForKey("alpha");
    sheet.startEditingPlistObjects({alpha}, view.font());
    EXPECT_EQ(sheet.textView()->toPlainText(), QStringLiteral("1"));
    sheet.textView()->setPlainText(QStringLiteral("one"));
    sheet.acceptEditValue();
    EXPECT_TRUE(sheet.isVisible());
    EXPECT_TRUE(
        sheet.errorLabel()->text().startsWith(QStringLiteral("The entered text is not valid")));
    EXPECT_EQ(alpha->plist().toInteger(), 1);
}

} // namespace
