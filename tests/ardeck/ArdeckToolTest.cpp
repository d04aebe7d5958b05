#include "ArdeckTool.h"
#include "ArdeckOptions.h"

#include "shared/KZExtendedAttributes.h"
#include "shared/PlistArray.h"
#include "shared/PlistDictionary.h"
#include "storage/PlistSerialization.h"
#include "support/Corpus.h"
#include "support/ValueBuilders.h"
#include "support/ValueWalk.h"

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <cmath>

#include <gtest/gtest.h>

namespace {

struct ToolRun
{
    int status = -1;
    QByteArray out;
    QStringList errors;
};

ToolRun ardeck(const QStringList &arguments, const QByteArray &input = {})
{
    ToolRun run;
    ArdeckIO io{[input] { return input; }, [&run](const QByteArray &d) { run.out += d; },
                [&run](const QString &line) { run.errors << line; }};
    run.status = ArdeckTool(io).run(ArdeckOptions::parse(arguments));
    return run;
}

QByteArray fileBytes(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(bytes);
}

const QByteArray kSample = R"(<?xml version="1.0" encoding="UTF-8"?>
<plist version="1.0">
<dict>
	<key>zebra</key>
	<string>last in sort order, first in the file</string>
	<key>com.example.key</key>
	<dict>
		<key>list</key>
		<array>
			<integer>7</integer>
			<true/>
			<data>AAEC</data>
		</array>
	</dict>
	<key>Alpha</key>
	<real>1.5</real>
</dict>
</plist>
)";

class ArdeckToolTest : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(_dir.isValid());
        _sample = _dir.filePath(QStringLiteral("sample.plist"));
        writeFile(_sample, kSample);
    }
    QTemporaryDir _dir;
    QString _sample;
};

TEST_F(ArdeckToolTest, LintsEveryFileAndFailsIfAnyFails)
{
    const QString bad = _dir.filePath(QStringLiteral("bad.plist"));
    writeFile(bad, "{ \"unterminated");
    const ToolRun run = ardeck({"lint", _sample, bad});
    EXPECT_EQ(run.status, 1);
    const QStringList lines = QString::fromUtf8(run.out).split(u'\n', Qt::SkipEmptyParts);
    ASSERT_EQ(lines.size(), 2);
    EXPECT_EQ(lines[0], _sample + QStringLiteral(": OK"));
    EXPECT_TRUE(lines[1].startsWith(bad + QStringLiteral(": The file ") + bad))
        << qPrintable(lines[1]);
    EXPECT_EQ(ardeck({"lint", _sample}).status, 0);
    EXPECT_EQ(ardeck({"lint", "-"}, kSample).out, QByteArray("-: OK\n"));
}

TEST_F(ArdeckToolTest, ConvertsInPlaceAndKeepsKeyOrder)
{
    for (const char *format : {"binary", "xml"})
        ASSERT_EQ(ardeck({"convert", format, _sample}).status, 0) << format;
    const ToolRun ascii = ardeck({"convert", "ascii", _sample});
    EXPECT_EQ(ascii.status, 1) << "old-style text holds no numbers";
    ASSERT_EQ(ardeck({"convert", "ascii", "--coerce", _sample}).status, 0);
    const QStringList lines = QString::fromUtf8(ardeck({"print", _sample}).out).split(u'\n');
    EXPECT_TRUE(lines[1].startsWith(QStringLiteral("    zebra:")));
    EXPECT_TRUE(lines[2].startsWith(QStringLiteral("    com.example.key:")));
    EXPECT_EQ(lines.filter(QStringLiteral("Number")).size(), 0) << "numbers became strings";
}

TEST_F(ArdeckToolTest, ConvertsToOtherFilesAndStandardOutput)
{
    const QString out = _dir.filePath(QStringLiteral("out.bin"));
    ASSERT_EQ(ardeck({"convert", "binary", "-o", out, _sample}).status, 0);
    EXPECT_TRUE(fileBytes(out).startsWith("bplist00"));
    EXPECT_EQ(fileBytes(_sample), kSample) << "the input stays as it was";

    const ToolRun json = ardeck({"convert", "json", "-o", "-", "-"}, R"({"b":1,"a":[true,null]})");
    ASSERT_EQ(json.status, 0);
    EXPECT_EQ(json.out, QByteArray(R"({"b":1,"a":[true,null]})"));

    const ToolRun refused = ardeck({"convert", "xml", "-o", out, "-"}, R"({"a":null})");
    EXPECT_EQ(refused.status, 1);
    EXPECT_TRUE(fileBytes(out).startsWith("bplist00"))
        << "a refused value leaves the target untouched";
}

