#include "KZAutosaveStore.h"

#include "shared/KZLocalizedString.h"
#include "shared/PlistDictionary.h"
#include "storage/PlistSerialization.h"
#include "storage/SafeFileWriter.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLockFile>
#include <QStandardPaths>
#include <QUuid>

#include <algorithm>

namespace {

constexpr qint64 kStoreErrorCode = 512;
const QString kLockName = QStringLiteral("session.lock");
const QString kDescriptionSuffix = QStringLiteral(".info.plist");
const QString kContentsSuffix = QStringLiteral(".contents");

KZError storeError(const QString &reason)
{
    return KZError(
        KZErrorDomain, kStoreErrorCode,
        KZLocalizedStringWithFormat(
            7101, QStringLiteral("The autosaved state could not be kept: %@"), {reason}));
}

std::unique_ptr<QLockFile> lockSession(const QString &session)
{
    auto lock = std::make_unique<QLockFile>(session + u'/' + kLockName);
    lock->setStaleLockTime(0); // only the lock of a program that died is stale
    return lock->tryLock(0) ? std::move(lock) : nullptr;
}

QString pathIn(const QString &session, const QString &identifier, const QString &suffix)
{
    return session + u'/' + identifier + suffix;
}

PlistValue describe(const KZAutosaveStore::Record &record)
{
    PlistDictionary description = PlistDictionary::create();
    description.insert(QStringLiteral("fileURL"), record.fileURL);
    description.insert(QStringLiteral("fileType"), record.fileType);
    description.insert(QStringLiteral("displayName"), record.displayName);
    description.insert(QStringLiteral("fileExists"), record.fileStamp.exists);
    description.insert(QStringLiteral("fileModified"), record.fileStamp.modifiedNanoseconds);
    description.insert(QStringLiteral("fileSize"), record.fileStamp.size);
    description.insert(QStringLiteral("fileDevice"), record.fileStamp.device);
    description.insert(QStringLiteral("fileInode"), record.fileStamp.inode);
    return description;
}

std::optional<KZAutosaveStore::Record> readDescription(const QFileInfo &file)
{
    QFile input(file.absoluteFilePath());
    if (!input.open(QIODevice::ReadOnly))
        return std::nullopt;
    const ReadResult read = PlistSerialization::read(input.readAll());
    const PlistDictionary description = read.value.toDictionary();
    if (!read || description.isNull())
        return std::nullopt;
    const auto text = [&](const char *key) {
        return description.value(QLatin1StringView(key)).toString();
    };
    const auto number = [&](const char *key) {
        return description.value(QLatin1StringView(key)).toUnsigned();
    };
    const QString identifier = file.fileName().chopped(kDescriptionSuffix.size());
    return KZAutosaveStore::Record{identifier,
                                   text("fileURL"),
                                   text("fileType"),
                                   text("displayName"),
                                   {description.value(QLatin1StringView("fileExists")).toBool(),
                                    qint64(number("fileModified")), qint64(number("fileSize")),
                                    number("fileDevice"), number("fileInode")},
                                   pathIn(file.absolutePath(), identifier, kContentsSuffix)};
}

// Removes a session folder that holds no records; its lock goes last.
void removeEmptySession(const QString &session, std::unique_ptr<QLockFile> lock)
{
    QDir folder(session);
    for (const QString &name : folder.entryList(QDir::Files | QDir::Hidden)) {
        if (name != kLockName)
            folder.remove(name);
    }
    lock.reset(); // unlocking removes the lock file
    QDir().rmdir(session);
}

} // namespace

KZAutosaveStore::KZAutosaveStore(const QString &folder)
    : _folder(QDir(folder).absolutePath()),
      _session(_folder + u'/' + QUuid::createUuid().toString(QUuid::WithoutBraces))
{}

KZAutosaveStore::~KZAutosaveStore()
{
    if (_lock && recordsIn(_session).empty())
        removeEmptySession(_session, std::move(_lock));
}

QString KZAutosaveStore::defaultFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::AppDataLocation) +
           QStringLiteral("/Autosave Information");
}

QString KZAutosaveStore::newRecordIdentifier() const
{
    return QUuid::createUuid().toString(QUuid::WithoutBraces);
}

