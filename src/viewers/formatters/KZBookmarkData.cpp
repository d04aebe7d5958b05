#include "KZBookmarkData.h"

#include "KZByteView.h"

#include "shared/KZLocalizedString.h"
#include "shared/KZReferenceDate.h"
#include "shared/PlistArray.h"
#include "shared/PlistDictionary.h"

#include <QFileInfo>
#include <QSet>
#include <QStorageInfo>
#include <QUrl>
#include <QUuid>
#include <QtEndian>

#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <pwd.h>

namespace {

constexpr quint32 kTableMagic = 0xFFFFFFFE;
constexpr quint32 kVersion = 0x10040000;
constexpr qint64 kHeaderSize = 48;
constexpr int kMaximumDepth = 8;
constexpr int kItemBudget = 4096;
constexpr int kMaximumTables = 64;
constexpr quint32 kStringKeyBit = 0x80000000;

enum ItemType : quint32
{
    StringItem = 0x0100,
    DataItem = 0x0200,
    NumberItem = 0x0300,
    DateItem = 0x0400,
    BooleanItem = 0x0500,
    ArrayItem = 0x0600,
    DictionaryItem = 0x0700,
    UuidItem = 0x0800,
    UrlItem = 0x0900,
    NullItem = 0x0A00,
};

// Flags of the target (key 0x1010) and of its volume (key 0x2020).
constexpr quint64 RegularFile = 0x1;
constexpr quint64 Directory = 0x2;
constexpr quint64 SymbolicLink = 0x4;
constexpr quint64 Volume = 0x8;
constexpr quint64 Package = 0x10;
constexpr quint64 SystemImmutable = 0x20;
constexpr quint64 UserImmutable = 0x40;
constexpr quint64 Hidden = 0x80;
constexpr quint64 HiddenExtension = 0x100;
constexpr quint64 Readable = 0x1000;
constexpr quint64 Writable = 0x2000;
constexpr quint64 Executable = 0x4000;
constexpr quint64 AliasFile = 0x8000;
constexpr quint64 MountTrigger = 0x10000;

constexpr quint64 Local = 0x1;
constexpr quint64 Automounted = 0x2;
constexpr quint64 DoNotBrowse = 0x4;
constexpr quint64 ReadOnly = 0x8;
constexpr quint64 Ejectable = 0x20;
constexpr quint64 Removable = 0x40;
constexpr quint64 Internal = 0x80;
constexpr quint64 SupportsPersistentIDs = 0x100000000;
constexpr quint64 SupportsSymbolicLinks = 0x1000000000;
constexpr quint64 SupportsJournaling = 0x10000000000;
constexpr quint64 SupportsRenaming = 0x20000000000;
constexpr quint64 SupportsCaseSensitiveNames = 0x80000000000;
constexpr quint64 SupportsCasePreservedNames = 0x100000000000;
constexpr quint64 SupportsAdvisoryFileLocking = 0x200000000000;
constexpr quint64 NoRootDirectoryTimes = 0x400000000000;
constexpr quint64 SupportsExtendedSecurity = 0x800000000000;
constexpr quint64 SupportsHardLinks = 0x2000000000000;
constexpr quint64 IsJournaling = 0x20000000000000;
constexpr quint64 SupportsSparseFiles = 0x40000000000000;
constexpr quint64 SupportsZeroRuns = 0x80000000000000;
constexpr quint64 SupportsVolumeSizes = 0x100000000000000;

// Reads the items of one bookmark, each offset relative to the end of the header.
class ItemReader
{
public:
    ItemReader(const KZByteView &view, qint64 base) : _view(view), _base(base) {}

    std::optional<PlistValue> read(quint32 offset, int depth)
    {
        const qint64 at = _base + offset;
        if (depth > kMaximumDepth || ++_items > kItemBudget)
            return failAt(at, KZLocalizedStringWithID(
                                  4037, QStringLiteral("its items nest or repeat too deeply")));
        const std::optional<quint32> length = _view.littleEndian<quint32>(at);
        const std::optional<quint32> type = _view.littleEndian<quint32>(at + 4);
        const std::optional<QByteArrayView> bytes = _view.bytes(at + 8, length.value_or(0));
        if (!length || !type || !bytes)
            return failAt(
                at, KZLocalizedStringWithID(4035, QStringLiteral("an item lies outside the data")));
        return decode(*type, *bytes, at, depth);
    }

