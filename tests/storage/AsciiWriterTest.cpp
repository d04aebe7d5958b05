#include "storage/AsciiWriter.h"
#include "support/ValueBuilders.h"
#include "support/ValueWalk.h"

#include "shared/PlistArray.h"
#include "shared/PlistDictionary.h"
#include "storage/AsciiReader.h"
#include "support/Corpus.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <vector>

namespace {

QByteArray written(const PlistValue &value)
{
    const WriteResult result = AsciiWriter::write(value);
    EXPECT_TRUE(result) << result.error.toStdString();
    return result.data;
}

TEST(AsciiWriter, LaysOutNestedContainers)
{
    const PlistValue value = dictionaryOf({
        {"name", str("Arbordeck")},
        {"list", arrayOf({str("two words"), PlistValue::data(QByteArray::fromHex("0fbd778899"))})},
        {"inner", dictionaryOf({{"empty", arrayOf({})}, {"none", dictionaryOf({})}})},
        {"last", PlistValue(qint64(7))},
    });
    EXPECT_EQ(written(value), "{\n"
                              "    name = Arbordeck;\n"
                              "    list = (\n"
                              "        \"two words\",\n"
                              "        <0fbd7788 99>\n"
                              "    );\n"
                              "    inner = {\n"
                              "        empty = ();\n"
                              "        none = {};\n"
                              "    };\n"
                              "    last = 7;\n"
                              "}\n");
}

struct Leaf
{
    const char *name;
    PlistValue value;
    QByteArray text;
};

const Leaf kLeaves[] = {
    {"PlainString", str("a_$/:.-Z9"), "a_$/:.-Z9"},
    {"EmptyString", str(""), "\"\""},
    {"Blank", str("a b"), "\"a b\""},
    {"CommentLike", str("//x"), "\"//x\""},
    {"BlockCommentLike", str("/*x"), "\"/*x\""},
    {"Star", str("a*b"), "\"a*b\""},
    {"QuoteAndBackslash", str("\"\\"), R"("\"\\")"},
    {"ControlCharacters", str("\n\t\r\a\b\f\v\x01\x7f"), R"("\n\t\r\a\b\f\v\001\177")"},
    {"NonAscii", str("é世😀"), R"("\U00e9\U4e16\Ud83d\Ude00")"},
    {"Integer", PlistValue(qint64(-42)), "-42"},
    {"Unsigned", PlistValue(std::numeric_limits<quint64>::max()), "18446744073709551615"},
    {"Real", PlistValue(0.1), "0.1"},
    {"RealWithExponent", PlistValue(1e20), "\"1e+20\""},
    {"True", PlistValue(true), "1"},
    {"False", PlistValue(false), "0"},
    {"Date", PlistValue::date(407205240.75), "\"2013-11-27 00:34:00 +0000\""},
    {"DateBeforeReference", PlistValue::date(-0.5), "\"2000-12-31 23:59:59 +0000\""},
    {"Uid", PlistValue::uid(5), "{\"CF$UID\" = 5;}"},
    {"EmptyData", PlistValue::data({}), "<>"},
};

void PrintTo(const Leaf &row, std::ostream *out)
{
    *out << row.name;
}

class AsciiWriterLeaves : public testing::TestWithParam<Leaf>
{};

TEST_P(AsciiWriterLeaves, WritesTheDescriptionText)
{
    EXPECT_EQ(written(GetParam().value), GetParam().text + '\n');
}

INSTANTIATE_TEST_SUITE_P(Rows, AsciiWriterLeaves, testing::ValuesIn(kLeaves),
                         [](const auto &row) { return std::string(row.param.name); });

TEST(AsciiWriter, RefusesWhatTheFormCannotHold)
{
    PlistArray cycle = PlistArray::create();
    cycle.append(PlistValue(qint64(1)));
    cycle.append(cycle.value());
    const std::pair<PlistValue, const char *> rows[] = {
        {arrayOf({PlistValue::null()}), "no null value"},
        {PlistValue(), "no value"},
        {PlistValue::date(1e300), "too far off"},
        {cycle.value(), "contains itself"},
    };
    for (const auto &[value, message] : rows) {
        const WriteResult result = AsciiWriter::write(value);
        EXPECT_FALSE(result) << message;
        EXPECT_TRUE(result.error.contains(QLatin1StringView(message)))
            << result.error.toStdString();
    }
    cycle.removeAt(1); // the cycle holds itself alive
}

TEST(AsciiWriter, TextReadsBackIdentically)
{
    QString everyKind;
    for (char16_t unit = 0; unit < 0x180; ++unit)
        everyKind += QChar(unit);
    everyKind += QString::fromUtf16(u"\u4e16\U0001F600") + QChar(0xD800) + u'0' + QChar(0xDFFF);
    const PlistValue value = dictionaryOf({
        {"every kind", PlistValue(everyKind)},
        {"",
         arrayOf({str(""), str("//"), str("-"), str("\\0"), PlistValue::data(QByteArray(9, 'x'))})},
        {"same", dictionaryOf({{"a", str("1")}, {"b", arrayOf({})}})},
    });
    const QByteArray text = written(value);
    EXPECT_TRUE(std::all_of(text.begin(), text.end(), [](char c) { return uchar(c) < 0x80; }));
    const ReadResult back = AsciiReader::read(text);
    ASSERT_TRUE(back) << back.error.description().toStdString();
    EXPECT_TRUE(back.value.isIdenticalTo(value));
}

TEST(AsciiWriter, WritesNesting100000Deep)
{
    PlistValue value = str("seed");
    for (int i = 0; i < 100000; ++i)
        value = i % 2 ? arrayOf({value}) : dictionaryOf({{"k", value}});
    const ReadResult back = AsciiReader::read(written(value));
    ASSERT_TRUE(back) << back.error.description().toStdString();
    EXPECT_TRUE(back.value.isIdenticalTo(value));
}

// Whether the value holds leaves the old-style form reads back as strings.
bool hasTypedLeaves(const PlistValue &root)
{
    return anyLeaf(root, [](const PlistValue &v) {
        return !v.isString() && v.kind() != PlistValue::Kind::Data;
    });
}

class AsciiWriterCorpus : public testing::TestWithParam<CorpusFile>
{};

TEST_P(AsciiWriterCorpus, RoundTrips)
{
    const ReadResult first = AsciiReader::read(GetParam().bytes());
    ASSERT_TRUE(first) << first.error.description().toStdString();
    const QByteArray text = written(first.value);
    const ReadResult second = AsciiReader::read(text);
    ASSERT_TRUE(second) << second.error.description().toStdString();
    EXPECT_EQ(written(second.value), text) << "what was written once is written the same again";
    if (!hasTypedLeaves(first.value)) {
        EXPECT_TRUE(second.value.isIdenticalTo(first.value));
    }
}

INSTANTIATE_TEST_SUITE_P(Manifest, AsciiWriterCorpus,
                         testing::ValuesIn(validCorpusFiles({QStringLiteral("ascii"),
                                                             QStringLiteral("strings")})),
                         [](const auto &row) { return row.param.testName(); });

} // namespace
