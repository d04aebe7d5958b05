#include "storage/SafeFileWriter.h"

#include "shared/KZExtendedAttributes.h"
#include "support/UnwritableFolder.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

namespace {

const QString kUserAttribute = QStringLiteral("user.test.origin");

QByteArray fileBytes(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

struct stat statOf(const QString &path)
{
    struct stat info = {};
    ::lstat(QFile::encodeName(path).constData(), &info);
    return info;
}

class SafeFileWriterTest : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(_dir.isValid());
        _file = _dir.filePath(QStringLiteral("settings.plist"));
        QFile file(_file);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("old bytes");
    }
    void TearDown() override { SafeFileWriter::injectFaultAfterBytes(-1); }

    // The folder holds the file and nothing else: no new file was left behind.
    void expectOnlyTheFile()
    {
        EXPECT_EQ(
            QDir(_dir.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
            QStringList{QStringLiteral("settings.plist")});
    }

    QTemporaryDir _dir;
    QString _file;
};

TEST_F(SafeFileWriterTest, KeepsModeOwnerAndAttributes)
{
    ASSERT_EQ(::chmod(QFile::encodeName(_file).constData(), 0640), 0);
    const bool attributes = KZExtendedAttributes::setValue(_file, kUserAttribute, "kept");
    const bool superuser = ::geteuid() == 0;
    if (superuser) {
        ASSERT_EQ(::chown(QFile::encodeName(_file).constData(), 4321, 4321), 0);
    }
    const ino_t before = statOf(_file).st_ino;

    ASSERT_FALSE(SafeFileWriter::write(_file, "new bytes"));

    EXPECT_EQ(fileBytes(_file), QByteArray("new bytes"));
    const struct stat after = statOf(_file);
    EXPECT_NE(after.st_ino, before) << "replaced, not written over";
    EXPECT_EQ(after.st_mode & 07777, 0640u);
    if (superuser) {
        EXPECT_EQ(after.st_uid, 4321u);
        EXPECT_EQ(after.st_gid, 4321u);
    }
    if (attributes) {
        EXPECT_EQ(KZExtendedAttributes::value(_file, kUserAttribute), QByteArray("kept"));
    }
    expectOnlyTheFile();
}

TEST_F(SafeFileWriterTest, GivesANewFileTheUsersUsualMode)
{
    const mode_t mask = ::umask(022);
    ::umask(mask);
    const QString path = _dir.filePath(QStringLiteral("new.plist"));
    ASSERT_FALSE(SafeFileWriter::write(path, "fresh"));
    EXPECT_EQ(statOf(path).st_mode & 0777, 0666u & ~mask);
}

TEST_F(SafeFileWriterTest, WritesThroughAChainOfLinksToTheirTarget)
{
    QDir(_dir.path()).mkdir(QStringLiteral("links"));
    const QString inner = _dir.filePath(QStringLiteral("links/inner"));
    const QString outer = _dir.filePath(QStringLiteral("outer"));
    ASSERT_TRUE(QFile::link(QStringLiteral("../settings.plist"), inner)); // relative to its folder
    ASSERT_TRUE(QFile::link(inner, outer));

    ASSERT_FALSE(SafeFileWriter::write(outer, "through the links"));

    EXPECT_EQ(fileBytes(_file), QByteArray("through the links"));
    EXPECT_TRUE(S_ISLNK(statOf(outer).st_mode));
    EXPECT_TRUE(S_ISLNK(statOf(inner).st_mode));
    EXPECT_EQ(QFile::symLinkTarget(outer), inner);
}

TEST_F(SafeFileWriterTest, MakesTheMissingEndOfALink)
{
    const QString link = _dir.filePath(QStringLiteral("dangling"));
    ASSERT_TRUE(QFile::link(QStringLiteral("made.plist"), link));
    ASSERT_FALSE(SafeFileWriter::write(link, "made"));
    EXPECT_EQ(fileBytes(_dir.filePath(QStringLiteral("made.plist"))), QByteArray("made"));
    EXPECT_TRUE(S_ISLNK(statOf(link).st_mode));
}

TEST_F(SafeFileWriterTest, RefusesALoopOfLinks)
{
    const QString a = _dir.filePath(QStringLiteral("a"));
    const QString b = _dir.filePath(QStringLiteral("b"));
    ASSERT_TRUE(QFile::link(b, a));
    ASSERT_TRUE(QFile::link(a, b));
    const std::optional<KZError> error = SafeFileWriter::write(a, "never");
    ASSERT_TRUE(error);
    EXPECT_EQ(error->userInfo().value(QStringLiteral("NSFilePath")).toString(), a);
}

// Each failure leaves the old bytes and no stray file.
TEST_F(SafeFileWriterTest, AFailedWriteLeavesTheOldFile)
{
    struct Case
    {
        const char *name;
        qint64 faultAfter;
        QByteArray bytes;
    };
    const Case cases[] = {
        {"HalfwayThrough", 4096, QByteArray(10000, 'x')},
        {"BeforeTheFirstByte", 0, QByteArray("new")},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        SafeFileWriter::injectFaultAfterBytes(c.faultAfter);
        const std::optional<KZError> error = SafeFileWriter::write(_file, c.bytes);
        ASSERT_TRUE(error);
        EXPECT_FALSE(error->localizedDescription().isEmpty());
        EXPECT_EQ(fileBytes(_file), QByteArray("old bytes"));
        expectOnlyTheFile();
    }
}

TEST_F(SafeFileWriterTest, AnUnwritableFolderLeavesTheOldFile)
{
    const UnwritableFolder locked(_dir.path());
    if (!locked.holds())
        GTEST_SKIP() << "this user can write any folder here";
    EXPECT_TRUE(SafeFileWriter::write(_file, "new"));
    EXPECT_EQ(fileBytes(_file), QByteArray("old bytes"));
}

TEST_F(SafeFileWriterTest, RefusesWhatIsNoPlainFile)
{
    EXPECT_TRUE(SafeFileWriter::write(_dir.path(), "into a folder"));
    EXPECT_TRUE(QFileInfo(_dir.path()).isDir());
}

} // namespace
