#pragma once

#include "shared/ADTypes.h"
#include "shared/KZComparison.h"
#include "shared/PlistValue.h"

#include <QColor>
#include <QFont>
#include <QObject>
#include <QString>
#include <QStringList>

#include <memory>
#include <optional>

class KZNotificationCenter;
class KZUserDefaults;

/// Posted on the notification centre when a preference changes; the object
/// is the address of the key's constant below (compare with `&XMLTagColorKey`),
/// and the user info holds the key's text under "key".
inline const QString PreferenceDidChangeNotification =
    QStringLiteral("PreferenceDidChangeNotification");

// The keys of the program's settings.
inline const QString SearchScopeKey = QStringLiteral("SearchScope");
inline const QString SearchIgnoreCaseKey = QStringLiteral("SearchIgnoreCase");
inline const QString SearchKindKey = QStringLiteral("SearchKindKey");
inline const QString WrapOnSearchKey = QStringLiteral("WrapOnSearch");
inline const QString SearchTypesKey = QStringLiteral("SearchTypesKey");
inline const QString DefaultPlistTypeKey = QStringLiteral("DefaultPlistType");
inline const QString DefaultPlistFormatKey = QStringLiteral("DefaultPlistFormat");
inline const QString AskRevertKey = QStringLiteral("AskRevert");
inline const QString CreateBlankDocumentKey = QStringLiteral("createBlankDocument");
inline const QString ReopenActionKey = QStringLiteral("reopenAction");
inline const QString EnableAutoCompletionKeyOld = QStringLiteral("enableAutoCompletion");
inline const QString EnableAutoCompletionKey = QStringLiteral("enableAutoCompletion-disabled");
inline const QString EditFontsKey = QStringLiteral("EditFonts"); // an older toolkit's; unused here
inline const QString EditFontsYosemiteKey = QStringLiteral("EditFonts2");
inline const QString AutoUseDefinitionsKey = QStringLiteral("AutoUseDefinitions");
inline const QString XMLTagColorKey = QStringLiteral("XMLTagColor");
inline const QString EnableXMLTagColoringKey = QStringLiteral("colorXMLTags");
inline const QString JSONSaveHumanReadableKey = QStringLiteral("jsonSaveHumanReadable");
inline const QString JSONDisplayHumanReadableKey = QStringLiteral("jsonDisplayHumanReadable");
inline const QString SavePreferredViewerIdentifiersKey =
    QStringLiteral("savePreferredViewerIdentifiers");
inline const QString DefinitionFileExtensionsKey = QStringLiteral("definitionFileExtensions");
inline const QString DefinitionFileNamesKey = QStringLiteral("definitionFileNames");
inline const QString DocumentAutoSaveIntervalKey = QStringLiteral("AutoSaveInterval");
inline const QString ADDocumentShouldAutoSaveKey = QStringLiteral("autosaveEnabled");
inline const QString PlistDocumentDefaultSizeKey = QStringLiteral("PlistDocumentDefaultSize");
inline const QString PlistDocumentSplitPositionKey = QStringLiteral("PlistDocumentSplitPosition");
inline const QString PlistDocumentSyncButtonsVisibleKey =
    QStringLiteral("PlistDocumentSyncButtonsVisible");
inline const QString PlistDocumentAutoSyncTextKey = QStringLiteral("PlistDocumentAutoSyncText");
inline const QString PlistDocumentColumnsWidthsKey = QStringLiteral("PlistDocumentColumnsWidths");
inline const QString ADPlistOutlineShowRawKeysAndValuesKey =
    QStringLiteral("plistOutlineShowRawKeysAndValues");
inline const QString RefusedToolsKey = QStringLiteral("RefusedTools");
inline const QString ScanExtensionsKey = QStringLiteral("ScanExtensions");
inline const QString BrowserFindOptionsKey = QStringLiteral("BrowserFindOptions");
inline const QString SavedFileBrowsersKey = QStringLiteral("savedFileBrowsers");
inline const QString PrefsBrowserShowUnknownAppsKey = QStringLiteral("PrefsBrowserShowUnknownApps");
inline const QString PrefsBrowserShowSystemPrefsKey =
    QStringLiteral("PrefsBrowserShowSystemPrefsKey");
