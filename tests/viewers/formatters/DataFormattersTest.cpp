// The data formatters: hexadecimal with its limit, text in each encoding,
// embedded property lists, and alias and bookmark records shown as paths.

#include "viewers/formatters/ADAliasDataFormatter.h"
#include "viewers/formatters/ADBinaryPlistFormatter.h"
#include "viewers/formatters/ADBookmarkDataFormatter.h"
#include "viewers/formatters/ADDataFormatter.h"
#include "viewers/formatters/ADTextDataFormatter.h"
#include "viewers/formatters/CUAlias.h"
#include "viewers/formatters/KZBookmarkData.h"

#include "shared/KZDataAdditions.h"
#include "shared/PlistArray.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

QByteArray testRecord(const char *name)
{
    QFile file(QStringLiteral(ARBORDECK_TEST_DATA_DIR "/records/") + QString::fromLatin1(name));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << name;
    return file.readAll();
}

QByteArray countingBytes(int count)
{
    QByteArray bytes;
    for (int i = 0; i < count; ++i)
        bytes.append(char(i * 7));
    return bytes;
}

TEST(DataFormatter, ShowsAtMost280BytesAndEditsThemAll)
{
    const ADDataFormatter formatter;
    for (const int size : {280, 281, 4096}) {
        SCOPED_TRACE(size);
        const QByteArray bytes = countingBytes(size);
        const PlistValue value = PlistValue::data(bytes);
        const QString shown = formatter.stringForObjectValue(value).value();
        const QString all = hexStringWithBytes(bytes, 2, false);
        EXPECT_EQ(formatter.editingStringForObjectValue(value), all);
        if (size == 280) {
            EXPECT_EQ(shown, all);
            continue;
        }
        EXPECT_EQ(shown, hexStringWithBytes(bytes.first(140), 2, false) + QChar(0x2026) +
                             hexStringWithBytes(bytes.last(140), 2, false));
        PlistValue back;
        ASSERT_TRUE(formatter.getObjectValue(&back, all, nullptr));
        EXPECT_EQ(back.toData(), bytes);
    }
    const KZStyledText empty =
        formatter.attributedStringForObjectValue(PlistValue::data({})).value();
    EXPECT_EQ(empty.label, QStringLiteral("0 bytes: "));
    EXPECT_EQ(empty.text, QString());
    QString message;
    EXPECT_FALSE(formatter.getObjectValue(nullptr, QStringLiteral("12 3g"), &message));
    EXPECT_EQ(message, QStringLiteral("Invalid hexadecimal data for data object"));
    EXPECT_FALSE(formatter.stringForObjectValue(PlistValue(qint64(1))).has_value());
    EXPECT_EQ(ADBinaryPlistFormatter()
                  .attributedStringForObjectValue(PlistValue::data("bplist00"))
                  ->label,
              QStringLiteral("Binary plist, 8 bytes: "));
}

TEST(TextDataFormatter, DecodesStrictlyInEachEncodingAndRefusesWhatItCannotEncode)
{
    struct Row
    {
        const char *name;
        quint64 encoding;
        QByteArray bytes;
        const char *text; // null: not valid in the encoding
    };
    const Row rows[] = {
        {"Utf8", KZStringEncoding::UTF8, "h\xC3\xA9llo", "h\xC3\xA9llo"},
        {"Utf8Invalid", KZStringEncoding::UTF8, "h\xE9llo", nullptr},
        {"AsciiHighByte", KZStringEncoding::ASCII, "h\xE9", nullptr},
        {"Latin1", KZStringEncoding::ISOLatin1, "h\xE9", "h\xC3\xA9"},
        {"MacRoman", KZStringEncoding::MacOSRoman, "\x8E\xDB", "\xC3\xA9\xE2\x82\xAC"},
        {"Windows1252", KZStringEncoding::WindowsCP1252, "\x80", "\xE2\x82\xAC"},
        {"Windows1252Undefined", KZStringEncoding::WindowsCP1252, "\x81", nullptr},
        {"Utf16LittleEndianMark", KZStringEncoding::UTF16, QByteArray("\xFF\xFEh\0i\0", 6), "hi"},
        {"Utf16NoMarkIsBigEndian", KZStringEncoding::UTF16, QByteArray("\0h\0i", 4), "hi"},
        {"Utf16OddLength", KZStringEncoding::UTF16, QByteArray("\0h\0", 3), nullptr},
        {"Utf16LoneSurrogate", KZStringEncoding::UTF16BigEndian, QByteArray("\xD8\x00\0a", 4),
         nullptr},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        ADTextDataFormatter formatter;
        formatter.setEncoding(row.encoding);
        const PlistValue value = PlistValue::data(row.bytes);
        const KZStyledText styled = formatter.attributedStringForObjectValue(value).value();
        if (!row.text) {
            EXPECT_FALSE(formatter.stringForObjectValue(value).has_value());
            EXPECT_FALSE(formatter.editingStringForObjectValue(value).has_value());
            EXPECT_EQ(styled.textRole, KZStyledText::Role::Error);
            EXPECT_EQ(
                styled.text,
                QStringLiteral("The data is not a valid %1 string").arg(formatter.encodingName()));
            continue;
        }
        EXPECT_EQ(formatter.stringForObjectValue(value), QString::fromUtf8(row.text));
        EXPECT_EQ(styled.label, formatter.encodingName() + QStringLiteral(" String: "));
        PlistValue back;
        ASSERT_TRUE(formatter.getObjectValue(&back, QString::fromUtf8(row.text), nullptr));
        EXPECT_EQ(KZStringEncoding::decode(back.dataView(), row.encoding),
                  QString::fromUtf8(row.text));
    }
    ADTextDataFormatter ascii;
    ascii.setEncoding(KZStringEncoding::ASCII);
    QString message;
    EXPECT_FALSE(ascii.getObjectValue(nullptr, QStringLiteral("\u20AC"), &message));
    EXPECT_EQ(message, QStringLiteral("The string cannot be encoded as ASCII"));
}

