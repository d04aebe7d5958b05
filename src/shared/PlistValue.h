#pragma once

#include "ADTypes.h"

#include <QAnyStringView>
#include <QByteArray>
#include <QMetaType>
#include <QString>
#include <QtGlobal>

#include <atomic>
#include <utility>

class PlistArray;
class PlistDictionary;
namespace plist_detail {
enum class NodeKind : quint8
{
    Integer,  // signed 64-bit beyond the inline range
    Unsigned, // above the signed range
    Real,     // a double whose low bits the tag would need
    Date,
    Uid,
    String,
    Data,
    SmallData, // data of a few hundred bytes at most, stored in the node itself
    Array,
    Dictionary,
};

/// The header of every heap node. Nodes have no virtual table: `release`
/// dispatches on `kind`. Declared here so that copying a handle is inline.
struct PlistNode
{
    explicit PlistNode(NodeKind k) noexcept : kind(k) {}
    std::atomic<quint32> ref{1};
    NodeKind kind;

    void retain() noexcept { ref.fetch_add(1, std::memory_order_relaxed); }
    // From NodeAllocator, which needs the size back when freeing.
    static void *operator new(size_t size);
    static void operator delete(void *p, size_t size) noexcept;
    /// Frees the node when this was the last reference. Children freed on the
    /// way are queued, not recursed into.
    static void release(PlistNode *node) noexcept;
};
struct DictionaryNode;
struct StringNode;
class PlistValueInternals;
} // namespace plist_detail

/// One plain property list value: what a file holds and what the tree shadows.
///
/// Leaves (booleans, numbers, dates, strings, data, UIDs, null) are immutable
/// and shared freely. Arrays and dictionaries have reference semantics on
/// purpose: copying a handle aliases the same mutable container, so a tree
/// node's value and its parent container's entry are one object. A deep copy
/// is the named call `kz_copyMutableContainers()`.
///
/// The handle is one word. Booleans, null, integers of up to 61 bits, UIDs and
/// most reals and dates sit inline; the rest are reference-counted heap nodes
/// (atomic counts, so leaves may cross threads). A default-constructed value is
/// "none": no plist value at all, `plistType()` -1.
///
/// Nothing here recurses: copying, comparing and freeing values nested
/// 100,000 deep run on explicit stacks.
class PlistValue
{
public:
    /// What a value is. The first eight follow the plist type codes.
    enum class Kind : quint8
    {
        Array,
        Boolean,
        Data,
        Date,
        Dictionary,
        Number,
        String,
        Null,
        Uid,
        None,
    };

    PlistValue() noexcept = default;
    PlistValue(bool b) noexcept;
    PlistValue(int i) : PlistValue(qint64(i)) {}
    PlistValue(qint64 i);
    PlistValue(quint64 u);
    PlistValue(double d);
    PlistValue(const QString &s);
    PlistValue(QLatin1StringView s);
    PlistValue(const PlistArray &array) noexcept;
    PlistValue(const PlistDictionary &dictionary) noexcept;
    PlistValue(const void *) = delete; // else "abc" becomes true
    PlistValue(const char *) = delete;

    static PlistValue null() noexcept;
    /// Seconds since 2001-01-01 00:00:00 UTC, the binary format's reference clock.
    static PlistValue date(double secondsSinceReferenceDate);
    static PlistValue data(const QByteArray &bytes);
    /// Data holding a copy of `bytes`, for readers: small data then needs no
    /// buffer of its own at all.
    static PlistValue dataCopy(QByteArrayView bytes);
    static PlistValue uid(quint64 value);
    static PlistValue fromUtf8(const char *bytes, qsizetype size);
    static PlistValue fromLatin1(const char *bytes, qsizetype size);
    static PlistValue fromUtf16(const char16_t *units, qsizetype size);

    PlistValue(const PlistValue &other) noexcept : _bits(other._bits)
    {
        if (plist_detail::PlistNode *n = node())
            n->retain();
    }
    PlistValue(PlistValue &&other) noexcept : _bits(std::exchange(other._bits, 0)) {}
    PlistValue &operator=(const PlistValue &other) noexcept
    {
        PlistValue copy(other);
        std::swap(_bits, copy._bits);
        return *this;
    }
    PlistValue &operator=(PlistValue &&other) noexcept
    {
        PlistValue moved(std::move(other));
        std::swap(_bits, moved._bits);
        return *this;
    }
    ~PlistValue()
    {
        if (plist_detail::PlistNode *n = node())
            plist_detail::PlistNode::release(n);
    }

