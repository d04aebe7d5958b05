#include "preferences/ADPreferences.h"

#include "model/ADPlistObject.h"
#include "preferences/KZUserDefaults.h"
#include "shared/KZNotificationCenter.h"
#include "shared/PlistArray.h"
#include "shared/PlistDictionary.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

class ADPreferencesTest : public testing::Test
{
protected:
    ADPreferencesTest()
    {
        _center.addObserver(PreferenceDidChangeNotification, nullptr,
                            [this](const KZNotification &n) {
                                posted << n.userInfo.value(QStringLiteral("key")).toString();
                                objects.push_back(n.object);
                            });
    }

    QTemporaryDir _folder;
    KZUserDefaults _defaults{_folder.filePath(QStringLiteral("settings.plist"))};
    KZNotificationCenter _center;
    ADPreferences _prefs{_defaults, _center};
    QStringList posted;
    std::vector<const void *> objects;
};

TEST_F(ADPreferencesTest, StartsFromTheDefaultsResource)
{
    EXPECT_EQ(_prefs.defaultPlistFormat(), ADPlistFormatXML);
    EXPECT_TRUE(_defaults.boolForKey(EnableXMLTagColoringKey));
    EXPECT_TRUE(QColor::fromString(_defaults.stringForKey(XMLTagColorKey)).isValid());
    EXPECT_EQ(_prefs.defaultPlistType(), ADPlistTypeDictionary);
    EXPECT_TRUE(_prefs.includeSearchType(ADPlistTypeString));
    EXPECT_EQ(_prefs.fontForEditMode(1), ADPreferences::defaultFonts()[1]);
    EXPECT_EQ(_prefs.fontForEditMode(1)->pointSize(), 10);
    EXPECT_FALSE(_prefs.fontForEditMode(3).has_value());
}

TEST_F(ADPreferencesTest, AnUnknownFormatReadsAsXmlAndIsRewritten)
{
    _defaults.setInteger(2, DefaultPlistFormatKey);
    EXPECT_EQ(_prefs.defaultPlistFormat(), ADPlistFormatXML);
    EXPECT_EQ(_defaults.objectForKey(DefaultPlistFormatKey).toInteger(), ADPlistFormatXML);
    _prefs.setDefaultPlistFormat(ADPlistFormatJSON);
    EXPECT_EQ(_prefs.defaultPlistFormat(), ADPlistFormatJSON);
    EXPECT_TRUE(posted.isEmpty()) << "the format and type setters post nothing";
}

TEST_F(ADPreferencesTest, SettingAFontFillsAShortListFromTheDefaults)
{
    PlistArray shortList = PlistArray::create();
    shortList.append(PlistValue(QStringLiteral("Serif,20,-1,5,400,0,0,0,0,0,0,0,0,0,0,1")));
    _defaults.setObject(shortList.value(), EditFontsYosemiteKey);
    EXPECT_EQ(_prefs.fontForEditMode(0)->pointSize(), 20);
    EXPECT_EQ(_prefs.fontForEditMode(1), ADPreferences::defaultFonts()[1]) << "beyond the list";

    QFont chosen = ADPreferences::defaultFonts()[1];
    chosen.setPointSize(17);
    _prefs.setFont(chosen, 2);
    const PlistArray stored = _defaults.arrayForKey(EditFontsYosemiteKey);
    ASSERT_EQ(stored.count(), 3);
    EXPECT_EQ(stored.at(1).toString(), ADPreferences::defaultFonts()[1].toString());
    EXPECT_EQ(_prefs.fontForEditMode(2)->pointSize(), 17);
    EXPECT_EQ(_prefs.fontForEditMode(0)->pointSize(), 20);
    ASSERT_EQ(objects.size(), 1u);
    EXPECT_EQ(objects[0], &ADPreferences::editFontsKey());

    _prefs.setFont(chosen, 3);
    EXPECT_EQ(_defaults.arrayForKey(EditFontsYosemiteKey).count(), 3) << "mode 3 changes nothing";
    EXPECT_EQ(objects.size(), 1u);
}

TEST_F(ADPreferencesTest, AFontEntryThatIsNoFontTextGivesNoFont)
{
    PlistArray fonts = PlistArray::create();
    fonts.append(PlistValue(qint64(12)));
    _defaults.setObject(fonts.value(), EditFontsYosemiteKey);
    EXPECT_FALSE(_prefs.fontForEditMode(0).has_value());
}

