#pragma once

#include "shared/KZError.h"
#include "shared/PlistArray.h"
#include "shared/PlistDictionary.h"

#include <QObject>
#include <QSet>
#include <QString>

#include <memory>
#include <vector>

class QFileSystemWatcher;
class QTimer;

/// KZErrorDomain codes of the settings store.
constexpr qint64 KZUserDefaultsFileMovedAsideError = 1; // a file that did not parse was moved aside
constexpr qint64 KZUserDefaultsFileNotMovedError = 2;   // ... and could not even be moved
constexpr qint64 KZUserDefaultsUnwritableError = 3;     // the folder or file cannot be written
constexpr qint64 KZUserDefaultsBadDefaultsError =
    4; // defaults to load are missing or no dictionary

/// The program's settings: one XML property list file holding a dictionary,
/// with registered defaults beneath the stored values. A key reads the stored
/// value, else the registered default, else none.
///
/// Changes are written on the next event-loop pass (or by `synchronize`, and
/// at destruction). A write takes a lock beside the file, reads the file
/// again, applies only the keys this object changed since its last write, and
/// replaces the file atomically (a temporary file in the same folder, synced,
/// renamed over it). So two running instances keep each other's keys, and no
/// reader ever sees half a file. The file is watched: what another instance
/// or a hand edit puts there is taken, and `valueChanged` is emitted for every
/// key whose value changed.
///
/// A file that does not parse is never overwritten: it is moved aside beside
/// itself with a dated suffix, and the values start from the defaults. A
/// folder that cannot be written is reported once; the values live on in
/// memory. Each such problem becomes a KZError, kept until `takeErrors` and
/// announced by `errorOccurred`.
///
/// Containers handed out are copies: changing one changes no setting until it
/// is set again. Main thread only.
class KZUserDefaults : public QObject
{
    Q_OBJECT

public:
    /// Settings kept in `filePath`; reads the file now.
    explicit KZUserDefaults(const QString &filePath, QObject *parent = nullptr);
    /// Writes what is pending.
    ~KZUserDefaults() override;

    /// The program's settings, in `standardFilePath`; made on first use and
    /// owned by the application object.
    static KZUserDefaults &standardUserDefaults();
    /// The settings file in the user's configuration folder (XDG_CONFIG_HOME).
    static QString standardFilePath();

    const QString &filePath() const { return _filePath; }

    /// Sets the defaults of the keys in `defaults`, beneath any stored value.
    void registerDefaults(const PlistDictionary &defaults);
    /// Registers the dictionary of a property list file (such as a resource)
    /// as defaults; an error names a file that is missing or no dictionary.
    [[nodiscard]] std::optional<KZError> loadDefaults(const QString &path);

    /// The value of the key, or none.
    PlistValue objectForKey(const QString &key) const;
    /// `boolValue` of the key's value.
    bool boolForKey(const QString &key) const;
    /// A number or boolean, or a string that holds a number; 0 otherwise.
    qint64 integerForKey(const QString &key) const;
    double doubleForKey(const QString &key) const;
    /// A null string unless the value is a string.
    QString stringForKey(const QString &key) const;
    /// A null handle unless the value is an array.
    PlistArray arrayForKey(const QString &key) const;
    PlistDictionary dictionaryForKey(const QString &key) const;

    /// Stores a copy of `value`; none or null removes the key.
    void setObject(const PlistValue &value, const QString &key);
    void setBool(bool value, const QString &key) { setObject(PlistValue(value), key); }
    void setInteger(qint64 value, const QString &key) { setObject(PlistValue(value), key); }
    void setDouble(double value, const QString &key) { setObject(PlistValue(value), key); }
    void setString(const QString &value, const QString &key) { setObject(PlistValue(value), key); }
    void removeObjectForKey(const QString &key) { setObject(PlistValue(), key); }

    /// Takes what the file holds and writes pending changes now. False when
    /// the changes could not be written (they stay pending).
    bool synchronize();

    /// The problems met since the last call, oldest first.
    std::vector<KZError> takeErrors();

    /// A boolean, a number other than 0, or the text "YES", "true" or a number
    /// other than 0; false for anything else: how every boolean setting reads.
    static bool boolValue(const PlistValue &value);

signals:
    void valueChanged(const QString &key);
    void errorOccurred();

private:
    enum class FileState
    {
        Missing,
        Read,
        Unreadable, // no permission, or an I/O error
        Corrupt,    // does not parse, or holds no dictionary
    };
    struct FileContents
    {
        FileState state = FileState::Missing;
        PlistDictionary values;
        QByteArray bytes;
        QString problem; // why it could not be read or parsed
    };

    /// The stored value, else the registered one; shared, not copied.
    PlistValue valueForKey(const QString &key) const;
    FileContents readFile() const;
    /// Moves a corrupt file aside; false (with the error reported) when it cannot.
    bool moveAside(const QString &problem);
    /// With `adopt`, the merged file becomes the values here too.
    bool writeMerged(bool adopt);
    void fileMayHaveChanged();
    void takeFileContents(const PlistDictionary &fromFile);
    void scheduleWrite();
    void watchFile();
    void report(KZError error);
    void reportUnwritable(const QString &reason);
    /// Runs `change` and emits `valueChanged` for each of `keys` whose value it changed.
    template <typename Change> void changeValues(const QSet<QString> &keys, Change &&change);

    QString _filePath;
    PlistDictionary _registered;
    PlistDictionary _stored;
    QSet<QString> _dirtyKeys;  // set or removed here since the last write
    QByteArray _lastFileBytes; // what the file held when last read or written
    std::vector<KZError> _errors;
    QFileSystemWatcher *_watcher;     // child
    QTimer *_writeTimer;              // child
    QTimer *_recheckTimer;            // child; a corrupt file may be half written by an editor
    bool _reportedUnwritable = false; // one message until a write succeeds again
    bool _fileBlocked = false;        // a file that could not be read or moved: never write it
    bool _corruptSeen = false;        // the file stopped parsing; waiting to look again
};