TEST_F(ArdeckToolTest, PrintsTheWholeValueWithTypes)
{
    const ToolRun run = ardeck({"print", _sample});
    ASSERT_EQ(run.status, 0);
    EXPECT_EQ(QString::fromUtf8(run.out),
              QStringLiteral("Root: Dictionary (3 items)\n"
                             "    zebra: String = \"last in sort order, first in the file\"\n"
                             "    com.example.key: Dictionary (1 item)\n"
                             "        list: Array (3 items)\n"
                             "            0: Number = 7\n"
                             "            1: Boolean = YES\n"
                             "            2: Data = <000102>\n"
                             "    Alpha: Number = 1.5\n"));
}

TEST_F(ArdeckToolTest, GetsValuesByKeyPath)
{
    EXPECT_EQ(ardeck({"get", _sample, "com\\.example\\.key.list.0"}).out, QByteArray("7\n"));
    EXPECT_EQ(ardeck({"get", _sample, "com\\.example\\.key.list.1"}).out, QByteArray("true\n"));
    EXPECT_EQ(ardeck({"get", _sample, "com\\.example\\.key.list.2"}).out, QByteArray("AAEC\n"));
    const ToolRun container = ardeck({"get", _sample, "com\\.example\\.key", "json"});
    EXPECT_EQ(container.status, 1) << "JSON holds no data";
    const ToolRun list = ardeck({"get", _sample, "com\\.example\\.key.list", "xml"});
    ASSERT_EQ(list.status, 0);
    const ReadResult back = PlistSerialization::read(list.out);
    ASSERT_TRUE(back);
    EXPECT_EQ(back.value.toArray().count(), 3);

    const ToolRun missing = ardeck({"get", _sample, "com.example.key"});
    EXPECT_EQ(missing.status, 1);
    ASSERT_EQ(missing.errors.size(), 1);
    EXPECT_TRUE(missing.errors[0].contains(QStringLiteral("the root has no \"com\"")))
        << qPrintable(missing.errors[0]);
    const ToolRun beyond = ardeck({"get", _sample, "Alpha.x"});
    EXPECT_TRUE(beyond.errors.value(0).contains(QStringLiteral("\"Alpha\" is a Number")));
}

TEST_F(ArdeckToolTest, RefusesUsageMistakes)
{
    for (const QStringList &args :
         {QStringList{}, QStringList{"frobnicate"}, QStringList{"convert", "yaml", "x"},
          QStringList{"convert", "xml"}, QStringList{"get", "x"},
          QStringList{"convert", "xml", "-o", "out", "a", "b"}}) {
        const ToolRun run = ardeck(args);
        EXPECT_EQ(run.status, 2) << qPrintable(args.join(u' '));
        EXPECT_FALSE(run.errors.isEmpty());
    }
    const ToolRun help = ardeck({"--help"});
    EXPECT_EQ(help.status, 0);
    for (const char *verb : {"lint", "convert", "print", "get"})
        EXPECT_TRUE(help.out.contains(QByteArray("ardeck ") + verb));
}

TEST_F(ArdeckToolTest, EditsValuesInPlace)
{
    ASSERT_EQ(ardeck({"set", _sample, "Alpha", "integer", "0x10"}).status, 0);
    EXPECT_EQ(ardeck({"get", _sample, "Alpha"}).out, QByteArray("16\n"));
    ASSERT_EQ(
        ardeck({"insert", _sample, "com\\.example\\.key.list.1", "date", "2026-11-22T10:00:00Z"})
            .status,
        0);
    EXPECT_EQ(ardeck({"get", _sample, "com\\.example\\.key.list.1"}).out,
              QByteArray("2026-11-22T10:00:00Z\n"));
    ASSERT_EQ(ardeck({"insert", _sample, "nested", "dict", R"({"k": [1, 2]})"}).status, 0);
    EXPECT_EQ(ardeck({"get", _sample, "nested.k.1"}).out, QByteArray("2\n"));
    ASSERT_EQ(ardeck({"remove", _sample, "zebra"}).status, 0);
    const QStringList lines = QString::fromUtf8(ardeck({"print", _sample}).out).split(u'\n');
    EXPECT_TRUE(lines[1].startsWith(QStringLiteral("    com.example.key:")))
        << "the others keep their places";
    EXPECT_TRUE(lines.filter(QStringLiteral("nested:")).size() == 1);
}

