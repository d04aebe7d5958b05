#include "KZDocumentController.h"

#include "KZDocumentPresenter.h"

#include "shared/KZLocalizedString.h"
#include "shared/KZNotificationCenter.h"

#include <QDir>
#include <QFileInfo>
#include <QPointer>

#include <algorithm>
#include <typeinfo>

KZDocumentController::KZDocumentController(Factory factory, std::vector<KZFileTypeFilter> types,
                                           QObject *parent)
    : QObject(parent), _factory(std::move(factory)), _types(std::move(types))
{
    Q_ASSERT(!_types.empty());
}

KZDocumentController::~KZDocumentController() = default;

KZDocument *KZDocumentController::documentForURL(const QString &path) const
{
    const QString absolute = QFileInfo(path).absoluteFilePath();
    for (const std::unique_ptr<KZDocument> &document : _documents) {
        if (!document->fileURL().isEmpty() &&
            QFileInfo(document->fileURL()).absoluteFilePath() == absolute)
            return document.get();
    }
    return nullptr;
}

QString KZDocumentController::typeForContentsOfURL(const QString &path) const
{
    const QString suffix = QFileInfo(path).suffix();
    for (const KZFileTypeFilter &type : _types) {
        if (type.extensions.contains(suffix, Qt::CaseInsensitive))
            return type.type;
    }
    return defaultType();
}

QString KZDocumentController::defaultType() const
{
    return _types.front().type;
}

void KZDocumentController::openDocumentWithContentsOfURL(const QString &path, OpenCompletion done)
{
    const QString absolute = QFileInfo(path).absoluteFilePath();
    if (KZDocument *open = documentForURL(absolute)) {
        done(open, std::nullopt);
        return;
    }
    // A second ask while the file is read waits for the same document, never opens it twice.
    for (Opening &opening : _opening) {
        if (opening.document->fileURL() == absolute) {
            opening.waiting.push_back(std::move(done));
            return;
        }
    }
    const QString type = typeForContentsOfURL(absolute);
    _opening.push_back({makeDocument(type), {std::move(done)}});
    KZDocument *document = _opening.back().document.get();
    document->setFileURL(absolute);
    document->setFileType(type);
    document->readFromURL(
        absolute, type,
        [self = QPointer(this), document, absolute](const std::optional<KZError> &error) {
            if (!self) // the document went with the controller, and its asks unanswered
                return;
            Opening opened = self->takeOpening(document);
            const auto answer = [&opened](KZDocument *result, const std::optional<KZError> &e) {
                for (const OpenCompletion &waiting : opened.waiting)
                    waiting(result, e);
            };
            if (error) {
                // Perhaps reported from within the document: it goes later.
                opened.document.release()->deleteLater();
                const bool declined = error->is(KZErrorDomain, KZUserCancelledError);
                answer(nullptr, declined ? std::nullopt : error);
                return;
            }
            opened.document->setFileModificationDate(KZFileStamp::ofFile(absolute));
            KZDocument *added = opened.document.get();
            self->addDocument(std::move(opened.document));
            self->closeBlankDocumentFor(added);
            answer(added, std::nullopt);
        });
}

KZDocumentController::Opening KZDocumentController::takeOpening(KZDocument *document)
{
    const auto found =
        std::find_if(_opening.begin(), _opening.end(), [document](const Opening &opening) {
            return opening.document.get() == document;
        });
    Q_ASSERT(found != _opening.end());
    Opening taken = std::move(*found);
    _opening.erase(found);
    return taken;
}

KZDocument *KZDocumentController::openUntitledDocumentOfType(const QString &type)
{
    std::unique_ptr<KZDocument> document = makeDocument(type);
    document->setFileType(type);
    KZDocument *added = document.get();
    addDocument(std::move(document));
    return added;
}

void KZDocumentController::openDocument(DocumentsCompletion done)
{
    if (!_panels) {
        if (done)
            done({});
        return;
    }
    const KZDocument *current = _documents.empty() ? nullptr : _documents.back().get();
    const QString directory = current && !current->fileURL().isEmpty()
                                  ? QFileInfo(current->fileURL()).absolutePath()
                                  : QDir::homePath();
    std::vector<KZFileTypeFilter> types; // one entry a type: the forms of one type open alike
    for (const KZFileTypeFilter &type : _types) {
        if (std::none_of(types.begin(), types.end(),
                         [&type](const KZFileTypeFilter &t) { return t.type == type.type; }))
            types.push_back(type);
    }
    _panels->runOpenPanel({directory, types}, [self = QPointer(this),
                                               done = std::move(done)](const QStringList &paths) {
        auto opened = std::make_shared<std::vector<KZDocument *>>();
        auto pending = std::make_shared<qsizetype>(paths.size());
        const auto finishOne = [self, opened, pending, done](KZDocument *document,
                                                             const std::optional<KZError> &error) {
            if (document)
                opened->push_back(document);
            if (error && self)
                KZDocumentPresenter::presentError(self->_presenter, *error, {});
            if (--*pending == 0 && done)
                done(*opened);
        };
        if (paths.isEmpty() || !self) {
            if (done)
                done({});
            return;
        }
        for (const QString &path : paths)
            self->openDocumentWithContentsOfURL(path, finishOne);
    });
}

