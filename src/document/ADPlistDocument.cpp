// The two sides of a plist document and how they are kept in step; reading.

#include "ADPlistDocument.h"

#include "ADDocumentDefinitions.h"
#include "ADPlistDocumentWindow.h"
#include "ADPlistTextSide.h"
#include "KZDocumentPresenter.h"

#include "model/ADUndoManager.h"
#include "preferences/ADPreferences.h"
#include "preferences/KZUserDefaults.h"
#include "shared/KZLocalizedString.h"
#include "shared/PlistDictionary.h"
#include "storage/PlistFileIO.h"
#include "storage/PlistSerialization.h"
#include "storage/SafeFileWriter.h"
#include "viewers/formatters/KZStringEncoding.h"

#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>

#include <atomic>

namespace {

constexpr ADEditMode kReservedMode = 2; // visited by a sync, holds nothing
// From this size on a file is read on a worker: reading takes a tenth of a second or more.
constexpr qint64 kReadAsideBytes = qint64(16) << 20;

std::atomic<quint64> g_nextUniqueID{1};

QString okText()
{
    return KZLocalizedStringWithID(278, QStringLiteral("OK"));
}

// A JSON text starts with neither: it is told from XML by its first characters.
ADPlistFormat formatOfRawText(const QString &text)
{
    return text.startsWith(QLatin1StringView("<?xml")) ? ADPlistFormatXML : ADPlistFormatJSON;
}

} // namespace

ADPlistDocument::ADPlistDocument(ADPreferences &preferences, QObject *parent)
    : KZDocument(parent), _preferences(preferences),
      _autoSyncText(preferences.userDefaults().boolForKey(PlistDocumentAutoSyncTextKey)),
      _saveJSONHumanReadable(preferences.userDefaults().boolForKey(JSONSaveHumanReadableKey)),
      _plistFormat(preferences.defaultPlistFormat()),
      _plistRoot(ADPlistObject::createWithPlist(PlistDictionary::create())),
      _uniqueID(g_nextUniqueID++)
{
    undoManager().setNotificationCenter(&_notificationCenter);
    setFileType(_plistFormat == ADPlistFormatJSON ? ADPlistDocumentJSONType
                                                  : ADPlistDocumentPropertyListType);
    setAutosavesInPlace(preferences.userDefaults().boolForKey(ADDocumentShouldAutoSaveKey));
    setAutosavingDelay(preferences.userDefaults().doubleForKey(DocumentAutoSaveIntervalKey));
    setupObservations();
    connect(&_textMaker, &ADPlistTextMaker::textMade, this, [this](const QString &text) {
        if (_textSide)
            _textSide->updatePlistText(text);
    });
}

ADPlistDocument::~ADPlistDocument()
{
    KZNotificationCenter::defaultCenter().removeObserver(_definitionsObservation);
    if (_textSide)
        _textSide->setUndoManager(nullptr);
}

std::vector<KZFileTypeFilter> ADPlistDocument::documentTypeFilters()
{
    return {
        {KZLocalizedStringWithID(7121, QStringLiteral("Property List")),
         ADPlistDocumentPropertyListType,
         {QStringLiteral("plist")}},
        {KZLocalizedStringWithID(7122, QStringLiteral("JSON")),
         ADPlistDocumentJSONType,
         {QStringLiteral("json")}},
        {KZLocalizedStringWithID(7123, QStringLiteral("JSON, compact")),
         ADPlistDocumentJSONType,
         {QStringLiteral("json")}},
    };
}

