#include "PlistDictionary.h"

#include "PlistNode.h"
#include "PlistValueInternals.h"

#include <bit>

using namespace plist_detail;

namespace {

// Below this many entries a scan beats hashing.
constexpr size_t kIndexThreshold = 8;

void place(DictionaryNode &d, size_t entry, quint32 hash)
{
    const size_t mask = d.table.size() - 1;
    size_t slot = hash & mask;
    while (d.table[slot].entry != 0)
        slot = (slot + 1) & mask;
    d.table[slot] = {quint32(entry + 1), hash};
}

// Puts entry order[i] at i for at most 64 entries, following each cycle of
// the permutation once.
void permuteInPlace(std::vector<DictionaryEntry> &entries, std::span<const qsizetype> order)
{
    quint64 placed = 0;
    for (size_t start = 0; start < order.size(); ++start) {
        if (placed & (quint64(1) << start))
            continue;
        DictionaryEntry held = std::move(entries[start]);
        size_t to = start;
        for (size_t from = size_t(order[to]); from != start; from = size_t(order[to])) {
            entries[to] = std::move(entries[from]);
            placed |= quint64(1) << to;
            to = from;
        }
        entries[to] = std::move(held);
        placed |= quint64(1) << to;
    }
}

void dropIndex(DictionaryNode &d)
{
    d.indexed = false;
    d.table = {};
}

} // namespace

PlistDictionary PlistDictionary::create(qsizetype reserve)
{
    auto *node = new DictionaryNode;
    node->entries.reserve(size_t(reserve));
    return PlistDictionary(PlistValue(node));
}

DictionaryNode &PlistDictionary::node() const noexcept
{
    Q_ASSERT(!isNull());
    return *static_cast<DictionaryNode *>(_value.node());
}

qsizetype PlistDictionary::count() const noexcept
{
    return isNull() ? 0 : qsizetype(node().entries.size());
}

const StringNode &PlistDictionary::stringNode(const PlistValue &key) noexcept
{
    Q_ASSERT(key.isString());
    return *static_cast<const StringNode *>(key.node());
}

// An index with room for `entries` entries at most half full.
void PlistDictionary::buildIndex(DictionaryNode &d, size_t entries)
{
    d.table.assign(std::bit_ceil(std::max<size_t>(16, entries * 2)), {0, 0});
    for (size_t i = 0; i < d.entries.size(); ++i)
        place(d, i, stringNode(d.entries[i].key).hashValue());
    d.indexed = true;
}

void PlistDictionary::ensureIndex() const
{
    DictionaryNode &d = node();
    if (d.indexed)
        return;
    // Sized for the reserved entries too, so that a reader filling a
    // dictionary of known size never rebuilds the index on the way.
    buildIndex(d, std::max(d.entries.size(), d.entries.capacity()));
}

qsizetype PlistDictionary::indexOf(QAnyStringView key) const
{
    if (isNull())
        return -1;
    const DictionaryNode &d = node();
    if (d.entries.size() <= kIndexThreshold) {
        for (size_t i = 0; i < d.entries.size(); ++i) {
            if (QAnyStringView::equal(d.entries[i].key.stringView(), key))
                return qsizetype(i);
        }
        return -1;
    }
    ensureIndex();
    const quint32 hash = hashUnits(key);
    const size_t mask = d.table.size() - 1;
    for (size_t slot = hash & mask; d.table[slot].entry != 0; slot = (slot + 1) & mask) {
        const size_t i = d.table[slot].entry - 1;
        if (d.table[slot].hash == hash && QAnyStringView::equal(d.entries[i].key.stringView(), key))
            return qsizetype(i);
    }
    return -1;
}

qsizetype PlistDictionary::indexOfKey(const PlistValue &key) const
{
    const DictionaryNode &d = node();
    const StringNode &wanted = stringNode(key);
    if (d.entries.size() <= kIndexThreshold) {
        for (size_t i = 0; i < d.entries.size(); ++i) {
            if (stringNode(d.entries[i].key).equals(wanted))
                return qsizetype(i);
        }
        return -1;
    }
    ensureIndex();
    return qsizetype(d.table[slotFor(d, wanted, wanted.hashValue())].entry) - 1;
}

