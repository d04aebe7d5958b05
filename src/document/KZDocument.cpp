#include "KZDocument.h"

#include "KZDocumentPresenter.h"

#include "model/ADUndoManager.h"
#include "shared/KZLocalizedString.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QPointer>
#include <QTimer>
#include <QUndoStack>

#include <unistd.h>

namespace {

QString cancelText()
{
    return KZLocalizedStringWithID(7105, QStringLiteral("Cancel"));
}

} // namespace

KZDocument::KZDocument(QObject *parent)
    : QObject(parent), _undoManager(std::make_unique<ADUndoManager>()),
      _autosaveTimer(new QTimer(this))
{
    _autosaveTimer->setSingleShot(true);
    connect(_autosaveTimer, &QTimer::timeout, this,
            [this] { autosaveWithImplicitCancellability(true, {}); });
    const QUndoStack *stack = _undoManager->undoStack();
    connect(stack, &QUndoStack::indexChanged, this, &KZDocument::undoStackChanged);
    connect(stack, &QUndoStack::cleanChanged, this, &KZDocument::undoStackChanged);
}

KZDocument::~KZDocument()
{
    // Clearing the stack on its way out is no change of the document's.
    _undoManager->undoStack()->disconnect(this);
}

void KZDocument::setFileURL(const QString &path)
{
    if (std::exchange(_fileURL, path) != path)
        emit fileURLChanged(path);
}

void KZDocument::setFileType(const QString &type)
{
    _fileType = type;
}

QString KZDocument::displayName() const
{
    if (_fileURL.isEmpty())
        return KZLocalizedStringWithID(7102, QStringLiteral("Untitled"));
    return QFileInfo(_fileURL).fileName();
}

bool KZDocument::isDocumentEdited() const
{
    return _changedOutsideUndo || !_undoManager->undoStack()->isClean();
}

void KZDocument::updateChangeCount(ChangeType change)
{
    if (change == ChangeType::Cleared)
        _undoManager->undoStack()->setClean();
    _changedOutsideUndo = change == ChangeType::Done;
    undoStackChanged();
}

void KZDocument::ask(const KZQuestion &question, std::function<void(int button)> answer)
{
    KZDocumentPresenter::askOrDecline(_presenter, question, std::move(answer));
}

void KZDocument::presentError(const KZError &error, std::function<void(bool recovered)> done)
{
    KZDocumentPresenter::presentError(_presenter, error, std::move(done));
}

void KZDocument::readAutosavedContents(const QString &path, const QString &type, Completion done)
{
    readFromURL(path, type, std::move(done));
}

void KZDocument::revertToContentsOfURL(const QString &path, const QString &type, Completion done)
{
    readFromURL(path, type,
                [self = QPointer(this), path, done](const std::optional<KZError> &error) {
                    if (self && !error) {
                        self->_fileModificationDate = KZFileStamp::ofFile(path);
                        self->updateChangeCount(ChangeType::Cleared);
                    }
                    done(error);
                });
}

void KZDocument::restoreAutosavedRecord(const KZAutosaveStore::Record &record, Completion done)
{
    readAutosavedContents(
        record.contentsPath, record.fileType,
        [self = QPointer(this), record, done](const std::optional<KZError> &error) {
            if (!self || error) {
                done(self ? error : cancelledError());
                return;
            }
            self->setFileURL(record.fileURL);
            self->setFileType(record.fileType);
            self->_fileModificationDate = record.fileStamp;
            self->_autosaveIdentifier = record.identifier;
            self->updateChangeCount(ChangeType::Done);
            done(std::nullopt);
        });
}

void KZDocument::saveToURL(const QString &path, const QString &type, KZSaveOperation operation,
                           Completion done)
{
    const std::optional<KZError> error = writeSafelyToURL(path, type, operation);
    if (!error)
        didSave(path, type, operation);
    if (done)
        done(error);
}

std::optional<KZError> KZDocument::writeSafelyToURL(const QString &path, const QString &type,
                                                    KZSaveOperation operation)
{
    return writeToURL(path, type, operation);
}

void KZDocument::saveDocument(Completion done)
{
    if (_fileURL.isEmpty()) {
        runSavePanel(KZSaveOperation::SaveAs, std::move(done));
        return;
    }
    if (!fileChangedOnDisk()) {
        saveToOwnFile(std::move(done));
        return;
    }
    const KZQuestion question{
        KZLocalizedStringWithFormat(
            7106,
            QStringLiteral("The file of “%@” has been changed by another program since it was "
                           "opened or saved."),
            {displayName()}),
        KZLocalizedStringWithID(
            7107, QStringLiteral("If you save, the changes made by the other program are lost.")),
        {KZLocalizedStringWithID(7108, QStringLiteral("Save Anyway")), cancelText()},
        1};
    ask(question, [self = QPointer(this), done = std::move(done)](int button) {
        if (self && button == 0)
            self->saveToOwnFile(done);
        else if (done)
            done(cancelledError());
    });
}