TEST_F(ADPreferencesTest, SearchTypesChangeOnlyWhenDifferent)
{
    _prefs.setInclude(true, ADPlistTypeString); // already included
    EXPECT_TRUE(posted.isEmpty());
    _prefs.setInclude(false, ADPlistTypeString);
    EXPECT_FALSE(_prefs.includeSearchType(ADPlistTypeString));
    EXPECT_TRUE(_prefs.includeSearchType(ADPlistTypeNumber));
    EXPECT_EQ(posted, QStringList{SearchTypesKey});
    EXPECT_FALSE(_prefs.includeSearchType(40)) << "beyond the list";
}

TEST_F(ADPreferencesTest, TypedSettersStoreAndPost)
{
    _prefs.setSearchScope(2);
    _prefs.setWrapOnSearch(false);
    _prefs.setScanExtensions({QStringLiteral("plist"), QStringLiteral("strings")});
    EXPECT_EQ(_prefs.searchScope(), 2);
    EXPECT_FALSE(_prefs.wrapOnSearch());
    EXPECT_EQ(_prefs.scanExtensions(), (QStringList{"plist", "strings"}));
    EXPECT_EQ(posted, (QStringList{SearchScopeKey, WrapOnSearchKey, ScanExtensionsKey}));
    EXPECT_EQ(objects[0], &SearchScopeKey);
}

TEST_F(ADPreferencesTest, TheTagColourIsCachedUntilItsDefaultChanges)
{
    _prefs.setXMLTagColor(QColor(0x12, 0x34, 0x56));
    EXPECT_EQ(_defaults.stringForKey(XMLTagColorKey), QStringLiteral("#123456"));
    EXPECT_EQ(_prefs.XMLTagColor(), QColor(0x12, 0x34, 0x56));
    ASSERT_EQ(objects.size(), 1u);
    EXPECT_EQ(objects[0], &XMLTagColorKey);

    // As when another instance or a hand edit changes it.
    _defaults.setString(QStringLiteral("#80ff0000"), XMLTagColorKey);
    EXPECT_EQ(_prefs.XMLTagColor(), QColor(255, 0, 0, 0x80));
    EXPECT_EQ(objects.size(), 2u);
    _prefs.setXMLTagColor(QColor(255, 0, 0, 0x80));
    EXPECT_EQ(_defaults.stringForKey(XMLTagColorKey), QStringLiteral("#80ff0000"));
}

struct SortRow
{
    const char *name;
    bool caseSensitive, numeric;
    KZComparison expected;
};

const SortRow kSortRows[] = {
    {"CaseSensitiveNumeric", true, true, KZComparison::NumericCompare},
    {"CaseSensitive", true, false, KZComparison::Compare},
    {"Numeric", false, true, KZComparison::NumericCaseInsensitiveCompare},
    {"Neither", false, false, KZComparison::CaseInsensitiveCompare},
};

class ADPreferencesKeySort : public ADPreferencesTest, public testing::WithParamInterface<SortRow>
{};

TEST_P(ADPreferencesKeySort, ChoosesTheComparisonFromTheTwoDefaults)
{
    _defaults.setBool(GetParam().caseSensitive, SortCaseSensitiveKey);
    _defaults.setBool(GetParam().numeric, SortNumericKey);
    EXPECT_EQ(_prefs.keySortSelector(), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(Rows, ADPreferencesKeySort, testing::ValuesIn(kSortRows),
                         [](const auto &row) { return std::string(row.param.name); });

TEST_F(ADPreferencesTest, TreesBuiltAfterASortChangeFollowItAndOlderTreesStay)
{
    PlistDictionary plist = PlistDictionary::create();
    for (const char *key : {"b", "a10", "A", "a9"})
        plist.insert(QString::fromLatin1(key), PlistValue(true));
    _defaults.setBool(false, SortCaseSensitiveKey);
    _defaults.setBool(true, SortNumericKey);
    const auto before = ADPlistObject::createWithPlist(plist.value().kz_copyMutableContainers());
    EXPECT_EQ(before->keys(), (QStringList{"A", "a9", "a10", "b"}));

    _defaults.setBool(true, SortCaseSensitiveKey);
    _defaults.setBool(false, SortNumericKey);
    const auto after = ADPlistObject::createWithPlist(plist.value().kz_copyMutableContainers());
    EXPECT_EQ(after->keys(), (QStringList{"A", "a10", "a9", "b"}));
    EXPECT_EQ(before->keys(), (QStringList{"A", "a9", "a10", "b"}));

    _defaults.setBool(true, KeepKeyOrderKey);
    EXPECT_EQ(ADPlistObject::createWithPlist(plist.value().kz_copyMutableContainers())->keys(),
              (QStringList{"b", "a10", "A", "a9"}));
}

} // namespace
