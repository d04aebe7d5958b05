#include "DocumentScene.h"

#include "document/ADDocumentDefinitions.h"
#include "model/ADUndoManager.h"
#include "preferences/ADPreferences.h"
#include "preferences/KZUserDefaults.h"
#include "shared/KZExtendedAttributes.h"
#include "storage/SafeFileWriter.h"
#include "support/Corpus.h"
#include "support/UnwritableFolder.h"
#include "support/ValueBuilders.h"

#include <QDir>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QThread>

#include <gtest/gtest.h>

#include <iostream>
#include <memory>

#include <sys/stat.h>

namespace {

PlistValue sample()
{
    return dictionaryOf({{"a", PlistValue(1)}, {"b", str("two")}});
}

PlistValue readFile(const QString &path, ADPlistFormat *format = nullptr)
{
    return ADPlistObject::readPlistFromFile(path, false, format, nullptr);
}

/// Locks the scene's folder for a table row that asks for it; false, with a
/// note, where this system cannot, and the row is skipped.
bool lockFolderFor(bool asked, const char *row, const Scene &scene,
                   std::unique_ptr<UnwritableFolder> &locked)
{
    if (!asked)
        return true;
    locked = std::make_unique<UnwritableFolder>(scene.folder.path());
    if (locked->holds())
        return true;
    std::cout << "[  SKIPPED ] " << row << ": no folder can be locked here\n";
    return false;
}

/// Definitions that know one identifier for every file.
class OneDefinition : public ADDocumentDefinitions
{
public:
    QString definitionIdentifierForFileAtPath(const QString &) override { return identifier; }
    ADStructureDefinition *structureDefinitionForIdentifier(const QString &) override
    {
        return nullptr;
    }
    QString identifier;
};

/// A preference domain that keeps what it is given, or refuses.
class DomainStandIn : public KZUserPreferences
{
public:
    PlistValue readPropertyList(std::optional<KZError> *) override
    {
        return stored.kz_copyMutableContainers();
    }
    std::optional<KZError> writePropertyList(const PlistValue &plist) override
    {
        if (refuse)
            return KZError(KZErrorDomain, 1, QStringLiteral("the domain refused"));
        stored = plist;
        return std::nullopt;
    }
    PlistValue stored = dictionaryOf({{"domain", PlistValue(true)}});
    bool refuse = false;
};

class ADPlistDocumentSavingTest : public testing::Test
{
protected:
    ADPlistDocumentSavingTest() { _defaults.setBool(false, ADDocumentShouldAutoSaveKey); }

    std::optional<KZError> save(Scene &scene)
    {
        std::optional<KZError> result = KZError(KZErrorDomain, -1);
        scene.document.saveDocument([&result](const std::optional<KZError> &e) { result = e; });
        return result;
    }
    std::optional<KZError> saveAs(Scene &scene, const QString &path, qsizetype filter,
                                  KZSaveOperation operation = KZSaveOperation::SaveAs)
    {
        scene.panels.willChoose(path, filter);
        std::optional<KZError> result = KZError(KZErrorDomain, -1);
        const auto done = [&result](const std::optional<KZError> &e) { result = e; };
        if (operation == KZSaveOperation::SaveTo)
            scene.document.saveDocumentTo(done);
        else
            scene.document.saveDocumentAs(done);
        return result;
    }

