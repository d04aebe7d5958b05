#pragma once

#include "ADPlistTextMaker.h"
#include "KZDocument.h"
#include "KZDocumentPresenter.h"
#include "KZUserPreferences.h"

#include "model/ADPlistObject.h"
#include "shared/ADTypes.h"
#include "shared/KZNotificationCenter.h"

#include <QPointer>
#include <QString>

#include <memory>
#include <optional>

class ADDocumentDefinitions;
class ADPlistDocumentWindow;
class ADPlistTextSide;
class ADPreferences;
class ADStructureDefinition;

/// The document types of plist documents.
inline const QString ADPlistDocumentPropertyListType = QStringLiteral("com.apple.property-list");
inline const QString ADPlistDocumentJSONType = QStringLiteral("public.json");

/// Posted on the default centre with the document as the object.
inline const QString PlistDocumentEditModeDidChangeNotification =
    QStringLiteral("PlistDocumentEditModeDidChangeNotification");
inline const QString PlistDocumentDidChangeDirtyStateNotification =
    QStringLiteral("PlistDocumentDidChangeDirtyStateNotification");
inline const QString PlistDocumentSelectionDidChangeNotification =
    QStringLiteral("PlistDocumentSelectionDidChangeNotification");

/// The extended attribute that records a saved file's structure definition.
inline const QString ADPlistTypeAttributeName = QStringLiteral("user.com.apple.Xcode.PEPlistType");

/// ADErrorDomain codes of a plist document.
constexpr qint64 ADConversionRequiredError = 8002;
constexpr qint64 ADConversionFailedError = 8003;
constexpr qint64 ADParseError = 8004;

/// One open property list, held twice: as the tree the outline shows and as
/// the text the text side shows. The edit mode says which side holds edits
/// the other lacks: -1 both agree, 0 the tree, 1 the text (the other side is
/// then locked by the window). A sync carries one side over to the other.
///
/// Nothing tells the document that either side was edited: it looks at each
/// undo group as it closes, and the undo manager's last undo target tells a
/// text edit (the text side's target) from a tree edit. With auto sync, a
/// tree edit rewrites the text inside the closing group, so one undo takes
/// back both; text edits never sync by themselves.
///
/// The document owns the tree, the undo manager and a private notification
/// centre on which the tree posts (handed to the outline controller, which
/// stands above the root). The text side, the window side and the definitions
/// are set by whoever shows the document and outlive their use; without a
/// text side there is no text (a file that did not parse keeps its raw text
/// until one comes), without a window nothing is selected or edited in the
/// outline. The preferences outlive the document.
///
/// Saving parses text edits first, settles the format with the file type
/// (asking before values are converted), writes atomically and records the
/// definition on the file. The document notices its file changing on disk
/// when the program becomes active again. Main thread only.
class ADPlistDocument : public KZDocument
{
    Q_OBJECT

public:
    explicit ADPlistDocument(ADPreferences &preferences, QObject *parent = nullptr);
    ~ADPlistDocument() override;

    /// The save panel's entries: property list, JSON, compact JSON.
    static std::vector<KZFileTypeFilter> documentTypeFilters();

    quint64 uniqueID() const { return _uniqueID; }
    KZNotificationCenter &notificationCenter() { return _notificationCenter; }

    // --- what shows the document
    ADPlistTextSide *textSide() const { return _textSide; }
    /// Gives the side the document's text; null detaches it, and text edits
    /// not yet synced are kept for the next side. A side is detached before
    /// it goes. The text of a large tree is made on a worker thread and
    /// reaches the side later; edits of the tree wait for it meanwhile.
    void setTextSide(ADPlistTextSide *side);
    /// Puts a text still being made into the side now, waiting for it;
    /// whatever reads the side's text calls this first.
    void finishMakingText();
    ADPlistDocumentWindow *window() const { return _window; }
    void setWindow(ADPlistDocumentWindow *window) { _window = window; }
    void setDefinitions(ADDocumentDefinitions *definitions) { _definitions = definitions; }
    void setUserPreferencesLookup(KZUserPreferencesLookup lookup);
    /// The preference domain the file is, or null.
    const std::shared_ptr<KZUserPreferences> &userPreferences() const { return _userPreferences; }

    void setFileURL(const QString &path) override;