TEST_F(ArdeckToolTest, InPlaceEditsKeepLinkModeAndAttributes)
{
    const QString link = _dir.filePath(QStringLiteral("link.plist"));
    ASSERT_TRUE(QFile::link(_sample, link));
    ASSERT_TRUE(QFile::setPermissions(_sample, QFile::ReadOwner | QFile::WriteOwner));
    if (!KZExtendedAttributes::setValue(_sample, QStringLiteral("user.origin"), "kept"))
        GTEST_SKIP() << "no extended attributes on this file system";

    for (const QStringList &edit : {QStringList{"set", link, "Alpha", "integer", "3"},
                                    QStringList{"insert", link, "Beta", "string", "b"},
                                    QStringList{"remove", link, "zebra"}}) {
        SCOPED_TRACE(qPrintable(edit.first()));
        ASSERT_EQ(ardeck(edit).status, 0);
        EXPECT_TRUE(QFileInfo(link).isSymLink());
        EXPECT_EQ(QFile::permissions(_sample),
                  QFile::ReadOwner | QFile::WriteOwner | QFile::ReadUser | QFile::WriteUser);
        EXPECT_EQ(KZExtendedAttributes::value(_sample, QStringLiteral("user.origin")),
                  QByteArray("kept"));
    }
    EXPECT_EQ(ardeck({"get", _sample, "Alpha"}).out, QByteArray("3\n"));
}

TEST_F(ArdeckToolTest, RefusesBadEditsAndChangesNothing)
{
    struct Bad
    {
        QStringList arguments;
        const char *message;
    };
    const Bad rows[] = {
        {{"set", _sample, "Alpha", "integer", "12x"}, "is not an integer"},
        {{"set", _sample, "Alpha", "bool", "maybe"}, "is not a boolean"},
        {{"set", _sample, "Alpha", "date", "yesterday"}, "is not a date"},
        {{"set", _sample, "Alpha", "data", "0g"}, "is not hexadecimal"},
        {{"set", _sample, "Alpha", "dict", "(1, 2)"}, "is not a property list dictionary"},
        {{"set", _sample, "missing", "string", "x"}, "has no \"missing\""},
        {{"insert", _sample, "Alpha", "string", "x"}, "already has \"Alpha\""},
        {{"insert", _sample, "com\\.example\\.key.list.9", "string", "x"}, "no index from 0 to 3"},
        {{"insert", _sample, "zebra.x", "string", "x"}, "holds no values"},
        {{"remove", _sample, "nothing"}, "has no \"nothing\""},
    };
    for (const Bad &row : rows) {
        const ToolRun run = ardeck(row.arguments);
        EXPECT_EQ(run.status, 1) << qPrintable(row.arguments.join(u' '));
        EXPECT_TRUE(run.errors.value(0).contains(QString::fromUtf8(row.message)))
            << qPrintable(run.errors.value(0));
    }
    EXPECT_EQ(fileBytes(_sample), kSample);

    const QString json = _dir.filePath(QStringLiteral("doc.json"));
    writeFile(json, R"({"a": 1})");
    const ToolRun date = ardeck({"insert", json, "when", "date", "2026-11-22T10:00:00Z"});
    EXPECT_EQ(date.status, 1);
    EXPECT_TRUE(date.errors.value(0).contains(
        QStringLiteral("the Date value at \"when\" cannot be stored as JSON")));
    EXPECT_EQ(fileBytes(json), QByteArray(R"({"a": 1})"));
}