void KZDocument::saveDocumentAs(Completion done)
{
    runSavePanel(KZSaveOperation::SaveAs, std::move(done));
}

void KZDocument::saveDocumentTo(Completion done)
{
    runSavePanel(KZSaveOperation::SaveTo, std::move(done));
}

void KZDocument::revertDocumentToSaved(Completion done)
{
    if (_fileURL.isEmpty()) {
        if (done)
            done(cancelledError());
        return;
    }
    const auto revert = [self = QPointer(this), done] {
        if (!self)
            return;
        self->revertToContentsOfURL(self->_fileURL, self->_fileType,
                                    [self, done](const std::optional<KZError> &error) {
                                        if (self && error && !isCancelled(error))
                                            self->presentError(*error);
                                        if (done)
                                            done(error);
                                    });
    };
    if (!isDocumentEdited()) {
        revert();
        return;
    }
    const KZQuestion question{
        KZLocalizedStringWithFormat(
            7109, QStringLiteral("Do you want to revert “%@” to the version in its file?"),
            {displayName()}),
        KZLocalizedStringWithID(7110,
                                QStringLiteral("The changes made since it was saved are lost.")),
        {KZLocalizedStringWithID(7111, QStringLiteral("Revert")), cancelText()},
        1};
    ask(question, [revert, done](int button) {
        if (button == 0)
            revert();
        else if (done)
            done(cancelledError());
    });
}

void KZDocument::canCloseDocument(std::function<void(bool mayClose)> done)
{
    if (!isDocumentEdited()) {
        done(true);
        return;
    }
    const KZQuestion question{
        KZLocalizedStringWithFormat(
            7112, QStringLiteral("Do you want to save the changes made to “%@”?"), {displayName()}),
        KZLocalizedStringWithID(7113,
                                QStringLiteral("Your changes are lost if you don't save them.")),
        {KZLocalizedStringWithID(7114, QStringLiteral("Save")),
         KZLocalizedStringWithID(7115, QStringLiteral("Don't Save")), cancelText()},
        2};
    ask(question, [self = QPointer(this), done](int button) {
        if (button == 0 && self)
            self->saveDocument([done](const std::optional<KZError> &error) { done(!error); });
        else
            done(button == 1);
    });
}

void KZDocument::close()
{
    _autosaveTimer->stop();
    discardAutosave();
    emit closed();
}

void KZDocument::setAutosavingDelay(double seconds)
{
    _autosaveDelay = seconds;
}

void KZDocument::autosaveWithImplicitCancellability(bool cancellable, Completion done)
{
    const auto finish = [self = QPointer(this), cancellable, done](std::optional<KZError> error) {
        if (self && error && !cancellable)
            self->presentError(*error);
        if (done)
            done(error);
    };
    if (!_hasUnautosavedChanges) {
        finish(std::nullopt);
        return;
    }
    if (!canAutosaveInPlace()) {
        finish(autosaveElsewhere());
        return;
    }
    saveToURL(_fileURL, _fileType, KZSaveOperation::AutosaveInPlace,
              [self = QPointer(this), finish](const std::optional<KZError> &error) {
                  // What cannot go into the file unasked is still kept.
                  finish(error && self ? self->autosaveElsewhere() : error);
              });
}

bool KZDocument::canWriteToFileAtPath(const QString &path)
{
    const QByteArray file = QFile::encodeName(path);
    if (::access(file.constData(), F_OK) == 0 && ::access(file.constData(), W_OK) != 0)
        return false;
    return ::access(QFile::encodeName(QFileInfo(path).absolutePath()).constData(), W_OK) == 0;
}

bool KZDocument::canAutosaveInPlace() const
{
    return _autosavesInPlace && !_fileURL.isEmpty() && !fileChangedOnDisk() &&
           canWriteToFileAtPath(_fileURL);
}

void KZDocument::prepareSavePanel(KZSavePanelRequest &request)
{
    request.filters = {{_fileType, _fileType, {}}};
}

QString KZDocument::savePanelDidEnd(const KZSavePanelRequest &request,
                                    const KZSavePanelResult &result)
{
    const auto index = size_t(result.filterIndex);
    return index < request.filters.size() ? request.filters[index].type : _fileType;
}