PlistValue PlistDictionary::value(QAnyStringView key) const
{
    const qsizetype i = indexOf(key);
    return i < 0 ? PlistValue() : node().entries[size_t(i)].value;
}

QString PlistDictionary::keyAt(qsizetype index) const
{
    return keyValueAt(index).toString();
}

const PlistValue &PlistDictionary::keyValueAt(qsizetype index) const noexcept
{
    Q_ASSERT(index >= 0 && index < count());
    return node().entries[size_t(index)].key;
}

const PlistValue &PlistDictionary::valueAt(qsizetype index) const noexcept
{
    Q_ASSERT(index >= 0 && index < count());
    return node().entries[size_t(index)].value;
}

void PlistDictionary::reserve(qsizetype size)
{
    node().entries.reserve(size_t(size));
}

void PlistDictionary::insert(PlistValue key, PlistValue value)
{
    DictionaryNode &d = node();
    if (d.entries.size() < kIndexThreshold) {
        const qsizetype existing = indexOfKey(key);
        if (existing >= 0) {
            replaceAt(existing, std::move(value));
            return;
        }
        d.entries.push_back({std::move(key), std::move(value)});
        dropIndex(d);
        return;
    }
    if (!d.indexed || (d.entries.size() + 1) * 2 > d.table.size())
        buildIndex(d, std::max(d.entries.capacity(), 2 * (d.entries.size() + 1)));
    const quint32 hash = stringNode(key).hashValue();
    const size_t slot = slotFor(d, stringNode(key), hash);
    if (d.table[slot].entry != 0) {
        d.entries[d.table[slot].entry - 1].value = std::move(value);
        return;
    }
    d.entries.push_back({std::move(key), std::move(value)});
    d.table[slot] = {quint32(d.entries.size()), hash};
}

// One probe finds the key or the free slot it takes.
size_t PlistDictionary::slotFor(const DictionaryNode &d, const StringNode &key, quint32 hash)
{
    const size_t mask = d.table.size() - 1;
    size_t slot = hash & mask;
    for (; d.table[slot].entry != 0; slot = (slot + 1) & mask) {
        const size_t i = d.table[slot].entry - 1;
        if (d.table[slot].hash == hash && stringNode(d.entries[i].key).equals(key))
            break;
    }
    return slot;
}

void PlistDictionary::insertPairs(std::span<PlistValue> pairs)
{
    DictionaryNode &d = node();
    d.entries.reserve(d.entries.size() + pairs.size() / 2);
    for (size_t i = 0; i + 1 < pairs.size(); i += 2)
        append(std::move(pairs[i]), std::move(pairs[i + 1]));
    endAppending();
}

void PlistDictionary::append(PlistValue key, PlistValue value)
{
    node().entries.push_back({std::move(key), std::move(value)});
}

void PlistDictionary::endAppending()
{
    DictionaryNode &d = node();
    const size_t n = d.entries.size();
    std::vector<size_t> repeats;
    if (n <= kIndexThreshold) {
        dropIndex(d);
        // A scan finds the first entry of a key before any repeat of it.
        for (size_t i = 1; i < n; ++i) {
            const StringNode &key = stringNode(d.entries[i].key);
            for (size_t first = 0; first < i; ++first) {
                if (stringNode(d.entries[first].key).equals(key)) {
                    d.entries[first].value = std::move(d.entries[i].value);
                    repeats.push_back(i);
                    break;
                }
            }
        }
        dropRepeats(d, repeats);
        return;
    }
    constexpr size_t kAhead = 16; // entries: about one cache miss's time
    d.table.assign(std::bit_ceil(std::max<size_t>(16, n * 2)), {0, 0});
    d.indexed = true;
    const size_t mask = d.table.size() - 1;
    for (size_t i = 0; i < n; ++i) {
        // The key's node two misses ahead, then its slot, which needs its hash.
        if (i + 2 * kAhead < n)
            PlistValueInternals::prefetch(d.entries[i + 2 * kAhead].key);
        if (i + kAhead < n)
            __builtin_prefetch(&d.table[stringNode(d.entries[i + kAhead].key).hashValue() & mask]);
        const StringNode &key = stringNode(d.entries[i].key);
        const quint32 hash = key.hashValue();
        const size_t slot = slotFor(d, key, hash);
        if (d.table[slot].entry == 0) {
            d.table[slot] = {quint32(i + 1), hash};
            continue;
        }
        d.entries[d.table[slot].entry - 1].value = std::move(d.entries[i].value);
        repeats.push_back(i);
    }
    if (!repeats.empty()) {
        dropRepeats(d, repeats);
        buildIndex(d, d.entries.size());
    }
}

