#include "ui/document/KZFileDialogPanels.h"

#include <QFileDialog>
#include <QLineEdit>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

namespace {

const std::vector<KZFileTypeFilter> kTypes = {
    {QStringLiteral("Property List"),
     QStringLiteral("com.apple.property-list"),
     {QStringLiteral("plist")}},
    {QStringLiteral("JSON"), QStringLiteral("public.json"), {QStringLiteral("json")}},
    {QStringLiteral("JSON, compact"), QStringLiteral("public.json"), {QStringLiteral("json")}},
};

class KZFileDialogPanelsTest : public testing::Test
{
protected:
    KZFileDialogPanelsTest() { _window.show(); }

    QFileDialog *dialog() const { return _window.findChild<QFileDialog *>(); }
    void typeName(const QString &name)
    {
        auto *edit = dialog()->findChild<QLineEdit *>(QStringLiteral("fileNameEdit"));
        ASSERT_TRUE(edit);
        edit->clear();
        QTest::keyClicks(edit, name);
        QTest::keyClick(edit, Qt::Key_Return);
    }

    QTemporaryDir _folder;
    QWidget _window;
    KZFileDialogPanels _panels{&_window};
};

TEST_F(KZFileDialogPanelsTest, SavePanelGivesThePathAndTheTypeChosen)
{
    std::optional<KZSavePanelResult> result;
    bool answered = false;
    _panels.runSavePanel({_folder.path(), QStringLiteral("Untitled"), kTypes, 1},
                         [&](const std::optional<KZSavePanelResult> &r) {
                             answered = true;
                             result = r;
                         });
    ASSERT_TRUE(dialog());
    EXPECT_EQ(dialog()->windowModality(), Qt::WindowModal);
    EXPECT_EQ(dialog()->acceptMode(), QFileDialog::AcceptSave);
    EXPECT_EQ(dialog()->selectedNameFilter(), QStringLiteral("JSON (*.json)"));

    dialog()->selectNameFilter(QStringLiteral("JSON, compact (*.json)"));
    emit dialog()->filterSelected(QStringLiteral("JSON, compact (*.json)"));
    typeName(QStringLiteral("settings"));

    ASSERT_TRUE(answered);
    ASSERT_TRUE(result);
    EXPECT_EQ(result->path, _folder.filePath(QStringLiteral("settings.json")))
        << "a name without an extension takes the type's";
    EXPECT_EQ(result->filterIndex, 2);
}

TEST_F(KZFileDialogPanelsTest, CancelledPanelsGiveNothing)
{
    bool saveAnswered = false;
    _panels.runSavePanel({_folder.path(), QStringLiteral("Untitled"), kTypes, 0},
                         [&](const std::optional<KZSavePanelResult> &r) {
                             saveAnswered = true;
                             EXPECT_FALSE(r);
                         });
    ASSERT_TRUE(dialog());
    dialog()->reject();
    EXPECT_TRUE(saveAnswered);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);

    QStringList opened{QStringLiteral("unset")};
    _panels.runOpenPanel({_folder.path(), {kTypes[0]}},
                         [&opened](const QStringList &paths) { opened = paths; });
    ASSERT_TRUE(dialog());
    EXPECT_EQ(dialog()->fileMode(), QFileDialog::ExistingFiles);
    EXPECT_EQ(dialog()->nameFilters(), (QStringList{QStringLiteral("Property List (*.plist)"),
                                                    QStringLiteral("All Files (*)")}));
    QTest::keyClick(dialog(), Qt::Key_Escape);
    EXPECT_TRUE(opened.isEmpty());
}

} // namespace
