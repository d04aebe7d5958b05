// Feeds arbitrary bytes to the JSON reader: refusing is fine, crashing is not,
// and whatever it accepts must come back identical through our own writer,
// compact and human-readable.

#include "storage/JsonReader.h"
#include "storage/JsonWriter.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const ReadResult first =
        JsonReader::read(QByteArrayView(reinterpret_cast<const char *>(data), qsizetype(size)));
    if (!first)
        return 0;
    for (const bool humanReadable : {false, true}) {
        const WriteResult text = JsonWriter::write(first.value, humanReadable);
        if (!text)
            std::abort();
        const ReadResult again = JsonReader::read(text.data);
        if (!again || !again.value.isIdenticalTo(first.value))
            std::abort();
    }
    return 0;
}