void ADPlistDocument::setupObservations()
{
    _notificationCenter.addObserver(ADUndoManagerWillCloseUndoGroupNotification, &undoManager(),
                                    [this](const KZNotification &) { undoGroupWillClose(); });
    _definitionsObservation = KZNotificationCenter::defaultCenter().addObserver(
        ADStructureDefinitionManagerDidChangeDefinitionsNotification, nullptr,
        [this](const KZNotification &) { refreshStructureDefinition(); });
    connect(&_preferences.userDefaults(), &KZUserDefaults::valueChanged, this,
            [this](const QString &key) {
                // Only the text's form changes: nothing to undo, and no edit.
                if (key != JSONDisplayHumanReadableKey || _plistFormat != ADPlistFormatJSON ||
                    _editMode == ADEditModeText)
                    return;
                undoManager().disableUndoRegistration();
                (void)synchronizeFromMode(ADEditModeOutline);
                undoManager().enableUndoRegistration();
            });
    if (auto *application = qobject_cast<QGuiApplication *>(QCoreApplication::instance())) {
        connect(application, &QGuiApplication::applicationStateChanged, this,
                [this](Qt::ApplicationState state) {
                    if (state == Qt::ApplicationActive)
                        checkForChangedFile();
                });
    }
    connect(this, &KZDocument::documentEditedChanged, this, [this] {
        KZNotificationCenter::defaultCenter().postNotification(
            PlistDocumentDidChangeDirtyStateNotification, this);
    });
}

void ADPlistDocument::setTextSide(ADPlistTextSide *side)
{
    if (side == _textSide)
        return;
    _textMaker.discard();
    if (_textSide) {
        if (_editMode == ADEditModeText)
            _rawText = _textSide->currentText(); // edits not synced yet wait for the next side
        _textSide->setUndoManager(nullptr);
    }
    _textSide = side;
    if (!side)
        return;
    side->setUndoManager(&undoManager());
    _textMatchesTree = _rawText.isNull();
    if (_textMatchesTree)
        showTreeText();
    else
        showPlistText(std::exchange(_rawText, QString()));
}

void ADPlistDocument::finishMakingText()
{
    if (const std::optional<QString> text = _textMaker.take(); text && _textSide)
        _textSide->updatePlistText(*text);
}

void ADPlistDocument::showPlistText(const QString &text)
{
    _textMaker.discard();
    _textSide->updatePlistText(text);
}

void ADPlistDocument::showTreeText()
{
    const PlistValue &plist = _plistRoot->plist();
    if (!isTextWorthMakingAside(plist)) {
        showPlistText(plistText());
        return;
    }
    makeTextAside(plist);
}

bool ADPlistDocument::isTextWorthMakingAside(const PlistValue &plist) const
{
    return _textSide && _plistFormat != ADPlistFormatBinary &&
           ADPlistTextMaker::isWorthAThread(plist);
}

void ADPlistDocument::makeTextAside(const PlistValue &plist)
{
    _textSide->showTextBeingMade();
    _textMaker.start(
        plist, [format = _plistFormat, humanReadable = _preferences.userDefaults().boolForKey(
                                           JSONDisplayHumanReadableKey)](const PlistValue &value) {
            QString reason;
            return textForPlist(value, format, humanReadable, &reason).value_or(QString());
        });
}

void ADPlistDocument::setUserPreferencesLookup(KZUserPreferencesLookup lookup)
{
    _userPreferencesLookup = std::move(lookup);
    _userPreferences = _userPreferencesLookup && !fileURL().isEmpty()
                           ? _userPreferencesLookup(fileURL())
                           : nullptr;
}

void ADPlistDocument::setFileURL(const QString &path)
{
    KZDocument::setFileURL(path);
    _userPreferences = _userPreferencesLookup ? _userPreferencesLookup(path) : nullptr;
}

// --- the two sides -----------------------------------------------------------------

void ADPlistDocument::setPlistRoot(const ADPlistObject::Pointer &root)
{
    if (root == _plistRoot)
        return;
    registerInverse([old = _plistRoot](ADPlistDocument &document) { document.setPlistRoot(old); });
    _plistRoot = root;
    emit plistRootChanged(root);
}

QString ADPlistDocument::setPlistFormat(ADPlistFormat format)
{
    if (format == _plistFormat)
        return {};
    registerInverse(
        [old = _plistFormat](ADPlistDocument &document) { (void)document.setPlistFormat(old); });
    storeFormat(format);
    markSync();
    const QString message = synchronizeFromMode(ADEditModeOutline);
    undoManager().setActionName(KZLocalizedStringWithID(296, QStringLiteral("Change Format")));
    return message;
}

