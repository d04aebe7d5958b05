#pragma once

#include "shared/KZError.h"
#include "shared/KZURLHandler.h"

#include <QHash>
#include <QObject>
#include <QPointer>
#include <QRect>
#include <QStringList>

#include <functional>
#include <memory>
#include <vector>

class ADDocumentController;
class ADPlistDocument;
class ADPlistWindowController;
class ADPreferences;
class KZAutosaveStore;
class KZDocument;
class KZMessageBoxPresenter;
class KZFileDialogPanels;

/// The program's door to the outside: what a launch, a second launch, the
/// program's URL scheme or the clipboard asks to open comes here, and each
/// document that opens gets its window. Owns the document controller and
/// the window controllers; the preferences outlive it. Main thread only.
class ADAppController : public QObject, public KZURLHandlerDelegate
{
    Q_OBJECT

public:
    using OpenCompletion = std::function<void(const std::vector<KZDocument *> &documents,
                                              const std::vector<KZError> &errors)>;

    /// `autosaveFolder`: where unsaved state is kept for crash recovery.
    ADAppController(ADPreferences &preferences, const QString &autosaveFolder,
                    QObject *parent = nullptr);
    ~ADAppController() override;

    ADDocumentController &documentController() const { return *_documentController; }
    const KZURLHandler &urlHandler() const { return _urlHandler; }
    /// The window of a document, once it has one.
    ADPlistWindowController *windowControllerFor(const KZDocument *document) const;

    /// After start-up: offers back what a run that died left unsaved, opens
    /// `requests` (paths, file URLs, URLs of the program's scheme), and makes
    /// the blank document when nothing else opened.
    void applicationDidFinishLaunching(const QStringList &requests,
                                       const QByteArray &standardInput = {});
    /// What a second launch handed over. With nothing, the windows come
    /// forward, or with none a new document when the settings ask for one.
    void openRequests(const QStringList &requests);
    /// Opens files: a folder among them opens nothing (folders belong to the
    /// file browser). `done` gets the documents and the errors, once.
    void processFiles(const QStringList &items, OpenCompletion done);
    /// The plist text on the clipboard as a new document; `done` gets the
    /// failure's text, or a null string, once it is known.
    void openPlistTextFromClipboard(std::function<void(const QString &failure)> done);
    /// Plist data handed over whole as a new document, with its window.
    void openPlistData(const QByteArray &data);

    /// For measuring: once the first window is painted, the process ends
    /// at once, without freeing what it holds.
    void setExitWhenShown(bool exitWhenShown) { _exitWhenShown = exitWhenShown; }

    void newDocument();
    void openDocument();
    /// Closes every window, each asking about unsaved changes; quits when all have gone.
    void terminate();

    // --- KZURLHandlerDelegate
    bool urlHandlerReceivedHelpURLWithAnchor(const std::optional<QString> &anchor) override;

private:
    void reopen();
    void documentAdded(KZDocument *document);
    void makeWindowController(ADPlistDocument *document);
    void presentErrors(const std::vector<KZError> &errors);
    void showHelp(const QString &anchor);

    ADPreferences &_preferences;
    KZURLHandler _urlHandler;
    std::unique_ptr<KZAutosaveStore> _autosaveStore;
    std::unique_ptr<KZMessageBoxPresenter> _presenter;
    std::unique_ptr<KZFileDialogPanels> _panels;
    std::unique_ptr<ADDocumentController> _documentController;
    std::vector<std::unique_ptr<ADPlistWindowController>> _windowControllers;
    QHash<const KZDocument *, QRect> _initialFrames; // of documents that replace the blank one
    bool _exitWhenShown = false;
};
