#pragma once

#include "KZAutosaveStore.h"
#include "KZDocumentPanels.h"
#include "KZFileStamp.h"

#include "shared/KZError.h"

#include <QObject>
#include <QString>

#include <functional>
#include <memory>
#include <optional>

class ADUndoManager;
class KZDocumentPresenter;
class QTimer;
struct KZQuestion;

/// How a document is being saved, with the codes the document framework gives them.
enum class KZSaveOperation : qint64
{
    Save = 0,              // to its own file
    SaveAs = 1,            // to a new file, which becomes its file
    SaveTo = 2,            // a copy elsewhere; the document stays as it was
    AutosaveElsewhere = 3, // its unsaved state, into the autosave store
    AutosaveInPlace = 4,   // to its own file, unasked
};

/// KZErrorDomain: the user cancelled what the error stopped. Never shown.
constexpr qint64 KZUserCancelledError = 3072;

/// One open document: the file it stands for (none while untitled, named by
/// its path), its type, its undo manager and whether it has unsaved changes.
///
/// It is edited while its undo stack is away from the clean state, or after
/// a change made outside undo (`updateChangeCount`); saving and reading make
/// it clean. Each change starts the autosave timer: after the delay the
/// document is saved unasked (in place when it allows, else its state goes
/// to the autosave store, to be offered back after a crash). Its record in
/// the store goes when it is saved, reverted or closed.
///
/// Reading, writing and the questions of a save are the subclass's; the
/// commands (save, save as, save to, revert, close) are here. Questions go to
/// the presenter, file panels to the panels; both are set by whoever shows
/// the document and outlive it. Flows that may ask end in a completion that
/// is called exactly once, perhaps before the call returns. Main thread only.
class KZDocument : public QObject
{
    Q_OBJECT

public:
    using Completion = std::function<void(const std::optional<KZError> &error)>;

    explicit KZDocument(QObject *parent = nullptr);
    ~KZDocument() override;

    /// The path of the document's file; empty while untitled.
    QString fileURL() const { return _fileURL; }
    virtual void setFileURL(const QString &path);
    QString fileType() const { return _fileType; }
    virtual void setFileType(const QString &type);
    /// The file's name, or "Untitled".
    QString displayName() const;
    /// The file as the document last read or saved it.
    KZFileStamp fileModificationDate() const { return _fileModificationDate; }
    void setFileModificationDate(const KZFileStamp &stamp) { _fileModificationDate = stamp; }

    ADUndoManager &undoManager() const { return *_undoManager; }

    bool isDocumentEdited() const;
    enum class ChangeType
    {
        Done,    // a change outside undo
        Cleared, // the document now agrees with its file
    };
    void updateChangeCount(ChangeType change);

    KZDocumentPresenter *presenter() const { return _presenter; }
    void setPresenter(KZDocumentPresenter *presenter) { _presenter = presenter; }
    void setPanels(KZDocumentPanels *panels) { _panels = panels; }
    /// Asks the presenter; with none, answers the question's cancel button.
    void ask(const KZQuestion &question, std::function<void(int button)> answer);
    /// Shows the error with one button per recovery option; `done` (may be
    /// empty) learns whether the option chosen recovered.
    void presentError(const KZError &error, std::function<void(bool recovered)> done = {});

    // --- reading
    /// Reads the document from `path`, replacing what it holds.
    virtual void readFromURL(const QString &path, const QString &type, Completion done) = 0;
    /// Reads contents this document wrote into the autosave store.
    virtual void readAutosavedContents(const QString &path, const QString &type, Completion done);
    /// Reads the file again; the document is then clean.
    void revertToContentsOfURL(const QString &path, const QString &type, Completion done);
    /// Takes over an autosaved record: its contents, file and type. The
    /// document stays edited, its changes not being in its file.
    void restoreAutosavedRecord(const KZAutosaveStore::Record &record, Completion done);

