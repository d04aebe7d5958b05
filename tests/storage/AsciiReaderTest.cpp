#include "storage/AsciiReader.h"
#include "support/ReadErrorKind.h"

#include "shared/PlistArray.h"
#include "shared/PlistDictionary.h"
#include "storage/JsonReader.h"
#include "support/Corpus.h"

#include <gtest/gtest.h>

#include <set>

namespace {

using Kind = ReadError::Kind;

QByteArray utf16(const char16_t *text, bool bigEndian, bool mark)
{
    QByteArray bytes;
    const auto put = [&](char16_t unit) {
        bytes += char(bigEndian ? unit >> 8 : unit & 0xFF);
        bytes += char(bigEndian ? unit & 0xFF : unit >> 8);
    };
    if (mark)
        put(0xFEFF);
    for (; *text; ++text)
        put(*text);
    return bytes;
}

// Expected values are written as JSON, which has every type these rows need.
PlistValue fromJson(const char *json)
{
    const ReadResult result = JsonReader::read(json);
    EXPECT_TRUE(result) << json << ": " << result.error.description().toStdString();
    return result.value;
}

struct GoodText
{
    const char *name;
    QByteArray text;
    const char *json;
};

const GoodText kGoodTexts[] = {
    {"QuotedAndUnquoted", "{ a = b; \"c d\" = 'e f'; }", R"({"a":"b","c d":"e f"})"},
    {"RepeatedKeyKeepsFirstPlace", "{a=1; b=2; a=3;}", R"({"a":"3","b":"2"})"},
    {"TrailingComma", "(a, b,)", R"(["a","b"])"},
    {"EmptyElements", "(A,,,\"\",)", R"(["A","","",""])"},
    {"Nested", "{a = (b, {c = d;}, ()); e = {};}", R"({"a":["b",{"c":"d"},[]],"e":{}})"},
    {"Comments", "// top\n{ /* x */ a /**/ = b; // y\n}", R"({"a":"b"})"},
    {"SlashesAndStarsInUnquoted", "{S = /not/a/comment/; T = a*b/*c;}",
     R"({"S":"/not/a/comment/","T":"a*b/*c"})"},
    {"Escapes", R"("\a\b\f\n\r\t\v\\\"\'")", R"("\u0007\b\f\n\r\t\u000b\\\"'")"},
    {"UnicodeEscapes", R"("\U00e9\u4E16\UD83D\UDE00")", R"("é世😀")"},
    {"LoneSurrogateStays", R"("\UD800x")", R"("\ud800x")"},
    {"ShortEscapes", R"("\x41\101\0\U41\0057")", R"("AA\u0000A\u00057")"},
    {"OctalAboveAsciiIsLatin1", R"("\310")", R"("È")"},
    {"UnknownEscapeIsTheCharacter", R"("\w\é")", R"("wé")"},
    {"Utf8Text", "{ \"clé\" = \"日本語\"; }", R"({"clé":"日本語"})"},
    {"UnquotedLetters", "{ clé = クオート無し; }", R"({"clé":"クオート無し"})"},
    {"Utf8WithMark", "\xEF\xBB\xBFHello", R"("Hello")"},
    {"StringsFile", "\"a\" = \"b\";\nc = d;", R"({"a":"b","c":"d"})"},
    {"StringsFileShortcut", "\"Key\";\nKey2;", R"({"Key":"Key","Key2":"Key2"})"},
    {"WhiteSpaceOnly", " \n\t", "{}"},
    {"OnlyComments", " /* a */ // b\n", "{}"},
    {"TopLevelString", "Hello", R"("Hello")"},
    {"TypedValues", "(<*I-5>, <*I18446744073709551615>, <*R1.5>, <*BY>, <*BN>)",
     "[-5,18446744073709551615,1.5,true,false]"},
    {"TypedValuesInQuotes", R"((<*I"12">, <*I"0012>, <*B"Y>))", "[12,12,true]"},
    {"Utf16LittleEndianWithMark", utf16(u"(a, \u00e9)", false, true), R"(["a","é"])"},
    {"Utf16BigEndianWithoutMark", utf16(u"\"\u4e16\"", true, false), R"("世")"},
};

class AsciiReaderValues : public testing::TestWithParam<GoodText>
{};

TEST_P(AsciiReaderValues, ReadsWhatTheTextSays)
{
    const ReadResult result = AsciiReader::read(GetParam().text);
    ASSERT_TRUE(result) << result.error.description().toStdString();
    EXPECT_EQ(result.format, ADPlistFormatASCII);
    EXPECT_TRUE(result.value.isIdenticalTo(fromJson(GetParam().json)));
}

INSTANTIATE_TEST_SUITE_P(Rows, AsciiReaderValues, testing::ValuesIn(kGoodTexts),
                         [](const auto &row) { return std::string(row.param.name); });

TEST(AsciiReader, ReadsDataAndDates)
{
    const ReadResult result = AsciiReader::read("(<0fbd7788 99\n 0A>, <>, <[aGVs^^bG8=]>, "
                                                "<*D2001-01-01 00:00:00 +0000>, "
                                                "<*D2013-11-27 00:34:00 +0000>, "
                                                "<*D2001-01-01 01:00:00 +0100>)");
    ASSERT_TRUE(result) << result.error.description().toStdString();
    const PlistArray array = result.value.toArray();
    ASSERT_EQ(array.count(), 6);
    EXPECT_EQ(array.at(0).toData(), QByteArray::fromHex("0fbd778899 0a"));
    EXPECT_EQ(array.at(1).toData(), QByteArray());
    EXPECT_EQ(array.at(2).toData(), QByteArray("hello"));
    EXPECT_TRUE(array.at(3).isIdenticalTo(PlistValue::date(0)));
    EXPECT_TRUE(array.at(4).isIdenticalTo(PlistValue::date(407205240)));
    EXPECT_TRUE(array.at(5).isIdenticalTo(PlistValue::date(0)));
}

void PrintTo(const GoodText &row, std::ostream *out)
{
    *out << row.name;
}

struct BadText
{
    const char *name;
    QByteArray text;
    int line;
    int column;
    Kind kind;
};

const BadText kBadTexts[] = {
    {"UnterminatedString", "{a = \"b;\n}", 1, 6, Kind::Truncated},
    {"HexEscapeWithoutDigits", "(\"x\\Uz\")", 1, 4, Kind::Escape},
    {"MissingSemicolon", "{a = b\n c = d;}", 2, 2, Kind::Syntax},
    {"MissingEquals", "{a b;}", 1, 4, Kind::Syntax},
    {"MissingComma", "(a b)", 1, 4, Kind::Syntax},
    {"TrailingGarbage", "{a=b;}\nx", 2, 1, Kind::TrailingContent},
    {"ExtraBrace", "{a=b;}}", 1, 7, Kind::TrailingContent},
    {"BraceInStringsFile", "a = b; }", 1, 8, Kind::Syntax},
    {"BadHexData", "<0fxz>", 1, 4, Kind::Data},
    {"OddHexData", "<0f1>", 1, 5, Kind::Data},
    {"UnclosedData", "(<0f", 1, 2, Kind::Truncated},
    {"UnclosedDictionary", "{a=b;\n", 2, 1, Kind::Truncated},
    {"UnclosedNestedArray", "(a,\n (b", 2, 4, Kind::Truncated},
    {"UnclosedComment", "( /* x", 1, 3, Kind::Truncated},
    {"BadTypedInteger", "<*I12x>", 1, 4, Kind::Number},
    {"TypedIntegerTooLarge", "<*I18446744073709551616>", 1, 4, Kind::OutOfRange},
    {"UnknownType", "<*F1>", 1, 3, Kind::UnknownType},
    {"ImpossibleDate", "<*D2001-02-29 00:00:00 +0000>", 1, 4, Kind::Date},
    {"UnclosedTypedValue", "<*I3", 1, 5, Kind::Truncated},
    {"LoneBase64Character", "<[3]>", 1, 1, Kind::Data},
    {"NulCharacter", QByteArray("(a,\0)", 5), 1, 4, Kind::Encoding},
    {"InvalidUtf8", "(\"\xC3\x28\")", 1, 3, Kind::Encoding},
    {"UnquotedSymbol", "{\xC2\xAC=A;}", 1, 2, Kind::Syntax},
    {"UnpairedSurrogateInUtf16", utf16(u"(a,\xD800)", false, true), 1, 4, Kind::Encoding},
    {"OddUtf16", "\xFE\xFF\x01", 1, 1, Kind::Encoding},
    {"Empty", "", 1, 1, Kind::Empty},
    {"TypedBooleanOtherThanYOrN", "<*BT>", 1, 4, Kind::Syntax},
};

void PrintTo(const BadText &row, std::ostream *out)
{
    *out << row.name;
}

class AsciiReaderErrors : public testing::TestWithParam<BadText>
{};

TEST_P(AsciiReaderErrors, ReportsWhatAndWhere)
{
    const BadText &row = GetParam();
    const ReadResult result = AsciiReader::read(row.text);
    ASSERT_FALSE(result) << "read as " << result.value.displayString().toStdString();
    EXPECT_EQ(result.error.kind, row.kind) << result.error.description().toStdString();
    EXPECT_EQ(result.error.line, row.line) << result.error.description().toStdString();
    EXPECT_EQ(result.error.column, row.column) << result.error.description().toStdString();
}

INSTANTIATE_TEST_SUITE_P(Rows, AsciiReaderErrors, testing::ValuesIn(kBadTexts),
                         [](const auto &row) { return std::string(row.param.name); });

qsizetype depthOf(PlistValue value)
{
    qsizetype depth = 0;
    while (value.isContainer()) {
        ++depth;
        if (value.isArray())
            value = value.toArray().isEmpty() ? PlistValue() : value.toArray().at(0);
        else
            value = value.toDictionary().isEmpty() ? PlistValue() : value.toDictionary().valueAt(0);
    }
    return depth;
}

TEST(AsciiReader, ReadsNesting100000Deep)
{
    constexpr int depth = 100000;
    const ReadResult arrays = AsciiReader::read(QByteArray(depth, '(') + QByteArray(depth, ')'));
    ASSERT_TRUE(arrays) << arrays.error.description().toStdString();
    EXPECT_EQ(depthOf(arrays.value), depth);
    const ReadResult dictionaries = AsciiReader::read(QByteArray("{a=").repeated(depth) + "b" +
                                                      QByteArray(";}").repeated(depth));
    ASSERT_TRUE(dictionaries) << dictionaries.error.description().toStdString();
    EXPECT_EQ(depthOf(dictionaries.value), depth);
}

class AsciiReaderCorpus : public testing::TestWithParam<CorpusFile>
{};

TEST_P(AsciiReaderCorpus, AcceptsWhatTheManifestExpects)
{
    const CorpusFile &row = GetParam();
    const ReadResult result = AsciiReader::read(row.bytes());
    if (row.expect == u"valid") {
        EXPECT_TRUE(result) << result.error.description().toStdString();
    } else if (row.expect == u"invalid") {
        EXPECT_FALSE(result);
        EXPECT_FALSE(result.error.message.isEmpty());
        EXPECT_GE(result.error.line, 1);
    }
}

INSTANTIATE_TEST_SUITE_P(Manifest, AsciiReaderCorpus,
                         testing::ValuesIn(corpusFiles({QStringLiteral("ascii"),
                                                        QStringLiteral("strings"),
                                                        QStringLiteral("unknown")})),
                         [](const auto &row) { return row.param.testName(); });

} // namespace