void ADPlistDocument::setEditMode(ADEditMode mode)
{
    if (mode == _editMode)
        return;
    registerInverse([old = _editMode](ADPlistDocument &document) { document.setEditMode(old); });
    _editMode = mode;
    emit editModeChanged(mode);
    KZNotificationCenter::defaultCenter().postNotification(
        PlistDocumentEditModeDidChangeNotification, this);
}

void ADPlistDocument::setAutoSyncText(bool autoSyncText)
{
    if (autoSyncText == _autoSyncText)
        return;
    registerInverse(
        [old = _autoSyncText](ADPlistDocument &document) { document.setAutoSyncText(old); });
    _autoSyncText = autoSyncText;
    _preferences.userDefaults().setBool(autoSyncText, PlistDocumentAutoSyncTextKey);
    markSync(); // a change of setting, not an edit of either side
    emit autoSyncTextChanged(autoSyncText);
    if (autoSyncText && _editMode == ADEditModeOutline)
        (void)synchronizeFromMode(ADEditModeOutline);
}

PlistValue ADPlistDocument::currentPlist(QString *errorString)
{
    return currentPlistForMode(_editMode, errorString);
}

PlistValue ADPlistDocument::currentPlistForMode(ADEditMode mode, QString *errorString)
{
    if (mode == ADEditModeNone || mode == ADEditModeOutline)
        return _plistRoot->entryValue();
    if (mode != ADEditModeText) {
        *errorString = KZLocalizedStringWithFormat(
            306, QStringLiteral("Unable to get current plist for unknown edit mode (%ld)"),
            {QString::number(mode)});
        return {};
    }
    finishMakingText();
    const QString text = _textSide ? _textSide->currentText() : _rawText;
    std::optional<QByteArray> data;
    QString encodingName;
    if (_plistFormat == ADPlistFormatJSON || _plistFormat == ADPlistFormatXML) {
        data = KZStringEncoding::encode(text, KZStringEncoding::UTF8);
        encodingName = _plistFormat == ADPlistFormatJSON
                           ? KZLocalizedStringWithID(301, QStringLiteral("UTF-8"))
                           : KZLocalizedStringWithID(303, QStringLiteral("UTF-8"));
    } else if (_plistFormat == ADPlistFormatASCII) {
        data = KZStringEncoding::encode(text, KZStringEncoding::ASCII);
        encodingName = KZLocalizedStringWithID(302, QStringLiteral("ASCII"));
    }
    if (!data) {
        *errorString = KZLocalizedStringWithFormat(
            305,
            QStringLiteral(
                "The current text cannot be encoded in the necessary text encoding (%@)"),
            {encodingName});
        return {};
    }
    if (data->isEmpty()) {
        *errorString = KZLocalizedStringWithID(
            304, QStringLiteral("The current text cannot be converted into a property list "
                                "because it is empty"));
        return {};
    }
    // The format the text reads as is not taken: ASCII text in an XML document stays XML.
    const ReadResult read = _plistFormat == ADPlistFormatJSON ? PlistSerialization::readJson(*data)
                                                              : PlistSerialization::read(*data);
    if (read)
        return read.value;
    *errorString = read.error.description();
    if (errorString->isEmpty())
        *errorString = KZLocalizedStringWithID(
            307, QStringLiteral("Unable to create a property list for the current data"));
    return {};
}

QString ADPlistDocument::setCurrentPlist(const PlistValue &plist, ADEditMode mode)
{
    switch (mode) {
    case ADEditModeOutline:
        setPlistRoot(ADPlistObject::createWithPlist(plist));
        return {};
    case ADEditModeText:
        return setTextOfPlist(plist, false);
    case kReservedMode:
        return {};
    default:
        return KZLocalizedStringWithFormat(298, QStringLiteral("Unknown edit mode (%ld)"),
                                           {QString::number(mode)});
    }
}

std::optional<QString> ADPlistDocument::textForPlist(const PlistValue &plist, ADPlistFormat format,
                                                     QString *errorString) const
{
    return textForPlist(plist, format,
                        _preferences.userDefaults().boolForKey(JSONDisplayHumanReadableKey),
                        errorString);
}

