// The info panels, made by class name as a viewer names them, driven on
// the offscreen platform.

#include "ui/viewers/ADBinaryPlistViewController.h"

#include "shared/PlistDictionary.h"
#include "storage/PlistSerialization.h"

#include <QFile>
#include <QPushButton>
#include <QSignalSpy>
#include <QTableView>
#include <QTest>

#include <gtest/gtest.h>

namespace {

ADPlistObject::Pointer dataNode(const QByteArray &bytes)
{
    return ADPlistObject::createWithPlist(PlistValue::data(bytes));
}

TEST(InfoViewControllers, ShowTheBookmarksResourceValues)
{
    QFile file(QStringLiteral(ARBORDECK_TEST_DATA_DIR "/records/fq-sample1.book"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const std::unique_ptr<ADInfoViewController> panel =
        ADInfoViewController::infoViewControllerWithClassName(
            QStringLiteral("ADBookmarkResourceValuesViewController"));
    ASSERT_TRUE(panel);
    panel->setRepresentedObject(dataNode(file.readAll()));
    panel->show();
    const auto *table = panel->findChild<QTableView *>();
    ASSERT_TRUE(table);
    const QAbstractItemModel *model = table->model();
    QStringList keys;
    for (int row = 0; row < model->rowCount(); ++row)
        keys.append(model->index(row, 0).data().toString());
    const int path = int(keys.indexOf(QStringLiteral("_NSURLPathKey")));
    ASSERT_GE(path, 0);
    EXPECT_EQ(model->index(path, 1).data().toString(),
              QStringLiteral("/Applications/Bitwarden.app"));
    EXPECT_EQ(model->headerData(1, Qt::Horizontal).toString(), QStringLiteral("Value"));
    EXPECT_FALSE(ADInfoViewController::infoViewControllerWithClassName(QStringLiteral("QWidget")));
}

TEST(InfoViewControllers, OpenTheEmbeddedPropertyListAsADocument)
{
    PlistDictionary dictionary = PlistDictionary::create();
    dictionary.insert(QStringLiteral("key"), PlistValue(QStringLiteral("value")));
    const QByteArray bytes =
        PlistSerialization::write(PlistValue(dictionary), ADPlistFormatBinary).data;
    const std::unique_ptr<ADInfoViewController> panel =
        ADInfoViewController::infoViewControllerWithClassName(
            QStringLiteral("ADBinaryPlistViewController"));
    auto *binary = qobject_cast<ADBinaryPlistViewController *>(panel.get());
    ASSERT_TRUE(binary);
    binary->setRepresentedObject(dataNode(bytes));
    binary->show();
    EXPECT_EQ(binary->resourceValues(),
              ADResourceValuesModel::Rows({{QStringLiteral("key"), QStringLiteral("value")}}));
    QSignalSpy opened(binary, &ADBinaryPlistViewController::openAsDocumentRequested);
    QTest::mouseClick(binary->openAsDocumentButton(), Qt::LeftButton);
    ASSERT_EQ(opened.count(), 1);
    EXPECT_EQ(opened.first().first().toByteArray(), bytes);
}

} // namespace