void PlistDictionary::dropRepeats(DictionaryNode &d, const std::vector<size_t> &repeats)
{
    if (repeats.empty())
        return;
    size_t kept = 0;
    auto next = repeats.begin();
    for (size_t i = 0; i < d.entries.size(); ++i) {
        if (next != repeats.end() && *next == i) {
            ++next;
            continue;
        }
        d.entries[kept++] = std::move(d.entries[i]);
    }
    d.entries.resize(kept);
}

void PlistDictionary::insertAt(qsizetype index, const PlistValue &key, PlistValue value)
{
    Q_ASSERT(key.isString() && !contains(key.stringView()));
    Q_ASSERT(index >= 0 && index <= count());
    DictionaryNode &d = node();
    if (size_t(index) == d.entries.size()) {
        insert(key, std::move(value));
        return;
    }
    d.entries.insert(d.entries.begin() + index, {key, std::move(value)});
    dropIndex(d);
}

void PlistDictionary::replaceAt(qsizetype index, PlistValue value)
{
    Q_ASSERT(index >= 0 && index < count());
    node().entries[size_t(index)].value = std::move(value);
}

void PlistDictionary::removeAt(qsizetype index)
{
    Q_ASSERT(index >= 0 && index < count());
    DictionaryNode &d = node();
    d.entries.erase(d.entries.begin() + index);
    dropIndex(d);
}

bool PlistDictionary::remove(QAnyStringView key)
{
    const qsizetype i = indexOf(key);
    if (i < 0)
        return false;
    removeAt(i);
    return true;
}

void PlistDictionary::insert(const KZIndexSet &indexes, const std::vector<PlistValue> &keys,
                             std::vector<PlistValue> values)
{
    Q_ASSERT(keys.size() == values.size());
    std::vector<DictionaryEntry> entries;
    entries.reserve(keys.size());
    for (size_t i = 0; i < keys.size(); ++i)
        entries.push_back({keys[i], std::move(values[i])});
    DictionaryNode &d = node();
    kz_insertAtIndexes(d.entries, indexes, std::move(entries));
    dropIndex(d);
}

void PlistDictionary::remove(const KZIndexSet &indexes)
{
    DictionaryNode &d = node();
    kz_removeAtIndexes(d.entries, indexes);
    dropIndex(d);
}

void PlistDictionary::renameAt(qsizetype index, const PlistValue &key)
{
    Q_ASSERT(key.isString() && !contains(key.stringView()));
    DictionaryNode &d = node();
    d.entries[size_t(index)].key = key;
    dropIndex(d);
}

void PlistDictionary::clear()
{
    DictionaryNode &d = node();
    d.entries.clear();
    dropIndex(d);
}

void PlistDictionary::reorder(std::span<const qsizetype> order)
{
    DictionaryNode &d = node();
    Q_ASSERT(order.size() == d.entries.size());
    if (order.size() <= 64) {
        permuteInPlace(d.entries, order); // a record's few keys: no allocation
    } else {
        std::vector<DictionaryEntry> reordered;
        reordered.reserve(order.size());
        for (const qsizetype from : order)
            reordered.push_back(std::move(d.entries[size_t(from)])); // each entry moves once
        d.entries.swap(reordered);
    }
    if (!d.indexed)
        return;
    // The index holds positions: each gets its new one, with no key hashed again.
    std::vector<quint32> newPosition(order.size());
    for (size_t to = 0; to < order.size(); ++to)
        newPosition[size_t(order[to])] = quint32(to);
    for (DictionaryNode::Slot &slot : d.table) {
        if (slot.entry != 0)
            slot.entry = newPosition[slot.entry - 1] + 1;
    }
}
