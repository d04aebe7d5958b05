#include "storage/XmlWriter.h"
#include "support/ValueBuilders.h"

#include "shared/PlistArray.h"
#include "shared/PlistDictionary.h"
#include "storage/XmlReader.h"
#include "support/Corpus.h"

#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <functional>
#include <limits>

namespace {

constexpr char kHeader[] = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                           "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
                           "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
                           "<plist version=\"1.0\">\n";
constexpr char kFooter[] = "</plist>\n";

CorpusFile corpusFile(const char *path)
{
    return {QString::fromUtf8(path), QStringLiteral("xml"), QStringLiteral("valid")};
}

// `value` inside `depth` arrays.
PlistValue nested(PlistValue value, int depth)
{
    for (int i = 0; i < depth; ++i)
        value = arrayOf({value});
    return value;
}

QByteArray bytes(int count)
{
    QByteArray b(count, Qt::Uninitialized);
    for (int i = 0; i < count; ++i)
        b[i] = char(i * 7 + 3);
    return b;
}

// --- the platform's layout, byte for byte ----------------------------------------

class XmlWriterPlatformFiles : public testing::TestWithParam<const char *>
{};

TEST_P(XmlWriterPlatformFiles, WritesTheFileBackByteForByte)
{
    const QByteArray original = corpusFile(GetParam()).bytes();
    ASSERT_FALSE(original.isEmpty());
    const ReadResult read = XmlReader::read(original);
    ASSERT_TRUE(read) << qPrintable(read.error.description());
    const WriteResult written = XmlWriter::write(read.value);
    ASSERT_TRUE(written) << qPrintable(written.error);
    EXPECT_EQ(written.data.toStdString(), original.toStdString());
}

INSTANTIATE_TEST_SUITE_P(Corpus, XmlWriterPlatformFiles, testing::ValuesIn(kPlatformLayoutFiles),
                         [](const auto &info) { return corpusFile(info.param).testName(); });

class XmlWriterCorpus : public testing::TestWithParam<CorpusFile>
{};

TEST_P(XmlWriterCorpus, WritesWhatReadsBackIdentical)
{
    const ReadResult first = XmlReader::read(GetParam().bytes());
    ASSERT_TRUE(first) << qPrintable(first.error.description());
    const WriteResult written = XmlWriter::write(first.value);
    ASSERT_TRUE(written) << qPrintable(written.error);
    const ReadResult again = XmlReader::read(written.data);
    ASSERT_TRUE(again) << qPrintable(again.error.description());
    EXPECT_TRUE(again.value.isIdenticalTo(first.value));
}

INSTANTIATE_TEST_SUITE_P(Manifest, XmlWriterCorpus,
                         testing::ValuesIn(validCorpusFiles({QStringLiteral("xml")})),
                         [](const auto &info) { return info.param.testName(); });

// Every length, so that each path of the encoder meets each kind of line end,
// at the top and indented: the digits are exactly the standard Base64 ones.
TEST(XmlWriter, WritesDataOfEveryLengthAsStandardBase64)
{
    for (int size = 0; size < 400; size += size < 130 ? 1 : 37) {
        QByteArray data(size, Qt::Uninitialized);
        for (int i = 0; i < size; ++i)
            data[i] = char((i * 151 + size * 7) ^ (i >> 3));
        for (const PlistValue &value :
             {PlistValue::data(data), arrayOf({PlistValue::data(data)})}) {
            const QByteArray written = XmlWriter::write(value).data;
            const qsizetype from = written.indexOf("<data>") + 6;
            QByteArray digits = written.mid(from, written.indexOf("</data>") - from);
            digits.replace('\n', "").replace('\t', "");
            ASSERT_EQ(digits, data.toBase64()) << size;
        }
    }
}

// Blocks this large are encoded in parts on several threads: the parts must
// meet in whole lines, at the top and indented, whatever the remainder.
TEST(XmlWriter, WritesLargeDataInTheSameLinesAsSmall)
{
    for (const qsizetype size : {qsizetype(9) << 20, (qsizetype(9) << 20) + 1}) {
        QByteArray data(size, Qt::Uninitialized);
        for (qsizetype i = 0; i < size; ++i)
            data[i] = char(i * 151 ^ (i >> 11));
        const QByteArray digits = data.toBase64();
        for (const int indent : {0, 1}) {
            const qsizetype lineLength = 76 - 8 * indent;
            QByteArray expected = "<data>\n";
            for (qsizetype at = 0; at < digits.size(); at += lineLength)
                expected += QByteArray(indent, '\t') + digits.mid(at, lineLength) + '\n';
            const PlistValue value =
                indent == 0 ? PlistValue::data(data) : arrayOf({PlistValue::data(data)});
            const QByteArray written = XmlWriter::write(value).data;
            const qsizetype from = written.indexOf("<data>");
            ASSERT_EQ(written.mid(from, expected.size()), expected) << size << " " << indent;
        }
    }
}

// --- layout of each kind of value ------------------------------------------------------

struct Layout
{
    const char *name;
    std::function<PlistValue()> value;
    QByteArray body; // between the <plist> lines
    bool lossless = true;
};

const double kInf = std::numeric_limits<double>::infinity();

const Layout kLayouts[] = {
    {"EscapesFiveCharacters", [] { return str("<a & 'b' \"c\">"); },
     "<string>&lt;a &amp; &apos;b&apos; &quot;c&quot;&gt;</string>\n"},
    {"WritesUtf8AsItIs", [] { return str("caf\xC3\xA9 \xF0\x9F\x98\x80\r\n\x01"); },
     "<string>caf\xC3\xA9 \xF0\x9F\x98\x80\r\n\x01</string>\n"},
    {"LongStringsWithSpecialsLate", [] { return str("abcdefghijklmnopqrstuvwxyz0123456789&"); },
     "<string>abcdefghijklmnopqrstuvwxyz0123456789&amp;</string>\n"},
    {"Integers",
     [] {
         return arrayOf(
             {std::numeric_limits<qint64>::min(), std::numeric_limits<quint64>::max(), qint64(0)});
     },
     "<array>\n\t<integer>-9223372036854775808</integer>\n"
     "\t<integer>18446744073709551615</integer>\n\t<integer>0</integer>\n</array>\n"},
    {"RealsInTheirShortestText",
     [] {
         return arrayOf({0.1, 5.0, -0.0, 1e20, 1.0 / 3, std::numeric_limits<double>::quiet_NaN(),
                         kInf, -kInf});
     },
     "<array>\n\t<real>0.1</real>\n\t<real>5</real>\n\t<real>-0</real>\n\t<real>1e+20</real>\n"
     "\t<real>0.3333333333333333</real>\n\t<real>nan</real>\n\t<real>+infinity</real>\n"
     "\t<real>-infinity</real>\n</array>\n"},
    {"DatesToTheSecondInUtc",
     [] {
         return arrayOf({PlistValue::date(0.75), PlistValue::date(-0.25),
                         PlistValue::date(-63145612800.0), PlistValue::date(3e11)});
     },
     "<array>\n\t<date>2001-01-01T00:00:00Z</date>\n\t<date>2000-12-31T23:59:59Z</date>\n"
     "\t<date>0000-01-02T00:00:00Z</date>\n\t<date>11507-08-17T05:20:00Z</date>\n</array>\n",
     false},
    {"EmptyContainersAndBooleans",
     [] {
         return dictionaryOf({{"a", PlistArray::create()},
                              {"d", PlistDictionary::create()},
                              {"t", true},
                              {"f", false}});
     },
     "<dict>\n\t<key>a</key>\n\t<array/>\n\t<key>d</key>\n\t<dict/>\n\t<key>t</key>\n\t<true/>\n"
     "\t<key>f</key>\n\t<false/>\n</dict>\n"},
    {"KeysInTheDictionarysOrder",
     [] {
         return dictionaryOf({{"z", qint64(1)}, {"a&b", qint64(2)}});
     },
     "<dict>\n\t<key>z</key>\n\t<integer>1</integer>\n\t<key>a&amp;b</key>\n"
     "\t<integer>2</integer>\n</dict>\n"},
    {"UidAsCfUidDictionary", [] { return arrayOf({PlistValue::uid(42)}); },
     "<array>\n\t<dict>\n\t\t<key>CF$UID</key>\n\t\t<integer>42</integer>\n\t</dict>\n</array>\n"},
    {"DataAtTheTopInLinesOf76", [] { return PlistValue::data(bytes(60)); },
     "<data>\n" + bytes(57).toBase64() + "\n" + bytes(60).toBase64().mid(76) + "\n</data>\n"},
    {"DataInLinesOf76LessTheIndentation", [] { return arrayOf({PlistValue::data(bytes(52))}); },
     "<array>\n\t<data>\n\t" + bytes(51).toBase64() + "\n\t" + bytes(52).toBase64().mid(68) +
         "\n\t</data>\n</array>\n"},
    {"EmptyData", [] { return PlistValue::data({}); }, "<data>\n</data>\n"},
    {"DeepDataIndentsAtMostEightTabs", [] { return nested(PlistValue::data(bytes(10)), 10); },
     QByteArray("<array>\n") + "\t<array>\n" + "\t\t<array>\n" + "\t\t\t<array>\n" +
         "\t\t\t\t<array>\n" + "\t\t\t\t\t<array>\n" + "\t\t\t\t\t\t<array>\n" +
         "\t\t\t\t\t\t\t<array>\n" + "\t\t\t\t\t\t\t\t<array>\n" + "\t\t\t\t\t\t\t\t\t<array>\n" +
         "\t\t\t\t\t\t\t\t\t\t<data>\n" + "\t\t\t\t\t\t\t\t" + bytes(9).toBase64() + "\n" +
         "\t\t\t\t\t\t\t\t" + bytes(10).toBase64().mid(12) + "\n" +
         "\t\t\t\t\t\t\t\t\t\t</data>\n" + "\t\t\t\t\t\t\t\t\t</array>\n" +
         "\t\t\t\t\t\t\t\t</array>\n" + "\t\t\t\t\t\t\t</array>\n" + "\t\t\t\t\t\t</array>\n" +
         "\t\t\t\t\t</array>\n" + "\t\t\t\t</array>\n" + "\t\t\t</array>\n" + "\t\t</array>\n" +
         "\t</array>\n" + "</array>\n"},
};

class XmlWriterLayout : public testing::TestWithParam<Layout>
{};

TEST_P(XmlWriterLayout, WritesThePlatformsText)
{
    const PlistValue value = GetParam().value();
    const WriteResult written = XmlWriter::write(value);
    ASSERT_TRUE(written) << qPrintable(written.error);
    EXPECT_EQ(written.data.toStdString(), (kHeader + GetParam().body + kFooter).toStdString());
    const ReadResult again = XmlReader::read(written.data);
    ASSERT_TRUE(again) << qPrintable(again.error.description());
    EXPECT_EQ(again.value.isIdenticalTo(value), GetParam().lossless);
}

INSTANTIATE_TEST_SUITE_P(Rows, XmlWriterLayout, testing::ValuesIn(kLayouts),
                         [](const auto &info) { return std::string(info.param.name); });

TEST(XmlWriterErrors, RefusesWhatXmlCannotHold)
{
    const WriteResult null = XmlWriter::write(dictionaryOf({{"n", PlistValue::null()}}));
    ASSERT_FALSE(null);
    EXPECT_TRUE(null.error.contains(QStringLiteral("null cannot be written")))
        << qPrintable(null.error);
    EXPECT_TRUE(null.data.isEmpty());
    EXPECT_FALSE(XmlWriter::write(PlistValue()));
    const WriteResult farDate = XmlWriter::write(PlistValue::date(1e300));
    ASSERT_FALSE(farDate);
    EXPECT_TRUE(farDate.error.contains(QStringLiteral("too far out")));
    EXPECT_FALSE(XmlWriter::write(PlistValue::date(std::numeric_limits<double>::quiet_NaN())));
}

TEST(XmlWriterDepth, WritesNestingOneHundredThousandDeep)
{
    const PlistValue deep = nested(dictionaryOf({{"leaf", true}}), 100000);
    const WriteResult written = XmlWriter::write(deep);
    ASSERT_TRUE(written) << qPrintable(written.error);
    const ReadResult again = XmlReader::read(written.data);
    ASSERT_TRUE(again) << qPrintable(again.error.description());
    EXPECT_TRUE(again.value.isIdenticalTo(deep));
}

// Past 16 MB the output grows to what the top entries written so far predict:
// here far too much (one big entry, then small ones) and far too little.
TEST(XmlWriterLargeOutput, WritesTheSameWhateverItsGrowthGuesses)
{
    const PlistValue big = PlistValue::data(QByteArray(20 << 20, '\x5A'));
    PlistArray bigFirst = PlistArray::create();
    bigFirst.append(big);
    PlistArray smallFirst = PlistArray::create();
    for (int i = 0; i < 20000; ++i) {
        bigFirst.append(PlistValue(qint64(i)));
        smallFirst.append(PlistValue(qint64(i)));
    }
    smallFirst.append(big);
    for (const PlistArray &array : {bigFirst, smallFirst}) {
        const WriteResult written = XmlWriter::write(array);
        ASSERT_TRUE(written) << qPrintable(written.error);
        EXPECT_LE(written.data.capacity(), written.data.size() / 8 * 9);
        const ReadResult again = XmlReader::read(written.data);
        ASSERT_TRUE(again) << qPrintable(again.error.description());
        EXPECT_TRUE(again.value.isIdenticalTo(array));
    }
}

// --- other readers ---------------------------------------------------------------------------

// A value of every kind the other tools share with us, with text that needs care.
PlistValue interopValue()
{
    return dictionaryOf(
        {{"string", str("<tag> & \"quotes\" 'apostrophes' caf\xC3\xA9 \xF0\x9F\x98\x80")},
         {"empty", str("")},
         {"integers", arrayOf({qint64(-5), std::numeric_limits<qint64>::max(),
                               std::numeric_limits<quint64>::max()})},
         {"reals", arrayOf({0.5, -2.25, 1e-7, 123456.75})},
         {"booleans", arrayOf({true, false})},
         {"date", PlistValue::date(728512994.0)},
         {"data", PlistValue::data(bytes(100))},
         {"nested",
          dictionaryOf({{"list", PlistArray::create()}, {"map", PlistDictionary::create()}})}});
}

// Has the tool read `xml` and write it back as XML, which we then read.
ReadResult throughTool(const QString &program, const QStringList &arguments, const QByteArray &xml)
{
    QTemporaryDir dir;
    const QString in = dir.filePath(QStringLiteral("in.plist"));
    const QString out = dir.filePath(QStringLiteral("out.plist"));
    QFile file(in);
    if (!file.open(QIODevice::WriteOnly) || file.write(xml) != xml.size())
        return ReadResult::failure({QStringLiteral("cannot write %1").arg(in)});
    file.close();
    QProcess process;
    process.start(program, QStringList(arguments)
                               .replaceInStrings(QStringLiteral("IN"), in)
                               .replaceInStrings(QStringLiteral("OUT"), out));
    if (!process.waitForFinished(30000) || process.exitCode() != 0)
        return ReadResult::failure({QString::fromUtf8(process.readAllStandardError())});
    QFile result(out);
    if (!result.open(QIODevice::ReadOnly))
        return ReadResult::failure({QStringLiteral("no output from %1").arg(program)});
    return XmlReader::read(result.readAll());
}

TEST(XmlWriterInterop, PlistlibReadsWhatWeWrite)
{
    const QString python = QStandardPaths::findExecutable(QStringLiteral("python3"));
    if (python.isEmpty())
        GTEST_SKIP() << "python3 is not installed";
    const QString script =
        QStringLiteral("import plistlib, sys\n"
                       "value = plistlib.load(open(sys.argv[1], 'rb'))\n"
                       "plistlib.dump(value, open(sys.argv[2], 'wb'), sort_keys=False)\n");
    const PlistValue value = interopValue();
    const ReadResult back = throughTool(
        python, {QStringLiteral("-c"), script, QStringLiteral("IN"), QStringLiteral("OUT")},
        XmlWriter::write(value).data);
    ASSERT_TRUE(back) << qPrintable(back.error.description());
    EXPECT_TRUE(back.value.isIdenticalTo(value));
}

TEST(XmlWriterInterop, PlistutilReadsWhatWeWrite)
{
    const QString plistutil = QStandardPaths::findExecutable(QStringLiteral("plistutil"));
    if (plistutil.isEmpty())
        GTEST_SKIP() << "plistutil is not installed";
    const PlistValue value = interopValue();
    const ReadResult back =
        throughTool(plistutil,
                    {QStringLiteral("-i"), QStringLiteral("IN"), QStringLiteral("-o"),
                     QStringLiteral("OUT"), QStringLiteral("-f"), QStringLiteral("xml")},
                    XmlWriter::write(value).data);
    ASSERT_TRUE(back) << qPrintable(back.error.description());
    EXPECT_TRUE(back.value.isEqualToPlist(value));
}

} // namespace
