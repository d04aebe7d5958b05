// Feeds arbitrary bytes to the bookmark reader: refusing is fine, crashing
// or hanging is not, and a bookmark it reads answers for its path and
// resource values.

#include "viewers/formatters/KZBookmarkData.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const KZBookmarkData bookmark(
        QByteArray(reinterpret_cast<const char *>(data), qsizetype(size)));
    if (bookmark.isValid() != bookmark.errorString().isEmpty())
        std::abort(); // a record is either read or refused with a reason
    if (!bookmark.isValid())
        return 0;
    (void)bookmark.path();
    (void)bookmark.resourceValues();
    return 0;
}