    qint64 errorOffset() const { return _errorOffset; }
    const QString &reason() const { return _reason; }

private:
    std::optional<PlistValue> failAt(qint64 offset, const QString &reason)
    {
        if (_reason.isEmpty()) {
            _errorOffset = offset;
            _reason = reason;
        }
        return std::nullopt;
    }

    std::optional<PlistValue> decode(quint32 type, QByteArrayView bytes, qint64 at, int depth)
    {
        const quint32 subtype = type & 0xFF;
        switch (type & 0xFFFFFF00) {
        case StringItem:
            return PlistValue(QString::fromUtf8(bytes));
        case NumberItem:
            return number(subtype, bytes, at);
        case DateItem:
            if (bytes.size() != 8)
                return failAt(at,
                              KZLocalizedStringWithID(
                                  4036, QStringLiteral("an item has the wrong size for its type")));
            return PlistValue::date(qFromBigEndian<double>(bytes.data()));
        case BooleanItem:
            return PlistValue(subtype == 1);
        case ArrayItem:
            return array(bytes, depth);
        case DictionaryItem:
            return dictionary(bytes, depth);
        case UuidItem:
            if (bytes.size() != 16)
                return failAt(at,
                              KZLocalizedStringWithID(
                                  4036, QStringLiteral("an item has the wrong size for its type")));
            return PlistValue(QUuid::fromRfc4122(bytes).toString(QUuid::WithoutBraces).toUpper());
        case UrlItem:
            return url(subtype, bytes, depth);
        case NullItem:
            return PlistValue::null();
        default:
            return PlistValue::data(bytes.toByteArray());
        }
    }

    std::optional<PlistValue> number(quint32 subtype, QByteArrayView bytes, qint64 at)
    {
        const KZByteView view(bytes);
        const bool real =
            subtype == 5 || subtype == 6 || subtype == 12 || subtype == 13 || subtype == 16;
        if (real && bytes.size() == 4)
            return PlistValue(double(*view.littleEndian<float>(0)));
        if (real && bytes.size() == 8)
            return PlistValue(*view.littleEndian<double>(0));
        switch (real ? 0 : bytes.size()) {
        case 1:
            return PlistValue(qint64(qint8(bytes[0])));
        case 2:
            return PlistValue(qint64(*view.littleEndian<qint16>(0)));
        case 4:
            return PlistValue(qint64(*view.littleEndian<qint32>(0)));
        case 8:
            return PlistValue(*view.littleEndian<qint64>(0));
        default:
            return failAt(at, KZLocalizedStringWithID(
                                  4036, QStringLiteral("an item has the wrong size for its type")));
        }
    }

    std::optional<PlistValue> array(QByteArrayView bytes, int depth)
    {
        PlistArray elements = PlistArray::create();
        for (qsizetype i = 0; i + 4 <= bytes.size(); i += 4) {
            std::optional<PlistValue> element =
                read(qFromLittleEndian<quint32>(bytes.data() + i), depth + 1);
            if (!element)
                return std::nullopt;
            elements.append(std::move(*element));
        }
        return PlistValue(elements);
    }

    std::optional<PlistValue> dictionary(QByteArrayView bytes, int depth)
    {
        PlistDictionary entries = PlistDictionary::create();
        for (qsizetype i = 0; i + 8 <= bytes.size(); i += 8) {
            const std::optional<PlistValue> key =
                read(qFromLittleEndian<quint32>(bytes.data() + i), depth + 1);
            std::optional<PlistValue> value =
                read(qFromLittleEndian<quint32>(bytes.data() + i + 4), depth + 1);
            if (!key || !value)
                return std::nullopt;
            entries.insert(key->isString() ? key->toString() : key->displayString(),
                           std::move(*value));
        }
        return PlistValue(entries);
    }