    QTemporaryDir _settings;
    KZUserDefaults _defaults{_settings.filePath(QStringLiteral("settings.plist"))};
    KZNotificationCenter _center;
    ADPreferences _prefs{_defaults, _center};
};

TEST_F(ADPlistDocumentSavingTest, SavesBothSidesAfterSyncingThem)
{
    struct Row
    {
        const char *name;
        bool autoSync;
        void (*edit)(Scene &);
    };
    const Row rows[] = {
        {"TreeEdit", true, [](Scene &s) { s.editTree("a", PlistValue(5)); }},
        {"TreeEditNotInTheText", false, [](Scene &s) { s.editTree("a", PlistValue(5)); }},
        {"TextEdit", true,
         [](Scene &s) {
             s.typeOver(QStringLiteral("<integer>1<"), QStringLiteral("<integer>5<"));
         }},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        _defaults.setBool(row.autoSync, PlistDocumentAutoSyncTextKey);
        Scene scene(_prefs);
        scene.open(sample(), ADPlistFormatXML);
        row.edit(scene);
        ASSERT_TRUE(scene.document.isDocumentEdited());

        ASSERT_FALSE(save(scene));
        const PlistValue expected = dictionaryOf({{"a", PlistValue(5)}, {"b", str("two")}});
        EXPECT_TRUE(readFile(scene.path).isIdenticalTo(expected));
        EXPECT_EQ(scene.text.currentText(), textOf(expected));
        EXPECT_EQ(scene.document.editMode(), ADEditModeNone);
        EXPECT_FALSE(scene.document.isDocumentEdited());
        scene.document.checkForChangedFile();
        EXPECT_TRUE(scene.presenter.asked.empty()) << "the program's own save is no change";
    }
}

// Nothing is written and nothing is asked about the format: the text stays as typed.
TEST_F(ADPlistDocumentSavingTest, ATextThatDoesNotParseIsNotSaved)
{
    struct Row
    {
        const char *name;
        qsizetype filter; // -1 the document's own file, else the save panel's type
    };
    const Row rows[] = {{"Save", -1}, {"SaveAsJson", 1}, {"SaveAsPropertyList", 0}};
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        Scene scene(_prefs);
        scene.open(sample(), ADPlistFormatXML);
        const QByteArray old = fileBytes(scene.path);
        scene.typeOver(QStringLiteral("</dict>"), QStringLiteral("</array>"));
        scene.presenter.willAnswer(QStringLiteral("OK"));
        const QString other = scene.folder.filePath(QStringLiteral("other"));

        const std::optional<KZError> error =
            row.filter < 0 ? save(scene) : saveAs(scene, other, row.filter);
        ASSERT_TRUE(error);
        EXPECT_TRUE(error->is(ADErrorDomain, ADParseError));
        EXPECT_TRUE(scene.presenter.scriptDone());
        EXPECT_EQ(scene.presenter.asked.back().title, QStringLiteral("Parse error"));
        EXPECT_TRUE(
            scene.presenter.asked.back().informativeText.startsWith(QStringLiteral("line ")));
        EXPECT_EQ(fileBytes(scene.path), old);
        EXPECT_FALSE(QFileInfo::exists(other));
        EXPECT_EQ(scene.document.editMode(), ADEditModeText);
        EXPECT_EQ(scene.document.plistFormat(), ADPlistFormatXML);
        EXPECT_EQ(scene.text.currentText(), scene.lastTyped);
        EXPECT_TRUE(scene.document.isDocumentEdited());
    }
}

// The type chosen in the save panel decides the file's format.
TEST_F(ADPlistDocumentSavingTest, TheTypeChosenSettlesTheFormat)
{
    const PlistValue withDate = dictionaryOf({{"when", PlistValue::date(0)}, {"n", PlistValue(1)}});
    struct Row
    {
        const char *name;
        PlistValue plist;
        ADPlistFormat format;
        qsizetype filter; // 0 property list, 1 JSON, 2 compact JSON
        KZSaveOperation operation;
        QStringList answers;
        bool saved;
        ADPlistFormat fileFormat;
        ADPlistFormat documentFormat;
    };
    const Row rows[] = {
        {"JsonWithADateConverted",
         withDate,
         ADPlistFormatXML,
         1,
         KZSaveOperation::SaveAs,
         {QStringLiteral("Convert")},
         true,
         ADPlistFormatJSON,
         ADPlistFormatJSON},
        {"JsonWithADateDeclined",
         withDate,
         ADPlistFormatXML,
         1,
         KZSaveOperation::SaveAs,
         {QStringLiteral("Cancel"), QStringLiteral("Cancel")},
         false,
         ADPlistFormatUnknown,
         ADPlistFormatXML},
        {"JsonAsPropertyList",
         dictionaryOf({{"n", PlistValue(1)}}),
         ADPlistFormatJSON,
         0,
         KZSaveOperation::SaveAs,
         {},
         true,
         ADPlistFormatXML,
         ADPlistFormatXML},
        {"BinaryKeepsItsFormat",
         sample(),
         ADPlistFormatBinary,
         0,
         KZSaveOperation::SaveAs,
         {},
         true,
         ADPlistFormatBinary,
         ADPlistFormatBinary},
        {"SaveToJsonLeavesTheDocument",
         arrayOf({arrayOf({})}),
         ADPlistFormatXML,
         1,
         KZSaveOperation::SaveTo,
         {},
         true,
         ADPlistFormatJSON,
         ADPlistFormatXML},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        Scene scene(_prefs);
        scene.open(row.plist, row.format);
        for (const QString &answer : row.answers)
            scene.presenter.willAnswer(answer);
        const QString target = scene.folder.filePath(QStringLiteral("saved"));

        const std::optional<KZError> error = saveAs(scene, target, row.filter, row.operation);
        EXPECT_EQ(!error, row.saved);
        EXPECT_TRUE(scene.presenter.scriptDone());
        EXPECT_EQ(scene.document.plistFormat(), row.documentFormat);
        ADPlistFormat fileFormat = ADPlistFormatUnknown;
        EXPECT_EQ(readFile(target, &fileFormat).isNone(), !row.saved);
        EXPECT_EQ(fileFormat, row.fileFormat);
        const QString expectedURL =
            row.saved && row.operation == KZSaveOperation::SaveAs ? target : scene.path;
        EXPECT_EQ(scene.document.fileURL(), expectedURL);
    }
}

