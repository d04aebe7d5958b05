// Feeds arbitrary bytes to the alias record reader: refusing is fine,
// crashing or hanging is not, and a record it reads answers for its path.

#include "viewers/formatters/CUAlias.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const CUAlias alias(QByteArray(reinterpret_cast<const char *>(data), qsizetype(size)));
    if (alias.isValid() != alias.errorString().isEmpty())
        std::abort(); // a record is either read or refused with a reason
    if (alias.isValid())
        (void)alias.aliasPath();
    return 0;
}
