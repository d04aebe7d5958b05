#include "model/ADPlistObject.h"

#include "shared/KZError.h"
#include "shared/PlistArray.h"
#include "shared/PlistDictionary.h"
#include "storage/PlistSerialization.h"
#include "support/Corpus.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

const QString kParsePrefix =
    QStringLiteral("The file %1 could not be opened because an error occurred parsing "
                   "the file.\n\nPlist parse error: ");

class CorpusThroughTheReadingEntry : public testing::TestWithParam<CorpusFile>
{};

TEST_P(CorpusThroughTheReadingEntry, OpensValidFilesAndExplainsTheRest)
{
    const CorpusFile &row = GetParam();
    ADPlistFormat format = 0;
    std::optional<KZError> error;
    const auto root =
        ADPlistObject::plistObjectWithContentsOfFile(row.path(), false, &format, &error);
    if (row.expect == u"unknown")
        return; // either way, as long as nothing crashed
    if (row.expect == u"invalid") {
        EXPECT_EQ(root, nullptr);
        ASSERT_TRUE(error);
        EXPECT_TRUE(error->localizedDescription().startsWith(kParsePrefix.arg(row.path())))
            << qPrintable(error->localizedDescription());
        EXPECT_TRUE(
            error->localizedDescription().contains(QStringLiteral("\n\nJSON parse error: ")));
        EXPECT_EQ(format, ADPlistFormatUnknown);
        return;
    }
    ASSERT_NE(root, nullptr) << qPrintable(error ? error->localizedDescription() : QString());
    ReadResult direct = PlistSerialization::read(row.bytes());
    if (!direct)
        direct = PlistSerialization::readJson(row.bytes());
    ASSERT_TRUE(direct);
    PlistValue expected = direct.value;
    if (expected.kind() == PlistValue::Kind::Uid) { // a tree shows an archiver UID as a dictionary
        PlistDictionary shown = PlistDictionary::create();
        shown.insert(QStringLiteral("CF$UID"), PlistValue(qint64(qint32(expected.toUid()))));
        expected = shown;
    }
    EXPECT_TRUE(root->plist().isEqualToPlist(expected)) << "the tree's root holds the file's value";
    EXPECT_EQ(format, direct.format);
}

INSTANTIATE_TEST_SUITE_P(Corpus, CorpusThroughTheReadingEntry, testing::ValuesIn(corpusFiles()),
                         [](const auto &row) { return row.param.testName(); });

// Opening a file lets the XML reader decode large data over the file's bytes;
// the value, and a refusal with both its reasons, must not differ from reading
// bytes the caller keeps, and JSON's reason stays what JSON says of the file.
TEST(ADPlistObjectFiles, OpensLargeXmlDataAsFromMemory)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("large.plist"));
    const QByteArray base64 = QByteArray(400 * 1024, '\xFF').toBase64(); // not UTF-8 once decoded
    for (const QByteArray tail : {"", "<bogus/>", "<string>\xFF</string>"}) {
        const QByteArray bytes = "<?xml version=\"1.0\"?>\n<plist><array><data>\n" + base64 +
                                 "\n</data>" + tail + "</array></plist>\n";
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        ASSERT_EQ(file.write(bytes), bytes.size());
        file.close();
        std::optional<KZError> fromFile, fromMemory;
        const PlistValue opened = ADPlistObject::readPlistFromFile(path, false, nullptr, &fromFile);
        const PlistValue read = ADPlistObject::readPlistFromData(bytes, path, nullptr, &fromMemory);
        EXPECT_EQ(opened.isNone(), !tail.isEmpty());
        EXPECT_TRUE(opened.isIdenticalTo(read));
        ASSERT_EQ(bool(fromFile), bool(fromMemory));
        if (fromFile) {
            EXPECT_EQ(fromFile->localizedDescription(), fromMemory->localizedDescription());
            const QString json = PlistSerialization::readJson(bytes).error.description();
            EXPECT_TRUE(fromFile->localizedDescription().endsWith(json))
                << qPrintable(fromFile->localizedDescription());
        }
    }
}