TEST_F(ArdeckToolTest, CoercesOnlyWhenAsked)
{
    const QString out = _dir.filePath(QStringLiteral("out.json"));
    const ToolRun refused = ardeck({"convert", "json", "-o", out, _sample});
    EXPECT_EQ(refused.status, 1);
    EXPECT_TRUE(refused.errors.value(0).contains(
        QStringLiteral("\"com\\.example\\.key.list.2\" cannot be stored as JSON")))
        << qPrintable(refused.errors.value(0));
    EXPECT_FALSE(QFile::exists(out));

    ASSERT_EQ(ardeck({"insert", _sample, "when", "date", "2001-01-01T00:00:00Z"}).status, 0);
    ASSERT_EQ(ardeck({"convert", "json", "--coerce", "-o", out, _sample}).status, 0);
    const ReadResult json = PlistSerialization::readJson(fileBytes(out));
    ASSERT_TRUE(json);
    const PlistDictionary root = json.value.toDictionary();
    EXPECT_EQ(
        root.value(u"com.example.key").toDictionary().value(u"list").toArray().at(2).toString(),
        QStringLiteral("000102"));
    EXPECT_TRUE(root.value(u"when").isString());
    EXPECT_TRUE(root.value(u"Alpha").isReal()) << "what JSON holds stays";

    const QString scalar = _dir.filePath(QStringLiteral("scalar.plist"));
    writeFile(scalar, "<plist><integer>3</integer></plist>");
    const ToolRun top = ardeck({"convert", "json", "--coerce", scalar});
    EXPECT_EQ(top.status, 1);
    EXPECT_TRUE(
        top.errors.value(0).contains(QStringLiteral("needs a dictionary or an array at the top")));
}

TEST_F(ArdeckToolTest, TakesTheShellUsersWordsAsTheyAreMeant)
{
    // An option word in a value's place is the value.
    ASSERT_EQ(ardeck({"set", _sample, "zebra", "string", "-h"}).status, 0);
    EXPECT_EQ(ardeck({"get", _sample, "zebra"}).out, QByteArray("-h\n"));
    EXPECT_EQ(ardeck({"set", "--help"}).status, 0) << "help right after the verb";

    const ToolRun missing = ardeck({"lint", _dir.filePath(QStringLiteral("gone.plist"))});
    EXPECT_EQ(missing.status, 1);
    EXPECT_TRUE(missing.out.contains("gone.plist: no such file")) << missing.out.constData();

    const QString ascii = _dir.filePath(QStringLiteral("old.plist"));
    writeFile(ascii, "{ a = b; }");
    const ToolRun number = ardeck({"insert", ascii, "n", "integer", "1"});
    EXPECT_EQ(number.status, 1);
    EXPECT_TRUE(number.errors.value(0).contains(QStringLiteral("cannot be stored as ASCII")));
    EXPECT_FALSE(number.errors.value(0).contains(QStringLiteral("--coerce")))
        << "set and insert have no such option";
}

TEST_F(ArdeckToolTest, EditsAKeyedArchiveThroughItsUids)
{
    const QString archive = _dir.filePath(QStringLiteral("archive.plist"));
    const PlistValue value =
        dictionaryOf({{"$top", dictionaryOf({{"root", PlistValue::uid(3000000000u)}})}});
    writeFile(archive, PlistSerialization::write(value, ADPlistFormatBinary, false).data);
    EXPECT_EQ(ardeck({"get", archive, "$top.root.CF$UID"}).out, QByteArray("3000000000\n"));

    ASSERT_EQ(ardeck({"set", archive, "$top.root.CF$UID", "integer", "5"}).status, 0);
    const PlistValue stored = PlistSerialization::read(fileBytes(archive)).value;
    const PlistValue uid = stored.toDictionary().value(u"$top").toDictionary().value(u"root");
    EXPECT_EQ(uid.kind(), PlistValue::Kind::Uid);
    EXPECT_EQ(uid.toUid(), 5u);
}

class ArdeckOverTheCorpus : public testing::TestWithParam<CorpusFile>
{};