    std::optional<PlistValue> url(quint32 subtype, QByteArrayView bytes, int depth)
    {
        if (subtype != 2)
            return PlistValue(QString::fromUtf8(bytes));
        const KZByteView view(bytes);
        const std::optional<quint32> baseOffset = view.littleEndian<quint32>(0);
        const std::optional<quint32> relativeOffset = view.littleEndian<quint32>(4);
        if (!baseOffset || !relativeOffset)
            return failAt(_base,
                          KZLocalizedStringWithID(
                              4036, QStringLiteral("an item has the wrong size for its type")));
        const std::optional<PlistValue> base = read(*baseOffset, depth + 1);
        const std::optional<PlistValue> relative = read(*relativeOffset, depth + 1);
        if (!base || !relative)
            return std::nullopt;
        return PlistValue(
            QUrl(base->displayString()).resolved(QUrl(relative->displayString())).toString());
    }

    KZByteView _view;
    qint64 _base;
    int _items = 0;
    qint64 _errorOffset = -1;
    QString _reason;
};

bool flagIsSet(const PlistValue &flags, quint64 flag, bool *known)
{
    const QByteArrayView bytes = flags.dataView();
    const KZByteView view(bytes);
    const quint64 values = view.littleEndian<quint64>(0).value_or(0);
    const quint64 valid = view.littleEndian<quint64>(8).value_or(0);
    *known = flags.kind() == PlistValue::Kind::Data && (valid & flag) != 0;
    return (values & flag) != 0;
}

// --- writing ---------------------------------------------------------------------

// Lays out items after the header, each padded to four bytes; offsets are
// relative to the end of the header, as the format counts them.
class ItemWriter
{
public:
    ItemWriter() { _out.append(kHeaderSize + 4, '\0'); }

    quint32 add(quint32 type, QByteArrayView bytes)
    {
        const quint32 offset = quint32(_out.size() - kHeaderSize);
        appendLittleEndian(quint32(bytes.size()));
        appendLittleEndian(type);
        _out.append(bytes);
        while (_out.size() % 4 != 0)
            _out.append('\0');
        return offset;
    }
    quint32 addString(const QString &text) { return add(StringItem | 1, text.toUtf8()); }
    quint32 addInteger(qint64 value)
    {
        char bytes[8];
        qToLittleEndian(value, bytes);
        return add(NumberItem | 4, QByteArrayView(bytes, 8));
    }
    quint32 addDate(double secondsSinceReferenceDate)
    {
        char bytes[8];
        qToBigEndian(secondsSinceReferenceDate, bytes);
        return add(DateItem, QByteArrayView(bytes, 8));
    }
    quint32 addFlags(quint64 values, quint64 valid)
    {
        char bytes[24] = {};
        qToLittleEndian(values, bytes);
        qToLittleEndian(valid, bytes + 8);
        return add(DataItem | 1, QByteArrayView(bytes, 24));
    }
    quint32 addArray(const std::vector<quint32> &offsets)
    {
        QByteArray bytes;
        for (const quint32 offset : offsets) {
            char field[4];
            qToLittleEndian(offset, field);
            bytes.append(field, 4);
        }
        return add(ArrayItem | 1, bytes);
    }

    /// Appends the table of `entries` (sorted by key) and fills in the header.
    QByteArray finish(std::vector<std::pair<quint32, quint32>> entries)
    {
        std::sort(entries.begin(), entries.end());
        const quint32 tableOffset = quint32(_out.size() - kHeaderSize);
        appendLittleEndian(quint32(12 + 12 * entries.size()));
        appendLittleEndian(kTableMagic);
        appendLittleEndian(quint32(1));
        appendLittleEndian(quint32(0));
        appendLittleEndian(quint32(entries.size()));
        for (const auto &[key, offset] : entries) {
            appendLittleEndian(key);
            appendLittleEndian(offset);
            appendLittleEndian(quint32(0));
        }
        std::memcpy(_out.data(), "book", 4);
        qToLittleEndian(quint32(_out.size()), _out.data() + 4);
        qToLittleEndian(kVersion, _out.data() + 8);
        qToLittleEndian(quint32(kHeaderSize), _out.data() + 12);
        qToLittleEndian(tableOffset, _out.data() + kHeaderSize);
        return _out;
    }

private:
    void appendLittleEndian(quint32 value)
    {
        char bytes[4];
        qToLittleEndian(value, bytes);
        _out.append(bytes, 4);
    }