void KZDocumentController::reopenAutosavedDocuments(DocumentsCompletion done)
{
    std::vector<KZAutosaveStore::Record> records =
        _autosaveStore ? _autosaveStore->orphanedRecords() : std::vector<KZAutosaveStore::Record>();
    if (records.empty()) {
        if (done)
            done({});
        return;
    }
    QStringList names;
    for (const KZAutosaveStore::Record &record : records)
        names << record.displayName;
    const KZQuestion question{
        KZLocalizedStringWithFormat(
            7117,
            QStringLiteral("These documents had unsaved changes when the program last ended: %@."),
            {names.join(QStringLiteral(", "))}),
        KZLocalizedStringWithID(7118,
                                QStringLiteral("Do you want to reopen them with their changes?")),
        {KZLocalizedStringWithID(7119, QStringLiteral("Reopen")),
         KZLocalizedStringWithID(7120, QStringLiteral("Discard Changes")),
         KZLocalizedStringWithID(7124, QStringLiteral("Later"))},
        2};
    KZDocumentPresenter::askOrDecline(
        _presenter, question,
        [self = QPointer(this), records = std::move(records), done = std::move(done)](int button) {
            if (!self || button == 2) {
                if (done)
                    done({});
                return;
            }
            if (button == 0) {
                self->reopenRecords(records, done);
                return;
            }
            for (const KZAutosaveStore::Record &record : records)
                self->_autosaveStore->discardRecord(record);
            if (done)
                done({});
        });
}

// A record that cannot be read again stays in this session's store: the
// next start offers it once more.
void KZDocumentController::reopenRecords(std::vector<KZAutosaveStore::Record> records,
                                         DocumentsCompletion done)
{
    auto reopened = std::make_shared<std::vector<KZDocument *>>();
    auto pending = std::make_shared<size_t>(records.size());
    for (KZAutosaveStore::Record &record : records) {
        const auto finishOne = [this, reopened, pending, done](KZDocument *document) {
            if (document)
                reopened->push_back(document);
            if (--*pending == 0 && done)
                done(*reopened);
        };
        if (std::optional<KZError> error = _autosaveStore->adoptRecord(record)) {
            KZDocumentPresenter::presentError(_presenter, *error, {});
            finishOne(nullptr);
            continue;
        }
        auto made = std::make_shared<std::unique_ptr<KZDocument>>(makeDocument(record.fileType));
        (*made)->restoreAutosavedRecord(
            record, [self = QPointer(this), made, finishOne](const std::optional<KZError> &error) {
                if (!self || error) {
                    if (self)
                        KZDocumentPresenter::presentError(self->_presenter, *error, {});
                    finishOne(nullptr);
                    return;
                }
                KZDocument *document = made->get();
                self->addDocument(std::move(*made));
                finishOne(document);
            });
    }
}

void KZDocumentController::addDocument(std::unique_ptr<KZDocument> document)
{
    KZDocument *added = document.get();
    if (_autoCloseBlankDocument && _documents.empty() && added->fileURL().isEmpty())
        _blankDocument = added;
    connect(added, &KZDocument::closed, this, [this, added] { removeDocument(added); });
    _documents.push_back(std::move(document));
    emit documentAdded(added);
    KZNotificationCenter::defaultCenter().postNotification(
        KZDocumentControllerDidAddDocumentNotification, added);
}

std::unique_ptr<KZDocument> KZDocumentController::makeDocument(const QString &type) const
{
    std::unique_ptr<KZDocument> document = _factory(type);
    document->setPresenter(_presenter);
    document->setPanels(_panels);
    document->setAutosaveStore(_autosaveStore);
    return document;
}

// The document may still be running the code that closed it: it goes later.
void KZDocumentController::removeDocument(KZDocument *document)
{
    const auto found = std::find_if(_documents.begin(), _documents.end(),
                                    [document](const auto &d) { return d.get() == document; });
    if (found == _documents.end())
        return;
    _blankDocument = nullptr;
    found->release()->deleteLater();
    _documents.erase(found);
    emit documentRemoved(document);
    KZNotificationCenter::defaultCenter().postNotification(
        KZDocumentControllerDidRemoveDocumentNotification, document);
}

void KZDocumentController::closeBlankDocumentFor(KZDocument *opened)
{
    if (!_autoCloseBlankDocument || _documents.size() < 2 || !_blankDocument)
        return;
    KZDocument *blank = _blankDocument;
    _blankDocument = nullptr;
    if (blank->isDocumentEdited() || !blank->fileURL().isEmpty() ||
        typeid(*blank) != typeid(*opened))
        return;
    emit blankDocumentReplaced(blank, opened);
    blank->close();
}