std::optional<QString> ADPlistDocument::textForPlist(const PlistValue &plist, ADPlistFormat format,
                                                     bool jsonHumanReadable, QString *errorString)
{
    if (format == ADPlistFormatBinary) {
        *errorString = KZLocalizedStringWithID(
            299, QStringLiteral("The property list is in binary format and has no textual "
                                "representation.  To see a textual representation, choose a "
                                "different property list format using the Change Format submenu "
                                "located in the Operations menu."));
        return std::nullopt;
    }
    if (format == ADPlistFormatJSON || format == ADPlistFormatXML || format == ADPlistFormatASCII) {
        const WriteResult written = PlistSerialization::write(plist, format, jsonHumanReadable);
        if (format == ADPlistFormatJSON && !written) {
            *errorString = written.error;
            return std::nullopt;
        }
        const std::optional<QString> text =
            written ? KZStringEncoding::decode(written.data, format == ADPlistFormatASCII
                                                                 ? KZStringEncoding::ASCII
                                                                 : KZStringEncoding::UTF8)
                    : std::nullopt;
        if (text)
            return text;
    }
    *errorString = KZLocalizedStringWithID(
        300,
        QStringLiteral("The contents of the property list can't be represented in the necessary "
                       "text encoding"));
    return std::nullopt;
}

QString ADPlistDocument::setTextOfPlist(const PlistValue &plist, bool mayMakeAside)
{
    if (mayMakeAside && isTextWorthMakingAside(plist)) {
        registerTextInverse();
        _textMatchesTree = true;
        makeTextAside(plist);
        return {};
    }
    QString reason;
    const std::optional<QString> text = textForPlist(plist, _plistFormat, &reason);
    // A text that cannot show the tree goes, rather than stay and mislead.
    updatePlistText(text.value_or(QString()));
    _textMatchesTree = true;
    if (text)
        return {};
    return KZLocalizedStringWithFormat(
        297,
        QStringLiteral("The edit mode cannot be changed because the property list cannot be "
                       "displayed textually in the current format\n%@"),
        {reason});
}

void ADPlistDocument::updatePlistText(const QString &text)
{
    if (!_textSide)
        return;
    registerTextInverse();
    _textMatchesTree = false;
    showPlistText(text);
}

// Text made from the tree comes back by making it again once undo has put
// the tree back; only text typed or synced from must be kept whole.
void ADPlistDocument::registerTextInverse()
{
    if (_textMatchesTree) {
        registerInverse(
            [](ADPlistDocument &document) { document._pendingTextRegeneration = true; });
        return;
    }
    finishMakingText();
    registerInverse([old = _textSide->currentText()](ADPlistDocument &document) {
        document.updatePlistText(old);
    });
}

QString ADPlistDocument::synchronizeFromMode(ADEditMode mode)
{
    if (mode == ADEditModeNone)
        mode = ADEditModeOutline; // the sides agree: the tree is as true as the text
    QString message;
    const PlistValue plist = currentPlistForMode(mode, &message);
    if (plist.isNone())
        return message;
    for (const ADEditMode other : {ADEditModeOutline, ADEditModeText, kReservedMode}) {
        if (other == mode)
            continue;
        message = setCurrentPlist(plist, other);
        if (!message.isNull())
            break;
    }
    setEditMode(ADEditModeNone);
    return message;
}

QString ADPlistDocument::performSyncFromMode(ADEditMode mode, bool displayErrors)
{
    const bool fromText = mode == ADEditModeText;
    const QString target = fromText ? KZLocalizedStringWithID(290, QStringLiteral("outline"))
                                    : KZLocalizedStringWithID(288, QStringLiteral("text"));
    const QString action = fromText ? KZLocalizedStringWithID(291, QStringLiteral("Sync Outline"))
                                    : KZLocalizedStringWithID(289, QStringLiteral("Sync Text"));
    const QString message = synchronizeFromMode(mode);
    if (message.isNull()) {
        markSync();
        undoManager().setActionName(action);
        return {};
    }
    if (displayErrors) {
        ask({KZLocalizedStringWithID(292, QStringLiteral("Error")),
             KZLocalizedStringWithFormat(
                 293,
                 QStringLiteral("The %@ could not be synchronized because an error occurred: %@"),
                 {target, message}),
             {okText()},
             0},
            [](int) {});
    }
    return message;
}

