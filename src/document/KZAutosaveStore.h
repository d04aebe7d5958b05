#pragma once

#include "KZFileStamp.h"

#include "shared/KZError.h"

#include <QString>

#include <map>
#include <memory>
#include <optional>
#include <vector>

class QLockFile;

/// The autosaved state of documents with unsaved changes, kept in the user's
/// data folder and never beside the user's files, so that what was being
/// edited when the program died can be offered back at the next start.
///
/// Each running program writes into a session folder of its own, locked
/// while it runs. A session folder whose lock is free was left by a program
/// that ended without closing its documents: its records are orphans. A
/// record is the contents a document wrote and a description beside it;
/// a document removes its record when it is saved, reverted or closed.
/// An orphan's session stays locked by this store until each of its records
/// is adopted or discarded, so two programs never offer the same record.
/// Main thread only.
class KZAutosaveStore
{
public:
    struct Record
    {
        QString identifier;
        QString fileURL; // the document's file; empty while untitled
        QString fileType;
        QString displayName;
        KZFileStamp fileStamp; // the file as the document last read or saved it
        QString contentsPath;  // where the document's contents are
    };

    /// A store in `folder`, made when the first record is written.
    explicit KZAutosaveStore(const QString &folder = defaultFolder());
    /// Leaves its records for the next start; removes an empty session.
    ~KZAutosaveStore();
    KZAutosaveStore(const KZAutosaveStore &) = delete;
    KZAutosaveStore &operator=(const KZAutosaveStore &) = delete;

    /// "Autosave Information" in the program's data folder.
    static QString defaultFolder();

    QString newRecordIdentifier() const;
    /// Where the contents of a record of this session go; none when the
    /// session folder cannot be made and locked.
    std::optional<QString> contentsPath(const QString &identifier, std::optional<KZError> *error);
    /// Writes the description of a record whose contents are in place.
    std::optional<KZError> writeRecord(const Record &record);
    void removeRecord(const QString &identifier);

    /// Records of sessions that ended without closing them, newest first.
    std::vector<Record> orphanedRecords();
    /// Moves an orphan into this session, where its document goes on with
    /// it; `record` then names its new place.
    std::optional<KZError> adoptRecord(Record &record);
    void discardRecord(const Record &record);

private:
    std::optional<KZError> openSession();
    std::vector<Record> recordsIn(const QString &session) const;
    /// Lets go of an orphaned session that holds no more records.
    void releaseIfEmpty(const QString &session);

    QString _folder;
    QString _session;
    std::unique_ptr<QLockFile> _lock;                       // held from the first record on
    std::map<QString, std::unique_ptr<QLockFile>> _orphans; // by session folder
};
