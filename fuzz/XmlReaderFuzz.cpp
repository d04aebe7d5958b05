// Feeds arbitrary bytes to the XML reader: refusing is fine, crashing is not,
// and whatever it accepts must come back identical through the writer.

#include "storage/XmlReader.h"
#include "storage/XmlWriter.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const ReadResult first =
        XmlReader::read(QByteArrayView(reinterpret_cast<const char *>(data), qsizetype(size)));
    if (!first)
        return 0; // rejecting is fine; crashing is not
    const WriteResult written = XmlWriter::write(first.value);
    if (!written)
        std::abort(); // everything the reader makes can be written
    const ReadResult again = XmlReader::read(written.data);
    if (!again || !again.value.isIdenticalTo(first.value))
        std::abort(); // our own output must read back
    return 0;
}
