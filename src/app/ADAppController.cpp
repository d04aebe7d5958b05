#include "ADAppController.h"

#include "ADDocumentController.h"

#include "document/ADPlistDocument.h"
#include "document/KZAutosaveStore.h"
#include "preferences/ADPreferences.h"
#include "shared/KZLocalizedString.h"
#include "ui/document/KZFileDialogPanels.h"
#include "ui/document/KZMessageBoxPresenter.h"
#include "ui/window/ADPlistWindow.h"
#include "ui/window/ADPlistWindowController.h"

#include <QApplication>
#include <QClipboard>
#include <QFileInfo>
#include <QMessageBox>
#include <QTimer>
#include <QUrl>

#include <cstdio>
#include <cstdlib>

namespace {

// A path, the path of a file URL, or nothing for anything else.
std::optional<QString> pathOfItem(const QString &item)
{
    const QUrl url(item);
    if (url.isLocalFile())
        return url.toLocalFile();
    if (url.scheme().size() > 1 && !QFileInfo::exists(item))
        return std::nullopt;
    return item;
}

// Definition bundles are folders that open as documents.
bool isFolderThatIsNoDocument(const QString &path)
{
    const QFileInfo info(path);
    return info.isDir() &&
           info.suffix().compare(QLatin1StringView("dvtplugin"), Qt::CaseInsensitive) != 0;
}

// A message that goes when it is answered, modal for its window only.
void showMessage(QWidget *window, QMessageBox::Icon icon, const QString &title, const QString &text)
{
    auto *box = new QMessageBox(icon, title, text, QMessageBox::Ok, window);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setWindowModality(window ? Qt::WindowModal : Qt::ApplicationModal);
    box->open();
}

} // namespace

ADAppController::ADAppController(ADPreferences &preferences, const QString &autosaveFolder,
                                 QObject *parent)
    : QObject(parent), _preferences(preferences), _urlHandler(QStringLiteral("arbordeck")),
      _autosaveStore(std::make_unique<KZAutosaveStore>(autosaveFolder)),
      _presenter(std::make_unique<KZMessageBoxPresenter>()),
      _panels(std::make_unique<KZFileDialogPanels>()),
      _documentController(std::make_unique<ADDocumentController>(preferences))
{
    _urlHandler.setDelegate(this);
    _documentController->setPresenter(_presenter.get());
    _documentController->setPanels(_panels.get());
    _documentController->setAutosaveStore(_autosaveStore.get());
    connect(_documentController.get(), &KZDocumentController::documentAdded, this,
            &ADAppController::documentAdded);
    // Someone may have changed a file while the program was in the background.
    connect(qApp, &QGuiApplication::applicationStateChanged, this,
            [this](Qt::ApplicationState state) {
                if (state != Qt::ApplicationActive)
                    return;
                for (const std::unique_ptr<KZDocument> &document : _documentController->documents())
                    static_cast<ADPlistDocument *>(document.get())->checkForChangedFile();
            });
    connect(_documentController.get(), &KZDocumentController::blankDocumentReplaced, this,
            [this](KZDocument *blank, KZDocument *opened) {
                if (const ADPlistWindowController *window = windowControllerFor(blank))
                    _initialFrames.insert(opened, window->window()->geometry());
            });
}

ADAppController::~ADAppController()
{
    // Windows go before the documents they show.
    _windowControllers.clear();
}

ADPlistWindowController *ADAppController::windowControllerFor(const KZDocument *document) const
{
    for (const std::unique_ptr<ADPlistWindowController> &controller : _windowControllers) {
        if (&controller->document() == document)
            return controller.get();
    }
    return nullptr;
}

void ADAppController::applicationDidFinishLaunching(const QStringList &requests,
                                                    const QByteArray &standardInput)
{
    _documentController->reopenAutosavedDocuments(
        [this, requests, standardInput](const std::vector<KZDocument *> &reopened) {
            if (!standardInput.isNull())
                openPlistData(standardInput);
            if (!requests.isEmpty())
                openRequests(requests);
            if (reopened.empty() && requests.isEmpty() && standardInput.isNull())
                newDocument();
        });
}

void ADAppController::openRequests(const QStringList &requests)
{
    if (requests.isEmpty()) {
        reopen();
        return;
    }
    QStringList files;
    for (const QString &request : requests) {
        if (request.startsWith(_urlHandler.scheme() + u':', Qt::CaseInsensitive))
            _urlHandler.handleURL(request);
        else
            files << request;
    }
    if (files.isEmpty())
        return;
    processFiles(
        files, [this](const std::vector<KZDocument *> &opened, const std::vector<KZError> &errors) {
            presentErrors(errors);
            // Every open was cancelled and nothing else is open: nothing is left to show.
            if (opened.empty() && errors.empty() && _documentController->documents().empty())
                QTimer::singleShot(0, qApp, &QCoreApplication::quit);
        });
}

// A launch with nothing to open: the windows there are come forward, and
// with none a new document comes only when the settings ask for one.
void ADAppController::reopen()
{
    if (!_windowControllers.empty()) {
        _windowControllers.back()->showWindow();
        return;
    }
    if (_preferences.reopenAction() == 0)
        newDocument();
}

