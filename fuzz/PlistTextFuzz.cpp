// Feeds arbitrary text to the text view's scans, tag colouring and bracket
// matching: whatever the text, tags lie inside it in order without
// overlapping, and a bracket range starts at an opener and ends at its closer.

#include "document/ADBracketMatching.h"
#include "document/ADXMLTagColorizer.h"

#include <QString>

#include <cstdint>
#include <cstdlib>

namespace {

void checkTags(QStringView text, bool startsInside)
{
    const ADXMLTagColorizer::BlockTags found = ADXMLTagColorizer::tagsInBlock(text, startsInside);
    qint64 end = 0;
    for (size_t i = 0; i < found.tags.size(); ++i) {
        const KZRange &tag = found.tags[i];
        if (tag.location < end || tag.length <= 0 || tag.end() > text.size())
            std::abort(); // in order, inside the text, never overlapping
        if (!(startsInside && i == 0) && text[tag.location] != u'<')
            std::abort(); // a tag starts at "<" unless it goes on from the line before
        const bool stillOpen = found.endsInsideTag && i + 1 == found.tags.size();
        if (!stillOpen && text[tag.end() - 1] != u'>')
            std::abort(); // and ends at ">" unless it goes on to the next line
        end = tag.end();
    }
    const bool runsToEnd = !found.tags.empty() && found.tags.back().end() == text.size();
    if (found.endsInsideTag && !runsToEnd && !(startsInside && text.isEmpty()))
        std::abort();
}

void checkBalance(QStringView text, qint64 position)
{
    const KZRange range = ADBracketMatching::balanceFrom(text, position);
    if (range.isNotFound())
        return;
    if (range.location < 0 || range.location >= text.size() || range.end() > text.size() + 1)
        std::abort();
    const QChar opener = text[range.location];
    if (ADBracketMatching::endCharForStartChar(opener).isNull())
        std::abort();
    if (range.length > 1 && range.end() <= text.size() &&
        text[range.end() - 1] != ADBracketMatching::endCharForStartChar(opener))
        std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString text = QString::fromUtf8(reinterpret_cast<const char *>(data), qsizetype(size));
    checkTags(text, false);
    checkTags(text, true);
    const qint64 length = text.size();
    for (const qint64 position : {qint64(0), length / 3, length / 2, length, length + 1})
        checkBalance(text, position);
    return 0;
}
