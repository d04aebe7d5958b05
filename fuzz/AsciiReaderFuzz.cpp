// Feeds arbitrary bytes to the old-style reader: refusing is fine, crashing is
// not. What it accepts must survive our own writer: the form has no numbers,
// booleans or dates, so those come back as strings, but what is written once
// is written the same again, and a value of only strings, data, arrays and
// dictionaries comes back identical.

#include "storage/AsciiReader.h"
#include "storage/AsciiWriter.h"
#include "support/ValueWalk.h"

#include <cstdint>
#include <cstdlib>

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
    const bool typedLeaves = anyLeaf(first.value, [](const PlistValue &v) {
        return !v.isString() && v.kind() != PlistValue::Kind::Data;
    });
    if (!typedLeaves && !again.value.isIdenticalTo(first.value))
        std::abort();
    return 0;
}
