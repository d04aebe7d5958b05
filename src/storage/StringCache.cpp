#include "StringCache.h"

#include "shared/PlistValueInternals.h"

#include <cstring>

using plist_detail::PlistValueInternals;

namespace {

quint64 load(const char *p)
{
    quint64 word;
    std::memcpy(&word, p, 8);
    return word;
}

} // namespace

inline StringCache::Words StringCache::wordsOf(const char *bytes, qsizetype size)
{
    Words words;
    words.size = size;
    if (size < 8) {
        for (qsizetype i = 0; i < size; ++i)
            words.head |= quint64(uchar(bytes[i])) << (8 * i);
        return words;
    }
    words.head = load(bytes);
    words.tail = load(bytes + size - 8);
    if (size > 16)
        words.middle = load(bytes + 8);
    return words;
}

inline size_t StringCache::slotFor(const Words &words)
{
    const quint64 h = (words.head * 0x9E3779B97F4A7C15ull) ^ (words.tail * 0xC2B2AE3D27D4EB4Full) ^
                      (words.middle * 0x165667B19E3779F9ull) ^ quint64(words.size);
    return size_t((h * 0x9E3779B97F4A7C15ull) >> (64 - kSlotBits));
}

PlistValue StringCache::ascii(const char *bytes, qsizetype size)
{
    if (size > kLongest)
        return PlistValue::fromLatin1(bytes, size);
    const Words words = wordsOf(bytes, size);
    Slot &slot = _slots[slotFor(words)];
    if (slot.words == words)
        return PlistValueInternals::unpublishedCopy(slot.value);
    slot.value = PlistValue::fromLatin1(bytes, size);
    slot.words = words;
    return PlistValueInternals::unpublishedCopy(slot.value);
}