std::optional<KZError> KZDocument::autosaveElsewhere()
{
    if (!_autosaveStore)
        return std::nullopt; // nowhere to keep it
    if (_autosaveIdentifier.isEmpty())
        _autosaveIdentifier = _autosaveStore->newRecordIdentifier();
    std::optional<KZError> error;
    const std::optional<QString> path = _autosaveStore->contentsPath(_autosaveIdentifier, &error);
    if (!path)
        return error;
    if (std::optional<KZError> failed =
            writeSafelyToURL(*path, _fileType, KZSaveOperation::AutosaveElsewhere))
        return failed;
    if (std::optional<KZError> failed =
            _autosaveStore->writeRecord({_autosaveIdentifier, _fileURL, _fileType, displayName(),
                                         _fileModificationDate, *path}))
        return failed;
    _hasUnautosavedChanges = false;
    return std::nullopt;
}

bool KZDocument::fileChangedOnDisk() const
{
    return _fileModificationDate.exists && KZFileStamp::ofFile(_fileURL) != _fileModificationDate;
}

KZError KZDocument::cancelledError()
{
    return KZError(KZErrorDomain, KZUserCancelledError);
}

bool KZDocument::isCancelled(const std::optional<KZError> &error)
{
    return error && error->is(KZErrorDomain, KZUserCancelledError);
}

void KZDocument::runSavePanel(KZSaveOperation operation, Completion done)
{
    if (!_panels) {
        if (done)
            done(cancelledError());
        return;
    }
    KZSavePanelRequest request;
    request.directory = _fileURL.isEmpty() ? QDir::homePath() : QFileInfo(_fileURL).absolutePath();
    request.fileName = displayName();
    prepareSavePanel(request);
    _panels->runSavePanel(request, [self = QPointer(this), request, operation,
                                    done](const std::optional<KZSavePanelResult> &result) {
        if (!self || !result) {
            if (done)
                done(cancelledError());
            return;
        }
        const QString type = self->savePanelDidEnd(request, *result);
        self->saveToURL(result->path, type, operation,
                        [self, done](const std::optional<KZError> &error) {
                            if (self && error && !isCancelled(error))
                                self->presentSaveError(*error);
                            if (done)
                                done(error);
                        });
    });
}

void KZDocument::saveToOwnFile(Completion done)
{
    saveToURL(_fileURL, _fileType, KZSaveOperation::Save,
              [self = QPointer(this), done](const std::optional<KZError> &error) {
                  if (self && error && !isCancelled(error))
                      self->presentSaveError(*error);
                  if (done)
                      done(error);
              });
}

void KZDocument::didSave(const QString &path, const QString &type, KZSaveOperation operation)
{
    if (operation == KZSaveOperation::SaveTo || operation == KZSaveOperation::AutosaveElsewhere)
        return;
    if (operation == KZSaveOperation::SaveAs)
        setFileURL(path);
    setFileType(type);
    _fileModificationDate = KZFileStamp::ofFile(path);
    updateChangeCount(ChangeType::Cleared);
}

// Errors of the document itself carry their own advice; those of the file
// system are put in context, with another place to save to.
void KZDocument::presentSaveError(const KZError &error)
{
    if (!error.localizedRecoverySuggestion().isEmpty()) {
        presentError(error);
        return;
    }
    KZError shown(
        error.domain(), error.code(),
        KZLocalizedStringWithFormat(7103, QStringLiteral("The document “%@” could not be saved."),
                                    {displayName()}));
    shown.setLocalizedRecoverySuggestion(error.localizedDescription());
    shown.addRecoveryOption(KZLocalizedStringWithID(7104, QStringLiteral("Save As…")),
                            [self = QPointer(this)]() -> std::optional<KZError> {
                                if (self)
                                    self->saveDocumentAs();
                                return std::nullopt;
                            });
    shown.addRecoveryOption(cancelText(), [] { return std::optional<KZError>(cancelledError()); });
    presentError(shown);
}

void KZDocument::undoStackChanged()
{
    const bool edited = isDocumentEdited();
    if (edited) {
        _hasUnautosavedChanges = true;
        if (_autosaveDelay > 0 && !_autosaveTimer->isActive())
            _autosaveTimer->start(int(_autosaveDelay * 1000));
    }
    if (edited == _wasEdited)
        return;
    _wasEdited = edited;
    if (!edited) {
        _hasUnautosavedChanges = false;
        _autosaveTimer->stop();
        discardAutosave();
    }
    emit documentEditedChanged(edited);
}

void KZDocument::discardAutosave()
{
    if (_autosaveStore && !_autosaveIdentifier.isEmpty())
        _autosaveStore->removeRecord(_autosaveIdentifier);
    _autosaveIdentifier.clear();
}
