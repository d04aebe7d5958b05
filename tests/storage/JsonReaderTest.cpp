#include "storage/JsonReader.h"
#include "support/ReadErrorKind.h"

#include "shared/PlistArray.h"
#include "shared/PlistDictionary.h"
#include "support/Corpus.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string_view>

namespace {

using Kind = ReadError::Kind;

using namespace std::literals;

PlistValue str(std::u16string_view text)
{
    return PlistValue::fromUtf16(text.data(), qsizetype(text.size()));
}

PlistValue arrayOf(std::initializer_list<PlistValue> items)
{
    PlistArray array = PlistArray::create();
    for (const PlistValue &item : items)
        array.append(item);
    return array;
}

PlistValue dictionaryOf(std::initializer_list<std::pair<std::u16string_view, PlistValue>> entries)
{
    PlistDictionary dictionary = PlistDictionary::create();
    for (const auto &[key, value] : entries)
        dictionary.insert(str(key), value);
    return dictionary;
}

struct GoodJson
{
    const char *name;
    QByteArray text;
    PlistValue value;
};

const GoodJson kGoodJson[] = {
    {"Literals", "[true, false, null]",
     arrayOf({PlistValue(true), PlistValue(false), PlistValue::null()})},
    {"Integers", "[0, -0, 42, -9223372036854775808, 9223372036854775807]",
     arrayOf({PlistValue(0), PlistValue(0), PlistValue(42),
              PlistValue(std::numeric_limits<qint64>::min()),
              PlistValue(std::numeric_limits<qint64>::max())})},
    {"UnsignedAboveSigned", "18446744073709551615",
     PlistValue(std::numeric_limits<quint64>::max())},
    {"IntegerBeyond64Bits", "18446744073709551616", PlistValue(18446744073709551616.0)},
    {"NegativeBeyond64Bits", "-9223372036854775809", PlistValue(-9223372036854775809.0)},
    {"Reals", "[1.0, 0.1, -2.5e-3, 1E2, 5e-324]",
     arrayOf({PlistValue(1.0), PlistValue(0.1), PlistValue(-2.5e-3), PlistValue(100.0),
              PlistValue(5e-324)})},
    {"UnderflowIsZero", "[1e-400, -1e-400, 0.0000e-999999999999]",
     arrayOf({PlistValue(0.0), PlistValue(-0.0), PlistValue(0.0)})},
    {"Escapes", R"("\"\\\/\b\f\n\r\t\u0000\u00e9\u4E16")", str(u"\"\\/\b\f\n\r\t\0é世"sv)},
    {"SurrogatePair", R"("\ud83d\ude00")", str(u"😀")},
    {"LoneSurrogatesStay", R"(["\ud800x", "\udc00"])",
     arrayOf({PlistValue(QString(QChar(0xD800)) + u'x'), PlistValue(QString(QChar(0xDC00)))})},
    {"Utf8Text", "{\"clé\": \"日本語\"}", dictionaryOf({{u"clé", str(u"日本語")}})},
    {"RepeatedKeyKeepsFirstPlace", R"({"a": 1, "b": 2, "a": 3})",
     dictionaryOf({{u"a", PlistValue(3)}, {u"b", PlistValue(2)}})},
    {"EmptyContainers", " [ {} , [ ] ] ", arrayOf({dictionaryOf({}), arrayOf({})})},
    {"ScalarAtTop", "\xEF\xBB\xBF \"top\"\r\n", str(u"top")},
    {"Utf16WithoutMark", QByteArray("[\0\"\0\xe9\0\"\0]\0", 10), arrayOf({str(u"é")})},
};

void PrintTo(const GoodJson &row, std::ostream *out)
{
    *out << row.name;
}

class JsonReaderValues : public testing::TestWithParam<GoodJson>
{};

TEST_P(JsonReaderValues, ReadsWhatTheTextSays)
{
    const ReadResult result = JsonReader::read(GetParam().text);
    ASSERT_TRUE(result) << result.error.description().toStdString();
    EXPECT_EQ(result.format, ADPlistFormatJSON);
    EXPECT_TRUE(result.value.isIdenticalTo(GetParam().value));
}

INSTANTIATE_TEST_SUITE_P(Rows, JsonReaderValues, testing::ValuesIn(kGoodJson),
                         [](const auto &row) { return std::string(row.param.name); });

struct BadJson
{
    const char *name;
    QByteArray text;
    int line;
    int column;
    Kind kind;
};

