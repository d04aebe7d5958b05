// Feeds arbitrary bytes to the old-style reader: refusing is fine, crashing is
// not. What it accepts must survive our own writer: the form has no numbers,
// booleans or dates, so those come back as strings, but what is written once
// is written the same again, and a value of only strings, data, arrays and
// dictionaries comes back identical.

#include "shared/PlistArray.h"
#include "shared/PlistDictionary.h"
#include "storage/AsciiReader.h"
#include "storage/AsciiWriter.h"

#include <cstdint>
#include <cstdlib>
#include <vector>

namespace {

bool hasTypedLeaves(const PlistValue &root)
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
        } else if (!value.isString() && value.kind() != PlistValue::Kind::Data) {
            return true;
        }
    }
    return false;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const ReadResult first =
        AsciiReader::read(QByteArrayView(reinterpret_cast<const char *>(data), qsizetype(size)));
    if (!first)
        return 0;
    const WriteResult text = AsciiWriter::write(first.value);
    if (!text)
        std::abort();
    const ReadResult again = AsciiReader::read(text.data);
    if (!again || AsciiWriter::write(again.value).data != text.data)
        std::abort();
    if (!hasTypedLeaves(first.value) && !again.value.isIdenticalTo(first.value))
        std::abort();
    return 0;
}
