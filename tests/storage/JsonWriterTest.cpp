#include "storage/JsonWriter.h"
#include "support/ValueBuilders.h"

#include "shared/PlistArray.h"
#include "shared/PlistDictionary.h"
#include "storage/JsonReader.h"
#include "support/Corpus.h"

#include <QFile>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <random>

namespace {

QByteArray written(const PlistValue &value, bool humanReadable = false)
{
    const WriteResult result = JsonWriter::write(value, humanReadable);
    EXPECT_TRUE(result) << result.error.toStdString();
    return result.data;
}

PlistValue sample()
{
    return dictionaryOf({
        {"z", arrayOf({PlistValue(1), PlistValue(true), PlistValue::null(), arrayOf({})})},
        {"a", dictionaryOf({{"b", str("c")}, {"d", dictionaryOf({})}})},
    });
}

TEST(JsonWriter, WritesCompactText)
{
    EXPECT_EQ(written(sample()), R"({"z":[1,true,null,[]],"a":{"b":"c","d":{}}})");
}

TEST(JsonWriter, WritesHumanReadableText)
{
    EXPECT_EQ(written(sample(), true), "{\n"
                                       "  \"z\": [\n"
                                       "    1,\n"
                                       "    true,\n"
                                       "    null,\n"
                                       "    []\n"
                                       "  ],\n"
                                       "  \"a\": {\n"
                                       "    \"b\": \"c\",\n"
                                       "    \"d\": {}\n"
                                       "  }\n"
                                       "}");
}

struct Leaf
{
    const char *name;
    PlistValue value;
    QByteArray text;
};

const Leaf kLeaves[] = {
    {"Integer", PlistValue(qint64(-42)), "-42"},
    {"SmallestInteger", PlistValue(std::numeric_limits<qint64>::min()), "-9223372036854775808"},
    {"Unsigned", PlistValue(std::numeric_limits<quint64>::max()), "18446744073709551615"},
    {"WholeReal", PlistValue(1.0), "1.0"},
    {"LargeWholeReal", PlistValue(123456789012345680.0), "123456789012345680.0"},
    {"NegativeZero", PlistValue(-0.0), "-0.0"},
    {"ShortestReal", PlistValue(0.1), "0.1"},
    {"RealWithExponent", PlistValue(1e300), "1e+300"},
    {"Subnormal", PlistValue(5e-324), "5e-324"},
    {"Escapes", str("\"\\/\b\f\n\r\t\x01\x1f\x7f"),
     R"("\"\\/\b\f\n\r\t\u0001\u001f)"
     "\x7f\""},
    {"Latin1AsUtf8", PlistValue(QLatin1StringView("caf\xe9")), "\"caf\xc3\xa9\""},
    {"Utf8", str("世😀"), "\"世😀\""},
    {"LoneSurrogate", PlistValue(QString(QChar(0xDBFF)) + u'x'), R"("\udbffx")"},
};

void PrintTo(const Leaf &row, std::ostream *out)
{
    *out << row.name;
}

class JsonWriterLeaves : public testing::TestWithParam<Leaf>
{};

TEST_P(JsonWriterLeaves, WritesExactText)
{
    EXPECT_EQ(written(GetParam().value), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(Rows, JsonWriterLeaves, testing::ValuesIn(kLeaves),
                         [](const auto &row) { return std::string(row.param.name); });

TEST(JsonWriter, RefusesWhatJsonCannotHold)
{
    PlistDictionary cycle = PlistDictionary::create();
    cycle.insert(QStringLiteral("self"), cycle.value());
    const std::pair<PlistValue, const char *> rows[] = {
        {arrayOf({PlistValue(std::nan(""))}), "NaN or infinity"},
        {PlistValue(-std::numeric_limits<double>::infinity()), "NaN or infinity"},
        {PlistValue::data("x"), "no data type"},
        {dictionaryOf({{"when", PlistValue::date(0)}}), "no date type"},
        {PlistValue::uid(1), "no UID type"},
        {PlistValue(), "no value"},
        {cycle.value(), "contains itself"},
    };
    for (const auto &[value, message] : rows) {
        const WriteResult result = JsonWriter::write(value, true);
        EXPECT_FALSE(result) << message;
        EXPECT_TRUE(result.error.contains(QLatin1StringView(message)))
            << result.error.toStdString();
    }
    cycle.clear(); // the cycle holds itself alive
}

TEST(JsonWriter, RealsReadBackBitForBit)
{
    std::mt19937_64 random(20240601);
    for (int i = 0; i < 20000; ++i) {
        const double real = std::bit_cast<double>(random());
        if (!std::isfinite(real))
            continue;
        const QByteArray text = written(PlistValue(real));
        const ReadResult back = JsonReader::read(text);
        ASSERT_TRUE(back && back.value.isReal()) << text.toStdString();
        ASSERT_EQ(std::bit_cast<quint64>(back.value.toReal()), std::bit_cast<quint64>(real))
            << text.toStdString();
    }
}

TEST(JsonWriter, WritesNesting100000Deep)
{
    PlistValue value = PlistValue(1);
    for (int i = 0; i < 100000; ++i)
        value = i % 2 ? arrayOf({value}) : dictionaryOf({{"k", value}});
    for (const bool humanReadable : {false, true}) {
        const ReadResult back = JsonReader::read(written(value, humanReadable));
        ASSERT_TRUE(back) << back.error.description().toStdString();
        EXPECT_TRUE(back.value.isIdenticalTo(value));
    }
}

class JsonWriterCorpus : public testing::TestWithParam<CorpusFile>
{};

TEST_P(JsonWriterCorpus, RoundTrips)
{
    const ReadResult first = JsonReader::read(GetParam().bytes());
    ASSERT_TRUE(first) << first.error.description().toStdString();
    for (const bool humanReadable : {false, true}) {
        const ReadResult second = JsonReader::read(written(first.value, humanReadable));
        ASSERT_TRUE(second) << second.error.description().toStdString();
        EXPECT_TRUE(second.value.isIdenticalTo(first.value));
    }
}

INSTANTIATE_TEST_SUITE_P(Manifest, JsonWriterCorpus,
                         testing::ValuesIn(validCorpusFiles({QStringLiteral("json")})),
                         [](const auto &row) { return row.param.testName(); });

// Python loads what we wrote and dumps it again in its own style; reading
// that back must give the same value.
TEST(JsonWriter, ReadsBackEqualInPython)
{
    const QString python = QStandardPaths::findExecutable(QStringLiteral("python3"));
    if (python.isEmpty())
        GTEST_SKIP() << "python3 is not installed";
    QString everyKind;
    for (char16_t unit = 0; unit < 0x100; ++unit)
        everyKind += QChar(unit);
    everyKind += QString::fromUtf16(u"\u4e16\U0001F600") + QChar(0xD800);
    const PlistValue value = dictionaryOf({
        {"strings", arrayOf({PlistValue(everyKind), str("")})},
        {"numbers", arrayOf({PlistValue(std::numeric_limits<quint64>::max()),
                             PlistValue(std::numeric_limits<qint64>::min()), PlistValue(1.0),
                             PlistValue(0.1), PlistValue(-1e-300), PlistValue(5e-324)})},
        {"other", arrayOf({PlistValue(true), PlistValue(false), PlistValue::null()})},
        {"ünïcode key", dictionaryOf({{"b", str("2")}, {"a", str("1")}})},
    });
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString in = dir.filePath(QStringLiteral("in.json"));
    const QString out = dir.filePath(QStringLiteral("out.json"));
    for (const bool humanReadable : {false, true}) {
        QFile file(in);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(written(value, humanReadable));
        file.close();
        const QString command =
            QStringLiteral("\"%1\" -c 'import json, sys; "
                           "data = json.load(open(sys.argv[1], encoding=\"utf-8\")); "
                           "open(sys.argv[2], \"w\").write(json.dumps(data))' \"%2\" \"%3\"")
                .arg(python, in, out);
        ASSERT_EQ(std::system(command.toLocal8Bit().constData()), 0);
        QFile result(out);
        ASSERT_TRUE(result.open(QIODevice::ReadOnly));
        const ReadResult back = JsonReader::read(result.readAll());
        ASSERT_TRUE(back) << back.error.description().toStdString();
        EXPECT_TRUE(back.value.isIdenticalTo(value));
    }
}

} // namespace