    QByteArray _out;
};

quint64 targetFlags(const QFileInfo &info)
{
    quint64 flags = 0;
    flags |= info.isSymLink() ? SymbolicLink : 0;
    flags |= info.isDir() ? Directory : info.isFile() ? RegularFile : 0;
    flags |= info.fileName().startsWith(u'.') ? Hidden : 0;
    flags |= info.isReadable() ? Readable : 0;
    flags |= info.isWritable() ? Writable : 0;
    flags |= info.isExecutable() ? Executable : 0;
    return flags;
}

} // namespace

KZBookmarkData::KZBookmarkData(const QByteArray &data) : _data(data)
{
    read();
}

bool KZBookmarkData::fail(qint64 offset, const QString &reason)
{
    _error = KZLocalizedStringWithFormat(4030, QStringLiteral("Not a valid bookmark: %@ (byte %@)"),
                                         {reason, QString::number(offset)});
    _items.clear();
    return false;
}

bool KZBookmarkData::read()
{
    const KZByteView whole(_data);
    const std::optional<QByteArrayView> magic = whole.bytes(0, 4);
    const std::optional<quint32> size = whole.littleEndian<quint32>(4);
    const std::optional<quint32> header = whole.littleEndian<quint32>(12);
    if (!magic || !size || !header)
        return fail(whole.size(),
                    KZLocalizedStringWithID(4031, QStringLiteral("it is shorter than its header")));
    if (*magic != "book" && *magic != "alis")
        return fail(0, KZLocalizedStringWithID(
                           4033, QStringLiteral("it does not start with the bookmark signature")));
    if (*size > whole.size())
        return fail(4, KZLocalizedStringWithFormat(
                           4032,
                           QStringLiteral("its length field says %@ bytes, but only %@ are there"),
                           {QString::number(*size), QString::number(whole.size())}));
    if (*size < 20 || *header < 16 || *header > *size - 4)
        return fail(12,
                    KZLocalizedStringWithID(4039, QStringLiteral("its header size is not valid")));
    const KZByteView view(QByteArrayView(_data).first(*size));
    ItemReader items(view, *header);
    QSet<quint32> seen;
    quint32 tableOffset = *view.littleEndian<quint32>(*header);
    while (tableOffset != 0) {
        const qint64 table = qint64(*header) + tableOffset;
        if (seen.contains(tableOffset) || seen.size() == kMaximumTables)
            return fail(table, KZLocalizedStringWithID(
                                   4038, QStringLiteral("a table of contents is listed twice")));
        seen.insert(tableOffset);
        const std::optional<quint32> magicNumber = view.littleEndian<quint32>(table + 4);
        const std::optional<quint32> next = view.littleEndian<quint32>(table + 12);
        const std::optional<quint32> count = view.littleEndian<quint32>(table + 16);
        if (!magicNumber || !next || !count || !view.has(table + 20, qint64(*count) * 12))
            return fail(table,
                        KZLocalizedStringWithID(
                            4034, QStringLiteral("a table of contents lies outside the data")));
        if (*magicNumber != kTableMagic)
            break;
        for (quint32 i = 0; i < *count; ++i) {
            const qint64 entry = table + 20 + qint64(i) * 12;
            const quint32 key = *view.littleEndian<quint32>(entry);
            std::optional<PlistValue> value = items.read(*view.littleEndian<quint32>(entry + 4), 0);
            if (!value)
                return fail(items.errorOffset(), items.reason());
            if ((key & kStringKeyBit) == 0)
                _items.emplace_back(key, std::move(*value));
        }
        tableOffset = *next;
    }
    return true;
}

PlistValue KZBookmarkData::valueForKey(quint32 key) const
{
    for (const auto &[itemKey, value] : _items) {
        if (itemKey == key)
            return value;
    }
    return PlistValue();
}