QString ADPlistDocument::plistText() const
{
    if (!_rawText.isNull())
        return _rawText;
    QString reason;
    return textForPlist(_plistRoot->plist(), _plistFormat, &reason).value_or(QString());
}

// Nothing tells the document what was edited; each undo group as it closes does.
void ADPlistDocument::undoGroupWillClose()
{
    const bool sync = std::exchange(_currentOperationIsSync, false);
    if (undoManager().isUndoing() || undoManager().isRedoing()) {
        // The group being replayed puts both sides and the mode back as they
        // were; text made from the tree is made again now that the tree is back.
        _textMatchesTree = std::exchange(_pendingTextRegeneration, false);
        if (_textMatchesTree)
            (void)setTextOfPlist(_plistRoot->plist(), true);
        return;
    }
    if (sync)
        return;
    const void *target = undoManager().lastUndoTarget();
    if (_textSide && target && target == _textSide->undoTarget()) {
        _textMatchesTree = false;
        setEditMode(ADEditModeText);
        return;
    }
    if (_autoSyncText) {
        // The text is synced in this group, so one undo takes both back; a big
        // one is made aside, so the edit does not wait for it. A text that
        // cannot show the tree comes empty, as a sync leaves it.
        (void)setTextOfPlist(_plistRoot->entryValue(), true);
        setEditMode(ADEditModeNone);
        return;
    }
    _textMatchesTree = false;
    setEditMode(ADEditModeOutline);
}

void ADPlistDocument::registerInverse(std::function<void(ADPlistDocument &)> inverse)
{
    undoManager().registerUndo(this, [self = QPointer(this), inverse = std::move(inverse)] {
        if (self)
            inverse(*self);
    });
}

void ADPlistDocument::markSync()
{
    // Only a group that is open will close and clear the mark.
    _currentOperationIsSync = undoManager().groupingLevel() > 0;
}

void ADPlistDocument::storeFormat(ADPlistFormat format)
{
    _plistFormat = format;
    setFileType(fileTypeForPlistFormat(format));
    emit plistFormatChanged(format);
}

// --- formats and types ---------------------------------------------------------------

QString ADPlistDocument::fileTypeForPlistFormat(ADPlistFormat format) const
{
    if (format == ADPlistFormatJSON)
        return ADPlistDocumentJSONType;
    return fileType() == ADPlistDocumentJSONType ? ADPlistDocumentPropertyListType : fileType();
}

ADPlistFormat ADPlistDocument::plistFormatForDocumentType(const QString &type,
                                                          ADPlistFormat currentFormat)
{
    if (type == ADPlistDocumentJSONType)
        return ADPlistFormatJSON;
    return currentFormat == ADPlistFormatJSON ? ADPlistFormatXML : currentFormat;
}

void ADPlistDocument::askForConversionToFormat(ADPlistFormat format,
                                               std::function<void(bool converted)> done)
{
    const QString name = ADPlistObject::displayStringForPlistFormat(format);
    KZError question(ADErrorDomain, ADConversionRequiredError,
                     KZLocalizedStringWithID(266, QStringLiteral("Conversion required")));
    question.setLocalizedRecoverySuggestion(KZLocalizedStringWithFormat(
        267,
        QStringLiteral("This property list has objects that cannot be stored in the chosen "
                       "property list format%@.  These objects must be converted into strings in "
                       "order to change formats.  Would you like to perform the conversion?"),
        {name.isNull() ? QString() : QStringLiteral(" (%1)").arg(name)}));
    question.addRecoveryOption(KZLocalizedStringWithID(268, QStringLiteral("Convert")),
                               [self = QPointer(this), format]() -> std::optional<KZError> {
                                   if (!self ||
                                       !self->_plistRoot->makeCompatibleWithPlistFormat(format))
                                       return cancelledError();
                                   (void)self->setPlistFormat(format);
                                   return std::nullopt;
                               });
    question.addRecoveryOption(KZLocalizedStringWithID(269, QStringLiteral("Cancel")),
                               [] { return std::optional<KZError>(cancelledError()); });
    presentError(question, [done = std::move(done)](bool converted) {
        if (done)
            done(converted);
    });
}

