#include "storage/BinaryWriter.h"
#include "support/ValueBuilders.h"

#include "shared/PlistArray.h"
#include "shared/PlistDictionary.h"
#include "storage/BinaryReader.h"
#include "support/Corpus.h"

#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <limits>

namespace {

QByteArray written(const PlistValue &value)
{
    const WriteResult result = BinaryWriter::write(value);
    EXPECT_TRUE(result) << result.error.toStdString();
    return result.data;
}

PlistValue readBack(const QByteArray &bytes)
{
    const ReadResult result = BinaryReader::read(bytes);
    EXPECT_TRUE(result) << result.error.description().toStdString();
    return result.value;
}

// The trailer's offset size and reference size, in hex.
QByteArray sizesOf(const QByteArray &file)
{
    return file.right(26).left(2).toHex();
}

quint64 objectCountOf(const QByteArray &file)
{
    return file.right(24).left(8).toHex().toULongLong(nullptr, 16);
}

struct Encoding
{
    const char *name;
    PlistValue value;
    QByteArray hex; // the top object, right after the header
};

std::vector<Encoding> encodings()
{
    const QByteArray zeros(16, '0');
    return {
        {"Zero", 0, "1000"},
        {"OneByteLimit", 255, "10ff"},
        {"TwoBytes", 256, "110100"},
        {"FourBytes", 65536, "1200010000"},
        {"FourByteLimit", qint64(0xFFFFFFFF), "12ffffffff"},
        {"EightBytes", qint64(1) << 32, "130000000100000000"},
        {"NegativeTakesEight", -1, "13ffffffffffffffff"},
        {"Int64Min", std::numeric_limits<qint64>::min(), "138000000000000000"},
        {"Int64Max", std::numeric_limits<qint64>::max(), "137fffffffffffffff"},
        {"AboveSignedTakesSixteen", quint64(1) << 63, "14" + zeros + "8000000000000000"},
        {"Uint64Max", std::numeric_limits<quint64>::max(), "14" + zeros + "ffffffffffffffff"},
        {"Real", 1.5, "233ff8000000000000"},
        {"NegativeZero", -0.0, "238000000000000000"},
        {"NaN", std::numeric_limits<double>::quiet_NaN(), "237ff8000000000000"},
        {"NegativeInfinity", -std::numeric_limits<double>::infinity(), "23fff0000000000000"},
        {"DateOfYearOne", PlistValue::date(-63114076800.0), "33c22d63c8c5000000"},
        {"True", true, "09"},
        {"SmallUid", PlistValue::uid(255), "80ff"},
        {"TwoByteUid", PlistValue::uid(256), "810100"},
        {"LargestUid", PlistValue::uid(std::numeric_limits<quint64>::max()), "87ffffffffffffffff"},
        {"EmptyString", str(""), "50"},
        {"Latin1AsUtf16", str("\u00e9"), "6100e9"},
        {"SurrogatePair", str("\U0001F600"), "62d83dde00"},
        {"LongString", str("fifteen letters"), "5f100f6669667465656e206c657474657273"},
        {"EmptyData", PlistValue::data({}), "40"},
        {"EmptyArray", PlistArray::create(), "a0"},
        {"EmptyDictionary", PlistDictionary::create(), "d0"},
    };
}

class BinaryWriterEncodings : public testing::TestWithParam<Encoding>
{};

TEST_P(BinaryWriterEncodings, WritesTheSmallestFormAndReadsItBack)
{
    const Encoding &row = GetParam();
    const QByteArray file = written(row.value);
    EXPECT_EQ(file.mid(8, row.hex.size() / 2).toHex(), row.hex);
    EXPECT_TRUE(readBack(file).isIdenticalTo(row.value));
}

INSTANTIATE_TEST_SUITE_P(Rows, BinaryWriterEncodings, testing::ValuesIn(encodings()),
                         [](const auto &row) { return std::string(row.param.name); });

TEST(BinaryWriter, SharesEqualLeavesOnly)
{
    // Three containers; leaves "a", 1, 1.0, -0.0, 0.0, true and UID 1.
    const PlistValue value =
        arrayOf({str("a"), str("a"), 1, 1, 1.0, -0.0, 0.0, true, PlistValue::uid(1),
                 PlistArray::create(), dictionaryOf({{"a", str("a")}})});
    const QByteArray file = written(value);
    EXPECT_EQ(objectCountOf(file), 10u);
    EXPECT_TRUE(readBack(file).isIdenticalTo(value));
}

TEST(BinaryWriter, WidensReferencesAndOffsetsOnlyWhenNeeded)
{
    PlistArray array = PlistArray::create();
    for (int i = 0; i < 254; ++i)
        array.append(i);
    EXPECT_EQ(sizesOf(written(array)), "0201"); // 255 objects, ending past byte 255
    for (int i = 254; i < 70000; ++i)
        array.append(i);
    const QByteArray file = written(array);
    EXPECT_EQ(sizesOf(file), "0404");
    EXPECT_TRUE(readBack(file).isIdenticalTo(array));
}

// Blocks this large are copied in parts on several threads.
TEST(BinaryWriter, WritesLargeDataWhole)
{
    std::vector<PlistValue> blocks;
    for (const qsizetype size : {qsizetype(9) << 20, (qsizetype(9) << 20) + 5}) {
        QByteArray bytes(size, Qt::Uninitialized);
        for (qsizetype i = 0; i < size; ++i)
            bytes[i] = char(i * 151 ^ (i >> 11) ^ size);
        blocks.push_back(PlistValue::data(bytes));
    }
    const PlistValue value = arrayOf({blocks[0], str("between"), blocks[1]});
    EXPECT_TRUE(readBack(written(value)).isIdenticalTo(value));
}

TEST(BinaryWriter, WritesNesting100000DeepWithoutRecursion)
{
    PlistValue value = str("seed");
    for (int i = 0; i < 100000; ++i)
        value = arrayOf({value});
    EXPECT_TRUE(readBack(written(value)).isIdenticalTo(value));
}

TEST(BinaryWriter, RefusesWhatAFileCannotHold)
{
    EXPECT_FALSE(BinaryWriter::write(PlistValue()));
    EXPECT_FALSE(BinaryWriter::write(arrayOf({1, PlistValue()})));
    for (const PlistValue &null : {PlistValue::null(), arrayOf({1, PlistValue::null()})}) {
        const WriteResult refused = BinaryWriter::write(null);
        EXPECT_TRUE(refused.error.contains(u"null cannot be written"))
            << refused.error.toStdString();
        EXPECT_TRUE(refused.data.isEmpty());
    }
    PlistArray loop = PlistArray::create();
    loop.append(arrayOf({1}));
    loop.at(0).toArray().append(loop);
    const WriteResult result = BinaryWriter::write(loop);
    EXPECT_TRUE(result.error.contains(u"contains itself")) << result.error.toStdString();
    loop.clear(); // so that it can be freed
}

class BinaryWriterCorpus : public testing::TestWithParam<CorpusFile>
{};

TEST_P(BinaryWriterCorpus, RoundTripsWithoutLoss)
{
    const PlistValue first = readBack(GetParam().bytes());
    const QByteArray bytes = written(first);
    const PlistValue again = readBack(bytes);
    EXPECT_TRUE(again.isIdenticalTo(first));
    EXPECT_EQ(written(again), bytes) << "the same value was written differently";
}

INSTANTIATE_TEST_SUITE_P(Corpus, BinaryWriterCorpus,
                         testing::ValuesIn(validCorpusFiles({QStringLiteral("binary")})),
                         [](const auto &row) { return row.param.testName(); });

// Something of every kind; kInteropPython holds the same value.
PlistValue interopValue()
{
    return dictionaryOf({
        {"ascii", str("plain")},
        {"wide", str("\u00e9\U0001F600")},
        {"integers",
         arrayOf({0, 255, 256, 65536, qint64(1) << 32, -1, std::numeric_limits<qint64>::min(),
                  std::numeric_limits<quint64>::max()})},
        {"real", 1.5},
        {"date", PlistValue::date(-3125790848.0)},
        {"data", PlistValue::data(QByteArray::fromHex("0001ff"))},
        {"yes", true},
        {"no", false},
        {"uid", PlistValue::uid(300)},
        {"shared", arrayOf({str("plain"), 1.5, str("plain")})},
        {"empty", arrayOf({PlistArray::create(), PlistDictionary::create(), str("")})},
        {"nested", dictionaryOf({{"plain", dictionaryOf({{"deeper", arrayOf({1})}})}})},
    });
}

// Reads the file, compares it with the same value, and checks that plistlib
// lays that value out byte for byte as we did.
const char *const kInteropPython = R"(
import datetime, plistlib, sys
data = open(sys.argv[1], 'rb').read()
value = plistlib.loads(data)
expected = {
    'ascii': 'plain', 'wide': '\u00e9\U0001F600',
    'integers': [0, 255, 256, 65536, 1 << 32, -1, -(1 << 63), (1 << 64) - 1],
    'real': 1.5, 'date': datetime.datetime(1901, 12, 13, 20, 45, 52), 'data': b'\x00\x01\xff',
    'yes': True, 'no': False, 'uid': plistlib.UID(300), 'shared': ['plain', 1.5, 'plain'],
    'empty': [[], {}, ''], 'nested': {'plain': {'deeper': [1]}},
}
if value != expected:
    sys.exit('read back as %r' % (value,))
if plistlib.dumps(value, fmt=plistlib.FMT_BINARY, sort_keys=False) != data:
    sys.exit('plistlib lays the same value out differently')
)";