void ADAppController::processFiles(const QStringList &items, OpenCompletion done)
{
    QStringList paths;
    for (const QString &item : items) {
        if (const std::optional<QString> path = pathOfItem(item))
            paths << *path;
    }
    if (paths.isEmpty())
        return;
    const auto folder = std::find_if(paths.begin(), paths.end(), isFolderThatIsNoDocument);
    if (folder != paths.end()) {
        done({}, {KZError(KZErrorDomain, -1,
                          KZLocalizedStringWithFormat(
                              7350, QStringLiteral("“%@” is a folder: open the files inside it."),
                              {QFileInfo(*folder).fileName()}))});
        return;
    }
    struct Pending
    {
        std::vector<KZDocument *> documents;
        std::vector<KZError> errors;
        qsizetype left;
    };
    auto pending = std::make_shared<Pending>(Pending{{}, {}, paths.size()});
    for (const QString &path : paths) {
        _documentController->openDocumentWithContentsOfURL(
            path, [pending, done](KZDocument *document, const std::optional<KZError> &error) {
                if (document)
                    pending->documents.push_back(document);
                if (error)
                    pending->errors.push_back(*error);
                if (--pending->left == 0)
                    done(pending->documents, pending->errors);
            });
    }
}

// The raw-text question a document asks of text that does not read may be
// answered later, so the failure, if any, comes when the answer does.
void ADAppController::openPlistTextFromClipboard(std::function<void(const QString &failure)> done)
{
    const QString text = QGuiApplication::clipboard()->text();
    if (text.isEmpty()) {
        done(KZLocalizedStringWithID(
            50,
            QStringLiteral("Could not open property list text: no string present in selection")));
        return;
    }
    _documentController->createDocumentWithPlistData(
        text.toUtf8(), [done = std::move(done)](ADPlistDocument *document) {
            done(document ? QString()
                          : KZLocalizedStringWithID(
                                49, QStringLiteral("Could not create plist document for text")));
        });
}

void ADAppController::openPlistData(const QByteArray &data)
{
    _documentController->createDocumentWithPlistData(data, [](ADPlistDocument *) {});
}

void ADAppController::newDocument()
{
    _documentController->openUntitledDocumentOfType(_documentController->defaultType());
}

void ADAppController::openDocument()
{
    _documentController->openDocument();
}

void ADAppController::terminate()
{
    QApplication::closeAllWindows();
}

bool ADAppController::urlHandlerReceivedHelpURLWithAnchor(const std::optional<QString> &anchor)
{
    showHelp(anchor.value_or(QString()));
    return true;
}

// A window for each document, made once the document has what it opened
// with: a document that is refused right away never flashes a window.
void ADAppController::documentAdded(KZDocument *document)
{
    QTimer::singleShot(0, this, [this, document = QPointer(document)] {
        if (document && !windowControllerFor(document))
            makeWindowController(static_cast<ADPlistDocument *>(document.data()));
    });
}

void ADAppController::makeWindowController(ADPlistDocument *document)
{
    auto controller = std::make_unique<ADPlistWindowController>(*document, _preferences);
    ADPlistWindowController *window = controller.get();
    connect(window, &ADPlistWindowController::newDocumentRequested, this,
            &ADAppController::newDocument);
    connect(window, &ADPlistWindowController::openDocumentRequested, this,
            &ADAppController::openDocument);
    connect(window, &ADPlistWindowController::openClipboardRequested, this, [this, window] {
        openPlistTextFromClipboard([window = QPointer(window)](const QString &failure) {
            if (window && !failure.isNull())
                showMessage(window->window(), QMessageBox::Warning, QString(), failure);
        });
    });
    connect(window, &ADPlistWindowController::quitRequested, this, &ADAppController::terminate);
    connect(window, &ADPlistWindowController::windowClosed, this, [this, window] {
        const auto found =
            std::find_if(_windowControllers.begin(), _windowControllers.end(),
                         [window](const auto &controller) { return controller.get() == window; });
        if (found != _windowControllers.end()) {
            found->release()->deleteLater();
            _windowControllers.erase(found);
        }
    });
    if (const auto frame = _initialFrames.constFind(document); frame != _initialFrames.cend()) {
        window->window()->setGeometry(*frame);
        _initialFrames.erase(frame);
    }
    _windowControllers.push_back(std::move(controller));
    window->showWindow();
    if (_exitWhenShown) {
        window->window()->repaint();
        std::fflush(nullptr);
        std::_Exit(0);
    }
}

void ADAppController::presentErrors(const std::vector<KZError> &errors)
{
    for (const KZError &error : errors)
        KZDocumentPresenter::presentError(_presenter.get(), error, {});
}

void ADAppController::showHelp(const QString &anchor)
{
    QString text = KZLocalizedStringWithID(
        7351, QStringLiteral("Arbordeck edits property lists in XML, ASCII, binary and JSON. "
                             "Its command line tool is ardeck: run “ardeck --help”."));
    if (!anchor.isEmpty())
        text += u'\n' + KZLocalizedStringWithFormat(7352, QStringLiteral("Topic: %@"), {anchor});
    showMessage(QApplication::activeWindow(), QMessageBox::Information,
                KZLocalizedStringWithID(7353, QStringLiteral("Arbordeck Help")), text);
}
