#include "ADXMLTagColorizer.h"

#include <QTextDocument>
#include <QTextLayout>

namespace {

// A block's user state: what it starts and ends in, whether it holds a
// bracket (else it ends as it starts), whether its colours are applied, and
// the generation that this holds for. -1 is nothing known.
enum StateBits : int
{
    EndsInside = 1,
    StartsInside = 2,
    HasBracket = 4,
    Colored = 8,
};
constexpr int kGenerationShift = 4;
constexpr int kGenerationMask = 0x7ffffff; // what fits above the bits

qsizetype lastBracketIn(QStringView text)
{
    for (qsizetype i = text.size() - 1; i >= 0; --i) {
        if (text[i] == u'<' || text[i] == u'>')
            return i;
    }
    return -1;
}

} // namespace

ADXMLTagColorizer::ADXMLTagColorizer(QTextDocument *document, QObject *parent)
    : QObject(parent), _document(document), _blockCount(document->blockCount())
{
    document->documentLayout(); // a document without one reports no changes
    connect(document, &QTextDocument::contentsChange, this, &ADXMLTagColorizer::contentsChange);
}

void ADXMLTagColorizer::setEnabled(bool enabled)
{
    if (std::exchange(_enabled, enabled) != enabled)
        invalidateAll();
}

void ADXMLTagColorizer::setTagColor(const QColor &color)
{
    if (std::exchange(_tagColor, color) != color)
        invalidateAll();
}

void ADXMLTagColorizer::invalidateAll()
{
    _generation = (_generation + 1) & kGenerationMask;
}

void ADXMLTagColorizer::invalidateRange(KZRange range)
{
    if (!_document)
        return;
    const QTextBlock last = _document->findBlock(int(range.end()));
    for (QTextBlock block = _document->findBlock(int(range.location)); block.isValid();
         block = block.next()) {
        block.setUserState(-1);
        if (block == last)
            break;
    }
}

void ADXMLTagColorizer::colorBlocks(const QTextBlock &first, const QTextBlock &last)
{
    // Lines whose formats changed, laid out again at once in one go, rather
    // than leave the change pending for the next edit to report as its own.
    qint64 changedFrom = -1;
    qint64 changedTo = -1;
    const auto changed = [&](const QTextBlock &block) {
        if (changedFrom < 0)
            changedFrom = block.position();
        changedTo = block.position() + block.length();
    };
    bool inside = _enabled && startsInsideTag(first);
    for (QTextBlock block = first; block.isValid(); block = block.next()) {
        const int state = block.userState();
        if (!_enabled) {
            if (!block.layout()->formats().isEmpty()) {
                block.layout()->clearFormats();
                changed(block);
            }
        } else if (isKnown(state) && (state & Colored) && bool(state & StartsInside) == inside) {
            inside = state & EndsInside;
        } else {
            if (colorBlock(block, inside))
                changed(block);
            inside = block.userState() & EndsInside;
        }
        if (block == last)
            break;
    }
    if (changedFrom >= 0)
        _document->markContentsDirty(int(changedFrom), int(changedTo - changedFrom));
}

ADXMLTagColorizer::BlockTags ADXMLTagColorizer::tagsInBlock(QStringView text, bool startsInsideTag)
{
    BlockTags result;
    bool inside = startsInsideTag;
    qsizetype start = 0;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text[i];
        if (c != u'<' && c != u'>')
            continue;
        result.hasBracket = true;
        if (!inside && c == u'<') {
            inside = true;
            start = i;
        } else if (inside && c == u'>') {
            result.tags.push_back({start, i - start + 1});
            inside = false;
        }
    }
    if (inside && start < text.size())
        result.tags.push_back({start, text.size() - start});
    result.endsInsideTag = inside;
    return result;
}

void ADXMLTagColorizer::contentsChange(int position, int, int added)
{
    const int count = _document->blockCount();
    const bool linesChanged = std::exchange(_blockCount, count) != count;
    QTextBlock block = _document->findBlock(position);
    if (linesChanged || !block.isValid() || block != _document->findBlock(position + added)) {
        invalidateAll();
        return;
    }
    // An edit inside one line: only if it changed how that line ends do the
    // lines below it need another look.
    const int old = block.userState();
    block.setUserState(-1);
    if (!isKnown(old)) {
        invalidateAll();
        return;
    }
    const BlockTags now = tagsInBlock(block.text(), old & StartsInside);
    const bool hadBracket = old & HasBracket;
    if (hadBracket != now.hasBracket || (hadBracket && bool(old & EndsInside) != now.endsInsideTag))
        invalidateAll();
}

bool ADXMLTagColorizer::startsInsideTag(const QTextBlock &block)
{
    std::vector<QTextBlock> passed; // lines without brackets, which end as they start
    bool inside = false;
    for (QTextBlock previous = block.previous(); previous.isValid();
         previous = previous.previous()) {
        const int state = previous.userState();
        if (isKnown(state)) {
            inside = state & EndsInside;
            break;
        }
        const QString text = previous.text();
        const qsizetype at = lastBracketIn(text);
        if (at >= 0) {
            inside = text[at] == u'<';
            break;
        }
        passed.push_back(previous);
    }
    for (QTextBlock &line : passed) // the next look back stops at once
        line.setUserState(stateFor(inside, inside, false, false));
    return inside;
}

bool ADXMLTagColorizer::closesAfter(const QTextBlock &block) const
{
    for (QTextBlock next = block.next(); next.isValid(); next = next.next()) {
        if (next.text().contains(u'>'))
            return true;
    }
    return false;
}

bool ADXMLTagColorizer::colorBlock(QTextBlock &block, bool startsInside)
{
    const QString text = block.text();
    BlockTags found = tagsInBlock(text, startsInside);
    const bool openAtEnd =
        !found.tags.empty() && found.tags.back().end() == text.size() && found.endsInsideTag;
    if (openAtEnd && !closesAfter(block)) // a "<" that nothing closes starts no tag
        found.tags.pop_back();

    QTextCharFormat format;
    format.setForeground(_tagColor);
    QList<QTextLayout::FormatRange> formats;
    formats.reserve(qsizetype(found.tags.size()));
    for (const KZRange &tag : found.tags)
        formats.append({int(tag.location), int(tag.length), format});
    block.setUserState(stateFor(startsInside, found.endsInsideTag, found.hasBracket, true));
    if (block.layout()->formats() == formats)
        return false;
    block.layout()->setFormats(formats);
    return true;
}

bool ADXMLTagColorizer::isKnown(int state) const
{
    return state >= 0 && (state >> kGenerationShift) == _generation;
}

int ADXMLTagColorizer::stateFor(bool startsInside, bool endsInside, bool hasBracket,
                                bool colored) const
{
    return (_generation << kGenerationShift) | (startsInside ? StartsInside : 0) |
           (endsInside ? EndsInside : 0) | (hasBracket ? HasBracket : 0) | (colored ? Colored : 0);
}
