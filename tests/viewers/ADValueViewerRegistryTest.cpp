// The registry: its table, the order in which it chooses a viewer, the
// remembered preferences, and the viewer menu.

#include "viewers/ADValueViewerRegistry.h"
#include "viewers/ADAllowableValueViewer.h"
#include "viewers/ADValueViewerElement.h"

#include "model/ADPlistObject.h"
#include "shared/KZError.h"
#include "shared/PlistArray.h"
#include "shared/PlistDictionary.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

// A definition element of a test's own making, found for every node whose key it names.
class TestElement : public ADValueViewerElement
{
public:
    QString name() const override { return _name; }
    QString structureDefinitionIdentifier() const override { return QStringLiteral("test.def"); }
    QString localizedString() const override { return _localized; }
    ADPlistType plistType() const override { return _type; }
    QString valueViewerIdentifier() const override { return _viewerIdentifier; }
    AllowableValues allowableValues() const override { return _allowable; }
    bool isDictionaryElement() const override { return !_identifyingKey.isEmpty(); }
    QString identifyingKeyInPlistObject(const ADPlistObject &) const override
    {
        return _identifyingKey;
    }
    std::shared_ptr<ADKeyViewer> keyViewerForPlistObject(const ADPlistObject &, bool) const override
    {
        return nullptr;
    }

    QString _name = QStringLiteral("element");
    QString _localized;
    ADPlistType _type = ADPlistTypeNumber;
    QString _viewerIdentifier;
    AllowableValues _allowable;
    QString _identifyingKey;
};

class WithElements : public testing::Test
{
protected:
    void TearDown() override { ADValueViewerElement::setLookup(nullptr); }
    void useElementForKey(const QString &key, const TestElement *element)
    {
        ADValueViewerElement::setLookup(
            [key, element](const ADPlistObject &object) -> const ADValueViewerElement * {
                return object.key() == key ? element : nullptr;
            });
    }
};

ADPlistObject::Pointer sampleTree()
{
    PlistDictionary root = PlistDictionary::create();
    root.insert(QStringLiteral("count"), PlistValue(qint64(5)));
    root.insert(QStringLiteral("other"), PlistValue(qint64(6)));
    root.insert(QStringLiteral("name"), PlistValue(QStringLiteral("x")));
    PlistDictionary inner = PlistDictionary::create();
    inner.insert(QStringLiteral("Name"), PlistValue(qint64(5)));
    root.insert(QStringLiteral("inner"), PlistValue(inner));
    return ADPlistObject::createWithPlist(PlistValue(root));
}

const QString kHex = QStringLiteral("com.fernhollow.value-viewer.number.hex.big-endian");
const QString kHms = QStringLiteral("com.fernhollow.value-viewer.number.hms");

TEST(ValueViewerTable, HoldsADefaultForEveryTypeAndEveryViewer)
{
    ADValueViewerRegistry registry;
    for (ADPlistType type = ADPlistTypeArray; type <= ADPlistTypeNull; ++type) {
        SCOPED_TRACE(type);
        const auto viewer = registry.defaultViewerForType(type);
        ASSERT_TRUE(viewer);
        EXPECT_EQ(viewer->dataType(), type);
        EXPECT_FALSE(viewer->name().isEmpty());
        EXPECT_EQ(viewer->formatter() == nullptr, type == ADPlistTypeString);
    }
    EXPECT_EQ(registry.availableViewersForType(ADPlistTypeNumber).size(), 9u);
    EXPECT_EQ(registry.availableViewersForType(ADPlistTypeData).size(), 12u);
    EXPECT_TRUE(registry.availableViewersForType(ADPlistTypeUnknown).empty());
    EXPECT_EQ(
        registry.viewerForIdentifier(QStringLiteral("com.fernhollow.value-viewer.data.bookmark"))
            ->infoViewControllerClassName(),
        QStringLiteral("ADBookmarkResourceValuesViewController"));
    EXPECT_FALSE(registry.defaultViewerForType(ADPlistTypeDictionary)->editable());
}

TEST(ValueViewerTable, SkipsEntriesForALaterSystemAndUnknownClasses)
{
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("table.plist"));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(R"(<plist version="1.0"><array>
        <dict><key>class</key><string>ADValueViewer</string><key>minimumSystemVersion</key>
        <string>999</string><key>properties</key><dict><key>identifier</key><string>later</string>
        <key>dataType</key><integer>6</integer></dict></dict>
        <dict><key>class</key><string>NoSuchViewer</string></dict>
        <dict><key>class</key><string>ADValueViewer</string><key>minimumSystemVersion</key>
        <string>6.0</string><key>properties</key><dict><key>identifier</key><string>now</string>
        <key>dataType</key><integer>6</integer><key>isDefault</key><true/></dict></dict>
        </array></plist>)");
    file.close();
    ADValueViewerRegistry registry(path);
    EXPECT_FALSE(registry.viewerForIdentifier(QStringLiteral("later")));
    ASSERT_EQ(registry.availableViewersForType(ADPlistTypeString).size(), 1u);
    EXPECT_EQ(registry.defaultViewerForType(ADPlistTypeString)->identifier(),
              QStringLiteral("now"));
    EXPECT_FALSE(registry.defaultViewerForType(ADPlistTypeNumber));
}

