#include "KZUserDefaults.h"

#include "shared/KZLocalizedString.h"
#include "storage/PlistSerialization.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QFileSystemWatcher>
#include <QLockFile>
#include <QPointer>
#include <QSaveFile>
#include <QStandardPaths>
#include <QTimer>

#include <unistd.h>

namespace {

// How long a second instance waits for the other's write to finish.
constexpr int kLockWaitMs = 2000;
// A file that stops parsing is read again after this, since an editor that
// writes in place may be half way through.
constexpr int kRecheckMs = 500;

PlistValue copyOf(const PlistValue &value)
{
    return value.isContainer() ? value.kz_copyMutableContainers() : value;
}

bool sameValue(const PlistValue &a, const PlistValue &b)
{
    if (a.isNone() || b.isNone())
        return a.isNone() == b.isNone();
    return a.isIdenticalTo(b);
}

QSet<QString> keysOf(const PlistDictionary &dictionary)
{
    QSet<QString> keys;
    for (qsizetype i = 0; i < dictionary.count(); ++i)
        keys.insert(dictionary.keyAt(i));
    return keys;
}

QString datedSuffix()
{
    return QStringLiteral(".corrupt-") +
           QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd-HHmmss"));
}

QString freePathFor(const QString &base)
{
    QString candidate = base;
    for (int n = 2; QFileInfo::exists(candidate); ++n)
        candidate = base + QLatin1Char('-') + QString::number(n);
    return candidate;
}

KZError settingsError(qint64 code, const QString &message, const QString &path)
{
    KZError error(KZErrorDomain, code, message);
    error.setUserInfoValue(QStringLiteral("path"), path);
    return error;
}

} // namespace

template <typename Change>
void KZUserDefaults::changeValues(const QSet<QString> &keys, Change &&change)
{
    std::vector<std::pair<QString, PlistValue>> before;
    before.reserve(keys.size());
    for (const QString &key : keys)
        before.emplace_back(key, valueForKey(key));
    change();
    for (const auto &[key, old] : before) {
        if (!sameValue(old, valueForKey(key)))
            emit valueChanged(key);
    }
}

KZUserDefaults::KZUserDefaults(const QString &filePath, QObject *parent)
    : QObject(parent), _filePath(filePath), _registered(PlistDictionary::create()),
      _stored(PlistDictionary::create()), _watcher(new QFileSystemWatcher(this)),
      _writeTimer(new QTimer(this)), _recheckTimer(new QTimer(this))
{
    _writeTimer->setSingleShot(true);
    _writeTimer->setInterval(0);
    connect(_writeTimer, &QTimer::timeout, this, [this] { writeMerged(true); });
    _recheckTimer->setSingleShot(true);
    _recheckTimer->setInterval(kRecheckMs);
    connect(_recheckTimer, &QTimer::timeout, this, &KZUserDefaults::fileMayHaveChanged);
    connect(_watcher, &QFileSystemWatcher::fileChanged, this, &KZUserDefaults::fileMayHaveChanged);
    connect(_watcher, &QFileSystemWatcher::directoryChanged, this,
            &KZUserDefaults::fileMayHaveChanged);

    const FileContents contents = readFile();
    switch (contents.state) {
    case FileState::Read:
        _stored = contents.values;
        _lastFileBytes = contents.bytes;
        break;
    case FileState::Corrupt:
        moveAside(contents.problem);
        break;
    case FileState::Unreadable:
        _fileBlocked = true;
        report(settingsError(
            KZUserDefaultsFileNotMovedError,
            KZStringWithFormat(
                KZLocalizedStringWithID(9204, QStringLiteral("The settings file “%@” cannot be "
                                                             "read (%@). It is left as it is; "
                                                             "settings changed now last until the "
                                                             "program quits.")),
                {_filePath, contents.problem}),
            _filePath));
        break;
    case FileState::Missing:
        break;
    }
    watchFile();
}

KZUserDefaults::~KZUserDefaults()
{
    writeMerged(false);
}

KZUserDefaults &KZUserDefaults::standardUserDefaults()
{
    static QPointer<KZUserDefaults> shared;
    if (!shared) {
        Q_ASSERT(QCoreApplication::instance()); // which owns it, and so writes it at the end
        shared = new KZUserDefaults(standardFilePath(), QCoreApplication::instance());
    }
    return *shared;
}

QString KZUserDefaults::standardFilePath()
{
    return QStandardPaths::writableLocation(QStandardPaths::AppConfigLocation) +
           QStringLiteral("/settings.plist");
}

void KZUserDefaults::registerDefaults(const PlistDictionary &defaults)
{
    changeValues(keysOf(defaults), [&] {
        for (qsizetype i = 0; i < defaults.count(); ++i)
            _registered.insert(defaults.keyValueAt(i), copyOf(defaults.valueAt(i)));
    });
}