    Kind kind() const noexcept
    {
        // By tag: node, integer, real, date, boolean, null, UID, (unused).
        static constexpr Kind kByTag[] = {Kind::None,    Kind::Number, Kind::Number, Kind::Date,
                                          Kind::Boolean, Kind::Null,   Kind::Uid,    Kind::None};
        // By node kind, in the order of plist_detail::NodeKind.
        static constexpr Kind kByNode[] = {Kind::Number, Kind::Number,    Kind::Number, Kind::Date,
                                           Kind::Uid,    Kind::String,    Kind::Data,   Kind::Data,
                                           Kind::Array,  Kind::Dictionary};
        if (const plist_detail::PlistNode *n = node())
            return kByNode[size_t(n->kind)];
        return kByTag[tag()];
    }
    /// The plist type code: -1 for none and for a UID, which no tree shows as such.
    ADPlistType plistType() const noexcept
    {
        const Kind k = kind();
        return k == Kind::Uid || k == Kind::None ? ADPlistTypeUnknown : ADPlistType(k);
    }
    bool isNone() const noexcept { return _bits == 0; }
    bool isArray() const noexcept { return kind() == Kind::Array; }
    bool isDictionary() const noexcept { return kind() == Kind::Dictionary; }
    bool isContainer() const noexcept;
    bool isString() const noexcept { return kind() == Kind::String; }
    bool isNumber() const noexcept { return kind() == Kind::Number; }
    bool isBoolean() const noexcept { return kind() == Kind::Boolean; }
    /// A number that came as an integer (signed or unsigned), not a real.
    bool isInteger() const noexcept;
    /// An integer above the signed 64-bit range.
    bool isUnsigned() const noexcept;
    bool isReal() const noexcept;

    bool toBool() const noexcept;
    /// The number as a signed integer; reals truncate, unsigned values wrap.
    qint64 toInteger() const noexcept;
    quint64 toUnsigned() const noexcept;
    /// The number (or boolean) as a double.
    double toReal() const noexcept;
    double toDate() const noexcept;
    quint64 toUid() const noexcept;
    QString toString() const;
    /// The string's units without a copy (Latin-1 or UTF-16); valid while the value lives.
    QAnyStringView stringView() const noexcept;
    qsizetype stringLength() const noexcept;
    QByteArray toData() const;
    /// The data's bytes without a copy; valid while the value lives.
    QByteArrayView dataView() const noexcept;
    /// The entries of an array or dictionary; 0 for anything else. This and
    /// the two below read a container without taking a handle on it, for walks
    /// that ask millions of times.
    qsizetype containerCount() const noexcept;
    /// Element `index` of an array, or the value at position `index` of a dictionary.
    const PlistValue &containerValueAt(qsizetype index) const noexcept;
    /// The key at position `index` of a dictionary.
    const PlistValue &containerKeyAt(qsizetype index) const noexcept;
    /// A handle on the same container, or a null handle when this is no array.
    PlistArray toArray() const noexcept;
    PlistDictionary toDictionary() const noexcept;

    /// Same plist type and equal: 1 equals 1.0, true never equals 1, containers
    /// compare in depth with the same rule, dictionaries regardless of order.
    bool isEqualToPlist(const PlistValue &other) const;
    /// Stricter than `isEqualToPlist`: integer and real stay apart, reals and
    /// dates compare bit for bit, dictionaries compare in order. What a lossless
    /// round trip must keep.
    bool isIdenticalTo(const PlistValue &other) const;
    /// Whether two handles are the same object (containers) or the same leaf bits.
    bool isSameObject(const PlistValue &other) const noexcept { return _bits == other._bits; }

    /// The ordering of the value classes' `compare:`: numbers (and booleans) by
    /// value, strings by UTF-16 units, dates by time, data shorter first then
    /// bytes. Values that have no order between them give 0.
    int compare(const PlistValue &other) const;
    /// Strings case-insensitively, null against null 0 and against anything
    /// else 1, everything else `compare`.
    int plistCompare(const PlistValue &other) const;
    /// The text the outline shows for a leaf: strings as they are, booleans
    /// "YES"/"NO", numbers as their shortest text, dates as their description.
    /// A null QString for containers, data, null, UIDs and none.
    QString displayString() const;

    /// A deep copy: every array and dictionary new and mutable, leaves shared.
    PlistValue kz_copyMutableContainers() const;

private:
    friend class PlistArray;
    friend class PlistDictionary;
    friend class plist_detail::PlistValueInternals;
    explicit PlistValue(plist_detail::PlistNode *node) noexcept;
    struct AdoptBits
    {};
    PlistValue(quintptr bits, AdoptBits) noexcept : _bits(bits) {}
    plist_detail::PlistNode *node() const noexcept
    {
        return tag() == 0 ? reinterpret_cast<plist_detail::PlistNode *>(_bits) : nullptr;
    }
    quintptr tag() const noexcept { return _bits & 7; }

    quintptr _bits = 0; // low three bits a tag; tag 0 is a heap node or none
};
static_assert(sizeof(PlistValue) == sizeof(void *));
// One tagged pointer: a Qt container may move it with memcpy, and so grow by realloc.
Q_DECLARE_TYPEINFO(PlistValue, Q_RELOCATABLE_TYPE);

Q_DECLARE_METATYPE(PlistValue)
