#include "ADKeyOrder.h"

#include "shared/HugePageAllocator.h"
#include "shared/PlistDictionary.h"
#include "shared/PlistValueInternals.h"
#include "storage/ParallelParts.h"

#include <algorithm>
#include <array>
#include <mutex>

namespace {

constexpr int kWords = 3;
constexpr int kPrefixUnits = kWords * 8;
// Up to this many keys, a dictionary is sorted on the stack.
constexpr qsizetype kSmall = 32;
// From this many keys on, they are read and sorted on all cores.
constexpr qsizetype kParallelKeys = qsizetype(1) << 16;

// A key's position and the start of its text as the comparison sees it, packed
// so that comparing the words compares the keys. Letters are folded where the
// comparison folds them; for the numeric comparisons a run of digits becomes
// its length (as the digit of that count) and then its digits, leading zeros
// dropped, which orders runs by value and a run against any other unit as its
// first digit would. `decisive` holds when the words alone order this key
// against any other decisive key whose words differ: the units read are
// ASCII (every comparison folds ASCII the same way, and nothing else folds
// into it), none is NUL (the padding of shorter keys), and no run of digits
// is ten or longer.
struct Keyed
{
    std::array<quint64, kWords> words;
    quint32 position;
    bool decisive;
};

bool foldsCase(KZComparison comparison)
{
    return comparison == KZComparison::CaseInsensitiveCompare ||
           comparison == KZComparison::NumericCaseInsensitiveCompare ||
           comparison == KZComparison::PlistCompare;
}

bool isNumeric(KZComparison comparison)
{
    return comparison == KZComparison::NumericCompare ||
           comparison == KZComparison::NumericCaseInsensitiveCompare;
}

template <typename Unit> bool isDigit(Unit unit)
{
    return unit >= Unit('0') && unit <= Unit('9');
}

template <typename Unit>
Keyed keyedUnits(const Unit *units, qsizetype length, KZComparison comparison)
{
    const bool fold = foldsCase(comparison);
    const bool numeric = isNumeric(comparison);
    std::array<uchar, kPrefixUnits> bytes{};
    int out = 0;
    bool decisive = true;
    for (qsizetype i = 0; i < length && out < kPrefixUnits && decisive;) {
        const auto unit = quint32(units[i]);
        if (unit >= 0x80 || unit == 0) {
            decisive = false;
        } else if (numeric && isDigit(units[i])) {
            while (units[i] == Unit('0') && i + 1 < length && isDigit(units[i + 1]))
                ++i;
            qsizetype end = i;
            while (end < length && isDigit(units[end]))
                ++end;
            decisive = end - i <= 9;
            bytes[size_t(out++)] = uchar('0' + (end - i));
            for (; i < end && out < kPrefixUnits; ++i)
                bytes[size_t(out++)] = uchar(units[i]);
            i = end;
        } else {
            bytes[size_t(out++)] =
                uchar(fold && unit >= 'A' && unit <= 'Z' ? unit + 'a' - 'A' : unit);
            ++i;
        }
    }
    Keyed keyed{{}, 0, decisive};
    for (int b = 0; b < kPrefixUnits; ++b) {
        quint64 &word = keyed.words[size_t(b / 8)];
        word = (word << 8) | bytes[size_t(b)];
    }
    return keyed;
}

Keyed keyedAt(const PlistDictionary &dictionary, qsizetype position, KZComparison comparison)
{
    Keyed keyed = dictionary.keyValueAt(position).stringView().visit([comparison](auto view) {
        if constexpr (std::is_same_v<decltype(view), QLatin1StringView>)
            return keyedUnits(reinterpret_cast<const uchar *>(view.data()), view.size(),
                              comparison);
        else if constexpr (std::is_same_v<decltype(view), QStringView>)
            return keyedUnits(view.utf16(), view.size(), comparison);
        else
            return Keyed{{}, 0, false}; // keys are never stored as UTF-8
    });
    keyed.position = quint32(position);
    return keyed;
}

// Orders keys by their words where both are decisive and the words differ,
// else by the full comparison; equal keys by position, so sorting is stable.
class KeyedBefore
{
public:
    KeyedBefore(const PlistDictionary &dictionary, KZComparison comparison)
        : _dictionary(dictionary), _comparison(comparison)
    {}