void ADPlistDocument::convertFormatToMatchDocumentType(
    const QString &type, std::function<void(ADPlistFormat format)> done)
{
    const ADPlistFormat format = plistFormatForDocumentType(type, _plistFormat);
    if (format == _plistFormat || _plistRoot->compatibleWithPlistFormat(format)) {
        done(format);
        return;
    }
    askForConversionToFormat(format, [format, done = std::move(done)](bool converted) {
        done(converted ? format : ADPlistFormatUnknown);
    });
}

// --- structure definition -------------------------------------------------------------

ADStructureDefinition *ADPlistDocument::structureDefinition() const
{
    return _definitions
               ? _definitions->structureDefinitionForIdentifier(_structureDefinitionIdentifier)
               : nullptr;
}

void ADPlistDocument::setStructureDefinitionIdentifier(const QString &identifier)
{
    if (std::exchange(_structureDefinitionIdentifier, identifier) != identifier)
        emit structureDefinitionIdentifierChanged(identifier);
}

void ADPlistDocument::refreshStructureDefinition()
{
    if (_window)
        _window->reloadStructureDefinition();
}

// --- commands ----------------------------------------------------------------------------

void ADPlistDocument::syncPlist()
{
    (void)performSyncFromMode(_editMode, true);
}

ADPlistDocument::ItemValidation ADPlistDocument::validate_syncPlist() const
{
    switch (_editMode) {
    case ADEditModeOutline:
        return {true, false, KZLocalizedStringWithID(285, QStringLiteral("Sync Text"))};
    case ADEditModeText:
        return {true, false, KZLocalizedStringWithID(286, QStringLiteral("Sync Outline"))};
    default:
        return {false, false, KZLocalizedStringWithID(287, QStringLiteral("Sync"))};
    }
}

void ADPlistDocument::changePlistFormat(ADPlistFormat format)
{
    if (_editMode == ADEditModeText && !performSyncFromMode(ADEditModeText, true).isNull())
        return;
    if (_plistRoot->compatibleWithPlistFormat(format)) {
        (void)setPlistFormat(format);
        return;
    }
    // A Cancel ends here too: the question cannot tell it from a failure.
    askForConversionToFormat(format, [self = QPointer(this), format](bool converted) {
        if (self && !converted)
            self->presentConversionFailed(format);
    });
}

ADPlistDocument::ItemValidation
ADPlistDocument::validate_changePlistFormat(ADPlistFormat format) const
{
    return {true, format == _plistFormat, QString()};
}

void ADPlistDocument::changeDefinition(const QString &identifier)
{
    (void)commitEditing();
    setStructureDefinitionIdentifier(identifier);
}

ADPlistDocument::ItemValidation
ADPlistDocument::validate_changeDefinition(const QString &identifier) const
{
    return {true, identifier == _structureDefinitionIdentifier, QString()};
}

void ADPlistDocument::presentConversionFailed(ADPlistFormat format)
{
    KZError failed(ADErrorDomain, ADConversionFailedError,
                   KZLocalizedStringWithID(283, QStringLiteral("Conversion failed")));
    failed.setLocalizedRecoverySuggestion(KZLocalizedStringWithFormat(
        284,
        QStringLiteral("The property list could not be converted to be compatible with the "
                       "format “%@”."),
        {ADPlistObject::displayStringForPlistFormat(format)}));
    presentError(failed);
}

// --- forwarded -------------------------------------------------------------------------------

std::optional<QString> ADPlistDocument::textInRange(KZRange range)
{
    finishMakingText();
    return _textSide ? _textSide->textInRange(range) : std::nullopt;
}

QString ADPlistDocument::selectedText()
{
    finishMakingText();
    return _textSide ? _textSide->selectedText() : QString();
}

bool ADPlistDocument::replaceTextInRange(KZRange range, const QString &text)
{
    finishMakingText();
    return _textSide && _textSide->replaceTextInRange(range, text);
}

bool ADPlistDocument::selectTextInRange(KZRange range)
{
    finishMakingText();
    return _textSide && _textSide->selectTextInRange(range);
}