QString KZBookmarkData::path() const
{
    const PlistValue components = valueForKey(TargetPath);
    if (components.isString())
        return components.toString();
    if (!components.isArray())
        return QString();
    QString path;
    for (const PlistValue &component : components.toArray())
        path += u'/' + component.displayString();
    return path.isEmpty() ? QStringLiteral("/") : path;
}

const QStringList &KZBookmarkData::allResourceKeys()
{
    static const QStringList keys = {
        QStringLiteral("NSURLNameKey"),
        QStringLiteral("NSURLLocalizedNameKey"),
        QStringLiteral("NSURLIsRegularFileKey"),
        QStringLiteral("NSURLIsDirectoryKey"),
        QStringLiteral("NSURLIsSymbolicLinkKey"),
        QStringLiteral("NSURLIsVolumeKey"),
        QStringLiteral("NSURLIsPackageKey"),
        QStringLiteral("NSURLIsSystemImmutableKey"),
        QStringLiteral("NSURLIsUserImmutableKey"),
        QStringLiteral("NSURLIsHiddenKey"),
        QStringLiteral("NSURLHasHiddenExtensionKey"),
        QStringLiteral("NSURLCreationDateKey"),
        QStringLiteral("NSURLContentAccessDateKey"),
        QStringLiteral("NSURLContentModificationDateKey"),
        QStringLiteral("NSURLAttributeModificationDateKey"),
        QStringLiteral("NSURLLinkCountKey"),
        QStringLiteral("NSURLParentDirectoryURLKey"),
        QStringLiteral("NSURLVolumeURLKey"),
        QStringLiteral("NSURLTypeIdentifierKey"),
        QStringLiteral("NSURLLocalizedTypeDescriptionKey"),
        QStringLiteral("NSURLLabelNumberKey"),
        QStringLiteral("NSURLLabelColorKey"),
        QStringLiteral("NSURLLocalizedLabelKey"),
        QStringLiteral("NSURLEffectiveIconKey"),
        QStringLiteral("NSURLCustomIconKey"),
        QStringLiteral("NSURLFileResourceIdentifierKey"),
        QStringLiteral("NSURLVolumeIdentifierKey"),
        QStringLiteral("NSURLPreferredIOBlockSizeKey"),
        QStringLiteral("NSURLIsReadableKey"),
        QStringLiteral("NSURLIsWritableKey"),
        QStringLiteral("NSURLIsExecutableKey"),
        QStringLiteral("NSURLFileSecurityKey"),
        QStringLiteral("NSURLIsExcludedFromBackupKey"),
        QStringLiteral("NSURLTagNamesKey"),
        QStringLiteral("_NSURLPathKey"),
        QStringLiteral("NSURLIsMountTriggerKey"),
        QStringLiteral("NSURLFileResourceTypeKey"),
        QStringLiteral("NSURLFileResourceTypeNamedPipe"),
        QStringLiteral("NSURLFileResourceTypeCharacterSpecial"),
        QStringLiteral("NSURLFileResourceTypeDirectory"),
        QStringLiteral("NSURLFileResourceTypeBlockSpecial"),
        QStringLiteral("NSURLFileResourceTypeRegular"),
        QStringLiteral("NSURLFileResourceTypeSymbolicLink"),
        QStringLiteral("NSURLFileResourceTypeSocket"),
        QStringLiteral("NSURLFileResourceTypeUnknown"),
        QStringLiteral("NSURLFileSizeKey"),
        QStringLiteral("NSURLFileAllocatedSizeKey"),
        QStringLiteral("NSURLTotalFileSizeKey"),
        QStringLiteral("NSURLTotalFileAllocatedSizeKey"),
        QStringLiteral("NSURLIsAliasFileKey"),
        QStringLiteral("NSURLVolumeLocalizedFormatDescriptionKey"),
        QStringLiteral("NSURLVolumeTotalCapacityKey"),
        QStringLiteral("NSURLVolumeAvailableCapacityKey"),
        QStringLiteral("NSURLVolumeResourceCountKey"),
        QStringLiteral("NSURLVolumeSupportsPersistentIDsKey"),
        QStringLiteral("NSURLVolumeSupportsSymbolicLinksKey"),
        QStringLiteral("NSURLVolumeSupportsHardLinksKey"),
        QStringLiteral("NSURLVolumeSupportsJournalingKey"),
        QStringLiteral("NSURLVolumeIsJournalingKey"),
        QStringLiteral("NSURLVolumeSupportsSparseFilesKey"),
        QStringLiteral("NSURLVolumeSupportsZeroRunsKey"),
        QStringLiteral("NSURLVolumeSupportsCaseSensitiveNamesKey"),
        QStringLiteral("NSURLVolumeSupportsCasePreservedNamesKey"),
        QStringLiteral("NSURLVolumeSupportsRootDirectoryDatesKey"),
        QStringLiteral("NSURLVolumeSupportsVolumeSizesKey"),
        QStringLiteral("NSURLVolumeSupportsRenamingKey"),
        QStringLiteral("NSURLVolumeSupportsAdvisoryFileLockingKey"),
        QStringLiteral("NSURLVolumeSupportsExtendedSecurityKey"),
        QStringLiteral("NSURLVolumeIsBrowsableKey"),
        QStringLiteral("NSURLVolumeMaximumFileSizeKey"),
        QStringLiteral("NSURLVolumeIsEjectableKey"),
        QStringLiteral("NSURLVolumeIsRemovableKey"),
        QStringLiteral("NSURLVolumeIsInternalKey"),
        QStringLiteral("NSURLVolumeIsAutomountedKey"),
        QStringLiteral("NSURLVolumeIsLocalKey"),
        QStringLiteral("NSURLVolumeIsReadOnlyKey"),
        QStringLiteral("NSURLVolumeCreationDateKey"),
        QStringLiteral("NSURLVolumeURLForRemountingKey"),
        QStringLiteral("NSURLVolumeUUIDStringKey"),
        QStringLiteral("NSURLVolumeNameKey"),
        QStringLiteral("NSURLVolumeLocalizedNameKey"),
        QStringLiteral("NSURLIsUbiquitousItemKey"),
        QStringLiteral("NSURLUbiquitousItemHasUnresolvedConflictsKey"),
        QStringLiteral("NSURLUbiquitousItemIsDownloadingKey"),
        QStringLiteral("NSURLUbiquitousItemIsUploadedKey"),
        QStringLiteral("NSURLUbiquitousItemIsUploadingKey"),
        QStringLiteral("NSURLUbiquitousItemDownloadingStatusKey"),
        QStringLiteral("NSURLUbiquitousItemDownloadingErrorKey"),
        QStringLiteral("NSURLUbiquitousItemUploadingErrorKey"),
        QStringLiteral("NSURLUbiquitousItemDownloadingStatusNotDownloaded"),
        QStringLiteral("NSURLUbiquitousItemDownloadingStatusDownloaded"),
        QStringLiteral("NSURLUbiquitousItemDownloadingStatusCurrent"),
    };
    return keys;
}