    // --- the two sides
    const ADPlistObject::Pointer &plistRoot() const { return _plistRoot; }
    /// Undoable; the window gives the new root to the outline controller.
    void setPlistRoot(const ADPlistObject::Pointer &root);
    ADPlistFormat plistFormat() const { return _plistFormat; }
    /// Undoable ("Change Format"): rewrites the text in the new format and
    /// sets the matching file type; the message of a text that cannot be
    /// made, or a null string.
    QString setPlistFormat(ADPlistFormat format);
    ADEditMode editMode() const { return _editMode; }
    /// Undoable; posts `PlistDocumentEditModeDidChangeNotification`.
    void setEditMode(ADEditMode mode);
    bool autoSyncText() const { return _autoSyncText; }
    /// Undoable; kept as the default for later documents. Turned on with
    /// tree edits pending, it syncs them into the text.
    void setAutoSyncText(bool autoSyncText);
    bool saveJSONHumanReadable() const { return _saveJSONHumanReadable; }
    void setSaveJSONHumanReadable(bool humanReadable) { _saveJSONHumanReadable = humanReadable; }

    /// `currentPlistForMode` with the current edit mode.
    PlistValue currentPlist(QString *errorString);
    /// The plain value the side of `mode` holds now: for 0 and -1 the tree's,
    /// for 1 the text parsed. None with the message when there is none.
    PlistValue currentPlistForMode(ADEditMode mode, QString *errorString);
    /// Hands a value to one side: 0 a new tree, 1 the text. The message, or a null string.
    QString setCurrentPlist(const PlistValue &plist, ADEditMode mode);
    /// The text of a value in a format, or none with the message.
    std::optional<QString> textForPlist(const PlistValue &plist, ADPlistFormat format,
                                        QString *errorString) const;
    /// The same with the JSON display setting given: touches nothing else, so
    /// it may run on any thread.
    static std::optional<QString> textForPlist(const PlistValue &plist, ADPlistFormat format,
                                               bool jsonHumanReadable, QString *errorString);
    /// Undoable replacement of the whole text.
    void updatePlistText(const QString &text);
    /// Carries the side of `mode` over to the others; the message or a null
    /// string. Nothing changes when the side has no value.
    QString synchronizeFromMode(ADEditMode mode);
    /// `synchronizeFromMode` as a command ("Sync Text", "Sync Outline");
    /// with `displayErrors`, a failure is shown.
    QString performSyncFromMode(ADEditMode mode, bool displayErrors);
    /// The text for a text side that is new.
    QString plistText() const;

    // --- formats and types
    /// "public.json" for JSON; otherwise the current type, or the property
    /// list type when that is JSON.
    QString fileTypeForPlistFormat(ADPlistFormat format) const;
    static ADPlistFormat plistFormatForDocumentType(const QString &type,
                                                    ADPlistFormat currentFormat);
    /// Asks whether to convert what the format cannot hold into strings;
    /// `done` (may be empty) gets true when the conversion and the format
    /// change were made.
    void askForConversionToFormat(ADPlistFormat format, std::function<void(bool converted)> done);
    /// The format a save as `type` needs, asking about conversion when the
    /// values do not fit; -1 when that was declined or failed.
    void convertFormatToMatchDocumentType(const QString &type,
                                          std::function<void(ADPlistFormat format)> done);

    // --- structure definition
    ADDocumentDefinitions *definitions() const { return _definitions; }
    /// May be null.
    ADStructureDefinition *structureDefinition() const;
    QString structureDefinitionIdentifier() const { return _structureDefinitionIdentifier; }
    void setStructureDefinitionIdentifier(const QString &identifier);
    void refreshStructureDefinition();

    // --- commands and their menu items
    struct ItemValidation
    {
        bool enabled = true;
        bool checked = false;
        QString title; // null: the item keeps its title
    };
    void syncPlist();
    ItemValidation validate_syncPlist() const;
    void changePlistFormat(ADPlistFormat format);
    ItemValidation validate_changePlistFormat(ADPlistFormat format) const;
    /// Not undoable, and leaves the document unedited.
    void changeDefinition(const QString &identifier);
    ItemValidation validate_changeDefinition(const QString &identifier) const;

    // --- forwarded to the text side and the window
    std::optional<QString> textInRange(KZRange range);
    QString selectedText();
    bool replaceTextInRange(KZRange range, const QString &text);
    bool selectTextInRange(KZRange range);
    KZRange rangeOfString(const QString &string, qint64 options, bool wrap);
    ADPlistObject *firstSelectedItem();
    void selectItems(const ADPlistObjectList &items);
    ADPlistObjectList selectedItems();
    void editValueForItem(ADPlistObject *item, KZRange range);
    void editKeyForItem(ADPlistObject *item, KZRange range);
    bool commitEditing();
    void bringToFront();

    // --- reading
    void readFromURL(const QString &path, const QString &type, Completion done) override;
    void readAutosavedContents(const QString &path, const QString &type, Completion done) override;
    /// What a file that no reader takes comes to: offers its raw text, which
    /// becomes the text side's truth (mode 1) over an empty tree. `done` gets
    /// false when the user declines or the data is no text.
    void readPlistData(const QByteArray &data, const QString &errorString,
                       std::function<void(bool opened)> done);

