// What the info panels of data viewers list.

#include "viewers/ADInfoPanelValues.h"
#include "viewers/ADValueViewerRegistry.h"

#include "shared/PlistArray.h"
#include "shared/PlistDictionary.h"
#include "storage/PlistSerialization.h"

#include <QFile>

#include "support/DefaultLocale.h"

#include <gtest/gtest.h>

namespace {

QByteArray binaryPlist(const PlistValue &value)
{
    return PlistSerialization::write(value, ADPlistFormatBinary).data;
}

TEST(InfoPanelValues, ListBookmarkResourceValuesAsTheirDefaultViewersShowThem)
{
    QFile file(QStringLiteral(ARBORDECK_TEST_DATA_DIR "/records/fq-sample2.book"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    ADValueViewerRegistry registry;
    const ADResourceValuesModel::Rows rows =
        ADInfoPanelValues::bookmarkResourceValues(PlistValue::data(file.readAll()), registry);
    const QHash<QString, QString> values(rows.begin(), rows.end());
    EXPECT_EQ(values.value(QStringLiteral("_NSURLPathKey")),
              QStringLiteral("/Users/davidmcdonald/hxstore"));
    EXPECT_EQ(values.value(QStringLiteral("NSURLLocalizedNameKey")), QStringLiteral("hxstore"));
    EXPECT_EQ(values.value(QStringLiteral("NSURLIsDirectoryKey")), QStringLiteral("YES"));
    EXPECT_EQ(values.value(QStringLiteral("NSURLVolumeUUIDStringKey")),
              QStringLiteral("8A829A03-9B24-4085-8051-18978712E4BE"));
    EXPECT_EQ(values.value(QStringLiteral("NSURLVolumeTotalCapacityKey")),
              QStringLiteral("499963174912"));
    EXPECT_TRUE(
        ADInfoPanelValues::bookmarkResourceValues(PlistValue::data("junk"), registry).isEmpty());
}

TEST(InfoPanelValues, FlattenAnEmbeddedPropertyListOneLevel)
{
    const DefaultLocale english("en_US");
    ADValueViewerRegistry registry;
    PlistDictionary dictionary = PlistDictionary::create();
    dictionary.insert(QStringLiteral("flag"), PlistValue(true));
    dictionary.insert(QStringLiteral("size"), PlistValue(2.5));
    using Rows = ADResourceValuesModel::Rows;
    EXPECT_EQ(ADInfoPanelValues::binaryPlistValues(
                  PlistValue::data(binaryPlist(PlistValue(dictionary))), registry),
              Rows({{QStringLiteral("flag"), QStringLiteral("YES")},
                    {QStringLiteral("size"), QStringLiteral("2.5")}}));
    PlistArray array = PlistArray::create();
    array.append(PlistValue(QStringLiteral("a")));
    array.append(PlistValue(2.5));
    EXPECT_EQ(ADInfoPanelValues::binaryPlistValues(PlistValue::data(binaryPlist(PlistValue(array))),
                                                   registry),
              Rows({{QStringLiteral("0"), QStringLiteral("a")},
                    {QStringLiteral("1"), QStringLiteral("2.5")}}));
    EXPECT_EQ(ADInfoPanelValues::binaryPlistValues(
                  PlistValue::data(binaryPlist(PlistValue(qint64(7)))), registry),
              Rows({{QStringLiteral("value"), QStringLiteral("7")}}));
    EXPECT_EQ(
        ADInfoPanelValues::binaryPlistValues(PlistValue::data("\x01\x02"), registry),
        Rows({{QStringLiteral("value"), QStringLiteral("(could not create display string)")}}));
}

} // namespace