inline const QString PrefsActiveTabIndexKey = QStringLiteral("PrefsActiveTabIndex");
// Keys that other parts read by their text.
inline const QString SortCaseSensitiveKey = QStringLiteral("sortCaseSensitive");
inline const QString SortNumericKey = QStringLiteral("sortNumeric");
inline const QString KeepKeyOrderKey = QStringLiteral("keepKeyOrder");
inline const QString DisableAutomaticTerminationKey = QStringLiteral("disableAutomaticTermination");

/// The typed front of the settings that need care: it reads and writes them
/// in the user defaults, caches the tag colour and the key sort, and posts
/// `PreferenceDidChangeNotification` when they change. Other settings are
/// read from the user defaults by their keys.
///
/// Stored forms: fonts are `QFont::toString()` texts in an array under
/// `EditFontsYosemiteKey`, indexed by edit mode (0 outline, 1 text, 2 the
/// browser); the tag colour is a "#RRGGBB" text ("#AARRGGBB" when not
/// opaque). Making one registers the defaults resource and the default fonts,
/// and installs the key sort that trees are built with (`ADKeySortPreferences`);
/// a change of the sort keys applies to trees built from then on.
///
/// The program has one, `Prefs()`; tests make their own over their own
/// defaults. Needs a QGuiApplication (for the fonts). Main thread only; the
/// key sort may be read from any thread.
class ADPreferences : public QObject
{
    Q_OBJECT

public:
    /// Neither is owned; both outlive this object.
    explicit ADPreferences(KZUserDefaults &defaults, KZNotificationCenter &center);
    ~ADPreferences() override;

    /// The program's preferences over the standard user defaults and the
    /// default centre, made on first use.
    static ADPreferences &shared();
    /// The key of the edit fonts.
    static const QString &editFontsKey() { return EditFontsYosemiteKey; }
    /// The three default fonts, by edit mode.
    static QList<QFont> defaultFonts();

    KZUserDefaults &userDefaults() const { return _defaults; }
    /// Where `PreferenceDidChangeNotification` is posted.
    KZNotificationCenter &notificationCenter() const { return _center; }

    qint64 reopenAction() const;
    void setReopenAction(qint64 action);
    qint64 searchScope() const;
    void setSearchScope(qint64 scope);
    qint64 searchKind() const;
    void setSearchKind(qint64 kind);
    bool searchIgnoreCase() const;
    void setSearchIgnoreCase(bool ignoreCase);
    bool wrapOnSearch() const;
    void setWrapOnSearch(bool wrap);
    QStringList scanExtensions() const;
    void setScanExtensions(const QStringList &extensions);
    /// A dictionary of find options, or none.
    PlistValue browserFindOptions() const;
    void setBrowserFindOptions(const PlistValue &options);

    bool includeSearchType(qint64 searchType) const;
    void setInclude(bool include, qint64 searchType);

    /// The font of an edit mode; none when the stored entry is no font text,
    /// or the mode has no font at all.
    std::optional<QFont> fontForEditMode(qint64 mode) const;
    void setFont(const QFont &font, qint64 mode);

    /// XML, ASCII, binary or JSON; any other stored value is replaced by XML.
    ADPlistFormat defaultPlistFormat();
    void setDefaultPlistFormat(ADPlistFormat format);
    ADPlistType defaultPlistType() const;
    void setDefaultPlistType(ADPlistType type);

    /// The colour of XML tags in the text; an unreadable stored form reads as
    /// the palette's link colour.
    QColor XMLTagColor() const;
    void setXMLTagColor(const QColor &color);

    KZComparison keySortSelector() const;

private:
    struct KeySort;

    void userDefaultDidChange(const QString &key);
    void refreshKeySortSelector();
    void setAndPost(const QString &key, const PlistValue &value);
    void post(const QString &key);

    KZUserDefaults &_defaults;
    KZNotificationCenter &_center;
    mutable std::optional<QColor> _cachedXMLTagColor;
    std::shared_ptr<KeySort> _keySort; // shared with the installed provider
};

/// The program's preferences.
inline ADPreferences &Prefs()
{
    return ADPreferences::shared();
}