std::optional<KZError> KZUserDefaults::loadDefaults(const QString &path)
{
    QFile file(path);
    ReadResult result = file.open(QIODevice::ReadOnly) ? PlistSerialization::read(file.readAll())
                                                       : ReadResult::failure({file.errorString()});
    if (!result || !result.value.isDictionary()) {
        const QString reason =
            result ? QStringLiteral("no dictionary") : result.error.description();
        return settingsError(KZUserDefaultsBadDefaultsError,
                             QStringLiteral("defaults %1: %2").arg(path, reason), path);
    }
    registerDefaults(result.value.toDictionary());
    return std::nullopt;
}

PlistValue KZUserDefaults::objectForKey(const QString &key) const
{
    return copyOf(valueForKey(key));
}

PlistValue KZUserDefaults::valueForKey(const QString &key) const
{
    const PlistValue stored = _stored.value(key);
    return stored.isNone() ? _registered.value(key) : stored;
}

bool KZUserDefaults::boolForKey(const QString &key) const
{
    return boolValue(valueForKey(key));
}

bool KZUserDefaults::boolValue(const PlistValue &value)
{
    if (value.isBoolean() || value.isNumber())
        return value.toReal() != 0;
    if (!value.isString())
        return false;
    const QString text = value.toString().trimmed();
    return text.compare(QLatin1String("YES"), Qt::CaseInsensitive) == 0 ||
           text.compare(QLatin1String("true"), Qt::CaseInsensitive) == 0 || text.toDouble() != 0;
}

qint64 KZUserDefaults::integerForKey(const QString &key) const
{
    const PlistValue value = objectForKey(key);
    if (value.isBoolean())
        return value.toBool() ? 1 : 0;
    if (value.isNumber())
        return value.toInteger();
    return value.isString() ? qint64(value.toString().trimmed().toDouble()) : 0;
}

double KZUserDefaults::doubleForKey(const QString &key) const
{
    const PlistValue value = objectForKey(key);
    if (value.isBoolean() || value.isNumber())
        return value.toReal();
    return value.isString() ? value.toString().trimmed().toDouble() : 0;
}

QString KZUserDefaults::stringForKey(const QString &key) const
{
    const PlistValue value = objectForKey(key);
    return value.isString() ? value.toString() : QString();
}

PlistArray KZUserDefaults::arrayForKey(const QString &key) const
{
    return objectForKey(key).toArray();
}

PlistDictionary KZUserDefaults::dictionaryForKey(const QString &key) const
{
    return objectForKey(key).toDictionary();
}

void KZUserDefaults::setObject(const PlistValue &value, const QString &key)
{
    const bool removing = value.isNone() || value.plistType() == ADPlistTypeNull;
    const PlistValue stored = _stored.value(key);
    if (removing ? stored.isNone() : sameValue(stored, value))
        return;
    changeValues({key}, [&] {
        if (removing)
            _stored.remove(key);
        else
            _stored.insert(key, copyOf(value));
    });
    _dirtyKeys.insert(key);
    scheduleWrite();
}

bool KZUserDefaults::synchronize()
{
    _writeTimer->stop();
    fileMayHaveChanged();
    return writeMerged(true);
}

std::vector<KZError> KZUserDefaults::takeErrors()
{
    return std::exchange(_errors, {});
}

KZUserDefaults::FileContents KZUserDefaults::readFile() const
{
    FileContents contents;
    QFile file(_filePath);
    if (!file.exists())
        return contents;
    if (!file.open(QIODevice::ReadOnly)) {
        contents.state = FileState::Unreadable;
        contents.problem = file.errorString();
        return contents;
    }
    contents.bytes = file.readAll();
    const ReadResult result = PlistSerialization::read(contents.bytes);
    if (result && result.value.isDictionary()) {
        contents.state = FileState::Read;
        contents.values = result.value.toDictionary();
        return contents;
    }
    contents.state = FileState::Corrupt;
    contents.problem = result
                           ? KZLocalizedStringWithID(9205, QStringLiteral("it holds no dictionary"))
                           : result.error.description();
    return contents;
}

bool KZUserDefaults::moveAside(const QString &problem)
{
    const QString target = freePathFor(_filePath + datedSuffix());
    QFile file(_filePath);
    if (file.rename(target)) {
        _lastFileBytes.clear();
        report(settingsError(
            KZUserDefaultsFileMovedAsideError,
            KZStringWithFormat(
                KZLocalizedStringWithID(9201, QStringLiteral("The settings file “%@” could not be "
                                                             "read (%@). It was moved to “%@”, "
                                                             "and the settings start again from "
                                                             "their defaults.")),
                {_filePath, problem, target}),
            _filePath));
        _errors.back().setUserInfoValue(QStringLiteral("movedToPath"), target);
        return true;
    }
    _fileBlocked = true;
    report(settingsError(
        KZUserDefaultsFileNotMovedError,
        KZStringWithFormat(
            KZLocalizedStringWithID(9202, QStringLiteral("The settings file “%@” could not be read "
                                                         "(%@), and it could not be moved aside "
                                                         "(%@). It is left as it is; settings "
                                                         "changed now last until the program "
                                                         "quits.")),
            {_filePath, problem, file.errorString()}),
        _filePath));
    return false;
}