KZRange ADPlistDocument::rangeOfString(const QString &string, qint64 options, bool wrap)
{
    finishMakingText();
    return _textSide ? _textSide->rangeOfString(string, options, wrap) : KZRange{};
}

ADPlistObject *ADPlistDocument::firstSelectedItem()
{
    return _window ? _window->firstSelectedItem() : nullptr;
}

void ADPlistDocument::selectItems(const ADPlistObjectList &items)
{
    if (_window)
        _window->selectItems(items);
}

ADPlistObjectList ADPlistDocument::selectedItems()
{
    return _window ? _window->selectedItems() : ADPlistObjectList();
}

void ADPlistDocument::editValueForItem(ADPlistObject *item, KZRange range)
{
    if (_window)
        _window->editValueForItem(item, range);
}

void ADPlistDocument::editKeyForItem(ADPlistObject *item, KZRange range)
{
    if (_window)
        _window->editKeyForItem(item, range);
}

bool ADPlistDocument::commitEditing()
{
    return !_window || _window->commitEditing();
}

void ADPlistDocument::bringToFront()
{
    if (_window)
        _window->bringToFront();
}

// --- reading ---------------------------------------------------------------------------------

void ADPlistDocument::readFromURL(const QString &path, const QString &, Completion done)
{
    if (_fileReader.isRunning()) { // a revert asked for while the file is still being read
        done(cancelledError());
        return;
    }
    std::optional<KZError> error;
    ADPlistFormat format = ADPlistFormatUnknown;
    ADPlistObject::Pointer root;
    if (const std::shared_ptr<KZUserPreferences> domain =
            _userPreferencesLookup ? _userPreferencesLookup(path) : nullptr) {
        const PlistValue plist = domain->readPropertyList(&error);
        format =
            ADPlistFormatBinary; // how the system keeps preference files, whatever this one holds
        if (!plist.isNone())
            root = ADPlistObject::createWithPlist(plist);
    } else if (QFileInfo(path).size() >= kReadAsideBytes) {
        readFileAside(path, std::move(done));
        return;
    } else {
        root = ADPlistObject::plistObjectWithContentsOfFile(path, true, &format, &error);
    }
    takeReadTree(path, root, format, error, std::move(done));
}

void ADPlistDocument::readFileAside(const QString &path, Completion done)
{
    auto cancelled = std::make_shared<bool>(false);
    if (presenter()) {
        _readProgress = presenter()->beginProgress(
            KZLocalizedStringWithFormat(7391, QStringLiteral("Opening “%@”…"),
                                        {QFileInfo(path).fileName()}),
            [cancelled] { *cancelled = true; });
    }
    _fileReader.start(
        [path] {
            FileRead read;
            try {
                read.plist =
                    ADPlistObject::readPlistFromFile(path, true, &read.format, &read.error);
            } catch (const std::exception &e) { // nothing a file holds may take the program down
                read.error = PlistFileIO::readError(QString::fromLocal8Bit(e.what()));
            }
            return read;
        },
        [this, path, cancelled, done = std::move(done)](FileRead read) {
            _readProgress.reset();
            if (*cancelled) {
                done(cancelledError());
                return;
            }
            ADPlistObject::Pointer root;
            try {
                if (!read.plist.isNone())
                    root = ADPlistObject::createWithPlist(read.plist);
            } catch (const std::exception &e) {
                read.error = PlistFileIO::readError(QString::fromLocal8Bit(e.what()));
            }
            takeReadTree(path, root, read.format, read.error, done);
        });
}

void ADPlistDocument::takeReadTree(const QString &path, const ADPlistObject::Pointer &root,
                                   ADPlistFormat format, const std::optional<KZError> &error,
                                   Completion done)
{
    if (root) {
        setStructureDefinitionIdentifier(
            _definitions ? _definitions->definitionIdentifierForFileAtPath(path) : QString());
        takeFile(root, format);
        setFileModificationDate(KZFileStamp::ofFile(path));
        done(std::nullopt);
        return;
    }
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        done(error); // the first error
        return;
    }
    readPlistData(file.readAll(), error ? error->localizedDescription() : QString(),
                  [self = QPointer(this), path, done](bool opened) {
                      if (self && opened)
                          self->setFileModificationDate(KZFileStamp::ofFile(path));
                      done(self && opened ? std::nullopt
                                          : std::optional<KZError>(cancelledError()));
                  });
}

