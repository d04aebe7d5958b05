#include "ADTextChange.h"

#include <algorithm>
#include <cstring>

namespace {

// Compared a block at a time with memcmp, which runs far faster than a loop
// of characters over the hundreds of megabytes of a big document's text.
constexpr qsizetype kBlock = 4096;

qsizetype sharedStart(const QChar *a, const QChar *b, qsizetype length)
{
    qsizetype at = 0;
    while (at + kBlock <= length && std::memcmp(a + at, b + at, kBlock * sizeof(QChar)) == 0)
        at += kBlock;
    while (at < length && a[at] == b[at])
        ++at;
    return at;
}

qsizetype sharedEnd(const QChar *aEnd, const QChar *bEnd, qsizetype length)
{
    qsizetype at = 0;
    while (at + kBlock <= length &&
           std::memcmp(aEnd - at - kBlock, bEnd - at - kBlock, kBlock * sizeof(QChar)) == 0)
        at += kBlock;
    while (at < length && aEnd[-at - 1] == bEnd[-at - 1])
        ++at;
    return at;
}

} // namespace

ADTextChange ADTextChange::between(QStringView old, QStringView now)
{
    const qsizetype shorter = std::min(old.size(), now.size());
    qsizetype start = sharedStart(old.data(), now.data(), shorter);
    if (start > 0 && old[start - 1].isHighSurrogate())
        --start; // never split a pair
    qsizetype end = sharedEnd(old.data() + old.size(), now.data() + now.size(), shorter - start);
    if (end > 0 && old[old.size() - end].isLowSurrogate())
        --end;
    return {{start, old.size() - end - start}, {start, now.size() - end - start}};
}
