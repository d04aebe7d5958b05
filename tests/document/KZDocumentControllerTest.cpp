#include "document/KZDocumentController.h"

#include "DocumentScene.h"

#include "preferences/ADPreferences.h"
#include "preferences/KZUserDefaults.h"
#include "support/ValueBuilders.h"

#include <QDirIterator>
#include <QElapsedTimer>

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

namespace {

// Runs `work` in a child process that then ends without cleaning up, as a
// run of the program that crashed does.
void inADyingProcess(const std::function<void()> &work)
{
    const pid_t child = ::fork();
    if (child == 0) {
        work();
        ::_exit(0);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
}

class KZDocumentControllerTest : public testing::Test
{
protected:
    KZDocumentControllerTest() { _defaults.setBool(false, ADDocumentShouldAutoSaveKey); }

    std::unique_ptr<KZDocumentController> makeController(KZAutosaveStore *store)
    {
        auto controller = std::make_unique<KZDocumentController>(
            [this](const QString &) { return std::make_unique<ADPlistDocument>(_prefs); },
            ADPlistDocument::documentTypeFilters());
        controller->setPresenter(&_presenter);
        controller->setPanels(&_panels);
        controller->setAutosaveStore(store);
        return controller;
    }
    QString file(const char *name, const PlistValue &plist, ADPlistFormat format)
    {
        const QString path = _files.filePath(QString::fromUtf8(name));
        writeFile(path, PlistSerialization::write(plist, format).data);
        return path;
    }
    /// What a document with unsaved changes leaves in the store of a run that dies.
    void leaveAutosaved(std::vector<ADPlistDocument *> documents)
    {
        std::vector<KZAutosaveStore::Record> staged;
        for (ADPlistDocument *document : documents) {
            const QString contents =
                _files.filePath(QStringLiteral("staged-%1").arg(staged.size()));
            ASSERT_FALSE(document->writeToURL(contents, document->fileType(),
                                              KZSaveOperation::AutosaveElsewhere));
            staged.push_back({QString(), document->fileURL(), document->fileType(),
                              document->displayName(), document->fileModificationDate(), contents});
        }
        const QString folder = _store.path();
        inADyingProcess([&staged, folder] {
            KZAutosaveStore dying(folder);
            for (KZAutosaveStore::Record record : staged) {
                record.identifier = dying.newRecordIdentifier();
                std::optional<KZError> error;
                const std::optional<QString> path = dying.contentsPath(record.identifier, &error);
                if (!path || !QFile::copy(record.contentsPath, *path))
                    ::_exit(1);
                record.contentsPath = *path;
                if (dying.writeRecord(record))
                    ::_exit(1);
            }
            ::_exit(0); // its lock stays behind, held by no one
        });
    }
    std::vector<KZDocument *> reopen(KZDocumentController &controller)
    {
        std::vector<KZDocument *> reopened;
        controller.reopenAutosavedDocuments(
            [&reopened](const std::vector<KZDocument *> &documents) { reopened = documents; });
        return reopened;
    }

    QTemporaryDir _settings;
    KZUserDefaults _defaults{_settings.filePath(QStringLiteral("settings.plist"))};
    KZNotificationCenter _center;
    ADPreferences _prefs{_defaults, _center};
    ScriptedPresenter _presenter;
    ScriptedPanels _panels;
    QTemporaryDir _files;
    QTemporaryDir _store;
};

TEST_F(KZDocumentControllerTest, OpensEachFileOnceAsItsType)
{
    KZAutosaveStore store(_store.path());
    const std::unique_ptr<KZDocumentController> controller = makeController(&store);
    int added = 0;
    const auto token = KZNotificationCenter::defaultCenter().addObserver(
        KZDocumentControllerDidAddDocumentNotification, nullptr,
        [&added](const KZNotification &) { ++added; });
    struct Row
    {
        const char *name;
        ADPlistFormat format;
        const char *type;
    };
    const Row rows[] = {
        {"a.plist", ADPlistFormatBinary, "com.apple.property-list"},
        {"b.json", ADPlistFormatJSON, "public.json"},
        {"c.json", ADPlistFormatXML, "com.apple.property-list"}, // the contents decide
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        const QString path = file(row.name, dictionaryOf({{"k", str("v")}}), row.format);
        KZDocument *opened = nullptr;
        controller->openDocumentWithContentsOfURL(
            path, [&opened](KZDocument *document, const std::optional<KZError> &error) {
                EXPECT_FALSE(error);
                opened = document;
            });
        ASSERT_TRUE(opened);
        EXPECT_EQ(opened->fileURL(), path);
        EXPECT_EQ(opened->fileType(), QString::fromUtf8(row.type));
        EXPECT_EQ(static_cast<ADPlistDocument *>(opened)->plistFormat(), row.format);
        EXPECT_EQ(opened->presenter(), &_presenter);

        KZDocument *again = nullptr;
        controller->openDocumentWithContentsOfURL(
            path,
            [&again](KZDocument *document, const std::optional<KZError> &) { again = document; });
        EXPECT_EQ(again, opened);
    }
    EXPECT_EQ(controller->documents().size(), 3u);
    EXPECT_EQ(added, 3);
    KZNotificationCenter::defaultCenter().removeObserver(token);

    controller->documents().front()->close();
    EXPECT_EQ(controller->documents().size(), 2u);
}

// A big file opens aside; asking for it again meanwhile waits for the same
// document rather than open the file twice, where two windows could each
// save over the other.
TEST_F(KZDocumentControllerTest, ASecondAskWhileAFileIsReadGetsTheSameDocument)
{
    const std::unique_ptr<KZDocumentController> controller = makeController(nullptr);
    const QString path =
        file("big.plist", dictionaryOf({{"blob", PlistValue::data(QByteArray(13 << 20, 'x'))}}),
             ADPlistFormatXML);
    std::vector<KZDocument *> answers;
    for (int ask = 0; ask < 2; ++ask) {
        controller->openDocumentWithContentsOfURL(
            path, [&answers](KZDocument *document, const std::optional<KZError> &error) {
                EXPECT_FALSE(error);
                answers.push_back(document);
            });
    }
    EXPECT_TRUE(answers.empty()) << "the file is read aside";
    QElapsedTimer waited;
    waited.start();
    while (answers.size() < 2 && waited.elapsed() < 30'000)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 50);
    ASSERT_EQ(answers.size(), 2u);
    EXPECT_NE(answers[0], nullptr);
    EXPECT_EQ(answers[0], answers[1]);
    EXPECT_EQ(controller->documents().size(), 1u);
}

TEST_F(KZDocumentControllerTest, ReportsWhatCouldNotBeOpened)
{
    const std::unique_ptr<KZDocumentController> controller = makeController(nullptr);
    const QString bad = _files.filePath(QStringLiteral("bad.plist"));
    writeFile(bad, "{ a = ");
    _panels.openPaths = {bad, _files.filePath(QStringLiteral("missing.plist"))};
    _presenter.willAnswer(QStringLiteral("Cancel")); // no raw text, thank you
    _presenter.willAnswer(QStringLiteral("OK"));     // the missing file's error

    std::vector<KZDocument *> opened{nullptr};
    controller->openDocument([&opened](const std::vector<KZDocument *> &d) { opened = d; });
    EXPECT_TRUE(opened.empty());
    EXPECT_TRUE(_presenter.scriptDone());
    EXPECT_TRUE(controller->documents().empty());
}

TEST_F(KZDocumentControllerTest, ReopensWhatADeadRunLeftUnsaved)
{
    const QString path =
        file("edited.plist", dictionaryOf({{"a", PlistValue(1)}}), ADPlistFormatXML);
    {
        Scene edited(_prefs);
        edited.document.setFileURL(path);
        edited.document.readFromURL(path, ADPlistDocumentPropertyListType,
                                    [](const std::optional<KZError> &e) { ASSERT_FALSE(e); });
        edited.editTree("a", PlistValue(2));
        Scene typed(_prefs);
        typed.typeOver(QStringLiteral("<dict/>"), QStringLiteral("<dict><key>half"));
        leaveAutosaved({&edited.document, &typed.document});
    }
    KZAutosaveStore store(_store.path());
    const std::unique_ptr<KZDocumentController> controller = makeController(&store);
    _presenter.willAnswer(QStringLiteral("Reopen"));

    const std::vector<KZDocument *> reopened = reopen(*controller);
    ASSERT_EQ(reopened.size(), 2u);
    EXPECT_TRUE(_presenter.asked[0].title.contains(QStringLiteral("edited.plist")));
    for (KZDocument *document : reopened) {
        auto *plist = static_cast<ADPlistDocument *>(document);
        EXPECT_TRUE(plist->isDocumentEdited()) << "the changes are not in any file yet";
        if (plist->fileURL().isEmpty()) {
            EXPECT_EQ(plist->editMode(), ADEditModeText);
            EXPECT_TRUE(plist->plistText().contains(QStringLiteral("<dict><key>half")));
            continue;
        }
        EXPECT_EQ(plist->fileURL(), path);
        EXPECT_EQ(plist->plistRoot()->plist().toDictionary().value(u"a").toInteger(), 2);
        std::optional<KZError> saved = KZError(KZErrorDomain, -1);
        plist->saveToURL(path, plist->fileType(), KZSaveOperation::Save,
                         [&saved](const std::optional<KZError> &e) { saved = e; });
        EXPECT_FALSE(saved);
        EXPECT_FALSE(plist->isDocumentEdited());
    }
    KZAutosaveStore nextRun(_store.path());
    EXPECT_TRUE(nextRun.orphanedRecords().empty()) << "a live run's records are not offered";
}

TEST_F(KZDocumentControllerTest, DeclinedRecoveryComesBackDiscardedDoesNot)
{
    {
        Scene typed(_prefs);
        typed.typeOver(QStringLiteral("<dict/>"), QStringLiteral("<dict><key>half"));
        leaveAutosaved({&typed.document});
    }
    for (const char *answer : {"Later", "Later", "Discard Changes"}) {
        SCOPED_TRACE(answer);
        KZAutosaveStore store(_store.path());
        const std::unique_ptr<KZDocumentController> controller = makeController(&store);
        _presenter.willAnswer(QString::fromUtf8(answer));
        EXPECT_TRUE(reopen(*controller).empty());
        EXPECT_TRUE(_presenter.scriptDone());
    }
    KZAutosaveStore store(_store.path());
    EXPECT_TRUE(store.orphanedRecords().empty());
    QDirIterator left(_store.path(), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    EXPECT_FALSE(left.hasNext()) << "the dead run's folder went with its records";
}

} // namespace
