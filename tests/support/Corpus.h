#pragma once

// The interoperability corpus beside the project: every file with the format
// its manifest names and whether a correct reader accepts it.

#include <QByteArray>
#include <QFile>
#include <QString>
#include <QStringList>

#include <map>
#include <ostream>
#include <string>
#include <vector>

struct CorpusFile
{
    QString file;   // relative to the corpus folder
    QString format; // xml, binary, ascii, strings, json or unknown
    QString expect; // valid, invalid or unknown: the manifest's word, or ours where we differ

    QString path() const { return QStringLiteral(ARBORDECK_CORPUS_DIR "/") + file; }
    QByteArray bytes() const
    {
        QFile f(path());
        return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
    }
    /// A test name: letters and digits of the path.
    std::string testName() const
    {
        std::string name;
        for (const QChar c : file)
            name += c.isLetterOrNumber() && c.unicode() < 128 ? char(c.unicode()) : '_';
        return name;
    }
};

inline void PrintTo(const CorpusFile &row, std::ostream *out)
{
    *out << row.file.toStdString();
}

/// Rows where the manifest's sources disagree and this program follows the
/// platform's own reader; each with the verdict it gets here.
inline const std::map<QString, QString> &corpusDeviations()
{
    static const std::map<QString, QString> deviations{
        // Zero-length data is no property list (a file of white space is an empty strings file).
        {QStringLiteral("go-plist/golden/Empty_Text_Document.openstep.plist"),
         QStringLiteral("invalid")},
        // An unknown escape ("\d") stands for its character, as a valid row's "\w" needs.
        {QStringLiteral("dd-plist/github-issue88.plist"), QStringLiteral("valid")},
    };
    return deviations;
}

// Files written by the platform's own tools (or by tools that copy its layout
// exactly): reading and writing them again must not change a byte.
inline const char *const kPlatformLayoutFiles[] = {
    "gnustep/Tests/base/PropertyLists/non_baseplane_utf8.plist",
    "libplist/test_data/7.plist",
    "libplist/test_data/offxml.plist",
    "libplist/test_data/order.plist",
    "libplist/test_data/signed.plist",
    "libplist/test_data/signedunsigned.plist",
    "libplist/test_data/unsigned.plist",
    "mDNSResponder/BonjourExtension-Info.plist",
    "mDNSResponder/com.apple.mDNSResponder.mdns-tcpdump.plist",
    "mDNSResponder/com.apple.mDNSResponder.plist",
    "mDNSResponder/com.apple.mDNSResponderHelper.plist",
    "mDNSResponder/dns-sd-entitlements.plist",
    "mDNSResponder/mDNSResponder.plist",
    "rust-plist/xml-animals.plist",
    "sparkle/IDEWorkspaceChecks.plist",
    "sparkle/Sparkle-Info.plist",
    "sparkle/Sparkle-Test-App.entitlements",
    "swift-corelibs-foundation/Info.plist",
    "swift-corelibs-foundation/NSKeyedUnarchiver-ArrayTest.plist",
    "swift-corelibs-foundation/NSKeyedUnarchiver-ConcreteValueTest.plist",
    "swift-corelibs-foundation/NSKeyedUnarchiver-NotificationTest.plist",
    "swift-corelibs-foundation/NSKeyedUnarchiver-OrderedSetTest.plist",
    "swift-corelibs-foundation/NSKeyedUnarchiver-RangeTest.plist",
    "swift-corelibs-foundation/NSKeyedUnarchiver-URLTest.plist",
    "swift-corelibs-foundation/NSKeyedUnarchiver-UUIDTest.plist",
    "swift-corelibs-foundation/NSURLTestData.plist",
    "swift-corelibs-foundation/Test.plist",
    "swift-foundation/Generic_XML_Properties.plist",
};

inline std::vector<CorpusFile> corpusFiles()
{
    QFile manifest(QStringLiteral(ARBORDECK_CORPUS_DIR "/MANIFEST.tsv"));
    std::vector<CorpusFile> rows;
    if (!manifest.open(QIODevice::ReadOnly))
        return rows;
    manifest.readLine(); // header
    while (!manifest.atEnd()) {
        const QStringList cells = QString::fromUtf8(manifest.readLine()).split(u'\t');
        if (cells.size() < 6)
            continue;
        const auto deviation = corpusDeviations().find(cells[0]);
        rows.push_back({cells[0], cells[4],
                        deviation == corpusDeviations().end() ? cells[5] : deviation->second});
    }
    return rows;
}

/// The rows of the given formats.
inline std::vector<CorpusFile> corpusFiles(const QStringList &formats)
{
    std::vector<CorpusFile> rows;
    for (const CorpusFile &row : corpusFiles()) {
        if (formats.contains(row.format))
            rows.push_back(row);
    }
    return rows;
}

/// The rows a correct reader accepts, of the given formats (all when none are given).
inline std::vector<CorpusFile> validCorpusFiles(const QStringList &formats = {})
{
    std::vector<CorpusFile> rows = formats.isEmpty() ? corpusFiles() : corpusFiles(formats);
    std::erase_if(rows, [](const CorpusFile &row) { return row.expect != u"valid"; });
    return rows;
}