std::optional<QString> KZAutosaveStore::contentsPath(const QString &identifier,
                                                     std::optional<KZError> *error)
{
    if (std::optional<KZError> failed = openSession()) {
        *error = failed;
        return std::nullopt;
    }
    return pathIn(_session, identifier, kContentsSuffix);
}

std::optional<KZError> KZAutosaveStore::writeRecord(const Record &record)
{
    if (std::optional<KZError> failed = openSession())
        return failed;
    const WriteResult written = PlistSerialization::write(describe(record), ADPlistFormatXML);
    if (!written)
        return storeError(written.error);
    if (std::optional<KZError> failed = SafeFileWriter::write(
            pathIn(_session, record.identifier, kDescriptionSuffix), written.data))
        return storeError(failed->localizedDescription());
    return std::nullopt;
}

void KZAutosaveStore::removeRecord(const QString &identifier)
{
    QFile::remove(pathIn(_session, identifier, kDescriptionSuffix));
    QFile::remove(pathIn(_session, identifier, kContentsSuffix));
}

std::vector<KZAutosaveStore::Record> KZAutosaveStore::orphanedRecords()
{
    std::vector<std::pair<qint64, Record>> found;
    for (const QFileInfo &entry : QDir(_folder).entryInfoList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        const QString session = entry.absoluteFilePath();
        if (session == _session)
            continue;
        if (!_orphans.contains(session)) {
            std::unique_ptr<QLockFile> lock = lockSession(session);
            if (!lock)
                continue; // its program still runs
            _orphans.emplace(session, std::move(lock));
        }
        for (Record &record : recordsIn(session)) {
            const qint64 saved = QFileInfo(record.contentsPath).lastModified().toMSecsSinceEpoch();
            found.emplace_back(saved, std::move(record));
        }
        releaseIfEmpty(session);
    }
    std::stable_sort(found.begin(), found.end(),
                     [](const auto &a, const auto &b) { return a.first > b.first; });
    std::vector<Record> records;
    for (auto &[saved, record] : found)
        records.push_back(std::move(record));
    return records;
}

std::optional<KZError> KZAutosaveStore::adoptRecord(Record &record)
{
    if (std::optional<KZError> failed = openSession())
        return failed;
    const QString from = QFileInfo(record.contentsPath).absolutePath();
    for (const QString &suffix : {kContentsSuffix, kDescriptionSuffix}) {
        const QString target = pathIn(_session, record.identifier, suffix);
        QFile::remove(target);
        if (!QFile::rename(pathIn(from, record.identifier, suffix), target))
            return storeError(QStringLiteral("%1: %2").arg(target, QFile(target).errorString()));
    }
    record.contentsPath = pathIn(_session, record.identifier, kContentsSuffix);
    releaseIfEmpty(from);
    return std::nullopt;
}

void KZAutosaveStore::discardRecord(const Record &record)
{
    const QString session = QFileInfo(record.contentsPath).absolutePath();
    QFile::remove(pathIn(session, record.identifier, kDescriptionSuffix));
    QFile::remove(record.contentsPath);
    releaseIfEmpty(session);
}

std::optional<KZError> KZAutosaveStore::openSession()
{
    if (_lock)
        return std::nullopt;
    if (!QDir().mkpath(_session))
        return storeError(_session);
    _lock = lockSession(_session);
    if (!_lock)
        return storeError(_session + u'/' + kLockName);
    return std::nullopt;
}

std::vector<KZAutosaveStore::Record> KZAutosaveStore::recordsIn(const QString &session) const
{
    std::vector<Record> records;
    const QFileInfoList descriptions =
        QDir(session).entryInfoList({u'*' + kDescriptionSuffix}, QDir::Files | QDir::Hidden);
    for (const QFileInfo &file : descriptions) {
        std::optional<Record> record = readDescription(file);
        if (record && QFileInfo::exists(record->contentsPath))
            records.push_back(std::move(*record));
    }
    return records;
}

void KZAutosaveStore::releaseIfEmpty(const QString &session)
{
    const auto orphan = _orphans.find(session);
    if (orphan == _orphans.end() || !recordsIn(session).empty())
        return;
    std::unique_ptr<QLockFile> lock = std::move(orphan->second);
    _orphans.erase(orphan);
    removeEmptySession(session, std::move(lock));
}
