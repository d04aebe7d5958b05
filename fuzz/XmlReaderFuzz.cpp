// Feeds arbitrary bytes to the XML reader: refusing is fine, crashing is not.
// Reading a copy it may decode over must come to the same value or the same
// error, and whatever it accepts must come back identical through the writer.

#include "storage/XmlReader.h"
#include "storage/XmlWriter.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const auto *chars = reinterpret_cast<const char *>(data);
    const ReadResult first = XmlReader::read(QByteArrayView(chars, qsizetype(size)));
    const ReadResult taken = XmlReader::read(QByteArray(chars, qsizetype(size)));
    if (bool(first) != bool(taken))
        std::abort();
    if (!first) {
        if (taken.error.description() != first.error.description())
            std::abort(); // decoding in place must not move the position of a mistake
        return 0;         // rejecting is fine; crashing is not
    }
    if (!taken.value.isIdenticalTo(first.value))
        std::abort();
    const WriteResult written = XmlWriter::write(first.value);
    if (!written)
        std::abort(); // everything the reader makes can be written
    const ReadResult again = XmlReader::read(written.data);
    if (!again || !again.value.isIdenticalTo(first.value))
        std::abort(); // our own output must read back
    return 0;
}