class BinaryWriterInterop : public testing::Test
{
protected:
    // Runs a tool on our file; the failure message, or empty on success.
    QString run(const char *tool, QStringList arguments)
    {
        const QString program = QStandardPaths::findExecutable(QString::fromLatin1(tool));
        QFile ours(_dir.filePath(QStringLiteral("ours.bplist")));
        if (program.isEmpty() || !ours.open(QIODevice::WriteOnly))
            return QStringLiteral("skip");
        ours.write(written(interopValue()));
        ours.close();
        QProcess process;
        process.start(program, arguments.replaceInStrings(QStringLiteral("OURS"), ours.fileName()));
        if (!process.waitForFinished(30000) || process.exitCode() != 0)
            return program + QStringLiteral(": ") +
                   QString::fromUtf8(process.readAllStandardError());
        return {};
    }

    QTemporaryDir _dir;
};

TEST_F(BinaryWriterInterop, ReadsBackEqualInPlistlib)
{
    const QString error = run("python3", {QStringLiteral("-c"), QString::fromUtf8(kInteropPython),
                                          QStringLiteral("OURS")});
    if (error == u"skip")
        GTEST_SKIP() << "python3 is not installed";
    EXPECT_TRUE(error.isEmpty()) << error.toStdString();
}

// plistutil reads our file and writes its own, which must hold the same value.
TEST_F(BinaryWriterInterop, ReadsBackEqualInPlistutil)
{
    const QString theirs = _dir.filePath(QStringLiteral("theirs.bplist"));
    const QString error =
        run("plistutil", {QStringLiteral("-i"), QStringLiteral("OURS"), QStringLiteral("-o"),
                          theirs, QStringLiteral("-f"), QStringLiteral("bin")});
    if (error == u"skip")
        GTEST_SKIP() << "plistutil is not installed";
    ASSERT_TRUE(error.isEmpty()) << error.toStdString();
    QFile file(theirs);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_TRUE(readBack(file.readAll()).isIdenticalTo(interopValue()));
}

} // namespace