TEST(ADPlistObjectFiles, TriesJsonOnlyAfterThePlistFormatsRefuse)
{
    QVariantMap attributes;
    const auto json = ADPlistObject::plistObjectWithData(R"({"a": [1, true, null]})", &attributes);
    ASSERT_NE(json, nullptr);
    EXPECT_EQ(json->childForKey("a")->childAtIndex(2)->plistType(), ADPlistTypeNull);
    EXPECT_EQ(attributes.value(PlistObjectFormat).toLongLong(), ADPlistFormatUnknown)
        << "the data route reports only the plist parser's format";

    const auto ascii = ADPlistObject::plistObjectWithData("(a, b)", &attributes);
    ASSERT_NE(ascii, nullptr);
    EXPECT_EQ(attributes.value(PlistObjectFormat).toLongLong(), ADPlistFormatASCII);

    EXPECT_EQ(ADPlistObject::plistObjectWithData("{\"a\" 1", &attributes), nullptr);
    EXPECT_FALSE(attributes.value(PlistObjectErrorString).toString().isEmpty());
}

TEST(ADPlistObjectFiles, ReportsBothParsersForAnEmptyFile)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("empty.plist"));
    QFile(path).open(QIODevice::WriteOnly);
    std::optional<KZError> error;
    ADPlistFormat format = 0;
    EXPECT_TRUE(ADPlistObject::readPlistFromFile(path, false, &format, &error).isNone());
    ASSERT_TRUE(error);
    EXPECT_TRUE(error->localizedDescription().startsWith(kParsePrefix.arg(path)));
    EXPECT_EQ(format, ADPlistFormatUnknown);

    error.reset();
    EXPECT_TRUE(
        ADPlistObject::readPlistFromFile(dir.filePath("missing"), false, nullptr, &error).isNone());
    EXPECT_TRUE(error);

    // A message read elsewhere names the file in full, however it was given.
    const QString here = QDir::currentPath();
    ASSERT_TRUE(QDir::setCurrent(dir.path()));
    error.reset();
    ADPlistObject::readPlistFromFile(QStringLiteral("empty.plist"), false, nullptr, &error);
    const QString full = QDir::current().absoluteFilePath(QStringLiteral("empty.plist"));
    QDir::setCurrent(here);
    ASSERT_TRUE(error);
    EXPECT_TRUE(error->localizedDescription().startsWith(kParsePrefix.arg(full)));
}

TEST(ADPlistObjectFiles, WritesAtomicallyAndKeepsTheOldFileOnFailure)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("out.plist"));
    PlistDictionary d = PlistDictionary::create();
    d.insert(QStringLiteral("z"), PlistValue(1));
    d.insert(QStringLiteral("a"), PlistValue::data("bytes"));
    ASSERT_FALSE(ADPlistObject::writePlist(d, path, ADPlistFormatBinary, false));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray before = file.readAll();
    file.close();

    const auto refused = ADPlistObject::writePlist(d, path, ADPlistFormatJSON, true);
    ASSERT_TRUE(refused) << "JSON holds no data";
    EXPECT_FALSE(refused->localizedDescription().isEmpty());
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), before);
    file.close();

    ADPlistFormat format = 0;
    const PlistValue back = ADPlistObject::readPlistFromFile(path, false, &format, nullptr);
    EXPECT_TRUE(back.isIdenticalTo(d));
    EXPECT_EQ(format, ADPlistFormatBinary);
    EXPECT_TRUE(ADPlistObject::writePlist(d, dir.filePath("no/such/folder/x.plist"),
                                          ADPlistFormatXML, false));
    EXPECT_EQ(ADPlistObject::displayStringForPlistFormat(ADPlistFormatBinary),
              QStringLiteral("Binary"));
    EXPECT_TRUE(ADPlistObject::displayStringForPlistFormat(2).isNull());
}

} // namespace