void ADPlistDocument::readPlistData(const QByteArray &data, const QString &errorString,
                                    std::function<void(bool opened)> done)
{
    std::optional<QString> text = KZStringEncoding::decode(data, KZStringEncoding::UTF8);
    ADPlistFormat format = text ? formatOfRawText(*text) : ADPlistFormatASCII;
    if (!text)
        text = KZStringEncoding::decode(data, KZStringEncoding::MacOSRoman);
    // Bytes that hold NUL characters are no text to edit: binary data.
    if (!text || text->contains(QChar(0))) {
        ask({KZLocalizedStringWithID(277, QStringLiteral("Error")), errorString, {okText()}, 0},
            [done = std::move(done)](int) { done(false); });
        return;
    }
    const KZQuestion question{
        KZLocalizedStringWithID(273, QStringLiteral("Error")),
        KZLocalizedStringWithFormat(
            274,
            QStringLiteral("There was an error reading the property list file (%@).\nWould you "
                           "like to open the raw text of the file instead?"),
            {errorString}),
        {KZLocalizedStringWithID(275, QStringLiteral("Open")),
         KZLocalizedStringWithID(276, QStringLiteral("Cancel"))},
        1};
    ask(question,
        [self = QPointer(this), text = *text, format, done = std::move(done)](int button) {
            if (!self || button != 0) {
                done(false);
                return;
            }
            self->takeFile(ADPlistObject::createWithPlist(PlistDictionary::create()), format);
            self->takeRawText(text);
            done(true);
        });
}

void ADPlistDocument::readAutosavedContents(const QString &path, const QString &, Completion done)
{
    QFile file(path);
    const ReadResult read =
        PlistSerialization::read(file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray());
    const PlistDictionary contents = read.value.toDictionary();
    const PlistValue plist = contents.isNull() ? PlistValue() : contents.value(u"plist");
    if (plist.isNone()) {
        done(KZError(KZErrorDomain, 256, read ? path : read.error.description()));
        return;
    }
    setStructureDefinitionIdentifier(contents.value(u"definition").toString());
    const ADPlistFormat format = contents.value(u"format").toInteger();
    takeFile(ADPlistObject::createWithPlist(plist), format);
    if (contents.value(u"editMode").toInteger() == ADEditModeText)
        takeRawText(contents.value(u"text").toString());
    done(std::nullopt);
}

std::optional<KZError> ADPlistDocument::writeAutosavedContents(const QString &path)
{
    PlistDictionary contents = PlistDictionary::create();
    contents.insert(QStringLiteral("format"), _plistFormat);
    contents.insert(QStringLiteral("editMode"), _editMode);
    contents.insert(QStringLiteral("plist"), _plistRoot->entryValue());
    contents.insert(QStringLiteral("definition"), _structureDefinitionIdentifier);
    if (_editMode == ADEditModeText)
        contents.insert(QStringLiteral("text"), _textSide ? _textSide->currentText() : _rawText);
    // Binary holds every value a tree can, the null of JSON included.
    const WriteResult written = PlistSerialization::write(contents, ADPlistFormatBinary);
    if (!written)
        return KZError(KZErrorDomain, 512, written.error);
    return SafeFileWriter::write(path, written.data);
}

// A tree read from a file: undo starts here, and the text comes from the tree.
void ADPlistDocument::takeFile(const ADPlistObject::Pointer &root, ADPlistFormat format)
{
    storeFormat(format);
    setPlistRoot(root);
    _rawText = QString();
    setEditMode(ADEditModeNone);
    if (_textSide) {
        showTreeText();
        _textMatchesTree = true;
    }
    undoManager().removeAllActions();
}

// Text that may not parse: it is the truth, over whatever tree there is.
void ADPlistDocument::takeRawText(const QString &text)
{
    if (_textSide) {
        showPlistText(text);
        if (_window)
            _window->exposePlistTextView();
    } else {
        _rawText = text;
    }
    _textMatchesTree = false;
    setEditMode(ADEditModeText);
    undoManager().removeAllActions();
}