TEST_F(WithElements, ChoosesTheNodesOwnViewerThenTheDefinitionThenThePreference)
{
    ADValueViewerRegistry registry;
    const auto tree = sampleTree();
    ADPlistObject *count = tree->childForKey(QStringLiteral("count"));
    const auto decimal = registry.defaultViewerForType(ADPlistTypeNumber);
    EXPECT_EQ(registry.viewerForPlistObject(*count), decimal);

    ADValueViewer::setPreferredViewerIdentifier(kHms, QStringLiteral("count"), ADPlistTypeNumber);
    EXPECT_EQ(registry.viewerForPlistObject(*count)->identifier(), kHms);
    registry.setSavePreferredViewerIdentifiers(false);
    EXPECT_EQ(registry.viewerForPlistObject(*count), decimal);
    EXPECT_EQ(
        ADValueViewer::preferredViewerIdentifierForKey(QStringLiteral("count"), ADPlistTypeNumber),
        kHms);
    registry.setSavePreferredViewerIdentifiers(true);

    TestElement element;
    element._viewerIdentifier = kHex;
    useElementForKey(QStringLiteral("count"), &element);
    EXPECT_EQ(registry.viewerForPlistObject(*count)->identifier(), kHex);

    count->setValueViewer(registry.viewerForIdentifier(
        QStringLiteral("com.fernhollow.value-viewer.number.storage-size")));
    EXPECT_EQ(registry.viewerForPlistObject(*count)->identifier(),
              QStringLiteral("com.fernhollow.value-viewer.number.storage-size"));

    count->coerceToPlistType(ADPlistTypeString);
    EXPECT_EQ(registry.viewerForPlistObject(*count),
              registry.defaultViewerForType(ADPlistTypeString));
    ADValueViewer::setPreferredViewerIdentifier(QString(), QStringLiteral("count"),
                                                ADPlistTypeNumber);
}

TEST_F(WithElements, RemembersPreferencesInItsFileOnEveryChange)
{
    ADValueViewer::setPreferredViewerIdentifier(kHex, QStringLiteral("flags"), ADPlistTypeNumber);
    const PlistValue stored = ADPlistObject::readPlistFromFile(
        ADValueViewer::preferredViewerStoragePath(), false, nullptr, nullptr);
    EXPECT_EQ(stored.toDictionary()
                  .value(QStringLiteral("flags"))
                  .toDictionary()
                  .value(QStringLiteral("Number"))
                  .toString(),
              kHex);
    ADValueViewer::setPreferredViewerIdentifier(QString(), QStringLiteral("flags"),
                                                ADPlistTypeNumber);
    EXPECT_TRUE(
        ADValueViewer::preferredViewerIdentifierForKey(QStringLiteral("flags"), ADPlistTypeNumber)
            .isNull());
}

TEST_F(WithElements, ShowsAllowableValuesByNameAndOthersThroughTheRawViewer)
{
    ADValueViewerRegistry registry;
    const auto tree = sampleTree();
    TestElement element;
    element._allowable = {{QStringLiteral("Five"), PlistValue(qint64(5))},
                          {QStringLiteral("Six"), PlistValue(qint64(6))}};
    useElementForKey(QStringLiteral("count"), &element);
    ADPlistObject *count = tree->childForKey(QStringLiteral("count"));
    const auto viewer = registry.viewerForPlistObject(*count);
    ASSERT_TRUE(viewer);
    EXPECT_EQ(viewer->identifier(),
              QStringLiteral("com.fernhollow.allowable-values.test.def.element"));
    EXPECT_EQ(viewer->nibName(), QStringLiteral("AllowableValueView"));
    EXPECT_EQ(viewer->displayStringForPlist(count->plist()), QStringLiteral("Five"));
    EXPECT_EQ(viewer->plistForEditingString(QStringLiteral("Six"), nullptr).toInteger(), 6);
    EXPECT_EQ(viewer->plistForEditingString(QStringLiteral("42"), nullptr).toInteger(), 42);
    EXPECT_EQ(registry.allowableValueViewerForDefinitionElement(element), viewer);

    const auto cell = viewer->copy();
    cell->setShowRawKeysAndValues(true);
    EXPECT_EQ(cell->displayStringForPlist(count->plist()), QStringLiteral("5"));
    EXPECT_EQ(viewer->displayStringForPlist(count->plist()), QStringLiteral("Five"));
    EXPECT_EQ(std::static_pointer_cast<ADAllowableValueViewer>(cell)->orderedKeys(),
              QStringList({QStringLiteral("Five"), QStringLiteral("Six")}));
}