const BadJson kBadJson[] = {
    {"Empty", "", 1, 1, Kind::Empty},
    {"UnterminatedString", "[\"abc", 1, 2, Kind::Truncated},
    {"BadEscape", "[\"a\\x\"]", 1, 4, Kind::Escape},
    {"ShortUnicodeEscape", "\"\\u12G4\"", 1, 6, Kind::Escape},
    {"ControlCharacter", "[\"a\tb\"]", 1, 4, Kind::Syntax},
    {"MissingComma", "[1 2]", 1, 4, Kind::Syntax},
    {"MissingColon", "{\"a\" 1}", 1, 6, Kind::Syntax},
    {"KeyNotString", "{a: 1}", 1, 2, Kind::Syntax},
    {"TrailingComma", "[1,]", 1, 4, Kind::Syntax},
    {"TrailingGarbage", "{}\n x", 2, 2, Kind::TrailingContent},
    {"TwoValues", "1 2", 1, 3, Kind::TrailingContent},
    {"UnbalancedBrackets", "[[1]]]", 1, 6, Kind::TrailingContent},
    {"Truncated", "{\"a\": [1,\n", 2, 1, Kind::Truncated},
    {"LeadingZero", "[01]", 1, 2, Kind::Number},
    {"BareMinus", "-", 1, 2, Kind::Number},
    {"PointWithoutDigits", "1.e5", 1, 3, Kind::Number},
    {"EmptyExponent", "1e+", 1, 4, Kind::Number},
    {"TooLarge", "[1e400]", 1, 2, Kind::OutOfRange},
    {"MisspeltLiteral", "[nul]", 1, 2, Kind::Syntax},
    {"SingleQuotes", "['a']", 1, 2, Kind::Syntax},
    {"Comment", "// x\n1", 1, 1, Kind::Syntax},
    {"InvalidUtf8", "[\"\xED\xA0\x80\"]", 1, 3, Kind::Encoding},
    {"NulCharacter", QByteArray("[\"\0\"]", 5), 1, 3, Kind::Encoding},
    {"WhiteSpaceOnly", " \n", 2, 1, Kind::Truncated},
    {"UnpairedSurrogateInUtf16", QByteArray("\0[\xD8\0\0]", 6), 1, 2, Kind::Encoding},
};

void PrintTo(const BadJson &row, std::ostream *out)
{
    *out << row.name;
}

class JsonReaderErrors : public testing::TestWithParam<BadJson>
{};

TEST_P(JsonReaderErrors, ReportsWhatAndWhere)
{
    const BadJson &row = GetParam();
    const ReadResult result = JsonReader::read(row.text);
    ASSERT_FALSE(result) << "read as " << result.value.displayString().toStdString();
    EXPECT_EQ(result.error.kind, row.kind) << result.error.description().toStdString();
    EXPECT_EQ(result.error.line, row.line) << result.error.description().toStdString();
    EXPECT_EQ(result.error.column, row.column) << result.error.description().toStdString();
}

INSTANTIATE_TEST_SUITE_P(Rows, JsonReaderErrors, testing::ValuesIn(kBadJson),
                         [](const auto &row) { return std::string(row.param.name); });

TEST(JsonReader, ReadsNesting100000Deep)
{
    constexpr int depth = 100000;
    const ReadResult arrays = JsonReader::read(QByteArray(depth, '[') + QByteArray(depth, ']'));
    ASSERT_TRUE(arrays) << arrays.error.description().toStdString();
    const ReadResult objects =
        JsonReader::read(QByteArray("{\"a\":").repeated(depth) + "1" + QByteArray(depth, '}'));
    ASSERT_TRUE(objects) << objects.error.description().toStdString();
    qsizetype depthFound = 0;
    for (PlistValue value = objects.value; value.isDictionary(); ++depthFound)
        value = value.toDictionary().valueAt(0);
    EXPECT_EQ(depthFound, depth);
}

class JsonReaderCorpus : public testing::TestWithParam<CorpusFile>
{};

TEST_P(JsonReaderCorpus, AcceptsWhatTheManifestExpects)
{
    const CorpusFile &row = GetParam();
    const ReadResult result = JsonReader::read(row.bytes());
    if (row.expect == u"valid") {
        EXPECT_TRUE(result) << result.error.description().toStdString();
    } else if (row.expect == u"invalid") {
        EXPECT_FALSE(result);
        EXPECT_FALSE(result.error.message.isEmpty());
        EXPECT_GE(result.error.line, 1);
    }
}

INSTANTIATE_TEST_SUITE_P(Manifest, JsonReaderCorpus,
                         testing::ValuesIn(corpusFiles({QStringLiteral("json")})),
                         [](const auto &row) { return row.param.testName(); });

} // namespace
