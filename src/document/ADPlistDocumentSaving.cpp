// The saving half of a plist document, and noticing its file change on disk.

#include "ADPlistDocument.h"

#include "KZDocumentPresenter.h"

#include "preferences/ADPreferences.h"
#include "preferences/KZUserDefaults.h"
#include "shared/KZExtendedAttributes.h"
#include "shared/KZLocalizedString.h"

namespace {

KZError parseError(const QString &message)
{
    KZError error(ADErrorDomain, ADParseError,
                  KZLocalizedStringWithID(315, QStringLiteral("Parse error")));
    error.setLocalizedRecoverySuggestion(message);
    return error;
}

} // namespace

void ADPlistDocument::saveToURL(const QString &path, const QString &type, KZSaveOperation operation,
                                Completion done)
{
    // An autosave must not end the edit the user is in the middle of.
    if (operation != KZSaveOperation::AutosaveInPlace)
        (void)commitEditing();
    // The sides agree before anything is written; a text that does not parse
    // stops the save in `writeToURL`, and stays as it is.
    _saveError.reset();
    if (_editMode == ADEditModeText) {
        const QString message = synchronizeFromMode(ADEditModeText);
        if (!message.isNull())
            _saveError = parseError(message);
    } else if (_editMode == ADEditModeOutline) {
        (void)synchronizeFromMode(ADEditModeOutline); // the tree is whole whatever the text
    }
    // A format change would rewrite the text from the tree and lose what the
    // user typed; the save fails with the parse error before asking anything.
    if (_saveError) {
        KZDocument::saveToURL(path, type, operation, std::move(done));
        return;
    }
    const ADPlistFormat format = plistFormatForDocumentType(type, _plistFormat);
    if (format == _plistFormat && !fitsFormat(format)) {
        // Kept in its own format, a value the format cannot hold would turn
        // into text unasked (a number of a typed old-style file): only with
        // the user's word, and otherwise nothing is written.
        askForConversionToFormat(
            format, [self = QPointer(this), path, type, operation, done](bool converted) {
                if (!self || !converted) {
                    done(cancelledError());
                    return;
                }
                self->KZDocument::saveToURL(path, type, operation, done);
            });
        return;
    }
    convertFormatToMatchDocumentType(
        type, [self = QPointer(this), path, type, operation, done](ADPlistFormat format) {
            if (!self) {
                done(cancelledError());
                return;
            }
            // A declined conversion still saves: the writer says what it cannot hold.
            if (format != ADPlistFormatUnknown && operation != KZSaveOperation::SaveTo)
                (void)self->setPlistFormat(format);
            self->KZDocument::saveToURL(path, type, operation, done);
        });
}

bool ADPlistDocument::fitsFormat(ADPlistFormat format) const
{
    return !ADPlistObject::firstIncompatibleValueForFormat(_plistRoot->plist(), format);
}

std::optional<KZError> ADPlistDocument::writeSafelyToURL(const QString &path, const QString &type,
                                                         KZSaveOperation operation)
{
    const std::shared_ptr<KZUserPreferences> domain =
        operation != KZSaveOperation::AutosaveElsewhere && _userPreferencesLookup
            ? _userPreferencesLookup(path)
            : nullptr;
    if (domain) {
        // The preference system first: then the file and the system agree.
        QString message;
        const PlistValue plist = currentPlist(&message);
        if (plist.isNone())
            return parseError(message);
        if (std::optional<KZError> error = domain->writePropertyList(plist))
            return error;
    }
    return KZDocument::writeSafelyToURL(path, type, operation);
}

std::optional<KZError> ADPlistDocument::writeToURL(const QString &path, const QString &type,
                                                   KZSaveOperation operation)
{
    if (operation == KZSaveOperation::AutosaveElsewhere)
        return writeAutosavedContents(path);
    if (_saveError)
        return _saveError;
    QString message;
    const PlistValue plist = currentPlist(&message);
    if (plist.isNone())
        return parseError(message);
    if (std::optional<KZError> error = ADPlistObject::writePlist(
            plist, path, plistFormatForDocumentType(type, _plistFormat), _saveJSONHumanReadable))
        return error;
    // The rename made a new file: the definition goes on it now.
    if (!_structureDefinitionIdentifier.isEmpty())
        (void)KZExtendedAttributes::setValue(path, ADPlistTypeAttributeName,
                                             _structureDefinitionIdentifier.toUtf8());
    return std::nullopt;
}

void ADPlistDocument::saveDocument(Completion done)
{
    // The system rewrites preference files at will: that is no change to warn about.
    if (_userPreferences)
        setFileModificationDate(KZFileStamp::ofFile(fileURL()));
    KZDocument::saveDocument(std::move(done));
}

bool ADPlistDocument::canAutosaveInPlace() const
{
    return _editMode != ADEditModeText &&
           fitsFormat(plistFormatForDocumentType(fileType(), _plistFormat)) &&
           KZDocument::canAutosaveInPlace();
}

void ADPlistDocument::prepareSavePanel(KZSavePanelRequest &request)
{
    request.filters = documentTypeFilters();
    setSavePanelChosenType(fileType());
    setSaveJSONHumanReadable(_preferences.userDefaults().boolForKey(JSONSaveHumanReadableKey));
    request.selectedFilter = !savePanelChosenTypeIsJSON() ? 0 : _saveJSONHumanReadable ? 1 : 2;
}

QString ADPlistDocument::savePanelDidEnd(const KZSavePanelRequest &request,
                                         const KZSavePanelResult &result)
{
    const QString type = KZDocument::savePanelDidEnd(request, result);
    setSavePanelChosenType(type);
    if (savePanelChosenTypeIsJSON())
        setSaveJSONHumanReadable(result.filterIndex != 2);
    return type;
}

void ADPlistDocument::checkForChangedFile()
{
    if (_askingAboutChangedFile || !fileModificationDate().exists)
        return;
    const KZFileStamp onDisk = KZFileStamp::ofFile(fileURL());
    // A file that went has nothing to revert to; saving puts it back.
    if (!onDisk.exists || onDisk == fileModificationDate() ||
        !_preferences.userDefaults().boolForKey(AskRevertKey))
        return;
    _askingAboutChangedFile = true;
    const KZQuestion question{
        KZLocalizedStringWithID(279, QStringLiteral("File changed on disk")),
        KZLocalizedStringWithID(280, QStringLiteral("The contents of the file on disk have "
                                                    "changed.  Do you want to revert to the "
                                                    "version on disk?")),
        {KZLocalizedStringWithID(281, QStringLiteral("Revert")),
         KZLocalizedStringWithID(282, QStringLiteral("Don't Revert"))},
        1};
    ask(question, [self = QPointer(this), onDisk](int button) {
        if (!self)
            return;
        self->_askingAboutChangedFile = false;
        if (button != 0) {
            self->setFileModificationDate(onDisk); // quiet until the file changes again
            return;
        }
        self->revertToContentsOfURL(self->fileURL(), self->fileType(),
                                    [self](const std::optional<KZError> &error) {
                                        if (self && error && !isCancelled(error))
                                            self->presentError(*error);
                                    });
    });
}
