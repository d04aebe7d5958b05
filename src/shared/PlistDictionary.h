#pragma once

#include "KZIndexSet.h"
#include "PlistValue.h"

#include <span>
#include <vector>

/// A handle on one mutable plain dictionary: string keys in an order of their
/// own (insertion order unless reordered) with hashed lookup. Copies of the
/// handle alias the same dictionary; a null handle refers to none.
/// Appending and lookup are constant time; a change that moves entries
/// (insertion in the middle, removal, reorder) is linear.
class PlistDictionary
{
public:
    PlistDictionary() noexcept = default;
    static PlistDictionary create(qsizetype reserve = 0);

    bool isNull() const noexcept { return _value.isNone(); }
    qsizetype count() const noexcept;
    bool isEmpty() const noexcept { return count() == 0; }

    /// Position of the key, or -1.
    qsizetype indexOf(QAnyStringView key) const;
    bool contains(QAnyStringView key) const { return indexOf(key) >= 0; }
    /// The value for the key, or none.
    PlistValue value(QAnyStringView key) const;
    QString keyAt(qsizetype index) const;
    /// The key as a string value, shared rather than copied.
    const PlistValue &keyValueAt(qsizetype index) const noexcept;
    const PlistValue &valueAt(qsizetype index) const noexcept;

    void reserve(qsizetype size);
    /// Sets the value of a key: in its place if present, else appended.
    void insert(PlistValue key, PlistValue value);
    void insert(const QString &key, PlistValue value) { insert(PlistValue(key), std::move(value)); }
    /// Inserts keys and values given alternately in `pairs`, moving them out:
    /// `insert` for each pair, by `append` and `endAppending`.
    void insertPairs(std::span<PlistValue> pairs);
    /// For a reader filling a dictionary: appends the pair without looking
    /// its key up. `endAppending` must follow before any other use.
    void append(PlistValue key, PlistValue value);
    /// Indexes the entries in one pass, with the cache misses of millions of
    /// keys (each key, then its place in the index) in parallel, and settles
    /// appended keys that repeat as `insert` does: the last value, in the
    /// first key's place.
    void endAppending();
    /// Puts a key that is not present yet at `index`.
    void insertAt(qsizetype index, const PlistValue &key, PlistValue value);
    void replaceAt(qsizetype index, PlistValue value);
    void removeAt(qsizetype index);
    bool remove(QAnyStringView key);
    /// Puts keys that are not present yet, with their values, at `indexes` of the result, in one
    /// pass.
    void insert(const KZIndexSet &indexes, const std::vector<PlistValue> &keys,
                std::vector<PlistValue> values);
    void remove(const KZIndexSet &indexes);
    /// Gives the entry at `index` another key that is not present yet, in place.
    void renameAt(qsizetype index, const PlistValue &key);
    void clear();
    /// Puts the entry at `order[i]` at `i`; `order` is a permutation of all indexes.
    void reorder(std::span<const qsizetype> order);
    void reorder(const std::vector<qsizetype> &order) { reorder(std::span<const qsizetype>(order)); }

    const PlistValue &value() const noexcept { return _value; }
    bool isSameObject(const PlistDictionary &other) const noexcept
    {
        return _value.isSameObject(other._value);
    }

private:
    friend class PlistValue;
    explicit PlistDictionary(PlistValue value) noexcept : _value(std::move(value)) {}
    plist_detail::DictionaryNode &node() const noexcept;
    static const plist_detail::StringNode &stringNode(const PlistValue &key) noexcept;
    /// Position of a key given as a string value: its cached hash, then its bytes.
    qsizetype indexOfKey(const PlistValue &key) const;
    void ensureIndex() const;
    /// An index with room for `entries` entries at most half full.
    static void buildIndex(plist_detail::DictionaryNode &d, size_t entries);
    /// The slot in the index that holds `key`, or else the free one it would take.
    static size_t slotFor(const plist_detail::DictionaryNode &d,
                          const plist_detail::StringNode &key, quint32 hash);
    /// Drops the entries at `repeats`, ascending, whose values went to the
    /// first entry of their key.
    static void dropRepeats(plist_detail::DictionaryNode &d, const std::vector<size_t> &repeats);

    PlistValue _value; // none, or a dictionary
};