    // --- saving
    void saveToURL(const QString &path, const QString &type, KZSaveOperation operation,
                   Completion done) override;
    std::optional<KZError> writeSafelyToURL(const QString &path, const QString &type,
                                            KZSaveOperation operation) override;
    std::optional<KZError> writeToURL(const QString &path, const QString &type,
                                      KZSaveOperation operation) override;
    void saveDocument(Completion done = {}) override;
    QString savePanelChosenType() const { return _savePanelChosenType; }
    void setSavePanelChosenType(const QString &type) { _savePanelChosenType = type; }
    bool savePanelChosenTypeIsJSON() const
    {
        return _savePanelChosenType == ADPlistDocumentJSONType;
    }

    /// Run when the program becomes active: asks whether to revert when
    /// someone changed the file on disk since it was read or saved.
    void checkForChangedFile();

signals:
    void plistRootChanged(const ADPlistObject::Pointer &root);
    void plistFormatChanged(ADPlistFormat format);
    void editModeChanged(ADEditMode mode);
    void autoSyncTextChanged(bool autoSyncText);
    void structureDefinitionIdentifierChanged(const QString &identifier);

protected:
    /// Not while the text holds edits that may not parse yet, nor when a
    /// value would have to be converted to fit the file.
    bool canAutosaveInPlace() const override;
    void prepareSavePanel(KZSavePanelRequest &request) override;
    QString savePanelDidEnd(const KZSavePanelRequest &request,
                            const KZSavePanelResult &result) override;

private:
    void setupObservations();
    void undoGroupWillClose();
    /// Registers `inverse` as the undo of what the document just did.
    void registerInverse(std::function<void(ADPlistDocument &)> inverse);
    /// Marks the open undo group as a sync, which the document does not take for an edit.
    void markSync();
    void storeFormat(ADPlistFormat format);
    void takeFile(const ADPlistObject::Pointer &root, ADPlistFormat format);
    void takeRawText(const QString &text);
    /// What reading a file on a worker gives: its value, or the error.
    struct FileRead
    {
        PlistValue plist;
        ADPlistFormat format = ADPlistFormatUnknown;
        std::optional<KZError> error;
    };
    /// A big file is read on a worker, with progress the user may cancel.
    void readFileAside(const QString &path, Completion done);
    /// Takes the tree read from a file, or offers its raw text.
    void takeReadTree(const QString &path, const ADPlistObject::Pointer &root, ADPlistFormat format,
                      const std::optional<KZError> &error, Completion done);
    /// Replaces the side's text, dropping any text being made.
    void showPlistText(const QString &text);
    /// The tree's text into the side, made on a worker when the tree is large.
    void showTreeText();
    /// Whether the side's text of `plist` is best made on a worker: it is big.
    bool isTextWorthMakingAside(const PlistValue &plist) const;
    /// Starts making the text of `plist` on a worker; the side waits for it.
    void makeTextAside(const PlistValue &plist);
    /// The text side's half of `setCurrentPlist`; with `mayMakeAside`, a
    /// large text is made on a worker and any failure shows as an empty text.
    QString setTextOfPlist(const PlistValue &plist, bool mayMakeAside);
    /// What undoes a replacement of the whole text.
    void registerTextInverse();
    std::optional<KZError> writeAutosavedContents(const QString &path);
    void presentConversionFailed(ADPlistFormat format);
    /// Whether every value fits its place in the format, as a save needs.
    bool fitsFormat(ADPlistFormat format) const;

    ADPreferences &_preferences;
    KZNotificationCenter _notificationCenter;
    bool _autoSyncText;
    bool _saveJSONHumanReadable;
    bool _currentOperationIsSync = false;
    bool _textMatchesTree = false;         // the text was made from the tree and not edited since
    bool _pendingTextRegeneration = false; // an undo asked for the text to be made again
    bool _askingAboutChangedFile = false;
    ADPlistFormat _plistFormat;
    ADEditMode _editMode = ADEditModeNone;
    QString _savePanelChosenType;
    std::shared_ptr<KZUserPreferences> _userPreferences;
    KZUserPreferencesLookup _userPreferencesLookup;
    ADPlistObject::Pointer _plistRoot;
    QString _structureDefinitionIdentifier;
    ADPlistTextSide *_textSide = nullptr;
    ADPlistTextMaker _textMaker;
    KZWorker<FileRead> _fileReader{this};
    std::unique_ptr<KZProgressIndicator> _readProgress;
    ADPlistDocumentWindow *_window = nullptr;
    ADDocumentDefinitions *_definitions = nullptr;
    QString _rawText; // text for the next text side: raw text, or unsynced text of one that went
    std::optional<KZError> _saveError;
    quint64 _uniqueID;
    std::vector<KZNotificationCenter::Token> _privateObservations;
    KZNotificationCenter::Token _definitionsObservation;
};