std::vector<std::pair<QString, PlistValue>> KZBookmarkData::resourceValues() const
{
    QHash<QString, PlistValue> found;
    const auto put = [&found](const char *name, const PlistValue &value) {
        if (!value.isNone())
            found.insert(QString::fromLatin1(name), value);
    };
    const QString target = path();
    if (!target.isNull()) {
        put("_NSURLPathKey", PlistValue(target));
        const QFileInfo info(target);
        put("NSURLNameKey", PlistValue(info.fileName().isEmpty() ? target : info.fileName()));
        if (target != u"/")
            put("NSURLParentDirectoryURLKey",
                PlistValue(QUrl::fromLocalFile(info.path()).toString() + u'/'));
    }
    put("NSURLLocalizedNameKey", valueForKey(DisplayName));
    put("NSURLCreationDateKey", valueForKey(TargetCreationDate));
    const PlistValue ids = valueForKey(TargetIDPath);
    if (ids.isArray() && !ids.toArray().isEmpty())
        put("NSURLFileResourceIdentifierKey", ids.toArray().at(ids.toArray().count() - 1));

    const PlistValue flags = valueForKey(TargetFlags);
    const auto putFlag = [&](const char *name, const PlistValue &source, quint64 flag,
                             bool invert) {
        bool known = false;
        const bool set = flagIsSet(source, flag, &known);
        if (known)
            put(name, PlistValue(set != invert));
    };
    putFlag("NSURLIsRegularFileKey", flags, RegularFile, false);
    putFlag("NSURLIsDirectoryKey", flags, Directory, false);
    putFlag("NSURLIsSymbolicLinkKey", flags, SymbolicLink, false);
    putFlag("NSURLIsVolumeKey", flags, Volume, false);
    putFlag("NSURLIsPackageKey", flags, Package, false);
    putFlag("NSURLIsSystemImmutableKey", flags, SystemImmutable, false);
    putFlag("NSURLIsUserImmutableKey", flags, UserImmutable, false);
    putFlag("NSURLIsHiddenKey", flags, Hidden, false);
    putFlag("NSURLHasHiddenExtensionKey", flags, HiddenExtension, false);
    putFlag("NSURLIsReadableKey", flags, Readable, false);
    putFlag("NSURLIsWritableKey", flags, Writable, false);
    putFlag("NSURLIsExecutableKey", flags, Executable, false);
    putFlag("NSURLIsAliasFileKey", flags, AliasFile, false);
    putFlag("NSURLIsMountTriggerKey", flags, MountTrigger, false);
    bool known = false;
    if (flagIsSet(flags, Directory, &known) && known)
        put("NSURLFileResourceTypeKey",
            PlistValue(QStringLiteral("NSURLFileResourceTypeDirectory")));
    else if (flagIsSet(flags, SymbolicLink, &known) && known)
        put("NSURLFileResourceTypeKey",
            PlistValue(QStringLiteral("NSURLFileResourceTypeSymbolicLink")));
    else if (flagIsSet(flags, RegularFile, &known) && known)
        put("NSURLFileResourceTypeKey", PlistValue(QStringLiteral("NSURLFileResourceTypeRegular")));

    put("NSURLVolumeURLKey", valueForKey(VolumeURL));
    put("NSURLVolumeNameKey", valueForKey(VolumeName));
    put("NSURLVolumeUUIDStringKey", valueForKey(VolumeUUID));
    put("NSURLVolumeTotalCapacityKey", valueForKey(VolumeSize));
    put("NSURLVolumeCreationDateKey", valueForKey(VolumeCreationDate));
    const PlistValue volume = valueForKey(VolumeFlags);
    putFlag("NSURLVolumeIsLocalKey", volume, Local, false);
    putFlag("NSURLVolumeIsAutomountedKey", volume, Automounted, false);
    putFlag("NSURLVolumeIsBrowsableKey", volume, DoNotBrowse, true);
    putFlag("NSURLVolumeIsReadOnlyKey", volume, ReadOnly, false);
    putFlag("NSURLVolumeIsEjectableKey", volume, Ejectable, false);
    putFlag("NSURLVolumeIsRemovableKey", volume, Removable, false);
    putFlag("NSURLVolumeIsInternalKey", volume, Internal, false);
    putFlag("NSURLVolumeSupportsPersistentIDsKey", volume, SupportsPersistentIDs, false);
    putFlag("NSURLVolumeSupportsSymbolicLinksKey", volume, SupportsSymbolicLinks, false);
    putFlag("NSURLVolumeSupportsHardLinksKey", volume, SupportsHardLinks, false);
    putFlag("NSURLVolumeSupportsJournalingKey", volume, SupportsJournaling, false);
    putFlag("NSURLVolumeIsJournalingKey", volume, IsJournaling, false);
    putFlag("NSURLVolumeSupportsSparseFilesKey", volume, SupportsSparseFiles, false);
    putFlag("NSURLVolumeSupportsZeroRunsKey", volume, SupportsZeroRuns, false);
    putFlag("NSURLVolumeSupportsCaseSensitiveNamesKey", volume, SupportsCaseSensitiveNames, false);
    putFlag("NSURLVolumeSupportsCasePreservedNamesKey", volume, SupportsCasePreservedNames, false);
    putFlag("NSURLVolumeSupportsRootDirectoryDatesKey", volume, NoRootDirectoryTimes, true);
    putFlag("NSURLVolumeSupportsVolumeSizesKey", volume, SupportsVolumeSizes, false);
    putFlag("NSURLVolumeSupportsRenamingKey", volume, SupportsRenaming, false);
    putFlag("NSURLVolumeSupportsAdvisoryFileLockingKey", volume, SupportsAdvisoryFileLocking,
            false);
    putFlag("NSURLVolumeSupportsExtendedSecurityKey", volume, SupportsExtendedSecurity, false);

    std::vector<std::pair<QString, PlistValue>> values;
    for (const QString &key : allResourceKeys()) {
        const auto it = found.constFind(key);
        if (it != found.constEnd())
            values.emplace_back(key, *it);
    }
    return values;
}

