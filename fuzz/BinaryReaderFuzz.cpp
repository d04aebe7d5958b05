// Feeds arbitrary bytes to the binary reader: refusing is fine, crashing is
// not, and whatever it accepts must survive our own writer unchanged, but for
// the null marker, which the reader takes and the writer refuses.

#include "storage/BinaryReader.h"
#include "storage/BinaryWriter.h"
#include "support/ValueWalk.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const ReadResult first =
        BinaryReader::read(QByteArrayView(reinterpret_cast<const char *>(data), qsizetype(size)));
    if (!first)
        return 0;
    const WriteResult bytes = BinaryWriter::write(first.value);
    const bool holdsNull = anyLeaf(
        first.value, [](const PlistValue &v) { return v.kind() == PlistValue::Kind::Null; });
    if (bool(bytes) == holdsNull)
        std::abort();
    if (!bytes)
        return 0;
    const ReadResult again = BinaryReader::read(bytes.data);
    if (!again || !again.value.isIdenticalTo(first.value))
        std::abort();
    return 0;
}
