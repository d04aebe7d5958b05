// Feeds arbitrary bytes to the binary reader: refusing is fine, crashing is
// not, and whatever it accepts must survive our own writer unchanged, but for
// the null marker, which the reader takes and the writer refuses.

#include "shared/PlistArray.h"
#include "shared/PlistDictionary.h"
#include "storage/BinaryReader.h"
#include "storage/BinaryWriter.h"

#include <cstdint>
#include <cstdlib>
#include <vector>

namespace {

bool holdsNull(const PlistValue &root)
{
    std::vector<PlistValue> pending{root};
    while (!pending.empty()) {
        const PlistValue value = pending.back();
        pending.pop_back();
        if (value.isArray()) {
            for (const PlistValue &item : value.toArray())
                pending.push_back(item);
        } else if (value.isDictionary()) {
            const PlistDictionary dictionary = value.toDictionary();
            for (qsizetype i = 0; i < dictionary.count(); ++i)
                pending.push_back(dictionary.valueAt(i));
        } else if (value.kind() == PlistValue::Kind::Null) {
            return true;
        }
    }
    return false;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const ReadResult first =
        BinaryReader::read(QByteArrayView(reinterpret_cast<const char *>(data), qsizetype(size)));
    if (!first)
        return 0;
    const WriteResult bytes = BinaryWriter::write(first.value);
    if (bool(bytes) == holdsNull(first.value))
        std::abort();
    if (!bytes)
        return 0;
    const ReadResult again = BinaryReader::read(bytes.data);
    if (!again || !again.value.isIdenticalTo(first.value))
        std::abort();
    return 0;
}
