#include "preferences/KZUserDefaults.h"

#include "storage/PlistSerialization.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QSignalSpy>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

QByteArray fileBytes(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void writeFile(const QString &path, const QByteArray &bytes)
{
    QSaveFile file(path); // replaced as an editor that saves safely would
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(bytes);
    ASSERT_TRUE(file.commit());
}

QByteArray plistWith(const QString &key, const PlistValue &value)
{
    PlistDictionary dictionary = PlistDictionary::create();
    dictionary.insert(key, value);
    return PlistSerialization::write(dictionary.value(), ADPlistFormatXML).data;
}

PlistDictionary fileValues(const QString &path)
{
    const ReadResult result = PlistSerialization::read(fileBytes(path));
    return result ? result.value.toDictionary() : PlistDictionary();
}

// Runs the event loop until `done` holds or a generous deadline passes.
template <typename Done> bool waitFor(Done done)
{
    QDeadlineTimer deadline(10000);
    while (!done() && !deadline.hasExpired())
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    return done();
}

QStringList filesIn(const QString &folder)
{
    return QDir(folder).entryList(QDir::Files | QDir::Hidden, QDir::Name);
}

class KZUserDefaultsTest : public testing::Test
{
protected:
    QString path() const { return _folder.filePath(QStringLiteral("settings.plist")); }
    QTemporaryDir _folder;
};

TEST_F(KZUserDefaultsTest, SettingsSurviveARestartAboveTheirDefaults)
{
    PlistDictionary defaults = PlistDictionary::create();
    defaults.insert(QStringLiteral("colour"), PlistValue(QStringLiteral("blue")));
    defaults.insert(QStringLiteral("size"), PlistValue(qint64(10)));
    {
        KZUserDefaults first(path());
        first.registerDefaults(defaults);
        first.setString(QStringLiteral("red"), QStringLiteral("colour"));
        first.setBool(true, QStringLiteral("flag"));
    } // written when it goes, as at the end of the program

    KZUserDefaults second(path());
    second.registerDefaults(defaults);
    EXPECT_EQ(second.stringForKey(QStringLiteral("colour")), QStringLiteral("red"));
    EXPECT_TRUE(second.boolForKey(QStringLiteral("flag")));
    EXPECT_EQ(second.integerForKey(QStringLiteral("size")), 10) << "a default, never stored";
    EXPECT_FALSE(fileValues(path()).contains(QStringLiteral("size")));

    QSignalSpy changed(&second, &KZUserDefaults::valueChanged);
    second.removeObjectForKey(QStringLiteral("colour"));
    second.setBool(true, QStringLiteral("flag")); // the same value: no change
    EXPECT_EQ(second.stringForKey(QStringLiteral("colour")), QStringLiteral("blue"));
    ASSERT_EQ(changed.count(), 1);
    EXPECT_EQ(changed.at(0).at(0).toString(), QStringLiteral("colour"));
    ASSERT_TRUE(second.synchronize());
    EXPECT_FALSE(fileValues(path()).contains(QStringLiteral("colour")));
    EXPECT_EQ(filesIn(_folder.path()), QStringList{QStringLiteral("settings.plist")})
        << "no temporary or lock file is left behind";
}

TEST_F(KZUserDefaultsTest, ContainersHandedOutAreCopies)
{
    KZUserDefaults defaults(path());
    PlistArray list = PlistArray::create();
    list.append(PlistValue(qint64(1)));
    defaults.setObject(list.value(), QStringLiteral("list"));
    list.append(PlistValue(qint64(2)));
    defaults.arrayForKey(QStringLiteral("list")).append(PlistValue(qint64(3)));
    EXPECT_EQ(defaults.arrayForKey(QStringLiteral("list")).count(), 1);
}

TEST_F(KZUserDefaultsTest, TwoInstancesKeepEachOthersKeys)
{
    KZUserDefaults first(path());
    KZUserDefaults second(path());
    QSignalSpy secondChanged(&second, &KZUserDefaults::valueChanged);

    first.setInteger(1, QStringLiteral("first"));
    second.setInteger(2, QStringLiteral("second"));
    ASSERT_TRUE(first.synchronize());
    ASSERT_TRUE(second.synchronize()); // merges into what the first wrote

    const PlistDictionary onDisk = fileValues(path());
    EXPECT_EQ(onDisk.value(QStringLiteral("first")).toInteger(), 1);
    EXPECT_EQ(onDisk.value(QStringLiteral("second")).toInteger(), 2);
    EXPECT_EQ(second.integerForKey(QStringLiteral("first")), 1);
    EXPECT_TRUE(secondChanged.contains(QVariantList{QStringLiteral("first")}));

    // Without being asked, the first notices the second's write by watching the file.
    second.setInteger(3, QStringLiteral("first"));
    ASSERT_TRUE(second.synchronize());
    EXPECT_TRUE(waitFor([&] { return first.integerForKey(QStringLiteral("first")) == 3; }));
    EXPECT_EQ(first.integerForKey(QStringLiteral("second")), 2);
}

TEST_F(KZUserDefaultsTest, AHandEditIsTakenAndAnnouncedPerKey)
{
    KZUserDefaults defaults(path());
    defaults.setString(QStringLiteral("before"), QStringLiteral("name"));
    defaults.setString(QStringLiteral("same"), QStringLiteral("other"));
    ASSERT_TRUE(defaults.synchronize());
    QSignalSpy changed(&defaults, &KZUserDefaults::valueChanged);

    PlistDictionary edited = fileValues(path());
    edited.insert(QStringLiteral("name"), PlistValue(QStringLiteral("after")));
    writeFile(path(), PlistSerialization::write(edited.value(), ADPlistFormatXML).data);

    EXPECT_TRUE(waitFor([&] { return changed.count() > 0; }));
    EXPECT_EQ(defaults.stringForKey(QStringLiteral("name")), QStringLiteral("after"));
    ASSERT_EQ(changed.count(), 1) << "only the key that changed is announced";
    EXPECT_EQ(changed.at(0).at(0).toString(), QStringLiteral("name"));
}

TEST_F(KZUserDefaultsTest, ACorruptFileIsMovedAsideNotOverwritten)
{
    const QByteArray garbage = "<plist><dict><key>a</key></plist> not a property list";
    writeFile(path(), garbage);

    KZUserDefaults defaults(path());
    PlistDictionary registered = PlistDictionary::create();
    registered.insert(QStringLiteral("a"), PlistValue(qint64(7)));
    defaults.registerDefaults(registered);
    EXPECT_EQ(defaults.integerForKey(QStringLiteral("a")), 7) << "starts from the defaults";

    const std::vector<KZError> errors = defaults.takeErrors();
    ASSERT_EQ(errors.size(), 1u);
    EXPECT_TRUE(errors[0].is(KZErrorDomain, KZUserDefaultsFileMovedAsideError));
    const QString movedTo = errors[0].userInfo().value(QStringLiteral("movedToPath")).toString();
    EXPECT_TRUE(movedTo.startsWith(path() + QStringLiteral(".corrupt-")));
    EXPECT_TRUE(errors[0].localizedDescription().contains(movedTo)) << "the message says where";
    EXPECT_EQ(fileBytes(movedTo), garbage) << "the old file is kept whole";

    defaults.setInteger(8, QStringLiteral("a"));
    ASSERT_TRUE(defaults.synchronize());
    EXPECT_EQ(fileValues(path()).value(QStringLiteral("a")).toInteger(), 8);
    EXPECT_EQ(fileBytes(movedTo), garbage);
}

TEST_F(KZUserDefaultsTest, AFileBrokenWhileRunningKeepsTheValuesInMemory)
{
    KZUserDefaults defaults(path());
    defaults.setString(QStringLiteral("kept"), QStringLiteral("mine"));
    ASSERT_TRUE(defaults.synchronize());
    QSignalSpy problems(&defaults, &KZUserDefaults::errorOccurred);

    writeFile(path(), "{ unterminated");
    ASSERT_TRUE(waitFor([&] { return problems.count() > 0; }));
    const std::vector<KZError> errors = defaults.takeErrors();
    ASSERT_EQ(errors.size(), 1u);
    const QString movedTo = errors[0].userInfo().value(QStringLiteral("movedToPath")).toString();
    EXPECT_EQ(fileBytes(movedTo), QByteArray("{ unterminated"));
    EXPECT_EQ(defaults.stringForKey(QStringLiteral("mine")), QStringLiteral("kept"));
    EXPECT_TRUE(waitFor([&] {
        return fileValues(path()).value(QStringLiteral("mine")).toString() == "kept";
    })) << "what this instance held goes into a fresh file";
}

TEST_F(KZUserDefaultsTest, AnUnwritableFolderIsReportedOnceAndValuesLiveOn)
{
    writeFile(_folder.filePath(QStringLiteral("plain-file")), "not a folder");
    KZUserDefaults defaults(_folder.filePath(QStringLiteral("plain-file/settings.plist")));

    defaults.setInteger(1, QStringLiteral("a"));
    EXPECT_FALSE(defaults.synchronize());
    defaults.setInteger(2, QStringLiteral("b"));
    EXPECT_FALSE(defaults.synchronize());

    EXPECT_EQ(defaults.integerForKey(QStringLiteral("a")), 1);
    EXPECT_EQ(defaults.integerForKey(QStringLiteral("b")), 2);
    const std::vector<KZError> errors = defaults.takeErrors();
    ASSERT_EQ(errors.size(), 1u) << "one message, not one per write";
    EXPECT_TRUE(errors[0].is(KZErrorDomain, KZUserDefaultsUnwritableError));
    EXPECT_TRUE(errors[0].localizedDescription().contains(QStringLiteral("plain-file")));
}

TEST_F(KZUserDefaultsTest, AFileThatCannotBeReadIsLeftAloneUntilMended)
{
    ASSERT_TRUE(QDir(_folder.path()).mkdir(QStringLiteral("settings.plist")));
    KZUserDefaults defaults(path());
    const std::vector<KZError> errors = defaults.takeErrors();
    ASSERT_EQ(errors.size(), 1u);
    EXPECT_TRUE(errors[0].is(KZErrorDomain, KZUserDefaultsFileNotMovedError));

    defaults.setInteger(1, QStringLiteral("a"));
    EXPECT_FALSE(defaults.synchronize());
    EXPECT_TRUE(QFileInfo(path()).isDir()) << "left as it is";
    EXPECT_EQ(defaults.integerForKey(QStringLiteral("a")), 1);

    ASSERT_TRUE(QDir(_folder.path()).rmdir(QStringLiteral("settings.plist")));
    writeFile(path(), plistWith(QStringLiteral("b"), PlistValue(qint64(2))));
    EXPECT_TRUE(defaults.synchronize());
    const PlistDictionary onDisk = fileValues(path());
    EXPECT_EQ(onDisk.value(QStringLiteral("a")).toInteger(), 1);
    EXPECT_EQ(onDisk.value(QStringLiteral("b")).toInteger(), 2);
}

TEST_F(KZUserDefaultsTest, TheStandardFileLiesInTheConfigurationFolder)
{
    const QByteArray saved = qgetenv("XDG_CONFIG_HOME");
    qputenv("XDG_CONFIG_HOME", _folder.path().toUtf8());
    const QString standard = KZUserDefaults::standardFilePath();
    qputenv("XDG_CONFIG_HOME", saved);
    EXPECT_TRUE(standard.startsWith(_folder.path() + QLatin1Char('/')));
    EXPECT_TRUE(standard.endsWith(QStringLiteral("/settings.plist")));
}

TEST_F(KZUserDefaultsTest, LoadsDefaultsFromAPropertyListFile)
{
    const QString defaultsPath = _folder.filePath(QStringLiteral("defaults.plist"));
    writeFile(defaultsPath, plistWith(QStringLiteral("shown"), PlistValue(true)));
    KZUserDefaults defaults(path());
    EXPECT_FALSE(defaults.loadDefaults(defaultsPath).has_value());
    EXPECT_TRUE(defaults.boolForKey(QStringLiteral("shown")));
    EXPECT_TRUE(defaults.loadDefaults(_folder.filePath(QStringLiteral("missing"))).has_value());
}

} // namespace