TEST(ResolvableDataFormatters, ShowThePathsRealRecordsStore)
{
    struct Row
    {
        const char *file;
        std::shared_ptr<ADResolvableDataFormatter> formatter;
        const char *shown;
    };
    const Row rows[] = {
        {"macos-alias-basics.alias", std::make_shared<ADAliasDataFormatter>(),
         "Alias: /Volumes/Test Title/.background/TestBkg.tiff"},
        {"fq-sample1.book", std::make_shared<ADBookmarkDataFormatter>(),
         "Bookmark: /Applications/Bitwarden.app"},
        {"fq-sample2.book", std::make_shared<ADBookmarkDataFormatter>(),
         "Bookmark: /Users/davidmcdonald/hxstore"},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.file);
        const PlistValue value = PlistValue::data(testRecord(row.file));
        EXPECT_EQ(row.formatter->stringForObjectValue(value), QString::fromUtf8(row.shown));
        const KZStyledText styled = row.formatter->attributedStringForObjectValue(value).value();
        EXPECT_EQ(styled.label + styled.text, QString::fromUtf8(row.shown));
        EXPECT_EQ(row.formatter->editingStringForObjectValue(value),
                  QString::fromUtf8(row.shown).section(QStringLiteral(": "), 1));
    }
}

TEST(ResolvableDataFormatters, GiveAClearReasonForRecordsTheyCannotRead)
{
    const QByteArray alias = testRecord("macos-alias-basics.alias");
    const QByteArray bookmark = testRecord("fq-sample1.book");
    QByteArray aliasWithoutPaths = alias.left(150);
    aliasWithoutPaths.append("\xFF\xFF\0\0", 4);
    aliasWithoutPaths[4] = 0;
    aliasWithoutPaths[5] = char(154);
    QByteArray bookmarkWithoutPath = bookmark;
    bookmarkWithoutPath[0x194] = 0x09; // the path's key becomes one nobody reads

    struct Row
    {
        const char *name;
        std::shared_ptr<ADResolvableDataFormatter> formatter;
        QByteArray data;
        const char *reason;
    };
    const auto aliases = std::make_shared<ADAliasDataFormatter>();
    const auto bookmarks = std::make_shared<ADBookmarkDataFormatter>();
    const Row rows[] = {
        {"AliasTruncated", aliases, alias.left(200),
         "Not a valid alias record: its length field says 298 bytes, but only 200 are there (byte "
         "4)"},
        {"AliasEmpty", aliases, QByteArray(),
         "Not a valid alias record: it is shorter than its header (byte 0)"},
        {"AliasWithoutPath", aliases, aliasWithoutPaths,
         "No path could be determined from the alias record"},
        {"BookmarkNotABookmark", bookmarks, "bplist00 and more bytes here",
         "Not a valid bookmark: it does not start with the bookmark signature (byte 0)"},
        {"BookmarkTruncated", bookmarks, bookmark.left(300),
         "Not a valid bookmark: its length field says 560 bytes, but only 300 are there (byte 4)"},
        {"BookmarkWithoutPath", bookmarks, bookmarkWithoutPath,
         "The bookmark could not be resolved: it holds no path"},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        const PlistValue value = PlistValue::data(row.data);
        const KZStyledText styled = row.formatter->attributedStringForObjectValue(value).value();
        EXPECT_EQ(styled.text, QString::fromUtf8(row.reason));
        EXPECT_EQ(styled.textRole, KZStyledText::Role::Error);
        EXPECT_EQ(row.formatter->editingStringForObjectValue(value), QString());
    }
}