TEST_F(ADPlistDocumentSavingTest, JsonIsSavedInTheFormChosen)
{
    Scene scene(_prefs);
    scene.open(dictionaryOf({{"a", arrayOf({PlistValue(1)})}}), ADPlistFormatJSON);
    const QString compact = scene.folder.filePath(QStringLiteral("compact.json"));
    ASSERT_FALSE(saveAs(scene, compact, 2));
    EXPECT_EQ(fileBytes(compact), QByteArray("{\"a\":[1]}"));
    EXPECT_EQ(scene.panels.requests.back().selectedFilter, 1) << "readable unless told";

    const QString readable = scene.folder.filePath(QStringLiteral("readable.json"));
    ASSERT_FALSE(saveAs(scene, readable, 1));
    EXPECT_GT(fileBytes(readable).count('\n'), 1);
}

// Every failure leaves the old file whole and the document with its edits.
TEST_F(ADPlistDocumentSavingTest, AFailedSaveLosesNothing)
{
    struct Row
    {
        const char *name;
        bool lockFolder;
        qint64 faultAfter;
    };
    const Row rows[] = {
        {"UnwritableFolder", true, -1},
        {"WriteFailingHalfway", false, 40},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        Scene scene(_prefs);
        scene.open(sample(), ADPlistFormatXML);
        const QByteArray old = fileBytes(scene.path);
        scene.editTree("a", PlistValue(5));
        std::unique_ptr<UnwritableFolder> locked;
        if (!lockFolderFor(row.lockFolder, row.name, scene, locked))
            continue;
        SafeFileWriter::injectFaultAfterBytes(row.faultAfter);
        scene.presenter.willAnswer(QStringLiteral("Cancel"));

        EXPECT_TRUE(save(scene));
        SafeFileWriter::injectFaultAfterBytes(-1);
        EXPECT_EQ(scene.presenter.asked.back().buttons,
                  (QStringList{QStringLiteral("Save As…"), QStringLiteral("Cancel")}));
        EXPECT_EQ(fileBytes(scene.path), old);
        EXPECT_TRUE(scene.document.isDocumentEdited());
        EXPECT_EQ(scene.document.plistRoot()->childForKey(QStringLiteral("a"))->plist().toInteger(),
                  5);
        EXPECT_TRUE(QDir(scene.folder.path()).entryList(QDir::Hidden | QDir::Files).size() == 1)
            << "no stray file";
    }
}

TEST_F(ADPlistDocumentSavingTest, AFailedSaveCanGoElsewhere)
{
    Scene scene(_prefs);
    scene.open(sample(), ADPlistFormatXML);
    scene.editTree("a", PlistValue(5));
    const UnwritableFolder locked(scene.folder.path());
    if (!locked.holds())
        GTEST_SKIP() << "no folder can be locked here";
    QTemporaryDir elsewhere;
    const QString other = elsewhere.filePath(QStringLiteral("other.plist"));
    scene.panels.willChoose(other);
    scene.presenter.willAnswer(QStringLiteral("Save As…"));

    EXPECT_TRUE(save(scene));
    EXPECT_EQ(scene.document.fileURL(), other);
    EXPECT_FALSE(scene.document.isDocumentEdited());
    EXPECT_EQ(readFile(other).toDictionary().value(u"a").toInteger(), 5);
}