bool KZUserDefaults::writeMerged(bool adopt)
{
    if (_dirtyKeys.isEmpty())
        return true;
    if (_fileBlocked)
        return false;
    const QFileInfo info(_filePath);
    if (!QDir().mkpath(info.absolutePath())) {
        reportUnwritable(QStringLiteral("the folder cannot be made"));
        return false;
    }
    QLockFile lock(_filePath + QStringLiteral(".lock"));
    if (!lock.tryLock(kLockWaitMs)) {
        if (lock.error() == QLockFile::LockFailedError) { // busy: try again soon
            _writeTimer->start(kRecheckMs);
            return false;
        }
        reportUnwritable(QStringLiteral("no lock file can be made"));
        return false;
    }
    const FileContents contents = readFile();
    if (contents.state == FileState::Corrupt && !moveAside(contents.problem))
        return false;
    if (contents.state == FileState::Unreadable) {
        reportUnwritable(contents.problem);
        return false;
    }
    PlistDictionary merged =
        contents.state == FileState::Read ? contents.values : PlistDictionary::create();
    for (const QString &key : std::as_const(_dirtyKeys)) {
        const PlistValue value = _stored.value(key);
        if (value.isNone())
            merged.remove(key);
        else
            merged.insert(key, value);
    }
    const WriteResult written = PlistSerialization::write(merged.value(), ADPlistFormatXML);
    if (!written) {
        reportUnwritable(written.error);
        return false;
    }
    QSaveFile file(_filePath);
    const bool saved = file.open(QIODevice::WriteOnly) &&
                       file.write(written.data) == written.data.size() && file.flush() &&
                       ::fsync(file.handle()) == 0 && file.commit();
    if (!saved) {
        reportUnwritable(file.errorString());
        return false;
    }
    _reportedUnwritable = false;
    _lastFileBytes = written.data;
    _dirtyKeys.clear();
    if (adopt) {
        takeFileContents(merged);
        watchFile();
    }
    return true;
}

void KZUserDefaults::fileMayHaveChanged()
{
    watchFile(); // a replaced file is a new one to watch
    const FileContents contents = readFile();
    if (contents.state == FileState::Missing || contents.state == FileState::Unreadable ||
        contents.bytes == _lastFileBytes)
        return;
    if (contents.state == FileState::Corrupt) {
        if (_recheckTimer->isActive())
            return;
        if (!_corruptSeen) {
            _corruptSeen = true;
            _recheckTimer->start();
            return;
        }
        _corruptSeen = false;
        if (!moveAside(contents.problem))
            return;
        _dirtyKeys = keysOf(_stored); // what this instance holds goes into a fresh file
        scheduleWrite();
        return;
    }
    _corruptSeen = false;
    _recheckTimer->stop();
    _fileBlocked = false; // mended by hand, say
    _lastFileBytes = contents.bytes;
    takeFileContents(contents.values);
}

void KZUserDefaults::takeFileContents(const PlistDictionary &fromFile)
{
    QSet<QString> keys = keysOf(_stored);
    keys.unite(keysOf(fromFile));
    changeValues(keys, [&] {
        PlistDictionary next = fromFile;
        for (const QString &key : std::as_const(_dirtyKeys)) { // not written yet: ours wins
            const PlistValue pending = _stored.value(key);
            if (pending.isNone())
                next.remove(key);
            else
                next.insert(key, pending);
        }
        _stored = next;
    });
}

void KZUserDefaults::scheduleWrite()
{
    if (!_writeTimer->isActive())
        _writeTimer->start(0);
}

void KZUserDefaults::watchFile()
{
    const QString folder = QFileInfo(_filePath).absolutePath();
    if (!_watcher->directories().contains(folder) && QFileInfo::exists(folder))
        _watcher->addPath(folder);
    if (!_watcher->files().contains(_filePath) && QFileInfo::exists(_filePath))
        _watcher->addPath(_filePath);
}

void KZUserDefaults::report(KZError error)
{
    qWarning("%s", qPrintable(error.localizedDescription()));
    _errors.push_back(std::move(error));
    emit errorOccurred();
}

void KZUserDefaults::reportUnwritable(const QString &reason)
{
    if (std::exchange(_reportedUnwritable, true))
        return;
    report(settingsError(
        KZUserDefaultsUnwritableError,
        KZStringWithFormat(KZLocalizedStringWithID(9203, QStringLiteral("Settings cannot be saved "
                                                                        "in “%@” (%@). Changes "
                                                                        "last until the program "
                                                                        "quits.")),
                           {_filePath, reason}),
        _filePath));
}