KZBookmarkData KZBookmarkData::bookmarkDataWithPath(const QString &path)
{
    const QFileInfo info(path);
    KZBookmarkData bookmark;
    if (!info.exists()) {
        bookmark._error = KZStringWithFormat(
            KZLocalizedStringWithID(37, QStringLiteral("No file exists at the path “%@”")), {path});
        return bookmark;
    }
    const QString absolute = info.absoluteFilePath();
    const QStringList components = absolute.split(u'/', Qt::SkipEmptyParts);
    ItemWriter writer;
    std::vector<quint32> names;
    std::vector<quint32> ids;
    QString prefix;
    for (const QString &component : components) {
        names.push_back(writer.addString(component));
        prefix += u'/' + component;
        struct stat status;
        const QByteArray native = QFile::encodeName(prefix);
        ids.push_back(writer.addInteger(
            ::stat(native.constData(), &status) == 0 ? qint64(status.st_ino) : 0));
    }
    std::vector<std::pair<quint32, quint32>> entries = {
        {TargetPath, writer.addArray(names)},
        {TargetIDPath, writer.addArray(ids)},
        {TargetFlags,
         writer.addFlags(targetFlags(info), RegularFile | Directory | SymbolicLink | Hidden |
                                                Readable | Writable | Executable)},
    };
    const QDateTime created = info.birthTime().isValid() ? info.birthTime() : info.lastModified();
    if (created.isValid())
        entries.emplace_back(TargetCreationDate,
                             writer.addDate(KZReferenceDate::fromDateTime(created)));

    const QStorageInfo volume(absolute);
    const QString mountPoint = volume.isValid() ? volume.rootPath() : QStringLiteral("/");
    const QString volumeName = volume.isValid() ? volume.displayName() : mountPoint;
    entries.emplace_back(VolumePath, writer.addString(mountPoint));
    QString volumeURL = QUrl::fromLocalFile(mountPoint).toString();
    if (!volumeURL.endsWith(u'/'))
        volumeURL += u'/';
    entries.emplace_back(VolumeURL, writer.add(UrlItem | 1, volumeURL.toUtf8()));
    entries.emplace_back(VolumeName, writer.addString(volumeName));
    if (volume.isValid())
        entries.emplace_back(VolumeSize, writer.addInteger(volume.bytesTotal()));
    entries.emplace_back(VolumeFlags, writer.addFlags(Local | (volume.isReadOnly() ? ReadOnly : 0),
                                                      Local | ReadOnly));
    entries.emplace_back(VolumeIsRoot, writer.add(BooleanItem | (mountPoint == u"/" ? 1 : 0), {}));
    if (components.size() >= 2)
        entries.emplace_back(ContainingFolderIndex, writer.addInteger(components.size() - 2));
    if (const passwd *user = ::getpwuid(::getuid()))
        entries.emplace_back(CreatorUserName,
                             writer.addString(QString::fromLocal8Bit(user->pw_name)));
    entries.emplace_back(CreatorUserID, writer.addInteger(::getuid()));
    entries.emplace_back(CreationOptions, writer.addInteger(0));
    return KZBookmarkData(writer.finish(std::move(entries)));
}
