#include "storage/BinaryReader.h"
#include "storage/BinaryWriter.h"
#include "support/ReadErrorKind.h"
#include "support/ValueBuilders.h"

#include "shared/PlistArray.h"
#include "shared/PlistDictionary.h"
#include "support/Corpus.h"

#include <QRegularExpression>

#include <gtest/gtest.h>

#include <limits>
#include <optional>
#include <vector>

namespace {

using Kind = ReadError::Kind;

QByteArray bigEndian(quint64 value, int width)
{
    return QByteArray::fromHex(QByteArray::number(value, 16).rightJustified(2 * width, '0', true));
}

// Trailer fields left unset take the values that make a sound file.
struct Layout
{
    int offsetSize = 1;
    int refSize = 1;
    std::optional<quint64> objectCount = {};
    std::optional<quint64> topObject = {};
    std::optional<quint64> tableOffset = {};
};

// A file of the given objects (in hex), one after another from byte 8, then
// the offset table and the trailer.
QByteArray bplist(const std::vector<QByteArray> &objects, const Layout &layout = {})
{
    QByteArray file("bplist00");
    QByteArray table;
    for (const QByteArray &object : objects) {
        table += bigEndian(quint64(file.size()), layout.offsetSize);
        file += QByteArray::fromHex(object);
    }
    const auto tableOffset = quint64(file.size());
    file += table + QByteArray(6, '\0') + char(layout.offsetSize) + char(layout.refSize);
    file += bigEndian(layout.objectCount.value_or(objects.size()), 8);
    file += bigEndian(layout.topObject.value_or(0), 8);
    return file + bigEndian(layout.tableOffset.value_or(tableOffset), 8);
}

// Arrays 40 deep, each referencing the next twice: 2^40 values when read.
QByteArray billionLaughs()
{
    std::vector<QByteArray> objects;
    for (int i = 1; i <= 40; ++i)
        objects.push_back("a2" + QByteArray::number(i, 16).rightJustified(2, '0').repeated(2));
    objects.push_back("5161");
    return bplist(objects);
}

struct BadFile
{
    const char *name;
    QByteArray bytes;
    ReadError::Kind kind;
    qint64 offset; // -1: anywhere among the objects
};

const QByteArray kZeros(16, '0'); // eight zero bytes in hex

const BadFile kBadFiles[] = {
    {"NotBinary", "bplist1x" + QByteArray(40, '\0'), Kind::Header, 0},
    {"TruncatedTrailer", "bplist00" + QByteArray(31, '\0'), Kind::Header, 0},
    {"OffsetSizeZero", bplist({"00"}, {.offsetSize = 0}), Kind::Header, 15},
    {"RefSizeNine", bplist({"00"}, {.refSize = 9}), Kind::Header, 17},
    {"NoObjects", bplist({"00"}, {.objectCount = 0}), Kind::Header, 18},
    {"TopObjectOutOfRange", bplist({"00"}, {.topObject = 1}), Kind::Header, 26},
    {"TableInsideHeader", bplist({"00"}, {.tableOffset = 3}), Kind::Header, 34},
    {"TablePastTheEnd", bplist({"00"}, {.tableOffset = 0xFF00}), Kind::Header, 34},
    {"OffsetTableOverlapsTrailer", bplist({"00"}, {.objectCount = 2}), Kind::Header, 18},
    {"ObjectCountOverflow",
     bplist({"00"}, {.offsetSize = 2, .objectCount = (quint64(1) << 63) + 1}), Kind::Header, 19},
    {"RefsTooNarrow", bplist(std::vector<QByteArray>(257, "00"), {.offsetSize = 2}), Kind::Header,
     786},
    {"OffsetsTooNarrow", bplist({"4f11012c" + QByteArray(600, '0')}), Kind::Header, 319},
    {"OffsetInsideHeader", bplist({"00", "02"}, {.objectCount = 1, .tableOffset = 9}),
     Kind::Reference, 9},
    {"OffsetPastObjects", bplist({"00", "0a"}, {.objectCount = 1, .tableOffset = 9}),
     Kind::Reference, 9},
    {"ReferenceOutOfRange", bplist({"a105"}), Kind::Reference, 9},
    {"Cycle", bplist({"a100"}), Kind::Cycle, 9},
    {"CycleThroughSecondLevel", bplist({"a101", "a100"}), Kind::Cycle, 11},
    {"ArrayCountLargerThanFile", bplist({"af127fffffff"}), Kind::Truncated, 8},
    {"DataLengthOverflow", bplist({"4f13ffffffffffffffff"}), Kind::Truncated, 8},
    {"Utf16LengthOverflow", bplist({"6f138000000000000001"}), Kind::Truncated, 8},
    {"LengthNotAnInteger", bplist({"5f2300"}), Kind::Syntax, 9},
    {"TruncatedSixteenByteInteger", bplist({"140000"}), Kind::Truncated, 8},
    {"ThirtyTwoByteInteger", bplist({"15" + kZeros.repeated(4)}), Kind::Number, 8},
    {"TwoByteReal", bplist({"210000"}), Kind::Number, 8},
    {"NanDate", bplist({"337ff8000000000000"}), Kind::Date, 8},
    {"UnpairedHighSurrogate", bplist({"620061d800"}), Kind::Encoding, 11},
    {"LoneLowSurrogate", bplist({"61dc00"}), Kind::Encoding, 9},
    {"InvalidUtf8InAscii", bplist({"51ff"}), Kind::Encoding, 8},
    {"BooleanKey", bplist({"d10201", "1001", "09"}), Kind::Structure, 9},
    {"DictionaryAsItsOwnKey", bplist({"d10000"}), Kind::Structure, 9},
    {"Set", bplist({"c0"}), Kind::Unsupported, 8},
    {"FillReferenced", bplist({"0f"}), Kind::Unsupported, 8},
    {"UidAbove64Bits", bplist({"8801" + kZeros}), Kind::OutOfRange, 8},
    {"BillionLaughs", billionLaughs(), Kind::TooLarge, -1},
    {"UnknownMarker", bplist({"70"}), Kind::UnknownType, 8},
};

class BinaryReaderBadFiles : public testing::TestWithParam<BadFile>
{};

TEST_P(BinaryReaderBadFiles, ReportsWhatAndWhere)
{
    const BadFile &row = GetParam();
    const ReadResult result = BinaryReader::read(row.bytes);
    ASSERT_FALSE(result) << "accepted";
    EXPECT_EQ(result.error.kind, row.kind) << result.error.description().toStdString();
    if (row.offset >= 0)
        EXPECT_EQ(result.error.offset, row.offset) << result.error.description().toStdString();
    else
        EXPECT_GE(result.error.offset, 8);
}

INSTANTIATE_TEST_SUITE_P(Rows, BinaryReaderBadFiles, testing::ValuesIn(kBadFiles),
                         [](const auto &row) { return std::string(row.param.name); });

struct GoodFile
{
    const char *name;
    QByteArray bytes;
    PlistValue expected;
};

std::vector<GoodFile> goodFiles()
{
    PlistDictionary repeated = PlistDictionary::create();
    repeated.insert(QStringLiteral("a"), 2);
    PlistDictionary numbered = PlistDictionary::create();
    numbered.insert(QStringLiteral("-1"), str("a"));
    PlistArray justA = PlistArray::create();
    justA.append(str("a"));
    return {
        {"NullObject", bplist({"00"}), PlistValue::null()},
        {"FourByteIntegerIsUnsigned", bplist({"12ffffffff"}), qint64(0xFFFFFFFF)},
        {"EightByteIntegerIsSigned", bplist({"13ffffffffffffffff"}), qint64(-1)},
        {"SixteenByteAboveSignedRange", bplist({"14" + kZeros + "8000000000000000"}),
         quint64(1) << 63},
        {"SixteenByteCountsItsLowHalf", bplist({"14" + QByteArray(32, 'f')}),
         std::numeric_limits<quint64>::max()},
        {"FourByteReal", bplist({"223fc00000"}), 1.5},
        {"SurrogatePair", bplist({"62d83dde00"}), str("\U0001F600")},
        {"Utf8MarkedAscii", bplist({"52c3a9"}), str("\u00e9")},
        {"SixteenByteUid", bplist({"8f" + kZeros + "0000000000000007"}), PlistValue::uid(7)},
        {"FillBetweenObjects", bplist({"a102", "0f", "5161"}), justA},
        {"IntegerKeyAsText", bplist({"d10102", "13ffffffffffffffff", "5161"}), numbered},
        {"RepeatedKeyKeepsFirstPlaceLastValue", bplist({"d201010203", "5161", "1001", "1002"}),
         repeated},
    };
}

class BinaryReaderGoodFiles : public testing::TestWithParam<GoodFile>
{};

TEST_P(BinaryReaderGoodFiles, ReadsTheValue)
{
    const ReadResult result = BinaryReader::read(GetParam().bytes);
    ASSERT_TRUE(result) << result.error.description().toStdString();
    EXPECT_EQ(result.format, ADPlistFormatBinary);
    EXPECT_TRUE(result.value.isIdenticalTo(GetParam().expected));
}

INSTANTIATE_TEST_SUITE_P(Rows, BinaryReaderGoodFiles, testing::ValuesIn(goodFiles()),
                         [](const auto &row) { return std::string(row.param.name); });

class BinaryReaderCorpus : public testing::TestWithParam<CorpusFile>
{};

TEST_P(BinaryReaderCorpus, FollowsTheManifest)
{
    const CorpusFile &row = GetParam();
    const QByteArray bytes = row.bytes();
    const ReadResult result = BinaryReader::read(bytes);
    if (row.expect == u"valid") {
        EXPECT_TRUE(result) << result.error.description().toStdString();
        EXPECT_EQ(result.format, ADPlistFormatBinary);
    } else if (row.expect == u"invalid") {
        EXPECT_FALSE(result) << "accepted";
    }
    if (!result) {
        EXPECT_FALSE(result.error.message.isEmpty());
        EXPECT_GE(result.error.offset, 0);
        EXPECT_LE(result.error.offset, qMax(qsizetype(0), bytes.size() - 1));
    }
}

INSTANTIATE_TEST_SUITE_P(Corpus, BinaryReaderCorpus,
                         testing::ValuesIn(corpusFiles({QStringLiteral("binary")})),
                         [](const auto &row) { return row.param.testName(); });

PlistValue readCorpus(const char *file)
{
    return BinaryReader::read(CorpusFile{QString::fromUtf8(file), {}, {}}.bytes()).value;
}

TEST(BinaryReader, ReadsEveryReferenceAndOffsetWidthAlike)
{
    const PlistValue first = readCorpus("libplist/test_data/dictref1byte.bplist");
    ASSERT_TRUE(first.isDictionary());
    for (const CorpusFile &row : corpusFiles({QStringLiteral("binary")})) {
        if (row.file.contains(QRegularExpression(QStringLiteral("test_data/(dictref|off)\\d")))) {
            EXPECT_TRUE(BinaryReader::read(row.bytes()).value.isIdenticalTo(first))
                << row.testName();
        }
    }
}

TEST(BinaryReader, GivesEachReferenceToAContainerItsOwnCopy)
{
    const PlistArray outer = BinaryReader::read(bplist({"a20101", "a102", "5161"})).value.toArray();
    ASSERT_EQ(outer.count(), 2);
    EXPECT_FALSE(outer.at(0).isSameObject(outer.at(1)));
    outer.at(0).toArray().append(1);
    EXPECT_EQ(outer.at(1).toArray().count(), 1) << "an edit in one place showed in another";
}

// Large data may share the file's bytes; the values must not notice when the
// caller reuses or drops its buffer, whether most of the file is data or not.
TEST(BinaryReader, LargeDataOutlivesTheFileItCameFrom)
{
    QByteArray blob(300 * 1024, Qt::Uninitialized);
    for (qsizetype i = 0; i < blob.size(); ++i)
        blob[i] = char(i * 7 + i / 251);
    for (const int padding : {0, 20000}) {
        PlistArray items = arrayOf({PlistValue::data(blob), str("tail")}).toArray();
        for (int i = 0; i < padding; ++i)
            items.append(PlistValue(QStringLiteral("filler string number %1").arg(i)));
        std::optional<QByteArray> file = BinaryWriter::write(items.value()).data;
        const ReadResult result = BinaryReader::read(*file);
        ASSERT_TRUE(result) << result.error.description().toStdString();
        file->fill('\xEE');
        file.reset();
        EXPECT_EQ(result.value.toArray().at(0).toData(), blob) << padding;
        EXPECT_TRUE(result.value.isIdenticalTo(items.value())) << padding;
    }
}

TEST(BinaryReader, ReadsNesting100000DeepWithoutRecursion)
{
    PlistValue value = readCorpus("cpython/deep_nesting_100000.bplist");
    int depth = 0;
    while (value.isArray() && value.toArray().count() == 1) {
        value = value.toArray().at(0);
        ++depth;
    }
    EXPECT_EQ(depth, 100000);
    EXPECT_TRUE(value.isIdenticalTo(str("seed")));
}

TEST(BinaryReader, RecognizesAnyVersionOfTheMagic)
{
    EXPECT_TRUE(BinaryReader::recognizes("bplist00"));
    EXPECT_TRUE(BinaryReader::recognizes("bplist0x"));
    EXPECT_TRUE(BinaryReader::recognizes("bplist15")) << "a version read refuses";
    EXPECT_FALSE(BinaryReader::recognizes("bplis"));
    EXPECT_FALSE(BinaryReader::recognizes("<?xml version=\"1.0\"?>"));
}

} // namespace
