#include "storage/XmlReader.h"
#include "support/ReadErrorKind.h"
#include "support/ValueBuilders.h"

#include "shared/PlistArray.h"
#include "shared/PlistDictionary.h"
#include "support/Corpus.h"

#include <QDir>
#include <QFile>
#include <QStringEncoder>

#include <gtest/gtest.h>

#include <functional>
#include <limits>

namespace {

QByteArray plist(const char *inner)
{
    return QByteArray("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n") +
           inner + "\n</plist>\n";
}

QByteArray encoded(const QByteArray &utf8, QStringConverter::Encoding encoding, bool mark)
{
    QStringEncoder encoder(encoding, mark ? QStringConverter::Flag::WriteBom
                                          : QStringConverter::Flag::Default);
    return encoder.encode(QString::fromUtf8(utf8));
}

// --- every XML file of the corpus -------------------------------------------

class XmlReaderCorpus : public testing::TestWithParam<CorpusFile>
{};

TEST_P(XmlReaderCorpus, MeetsTheManifest)
{
    const CorpusFile &row = GetParam();
    const QByteArray bytes = row.bytes();
    ASSERT_TRUE(QFile::exists(row.path())) << qPrintable(row.file);
    const ReadResult result = XmlReader::read(bytes);
    if (row.expect == u"valid") {
        ASSERT_TRUE(result) << qPrintable(result.error.description());
        EXPECT_EQ(result.format, ADPlistFormatXML);
    } else if (row.expect == u"invalid") {
        ASSERT_FALSE(result);
        EXPECT_FALSE(result.error.message.isEmpty());
    }
}

INSTANTIATE_TEST_SUITE_P(Manifest, XmlReaderCorpus,
                         testing::ValuesIn(corpusFiles({QStringLiteral("xml")})),
                         [](const auto &info) { return info.param.testName(); });

TEST(XmlReaderCorpusValues, ReadWhatTheSourcesExpect)
{
    auto read = [](const char *file) {
        return XmlReader::read(CorpusFile{QString::fromUtf8(file), {}, {}}.bytes()).value;
    };
    // The UTF-16 copy of a file holds the same value as the UTF-8 one.
    EXPECT_TRUE(read("cpython/testdata_apple.utf16be_bom.xml.plist")
                    .isIdenticalTo(read("cpython/testdata_apple.xml.plist")));
    const PlistDictionary sample = read("cpython/testdata_apple.xml.plist").toDictionary();
    EXPECT_EQ(sample.value(u"aBigInt2").toUnsigned(), 9223372036854775852ull);
    EXPECT_TRUE(sample.value(u"aBigInt2").isUnsigned());
    EXPECT_EQ(sample.value(u"aDict").toDictionary().value(u"anotherString").toString(),
              QStringLiteral("<hello & 'hi' there!>"));
    EXPECT_TRUE(read("swift-foundation/inline/cdata_nested.xml.plist")
                    .isIdenticalTo(str("Test &amp; &33; <![CDATA[] outside")));
    EXPECT_TRUE(
        read("swift-foundation/inline/cfuid_dict.xml.plist").isIdenticalTo(PlistValue::uid(1)));
    EXPECT_TRUE(read("swift-foundation/inline/integer_whitespace.xml.plist")
                    .isIdenticalTo(arrayOf({qint64(42), qint64(-99), qint64(-0xFACE)})));
    EXPECT_EQ(read("swift-foundation/inline/date_year_0000.xml.plist").toDate(), -63145612800.0);
    EXPECT_EQ(read("swift-foundation/inline/date_jan_32.xml.plist").toDate(), 728512994.0);
    const PlistDictionary duplicates = read("go-plist/xml_unusual_cases/s11.plist").toDictionary();
    ASSERT_EQ(duplicates.count(), 1);
    EXPECT_EQ(duplicates.valueAt(0).toString(), QStringLiteral("libplist"));
}

// --- values ------------------------------------------------------------------------

struct GoodXml
{
    const char *name;
    QByteArray bytes;
    std::function<PlistValue()> expected;
};

const double kInf = std::numeric_limits<double>::infinity();

const GoodXml kGoodXml[] = {
    {"Integers",
     plist("<array><integer>0x7FFFFFFFFFFFFFFF</integer><integer>-9223372036854775808</integer>"
           "<integer>18446744073709551615</integer><integer>-0x2a</integer>"
           "<integer>0123</integer></array>"),
     [] {
         return arrayOf({std::numeric_limits<qint64>::max(), std::numeric_limits<qint64>::min(),
                         std::numeric_limits<quint64>::max(), qint64(-42), qint64(123)});
     }},
    {"Reals",
     plist("<array><real>0.1</real><real>-INF</real><real>+Infinity</real><real>1e400</real>"
           "<real>-0</real><real> 2.5e-3</real><real>4.9e-324</real></array>"),
     [] {
         return arrayOf({0.1, -kInf, kInf, kInf, -0.0, 2.5e-3, 4.9e-324});
     }},
    {"Dates",
     plist("<array><date>2001-01-01T00:00:00Z</date><date>1869-01-03T08:16:32Z</date>"
           "<date>2024-01-32T20:43:14Z</date><date>12345-06-07T08:09:10Z</date>"
           "<date>-0001-12-31T23:59:59Z</date></array>"),
     [] {
         // Before 1582-10-15 the calendar is Julian, as on the platform.
         return arrayOf({PlistValue::date(0), PlistValue::date(-4165314208.0),
                         PlistValue::date(728512994.0), PlistValue::date(326438669350.0),
                         PlistValue::date(-63145699201.0)});
     }},
    {"DataWithWhiteSpace", plist("<data>\n\tAAEC\n\tAw ==\n</data>"),
     [] { return PlistValue::data(QByteArray("\0\1\2\3", 4)); }},
    {"LongRunsOfWhiteSpace",
     plist("<array>\r\n \t\t\t\t\t\t\t\t\t\t\t\t\t\t\t\t<true/>\t\t\t\t\t\t\t\t\t\t\t\t"
           "\t\t\t\t \r\n\t\t\t\t\t\t\t<false/>  </array>"),
     [] {
         return arrayOf({PlistValue(true), PlistValue(false)});
     }},
    {"EmptyElements", plist("<array><string/><data/><dict/><array/></array>"),
     [] {
         return arrayOf(
             {str(""), PlistValue::data({}), PlistDictionary::create(), PlistArray::create()});
     }},
    {"ReferencesAndCdata",
     plist("<string>&lt;&gt;&amp;&quot;&apos;&#65;&#x42;&#xe9;&#x1D562;<![CDATA[<&>]]>"
           "<!-- gone --></string>"),
     [] { return str("<>&\"'AB\xC3\xA9\xF0\x9D\x95\xA2<&>"); }},
    {"RawControlCharactersAndCarriageReturns", plist("<string>a\r\nb\x01</string>"),
     [] { return str("a\r\nb\x01"); }},
    {"UidAndItsLookAlikes",
     plist("<array><dict><key>CF$UID</key><integer>7</integer></dict>"
           "<dict><key>CF$UID</key><integer>-1</integer></dict>"
           "<dict><key>CF$UID</key><string>7</string></dict></array>"),
     [] {
         return arrayOf({PlistValue::uid(7), dictionaryOf({{"CF$UID", qint64(-1)}}),
                         dictionaryOf({{"CF$UID", str("7")}})});
     }},
    {"RepeatedKeyKeepsPlaceTakesLastValue",
     plist("<dict><key>a</key><true/><key>b</key><false/><key>a</key><integer>3</integer></dict>"),
     [] {
         return dictionaryOf({{"a", qint64(3)}, {"b", false}});
     }},
    {"BareRootWithoutProlog", "<true/>", [] { return PlistValue(true); }},
    {"MarkupAround",
     "\xEF\xBB\xBF  <?xml version='1.0'?><!-- c --><?pi x?>\n<!DOCTYPE plist SYSTEM 'p.dtd' "
     "[ <!-- subset --> %pe; ]><plist version=\"1.0\" a='>'><array\n/></plist ><!-- end -->\n",
     [] { return PlistArray::create(); }},
    {"Utf16LittleEndian",
     encoded(plist("<string>\xC3\xA9\xF0\x9F\x98\x80</string>"), QStringConverter::Utf16LE, true),
     [] { return str("\xC3\xA9\xF0\x9F\x98\x80"); }},
    {"Utf16BigEndianWithoutMark",
     encoded(plist("<string>\xC3\xA9</string>"), QStringConverter::Utf16BE, false),
     [] { return str("\xC3\xA9"); }},
    {"Utf32LittleEndian",
     encoded(plist("<string>\xF0\x9F\x98\x80</string>"), QStringConverter::Utf32LE, true),
     [] { return str("\xF0\x9F\x98\x80"); }},
    {"DeclaredLatin1",
     "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><plist><string>caf\xE9</string></plist>",
     [] { return str("caf\xC3\xA9"); }},
};

class XmlReaderValues : public testing::TestWithParam<GoodXml>
{};

TEST_P(XmlReaderValues, ReadsTheValue)
{
    const ReadResult result = XmlReader::read(GetParam().bytes);
    ASSERT_TRUE(result) << qPrintable(result.error.description());
    EXPECT_TRUE(result.value.isIdenticalTo(GetParam().expected()));
}

INSTANTIATE_TEST_SUITE_P(Rows, XmlReaderValues, testing::ValuesIn(kGoodXml),
                         [](const auto &info) { return std::string(info.param.name); });

TEST(XmlReaderNaN, ReadsEveryNaNAsTheOneQuietNaN)
{
    const ReadResult result = XmlReader::read(plist("<real>-NaN</real>"));
    ASSERT_TRUE(result);
    EXPECT_TRUE(result.value.isIdenticalTo(PlistValue(std::numeric_limits<double>::quiet_NaN())));
}

// --- refusals -----------------------------------------------------------------------

using Kind = ReadError::Kind;

struct BadXml
{
    const char *name;
    QByteArray bytes;
    int line, column;
    Kind kind;
};

const BadXml kBadXml[] = {
    {"StrayCloseTag", "<plist></dict></plist>", 1, 8, Kind::MismatchedTag},
    {"KeyWithoutValue", "<plist><dict><key>a</key></dict></plist>", 1, 26, Kind::Structure},
    {"ValueWithoutKey", "<plist><dict>\n  <string>x</string></dict></plist>", 2, 3,
     Kind::Structure},
    {"UnterminatedString", "<plist><string>abc", 1, 19, Kind::Truncated},
    {"BadEntity", "<plist><string>a &nbsp; b</string></plist>", 1, 18, Kind::Escape},
    {"EntityWithoutSemicolon", "<plist><string>&amp</string></plist>", 1, 16, Kind::Escape},
    {"SurrogateReference", "<plist><string>&#xD800;</string></plist>", 1, 16, Kind::Escape},
    {"BadBase64", "<plist><data>\n  AAAA\n  AB*C</data></plist>", 3, 5, Kind::Data},
    {"Base64EndsMidByte", "<plist><data>AAAAA</data></plist>", 1, 19, Kind::Data},
    {"IntegerOverflow", "<plist><integer>18446744073709551616</integer></plist>", 1, 17,
     Kind::OutOfRange},
    {"NegativeOverflow", "<plist><integer>-9223372036854775809</integer></plist>", 1, 17,
     Kind::OutOfRange},
    {"RealWithTrailingSpace", "<real>1.5 </real>", 1, 7, Kind::Number},
    {"DateWithoutZone", "<date>2020-01-01T00:00:00</date>", 1, 7, Kind::Date},
    {"TruncatedInput", "<plist>\n<array>\n<true/>", 3, 8, Kind::Truncated},
    {"WrongNesting", "<plist>\n<array>\n<dict>\n</array>", 4, 1, Kind::MismatchedTag},
    {"UnknownElement", "<plist><integr>1</integr></plist>", 1, 8, Kind::UnknownType},
    {"TextInContainer", "<plist><array>x</array></plist>", 1, 15, Kind::Syntax},
    {"SecondValue", "<plist><true/><false/></plist>", 1, 15, Kind::Structure},
    {"EmptyPlist", "<plist>\n</plist>", 2, 1, Kind::Structure},
    {"KeyOutsideDict", "<plist><array><key>k</key></array></plist>", 1, 15, Kind::Structure},
    {"JunkAfterRoot", "<plist><true/></plist>\nmore", 2, 1, Kind::TrailingContent},
    {"ElementInString", "<string>a<b/></string>", 1, 10, Kind::Syntax},
    {"LessThanInAttribute", "<plist a=\"<\"><true/></plist>", 1, 10, Kind::Syntax},
    {"UnterminatedComment", "<plist><!-- never closed <true/></plist>", 1, 8, Kind::Truncated},
    {"DeclarationInDoctype", "<!DOCTYPE plist [<!ENTITY e \"x\">]><plist/>", 1, 18,
     Kind::Unsupported},
    {"LateXmlDeclaration", "<!-- c --><?xml version=\"1.0\"?><true/>", 1, 11, Kind::Syntax},
    {"InvalidUtf8", "<plist>\n<string>\xC3\x28</string></plist>", 2, 9, Kind::Encoding},
    {"UnknownEncoding", "<?xml version=\"1.0\" encoding=\"foobar\"?><true/>", 1, 31,
     Kind::Encoding},
    {"NotXml", "a;djflk", 1, 1, Kind::Syntax},
    {"Empty", "", -1, -1, Kind::Empty},
    {"PrologAlone", "<?xml version=\"1.0\"?>\n", 2, 1, Kind::Truncated},
    {"CutInsideATag", "<plist><dict", 1, 13, Kind::Truncated},
};

class XmlReaderErrors : public testing::TestWithParam<BadXml>
{};

TEST_P(XmlReaderErrors, ReportsWhereItFailed)
{
    const BadXml &row = GetParam();
    const ReadResult result = XmlReader::read(row.bytes);
    ASSERT_FALSE(result);
    EXPECT_EQ(result.error.kind, row.kind) << qPrintable(result.error.description());
    EXPECT_EQ(result.error.line, row.line) << qPrintable(result.error.description());
    EXPECT_EQ(result.error.column, row.column) << qPrintable(result.error.description());
}

INSTANTIATE_TEST_SUITE_P(Rows, XmlReaderErrors, testing::ValuesIn(kBadXml),
                         [](const auto &info) { return std::string(info.param.name); });

TEST(XmlReaderFixtures, RefusesEveryHostileFile)
{
    const QDir folder(QStringLiteral(ARBORDECK_TEST_DATA_DIR "/xml"));
    const QStringList files = folder.entryList(QDir::Files);
    ASSERT_FALSE(files.isEmpty());
    for (const QString &name : files) {
        QFile file(folder.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        const ReadResult result = XmlReader::read(file.readAll());
        EXPECT_FALSE(result) << qPrintable(name);
        EXPECT_GE(result.error.line, 1) << qPrintable(name);
    }
}

// --- large data ------------------------------------------------------------------------

// Data in lines of 68 characters, with `inside` spliced in before the last line.
QByteArray largeData(const QByteArray &bytes, const QByteArray &inside = {})
{
    const QByteArray base64 = bytes.toBase64();
    QByteArray text;
    for (qsizetype i = 0; i < base64.size(); i += 68)
        text += (i + 68 >= base64.size() ? inside : QByteArray()) + "\n\t" + base64.mid(i, 68);
    return text;
}

TEST(XmlReaderLargeData, DecodesAnyContentTheSmallWayWould)
{
    QByteArray bytes(300 * 1024, Qt::Uninitialized); // decoded in more than one step
    for (qsizetype i = 0; i < bytes.size(); ++i)
        bytes[i] = char(i * 7 + i / 251);
    const PlistValue expected = arrayOf({PlistValue::data(bytes), str("after")});
    // Leading spaces move where the steps of decoding split the groups.
    for (const QByteArray lead : {"", " ", "  ", "   "}) {
        for (const QByteArray inside : {"", "<!-- note -->", "<![CDATA[]]>", "&#32;"}) {
            const QByteArray file = plist(("<array><data>" + lead + largeData(bytes, inside) +
                                           "\n</data ><string>after</string></array>")
                                              .constData());
            const ReadResult result = XmlReader::read(file);
            ASSERT_TRUE(result) << inside.constData() << qPrintable(result.error.description());
            EXPECT_TRUE(result.value.isIdenticalTo(expected)) << inside.constData();
            const ReadResult tight =
                XmlReader::read(QByteArray(file).replace("</data >", "</data>"));
            ASSERT_TRUE(tight) << qPrintable(tight.error.description());
            EXPECT_TRUE(tight.value.isIdenticalTo(expected)) << lead.size() << inside.constData();
        }
    }
}

TEST(XmlReaderLargeData, ReportsMistakesWhereTheyAre)
{
    const QByteArray good = largeData(QByteArray(300000, 'x')); // no padding
    const qsizetype lines = good.count('\n');
    const struct
    {
        QByteArray content;
        int line, column;
        Kind kind;
    } rows[] = {
        {good + "\n\t*AAA</data>", int(lines + 3), 2, Kind::Data},
        {good + "A</data>", int(lines + 2), int(good.size() - good.lastIndexOf('\n')) + 1,
         Kind::Data},
        {good + "</date>", int(lines + 2), int(good.size() - good.lastIndexOf('\n')),
         Kind::MismatchedTag},
        {good, int(lines + 2), int(good.size() - good.lastIndexOf('\n')), Kind::Truncated},
    };
    for (const auto &row : rows) {
        const ReadResult result = XmlReader::read("<plist>\n<data>" + row.content +
                                                  (row.content == good ? "" : "</plist>"));
        ASSERT_FALSE(result) << int(row.kind);
        EXPECT_EQ(result.error.kind, row.kind) << qPrintable(result.error.description());
        EXPECT_EQ(result.error.line, row.line) << qPrintable(result.error.description());
        EXPECT_EQ(result.error.column, row.column) << qPrintable(result.error.description());
    }
}

// Line ends inside large data still count for what comes after.
TEST(XmlReaderLargeData, CountsLinesThroughLargeData)
{
    const QByteArray good = largeData(QByteArray(300001, 'y')); // with padding
    const qsizetype lines = good.count('\n');
    for (const QByteArray lineEnd : {"\n", "\r\n", "\r"}) {
        const QByteArray file = "<plist>\n<data>" + QByteArray(good).replace("\n", lineEnd) +
                                "\n</data>\n  <true/></plist>";
        const ReadResult result = XmlReader::read(file);
        ASSERT_FALSE(result);
        EXPECT_EQ(result.error.line, lines + 4) << qPrintable(result.error.description());
        EXPECT_EQ(result.error.column, 3) << qPrintable(result.error.description());
    }
}

// --- shape and recognition ------------------------------------------------------------

TEST(XmlReaderDepth, ReadsNestingOneHundredThousandDeep)
{
    constexpr int kDepth = 100000;
    const QByteArray bytes = "<plist>" + QByteArray("<array>").repeated(kDepth) + "<true/>" +
                             QByteArray("</array>").repeated(kDepth) + "</plist>";
    const ReadResult result = XmlReader::read(bytes);
    ASSERT_TRUE(result) << qPrintable(result.error.description());
    PlistValue v = result.value;
    int depth = 0;
    while (v.isArray()) {
        v = v.toArray().at(0);
        ++depth;
    }
    EXPECT_EQ(depth, kDepth);
    EXPECT_TRUE(v.toBool());

    const ReadResult unclosed =
        XmlReader::read("<plist>" + QByteArray("<dict><key>k</key>").repeated(kDepth));
    ASSERT_FALSE(unclosed);
    EXPECT_EQ(unclosed.error.kind, Kind::Truncated);
    EXPECT_EQ(unclosed.error.line, 1);
}

TEST(XmlReaderRecognizes, LooksAtTheFirstMarkupOnly)
{
    EXPECT_TRUE(XmlReader::recognizes("<?xml version=\"1.0\"?>"));
    EXPECT_TRUE(XmlReader::recognizes("\xEF\xBB\xBF\n <plist>"));
    EXPECT_TRUE(XmlReader::recognizes("<!-- note --><dict/>"));
    EXPECT_TRUE(XmlReader::recognizes("<!DOCTYPE plist>"));
    EXPECT_TRUE(XmlReader::recognizes(encoded("<plist>", QStringConverter::Utf16BE, true)));
    EXPECT_TRUE(XmlReader::recognizes(encoded("<?xml ", QStringConverter::Utf32LE, true)));
    EXPECT_FALSE(XmlReader::recognizes("bplist00"));
    EXPECT_FALSE(XmlReader::recognizes("{ a = b; }"));
    EXPECT_FALSE(XmlReader::recognizes("<616263>"));
    EXPECT_FALSE(XmlReader::recognizes(""));
}

} // namespace