TEST_F(WithElements, PreviewsDictionariesByTheirIdentifyingKeyAndChecksNoMenuEntry)
{
    ADValueViewerRegistry registry;
    const auto tree = sampleTree();
    TestElement element;
    element._type = ADPlistTypeDictionary;
    element._identifyingKey = QStringLiteral("Name");
    useElementForKey(QStringLiteral("inner"), &element);
    const ADPlistObject *inner = tree->childForKey(QStringLiteral("inner"));
    const auto viewer = registry.viewerForPlistObject(*inner);
    EXPECT_FALSE(viewer->editable());
    EXPECT_EQ(viewer->displayStringForPlist(inner->plist()),
              QStringLiteral("1 key/value pairs (Name = 5)"));
    EXPECT_FALSE(registry.viewerForIdentifier(viewer->identifier()));
    for (const ADValueViewerMenuItem &item : registry.menuItemsForPlistObjects({inner}))
        EXPECT_EQ(item.state, Qt::Unchecked) << qPrintable(item.title);
}

TEST(ViewerMenu, ListsTheDefaultFirstAndTheOthersByNameForOneTypeOnly)
{
    ADValueViewerRegistry registry;
    const auto tree = sampleTree();
    const ADPlistObject *count = tree->childForKey(QStringLiteral("count"));
    ADPlistObject *other = tree->childForKey(QStringLiteral("other"));
    const std::vector<ADValueViewerMenuItem> items = registry.menuItemsForPlistObjects({count});
    ASSERT_EQ(items.size(), 10u);
    EXPECT_EQ(items[0].title, QStringLiteral("Decimal"));
    EXPECT_EQ(items[0].state, Qt::Checked);
    EXPECT_TRUE(items[1].isSeparator);
    QStringList others;
    for (size_t i = 2; i < items.size(); ++i) {
        others.append(items[i].title);
        EXPECT_EQ(items[i].state, Qt::Unchecked);
    }
    QStringList sorted = others;
    std::sort(sorted.begin(), sorted.end(), [](const QString &a, const QString &b) {
        return a.compare(b, Qt::CaseInsensitive) < 0;
    });
    EXPECT_EQ(others, sorted);

    other->setValueViewer(registry.viewerForIdentifier(kHex));
    for (const ADValueViewerMenuItem &item : registry.menuItemsForPlistObjects({count, other})) {
        const bool shown = item.identifier == kHex || item.title == QStringLiteral("Decimal");
        EXPECT_EQ(item.state, shown ? Qt::PartiallyChecked : Qt::Unchecked)
            << qPrintable(item.title);
    }
    EXPECT_TRUE(
        registry.menuItemsForPlistObjects({count, tree->childForKey(QStringLiteral("name"))})
            .empty());
    EXPECT_TRUE(registry.menuItemsForPlistObjects({}).empty());
}

TEST(ValueViewer, EditsThroughItsFormatterAndReportsWhyTextIsRefused)
{
    ADValueViewerRegistry registry;
    const auto tree = sampleTree();
    ADPlistObject *count = tree->childForKey(QStringLiteral("count"));
    EXPECT_EQ(registry.setEditingString(QStringLiteral("12"), *count), std::nullopt);
    EXPECT_EQ(count->plist().toInteger(), 12);
    EXPECT_EQ(registry.setEditingString(QStringLiteral("twelve"), *count),
              QStringLiteral("“twelve” is not a whole number"));
    EXPECT_EQ(count->plist().toInteger(), 12);
    EXPECT_EQ(registry.editingStringForPlistObject(*count), QStringLiteral("12"));

    ADPlistObject *inner = tree->childForKey(QStringLiteral("inner"));
    EXPECT_EQ(registry.setEditingString(QStringLiteral("x"), *inner), std::nullopt);
    EXPECT_TRUE(inner->plist().isDictionary());

    ADPlistObject *name = tree->childForKey(QStringLiteral("name"));
    EXPECT_EQ(registry.setEditingString(QStringLiteral("plain"), *name), std::nullopt);
    EXPECT_EQ(name->plist().toString(), QStringLiteral("plain"));
}

TEST(ValueViewer, CopiesShareTheFormatterButNotTheRawSetting)
{
    ADValueViewerRegistry registry;
    const auto hex = registry.viewerForIdentifier(kHex);
    const auto copy = hex->copy();
    EXPECT_EQ(copy->identifier(), kHex);
    EXPECT_EQ(copy->formatter(), hex->formatter());
    EXPECT_EQ(copy->registry(), &registry);
    EXPECT_EQ(copy->name(), hex->name());
    copy->setShowRawKeysAndValues(true);
    EXPECT_FALSE(hex->showRawKeysAndValues());
}

TEST(ValueViewer, FollowsTheLocaleItWasMadeIn)
{
    const QLocale saved;
    QLocale::setDefault(QLocale(QStringLiteral("de_DE")));
    ADValueViewerRegistry german;
    QLocale::setDefault(saved);
    EXPECT_EQ(
        german.defaultViewerForType(ADPlistTypeNumber)->displayStringForPlist(PlistValue(1.5)),
        QStringLiteral("1,5"));
}

} // namespace
