#include "model/ADKeySortPreferences.h"
#include "model/ADPlistObject.h"
#include "model/ADUndoManager.h"

#include "shared/PlistArray.h"
#include "shared/PlistDictionary.h"
#include "storage/PlistSerialization.h"
#include "support/Corpus.h"

#include <gtest/gtest.h>

namespace {

class UndoOnly : public ADPlistParent
{
public:
    UndoOnly() { undo.setGroupsByEvent(false); }
    KZNotificationCenter *notificationCenter() const override { return nullptr; }
    ADUndoManager *undoManager() const override { return &undo; }
    const void *scriptingObject() const override { return this; }
    ADPlistType plistType() const override { return ADPlistTypeUnknown; }
    ADStructureDefinition *structureDefinition() const override { return nullptr; }
    mutable ADUndoManager undo;
};

struct MaskRow
{
    ADPlistFormat format;
    bool root;
    ADPlistMask mask;
};

TEST(PlistFormats, MasksSayWhatEachFormatHolds)
{
    const MaskRow rows[] = {{ADPlistFormatASCII, true, 85},   {ADPlistFormatXML, false, 127},
                            {ADPlistFormatBinary, true, 127}, {ADPlistFormatJSON, true, 17},
                            {ADPlistFormatJSON, false, 243},  {42, true, 0}};
    for (const MaskRow &row : rows)
        EXPECT_EQ(ADPlistObject::plistTypeMaskForFormat(row.format, row.root), row.mask)
            << row.format;
    EXPECT_FALSE(ADPlistObject::isPlistType(ADPlistTypeNull, ADPlistFormatXML, false));
    EXPECT_TRUE(ADPlistObject::isPlistType(ADPlistTypeNull, ADPlistFormatJSON, false));
    EXPECT_FALSE(ADPlistObject::isPlistType(ADPlistTypeString, ADPlistFormatJSON, true));
    EXPECT_FALSE(ADPlistObject::isPlistType(ADPlistTypeString, 42, false));
}

TEST(PlistFormats, NullUnderXmlBecomesTheEmptyString)
{
    UndoOnly parent;
    PlistArray list = PlistArray::create();
    list.append(PlistValue::null());
    list.append(PlistValue(true));
    const auto root = ADPlistObject::createWithPlist(list, &parent);
    EXPECT_FALSE(root->compatibleWithPlistFormat(ADPlistFormatXML));
    EXPECT_EQ(root->firstIncompatibleObjectForFormat(ADPlistFormatXML), root->childAtIndex(0));
    parent.undo.beginUndoGrouping();
    EXPECT_TRUE(root->makeCompatibleWithPlistFormat(ADPlistFormatXML));
    parent.undo.endUndoGrouping();
    EXPECT_TRUE(root->plist().toArray().at(0).isIdenticalTo(PlistValue(QString(""))));
    EXPECT_TRUE(root->compatibleWithPlistFormat(ADPlistFormatXML));
    EXPECT_EQ(parent.undo.undoActionName(), QStringLiteral("Convert"));
    parent.undo.undo();
    EXPECT_EQ(root->plist().toArray().at(0).plistType(), ADPlistTypeNull);
}

TEST(PlistFormats, JsonAtTheRootIsNarrowForTheQuestionOnly)
{
    PlistDictionary d = PlistDictionary::create();
    d.insert(QStringLiteral("name"), PlistValue(QStringLiteral("x")));
    const auto root = ADPlistObject::createWithPlist(d);
    EXPECT_FALSE(root->compatibleWithPlistFormat(ADPlistFormatJSON))
        << "the root's mask for every node";
    EXPECT_EQ(root->firstIncompatibleObjectForFormat(ADPlistFormatJSON), nullptr);
    EXPECT_TRUE(root->makeCompatibleWithPlistFormat(ADPlistFormatJSON));
    EXPECT_TRUE(root->plist().isIdenticalTo(d));

    const auto scalar = ADPlistObject::createWithPlist(PlistValue(3));
    EXPECT_FALSE(scalar->makeCompatibleWithPlistFormat(ADPlistFormatJSON));
    EXPECT_TRUE(scalar->plist().isIdenticalTo(PlistValue(3)));
}

TEST(PlistFormats, DataAndDatesBecomeTextForJsonAndAscii)
{
    PlistDictionary d = PlistDictionary::create();
    d.insert(QStringLiteral("blob"), PlistValue::data("\x01\x02"));
    PlistArray inner = PlistArray::create();
    inner.append(PlistValue(2.5));
    inner.append(PlistValue(false));
    d.insert(QStringLiteral("list"), inner);
    const auto json = ADPlistObject::createWithPlist(d.value().kz_copyMutableContainers());
    EXPECT_TRUE(json->makeCompatibleWithPlistFormat(ADPlistFormatJSON));
    EXPECT_EQ(json->childForKey("blob")->plist().toString(), QStringLiteral("0102"));
    EXPECT_TRUE(json->childForKey("list")->childAtIndex(0)->plist().isReal())
        << "JSON holds numbers";

    const auto ascii = ADPlistObject::createWithPlist(d.value().kz_copyMutableContainers());
    EXPECT_TRUE(ascii->makeCompatibleWithPlistFormat(ADPlistFormatASCII));
    EXPECT_EQ(ascii->childForKey("list")->childAtIndex(0)->plist().toString(),
              QStringLiteral("2.500000"));
    EXPECT_EQ(ascii->childForKey("list")->childAtIndex(1)->plist().toString(),
              QStringLiteral("NO"));
    EXPECT_TRUE(ascii->childForKey("blob")->plist().isIdenticalTo(PlistValue::data("\x01\x02")));
    EXPECT_TRUE(ascii->compatibleWithPlistFormat(ADPlistFormatASCII));
}

class CorpusFit : public testing::TestWithParam<CorpusFile>
{};

TEST_P(CorpusFit, TheValueWalkFindsWhatTheTreeFinds)
{
    ReadResult read = PlistSerialization::read(GetParam().bytes());
    if (!read)
        read = PlistSerialization::readJson(GetParam().bytes());
    ASSERT_TRUE(read);
    ADKeySortPreferences::setProvider([] {
        ADKeySortPreferences::Values keep;
        keep.keepKeyOrder = true; // the walk sees the plain order
        return keep;
    });
    const auto root = ADPlistObject::createWithPlist(read.value);
    for (const ADPlistFormat format :
         {ADPlistFormatASCII, ADPlistFormatXML, ADPlistFormatBinary, ADPlistFormatJSON}) {
        const ADPlistObject *node = root->firstIncompatibleObjectForFormat(format);
        const auto misfit = ADPlistObject::firstIncompatibleValueForFormat(read.value, format);
        ASSERT_EQ(bool(node), bool(misfit)) << "format " << format;
        if (node) {
            EXPECT_EQ(misfit->path, node->path()) << "format " << format;
            EXPECT_EQ(misfit->type, node->plistType()) << "format " << format;
        }
    }
    ADKeySortPreferences::setProvider(nullptr);
}

INSTANTIATE_TEST_SUITE_P(Corpus, CorpusFit, testing::ValuesIn(validCorpusFiles()),
                         [](const auto &row) { return row.param.testName(); });

} // namespace
