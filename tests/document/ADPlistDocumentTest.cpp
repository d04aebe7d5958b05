#include "document/ADPlistDocument.h"

#include "DocumentScene.h"
#include "document/ADPlainTextSide.h"
#include "model/ADUndoManager.h"
#include "preferences/ADPreferences.h"
#include "preferences/KZUserDefaults.h"
#include "storage/PlistSerialization.h"

#include "support/ValueBuilders.h"

#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QUndoStack>

#include <gtest/gtest.h>

namespace {

PlistValue sample()
{
    return dictionaryOf({{"a", PlistValue(1)}, {"b", str("two")}});
}

class ADPlistDocumentTest : public testing::Test
{
protected:
    QTemporaryDir _settings;
    KZUserDefaults _defaults{_settings.filePath(QStringLiteral("settings.plist"))};
    KZNotificationCenter _center;
    ADPreferences _prefs{_defaults, _center};
};

// --- the sync protocol ---------------------------------------------------------------

enum class TextAfter
{
    FromTree, // made again from the tree
    AsBefore,
    AsTyped,
    Empty,
};

struct ProtocolRow
{
    const char *name;
    ADPlistFormat format;
    bool autoSync;
    void (*act)(Scene &);
    ADEditMode mode;
    PlistValue (*treeAfter)();
    TextAfter textAfter;
};

PlistValue edited()
{
    return dictionaryOf({{"a", PlistValue(2)}, {"b", str("two")}});
}

PlistValue typed()
{
    return dictionaryOf({{"a", PlistValue(5)}, {"b", str("two")}});
}

void editTree(Scene &scene)
{
    scene.editTree("a", PlistValue(2));
}

void typeText(Scene &scene)
{
    scene.typeOver(QStringLiteral("<integer>1<"), QStringLiteral("<integer>5<"));
}

const ProtocolRow kProtocol[] = {
    {"TreeEditedWithAutoSync", ADPlistFormatXML, true, editTree, ADEditModeNone, edited,
     TextAfter::FromTree},
    {"TreeEditedWithoutAutoSync", ADPlistFormatXML, false, editTree, ADEditModeOutline, edited,
     TextAfter::AsBefore},
    {"TextEdited", ADPlistFormatXML, true, typeText, ADEditModeText, sample, TextAfter::AsTyped},
    {"SyncOfTextThatParses", ADPlistFormatXML, true,
     [](Scene &scene) {
         typeText(scene);
         scene.document.syncPlist();
         Scene::closeGroup();
     },
     ADEditModeNone, typed, TextAfter::AsTyped},
    {"SyncOfTextThatDoesNotParse", ADPlistFormatXML, true,
     [](Scene &scene) {
         scene.typeOver(QStringLiteral("</dict>"), QStringLiteral("</array>"));
         scene.presenter.willAnswer(QStringLiteral("OK"));
         scene.document.syncPlist();
         Scene::closeGroup();
     },
     ADEditModeText, sample, TextAfter::AsTyped},
    {"SyncOfTheTree", ADPlistFormatXML, false,
     [](Scene &scene) {
         editTree(scene);
         scene.document.syncPlist();
         Scene::closeGroup();
     },
     ADEditModeNone, edited, TextAfter::FromTree},
    {"BinaryTreeEditedWithAutoSync", ADPlistFormatBinary, true, editTree, ADEditModeNone, edited,
     TextAfter::Empty},
    {"AutoSyncSwitchedOnWithTreeEdits", ADPlistFormatXML, false,
     [](Scene &scene) {
         editTree(scene);
         scene.document.setAutoSyncText(true);
         Scene::closeGroup();
     },
     ADEditModeNone, edited, TextAfter::FromTree},
};

TEST_F(ADPlistDocumentTest, FollowsTheSyncProtocol)
{
    for (const ProtocolRow &row : kProtocol) {
        SCOPED_TRACE(row.name);
        _defaults.setBool(row.autoSync, PlistDocumentAutoSyncTextKey);
        Scene scene(_prefs);
        scene.open(sample(), row.format);
        const QString before = scene.text.currentText();
        row.act(scene);
        const QString after = scene.text.currentText();

        EXPECT_EQ(scene.document.editMode(), row.mode);
        EXPECT_TRUE(scene.tree().isIdenticalTo(row.treeAfter()));
        switch (row.textAfter) {
        case TextAfter::FromTree:
            EXPECT_EQ(after, textOf(scene.tree(), row.format));
            break;
        case TextAfter::AsBefore:
            EXPECT_EQ(after, before);
            break;
        case TextAfter::AsTyped:
            EXPECT_EQ(after, scene.lastTyped);
            break;
        case TextAfter::Empty:
            EXPECT_TRUE(after.isEmpty());
            break;
        }
        EXPECT_TRUE(scene.presenter.scriptDone());
    }
}

TEST_F(ADPlistDocumentTest, OneUndoTakesBackATreeEditAndTheTextItWrote)
{
    Scene scene(_prefs);
    scene.open(sample(), ADPlistFormatXML);
    const QString before = scene.text.currentText();
    scene.editTree("a", PlistValue(2));
    const QString after = scene.text.currentText();
    ASSERT_NE(after, before);

    scene.document.undoManager().undo();
    EXPECT_TRUE(scene.tree().isIdenticalTo(sample()));
    EXPECT_EQ(scene.text.currentText(), before);
    EXPECT_EQ(scene.document.editMode(), ADEditModeNone);
    scene.document.undoManager().redo();
    EXPECT_TRUE(scene.tree().isIdenticalTo(edited()));
    EXPECT_EQ(scene.text.currentText(), after);
    EXPECT_FALSE(scene.document.undoManager().canRedo());
}

TEST_F(ADPlistDocumentTest, UndoOfASyncFromTheTextBringsBackTheTreeAndTheMode)
{
    Scene scene(_prefs);
    scene.open(sample(), ADPlistFormatXML);
    scene.typeOver(QStringLiteral("<integer>1<"), QStringLiteral("<integer>5<"));
    const QString typedText = scene.text.currentText();
    scene.document.syncPlist();
    Scene::closeGroup();
    ASSERT_TRUE(scene.tree().isIdenticalTo(typed()));
    EXPECT_EQ(scene.document.undoManager().undoActionName(), QStringLiteral("Sync Outline"));

    scene.document.undoManager().undo();
    EXPECT_TRUE(scene.tree().isIdenticalTo(sample()));
    EXPECT_EQ(scene.document.editMode(), ADEditModeText);
    EXPECT_EQ(scene.text.currentText(), typedText) << "the text is never rewritten by its own sync";
    scene.document.undoManager().undo();
    EXPECT_EQ(scene.text.currentText(), textOf(sample()));
    EXPECT_EQ(scene.document.editMode(), ADEditModeNone);
}

// The text keeps its failure until the user repairs it; the tree stays.
TEST_F(ADPlistDocumentTest, SyncFromTheTextSaysWhyItCannot)
{
    struct Row
    {
        const char *name;
        ADPlistFormat format;
        QString replaced;
        QString typed;
        QString message; // the start of it
    };
    const Row rows[] = {
        {"Empty", ADPlistFormatXML, QString(), QString(),
         QStringLiteral("The current text cannot be converted into a property list because it "
                        "is empty")},
        {"Unparsable", ADPlistFormatXML, QStringLiteral("</dict>"), QStringLiteral("</array>"),
         QStringLiteral("line ")},
        {"NotAscii", ADPlistFormatASCII, QStringLiteral("two"), QStringLiteral("zwé"),
         QStringLiteral("The current text cannot be encoded in the necessary text encoding "
                        "(ASCII)")},
        {"JsonSyntax", ADPlistFormatJSON, QStringLiteral("\"two\""), QStringLiteral("two"),
         QStringLiteral("line ")},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        Scene scene(_prefs);
        scene.open(sample(), row.format);
        const PlistValue before = scene.tree();
        if (row.replaced.isNull())
            scene.typeOver(scene.text.currentText(), QString());
        else
            scene.typeOver(row.replaced, row.typed);
        const QString typedText = scene.text.currentText();

        const QString message = scene.document.performSyncFromMode(ADEditModeText, false);
        EXPECT_TRUE(message.startsWith(row.message)) << message.toStdString();
        EXPECT_EQ(scene.document.editMode(), ADEditModeText);
        EXPECT_TRUE(scene.tree().isSameObject(before));
        EXPECT_EQ(scene.text.currentText(), typedText);
    }
}

// --- a file that does not parse ---------------------------------------------------------

TEST_F(ADPlistDocumentTest, OffersTheRawTextOfAFileThatDoesNotParse)
{
    struct Row
    {
        const char *name;
        QByteArray bytes;
        ADPlistFormat format;
        QString text;
    };
    const Row rows[] = {
        {"XmlWithASyntaxError", "<?xml version=\"1.0\"?>\n<plist><dict><key>a</key></plist>",
         ADPlistFormatXML,
         QStringLiteral("<?xml version=\"1.0\"?>\n<plist><dict><key>a</key></plist>")},
        {"JsonWithASyntaxError", "{\"a\": [1, 2}", ADPlistFormatJSON,
         QStringLiteral("{\"a\": [1, 2}")},
        // Text that is no XML is taken for JSON, whatever form it was meant in.
        {"OldStyleWithASyntaxError", "{ a = (1, ", ADPlistFormatJSON, QStringLiteral("{ a = (1, ")},
        {"NotUtf8", "{ a = \"\x8e\x9f\"; b = ", ADPlistFormatASCII,
         QStringLiteral("{ a = \"\u00e9\u00fc\"; b = ")},
        {"Empty", QByteArray(), ADPlistFormatJSON, QString()},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        Scene scene(_prefs);
        scene.presenter.willAnswer(QStringLiteral("Open"));
        ASSERT_FALSE(scene.open(row.bytes));

        ASSERT_EQ(scene.presenter.asked.size(), 1u);
        EXPECT_EQ(scene.presenter.asked[0].title, QStringLiteral("Error"));
        EXPECT_TRUE(scene.presenter.asked[0].informativeText.contains(scene.path))
            << "the reason names the file";
        EXPECT_EQ(scene.document.plistFormat(), row.format);
        EXPECT_EQ(scene.document.editMode(), ADEditModeText);
        EXPECT_EQ(scene.text.currentText(), row.text);
        EXPECT_EQ(scene.outline.textExposed, 1);
        EXPECT_TRUE(scene.tree().isIdenticalTo(dictionaryOf({})));
        EXPECT_FALSE(scene.document.isDocumentEdited());
        EXPECT_FALSE(scene.document.undoManager().canUndo());
    }
}

TEST_F(ADPlistDocumentTest, RepairedRawTextSyncsIntoTheOutline)
{
    Scene scene(_prefs);
    scene.presenter.willAnswer(QStringLiteral("Open"));
    ASSERT_FALSE(scene.open("<?xml version=\"1.0\"?>\n<plist><dict><key>a</key></plist>"));
    scene.typeOver(QStringLiteral("</key>"), QStringLiteral("</key><true/></dict>"));

    scene.document.syncPlist();
    EXPECT_EQ(scene.document.editMode(), ADEditModeNone);
    EXPECT_TRUE(scene.tree().isIdenticalTo(dictionaryOf({{"a", PlistValue(true)}})));
}

TEST_F(ADPlistDocumentTest, RawTextWaitsForATextSide)
{
    Scene scene(_prefs);
    scene.document.setTextSide(nullptr);
    scene.presenter.willAnswer(QStringLiteral("Open"));
    ASSERT_FALSE(scene.open("{\"a\": "));
    EXPECT_EQ(scene.document.plistText(), QStringLiteral("{\"a\": "));
    ADPlainTextSide later;
    scene.document.setTextSide(&later);
    EXPECT_EQ(later.currentText(), QStringLiteral("{\"a\": "));
    scene.document.setTextSide(nullptr);
}

TEST_F(ADPlistDocumentTest, AFileThatStaysUnopenedFailsItsOpening)
{
    struct Row
    {
        const char *name;
        QByteArray bytes;
        const char *answer;
        const char *title;
    };
    const Row rows[] = {
        {"DeclinedRawText", "{\"a\": ", "Cancel", "Error"},
        {"BinaryData", QByteArray("bplist00\x00\x01\x02", 11), "OK", "Error"},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        Scene scene(_prefs);
        scene.presenter.willAnswer(QString::fromUtf8(row.answer));
        const std::optional<KZError> error = scene.open(row.bytes);
        ASSERT_TRUE(error);
        EXPECT_TRUE(error->is(KZErrorDomain, KZUserCancelledError)) << "shown already";
        EXPECT_TRUE(scene.presenter.scriptDone());
    }

    Scene scene(_prefs);
    std::optional<KZError> error;
    scene.document.readFromURL(scene.folder.filePath(QStringLiteral("missing.plist")),
                               ADPlistDocumentPropertyListType,
                               [&error](const std::optional<KZError> &e) { error = e; });
    ASSERT_TRUE(error);
    EXPECT_FALSE(error->localizedDescription().isEmpty());
    EXPECT_TRUE(scene.presenter.asked.empty()) << "nothing to offer: the first error is the answer";
}

// --- formats --------------------------------------------------------------------------------

TEST_F(ADPlistDocumentTest, ChangesFormatAndAsksWhenValuesDoNotFit)
{
    const PlistValue withDate = dictionaryOf({{"when", PlistValue::date(0)}});
    struct Row
    {
        const char *name;
        PlistValue plist;
        ADPlistFormat to;
        QStringList answers;
        ADPlistFormat formatAfter;
        const char *typeAfter;
    };
    const Row rows[] = {
        {"FitsXmlToBinary",
         sample(),
         ADPlistFormatBinary,
         {},
         ADPlistFormatBinary,
         "com.apple.property-list"},
        {"FitsArrayToJson",
         arrayOf({arrayOf({})}),
         ADPlistFormatJSON,
         {},
         ADPlistFormatJSON,
         "public.json"},
        {"DateToJsonConverted",
         withDate,
         ADPlistFormatJSON,
         {QStringLiteral("Convert")},
         ADPlistFormatJSON,
         "public.json"},
        {"DateToJsonDeclined",
         withDate,
         ADPlistFormatJSON,
         {QStringLiteral("Cancel"), QStringLiteral("OK")},
         ADPlistFormatXML,
         "com.apple.property-list"},
        {"NumberToAscii",
         sample(),
         ADPlistFormatASCII,
         {QStringLiteral("Convert")},
         ADPlistFormatASCII,
         "com.apple.property-list"},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        Scene scene(_prefs);
        scene.open(row.plist, ADPlistFormatXML);
        for (const QString &answer : row.answers)
            scene.presenter.willAnswer(answer);

        scene.document.changePlistFormat(row.to);
        Scene::closeGroup();

        EXPECT_TRUE(scene.presenter.scriptDone());
        EXPECT_EQ(scene.document.plistFormat(), row.formatAfter);
        EXPECT_EQ(scene.document.fileType(), QString::fromUtf8(row.typeAfter));
        EXPECT_EQ(scene.document.editMode(), ADEditModeNone);
        const QString expectedText = row.formatAfter == ADPlistFormatBinary
                                         ? QString()
                                         : textOf(scene.tree(), row.formatAfter);
        EXPECT_EQ(scene.text.currentText(), expectedText);
        if (row.answers.size() == 2) {
            EXPECT_EQ(scene.presenter.asked.back().title, QStringLiteral("Conversion failed"));
        }
        if (row.formatAfter == ADPlistFormatXML)
            continue;
        scene.document.undoManager().undo();
        EXPECT_EQ(scene.document.plistFormat(), ADPlistFormatXML);
        EXPECT_TRUE(scene.tree().isIdenticalTo(row.plist)) << "undo takes the conversion back";
    }
}

TEST_F(ADPlistDocumentTest, ChangingFormatSyncsTextEditsFirst)
{
    Scene scene(_prefs);
    scene.open(sample(), ADPlistFormatXML);
    scene.typeOver(QStringLiteral("</dict>"), QStringLiteral("</array>"));
    scene.presenter.willAnswer(QStringLiteral("OK"));
    scene.document.changePlistFormat(ADPlistFormatJSON);
    EXPECT_EQ(scene.document.plistFormat(), ADPlistFormatXML) << "the text did not parse";
    EXPECT_EQ(scene.document.editMode(), ADEditModeText);

    scene.typeOver(QStringLiteral("</array>"), QStringLiteral("</dict>"));
    scene.typeOver(QStringLiteral("<integer>1<"), QStringLiteral("<integer>5<"));
    scene.presenter.willAnswer(QStringLiteral("Convert")); // a root holding scalars, asked for JSON
    scene.document.changePlistFormat(ADPlistFormatJSON);
    EXPECT_EQ(scene.document.plistFormat(), ADPlistFormatJSON);
    EXPECT_TRUE(scene.tree().isEqualToPlist(typed()));
}

TEST_F(ADPlistDocumentTest, JsonShowsInTheChosenFormWithoutAnEdit)
{
    Scene scene(_prefs);
    scene.open(dictionaryOf({{"a", arrayOf({PlistValue(1)})}}), ADPlistFormatJSON);
    _defaults.setBool(false, JSONDisplayHumanReadableKey);
    EXPECT_EQ(scene.text.currentText(), QStringLiteral("{\"a\":[1]}"));
    _defaults.setBool(true, JSONDisplayHumanReadableKey);
    EXPECT_EQ(scene.text.currentText(),
              textOf(scene.tree(), ADPlistFormatJSON)); // the writer's readable form
    EXPECT_NE(scene.text.currentText(), QStringLiteral("{\"a\":[1]}"));
    EXPECT_FALSE(scene.document.isDocumentEdited());
    EXPECT_FALSE(scene.document.undoManager().canUndo());
}

// A big tree's text is made aside so that the window shows first and an
// edit with auto sync does not wait for it: the side waits empty, a question
// about the text waits for it, and a tree edit meanwhile waits too, then
// leaves the text behind the tree as any tree edit does.
TEST_F(ADPlistDocumentTest, MakesABigTreesTextAsideAndEditsWaitForIt)
{
    PlistDictionary big = PlistDictionary::create();
    for (int i = 0; i < 30'000; ++i)
        big.insert(QStringLiteral("key %1").arg(i, 5, 10, QChar(u'0')), PlistValue(i)); // in order
    const QString bigText = textOf(big);
    for (const bool autoSync : {false, true}) {
        SCOPED_TRACE(autoSync);
        _defaults.setBool(autoSync, PlistDocumentAutoSyncTextKey);
        Scene scene(_prefs);
        scene.open(big, ADPlistFormatXML);
        EXPECT_TRUE(scene.text.currentText().isEmpty());
        EXPECT_EQ(scene.document.rangeOfString(QStringLiteral("key 00009"), 0, true).location,
                  bigText.indexOf(QStringLiteral("key 00009")));
        EXPECT_EQ(scene.text.currentText(), bigText);

        scene.document.revertDocumentToSaved();
        EXPECT_TRUE(scene.text.currentText().isEmpty()) << "a revert makes the text again";
        scene.editTree("key 00000", str("edited"));
        EXPECT_EQ(scene.document.editMode(), autoSync ? ADEditModeNone : ADEditModeOutline);
        scene.document.finishMakingText(); // with auto sync the new text is made aside too
        EXPECT_EQ(scene.text.currentText(), autoSync ? textOf(scene.tree()) : bigText);
        scene.document.undoManager().undo();
        Scene::closeGroup();
        scene.document.finishMakingText();
        EXPECT_TRUE(scene.tree().isIdenticalTo(big));
        EXPECT_EQ(scene.text.currentText(), bigText);
    }
}

// A big file is read on a worker, so the program stays live, with progress
// the user may cancel.
TEST_F(ADPlistDocumentTest, ReadsABigFileAsideAndCanBeCancelled)
{
    const PlistValue big = dictionaryOf({{"blob", PlistValue::data(QByteArray(13 << 20, 'x'))}});
    const QByteArray bytes = PlistSerialization::write(big, ADPlistFormatXML).data;
    ASSERT_GT(bytes.size(), 16 << 20);
    for (const bool cancel : {false, true}) {
        SCOPED_TRACE(cancel);
        Scene scene(_prefs);
        scene.path = scene.folder.filePath(QStringLiteral("big.plist"));
        writeFile(scene.path, bytes);
        scene.document.setFileURL(scene.path);
        std::optional<std::optional<KZError>> result;
        scene.document.readFromURL(scene.path, ADPlistDocumentPropertyListType,
                                   [&](const std::optional<KZError> &error) { result = error; });
        EXPECT_FALSE(result) << "the read goes on aside";
        std::optional<KZError> second;
        scene.document.readFromURL(scene.path, ADPlistDocumentPropertyListType,
                                   [&](const std::optional<KZError> &error) { second = error; });
        EXPECT_TRUE(second && second->is(KZErrorDomain, KZUserCancelledError))
            << "one read at a time";
        ASSERT_EQ(scene.presenter.progressTitles.size(), 1u);
        EXPECT_TRUE(scene.presenter.progressTitles.front().contains(u"big.plist"));
        if (cancel)
            scene.presenter.cancelProgress();
        QElapsedTimer waited;
        waited.start();
        while (!result && waited.elapsed() < 30'000)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 50);
        ASSERT_TRUE(result);
        EXPECT_EQ(scene.presenter.progressShown, 0) << "the progress went with the read";
        if (cancel) {
            EXPECT_TRUE(*result && (*result)->is(KZErrorDomain, KZUserCancelledError));
            continue;
        }
        EXPECT_FALSE(*result);
        EXPECT_TRUE(scene.tree().isIdenticalTo(big));
    }
}

TEST_F(ADPlistDocumentTest, MenuItemsFollowTheModeAndFormat)
{
    _defaults.setBool(false, PlistDocumentAutoSyncTextKey);
    Scene scene(_prefs);
    scene.open(sample(), ADPlistFormatXML);
    EXPECT_FALSE(scene.document.validate_syncPlist().enabled);
    scene.editTree("a", PlistValue(2));
    EXPECT_EQ(scene.document.validate_syncPlist().title, QStringLiteral("Sync Text"));
    EXPECT_TRUE(scene.document.validate_changePlistFormat(ADPlistFormatXML).checked);
    EXPECT_FALSE(scene.document.validate_changePlistFormat(ADPlistFormatJSON).checked);

    const int steps = scene.document.undoManager().undoStack()->count();
    scene.document.changeDefinition(QStringLiteral("com.example.info"));
    EXPECT_TRUE(
        scene.document.validate_changeDefinition(QStringLiteral("com.example.info")).checked);
    EXPECT_EQ(scene.outline.commits, 1) << "the edit in progress ends first";
    EXPECT_EQ(scene.document.undoManager().undoStack()->count(), steps)
        << "a definition is no edit";
}

} // namespace