TEST_P(ArdeckOverTheCorpus, ConvertsValidFilesToEachFormatAndBack)
{
    const CorpusFile &row = GetParam();
    const ToolRun lint = ardeck({"lint", row.path()});
    ASSERT_EQ(lint.status, 0) << lint.out.constData();
    ReadResult original = PlistSerialization::read(row.bytes());
    if (!original)
        original = PlistSerialization::readJson(row.bytes());
    ASSERT_TRUE(original);
    // XML keeps dates to the second; old-style text holds only strings and data.
    const PlistValue toSeconds = mapLeaves(original.value, [](const PlistValue &v) {
        return v.kind() == PlistValue::Kind::Date ? PlistValue::date(std::floor(v.toDate())) : v;
    });
    const bool textOnly = !anyLeaf(original.value, [](const PlistValue &v) {
        return !v.isString() && v.kind() != PlistValue::Kind::Data;
    });
    const QString back =
        original.format == ADPlistFormatJSON ? QStringLiteral("json") : QStringLiteral("binary");
    QTemporaryDir dir;
    int converted = 0;
    for (const char *format : {"xml", "binary", "json", "ascii"}) {
        const QString out = dir.filePath(QString::fromLatin1(format));
        if (ardeck({"convert", format, "-o", out, row.path()}).status != 0)
            continue; // a value this format cannot hold is refused with a message
        if (QByteArray(format) == "ascii" && !textOnly)
            continue;
        const ToolRun again = ardeck({"convert", back, "-o", "-", out});
        ASSERT_EQ(again.status, 0) << format;
        ReadResult read = back == u"json" ? PlistSerialization::readJson(again.out)
                                          : PlistSerialization::read(again.out);
        ASSERT_TRUE(read) << format;
        const PlistValue &expected = QByteArray(format) == "xml" ? toSeconds : original.value;
        EXPECT_TRUE(read.value.isEqualToPlist(expected)) << format;
        ++converted;
    }
    EXPECT_GE(converted, 1) << "every value fits at least one other format";
}

// Edits keep every other value and key where it was, in each format.
class ArdeckEditsCorpusFiles : public testing::TestWithParam<CorpusFile>
{};

TEST_P(ArdeckEditsCorpusFiles, InsertAndRemoveLeaveTheRestIdentical)
{
    const CorpusFile &row = GetParam();
    QTemporaryDir dir;
    const QString copy = dir.filePath(QStringLiteral("copy"));
    writeFile(copy, row.bytes());
    auto readBack = [&copy] {
        const QByteArray bytes = fileBytes(copy);
        ReadResult r = PlistSerialization::read(bytes);
        return r ? r : PlistSerialization::readJson(bytes);
    };
    const ReadResult before = readBack();
    ASSERT_TRUE(before && before.value.isDictionary());
    ASSERT_EQ(ardeck({"insert", copy, "ardeck-added", "string", "new"}).status, 0);
    const ReadResult added = readBack();
    ASSERT_TRUE(added);
    EXPECT_EQ(added.format, before.format) << "saved in the file's own format";
    const PlistDictionary d = added.value.toDictionary();
    EXPECT_EQ(d.keyAt(d.count() - 1), QStringLiteral("ardeck-added"));
    ASSERT_EQ(ardeck({"remove", copy, "ardeck-added"}).status, 0);
    EXPECT_TRUE(readBack().value.isIdenticalTo(before.value));
}

// The first valid file of each format whose top is a dictionary.
std::vector<CorpusFile> oneFilePerFormat()
{
    std::vector<CorpusFile> rows;
    QStringList seen;
    for (const CorpusFile &row : corpusFiles()) {
        if (row.expect != u"valid" || seen.contains(row.format) || row.format == u"unknown")
            continue;
        ReadResult r = PlistSerialization::read(row.bytes());
        if (!r)
            r = PlistSerialization::readJson(row.bytes());
        if (r && r.value.isDictionary() && r.value.toDictionary().count() > 1) {
            rows.push_back(row);
            seen << row.format;
        }
    }
    return rows;
}

INSTANTIATE_TEST_SUITE_P(Corpus, ArdeckEditsCorpusFiles, testing::ValuesIn(oneFilePerFormat()),
                         [](const auto &row) { return row.param.format.toStdString(); });

INSTANTIATE_TEST_SUITE_P(Corpus, ArdeckOverTheCorpus, testing::ValuesIn(validCorpusFiles()),
                         [](const auto &row) { return row.param.testName(); });

} // namespace