TEST(ResolvableDataFormatters, MakeRecordsForTypedPathsThatReadBackHere)
{
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("target file.txt"));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.close();
    const std::shared_ptr<ADResolvableDataFormatter> formatters[] = {
        std::make_shared<ADAliasDataFormatter>(), std::make_shared<ADBookmarkDataFormatter>()};
    for (const auto &formatter : formatters) {
        SCOPED_TRACE(qPrintable(formatter->localizedDataTypeName()));
        PlistValue record;
        QString message;
        ASSERT_TRUE(formatter->getObjectValue(&record, path, &message)) << qPrintable(message);
        EXPECT_EQ(formatter->editingStringForObjectValue(record), path);
        const QString missing = folder.filePath(QStringLiteral("gone"));
        EXPECT_FALSE(formatter->getObjectValue(nullptr, missing, &message));
        EXPECT_EQ(message, QStringLiteral("No file exists at the path “%1”").arg(missing));
    }
    PlistValue bookmark;
    ASSERT_TRUE(ADBookmarkDataFormatter().getObjectValue(&bookmark, path, nullptr));
    ASSERT_TRUE(QFile::remove(path));
    EXPECT_EQ(ADBookmarkDataFormatter().editingStringForObjectValue(bookmark), path);
    const KZBookmarkData read(bookmark.toData());
    EXPECT_EQ(read.valueForKey(KZBookmarkData::TargetPath).toArray().count(), path.count(u'/'));
}

TEST(BookmarkData, OffersTheResourceValuesItStores)
{
    const KZBookmarkData bookmark(testRecord("fq-sample1.book"));
    ASSERT_TRUE(bookmark.isValid()) << qPrintable(bookmark.errorString());
    QHash<QString, PlistValue> values;
    QStringList order;
    for (const auto &[key, value] : bookmark.resourceValues()) {
        values.insert(key, value);
        order.append(key);
    }
    EXPECT_EQ(values.value(QStringLiteral("_NSURLPathKey")).toString(),
              QStringLiteral("/Applications/Bitwarden.app"));
    EXPECT_EQ(values.value(QStringLiteral("NSURLNameKey")).toString(),
              QStringLiteral("Bitwarden.app"));
    EXPECT_EQ(values.value(QStringLiteral("NSURLParentDirectoryURLKey")).toString(),
              QStringLiteral("file:///Applications/"));
    EXPECT_TRUE(values.value(QStringLiteral("NSURLIsDirectoryKey")).toBool());
    EXPECT_FALSE(values.value(QStringLiteral("NSURLIsRegularFileKey")).toBool());
    EXPECT_FALSE(values.contains(QStringLiteral("NSURLIsHiddenKey"))); // its flag is not valid
    EXPECT_EQ(values.value(QStringLiteral("NSURLVolumeNameKey")).toString(),
              QStringLiteral("Macintosh HD"));
    EXPECT_EQ(values.value(QStringLiteral("NSURLVolumeTotalCapacityKey")).toInteger(),
              499963174912);
    EXPECT_EQ(values.value(QStringLiteral("NSURLVolumeCreationDateKey")).toDate(), 599558400.0);
    EXPECT_TRUE(values.value(QStringLiteral("NSURLVolumeIsLocalKey")).toBool());
    EXPECT_EQ(values.value(QStringLiteral("NSURLFileResourceIdentifierKey")).toInteger(), 54389243);
    QStringList platformOrder = KZBookmarkData::allResourceKeys();
    platformOrder.removeIf([&](const QString &key) { return !values.contains(key); });
    EXPECT_EQ(order, platformOrder);
    EXPECT_EQ(KZBookmarkData::allResourceKeys().size(), 92);
    EXPECT_EQ(KZBookmarkData(testRecord("fq-sample2.book"))
                  .valueForKey(KZBookmarkData::CreatorUserName)
                  .toString(),
              QStringLiteral("davidmcdonald"));
}

TEST(BookmarkData, ItemsThatReferToThemselvesEndAtTheBudget)
{
    QByteArray bookmark = testRecord("fq-sample1.book");
    // The path array (item at 60) lists itself as its first element.
    bookmark[0x74] = 60;
    const KZBookmarkData read(bookmark);
    EXPECT_FALSE(read.isValid());
    EXPECT_TRUE(read.errorString().startsWith(
        QStringLiteral("Not a valid bookmark: its items nest or repeat too deeply")))
        << qPrintable(read.errorString());
}

TEST(AliasRecord, ReadsTheFieldsOfARealRecord)
{
    const CUAlias alias(testRecord("macos-alias-basics.alias"));
    ASSERT_TRUE(alias.isValid()) << qPrintable(alias.errorString());
    EXPECT_EQ(alias.version(), 2);
    EXPECT_EQ(alias.volumeName(), QStringLiteral("Test Title"));
    EXPECT_EQ(alias.targetName(), QStringLiteral("TestBkg.tiff"));
    EXPECT_EQ(alias.parentFolderName(), QStringLiteral(".background"));
    EXPECT_EQ(alias.carbonPath(), QStringLiteral("Test Title:.background:TestBkg.tiff"));
    EXPECT_EQ(alias.targetID(), 20u);
    EXPECT_EQ(alias.parentDirectoryID(), 19u);
    // 2014-01-02T18:20:08Z
    EXPECT_EQ(alias.targetCreationDate(), 410379608.0);
}

} // namespace
