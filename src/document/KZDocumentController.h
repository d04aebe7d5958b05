#pragma once

#include "KZDocument.h"
#include "KZDocumentPanels.h"

#include <QObject>
#include <QPointer>
#include <QString>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

/// Posted on the default centre with the document as the object.
inline const QString KZDocumentControllerDidAddDocumentNotification =
    QStringLiteral("KZDocumentControllerDidAddDocumentNotification");
inline const QString KZDocumentControllerDidRemoveDocumentNotification =
    QStringLiteral("KZDocumentControllerDidRemoveDocumentNotification");

/// The program's open documents, and how documents come and go: files
/// opened (by path or through the open panel), untitled documents, and at
/// start-up the offer to reopen what a run that died left unsaved.
///
/// Documents are made by the factory for their type, given the controller's
/// presenter, panels and autosave store, and owned here until they close.
/// The presenter, panels and store are not owned and outlive the controller.
/// Main thread only.
class KZDocumentController : public QObject
{
    Q_OBJECT

public:
    using Factory = std::function<std::unique_ptr<KZDocument>(const QString &type)>;
    using DocumentsCompletion = std::function<void(const std::vector<KZDocument *> &documents)>;
    using OpenCompletion =
        std::function<void(KZDocument *document, const std::optional<KZError> &error)>;

    /// `types`: what files open as, by extension; the first is the default type.
    KZDocumentController(Factory factory, std::vector<KZFileTypeFilter> types,
                         QObject *parent = nullptr);
    ~KZDocumentController() override;

    void setPresenter(KZDocumentPresenter *presenter) { _presenter = presenter; }
    void setPanels(KZDocumentPanels *panels) { _panels = panels; }
    void setAutosaveStore(KZAutosaveStore *store) { _autosaveStore = store; }

    const std::vector<std::unique_ptr<KZDocument>> &documents() const { return _documents; }
    /// The open document of the file, or null.
    KZDocument *documentForURL(const QString &path) const;
    /// The type a file opens as, by its extension: the default type for any other.
    QString typeForContentsOfURL(const QString &path) const;
    virtual QString defaultType() const;

    /// Opens the file, or finds it open, or waits for it while it opens. No
    /// document and no error: the user declined (the raw text of a bad file, say).
    void openDocumentWithContentsOfURL(const QString &path, OpenCompletion done);
    KZDocument *openUntitledDocumentOfType(const QString &type);
    /// Runs the open panel and opens each file chosen; errors are shown.
    void openDocument(DocumentsCompletion done = {});
    /// Offers back what a run that died left unsaved: the documents come back
    /// edited, with their files. Declined for now, the offer comes again at
    /// the next start; discarded, it is gone.
    void reopenAutosavedDocuments(DocumentsCompletion done = {});

    void addDocument(std::unique_ptr<KZDocument> document);

    /// The blank document is the untitled one made while no other was open:
    /// the first file opened takes its place unless it was edited, has a
    /// file, or is of another class. On by default.
    bool autoCloseBlankDocument() const { return _autoCloseBlankDocument; }
    void setAutoCloseBlankDocument(bool autoClose) { _autoCloseBlankDocument = autoClose; }
    KZDocument *blankDocument() const { return _blankDocument; }

signals:
    void documentAdded(KZDocument *document);
    void documentRemoved(KZDocument *document);
    /// `opened` takes the place of the blank document, which closes next:
    /// its window may stand where the blank one stood.
    void blankDocumentReplaced(KZDocument *blank, KZDocument *opened);

private:
    /// A document still reading its file, and the later asks for the same
    /// file, which get what the first gets. They go with the controller,
    /// which waits for a read running aside.
    struct Opening
    {
        std::unique_ptr<KZDocument> document;
        std::vector<OpenCompletion> waiting;
    };

    std::unique_ptr<KZDocument> makeDocument(const QString &type) const;
    void removeDocument(KZDocument *document);
    Opening takeOpening(KZDocument *document);
    void closeBlankDocumentFor(KZDocument *opened);
    void reopenRecords(std::vector<KZAutosaveStore::Record> records, DocumentsCompletion done);

    Factory _factory;
    std::vector<KZFileTypeFilter> _types;
    std::vector<std::unique_ptr<KZDocument>> _documents;
    std::vector<Opening> _opening; // in the order asked
    KZDocumentPresenter *_presenter = nullptr;
    KZDocumentPanels *_panels = nullptr;
    KZAutosaveStore *_autosaveStore = nullptr;
    bool _autoCloseBlankDocument = true;
    QPointer<KZDocument> _blankDocument;
};