    bool operator()(const Keyed &a, const Keyed &b) const
    {
        if (a.decisive && b.decisive) {
            for (size_t w = 0; w < kWords; ++w) {
                if (a.words[w] != b.words[w])
                    return a.words[w] < b.words[w];
            }
        }
        const int c = KZCompareStrings(_comparison, _dictionary.keyValueAt(a.position).stringView(),
                                       _dictionary.keyValueAt(b.position).stringView());
        return c != 0 ? c < 0 : a.position < b.position;
    }

private:
    const PlistDictionary &_dictionary;
    KZComparison _comparison;
};

template <typename T> using BigVector = std::vector<T, plist_detail::HugePageAllocator<T>>;

BigVector<Keyed> keyedKeys(const PlistDictionary &dictionary, KZComparison comparison)
{
    BigVector<Keyed> keys(size_t(dictionary.count()));
    // Keys lie scattered over a big file's memory: each is fetched a few steps early.
    constexpr qsizetype kAhead = 16;
    ParallelParts::run(dictionary.count(), kParallelKeys, [&](qsizetype from, qsizetype to) {
        for (qsizetype i = from; i < to; ++i) {
            if (i + kAhead < to)
                plist_detail::PlistValueInternals::prefetch(dictionary.keyValueAt(i + kAhead));
            keys[size_t(i)] = keyedAt(dictionary, i, comparison);
        }
    });
    return keys;
}

// Sorts [first, last) in parts on all cores, then merges the parts.
void parallelSort(BigVector<Keyed>::iterator first, BigVector<Keyed>::iterator last,
                  const KeyedBefore &before)
{
    std::mutex partsMutex;
    std::vector<std::pair<qsizetype, qsizetype>> parts;
    ParallelParts::run(last - first, kParallelKeys, [&](qsizetype from, qsizetype to) {
        std::sort(first + from, first + to, before);
        const std::lock_guard lock(partsMutex);
        parts.emplace_back(from, to);
    });
    std::sort(parts.begin(), parts.end());
    for (size_t p = 1; p < parts.size(); ++p)
        std::inplace_merge(first, first + parts[p].first, first + parts[p].second, before);
}

// Sorts a dictionary of a few keys with nothing taken from the heap unless
// they have to move.
void sortSmall(PlistDictionary &dictionary, KZComparison comparison)
{
    const qsizetype count = dictionary.count();
    std::array<Keyed, kSmall> keys;
    for (qsizetype i = 0; i < count; ++i)
        keys[size_t(i)] = keyedAt(dictionary, i, comparison);
    const KeyedBefore before(dictionary, comparison);
    if (std::is_sorted(keys.begin(), keys.begin() + count, before))
        return;
    std::sort(keys.begin(), keys.begin() + count, before);
    std::array<qsizetype, kSmall> order;
    std::transform(keys.begin(), keys.begin() + count, order.begin(),
                   [](const Keyed &k) { return qsizetype(k.position); });
    dictionary.reorder(std::span<const qsizetype>(order.data(), size_t(count)));
}

} // namespace

std::vector<qsizetype> ADKeyOrder::sortedOrder(const PlistDictionary &dictionary,
                                               KZComparison comparison)
{
    BigVector<Keyed> keys = keyedKeys(dictionary, comparison);
    const KeyedBefore before(dictionary, comparison);
    if (std::is_sorted(keys.begin(), keys.end(), before))
        return {};
    // Keys that their words order sort fast; the rest need the full comparison
    // throughout. Each part is sorted apart, then the two are merged.
    const auto others =
        std::partition(keys.begin(), keys.end(), [](const Keyed &k) { return k.decisive; });
    parallelSort(keys.begin(), others, before);
    std::sort(others, keys.end(), before);
    std::inplace_merge(keys.begin(), others, keys.end(), before);
    std::vector<qsizetype> order(keys.size());
    std::transform(keys.begin(), keys.end(), order.begin(),
                   [](const Keyed &k) { return qsizetype(k.position); });
    return order;
}

void ADKeyOrder::applyToSubtree(const PlistValue &value, const ADKeySortPreferences::Values &prefs)
{
    if (prefs.keepKeyOrder || !value.isContainer())
        return;
    const KZComparison comparison = ADKeySortPreferences::selectorFor(prefs);
    std::vector<PlistValue> work{value};
    while (!work.empty()) {
        const PlistValue container = std::move(work.back());
        work.pop_back();
        for (qsizetype i = 0, n = container.containerCount(); i < n; ++i) {
            if (const PlistValue &entry = container.containerValueAt(i); entry.isContainer())
                work.push_back(entry);
        }
        if (!container.isDictionary())
            continue;
        PlistDictionary dictionary = container.toDictionary();
        if (dictionary.count() <= kSmall)
            sortSmall(dictionary, comparison);
        else if (const std::vector<qsizetype> order = sortedOrder(dictionary, comparison);
                 !order.empty())
            dictionary.reorder(order);
    }
}
