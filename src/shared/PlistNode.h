#pragma once

// The heap side of PlistValue, shared by the value and its container handles.
// Not part of any public interface.

#include "HugePageAllocator.h"
#include "PlistValue.h"

#include <QByteArray>

#include <atomic>
#include <vector>

namespace plist_detail {

struct ScalarNode : PlistNode
{
    ScalarNode(NodeKind k, quint64 bits) noexcept : PlistNode(k), bits(bits) {}
    quint64 bits; // integer, unsigned, UID, or the bits of a double
};

/// A string stored once: one allocation with its units right after the header,
/// as Latin-1 when every unit fits in a byte, else UTF-16. Equal strings
/// therefore have equal encodings and bytes.
struct StringNode : PlistNode
{
    static StringNode *create(const char16_t *units, qsizetype size);
    static StringNode *createLatin1(const char *bytes, qsizetype size);
    static void destroy(StringNode *node) noexcept;

    bool wide = false;
    quint32 length = 0;
    mutable std::atomic<quint32> hash{0}; // 0 until asked for

    const char *latin1() const noexcept { return reinterpret_cast<const char *>(this + 1); }
    const char16_t *utf16() const noexcept { return reinterpret_cast<const char16_t *>(this + 1); }
    QAnyStringView view() const noexcept;
    quint32 hashValue() const noexcept;
    bool equals(const StringNode &other) const noexcept;

private:
    StringNode() : PlistNode(NodeKind::String) {}
};

/// Data small enough for the node pool, stored right after the header in one
/// allocation. Most data in property lists (hashes, identifiers, keys) is this
/// small, and a buffer of its own would cost an allocation more per value.
struct SmallDataNode : PlistNode
{
    static SmallDataNode *create(QByteArrayView bytes);
    static void destroy(SmallDataNode *node) noexcept;

    quint32 length = 0;

    const char *bytes() const noexcept { return reinterpret_cast<const char *>(this + 1); }

private:
    SmallDataNode() : PlistNode(NodeKind::SmallData) {}
};

/// Data beyond what a small data node holds.
struct DataNode : PlistNode
{
    explicit DataNode(const QByteArray &b) : PlistNode(NodeKind::Data), bytes(b) {}
    QByteArray bytes;
};

struct ArrayNode : PlistNode
{
    ArrayNode() : PlistNode(NodeKind::Array) {}
    std::vector<PlistValue> items;
};

struct DictionaryEntry
{
    PlistValue key; // always a string
    PlistValue value;
};

/// Entries in order, with an open-addressing index of entry positions built
/// only for dictionaries large enough to need it, and dropped by any change
/// that moves entries.
struct DictionaryNode : PlistNode
{
    DictionaryNode() : PlistNode(NodeKind::Dictionary) {}
    std::vector<DictionaryEntry> entries;
    struct Slot
    {
        quint32 entry; // entry position + 1; 0 is an empty slot
        quint32 hash;  // the key's, compared before its text
    };
    mutable std::vector<Slot, HugePageAllocator<Slot>> table;
    mutable bool indexed = false;
};

/// Hash of a string's UTF-16 units, the same for either storage.
quint32 hashUnits(QAnyStringView view) noexcept;

} // namespace plist_detail
