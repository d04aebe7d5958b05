#pragma once

#include "shared/KZRange.h"

#include <QColor>
#include <QObject>
#include <QPointer>
#include <QStringView>
#include <QTextBlock>

#include <vector>

class QTextDocument;

/// Colours the XML tags of a text document in one colour: every stretch from
/// a "<" through the next ">" counts as a tag, across lines too; a "<" that
/// no ">" follows anywhere starts none. Comments, processing instructions and
/// strings get no other treatment.
///
/// Colouring is lazy: the view asks for the blocks it is about to paint
/// (`colorBlocks`), and only those are coloured, so a long text costs nothing
/// before its first paint and a keystroke recolours only what is shown. The
/// colours are layout formats, not text formats: they never reach the text,
/// its undo or its change signals.
///
/// What each block starts and ends in (inside a tag or not) is remembered in
/// its user state, stamped with a generation. An edit forgets the edited
/// blocks; one that may change where tags run below it (a bracket typed or
/// deleted, a large change) starts a new generation, which forgets all.
/// Works on one document, which it does not own. Main thread only.
class ADXMLTagColorizer : public QObject
{
    Q_OBJECT

public:
    explicit ADXMLTagColorizer(QTextDocument *document, QObject *parent = nullptr);

    bool isEnabled() const { return _enabled; }
    /// Off, every block is shown without colours.
    void setEnabled(bool enabled);
    QColor tagColor() const { return _tagColor; }
    void setTagColor(const QColor &color);
    /// Forgets every block's colours; they are made again when next shown.
    void invalidateAll();
    /// Forgets the colours of the blocks that the range touches.
    void invalidateRange(KZRange range);

    /// Colours the stale blocks from `first` through `last`, which follows it.
    void colorBlocks(const QTextBlock &first, const QTextBlock &last);

    /// The tags of one block's text, as ranges in it, for a block that starts
    /// inside a tag or not; the last range runs to the end of the text when
    /// a tag is still open there (`endsInsideTag`).
    struct BlockTags
    {
        std::vector<KZRange> tags;
        bool hasBracket = false;
        bool endsInsideTag = false;
    };
    static BlockTags tagsInBlock(QStringView text, bool startsInsideTag);

private:
    void contentsChange(int position, int removed, int added);
    bool startsInsideTag(const QTextBlock &block);
    /// Whether a ">" follows the end of `block`.
    bool closesAfter(const QTextBlock &block) const;
    /// Colours one block that starts inside a tag or not, and notes how it
    /// ends in its state; answers whether its formats changed.
    bool colorBlock(QTextBlock &block, bool startsInside);
    bool isKnown(int state) const;
    int stateFor(bool startsInside, bool endsInside, bool hasBracket, bool colored) const;

    QPointer<QTextDocument> _document;
    QColor _tagColor;
    int _generation = 0;
    int _blockCount; // to tell an edit that adds or joins lines
    bool _enabled = true;
};