    // --- saving
    /// Every save comes here: writes, and on success takes the new file
    /// (for Save and Save As) and becomes clean.
    virtual void saveToURL(const QString &path, const QString &type, KZSaveOperation operation,
                           Completion done);
    virtual std::optional<KZError> writeSafelyToURL(const QString &path, const QString &type,
                                                    KZSaveOperation operation);
    virtual std::optional<KZError> writeToURL(const QString &path, const QString &type,
                                              KZSaveOperation operation) = 0;

    // --- commands; errors are shown, and `done` (may be empty) hears the outcome
    /// Saves to the document's file, asking first when someone else changed
    /// it on disk since; an untitled document asks where.
    virtual void saveDocument(Completion done = {});
    void saveDocumentAs(Completion done = {});
    void saveDocumentTo(Completion done = {});
    /// Reads the file again, after asking when there are unsaved changes.
    void revertDocumentToSaved(Completion done = {});
    /// Whether the document may close: asks to save unsaved changes.
    void canCloseDocument(std::function<void(bool mayClose)> done);
    /// Drops the autosaved state and tells the window side to go.
    void close();

    // --- autosave
    bool autosavesInPlace() const { return _autosavesInPlace; }
    void setAutosavesInPlace(bool inPlace) { _autosavesInPlace = inPlace; }
    /// Seconds from the first unautosaved change to the autosave; 0 for none.
    void setAutosavingDelay(double seconds);
    void setAutosaveStore(KZAutosaveStore *store) { _autosaveStore = store; }
    bool hasUnautosavedChanges() const { return _hasUnautosavedChanges; }
    /// Autosaves now: in place when `canAutosaveInPlace`, else (or when that
    /// fails) into the autosave store. `cancellable` autosaves come from the
    /// timer; their failures are not shown.
    void autosaveWithImplicitCancellability(bool cancellable, Completion done);
    /// Whether a save could replace the file: it is writable, or missing, and
    /// its folder is writable.
    static bool canWriteToFileAtPath(const QString &path);

signals:
    void documentEditedChanged(bool edited);
    void fileURLChanged(const QString &path);
    /// The document closed; whoever shows it lets go.
    void closed();

protected:
    /// Whether to write the document's own file unasked: it autosaves in
    /// place, has a file the user may write, and nobody changed that file on
    /// disk since it was read or saved.
    virtual bool canAutosaveInPlace() const;
    /// Fills the save panel: types and the one selected. The base offers the
    /// current type alone.
    virtual void prepareSavePanel(KZSavePanelRequest &request);
    /// The type chosen in the save panel; the subclass may note more of the choice.
    virtual QString savePanelDidEnd(const KZSavePanelRequest &request,
                                    const KZSavePanelResult &result);
    /// Writes the document's state into the autosave store.
    std::optional<KZError> autosaveElsewhere();
    /// The file on disk is no longer the one last read or saved.
    bool fileChangedOnDisk() const;
    static KZError cancelledError();
    static bool isCancelled(const std::optional<KZError> &error);

private:
    void runSavePanel(KZSaveOperation operation, Completion done);
    void saveToOwnFile(Completion done);
    void didSave(const QString &path, const QString &type, KZSaveOperation operation);
    void presentSaveError(const KZError &error);
    void undoStackChanged();
    void discardAutosave();

    QString _fileURL;
    QString _fileType;
    KZFileStamp _fileModificationDate;
    std::unique_ptr<ADUndoManager> _undoManager;
    KZDocumentPresenter *_presenter = nullptr;
    KZDocumentPanels *_panels = nullptr;
    KZAutosaveStore *_autosaveStore = nullptr;
    QString _autosaveIdentifier; // of this document's record in the store, once it has one
    QTimer *_autosaveTimer;      // child
    double _autosaveDelay = 0;
    bool _autosavesInPlace = false;
    bool _changedOutsideUndo = false;
    bool _hasUnautosavedChanges = false;
    bool _wasEdited = false;
};