TEST_F(ADPlistDocumentSavingTest, KeepsTheFilesLinkModeAndAttributes)
{
    Scene scene(_prefs);
    scene.open(sample(), ADPlistFormatXML);
    const QString target = scene.path;
    const QString link = scene.folder.filePath(QStringLiteral("link.plist"));
    ASSERT_TRUE(QFile::link(target, link));
    ASSERT_EQ(::chmod(QFile::encodeName(target).constData(), 0640), 0);
    if (!KZExtendedAttributes::setValue(target, QStringLiteral("user.kept"), "yes"))
        GTEST_SKIP() << "no extended attributes here";
    OneDefinition definitions;
    definitions.identifier = QStringLiteral("com.example.launchd");

    Scene viaLink(_prefs);
    viaLink.document.setDefinitions(&definitions);
    viaLink.document.setFileURL(link);
    viaLink.document.readFromURL(link, ADPlistDocumentPropertyListType,
                                 [](const std::optional<KZError> &e) { ASSERT_FALSE(e); });
    viaLink.editTree("a", PlistValue(5));
    ASSERT_FALSE(save(viaLink));

    EXPECT_TRUE(QFileInfo(link).isSymLink());
    EXPECT_EQ(readFile(target).toDictionary().value(u"a").toInteger(), 5);
    struct stat info;
    ASSERT_EQ(::stat(QFile::encodeName(target).constData(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0640u);
    EXPECT_EQ(KZExtendedAttributes::value(target, QStringLiteral("user.kept")), QByteArray("yes"));
    EXPECT_EQ(KZExtendedAttributes::value(target, ADPlistTypeAttributeName),
              QByteArray("com.example.launchd"));
}

// --- the file changing underneath --------------------------------------------------------

TEST_F(ADPlistDocumentSavingTest, NeverOverwritesAFileChangedOnDiskUnasked)
{
    const QByteArray theirs =
        PlistSerialization::write(dictionaryOf({{"theirs", PlistValue(true)}}), ADPlistFormatXML)
            .data;
    for (const char *answer : {"Cancel", "Save Anyway"}) {
        SCOPED_TRACE(answer);
        Scene scene(_prefs);
        scene.open(sample(), ADPlistFormatXML);
        scene.editTree("a", PlistValue(5));
        writeFile(scene.path, theirs);
        scene.presenter.willAnswer(QString::fromUtf8(answer));

        const std::optional<KZError> error = save(scene);
        EXPECT_TRUE(scene.presenter.scriptDone());
        const bool replaced = QByteArray(answer) == "Save Anyway";
        EXPECT_EQ(!error, replaced);
        EXPECT_EQ(fileBytes(scene.path) == theirs, !replaced);
        EXPECT_EQ(scene.document.isDocumentEdited(), !replaced);
    }
}

TEST_F(ADPlistDocumentSavingTest, AsksOnceToRevertAFileChangedOnDisk)
{
    Scene scene(_prefs);
    scene.open(sample(), ADPlistFormatXML);
    scene.editTree("a", PlistValue(5));
    const PlistValue theirs = dictionaryOf({{"theirs", PlistValue(1)}});
    writeFile(scene.path, PlistSerialization::write(theirs, ADPlistFormatBinary).data);

    scene.presenter.willAnswer(QStringLiteral("Don't Revert"));
    scene.document.checkForChangedFile();
    scene.document.checkForChangedFile();
    EXPECT_EQ(scene.presenter.asked.size(), 1u) << "quiet until the file changes again";
    EXPECT_EQ(scene.presenter.asked[0].title, QStringLiteral("File changed on disk"));

    writeFile(scene.path, PlistSerialization::write(theirs, ADPlistFormatXML).data);
    scene.presenter.willAnswer(QStringLiteral("Revert"));
    scene.document.checkForChangedFile();
    EXPECT_TRUE(scene.presenter.scriptDone());
    EXPECT_TRUE(scene.tree().isIdenticalTo(theirs));
    EXPECT_EQ(scene.text.currentText(), textOf(theirs)) << "the text comes from the file too";
    EXPECT_FALSE(scene.document.isDocumentEdited());
    EXPECT_FALSE(scene.document.undoManager().canUndo());

    _defaults.setBool(false, AskRevertKey);
    writeFile(scene.path, PlistSerialization::write(sample(), ADPlistFormatXML).data);
    scene.document.checkForChangedFile();
    EXPECT_EQ(scene.presenter.asked.size(), 2u);
}

TEST_F(ADPlistDocumentSavingTest, RevertAsksOnlyWhenThereIsSomethingToLose)
{
    Scene scene(_prefs);
    scene.open(sample(), ADPlistFormatXML);
    scene.document.revertDocumentToSaved();
    EXPECT_TRUE(scene.presenter.asked.empty());

    scene.typeOver(QStringLiteral("<integer>1<"), QStringLiteral("<integer>5<"));
    scene.presenter.willAnswer(QStringLiteral("Cancel"));
    scene.document.revertDocumentToSaved();
    EXPECT_EQ(scene.document.editMode(), ADEditModeText);

    scene.presenter.willAnswer(QStringLiteral("Revert"));
    scene.document.revertDocumentToSaved();
    EXPECT_EQ(scene.document.editMode(), ADEditModeNone);
    EXPECT_EQ(scene.text.currentText(), textOf(sample()));
    EXPECT_FALSE(scene.document.isDocumentEdited());
}

// --- autosave -------------------------------------------------------------------------------

TEST_F(ADPlistDocumentSavingTest, AutosavesInPlaceOnlyWhatIsSafeToWriteUnasked)
{
    struct Row
    {
        const char *name;
        void (*edit)(Scene &);
        bool lockFolder;
        bool inPlace;
    };
    const auto editTree = [](Scene &s) { s.editTree("a", PlistValue(5)); };
    const Row rows[] = {
        {"TreeEdit", editTree, false, true},
        {"TextEditNotParsedYet",
         [](Scene &s) { s.typeOver(QStringLiteral("<integer>1<"), QStringLiteral("<integer>5<")); },
         false, false},
        {"FileChangedOnDisk",
         [](Scene &s) {
             s.editTree("a", PlistValue(5));
             writeFile(s.path, "changed elsewhere");
         },
         false, false},
        {"FileTheUserMayNotWrite", editTree, true, false},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        QTemporaryDir storeFolder;
        KZAutosaveStore store(storeFolder.path());
        Scene scene(_prefs);
        scene.document.setAutosavesInPlace(true);
        scene.document.setAutosaveStore(&store);
        scene.open(sample(), ADPlistFormatXML);
        row.edit(scene);
        const QByteArray before = fileBytes(scene.path);
        std::unique_ptr<UnwritableFolder> locked;
        if (!lockFolderFor(row.lockFolder, row.name, scene, locked))
            continue;

        std::optional<KZError> error = KZError(KZErrorDomain, -1);
        scene.document.autosaveWithImplicitCancellability(
            true, [&error](const std::optional<KZError> &e) { error = e; });

        EXPECT_FALSE(error) << "kept in the file or in the store";
        EXPECT_FALSE(scene.document.hasUnautosavedChanges());
        EXPECT_EQ(fileBytes(scene.path) != before, row.inPlace);
        EXPECT_EQ(scene.document.isDocumentEdited(), !row.inPlace);
        EXPECT_EQ(store.orphanedRecords().size(), 0u) << "this session's records are no orphans";
        EXPECT_EQ(QDir(storeFolder.path()).entryList(QDir::Dirs | QDir::NoDotAndDotDot).size(),
                  row.inPlace ? 0 : 1);
        EXPECT_TRUE(scene.presenter.asked.empty()) << "an autosave asks nothing";
    }
}

TEST_F(ADPlistDocumentSavingTest, AutosavesWhenTheDelayIsOver)
{
    QTemporaryDir storeFolder;
    KZAutosaveStore store(storeFolder.path());
    Scene scene(_prefs);
    scene.document.setAutosaveStore(&store);
    scene.document.setAutosavingDelay(0.05);
    scene.open(sample(), ADPlistFormatXML);
    scene.editTree("a", PlistValue(5));
    ASSERT_TRUE(scene.document.hasUnautosavedChanges());

    QElapsedTimer waited;
    waited.start();
    while (scene.document.hasUnautosavedChanges() && waited.elapsed() < 5000) {
        QThread::msleep(10);
        QCoreApplication::processEvents();
    }
    EXPECT_FALSE(scene.document.hasUnautosavedChanges());
    EXPECT_TRUE(scene.document.isDocumentEdited()) << "kept aside; the file is the user's to save";
    EXPECT_EQ(fileBytes(scene.path), PlistSerialization::write(sample(), ADPlistFormatXML).data);

    const auto kept = [&storeFolder] {
        QDirIterator contents(storeFolder.path(), {QStringLiteral("*.contents")}, QDir::Files,
                              QDirIterator::Subdirectories);
        return contents.hasNext();
    };
    EXPECT_TRUE(kept());
    ASSERT_FALSE(save(scene));
    EXPECT_FALSE(kept()) << "a saved document has nothing to recover";
}

// --- preference domains ------------------------------------------------------------------

TEST_F(ADPlistDocumentSavingTest, APreferenceDomainIsWrittenThroughTheSystemFirst)
{
    for (const bool refuse : {false, true}) {
        SCOPED_TRACE(refuse ? "Refused" : "Taken");
        auto domain = std::make_shared<DomainStandIn>();
        domain->refuse = refuse;
        Scene scene(_prefs);
        scene.document.setUserPreferencesLookup(
            [domain](const QString &) { return std::shared_ptr<KZUserPreferences>(domain); });
        scene.open(sample(), ADPlistFormatXML);
        EXPECT_TRUE(scene.tree().isIdenticalTo(dictionaryOf({{"domain", PlistValue(true)}})));
        EXPECT_EQ(scene.document.plistFormat(), ADPlistFormatBinary);
        const QByteArray old = fileBytes(scene.path);
        scene.editTree("domain", PlistValue(false));
        writeFile(scene.path, old + " "); // the system rewrote the file: no question for that
        if (refuse)
            scene.presenter.willAnswer(QStringLiteral("Cancel"));

        EXPECT_EQ(!save(scene), !refuse);
        EXPECT_TRUE(scene.presenter.scriptDone());
        EXPECT_EQ(domain->stored.toDictionary().value(u"domain").toBool(), refuse);
        EXPECT_EQ(fileBytes(scene.path) == old + " ", refuse) << "no file without the domain";
    }
}

// --- the corpus ------------------------------------------------------------------------------

TEST_F(ADPlistDocumentSavingTest, SavesTheCorpusBackUnchanged)
{
    _defaults.setBool(true, KeepKeyOrderKey);
    QStringList exact;
    for (const char *file : kPlatformLayoutFiles)
        exact << QString::fromUtf8(file);
    int saved = 0;
    for (const CorpusFile &row : corpusFiles()) {
        if (row.expect != u"valid")
            continue;
        SCOPED_TRACE(row.file.toStdString());
        Scene scene(_prefs);
        const QByteArray original = row.bytes();
        ASSERT_FALSE(scene.open(original));
        // Typed old-style values have no place in the old-style form written.
        const bool converts = ADPlistObject::firstIncompatibleValueForFormat(
                                  scene.tree(), scene.document.plistFormat())
                                  .has_value();
        if (converts)
            scene.presenter.willAnswer(QStringLiteral("Convert"));
        ASSERT_FALSE(save(scene));
        EXPECT_TRUE(scene.presenter.scriptDone());
        const QByteArray written = fileBytes(scene.path);
        if (exact.contains(row.file)) {
            EXPECT_EQ(written, original);
            continue;
        }
        const PlistValue expected =
            converts ? scene.tree()
                     : ADPlistObject::readPlistFromData(original, {}, nullptr, nullptr);
        EXPECT_TRUE(readFile(scene.path).isEqualToPlist(expected));
        ++saved;
    }
    EXPECT_GT(saved, 100);
}

} // namespace
