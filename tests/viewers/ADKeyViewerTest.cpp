// Key texts, typed keys and the duplicate-key question.

#include "viewers/ADKeyViewer.h"

#include "model/ADPlistObject.h"
#include "shared/PlistArray.h"
#include "shared/PlistDictionary.h"

#include <gtest/gtest.h>

namespace {

ADPlistObject::Pointer sampleTree()
{
    PlistDictionary root = PlistDictionary::create();
    root.insert(QStringLiteral("CFBundleName"), PlistValue(QStringLiteral("App")));
    root.insert(QStringLiteral("LSMinimumSystemVersion"), PlistValue(QStringLiteral("10.9")));
    PlistArray list = PlistArray::create();
    list.append(PlistValue(qint64(1)));
    list.append(PlistValue(qint64(2)));
    root.insert(QStringLiteral("list"), PlistValue(list));
    return ADPlistObject::createWithPlist(PlistValue(root));
}

TEST(KeyViewer, ShowsTheRootsTextKeysAndIndexes)
{
    const auto tree = sampleTree();
    const ADPlistObject *list = tree->childForKey(QStringLiteral("list"));
    EXPECT_EQ(ADKeyViewer::keyStringForPlistObject(*tree, false), QStringLiteral("Root"));
    EXPECT_EQ(ADKeyViewer::keyStringForPlistObject(*list, false), QStringLiteral("list"));
    EXPECT_EQ(ADKeyViewer::keyStringForPlistObject(*list->childAtIndex(1), false),
              QStringLiteral("1"));
    EXPECT_TRUE(ADKeyViewer::keyStringForPlistObject(*list->childAtIndex(1), true).isNull());
    EXPECT_EQ(ADKeyViewer::keyViewerForPlistObject(list, false)->cellViewNibName(),
              QStringLiteral("PlainKeyCellView"));
    EXPECT_EQ(ADKeyViewer::keyViewerForPlistObject(nullptr, false), nullptr);
}

TEST(KeyViewer, AsksBeforeAKeyReplacesASibling)
{
    const auto tree = sampleTree();
    ADPlistObject *name = tree->childForKey(QStringLiteral("CFBundleName"));
    const auto viewer = ADKeyViewer::keyViewerForPlistObject(name, false);
    EXPECT_FALSE(viewer->validateKeyString(QStringLiteral("CFBundleName"), *name));
    EXPECT_FALSE(viewer->validateKeyString(QStringLiteral("Fresh"), *name));
    const std::optional<KZError> question =
        viewer->validateKeyString(QStringLiteral("LSMinimumSystemVersion"), *name);
    ASSERT_TRUE(question);
    EXPECT_TRUE(question->is(ADErrorDomain, 8001));
    EXPECT_EQ(question->localizedDescription(), QStringLiteral("Key already exists"));
    EXPECT_EQ(question->localizedRecoverySuggestion(),
              QStringLiteral("There is already an object for the key “LSMinimumSystemVersion” in "
                             "this dictionary.  Do you want to replace this object with the one "
                             "whose key you are changing?"));
    EXPECT_EQ(question->localizedRecoveryOptions(),
              QStringList({QStringLiteral("Replace"), QStringLiteral("Cancel")}));
    EXPECT_FALSE(question->attemptRecovery(0));
    const std::optional<KZError> cancelled = question->attemptRecovery(1);
    ASSERT_TRUE(cancelled);
    EXPECT_TRUE(cancelled->is(QStringLiteral("NSCocoaErrorDomain"), 3072));

    viewer->setKeyString(QStringLiteral("LSMinimumSystemVersion"), *name);
    EXPECT_EQ(tree->childCount(), 2);
    EXPECT_EQ(tree->childForKey(QStringLiteral("LSMinimumSystemVersion"))->plist().toString(),
              QStringLiteral("App"));
}

TEST(KeyViewer, MapsLocalisedNamesToRawKeysUnlessRawKeysAreShown)
{
    const std::vector<ADKeyViewer::KeyInfo> infos = {
        {QStringLiteral("CFBundleName"), QStringLiteral("Bundle name")},
        {QStringLiteral("LSMinimumSystemVersion"), QStringLiteral("Minimum system version")}};
    const ADKeyViewer localized(infos, false);
    const ADKeyViewer raw(infos, true);
    const auto tree = sampleTree();
    ADPlistObject *name = tree->childForKey(QStringLiteral("CFBundleName"));
    EXPECT_EQ(localized.cellViewNibName(), QStringLiteral("LocalizedKeyCellView"));
    EXPECT_EQ(localized.keyStringForPlistObject(*name), QStringLiteral("Bundle name"));
    EXPECT_EQ(localized.knownKeyStrings(), QStringList({QStringLiteral("Bundle name"),
                                                        QStringLiteral("Minimum system version")}));
    EXPECT_EQ(localized.rawKeyForKeyString(QStringLiteral("Minimum system version")),
              QStringLiteral("LSMinimumSystemVersion"));
    EXPECT_EQ(localized.rawKeyForKeyString(QStringLiteral("AnyKey")), QStringLiteral("AnyKey"));
    EXPECT_TRUE(localized.validateKeyString(QStringLiteral("Minimum system version"), *name));
    EXPECT_EQ(raw.keyStringForPlistObject(*name), QStringLiteral("CFBundleName"));
    EXPECT_EQ(raw.rawKeyForKeyString(QStringLiteral("Bundle name")), QStringLiteral("Bundle name"));
    EXPECT_EQ(raw.knownKeyStrings(), QStringList({QStringLiteral("CFBundleName"),
                                                  QStringLiteral("LSMinimumSystemVersion")}));

    ADKeyViewer fixed;
    fixed.setKeyString(QStringLiteral("Fixed"));
    fixed.setKeyString(QStringLiteral("Other"), *name);
    EXPECT_TRUE(tree->childForKey(QStringLiteral("CFBundleName")));
}

} // namespace
