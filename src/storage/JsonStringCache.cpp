#include "JsonStringCache.h"

#include <cstring>

PlistValue JsonStringCache::ascii(const char *bytes, qsizetype size)
{
    if (size > kLongest)
        return PlistValue::fromLatin1(bytes, size);
    quint32 hash = 2166136261u;
    for (qsizetype i = 0; i < size; ++i)
        hash = (hash ^ uchar(bytes[i])) * 16777619u;
    PlistValue &slot = _slots[(hash ^ (hash >> 15)) % kSlots];
    if (!slot.isNone()) {
        const QAnyStringView cached = slot.stringView();
        if (cached.size() == size && std::memcmp(cached.data(), bytes, size_t(size)) == 0)
            return slot;
    }
    slot = PlistValue::fromLatin1(bytes, size);
    return slot;
}
